#include "tests/common/TestSupport.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

namespace {

using testsupport::TemporaryFolder;

template <typename Source>
std::string Save(const Source& source, VString* comment = nullptr, bool header = true)
{
    const TemporaryFolder folder;
    const VString file = folder.Path("saved.xml");
    XMLDomFormatter::SaveAsXMLFile(source, VPath(file), comment, header);
    return TemporaryFolder::Read(file);
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

TEST(SaveTest, KeepsTheOldFileIfTheTargetCannotBeWritten)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "old");
    ASSERT_TRUE(QFile::setPermissions(file.ToQString(), QFile::ReadOwner));
    EXPECT_THROW(XMLDomFormatter::SaveAsXMLFile(DOM(), VPath(file), nullptr, true), VIO::Exception);
    EXPECT_EQ(TemporaryFolder::Read(file), "old");
}

}  // namespace
