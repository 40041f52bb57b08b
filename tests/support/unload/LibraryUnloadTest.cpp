// A host that links the platform and loads the library as part of a plug-in.
#include <dlfcn.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>

#include <boost/any.hpp>

#include <QFile>

#include "tests/common/TestSupport.h"
#include "vancoredata/VLocale.h"
#include "vancoredata/VResource.h"
#include "vancoreplatform/CoreThreadContext.h"

namespace {

class Plugin {
public:
    Plugin() : m_handle(dlopen(PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL)) { EXPECT_NE(m_handle, nullptr) << dlerror(); }
    ~Plugin() { EXPECT_EQ(dlclose(m_handle), 0) << dlerror(); }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    VString GetMessage(const char* language) const
    {
        std::array<char, 200> text;
        Find<void (*)(const char*, char*, std::size_t)>("WriteMessage")(language, text.data(), text.size());
        return VString(text.data());
    }

    bool ParseAgainstSchema() const { return Find<bool (*)()>("ParseAgainstSchema")(); }

private:
    template <typename Function>
    Function Find(const char* name) const
    {
        return reinterpret_cast<Function>(dlsym(m_handle, name));
    }

    void* m_handle;
};

bool IsLibraryLoaded()
{
    void* const handle = dlopen(LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr)
        dlclose(handle);
    return handle != nullptr;
}

void LoadAndUse(int times)
{
    for (int i = 0; i < times; ++i) {
        {
            const Plugin plugin;
            EXPECT_TRUE(plugin.GetMessage("de_DE").startsWith("XML-Definitionen"));
            EXPECT_TRUE(plugin.GetMessage("it_IT").startsWith("Le definizioni"));
            EXPECT_TRUE(plugin.ParseAgainstSchema());
            EXPECT_TRUE(IsLibraryLoaded());
        }
        EXPECT_FALSE(IsLibraryLoaded());
    }
}

// Exits like a return from main, with status 0 if nothing failed.
[[noreturn]] void Exit()
{
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

// Each test runs in a separate process and also checks how that process exits.
class LibraryUnloadDeathTest : public testing::Test {
protected:
    LibraryUnloadDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

}  // namespace

TEST_F(LibraryUnloadDeathTest, ProcessExitsCleanlyAfterOneUnload)
{
    EXPECT_EXIT((LoadAndUse(1), Exit()), testing::ExitedWithCode(0), "");
}

TEST_F(LibraryUnloadDeathTest, LibraryCanBeLoadedAndUsedAgain)
{
    EXPECT_EXIT((LoadAndUse(3), Exit()), testing::ExitedWithCode(0), "");
}

TEST_F(LibraryUnloadDeathTest, ProcessExitsCleanlyWithTheLibraryLoaded)
{
    const auto run = [] {
        static const Plugin* const plugin = new Plugin;  // never unloaded
        EXPECT_TRUE(plugin->GetMessage("de_DE").startsWith("XML-Definitionen"));
        EXPECT_TRUE(plugin->ParseAgainstSchema());
        Exit();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(LibraryUnloadDeathTest, UnloadedLibraryLeavesNothingInThePlatform)
{
    const auto run = [] {
        LoadAndUse(1);
        bool isCreated = false;
        CoreThreadContext::GetProcessObject("vancorexml-strings", [&] {
            isCreated = true;
            return boost::any(1);
        });
        EXPECT_TRUE(isCreated) << "the message cache is still there";
        EXPECT_FALSE(VResource("VQRC_FILEFORMAT_KXA_XSD").isValid());
        EXPECT_FALSE(QFile::exists(":/vancorexml"));
        Exit();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(LibraryUnloadDeathTest, ReloadedLibraryUsesTheLanguageOfTheSession)
{
    const auto run = [] {
        CoreThreadContext::HasSessionId = [] { return true; };
        CoreThreadContext::SetGenericObject("locale", std::make_shared<VLocale>(VString("fr_FR")));
        for (int i = 0; i < 2; ++i)
            EXPECT_TRUE(Plugin().GetMessage("xx_XX").startsWith("Les définitions"));
        EXPECT_FALSE(IsLibraryLoaded());
        Exit();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}
