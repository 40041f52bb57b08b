#include "vancorexml/main/parser/DOMException.h"

#include <memory>

#include <gtest/gtest.h>

#include "tests/tree/TreeTestSupport.h"

namespace {

DOMException Example()
{
    return DOMException("missing", treetest::Info(5));
}

}  // namespace

TEST(DOMExceptionTest, KeepsMessageAndErrorInfo)
{
    const DOMException exception = Example();
    EXPECT_EQ(exception.GetMessage(), VString("missing"));
    EXPECT_EQ(exception.GetErrorInfo(), treetest::Info(5));
    EXPECT_STREQ(exception.what(), "missing");
}

TEST(DOMExceptionTest, CloneHasTheSameType)
{
    const std::unique_ptr<VantoraException> clone(Example().Clone());
    EXPECT_NE(dynamic_cast<DOMException*>(clone.get()), nullptr);
    EXPECT_EQ(clone->GetMessage(), VString("missing"));
    EXPECT_EQ(clone->GetErrorInfo(), treetest::Info(5));
}

TEST(DOMExceptionTest, ThrowThroughTheBaseKeepsTheType)
{
    const DOMException exception = Example();
    const VantoraException& base = exception;
    EXPECT_THROW(base.Throw(), DOMException);
}

TEST(DOMExceptionTest, AssignmentCopiesMessageAndErrorInfo)
{
    DOMException exception("other", treetest::Info(6));
    exception = Example();
    EXPECT_EQ(exception.GetMessage(), VString("missing"));
    EXPECT_EQ(exception.GetErrorInfo().GetCode(), 5u);
}

// Returns the text of what() for the exception of a failed lookup.
template <typename Lookup>
std::string ExceptionText(const Lookup& lookup)
{
    try {
        lookup(DOMElement("settings"));
    } catch (const DOMException& exception) {
        EXPECT_EQ(exception.GetMessage(), VString("logging"));
        const std::unique_ptr<VantoraException> clone(exception.Clone());
        EXPECT_STREQ(clone->what(), exception.what());
        return exception.what();
    }
    return "no exception";
}

TEST(DOMExceptionTest, TextNamesTheMissingChildOrAttribute)
{
    EXPECT_EQ(ExceptionText([](const DOMElement& e) { e.GetRequiredChild("logging"); }),
        "The element has no child \"logging\".");
    EXPECT_EQ(ExceptionText([](const DOMElement& e) { e.GetRequiredChildByAttr("logging", "1"); }),
        "No child of the element has the required value of the attribute \"logging\".");
    EXPECT_EQ(ExceptionText([](const DOMElement& e) { e.RequireAttribute("logging"); }),
        "The element has no attribute \"logging\".");
}
