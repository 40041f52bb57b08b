// Preload this library into the tool to replace three functions by functions that throw. The environment variable
// THROWN selects the exception: logic, memory, parser-memory, length, product, parser or unknown. With the value
// logged, they log a message first.
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>

#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/RuntimeException.hpp>

#include "vancoreplatform/VFile.h"
#include "vancoreplatform/VLog.h"
#include "vancorexml/main/parser/VersionSniffer.h"
#include "vancorexml/main/parser/XMLUtils.h"
#include "vansys/LogicException.h"

namespace {

[[noreturn]] void Throw()
{
    const std::string thrown = std::getenv("THROWN");
    if (thrown == "logic")
        ThrowLogicException("module\\file", 42, "a == b", MakeLogicError(0x1234ABCD));
    if (thrown == "memory")
        throw std::bad_alloc();
    if (thrown == "parser-memory")
        throw xercesc::OutOfMemoryException();
    if (thrown == "length")
        throw std::length_error("string");
    if (thrown == "product")
        throw VantoraException("a product's message", VError::ErrorInfo::NoError);
    if (thrown == "parser") {
        xercesc::XMLPlatformUtils::Initialize();  // loads the message texts
        throw xercesc::RuntimeException("file", 1, xercesc::XMLExcepts::CPtr_PointerIsZero);
    }
    if (thrown == "logged")
        LogMessage(VLog::Warn,
            "a\n\x1B"
            "b");
    throw 1;
}

}  // namespace

Nullable<VersionNumber> VersionSniffer(InputSource&, const VString&)
{
    Throw();
}

XmlUtils::TagRange XmlUtils::FindFirstElementTag(const std::string&)
{
    Throw();
}

VString VFile::LoadTextFile(const VString&, bool)
{
    Throw();
}
