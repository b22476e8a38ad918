#include "cli/arrange_command.h"

#include "cli/arrangement_files.h"
#include "harmony/styles.h"
#include "support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>

namespace sonorelle {
namespace {

using namespace ConsortierClassic;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

ArrangementSettings Settings(const ArrangeOptions& options) {
    ArrangementSettings settings;
    EXPECT_EQ(ReadSettings(options, settings), "");
    return settings;
}

std::string WhyWrong(const ArrangeOptions& options) {
    ArrangementSettings settings;
    return ReadSettings(options, settings);
}

using Member = std::optional<std::string> ArrangeOptions::*;

std::string WhyWrong(Member option, const char* text) {
    ArrangeOptions options;
    options.*option = text;
    return WhyWrong(options);
}

TEST(ReadSettings, WithoutOptionsGivesTheUsualOnes) {
    const ArrangementSettings settings = Settings({});
    EXPECT_EQ(settings.style, kStyleIntelligent);
    EXPECT_EQ(settings.arrangement, kFourVoices);
    EXPECT_EQ(settings.root, std::nullopt);
    EXPECT_EQ(settings.scale, std::nullopt);
    EXPECT_EQ(settings.harmonyScale, std::nullopt);
    EXPECT_TRUE(settings.snap);
    EXPECT_EQ(settings.voiceRange, 1);
    EXPECT_EQ(settings.spread, 0.6F);
    EXPECT_THAT(settings.intervals, ElementsAre(0, -2, 2, 5));
    EXPECT_EQ(settings.transpose, 0);
    EXPECT_EQ(settings.tempo, 120.0F);
    EXPECT_FALSE(settings.region.has_value());
}

TEST(ReadSettings, AStyleOfTheListIsAStyleAndAnArrangementOfTheChoir) {
    ArrangeOptions options;
    const std::pair<std::int32_t, std::int32_t> codes[] = {
        {kStyleIntelligent, 0}, {kStyleIntelligent, 1}, {kStyleIntelligent, 2}, {kStyleBlock, 0},
        {kStyleFauxbourdon, 0}, {kStyleOrganum, 0},     {kStyleParallel, 0},    {kStyleParallel, 1}};
    for (int position = 0; position < 8; ++position) {
        options.style = std::to_string(position);
        const ArrangementSettings settings = Settings(options);
        EXPECT_EQ(settings.style, codes[position].first) << position;
        EXPECT_EQ(settings.arrangement, codes[position].second) << position;
    }
    options.style = "block";
    options.arrangement = "Shearing Intelligent";
    EXPECT_EQ(Settings(options).arrangement, kShearingIntelligent);
    options.style = "organum";
    options.arrangement = "6";
    EXPECT_EQ(Settings(options).arrangement, kOctaveAround);
}

TEST(ReadSettings, ReadsEveryOption) {
    const std::pair<Member, const char*> texts[] = {
        {&ArrangeOptions::style, "parallel manual 4 voices"},
        {&ArrangeOptions::root, "Db"},
        {&ArrangeOptions::scale, "aeolic minor"},
        {&ArrangeOptions::harmonyScale, "11"},
        {&ArrangeOptions::snap, "off"},
        {&ArrangeOptions::range, "3"},
        {&ArrangeOptions::spread, "0.25"},
        {&ArrangeOptions::intervals, "-7, down third,0,+7"},
        {&ArrangeOptions::transpose, "-24"},
        {&ArrangeOptions::tempo, "93.5"},
        {&ArrangeOptions::region, "1.5:2.25"},
    };
    ArrangeOptions options;
    for (const auto& [option, text] : texts) options.*option = text;
    const ArrangementSettings settings = Settings(options);
    EXPECT_EQ(settings.root, 1);
    EXPECT_EQ(settings.scale, 5);
    EXPECT_EQ(settings.harmonyScale, 11);
    EXPECT_FALSE(settings.snap);
    EXPECT_EQ(settings.voiceRange, 3);
    EXPECT_EQ(settings.spread, 0.25F);
    EXPECT_THAT(settings.intervals, ElementsAre(-7, -2, 0, 7));
    EXPECT_EQ(settings.transpose, -24);
    EXPECT_EQ(settings.tempo, 93.5F);
    ASSERT_TRUE(settings.region.has_value());
    EXPECT_EQ(settings.region->startSeconds, 1.5);
    EXPECT_EQ(settings.region->endSeconds, 2.25);
}

TEST(ReadSettings, ARegionMayLeaveOutEitherEnd) {
    ArrangeOptions options;
    options.region = ":2";
    EXPECT_EQ(Settings(options).region->startSeconds, 0);
    EXPECT_EQ(Settings(options).region->endSeconds, 2.0);
    options.region = "3:";
    EXPECT_EQ(Settings(options).region->startSeconds, 3);
    EXPECT_EQ(Settings(options).region->endSeconds, std::nullopt);
}

TEST(ReadSettings, NoMoreVoicesLieAboveTheMelodyThanThereAre) {
    for (const auto& [style, most] : {std::pair{"0", "3"}, {"1", "2"}, {"2", "1"}, {"5", "3"}}) {
        ArrangeOptions options;
        options.style = style;
        options.range = most;
        EXPECT_EQ(WhyWrong(options), "") << style;
        options.range = std::to_string(std::stoi(most) + 1);
        EXPECT_EQ(WhyWrong(options), "--range: '" + *options.range + "' is not allowed; allowed: 0 to " +
                                         most + " harmony voices above the melody");
    }
}

TEST(ReadSettings, TellsWhatIsWrongAndWhatIsAllowed) {
    EXPECT_EQ(
        WhyWrong(&ArrangeOptions::style, "choir"),
        "--style: 'choir' is not allowed; allowed: 0 to 7, or Intelligent 4 Voices, Intelligent 3 Voices, "
        "Intelligent 2 Voices, Block Chord 4 Voices, Fauxbourdon 3 Voices, Organum 2/3 Voices, Parallel "
        "manual 4 Voices, Parallel manual 2 Voices");
    EXPECT_EQ(WhyWrong(&ArrangeOptions::arrangement, "0"),
              "--arrangement: the style Intelligent 4 Voices has none to choose from");
    EXPECT_EQ(WhyWrong(&ArrangeOptions::root, "12"),
              "--root: '12' is not allowed; allowed: a note such as C, C# or Db, or 0 (C) to 11 (B)");
    EXPECT_EQ(WhyWrong(&ArrangeOptions::snap, "yes"), "--snap: 'yes' is not allowed; allowed: on, off");
    EXPECT_EQ(WhyWrong(&ArrangeOptions::spread, "1.01"),
              "--spread: '1.01' is not allowed; allowed: 0 (close) to 1 (wide)");
    EXPECT_EQ(WhyWrong(&ArrangeOptions::transpose, "25"),
              "--transpose: '25' is not allowed; allowed: -24 to +24 semitones");
    EXPECT_EQ(WhyWrong(&ArrangeOptions::tempo, "999"),
              "--tempo: '999' is not allowed; allowed: 4 to 998 quarter notes per minute");
    EXPECT_EQ(
        WhyWrong(&ArrangeOptions::region, "2"),
        "--region: '2' is not allowed; allowed: START:END in seconds, the start from 0 on and before the "
        "end; either may be left out");
    EXPECT_THAT(WhyWrong(&ArrangeOptions::scale, "11"),
                StartsWith("--scale: '11' is not allowed; allowed: 0 to 10, or Major, Dorian, "));
    EXPECT_THAT(WhyWrong(&ArrangeOptions::harmonyScale, "12"), HasSubstr("or 11 for all twelve tones"));
    EXPECT_THAT(WhyWrong(&ArrangeOptions::intervals, "1"), HasSubstr("-7 to 7, or Down Octave, "));
}

TEST(ReadSettings, RefusesWhatLiesJustBeyondALimitOrIsNoValue) {
    const std::pair<Member, std::vector<const char*>> wrong[] = {
        {&ArrangeOptions::style, {"", "8", "-1", "intelligent"}},
        {&ArrangeOptions::root, {"", "-1", "H"}},
        {&ArrangeOptions::scale, {"", "-1", "minor"}},
        {&ArrangeOptions::harmonyScale, {"", "-1", "none"}},
        {&ArrangeOptions::snap, {"", "ON", "1"}},
        {&ArrangeOptions::range, {"", "-1", "4", "1.5", "one"}},
        {&ArrangeOptions::spread, {"", "-0.001", "nan", "inf", "0,5"}},
        {&ArrangeOptions::intervals, {"", "0,0,0", "0,0,0,0,0", "0,0,0,8", "-8,0,0,0", "0,,0,0", "0,0,0,"}},
        {&ArrangeOptions::transpose, {"", "-25", "0.5", "99999999999"}},
        {&ArrangeOptions::tempo, {"", "0", "-120", "3.9", "nan"}},
        {&ArrangeOptions::region, {"", "2:1", "2:2", "-1:2", "a:b", "0:nan", "1:2:3"}},
    };
    for (const auto& [option, texts] : wrong)
        for (const char* text : texts) EXPECT_NE(WhyWrong(option, text), "") << "'" << text << "'";
    ArrangeOptions options;
    options.style = "organum";
    options.arrangement = "7";
    EXPECT_THAT(WhyWrong(options), HasSubstr("0 to 6, or Fourth Above, "));
}

TEST(FindWrongUse, OfArrangeWantsRecordingsWithResultsOfTheirOwn) {
    ArrangeOptions options;
    EXPECT_EQ(FindWrongUse(options, Settings(options)), "FILE is required");
    options.list = true;
    EXPECT_EQ(FindWrongUse(options, Settings(options)), "");
    options.list = false;
    options.files = {"a/song.wav", "b/song.wav"};
    EXPECT_EQ(FindWrongUse(options, Settings(options)),
              "b/song.wav: the results of another recording would have the same names");
    options.files = {"a/song.wav", "b/tune.wav"};
    EXPECT_EQ(FindWrongUse(options, Settings(options)), "");
    options.folder = "";
    EXPECT_EQ(FindWrongUse(options, Settings(options)), "--output: the folder has no name");
}

TEST(FindWrongUse, OfArrangeKeepsRecordingsFromBeingReplaced) {
    test::TemporaryFolder folder;
    const std::string recording = folder.File("song.wav").string();
    std::ofstream(recording) << "x";
    std::filesystem::create_symlink(recording, folder.File("Out_song.mid"));
    ArrangeOptions options;
    options.files = {recording};
    options.folder = folder.Path().string();
    EXPECT_THAT(FindWrongUse(options, Settings(options)),
                ::testing::EndsWith("Out_song.mid: would replace the recording"));
}

TEST(FindWrongUse, OfArrangeKeepsRecordingsFromBeingReplacedBySound) {
    test::TemporaryFolder folder;
    const std::string recording = folder.File("Out_song.wav").string();
    const std::string stem = folder.File("Out_song_red.wav").string();
    ArrangeOptions options;
    options.folder = folder.Path().string();
    for (const std::string& path : {recording, stem}) {
        std::ofstream(path) << "x";
        options.files = {folder.File("song.wav").string(), path};
        options.stems = path == stem;
        EXPECT_EQ(FindWrongUse(options, Settings(options)), path + ": would replace the recording");
    }
    options.files = {stem}; // its own results have names of their own
    EXPECT_EQ(FindWrongUse(options, Settings(options)), "");
    options.files = {folder.File("song.wav").string(), stem};
    options.stems = false; // nobody writes it
    EXPECT_EQ(FindWrongUse(options, Settings(options)), "");
}

TEST(FindWrongUse, OfArrangeTellsAVoiceFromARecordingOfThatName) {
    const std::string sameName = ": the results of another recording would have the same names";
    ArrangeOptions options;
    ArrangementSettings settings = Settings(options);
    options.files = {"song.wav", "song_red.wav"};
    EXPECT_EQ(FindWrongUse(options, settings), "");
    options.stems = true;
    EXPECT_EQ(FindWrongUse(options, settings), "song_red.wav" + sameName);
    options.files = {"song.wav", "song_blue.wav"};
    EXPECT_EQ(FindWrongUse(options, settings), "song_blue.wav" + sameName);
    settings.arrangement = kTwoVoices; // no blue one
    EXPECT_EQ(FindWrongUse(options, settings), "");
    // "Out_song_chords.mid" would be the chords of one and the voices of the other.
    options.files = {"song.wav", "song_chords.wav"};
    EXPECT_EQ(FindWrongUse(options, settings), "song_chords.wav" + sameName);
    settings.style = kStyleBlock; // goes without chords
    settings.arrangement = kBlock;
    EXPECT_EQ(FindWrongUse(options, settings), "");
}

TEST(ArrangementFiles, AreNamedAfterTheRecording) {
    const ArrangementFiles files("out", "a/take.1.wav");
    EXPECT_EQ(files.mix, "out/Out_take.1.wav");
    EXPECT_THAT(files.stems, ElementsAre("out/Out_take.1_orange.wav", "out/Out_take.1_red.wav",
                                         "out/Out_take.1_blue.wav", "out/Out_take.1_green.wav"));
    EXPECT_EQ(files.voices, "out/Out_take.1.mid");
    EXPECT_EQ(files.chords, "out/Out_take.1_chords.mid");
    EXPECT_EQ(files.picture, "out/Out_take.1.svg");
    EXPECT_EQ(ArrangementFiles(".", "/x/song").voices, "Out_song.mid");
}

} // namespace
} // namespace sonorelle
