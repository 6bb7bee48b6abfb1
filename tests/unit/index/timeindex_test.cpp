// The time index beside two ordered maps, which must answer the same.
#include <recording2/index/timeindex.h>

#include <random>

#include "support/testing.h"

using Recording2::Index::TimeEntry;
using Recording2::Index::TimeIndex;

namespace {

// The two ordered maps that the index stands for.
struct Model {
    std::map<std::uint64_t, std::int32_t> byTime;
    std::map<std::int32_t, std::uint64_t> byPosition;
    void add(std::uint64_t time, std::int32_t position)
    {
        byTime.emplace(time, position);
        byPosition.emplace(position, time);
    }
};

void expectSame(const TimeIndex& index, const Model& model, std::uint64_t time, std::int32_t position)
{
    ASSERT_EQ(index.size(), model.byTime.size());
    ASSERT_EQ(index.contains(time), model.byTime.count(time) == 1);
    auto at = model.byTime.lower_bound(time);
    const auto found = index.atOrAfterOrLast(time);
    ASSERT_EQ(found.has_value(), !model.byTime.empty());
    if (found) {
        at = at == model.byTime.end() ? std::prev(at) : at;
        ASSERT_EQ(found->time, at->first);
        ASSERT_EQ(found->position, at->second);
    }
    const auto exact = model.byTime.find(time);
    const auto before = index.before(time);
    ASSERT_EQ(before.has_value(), exact != model.byTime.end() && exact != model.byTime.begin());
    if (before) {
        ASSERT_EQ(before->time, std::prev(exact)->first);
    }
    const auto there = model.byPosition.find(position);
    ASSERT_EQ(index.timeAt(position), there == model.byPosition.end() ? 0 : there->second);
    ASSERT_EQ(index.rankOf(position).has_value(), there != model.byPosition.end());
}

}  // namespace

TEST(TimeIndex, AnEmptyIndexFindsNothing)
{
    const TimeIndex index;
    EXPECT_FALSE(index.contains(0));
    EXPECT_FALSE(index.atOrAfterOrLast(5));
    EXPECT_FALSE(index.before(5));
    EXPECT_EQ(index.timeAt(500), 0U);
    EXPECT_FALSE(index.byPosition(0));
}

TEST(TimeIndex, FindsByTimeAndByPositionAndTheFirstPairOfAKeyStays)
{
    TimeIndex index;
    index.add(10, 500);
    index.add(20, 600);
    EXPECT_EQ(index.atOrAfterOrLast(11)->position, 600);
    EXPECT_EQ(index.atOrAfterOrLast(21)->position, 600);
    EXPECT_EQ(index.before(20)->time, 10U);
    EXPECT_FALSE(index.before(15));
    EXPECT_EQ(index.timeAt(600), 20U);
    EXPECT_EQ(index.timeAt(601), 0U);
    index.add(10, 700);
    index.add(30, 500);
    EXPECT_EQ(index.size(), 3U);
    EXPECT_EQ(index.atOrAfterOrLast(10)->position, 500);
    EXPECT_EQ(index.timeAt(500), 10U);
    EXPECT_EQ(index.timeAt(700), 10U);
}

TEST(TimeIndex, AnswersAsTwoOrderedMapsDoForPairsInAnyOrder)
{
    std::mt19937 random(99);
    for (int round = 0; round < 300; ++round) {
        TimeIndex index;
        Model model;
        const bool sorted = round % 3 == 0;
        std::uint64_t time = 0;
        std::int32_t position = 0;
        for (auto n = random() % 60; n > 0; --n) {
            time = sorted ? time + 1 + random() % 5 : random() % 40;
            position = sorted ? position + 1 + static_cast<std::int32_t>(random() % 9)
                              : static_cast<std::int32_t>(random() % 50) - 5;
            index.add(time, position);
            model.add(time, position);
        }
        for (int query = 0; query < 60; ++query) {
            expectSame(index, model, random() % 45, static_cast<std::int32_t>(random() % 60) - 8);
        }
    }
}
