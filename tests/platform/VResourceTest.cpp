#include "vancoredata/VResource.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <chrono>
#include <thread>
#include <vector>

namespace {

constexpr const char* Folder = ":/platform-tests";

ResourceRegistrationCache& Cache()
{
    return ResourceRegistrationCache::GetInstance();
}

// Registers the embedded folder of these tests while it lives.
class RegisteredFolder {
public:
    RegisteredFolder() { Cache().AddFolder(Folder); }
    ~RegisteredFolder() { Cache().RemoveFolder(Folder); }
};

}  // namespace

TEST(VResourceTest, PathsJoinQualifierAndAlias)
{
    EXPECT_EQ(Cache().GetResourcePath("ALIAS", ""), VString("ALIAS"));
    EXPECT_EQ(Cache().GetResourcePath("ALIAS", "folder"), VString("folder/ALIAS"));
}

TEST(VResourceTest, AMissingResourceIsInvalidAndEmpty)
{
    EXPECT_FALSE(VResource("no-such-resource").isValid());
    EXPECT_TRUE(UTF8StringVResource("no-such-resource").GetString().IsEmpty());
}

TEST(VResourceTest, ReturnsEmbeddedTextsUnchanged)
{
    const RegisteredFolder folder;
    EXPECT_TRUE(VResource("greeting").isValid());
    EXPECT_EQ(UTF8StringVResource("greeting").GetString(), VString(u"\uFEFFgrüß dich\n"));
    EXPECT_TRUE(VResource(Cache().GetResourcePath("greeting", "inner")).isValid());
}

TEST(VResourceTest, SearchesOnlyRegisteredFolders)
{
    EXPECT_FALSE(VResource("greeting").isValid());
}

TEST(VResourceTest, AFolderAddedTwiceMustBeRemovedTwice)
{
    Cache().AddFolder(Folder);
    Cache().AddFolder(Folder);
    Cache().RemoveFolder(Folder);
    EXPECT_TRUE(VResource("greeting").isValid());
    Cache().RemoveFolder(Folder);
    EXPECT_FALSE(VResource("greeting").isValid());
    Cache().RemoveFolder(Folder);
}

TEST(VResourceTest, AFolderIsNoResource)
{
    const RegisteredFolder folder;
    EXPECT_FALSE(VResource("inner").isValid());
}

TEST(VResourceTest, NamesWithEmptyOrDotPartsAreNoResources)
{
    const RegisteredFolder folder;
    const char* const names[] = {
        "",
        "/greeting",
        ":/platform-tests/greeting",
        "..",
        "inner/../greeting",
        "inner\\..\\greeting",
        "../platform-tests-outside/secret",
        "/../platform-tests-outside/secret",
        "greeting/",
        "./greeting",
        "inner//greeting",
        "inner/./greeting",
        "inner\\.\\greeting",
        ".",
        "/",
    };
    for (const char* name : names)
        EXPECT_FALSE(VResource(name).isValid()) << name;
}

TEST(VResourceTest, RegisteredTextsTakePrecedenceOverFolders)
{
    const RegisteredFolder folder;
    Cache().RegisterText("greeting", "hello");
    EXPECT_EQ(UTF8StringVResource("greeting").GetString(), VString("hello"));
    Cache().RegisterText("greeting", "good day");
    EXPECT_EQ(UTF8StringVResource("greeting").GetString(), VString("good day"));
    Cache().UnregisterText("greeting");
    EXPECT_EQ(UTF8StringVResource("greeting").GetString(), VString(u"\uFEFFgrüß dich\n"));
}

// If isValid read the resource, the test would take many times its limit.
TEST(VResourceTest, IsValidDoesNotReadTheResource)
{
    const QTemporaryDir folder;
    QFile large(folder.filePath("large"));
    ASSERT_TRUE(large.open(QIODevice::WriteOnly));
    ASSERT_TRUE(large.resize(512 << 20));
    Cache().AddFolder(folder.path());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(VResource("large").isValid());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
    Cache().RemoveFolder(folder.path());
}

TEST(VResourceTest, AnEmptyTextIsAResource)
{
    Cache().RegisterText("nothing", "");
    EXPECT_TRUE(VResource("nothing").isValid());
    Cache().UnregisterText("nothing");
    EXPECT_FALSE(VResource("nothing").isValid());
}

TEST(VResourceTest, FindLeavesTheContentUnchangedOnFailure)
{
    VString content = "before";
    EXPECT_FALSE(Cache().Find("no-such-resource", &content));
    EXPECT_EQ(content, VString("before"));
}

TEST(VResourceTest, ThreadsRegisterAndFindAtOnce)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            const VString name = "thread-" + VString::number(i);
            for (int round = 0; round < 200; ++round) {
                Cache().RegisterText(name, name);
                EXPECT_EQ(UTF8StringVResource(name).GetString(), name);
                Cache().UnregisterText(name);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}
