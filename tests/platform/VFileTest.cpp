#include "vancoreplatform/VFile.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>

#if defined(__linux__)
#  include <unistd.h>
#endif

#include "tests/common/TestSupport.h"
#include "vancoreplatform/VIOException.h"

using testing::HasSubstr;
using testsupport::TemporaryFolder;

namespace {

// Returns the message of the VIO::Exception that `run` throws.
std::string FailureOf(const std::function<void()>& run)
{
    try {
        run();
    } catch (const VIO::Exception& exception) {
        EXPECT_EQ(exception.GetMessage().toStdString(), exception.what());
        return exception.what();
    }
    ADD_FAILURE() << "no VIO::Exception";
    return {};
}

std::string ReadSome(VFile& file, std::size_t count)
{
    std::string bytes(count, '?');
    bytes.resize(file.Read(bytes.data(), count));
    return bytes;
}

}  // namespace

TEST(VFileTest, ReadsInPiecesToTheEnd)
{
    const TemporaryFolder folder;
    VFile file(folder.Write("a.txt", std::string("ab\0cd", 5)));
    file.OpenForReading();
    EXPECT_EQ(file.Size(), 5u);
    EXPECT_EQ(ReadSome(file, 3), std::string("ab\0", 3));
    EXPECT_EQ(ReadSome(file, 3), "cd");
    EXPECT_EQ(ReadSome(file, 3), "");
}

TEST(VFileTest, SeeksFromTheStart)
{
    const TemporaryFolder folder;
    VFile file(folder.Write("a.txt", "abcdef"));
    file.OpenForReading();
    EXPECT_EQ(ReadSome(file, 6), "abcdef");
    file.Seek(2);
    EXPECT_EQ(ReadSome(file, 2), "cd");
    file.Seek(0);
    EXPECT_EQ(ReadSome(file, 2), "ab");
}

TEST(VFileTest, OpeningAgainStartsOver)
{
    const TemporaryFolder folder;
    VFile file(folder.Write("a.txt", "abc"));
    file.OpenForReading();
    ReadSome(file, 2);
    file.OpenForReading();
    EXPECT_EQ(ReadSome(file, 3), "abc");
}

TEST(VFileTest, SeekingOutOfRangeThrows)
{
    const TemporaryFolder folder;
    VFile file(folder.Write("a.txt", "abc"));
    file.OpenForReading();
    EXPECT_THROW(file.Seek(~0ull), VIO::Exception);
}

TEST(VFileTest, AMissingFileIsNamedWithTheReason)
{
    const TemporaryFolder folder;
    const VString path = folder.Path("missing.xml");
    const std::string expected = "Cannot read \"" + path.toStdString() + "\": No such file or directory";
    EXPECT_EQ(FailureOf([&] { VFile(path).OpenForReading(); }), expected);
    EXPECT_EQ(FailureOf([&] { GetFileSize(path); }), expected);
}

TEST(VFileTest, AFileThatIsNotOpenThrows)
{
    const TemporaryFolder folder;
    VFile file(folder.Write("a.txt", "abc"));
    EXPECT_THAT(FailureOf([&] { ReadSome(file, 1); }), testing::EndsWith(": it is not open"));
    EXPECT_THROW(file.Seek(0), VIO::Exception);
    EXPECT_THROW(file.Size(), VIO::Exception);
}

TEST(VFileTest, ADirectoryIsRefused)
{
    const TemporaryFolder folder;
    for (const VString& path : {folder.Path("."), folder.Path("") + "/"}) {
        EXPECT_THAT(FailureOf([&] { VFile(path).OpenForReading(); }), HasSubstr("directory"));
        EXPECT_THAT(FailureOf([&] { VFile::LoadTextFile(path, true); }), HasSubstr("directory"));
        EXPECT_THAT(FailureOf([&] { GetFileSize(path); }), HasSubstr("directory"));
    }
}

TEST(VFileTest, TheEmptyNameIsRefused)
{
    EXPECT_THROW(VFile("").OpenForReading(), VIO::Exception);
    EXPECT_THROW(GetFileSize(""), VIO::Exception);
}

TEST(VFileTest, RefusesANameWithANul)
{
    const TemporaryFolder folder;
    const VString path = folder.Write("a.txt", "abc") + VString(u"\0.xml", 5);
    EXPECT_THROW(VFile(path).OpenForReading(), VIO::Exception);
    EXPECT_THROW(GetFileSize(path), VIO::Exception);
}

TEST(VFileTest, OpensFilesWithNamesOutsideAscii)
{
    const TemporaryFolder folder;
    const VString path = folder.Write(u"größe 文 \U0001F600.txt", "abc");
    EXPECT_EQ(GetFileSize(path), 3u);
    EXPECT_EQ(VFile::LoadTextFile(path, false), VString("abc"));
}

TEST(VFileTest, EmbeddedResourcesAreNotFiles)
{
    ASSERT_TRUE(QFile::exists(QStringLiteral(":/platform-tests/greeting")));
    EXPECT_THROW(VFile(":/platform-tests/greeting").OpenForReading(), VIO::Exception);
    EXPECT_THROW(GetFileSize(":/platform-tests/greeting"), VIO::Exception);
}

TEST(VFileTest, SizesAreInBytes)
{
    const TemporaryFolder folder;
    EXPECT_EQ(GetFileSize(folder.Write("a.txt", "größe")), 7u);
    EXPECT_EQ(GetFileSize(folder.Write("b.txt", "")), 0u);
}

TEST(VFileTest, MessagesEndWithTheReasonOfTheSystem)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "");
    const std::pair<VString, const char*> failures[] = {
        {folder.Path("missing.xml"), "No such file or directory"},
        {folder.Path("missing/a.xml"), "No such file or directory"},
        {folder.Path("."), "it is a directory"},
#if defined(_WIN32)
        {file + "/a.xml", "No such file or directory"},
        {folder.Path("a*.xml"), "the file name is invalid"},
#else
        {file + "/a.xml", "Not a directory"},
        {folder.Path(VString::fromStdString(std::string(256, 'a'))), "File name too long"},
#endif
    };
    for (const auto& failure : failures) {
        const VString& path = failure.first;
        const std::string expected = "Cannot read \"" + path.toStdString() + "\": " + failure.second;
        EXPECT_EQ(FailureOf([&] { GetFileSize(path); }), expected);
        EXPECT_EQ(FailureOf([&] { VFile(path).OpenForReading(); }), expected);
    }
}

// The permissions of POSIX systems.
#if defined(__linux__)
namespace {

// Removes all permissions of a folder while it lives. Permissions do not stop root, so a test that runs as root
// continues as another user.
class LockedFolder {
public:
    explicit LockedFolder(const VString& path) : m_path(path.ToQString()), m_user(getuid())
    {
        constexpr uid_t nobody = 65534;
        EXPECT_TRUE(QFile::setPermissions(m_path, QFile::Permissions()));
        EXPECT_EQ(m_user == 0 ? setresuid(nobody, nobody, m_user) : 0, 0);
    }
    ~LockedFolder()
    {
        EXPECT_EQ(setresuid(m_user, m_user, m_user), 0);
        EXPECT_TRUE(QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }

private:
    const QString m_path;
    const uid_t m_user;
};

}  // namespace

TEST(VFileTest, AFileInALockedFolderIsNotCalledMissing)
{
    const TemporaryFolder folder;
    ASSERT_TRUE(QDir().mkdir(folder.Path("locked").ToQString()));
    const VString path = folder.Write("locked/a.xml", "abc");
    const LockedFolder locked(folder.Path("locked"));
    const std::string expected = "Cannot read \"" + path.toStdString() + "\": Permission denied";
    EXPECT_EQ(FailureOf([&] { GetFileSize(path); }), expected);
    EXPECT_EQ(FailureOf([&] { VFile(path).OpenForReading(); }), expected);
    EXPECT_EQ(FailureOf([&] { VFile::LoadTextFile(path, true); }), expected);
}
#endif

TEST(VFileTest, LoadsTextFiles)
{
    const TemporaryFolder folder;
    EXPECT_EQ(VFile::LoadTextFile(folder.Write("a.txt", "größe"), true), VString("größe"));
    EXPECT_EQ(VFile::LoadTextFile(folder.Write("b.txt", ""), true), VString());
}

TEST(VFileTest, LoadsTextFilesAsUtf8)
{
    const TemporaryFolder folder;
    EXPECT_EQ(VFile::LoadTextFileAsUtf8(folder.Write("a.txt", "größe"), true), "größe");
    EXPECT_EQ(VFile::LoadTextFileAsUtf8(folder.Write("b.txt", ""), true), "");
    EXPECT_EQ(VFile::LoadTextFileAsUtf8(folder.Write("c.txt", "\uFEFFgröße"), true), "größe");
    EXPECT_EQ(
        VFile::LoadTextFileAsUtf8(folder.Write("d.xml", "<?xml version='1.0' encoding='ISO-8859-1'?><\xE4/>"), true),
        "<?xml version='1.0' encoding='ISO-8859-1'?><ä/>");
    EXPECT_THAT(
        FailureOf([&] { VFile::LoadTextFileAsUtf8(folder.Write("e.xml", "ab\xFF"), true); }), HasSubstr("offset 2"));
}

TEST(VFileTest, LoadsFilesThatAreLargerThanOneRead)
{
    const TemporaryFolder folder;
    std::string bytes;
    for (int i = 0; i < 400000; ++i)
        bytes += std::to_string(i) + "\n";
    EXPECT_EQ(VFile::LoadTextFile(folder.Write("a.txt", bytes), true).toStdString(), bytes);
}

TEST(VFileTest, DecodingErrorsNameTheFile)
{
    const TemporaryFolder folder;
    const VString path = folder.Write("bad.xml", "ab\xFF");
    const std::string message = FailureOf([&] { VFile::LoadTextFile(path, true); });
    EXPECT_THAT(message, HasSubstr("bad.xml"));
    EXPECT_THAT(message, HasSubstr("offset 2"));
}

TEST(VFileTest, ATextLongerThanAStringThrows)
{
    const TemporaryFolder folder;
    const VString path = folder.Write("huge.xml", "");
    QFile file(path.ToQString());
    ASSERT_TRUE(file.resize(qint64{VString::MaxLength} + 1));
    EXPECT_THAT(FailureOf([&] { VFile::LoadTextFile(path, true); }), HasSubstr("too long"));
}

TEST(VFileTest, AFileWhoseSizeNoStringCanHaveIsNotRead)
{
    const TemporaryFolder folder;
    const VString path = folder.Write("huge.xml", "");
    QFile file(path.ToQString());
    const qint64 size = qint64{4} * VString::MaxLength + 1;
    ASSERT_TRUE(file.resize(size));
    const testsupport::CpuTimeLimit limit(0.5);
    EXPECT_EQ(FailureOf([&] { VFile::LoadTextFile(path, true); }),
        "Cannot read \"" + path.toStdString() + "\": the text is too long");
}
