#include "host/user_state.h"

#include <gtest/gtest.h>

namespace sonorelle::test {
namespace {

constexpr std::int32_t kNotes = 6;
constexpr float kRate = 44100;

SavedState UsersSession() {
    SavedState state;
    state.fileSettings.audioFileName = "/home/lea/song.wav";
    state.fileSettings.masterPlaybackStart = 441000;
    state.fileSettings.currentTempo = 100;
    state.fileSettings.tempoRescaleSyncFactor = 1.5F;
    state.fileSettings.timeSigNumerator = 3;
    state.fileSettings.timeSigDenominator = 4;
    state.fileSettings.tuningFreq = 440;
    for (SavedVoice& voice : state.mixer) voice = SavedVoiceFrom(VoiceSettings());
    SavedPreset preset;
    preset.name = "mine";
    for (SavedVoice& voice : preset.voices) voice = SavedVoiceFrom(VoiceSettings());
    state.presets = {preset};
    return state;
}

bool IsSame(const SavedState& one, const SavedState& other, float otherRate = kRate) {
    return SameUserState(UserStateOf(WriteState(one), kNotes, kRate),
                         UserStateOf(WriteState(other), kNotes, otherRate));
}

TEST(UserStateOf, TheSameSessionIsTheSame) { EXPECT_TRUE(IsSame(UsersSession(), UsersSession())); }

TEST(UserStateOf, MetreSyncAndAutomatedStripsAreNotTheUsers) {
    SavedState now = UsersSession();
    now.fileSettings.timeSigNumerator = 7;
    now.fileSettings.timeSigDenominator = 8;
    now.fileSettings.tempoRescaleSyncFactor = 0.5F;
    now.mixer[1].vol = 0.25F;
    now.mixer[2].glide = 1;
    now.presets[0].voices[3].pan = -1;
    EXPECT_TRUE(IsSame(UsersSession(), now));
}

TEST(UserStateOf, WhatTheUserSetsDiffers) {
    SavedState now = UsersSession();
    now.fileSettings.currentTempo = 101;
    EXPECT_FALSE(IsSame(UsersSession(), now));
    now = UsersSession();
    now.fileSettings.tuningFreq = 442;
    EXPECT_FALSE(IsSame(UsersSession(), now));
    now = UsersSession();
    now.mixer[0].mute = true;
    EXPECT_FALSE(IsSame(UsersSession(), now));
    now = UsersSession();
    now.mixer[0].solo = true;
    EXPECT_FALSE(IsSame(UsersSession(), now));
    now = UsersSession();
    now.presets[0].name = "yours";
    EXPECT_FALSE(IsSame(UsersSession(), now));
}

TEST(UserStateOf, AMarkerIsComparedByItsTime) {
    SavedState now = UsersSession();
    now.fileSettings.masterPlaybackStart = 480000; // the same ten seconds
    EXPECT_TRUE(IsSame(UsersSession(), now, 48000));
    EXPECT_FALSE(IsSame(UsersSession(), now));
    EXPECT_FALSE(IsSame(UsersSession(), UsersSession(), 48000));
    now.fileSettings.masterPlaybackStart = 441010;
    EXPECT_FALSE(IsSame(UsersSession(), now));
}

TEST(UserStateOf, AnUnknownRateComparesTheSamplesThemselves) {
    EXPECT_TRUE(IsSame(UsersSession(), UsersSession(), 0));
}

} // namespace
} // namespace sonorelle::test
