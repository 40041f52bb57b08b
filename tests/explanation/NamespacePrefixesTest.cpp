#include "vancorexml/main/parser/NamespacePrefixes.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XercesPlatform.h"

namespace {

class NamespacePrefixesTest : public testing::Test {
protected:
    // Begins an element. Returns its faults as "KIND name prefix", separated by semicolons.
    std::string Start(
        const char16_t* name, std::initializer_list<std::pair<const char16_t*, const char16_t*>> attributes)
    {
        m_attributes = std::make_unique<xercesc::RefVectorOf<xercesc::XMLAttr>>(4, true);
        for (const auto& [attribute, value] : attributes)
            m_attributes->addElement(new xercesc::XMLAttr(1, attribute, u"", value));
        std::string text;
        for (const NamespaceFault& fault : m_prefixes.StartElement(name, *m_attributes, attributes.size())) {
            text += std::to_string(static_cast<int>(fault.kind)) + " ";
            text += VString(fault.name.data(), fault.name.size()).toStdString() + " ";
            text += VString(fault.prefix.data(), fault.prefix.size()).toStdString();
            if (!fault.otherName.empty())
                text += " " + VString(fault.otherName.data(), fault.otherName.size()).toStdString();
            text += ";";
        }
        return text;
    }

    XercesInitializer m_xerces;
    std::unique_ptr<xercesc::RefVectorOf<xercesc::XMLAttr>> m_attributes;
    NamespacePrefixes m_prefixes;
};

TEST_F(NamespacePrefixesTest, PrefixIsDeclaredInItsElement)
{
    EXPECT_EQ(Start(u"p:a", {{u"xmlns:p", u"urn:1"}}), "");
    EXPECT_EQ(Start(u"a", {{u"xmlns:p", u"urn:2"}, {u"xmlns:q", u"urn:q"}, {u"q:b", u""}}), "");
    EXPECT_EQ(Start(u"q:a", {{u"p:b", u""}}), "");
    m_prefixes.EndElement();
    m_prefixes.EndElement();
    EXPECT_EQ(Start(u"q:a", {{u"p:b", u""}, {u"r:b", u""}}), "0 q:a q;0 r:b r;");
}

TEST_F(NamespacePrefixesTest, NamesWithoutPrefixAndReservedPrefixesNeedNoDeclaration)
{
    EXPECT_EQ(Start(u":a", {{u"b", u""}, {u"xml:lang", u"en"}, {u"xmlns", u"urn:1"}, {u":c", u""}}), "");
    EXPECT_EQ(Start(u"XML:a", {}), "0 XML:a XML;");
}

TEST_F(NamespacePrefixesTest, BadDeclarationsAreFaults)
{
    EXPECT_EQ(Start(u"a", {{u"xmlns:p", u""}, {u"xmlns:xml", u"urn:1"}, {u"xmlns:xmlns", u"urn:1"}}),
        "1 xmlns:p p;2 xmlns:xml xml;2 xmlns:xmlns xmlns;");
    EXPECT_EQ(Start(u"a", {{u"xmlns:xml", u"http://www.w3.org/XML/1998/namespace"}}), "");
    EXPECT_EQ(Start(u"a", {{u"xmlns:p", u"http://www.w3.org/XML/1998/namespace"}}), "2 xmlns:p p;");
}

TEST_F(NamespacePrefixesTest, NameWithTwoColonsIsAFault)
{
    EXPECT_EQ(Start(u"p:a:b", {{u"xmlns:p", u"urn:1"}, {u"p:c:d", u""}}), "3 p:a:b p;3 p:c:d p;");
}

TEST_F(NamespacePrefixesTest, AttributeMayStandOnceInItsNamespace)
{
    EXPECT_EQ(Start(u"a", {{u"xmlns:p", u"urn:1"}, {u"xmlns:q", u"urn:1"}, {u"p:b", u""}, {u"q:b", u""}, {u"b", u""}}),
        "4 q:b q p:b;");
    EXPECT_EQ(Start(u"a", {{u"xmlns:q", u"urn:2"}, {u"p:b", u""}, {u"q:b", u""}}), "");
}

}  // namespace
