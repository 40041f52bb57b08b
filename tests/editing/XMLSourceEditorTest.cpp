#include "vancorexml/main/parser/XMLSourceEditor.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// The change of a row, in the order of its parts.
class Edit {
public:
    Edit&& Set(const char* name, const char* value) &&
    {
        change.setAttributes.emplace_back(name, value);
        return std::move(*this);
    }
    Edit&& Unset(const char* name) &&
    {
        change.removeAttributes.emplace_back(name);
        return std::move(*this);
    }
    Edit&& Text(const char* text) &&
    {
        change.text = text;
        return std::move(*this);
    }
    Edit&& Rename(const char* name) &&
    {
        change.name = name;
        return std::move(*this);
    }
    Edit&& Delete() &&
    {
        change.isDeleted = true;
        return std::move(*this);
    }
    Edit&& Before(const char* xml) &&
    {
        change.before.emplace_back(xml);
        return std::move(*this);
    }
    Edit&& After(const char* xml) &&
    {
        change.after.emplace_back(xml);
        return std::move(*this);
    }
    Edit&& Prepend(const char* xml) &&
    {
        change.prepended.emplace_back(xml);
        return std::move(*this);
    }
    Edit&& Append(const char* xml) &&
    {
        change.appended.emplace_back(xml);
        return std::move(*this);
    }

    ElementChange change;
};

struct PathEdit {
    const char* path;
    ElementChange change;
};

PathEdit At(const char* path, Edit&& edit)
{
    return {path, std::move(edit.change)};
}

struct Row {
    const char* description;
    const char* text;
    std::vector<PathEdit> edits;
    const char* result;
};

// Returns a diagnostic as "(LINE,COLUMN) PATH: MESSAGE". Omits the place if the diagnostic has none.
std::string ErrorText(const ParseDiagnostic& diagnostic)
{
    std::string text;
    if (diagnostic.start != SourcePosition()) {
        text = "(" + std::to_string(diagnostic.start.line) + "," + std::to_string(diagnostic.start.column) + ") " +
            diagnostic.path.toStdString() + ": ";
    }
    return text + diagnostic.message.toStdString();
}

// Returns the edited text, or the errors, one on each line.
std::string Apply(const std::string& text, const std::vector<PathEdit>& edits, XMLSourceEditor::Options options = {})
{
    XMLSourceEditor editor(text, "test", std::move(options));
    for (const PathEdit& edit : edits)
        editor.Change(edit.path, edit.change);
    const std::optional<EditedText> edited = editor.Edit();
    if (edited) {
        EXPECT_EQ(ApplyEdits(text, edited->edits), edited->text);
        return edited->text;
    }
    std::string errors;
    for (const ParseDiagnostic& diagnostic : editor.GetDiagnostics())
        errors += ErrorText(diagnostic) + "\n";
    EXPECT_NE(errors, "");
    return errors;
}

void ExpectResults(const std::vector<Row>& rows)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(row.description);
        EXPECT_EQ(Apply(row.text, row.edits), row.result);
    }
}

}  // namespace

TEST(XMLSourceEditorTest, SetsAttributes)
{
    ExpectResults({
        {"keeps apostrophes", "<a b='1' c='2'/>", {At("a", Edit().Set("b", "x'\""))}, "<a b='x&apos;\"' c='2'/>"},
        {"keeps quotes", "<a b=\"1\"/>", {At("a", Edit().Set("b", "x'\""))}, "<a b=\"x'&quot;\"/>"},
        {"escapes markup and white space",
            "<a b='1'/>",
            {At("a", Edit().Set("b", "<>&\t\n\r"))},
            "<a b='&lt;&gt;&amp;&#9;&#10;&#13;'/>"},
        {"keeps white space in tags",
            "<a  b = '1'\tc='2' />",
            {At("a", Edit().Set("b", "2"))},
            "<a  b = '2'\tc='2' />"},
        {"leaves an equal value", "<a b='&#65;&#x42;'/>", {At("a", Edit().Set("b", "AB"))}, "<a b='&#65;&#x42;'/>"},
        {"leaves a value with white space that is equal",
            "<a b='x\ny'/>",
            {At("a", Edit().Set("b", "x y"))},
            "<a b='x\ny'/>"},
        {"adds the first attribute", "<a/>", {At("a", Edit().Set("b", "1"))}, "<a b='1'/>"},
        {"adds to a tag with a blank at its end", "<a />", {At("a", Edit().Set("b", "1"))}, "<a b='1' />"},
        {"adds with the quotes of the last attribute",
            "<a b='1' c=\"2\">x</a >",
            {At("a", Edit().Set("d", "3").Set("e", "\""))},
            "<a b='1' c=\"2\" d=\"3\" e=\"&quot;\">x</a >"},
        {"adds on a line of its own",
            "<a b='1'\r\n   c='2'\r\n/>",
            {At("a", Edit().Set("d", "3"))},
            "<a b='1'\r\n   c='2'\r\n   d='3'\r\n/>"},
        {"adds one blank if the last attribute is on the line of the first",
            "<a\n  b='1'  c='2'/>",
            {At("a", Edit().Set("d", "3"))},
            "<a\n  b='1'  c='2' d='3'/>"},
        {"removes with the white space in front",
            "<a b='1'\n  c='2' d='3'/>",
            {At("a", Edit().Unset("c"))},
            "<a b='1' d='3'/>"},
        {"removes the only attribute", "<a b='1'/>", {At("a", Edit().Unset("b").Unset("c"))}, "<a/>"},
        {"replaces the last attribute",
            "<a b=\"1\" c=\"2\"/>",
            {At("a", Edit().Unset("c").Set("d", "3"))},
            "<a b=\"1\" d=\"3\"/>"},
        {"changes names with a colon",
            "<a :b='1' x:c='2' xmlns:x='u'/>",
            {At("a", Edit().Set(":b", "2").Set(":d", "3").Unset("x:c").Set("xmlns:x", "v"))},
            "<a :b='2' xmlns:x='v' :d='3'/>"},
        {"finds elements with any characters in their names",
            "<größe><\U00010000 b='1'/></größe>",
            {At("größe/\U00010000", Edit().Set("ä", "€"))},
            "<größe><\U00010000 b='1' ä='€'/></größe>"},
        {"is not confused by markup in values, comments and sections",
            "<a c='-->'><!-- <a b='1'> --><![CDATA[<a b='1'>]]></a>",
            {At("//a", Edit().Set("b", "2"))},
            "<a c='-->' b='2'><!-- <a b='1'> --><![CDATA[<a b='1'>]]></a>"},
    });
}

TEST(XMLSourceEditorTest, ReplacesTexts)
{
    ExpectResults({
        {"escapes", "<a>x</a>", {At("a", Edit().Text("<&>\"'"))}, "<a>&lt;&amp;&gt;\"'</a>"},
        {"writes the line ends of the document",
            "<a>\r\n<b>x</b></a>",
            {At("a/b", Edit().Text("1\n2"))},
            "<a>\r\n<b>1\r\n2</b></a>"},
        {"writes a carriage return as a reference", "<a>x</a>", {At("a", Edit().Text("1\r\n2"))}, "<a>1&#13;\n2</a>"},
        {"fills an empty element", "<a></a >", {At("a", Edit().Text("x"))}, "<a>x</a >"},
        {"fills an empty tag", "<a/>", {At("a", Edit().Text("x"))}, "<a>x</a>"},
        {"fills an empty tag with a blank", "<a b='1' />", {At("a", Edit().Text("x"))}, "<a b='1'>x</a>"},
        {"fills an empty tag with lines", "<a\n b='1'\n/>", {At("a", Edit().Text("x"))}, "<a\n b='1'\n>x</a>"},
        {"leaves an empty tag", "<a/>", {At("a", Edit().Text(""))}, "<a/>"},
        {"removes the text", "<a>x</a>", {At("a", Edit().Text(""))}, "<a></a>"},
        {"replaces references", "<a>x&amp;y</a>", {At("a", Edit().Text("z"))}, "<a>z</a>"},
        {"leaves an equal text",
            "<a>x&#65;<![CDATA[y]]></a>",
            {At("a", Edit().Text("xAy"))},
            "<a>x&#65;<![CDATA[y]]></a>"},
        {"leaves an equal CDATA section with lines",
            "<a><![CDATA[1\r\n2\r3\n4]]></a>",
            {At("a", Edit().Text("1\n2\n3\n4"))},
            "<a><![CDATA[1\r\n2\r3\n4]]></a>"},
        {"keeps a CDATA section", "<a><![CDATA[x<y]]></a>", {At("a", Edit().Text("1<2"))}, "<a><![CDATA[1<2]]></a>"},
        {"escapes what a CDATA section cannot contain",
            "<a><![CDATA[x<y]]></a>",
            {At("a", Edit().Text("]]>"))},
            "<a>]]&gt;</a>"},
        {"keeps comments and processing instructions",
            "<a>\n  <!-- 1 -->\n  x\n  <?p?> y\n</a>",
            {At("a", Edit().Text("z"))},
            "<a><!-- 1 -->z<?p?></a>"},
        {"replaces white space", "<a>  </a>", {At("a", Edit().Text("x"))}, "<a>x</a>"},
        {"writes white space", "<a>x</a>", {At("a", Edit().Text(" "))}, "<a> </a>"},
    });
}

TEST(XMLSourceEditorTest, RenamesElements)
{
    ExpectResults({
        {"both tags", "<a ><b x='1'>y</b\n></a>", {At("a/b", Edit().Rename("long"))}, "<a ><long x='1'>y</long\n></a>"},
        {"an empty tag", "<a><b/></a>", {At("a/b", Edit().Rename("c"))}, "<a><c/></a>"},
        {"nested elements", "<b><b><b/></b></b>", {At("//b", Edit().Rename("c"))}, "<c><c><c/></c></c>"},
        {"an element that other actions find by its old name",
            "<a><b/></a>",
            {At("a", Edit().Rename("c")), At("a/b", Edit().Set("x", "1"))},
            "<c><b x='1'/></c>"},
        {"an empty tag that gets content",
            "<a/>",
            {At("a", Edit().Rename("c").Text("x").Set("y", "1"))},
            "<c y='1'>x</c>"},
    });
}

TEST(XMLSourceEditorTest, DeletesElements)
{
    ExpectResults({
        {"with the line", "<a>\n  <b/>\n  <c/>\n</a>", {At("a/b", Edit().Delete())}, "<a>\n  <c/>\n</a>"},
        {"with all lines", "<a>\r\n\t<b>\r\n\t</b> \r\n</a>", {At("a/b", Edit().Delete())}, "<a>\r\n</a>"},
        {"on a line with others", "<a>\n  <b/> <c/>\n</a>", {At("a/b", Edit().Delete())}, "<a>\n  <c/>\n</a>"},
        {"in front of a comment",
            "<a>\n  <b/> <!-- b -->\n</a>",
            {At("a/b", Edit().Delete())},
            "<a>\n  <!-- b -->\n</a>"},
        {"in front of the end tag", "<a>\n  <b/></a>", {At("a/b", Edit().Delete())}, "<a>\n  </a>"},
        {"on one line", "<a><b/><c/></a>", {At("a/b", Edit().Delete())}, "<a><c/></a>"},
        {"all of a line",
            "<a>\n  <b/> <c/>\n  <d/>\n</a>",
            {At("a/b", Edit().Delete()), At("a/c", Edit().Delete())},
            "<a>\n  <d/>\n</a>"},
        {"from mixed content", "<a>x\n  <b/>\ny</a>", {At("a/b", Edit().Delete())}, "<a>x\n  \ny</a>"},
        {"from preserved content",
            "<a xml:space='preserve'>\n  <b/>\n</a>",
            {At("a/b", Edit().Delete())},
            "<a xml:space='preserve'>\n  \n</a>"},
        {"with all changes inside",
            "<a>\n  <b>\n    <c/>\n  </b>\n</a>",
            {At("a/b", Edit().Delete()), At("a/b/c", Edit().Set("x", "1").After("<d/>"))},
            "<a>\n</a>"},
        {"in exchange for others",
            "<a>\n  <b>x</b> <!-- b -->\n</a>",
            {At("a/b", Edit().Delete().Before("<c/>").After("<d/><!-- d -->"))},
            "<a>\n  <c/>\n  <d/>\n  <!-- d --> <!-- b -->\n</a>"},
    });
}

TEST(XMLSourceEditorTest, InsertsFragmentsOnLines)
{
    ExpectResults({
        {"before and after",
            "<a>\n\t<b/>\n</a>",
            {At("a/b", Edit().Before("<c/>").Before("<d/>").After("<e/>").After("<f/>"))},
            "<a>\n\t<c/>\n\t<d/>\n\t<b/>\n\t<e/>\n\t<f/>\n</a>"},
        {"at both ends",
            "<a>\n  <b/>\n</a>",
            {At("a", Edit().Prepend("<c/>").Prepend("<d/>").Append("<e/>").Append("<f/>"))},
            "<a>\n  <c/>\n  <d/>\n  <b/>\n  <e/>\n  <f/>\n</a>"},
        {"in front of a document element on the second line",
            "\n<a/>\n",
            {At("a", Edit().Before("<!--c-->").After("<!--d-->"))},
            "\n<!--c-->\n<a/>\n<!--d-->\n"},
        {"with the line ends of the document",
            "<a>\r\n  <b/>\r\n</a>",
            {At("a", Edit().Prepend("<c/>").Append("<d>\n  <e/>\n</d>")), At("a/b", Edit().After("<f/>"))},
            "<a>\r\n  <c/>\r\n  <b/>\r\n  <f/>\r\n  <d>\r\n    <e/>\r\n  </d>\r\n</a>"},
        {"of several nodes",
            "<a>\n  <b/>\n</a>",
            {At("a/b", Edit().After(" <c/> <!-- d -->\n<?e?> "))},
            "<a>\n  <b/>\n  <c/>\n  <!-- d -->\n  <?e?>\n</a>"},
        {"behind the comment of a line",
            "<a> <!-- a -->\n  <b/> <!-- b -->\n  <c/>\n</a>",
            {At("a", Edit().Prepend("<d/>")), At("a/b", Edit().After("<e/>"))},
            "<a> <!-- a -->\n  <d/>\n  <b/> <!-- b -->\n  <e/>\n  <c/>\n</a>"},
        {"behind the white space at the end of a line",
            "<a> \n  <b/>\t\n</a>",
            {At("a", Edit().Prepend("<c/>")), At("a/b", Edit().After("<d/>"))},
            "<a> \n  <c/>\n  <b/>\t\n  <d/>\n</a>"},
        {"into an empty element",
            "<a>\n    <b></b>\n</a>",
            {At("a/b", Edit().Append("<c/>"))},
            "<a>\n    <b>\n        <c/>\n    </b>\n</a>"},
        {"into an empty tag",
            "<a>\r\n\t<b x='1' />\r\n</a>",
            {At("a/b", Edit().Append("<c/>").Prepend("<d/>"))},
            "<a>\r\n\t<b x='1'>\r\n\t\t<d/>\r\n\t\t<c/>\r\n\t</b>\r\n</a>"},
        {"into an element that contains white space",
            "<a>\n  <b>\n  </b>\n</a>",
            {At("a/b", Edit().Append("<c/>"))},
            "<a>\n  <b>\n    <c/>\n  </b>\n</a>"},
        {"beside deleted elements",
            "<a>\n  <b/>\n</a>",
            {At("a/b", Edit().Delete()), At("a", Edit().Append("<c/>").Prepend("<d/>"))},
            "<a>\n  <d/>\n  <c/>\n</a>"},
        {"with empty lines",
            "<a>\n\n  <b/>\n\n</a>",
            {At("a", Edit().Prepend("<c/>").Append("<d/>"))},
            "<a>\n  <c/>\n\n  <b/>\n  <d/>\n\n</a>"},
        {"beside the document element",
            "<?xml version='1.0'?>\n<a/>\n",
            {At("a", Edit().Before("<!-- 1 --><?p?>").After("<!-- 2 -->"))},
            "<?xml version='1.0'?>\n<!-- 1 -->\n<?p?>\n<a/>\n<!-- 2 -->\n"},
        {"with texts that keep their lines",
            "<a>\n  <b/>\n</a>",
            {At("a/b", Edit().After("<c>\n  <d>1\n2</d>\n  <e>\n</e>\n  <f>x\n<g/></f>\n</c>"))},
            "<a>\n  <b/>\n  <c>\n    <d>1\n2</d>\n    <e>\n</e>\n    <f>x\n<g/></f>\n  </c>\n</a>"},
    });
}

TEST(XMLSourceEditorTest, InsertsFragmentsInLines)
{
    ExpectResults({
        {"on one line",
            "<a><b/></a>",
            {At("a/b", Edit().Before("<c/> <d/>").After("<e/>"))},
            "<a><c/><d/><b/><e/></a>"},
        {"at both ends of one line",
            "<a><b/></a>",
            {At("a", Edit().Prepend("<c/>").Append("<d/>"))},
            "<a><c/><b/><d/></a>"},
        {"into an empty tag", "<a/>", {At("a", Edit().Append("<c/>"))}, "<a><c/></a>"},
        {"into mixed content",
            "<a>x\n  <b/>\n  y</a>",
            {At("a/b", Edit().Before("<c/>").After("<d/>")), At("a", Edit().Prepend("<e/>").Append("<f/>"))},
            "<a><e/>x\n  <c/><b/><d/>\n  y<f/></a>"},
        {"into preserved content",
            "<a xml:space='preserve'>\n  <b>\n    <c/>\n  </b>\n</a>",
            {At("a/b", Edit().Append("<d/>").After("<e/>"))},
            "<a xml:space='preserve'>\n  <b>\n    <c/>\n  <d/></b><e/>\n</a>"},
        {"beside a new text",
            "<a>\n  <b>x</b>\n</a>",
            {At("a/b", Edit().Text("y").Prepend("<c/>").Append("<d/>"))},
            "<a>\n  <b><c/>y<d/></b>\n</a>"},
        {"beside neighbours of one line",
            "<a><b/>\n  <c/></a>",
            {At("a/b", Edit().After("<d/>"))},
            "<a><b/><d/>\n  <c/></a>"},
        {"at one place in the order of the document",
            "<a><b/><c/></a>",
            {At("a", Edit().Prepend("<p/>").Append("<q/>")), At("a/*", Edit().Before("<x/>").After("<y/>"))},
            "<a><p/><x/><b/><y/><x/><c/><y/><q/></a>"},
    });
}

TEST(XMLSourceEditorTest, CombinesChangesOfOneElement)
{
    ExpectResults({
        {"of several paths",
            "<a>\n  <b x='1'>y</b>\n</a>",
            {At("//b", Edit().Set("x", "2").Text("z")),
                At("a/b", Edit().Set("x", "2").Rename("c")),
                At("a/*", Edit().Set("w", "3"))},
            "<a>\n  <c x='2' w='3'>z</c>\n</a>"},
        {"as the document was read",
            "<a><b/></a>",
            {At("a/b", Edit().Rename("c")), At("a/c", Edit().Set("x", "1"))},
            "<a><c/></a>"},
    });
}

TEST(XMLSourceEditorTest, KeepsTheRestOfTheDocument)
{
    ExpectResults({
        {"white space around the document", "\n\n <a/>\n\n", {At("a", Edit().Set("b", "1"))}, "\n\n <a b='1'/>\n\n"},
        {"the document type",
            "<!DOCTYPE a [<!ENTITY e 'x'> <!-- <a/> --> ]>\r<a b='&e;'>&e;</a>",
            {At("a", Edit().Set("c", "1"))},
            "<!DOCTYPE a [<!ENTITY e 'x'> <!-- <a/> --> ]>\r<a b='&e;' c='1'>&e;</a>"},
        {"declarations of other encodings",
            "<?xml version='1.0' encoding='utf-16'?><a/>",
            {At("a", Edit().Text("ä"))},
            "<?xml version='1.0' encoding='utf-16'?><a>ä</a>"},
        {"a version that contains the end of an instruction",
            "<?xml version='1.0?>' encoding='UTF-8'?><a/>",
            {At("a", Edit().Set("b", "1"))},
            "<?xml version='1.0?>' encoding='UTF-8'?><a b='1'/>"},
        {"XML 1.1",
            "<?xml version='1.1'?><a>&#1;</a>",
            {At("a", Edit().Text("\u0001\u0085\u2028").Set("b", "\u007F"))},
            "<?xml version='1.1'?><a b='&#127;'>&#1;&#133;&#8232;</a>"},
    });
}

TEST(XMLSourceEditorTest, RefusesChangesThatCannotApply)
{
    const char* const text = "<a>\n  <b x='1'>y</b>\n</a>";
    ExpectResults({
        {"text beside elements",
            text,
            {At("a", Edit().Text("x"))},
            "(1,1) /a: the text cannot be changed, because the element contains elements\n"},
        {"two values",
            text,
            {At("a/b", Edit().Set("x", "1")), At("//b", Edit().Set("x", "2"))},
            "(2,3) /a/b[1]: the attribute 'x' gets two values\n"},
        {"a value and its removal",
            text,
            {At("a/b", Edit().Set("x", "1").Unset("x"))},
            "(2,3) /a/b[1]: the attribute 'x' is set and also removed\n"},
        {"two texts",
            text,
            {At("a/b", Edit().Text("1")), At("a/b", Edit().Text("2"))},
            "(2,3) /a/b[1]: the element gets two texts\n"},
        {"two names",
            text,
            {At("a/b", Edit().Rename("c")), At("a/b", Edit().Rename("d"))},
            "(2,3) /a/b[1]: the element gets two names\n"},
        {"a deleted element",
            text,
            {At("a/b", Edit().Delete()), At("a/b", Edit().Append("<c/>"))},
            "(2,3) /a/b[1]: the element is deleted and also changed\n"},
        {"the document element",
            text,
            {At("a", Edit().Delete())},
            "(1,1) /a: the document element cannot be deleted\n"},
        {"a second document element",
            text,
            {At("a", Edit().After("<c/>"))},
            "(1,1) /a: a document can have only one element at the top\n"},
        {"several errors",
            "<a>\U00010000<b/>\r\n<c><b/></c></a>",
            {At("*", Edit().Text("x")), At("a/*", Edit().Delete().Set("x", "1"))},
            "(1,1) /a: the text cannot be changed, because the element contains elements\n"
            "(1,6) /a/b[1]: the element is deleted and also changed\n"
            "(2,1) /a/c[1]: the element is deleted and also changed\n"},
        {"a name", text, {At("//none", Edit().Set("1", "x"))}, "'1' is not a name\n"},
        {"an empty name", text, {At("a", Edit().Rename(""))}, "'' is not a name\n"},
        {"a name with markup", text, {At("a", Edit().Unset("a b"))}, "'a b' is not a name\n"},
        {"a character",
            text,
            {At("a/b", Edit().Text("\u0001"))},
            "the text contains U+0001, which XML does not allow\n"},
        {"a character of a value",
            text,
            {At("a/b", Edit().Set("x", "\uFFFE"))},
            "the value of 'x' contains U+FFFE, which XML does not allow\n"},
        {"an end tag",
            text,
            {At("a", Edit().Append("</a>"))},
            "the fragment '</a>' is not well-formed: it begins with an end tag\n"},
        {"a text", text, {At("a", Edit().Append("x"))}, "the fragment 'x' contains text outside of an element\n"},
        {"a document",
            text,
            {At("a", Edit().Append("<?xml version='1.0'?><c/>"))},
            "the fragment '<?xml version='1.0'?><c/>' contains an XML declaration or a document type\n"},
        {"elements of an entity",
            "<!DOCTYPE a [<!ENTITY e '<b/>'>]><a>\n<c>&e;</c></a>",
            {At("//b", Edit().Set("x", "1"))},
            "(2,4) /a/c[1]: the element 'b' of an entity cannot be changed\n"},
        {"elements of two entities in a text",
            "<!DOCTYPE a [<!ENTITY e '<b/>'>]><a>\n<c>x &e; y &e;</c></a>",
            {At("//b", Edit().Set("x", "1"))},
            "(2,6) /a/c[1]: the element 'b' of an entity cannot be changed\n"
            "(2,12) /a/c[1]: the element 'b' of an entity cannot be changed\n"},
        {"a text beside elements of an entity",
            "<!DOCTYPE a [<!ENTITY e '<b/>'>]><a>\n<c>&e;</c></a>",
            {At("a/c", Edit().Text("x"))},
            "(2,4) /a/c[1]: the text cannot be changed, because an entity contains elements\n"},
        {"an attribute that the document type adds",
            "<!DOCTYPE a [<!ATTLIST a x CDATA '1'>]><a x='2'/>",
            {At("a", Edit().Unset("x"))},
            "/a: The changes contradict the attributes that the document type declares\n"},
        {"a name for which the document type adds an attribute",
            "<!DOCTYPE a [<!ATTLIST c x CDATA '1'>]><a><d/><b><b/></b></a>",
            {At("a/b/b", Edit().Rename("c"))},
            "/a/b/c: The changes contradict the attributes that the document type declares\n"},
    });
}

TEST(XMLSourceEditorTest, RefusesFragmentsThatAreNotWellFormed)
{
    for (const std::string fragment : {"<c>", "<c x='1' x='2'/>"}) {
        EXPECT_THAT(Apply("<a/>", {At("a", Edit().Append(fragment.c_str()))}),
            testing::StartsWith("the fragment '" + fragment + "' is not well-formed: "));
    }
}

TEST(XMLSourceEditorTest, RefusesADocumentThatIsNotWellFormed)
{
    const std::string text = "<a>\n<b></a>";
    XMLSourceEditor editor(text, "test");
    editor.Change("a", Edit().Set("x", "1").change);
    EXPECT_FALSE(editor.Edit());
    ASSERT_EQ(editor.GetDiagnostics().size(), 1u);
    EXPECT_EQ(editor.GetDiagnostics()[0].severity, ParseDiagnostic::Severity::FatalError);
    EXPECT_EQ(editor.GetDiagnostics()[0].sourceId, VString("test"));
    EXPECT_EQ(editor.GetDiagnostics()[0].start.line, 2u);
}

TEST(XMLSourceEditorTest, CharactersThatTheEncodingLacksBecomeReferences)
{
    XMLSourceEditor::Options ascii;
    ascii.canEncode = [](char32_t character) { return character < 0x80; };
    const auto apply = [&](Edit&& edit) { return Apply("<a><b/></a>", {At("a/b", std::move(edit))}, ascii); };
    EXPECT_EQ(apply(Edit().Set("x", "ä€\U0001F600")), "<a><b x='&#228;&#8364;&#128512;'/></a>");
    EXPECT_EQ(apply(Edit().Text("ä")), "<a><b>&#228;</b></a>");
    EXPECT_EQ(apply(Edit().After("<c x='ä'>ä</c>")), "<a><b/><c x='&#228;'>&#228;</c></a>");
    EXPECT_EQ(Apply("<a><![CDATA[x]]></a>", {At("a", Edit().Text("ä"))}, ascii), "<a>&#228;</a>");
    EXPECT_EQ(apply(Edit().Rename("ä")), "the name 'ä' contains U+00E4, which the encoding of the document lacks\n");
    EXPECT_EQ(apply(Edit().After("<!--ä-->")),
        "the fragment '<!--ä-->' contains U+00E4, which the encoding of the document lacks, outside of texts and "
        "values\n");
}

TEST(XMLSourceEditorTest, WarnsOfAPathWithoutAMatch)
{
    const std::string text = "<a/>";
    XMLSourceEditor editor(text, "test");
    editor.Change("/b", Edit().Set("x", "1").change);
    editor.Change("", Edit().Set("x", "1").change);
    const std::optional<EditedText> edited = editor.Edit();
    ASSERT_TRUE(edited);
    EXPECT_EQ(edited->text, text);
    ASSERT_EQ(editor.GetDiagnostics().size(), 2u);
    EXPECT_EQ(editor.GetDiagnostics()[0].severity, ParseDiagnostic::Severity::Warning);
    EXPECT_EQ(editor.GetDiagnostics()[0].message, VString("the path '/b' matches no element"));
}

TEST(XMLSourceEditorTest, ChangesElementsByNumber)
{
    const std::string text = "<!DOCTYPE a [<!ENTITY e '<x/><x/>'>]><a>&e;<b><c/></b>&e;<d/></a>";
    XMLSourceEditor editor(text, "test");
    editor.ChangeElement(3, Edit().Set("n", "3").change);
    editor.ChangeElement(0, Edit().Set("n", "0").change);
    editor.ChangeElement(2, Edit().Set("n", "2").change);
    editor.ChangeElement(3, Edit().Set("m", "4").change);
    const std::optional<EditedText> edited = editor.Edit();
    ASSERT_TRUE(edited);
    EXPECT_EQ(
        edited->text, "<!DOCTYPE a [<!ENTITY e '<x/><x/>'>]><a n='0'>&e;<b><c n='2'/></b>&e;<d n='3' m='4'/></a>");
}

TEST(XMLSourceEditorTest, UnknownNumberThrows)
{
    const std::string text = "<a/>";
    XMLSourceEditor editor(text, "test");
    editor.ChangeElement(1, Edit().Set("n", "3").change);
    EXPECT_THROW(editor.Edit(), std::out_of_range);
}

TEST(XMLSourceEditorTest, EditCanBeRepeated)
{
    const std::string text = "<a/>";
    XMLSourceEditor editor(text, "test");
    editor.Change("a", Edit().Set("b", "1").change);
    EXPECT_EQ(editor.Edit()->text, "<a b='1'/>");
    editor.Change("a", Edit().Set("c", "2").change);
    EXPECT_EQ(editor.Edit()->text, "<a b='1' c='2'/>");
}

TEST(XMLSourceEditorTest, DeepDocumentsDoNotExhaustTheCallStack)
{
    constexpr int Depth = 100000;
    std::string text;
    for (int i = 0; i < Depth; ++i)
        text += "<a>";
    text += "<b/>";
    for (int i = 0; i < Depth; ++i)
        text += "</a>";
    XMLSourceEditor editor(text, "test");
    editor.Change("//b", Edit().Set("x", "1").change);
    editor.Change("//a", Edit().Rename("c").change);
    const std::optional<EditedText> edited = editor.Edit();
    ASSERT_TRUE(edited);
    EXPECT_EQ(edited->edits.size(), 2u * Depth + 1);
    EXPECT_EQ(edited->text.substr(0, 6), "<c><c>");
}

TEST(XMLSourceEditorTest, InsertsCommentsIntoElementsWithWhiteSpace)
{
    ExpectResults({
        {"white space only",
            "<a>\n  <b>\n  </b>\n</a>",
            {At("//b", Edit().Append("<!--c-->"))},
            "<a>\n  <b>\n    <!--c-->\n  </b>\n</a>"},
        {"behind a comment",
            "<a>\n  <b>\n    <!--c-->\n  </b>\n</a>",
            {At("//b", Edit().Append("<?d?>"))},
            "<a>\n  <b>\n    <!--c-->\n    <?d?>\n  </b>\n</a>"},
        {"in front of a comment",
            "<a>\n  <b>\n    <!--c-->\n  </b>\n</a>",
            {At("//b", Edit().Prepend("<?d?>"))},
            "<a>\n  <b>\n    <?d?>\n    <!--c-->\n  </b>\n</a>"},
    });
}

TEST(XMLSourceEditorTest, InsertionsAtAllLevelsOfADeepDocumentAreLinear)
{
    constexpr int Depth = 100000;
    std::string text;
    std::string expected;
    for (int i = 0; i < Depth; ++i) {
        text += "<a>";
        expected += "<a><c/>";
    }
    text += "<b/>";
    expected += "<b/>";
    for (int i = 0; i < Depth; ++i) {
        text += "</a>";
        expected += i + 1 < Depth ? "</a><d/>" : "</a>";
    }
    XMLSourceEditor editor(text, "test");
    editor.Change("//a", Edit().Prepend("<c/>").change);
    editor.Change("//a/a", Edit().After("<d/>").change);
    EXPECT_TRUE(editor.Edit()->text == expected);
}

TEST(XMLSourceEditorTest, KeepsTheOrderOfAllInsertionsIntoOneParent)
{
    for (int count = 0; count <= 20; ++count) {
        SCOPED_TRACE(count);
        std::string children;
        std::string replaced;
        for (int i = 0; i < count; ++i) {
            children += i % 2 == 0 ? "<b/>" : "<c/>";
            replaced += i % 2 == 0 ? "<e/><f/><b/><g/><h/>" : "<i/><j/>";
        }
        const std::vector<PathEdit> edits = {At("a", Edit().Prepend("<k/>").Append("<l/>")),
            At("a/b", Edit().Before("<e/>").After("<g/>")),
            At("a/c", Edit().Before("<i/>").Delete().After("<j/>")),
            At("//b", Edit().Before("<f/>").After("<h/>")),
            At("/a", Edit().Prepend("<m/>").Append("<n/>"))};
        EXPECT_EQ(Apply("<a>" + children + "</a>", edits), "<a><k/><m/>" + replaced + "<l/><n/></a>");
    }
}

TEST(XMLSourceEditorTest, ManyChangesOfOneParentAreLinear)
{
    constexpr int Count = 200000;
    std::string text = "<a>\n";
    for (int i = 0; i < Count; ++i)
        text += i % 2 == 0 ? "  <b/>\n" : "  <c/>\n";
    text += "</a>";
    XMLSourceEditor editor(text, "test");
    editor.Change("a/b", Edit().Delete().change);
    editor.Change("a/c", Edit().After("<d/>").change);
    const std::optional<EditedText> edited = editor.Edit();
    ASSERT_TRUE(edited);
    EXPECT_EQ(edited->edits.size(), static_cast<std::size_t>(Count));
    EXPECT_EQ(edited->text.substr(0, 25), "<a>\n  <c/>\n  <d/>\n  <c/>\n");
}

TEST(ApplyEditsTest, RefusesEditsThatOverlapOrExceedTheText)
{
    EXPECT_EQ(ApplyEdits("abc", {{0, 0, "x"}, {0, 1, "y"}, {3, 0, "z"}}), "xybcz");
    EXPECT_THROW(ApplyEdits("abc", {{0, 2, "x"}, {1, 1, "y"}}), std::invalid_argument);
    EXPECT_THROW(ApplyEdits("abc", {{2, 2, "x"}}), std::invalid_argument);
    EXPECT_THROW(ApplyEdits("abc", {{4, 0, "x"}}), std::invalid_argument);
}
