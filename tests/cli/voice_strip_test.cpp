#include "cli/voice_strip.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace sonorelle {
namespace {

using ::testing::ElementsAre;

VoiceStrip Strip(const std::vector<const char*>& changes) {
    VoiceStrip strip;
    for (const char* change : changes) EXPECT_EQ(SetStripControl(strip, change), "") << change;
    return strip;
}

std::string WhyWrong(const char* change) {
    VoiceStrip strip;
    std::string why = SetStripControl(strip, change);
    EXPECT_EQ(strip, VoiceStrip{}) << change;
    return why;
}

TEST(SetStripControl, EveryControlTakesBothEndsOfItsRange) {
    const std::vector<const char*> lowest = {"vol=0",  "pan=-1",  "delay=0", "shape=-8",
                                             "tune=0", "drift=0", "glide=0", "time=0"};
    EXPECT_EQ(Strip(lowest), (VoiceStrip{0, -1, 0, -8, 0, 0, 0, 0, false, false}));
    const std::vector<const char*> highest = {"vol=1.333", "pan=1",     "delay=100", "shape=8",
                                              "tune=100",  "drift=200", "glide=100", "time=100"};
    EXPECT_EQ(Strip(highest), (VoiceStrip{1.333F, 1, 100, 8, 100, 200, 100, 100, false, false}));
}

TEST(SetStripControl, RefusesWhatLiesJustBeyondAndTellsTheRange) {
    const std::pair<const char*, std::vector<const char*>> wrong[] = {
        {"vol=0 to 1.333", {"vol=-0.001", "vol=1.3331"}},
        {"pan=-1 to 1", {"pan=-1.001", "pan=1.001"}},
        {"delay=0 to 100 ms", {"delay=-0.1", "delay=100.1"}},
        {"shape=-8 to 8 semitones", {"shape=-8.1", "shape=8.1"}},
        {"tune=0 to 100 %", {"tune=-0.1", "tune=100.1"}},
        {"drift=0 to 200 %", {"drift=-0.1", "drift=200.1"}},
        {"glide=0 to 100 %", {"glide=-0.1", "glide=100.1"}},
        {"time=0 to 100 %", {"time=-0.1", "time=100.1"}},
        {"vol=0 to 1.333",
         {"vol=", "vol=x", "vol=nan", "vol=inf", "vol=0,5", "vol=0.5dB", "vol=1e999", "vol=1e300",
          "vol=-1e300"}},
    };
    for (const auto& [allowed, changes] : wrong)
        for (const char* change : changes) EXPECT_EQ(WhyWrong(change), allowed) << change;
}

TEST(SetStripControl, TellsTheKeysWhenItDoesNotKnowOne) {
    for (const char* change : {"", "volume=1", "VOL=1", "=1", "vol", "mute=1", "solo=on", "muted", "0.5"})
        EXPECT_EQ(WhyWrong(change), "vol=, pan=, delay=, shape=, tune=, drift=, glide=, time=, mute, solo")
            << change;
}

TEST(SetStripControl, BlanksAndAPlusAreAllowed) {
    const VoiceStrip strip = Strip({" shape = +3.5 ", " mute", "solo "});
    EXPECT_EQ(strip.shape, 3.5F);
    EXPECT_TRUE(strip.mute);
    EXPECT_TRUE(strip.solo);
}

// What a session's strips show is what was typed, to the digits that anybody types.
TEST(StripsOfSettings, GiveTypedNumbersBack) {
    const VoiceStrip typed = Strip({"vol=0.7", "pan=-0.25", "delay=35", "shape=-2.5", "tune=30", "drift=150",
                                    "glide=20", "time=90", "solo"});
    const VoiceSettings settings = SettingsOfStrip(typed);
    const VoiceStrip shown = StripsOfSettings({settings, settings, settings, settings})[3];
    for (const StripControl& control : StripControls()) {
        const float value = typed.*control.value;
        // Three units in the last place of an f32: of the product, of the share of one, of the logarithm.
        EXPECT_NEAR(shown.*control.value, value, std::fabs(value) * 3e-7F) << control.key;
    }
    EXPECT_TRUE(shown.solo);
    EXPECT_FALSE(shown.mute);
}

TEST(StripChanges, ReadAsAnOptionSaysThem) {
    const VoiceStrip usual;
    EXPECT_EQ(StripChanges(usual, usual), "");
    EXPECT_EQ(StripChanges(Strip({"vol=0.3", "time=18", "mute", "solo"}), usual),
              "vol=0.3,time=18,mute,solo");
    EXPECT_EQ(StripChanges(Strip({"shape=-2.5", "glide=50"}), usual), "shape=-2.5");
}

// The values that a strip shows for the presets are the round numbers that somebody would type.
TEST(StripsOfPreset, ShowRoundNumbers) {
    const VoiceStrip flat;
    EXPECT_THAT(StripsOfPreset(kFlatPreset), ElementsAre(flat, flat, flat, flat));
    EXPECT_THAT(StripsOfPreset(kDefaultPreset),
                ElementsAre(Strip({"pan=-0.1"}), Strip({"vol=0.5", "pan=-0.9", "time=18"}),
                            Strip({"vol=0.5", "pan=0.9", "time=16"}),
                            Strip({"vol=0.5", "pan=0.1", "time=21"})));
}

TEST(SettingsOfStrip, AreInTheUnitsOfTheVoices) {
    const VoiceSettings settings = SettingsOfStrip(Strip(
        {"vol=0.7", "pan=-0.25", "delay=50", "shape=-8", "tune=30", "drift=150", "glide=20", "time=90"}));
    EXPECT_EQ(settings.vol, 0.7F);
    EXPECT_EQ(settings.pan, -0.25F);
    // A unit in the last place or two, from the products of f32.
    EXPECT_FLOAT_EQ(settings.delay, 0.05F);               // s
    EXPECT_FLOAT_EQ(settings.formantShift, 0.629960525F); // 2^(-8/12)
    EXPECT_FLOAT_EQ(settings.quantize, 0.3F);
    EXPECT_FLOAT_EQ(settings.drift, -0.5F); // half of the way to doubled
    EXPECT_FLOAT_EQ(settings.glide, 0.2F);
    EXPECT_FLOAT_EQ(settings.timing, 0.18F); // s
    EXPECT_FALSE(settings.mute || settings.solo);
    EXPECT_EQ(SettingsOfStrip(VoiceStrip{}), VoiceSettings{});
    EXPECT_TRUE(SettingsOfStrip(Strip({"mute"})).mute);
    EXPECT_TRUE(SettingsOfStrip(Strip({"solo"})).solo);
}

// The strips of the presets become the presets again: nothing is lost on the way through an option.
TEST(SettingsOfStrips, GiveThePresetsBack) {
    const auto presets = FactoryPresets();
    for (const std::int32_t preset : {kDefaultPreset, kFlatPreset}) {
        const VoiceSettingsOfAll settings = SettingsOfStrips(StripsOfPreset(preset));
        const VoiceSettingsOfAll& expected = presets[static_cast<std::size_t>(preset)].voices;
        for (std::size_t voice = 0; voice < settings.size(); ++voice) {
            EXPECT_EQ(settings[voice].vol, expected[voice].vol);
            EXPECT_EQ(settings[voice].pan, expected[voice].pan);
            EXPECT_FLOAT_EQ(settings[voice].timing, expected[voice].timing);
            EXPECT_EQ(settings[voice].drift, expected[voice].drift);
            EXPECT_EQ(settings[voice].glide, expected[voice].glide);
            EXPECT_EQ(settings[voice].formantShift, expected[voice].formantShift);
        }
    }
}

} // namespace
} // namespace sonorelle
