#include "app/simple_channel_strip.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonorelle {
namespace {

TEST(SimpleChannelStrip, PassesTheSoundUnchangedAtFirst) {
    const CkvoSimpleChannelStrip strip;
    EXPECT_EQ(strip.GetVol(), 1);
    EXPECT_EQ(strip.GetPan(), 0);
    EXPECT_EQ(strip.GetGain().left, 1);
    EXPECT_EQ(strip.GetGain().right, 1);
}

TEST(SimpleChannelStrip, ReachesTwiceTheVolumeOnEitherSide) {
    CkvoSimpleChannelStrip strip;
    strip.SetVol(5);
    EXPECT_EQ(strip.GetVol(), 2);
    EXPECT_EQ(strip.GetGain().left, 2);
    EXPECT_EQ(strip.GetGain().right, 2);
    strip.SetPan(-9);
    EXPECT_EQ(strip.GetPan(), -1);
    EXPECT_FLOAT_EQ(strip.GetGain().left, 2 * std::sqrt(2.0F));
    EXPECT_EQ(strip.GetGain().right, 0);
    strip.SetVol(-1);
    EXPECT_EQ(strip.GetGain().left, 0);
}

TEST(SimpleChannelStrip, WhatIsNoNumberLeavesTheValue) {
    CkvoSimpleChannelStrip strip;
    strip.SetVol(0.5F);
    strip.SetPan(0.5F);
    strip.SetVol(std::numeric_limits<float>::quiet_NaN());
    strip.SetPan(std::numeric_limits<float>::infinity());
    EXPECT_EQ(strip.GetVol(), 0.5F);
    EXPECT_EQ(strip.GetPan(), 0.5F);
}

} // namespace
} // namespace sonorelle
