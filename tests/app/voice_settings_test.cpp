#include "app/voice_settings.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace sonorelle {
namespace {

constexpr std::int32_t kNoVoices[] = {-1, 4, std::numeric_limits<std::int32_t>::max(),
                                      std::numeric_limits<std::int32_t>::min()};

using Change = std::pair<std::int32_t, VoiceControl>; // strip and what it reported

// A mixer that notes what it is told.
struct ListenedMixer {
    CkvovirelaineVoiceSettings mixer;
    std::vector<Change> changes;

    ListenedMixer() {
        mixer.SetCallback([this](CkvovirelaineVoiceSettings& panel) {
            changes.emplace_back(panel.GetLastStrip(), panel.GetChangedControl(panel.GetLastStrip()));
        });
    }
};

VoiceSettings UnlikeAnyDefault() {
    VoiceSettings settings;
    settings.vol = 0.25F;
    settings.pan = -0.75F;
    settings.quantize = 0.5F;
    settings.delay = 0.0625F;
    settings.formantShift = 1.25F;
    settings.drift = -0.5F;
    settings.glide = 0.125F;
    settings.timing = 0.1875F;
    settings.mute = true;
    settings.solo = true;
    return settings;
}

// --- Values ---

TEST(VoiceSettingsPanel, NewStripsHaveTheSettingsOfANewVoice) {
    const CkvovirelaineVoiceSettings mixer;
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        EXPECT_EQ(mixer.GetSettings(voice), VoiceSettings());
        EXPECT_EQ(mixer.GetChangedControl(voice), VoiceControl::kNone);
    }
    EXPECT_EQ(mixer.GetLastStrip(), -1);
    EXPECT_EQ(mixer.GetVisibleVoices(), 4);
}

TEST(VoiceSettingsPanel, EachSetterReachesItsOwnValueOfItsOwnVoice) {
    CkvovirelaineVoiceSettings mixer;
    mixer.SetVol(2, 0.25F);
    mixer.SetPan(2, -0.75F);
    mixer.SetDelay(2, 0.0625F);
    mixer.SetTiming(2, 0.1875F);
    mixer.SetQuantize(2, 0.5F);
    mixer.SetDrift(2, -0.5F);
    mixer.SetGlide(2, 0.125F);
    mixer.SetFormantShift(2, 1.25F);
    mixer.SetMute(2, true);
    mixer.SetSolo(2, true);
    EXPECT_EQ(mixer.GetVol(2), 0.25F);
    EXPECT_EQ(mixer.GetPan(2), -0.75F);
    EXPECT_EQ(mixer.GetDelay(2), 0.0625F);
    EXPECT_EQ(mixer.GetTiming(2), 0.1875F);
    EXPECT_EQ(mixer.GetQuantize(2), 0.5F);
    EXPECT_EQ(mixer.GetDrift(2), -0.5F);
    EXPECT_EQ(mixer.GetGlide(2), 0.125F);
    EXPECT_EQ(mixer.GetFormantShift(2), 1.25F);
    EXPECT_TRUE(mixer.IsMuted(2));
    EXPECT_TRUE(mixer.IsSoloed(2));
    EXPECT_EQ(mixer.GetSettings(2), UnlikeAnyDefault());
    for (const std::int32_t other : {0, 1, 3}) EXPECT_EQ(mixer.GetSettings(other), VoiceSettings());
}

TEST(VoiceSettingsPanel, WholeSettingsGoInAndComeBackToTheBit) {
    CkvovirelaineVoiceSettings mixer;
    mixer.SetSettings(1, UnlikeAnyDefault());
    EXPECT_EQ(mixer.GetSettings(1), UnlikeAnyDefault());
    EXPECT_EQ(mixer.GetSettings(0), VoiceSettings());
}

TEST(VoiceSettingsPanel, SettersTellNobody) {
    ListenedMixer listened;
    CkvovirelaineVoiceSettings& mixer = listened.mixer;
    mixer.SetSettings(0, UnlikeAnyDefault());
    mixer.SetVol(1, 0.5F);
    mixer.SetSolo(1, true);
    mixer.SetVisibleVoices(2);
    mixer.Refresh();
    EXPECT_TRUE(listened.changes.empty());
    EXPECT_EQ(mixer.GetLastStrip(), -1);
}

TEST(VoiceSettingsPanel, ValuesBeyondTheRangesAreHeld) {
    CkvovirelaineVoiceSettings mixer;
    VoiceSettings high = {9, 9, 9, 9, 9, 9, 9, 9, false, false};
    mixer.SetSettings(0, high);
    const VoiceSettings top = mixer.GetSettings(0);
    EXPECT_EQ(top.vol, 1.333F);
    EXPECT_EQ(top.pan, 1);
    EXPECT_EQ(top.quantize, 1);
    EXPECT_EQ(top.delay, 0.1F);
    EXPECT_FLOAT_EQ(top.formantShift, 1.5874011F);
    EXPECT_EQ(top.drift, 1);
    EXPECT_EQ(top.glide, 1);
    EXPECT_EQ(top.timing, 0.2F);
    VoiceSettings low = {-9, -9, -9, -9, -9, -9, -9, -9, false, false};
    mixer.SetSettings(0, low);
    const VoiceSettings bottom = mixer.GetSettings(0);
    EXPECT_EQ(bottom.vol, 0);
    EXPECT_EQ(bottom.pan, -1);
    EXPECT_EQ(bottom.quantize, 0);
    EXPECT_EQ(bottom.delay, 0);
    EXPECT_FLOAT_EQ(bottom.formantShift, 0.62996052F);
    EXPECT_EQ(bottom.drift, -1);
    EXPECT_EQ(bottom.glide, 0);
    EXPECT_EQ(bottom.timing, 0);
}

TEST(VoiceSettingsPanel, WhatIsNoNumberLeavesTheValue) {
    CkvovirelaineVoiceSettings mixer;
    VoiceSettings settings = UnlikeAnyDefault();
    mixer.SetSettings(3, settings);
    for (const float bad : {kNaN, kInfinity, -kInfinity})
        mixer.SetSettings(3, {bad, bad, bad, bad, bad, bad, bad, bad, true, true});
    EXPECT_EQ(mixer.GetSettings(3), settings);
}

TEST(VoiceSettingsPanel, AVoiceThatIsNoneReadsAsNewAndIsNotWritten) {
    ListenedMixer listened;
    CkvovirelaineVoiceSettings& mixer = listened.mixer;
    for (const std::int32_t voice : kNoVoices) {
        mixer.SetSettings(voice, UnlikeAnyDefault());
        mixer.SetVol(voice, 0);
        mixer.SetMute(voice, true);
        mixer.SetSolo(voice, true);
        mixer.SetPeak(voice, 1, 1);
        mixer.OpenSection(voice, VoiceSection::kPerformance, true);
        EXPECT_FALSE(mixer.MoveControl(voice, VoiceControl::kVolume, 0));
        EXPECT_FALSE(mixer.ToggleMute(voice));
        EXPECT_FALSE(mixer.ToggleSolo(voice));
        EXPECT_FALSE(mixer.PressReset(voice));
        EXPECT_FALSE(mixer.DragDial(voice, 0, 0, {50, 40}));
        EXPECT_EQ(mixer.GetSettings(voice), VoiceSettings());
        EXPECT_EQ(mixer.GetVol(voice), 1);
        EXPECT_EQ(mixer.GetGlide(voice), 0.5F);
        EXPECT_EQ(mixer.GetPanelValue(voice, VoiceControl::kDrift), 100);
        EXPECT_FALSE(mixer.IsMuted(voice));
        EXPECT_FALSE(mixer.IsSoloed(voice));
        EXPECT_FALSE(mixer.IsStripActive(voice));
        EXPECT_FALSE(mixer.IsSectionOpen(voice, VoiceSection::kPerformance));
        EXPECT_EQ(mixer.GetChangedControl(voice), VoiceControl::kNone);
        EXPECT_EQ(mixer.GetGain(voice, 0), StripGain::kBeforeFirstChange);
    }
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        EXPECT_EQ(mixer.GetSettings(voice), VoiceSettings());
        EXPECT_FALSE(mixer.IsSectionOpen(voice, VoiceSection::kPerformance));
        EXPECT_EQ(mixer.GetStrip(voice).Dial().GetPeak(0), 0);
    }
    EXPECT_TRUE(listened.changes.empty());
}

TEST(VoiceSettingsPanel, ControlsShowStoredValuesInTheirOwnUnits) {
    CkvovirelaineVoiceSettings mixer;
    mixer.SetDelay(0, 0.05F);
    mixer.SetTiming(0, 0.1F);
    mixer.SetQuantize(0, 0.25F);
    mixer.SetDrift(0, -1);
    mixer.SetGlide(0, 0.75F);
    mixer.SetFormantShift(0, std::exp2(0.25F));
    EXPECT_FLOAT_EQ(mixer.GetPanelValue(0, VoiceControl::kDelay), 50);
    EXPECT_FLOAT_EQ(mixer.GetPanelValue(0, VoiceControl::kTime), 50);
    EXPECT_EQ(mixer.GetPanelValue(0, VoiceControl::kTune), 25);
    EXPECT_EQ(mixer.GetPanelValue(0, VoiceControl::kDrift), 200);
    EXPECT_EQ(mixer.GetPanelValue(0, VoiceControl::kGlide), 75);
    EXPECT_NEAR(mixer.GetPanelValue(0, VoiceControl::kShape), 3, 1e-5);
    EXPECT_EQ(mixer.GetPanelValue(0, VoiceControl::kSwitch), 0);
}

// --- Gains ---

TEST(VoiceSettingsPanel, GainsStandThreeDecibelsLowerBeforeTheFirstChange) {
    CkvovirelaineVoiceSettings mixer;
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        EXPECT_FLOAT_EQ(mixer.GetGain(voice, 0), std::sqrt(0.5F));
        EXPECT_FLOAT_EQ(mixer.GetGain(voice, 1), std::sqrt(0.5F));
    }
    mixer.SetDelay(1, 0.05F); // neither volume nor pan
    EXPECT_FLOAT_EQ(mixer.GetGain(1, 0), std::sqrt(0.5F));
}

TEST(VoiceSettingsPanel, VolumeAndPanPutTheGainsIntoForceAtOnce) {
    CkvovirelaineVoiceSettings mixer;
    mixer.SetVol(0, 1);
    EXPECT_EQ(mixer.GetGain(0, 0), 1);
    EXPECT_EQ(mixer.GetGain(0, 1), 1);
    mixer.SetPan(1, 1);
    EXPECT_EQ(mixer.GetGain(1, 0), 0);
    EXPECT_FLOAT_EQ(mixer.GetGain(1, 1), std::sqrt(2.0F));
    mixer.SetVol(1, 0.5F);
    mixer.SetPan(1, -0.5F);
    EXPECT_FLOAT_EQ(mixer.GetStripGain(1).left, std::sqrt(1.5F) * 0.5F);
    EXPECT_FLOAT_EQ(mixer.GetStripGain(1).right, std::sqrt(0.5F) * 0.5F);
    EXPECT_FLOAT_EQ(mixer.GetGain(2, 0), std::sqrt(0.5F)); // the others still wait
}

TEST(VoiceSettingsPanel, RefreshPutsTheGainsOfUntouchedStripsIntoForce) {
    CkvovirelaineVoiceSettings mixer;
    mixer.Refresh();
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        EXPECT_EQ(mixer.GetGain(voice, 0), 1);
        EXPECT_EQ(mixer.GetGain(voice, 1), 1);
    }
}

TEST(VoiceSettingsPanel, ThereAreTwoChannels) {
    CkvovirelaineVoiceSettings mixer;
    mixer.Refresh();
    EXPECT_EQ(mixer.GetGain(0, -1), 0);
    EXPECT_EQ(mixer.GetGain(0, 2), 0);
    EXPECT_EQ(mixer.GetMasterGain(0), 1);
    EXPECT_EQ(mixer.GetMasterGain(1), 1);
    EXPECT_EQ(mixer.GetMasterGain(2), 0);
    EXPECT_EQ(mixer.GetMasterGain(-1), 0);
}

// --- What a user moves ---

TEST(VoiceSettingsPanel, AMovedControlIsStoredThenTold) {
    struct Case {
        VoiceControl control;
        float shown;
        float VoiceSettings::*stored;
        float expected;
    };
    const Case cases[] = {
        {VoiceControl::kVolume, 0.5F, &VoiceSettings::vol, 0.5F},
        {VoiceControl::kPan, 0.5F, &VoiceSettings::pan, 0.5F},
        {VoiceControl::kDelay, 35, &VoiceSettings::delay, 0.035F},
        {VoiceControl::kShape, 3, &VoiceSettings::formantShift, 1.1892071F},
        {VoiceControl::kTune, 25, &VoiceSettings::quantize, 0.25F},
        {VoiceControl::kDrift, 200, &VoiceSettings::drift, -1},
        {VoiceControl::kGlide, 75, &VoiceSettings::glide, 0.75F},
        {VoiceControl::kTime, 50, &VoiceSettings::timing, 0.1F},
    };
    for (const Case& row : cases) {
        ListenedMixer listened;
        EXPECT_TRUE(listened.mixer.MoveControl(3, row.control, row.shown));
        EXPECT_FLOAT_EQ(listened.mixer.GetSettings(3).*row.stored, row.expected);
        EXPECT_EQ(listened.changes, (std::vector<Change>{{3, row.control}}));
        EXPECT_EQ(listened.mixer.GetLastStrip(), 3);
        EXPECT_EQ(listened.mixer.GetChangedControl(3), row.control);
        EXPECT_EQ(listened.mixer.GetChangedControl(0), VoiceControl::kNone);
    }
}

TEST(VoiceSettingsPanel, TheCallbackFindsTheNewValueAndTheNewGains) {
    CkvovirelaineVoiceSettings mixer;
    float vol = 0;
    float left = 0;
    mixer.SetCallback([&](CkvovirelaineVoiceSettings& panel) {
        vol = panel.GetVol(1);
        left = panel.GetGain(1, 0);
    });
    mixer.MoveControl(1, VoiceControl::kVolume, 0.5F);
    EXPECT_EQ(vol, 0.5F);
    EXPECT_EQ(left, 0.5F);
}

TEST(VoiceSettingsPanel, AControlMovedToWhereItStandsTellsNobody) {
    ListenedMixer listened;
    EXPECT_FALSE(listened.mixer.MoveControl(0, VoiceControl::kDrift, 100));
    EXPECT_TRUE(listened.mixer.MoveControl(0, VoiceControl::kDelay, 1e9F));
    EXPECT_FALSE(listened.mixer.MoveControl(0, VoiceControl::kDelay, 100)); // it was held there
    EXPECT_EQ(listened.changes.size(), 1U);
}

TEST(VoiceSettingsPanel, WhatNoControlCanShowMovesNothing) {
    ListenedMixer listened;
    for (const float bad : {kNaN, kInfinity, -kInfinity})
        EXPECT_FALSE(listened.mixer.MoveControl(0, VoiceControl::kVolume, bad));
    for (const auto control : {VoiceControl::kSwitch, VoiceControl::kNone, static_cast<VoiceControl>(9)})
        EXPECT_FALSE(listened.mixer.MoveControl(0, control, 1));
    EXPECT_EQ(listened.mixer.GetSettings(0), VoiceSettings());
    EXPECT_TRUE(listened.changes.empty());
}

TEST(VoiceSettingsPanel, WithoutACallbackEverythingWorks) {
    CkvovirelaineVoiceSettings mixer;
    EXPECT_TRUE(mixer.MoveControl(0, VoiceControl::kPan, 1));
    EXPECT_TRUE(mixer.ToggleSolo(0));
    EXPECT_EQ(mixer.GetLastStrip(), 0);
}

TEST(VoiceSettingsPanel, TheDialMovesVolumeAndPanAndTellsBoth) {
    ListenedMixer listened;
    EXPECT_TRUE(listened.mixer.DragDial(2, 0, 40, {51, 41}));
    EXPECT_EQ(listened.mixer.GetVol(2), 0);
    EXPECT_EQ(listened.mixer.GetPan(2), -1);
    EXPECT_EQ(listened.mixer.GetGain(2, 0), 0);
    EXPECT_EQ(listened.changes, (std::vector<Change>{{2, VoiceControl::kVolume}, {2, VoiceControl::kPan}}));
}

TEST(VoiceSettingsPanel, TheDialTellsOnlyWhatItMoved) {
    ListenedMixer listened;
    listened.mixer.DragDial(2, 25, 40, {51, 41}); // pan stays in the centre
    listened.mixer.DragDial(2, 50, 40, {51, 41}); // volume stays at 0
    EXPECT_FALSE(listened.mixer.DragDial(2, 50, 40, {51, 41}));
    EXPECT_EQ(listened.changes, (std::vector<Change>{{2, VoiceControl::kVolume}, {2, VoiceControl::kPan}}));
}

TEST(VoiceSettingsPanel, TheDialFollowsTheSliders) {
    CkvovirelaineVoiceSettings mixer;
    mixer.MoveControl(0, VoiceControl::kVolume, 0.25F);
    mixer.SetPan(0, 0.75F);
    EXPECT_EQ(mixer.GetStrip(0).Dial().GetVol(), 0.25F);
    EXPECT_EQ(mixer.GetStrip(0).Dial().GetPan(), 0.75F);
}

TEST(VoiceSettingsPanel, ResetTakesVolumeAndPanBackAndTellsBoth) {
    ListenedMixer listened;
    listened.mixer.SetSettings(1, UnlikeAnyDefault());
    EXPECT_TRUE(listened.mixer.PressReset(1));
    VoiceSettings expected = UnlikeAnyDefault();
    expected.vol = 1;
    expected.pan = 0;
    EXPECT_EQ(listened.mixer.GetSettings(1), expected);
    EXPECT_EQ(listened.mixer.GetStrip(1).Dial().GetVol(), 1);
    EXPECT_EQ(listened.mixer.GetStrip(1).Dial().GetPan(), 0);
    EXPECT_EQ(listened.changes, (std::vector<Change>{{1, VoiceControl::kPan}, {1, VoiceControl::kVolume}}));
}

// --- Folding sections and meters ---

TEST(VoiceSettingsPanel, SectionsFoldEachForItself) {
    CkvovirelaineVoiceSettings mixer;
    mixer.OpenSection(1, VoiceSection::kPerformance, true);
    mixer.OpenSection(2, VoiceSection::kFineTuning, true);
    EXPECT_TRUE(mixer.IsSectionOpen(1, VoiceSection::kPerformance));
    EXPECT_FALSE(mixer.IsSectionOpen(1, VoiceSection::kFineTuning));
    EXPECT_FALSE(mixer.IsSectionOpen(2, VoiceSection::kPerformance));
    EXPECT_TRUE(mixer.IsSectionOpen(2, VoiceSection::kFineTuning));
    mixer.OpenSection(1, VoiceSection::kPerformance, false);
    EXPECT_FALSE(mixer.IsSectionOpen(1, VoiceSection::kPerformance));
}

TEST(VoiceSettingsPanel, AnOpenSectionsBarIsBlank) {
    CkvovirelaineVoiceSettings mixer;
    CkvoVoiceChannelStrip& strip = mixer.GetStrip(0);
    EXPECT_STREQ(strip.GetSectionLabel(VoiceSection::kPerformance), "Performance");
    EXPECT_STREQ(strip.GetSectionLabel(VoiceSection::kFineTuning), "Fine Tuning");
    strip.OpenSection(VoiceSection::kPerformance, true);
    EXPECT_STREQ(strip.GetSectionLabel(VoiceSection::kPerformance), "");
    EXPECT_STREQ(strip.GetSectionLabel(VoiceSection::kFineTuning), "Fine Tuning");
}

TEST(VoiceSettingsPanel, CloseSectionsFoldsAllOfThem) {
    CkvovirelaineVoiceSettings mixer;
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        mixer.OpenSection(voice, VoiceSection::kPerformance, true);
        mixer.OpenSection(voice, VoiceSection::kFineTuning, true);
    }
    mixer.CloseSections();
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        EXPECT_FALSE(mixer.IsSectionOpen(voice, VoiceSection::kPerformance));
        EXPECT_FALSE(mixer.IsSectionOpen(voice, VoiceSection::kFineTuning));
    }
}

TEST(VoiceSettingsPanel, WhatDoesNotFoldCannotBeOpened) {
    CkvovirelaineVoiceSettings mixer;
    for (const auto section : {VoiceSection::kStrip, static_cast<VoiceSection>(2)}) {
        mixer.OpenSection(0, section, true);
        EXPECT_FALSE(mixer.IsSectionOpen(0, section));
        EXPECT_STREQ(mixer.GetStrip(0).GetSectionLabel(section), "");
    }
}

TEST(VoiceSettingsPanel, PeaksReachTheDialOfTheirVoice) {
    CkvovirelaineVoiceSettings mixer;
    mixer.SetPeak(2, 0.25F, 0.5F);
    EXPECT_EQ(mixer.GetStrip(2).Dial().GetPeak(0), 0.25F);
    EXPECT_EQ(mixer.GetStrip(2).Dial().GetPeak(1), 0.5F);
    EXPECT_EQ(mixer.GetStrip(1).Dial().GetPeak(0), 0);
}

} // namespace
} // namespace sonorelle
