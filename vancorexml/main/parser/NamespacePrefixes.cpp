#include "vancorexml/main/parser/NamespacePrefixes.h"

#include <utility>

#include <xercesc/util/XMLUni.hpp>

#include "vancorexml/main/parser/ColonRewriting.h"

namespace {

constexpr std::u16string_view DeclarationStart = u"xmlns:";

bool HasColon(const XMLCh* name) noexcept
{
    while (*name != 0 && *name != u':')
        ++name;
    return *name != 0;
}

// Returns the position of the colon behind the prefix of a name, or npos if it has no prefix.
std::size_t FindColon(std::u16string_view name)
{
    const std::size_t colon = name.find(u':');
    return colon == 0 ? std::u16string_view::npos : colon;
}

}  // namespace

std::u16string_view NamespacePrefixes::Declare(const xercesc::XMLAttr& attribute)
{
    const std::u16string_view name(attribute.getQName());
    if (!name.starts_with(DeclarationStart))
        return {};
    const std::u16string_view prefix = name.substr(DeclarationStart.size());
    m_declared.emplace_back(prefix);
    m_namespaces[m_declared.back()].emplace_back(attribute.getValue());
    return prefix;
}

const std::u16string* NamespacePrefixes::Find(std::u16string_view prefix) const
{
    const auto found = m_namespaces.find(prefix);
    return found == m_namespaces.end() ? nullptr : &found->second.back();
}

std::vector<NamespaceFault> NamespacePrefixes::StartElement(
    const XMLCh* name, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t count)
{
    using Kind = NamespaceFault::Kind;
    std::vector<NamespaceFault> faults;
    m_elements.push_back(m_declared.size());
    // Most tags need no more than this test.
    bool hasColon = HasColon(name);
    for (XMLSize_t i = 0; i < count && !hasColon; ++i)
        hasColon = HasColon(attributes.elementAt(i)->getQName());
    if (!hasColon)
        return faults;
    for (XMLSize_t i = 0; i < count; ++i) {
        const xercesc::XMLAttr& attribute = *attributes.elementAt(i);
        const std::u16string_view prefix = Declare(attribute);
        if (prefix.empty())
            continue;
        const std::u16string_view space(attribute.getValue());
        const bool isXml = prefix == u"xml";
        if (prefix == u"xmlns" || isXml != (space == xercesc::XMLUni::fgXMLURIName))
            faults.push_back({Kind::ReservedPrefix, attribute.getQName(), prefix, {}});
        else if (space.empty())
            faults.push_back({Kind::EmptyNamespace, attribute.getQName(), prefix, {}});
    }

    // The attributes with a prefix, by namespace and local name.
    std::map<std::pair<std::u16string_view, std::u16string_view>, std::u16string_view> known;
    for (XMLSize_t i = 0; i <= count; ++i) {
        const std::u16string_view checked(i == 0 ? name : attributes.elementAt(i - 1)->getQName());
        // The document writes a name with a colon at its start, which has no prefix.
        if (checked.starts_with(ColonRewriting::ReadPrefix))
            continue;
        const std::size_t colon = FindColon(checked);
        if (colon == std::u16string_view::npos)
            continue;
        const std::u16string_view prefix = checked.substr(0, colon);
        const std::u16string_view local = checked.substr(colon + 1);
        if (local.find(u':') != std::u16string_view::npos) {
            faults.push_back({Kind::TwoColons, checked, prefix, {}});
            continue;
        }
        if (prefix == u"xml" || prefix == u"xmlns")
            continue;
        const std::u16string* const space = Find(prefix);
        if (!space) {
            faults.push_back({Kind::UndeclaredPrefix, checked, prefix, {}});
        } else if (i > 0) {
            const auto [other, isNew] = known.try_emplace({*space, local}, checked);
            if (!isNew)
                faults.push_back({Kind::DuplicateAttribute, checked, prefix, other->second});
        }
    }
    return faults;
}

void NamespacePrefixes::EndElement()
{
    for (; m_declared.size() > m_elements.back(); m_declared.pop_back()) {
        const auto namespaces = m_namespaces.find(m_declared.back());
        namespaces->second.pop_back();
        if (namespaces->second.empty())
            m_namespaces.erase(namespaces);
    }
    m_elements.pop_back();
}

std::vector<VString> NamespacePrefixes::GetPrefixes() const
{
    std::vector<VString> prefixes;
    for (const auto& [prefix, namespaces] : m_namespaces)
        prefixes.emplace_back(prefix.c_str());
    return prefixes;
}
