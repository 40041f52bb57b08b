// Formats, edits and retargets texts while allocations fail. A result must be complete.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/faults/FailedAllocations.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/NameRoles.h"
#include "vancorexml/main/parser/XMLSourceEditor.h"
#include "vancorexml/main/parser/XMLSourceFormatter.h"
#include "vancorexml/main/parser/XMLSourceRetargeter.h"
#include "vancorexml/main/parser/XSDResources.h"

namespace {

const std::string Text = "<!DOCTYPE a [<!ENTITY e 'x'>]><a b='c'><!-- d --><f>&e;</f><g h='i'>text</g>"
                         "<j><![CDATA[<]]></j><k q='r'/></a>";

class EditingFaultTest : public FaultTest {};

TEST_P(EditingFaultTest, FormattedTextIsCompleteOrFails)
{
    const std::optional<std::string> expected = XMLSourceFormatter().Format(Text, "id");
    ASSERT_TRUE(expected);
    EXPECT_NE(*expected, Text);
    const auto run = [] { return XMLSourceFormatter().Format(Text, "id"); };
    const auto check = [&](const std::optional<std::string>& text, bool hasFailed) {
        EXPECT_TRUE(text == expected || (!text && hasFailed)) << text.value_or("no text");
    };
    FailEachAllocation(run, check);
}

TEST_P(EditingFaultTest, EditedTextIsCompleteOrFails)
{
    const auto run = [] {
        XMLSourceEditor editor(Text, "id");
        ElementChange change;
        change.setAttributes = {{"h", "new"}};
        change.text = "other";
        change.name = "renamed";
        change.after = {"<l/>"};
        editor.Change("//g", change);
        ElementChange deletion;
        deletion.isDeleted = true;
        deletion.before = {"<m/>"};
        editor.Change("//j", deletion);
        ElementChange content;
        content.removeAttributes = {"q"};
        content.prepended = {"<n/>"};
        content.appended = {"<o>p</o>"};
        editor.Change("//k", content);
        const std::optional<EditedText> edited = editor.Edit();
        return edited ? std::optional<std::string>(edited->text) : std::nullopt;
    };
    const std::optional<std::string> expected = run();
    EXPECT_EQ(expected,
        "<!DOCTYPE a [<!ENTITY e 'x'>]><a b='c'><!-- d --><f>&e;</f><renamed h='new'>other</renamed><l/><m/>"
        "<k><n/><o>p</o></k></a>");
    const auto check = [&](const std::optional<std::string>& text, bool hasFailed) {
        EXPECT_TRUE(text == expected || (!text && hasFailed)) << text.value_or("no text");
    };
    FailEachAllocation(run, check);
}

TEST_P(EditingFaultTest, RetargetedTextIsCompleteOrFails)
{
    const NameRoles roles(*XSDResources::GetVersionedXsdInputSource(XmlFileTypeKXA, XSDResources::GetCurrentVersion()));
    DOM tables;
    tables.AddDataSourceRename("orders", "sales");
    const std::string text = "<analysis><data-sources><data-source name='orders'/></data-sources></analysis>";
    const auto run = [&] {
        const std::optional<EditedText> edited = XMLSourceRetargeter(roles, tables).Retarget(text, "id");
        return edited ? std::optional<std::string>(edited->text) : std::nullopt;
    };
    const std::optional<std::string> expected = run();
    ASSERT_TRUE(expected);
    EXPECT_NE(*expected, text);
    const auto check = [&](const std::optional<std::string>& result, bool hasFailed) {
        EXPECT_TRUE(result == expected || (!result && hasFailed)) << result.value_or("no text");
    };
    FailEachAllocation(run, check);
}

INSTANTIATE_FAULT_TEST(EditingFaultTest);

}  // namespace
