#include "synthesis/voice_limits.h"

#include "synthesis/psola_synthesis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace sonorelle {
namespace {

TEST(VoiceLimits, PitchGoesThreeOctavesAndFormantsEightSemitonesEitherWay) {
    EXPECT_EQ(VoiceLimits::kLowestPitch, 1.0F / 8);
    EXPECT_EQ(VoiceLimits::kHighestPitch, 8.0F);
    EXPECT_FLOAT_EQ(VoiceLimits::kHighestFormant, std::exp2(8.0F / 12));
    EXPECT_FLOAT_EQ(VoiceLimits::kLowestFormant, std::exp2(-8.0F / 12));
}

// A period of 100 at an eighth of its pitch, read at 1.587 of its rate: 1269.9 samples.
TEST(VoiceLimits, OneSideOfAGrainReadsThePeriodTimesBothRatios) {
    EXPECT_EQ((VoiceLimits{100, 0}.LargestSpan()), 1270);
}

TEST(VoiceLimits, HistoryHoldsAnOrdinaryRiseAtLeastAndTheLongestOneAlways) {
    EXPECT_EQ((VoiceLimits{100, 0}.History()), CPSOLASynthesis::kUsualHistory);
    EXPECT_GE((VoiceLimits{4096, 0}.History()), 52015); // 4096 x 8 x 1.5874
}

TEST(VoiceLimits, InputHasRoomForHistoryTimingAndTheTakesOfTwoBlocks) {
    const VoiceLimits limits{1000, 8820};
    const std::int32_t before = limits.History() + limits.longestTiming;
    EXPECT_GE(limits.InputCapacity(), before + 2 * limits.LargestTake());
    EXPECT_GE(limits.LargestTake(),
              limits.LargestSpan() + 1000 + 64 * 100); // a block of 64 at 100 times the speed
}

// Two lowest grains may lie behind the longest block: 4096 + 2 x 8 x the period.
TEST(VoiceLimits, OutputHasRoomForABlockAndTwoOfTheLowestGrains) {
    EXPECT_GE((VoiceLimits{2000, 0}.OutputCapacity()), 4096 + 2 * 16000);
}

// Periods of 8192 samples (192 kHz, 36 semitones down) took 65,000 samples of input in one block, and 72,000
// of output.
TEST(VoiceLimits, HoldsWhatTheHighestRateNeeds) {
    const VoiceLimits limits{8192, 38400};
    EXPECT_GE(limits.LargestTake(), 65000);
    EXPECT_GE(limits.OutputCapacity(), 72000);
    EXPECT_GE(limits.InputCapacity(), 65000 + 38400 + 65536);
}

TEST(VoiceLimits, TheLongestPeriodOfTheHighestRateOverflowsNothing) {
    const VoiceLimits limits{24960, 38401}; // 0.13 s at 192 kHz
    EXPECT_GT(limits.InputCapacity(), limits.LargestTake());
    EXPECT_LT(limits.InputCapacity(), 2000000);
    EXPECT_LT(limits.OutputCapacity(), 500000);
}

} // namespace
} // namespace sonorelle
