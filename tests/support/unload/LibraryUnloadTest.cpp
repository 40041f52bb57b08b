// A host that links the platform and loads the library as part of a plug-in.
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <future>
#include <latch>
#include <memory>
#include <thread>

#include <boost/any.hpp>

#include <QFile>

#include "tests/common/TestSupport.h"
#include "tests/support/unload/DynamicLibrary.h"
#include "vancoredata/VLocale.h"
#include "vancoredata/VResource.h"
#include "vancoreplatform/CoreThreadContext.h"

namespace {

class Plugin {
public:
    Plugin() : m_handle(DynamicLibrary::Load(PLUGIN_PATH)) { EXPECT_NE(m_handle, nullptr); }
    ~Plugin() { EXPECT_TRUE(DynamicLibrary::Unload(m_handle)); }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    VString GetMessage(const char* language) const
    {
        std::array<char, 200> text;
        const auto write = DynamicLibrary::Find<void(const char*, char*, std::size_t)>(m_handle, "WriteMessage");
        write(language, text.data(), text.size());
        return VString(text.data());
    }

    bool ParseAgainstSchema() const { return DynamicLibrary::Find<bool()>(m_handle, "ParseAgainstSchema")(); }

private:
    void* m_handle;
};

bool IsLibraryLoaded()
{
    return DynamicLibrary::IsLoaded(LIBRARY_PATH);
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

// Lets the other threads run on while the process destroys static objects.
struct Pause {
    ~Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(200)); }
};

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

TEST_F(LibraryUnloadDeathTest, AnotherThreadCanLoadUseAndUnloadTheLibrary)
{
    const auto run = [] {
        std::thread([] { LoadAndUse(3); }).join();
        LoadAndUse(1);
        Exit();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(LibraryUnloadDeathTest, AThreadThatUsedTheLibraryCanEndAfterTheUnload)
{
    const auto run = [] {
        std::promise<void> used;
        std::promise<void> unloaded;
        auto plugin = std::make_unique<Plugin>();
        std::thread thread([&] {
            EXPECT_TRUE(plugin->ParseAgainstSchema());
            used.set_value();
            unloaded.get_future().wait();
        });
        used.get_future().wait();
        plugin.reset();
        EXPECT_FALSE(IsLibraryLoaded());
        unloaded.set_value();
        thread.join();
        LoadAndUse(1);
        Exit();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

// Before the pause, the process runs the destructors of the library's static objects. Those of Qt run later.
TEST_F(LibraryUnloadDeathTest, ProcessExitsCleanlyWhileThreadsUseTheLibrary)
{
    const auto run = [] {
        QFile::exists(":/vancorexml");
        static const Pause pause;
        static const Plugin* const plugin = new Plugin;  // never unloaded
        static std::latch worked(2);
        const auto work = [] {
            plugin->ParseAgainstSchema();
            plugin->GetMessage("de_DE");
        };
        for (int i = 0; i < 2; ++i) {
            std::thread([work] {
                work();
                worked.count_down();
                for (;;)
                    work();
            }).detach();
        }
        worked.wait();
        Exit();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

// Windows stops the other thread before it destroys the static objects of the DLLs. On other systems the thread would
// still use these objects.
#if defined(_WIN32)
TEST_F(LibraryUnloadDeathTest, ProcessExitsWhileAThreadHoldsALockOfThePlatform)
{
    const auto run = [] {
        static const Plugin* const plugin = new Plugin;  // never unloaded
        EXPECT_TRUE(plugin->GetMessage("de_DE").startsWith("XML-Definitionen"));
        EXPECT_TRUE(plugin->ParseAgainstSchema());
        static std::promise<void> locked;
        std::thread([] {
            CoreThreadContext::GetProcessObject("slow", [] {
                locked.set_value();
                std::this_thread::sleep_for(std::chrono::seconds(1));
                return boost::any(1);
            });
        }).detach();
        locked.get_future().wait();
        Exit();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}
#endif

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
