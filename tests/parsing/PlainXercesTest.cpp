// The library passes UTF-8 to Xerces as UTF-16 where possible. The errors must be the same as when
// Xerces reads the UTF-8 itself.

#include <cstring>
#include <random>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "tests/parsing/ParsingTestSupport.h"
#include "vancoreplatform/VFormatString.h"

namespace {

using xercesc::XMLUni;

// Records the first fatal error of Xerces in the wording of the library. It stays empty for a well-formed text.
struct FirstFault : xercesc::DefaultHandler {
    void fatalError(const xercesc::SAXParseException& fault) override
    {
        if (text.IsEmpty()) {
            text = VFormatString("Fatal Error(%1,%2): %3 (id: id)")
                       .arg(std::uint64_t{fault.getLineNumber()})
                       .arg(std::uint64_t{fault.getColumnNumber()})
                       .arg(VString(fault.getMessage()));
        }
    }
    VString text;
};

// Adds the blank behind "<?xml" that Xerces needs to count the lines and to read the encoding.
std::string WithBlank(std::string bytes)
{
    const std::size_t start = bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    const std::size_t place = start + std::strlen("<?xml");
    if (bytes.compare(start, place - start, "<?xml") != 0 || place == bytes.size())
        return bytes;
    if (bytes[place] == '\t')
        bytes[place] = ' ';
    else if (bytes[place] == '\n' || bytes[place] == '\r')
        bytes.insert(place, " ");
    return bytes;
}

VString ErrorOfPlainXerces(const std::string& given, bool isUtf8)
{
    const std::string bytes = WithBlank(given);
    FirstFault handler;
    try {
        const std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
        reader->setErrorHandler(&handler);
        reader->setFeature(XMLUni::fgSAX2CoreNameSpaces, false);
        reader->setFeature(XMLUni::fgSAX2CoreValidation, false);
        reader->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
        xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(), u"id");
        if (isUtf8)
            source.setEncoding(XMLUni::fgUTF8EncodingString);
        xercesc::XMLPScanToken token;
        if (reader->parseFirst(source, token)) {
            while (handler.text.IsEmpty() && reader->parseNext(token))
                continue;
        }
    } catch (const xercesc::XMLException& exception) {
        return exception.getMessage();
    }
    return handler.text;
}

VString ErrorOfTheLibrary(InputSource& source)
{
    const auto parser = XercesXMLParser::Create(source, std::make_shared<testsupport::RecordingHandler>());
    parser->Parse();
    return parser->HasErrors() ? parser->GetErrors().front() : VString();
}

void ExpectErrorOfPlainXerces(const std::string& bytes)
{
    SCOPED_TRACE(bytes.size() < 300 ? bytes : "a long text");
    Utf8InputSource detected(bytes, "id", false);
    EXPECT_EQ(ErrorOfTheLibrary(detected), ErrorOfPlainXerces(bytes, false));
    const std::unique_ptr<StringInputSource> decoded = StringInputSource::FromUtf8(std::string(bytes), "id", false);
    EXPECT_EQ(ErrorOfTheLibrary(*decoded), ErrorOfPlainXerces(bytes, true));
}

struct PrologRow {
    const char* name;
    std::string text;
};

const PrologRow PrologRows[] = {
    {"no prolog", "<a/>"},
    {"a version", "<?xml version='1.0'?><a/>"},
    {"an encoding", "<?xml version='1.0' encoding='UTF-8'?><a/>"},
    {"non-ASCII in the version", "<?xml version='1.0\xC3\xA9'?><a/>"},
    {"non-ASCII in a name", "<?xml versi\xC3\xB6n='1.0'?><a/>"},
    {"non-ASCII for white space", "<?xml version='1.0'\xC2\xA0?><a/>"},
    {"non-ASCII in the encoding", "<?xml version='1.0' encoding='utf-8\xC3\xA9'?><a/>"},
    {"non-ASCII behind the encoding", "<?xml version='1.0' encoding='utf-8' \xF0\x9F\x98\x80?><a/>"},
    {"non-ASCII in standalone", "<?xml version='1.0' standalone='y\xC3\xA9s'?><a/>"},
    {"non-ASCII behind a line feed", "<?xml\nversion='1.0\xC3\xA9'?><a/>"},
    {"non-ASCII behind a tabulator", "<?xml\tversion='1.0\xC3\xA9'?><a/>"},
    {"non-ASCII behind a greater-than sign", "<?xml version='1.0>\xC3\xA9'?><a/>"},
    {"ill-formed UTF-8", "<?xml version='1.0\xE9'?><a/>"},
    {"an instruction that is no declaration", "<?xmlx \xC3\xA9?><a/>"},
    {"a declaration that is not closed", "<?xml version='1.0\xC3\xA9"},
    {"other line ends", "<?xml version='1.0'\r\nencoding='utf-8'\r?><a>\xC3\xA9</a>"},
    {"XML 1.1", "<?xml version='1.1'?><a\xC2\x85>\xE2\x80\xA8</a>"},
    {"XML 1.1 with its line ends in the declaration", "<?xml version='1.1'\xC2\x85?><a/>"},
    {"another version", "<?xml version='1.2'?><a/>"},
    {"an encoding in mixed case", "<?xml version='1.0' encoding='uTf-8'?><a>\xC3\xA9</a>"},
    {"an alias of the encoding", "<?xml version='1.0' encoding='UTF8'?><a>\xC3\xA9</a>"},
    {"another encoding", "<?xml version='1.0' encoding='iso-8859-1'?><a>\xC3\xA9</a>"},
    {"UTF-16 declared", "<?xml version='1.0' encoding='UTF-16'?><a/>"},
    {"UTF-16LE declared", "<?xml version='1.0' encoding='UTF-16LE'?><a/>"},
    {"an encoding that is not known", "<?xml version='1.0' encoding='none'?><a/>"},
    {"an empty encoding", "<?xml version='1.0' encoding=''?><a/>"},
    {"an encoding without quotes", "<?xml version='1.0' encoding=UTF-8?><a/>"},
    {"an encoding that is not closed", "<?xml version='1.0' encoding='UTF-8?><a/>"},
    {"the encoding first", "<?xml encoding='UTF-8' version='1.0'?><a/>"},
    {"only the encoding", "<?xml encoding='UTF-8'?><a/>"},
    {"two encodings", "<?xml version='1.0' encoding='UTF-8' encoding='iso-8859-1'?><a/>"},
    {"the word encoding as the version", "<?xml version='encoding' encoding='iso-8859-1'?><a/>"},
    {"a long declaration", "<?xml version='1.0'" + std::string(1000, ' ') + "encoding='UTF-8'?><a>\xC3\xA9</a>"},
    {"a declaration longer than a buffer", "<?xml version='1.0'" + std::string(20000, ' ') + "?><a/>"},
    {"a byte order mark", "\xEF\xBB\xBF<?xml version='1.0'?><a>\xC3\xA9</a>"},
    {"a byte order mark and non-ASCII", "\xEF\xBB\xBF<?xml version='1.0\xC3\xA9'?><a/>"},
    {"only a byte order mark", "\xEF\xBB\xBF"},
    {"two byte order marks", "\xEF\xBB\xBF\xEF\xBB\xBF<a/>"},
    {"white space first", " <?xml version='1.0'?><a/>"},
    {"a non-ASCII document type", "<?xml version='1.0'?><!DOCTYPE \xC3\xA9><\xC3\xA9/>"},
    {"a declaration in an entity", "<!DOCTYPE a [<!ENTITY e \"<?xml version='1.0'?>x\">]><a>&e;</a>"},
    {"non-ASCII in a declaration in an entity",
        "<!DOCTYPE a [<!ENTITY e \"<?xml version='1.0\xC3\xA9'?>x\">]><a>&e;</a>"},
    {"a declaration in a parameter entity", "<!DOCTYPE a [<!ENTITY % e \"<?xml encoding='\xC3\xA9'?>\"> %e;]><a/>"},
    {"a non-ASCII name", "<\xC3\xA9 \xC3\xB6='1'/>"},
    {"a supplementary name", "<\xF0\x90\x80\x80/>"},
    {"a supplementary name in XML 1.1", "<?xml version='1.1'?><\xF0\x90\x80\x80 \xF0\x90\x80\x80='1'/>"},
    {"a noncharacter", "<a>\xEF\xBF\xBE</a>"},
    {"the last Unicode character", "<a>\xF4\x8F\xBF\xBF</a>"},
    {"a control character", "<a>\x01</a>"},
    {"a C1 control in XML 1.1", "<?xml version='1.1'?><a>\xC2\x86</a>"},
    {"a surrogate", "<a>\xED\xA0\x80</a>"},
    {"an empty text", ""},
    {"one character", "<"},
    {"five characters", "<?xml"},
};

struct PlainXercesTest : testing::Test {
    // The first parse of the library initializes Xerces.
    PlainXercesTest() { testsupport::ParseBytes("<a/>"); }
};

TEST_F(PlainXercesTest, PrologsHaveTheErrorsOfPlainXerces)
{
    for (const PrologRow& row : PrologRows) {
        SCOPED_TRACE(row.name);
        ExpectErrorOfPlainXerces(row.text);
    }
}

// A surrogate pair must not be split between two buffers of Xerces.
TEST_F(PlainXercesTest, SupplementaryCharactersMayCrossBufferBoundaries)
{
    const std::string character = "\xF0\x90\x80\x80";
    for (const char* version : {"1.0", "1.1"}) {
        for (const std::size_t buffer : {16384U, 24576U, 49152U}) {
            for (std::size_t shift = 0; shift < 8; ++shift) {
                const std::string start = "<?xml version='" + std::string(version) + "'?><a><b ";
                const std::string space(buffer - start.size() - shift, ' ');
                ExpectErrorOfPlainXerces(start + space + "n" + character + character + "='1'/></a>");
                ExpectErrorOfPlainXerces(start + space + "n='" + character + character + "'/>" + character + "</a>");
                ExpectErrorOfPlainXerces("<?xml version='" + std::string(version) + "'?><!--" +
                    std::string(buffer - 28 - shift, 'x') + character + character + "--><a/>");
            }
        }
    }
}

TEST_F(PlainXercesTest, RandomlyChangedPrologsHaveTheErrorsOfPlainXerces)
{
    const std::string text = "<?xml version='1.0' encoding='UTF-8' standalone='no'?>\n"
                             "<!-- \xC3\xA9 -->\n"
                             "<!DOCTYPE a [<!ENTITY e '\xC3\xA9'>]>\n"
                             "<a b='\xF0\x9F\x98\x80'>&e;\xE2\x82\xAC</a>";
    const std::string characters[] = {
        "", "\xC3\xA9", "\xF0\x9F\x98\x80", "\xC2\x85", "\xE9", "\xEF\xBB\xBF", " ", "\n"};
    const std::string markup[] = {"'", "\"", ">", "?", "?>", "<", "<?xml ", "=", "encoding", "UTF-8", "1.1", "-"};
    std::vector<std::string> pieces(std::begin(characters), std::end(characters));
    pieces.insert(pieces.end(), std::begin(markup), std::end(markup));
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string changed = text;
        for (auto count = random() % 3 + 1; count > 0; --count)
            changed.replace(random() % changed.size(), random() % 3, pieces[random() % pieces.size()]);
        ExpectErrorOfPlainXerces(changed);
        if (HasFailure())
            return;
    }
}

}  // namespace
