#include "art-cpp/Activity.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/common/SinkCaptures.h"

using testsupport::ActivityCapture;

TEST(ActivityTest, KeepsTheTagsInOrder)
{
    const ActivityCapture tracing;
    {
        art::Activity activity("read-file");
        activity.Tag("filename", "a.xml");
        activity.Tag("bytes", std::uint64_t{12});
        EXPECT_TRUE(tracing.records.empty());
    }
    ASSERT_EQ(tracing.records.size(), 1u);
    EXPECT_STREQ(tracing.records[0].name, "read-file");
    const std::vector<std::pair<VString, VString>> tags{{"filename", "a.xml"}, {"bytes", "12"}};
    EXPECT_EQ(tracing.records[0].tags, tags);
}

TEST(ActivityTest, AnInnerActivityFinishesFirstAndLiesInTheOuterOne)
{
    const ActivityCapture tracing;
    {
        const art::Activity outer("outer");
        const art::Activity inner("inner");
    }
    ASSERT_EQ(tracing.records.size(), 2u);
    const art::ActivityRecord& inner = tracing.records[0];
    const art::ActivityRecord& outer = tracing.records[1];
    EXPECT_STREQ(inner.name, "inner");
    EXPECT_STREQ(outer.name, "outer");
    EXPECT_GE(inner.start, outer.start);
    EXPECT_LE(inner.start + inner.nanoseconds, outer.start + outer.nanoseconds);
}

TEST(ActivityTest, AnActivityBegunWithoutASinkIsNotTraced)
{
    art::Activity* const activity = new art::Activity("early");
    activity->Tag("key", "value");
    const ActivityCapture tracing;
    delete activity;
    EXPECT_TRUE(tracing.records.empty());
}

TEST(ActivityTest, AnActivityThatOutlivesTheSinkIsDropped)
{
    const ActivityCapture tracing;
    {
        const art::Activity activity("late");
        art::SetActivitySink(nullptr);
    }
    EXPECT_TRUE(tracing.records.empty());
}

TEST(ActivityTest, SettingASinkReturnsThePreviousOne)
{
    struct Nothing : art::ActivitySink {
        void Finish(const art::ActivityRecord&) override {}
    };
    const auto sink = std::make_shared<Nothing>();
    EXPECT_EQ(art::SetActivitySink(sink), nullptr);
    EXPECT_EQ(art::SetActivitySink(nullptr), sink);
    EXPECT_EQ(sink.use_count(), 1);
}
