#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/common/TestSupport.h"
#include "vancoreplatform/VIOException.h"
#include "vansys/LogicException.h"
#include "vansys/VantoraException.h"

namespace {

VError::ErrorInfo SomeInfo()
{
    return VError::ErrorInfo(
        VantoraError::MakeError(0x12, "VantoraException_Some_0x00000012"), VError::ErrorSource::Caller);
}

}  // namespace

TEST(VantoraExceptionTest, CarriesMessageAndIdentity)
{
    const VantoraException exception("größe", SomeInfo());
    EXPECT_EQ(exception.GetMessage(), VString("größe"));
    EXPECT_STREQ(exception.what(), "größe");
    EXPECT_EQ(exception.GetConcatenatedMessages(), VString("größe"));
    EXPECT_EQ(exception.GetErrorInfo(), SomeInfo());
}

TEST(VantoraExceptionTest, IsAStandardException)
{
    try {
        throw VantoraException("broken", SomeInfo());
    } catch (const std::exception& exception) {
        EXPECT_STREQ(exception.what(), "broken");
    }
}

TEST(VantoraExceptionTest, AssignmentCopiesEverything)
{
    VantoraException exception("one", VError::ErrorInfo::NoError);
    exception = VantoraException("two", SomeInfo());
    EXPECT_STREQ(exception.what(), "two");
    EXPECT_EQ(exception.GetErrorInfo(), SomeInfo());
}

TEST(VantoraExceptionTest, ACloneIsIndependent)
{
    auto original = std::make_unique<VantoraException>("broken", SomeInfo());
    const std::unique_ptr<VantoraException> clone(original->Clone());
    original.reset();
    EXPECT_STREQ(clone->what(), "broken");
    EXPECT_EQ(clone->GetErrorInfo(), SomeInfo());
}

TEST(VantoraExceptionTest, ThrowsACopyOfItself)
{
    const VantoraException exception("broken", SomeInfo());
    try {
        exception.Throw();
    } catch (const VantoraException& thrown) {
        EXPECT_NE(&thrown, &exception);
        EXPECT_STREQ(thrown.what(), "broken");
    }
}

TEST(LogicExceptionTest, NamesFileLineExpressionAndCode)
{
    const auto raise = [] { ThrowLogicException("vansys\\Test", 12, "a == b", MakeLogicError(0xABCDEF01)); };
    testsupport::ExpectLogicException(raise, "vansys\\Test", 12, "a == b", 0xABCDEF01);
}

TEST(LogicExceptionTest, KeysHaveEightUpperCaseDigits)
{
    EXPECT_EQ(MakeLogicError(0xABC).key, VString("LogicException_LogicAssert_0x00000ABC"));
    EXPECT_EQ(MakeLogicError(0xFFFFFFFF).key, VString("LogicException_LogicAssert_0xFFFFFFFF"));
    EXPECT_EQ(MakeLogicError(0).code, 0u);
}

TEST(LogicExceptionTest, TheMessageIsTheExpression)
{
    const LogicException exception("vansys\\Test", 1, "pointer", VError::ErrorInfo(MakeLogicError(1)));
    EXPECT_STREQ(exception.what(), "pointer");
    EXPECT_EQ(exception.GetMessage(), VString("pointer"));
}

TEST(LogicExceptionTest, CloneAndThrowKeepTheType)
{
    const LogicException exception("vansys\\Test", 3, "pointer", VError::ErrorInfo(MakeLogicError(1)));
    const std::unique_ptr<VantoraException> clone(exception.Clone());
    testsupport::ExpectLogicException([&clone] { clone->Throw(); }, "vansys\\Test", 3, "pointer", 1);
}

TEST(VIOExceptionTest, HasItsMessageAsStringAndAsUtf8)
{
    const VIO::Exception exception("größe");
    EXPECT_EQ(exception.GetMessage(), VString("größe"));
    EXPECT_STREQ(exception.what(), "größe");
    EXPECT_THROW(throw exception, std::exception);
}
