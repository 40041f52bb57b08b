#include "vancorexml/main/parser/OrderedMarks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

namespace {

using Mark = OrderedMarks::Mark;

void ExpectIncreasingLabels(const std::vector<Mark*>& order)
{
    for (std::size_t i = 1; i < order.size(); ++i)
        ASSERT_LT(order[i - 1]->label, order[i]->label) << i;
}

bool IsBetweenItsNeighbours(const Mark& mark)
{
    return mark.previous->label < mark.label && mark.label < mark.next->label;
}

}  // namespace

TEST(OrderedMarksTest, LabelsIncreaseAlongTheListAfterRandomChanges)
{
    std::mt19937 random(1);
    OrderedMarks list;
    std::deque<Mark> marks;
    std::vector<Mark*> order;
    for (int step = 0; step < 20000; ++step) {
        if (!order.empty() && random() % 4 == 0) {
            const auto removed = order.begin() + static_cast<std::ptrdiff_t>(random() % order.size());
            OrderedMarks::Remove(**removed);
            order.erase(removed);
            continue;
        }
        Mark& mark = marks.emplace_back();
        const std::size_t position = random() % (order.size() + 1);
        if (position == order.size())
            list.Append(mark);
        else
            list.InsertAfter(*order[position], mark);
        order.insert(order.begin() + static_cast<std::ptrdiff_t>(std::min(position + 1, order.size())), &mark);
        if (step % 1000 == 0)
            ExpectIncreasingLabels(order);
    }
    ExpectIncreasingLabels(order);
}

// Each insertion halves the same gap between two labels. 64-bit labels allow this only 64 times before other labels
// must change.
TEST(OrderedMarksTest, InsertsAMillionMarksAtOnePosition)
{
    OrderedMarks list;
    std::deque<Mark> marks(1000000);
    list.Append(marks[0]);
    for (std::size_t i = 1; i < marks.size(); ++i) {
        list.InsertAfter(marks[0], marks[i]);
        ASSERT_TRUE(IsBetweenItsNeighbours(marks[i])) << i;
    }
    std::vector<Mark*> order{&marks[0]};
    for (std::size_t i = marks.size() - 1; i > 0; --i)
        order.push_back(&marks[i]);
    ExpectIncreasingLabels(order);
}

TEST(OrderedMarksTest, AppendsAMillionMarks)
{
    OrderedMarks list;
    std::deque<Mark> marks(1000000);
    std::vector<Mark*> order;
    for (Mark& mark : marks) {
        list.Append(mark);
        ASSERT_TRUE(IsBetweenItsNeighbours(mark)) << order.size();
        order.push_back(&mark);
    }
    ExpectIncreasingLabels(order);
}
