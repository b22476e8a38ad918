#include "app/voice_preset.h"

#include <gtest/gtest.h>

#include <array>

namespace sonorelle {
namespace {

using Flags = std::array<bool, kPresetVoices>;

TEST(VoicePreset, ThereAreTwoByName) {
    const auto presets = FactoryPresets();
    ASSERT_EQ(presets.size(), 2U);
    EXPECT_EQ(presets[kDefaultPreset].name, "default");
    EXPECT_EQ(presets[kFlatPreset].name, "flat");
}

TEST(VoicePreset, FlatLeavesEveryVoiceAsItIsSungInTheMiddle) {
    const VoicePreset flat = FactoryPresets()[kFlatPreset];
    for (const VoiceSettings& voice : flat.voices) {
        EXPECT_EQ(voice.vol, 1);
        EXPECT_EQ(voice.pan, 0);
        EXPECT_EQ(voice.quantize, 0);
        EXPECT_EQ(voice.delay, 0);
        EXPECT_EQ(voice.formantShift, 1);
        EXPECT_EQ(voice.drift, 0);
        EXPECT_EQ(voice.glide, 0.5F);
        EXPECT_EQ(voice.timing, 0);
        EXPECT_FALSE(voice.mute);
        EXPECT_FALSE(voice.solo);
    }
}

TEST(VoicePreset, DefaultPutsTheChoirInItsPlaces) {
    const VoiceSettingsOfAll voices = FactoryPresets()[kDefaultPreset].voices;
    const std::array<float, kPresetVoices> vols = {1.0F, 0.5F, 0.5F, 0.5F};
    const std::array<float, kPresetVoices> pans = {-0.1F, -0.9F, 0.9F, 0.1F};
    const std::array<float, kPresetVoices> timings = {0, 0.036F, 0.032F, 0.042F};
    for (std::size_t voice = 0; voice < voices.size(); ++voice) {
        EXPECT_EQ(voices[voice].vol, vols[voice]) << voice;
        EXPECT_EQ(voices[voice].pan, pans[voice]) << voice;
        EXPECT_EQ(voices[voice].timing, timings[voice]) << voice;
    }
}

TEST(VoicePreset, DefaultDiffersFromFlatInVolumePanAndTimingAlone) {
    auto presets = FactoryPresets();
    for (std::size_t voice = 0; voice < kPresetVoices; ++voice) {
        VoiceSettings placed = presets[kDefaultPreset].voices[voice];
        const VoiceSettings flat = presets[kFlatPreset].voices[voice];
        placed.vol = flat.vol;
        placed.pan = flat.pan;
        placed.timing = flat.timing;
        EXPECT_EQ(placed, flat) << voice;
    }
}

TEST(AudibleVoices, AllThatAreNotMuted) {
    VoiceSettingsOfAll voices;
    EXPECT_EQ(AudibleVoices(voices), (Flags{true, true, true, true}));
    voices[1].mute = true;
    EXPECT_EQ(AudibleVoices(voices), (Flags{true, false, true, true}));
}

TEST(AudibleVoices, ASoloSilencesTheOthersWhetherMutedOrNot) {
    VoiceSettingsOfAll voices;
    voices[2].solo = true;
    voices[1].mute = true;
    EXPECT_EQ(AudibleVoices(voices), (Flags{false, false, true, false}));
}

TEST(AudibleVoices, ASoloedVoiceSoundsThoughItIsMuted) {
    VoiceSettingsOfAll voices;
    voices[3].solo = true;
    voices[3].mute = true;
    EXPECT_EQ(AudibleVoices(voices), (Flags{false, false, false, true}));
}

TEST(AudibleVoices, SeveralSolosSoundTogether) {
    VoiceSettingsOfAll voices;
    voices[0].solo = true;
    voices[3].solo = true;
    EXPECT_EQ(AudibleVoices(voices), (Flags{true, false, false, true}));
}

TEST(AudibleVoices, RemovingTheLastSoloBringsTheMutesBack) {
    VoiceSettingsOfAll voices;
    voices[0].mute = true;
    voices[2].solo = true;
    voices[2].solo = false;
    EXPECT_EQ(AudibleVoices(voices), (Flags{false, true, true, true}));
}

} // namespace
} // namespace sonorelle
