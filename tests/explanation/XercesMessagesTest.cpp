#include "vancorexml/main/parser/XercesMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <xercesc/framework/XMLValidityCodes.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "vancorexml/main/parser/XercesPlatform.h"

using testing::ElementsAre;
using xercesc::XMLUni;
using xercesc::XMLValid;

namespace {

class XercesMessagesTest : public testing::Test {
protected:
    std::vector<VString> FindInValidity(unsigned int code, const char16_t* message)
    {
        return m_messages.FindParameters(XMLUni::fgValidityDomain, code, message);
    }

    XercesInitializer m_xerces;
    XercesMessages m_messages;
};

TEST_F(XercesMessagesTest, NamesAreFoundByTheirNumbers)
{
    EXPECT_THAT(FindInValidity(
                    XMLValid::AttNotDefinedForElement, u"attribute 'it's' is not declared for element 'the 'element'"),
        ElementsAre(VString("it's"), VString("the 'element"), VString(), VString()));
}

TEST_F(XercesMessagesTest, OtherMessageHasNoNames)
{
    EXPECT_THAT(FindInValidity(XMLValid::AttNotDefinedForElement, u"some other text"),
        ElementsAre(VString(), VString(), VString(), VString()));
    EXPECT_THAT(FindInValidity(9999, u"x"), ElementsAre(VString(), VString(), VString(), VString()));
}

}  // namespace
