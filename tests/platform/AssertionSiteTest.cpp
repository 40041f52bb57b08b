#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tests/common/TestSupport.h"
#include "vancoredata/VersionNumber.h"
#include "vansys/LogicException.h"
#include "vansys/MemoryScope.h"
#include "vansys/VReadWriteLock.h"

namespace {

struct SiteCase {
    const char* name;
    AssertionSite site;
    const char* key;
};

constexpr SiteCase SiteCases[] = {
    {"Condition", {"vansys\\Test", 12, "a == b", 0xABCDEF01}, "LogicException_LogicAssert_0xABCDEF01"},
    {"Sentence", {"vansys\\Test", 1, "Größe passt nicht.", 0x00000001}, "LogicException_LogicAssert_0x00000001"},
    {"LargestCode", {"a\\b\\c", 2147483647, "", 0xFFFFFFFF}, "LogicException_LogicAssert_0xFFFFFFFF"},
};

class AssertionSiteTest : public testing::TestWithParam<SiteCase> {};

void CloseOnAnotherThread()
{
    MemoryScope scope("AssertionSiteTest");
    std::unique_ptr<VantoraException> raised;
    std::thread([&] {
        try {
            scope.Close();
        } catch (const VantoraException& exception) {
            raised.reset(exception.Clone());
        }
    }).join();
    if (raised)
        raised->Throw();
}

void LockForWriteUnderRead()
{
    VReadWriteLock lock(0);
    const VReadLocker reading(lock);
    const VWriteLocker writing(lock);
}

struct PlatformCase {
    const char* name;
    void (*breakPromise)();
    AssertionSite site;
};

constexpr PlatformCase PlatformCases[] = {
    {"ScopeClosedByAnotherThread",
        CloseOnAnotherThread,
        {"vansys\\MemoryScope", 60, "MemoryScope can only be used on single thread", 0x3C6E9D12}},
    {"LockOptions", [] { VReadWriteLock lock(1); }, {"vansys\\VReadWriteLock", 103, "options == 0", 0x6B20F4D1}},
    {"WriteLockUnderReadLock",
        LockForWriteUnderRead,
        {"vansys\\VReadWriteLock", 131, "no write lock under a read lock", 0x5D1E7A60}},
    {"VersionOptions",
        [] { VersionNumber version("1", u'.', u'-', 1); },
        {"vancoredata\\VersionNumber", 36, "options == 0", 0xB7419C2E}},
};

class PlatformAssertionsTest : public testing::TestWithParam<PlatformCase> {};

template <typename Case>
std::string NameOf(const testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}

}  // namespace

TEST_P(AssertionSiteTest, TheExceptionHasFileLineTextCodeAndKey)
{
    const AssertionSite& site = GetParam().site;
    testsupport::ExpectLogicException(
        [&site] { ThrowLogicException(site); }, site.file, site.line, site.text, site.code);
    try {
        ThrowLogicException(site);
    } catch (const LogicException& exception) {
        EXPECT_EQ(exception.GetErrorInfo().GetKey(), VString(GetParam().key));
        EXPECT_EQ(exception.GetErrorInfo().GetSource(), VError::ErrorSource::Product);
        EXPECT_EQ(exception.GetErrorInfo().GetStatus(), VError::StatusCode::Internal);
    }
}

INSTANTIATE_TEST_SUITE_P(Sites, AssertionSiteTest, testing::ValuesIn(SiteCases), NameOf<SiteCase>);

TEST_P(PlatformAssertionsTest, RaiseTheirSite)
{
    const AssertionSite& site = GetParam().site;
    testsupport::ExpectLogicException(GetParam().breakPromise, site.file, site.line, site.text, site.code);
}

INSTANTIATE_TEST_SUITE_P(Platform, PlatformAssertionsTest, testing::ValuesIn(PlatformCases), NameOf<PlatformCase>);
