// Writes and queries documents while allocations fail. An incomplete text must never look complete.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/common/TestSupport.h"
#include "tests/faults/FailedAllocations.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElementSearch.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/DOMPathCanopy.h"
#include "vancorexml/main/parser/XMLComparison.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"

namespace {

class WritingFaultTest : public FaultTest {
protected:
    WritingFaultTest()
    {
        DOMElement& top = m_document.GetRoot().AddNewChild("top", nullptr);
        for (int i = 0; i < 3; ++i) {
            DOMElement& part = top.AddNewChild("part", nullptr);
            part.SetAttributes(AttributeMap{{"name", "a&b"}, {"other", "'"}});
            part.AddNewChild("leaf", nullptr).SetText("a text of more than 32 code units with a <");
            part.AddNewChild("inner", nullptr).AddNewChild("leaf", nullptr).SetText("&");
        }
    }

    DOM m_document;
};

TEST_P(WritingFaultTest, RenderedTextIsCompleteOrFails)
{
    const VString expected = XMLDomFormatter::RenderAsXMLString(m_document, nullptr, true);
    const auto run = [this] { return XMLDomFormatter::RenderAsXMLString(m_document, nullptr, true); };
    FailEachAllocation(run, [&](const VString& text, bool) { EXPECT_EQ(text, expected); });
}

TEST_P(WritingFaultTest, RenderedBytesAreCompleteOrFail)
{
    const std::string expected = XMLDomFormatter::RenderAsXMLBytes(m_document, nullptr, true);
    const auto run = [this] { return XMLDomFormatter::RenderAsXMLBytes(m_document, nullptr, true); };
    FailEachAllocation(run, [&](const std::string& text, bool) { EXPECT_EQ(text, expected); });
}

// The text of a writer grows in small steps.
VString WriteTree(const DOM& document)
{
    XMLStringFormatter writer;
    XMLFormatter::FormatDOM(writer, document, nullptr, true);
    return writer.GetOutput();
}

TEST_P(WritingFaultTest, TextOfAWriterIsCompleteOrFails)
{
    const VString expected = WriteTree(m_document);
    const auto run = [this] { return WriteTree(m_document); };
    FailEachAllocation(run, [&](const VString& text, bool) { EXPECT_EQ(text, expected); });
}

VString WriteNested()
{
    XMLStringFormatter writer;
    const VString name("element");
    const XMLFormatter::Indenter first(writer, name, AttributeMap());
    {
        const XMLFormatter::Indenter second(writer, name, AttributeMap{{"a", "b"}});
        writer.OutputContentTag(name, AttributeMap(), name);
        const XMLFormatter::Indenter third(writer, name, AttributeMap());
    }
    return writer.GetOutput();
}

// ~Indenter swallows exceptions, so the writer must remember that a close tag is missing.
TEST_P(WritingFaultTest, TextOfIndentersIsCompleteOrFails)
{
    const VString expected = WriteNested();
    FailEachAllocation(WriteNested, [&](const VString& text, bool) { EXPECT_EQ(text, expected); });
}

TEST_P(WritingFaultTest, SavedFileIsTheOldOrTheNewOne)
{
    const testsupport::TemporaryFolder folder;
    const VString path = folder.Write("file", "old");
    const std::string expected = XMLDomFormatter::RenderAsXMLString(m_document, nullptr, true).toStdString();
    const auto run = [&] {
        try {
            XMLDomFormatter::SaveAsXMLFile(m_document, VPath(path), nullptr, true);
        } catch (const VIO::Exception&) {
            return false;
        }
        return true;
    };
    const auto check = [&](bool isSaved, bool hasFailed) {
        EXPECT_TRUE(isSaved || hasFailed);
        EXPECT_EQ(testsupport::TemporaryFolder::Read(path), isSaved ? expected : "old");
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
        folder.Write("file", "old");
    };
    FailEachAllocation(run, check);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

TEST_P(WritingFaultTest, QueriesAreRightOrFail)
{
    const auto run = [this] {
        const DOMElement& top = *m_document.GetDocumentRoot();
        std::size_t count = DOMPath::GetAll(top, "//leaf").size();
        for (const DOMElement& element : DOMPath::Walk(top, VString("top/part/inner")))
            count += element.HasChildren() ? 10U : 0U;
        count += 100 * DOMPathCanopy::WithinCanopy(top, "top/part", "inner").size();
        count += 1000 * DOMPathCanopy::UnderneathCanopy(top, "top/part", "inner/leaf").size();
        if (DOMElementSearch::FindElement(top, "leaf", 3, VString(), VString()))
            count += 10000;
        if (DOMElementSearch::FindChild(top, "part", "name", "a&b"))
            count += 20000;
        return count;
    };
    const std::size_t expected = run();
    EXPECT_EQ(expected, 33336u);
    FailEachAllocation(run, [expected](std::size_t count, bool) { EXPECT_EQ(count, expected); });
}

TEST_P(WritingFaultTest, ComparisonIsRightOrFails)
{
    const std::string text = XMLDomFormatter::RenderAsXMLString(m_document, nullptr, true).toStdString();
    const auto run = [&text] { return XMLComparison::AreEqual(text, text); };
    FailEachAllocation(run, [](bool areEqual, bool) { EXPECT_TRUE(areEqual); });
}

INSTANTIATE_FAULT_TEST(WritingFaultTest);

}  // namespace
