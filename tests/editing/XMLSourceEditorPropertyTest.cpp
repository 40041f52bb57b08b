// Properties of the editor over samples and random documents.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/XMLSourceEditor.h"

namespace {

// Makes documents with any white space, quotes, comments, sections and mixed content.
class DocumentMaker {
public:
    explicit DocumentMaker(std::uint32_t seed) : m_random(seed), m_lineEnd(Below(3) == 0 ? "\r\n" : "\n") {}

    std::string Make()
    {
        m_text = Below(2) == 0 ? "<?xml version='1.0'?>" + m_lineEnd : "";
        AddElement(0);
        return m_text + (Below(2) == 0 ? m_lineEnd : "");
    }

private:
    unsigned Below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    void AddSpace(unsigned depth)
    {
        if (Below(5) != 0)
            m_text += m_lineEnd + std::string(2 * depth, Below(8) == 0 ? '\t' : ' ');
        else if (Below(2) == 0)
            m_text += ' ';
    }

    void AddElement(unsigned depth)
    {
        static const char* const Names[] = {"a", "b", "c", "größe", "x:d"};
        const std::string name = Names[Below(5)];
        m_text += "<" + name;
        for (const char* attribute : {"p", ":q", "xmlns:x"}) {
            if (Below(2) == 0)
                continue;
            const char quote = Below(2) == 0 ? '"' : '\'';
            m_text += Below(4) == 0 ? m_lineEnd + "    " : " ";
            m_text += std::string(attribute) + "=" + quote + "v" + std::to_string(Below(9)) + quote;
        }
        if (Below(4) == 0) {
            m_text += Below(2) == 0 ? "/>" : " />";
            return;
        }
        m_text += ">";
        const bool isMixed = Below(4) == 0;
        for (unsigned nodes = depth > 4 ? 0 : Below(5); nodes > 0; --nodes) {
            if (isMixed)
                m_text += Below(2) == 0 ? "text &amp; " : "<![CDATA[<a>]]>";
            AddSpace(depth + 1);
            if (Below(5) == 0)
                m_text += "<!-- <a> -->";
            else
                AddElement(depth + 1);
        }
        if (isMixed && Below(2) == 0)
            m_text += "end";
        AddSpace(depth);
        m_text += "</" + name + (Below(9) == 0 ? " >" : ">");
    }

    std::mt19937 m_random;
    std::string m_lineEnd;
    std::string m_text;
};

std::vector<std::string> Documents()
{
    std::vector<std::string> documents;
    for (std::uint32_t seed = 0; seed < 400; ++seed)
        documents.push_back(DocumentMaker(seed).Make());
    for (const auto& entry : std::filesystem::recursive_directory_iterator(SAMPLES_FOLDER)) {
        if (!entry.is_regular_file())
            continue;
        std::ifstream file(entry.path(), std::ios::binary);
        std::string text{std::istreambuf_iterator<char>(file), {}};
        // Only documents in UTF-8 without a byte order mark that are well-formed.
        if (!text.starts_with("\xEF\xBB\xBF") && !text.starts_with("\xFF\xFE") && !text.starts_with("\xFE\xFF") &&
            !DOMParser().ParseXmlString(text, "sample")->HasErrors())
            documents.push_back(std::move(text));
    }
    return documents;
}

std::string Apply(const std::string& text, const VString& path, const ElementChange& change)
{
    XMLSourceEditor editor(text, "test");
    editor.Change(path, change);
    const std::optional<EditedText> edited = editor.Edit();
    if (edited)
        return edited->text;
    for (const ParseDiagnostic& diagnostic : editor.GetDiagnostics())
        ADD_FAILURE() << diagnostic.message;
    return {};
}

std::unique_ptr<DOM> Parse(const std::string& text)
{
    return DOMParser().ParseXmlString(text, "test");
}

// Returns the tree without texts and their white space in a form that can be compared.
std::string Outline(const DOMElement& element)
{
    std::string outline = "<" + element.GetName().toStdString();
    std::set<std::string> attributes;
    for (const auto& [name, value] : element.GetAttributes())
        attributes.insert(" " + name.toStdString() + "=" + value.toStdString());
    for (const std::string& attribute : attributes)
        outline += attribute;
    outline += "|";
    for (const char16_t unit : element.GetText().View()) {
        if (unit > u' ')
            outline += VString(&unit, 1).toStdString();
    }
    for (const DOMElement* child : element.GetChildren())
        outline += Outline(*child);
    return outline + ">";
}

std::set<VString> NamesBelowTheTop(const DOM& document)
{
    std::set<VString> names;
    const DOMElement& top = *document.GetDocumentRoot();
    for (const DOMElement& element : DOMElementTraversal::PreorderTraversal(top)) {
        if (&element != &top && element.GetName() != top.GetName())
            names.insert(element.GetName());
    }
    return names;
}

void InsertCopy(DOMElement& parent, const char* name, const DOMElement* before)
{
    parent.AddNewChild(name, before).AddNewChild("inner", nullptr);
}

const DOMElement* NextSibling(const DOMElement& element)
{
    const DOMElementChildren siblings = const_cast<DOMElement&>(element).GetParent()->GetChildren();
    const auto found = std::find(siblings.begin(), siblings.end(), &element) + 1;
    return found == siblings.end() ? nullptr : *found;
}

const VString NewFragment = "<new><inner/></new>";

}  // namespace

TEST(XMLSourceEditorPropertyTest, ReverseEditsRestoreTheDocument)
{
    for (const std::string& text : Documents()) {
        SCOPED_TRACE(text.substr(0, 2000));
        const std::unique_ptr<DOM> tree = Parse(text);
        for (const VString& name : NamesBelowTheTop(*tree)) {
            const VString path = "//" + name;
            ElementChange added;
            added.setAttributes = {{"new", "<'\">"}};
            ElementChange removed;
            removed.removeAttributes = {"new"};
            ASSERT_EQ(Apply(Apply(text, path, added), path, removed), text);

            ElementChange renamed;
            renamed.name = "new";
            ElementChange restored;
            restored.name = name;
            ASSERT_EQ(Apply(Apply(text, path, renamed), "//new", restored), text);

            ElementChange inserted;
            inserted.before = {NewFragment};
            inserted.after = {NewFragment};
            ElementChange deleted;
            deleted.isDeleted = true;
            ASSERT_EQ(Apply(Apply(text, path, inserted), "//new", deleted), text);
        }
    }
}

TEST(XMLSourceEditorPropertyTest, ResultsAreThoseOfTheTree)
{
    std::mt19937 random(1);
    for (const std::string& text : Documents()) {
        SCOPED_TRACE(text.substr(0, 2000));
        std::set<VString> names = NamesBelowTheTop(*Parse(text));
        for (const VString& name : names) {
            const VString path = "//" + name;
            const std::unique_ptr<DOM> tree = Parse(text);
            ElementChange change;
            const bool deletes = random() % 4 == 0;
            const auto isChosen = [&] { return !deletes && random() % 2 == 0; };
            if (isChosen())
                change.setAttributes = {{"p", "<new>"}};
            if (isChosen())
                change.removeAttributes = {":q"};
            if (isChosen())
                change.prepended = {NewFragment};
            if (isChosen())
                change.appended = {NewFragment};
            if (isChosen())
                change.before = {NewFragment};
            if (isChosen())
                change.after = {NewFragment};
            change.isDeleted = deletes;
            std::vector<std::unique_ptr<DOMElement>> removed;
            for (DOMElement* element : DOMPath::GetAll(*tree->GetDocumentRoot(), path)) {
                for (const auto& [attribute, value] : change.setAttributes)
                    element->SetAttribute(attribute, value);
                for (const VString& attribute : change.removeAttributes)
                    element->RemoveAttribute(attribute);
                DOMElement& parent = *element->GetParent();
                if (!change.before.empty())
                    InsertCopy(parent, "new", element);
                if (!change.after.empty())
                    InsertCopy(parent, "new", NextSibling(*element));
                if (!change.prepended.empty())
                    InsertCopy(*element, "new", element->HasChildren() ? *element->GetChildren().begin() : nullptr);
                if (!change.appended.empty())
                    InsertCopy(*element, "new", nullptr);
                if (deletes)
                    removed.push_back(parent.RemoveChild(*element));
            }
            const std::unique_ptr<DOM> result = Parse(Apply(text, path, change));
            ASSERT_EQ(Outline(*result->GetDocumentRoot()), Outline(*tree->GetDocumentRoot()));
        }
    }
}

TEST(XMLSourceEditorPropertyTest, NewValuesReplaceOnlyTheOldValues)
{
    for (const std::string& text : Documents()) {
        SCOPED_TRACE(text.substr(0, 2000));
        XMLSourceEditor editor(text, "test");
        ElementChange change;
        change.setAttributes = {{"p", "new"}};
        editor.Change("//*", change);
        const std::optional<EditedText> edited = editor.Edit();
        ASSERT_TRUE(edited);
        for (const TextEdit& edit : edited->edits) {
            if (edit.length == 0) {
                EXPECT_TRUE(edit.replacement.ends_with("p='new'") || edit.replacement.ends_with("p=\"new\""));
                continue;
            }
            EXPECT_EQ(edit.replacement, "new");
            const char quote = text[edit.offset - 1];
            EXPECT_EQ(text.substr(edit.offset - 3, 2), "p=");
            EXPECT_EQ(text[edit.offset + edit.length], quote);
            EXPECT_EQ(text.substr(edit.offset, edit.length).find(quote), std::string::npos);
        }
        EXPECT_EQ(Apply(edited->text, "//*", change), edited->text) << "not idempotent";
    }
}
