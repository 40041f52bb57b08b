// Validates the samples against the schemas.
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/InputSourceUtils.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vancorexml/main/parser/XSDResources.h"

namespace {

const char* const Versions[] = {"10.2", "10.3", "10.4", "10.5", "18.1"};

struct Sample {
    VString path;
    XmlFileType type;
};

XmlFileType TypeOf(const QFileInfo& file)
{
    static const QStringList endings{"", "kxa", "kxb", "kxc", "kxd", "kxe", "", "", "kxf"};
    return static_cast<XmlFileType>(endings.indexOf(file.suffix()));
}

std::vector<Sample> SamplesIn(const char* folder)
{
    std::vector<Sample> samples;
    const QDir files(QStringLiteral(SAMPLES_FOLDER) + QString::fromLatin1(folder));
    for (const QFileInfo& file : files.entryInfoList({QStringLiteral("*.kx?")}, QDir::Files, QDir::Name))
        samples.push_back({VString(file.filePath()), TypeOf(file)});
    return samples;
}

VersionNumber Version(const char* text)
{
    return VersionNumber(text, u'.', u'-', 0);
}

std::list<VString> Validate(const VString& path, std::unique_ptr<InputSource> schema)
{
    DOMParser parser;
    parser.AddXSDInputSource(std::move(schema));
    return parser.ParseXmlFile(path)->GetErrors();
}

std::list<VString> ValidateAgainstOwnVersion(const Sample& sample)
{
    const auto document = InputSourceUtils::InputSourceFromFileName(sample.path, true);
    return Validate(
        sample.path, XSDResources::GetVersionedXsdInputSourceForDocument(sample.type, *document, VString()));
}

// Returns the text of a sample with its version replaced by `version`.
VString TextWithVersion(const VString& path, const char* version)
{
    VString text = VString::fromStdString(testsupport::TemporaryFolder::Read(path));
    for (const char* known : Versions)
        text = text.replace(VString(" version='") + known + "'", VString(" version='") + version + "'");
    return text;
}

// Removes the columns from messages. On the line of the root element, the parser also counts the columns of the
// inserted declaration of the prefix. The recorded messages do not count them.
VString WithoutColumns(const VString& messages)
{
    static const QRegularExpression lineAndColumn(QStringLiteral("\\(([0-9]+),[0-9]+\\)"));
    QString text = messages.ToQString();
    return VString(text.replace(lineAndColumn, QStringLiteral("(\\1)")));
}

}  // namespace

TEST(SamplesTest, EverySchemaHasASample)
{
    int older = 0;
    int current = 0;
    for (const Sample& sample : SamplesIn(""))
        ++(sample.path.contains("-10-") ? older : current);
    EXPECT_EQ(older, 16);
    EXPECT_EQ(current, 6);
}

TEST(SamplesTest, EverySampleValidatesAgainstItsOwnVersion)
{
    for (const Sample& sample : SamplesIn(""))
        EXPECT_THAT(ValidateAgainstOwnVersion(sample), testing::IsEmpty()) << sample.path;
}

TEST(SamplesTest, NoSampleValidatesAgainstAnotherVersion)
{
    for (const Sample& sample : SamplesIn("")) {
        int fitting = 0;
        for (const char* version : Versions) {
            auto schema = XSDResources::GetVersionedXsdInputSource(sample.type, Version(version));
            if (schema)
                fitting += Validate(sample.path, std::move(schema)).empty() ? 1 : 0;
        }
        EXPECT_EQ(fitting, 1) << sample.path;
    }
}

TEST(SamplesTest, NoSampleValidatesAgainstAnotherType)
{
    for (const Sample& sample : SamplesIn("")) {
        const XmlFileType other = sample.type == XmlFileTypeKXA ? XmlFileTypeKXB : XmlFileTypeKXA;
        EXPECT_FALSE(Validate(sample.path, XSDResources::GetVersionedXsdInputSource(other, Version("18.1"))).empty())
            << sample.path;
    }
}

TEST(SamplesTest, EveryCurrentSampleHasTypicalContents)
{
    const std::pair<const char*, const char*> wanted[] = {
        {"attribute that begins with a colon", " :[a-z]+='"},
        {"text outside ASCII", "[^\\x{00}-\\x{7F}]"},
        {"file path", "[A-Z]:\\\\|\\\\\\\\"},
        {"Base64 block", "\\n *[A-Za-z0-9+/]{64,}=*\\n"},
    };
    for (const Sample& sample : SamplesIn("")) {
        if (sample.path.contains("-10-"))
            continue;
        const QString text = QString::fromStdString(testsupport::TemporaryFolder::Read(sample.path));
        for (const auto& [content, pattern] : wanted) {
            EXPECT_TRUE(text.contains(QRegularExpression(QString::fromLatin1(pattern))))
                << sample.path << " has no " << content;
        }
    }
}

TEST(SamplesTest, EveryElementMayHaveUserAttributes)
{
    for (const Sample& sample : SamplesIn("")) {
        const auto document = DOMParser().ParseXmlFile(sample.path);
        DOMElement& root = *document->GetDocumentRoot();
        for (DOMElement& element : DOMElementTraversal::MutablePreorderTraversal(root))
            element.SetAttribute("user:hidden", "true");
        root.SetAttribute("xmlns:user", "http://vancorexml.invalid/xml/user");
        DOMParser parser;
        parser.AddXSDInputSource(XSDResources::GetVersionedXsdInputSource(
            sample.type, VersionNumber(root.GetAttribute("version"), u'.', u'-', 0)));
        const VString text = XMLDomFormatter::RenderAsXMLString(*document, nullptr, true);
        EXPECT_THAT(parser.ParseXmlString(text, "marked")->GetErrors(), testing::IsEmpty()) << sample.path;
    }
}

TEST(SamplesTest, SchemasOfTwoVersionsAcceptDifferentSamples)
{
    // All samples get the same version, so only the other rules of a schema decide which samples it accepts.
    for (const XmlFileType type : {XmlFileTypeKXA, XmlFileTypeKXB, XmlFileTypeKXC, XmlFileTypeKXD}) {
        std::set<std::string> accepted;
        for (const char* version : Versions) {
            std::string verdicts;
            for (const Sample& sample : SamplesIn("")) {
                if (sample.type != type)
                    continue;
                DOMParser parser;
                parser.AddXSDInputSource(XSDResources::GetVersionedXsdInputSource(type, Version(version)));
                const VString text = TextWithVersion(sample.path, version);
                verdicts += parser.ParseXmlString(text, "renumbered")->HasErrors() ? '-' : '+';
            }
            EXPECT_TRUE(accepted.insert(verdicts).second)
                << type << " " << version << " accepts the same samples as another version: " << verdicts;
        }
    }
}

TEST(SamplesTest, EveryInvalidSampleHasItsRecordedErrors)
{
    int checked = 0;
    for (const Sample& sample : SamplesIn("/invalid")) {
        const VString name(QFileInfo(sample.path.ToQString()).fileName());
        // Two samples have no schema. The tests of the tool check their errors.
        if (name.startsWith("no-"))
            continue;
        VString errors;
        for (const VString& message : ValidateAgainstOwnVersion(sample))
            errors += message.replace(VString(" (id: ") + sample.path + ")", "") + "\n";
        const std::string recorded = testsupport::TemporaryFolder::Read(sample.path + ".errors");
        EXPECT_EQ(WithoutColumns(errors), WithoutColumns(VString::fromStdString(recorded))) << name;
        ++checked;
    }
    EXPECT_EQ(checked, 20);
}

TEST(SamplesTest, ExtensionManifestIsWellFormed)
{
    EXPECT_FALSE(DOMParser().ParseXmlFile(VString(SAMPLES_FOLDER) + "/notes-extension.xml")->HasErrors());
}

TEST(SamplesTest, ValidationAddsDefaultsAndCollapsesWhiteSpace)
{
    DOMParser parser;
    parser.AddXSDInputSource(XSDResources::GetVersionedXsdInputSource(XmlFileTypeKXC, Version("18.1")));
    const auto document = parser.ParseXmlString(
        "<data-connection version=' 18.1 ' name='n'><connection class='server'/></data-connection>", "shaped");
    ASSERT_FALSE(document->HasErrors());
    const DOMElement& root = *document->GetDocumentRoot();
    EXPECT_EQ(root.GetAttribute("version"), VString("18.1"));
    EXPECT_EQ(root.GetAttribute("read-only"), VString("true"));
    EXPECT_EQ(root.GetChild("connection")->GetAttribute("authentication"), VString("user"));
}
