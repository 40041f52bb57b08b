#include "vancorexml/main/parser/XMLEditedTree.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/BorrowedInputSource.h"
#include "vancorexml/main/parser/DOMBuilder.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/TreeBuilder.h"
#include "vancorexml/main/parser/XMLUtils.h"
#include "vancorexml/main/parser/XercesTreeParser.h"

namespace {

bool IsBlank(std::u16string_view text) noexcept
{
    return std::all_of(text.begin(), text.end(), [](char16_t unit) { return XmlUtils::IsWhitespace(unit); });
}

// Builds a tree with exact texts.
class ExactBuilder final : public TreeBuilder {
public:
    explicit ExactBuilder(DOM& document) : TreeBuilder(true), m_builder(document, true) {}

    void StartElement(const VString& name, const TagAttributes& attributes) override
    {
        if (!m_open.empty())
            m_open.back().hasElements = true;
        m_open.emplace_back();
        m_builder.StartElement(name, attributes);
    }

    void EndElement() override
    {
        Open& open = m_open.back();
        if (!open.text.IsEmpty() && !(open.hasElements && IsBlank(open.text.View())))
            m_builder.Characters(std::move(open.text));
        m_open.pop_back();
        m_builder.EndElement();
    }

    void Characters(VString&& text) override
    {
        VString& all = m_open.back().text;
        if (all.IsEmpty())
            all = std::move(text);
        else
            all.append(text);
    }

private:
    struct Open {
        VString text;
        bool hasElements = false;
    };

    DOMBuilder m_builder;
    std::vector<Open> m_open;
};

// Compares the elements of a document with a tree while they are parsed.
class TreeComparer final : public TreeBuilder {
public:
    explicit TreeComparer(const DOMElement& root) : TreeBuilder(true) { m_open.emplace_back().element = &root; }

    // Call it at the end of the document.
    bool IsEqual() const noexcept { return !m_differs; }
    // Returns the path of the element that differs; empty if there is none.
    const VString& PathOfDifference() const noexcept { return m_path; }

    void StartElement(const VString& name, const TagAttributes& attributes) override
    {
        Open& parent = m_open.back();
        const DOMElementConstChildren children = parent.element->GetChildren();
        const DOMElement* const element = parent.nextChild == children.size() ? nullptr : children[parent.nextChild++];
        // AddTo invalidates the name.
        const bool hasName = element && element->GetName() == name;
        m_attributes.clear();
        attributes.AddTo(m_attributes);
        const bool isEqual = hasName && element->GetAttributes() == m_attributes;
        if (element)
            m_open.emplace_back().element = element;
        if (!isEqual)
            Differ();
    }

    void EndElement() override
    {
        if (m_differs)
            return;
        const Open& open = m_open.back();
        const bool hasAllChildren = open.nextChild == open.element->GetChildren().size();
        if (!hasAllChildren || !HasText(*open.element, open.text)) {
            Differ();
            return;
        }
        m_open.pop_back();
    }

    void Characters(VString&& text) override
    {
        if (m_differs)
            return;
        VString& all = m_open.back().text;
        if (all.IsEmpty())
            all = std::move(text);
        else
            all.append(text);
    }

private:
    struct Open {
        const DOMElement* element = nullptr;
        std::size_t nextChild = 0;
        VString text;
    };

    void Differ()
    {
        // The first element is that of the tree, which is not an element of the document.
        for (auto open = m_open.begin() + 1; open != m_open.end(); ++open)
            m_path += "/" + open->element->GetName();
        m_differs = true;
        SetDone();
    }

    // Ignores white space in an element that has children or no text: an element that lost children may keep the
    // white space between them, and an element without text may have white space around its comments.
    static bool HasText(const DOMElement& element, const VString& text)
    {
        if (element.GetText() == text)
            return true;
        const bool isIgnorable = element.HasChildren() || !element.HasText();
        return isIgnorable && IsBlank(text.View()) && IsBlank(element.GetText().View());
    }

    std::vector<Open> m_open;
    AttributeMap m_attributes;
    VString m_path;
    bool m_differs = false;
};

// An insertion beside an element, or its deletion.
struct SiblingChange {
    DOMElement* parent;
    DOMElement* element;  // null for the content of the parent
    const TreeChange* change;
};

class Applier {
public:
    void Apply(const TreeChange& change, DOMElement& element)
    {
        for (const auto& [name, value] : change.change->setAttributes)
            element.SetAttribute(name, value);
        for (const VString& name : change.change->removeAttributes)
            element.RemoveAttribute(name);
        if (change.change->text)
            element.SetText(*change.change->text);
        if (change.change->name)
            element.SetName(*change.change->name);
        if (!change.prepended.empty() || !change.appended.empty()) {
            m_changes.push_back({&element, nullptr, &change});
            // The document may have the inserted comments on lines of their own, also between other comments. So white
            // space does not count as text of this element.
            if (IsBlank(element.GetText().View()))
                element.SetText(VString());
        }
        if (change.change->isDeleted || !change.before.empty() || !change.after.empty())
            m_changes.push_back({element.GetParent(), &element, &change});
    }

    void ApplySiblingChanges()
    {
        const auto isLess = [](const SiblingChange& a, const SiblingChange& b) {
            if (a.parent != b.parent)
                return std::less<>()(a.parent, b.parent);
            return std::less<>()(a.element, b.element);
        };
        std::stable_sort(m_changes.begin(), m_changes.end(), isLess);
        for (auto first = m_changes.begin(); first != m_changes.end();) {
            const auto last =
                std::find_if(first, m_changes.end(), [&](const auto& each) { return each.parent != first->parent; });
            if (last - first <= MostSingleChanges)
                ChangeChildren(first, last);
            else
                RebuildChildren(first, last);
            first = last;
        }
    }

private:
    using Iterator = std::vector<SiblingChange>::iterator;

    // Each single change is linear in the children. Rebuilding is linear for all changes together, but it inserts the
    // unchanged children again, and the cost of that grows with the depth of the tree.
    static constexpr std::ptrdiff_t MostSingleChanges = 16;

    static void Insert(DOMElement& parent, const TreeChange::Fragments& fragments, const DOMElement* before = nullptr)
    {
        for (const auto& fragment : fragments) {
            for (const DOMElement* element : fragment->Elements().GetChildren())
                parent.InsertChild(std::make_unique<DOMElement>(*element), before);
        }
    }

    // Returns the end of the changes of the content. They come first, because their element is null.
    static Iterator EndOfContent(Iterator first, Iterator last)
    {
        return std::find_if(first, last, [](const auto& each) { return each.element; });
    }

    static const DOMElement* NextSibling(const DOMElement& parent, const DOMElement& child)
    {
        const DOMElementConstChildren children = parent.GetChildren();
        const auto next = std::find(children.begin(), children.end(), &child) + 1;
        return next == children.end() ? nullptr : *next;
    }

    // Applies the changes one after the other.
    void ChangeChildren(Iterator first, Iterator last)
    {
        DOMElement& parent = *first->parent;
        const Iterator ofChildren = EndOfContent(first, last);
        const DOMElement* const firstChild = parent.HasChildren() ? parent.GetChildren()[0] : nullptr;
        for (Iterator i = first; i != ofChildren; ++i)
            Insert(parent, i->change->prepended, firstChild);
        for (Iterator i = first; i != ofChildren; ++i)
            Insert(parent, i->change->appended);
        for (Iterator i = ofChildren; i != last;) {
            DOMElement& child = *i->element;
            const DOMElement* const next = NextSibling(parent, child);
            bool isDeleted = false;
            for (; i != last && i->element == &child; ++i) {
                Insert(parent, i->change->before, &child);
                Insert(parent, i->change->after, next);
                isDeleted |= i->change->change->isDeleted;
            }
            if (isDeleted)
                m_deleted.push_back(parent.RemoveChild(child));
        }
    }

    // Removes all children, inserts them again and applies the changes on the way.
    void RebuildChildren(Iterator first, Iterator last)
    {
        DOMElement& parent = *first->parent;
        std::vector<std::unique_ptr<DOMElement>> children = parent.RemoveChildren();
        const Iterator ofChildren = EndOfContent(first, last);
        for (Iterator i = first; i != ofChildren; ++i)
            Insert(parent, i->change->prepended);
        for (std::unique_ptr<DOMElement>& child : children) {
            const auto isBefore = [](const SiblingChange& a, const DOMElement* b) {
                return std::less<>()(a.element, b);
            };
            const Iterator begin = std::lower_bound(ofChildren, last, child.get(), isBefore);
            const Iterator end =
                std::find_if(begin, last, [&](const auto& each) { return each.element != child.get(); });
            for (Iterator i = begin; i != end; ++i)
                Insert(parent, i->change->before);
            if (std::any_of(begin, end, [](const auto& each) { return each.change->change->isDeleted; }))
                m_deleted.push_back(std::move(child));
            else
                parent.AppendChild(std::move(child));
            for (Iterator i = begin; i != end; ++i)
                Insert(parent, i->change->after);
        }
        for (Iterator i = first; i != ofChildren; ++i)
            Insert(parent, i->change->appended);
    }

    std::vector<SiblingChange> m_changes;
    // Deleted elements live until the end, because changes inside them may be applied after their deletion.
    std::vector<std::unique_ptr<DOMElement>> m_deleted;
};

}  // namespace

XMLEditedTree::XMLEditedTree(const std::string& text, const VString& id) : m_document(std::make_unique<DOM>())
{
    BorrowedInputSource source(text, id, true, TextEncoding::Utf8);
    const std::unique_ptr<XercesTreeParser> parser =
        XercesTreeParser::Create(source, std::make_shared<ExactBuilder>(*m_document));
    parser->Parse();
    m_diagnostics = parser->GetDiagnostics();
    ThrowIfOutOfMemory(m_diagnostics);
    m_hasErrors = parser->HasErrors();
}

XMLEditedTree::~XMLEditedTree() = default;

void XMLEditedTree::Apply(const std::vector<std::pair<const TreeChange*, std::vector<DOMElement*>>>& changes)
{
    Applier applier;
    for (const auto& [change, elements] : changes) {
        for (DOMElement* element : elements)
            applier.Apply(*change, *element);
    }
    applier.ApplySiblingChanges();
}

bool XMLEditedTree::IsTreeOf(const std::string& text, const VString& id)
{
    BorrowedInputSource source(text, id, true, TextEncoding::Utf8);
    const auto comparer = std::make_shared<TreeComparer>(m_document->GetRoot());
    const std::unique_ptr<XercesTreeParser> parser = XercesTreeParser::Create(source, comparer);
    parser->Parse();
    m_diagnostics = parser->GetDiagnostics();
    ThrowIfOutOfMemory(m_diagnostics);
    m_hasErrors = parser->HasErrors();
    m_pathOfDifference = comparer->PathOfDifference();
    return !m_hasErrors && comparer->IsEqual();
}
