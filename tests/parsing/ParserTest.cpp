#include "vancorexml/main/parser/Parser.h"

#include "tests/common/TestSupport.h"

namespace {

const VError::ErrorInfo Info(VantoraError::MakeError(0x11, "Key"));

// A parser whose parse calls `script`.
class ScriptedParser : public Parser {
public:
    using Parser::Error;
    using Parser::FatalError;
    using Parser::Warning;

    std::function<void(ScriptedParser&)> script = [](ScriptedParser&) {};

protected:
    void DoParse() override { script(*this); }
};

TEST(ParserTest, StartsEmpty)
{
    const ScriptedParser parser;
    EXPECT_FALSE(parser.HasErrors());
    EXPECT_FALSE(parser.HasWarnings());
    EXPECT_FALSE(parser.HasFatallyErrored());
}

TEST(ParserTest, ErrorIsListedWithItsMetadata)
{
    ScriptedParser parser;
    parser.Error("bad", Info);
    EXPECT_TRUE(parser.HasErrors());
    EXPECT_FALSE(parser.HasFatallyErrored());
    EXPECT_EQ(parser.GetErrors(), std::vector<VString>{"bad"});
    EXPECT_EQ(parser.GetMetadataForErrors(), std::vector<VError::ErrorInfo>{Info});
    EXPECT_FALSE(parser.HasWarnings());
}

TEST(ParserTest, WarningIsListedWithItsMetadata)
{
    ScriptedParser parser;
    parser.Warning("odd", Info);
    EXPECT_TRUE(parser.HasWarnings());
    EXPECT_EQ(parser.GetWarnings(), std::vector<VString>{"odd"});
    EXPECT_EQ(parser.GetMetadataForWarnings(), std::vector<VError::ErrorInfo>{Info});
    EXPECT_FALSE(parser.HasErrors());
}

TEST(ParserTest, FatalErrorIsListedAsTheLastError)
{
    ScriptedParser parser;
    parser.Error("bad", VError::ErrorInfo::NoError);
    parser.FatalError("worse", Info);
    EXPECT_TRUE(parser.HasErrors());
    EXPECT_TRUE(parser.HasFatallyErrored());
    EXPECT_EQ(parser.GetErrors().back(), VString("worse"));
    EXPECT_EQ(parser.GetMetadataForErrors().back(), Info);
}

TEST(ParserTest, MessageAndMetadataListsHaveTheSameLength)
{
    ScriptedParser parser;
    for (int i = 0; i < 7; ++i) {
        parser.Error("e", Info);
        if (i % 2 == 0)
            parser.FatalError("f", Info);
        if (i % 3 == 0)
            parser.Warning("w", Info);
        EXPECT_EQ(parser.GetErrors().size(), parser.GetMetadataForErrors().size());
        EXPECT_EQ(parser.GetWarnings().size(), parser.GetMetadataForWarnings().size());
    }
}

TEST(ParserTest, GetDiagnosticsKeepsTheOrderOfRecording)
{
    ScriptedParser parser;
    parser.Error("e", Info);
    parser.Warning("w", Info);
    parser.FatalError("f", Info);
    std::vector<VString> texts;
    std::vector<ParseDiagnostic::Severity> severities;
    for (const ParseDiagnostic& diagnostic : parser.GetDiagnostics()) {
        texts.push_back(diagnostic.message);
        severities.push_back(diagnostic.severity);
        EXPECT_EQ(diagnostic.start, SourcePosition());
    }
    using Severity = ParseDiagnostic::Severity;
    EXPECT_EQ(texts, (std::vector<VString>{"e", "w", "f"}));
    EXPECT_EQ(severities, (std::vector<Severity>{Severity::Error, Severity::Warning, Severity::FatalError}));
}

TEST(ParserTest, ClearingKeepsTheFatalFlag)
{
    ScriptedParser parser;
    parser.FatalError("f", Info);
    parser.Warning("w", Info);
    parser.ClearErrorsAndWarnings();
    EXPECT_FALSE(parser.HasErrors());
    EXPECT_FALSE(parser.HasWarnings());
    EXPECT_TRUE(parser.GetMetadataForErrors().empty());
    EXPECT_TRUE(parser.GetMetadataForWarnings().empty());
    EXPECT_TRUE(parser.GetDiagnostics().empty());
    EXPECT_TRUE(parser.HasFatallyErrored());
}

TEST(ParserTest, EachParseStartsWithoutMessages)
{
    ScriptedParser parser;
    parser.script = [](ScriptedParser& self) {
        EXPECT_FALSE(self.HasErrors());
        EXPECT_FALSE(self.HasWarnings());
        EXPECT_FALSE(self.HasFatallyErrored());
        self.Warning("w", Info);
        self.FatalError("f", Info);
    };
    parser.Error("while loading a schema", Info);
    parser.Parse();
    parser.Parse();
    EXPECT_EQ(parser.GetErrors(), std::vector<VString>{"f"});
    EXPECT_EQ(parser.GetWarnings(), std::vector<VString>{"w"});
    EXPECT_TRUE(parser.HasFatallyErrored());
}

TEST(ParserTest, CopyAndAssignmentCopyEverything)
{
    ScriptedParser parser;
    parser.Warning("w", Info);
    parser.FatalError("f", Info);
    const ScriptedParser copy(parser);
    ScriptedParser assigned;
    assigned = parser;
    parser.ClearErrorsAndWarnings();
    for (const ScriptedParser* other : {&copy, static_cast<const ScriptedParser*>(&assigned)}) {
        EXPECT_EQ(other->GetErrors(), std::vector<VString>{"f"});
        EXPECT_EQ(other->GetMetadataForErrors(), std::vector<VError::ErrorInfo>{Info});
        EXPECT_EQ(other->GetWarnings(), std::vector<VString>{"w"});
        EXPECT_EQ(other->GetMetadataForWarnings(), std::vector<VError::ErrorInfo>{Info});
        EXPECT_EQ(other->GetDiagnostics().size(), 2u);
        EXPECT_TRUE(other->HasFatallyErrored());
    }
}

}  // namespace
