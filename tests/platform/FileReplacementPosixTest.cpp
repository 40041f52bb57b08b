// The properties and names of files that exist on POSIX systems only, links, and signals.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>

#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#  include <sys/xattr.h>
#endif

#include "tests/common/TestSupport.h"
#include "tests/common/UnnamedFiles.h"
#include "vancoreplatform/FileReplacement.h"
#include "vancoreplatform/VFile.h"
#include "vancoreplatform/VIOException.h"

namespace {

using testing::ElementsAre;
using testsupport::CurrentFolder;
using testsupport::HasUnnamedFiles;
using testsupport::TemporaryFolder;

constexpr uid_t OtherUser = 65534;
constexpr gid_t OtherGroup = 65533;

// Owns a folder with the file a.xml.
class FileReplacementPosixTest : public testing::Test {
protected:
    // Returns the path in the form that the system's calls need.
    std::string Native() const { return file.toStdString(); }
    struct stat Status() const
    {
        struct stat status;
        EXPECT_EQ(stat(Native().c_str(), &status), 0);
        return status;
    }
    mode_t Mode() const { return Status().st_mode & 07777; }
    std::size_t Replace() const
    {
        FileReplacement replacement{VPath(file)};
        replacement.Write("new");
        replacement.Commit();
        return replacement.OtherNames();
    }
    void ExpectDenied() const
    {
        try {
            Replace();
            ADD_FAILURE() << "the file was replaced";
        } catch (const VIO::Exception& exception) {
            EXPECT_EQ(exception.what(), "Cannot write \"" + Native() + "\": Permission denied");
        }
        EXPECT_EQ(TemporaryFolder::Read(file), "old");
    }
    // Calls `run` in a child process as an ordinary user without groups, and expects that it returns true.
    void ExpectAsOrdinaryUser(const std::function<bool()>& run) const
    {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            gid_t group = OtherGroup;
            bool isGood = setgroups(1, &group) == 0 && setgid(OtherUser) == 0 && setuid(OtherUser) == 0;
            try {
                isGood = isGood && run();
            } catch (const std::exception& exception) {
                std::fprintf(stderr, "%s\n", exception.what());
                isGood = false;
            }
            _exit(isGood ? 0 : 1);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }

    TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "old");
};

TEST_F(FileReplacementPosixTest, KeepsThePermissions)
{
    for (const mode_t mode : {0600u, 0644u, 0640u, 0751u, 0200u, 0020u | 0400u, 0666u, 04755u, 02755u, 06777u}) {
        if (mode == 0420u && geteuid() != 0)
            continue;
        ASSERT_EQ(chmod(Native().c_str(), mode), 0);
        Replace();
        EXPECT_EQ(Mode(), mode) << std::oct << mode;
    }
}

TEST_F(FileReplacementPosixTest, FolderThatIsRenamedMeanwhileKeepsItsFile)
{
    const std::string before = folder.Path("before").toStdString();
    const std::string after = folder.Path("after").toStdString();
    ASSERT_EQ(mkdir(before.c_str(), 0700), 0);
    folder.Write("before/a.xml", "old");
    FileReplacement replacement{VPath(folder.Path("before/a.xml"))};
    replacement.Write("new");
    ASSERT_EQ(rename(before.c_str(), after.c_str()), 0);
    replacement.Commit();
    EXPECT_EQ(TemporaryFolder::Read(folder.Path("after/a.xml")), "new");
    EXPECT_EQ(QDir(QString::fromStdString(after)).entryList(QDir::Files | QDir::Hidden), QStringList("a.xml"));
}

TEST_F(FileReplacementPosixTest, FileThatIsRemovedMeanwhileIsCreatedAgain)
{
    ASSERT_EQ(chmod(Native().c_str(), 0640), 0);
    FileReplacement replacement{VPath(file)};
    replacement.Write("new");
    ASSERT_EQ(unlink(Native().c_str()), 0);
    replacement.Commit();
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
    EXPECT_EQ(Mode(), 0640u);
}

TEST_F(FileReplacementPosixTest, NewFileGetsThePermissionsOfTheUmask)
{
    const mode_t old = umask(027);
    FileReplacement replacement{VPath(folder.Path("b.xml"))};
    replacement.Commit();
    umask(old);
    struct stat status;
    ASSERT_EQ(stat(folder.Path("b.xml").toStdString().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST_F(FileReplacementPosixTest, TemporaryFileHasNoNameOrIsPrivate)
{
    FileReplacement replacement{VPath(file)};
    replacement.Write("new");
    std::vector<std::string> names = folder.Names();
    names.erase(std::remove(names.begin(), names.end(), "a.xml"), names.end());
    ASSERT_EQ(names.size(), HasUnnamedFiles(folder) ? 0u : 1u);
    for (const std::string& each : names) {
        EXPECT_THAT(each, testing::StartsWith(".vanxml-"));
        struct stat status;
        ASSERT_EQ(stat(folder.Path(VString::fromStdString(each)).toStdString().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600u);
    }
}

TEST_F(FileReplacementPosixTest, ProcessThatIsKilledBeforeCommitLeavesNoFileWithoutAName)
{
    if (!HasUnnamedFiles(folder))
        GTEST_SKIP() << "the file system has no files without a name";
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        FileReplacement replacement{VPath(file)};
        replacement.Write("new");
        raise(SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    EXPECT_EQ(TemporaryFolder::Read(file), "old");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

TEST_F(FileReplacementPosixTest, FileWithoutWritePermissionIsRefusedAlsoToRoot)
{
    for (const mode_t mode : {0444u, 0555u, 0400u, 0u}) {
        ASSERT_EQ(chmod(Native().c_str(), mode), 0);
        if (geteuid() == 0 || (mode & 0400) != 0)
            ExpectDenied();
    }
}

TEST_F(FileReplacementPosixTest, FileOfAnotherUserIsRefused)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    ASSERT_EQ(chmod(folder.Path(".").toStdString().c_str(), 0777), 0);
    ASSERT_EQ(chmod(Native().c_str(), 0644), 0);
    ExpectAsOrdinaryUser([this] {
        ExpectDenied();
        return !HasFailure();
    });
}

TEST_F(FileReplacementPosixTest, RootKeepsOwnerAndGroup)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can change the owner";
    ASSERT_EQ(chown(Native().c_str(), OtherUser, OtherGroup), 0);
    ASSERT_EQ(chmod(Native().c_str(), 06754), 0);
    Replace();
    EXPECT_EQ(Status().st_uid, OtherUser);
    EXPECT_EQ(Status().st_gid, OtherGroup);
    EXPECT_EQ(Mode(), 06754u);
}

TEST_F(FileReplacementPosixTest, UserKeepsTheGroupOfItsOwnButNotTheOwner)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    ASSERT_EQ(chmod(folder.Path(".").toStdString().c_str(), 0777), 0);
    ASSERT_EQ(chown(Native().c_str(), 0, OtherGroup), 0);
    ASSERT_EQ(chmod(Native().c_str(), 06674), 0);
    ExpectAsOrdinaryUser([this] { return Replace() == 0; });
    EXPECT_EQ(Status().st_uid, OtherUser);
    EXPECT_EQ(Status().st_gid, OtherGroup);
    EXPECT_EQ(Mode(), 02674u);
}

TEST_F(FileReplacementPosixTest, ChangedGroupGivesNobodyMorePermissions)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    ASSERT_EQ(chmod(folder.Path(".").toStdString().c_str(), 0777), 0);
    const std::pair<mode_t, mode_t> expected[] = {{06666, 0666}, {0662, 0622}, {0606, 0600}, {0646, 0644}};
    for (const auto& [mode, kept] : expected) {
        ASSERT_EQ(chown(Native().c_str(), 0, 0), 0);
        ASSERT_EQ(chmod(Native().c_str(), mode), 0);
        ExpectAsOrdinaryUser([this] { return Replace() == 0; });
        EXPECT_EQ(Status().st_uid, OtherUser);
        EXPECT_EQ(Status().st_gid, OtherUser);
        EXPECT_EQ(Mode(), kept) << std::oct << mode;
    }
}

TEST_F(FileReplacementPosixTest, CountsTheOtherHardLinks)
{
    const std::string second = folder.Path("b.xml").toStdString();
    ASSERT_EQ(link(Native().c_str(), second.c_str()), 0);
    ASSERT_EQ(link(Native().c_str(), folder.Path("c.xml").toStdString().c_str()), 0);
    EXPECT_EQ(Replace(), 2u);
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
    EXPECT_EQ(TemporaryFolder::Read(VString::fromStdString(second)), "old");
    EXPECT_EQ(Replace(), 0u);
}

TEST_F(FileReplacementPosixTest, FolderThatMayNotBeReadIsEnough)
{
    const std::string path = folder.Path(".").toStdString();
    ASSERT_EQ(chmod(path.c_str(), 0333), 0);
    ASSERT_EQ(chmod(Native().c_str(), 0666), 0);
    if (geteuid() == 0)
        ExpectAsOrdinaryUser([this] { return Replace() == 0; });
    else
        Replace();
    ASSERT_EQ(chmod(path.c_str(), 0777), 0);
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
}

TEST_F(FileReplacementPosixTest, FolderThatMayNotBeWrittenIsRefused)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    const std::string path = folder.Path(".").toStdString();
    ASSERT_EQ(chmod(path.c_str(), 0555), 0);
    ASSERT_EQ(chmod(Native().c_str(), 0666), 0);
    ExpectAsOrdinaryUser([this] {
        ExpectDenied();
        return !HasFailure();
    });
    ASSERT_EQ(chmod(path.c_str(), 0777), 0);
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

TEST_F(FileReplacementPosixTest, FolderThatIsRemovedMeanwhileIsAnError)
{
    const VString outer = folder.Path("outer");
    ASSERT_EQ(mkdir(outer.toStdString().c_str(), 0700), 0);
    const VString target = folder.Write("outer/a.xml", "old");
    FileReplacement replacement{VPath(target)};
    replacement.Write("new");
    ASSERT_TRUE(QDir(outer.ToQString()).removeRecursively());
    try {
        replacement.Commit();
        ADD_FAILURE() << "the file was created";
    } catch (const VIO::Exception& exception) {
        EXPECT_EQ(exception.what(), "Cannot write \"" + target.toStdString() + "\": No such file or directory");
    }
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

TEST_F(FileReplacementPosixTest, TargetThatBecomesAFolderIsAnErrorThatSaysSo)
{
    FileReplacement replacement{VPath(file)};
    ASSERT_EQ(unlink(Native().c_str()), 0);
    ASSERT_EQ(mkdir(Native().c_str(), 0700), 0);
    try {
        replacement.Commit();
        ADD_FAILURE() << "the folder was replaced";
    } catch (const VIO::Exception& exception) {
        EXPECT_EQ(exception.what(), "Cannot write \"" + Native() + "\": Is a directory");
    }
}

TEST_F(FileReplacementPosixTest, DeviceAndPipeAreRefused)
{
    const std::string pipe = folder.Path("pipe").toStdString();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& name : {pipe, std::string("/dev/null")}) {
        try {
            FileReplacement{VPath(VString::fromStdString(name))};
            ADD_FAILURE() << name;
        } catch (const VIO::Exception& exception) {
            EXPECT_EQ(exception.what(), "Cannot write \"" + name + "\": it is not a regular file");
        }
    }
}

TEST_F(FileReplacementPosixTest, ReplacesAFileThatIsBeingRead)
{
    VFile reader{VPath(file)};
    reader.OpenForReading();
    Replace();
    char bytes[3];
    EXPECT_EQ(std::string(bytes, reader.Read(bytes, sizeof bytes)), "old");
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

// On Windows, names cannot contain a colon.
TEST_F(FileReplacementPosixTest, NamesThatBeginWithAColonAreFiles)
{
    const CurrentFolder current(folder.Path("."));
    FileReplacement replacement{VPath(":a.xml")};
    replacement.Commit();
    EXPECT_THAT(folder.Names(), ElementsAre(":a.xml", "a.xml"));
}

TEST_F(FileReplacementPosixTest, ReplacesTheTargetOfALinkAndKeepsTheLink)
{
    const std::string link = folder.Path("link.xml").toStdString();
    ASSERT_EQ(symlink("a.xml", link.c_str()), 0);
    FileReplacement replacement{VPath(VString::fromStdString(link))};
    replacement.Write("new");
    replacement.Commit();
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
    struct stat status;
    ASSERT_EQ(lstat(link.c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml", "link.xml"));
}

#if defined(__linux__)

// An access list as the kernel stores it: the version, then for each entry the tag, the permissions and the user or
// group. All numbers are little-endian.
struct AccessEntry {
    std::uint16_t tag;
    std::uint16_t permissions;
    std::uint32_t id;
};

constexpr std::uint32_t NoId = 0xFFFFFFFF;
constexpr std::uint32_t NamedUser = 1000;

std::string MakeAccessList(std::uint16_t namedPermissions)
{
    const std::uint32_t version = 2;
    const AccessEntry entries[] = {{0x01, 6, NoId},  // owner
        {0x02, namedPermissions, NamedUser},
        {0x04, 4, NoId},   // group
        {0x10, 6, NoId},   // mask
        {0x20, 0, NoId}};  // others
    std::string bytes(sizeof version + sizeof entries, '\0');
    std::memcpy(bytes.data(), &version, sizeof version);
    std::memcpy(bytes.data() + sizeof version, entries, sizeof entries);
    return bytes;
}

std::string ReadAttribute(const std::string& file, const char* name)
{
    char value[256];
    const ssize_t length = getxattr(file.c_str(), name, value, sizeof value);
    return length < 0 ? std::string(std::strerror(errno)) : std::string(value, static_cast<std::size_t>(length));
}

bool SetAttribute(const std::string& file, const char* name, const std::string& value)
{
    return setxattr(file.c_str(), name, value.data(), value.size(), 0) == 0;
}

constexpr char AccessList[] = "system.posix_acl_access";
constexpr char DefaultAccessList[] = "system.posix_acl_default";

TEST_F(FileReplacementPosixTest, KeepsTheAccessList)
{
    const std::string list = MakeAccessList(6);
    if (!SetAttribute(Native(), AccessList, list))
        GTEST_SKIP() << "no access lists here: " << std::strerror(errno);
    Replace();
    EXPECT_EQ(ReadAttribute(Native(), AccessList), list);
    EXPECT_EQ(Mode(), 0660u);
}

TEST_F(FileReplacementPosixTest, FileWithoutAccessListDoesNotInheritThatOfTheFolder)
{
    ASSERT_EQ(chmod(Native().c_str(), 0660), 0);
    if (!SetAttribute(folder.Path(".").toStdString(), DefaultAccessList, MakeAccessList(6)))
        GTEST_SKIP() << "no access lists here: " << std::strerror(errno);
    Replace();
    EXPECT_EQ(ReadAttribute(Native(), AccessList), std::strerror(ENODATA));
    EXPECT_EQ(Mode(), 0660u);
}

TEST_F(FileReplacementPosixTest, AccessListOfAnotherGroupIsReplacedByPermissionsOfTheOwner)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    ASSERT_EQ(chmod(folder.Path(".").toStdString().c_str(), 0777), 0);
    std::string list = MakeAccessList(6);
    const std::uint32_t user = OtherUser;
    std::memcpy(list.data() + 4 + sizeof(AccessEntry) + 4, &user, sizeof user);
    if (!SetAttribute(Native(), AccessList, list))
        GTEST_SKIP() << "no access lists here: " << std::strerror(errno);
    ExpectAsOrdinaryUser([this] { return Replace() == 0; });
    EXPECT_EQ(Status().st_uid, OtherUser);
    EXPECT_EQ(ReadAttribute(Native(), AccessList), std::strerror(ENODATA));
    EXPECT_EQ(Mode(), 0600u);
}

TEST_F(FileReplacementPosixTest, KeepsOtherExtendedAttributes)
{
    const std::string longValue(1000, 'v');
    if (!SetAttribute(Native(), "user.author", "me"))
        GTEST_SKIP() << "no extended attributes here: " << std::strerror(errno);
    ASSERT_TRUE(SetAttribute(Native(), "user.long", longValue.substr(0, 200)));
    ASSERT_TRUE(SetAttribute(Native(), "user.empty", ""));
    Replace();
    EXPECT_EQ(ReadAttribute(Native(), "user.author"), "me");
    EXPECT_EQ(ReadAttribute(Native(), "user.long"), longValue.substr(0, 200));
    EXPECT_EQ(ReadAttribute(Native(), "user.empty"), "");
}

TEST_F(FileReplacementPosixTest, KeepsManyLongExtendedAttributes)
{
    for (int i = 0; i < 20; ++i) {
        const std::string name = "user.a-rather-long-name-of-an-attribute-" + std::to_string(i);
        if (!SetAttribute(Native(), name.c_str(), std::string(100, 'v')))
            GTEST_SKIP() << "no extended attributes here: " << std::strerror(errno);
    }
    const ssize_t before = listxattr(Native().c_str(), nullptr, 0);
    Replace();
    EXPECT_EQ(listxattr(Native().c_str(), nullptr, 0), before);
    EXPECT_EQ(ReadAttribute(Native(), "user.a-rather-long-name-of-an-attribute-19"), std::string(100, 'v'));
}

TEST_F(FileReplacementPosixTest, DropsPrivilegesThatBelongToTheOldContent)
{
    // The capability to override file permissions, in the format of version 2.
    const std::string capability(
        "\x01\x00\x00\x02\x02\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00", 20);
    if (!SetAttribute(Native(), "security.capability", capability))
        GTEST_SKIP() << "no file capabilities here: " << std::strerror(errno);
    Replace();
    EXPECT_EQ(ReadAttribute(Native(), "security.capability"), std::strerror(ENODATA));
}

#endif

extern "C" void RemoveTemporaryFilesAndEnd(int signal)
{
    FileReplacement::RemoveTemporaryFiles();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

// Replaces `files` on one thread each, until the process ends.
[[noreturn]] void ReplaceForever(const std::vector<VString>& files)
{
    std::signal(SIGTERM, RemoveTemporaryFilesAndEnd);
    std::vector<std::thread> threads;
    for (const VString& file : files) {
        threads.emplace_back([&file] {
            const std::string text(5000, 'n');
            for (;;) {
                FileReplacement replacement{VPath(file)};
                for (int i = 0; i < 4; ++i)
                    replacement.Write(text);
                replacement.Commit();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    _exit(1);
}

TEST_F(FileReplacementPosixTest, RemovesTheFilesOfManyObjects)
{
    constexpr int most = 1024;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const rlimit limit{4 * most, 4 * most};
        std::vector<std::unique_ptr<FileReplacement>> all;
        bool isGood = setrlimit(RLIMIT_NOFILE, &limit) == 0;
        for (int i = 0; isGood && i < most; ++i)
            all.push_back(std::make_unique<FileReplacement>(VPath(folder.Path(VString::number(i)))));
        FileReplacement::RemoveTemporaryFiles();
        _exit(isGood ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

TEST_F(FileReplacementPosixTest, SignalDuringManyThreadsLeavesNoTemporaryFile)
{
    std::vector<VString> files;
    for (int i = 0; i < 6; ++i)
        files.push_back(folder.Write(VString::number(i), std::string(20000, 'o')));
    for (int repetition = 0; repetition < 20; ++repetition) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            ReplaceForever(files);
        usleep(static_cast<useconds_t>(5000 + 1700 * repetition));
        kill(child, SIGTERM);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
        EXPECT_EQ(folder.Names().size(), 7u);
        for (const VString& each : files) {
            const std::string bytes = TemporaryFolder::Read(each);
            EXPECT_TRUE(bytes == std::string(20000, 'o') || bytes == std::string(20000, 'n'));
        }
    }
}

TEST_F(FileReplacementPosixTest, NoReplacementSucceedsAfterTheRemoval)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        bool isGood = false;
        FileReplacement begun{VPath(file)};
        FileReplacement::RemoveTemporaryFiles();
        for (const bool isNew : {false, true}) {
            try {
                if (isNew)
                    Replace();
                else
                    begun.Commit();
                isGood = false;
            } catch (const VIO::Exception&) {
                isGood = true;
            }
        }
        _exit(isGood ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(TemporaryFolder::Read(file), "old");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

}  // namespace
