#include "synthesis/sliding_samples.h"

#include "support/allocation_trap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <new>
#include <random>

namespace sonorelle {
namespace {

void Number(SlidingSamples& samples, std::int32_t from, std::int32_t to, float first = 0) {
    for (std::int32_t i = from; i < to; ++i) {
        samples.Channel(0)[i] = first + static_cast<float>(i);
        samples.Channel(1)[i] = -first - static_cast<float>(i);
    }
}

TEST(SlidingSamples, BeginsWithSilence) {
    SlidingSamples samples(2, 100);
    EXPECT_EQ(samples.GetCapacity(), 100);
    for (int channel = 0; channel < 2; ++channel) {
        EXPECT_EQ(std::count(samples.Channel(channel), samples.Channel(channel) + 100, 0.0F), 100);
    }
}

TEST(SlidingSamples, DropMakesTheSampleBehindTheDroppedOnesTheFirst) {
    SlidingSamples samples(2, 100);
    Number(samples, 0, 60);
    samples.Drop(13, 60);
    for (int i = 0; i < 47; ++i) {
        ASSERT_EQ(samples.Channel(0)[i], static_cast<float>(i + 13));
        ASSERT_EQ(samples.Channel(1)[i], -static_cast<float>(i + 13));
    }
}

TEST(SlidingSamples, DropMovesNothingAsLongAsTheStorageHasRoomBehind) {
    SlidingSamples samples(1, 100);
    float* const first = samples.Channel(0);
    for (int n = 1; n <= 10; ++n) {
        samples.Drop(10, 100);
        EXPECT_EQ(samples.Channel(0), first + 10 * n);
    }
    samples.Drop(1, 100);
    EXPECT_EQ(samples.Channel(0), first);
}

TEST(SlidingSamples, AQueueOfRandomStepsNeverLosesOrSwapsASample) {
    std::mt19937 random(17);
    SlidingSamples samples(2, 500);
    std::deque<float> expected;
    float next = 1;
    for (int step = 0; step < 5000; ++step) {
        const auto fill = static_cast<std::int32_t>(expected.size());
        const auto more = static_cast<std::int32_t>(random() % static_cast<unsigned>(501 - fill));
        for (std::int32_t i = fill; i < fill + more; ++i, ++next) {
            samples.Channel(0)[i] = next;
            samples.Channel(1)[i] = -next;
            expected.push_back(next);
        }
        const auto used = static_cast<std::int32_t>(expected.size());
        const auto dropped = static_cast<std::int32_t>(random() % static_cast<unsigned>(used + 1));
        samples.Drop(dropped, used);
        expected.erase(expected.begin(), expected.begin() + dropped);
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(samples.Channel(0)[i], expected[i]);
            ASSERT_EQ(samples.Channel(1)[i], -expected[i]);
        }
    }
}

TEST(SlidingSamples, ReserveKeepsWhatIsThereAndNeverShrinks) {
    SlidingSamples samples(2, 50);
    Number(samples, 0, 50);
    samples.Drop(20, 50);
    Number(samples, 30, 50, 20);
    samples.Reserve(400);
    EXPECT_EQ(samples.GetCapacity(), 400);
    for (int i = 0; i < 50; ++i) ASSERT_EQ(samples.Channel(0)[i], static_cast<float>(i + 20));
    Number(samples, 50, 400, 20);
    samples.Drop(399, 400);
    EXPECT_EQ(samples.Channel(1)[0], -419.0F);
    samples.Reserve(10);
    EXPECT_EQ(samples.GetCapacity(), 400);
}

TEST(SlidingSamples, ReserveWithoutMemoryThrowsAndChangesNothing) {
    SlidingSamples samples(2, 50);
    Number(samples, 0, 50);
    {
        const test::AllocationLimit some(2); // the list of channels and the first of them
        EXPECT_THROW(samples.Reserve(400), std::bad_alloc);
    }
    EXPECT_EQ(samples.GetCapacity(), 50);
    for (int i = 0; i < 50; ++i) ASSERT_EQ(samples.Channel(1)[i], -static_cast<float>(i));
}

TEST(SlidingSamples, DropBeyondItsBoundsIsHeldToThem) {
    SlidingSamples samples(2, 50);
    Number(samples, 0, 50);
    samples.Drop(-4, 50);
    EXPECT_EQ(samples.Channel(0)[0], 0.0F);
    EXPECT_EQ(samples.Channel(0)[49], 49.0F);
    for (int n = 0; n < 5; ++n) samples.Drop(1000, -7);
    Number(samples, 0, 50); // room for all of them is left
    EXPECT_EQ(samples.Channel(0)[49], 49.0F);
}

TEST(SlidingSamples, ClearSilencesTheFrontAlone) {
    SlidingSamples samples(2, 50);
    Number(samples, 0, 50, 1);
    samples.Drop(25, 50);
    Number(samples, 0, 50, 1);
    samples.Clear(30);
    EXPECT_EQ(std::count(samples.Channel(0), samples.Channel(0) + 30, 0.0F), 30);
    EXPECT_EQ(samples.Channel(0)[30], 31.0F);
    samples.Clear(-1);
    EXPECT_EQ(samples.Channel(0)[30], 31.0F);
    samples.Clear(1000); // no further than there is room
    EXPECT_EQ(std::count(samples.Channel(0), samples.Channel(0) + 50, 0.0F), 50);
}

} // namespace
} // namespace sonorelle
