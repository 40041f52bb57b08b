#include "art-cpp/Activity.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Collects finished activities while it lives.
class Tracing {
public:
    Tracing()
    {
        art::SetActivitySink([this](const art::ActivityRecord& record) { records.push_back(record); });
    }
    ~Tracing() { art::SetActivitySink({}); }

    std::vector<art::ActivityRecord> records;
};

}  // namespace

TEST(ActivityTest, KeepsTheTagsInOrder)
{
    Tracing tracing;
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

TEST(ActivityTest, InnerActivitiesFinishFirst)
{
    Tracing tracing;
    {
        const art::Activity outer("outer");
        const art::Activity inner("inner");
    }
    ASSERT_EQ(tracing.records.size(), 2u);
    EXPECT_STREQ(tracing.records[0].name, "inner");
    EXPECT_STREQ(tracing.records[1].name, "outer");
}

TEST(ActivityTest, AnActivityBegunWithoutASinkIsNotTraced)
{
    std::vector<art::ActivityRecord> records;
    {
        art::Activity activity("early");
        activity.Tag("key", "value");
        art::SetActivitySink([&records](const art::ActivityRecord& record) { records.push_back(record); });
    }
    art::SetActivitySink({});
    EXPECT_TRUE(records.empty());
}

TEST(ActivityTest, AnActivityThatOutlivesTheSinkIsDropped)
{
    std::vector<art::ActivityRecord> records;
    art::SetActivitySink([&records](const art::ActivityRecord& record) { records.push_back(record); });
    {
        const art::Activity activity("late");
        art::SetActivitySink({});
    }
    EXPECT_TRUE(records.empty());
}
