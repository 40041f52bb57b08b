#include "vancorexml/main/parser/SAXInterface.h"

SAXInterface::~SAXInterface() = default;

bool SAXInterface::IsDone()
{
    return false;
}

SAXFileLocation::~SAXFileLocation() = default;
