// What is made of an arrangement as plain values: chord names, JSON, summary.
#include "cli/arrangement_report.h"

#include "cli/arrangement_json.h"
#include "cli/arrangement_summary.h"
#include "cli/json_value.h"
#include "cli/sample_arrangement.h"
#include "harmony/scales.h"
#include "harmony/styles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace sonorelle {
namespace {

using namespace ConsortierClassic;
using test::JsonValue;
using test::SampleArrangement;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(ChordText, IsSpelledAsTheKeyAndTransposed) {
    ArrangementReport report = SampleArrangement(); // A major
    const ChordRecord halfDiminished = {8, 4, kNoTriad, kHalfDiminished};
    EXPECT_EQ(ChordText(report, {1, 3, kMinorTriad, kNoTetrad}), "c#");
    EXPECT_EQ(ChordText(report, halfDiminished), "g# m7b5");
    EXPECT_EQ(ChordText(report, {}), "--");
    report.settings.transpose = -1; // Ab major
    EXPECT_EQ(ChordText(report, {1, 3, kMinorTriad, kNoTetrad}), "c");
    EXPECT_EQ(ChordText(report, {2, 3, kMajorTriad, kNoTetrad}), "Db");
    EXPECT_EQ(ChordText(report, {0, 3, kMajorTriad, kNoTetrad}), "B");
    report.settings.harmonyScale = kChromaticScale; // has no signature: the melody's
    EXPECT_EQ(ChordText(report, {2, 3, kMajorTriad, kNoTetrad}), "Db");
}

TEST(FormatArrangementJson, HasExactlyTheseFieldsInThisOrder) {
    ArrangementReport report = SampleArrangement();
    report.notes.erase(report.notes.begin(), report.notes.begin() + 2);
    report.settings.preset = kFlatPreset;
    report.settings.voices = StripsOfPreset(kFlatPreset);
    report.settings.voices[1] = {0.3F, -0.5F, 1, -2, 3, 4, 5, 6, true, false};
    report.settings.heard[1] = false;
    report.oldFiles = {"out/Out_song_red.wav"};
    report.limitedFrames = 7;
    EXPECT_EQ(
        FormatArrangementJson(report),
        "{\"file\":\"song.wav\",\"sampleRate\":44100,\"channels\":1,\"frames\":1323000,\"cache\":\"written\","
        "\"markCount\":5,\"tuningOffset\":0.05,\"tuningHz\":441.27258,\"key\":9,\"keyName\":\"A major\","
        "\"settings\":{\"listPosition\":0,\"style\":0,\"styleName\":\"Intelligent 4 Voices\","
        "\"arrangement\":0,\"arrangementName\":\"\",\"root\":9,\"rootName\":\"A\",\"scale\":0,"
        "\"scaleName\":\"Major\",\"harmonyScale\":0,\"harmonyScaleName\":\"Major\",\"snap\":true,\"range\":1,"
        "\"spread\":0.6,\"intervals\":[0,-2,2,5],\"transpose\":0,\"tempo\":120,"
        "\"region\":{\"start\":0,\"end\":1323000},\"speed\":1,\"tuning\":441.27258,\"preset\":\"flat\","
        "\"voices\":[{\"name\":\"orange\",\"vol\":1,\"pan\":0,\"delay\":0,\"shape\":0,\"tune\":0,\"drift\":"
        "100,"
        "\"glide\":50,\"time\":0,\"mute\":false,\"solo\":false,\"heard\":true},"
        "{\"name\":\"red\",\"vol\":0.3,\"pan\":-0.5,\"delay\":1,\"shape\":-2,\"tune\":3,\"drift\":4,"
        "\"glide\":5,\"time\":6,\"mute\":true,\"solo\":false,\"heard\":false},"
        "{\"name\":\"blue\",\"vol\":1,\"pan\":0,\"delay\":0,\"shape\":0,\"tune\":0,\"drift\":100,"
        "\"glide\":50,\"time\":0,\"mute\":false,\"solo\":false,\"heard\":true},"
        "{\"name\":\"green\",\"vol\":1,\"pan\":0,\"delay\":0,\"shape\":0,\"tune\":0,\"drift\":100,"
        "\"glide\":50,\"time\":0,\"mute\":false,\"solo\":false,\"heard\":true}]},\"voiceCount\":4,"
        "\"files\":[\"out/Out_song.wav\",\"out/Out_song.mid\",\"out/Out_song_chords.mid\","
        "\"out/Out_song.svg\"],\"limitedFrames\":7,\"oldFiles\":[\"out/Out_song_red.wav\"],"
        "\"notes\":[{\"pitch\":100.97,\"level\":0.03,\"length\":11025,\"start\":1102500,\"end\":1113525,"
        "\"firstFrame\":3,\"lastFrame\":4,\"chord\":{\"root\":6,\"noteCount\":4,\"triadType\":5,"
        "\"tetradType\":7,\"name\":\"f# m7\"},\"voices\":[100,54,-1,64],\"gains\":[1,1,0,0.5]}]}\n");
}

TEST(FormatArrangementJson, IsOneLineThatAParserReads) {
    ArrangementReport report = SampleArrangement();
    report.settings.snap = false;
    report.melody.file = "q\"uo\\te\n.wav";
    report.notes[0].gains[1] = std::nanf("");
    const std::string text = FormatArrangementJson(report);
    EXPECT_EQ(text.find('\n'), text.size() - 1);
    const JsonValue json = JsonValue::Parse(text);
    EXPECT_EQ(json["file"], report.melody.file);
    EXPECT_EQ(json["settings"]["snap"], false);
    EXPECT_EQ(json["notes"].size(), 3U);
    EXPECT_TRUE(json["notes"][0]["gains"][1].is_null());
}

TEST(FormatSummary, TellsKeyStyleNotesChordsAndFiles) {
    EXPECT_EQ(FormatSummary(SampleArrangement()), R"(song.wav
  Key      A Major (as found in the recording)
  Style    Intelligent 4 Voices
  Notes    3
  Chords   A  f# m7
  Written  out/Out_song.wav
           out/Out_song.mid
           out/Out_song_chords.mid
           out/Out_song.svg
)");
}

TEST(FormatSummary, TellsWhatIsNotAsUsual) {
    ArrangementReport report = SampleArrangement();
    report.hasChords = false;
    report.voiceCount = 2;
    report.settings.style = kStyleParallel;
    report.settings.arrangement = kParallelTwo;
    report.settings.root = 3;
    report.settings.harmonyScale = 7;
    report.settings.transpose = 2;
    report.settings.regionStart = 44100;
    report.settings.voices[0].solo = true;
    report.settings.voices[2].shape = -2.5F;
    report.settings.voices[2].mute = true;
    report.settings.speed = 0.5F;
    report.settings.tuning = 443;
    report.files = {"Out_song.mid", "Out\x1b_song.svg"};
    report.oldFiles = {"Out_song_blue.wav", "Out\x1b_song_red.wav"};
    EXPECT_EQ(FormatSummary(report), R"(song.wav
  Key          Eb Major (found: A Major)
  Harmony      Harmonic Minor
  Style        Parallel manual 2 Voices
  Intervals    Prime, Down Third
  Transposed   +2 semitones
  Speed        0.5 times as fast
  Tuning       443 Hz (found: 441.27 Hz)
  Voices       orange:solo
               blue:shape=-2.5,mute
  Region       1.000 to 30.000 s
  Notes        3
  Written      Out_song.mid
               Out\x1b_song.svg
  Left as was  Out_song_blue.wav
               Out\x1b_song_red.wav
)");
    report.settings.preset = kFlatPreset;
    report.settings.voices = StripsOfPreset(kFlatPreset);
    EXPECT_THAT(FormatSummary(report), HasSubstr("  Preset       flat\n  Region "));
    report.limitedFrames = 441;
    EXPECT_THAT(
        FormatSummary(report),
        HasSubstr("  Clipped      10.0 ms of the mix are cut off at full scale; lower the voices' vol\n"
                  "  Written "));
    report.limitedFrames = 0;
    report.melody.key = -1;
    EXPECT_THAT(FormatSummary(report), HasSubstr("Eb Major (none was found in the recording)"));
    report.settings.style = kStyleOrganum;
    report.settings.arrangement = kOctaveAround;
    EXPECT_THAT(FormatSummary(report), HasSubstr("Organum 2/3 Voices, Octave Around\n"));
}

TEST(FormatSummary, BreaksALongRowOfChords) {
    ArrangementReport report = SampleArrangement();
    report.notes.resize(60);
    for (std::size_t i = 0; i < report.notes.size(); ++i)
        report.notes[i].chord = {static_cast<std::int32_t>(i % 12), 3, kDiminishedTriad, kNoTetrad};
    const std::string text = FormatSummary(report);
    EXPECT_THAT(text, HasSubstr("\n           "));
    std::size_t longest = 0;
    for (std::size_t from = 0, to = 0; (to = text.find('\n', from)) != std::string::npos; from = to + 1)
        longest = std::max(longest, to - from);
    EXPECT_LE(longest, 79U);
}

TEST(FormatSummary, OfNothingHasNoChords) {
    ArrangementReport report = SampleArrangement();
    report.notes.clear();
    EXPECT_THAT(FormatSummary(report), HasSubstr("Notes    0\n"));
    EXPECT_THAT(FormatSummary(report), Not(HasSubstr("Chords")));
}

} // namespace
} // namespace sonorelle
