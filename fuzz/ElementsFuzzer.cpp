// Applies operations to the elements of two documents and to a plain model of them. After each operation both have the
// same content, links and diagnostics.
// Input: a sequence of choices.
#include <array>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <utility>

#include "fuzz/FuzzSupport.h"
#include "vancoreplatform/VLog.h"
#include "vansys/LogicException.h"

namespace {

constexpr std::size_t MaxNodes = 40;
constexpr std::size_t MaxOperations = 200;

// The messages of the errors and of the warnings.
using Records = std::array<std::list<std::string>, 2>;

// Moves or copies the records to an element. Records that it already has stay.
void Merge(Records& into, const Records& records)
{
    for (std::size_t kind = 0; kind < records.size(); ++kind) {
        if (into[kind].empty())
            into[kind] = records[kind];
    }
}

// An element of the model. It owns its children as the element does.
struct Node {
    explicit Node(std::string nodeName) : name(std::move(nodeName)) {}

    // True if `ancestor` is this node or above it by the links to parents, which removed nodes keep.
    bool IsAtOrBelow(const Node& ancestor) const
    {
        for (const Node* i = this; i != nullptr; i = i->parent) {
            if (i == &ancestor)
                return true;
        }
        return false;
    }
    std::size_t FindChild(const Node* child) const
    {
        const auto found =
            std::find_if(children.begin(), children.end(), [child](const auto& i) { return i.get() == child; });
        return static_cast<std::size_t>(found - children.begin());
    }
    bool HasChild(const Node& child) const { return FindChild(&child) != children.size(); }
    // Returns the first child with this name, or null.
    Node* FindChildNamed(const std::string& childName) const
    {
        const auto found = std::find_if(
            children.begin(), children.end(), [&childName](const auto& i) { return i->name == childName; });
        return found == children.end() ? nullptr : found->get();
    }
    bool IsEmpty() const { return text.empty() && attributes.empty() && children.empty(); }

    std::string name;
    std::string text;
    std::map<std::string, std::string> attributes;
    Records records;
    std::vector<std::unique_ptr<Node>> children;
    Node* parent = nullptr;
    DOM* document = nullptr;
    DOMElement* element = nullptr;
};

// A subtree outside of the documents.
struct Removed {
    std::unique_ptr<Node> node;
    std::unique_ptr<DOMElement> element;
};

void ForSubtree(Node& top, const std::function<void(Node&)>& visit)
{
    visit(top);
    for (const auto& child : top.children)
        ForSubtree(*child, visit);
}

class Session {
public:
    explicit Session(InputChoices& choices) : m_choices(choices)
    {
        for (std::size_t i = 0; i < 2; ++i) {
            m_tops[i] = std::make_unique<Node>("Document");
            m_tops[i]->document = &m_documents[i];
            m_tops[i]->element = &m_documents[i].GetRoot();
        }
    }

    void Run()
    {
        for (std::size_t count = 0; count < MaxOperations && !m_choices.IsAtEnd(); ++count) {
            Collect();
            Step();
            Collect();
            for (Node* node : m_nodes)
                Check(*node);
        }
    }

private:
    void Collect()
    {
        m_nodes.clear();
        const auto add = [this](Node& node) { m_nodes.push_back(&node); };
        for (const auto& top : m_tops)
            ForSubtree(*top, add);
        for (const Removed& removed : m_removed)
            ForSubtree(*removed.node, add);
    }

    Node& Choose() { return *m_nodes[m_choices.Below(m_nodes.size())]; }
    // Chooses a child of `parent`, nothing, or any element.
    Node* ChooseBefore(Node& parent)
    {
        const std::size_t kind = m_choices.Below(8);
        if (kind == 0)
            return &Choose();
        return kind < 3 || parent.children.empty() ? nullptr
                                                   : parent.children[m_choices.Below(parent.children.size())].get();
    }
    static const DOMElement* ElementOf(const Node* node) { return node == nullptr ? nullptr : node->element; }
    std::string ChooseText() { return std::string(1, static_cast<char>('a' + m_choices.Below(4))); }

    void Step();
    void AddNewChild();
    void GetOrNewChild();
    void Remove();
    void RemoveNamed();
    void RemoveIfEmpty();
    void RemoveAll();
    void Insert();
    void Destroy();
    void Move();
    void AdoptChildren();
    void Copy();
    void Assign();
    void DeepCopy();
    void ChangeAttributes();
    void ChangeText();
    void AddRecord();
    void ClearRecords();

    // Copies the children of `from` in the model. LinkCopies then sets the elements of the copies.
    std::vector<std::unique_ptr<Node>> CopyChildren(const Node& from, Node& parent);
    static void LinkCopies(Node& node, DOMElement& element);
    void InsertInto(Node& parent, std::unique_ptr<Node> child, const Node* before);
    void KeepRemoved(Node& parent, const Node& child, std::unique_ptr<DOMElement> element);
    // Sets the document of a subtree. Its records move with it.
    void ChangeDocument(Node& top, const Node& newParent);
    void Forget(Node& top);
    bool HasRemovedBelow(const Node& node) const;
    void Check(Node& node) const;

    InputChoices& m_choices;
    DOM m_documents[2];
    std::unique_ptr<Node> m_tops[2];
    std::vector<Removed> m_removed;
    std::vector<Node*> m_nodes;
    int m_recordCount = 0;
};

// Calls `run` and requires that it raises a LogicException if and only if `mustRaise`.
bool Raises(bool mustRaise, const std::function<void()>& run)
{
    bool raised = false;
    try {
        run();
    } catch (const LogicException&) {
        raised = true;
    }
    Require(raised == mustRaise, "an operation raises an exception if and only if it is misused");
    return raised;
}

void Session::Step()
{
    switch (m_choices.Below(18)) {
    case 0:
    case 1: AddNewChild(); break;
    case 2: Remove(); break;
    case 3: RemoveAll(); break;
    case 4:
    case 5: Insert(); break;
    case 6: Destroy(); break;
    case 7:
    case 8: Move(); break;
    case 9: AdoptChildren(); break;
    case 10: Copy(); break;
    case 11: Assign(); break;
    case 12: ChangeAttributes(); break;
    case 13: ChangeText(); break;
    case 14: AddRecord(); break;
    case 15: m_choices.Below(4) == 0 ? DeepCopy() : ClearRecords(); break;
    case 16: m_choices.Below(2) == 0 ? RemoveNamed() : RemoveIfEmpty(); break;
    default: GetOrNewChild(); break;
    }
}

void Session::InsertInto(Node& parent, std::unique_ptr<Node> child, const Node* before)
{
    child->parent = &parent;
    const auto position = static_cast<std::ptrdiff_t>(parent.FindChild(before));
    parent.children.insert(parent.children.begin() + position, std::move(child));
}

// The records of the topmost element go with its children.
void Session::ChangeDocument(Node& top, const Node& newParent)
{
    if (top.document == newParent.document)
        return;
    Node& from = *m_tops[top.document == &m_documents[0] ? 0 : 1];
    Node& to = *m_tops[top.document == &m_documents[0] ? 1 : 0];
    if (top.parent == &from) {
        Merge(to.records, from.records);
        from.records = {};
    }
    ForSubtree(top, [&](Node& node) { node.document = newParent.document; });
}

// Clears the links to the elements of a dying subtree.
void Session::Forget(Node& top)
{
    ForSubtree(top, [this](Node& dying) {
        for (const Removed& removed : m_removed) {
            if (removed.node && removed.node->parent == &dying)
                removed.node->parent = nullptr;
        }
    });
}

void Session::AddNewChild()
{
    Node& parent = Choose();
    Node* const before = ChooseBefore(parent);
    if (m_nodes.size() >= MaxNodes)
        return;
    auto child = std::make_unique<Node>(ChooseText());
    child->document = parent.document;
    child->element = &parent.element->AddNewChild(VString::fromStdString(child->name), ElementOf(before));
    InsertInto(parent, std::move(child), before);
}

void Session::GetOrNewChild()
{
    Node& parent = Choose();
    const std::string name = ChooseText();
    const Node* const present = parent.FindChildNamed(name);
    if (m_nodes.size() >= MaxNodes && present == nullptr)
        return;
    DOMElement& element = parent.element->GetOrNewChild(VString::fromStdString(name));
    if (present != nullptr) {
        Require(&element == present->element, "GetOrNewChild returns the first child with the name");
        return;
    }
    auto child = std::make_unique<Node>(name);
    child->document = parent.document;
    child->element = &element;
    InsertInto(parent, std::move(child), nullptr);
}

// Takes a removed element out of its parent in the model.
void Session::KeepRemoved(Node& parent, const Node& child, std::unique_ptr<DOMElement> element)
{
    Require(element.get() == child.element, "the removed element is returned");
    const auto position = parent.children.begin() + static_cast<std::ptrdiff_t>(parent.FindChild(&child));
    m_removed.push_back({std::move(*position), std::move(element)});
    parent.children.erase(position);
}

void Session::Remove()
{
    Node& parent = Choose();
    Node& child = parent.children.empty() ? Choose() : *parent.children[m_choices.Below(parent.children.size())];
    std::unique_ptr<DOMElement> element;
    if (!Raises(!parent.HasChild(child), [&] { element = parent.element->RemoveChild(*child.element); }))
        KeepRemoved(parent, child, std::move(element));
}

void Session::RemoveNamed()
{
    Node& parent = Choose();
    const std::string name = ChooseText();
    const bool onlyEmpty = m_choices.Below(2) == 0;
    const VString elementName = VString::fromStdString(name);
    std::unique_ptr<DOMElement> element =
        onlyEmpty ? parent.element->RemoveIfEmpty(elementName) : parent.element->RemoveChild(elementName);
    const Node* const child = parent.FindChildNamed(name);
    if (child != nullptr && (!onlyEmpty || child->IsEmpty()))
        KeepRemoved(parent, *child, std::move(element));
    else
        Require(!element, "nothing else is removed");
}

void Session::RemoveIfEmpty()
{
    Node& parent = Choose();
    if (parent.children.empty())
        return;
    const Node& child = *parent.children[m_choices.Below(parent.children.size())];
    std::unique_ptr<DOMElement> element = parent.element->RemoveIfEmpty(*child.element);
    if (child.IsEmpty())
        KeepRemoved(parent, child, std::move(element));
    else
        Require(!element, "only an empty element is removed");
}

void Session::RemoveAll()
{
    Node& parent = Choose();
    std::vector<std::unique_ptr<DOMElement>> elements = parent.element->RemoveChildren();
    Require(elements.size() == parent.children.size(), "RemoveChildren returns all children");
    for (std::size_t i = 0; i < elements.size(); ++i)
        m_removed.push_back({std::move(parent.children[i]), std::move(elements[i])});
    parent.children.clear();
}

void Session::Insert()
{
    if (m_removed.empty())
        return;
    const std::size_t number = m_choices.Below(m_removed.size());
    Node& parent = Choose();
    const Node* const before = ChooseBefore(parent);
    Removed& removed = m_removed[number];
    const bool isCycle = parent.IsAtOrBelow(*removed.node);
    if (Raises(isCycle, [&] { parent.element->InsertChild(std::move(removed.element), ElementOf(before)); }))
        return;
    std::unique_ptr<Node> node = std::move(removed.node);
    m_removed.erase(m_removed.begin() + static_cast<std::ptrdiff_t>(number));
    ChangeDocument(*node, parent);
    InsertInto(parent, std::move(node), before);
}

void Session::Destroy()
{
    if (m_removed.empty())
        return;
    const auto position = m_removed.begin() + static_cast<std::ptrdiff_t>(m_choices.Below(m_removed.size()));
    const Removed removed = std::move(*position);
    m_removed.erase(position);
    Forget(*removed.node);
}

// Moves an element by Move, Adopt or MoveToFront.
void Session::Move()
{
    Node& child = Choose();
    const std::size_t kind = m_choices.Below(3);
    Node* const oldParent = child.parent;
    const bool movesToFront = kind == 2;
    Node& newParent = movesToFront && oldParent != nullptr ? *oldParent : Choose();
    const Node* before = ChooseBefore(newParent);
    if (movesToFront)
        before = newParent.children.empty() ? nullptr : newParent.children.front().get();
    const bool isIdle = oldParent != nullptr &&
        ((kind == 1 && (&child == &newParent || oldParent == &newParent)) ||
            (movesToFront && oldParent->children.size() < 2));
    const bool isMisuse =
        !isIdle && (oldParent == nullptr || !oldParent->HasChild(child) || newParent.IsAtOrBelow(child));
    const auto run = [&] {
        if (kind == 0)
            child.element->Move(*newParent.element, ElementOf(before));
        else if (kind == 1)
            newParent.element->Adopt(*child.element, ElementOf(before));
        else
            child.element->MoveToFront();
    };
    if (Raises(isMisuse, run) || isIdle)
        return;
    const auto position = oldParent->children.begin() + static_cast<std::ptrdiff_t>(oldParent->FindChild(&child));
    std::unique_ptr<Node> node = std::move(*position);
    oldParent->children.erase(position);
    ChangeDocument(*node, newParent);
    InsertInto(newParent, std::move(node), before);
}

void Session::AdoptChildren()
{
    Node& target = Choose();
    Node& source = Choose();
    const Node* const before = ChooseBefore(m_choices.Below(2) == 0 ? target : source);
    const bool isIdle = &target == &source || source.children.empty();
    const bool isCycle = !isIdle &&
        std::any_of(source.children.begin(), source.children.end(), [&target](const std::unique_ptr<Node>& child) {
            return target.IsAtOrBelow(*child);
        });
    if (Raises(isCycle, [&] { target.element->AdoptChildren(*source.element, ElementOf(before)); }) || isIdle)
        return;
    std::vector<std::unique_ptr<Node>> children = std::exchange(source.children, {});
    for (std::unique_ptr<Node>& child : children) {
        ChangeDocument(*child, target);
        InsertInto(target, std::move(child), before);
    }
}

std::vector<std::unique_ptr<Node>> Session::CopyChildren(const Node& from, Node& parent)
{
    std::vector<std::unique_ptr<Node>> copies;
    for (const auto& child : from.children) {
        auto copy = std::make_unique<Node>(child->name);
        copy->text = child->text;
        copy->attributes = child->attributes;
        copy->records = child->records;
        copy->parent = &parent;
        copy->document = parent.document;
        copy->children = CopyChildren(*child, *copy);
        copies.push_back(std::move(copy));
    }
    return copies;
}

void Session::LinkCopies(Node& node, DOMElement& element)
{
    node.element = &element;
    Require(element.GetChildren().size() == node.children.size(), "a copy has all children");
    for (std::size_t i = 0; i < node.children.size(); ++i)
        LinkCopies(*node.children[i], *element.GetChildren()[i]);
}

void Session::Copy()
{
    Node& source = Choose();
    if (m_nodes.size() >= MaxNodes)
        return;
    Removed copy;
    copy.element = std::make_unique<DOMElement>(*source.element);
    copy.node = std::make_unique<Node>(source.name);
    copy.node->text = source.text;
    copy.node->attributes = source.attributes;
    copy.node->records = source.records;
    copy.node->document = source.document;
    copy.node->children = CopyChildren(source, *copy.node);
    LinkCopies(*copy.node, *copy.element);
    Require(*copy.element == *source.element, "a copy is equal");
    m_removed.push_back(std::move(copy));
}

void Session::Assign()
{
    Node& target = Choose();
    Node& source = Choose();
    if (m_nodes.size() >= MaxNodes || &target == &source)
        return;
    // The source may be an ancestor or a descendant, so the copy is complete before the old content goes.
    Node content = Node(source.name);
    content.text = source.text;
    content.attributes = source.attributes;
    content.records = source.records;
    std::vector<std::unique_ptr<Node>> children = CopyChildren(source, target);
    *target.element = *source.element;
    for (const auto& child : target.children)
        Forget(*child);
    target.children = std::move(children);
    target.name = content.name;
    target.text = content.text;
    target.attributes = content.attributes;
    Merge(target.records, content.records);
    LinkCopies(target, *target.element);
}

void Session::DeepCopy()
{
    const std::size_t number = m_choices.Below(2);
    const bool isSelf = m_choices.Below(4) == 0;
    Node& target = *m_tops[number];
    const Node& source = *m_tops[isSelf ? number : 1 - number];
    if (m_nodes.size() >= MaxNodes)
        return;
    target.document->DeepCopy(*source.document);
    for (Node* node : m_nodes) {
        if (node->document == target.document)
            node->records = {};
    }
    if (isSelf)
        return;
    Require(*target.document == *source.document, "a copy is equal");
    for (const auto& child : target.children)
        Forget(*child);
    target.name = source.name;
    target.text = source.text;
    target.attributes = source.attributes;
    target.records = source.records;
    target.children = CopyChildren(source, target);
    LinkCopies(target, *target.element);
}

void Session::ChangeAttributes()
{
    Node& node = Choose();
    Node& other = Choose();
    // More names than fit into a map without an index.
    const std::string name = "a" + std::to_string(m_choices.Below(30));
    const VString attribute = VString::fromStdString(name);
    const std::size_t kind = m_choices.Below(6);
    if (kind < 2) {
        node.attributes[name] = ChooseText();
        node.element->SetAttribute(attribute, VString::fromStdString(node.attributes[name]));
    } else if (kind == 2) {
        node.attributes.erase(name);
        node.element->RemoveAttribute(attribute);
    } else if (kind == 3) {
        node.element->AdoptAttribute(*other.element, attribute);
        if (&node != &other && other.attributes.count(name) != 0) {
            node.attributes[name] = other.attributes[name];
            other.attributes.erase(name);
        }
    } else {
        const bool overwrites = kind == 4;
        node.element->AdoptAttributes(*other.element, overwrites);
        if (&node == &other)
            return;
        for (const auto& [key, value] : std::exchange(other.attributes, {})) {
            if (overwrites)
                node.attributes[key] = value;
            else
                node.attributes.emplace(key, value);
        }
    }
}

void Session::ChangeText()
{
    Node& node = Choose();
    const std::string text = ChooseText();
    const std::size_t kind = m_choices.Below(3);
    if (kind == 0) {
        node.text = text;
        node.element->SetText(VString::fromStdString(text));
    } else if (kind == 1) {
        node.text += text;
        node.element->AppendText(VString::fromStdString(text));
    } else {
        node.name = text;
        node.element->SetName(VString::fromStdString(text));
    }
}

void Session::AddRecord()
{
    Node& node = Choose();
    const std::size_t kind = m_choices.Below(4);
    const std::string message = std::to_string(m_recordCount++);
    const VString text = VString::fromStdString(message);
    switch (kind) {
    case 0: node.element->Error(text, VError::ErrorInfo(), false, false); break;
    case 1: node.element->Warning(text, VError::ErrorInfo()); break;
    case 2: node.element->PrefixError(text, VError::ErrorInfo(), false); break;
    default: node.element->PrefixWarning(text, VError::ErrorInfo()); break;
    }
    std::list<std::string>& records = node.records[kind % 2];
    records.insert(kind < 2 ? records.end() : records.begin(), message);
}

// True if a removed element still links to this element or to one below it.
bool Session::HasRemovedBelow(const Node& node) const
{
    return std::any_of(m_removed.begin(), m_removed.end(), [&node](const Removed& removed) {
        return removed.node->parent != nullptr && removed.node->IsAtOrBelow(node);
    });
}

void Session::ClearRecords()
{
    Node& node = Choose();
    if (node.parent != nullptr && HasRemovedBelow(node))
        return;
    const std::size_t kind = m_choices.Below(2);
    if (kind == 0)
        node.element->ClearErrors();
    else
        node.element->ClearWarnings();
    for (Node* other : m_nodes) {
        const bool isCovered = node.parent == nullptr ? other->document == node.document : other->IsAtOrBelow(node);
        if (isCovered)
            other->records[kind].clear();
    }
}

void Session::Check(Node& node) const
{
    DOMElement& element = *node.element;
    Require(element.GetName() == VString::fromStdString(node.name), "the name is that of the model");
    Require(element.GetText() == VString::fromStdString(node.text), "the text is that of the model");
    Require(element.GetDOMManager() == node.document, "the document is that of the model");
    Require(element.GetParent() == ElementOf(node.parent), "the parent is that of the model");
    Require(element.IsRemovedChild() == (node.parent != nullptr && !node.parent->HasChild(node)),
        "the element is removed as in the model");

    Require(element.GetAttributes().size() == node.attributes.size(), "there are the attributes of the model");
    for (const auto& [name, value] : node.attributes) {
        Require(element.GetAttribute(VString::fromStdString(name)) == VString::fromStdString(value),
            "the attribute is that of the model");
    }
    Require(element.GetChildren().size() == node.children.size(), "there are the children of the model");
    for (std::size_t i = 0; i < node.children.size(); ++i)
        Require(element.GetChildren()[i] == node.children[i]->element, "the child is that of the model");

    Records expected;
    ForSubtree(node, [&expected](Node& below) {
        for (std::size_t kind = 0; kind < expected.size(); ++kind)
            expected[kind].insert(expected[kind].end(), below.records[kind].begin(), below.records[kind].end());
    });
    std::array<std::list<VString>, 2> messages;
    element.GetErrors(messages[0]);
    element.GetWarnings(messages[1]);
    const auto isEqual = [](const VString& a, const std::string& b) { return a.toStdString() == b; };
    for (std::size_t kind = 0; kind < expected.size(); ++kind) {
        Require(std::ranges::equal(messages[kind], expected[kind], isEqual), "the records are those of the model");
    }
    if (node.parent != nullptr && !HasRemovedBelow(node)) {
        Require(element.HasErrors() == !expected[0].empty(), "HasErrors agrees with the model");
        Require(element.HasWarnings() == !expected[1].empty(), "HasWarnings agrees with the model");
    }
    if (&node == m_tops[0].get() || &node == m_tops[1].get()) {
        Require(node.document->GetDiagnostics().size() == expected[0].size() + expected[1].size(),
            "a document has the records of its elements");
    }
}

struct NoLog : VLog::Sink {
    void Write(const VLog::Record&) override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    [[maybe_unused]] static const auto before = VLog::SetSink(std::make_shared<NoLog>());
    InputChoices choices(data, size);
    Session(choices).Run();
    return 0;
}
