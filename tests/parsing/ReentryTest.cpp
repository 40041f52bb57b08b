// If a callback of a parser starts another operation of the same parser, that operation raises a LogicException. The
// operation that called the callback continues.

#include <functional>

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/QtVanResources.h"
#include "vansys/LogicException.h"

namespace {

using testsupport::RecordingHandler;
using Events = std::vector<std::string>;
using Action = std::function<void()>;

constexpr const char* Schema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'/></xs:schema>";
constexpr const char* IncludingSchema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:include schemaLocation='x.xsd'/></xs:schema>";
constexpr std::uint32_t Code = 0x61D3A9F5;

// Calls `action` in every callback.
class ActingHandler : public RecordingHandler {
public:
    void StartElement(const VString& name, const AttributeMap& attributes) override
    {
        RecordingHandler::StartElement(name, attributes);
        action();
    }
    void EndElement() override
    {
        RecordingHandler::EndElement();
        action();
    }
    void Characters(const VString& text) override
    {
        RecordingHandler::Characters(text);
        action();
    }
    bool IsDone() override
    {
        action();
        return false;
    }
    void ResolveSchemaPath(VString& pathOut, const VString& baseUri, const VString& systemId) override
    {
        RecordingHandler::ResolveSchemaPath(pathOut, baseUri, systemId);
        action();
    }
    VString PreprocessSchemaText(const VString& systemId, const VString& text, const VString& path) override
    {
        action();
        return RecordingHandler::PreprocessSchemaText(systemId, text, path);
    }

    Action action = [] {};
};

// Calls `action` when a parser reads the source.
class ActingSource : public StringInputSource {
public:
    ActingSource(const VString& text, Action action)
        : StringInputSource(text, "acting", false),
          m_action(std::move(action))
    {}
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
    {
        m_action();
        return StringInputSource::GetXercesInputSource(mode);
    }

private:
    Action m_action;
};

struct ReentryTest : testing::Test {
    testsupport::TemporaryFolder folder;
    StringInputSource source{"<a>1<b/></a>", "id", false};
    StringInputSource other{"<other/>", "other", false};
    StringInputSource schema{Schema, "schema", false};
    std::shared_ptr<ActingHandler> handler = std::make_shared<ActingHandler>();
    std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source, handler);
    int refused = 0;

    // Returns an action that tries every operation of the parser and expects that each one is refused.
    Action TryEveryOperation()
    {
        return [this] {
            const VString file = folder.Write("a.xsd", Schema);
            ExpectRefused([this] { parser->Parse(); });
            ExpectRefused([this] { parser->Reload(other, std::make_shared<RecordingHandler>()); });
            ExpectRefused([this] { parser->LoadXSDSource(schema); });
            ExpectRefused([this] { parser->LoadXSDString(Schema, "schema"); });
            ExpectRefused([&] { parser->LoadXSDFile(file); });
            ExpectRefused([this] { parser->LoadXSDResource(LookupResource(QtVanResourceId::FileFormatXmlXsd)); });
        };
    }

    void ExpectRefused(const Action& operation)
    {
        try {
            operation();
            ADD_FAILURE() << "the operation was not refused";
        } catch (const LogicException& exception) {
            EXPECT_EQ(exception.GetErrorInfo().GetCode(), Code);
            ++refused;
        }
    }
};

TEST_F(ReentryTest, OperationsInACallbackAreRefusedAndTheParseContinues)
{
    handler->action = TryEveryOperation();
    parser->Parse();
    EXPECT_EQ(refused, 6 * (5 + 4));
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(handler->events, (Events{"<a>", "1", "<b>", "</>", "</>"}));
    EXPECT_EQ(parser->GetLoadedXSDs(), std::vector<VString>{});
}

TEST_F(ReentryTest, RefusedOperationsKeepTheErrorsOfTheParse)
{
    StringInputSource invalid("<a><c></a>", "id", false);
    handler->action = TryEveryOperation();
    parser->Reload(invalid, handler);
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{"Fatal Error(1,9): expected end of tag 'c' (id: id)"});
    EXPECT_TRUE(parser->HasFatallyErrored());
}

TEST_F(ReentryTest, OperationsInACallbackAreRefusedDuringValidation)
{
    parser->LoadXSDString("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                          "<xs:element name='a'><xs:complexType/></xs:element></xs:schema>",
        "schema");
    parser->Parse();
    const std::vector<VString> errors = parser->GetErrors();
    ASSERT_FALSE(errors.empty());
    handler->action = TryEveryOperation();
    parser->Parse();
    EXPECT_GT(refused, 0);
    EXPECT_EQ(parser->GetErrors(), errors);
    EXPECT_EQ(parser->GetLoadedXSDs().size(), 3u);
}

TEST_F(ReentryTest, UncaughtAssertionInACallbackIsAnErrorOfTheParse)
{
    handler->action = [this] { parser->Parse(); };
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{"Unexpected exception"});
    EXPECT_EQ(handler->events, Events{"<a>"});
    handler->action = [] {};
    handler->events.clear();
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(handler->events.size(), 5u);
}

TEST_F(ReentryTest, AssertionHasItsFileExpressionAndKey)
{
    handler->action = [this] {
        try {
            parser->Parse();
        } catch (const LogicException& exception) {
            EXPECT_EQ(exception.GetFile(), VString("vancorexml\\main\\parser\\Parser"));
            EXPECT_EQ(exception.GetLine(), 22);
            EXPECT_EQ(exception.GetExpression(), VString("!m_work.isRunning"));
            EXPECT_EQ(exception.GetErrorInfo().GetKey(), VString("LogicException_LogicAssert_0x61D3A9F5"));
        }
    };
    parser->Parse();
}

TEST_F(ReentryTest, RefusesOperationsWhileTheInputIsRead)
{
    ActingSource acting("<c/>", TryEveryOperation());
    parser->Reload(acting, handler);
    parser->Parse();
    EXPECT_EQ(refused, 6);
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(handler->events, (Events{"<c>", "</>"}));
}

TEST_F(ReentryTest, RefusesOperationsWhileASchemaIsRead)
{
    ActingSource acting(Schema, TryEveryOperation());
    parser->LoadXSDSource(acting);
    EXPECT_EQ(refused, 6);
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(parser->GetLoadedXSDs().size(), 3u);
}

TEST_F(ReentryTest, RefusesOperationsWhileAnIncludeIsResolvedAndLoadsIt)
{
    handler->schemaPath = folder.Write("x.xsd", Schema);
    handler->action = TryEveryOperation();
    parser->LoadXSDString(IncludingSchema, "schema");
    handler->action = [] {};
    EXPECT_EQ(refused, 2 * 6);
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

TEST_F(ReentryTest, ParserStaysUsableAfterAnAssertionWhileLoading)
{
    handler->schemaPath = folder.Write("x.xsd", Schema);
    handler->action = [this] { parser->Parse(); };
    EXPECT_THROW(parser->LoadXSDString(IncludingSchema, "schema"), LogicException);
    handler->action = [] {};
    parser->LoadXSDString(Schema, "schema");
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(handler->events.size(), 5u);
}

TEST_F(ReentryTest, AnotherParserMayWorkInACallback)
{
    auto inner = std::make_shared<RecordingHandler>();
    handler->action = [&] {
        StringInputSource text("<c/>", "id", false);
        XercesXMLParser::Create(text, inner)->Parse();
    };
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(inner->events.size(), 2u * 9u);
}

// A parser that a caller derives from Parser.
struct NestedParser : Parser {
    std::function<void(NestedParser&)> script;
    NestedParser() = default;
    NestedParser(const NestedParser&) = default;

protected:
    void DoParse() override
    {
        Error("outer", VError::ErrorInfo::NoError);
        script(*this);
    }
};

TEST_F(ReentryTest, DerivedParsersRefuseOperationsToo)
{
    NestedParser nested;
    nested.script = [this](NestedParser& self) { ExpectRefused([&] { self.Parse(); }); };
    nested.Parse();
    EXPECT_EQ(refused, 1);
    EXPECT_EQ(nested.GetErrors(), std::vector<VString>{"outer"});
}

TEST_F(ReentryTest, CopyOfARunningParserIsNotRunning)
{
    NestedParser nested;
    std::unique_ptr<NestedParser> copy;
    nested.script = [&](NestedParser& self) {
        if (!copy) {
            copy = std::make_unique<NestedParser>(self);
            copy->Parse();
        }
    };
    nested.Parse();
    EXPECT_EQ(copy->GetErrors(), std::vector<VString>{"outer"});
}

}  // namespace
