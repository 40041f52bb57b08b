// The names, the properties and the sharing of files on Windows, and processes that are killed.
#include "vancoreplatform/FileReplacement.h"

#include <chrono>
#include <cstring>
#include <thread>

#include "tests/common/TestSupport.h"
#include "vancoreplatform/VFile.h"
#include "vancoreplatform/VIOException.h"

// Behind the headers that have a member GetMessage, because it defines a macro of this name.
#include <windows.h>

// Needs windows.h in front of it.
#include <sddl.h>

namespace {

using testing::ElementsAre;
using testsupport::CurrentFolder;
using testsupport::TemporaryFolder;

std::wstring Wide(const VString& text)
{
    return text.ToQString().toStdWString();
}

VString Backslashes(const VString& path)
{
    return VString(QDir::toNativeSeparators(path.ToQString()));
}

bool IsWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

// Owns a handle of a file, which is open like the file of another process.
class OpenFile {
public:
    OpenFile(const VString& file, DWORD sharing, DWORD access = GENERIC_READ)
        : m_handle(
              CreateFileW(Wide(file).c_str(), access, sharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))
    {
        EXPECT_NE(m_handle, INVALID_HANDLE_VALUE) << GetLastError();
    }
    ~OpenFile() { CloseHandle(m_handle); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    std::string ReadAll() const
    {
        char bytes[100];
        DWORD count = 0;
        EXPECT_TRUE(ReadFile(m_handle, bytes, sizeof bytes, &count, nullptr));
        return std::string(bytes, count);
    }

private:
    HANDLE m_handle;
};

// Owns a folder with the file a.xml.
class FileReplacementWindowsTest : public testing::Test {
protected:
    static std::size_t Replace(const VString& target, const char* text = "new")
    {
        FileReplacement replacement{VPath(target)};
        replacement.Write(text);
        replacement.Commit();
        return replacement.OtherNames();
    }
    static std::string FailureOf(const VString& target)
    {
        try {
            Replace(target);
        } catch (const VIO::Exception& exception) {
            return exception.what();
        }
        return "no exception";
    }
    void ExpectRefused(const char* reason) const
    {
        EXPECT_EQ(FailureOf(file), "Cannot write \"" + file.toStdString() + "\": " + reason);
        EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
    }
    // Creates and replaces a file and reads it.
    static void ExpectUsable(const VString& name)
    {
        for (const char* text : {"created", "replaced!"}) {
            Replace(name, text);
            EXPECT_EQ(VFile::LoadTextFileAsUtf8(name, true), text) << name;
            EXPECT_EQ(GetFileSize(VPath(name)), std::strlen(text)) << name;
        }
    }

    TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "old");
};

TEST_F(FileReplacementWindowsTest, NamesMayHaveAllCharacters)
{
    for (const VString& name :
        {VString(u"αβγ.xml"), VString(u"文件 größe.xml"), VString(u"\U0001F600.xml"), VString("a'b & c;%d.xml")}) {
        const TemporaryFolder empty;
        ExpectUsable(empty.Path(name));
        EXPECT_THAT(empty.Names(), ElementsAre(name.toStdString()));
    }
}

TEST_F(FileReplacementWindowsTest, NamesMayBeLong)
{
    VString path = folder.Path("x");
    while (path.length() < 1000) {
        path += VString(u"/ein langer Name αβγ 文 0123456789012345678901234567890123456789");
        ASSERT_TRUE(QDir().mkpath(path.ToQString()));
    }
    const VString longest = path + "/" + VString(QString(200, QLatin1Char('n'))) + ".xml";
    ExpectUsable(longest);
    ExpectUsable(Backslashes(longest));
    ExpectUsable(path + "/../../a.xml");
    ExpectUsable(VString("\\\\?\\") + Backslashes(longest));
    EXPECT_EQ(QDir(path.ToQString()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

TEST_F(FileReplacementWindowsTest, NamesWithSlashesAndBackslashesAreTheSame)
{
    ASSERT_TRUE(QDir().mkdir(folder.Path("folder").ToQString()));
    ExpectUsable(Backslashes(folder.Path("folder")) + "/b.xml");
    ExpectUsable(folder.Path("folder\\c.xml"));
    ExpectUsable(VString("\\\\?\\") + Backslashes(folder.Path("folder/d.xml")));
    ExpectUsable(VString("\\\\.\\") + Backslashes(folder.Path("folder/d.xml")));
    EXPECT_EQ(QDir(folder.Path("folder").ToQString()).entryList(QDir::Files), QStringList({"b.xml", "c.xml", "d.xml"}));
}

// The folder of the program is often on another drive than temporary files; with Wine it always is.
TEST_F(FileReplacementWindowsTest, FilesMayBeOnAnyDriveAndRelativeToIt)
{
    const CurrentFolder current(folder.Path("."));
    wchar_t program[MAX_PATH];
    ASSERT_NE(GetModuleFileNameW(nullptr, program, MAX_PATH), 0u);
    const QTemporaryDir other(QFileInfo(QString::fromWCharArray(program)).path() + "/XXXXXX");
    const VString path(other.path());
    ExpectUsable(path + "/a.xml");
    // The system keeps the current folder of each drive in a variable.
    const VString drive = path.left(2);
    ASSERT_TRUE(SetEnvironmentVariableW(Wide("=" + drive).c_str(), Wide(Backslashes(path)).c_str()));
    ExpectUsable(drive + "b.xml");
    EXPECT_EQ(QDir(other.path()).entryList(QDir::Files | QDir::Hidden), QStringList({"a.xml", "b.xml"}));
    ExpectUsable(file.left(2) + "c.xml");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml", "c.xml"));
}

TEST_F(FileReplacementWindowsTest, FilesMayBeOnAShare)
{
    const VString path = Backslashes(file);
    const VString share = "\\\\localhost\\" + path.left(1) + "$" + path.mid(2);
    if (GetFileAttributesW(Wide(share).c_str()) == INVALID_FILE_ATTRIBUTES)
        GTEST_SKIP() << "no share of the drive here";
    ExpectUsable(share);
    ExpectUsable(VString("//localhost/") + share.mid(12));
    ExpectUsable(VString("\\\\?\\UNC\\") + share.mid(2));
    EXPECT_EQ(TemporaryFolder::Read(file), "replaced!");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

TEST_F(FileReplacementWindowsTest, DevicesAndInvalidNamesAreRefused)
{
    for (const char* device : {"NUL", "\\\\.\\NUL", "CON"})
        EXPECT_THAT(FailureOf(device), testing::EndsWith(": it is not a regular file"));
    for (const VString& name : {file + ":stream", folder.Path("") + ":b.xml"})
        EXPECT_THAT(FailureOf(name), testing::EndsWith(": the file name is invalid"));
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

TEST_F(FileReplacementWindowsTest, FileThatAnotherProcessKeepsOpenIsRefused)
{
    for (const DWORD sharing : {0ul, DWORD{FILE_SHARE_READ}, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE}}) {
        const OpenFile open(file, sharing);
        ExpectRefused("another process uses the file");
        EXPECT_EQ(open.ReadAll(), "old");
    }
    {
        const OpenFile open(file, FILE_SHARE_READ, GENERIC_WRITE);
        ExpectRefused("another process uses the file");
    }
    EXPECT_EQ(TemporaryFolder::Read(file), "old");
}

TEST_F(FileReplacementWindowsTest, FileThatAnotherProcessDoesNotShareForReadingCannotBeRead)
{
    const std::string expected = "Cannot read \"" + file.toStdString() + "\": another process uses the file";
    for (const DWORD sharing : {0ul, DWORD{FILE_SHARE_WRITE | FILE_SHARE_DELETE}}) {
        const OpenFile open(file, sharing);
        try {
            VFile{VPath(file)}.OpenForReading();
            ADD_FAILURE() << "no VIO::Exception";
        } catch (const VIO::Exception& exception) {
            EXPECT_EQ(exception.what(), expected);
        }
    }
    EXPECT_EQ(VFile::LoadTextFileAsUtf8(file, false), "old");
}

TEST_F(FileReplacementWindowsTest, FileThatAnotherProcessKeepsOpenButSharesForRemovalIsReplaced)
{
    const OpenFile open(file, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    VFile reader{VPath(file)};
    reader.OpenForReading();
    const std::string failure = FailureOf(file);
    if (failure != "no exception" && IsWine()) {
        ExpectRefused("another process uses the file");
        EXPECT_EQ(open.ReadAll(), "old");
        GTEST_SKIP() << "this system cannot rename as POSIX systems do; Windows can since 2017, Wine 8 cannot";
    }
    EXPECT_EQ(failure, "no exception");
    char bytes[3];
    EXPECT_EQ(std::string(bytes, reader.Read(bytes, sizeof bytes)), "old");
    EXPECT_EQ(open.ReadAll(), "old");
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

TEST_F(FileReplacementWindowsTest, WaitsForAProcessThatClosesTheFileSoon)
{
    auto open = std::make_unique<OpenFile>(file, FILE_SHARE_READ);
    FileReplacement replacement{VPath(file)};
    replacement.Write("new");
    std::thread scanner([&open] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        open.reset();
    });
    replacement.Commit();
    scanner.join();
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

TEST_F(FileReplacementWindowsTest, ReadOnlyFileIsRefused)
{
    ASSERT_TRUE(SetFileAttributesW(Wide(file).c_str(), FILE_ATTRIBUTE_READONLY));
    ExpectRefused("Permission denied");
    ASSERT_TRUE(SetFileAttributesW(Wide(file).c_str(), FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(TemporaryFolder::Read(file), "old");
}

TEST_F(FileReplacementWindowsTest, KeepsAttributes)
{
    for (const DWORD attributes : {DWORD{FILE_ATTRIBUTE_HIDDEN},
             DWORD{FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM},
             DWORD{FILE_ATTRIBUTE_ARCHIVE}}) {
        ASSERT_TRUE(SetFileAttributesW(Wide(file).c_str(), attributes));
        Replace(file);
        constexpr DWORD compared = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
        EXPECT_EQ(GetFileAttributesW(Wide(file).c_str()) & compared, attributes & compared);
        EXPECT_EQ(TemporaryFolder::Read(file), "new");
        EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
    }
}

TEST_F(FileReplacementWindowsTest, KeepsTheTimeOfCreation)
{
    const auto created = [this] {
        WIN32_FILE_ATTRIBUTE_DATA data{};
        EXPECT_TRUE(GetFileAttributesExW(Wide(file).c_str(), GetFileExInfoStandard, &data));
        return data.ftCreationTime.dwHighDateTime;
    };
    const FILETIME past{0, 0x01C00000};  // in the year 2000
    const HANDLE handle = CreateFileW(Wide(file).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_TRUE(SetFileTime(handle, &past, nullptr, nullptr));
    CloseHandle(handle);
    if (created() != past.dwHighDateTime)
        GTEST_SKIP() << "Wine has no time of creation";
    Replace(file);
    EXPECT_EQ(created(), past.dwHighDateTime);
}

// Returns the access list as text.
std::wstring AccessListOf(const VString& file)
{
    std::vector<char> descriptor(10000);
    DWORD size = 0;
    EXPECT_TRUE(GetFileSecurityW(Wide(file).c_str(), DACL_SECURITY_INFORMATION, descriptor.data(), 10000, &size));
    wchar_t* text = nullptr;
    EXPECT_TRUE(ConvertSecurityDescriptorToStringSecurityDescriptorW(
        descriptor.data(), SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr));
    const std::wstring result = text;
    LocalFree(text);
    return result;
}

TEST_F(FileReplacementWindowsTest, KeepsTheAccessList)
{
    // Only the user who owns the file may use it.
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
        L"D:P(A;;FA;;;OW)(A;;FA;;;BA)", SDDL_REVISION_1, &descriptor, nullptr));
    const std::wstring inherited = AccessListOf(file);
    ASSERT_TRUE(SetFileSecurityW(Wide(file).c_str(), DACL_SECURITY_INFORMATION, descriptor));
    LocalFree(descriptor);
    const std::wstring own = AccessListOf(file);
    if (own == inherited)
        GTEST_SKIP() << "this file system has no access lists";
    Replace(file);
    EXPECT_EQ(AccessListOf(file), own);
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
}

TEST_F(FileReplacementWindowsTest, KeepsNamedStreams)
{
    const VString stream = file + ":author";
    DWORD flags = 0;
    GetVolumeInformationW(Wide(file.left(2) + "\\").c_str(), nullptr, 0, nullptr, nullptr, &flags, nullptr, 0);
    if ((flags & FILE_NAMED_STREAMS) == 0)
        GTEST_SKIP() << "this file system has no named streams";
    const std::string text(100000, 's');
    {
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> out(_wfopen(Wide(stream).c_str(), L"wb"), &std::fclose);
        ASSERT_TRUE(out);
        ASSERT_EQ(std::fwrite(text.data(), 1, text.size(), out.get()), text.size());
    }
    Replace(file);
    EXPECT_EQ(VFile::LoadTextFileAsUtf8(stream, false), text);
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
}

TEST_F(FileReplacementWindowsTest, CountsTheOtherHardLinks)
{
    const VString second = folder.Path("b.xml");
    ASSERT_TRUE(CreateHardLinkW(Wide(second).c_str(), Wide(file).c_str(), nullptr));
    EXPECT_EQ(Replace(file), 1u);
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
    EXPECT_EQ(TemporaryFolder::Read(second), "old");
    EXPECT_EQ(Replace(file), 0u);
}

TEST_F(FileReplacementWindowsTest, ReplacesTheTargetOfALinkAndKeepsTheLink)
{
    const VString link = folder.Path("link.xml");
    const VString broken = folder.Path("broken.xml");
    CreateSymbolicLinkW(Wide(link).c_str(), L"a.xml", 0);
    CreateSymbolicLinkW(Wide(broken).c_str(), L"gone.xml", 0);
    const auto isLink = [](const VString& name) {
        const DWORD attributes = GetFileAttributesW(Wide(name).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    };
    if (!isLink(link) || !isLink(broken))
        GTEST_SKIP() << "this user cannot create links";
    Replace(link);
    EXPECT_TRUE(isLink(link));
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
    EXPECT_THAT(FailureOf(broken), testing::EndsWith(": No such file or directory"));
    EXPECT_TRUE(isLink(broken));
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml", "broken.xml", "link.xml"));
}

constexpr wchar_t FileVariable[] = L"VANCOREXML_FILE_TO_REPLACE";
constexpr wchar_t ModeVariable[] = L"VANCOREXML_REPLACEMENT_MODE";

std::wstring ReadVariable(const wchar_t* name)
{
    wchar_t value[MAX_PATH];
    return std::wstring(value, GetEnvironmentVariableW(name, value, MAX_PATH));
}

// Another process of this program, which replaces a file and ends only when it is killed. In the mode "wait" it does
// not commit.
class Child {
public:
    Child(const VString& file, const wchar_t* mode)
    {
        SetEnvironmentVariableW(FileVariable, Wide(file).c_str());
        SetEnvironmentVariableW(ModeVariable, mode);
        wchar_t program[MAX_PATH];
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        EXPECT_TRUE(
            CreateProcessW(program, nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &m_process));
    }
    ~Child()
    {
        TerminateProcess(m_process.hProcess, 1);
        WaitForSingleObject(m_process.hProcess, INFINITE);
        CloseHandle(m_process.hThread);
        CloseHandle(m_process.hProcess);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // Returns false in a process that is no child.
    static bool Run()
    {
        const VString file(QString::fromStdWString(ReadVariable(FileVariable)));
        while (!file.IsEmpty()) {
            try {
                ReplaceOnce(file);
            } catch (const VIO::Exception&) {
                Sleep(1);  // the test is reading the file
            }
        }
        return false;
    }

private:
    static void ReplaceOnce(const VString& file)
    {
        FileReplacement replacement{VPath(file)};
        replacement.Write(std::string(20000, 'n'));
        if (ReadVariable(ModeVariable) == L"wait")
            Sleep(INFINITE);
        replacement.Commit();
    }

    PROCESS_INFORMATION m_process{};
};

// A child never begins with the tests.
[[maybe_unused]] const bool isChild = Child::Run();

TEST_F(FileReplacementWindowsTest, KilledProcessLeavesNoTemporaryFile)
{
    {
        const Child child(file, L"wait");
        for (int tries = 0; folder.Names().size() < 2 && tries < 1000; ++tries)
            Sleep(10);
        EXPECT_EQ(folder.Names().size(), 2u) << "the child has not created a file";
    }
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
    EXPECT_EQ(TemporaryFolder::Read(file), "old");
}

// Does not count the temporary files: a process that is killed during the rename leaves one (see FileReplacement).
TEST_F(FileReplacementWindowsTest, ProcessThatIsKilledAtAnyTimeLeavesTheOldOrTheNewFile)
{
    const std::string old(20000, 'o');
    const std::string text(20000, 'n');
    folder.Write("a.xml", old);
    for (int repetition = 0; repetition < 20; ++repetition) {
        {
            const Child child(file, L"replace");
            for (int tries = 0; VFile::LoadTextFileAsUtf8(file, false) == old && tries < 1000; ++tries)
                Sleep(10);
            Sleep(static_cast<DWORD>(repetition));
        }
        EXPECT_EQ(TemporaryFolder::Read(file), text);
        folder.Write("a.xml", old);
    }
}

}  // namespace
