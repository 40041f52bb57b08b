#include "vancorexml/main/parser/WrittenNames.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "vancorexml/main/parser/ColonRewriting.h"

namespace {

// Messages that name an attribute contain one of these texts before the first quoted name.
constexpr std::u16string_view Introductions[] = {u"attribute '", u"attribute name '", u"attribute value '"};

// Returns the part of the message that is the name of the attribute; empty for other messages.
std::u16string_view FindAttributeName(std::u16string_view message)
{
    const std::u16string_view start = message.substr(0, message.find(u'\'') + 1);
    const auto endsStart = [&](std::u16string_view introduction) { return start.ends_with(introduction); };
    const bool isIntroduced = std::any_of(std::begin(Introductions), std::end(Introductions), endsStart);
    const std::u16string_view rest = message.substr(start.size());
    return isIntroduced ? rest.substr(0, rest.find(u'\'')) : std::u16string_view();
}

std::u16string_view FindPrefix(std::u16string_view name)
{
    for (const std::u16string_view prefix : {ColonRewriting::ReadPrefix, ColonRewriting::ReportedPrefix}) {
        if (name.starts_with(prefix))
            return prefix;
    }
    return {};
}

VString ToString(std::u16string_view text)
{
    return VString(text.data(), text.size());
}

}  // namespace

const WrittenNames::OwnNames& WrittenNames::FindOwnNames()
{
    if (!m_ownNames) {
        const auto holds = [this](
                               std::string_view text) { return m_given && m_given->find(text) != std::string::npos; };
        std::set<std::string> rewritten = m_given ? ColonRewriting::FindNames(*m_given) : std::set<std::string>();
        m_ownNames =
            OwnNames{std::move(rewritten), holds(ColonRewriting::DeclarationName), holds(ColonRewriting::Namespace)};
    }
    return *m_ownNames;
}

bool WrittenNames::IsRewritten(std::u16string_view name)
{
    // A name that cannot be compared counts as rewritten. An empty name is one that Xerces truncated at an invalid
    // character. A name with other characters than ASCII may differ from the bytes of a document that is not UTF-8.
    const auto isAscii = [](char16_t unit) { return unit < 0x80; };
    const bool isComparable = !name.empty() && std::all_of(name.begin(), name.end(), isAscii);
    return !m_given || !isComparable || FindOwnNames().rewritten.contains(std::string(name.begin(), name.end()));
}

bool WrittenNames::IsPrefixInserted() const
{
    return m_given && RestoresQuotations();
}

bool WrittenNames::RestoresQuotations() const
{
    return m_isRewritten && !(m_given && m_given->find(ColonRewriting::Prefix) != std::string::npos);
}

VString WrittenNames::Restore(const VString& message)
{
    const std::u16string_view text = message.View();
    const std::u16string_view name = m_isRewritten ? FindAttributeName(text) : std::u16string_view();
    const std::u16string_view prefix = FindPrefix(name);
    if (prefix.empty())
        return message;
    const bool isRewritten = IsRewritten(name.substr(prefix.size()));
    // The document may bind another prefix to the namespace, and the name may have that prefix.
    if (!isRewritten && FindOwnNames().hasNamespace)
        return message;
    const auto start = static_cast<std::size_t>(name.data() - text.data());
    const std::u16string_view written = isRewritten ? u":" : ColonRewriting::ReadPrefix;
    return ToString(text.substr(0, start)) + ToString(written) + ToString(text.substr(start + prefix.size()));
}

bool WrittenNames::IsAboutDeclaration(const VString& message)
{
    const bool isAbout = FindAttributeName(message.View()) == ColonRewriting::ReportedDeclarationName;
    return m_isRewritten && isAbout && !FindOwnNames().hasDeclaration;
}
