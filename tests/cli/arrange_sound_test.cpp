// What `sonorelle arrange` lets one hear: its sound files, and the options that shape them.
#include "cli/arrange_program.h"
#include "cli/wav_sound.h"
#include "platform/file_size_limit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

namespace sonorelle {
namespace {

using test::Cents;
using test::FrequencyOf;
using test::JsonValue;
using test::ProgramResult;
using test::ReadFile;
using test::RunProgram;
using test::WavSound;
using test::WriteFile;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr std::array<const char*, 4> kStems = {"Out_song_orange.wav", "Out_song_red.wav", "Out_song_blue.wav",
                                               "Out_song_green.wav"};

class ArrangeSound : public test::ArrangeProgram {
protected:
    // Soft enough for four voices to stay below the limit of the mix.
    void SingSoftly(const std::vector<double>& pitches = {60, 64, 62}) {
        test::SingerSettings settings;
        settings.peak = 0.15;
        Sing("song.wav", pitches, settings);
    }
    // One long steady note of 220 Hz.
    void SingSteadily() {
        test::SingerSettings settings;
        settings.peak = 0.15;
        const std::vector<test::MelodyNote> melody = {{.midiPitch = 57, .beats = 5}};
        ASSERT_TRUE(test::WriteWav(folder_.File("song.wav"), test::Sing(melody, settings)));
    }
    WavSound Read(const std::string& name) const { return test::ReadWav(ReadFile(folder_.File(name))); }
    void ArrangeInto(const std::string& out, std::vector<std::string> options) {
        options.insert(options.begin(), {"song.wav", "-o", out});
        const ProgramResult result = Arrange(options);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
    }
    WavSound MixOf(const std::vector<std::string>& options) {
        ArrangeInto("mix", options);
        return Read("mix/Out_song.wav");
    }
};

// The largest difference of two sounds of one length, in steps of 16 bits.
int LargestDifference(const WavSound& a, const WavSound& b) {
    EXPECT_EQ(a.Frames(), b.Frames());
    int largest = 0;
    for (const std::size_t side : {0U, 1U})
        for (std::size_t i = 0; i < std::min(a.Frames(), b.Frames()); ++i)
            largest = std::max(largest, std::abs(a.sides[side][i] - b.sides[side][i]));
    return largest;
}

bool IsSilent(const WavSound& sound) {
    EXPECT_GT(sound.Frames(), 0U);
    return sound.Peak(0) == 0 && sound.Peak(1) == 0;
}

TEST_F(ArrangeSound, IsStereoOf16BitsAsLongAsTheRecordingAtItsRate) {
    for (const auto& [rate, channels] : {std::pair{44100, 1}, {48000, 2}, {22050, 1}}) {
        test::SingerSettings settings;
        settings.sampleRate = rate;
        settings.channels = channels;
        Sing("song.wav", {60, 64}, settings);
        const double seconds = ArrangeToJson({"--stems"})["frames"].get<double>() / rate;
        for (const char* name : {"Out_song.wav", kStems[0], kStems[1], kStems[2], kStems[3]}) {
            const WavSound sound = Read(name);
            EXPECT_EQ(sound.format, 1U);
            EXPECT_EQ(sound.channels, 2U);
            EXPECT_EQ(sound.bits, 16U);
            EXPECT_EQ(sound.rate, static_cast<std::uint32_t>(rate));
            // It ends with the last mark that still has its samples: two of the longest periods at the most.
            EXPECT_NEAR(sound.Seconds(), seconds, 0.04) << name << " at " << rate;
            EXPECT_GT(sound.Peak(0), 1000) << name;
        }
    }
}

TEST_F(ArrangeSound, StemsAddUpToTheMix) {
    SingSoftly();
    ArrangeInto("out", {"--stems", "--voice", "2:delay=20,shape=3"});
    EXPECT_EQ(FilesIn("out").size(), 8U);
    const WavSound mix = Read("out/Out_song.wav");
    EXPECT_LT(mix.Peak(0), 32000); // else the limit would be in the way
    WavSound sum = Read(std::string("out/") + kStems[0]);
    for (const std::size_t voice : {1U, 2U, 3U}) {
        const WavSound stem = Read(std::string("out/") + kStems[voice]);
        ASSERT_EQ(stem.Frames(), sum.Frames());
        EXPECT_FALSE(IsSilent(stem));
        for (const std::size_t side : {0U, 1U})
            for (std::size_t i = 0; i < sum.Frames(); ++i) sum.sides[side][i] += stem.sides[side][i];
    }
    EXPECT_LE(LargestDifference(sum, mix), 2); // five roundings of half a step
}

TEST_F(ArrangeSound, TheMixIsTheSameWithAndWithoutStems) {
    SingSoftly();
    ArrangeInto("with", {"--stems"});
    ArrangeInto("without", {});
    EXPECT_EQ(ReadFile(folder_.File("with/Out_song.wav")), ReadFile(folder_.File("without/Out_song.wav")));
    EXPECT_EQ(FilesIn("without").size(), 4U);
}

TEST_F(ArrangeSound, OnlyTheVoicesOfTheStyleHaveStems) {
    SingSoftly();
    const JsonValue json = ArrangeToJson({"--stems", "--style", "organum", "-o", "out"});
    EXPECT_EQ(FilesIn("out"),
              (std::set<std::string>{"Out_song.wav", kStems[0], kStems[1], "Out_song.mid", "Out_song.svg"}));
    EXPECT_THAT(json["files"].get<std::vector<std::string>>(),
                ElementsAre("out/Out_song.wav", "out/Out_song_orange.wav", "out/Out_song_red.wav",
                            "out/Out_song.mid", "out/Out_song.svg"));
    std::vector<bool> heard;
    for (const JsonValue& voice : json["settings"]["voices"]) heard.push_back(voice["heard"].get<bool>());
    EXPECT_THAT(heard, ElementsAre(true, true, false, false));
}

TEST_F(ArrangeSound, AMutedVoiceIsSilentInItsStemAndMissingInTheMix) {
    SingSoftly();
    ArrangeInto("muted", {"--stems", "--voice", "orange:mute", "--voice", "2:mute", "--voice", "3:mute"});
    const WavSound red = Read(std::string("muted/") + kStems[1]);
    EXPECT_FALSE(IsSilent(red));
    EXPECT_EQ(LargestDifference(red, Read("muted/Out_song.wav")), 0);
    for (const std::size_t voice : {0U, 2U, 3U})
        EXPECT_TRUE(IsSilent(Read(std::string("muted/") + kStems[voice]))) << voice;
}

TEST_F(ArrangeSound, ASoloVoiceIsHeardAloneThoughItIsMuted) {
    SingSoftly();
    ArrangeInto("solo", {"--stems", "--voice", "0:solo", "--voice", "green:solo,mute"});
    const WavSound green = Read(std::string("solo/") + kStems[3]);
    EXPECT_FALSE(IsSilent(green));
    EXPECT_EQ(LargestDifference(green, Read("solo/Out_song.wav")), 0);
    for (const std::size_t voice : {0U, 1U, 2U})
        EXPECT_TRUE(IsSilent(Read(std::string("solo/") + kStems[voice]))) << voice;
}

TEST_F(ArrangeSound, VolumeAndPanAreThoseOfTheStrip) {
    SingSoftly();
    const WavSound plain = MixOf({"--preset", "flat", "--voice", "1:solo"});
    EXPECT_EQ(plain.sides[0], plain.sides[1]);
    const WavSound half = MixOf({"--preset", "flat", "--voice", "1:solo,vol=0.5"});
    const WavSound left = MixOf({"--preset", "flat", "--voice", "1:solo,pan=-1"});
    ASSERT_EQ(half.Frames(), plain.Frames());
    ASSERT_EQ(left.Frames(), plain.Frames());
    EXPECT_GT(plain.Peak(0), 2000);
    EXPECT_EQ(left.Peak(1), 0);
    for (std::size_t i = 0; i < plain.Frames(); ++i) {
        // Roundings of half a step: that of the other file, and that of this one times its factor.
        ASSERT_NEAR(half.sides[1][i], 0.5 * plain.sides[1][i], 0.76) << i;
        ASSERT_NEAR(left.sides[0][i], std::sqrt(2.0) * plain.sides[0][i], 1.21) << i;
    }
    EXPECT_TRUE(IsSilent(MixOf({"--voice", "1:solo,vol=0"})));
}

TEST_F(ArrangeSound, ADelayComesInMilliseconds) {
    SingSoftly();
    const WavSound plain = MixOf({"--voice", "1:solo"});
    const WavSound late = MixOf({"--voice", "1:solo,delay=100"});
    ASSERT_EQ(late.Frames(), plain.Frames());
    EXPECT_GT(plain.Peak(0), 500);
    // The last blocks, for which the recording has no more, are silent at once: a few of the longest periods.
    for (std::size_t i = 4410; i + 4096 < plain.Frames(); ++i)
        ASSERT_EQ(late.sides[0][i], plain.sides[0][i - 4410]) << i;
}

TEST_F(ArrangeSound, ThePresetsPlaceTheVoices) {
    SingSoftly();
    ArrangeInto("usual", {"--stems"});
    ArrangeInto("flat", {"--stems", "--preset", "flat"});
    const auto balance = [&](const std::string& name) {
        const WavSound sound = Read(name);
        return static_cast<double>(sound.Peak(1)) / sound.Peak(0);
    };
    // Right to left, from the law of equal power; the peaks are rounded to a step in some thousand.
    EXPECT_NEAR(balance(std::string("usual/") + kStems[0]), std::sqrt(0.9 / 1.1), 2e-3);
    EXPECT_NEAR(balance(std::string("usual/") + kStems[1]), std::sqrt(0.1 / 1.9), 2e-3);
    EXPECT_NEAR(1 / balance(std::string("usual/") + kStems[2]), std::sqrt(0.1 / 1.9), 2e-3);
    for (const char* stem : kStems) EXPECT_EQ(balance(std::string("flat/") + stem), 1.0) << stem;
}

TEST_F(ArrangeSound, TransposingAndTuningMoveThePitch) {
    SingSteadily();
    const std::vector<std::string> lead = {"--voice", "0:solo"};
    const double plain = FrequencyOf(MixOf(lead), 180, 260);
    EXPECT_NEAR(Cents(plain, 220), 0, 5); // the measure's own error and the singer's tuning as found
    const double fifth = FrequencyOf(MixOf({"--voice", "0:solo", "--transpose", "7"}), 280, 380);
    EXPECT_NEAR(Cents(fifth, plain), 700, 5);
    const double octave = FrequencyOf(MixOf({"--voice", "0:solo", "--transpose", "-12"}), 90, 130);
    EXPECT_NEAR(Cents(octave, plain), -1200, 5);
    const double higher = FrequencyOf(MixOf({"--voice", "0:solo", "--tuning", "466.16"}), 180, 260);
    EXPECT_NEAR(Cents(higher, plain), 100, 6); // from 440 Hz; the singer's tuning is found to a cent
}

TEST_F(ArrangeSound, SpeedChangesTheLengthAndNotThePitch) {
    SingSteadily();
    const std::string lead = "0:solo,drift=0"; // the singer's own drift would be met at other places
    const WavSound plain = MixOf({"--voice", lead});
    const double pitch = FrequencyOf(plain, 180, 260);
    for (const auto& [text, speed] : {std::pair{"2", 2.0}, {"0.5", 0.5}, {"1.5", 1.5}}) {
        const WavSound sound = MixOf({"--voice", lead, "--speed", text});
        // The ends are whole blocks of 64 samples, and the last mark as above.
        EXPECT_NEAR(sound.Seconds(), plain.Seconds() / speed, 0.02) << text;
        EXPECT_NEAR(Cents(FrequencyOf(sound, 180, 260), pitch), 0, 5) << text;
    }
}

// What is heard at a place of the recording comes at that place divided by the speed, in sound and MIDI
// alike.
TEST_F(ArrangeSound, TheMidiFileFollowsTheSpeed) {
    SingSoftly();
    const auto onset = [&](const std::string& out, const std::string& speed) {
        ArrangeInto(out, {"--speed", speed, "--tempo", "60"});
        const auto notes = test::NotesByChannel(ReadFile(folder_.File(out + "/Out_song.mid")));
        return std::vector<double>{static_cast<double>(notes[0].at(0).second) / 384,
                                   static_cast<double>(notes[0].at(2).second) / 384};
    };
    const std::vector<double> plain = onset("plain", "1"); // a quarter note is a second
    const std::vector<double> twice = onset("twice", "2");
    EXPECT_GT(plain[1], 1.0);
    for (const std::size_t note : {0U, 1U}) EXPECT_NEAR(twice[note], plain[note] / 2, 0.005);
}

TEST_F(ArrangeSound, TheRegionIsAllThatIsHeard) {
    SingSoftly({60, 64, 67, 65, 64});
    const WavSound whole = MixOf({"--voice", "0:solo"});
    const WavSound part = MixOf({"--voice", "0:solo", "--region", "1:2.5"});
    EXPECT_NEAR(part.Seconds(), 1.5, 0.02); // it begins at a mark
    const WavSound slow = MixOf({"--voice", "0:solo", "--region", "1:2.5", "--speed", "0.5"});
    EXPECT_NEAR(slow.Seconds(), 3, 0.04);
    EXPECT_GT(whole.Seconds(), 4);
    EXPECT_EQ(MixOf({"--region", "100:"}).Frames(), 0U); // behind the end
}

TEST_F(ArrangeSound, AVoiceOptionTakesOneWordAndLeavesTheRecordings) {
    SingSoftly();
    const ProgramResult result = Arrange({"--voice", "0:mute", "song.wav", "--voice", "1:mute", "-o", "out"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("  Voices   orange:mute\n           red:mute\n"));
}

TEST_F(ArrangeSound, JsonTellsHowItSounds) {
    SingSoftly();
    const JsonValue usual = ArrangeToJson({"-o", "a"})["settings"];
    EXPECT_EQ(usual["preset"], "default");
    EXPECT_EQ(usual["speed"], 1.0);
    EXPECT_NEAR(Cents(usual["tuning"].get<double>(), 440), 0, 10); // the singer's, from three notes
    EXPECT_EQ(usual["voices"][1]["time"], 18.0);
    const JsonValue json = ArrangeToJson({"-o", "b", "--preset", "flat", "--voice", "red:shape=-3,mute",
                                          "--tuning", "432", "--speed", "0.75"});
    const JsonValue settings = json["settings"];
    EXPECT_EQ(settings["preset"], "flat");
    EXPECT_EQ(settings["speed"], 0.75);
    EXPECT_EQ(settings["tuning"], 432.0);
    ASSERT_EQ(settings["voices"].size(), 4U);
    EXPECT_EQ(settings["voices"][1],
              JsonValue::Parse(R"({"name":"red","vol":1.0,"pan":0.0,"delay":0.0,"shape":-3.0,"tune":0.0,
                                        "drift":100.0,"glide":50.0,"time":0.0,"mute":true,"solo":false,
                                        "heard":false})"));
}

TEST_F(ArrangeSound, ResultsOfAnEarlierRunAreLeftAndTold) {
    SingSoftly();
    ArrangeInto("out", {"--stems"});
    const std::string green = ReadFile(folder_.File("out/Out_song_green.wav"));
    const ProgramResult result = Arrange({"song.wav", "-o", "out", "--stems", "--style", "2"});
    EXPECT_THAT(result.out, HasSubstr("\n  Left as was  out/Out_song_blue.wav\n"
                                      "               out/Out_song_green.wav\n"));
    EXPECT_EQ(ReadFile(folder_.File("out/Out_song_green.wav")), green);
    const JsonValue json = ArrangeToJson({"-o", "out", "--style", "3", "--stems"});
    EXPECT_THAT(json["oldFiles"].get<std::vector<std::string>>(), ElementsAre("out/Out_song_chords.mid"));
}

TEST_F(ArrangeSound, SilenceStaysSilent) {
    ASSERT_TRUE(test::WriteWav(folder_.File("song.wav"), test::Silence(1.0, test::SingerSettings{})));
    ArrangeInto("out", {"--stems"});
    for (const char* name : {"out/Out_song.wav", "out/Out_song_green.wav"}) {
        const WavSound sound = Read(name);
        EXPECT_EQ(sound.channels, 2U);
        EXPECT_EQ(sound.Peak(0), 0);
        EXPECT_EQ(sound.Peak(1), 0);
    }
}

TEST_F(ArrangeSound, ASoundFileThatCannotBeWrittenIsKnownAtOnce) {
    SingSoftly();
    for (const char* name : {"Out_song.wav", kStems[2]}) {
        const std::string out = std::string("out_") + name;
        std::filesystem::create_directories(folder_.File(out) / name); // in the way of the file
        const ProgramResult result = Arrange({"song.wav", "--stems", "-o", out});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, "sonorelle: " + out + "/" + name + ": Could not write file!\n");
        EXPECT_EQ(FilesIn(out), std::set<std::string>{name});
    }
    EXPECT_FALSE(std::filesystem::exists(folder_.File("song.wav.kva"))); // before the analysis
}

TEST_F(ArrangeSound, AFullDiskLeavesTheOldFiles) {
    SingSoftly();
    std::filesystem::create_directories(folder_.File("out"));
    WriteFile(folder_.File("out/Out_song.wav"), "old");
    ProgramResult result;
    {
        const FileSizeLimit limit(100000); // less than the sound, more than any other result
        result = Arrange({"song.wav", "--stems", "--no-cache", "-o", "out"});
    }
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "sonorelle: out/Out_song.wav: Could not write file!\n");
    EXPECT_EQ(FilesIn("out"), std::set<std::string>{"Out_song.wav"});
    EXPECT_EQ(ReadFile(folder_.File("out/Out_song.wav")), "old");
}

TEST_F(ArrangeSound, MoreThanAWavFileHoldsIsRefused) {
    // 125 s at a hundredth of the speed: 2.2 GB.
    ASSERT_TRUE(test::WriteWav(folder_.File("song.wav"), test::Silence(125, test::SingerSettings{})));
    const ProgramResult result = Arrange({"song.wav", "--no-cache", "--speed", "0.01", "-o", "out"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "sonorelle: out/Out_song.wav: At this speed the sound would be longer than a WAV "
                          "file can be!\n");
    EXPECT_TRUE(FilesIn("out").empty());
}

TEST_F(ArrangeSound, AProgressBarShowsTheRendering) {
    SingSoftly();
    const auto run = [&](std::vector<std::string> arguments) {
        return RunProgram(
            {.arguments = std::move(arguments), .folder = folder_.Path().string(), .errIsTerminal = true});
    };
    const ProgramResult shown = run({"arrange", "song.wav", "--speed", "0.5"});
    EXPECT_EQ(shown.exitCode, 0);
    EXPECT_THAT(shown.err, HasSubstr("\rRendering [####"));
    EXPECT_THAT(shown.err, HasSubstr("100%"));
    EXPECT_TRUE(shown.err.ends_with(" \r")); // and the line is clean again
    EXPECT_THAT(run({"arrange", "song.wav", "--quiet"}).err, Not(HasSubstr("Rendering")));
}

TEST_F(ArrangeSound, CancellingTheRenderingLeavesNothingBehind) {
    SingSoftly();
    ASSERT_EQ(Arrange({"song.wav", "-o", "other"}).exitCode, 0); // keeps the analysis
    WriteFile(folder_.File("Out_song_red.wav"), "old");
    // At a hundredth of the speed there is time enough to interrupt.
    const ProgramResult result =
        RunProgram({.arguments = {"arrange", "song.wav", "--stems", "--speed", "0.01"},
                    .folder = folder_.Path().string(),
                    .errIsTerminal = true,
                    .signalAtOutput = SIGINT,
                    .signalText = "Rendering"});
    EXPECT_EQ(result.exitCode, 130) << "signal " << result.signal;
    EXPECT_TRUE(result.err.ends_with(" \rsonorelle: song.wav: Cancelled.\r\n")) << result.err;
    EXPECT_EQ(FilesIn(""), (std::set<std::string>{"song.wav", "song.wav.kva", "other", "Out_song_red.wav"}));
    EXPECT_EQ(ReadFile(folder_.File("Out_song_red.wav")), "old");
}

} // namespace
} // namespace sonorelle
