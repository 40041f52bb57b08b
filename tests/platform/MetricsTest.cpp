#include "metrics2/Metrics.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "tests/common/SinkCaptures.h"

using testsupport::MetricsCapture;

TEST(MetricsTest, AreOffWithoutASink)
{
    EXPECT_FALSE(Metrics::TestBitsAndContext(~std::uint64_t{0}));
    const Metrics::Scope scope("off");
    EXPECT_FALSE(scope.IsOpen());
}

TEST(MetricsTest, KeepsTheValuesInOrder)
{
    const MetricsCapture collection;
    {
        Metrics::Scope scope("parse");
        EXPECT_TRUE(scope.IsOpen());
        scope.Record("id", "a.xml");
        scope.Record("bytes", std::uint64_t{12});
    }
    ASSERT_EQ(collection.records.size(), 1u);
    EXPECT_STREQ(collection.records[0].name, "parse");
    const std::vector<std::pair<VString, VString>> values{{"id", "a.xml"}, {"bytes", "12"}};
    EXPECT_EQ(collection.records[0].values, values);
}

TEST(MetricsTest, AnOuterScopeLastsAtLeastAsLongAsItsInnerScope)
{
    const MetricsCapture collection;
    {
        const Metrics::Scope outer("outer");
        const Metrics::Scope inner("inner");
    }
    ASSERT_EQ(collection.records.size(), 2u);
    EXPECT_STREQ(collection.records[0].name, "inner");
    EXPECT_GE(collection.records[1].nanoseconds, collection.records[0].nanoseconds);
    EXPECT_LE(collection.records[1].start, collection.records[0].start);
}

TEST(MetricsTest, CollectsTheXmlCategoryByDefault)
{
    EXPECT_EQ(Metrics::XmlCategory, 0x80000000000u);
    const MetricsCapture collection;
    EXPECT_TRUE(Metrics::TestBitsAndContext(Metrics::XmlCategory));
    EXPECT_TRUE(Metrics::TestBitsAndContext(Metrics::XmlCategory | 1));
    EXPECT_FALSE(Metrics::TestBitsAndContext(1));
}

TEST(MetricsTest, ScopesOfOtherCategoriesAreNotCollected)
{
    const MetricsCapture collection(2);
    {
        const Metrics::Scope xml("xml");
        const Metrics::Scope other("other", 2 | 4);
    }
    ASSERT_EQ(collection.records.size(), 1u);
    EXPECT_STREQ(collection.records[0].name, "other");
}

TEST(MetricsTest, AScopeBegunWithoutASinkIsNotCollected)
{
    Metrics::Scope* const scope = new Metrics::Scope("early");
    scope->Record("key", "value");
    const MetricsCapture collection;
    delete scope;
    EXPECT_TRUE(collection.records.empty());
}

TEST(MetricsTest, EveryThreadReachesTheSink)
{
    const MetricsCapture collection;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 100; ++round)
                Metrics::Scope scope("work");
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(collection.records.size(), 400u);
}
