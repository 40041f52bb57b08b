#include "vancoreplatform/CoreThreadContext.h"

#include <gtest/gtest.h>

#include <boost/any.hpp>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

TEST(CoreThreadContextTest, HasNoSessionByDefault)
{
    ASSERT_TRUE(CoreThreadContext::HasSessionId);
    EXPECT_FALSE(CoreThreadContext::HasSessionId());
}

TEST(CoreThreadContextTest, TheHostCanReplaceTheSessionCheck)
{
    const auto before = CoreThreadContext::HasSessionId;
    CoreThreadContext::HasSessionId = [] { return true; };
    EXPECT_TRUE(CoreThreadContext::HasSessionId());
    CoreThreadContext::HasSessionId = before;
    EXPECT_FALSE(CoreThreadContext::HasSessionId());
}

TEST(CoreThreadContextTest, AnEmptySessionCheckThrowsWhenItIsCalled)
{
    const auto before = CoreThreadContext::HasSessionId;
    CoreThreadContext::HasSessionId = nullptr;
    EXPECT_FALSE(CoreThreadContext::HasSessionId);
    EXPECT_THROW(CoreThreadContext::HasSessionId(), std::bad_function_call);
    CoreThreadContext::HasSessionId = before;
}

TEST(CoreThreadContextThreadTest, SessionCheckIsReplacedWhileOthersCallIt)
{
    const auto before = CoreThreadContext::HasSessionId;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 1000; ++i) {
                const std::string large = "a state that a function keeps on the heap";
                if (t % 2 == 0)
                    CoreThreadContext::HasSessionId = [large] { return !large.empty(); };
                CoreThreadContext::HasSessionId();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(CoreThreadContext::HasSessionId());
    CoreThreadContext::HasSessionId = before;
}

TEST(CoreThreadContextTest, ASessionCheckCanReplaceItself)
{
    const auto before = CoreThreadContext::HasSessionId;
    CoreThreadContext::HasSessionId = [before] {
        CoreThreadContext::HasSessionId = before;
        return true;
    };
    EXPECT_TRUE(CoreThreadContext::HasSessionId());
    EXPECT_FALSE(CoreThreadContext::HasSessionId());
}

TEST(CoreThreadContextTest, AMissingObjectIsEmpty)
{
    EXPECT_TRUE(CoreThreadContext::GetGenericObject("CoreThreadContextTest.missing").empty());
}

TEST(CoreThreadContextTest, ObjectsAreKeptByName)
{
    CoreThreadContext::SetGenericObject("CoreThreadContextTest.a", 1);
    CoreThreadContext::SetGenericObject("CoreThreadContextTest.b", VString("two"));
    CoreThreadContext::SetGenericObject("CoreThreadContextTest.a", 3);
    EXPECT_EQ(boost::any_cast<int>(CoreThreadContext::GetGenericObject("CoreThreadContextTest.a")), 3);
    EXPECT_EQ(boost::any_cast<VString>(CoreThreadContext::GetGenericObject("CoreThreadContextTest.b")), VString("two"));
}

TEST(CoreThreadContextTest, EachThreadHasItsOwnObjects)
{
    CoreThreadContext::SetGenericObject("CoreThreadContextTest.own", 1);
    bool emptyThere = false;
    std::thread([&emptyThere] {
        emptyThere = CoreThreadContext::GetGenericObject("CoreThreadContextTest.own").empty();
        CoreThreadContext::SetGenericObject("CoreThreadContextTest.own", 2);
    }).join();
    EXPECT_TRUE(emptyThere);
    EXPECT_EQ(boost::any_cast<int>(CoreThreadContext::GetGenericObject("CoreThreadContextTest.own")), 1);
}

TEST(CoreThreadContextTest, AThreadThatEndsDestroysItsObjects)
{
    const auto object = std::make_shared<int>(1);
    std::thread([&] {
        CoreThreadContext::SetGenericObject("a", object);
        CoreThreadContext::SetGenericObject("b", object);
        EXPECT_EQ(object.use_count(), 3);
    }).join();
    EXPECT_EQ(object.use_count(), 1);
}

TEST(CoreThreadContextTest, AProcessObjectIsCreatedOnceForAllThreads)
{
    std::atomic<int> made{0};
    const auto ask = [&made] {
        return CoreThreadContext::GetProcessObject(
            "CoreThreadContextTest.process", [&made] { return boost::any(++made); });
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back(ask);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(boost::any_cast<int>(ask()), 1);
    EXPECT_EQ(made, 1);
}

TEST(CoreThreadContextTest, ARemovedProcessObjectIsDestroyedAndCreatedAgain)
{
    const auto create = [] { return boost::any(std::make_shared<int>(5)); };
    const auto ask = [&] {
        return boost::any_cast<std::shared_ptr<int>>(
            CoreThreadContext::GetProcessObject("CoreThreadContextTest.removed", create));
    };
    const std::weak_ptr<int> first = ask();
    EXPECT_FALSE(first.expired());
    CoreThreadContext::RemoveProcessObject("CoreThreadContextTest.removed");
    EXPECT_TRUE(first.expired());
    EXPECT_EQ(*ask(), 5);
}

TEST(CoreThreadContextTest, RemovingAMissingProcessObjectDoesNothing)
{
    CoreThreadContext::RemoveProcessObject("CoreThreadContextTest.missing");
}

TEST(CoreThreadContextTest, CreatesAProcessObjectAgainAfterAFailure)
{
    const auto fail = []() -> boost::any { throw std::runtime_error("not yet"); };
    EXPECT_THROW(CoreThreadContext::GetProcessObject("CoreThreadContextTest.failed", fail), std::runtime_error);
    const boost::any object =
        CoreThreadContext::GetProcessObject("CoreThreadContextTest.failed", [] { return boost::any(5); });
    EXPECT_EQ(boost::any_cast<int>(object), 5);
}
