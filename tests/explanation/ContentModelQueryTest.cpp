#include "vancorexml/main/parser/ContentModelQuery.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/schema/SchemaGrammar.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XercesPlatform.h"

namespace {

// Asks the type of the element "root" of a schema without a target namespace.
class ContentModelQueryTest : public testing::Test {
protected:
    void Load(const std::string& content)
    {
        const std::string text = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='root'>"
                                 "<xs:complexType>" +
            content + "</xs:complexType></xs:element></xs:schema>";
        const xercesc::MemBufInputSource source(
            reinterpret_cast<const XMLByte*>(text.data()), text.size(), "schema", false);
        m_reader.setFeature(xercesc::XMLUni::fgSAX2CoreValidation, true);
        auto* const grammar = dynamic_cast<xercesc::SchemaGrammar*>(
            m_reader.loadGrammar(source, xercesc::Grammar::SchemaGrammarType, true));
        ASSERT_TRUE(grammar);
        auto declarations = grammar->getElemEnumerator();
        while (declarations.hasMoreElements()) {
            const xercesc::SchemaElementDecl& declaration = declarations.nextElement();
            if (declaration.isGlobalDecl())
                m_type = declaration.getComplexTypeInfo();
        }
        ASSERT_TRUE(m_type);
    }

    // Returns "INDEX: NAME NAME", the index of the failure and the names that are allowed there.
    std::string Ask(std::initializer_list<const char16_t*> children)
    {
        ContentModelQuery::Names names;
        m_owned.clear();
        for (const char16_t* child : children) {
            m_owned.push_back(std::make_unique<xercesc::QName>(u"", child, EmptyNamespace));
            names.push_back(m_owned.back().get());
        }
        const ContentModelQuery query(*m_type, names, m_budget);
        const std::size_t failure = query.FindFailure();
        if (failure == ContentModelQuery::npos)
            return "good";
        return std::to_string(failure) + ":" + Join(query.FindAllowed(failure));
    }

    // Returns the index of the earlier place of the last child; -1 if there is none.
    int AskEarlierPlace(std::initializer_list<const char16_t*> children)
    {
        Ask(children);
        ContentModelQuery::Names names;
        for (const std::unique_ptr<xercesc::QName>& name : m_owned)
            names.push_back(name.get());
        return static_cast<int>(ContentModelQuery(*m_type, names, m_budget).FindEarlierPlace(names.size() - 1));
    }

    // Returns the names that are missing in front of the last child.
    std::string AskMissing(std::initializer_list<const char16_t*> children)
    {
        Ask(children);
        ContentModelQuery::Names names;
        for (const std::unique_ptr<xercesc::QName>& name : m_owned)
            names.push_back(name.get());
        const ContentModelQuery query(*m_type, names, m_budget);
        return Join(query.FindMissing(names.size() - 1, query.FindAllowed(names.size() - 1)));
    }

    std::string AskNames()
    {
        const ContentModelQuery::Names none;
        return Join(ContentModelQuery(*m_type, none, m_budget).GetNames());
    }

private:
    static constexpr unsigned int EmptyNamespace = 1;

    static std::string Join(const ContentModelQuery::Names& names)
    {
        std::string text;
        for (const xercesc::QName* name : names)
            text += " " + VString(name->getLocalPart()).toStdString();
        return text;
    }

    XercesInitializer m_xerces;
    xercesc::SAX2XMLReaderImpl m_reader;
    xercesc::ComplexTypeInfo* m_type = nullptr;
    std::size_t m_budget = 100000000;
    std::vector<std::unique_ptr<xercesc::QName>> m_owned;
};

TEST_F(ContentModelQueryTest, Sequence)
{
    Load("<xs:sequence><xs:element name='a'/><xs:element name='b' minOccurs='0'/><xs:element name='c'/></xs:sequence>");
    EXPECT_EQ(Ask({u"a", u"c"}), "good");
    EXPECT_EQ(Ask({}), "0: a");
    EXPECT_EQ(Ask({u"c"}), "0: a");
    EXPECT_EQ(Ask({u"a"}), "1: b c");
    EXPECT_EQ(Ask({u"a", u"x", u"c"}), "1: b c");
    EXPECT_EQ(Ask({u"a", u"c", u"c"}), "2:");
    EXPECT_EQ(AskNames(), " a b c");
}

TEST_F(ContentModelQueryTest, ChildMayBelongElsewhere)
{
    Load("<xs:sequence><xs:element name='a'/><xs:element name='b' minOccurs='0'/><xs:element name='c'/>"
         "<xs:element name='d'/></xs:sequence>");
    EXPECT_EQ(AskEarlierPlace({u"a", u"c", u"d", u"b"}), 1);
    EXPECT_EQ(AskEarlierPlace({u"a", u"b", u"c", u"b"}), -1);
    EXPECT_EQ(AskMissing({u"a", u"d"}), " c");
    EXPECT_EQ(AskMissing({u"c"}), " a");
    EXPECT_EQ(AskMissing({u"d"}), "");
}

TEST_F(ContentModelQueryTest, ChoiceWithLimitedRepetition)
{
    Load("<xs:choice maxOccurs='2'><xs:element name='a'/><xs:element name='b'/></xs:choice>");
    EXPECT_EQ(Ask({u"b", u"a"}), "good");
    EXPECT_EQ(Ask({}), "0: a b");
    EXPECT_EQ(Ask({u"a", u"a", u"a"}), "2:");
}

TEST_F(ContentModelQueryTest, AllAllowsEachElementOnce)
{
    Load("<xs:all><xs:element name='a'/><xs:element name='b'/><xs:element name='c' minOccurs='0'/></xs:all>");
    EXPECT_EQ(Ask({u"b", u"a"}), "good");
    EXPECT_EQ(Ask({u"b", u"b"}), "1: a c");
    EXPECT_EQ(Ask({u"b"}), "1: a c");
}

TEST_F(ContentModelQueryTest, SingleElement)
{
    Load("<xs:sequence><xs:element name='a'/></xs:sequence>");
    EXPECT_EQ(Ask({u"a"}), "good");
    EXPECT_EQ(Ask({u"b"}), "0: a");
    EXPECT_EQ(Ask({u"a", u"a"}), "1:");
}

TEST_F(ContentModelQueryTest, WildcardHasNoName)
{
    Load("<xs:sequence><xs:element name='a'/><xs:any minOccurs='0' processContents='skip'/></xs:sequence>");
    EXPECT_EQ(Ask({u"a", u"z"}), "good");
    EXPECT_EQ(Ask({u"z"}), "0: a");
    EXPECT_EQ(AskNames(), " a");
}

TEST_F(ContentModelQueryTest, LongSequenceNeedsNoDeepStack)
{
    std::string elements;
    for (int i = 0; i < 2000; ++i)
        elements += "<xs:element name='e" + std::to_string(i) + "'/>";
    Load("<xs:sequence>" + elements + "</xs:sequence>");
    EXPECT_EQ(Ask({u"e0"}), "1: e1");
}

}  // namespace
