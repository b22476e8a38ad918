#include "cli/sound_options.h"

#include "cli/arrange_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sonorelle {
namespace {

using ::testing::HasSubstr;

SoundSettings Sound(const ArrangeOptions& options) {
    ArrangementSettings settings;
    EXPECT_EQ(ReadSettings(options, settings), "");
    return settings.sound;
}

SoundSettings SoundOfVoices(const std::vector<std::string>& voices) {
    ArrangeOptions options;
    options.voices = voices;
    return Sound(options);
}

std::string WhyUnusable(const ArrangeOptions& options) {
    ArrangementSettings settings;
    return ReadSettings(options, settings);
}

std::string WhyWrongVoice(const std::string& voice, const char* style = "0") {
    ArrangeOptions options;
    options.voices = {voice};
    options.style = style;
    return WhyUnusable(options);
}

TEST(ReadSoundSettings, WithoutOptionsGivesTheDefaultPreset) {
    const SoundSettings sound = Sound({});
    EXPECT_EQ(sound.preset, kDefaultPreset);
    EXPECT_EQ(sound.voices, StripsOfPreset(kDefaultPreset));
    EXPECT_EQ(sound.tuning, std::nullopt);
    EXPECT_EQ(sound.speed, 1.0F);
}

TEST(ReadSoundSettings, AVoiceDepartsFromThePresetAndLeavesTheOthers) {
    ArrangeOptions options;
    options.preset = "flat";
    options.voices = {"1:vol=0.3,pan=-0.5", "green:tune=100,mute", "1:vol=0.4"};
    const SoundSettings sound = Sound(options);
    EXPECT_EQ(sound.preset, kFlatPreset);
    VoiceStrips expected = StripsOfPreset(kFlatPreset);
    expected[1].vol = 0.4F;  // the last one counts ...
    expected[1].pan = -0.5F; // ... for what it sets
    expected[3].tune = 100;
    expected[3].mute = true;
    EXPECT_EQ(sound.voices, expected);
}

TEST(ReadSoundSettings, SoloIsExclusiveAndTheLastOneCounts) {
    VoiceStrips voices = SoundOfVoices({"1:solo", "2:mute", "3:solo,vol=1"}).voices;
    EXPECT_FALSE(voices[0].solo || voices[1].solo || voices[2].solo);
    EXPECT_TRUE(voices[3].solo);
    EXPECT_TRUE(voices[2].mute);
    voices = SoundOfVoices({"1:solo", "3:solo", "1:vol=0.1,solo,mute", "0:vol=0.2"}).voices;
    EXPECT_TRUE(voices[1].solo && voices[1].mute);
    EXPECT_FALSE(voices[3].solo);
}

TEST(ReadSoundSettings, TellsWhichVoicesTheStyleHas) {
    EXPECT_EQ(
        WhyWrongVoice("4:vol=1"),
        "--voice: '4:vol=1' is not allowed; allowed: a voice, a colon and what to set, with the voices 0 "
        "to 3, or orange, red, blue, green of Intelligent 4 Voices");
    EXPECT_THAT(WhyWrongVoice("blue:solo", "2"),
                HasSubstr("the voices 0 to 1, or orange, red of Intelligent 2 Voices"));
    EXPECT_EQ(WhyWrongVoice("blue:solo", "1"), "");
    for (const char* voice : {"", ":", "1", "red", "vol=1", "-1:vol=1", ":vol=1", "1;vol=1", "lead:mute"})
        EXPECT_THAT(WhyWrongVoice(voice), HasSubstr("a voice, a colon and what to set")) << voice;
}

TEST(ReadSoundSettings, TellsWhichPartOfAVoiceIsWrong) {
    EXPECT_EQ(WhyWrongVoice("0:vol=1,pan=2,mute"), "--voice: 'pan=2' is not allowed; allowed: pan=-1 to 1");
    EXPECT_EQ(WhyWrongVoice("0:vol=1,loud"), "--voice: 'loud' is not allowed; allowed: vol=, pan=, delay=, "
                                             "shape=, tune=, drift=, glide=, time=, mute, solo");
    for (const char* voice : {"0:", "0:,", "0:mute,", "0:,mute", "0:mute,,solo", "0:mute:solo"})
        EXPECT_THAT(WhyWrongVoice(voice), HasSubstr("is not allowed; allowed: vol=, ")) << voice;
}

TEST(ReadSoundSettings, TuningAndSpeedTakeBothEndsAndNothingBeyond) {
    ArrangeOptions options;
    for (const auto& [text, hertz] : {std::pair{"350", 350.0F}, {"442.5", 442.5F}, {"500", 500.0F}}) {
        options.tuning = text;
        EXPECT_EQ(Sound(options).tuning, hertz);
    }
    for (const char* text : {"", "349.9", "500.1", "-440", "nan", "inf", "440Hz", "A"}) {
        options.tuning = text;
        EXPECT_EQ(WhyUnusable(options),
                  std::string("--tuning: '") + text + "' is not allowed; allowed: 350 to 500 Hz");
    }
    options.tuning.reset();
    for (const auto& [text, speed] : {std::pair{"0.01", 0.01F}, {"0.5", 0.5F}, {"20", 20.0F}}) {
        options.speed = text;
        EXPECT_EQ(Sound(options).speed, speed);
    }
    for (const char* text : {"", "0", "0.0099", "100.1", "-1", "nan", "inf", "2x"}) {
        options.speed = text;
        EXPECT_EQ(WhyUnusable(options),
                  std::string("--speed: '") + text + "' is not allowed; allowed: 0.01 to 20 times as fast");
    }
}

TEST(ReadSoundSettings, TellsThePresets) {
    ArrangeOptions options;
    options.preset = "loud";
    EXPECT_EQ(WhyUnusable(options), "--preset: 'loud' is not allowed; allowed: 0 to 1, or default, flat");
}

} // namespace
} // namespace sonorelle
