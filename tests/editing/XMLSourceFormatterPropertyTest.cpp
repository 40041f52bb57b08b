#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

#include "vancorexml/main/parser/AddressSanitizer.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vancorexml/main/parser/XMLSourceFormatter.h"

#include "IndependentReading.h"
#include "RandomDocument.h"

namespace {

// With the address sanitizer, all documents of these tests would take several minutes.
constexpr std::uint32_t SeedStep = HasAddressSanitizer ? 4 : 1;

std::string Replace(std::string text, std::string_view old, std::string_view replacement)
{
    for (std::size_t at = text.find(old); at != std::string::npos; at = text.find(old, at + replacement.size()))
        text.replace(at, old.size(), replacement);
    return text;
}

// Returns what the writer of trees makes of the document, with the line ends of `formatted`.
std::string Render(const std::string& text, const std::string& formatted)
{
    const std::string rendered =
        XMLDomFormatter::RenderAsXMLString(*DOMParser().ParseXmlString(text, "test"), nullptr, true).toStdString();
    return formatted.ends_with("\r\n") ? Replace(rendered, "\n", "\r\n") : rendered;
}

std::vector<std::string> FindEntityReferences(const std::string& text)
{
    static const QRegularExpression pattern(QStringLiteral("&[^#;&<>'\" ]+;"));
    std::vector<std::string> references;
    QRegularExpressionMatchIterator found = pattern.globalMatch(QString::fromStdString(text));
    while (found.hasNext()) {
        const std::string reference = found.next().captured().toStdString();
        if (reference != "&lt;" && reference != "&gt;" && reference != "&amp;" && reference != "&apos;" &&
            reference != "&quot;")
            references.push_back(reference);
    }
    std::sort(references.begin(), references.end());
    return references;
}

// Renames the attributes whose names begin with a colon, which Qt does not read.
std::string RenameColons(const std::string& text)
{
    static const QRegularExpression pattern(QStringLiteral("[ \\t\\r\\n]:([A-Za-z-]+[ \\t\\r\\n]*=)"));
    return QString::fromStdString(text).replace(pattern, QStringLiteral(" colon.\\1")).toStdString();
}

// Formats the document and checks all that is true for every document. Returns the result.
std::string FormatAndCheck(const std::string& text)
{
    XMLSourceFormatter formatter;
    const std::optional<std::string> formatted = formatter.Format(text, "test");
    if (!formatted) {
        ADD_FAILURE() << "refused: " << formatter.GetDiagnostics().front().message;
        return std::string();
    }
    EXPECT_EQ(formatter.Format(*formatted, "test"), formatted) << "not idempotent";
    const IndependentReading before = ReadIndependently(text);
    const IndependentReading after = ReadIndependently(*formatted);
    EXPECT_EQ(before.error, "");
    EXPECT_EQ(after.error, "");
    EXPECT_EQ(before.content, after.content);
    EXPECT_EQ(FindEntityReferences(text), FindEntityReferences(*formatted));
    // A parse into a tree changes a text that looks like an attribute whose name begins with a colon. The writer loses
    // carriage returns in sections.
    const bool survives = text.find(" :x = ") == std::string::npos && text.find("&#13;") == std::string::npos;
    if (before.isPlain && survives) {
        EXPECT_EQ(*formatted, Render(text, *formatted));
    }
    return *formatted;
}

TEST(XMLSourceFormatterPropertyTest, PlainDocumentsGetTheTextOfTheWriter)
{
    for (std::uint32_t seed = 0; seed < 2000; seed += SeedStep) {
        const std::string text = MakeRandomDocument(RandomDocumentKind::Plain, seed).text;
        SCOPED_TRACE("seed " + std::to_string(seed) + ": " + text);
        ASSERT_TRUE(ReadIndependently(text).isPlain);
        FormatAndCheck(text);
        if (HasFailure())
            return;
    }
}

void ExpectParts(const std::string& formatted, const std::vector<std::string>& parts)
{
    std::size_t position = 0;
    for (const std::string& part : parts) {
        position = formatted.find(part, position);
        ASSERT_NE(position, std::string::npos) << "changed: " << part << "\nin: " << formatted;
        position += part.size();
    }
}

TEST(XMLSourceFormatterPropertyTest, AllDocumentsKeepTheirContent)
{
    for (std::uint32_t seed = 0; seed < 4000; seed += SeedStep) {
        const RandomDocument document = MakeRandomDocument(RandomDocumentKind::Full, seed);
        SCOPED_TRACE("seed " + std::to_string(seed) + ": " + document.text);
        ExpectParts(FormatAndCheck(document.text), document.kept);
        if (HasFailure())
            return;
    }
}

// Qt does not read XML 1.1. The parser refuses a few of these documents: it takes the data of a processing instruction
// for an attribute whose name begins with a colon.
TEST(XMLSourceFormatterPropertyTest, DocumentsOfVersion11KeepTheirParts)
{
    int accepted = 0;
    for (std::uint32_t seed = 0; seed < 1000; ++seed) {
        const RandomDocument document = MakeRandomDocument(RandomDocumentKind::Version11, seed);
        SCOPED_TRACE("seed " + std::to_string(seed) + ": " + document.text);
        XMLSourceFormatter formatter;
        const std::optional<std::string> formatted = formatter.Format(document.text, "test");
        if (!formatted)
            continue;
        ++accepted;
        ASSERT_EQ(formatter.Format(*formatted, "test"), formatted) << "not idempotent";
        ExpectParts(*formatted, document.kept);
        if (HasFailure())
            return;
    }
    EXPECT_GT(accepted, 900);
}

// Deletes, repeats or inserts pieces.
std::string Mutate(std::string text, std::mt19937& random)
{
    static constexpr std::string_view Pieces[] = {"<",
        ">",
        "/",
        "&",
        ";",
        "'",
        "\"",
        "=",
        " ",
        "\r",
        "\n",
        "!",
        "?",
        "-",
        "--",
        "[",
        "]",
        "]]>",
        "<!--",
        "-->",
        "<![CDATA[",
        "<?p",
        "?>",
        "<a>",
        "</a>",
        "<b/>",
        "&e;",
        "&#32;",
        "&#13;",
        "<!DOCTYPE a [",
        "]>",
        "<!ENTITY e '",
        " xml:space='preserve'",
        " :c='",
        "<?xml version='1.1'?>",
        "1.1",
        "\u0085",
        "\u2028",
        "\uFEFF",
        "\xC2",
        "\x01"};
    for (auto count = 1 + random() % 3; count > 0; --count) {
        const std::size_t position = random() % (text.size() + 1);
        const std::size_t length = random() % 8;
        const unsigned kind = random() % 4;
        if (kind == 0)
            text.erase(position, length);
        else if (kind == 1)
            text.insert(random() % (text.size() + 1), text.substr(position, length));
        else
            text.insert(position, Pieces[random() % std::size(Pieces)]);
    }
    return text;
}

TEST(XMLSourceFormatterPropertyTest, DamagedDocumentsAreRefusedOrKept)
{
    std::mt19937 random(5);
    int accepted = 0;
    for (std::uint32_t seed = 0; seed < 6000; seed += SeedStep) {
        const std::string text = Mutate(MakeRandomDocument(RandomDocumentKind::Full, seed).text, random);
        SCOPED_TRACE("seed " + std::to_string(seed) + ": " + text);
        XMLSourceFormatter formatter;
        std::optional<std::string> formatted;
        ASSERT_NO_THROW(formatted = formatter.Format(text, "test"));
        if (!formatted)
            continue;
        ++accepted;
        ASSERT_EQ(formatter.Format(*formatted, "test"), formatted) << "not idempotent";
    }
    EXPECT_GT(accepted, 500 / static_cast<int>(SeedStep));
}

TEST(XMLSourceFormatterPropertyTest, HoldsForAllSamples)
{
    QDirIterator files(SAMPLES_FOLDER, {"*.xml", "*.kx?"}, QDir::Files, QDirIterator::Subdirectories);
    int count = 0;
    while (files.hasNext()) {
        QFile file(files.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        SCOPED_TRACE(file.fileName().toStdString());
        const std::string text = RenameColons(file.readAll().toStdString());
        const bool hasErrors = DOMParser().ParseXmlString(text, "test")->HasErrors();
        EXPECT_EQ(XMLSourceFormatter().Format(text, "test").has_value(), !hasErrors);
        if (!hasErrors)
            FormatAndCheck(text);
        ++count;
    }
    EXPECT_GT(count, 0);
}

}  // namespace
