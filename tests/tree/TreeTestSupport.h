// Helpers of the tree tests: access to the private operations of a document, and short functions for common steps.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DocumentDiagnostics.h"
#include "vancorexml/main/parser/ElementLinks.h"
#include "vansys/VMutex.h"

class DOMTestAccess {
public:
    static DocumentDiagnostics& Diagnostics(const DOM& document) { return *document.m_diagnostics; }
    static void Copy(DOM& document, const DOMElement& source, const DOMElement* target)
    {
        Diagnostics(document).CopyErrorsAndWarningsForNode(source, target);
    }
    static void Adopt(DOM& document, const DOMElement& node, const DOMElement* target)
    {
        document.AdoptErrorsAndWarningsForNode(node, target);
    }
    static void MoveAll(DOM& document, DOM& other)
    {
        Diagnostics(document).MoveErrorsAndWarningsTo(Diagnostics(other));
    }
    static void Push(DOM& document, const DOMElement& element, const VString& message)
    {
        Diagnostics(document).PushError(element, message, VError::ErrorInfo(), false, false);
    }
    static void Collect(const DOM& document, const DOMElement& element, std::list<VString>& messages)
    {
        Diagnostics(document).GetErrors(element, messages);
    }
    static std::unique_ptr<DOMElement> ReleaseRoot(DOM& document) { return std::move(document.m_root); }
    static void AdoptRoot(DOM& document, std::unique_ptr<DOMElement> root) { document.m_root = std::move(root); }
    static const auto& Errors(const DOM& document) { return Diagnostics(document).m_errors; }
    static const auto& Warnings(const DOM& document) { return Diagnostics(document).m_warnings; }
    static std::size_t ErrorEntries(const DOM& document) { return Errors(document).size(); }
    static std::size_t WarningEntries(const DOM& document) { return Warnings(document).size(); }
    static std::size_t Intervals(const DOM& document) { return Diagnostics(document).m_index.m_intervals.size(); }
    static VReadWriteLock& Lock(const DOM& document) { return document.m_lock; }
    static VMutex& LinkedElementsMutex(const DOM& document) { return document.m_linkedElements->mutex; }
    static bool RefersToElements(const DOM& document) { return Diagnostics(document).RefersToElements(); }
    static void AddFieldRename(DOM& document, const FieldName& from, const FieldName& to)
    {
        document.m_fieldRenames[from] = to;
    }
};

namespace treetest {

inline VError::ErrorInfo Info(std::uint32_t code)
{
    return VError::ErrorInfo(VantoraError::MakeError(code, "Test_Error"));
}

inline void AddError(const DOMElement& element, const VString& message)
{
    element.Error(message, Info(1), false, false);
}

inline std::unique_ptr<DOMElement> NewElement(const VString& name)
{
    return std::make_unique<DOMElement>(name);
}

// Returns the names of the children, separated by blanks.
inline std::string ChildNames(const DOMElement& element)
{
    std::string names;
    for (const DOMElement* child : element.GetChildren())
        names += (names.empty() ? "" : " ") + child->GetName().toStdString();
    return names;
}

inline std::vector<std::string> Strings(const std::list<VString>& messages)
{
    std::vector<std::string> strings;
    for (const VString& message : messages)
        strings.push_back(message.toStdString());
    return strings;
}

inline std::vector<std::string> ErrorsOf(const DOMElement& element)
{
    std::list<VString> messages;
    element.GetErrors(messages);
    return Strings(messages);
}

inline std::vector<std::string> WarningsOf(const DOMElement& element)
{
    std::list<VString> messages;
    element.GetWarnings(messages);
    return Strings(messages);
}

using Texts = std::vector<std::string>;

}  // namespace treetest
