#include <QDirIterator>

#include <random>

#include "tests/common/TestSupport.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

namespace {

using testsupport::TemporaryFolder;

// The writer converts texts in pieces of this many code units.
constexpr int PieceUnits = 0x4000;

template <typename Source>
std::string Save(const Source& source, VString* comment = nullptr, bool header = true)
{
    const TemporaryFolder folder;
    const VString file = folder.Path("saved.xml");
    XMLDomFormatter::SaveAsXMLFile(source, VPath(file), comment, header);
    return TemporaryFolder::Read(file);
}

template <typename Source>
std::string Render(const Source& source, VString* comment = nullptr, bool header = true)
{
    return XMLDomFormatter::RenderAsXMLString(source, comment, header).toStdString();
}

// Compares without printing long texts.
bool IsSavedAsRendered(const DOMElement& element)
{
    return Save(element) == Render(element);
}

VString RepeatText(const VString& text, int count)
{
    VString result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

TEST(SaveTest, SavesDocumentsAndElements)
{
    DOMParser parser;
    const auto document = parser.ParseXmlString("<a x='ö'><b>\xF0\x9F\x98\x80</b></a>", "a.xml");
    VString comment = "saved";
    EXPECT_EQ(Save(*document, &comment),
        "<?xml version='1.0' encoding='utf-8' ?>\n\n<!-- saved -->\n<a x='ö'>\n  <b>\xF0\x9F\x98\x80</b>\n</a>\n");
    EXPECT_EQ(Save(*document->GetElement("b"), nullptr, false), "<b>\xF0\x9F\x98\x80</b>\n");
    EXPECT_EQ(Save(DOM(), nullptr, false), "");
    EXPECT_EQ(Save(DOM()), "<?xml version='1.0' encoding='utf-8' ?>\n\n");
}

TEST(SaveTest, SavesAllSamplesAsTheyAreRendered)
{
    int count = 0;
    DOMParser parser;
    for (QDirIterator files(SAMPLES_FOLDER, QDir::Files, QDirIterator::Subdirectories); files.hasNext();) {
        const std::unique_ptr<DOM> document = parser.ParseXmlFile(VString(files.next()));
        if (document->GetDocumentRoot() == nullptr)
            continue;
        EXPECT_EQ(Save(*document), Render(*document)) << files.filePath().toStdString();
        ++count;
    }
    EXPECT_GT(count, 30);
}

// Builds random documents with characters that the writer treats differently.
class RandomDocument {
public:
    explicit RandomDocument(unsigned seed) : m_random(seed) {}

    void Fill(DOMElement& element, int depth)
    {
        element.SetText(Text(), Below(8) == 0);
        for (int i = Below(4); i > 0; --i)
            element.SetAttribute(VString("n") + VString::number(Below(9)), Text());
        if (depth == 0)
            return;
        for (int i = Below(5); i > 0; --i)
            Fill(element.AddNewChild(Below(9) == 0 ? VString(u":ü\xD800") : VString("e"), nullptr), depth - 1);
    }

private:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    VString Text()
    {
        static const VString parts[] = {"abc",
            "]",
            "]]>",
            "<",
            "&",
            "\"",
            "\t",
            "\r\n",
            "ü",
            "\xF0\x9F\x98\x80",
            u"\xD800",
            u"\xDC00",
            u"\xFFFE",
            VString(u"\0", 1),
            "long text without markup "};
        VString text;
        const bool isLong = Below(20) == 0;
        for (int i = isLong ? 20000 + Below(9999) : Below(30); i > 0; --i)
            text += parts[Below(static_cast<int>(std::size(parts)))];
        return text;
    }

    std::mt19937 m_random;
};

TEST(SaveTest, SavesRandomDocumentsAsTheyAreRendered)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        DOMElement root("root");
        RandomDocument(seed).Fill(root, 4);
        EXPECT_TRUE(IsSavedAsRendered(root)) << seed;
    }
}

// Each text puts a sequence that must not be divided on the border of two pieces.
TEST(SaveTest, DividesNoSequenceBetweenPieces)
{
    const VString sequences[] = {"]]>", "]]]]>", "\xF0\x9F\x98\x80", u"\xD800", u"]\xD800]", "&", "\t", "]]"};
    for (const VString& sequence : sequences) {
        DOMElement root("root");
        for (int before = PieceUnits - 6; before <= PieceUnits + 1; ++before) {
            const VString text = RepeatText("x", before) + sequence;
            root.AddNewChild("short", nullptr).SetText(text);
            root.AddNewChild("long", nullptr).SetText(text + RepeatText("y", PieceUnits));
            root.AddNewChild("cdata", nullptr).SetText("<" + text + "z");
            root.AddNewChild("quoted", nullptr).SetText("\"<" + text + "\"");
        }
        EXPECT_TRUE(IsSavedAsRendered(root)) << sequence;
    }
}

TEST(SaveTest, SavesALongTextOfBrackets)
{
    DOMElement element("a");
    element.SetText("<" + RepeatText("]", 3 * PieceUnits) + ">");
    EXPECT_TRUE(IsSavedAsRendered(element));
}

TEST(SaveTest, SavesLongNamesAttributesAndEncodedTexts)
{
    const VString longText = RepeatText("ü\xF0\x9F\x98\x80", PieceUnits);
    DOMElement element(longText);
    element.SetAttribute(longText, longText);
    element.SetText(longText, true);
    element.AddNewChild("a", nullptr).SetText(longText, true);
    VString comment = longText;
    EXPECT_TRUE(Save(element, &comment) == Render(element, &comment));
}

TEST(SaveTest, KeepsTheOldFileIfTheTargetCannotBeWritten)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "old");
    ASSERT_TRUE(QFile::setPermissions(file.ToQString(), QFile::ReadOwner));
    EXPECT_THROW(XMLDomFormatter::SaveAsXMLFile(DOM(), VPath(file), nullptr, true), VIO::Exception);
    EXPECT_EQ(TemporaryFolder::Read(file), "old");
}

}  // namespace
