// Compares the text of whole trees, which the library writes without calling a writer, with the text of a writer.
#include <gtest/gtest.h>

#include <random>

#include <QDirIterator>

#include "tests/common/TestSupport.h"
#include "tests/common/ThreadStack.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"

namespace {

using testsupport::TemporaryFolder;

// Longer texts are converted in pieces of this many code units.
constexpr int PieceUnits = 1024;

// A writer with overrides that change nothing, so every operation runs as for a writer of a caller.
class GeneralWriter : public XMLStringFormatter {
public:
    void OutputDOMElement(const DOMElement& element) override { XMLStringFormatter::OutputDOMElement(element); }
    void OutputLine(const VString& text) override { XMLStringFormatter::OutputLine(text); }
};

template <typename Writer, typename Source>
VString WriteThrough(const Source& source, VString* comment, bool header)
{
    Writer writer;
    writer.SetFormatMode(FormatModeContent);
    XMLFormatter::FormatDOM(writer, source, comment, header);
    return writer.GetOutput();
}

// True if all ways to write the tree give the text of a writer. Prints no long texts.
template <typename Source>
bool AllWaysAgree(const Source& source, VString* comment = nullptr, bool header = false)
{
    const VString expected = WriteThrough<XMLStringFormatter>(source, comment, header);
    const std::string utf8 = expected.toStdString();
    const TemporaryFolder folder;
    const VString file = folder.Path("saved.xml");
    XMLDomFormatter::SaveAsXMLFile(source, VPath(file), comment, header);
    return XMLDomFormatter::RenderAsXMLString(source, comment, header) == expected &&
        XMLDomFormatter::RenderAsXMLBytes(source, comment, header) == utf8 && TemporaryFolder::Read(file) == utf8;
}

// Also compares with a writer that overrides operations. Its call stack grows with the depth of the tree.
bool AllWaysAgreeWithOverrides(const DOMElement& element)
{
    VString comment = u"a--b---\xD800-";
    return AllWaysAgree(element, &comment, true) &&
        XMLDomFormatter::RenderAsXMLString(element, &comment, true) ==
        WriteThrough<GeneralWriter>(element, &comment, true);
}

VString UnitText(char16_t unit)
{
    return VString(&unit, 1);
}

VString Repeat(const VString& text, int count)
{
    VString result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

// Builds random trees of the characters that writers treat differently.
class RandomTree {
public:
    explicit RandomTree(unsigned seed) : m_random(seed) {}

    void Fill(DOMElement& element, int depth)
    {
        if (Below(3) != 0)
            element.SetText(Text(), Below(6) == 0);
        for (int i = Below(10) == 0 ? Below(40) : Below(4); i > 0; --i)
            element.SetAttribute(Name(), Text());
        for (int i = depth == 0 ? 0 : Below(6); i > 0; --i)
            Fill(element.AddNewChild(Name(), nullptr), depth - 1);
    }

private:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    VString Name() { return Below(5) == 0 ? ":" + Text() : Repeat("name", Below(9)) + VString::number(Below(40)); }
    VString Text()
    {
        static constexpr char16_t special[] = {0,
            1,
            '\t',
            '\n',
            '\r',
            0x1F,
            ' ',
            '"',
            '&',
            '\'',
            '<',
            '=',
            '>',
            '?',
            ']',
            ']',
            0x7E,
            0x7F,
            0x80,
            0xFF,
            0x100,
            0x7FF,
            0x800,
            0x7FFF,
            0x8000,
            0xD7FF,
            0xD800,
            0xDBFF,
            0xDC00,
            0xDFFF,
            0xE000,
            0xFFFD,
            0xFFFE,
            0xFFFF};
        static const VString sequences[] = {"]]>", "\xF0\x9F\x98\x80", "\r\n", "plain text", "äöü", "漢字", "\"<"};
        VString text;
        const int units = Below(50) == 0 ? PieceUnits - 20 + Below(2500) : Below(Below(4) == 0 ? 80 : 20);
        const int strangeness = Below(40);
        while (text.length() < units) {
            const int choice = Below(100);
            if (choice >= strangeness)
                text += static_cast<char16_t>('a' + Below(26));
            else if (choice % 3 == 0)
                text += sequences[Below(static_cast<int>(std::size(sequences)))];
            else
                text += special[Below(static_cast<int>(std::size(special)))];
        }
        return text;
    }

    std::mt19937 m_random;
};

TEST(TreeTextTest, RandomTreesAreWrittenAsByAWriter)
{
    for (unsigned seed = 0; seed < 120; ++seed) {
        DOMElement root("root");
        RandomTree(seed).Fill(root, 1 + static_cast<int>(seed % 5));
        EXPECT_TRUE(AllWaysAgreeWithOverrides(root)) << seed;
    }
}

// Each unit at the start, in a short text, and behind a block.
TEST(TreeTextTest, EachCodeUnitIsWrittenAsByAWriter)
{
    for (const auto& [before, after] : {std::pair(0, 0), std::pair(5, 4), std::pair(19, 30)}) {
        DOMElement root("root");
        for (int unit = 0; unit < 0x10000; ++unit) {
            const VString text = Repeat("x", before) + UnitText(static_cast<char16_t>(unit)) + Repeat("y", after);
            DOMElement& child = root.AddNewChild(text, nullptr);
            child.SetText(text, unit % 2 == 0);
            child.SetAttribute(text, text);
        }
        EXPECT_TRUE(AllWaysAgree(root)) << before;
    }
}

TEST(TreeTextTest, EachPlaceInATextIsWrittenAsByAWriter)
{
    const VString sequences[] = {"&", "<", "\n", "ü", u"\x8000", u"\xD800", u"\xDC00", "\xF0\x9F\x98\x80", "]]>"};
    for (const VString& sequence : sequences) {
        DOMElement root("root");
        for (int before = 0; before < 40; ++before) {
            for (int after = 0; after < 40; ++after) {
                const VString text = Repeat("x", before) + sequence + Repeat("y", after);
                DOMElement& child = root.AddNewChild(text, nullptr);
                child.SetText(text, after % 3 == 0);
                child.SetAttribute("a", text);
            }
        }
        EXPECT_TRUE(AllWaysAgree(root)) << sequence;
    }
}

// Each text puts a sequence that must not be divided on the border of two pieces.
TEST(TreeTextTest, DividesNoSequenceBetweenPieces)
{
    const VString sequences[] = {"]]>", "]]]]>", "\xF0\x9F\x98\x80", u"\xD800", u"]\xD800]", "&", "\t", "]]"};
    for (const VString& sequence : sequences) {
        DOMElement root("root");
        for (int before = PieceUnits - 6; before <= PieceUnits + 1; ++before) {
            const VString text = Repeat("x", before) + sequence;
            const VString longText = text + Repeat("y", PieceUnits);
            root.AddNewChild(longText, nullptr).SetText(text);
            root.AddNewChild("content", nullptr).SetText(longText);
            root.AddNewChild("cdata", nullptr).SetText("<" + longText);
            root.AddNewChild("quoted", nullptr).SetText("\"<" + longText + "\"");
            root.AddNewChild("encoded", nullptr).SetText(longText, true);
            root.AddNewChild("attributes", nullptr).SetAttributes({{longText, longText}, {text, text}});
        }
        EXPECT_TRUE(AllWaysAgreeWithOverrides(root)) << sequence;
    }
}

TEST(TreeTextTest, LongTextsAreWrittenAsByAWriter)
{
    DOMElement root("root");
    for (const VString& unit :
        {VString("]"), VString("'"), VString(u"\xFFFF"), VString("ü"), VString("\xF0\x9F\x98\x80")}) {
        const VString text = Repeat(unit, 200000);
        root.AddNewChild("content", nullptr).SetText(text);
        root.AddNewChild("cdata", nullptr).SetText("<" + text + ">");
        root.AddNewChild("encoded", nullptr).SetText(text, true);
        root.SetAttribute("a" + unit, text);
    }
    EXPECT_TRUE(AllWaysAgreeWithOverrides(root));
}

TEST(TreeTextTest, MixedContentIsWrittenAsByAWriter)
{
    for (const VString& text : {VString("t"), VString("\n"), VString("\nt"), VString("t\n"), VString()}) {
        for (const bool isEncoded : {false, true}) {
            DOMElement root("root");
            DOMElement& inner = root.AddNewChild("inner", nullptr);
            inner.SetText(text, isEncoded);
            inner.AddNewChild("leaf", nullptr).SetText(text, isEncoded);
            root.SetText(text, isEncoded);
            EXPECT_TRUE(AllWaysAgreeWithOverrides(root));
            EXPECT_TRUE(AllWaysAgreeWithOverrides(inner)) << "an inner element begins without indentation";
        }
    }
}

TEST(TreeTextTest, EmptyDocumentsAreWrittenAsByAWriter)
{
    VString comment = "c";
    for (const bool header : {false, true}) {
        EXPECT_TRUE(AllWaysAgree(DOM(), nullptr, header));
        EXPECT_TRUE(AllWaysAgree(DOM(), &comment, header));
        EXPECT_TRUE(AllWaysAgree(DOMElement(VString()), &comment, header));
    }
}

// Writes each file of the folder that is a document.
int CountWrittenFiles(const char* folder)
{
    int count = 0;
    DOMParser parser;
    for (QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories); files.hasNext();) {
        const std::unique_ptr<DOM> document =
            parser.ParseXmlString(TemporaryFolder::Read(VString(files.next())), "file");
        if (document->GetDocumentRoot() == nullptr)
            continue;
        EXPECT_TRUE(AllWaysAgreeWithOverrides(*document->GetDocumentRoot())) << files.filePath().toStdString();
        ++count;
    }
    return count;
}

TEST(TreeTextTest, SamplesAndSeedsOfTheFuzzersAreWrittenAsByAWriter)
{
    EXPECT_GT(CountWrittenFiles(SAMPLES_FOLDER), 30);
    EXPECT_GT(CountWrittenFiles(FUZZ_CORPUS_FOLDER), 30);
}

TEST(TreeTextTest, DepthNeedsNoStack)
{
    DOMElement root("e");
    DOMElement* last = &root;
    for (int depth = 1; depth < 3000; ++depth)
        last = &last->AddNewChild("e", nullptr);
    testsupport::RunWithStack(128 * 1024, [&] { EXPECT_TRUE(AllWaysAgree(root)); });
}

}  // namespace
