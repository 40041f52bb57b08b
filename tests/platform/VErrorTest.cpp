#include "vansys/VError.h"

#include <gtest/gtest.h>

using VError::ErrorInfo;
using VError::ErrorSource;
using VError::StatusCode;

TEST(VErrorTest, AnErrorHasItsCodeAndKey)
{
    const VantoraError::ErrorCode error = VantoraError::MakeError(0xD78DE10E, "LogSite_X_0xD78DE10E");
    EXPECT_EQ(error.code, 0xD78DE10Eu);
    EXPECT_EQ(error.key, VString("LogSite_X_0xD78DE10E"));
}

TEST(VErrorTest, InfoCarriesErrorSourceAndStatus)
{
    const ErrorInfo info(VantoraError::MakeError(1, "Key"), ErrorSource::Caller, StatusCode::Internal);
    EXPECT_EQ(info.GetCode(), 1u);
    EXPECT_EQ(info.GetKey(), VString("Key"));
    EXPECT_EQ(info.GetSource(), ErrorSource::Caller);
    EXPECT_EQ(info.GetStatus(), StatusCode::Internal);
}

TEST(VErrorTest, SourceAndStatusHaveFixedNumbers)
{
    EXPECT_EQ(static_cast<int>(ErrorSource::Caller), 1);
    EXPECT_EQ(static_cast<int>(ErrorSource::Product), 2);
    EXPECT_EQ(static_cast<int>(StatusCode::Unknown), 2);
    EXPECT_EQ(static_cast<int>(StatusCode::InvalidArgument), 3);
    EXPECT_EQ(static_cast<int>(StatusCode::Internal), 13);
}

TEST(VErrorTest, TheConstantNoErrorHasNoIdentity)
{
    EXPECT_EQ(ErrorInfo::NoError.GetCode(), 0u);
    EXPECT_TRUE(ErrorInfo::NoError.GetKey().IsEmpty());
    EXPECT_EQ(ErrorInfo::NoError, ErrorInfo());
}

TEST(VErrorTest, EqualityComparesEveryField)
{
    const ErrorInfo info(VantoraError::MakeError(1, "Key"), ErrorSource::Caller, StatusCode::Unknown);
    EXPECT_EQ(info, ErrorInfo(VantoraError::MakeError(1, "Key"), ErrorSource::Caller, StatusCode::Unknown));
    EXPECT_NE(info, ErrorInfo(VantoraError::MakeError(2, "Key"), ErrorSource::Caller, StatusCode::Unknown));
    EXPECT_NE(info, ErrorInfo(VantoraError::MakeError(1, "Other"), ErrorSource::Caller, StatusCode::Unknown));
    EXPECT_NE(info, ErrorInfo(VantoraError::MakeError(1, "Key"), ErrorSource::Product, StatusCode::Unknown));
    EXPECT_NE(info, ErrorInfo(VantoraError::MakeError(1, "Key"), ErrorSource::Caller, StatusCode::Internal));
}
