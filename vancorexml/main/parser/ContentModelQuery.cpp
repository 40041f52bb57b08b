#include "vancorexml/main/parser/ContentModelQuery.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include <xercesc/framework/XMLContentModel.hpp>
#include <xercesc/validators/common/ContentSpecNode.hpp>

namespace {

constexpr std::size_t AllowedLimit = 100;
// The number that Xerces gives to the empty namespace. It matters to wildcards only.
constexpr unsigned int EmptyNamespace = 1;

// Collects the names of elements, from left to right. Does not recurse, because a long sequence is a deep tree.
ContentModelQuery::Names FindNames(const xercesc::ContentSpecNode* root)
{
    ContentModelQuery::Names names;
    std::set<std::pair<unsigned int, std::u16string_view>> known;
    std::vector<const xercesc::ContentSpecNode*> open{root};
    while (!open.empty()) {
        const xercesc::ContentSpecNode* const node = open.back();
        open.pop_back();
        if (!node)
            continue;
        const bool isLeaf = (node->getType() & 0x0f) == xercesc::ContentSpecNode::Leaf;
        const xercesc::QName* const name = isLeaf ? node->getElement() : nullptr;
        // The text of mixed content is a leaf without a name.
        if (name && *name->getLocalPart() != 0 && known.emplace(name->getURI(), name->getLocalPart()).second)
            names.push_back(name);
        open.push_back(node->getSecond());
        open.push_back(node->getFirst());
    }
    return names;
}

// Returns the index of the child at which the model fails, or npos.
std::size_t Validate(xercesc::ComplexTypeInfo& type, const ContentModelQuery::Names& children)
{
    xercesc::XMLContentModel* const model = type.getContentModel();
    XMLSize_t failure = 0;
    // The interface of Xerces lacks const; models do not change the names.
    auto** const names = const_cast<xercesc::QName**>(children.data());
    if (!model || model->validateContent(names, children.size(), EmptyNamespace, &failure))
        return ContentModelQuery::npos;
    return std::min<std::size_t>(failure, children.size());
}

}  // namespace

ContentModelQuery::ContentModelQuery(xercesc::ComplexTypeInfo& type, const Names& children, std::size_t& budget)
    : m_type(type),
      m_children(children),
      m_budget(budget),
      m_names(FindNames(type.getContentSpec()))
{}

bool ContentModelQuery::Take(std::size_t steps) const
{
    const std::size_t cost = (steps + 1) * m_names.size();
    if (cost > m_budget)
        return false;
    m_budget -= cost;
    return true;
}

std::size_t ContentModelQuery::FindFailure() const
{
    return Validate(m_type, m_children);
}

ContentModelQuery::Names ContentModelQuery::FindMissing(std::size_t index, const Names& allowed) const
{
    Names missing;
    if (!Take((index + 2) * allowed.size()))
        return missing;
    const std::size_t end = std::min(index + 1, m_children.size());
    Names children(m_children.begin(), m_children.begin() + static_cast<std::ptrdiff_t>(end));
    children.insert(children.begin() + static_cast<std::ptrdiff_t>(index), nullptr);
    for (const xercesc::QName* name : allowed) {
        children[index] = name;
        if (Validate(m_type, children) > index + 1)
            missing.push_back(name);
    }
    return missing;
}

std::size_t ContentModelQuery::FindEarlierPlace(std::size_t index) const
{
    if (!Take(index * index))
        return npos;
    Names children(m_children.begin(), m_children.begin() + static_cast<std::ptrdiff_t>(index) + 1);
    for (std::size_t place = index; place > 0; --place) {
        std::swap(children[place], children[place - 1]);
        if (Validate(m_type, children) > index)
            return place - 1;
    }
    return npos;
}

ContentModelQuery::Names ContentModelQuery::FindAllowed(std::size_t index) const
{
    Names allowed;
    if (!Take((index + 1) * m_names.size()))
        return allowed;
    Names children(m_children.begin(), m_children.begin() + static_cast<std::ptrdiff_t>(index));
    children.push_back(nullptr);
    for (const xercesc::QName* name : m_names) {
        children.back() = name;
        // A model that fails behind the name has accepted it.
        if (Validate(m_type, children) > index && allowed.size() < AllowedLimit)
            allowed.push_back(name);
    }
    return allowed;
}
