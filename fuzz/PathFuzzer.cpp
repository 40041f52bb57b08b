// Compares all queries with plain walks.
// Input: a path, a tree (see ReadTree), and another path.
#include "fuzz/FuzzSupport.h"
#include "tests/query/ReferencePathWalk.h"
#include "vancorexml/main/parser/DOMElementSearch.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/DOMPathCanopy.h"

namespace {

// Makes a tree of elements with one-letter names, for example of "a(b(c)d)".
void ReadTree(const std::string& text, DOM& document)
{
    DOMElement* parent = &document.GetRoot().AddNewChild("a", nullptr);
    DOMElement* last = parent;
    for (const char letter : text) {
        if (letter == '(')
            parent = last;
        else if (letter == ')' && parent->GetParent() != &document.GetRoot())
            parent = parent->GetParent();
        else if (letter != ')')
            last = &parent->AddNewChild(VString::fromUtf8(&letter, 1), nullptr);
    }
}

reference::Segments Split(const VString& path)
{
    reference::Segments segments(1);
    for (const char16_t unit : path.View()) {
        if (unit == u'/')
            segments.emplace_back();
        else
            segments.back() += VString(&unit, 1);
    }
    return segments;
}

void CheckQueries(DOMElement& element, const VString& path)
{
    const DOMElement& constant = element;
    const reference::Matches expected = reference::WalkPath(constant, Split(path));
    Require(DOMPath::GetAll(constant, path) == expected, "GetAll finds the matches of the reference");
    Require(DOMPath::GetFirst(constant, path) == (expected.empty() ? nullptr : expected.front()),
        "GetFirst finds the first match of the reference");
    reference::Matches walked;
    for (const DOMElement& match : DOMPath::Walk(element, path))
        walked.push_back(&match);
    Require(walked == expected, "Walk visits the matches of the reference");
}

const DOMElement* FindPlainly(const DOMElement& element, const VString& name, int depth)
{
    if (element.GetName() == name)
        return &element;
    const DOMElement* found = nullptr;
    for (const DOMElement* child : element.GetChildren()) {
        if (depth > 0 && found == nullptr)
            found = FindPlainly(*child, name, depth - 1);
    }
    return found;
}

void CollectWithin(const DOMElement& canopy, const VString& name, reference::Matches& matches)
{
    if (name == VString("*"))
        return;
    for (const DOMElement* child : canopy.GetChildren()) {
        if (child->GetName() != name)
            continue;
        matches.push_back(child);
        CollectWithin(*child, name, matches);
    }
}

void CollectUnderneath(const DOMElement& canopy, const VString& subPath, reference::Matches& matches)
{
    for (const DOMElement* child : canopy.GetChildren()) {
        if (child->GetName() == canopy.GetName()) {
            CollectUnderneath(*child, subPath, matches);
        } else if (!subPath.startsWith("/")) {
            const reference::Matches found = reference::WalkPath(*child, Split(subPath));
            matches.insert(matches.end(), found.begin(), found.end());
        }
    }
}

void CheckSearches(const DOMElement& element, const VString& path, const VString& other)
{
    for (const int depth : {0, 2, 1000}) {
        Require(DOMElementSearch::FindElement(element, other, depth, VString(), VString()) ==
                FindPlainly(element, other, depth),
            "FindElement finds the first element of that name");
    }
    reference::Matches within;
    reference::Matches underneath;
    for (const DOMElement* canopy : reference::WalkPath(element, Split(path))) {
        CollectWithin(*canopy, other, within);
        CollectUnderneath(*canopy, other, underneath);
    }
    Require(DOMPathCanopy::WithinCanopy(element, path, other) == within, "WithinCanopy agrees with the plain form");
    Require(DOMPathCanopy::UnderneathCanopy(element, path, other) == underneath,
        "UnderneathCanopy agrees with the plain form");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    InputParts parts(data, size);
    const VString path = VString::fromStdString(parts.Next());
    DOM document;
    ReadTree(parts.IsAtEnd() ? "(b(ac(b))bc)a(b(b))c" : parts.Next(), document);
    DOMElement& top = *document.GetDocumentRoot();
    const VString other = parts.IsAtEnd() ? VString("b") : VString::fromStdString(parts.Next());
    CheckQueries(top, path);
    CheckSearches(top, path, other);
    if (top.HasChildren())
        CheckQueries(*top.GetChildren().back(), path);
    return 0;
}
