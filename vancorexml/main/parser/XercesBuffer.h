// The xercesc::InputSource inside a XercesInputSource.
#pragma once

#include <xercesc/framework/MemBufInputSource.hpp>

#include "vancorexml/main/parser/XercesInputSource.h"

class XercesInputSource::Buffer final : public xercesc::MemBufInputSource {
public:
    using xercesc::MemBufInputSource::MemBufInputSource;
};
