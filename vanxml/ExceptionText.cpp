#include "vanxml/ExceptionText.h"

// Xerces throws the exceptions of these headers through the library while it creates a reader or loads a schema.
// They do not derive from std::exception.
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLException.hpp>

#include <exception>
#include <new>
#include <stdexcept>

#include "vancoreplatform/DecodingException.h"
#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/EncodingFaults.h"
#include "vancorexml/main/parser/XMLComparison.h"
#include "vansys/LogicException.h"
#include "vanxml/DiagnosticText.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/ToolError.h"

namespace {

std::string TooLarge(const VString& document, const char* reason)
{
    return (document.IsEmpty() ? "the text" : "'" + document + "'").toStdString() + " is too large" + reason;
}

std::string Failed(const VString& document, const VString& reason)
{
    return (document.IsEmpty() ? reason : "'" + document + "' cannot be processed: " + reason).toStdString();
}

VString DescribeAssertion(const LogicException& exception)
{
    const VString place = VFormatString("%1, line %2").arg(exception.GetFile()).arg(exception.GetLine());
    return "internal error " + exception.GetErrorInfo().GetKey() + " in " + place + ": " + exception.GetExpression();
}

}  // namespace

std::string DescribeException(const VString& document)
{
    constexpr const char* forMemory = " for the available memory";
    try {
        throw;
    } catch (const ToolError& error) {
        return error.what();
    } catch (const VIO::Exception& exception) {
        return exception.what();
    } catch (const LogicException& exception) {
        return Failed(document, DescribeAssertion(exception));
    } catch (const XMLVerificationError& error) {
        return Failed(document, VString(error.what()) + ", so nothing was written. Please report this fault of vanxml");
    } catch (const VantoraException& exception) {
        return Failed(document, exception.GetConcatenatedMessages());
    } catch (const std::length_error&) {
        return TooLarge(document, "");
    } catch (const std::bad_alloc&) {
        return TooLarge(document, forMemory);
    } catch (const xercesc::OutOfMemoryException&) {
        return TooLarge(document, forMemory);
    } catch (const xercesc::XMLException& exception) {
        return Failed(document, exception.getMessage());
    } catch (const std::exception& exception) {
        return Failed(document, VString(exception.what()));
    } catch (...) {
        return Failed(document, "unknown exception");
    }
}

FailureReport ReportException(const VString& document)
{
    try {
        throw;
    } catch (const VIO::DecodingException& exception) {
        const VIO::BadBytes& badBytes = exception.GetBadBytes();
        const ParseDiagnostic error = EncodingFaults::Describe(badBytes);
        return {ExitStatus::Faulty, FormatDiagnostics(badBytes.fileName, {error}, badBytes.text)};
    } catch (...) {
        return {ExitStatus::Failed, FormatErrorLine(DescribeException(document))};
    }
}
