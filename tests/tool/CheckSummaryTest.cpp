#include "vanxml/CheckSummary.h"

#include "tests/common/TestSupport.h"

TEST(CheckSummaryTest, OmitsWarningsAndUncheckedDocumentsIfThereAreNone)
{
    EXPECT_EQ(CheckSummary().Format(), "0 documents, 0 errors");
    EXPECT_EQ((CheckSummary{1, 1, 1, 1, 0}).Format(), "1 document, 1 error, 1 warning, 1 not checked");
    EXPECT_EQ((CheckSummary{2, 0, 2, 0, 0}).Format(), "2 documents, 0 errors, 2 warnings");
}

TEST(CheckSummaryTest, GroupsDigits)
{
    EXPECT_EQ((CheckSummary{999, 1000, 1234567, 1000000000, 0}).Format(),
        "999 documents, 1,000 errors, 1,234,567 warnings, 1,000,000,000 not checked");
}

TEST(CheckSummaryTest, SpeedNeedsATenthOfASecond)
{
    const CheckSummary summary{1, 0, 0, 0, 131'200'000};
    EXPECT_EQ(summary.FormatSpeed(3.2), "; 3.2 s, 41 MB/s");
    EXPECT_EQ(summary.FormatSpeed(0.06), "; 0.1 s, 2,187 MB/s");
    EXPECT_EQ(summary.FormatSpeed(0.04), "");
}

TEST(CheckSummaryTest, AddsResults)
{
    CheckedDocument checked;
    checked.errors = 2;
    checked.warnings = 1;
    checked.bytes = 10;
    checked.wasChecked = true;
    CheckSummary summary;
    summary.Add(checked);
    summary.Add(CheckedDocument());
    EXPECT_EQ(summary.Format(), "1 document, 2 errors, 1 warning, 1 not checked");
    EXPECT_EQ(summary.bytes, 10u);
}
