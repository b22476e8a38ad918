// `sonorelle arrange --blocks` and `--midi-in`: the session played as a sequencer would.
#include "cli/session_program.h"
#include "cli/wav_sound.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace sonorelle {
namespace {

using test::WavSound;
using ::testing::Contains;
using ::testing::Each;
using ::testing::HasSubstr;

class ArrangePlaying : public test::SessionProgram {
protected:
    WavSound Mix(const std::string& folder) const { return test::ReadWav(Read(folder + "/Out_song.wav")); }
    void ExpectSameForEveryBlockSize(std::vector<std::string> options) const {
        options.insert(options.begin(), {"song.wav", "--blocks", "64", "-o", "64"});
        Arrange(options);
        ASSERT_GT(Mix("64").Peak(0), 1000);
        for (const std::string size : {"1", "17", "100", "4096"}) {
            options[2] = options[4] = size;
            Arrange(options);
            EXPECT_TRUE(Read("64/Out_song.wav") == Read(size + "/Out_song.wav")) << size;
        }
    }
};

TEST_F(ArrangePlaying, SoundsTheSameForEveryBlockSize) { ExpectSameForEveryBlockSize({}); }

TEST_F(ArrangePlaying, SoundsTheSameForEveryBlockSizeWhenStretched) {
    ExpectSameForEveryBlockSize({"--speed", "1.37", "--region", "0.5:3.1", "--style", "block"});
}

TEST_F(ArrangePlaying, EqualsTheExportButForItsFades) {
    Arrange({"song.wav", "-o", "export"});
    Arrange({"song.wav", "-o", "played", "--blocks", "512"});
    const WavSound exported = Mix("export");
    const WavSound played = Mix("played");
    EXPECT_EQ(exported.rate, played.rate);
    // Both begin at the mark nearest to the region's start.
    EXPECT_NEAR(static_cast<double>(exported.Frames()), static_cast<double>(played.Frames()), 0.02 * kRate);
    // In falls by 1/e in 465 samples: below half a step of 16 bits in 16 bits times ln 2 times that. Out
    // begins 1024 samples before the end.
    constexpr std::size_t kFadeIn = 16 * 465;
    constexpr std::size_t kFadeOut = 1024 + 64;
    ASSERT_GT(played.Frames(), kFadeIn + kFadeOut);
    int largest = 0;
    for (const std::size_t side : {0U, 1U})
        for (std::size_t i = kFadeIn; i + kFadeOut < std::min(played.Frames(), exported.Frames()); ++i)
            largest = std::max(largest, std::abs(played.sides[side][i] - exported.sides[side][i]));
    EXPECT_LE(largest, 1); // of rounding
}

TEST_F(ArrangePlaying, PlaysALateRegionOfASlowedRecording) {
    Arrange({"song.wav", "-o", "late", "--blocks", "512", "--speed", "0.4", "--region", "3:4"});
    const WavSound sound = Mix("late");
    EXPECT_NEAR(sound.Seconds(), 1 / 0.4, 0.01);
    EXPECT_GT(sound.Peak(0), 500);
}

TEST_F(ArrangePlaying, HeldKeysChooseTheHarmony) {
    PutKeys("keys.mid", {{0, true, 57}, {0, true, 60}, {0, true, 64}});
    Arrange({"song.wav", "-o", "plain", "--blocks", "512", "--save-state", "plain.state"});
    Arrange({"song.wav", "-o", "live", "--midi-in", "keys.mid", "--save-state", "live.state"});
    EXPECT_FALSE(Read("plain/Out_song.wav") == Read("live/Out_song.wav"));
    // Nothing was recorded: notes and session are those that were there.
    EXPECT_TRUE(Read("plain/Out_song.mid") == Read("live/Out_song.mid"));
    EXPECT_TRUE(Read("plain.state") == Read("live.state"));
}

TEST_F(ArrangePlaying, KeysBeforeTheRegionAndBehindItDoNothing) {
    PutKeys("keys.mid", {{0.2, true, 57}, {0.4, false, 57}, {9, true, 60}});
    Arrange({"song.wav", "-o", "plain", "--blocks", "512", "--region", "1:3"});
    PutKeys("none.mid", {});
    const std::vector<std::string> live = {"song.wav", "--live", "pitches", "--region", "1:3"};
    for (const std::string keys : {"keys", "none"}) {
        std::vector<std::string> arguments = live;
        arguments.insert(arguments.end(), {"-o", keys, "--midi-in", keys + ".mid"});
        Arrange(arguments);
    }
    EXPECT_TRUE(Read("keys/Out_song.wav") == Read("none/Out_song.wav"));
}

// Keys pressed in the rest before the first note would count from the second on.
TEST_F(ArrangePlaying, RecordedPitchesAreTheVoicesAfterwards) {
    PutKeys("keys.mid", {{0.4, true, 55}, {0.4, true, 59}, {0.4, true, 62}, {0.4, true, 67}});
    Arrange({"song.wav", "-o", "a", "--midi-in", "keys.mid", "--live", "pitches", "--record", "--save-state",
             "a.state"});
    std::vector<int> sung;
    for (int channel = 0; channel < 4; ++channel) {
        const std::vector<int> keys = KeysOf("a/Out_song.mid", channel);
        ASSERT_GE(keys.size(), 5U);
        EXPECT_THAT(keys, Each(keys.back())) << "one key is held all the time";
        sung.push_back(keys.back());
    }
    EXPECT_THAT(sung, ::testing::UnorderedElementsAre(55, 59, 62, 67));
    // They stay.
    Arrange({"--state", "a.state", "-o", "b", "--save-state", "b.state"});
    EXPECT_TRUE(Read("a/Out_song.mid") == Read("b/Out_song.mid"));
    EXPECT_TRUE(Read("a.state") == Read("b.state"));
}

TEST_F(ArrangePlaying, RecordedHarmoniesAreTheVoicesAfterwards) {
    PutKeys("keys.mid", {{0.4, true, 57}, {0.4, true, 60}, {0.4, true, 64}});
    const std::string json = Arrange({"song.wav", "-o", "a", "--midi-in", "keys.mid", "--record", "--json"});
    Arrange({"song.wav", "-o", "plain"});
    EXPECT_FALSE(Read("a/Out_song.mid") == Read("plain/Out_song.mid"));
    // A minor under every note that belongs to it.
    const std::vector<int> chord = {9, 0, 4};
    const std::vector<int> melody = KeysOf("a/Out_song.mid", 0);
    int compared = 0;
    for (int channel = 1; channel < 4; ++channel) {
        const std::vector<int> keys = KeysOf("a/Out_song.mid", channel);
        ASSERT_EQ(keys.size(), melody.size());
        for (std::size_t i = 0; i < keys.size(); ++i) {
            if (std::find(chord.begin(), chord.end(), melody[i] % 12) == chord.end()) continue;
            EXPECT_THAT(chord, Contains(keys[i] % 12)) << "channel " << channel << ", note " << i;
            ++compared;
        }
    }
    EXPECT_GE(compared, 9);
    EXPECT_THAT(json, HasSubstr("\"voices\":["));
}

TEST_F(ArrangePlaying, ATriggerKeyPlaysTheRegionFromItsOwnSample) {
    PutKeys("keys.mid", {{0.5, true, 60}, {1.5, false, 60}});
    Arrange({"song.wav", "-o", "a", "--midi-in", "keys.mid", "--live", "trigger", "--save-state", "a.state"});
    Arrange({"song.wav", "-o", "plain", "--blocks", "512", "--save-state", "plain.state"});
    const WavSound triggered = Mix("a");
    const WavSound plain = Mix("plain");
    const auto key = static_cast<std::size_t>(kRate / 2);
    ASSERT_GT(triggered.Frames(), 3 * key);
    for (std::size_t i = 0; i < key; ++i) ASSERT_EQ(triggered.sides[0][i], 0) << i;
    for (std::size_t i = 0; i < static_cast<std::size_t>(kRate) - 2048; ++i)
        ASSERT_EQ(triggered.sides[0][key + i], plain.sides[0][i]) << i;
    EXPECT_LT(triggered.Seconds(), 3) << "it ends soon after the key";
    EXPECT_TRUE(Read("a.state") == Read("plain.state"));
}

TEST_F(ArrangePlaying, AKeyWithoutASnapshotIsSilence) {
    PutKeys("keys.mid", {{0.5, true, 72}});
    Arrange({"song.wav", "-o", "a", "--midi-in", "keys.mid", "--live", "trigger"});
    EXPECT_EQ(Mix("a").Peak(0), 0);
}

} // namespace
} // namespace sonorelle
