#include "dsp/resample_clock.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace sonorelle {
namespace {

ResampleClock ClockFor(std::int32_t inputRate, std::int32_t outputRate) {
    ResampleClock clock;
    clock.SetRates(inputRate, outputRate);
    return clock;
}

// The rule as a plain count, one output after the other.
std::int64_t CountOneByOne(double ratio, std::int64_t usable) {
    std::int64_t outputs = 0;
    if (ratio < 1.0) {
        while (std::floor(static_cast<double>(outputs) * (1.0 / ratio) * 100.0 + 0.5) <
               static_cast<double>(usable) * 100.0) {
            ++outputs;
        }
    } else {
        const double limit = std::floor(static_cast<double>(usable) * ratio * 100.0 + 0.5);
        while (100.0 * static_cast<double>(outputs) < limit) ++outputs;
    }
    return outputs;
}

constexpr std::pair<std::int32_t, std::int32_t> kRates[] = {
    {44100, 11025}, {48000, 11025}, {22050, 11025}, {32000, 11025}, {96000, 11025}, {192000, 11025},
    {11025, 11025}, {11026, 11025}, {11025, 11026}, {11025, 44100}, {11025, 48000}, {44100, 48000},
    {48000, 44100}, {1498, 1000},   {999983, 1009}, {1000, 1},      {1, 1000},      {3, 2}};

TEST(ResampleClock, OutputsAreCountedInHundredths) {
    for (const auto& [input, output] : kRates) {
        const ResampleClock clock = ClockFor(input, output);
        for (std::int64_t usable = 0; usable < 600; ++usable) {
            ASSERT_EQ(clock.CountOutputs(usable), CountOneByOne(clock.Ratio(), usable))
                << input << " to " << output << ", " << usable << " frames";
        }
    }
}

TEST(ResampleClock, ADistanceThatRoundsUpToTheEndIsNotUsable) {
    // Output 2 lies at 2.996 frames: in hundredths that is 3.00, the end of three usable frames.
    EXPECT_EQ(ClockFor(1498, 1000).CountOutputs(3), 2);
    EXPECT_EQ(ClockFor(3, 2).CountOutputs(3), 2);
}

TEST(ResampleClock, NoUsableInputGivesNoOutputs) {
    for (const auto& [input, output] : kRates) {
        EXPECT_EQ(ClockFor(input, output).CountOutputs(0), 0);
        EXPECT_EQ(ClockFor(input, output).CountOutputs(-1000), 0);
    }
}

TEST(ResampleClock, LongCountsAreFoundWithoutCounting) {
    EXPECT_EQ(ClockFor(44100, 11025).CountOutputs(std::int64_t{4} << 40), std::int64_t{1} << 40);
    EXPECT_EQ(ClockFor(11025, 44100).CountOutputs(std::int64_t{1} << 40), std::int64_t{4} << 40);
}

TEST(ResampleClock, PlacesFollowTheExactRatioForAnHour) {
    for (const auto& [input, output] : {std::pair{48000, 11025}, {44100, 48000}, {999983, 1009}}) {
        ResampleClock clock = ClockFor(input, output);
        const std::int64_t outputs = 11025 * std::int64_t{3600};
        for (std::int64_t k = 0; k < outputs; ++k) clock.Advance();
        const std::int64_t whole = outputs * input / output;
        const double fraction = static_cast<double>(outputs * input % output) / output;
        EXPECT_NEAR(static_cast<double>(clock.whole - whole) + clock.fraction, fraction, 1e-5);
        EXPECT_GE(clock.fraction, 0.0);
        EXPECT_LT(clock.fraction, 1.0);
    }
}

TEST(ResampleClock, FractionIsCutOffTo15Bits) {
    ResampleClock clock = ClockFor(44100, 48000);
    for (int k = 0; k < 1000; ++k) {
        EXPECT_EQ(clock.Fraction15(), static_cast<std::int32_t>(std::floor(clock.fraction * 32768.0)));
        clock.Advance();
    }
    clock.fraction = std::nextafter(1.0, 0.0);
    EXPECT_EQ(clock.Fraction15(), 32767);
}

TEST(ResampleClock, TableStepStretchesTheFilterForDownsamplingOnly) {
    EXPECT_EQ(ClockFor(44100, 11025).TableStep(), 8192);
    EXPECT_EQ(ClockFor(48000, 11025).TableStep(), 7526); // 0.2296875 x 32768 = 7526.4
    EXPECT_EQ(ClockFor(11025, 11025).TableStep(), 32768);
    EXPECT_EQ(ClockFor(11025, 48000).TableStep(), 32768);
    EXPECT_EQ(ClockFor(1000, 1).TableStep(), 33); // 32.768
}

TEST(ResampleClock, TellsWhetherTheRatioChanged) {
    ResampleClock clock;
    EXPECT_TRUE(clock.SetRates(44100, 11025));
    EXPECT_FALSE(clock.SetRates(44100, 11025));
    EXPECT_TRUE(clock.SetRates(48000, 11025));
    clock.Reset();
    EXPECT_TRUE(clock.SetRates(48000, 11025));
}

} // namespace
} // namespace sonorelle
