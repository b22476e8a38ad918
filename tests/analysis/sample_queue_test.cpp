#include "analysis/sample_queue.h"

#include <gtest/gtest.h>

#include <deque>
#include <numeric>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

void Add(SampleQueue& queue, std::int32_t count, float from) {
    float* added = queue.Append(count);
    std::iota(added, added + count, from);
}

TEST(SampleQueue, StartsEmptyAndReadsZerosBehindItsEnd) {
    SampleQueue queue;
    EXPECT_EQ(queue.Size(), 0);
    queue.Reserve(4);
    EXPECT_EQ(queue.Size(), 0);
    EXPECT_EQ(queue.At(0), 0.0F);
    Add(queue, 3, 1.0F);
    EXPECT_EQ(queue.At(2), 3.0F);
    EXPECT_EQ(queue.At(3), 0.0F);
    queue.Drop(2);
    EXPECT_EQ(queue.At(0), 3.0F);
    EXPECT_EQ(queue.At(1), 0.0F) << "what was there before is not read";
}

TEST(SampleQueue, HoldsWhatItWasReservedForHoweverItIsCut) {
    SampleQueue queue;
    queue.Reserve(100);
    std::deque<float> expected;
    std::mt19937 random(1);
    float next = 1.0F;
    for (int round = 0; round < 20000; ++round) {
        const auto room = static_cast<std::int32_t>(100 - expected.size());
        const auto count = static_cast<std::int32_t>(random() % static_cast<unsigned>(room + 1));
        float* added = queue.Append(count);
        for (std::int32_t i = 0; i < count; ++i) expected.push_back(added[i] = next++);
        ASSERT_EQ(queue.Size(), static_cast<std::int32_t>(expected.size()));
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), queue.Data())) << "round " << round;
        const auto dropped = static_cast<std::int32_t>(random() % (expected.size() + 1));
        queue.Drop(dropped);
        expected.erase(expected.begin(), expected.begin() + dropped);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), queue.Data())) << "round " << round;
        if (next > 1e6F) next = 1.0F;
    }
}

TEST(SampleQueue, TakesItsWholeCapacityAtOnceAfterEveryDrop) {
    SampleQueue queue;
    queue.Reserve(16);
    for (int round = 0; round < 50; ++round) {
        Add(queue, 16, 0.0F);
        ASSERT_EQ(queue.Size(), 16);
        ASSERT_EQ(queue.At(15), 15.0F);
        queue.Drop(16);
    }
}

TEST(SampleQueue, ClearAndReserveEmptyIt) {
    SampleQueue queue;
    queue.Reserve(8);
    Add(queue, 8, 1.0F);
    queue.Clear();
    EXPECT_EQ(queue.Size(), 0);
    EXPECT_EQ(queue.At(0), 0.0F);
    Add(queue, 8, 5.0F);
    EXPECT_EQ(queue.At(0), 5.0F);
    queue.Reserve(2);
    EXPECT_EQ(queue.Size(), 0);
}

} // namespace
} // namespace sonorelle
