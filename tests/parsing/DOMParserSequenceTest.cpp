// A parse never depends on earlier parses: a used parser has the same results as a new one.

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/DOMParser.h"

namespace {

struct DocumentRow {
    const char* name;
    std::string bytes;
};

const DocumentRow Documents[] = {
    {"plain", "<a b='1'>text</a>"},
    {"declared UTF-8", "<?xml version='1.0' encoding='UTF-8'?><a>\xC3\xA4</a>"},
    {"version 1.1", "<?xml version='1.1'?><a>\xC2\x85</a>"},
    {"version 1.1 control character", "<?xml version='1.1'?><a>&#1;</a>"},
    {"version 1.1 with a fault", "<?xml version='1.1'?><a>"},
    {"version 1.1 with an unknown encoding", "<?xml version='1.1' encoding='klingon'?><a/>"},
    {"control character", "<a>&#1;</a>"},
    {"next line is text in 1.0", "<a>x\xC2\x85y</a>"},
    {"standalone", "<?xml version='1.0' standalone='yes'?><!DOCTYPE a [<!ATTLIST a b CDATA 'd'>]><a/>"},
    {"entity declared", "<!DOCTYPE a [<!ENTITY e 'first'>]><a>&e;</a>"},
    {"entity declared differently", "<!DOCTYPE a [<!ENTITY e 'second'>]><a>&e;</a>"},
    {"entity undeclared", "<a>&e;</a>"},
    {"parameter entity", "<!DOCTYPE a [<!ENTITY % p '<!ENTITY e \"x\">'>%p;]><a>&e;</a>"},
    {"defaulted attribute", "<!DOCTYPE a [<!ATTLIST a b CDATA 'd' c (x|y) 'x'>]><a/>"},
    {"normalized attribute", "<!DOCTYPE a [<!ATTLIST a b NMTOKENS #IMPLIED>]><a b='  1   2 '/>"},
    {"attribute not normalized", "<a b='  1   2 '/>"},
    {"element content", "<!DOCTYPE a [<!ELEMENT a (b)*>]><a> <b/> </a>"},
    {"external subset", "<!DOCTYPE a SYSTEM 'no.dtd'><a/>"},
    {"external entity", "<!DOCTYPE a [<!ENTITY e SYSTEM 'x'>]><a/>"},
    {"prefixes", "<p:a xmlns:p='u'><p:b/></p:a>"},
    {"leading colon", "<a :b='1'/>"},
    {"truncated", "<a><b>text"},
    {"truncated in a declaration", "<!DOCTYPE a [<!ENTITY e"},
    {"crossed tags", "<a><b></a></b>"},
    {"attribute twice", "<a b='1' b='2'/>"},
    {"invalid bytes", "<a>\xFF</a>"},
    {"empty", ""},
    {"Latin-1", "<?xml version='1.0' encoding='iso-8859-1'?><a>\xE4</a>"},
    {"UTF-16", testsupport::Utf16("<a>x</a>")},
    {"unknown encoding", "<?xml version='1.0' encoding='klingon'?><a/>"},
    {"long", "<a>" + std::string(100000, 'x') + "</a>"},
};

const DocumentRow Bombs[] = {
    {"parameter entity bomb", testsupport::ParameterEntityBomb(8, 10, "")},
    {"general entity bomb", testsupport::GeneralEntityBomb(8, 10)},
};

// Returns the names, positions and texts of `element` and its descendants.
std::string Describe(const DOMElement& element)
{
    std::string text = element.GetName().toStdString();
    for (const int position :
        {element.GetStartLine(), element.GetStartColumn(), element.GetEndLine(), element.GetEndColumn()})
        text += " " + std::to_string(position);
    text += "{" + element.GetText().toStdString();
    for (const DOMElement* child : element.GetChildren())
        text += Describe(*child);
    return text + "}";
}

std::string ParseWith(DOMParser& parser, const DocumentRow& row)
{
    parser.SetEnableLineNumbersOnElements(true);
    const auto document = parser.ParseXmlString(row.bytes, row.name);
    return testsupport::TreeText(*document) + Describe(document->GetRoot()) +
        document->GetConcatenatedErrors().toStdString();
}

TEST(DOMParserSequenceTest, EveryDocumentParsesTheSameAfterEveryOther)
{
    for (const DocumentRow& second : Documents) {
        SCOPED_TRACE(second.name);
        DOMParser fresh;
        const std::string expected = ParseWith(fresh, second);
        for (const DocumentRow& first : Documents) {
            SCOPED_TRACE(first.name);
            DOMParser used;
            ParseWith(used, first);
            ASSERT_EQ(ParseWith(used, second), expected);
        }
    }
}

TEST(DOMParserSequenceTest, EntityBombDoesNotAffectTheNextParse)
{
    for (const DocumentRow& bomb : Bombs) {
        SCOPED_TRACE(bomb.name);
        DOMParser used;
        const std::string abandoned = ParseWith(used, bomb);
        DOMParser fresh;
        EXPECT_EQ(ParseWith(used, Documents[0]), ParseWith(fresh, Documents[0]));
        EXPECT_EQ(ParseWith(used, bomb), abandoned);
    }
}

TEST(DOMParserSequenceTest, OneParserParsesAllDocuments)
{
    DOMParser used;
    for (int round = 0; round < 2; ++round) {
        for (const DocumentRow& row : Documents) {
            SCOPED_TRACE(row.name);
            DOMParser fresh;
            EXPECT_EQ(ParseWith(used, row), ParseWith(fresh, row));
        }
    }
}

struct StopRow {
    const char* name;
    const char* text;
    std::size_t events;
};

const StopRow StopRows[] = {
    {"at the root", "<a><b/></a>", 1},
    {"in the middle", "<a><b><c/>text</b><d/></a>", 3},
    {"at the last end tag", "<a><b/></a>", 4},
    {"inside an entity", "<!DOCTYPE a [<!ENTITY e '<b/><c/><d/>'>]><a>&e;</a>", 2},
    {"in version 1.1", "<?xml version='1.1'?><a><b/></a>", 2},
    {"before a fault", "<a><b></a>", 1},
    {"in a long document", nullptr, 5},
};

// The same driver runs the stopped parse and the next one.
TEST(DOMParserSequenceTest, EarlyStopDoesNotAffectTheNextParse)
{
    std::string longText = "<a>";  // longer than the buffers of the reader
    for (int i = 0; i < 20000; ++i)
        longText += "<b>text</b>";
    longText += "</a>";
    for (const StopRow& stop : StopRows) {
        for (const DocumentRow& next : Documents) {
            SCOPED_TRACE(std::string(stop.name) + ", then " + next.name);
            const std::string text = stop.text ? stop.text : longText;
            auto stopped = std::make_unique<Utf8InputSource>(text, "stopped", false);
            auto first = std::make_shared<testsupport::RecordingHandler>();
            first->doneAfter = stop.events;
            const auto parser = XercesXMLParser::Create(*stopped, first);
            parser->Parse();
            ASSERT_FALSE(parser->HasErrors());
            stopped.reset();

            Utf8InputSource source(next.bytes, "next", false);
            auto second = std::make_shared<testsupport::RecordingHandler>();
            parser->Reload(source, second);
            parser->Parse();
            const testsupport::ParseResult fresh = testsupport::ParseBytes(next.bytes, "next");
            ASSERT_EQ(second->events, fresh.events);
            ASSERT_EQ(parser->GetErrors(), fresh.errors);
            ASSERT_EQ(parser->HasFatallyErrored(), fresh.fatal);
        }
    }
}

TEST(DOMParserSequenceTest, RepeatedParseHasTheSameResult)
{
    for (const DocumentRow& row : Documents) {
        SCOPED_TRACE(row.name);
        Utf8InputSource source(row.bytes, "id", false);
        auto handler = std::make_shared<testsupport::RecordingHandler>();
        const auto parser = XercesXMLParser::Create(source, handler);
        parser->Parse();
        const auto events = std::exchange(handler->events, {});
        const auto errors = parser->GetErrors();
        parser->Parse();
        EXPECT_EQ(handler->events, events);
        EXPECT_EQ(parser->GetErrors(), errors);
    }
}

}  // namespace
