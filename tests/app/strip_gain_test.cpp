#include "app/strip_gain.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace sonorelle {
namespace {

constexpr float kGainRounding = 1e-6F; // of one root and one product in f32

TEST(StripGain, InTheMiddleBothSidesHaveTheVolume) {
    EXPECT_EQ(StripGainFromVolAndPan(1, 0).left, 1);
    EXPECT_EQ(StripGainFromVolAndPan(1, 0).right, 1);
    EXPECT_EQ(StripGainFromVolAndPan(0.25F, 0).left, 0.25F);
    EXPECT_EQ(StripGainFromVolAndPan(0.25F, 0).right, 0.25F);
}

TEST(StripGain, AVoicePannedHardSoundsOnOneSideAlone3DecibelsLouder) {
    const StripGain left = StripGainFromVolAndPan(1, -1);
    EXPECT_NEAR(left.left, 1.41421356F, kGainRounding);
    EXPECT_EQ(left.right, 0);
    const StripGain right = StripGainFromVolAndPan(0.5F, 1);
    EXPECT_EQ(right.left, 0);
    EXPECT_NEAR(right.right, 0.70710678F, kGainRounding);
}

TEST(StripGain, ALittleToTheLeftIsALittleLouderThere) {
    const StripGain gain = StripGainFromVolAndPan(1, -0.1F);
    EXPECT_NEAR(gain.left, 1.04880885F, kGainRounding);  // sqrt(1.1)
    EXPECT_NEAR(gain.right, 0.94868330F, kGainRounding); // sqrt(0.9)
}

TEST(StripGain, ThePowerOfBothSidesIsTheSameWhereverTheVoiceStands) {
    for (int step = -20; step <= 20; ++step) {
        const StripGain gain = StripGainFromVolAndPan(0.8F, 0.05F * static_cast<float>(step));
        EXPECT_NEAR(gain.left * gain.left + gain.right * gain.right, 2 * 0.8F * 0.8F, 4 * kGainRounding)
            << step;
    }
}

TEST(StripGain, BeforeTheFirstChangeAStripStands3DecibelsDown) {
    EXPECT_FLOAT_EQ(StripGain{}.left, std::sqrt(0.5F));
    EXPECT_FLOAT_EQ(StripGain{}.right, std::sqrt(0.5F));
}

TEST(StripGain, ValuesBeyondTheSlidersAreHeldToThem) {
    EXPECT_EQ(StripGainFromVolAndPan(5, 0).left, kLargestStripVol);
    EXPECT_EQ(StripGainFromVolAndPan(kInfinity, 0).right, kLargestStripVol);
    EXPECT_EQ(StripGainFromVolAndPan(-1, 0).left, 0);
    EXPECT_EQ(StripGainFromVolAndPan(-kInfinity, 0).right, 0);
    EXPECT_EQ(StripGainFromVolAndPan(1, 7).left, 0);
    EXPECT_NEAR(StripGainFromVolAndPan(1, kInfinity).right, 1.41421356F, kGainRounding);
    EXPECT_EQ(StripGainFromVolAndPan(1, -7).right, 0);
}

TEST(StripGain, WhatIsNotANumberIsSilenceOrTheMiddle) {
    EXPECT_EQ(StripGainFromVolAndPan(kNaN, 0.5F).left, 0);
    EXPECT_EQ(StripGainFromVolAndPan(kNaN, 0.5F).right, 0);
    EXPECT_EQ(StripGainFromVolAndPan(0.75F, kNaN).left, 0.75F);
    EXPECT_EQ(StripGainFromVolAndPan(0.75F, kNaN).right, 0.75F);
}

} // namespace
} // namespace sonorelle
