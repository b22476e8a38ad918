#include "app/voice_controls.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace sonorelle {
namespace {

struct ExpectedControl {
    VoiceControl control;
    std::int32_t changeCode;
    const char* label;
    float least;
    float most;
    float preset;
    float step;
    const char* unit;
    const char* toolTip;
    VoiceSection section;
};

// clang-format off
const ExpectedControl kExpected[] = {
    {VoiceControl::kVolume, 0, "", 0, 1.333F, 1, 0, "dB", "adjust volume of voice", VoiceSection::kStrip},
    {VoiceControl::kPan, 1, "", -1, 1, 0, 0.05F, "L-R", "adjust panning of voice", VoiceSection::kStrip},
    {VoiceControl::kDelay, 2, "Delay", 0, 100, 0, 1, "ms", "adjust voice delay", VoiceSection::kStrip},
    {VoiceControl::kShape, 3, "Shape", -8, 8, 0, 0.1F, "semitones", "adjust formant shape", VoiceSection::kStrip},
    {VoiceControl::kTune, 4, "Tune", 0, 100, 0, 0.1F, "%", "adjust amount of pitch correction", VoiceSection::kFineTuning},
    {VoiceControl::kDrift, 5, "Drift", 0, 200, 100, 0.1F, "%", "adjust amount of pitch variation", VoiceSection::kFineTuning},
    {VoiceControl::kGlide, 7, "Glide", 0, 100, 50, 0.1F, "%", "adjust pitch transition smoothness", VoiceSection::kPerformance},
    {VoiceControl::kTime, 8, "Time", 0, 100, 0, 0.1F, "%", "humanize timing of the voice", VoiceSection::kPerformance},
};
// clang-format on

TEST(VoiceControls, EachHasItsRangeDefaultStepAndTexts) {
    ASSERT_EQ(kVoiceControls.size(), std::size(kExpected));
    for (const ExpectedControl& expected : kExpected) {
        const VoiceControlInfo& info = GetVoiceControl(expected.control);
        EXPECT_EQ(info.control, expected.control);
        EXPECT_EQ(static_cast<std::int32_t>(info.control), expected.changeCode);
        EXPECT_STREQ(info.label, expected.label);
        EXPECT_EQ(info.least, expected.least);
        EXPECT_EQ(info.most, expected.most);
        EXPECT_EQ(info.preset, expected.preset);
        EXPECT_EQ(info.step, expected.step);
        EXPECT_STREQ(info.unit, expected.unit);
        EXPECT_STREQ(info.toolTip, expected.toolTip);
        EXPECT_EQ(info.section, expected.section);
        EXPECT_EQ(info.logarithmic, expected.control == VoiceControl::kVolume);
        EXPECT_EQ(info.vertical, expected.control == VoiceControl::kVolume);
    }
}

TEST(VoiceControls, VolumeDelayAndShapeHaveTicks) {
    for (const VoiceControlInfo& info : kVoiceControls) {
        const bool ticks = info.control == VoiceControl::kVolume || info.control == VoiceControl::kDelay ||
                           info.control == VoiceControl::kShape;
        EXPECT_EQ(info.ticks, ticks) << info.toolTip;
    }
}

TEST(VoiceControls, TheSwitchesAreNoSliders) {
    EXPECT_EQ(static_cast<std::int32_t>(VoiceControl::kSwitch), 6);
    for (const auto control : {VoiceControl::kNone, VoiceControl::kSwitch, static_cast<VoiceControl>(9)}) {
        EXPECT_FALSE(IsVoiceSlider(control));
        EXPECT_EQ(GetVoiceControl(control).control, VoiceControl::kNone);
        EXPECT_EQ(StoredFromPanel(control, 5), 0);
        EXPECT_EQ(PanelFromStored(control, 5), 0);
        EXPECT_FALSE(IsStoredValue(control, 0));
    }
    EXPECT_STREQ(kMuteLabel, "Mute");
    EXPECT_STREQ(kSoloLabel, "Solo");
    EXPECT_STREQ(kResetLabel, "R");
    EXPECT_STREQ(kResetToolTip, "reset vol and pan settings");
}

TEST(VoiceControls, DefaultsAreTheSettingsOfANewVoice) {
    for (const VoiceControlInfo& info : kVoiceControls) {
        EXPECT_EQ(StoredFromPanel(info.control, info.preset), VoiceSettings().*info.stored) << info.toolTip;
        EXPECT_EQ(PanelFromStored(info.control, VoiceSettings().*info.stored), info.preset) << info.toolTip;
    }
}

TEST(VoiceControls, ADriftOfHundredPercentIsTheNaturalContour) {
    EXPECT_EQ(StoredFromPanel(VoiceControl::kDrift, 100), 0);
    EXPECT_EQ(StoredFromPanel(VoiceControl::kDrift, 0), 1);
    EXPECT_EQ(StoredFromPanel(VoiceControl::kDrift, 200), -1);
    EXPECT_EQ(PanelFromStored(VoiceControl::kDrift, 0.75F), 25);
}

TEST(VoiceControls, WhatIsShownBecomesWhatIsStored) {
    EXPECT_EQ(StoredFromPanel(VoiceControl::kVolume, 0.5F), 0.5F);
    EXPECT_EQ(StoredFromPanel(VoiceControl::kPan, -0.9F), -0.9F);
    EXPECT_EQ(StoredFromPanel(VoiceControl::kDelay, 100), 0.1F); // seconds
    EXPECT_EQ(StoredFromPanel(VoiceControl::kDelay, 35), 0.035F);
    EXPECT_EQ(StoredFromPanel(VoiceControl::kTime, 100), 0.2F); // seconds
    EXPECT_FLOAT_EQ(StoredFromPanel(VoiceControl::kTime, 18), 0.036F);
    EXPECT_EQ(StoredFromPanel(VoiceControl::kTune, 100), 1);
    EXPECT_EQ(StoredFromPanel(VoiceControl::kGlide, 50), 0.5F);
    // Within an f32's last digit.
    EXPECT_FLOAT_EQ(StoredFromPanel(VoiceControl::kShape, 8), 1.5874011F);
    EXPECT_FLOAT_EQ(StoredFromPanel(VoiceControl::kShape, -8), 0.62996052F);
    EXPECT_FLOAT_EQ(StoredFromPanel(VoiceControl::kShape, 3), 1.1892071F);
}

TEST(VoiceControls, StoredValuesComeBackToWhatWasShown) {
    // Half of the finest step that a control has, so that a text with one digit is the same.
    for (const VoiceControlInfo& info : kVoiceControls) {
        const float step = (info.most - info.least) / 97;
        for (float shown = info.least; shown <= info.most; shown += step)
            EXPECT_NEAR(PanelFromStored(info.control, StoredFromPanel(info.control, shown)), shown, 2e-5)
                << info.toolTip;
    }
}

TEST(VoiceControls, ARatioIsSoManySemitones) {
    EXPECT_EQ(SemitonesFromRatio(1), 0);
    EXPECT_EQ(SemitonesFromRatio(2), 12);
    EXPECT_EQ(SemitonesFromRatio(0.5F), -12);
    EXPECT_FLOAT_EQ(SemitonesFromRatio(1.1892071F), 3); // a minor third
}

TEST(VoiceControls, ValuesAreHeldToTheRangeOfTheControl) {
    for (const VoiceControlInfo& info : kVoiceControls) {
        const VoiceControl control = info.control;
        EXPECT_EQ(StoredFromPanel(control, info.least - 1), StoredFromPanel(control, info.least));
        EXPECT_EQ(StoredFromPanel(control, info.most + 1), StoredFromPanel(control, info.most));
        EXPECT_EQ(StoredFromPanel(control, kInfinity), StoredFromPanel(control, info.most));
        EXPECT_EQ(StoredFromPanel(control, kNaN), VoiceSettings().*info.stored);
        for (const float stored : {-1e30F, -2.0F, 0.0F, 3.0F, 1e30F, -kInfinity, kInfinity, kNaN}) {
            const float shown = PanelFromStored(control, stored);
            EXPECT_TRUE(shown >= info.least && shown <= info.most) << info.toolTip << " " << stored;
        }
    }
}

TEST(VoiceControls, ValuesFromOutsideAreKnownToBeInRangeOrNot) {
    for (const VoiceControlInfo& info : kVoiceControls) {
        const StoredRange range = GetStoredRange(info.control);
        EXPECT_LT(range.least, range.most) << info.toolTip;
        EXPECT_TRUE(IsStoredValue(info.control, range.least)) << info.toolTip;
        EXPECT_TRUE(IsStoredValue(info.control, range.most)) << info.toolTip;
        EXPECT_TRUE(IsStoredValue(info.control, VoiceSettings().*info.stored)) << info.toolTip;
        EXPECT_FALSE(IsStoredValue(info.control, std::nextafter(range.most, kInfinity))) << info.toolTip;
        EXPECT_FALSE(IsStoredValue(info.control, std::nextafter(range.least, -kInfinity))) << info.toolTip;
        EXPECT_FALSE(IsStoredValue(info.control, kNaN)) << info.toolTip;
        EXPECT_FALSE(IsStoredValue(info.control, kInfinity)) << info.toolTip;
    }
    EXPECT_EQ(GetStoredRange(VoiceControl::kDrift).least, -1);
    EXPECT_EQ(GetStoredRange(VoiceControl::kDrift).most, 1);
}

TEST(VoiceControls, VoicesAreCalledByTheirColours) {
    EXPECT_STREQ(kVoiceTitles[0], "orange voice");
    EXPECT_STREQ(kVoiceTitles[1], "red voice");
    EXPECT_STREQ(kVoiceTitles[2], "blue voice");
    EXPECT_STREQ(kVoiceTitles[3], "green voice");
}

} // namespace
} // namespace sonorelle
