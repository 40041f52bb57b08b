// The XML form of tuples.
#pragma once

#include "vancorexml/main/parser/XMLExport.h"

class Tuple;
class XMLFormatter;

// Writes the element "tuple" with an element "value" for each value.
VANCOREXML_API void OutputTuple(::XMLFormatter& formatter, const Tuple& tuple);
