#include "synthesis/voice_grain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numbers>
#include <vector>

namespace sonorelle {
namespace {

// The fade table has 32768 entries over its rise of 1; its steepest entry is 1 / 18000 above the one before,
// and half of that is lost by looking up the nearest.
constexpr double kTableError = 5e-5;

double RiseWeight(int i, int samples) { // a quarter of a sine, cubed
    return std::pow(std::sin(std::numbers::pi / 2 * i / (samples - 1)), 3.0);
}

class VoiceGrainTest : public testing::Test {
protected:
    VoiceGrain Grain(std::int32_t mark, float ratio, float gain = 1) const {
        return {*tables, mark, static_cast<std::int32_t>(input.size()), ratio, gain};
    }
    std::vector<float> Fall(std::int32_t mark, float ratio, std::int32_t samples, float gain = 1) const {
        std::vector<float> out(static_cast<std::size_t>(samples), 9.0F);
        Grain(mark, ratio, gain).WriteFall(input.data(), samples, out.data());
        return out;
    }
    std::vector<float> Rise(std::int32_t mark, float ratio, std::int32_t samples, float onto = 0) const {
        std::vector<float> out(static_cast<std::size_t>(samples), onto);
        Grain(mark, ratio).AddRise(input.data(), samples, out.data());
        return out;
    }
    void FillWithRamp(std::int32_t length) { // sample k is k
        for (std::int32_t k = 0; k < length; ++k) input.push_back(static_cast<float>(k));
    }

    std::shared_ptr<const GrainTables> tables = GrainTables::Create();
    std::vector<float> input;
};

TEST_F(VoiceGrainTest, TheFallWritesTheSamplesFromTheMarkOnUnderOneMinusTheRise) {
    FillWithRamp(300);
    const std::vector<float> out = Fall(100, 1.0F, 50);
    EXPECT_EQ(out[0], 100.0F); // the mark itself stands at full height
    for (int i = 0; i < 50; ++i)
        EXPECT_NEAR(static_cast<double>(out[static_cast<std::size_t>(i)]),
                    (100 + i) * (1 - RiseWeight(i, 50)), 150 * kTableError);
    EXPECT_NEAR(out[49], 0, 1e-4);
}

TEST_F(VoiceGrainTest, TheRiseAddsTheSamplesBeforeTheMark) {
    FillWithRamp(300);
    const std::vector<float> out = Rise(100, 1.0F, 50, 7.0F);
    EXPECT_EQ(out[0], 7.0F); // weight 0
    for (int i = 0; i < 50; ++i)
        EXPECT_NEAR(static_cast<double>(out[static_cast<std::size_t>(i)]), 7 + (50 + i) * RiseWeight(i, 50),
                    100 * kTableError);
    EXPECT_NEAR(out[49], 106, 1e-3); // the sample before the mark, whole
}

TEST_F(VoiceGrainTest, FallAndRiseOfEqualPeriodsAddUpToTheRecording) {
    for (int k = 0; k < 400; ++k)
        input.push_back(static_cast<float>(std::sin(k * 2 * std::numbers::pi / 100)));
    std::vector<float> out = Fall(100, 1.0F, 100);
    Grain(200, 1.0F).AddRise(input.data(), 100, out.data());
    for (std::size_t i = 0; i < 100; ++i) EXPECT_NEAR(out[i], input[100 + i], 1e-6F) << i;
}

TEST_F(VoiceGrainTest, ARatioMovesTheReadPositionOnBothSidesOfTheMark) {
    FillWithRamp(400);
    const std::vector<float> fall = Fall(200, 1.25F, 41);
    const std::vector<float> rise = Rise(200, 1.25F, 41);
    for (int i = 0; i < 41; ++i) {
        const double weight = RiseWeight(i, 41);
        EXPECT_NEAR(static_cast<double>(fall[static_cast<std::size_t>(i)]), (200 + 1.25 * i) * (1 - weight),
                    260 * kTableError);
        EXPECT_NEAR(static_cast<double>(rise[static_cast<std::size_t>(i)]), (200 + 1.25 * (i - 41)) * weight,
                    260 * kTableError);
    }
}

TEST_F(VoiceGrainTest, BetweenTwoSamplesItReadsOnTheStraightLine) {
    input = {0, 0, 1, 0, 4, 0};
    const std::vector<float> fall = Fall(2, 0.75F, 3); // positions 2, 2.75, 3.5; weights 0, 0.354, 1
    EXPECT_FLOAT_EQ(fall[0], 1.0F);
    EXPECT_NEAR(static_cast<double>(fall[1]), 0.25 * (1 - std::pow(0.5, 1.5)), kTableError);
    EXPECT_NEAR(fall[2], 0.0F, 1e-6F);
}

TEST_F(VoiceGrainTest, TheGainWeightsBothSides) {
    FillWithRamp(100);
    const std::vector<float> loud = Fall(50, 1.1F, 20);
    const std::vector<float> soft = Fall(50, 1.1F, 20, 0.25F);
    for (std::size_t i = 0; i < 20; ++i) EXPECT_FLOAT_EQ(soft[i], 0.25F * loud[i]);
    std::vector<float> rise(20, 0.0F);
    Grain(50, 1.0F, 0.25F).AddRise(input.data(), 20, rise.data());
    EXPECT_NEAR(rise[19], 0.25F * 49, 1e-3);
}

TEST_F(VoiceGrainTest, WhatLiesBeforeTheInputIsSilence) {
    input.assign(50, 1.0F);
    const std::vector<float> rise = Rise(10, 1.0F, 30);
    for (std::size_t i = 0; i < 20; ++i) EXPECT_EQ(rise[i], 0.0F) << i;
    EXPECT_NEAR(static_cast<double>(rise[20]), RiseWeight(20, 30), kTableError);
    const std::vector<float> between = Rise(1, 0.75F, 2); // reads at -0.5 (weight 0) and at 0.25
    EXPECT_EQ(between[0], 0.0F);
    EXPECT_NEAR(between[1], 1.0F, 1e-6F);
    const std::vector<float> half = Rise(1, 0.75F, 3); // at -1.25, -0.5 (weight 0.354) and 0.25
    EXPECT_NEAR(static_cast<double>(half[1]), 0.5 * std::pow(0.5, 1.5), kTableError);
}

TEST_F(VoiceGrainTest, WhatLiesBehindTheInputIsSilence) {
    input.assign(50, 1.0F);
    const std::vector<float> fall = Fall(40, 1.0F, 30);
    for (std::size_t i = 10; i < 30; ++i) EXPECT_EQ(fall[i], 0.0F) << i;
    EXPECT_NEAR(static_cast<double>(fall[9]), 1 - RiseWeight(9, 30), kTableError);
    const std::vector<float> half = Fall(49, 0.5F, 3); // at 49, 49.5 and 50
    EXPECT_NEAR(static_cast<double>(half[1]), 0.5 * (1 - std::pow(0.5, 1.5)), kTableError);
    EXPECT_EQ(half[2], 0.0F);
}

TEST_F(VoiceGrainTest, AGrainFarOutsideTheInputIsSilent) {
    input.assign(50, 1.0F);
    for (const std::int32_t mark : {-1000000000, -200, 400, 1000000000}) {
        for (const float sample : Fall(mark, 1.5F, 100)) EXPECT_EQ(sample, 0.0F);
        for (const float sample : Rise(mark, 0.7F, 100)) EXPECT_EQ(sample, 0.0F);
    }
}

TEST_F(VoiceGrainTest, WithoutInputItIsSilent) {
    const VoiceGrain grain(*tables, 0, 0, 1.2F, 1);
    std::vector<float> out(10, 3.0F);
    grain.WriteFall(nullptr, 10, out.data());
    for (const float sample : out) EXPECT_EQ(sample, 0.0F);
}

TEST_F(VoiceGrainTest, SidesOfNoLengthDoNothing) {
    FillWithRamp(10);
    float out = 5;
    for (const std::int32_t samples : {0, -1, -1000000}) {
        Grain(5, 1.0F).AddRise(input.data(), samples, &out);
        Grain(5, 1.0F).WriteFall(input.data(), samples, &out);
    }
    EXPECT_EQ(out, 5.0F);
}

TEST_F(VoiceGrainTest, ASideOfOneSampleIsTheMarkItself) {
    FillWithRamp(10);
    EXPECT_EQ(Fall(5, 1.3F, 1)[0], 5.0F);
    EXPECT_EQ(Rise(5, 1.3F, 1, 2.0F)[0], 2.0F);
}

// On a ramp an error of the read position shows as it is: after 60000 samples at most a hundredth of one.
TEST_F(VoiceGrainTest, ALongGrainDoesNotDrift) {
    FillWithRamp(100000);
    constexpr float kRatio = 1.5874011F;
    constexpr std::int32_t kSamples = 60000;
    const std::vector<float> fall = Fall(1000, kRatio, kSamples);
    for (const std::int32_t i : {1, 1000, 20000, 30000}) {
        const double read = 1000 + static_cast<double>(kRatio) * i;
        const double weight = 1 - RiseWeight(i, kSamples);
        EXPECT_NEAR(static_cast<double>(fall[static_cast<std::size_t>(i)]) / weight, read,
                    0.01 + read * kTableError / weight)
            << i;
    }
}

} // namespace
} // namespace sonorelle
