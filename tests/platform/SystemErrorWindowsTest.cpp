#include "vancoreplatform/SystemError.h"

#include "tests/common/TestSupport.h"

// Behind the headers that have a member GetMessage, because it defines a macro of this name.
#include <windows.h>

namespace {

std::string ReasonOf(DWORD error)
{
    return GetSystemReason(std::error_code(static_cast<int>(error), std::system_category())).toStdString();
}

TEST(SystemErrorWindowsTest, CommonReasonsHaveTheWordsOfPosixSystems)
{
    const std::pair<DWORD, const char*> rows[] = {
        {ERROR_FILE_NOT_FOUND, "No such file or directory"},
        {ERROR_PATH_NOT_FOUND, "No such file or directory"},
        {ERROR_ACCESS_DENIED, "Permission denied"},
        {ERROR_DISK_FULL, "No space left on device"},
        {ERROR_FILENAME_EXCED_RANGE, "File name too long"},
        {ERROR_BROKEN_PIPE, "Broken pipe"},
        {ERROR_NO_DATA, "Broken pipe"},
        {ERROR_SHARING_VIOLATION, "another process uses the file"},
        {ERROR_INVALID_NAME, "the file name is invalid"},
    };
    for (const auto& [error, reason] : rows)
        EXPECT_EQ(ReasonOf(error), reason) << error;
}

TEST(SystemErrorWindowsTest, OtherErrorsHaveTheMessageOfTheSystemOnOneLine)
{
    for (const DWORD error : {ERROR_CRC, ERROR_SEEK, ERROR_NOT_SUPPORTED, ERROR_BAD_EXE_FORMAT}) {
        const std::string reason = ReasonOf(error);
        EXPECT_FALSE(reason.empty()) << error;
        EXPECT_EQ(reason.find_first_of("\r\n\xEF"), std::string::npos) << reason;
        EXPECT_THAT(reason, testing::Not(testing::AnyOf(testing::EndsWith("."), testing::EndsWith(" "))));
        EXPECT_THAT(reason, testing::Not(testing::HasSubstr("of the system"))) << error;
    }
}

TEST(SystemErrorWindowsTest, UnknownErrorsHaveTheirNumber)
{
    EXPECT_EQ(ReasonOf(0x2FFFFFFF), "error 805306367 of the system");
}

TEST(SystemErrorWindowsTest, ErrorsOfTheCLibraryAreInEnglish)
{
    EXPECT_EQ(GetSystemReason(std::make_error_code(std::errc::is_a_directory)), VString("Is a directory"));
    EXPECT_EQ(GetSystemReason(std::make_error_code(std::errc::permission_denied)), VString("Permission denied"));
}

}  // namespace
