// The files are read back as a sequencer would read them. With a rate of 1000 Hz a frame is a millisecond,
// and at 120 quarter notes per minute 125 ms are exactly 96 ticks of 384 per quarter: such times come back
// without rounding.

#include "app/midi_export.h"

#include "formats/midi_reader.h"
#include "harmony/choir_driver_rig.h"
#include "platform/result_codes.h"
#include "support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

namespace sonorelle {
namespace {

using test::DriverRig;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kOn = 0x90;
constexpr int kOff = 0x80;
constexpr std::uint32_t kEighthSecond = 96; // ticks

struct NoteEvent {
    std::uint32_t tick = 0;
    int kind = 0;
    int channel = 0;
    int key = 0;
    int velocity = 0;
    bool operator==(const NoteEvent&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const NoteEvent& e) {
        return out << "{" << e.tick << (e.kind == kOn ? " on " : " off ") << e.channel << " " << e.key << " "
                   << e.velocity << "}";
    }
};

std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

NoteRecord Note(float pitch, std::int32_t start, std::int32_t end, float level = 1) {
    NoteRecord note;
    note.pitch = pitch;
    note.level = level;
    note.start = start;
    note.end = end;
    note.length = end - start;
    note.firstFrame = start / test::kFramesPerMark;
    note.lastFrame = end / test::kFramesPerMark;
    return note;
}

// Two notes of a quarter second in a whole one, at 1000 Hz.
std::vector<NoteRecord> TwoNotes() { return {Note(60, 250, 500), Note(62, 625, 875)}; }

class MidiExport : public ::testing::Test {
protected:
    void Load(std::vector<NoteRecord> notes) {
        rig_ = std::make_unique<DriverRig>(std::move(notes));
        rig_->RunInC();
        settings_.playStart = 0;
        settings_.playEnd = rig_->melody.Length();
        settings_.sampleRate = 1000;
    }
    void SetRow(std::int32_t note, const test::VoiceRow& row) {
        for (std::int32_t voice = 0; voice < 4; ++voice)
            rig_->driver.SetVoicePitch(note, voice, row[static_cast<std::size_t>(voice)]);
    }
    std::int32_t ChordsVoice() const { return rig_->driver.VoiceCount(); }
    std::int32_t Export(std::int32_t voice) {
        return CMidiExport(rig_->driver, settings_).ExportMidi(Path(), voice);
    }
    std::vector<NoteEvent> Exported(std::int32_t voice) {
        EXPECT_EQ(Export(voice), kOk);
        return NotesOfFile();
    }
    std::vector<NoteEvent> NotesOfFile() {
        const std::string bytes = ReadBytes(Path());
        read_ = CMidiReader(bytes).Read();
        std::vector<NoteEvent> notes;
        std::uint32_t tick = 0;
        for (const MidiRead::Event& event : read_.tracks.at(0)) {
            tick += event.delta;
            if (event.status < 0xF0)
                notes.push_back(
                    {tick, event.status & 0xF0, event.status & 0x0F, event.data[0], event.data[1]});
        }
        return notes;
    }
    // The bytes of the one event of a kind that stands at time 0.
    std::string Meta(int type) const {
        for (const MidiRead::Event& event : read_.tracks.at(0))
            if (event.status == 0xFF && event.metaType == type && event.delta == 0) return event.data;
        return "none";
    }
    std::string Path() const { return folder_.File("Out_song.mid").string(); }

    test::TemporaryFolder folder_;
    std::unique_ptr<DriverRig> rig_;
    MidiExportSettings settings_;
    MidiRead read_;
};

TEST_F(MidiExport, ARegionOverNoNoteHoldsTempoAndMetreAlone) {
    Load(TwoNotes());
    settings_.playStart = 510;
    settings_.playEnd = 600;
    for (const std::int32_t voice : {CMidiExport::kAllVoices, 0, ChordsVoice()}) {
        EXPECT_THAT(Exported(voice), IsEmpty());
        EXPECT_EQ(read_.format, 0);
        EXPECT_EQ(read_.division, 384);
        ASSERT_EQ(read_.tracks.size(), 1U);
        EXPECT_EQ(read_.tracks[0].size(), 3U);                 // with the end of the track
        EXPECT_EQ(Meta(0x51), std::string("\x07\xA1\x20", 3)); // 500000 microseconds
        EXPECT_EQ(Meta(0x58), std::string("\x04\x02\x24\x08", 4));
    }
}

TEST_F(MidiExport, ANoteThatStartsBeforeTheRegionGetsOnTimeZero) {
    Load(TwoNotes());
    SetRow(0, {60, -1, -1, -1});
    SetRow(1, {62, -1, -1, -1});
    settings_.playStart = 375;
    EXPECT_THAT(Exported(0),
                ElementsAre(NoteEvent{0, kOn, 0, 60, 127}, NoteEvent{kEighthSecond, kOff, 0, 60, 0},
                            NoteEvent{2 * kEighthSecond, kOn, 0, 62, 127},
                            NoteEvent{4 * kEighthSecond, kOff, 0, 62, 0}));
}

TEST_F(MidiExport, ANoteThatEndsBehindTheRegionEndsWithIt) {
    Load(TwoNotes());
    settings_.playEnd = 750;
    const std::vector<NoteEvent> notes = Exported(0);
    ASSERT_EQ(notes.size(), 4U);
    EXPECT_EQ(notes[2], (NoteEvent{5 * kEighthSecond, kOn, 0, 62, 127}));
    EXPECT_EQ(notes[3], (NoteEvent{6 * kEighthSecond, kOff, 0, 62, 0}));
}

TEST_F(MidiExport, TheRegionIsOpenAtBothEnds) {
    Load(TwoNotes());
    settings_.playStart = 500; // where the first note ends
    settings_.playEnd = 625;   // where the second begins
    EXPECT_THAT(Exported(0), IsEmpty());
    settings_.playStart = 499;
    settings_.playEnd = 626;
    EXPECT_EQ(Exported(0).size(), 4U);
}

TEST_F(MidiExport, ASingleNoteCountsFromItsVeryStart) {
    Load({Note(60, 250, 500)}); // which the look-up for the nearest note does not find
    settings_.playStart = 250;
    EXPECT_THAT(Exported(0),
                ElementsAre(NoteEvent{0, kOn, 0, 60, 127}, NoteEvent{2 * kEighthSecond, kOff, 0, 60, 0}));
}

TEST_F(MidiExport, EachVoiceHasTheChannelOfItsNumber) {
    Load({Note(60, 250, 500)});
    SetRow(0, {60, 48, 55, 64});
    const std::uint32_t on = 2 * kEighthSecond;
    const std::uint32_t off = 4 * kEighthSecond;
    EXPECT_THAT(Exported(CMidiExport::kAllVoices),
                ElementsAre(NoteEvent{on, kOn, 0, 60, 127}, NoteEvent{on, kOn, 1, 48, 127},
                            NoteEvent{on, kOn, 2, 55, 127}, NoteEvent{on, kOn, 3, 64, 127},
                            NoteEvent{off, kOff, 0, 60, 0}, NoteEvent{off, kOff, 1, 48, 0},
                            NoteEvent{off, kOff, 2, 55, 0}, NoteEvent{off, kOff, 3, 64, 0}));
    EXPECT_THAT(Exported(2), ElementsAre(NoteEvent{on, kOn, 2, 55, 127}, NoteEvent{off, kOff, 2, 55, 0}));
}

TEST_F(MidiExport, OnlyTheVoicesOfTheStyleAreWritten) {
    Load({Note(60, 250, 500)});
    rig_->driver.SetArrangement(ConsortierClassic::kTwoVoices);
    rig_->driver.Run();
    SetRow(0, {60, 48, 55, 64});
    std::vector<int> channels;
    for (const NoteEvent& note : Exported(CMidiExport::kAllVoices)) channels.push_back(note.channel);
    EXPECT_THAT(channels, ElementsAre(0, 1, 0, 1));
}

TEST_F(MidiExport, SilentVoicesAndKeysThatMidiDoesNotHaveAreNotWritten) {
    Load({Note(60, 250, 500)});
    SetRow(0, {60, -1, 128, 127});
    std::vector<int> keys;
    for (const NoteEvent& note : Exported(CMidiExport::kAllVoices)) keys.push_back(note.key);
    EXPECT_THAT(keys, ElementsAre(60, 127, 60, 127));

    settings_.transpose = 5; // a silent voice does not become key 4
    SetRow(0, {122, -1, 123, -5});
    keys.clear();
    for (const NoteEvent& note : Exported(CMidiExport::kAllVoices)) keys.push_back(note.key);
    EXPECT_THAT(keys, ElementsAre(127, 0, 127, 0));

    settings_.transpose = -61;
    SetRow(0, {60, -1, 61, 62});
    keys.clear();
    for (const NoteEvent& note : Exported(CMidiExport::kAllVoices)) keys.push_back(note.key);
    EXPECT_THAT(keys, ElementsAre(0, 1, 0, 1));
}

TEST_F(MidiExport, KeysAreTruncatedAfterTransposing) {
    Load({Note(60, 250, 500)});
    SetRow(0, {60, -1, -1, -1});
    settings_.transpose = 1.9F;
    EXPECT_EQ(Exported(0).at(0).key, 61);
    settings_.transpose = -1.9F; // 58.1
    EXPECT_EQ(Exported(0).at(0).key, 58);
    settings_.transpose = std::numeric_limits<float>::infinity();
    EXPECT_THAT(Exported(0), IsEmpty());
}

TEST_F(MidiExport, TimesAreTruncatedToMilliseconds) {
    // 125 ms are 5512.5 frames at 44.1 kHz: a frame before gives 124 ms, 95.2 ticks.
    Load({Note(60, 5512, 11026)});
    settings_.sampleRate = 44100;
    EXPECT_EQ(Exported(0).at(0).tick, 95U);
    Load({Note(60, 5513, 11026)});
    settings_.sampleRate = 44100;
    EXPECT_EQ(Exported(0).at(0).tick, 96U);
}

TEST_F(MidiExport, TheMelodyFollowsTheHostsTempo) {
    Load({Note(60, 250, 500)});
    settings_.hostTempo = 60;
    settings_.melodyTempo = 120;
    EXPECT_EQ(Exported(0).at(0).tick, kEighthSecond); // a quarter second of slow quarter notes
    EXPECT_EQ(Meta(0x51), std::string("\x0F\x42\x40", 3));
    settings_.syncTempoToHost = true;
    EXPECT_EQ(Exported(0).at(0).tick, 2 * kEighthSecond); // the same place in the metre as at 120
    EXPECT_EQ(Exported(0).at(1).tick, 4 * kEighthSecond);
}

TEST_F(MidiExport, AnUnknownTempoIs120) {
    Load({Note(60, 250, 500)});
    for (const float unknown : {-1.0F, 0.0F, std::nanf(""), std::numeric_limits<float>::infinity()}) {
        settings_.hostTempo = unknown;
        EXPECT_EQ(Exported(0).at(0).tick, 2 * kEighthSecond) << unknown;
        EXPECT_EQ(Meta(0x51), std::string("\x07\xA1\x20", 3)) << unknown;
        settings_.syncTempoToHost = true; // and a melody without tempo has the host's
        settings_.melodyTempo = unknown;
        EXPECT_EQ(Exported(0).at(0).tick, 2 * kEighthSecond) << unknown;
    }
}

TEST_F(MidiExport, TheMetreIsTheHosts) {
    Load({});
    settings_.timeSigNumerator = 6;
    settings_.timeSigDenominator = 8;
    Exported(0);
    EXPECT_EQ(Meta(0x58), std::string("\x06\x03\x24\x08", 4));
    settings_.timeSigNumerator = 0;
    settings_.timeSigDenominator = -3;
    Exported(0);
    EXPECT_EQ(Meta(0x58), std::string("\x04\x02\x24\x08", 4));
}

TEST_F(MidiExport, VelocityFollowsTheNotesLevel) {
    Load({Note(60, 250, 500, std::exp(-3.45F)), Note(62, 625, 875, 0.0F)});
    const std::vector<NoteEvent> notes = Exported(0);
    ASSERT_EQ(notes.size(), 4U);
    EXPECT_EQ(notes[0].velocity, 63); // half of the way down to exp(-6.9), truncated
    EXPECT_EQ(notes[2].velocity, 0);
}

TEST(MidiVelocityFromLevel, FallsWithTheLogarithmOfTheLevel) {
    EXPECT_EQ(MidiVelocityFromLevel(1.0F), 127);
    EXPECT_EQ(MidiVelocityFromLevel(0.5F), 114);  // 127 - 127 x 0.6931 / 6.9 = 114.24
    EXPECT_EQ(MidiVelocityFromLevel(0.1F), 84);   // 84.62
    EXPECT_EQ(MidiVelocityFromLevel(0.01F), 42);  // 42.24
    EXPECT_EQ(MidiVelocityFromLevel(0.0011F), 1); // 127 - 127 x 6.8124 / 6.9 = 1.61
    EXPECT_EQ(MidiVelocityFromLevel(0.001F), 0);  // -0.14
    EXPECT_EQ(MidiVelocityFromLevel(2.0F), 127);
    EXPECT_EQ(MidiVelocityFromLevel(0.0F), 0);
    EXPECT_EQ(MidiVelocityFromLevel(-1.0F), 0);
    EXPECT_EQ(MidiVelocityFromLevel(std::nanf("")), 0);
    EXPECT_EQ(MidiVelocityFromLevel(std::numeric_limits<float>::infinity()), 127);
}

std::vector<NoteRecord> FourNotes() {
    return {Note(60, 125, 250), Note(60, 250, 375), Note(65, 375, 500), Note(67, 500, 750)};
}

TEST_F(MidiExport, ChordsChangeWhereTheHarmonyDoesAndTheLastOnesEnd) {
    Load(FourNotes());
    rig_->driver.SetChord(0, test::kCMajor);
    rig_->driver.SetChord(1, test::kCMajor);
    rig_->driver.SetChord(2, test::kFMajor);
    rig_->driver.SetChord(3, test::kFMajor);
    const std::uint32_t first = kEighthSecond;
    const std::uint32_t change = 3 * kEighthSecond;
    const std::uint32_t last = 6 * kEighthSecond;
    EXPECT_THAT(Exported(ChordsVoice()),
                ElementsAre(NoteEvent{first, kOn, 0, 48, 127}, NoteEvent{first, kOn, 0, 52, 127},
                            NoteEvent{first, kOn, 0, 55, 127}, // C, E, G below middle C
                            NoteEvent{change, kOff, 0, 48, 0}, NoteEvent{change, kOn, 0, 53, 127},
                            NoteEvent{change, kOff, 0, 52, 0}, NoteEvent{change, kOn, 0, 57, 127},
                            NoteEvent{change, kOff, 0, 55, 0}, NoteEvent{change, kOn, 0, 60, 127},
                            NoteEvent{last, kOff, 0, 53, 0}, NoteEvent{last, kOff, 0, 57, 0},
                            NoteEvent{last, kOff, 0, 60, 0}));
}

TEST_F(MidiExport, AKeyThatMovesDownAPlaceIsStruckAgainAndEndedAtOnce) {
    Load({Note(60, 125, 250), Note(64, 250, 375)});
    const test::ChordRecord eMinor = {4, 3, ConsortierClassic::kMinorTriad, ConsortierClassic::kNoTetrad};
    rig_->driver.SetChord(0, test::kCMajor);
    rig_->driver.SetChord(1, eMinor);
    const std::vector<NoteEvent> notes = Exported(ChordsVoice());
    ASSERT_EQ(notes.size(), 12U);
    const std::uint32_t change = 2 * kEighthSecond;
    EXPECT_EQ(notes[4], (NoteEvent{change, kOn, 0, 52, 127})); // E, now the root
    EXPECT_EQ(notes[5], (NoteEvent{change, kOff, 0, 52, 0}));  // and the end of E as the third of before
}

TEST_F(MidiExport, AChordOfFourNotesHasFourKeysAndNoChordHasNone) {
    Load(FourNotes());
    const test::ChordRecord seventh = {7, 4, ConsortierClassic::kNoTriad,
                                       ConsortierClassic::kDominantSeventh};
    rig_->driver.SetChord(0, seventh);
    for (std::int32_t note = 1; note < 4; ++note) rig_->driver.SetChord(note, test::kNoChord);
    const std::uint32_t on = kEighthSecond;
    const std::uint32_t off = 2 * kEighthSecond;
    EXPECT_THAT(Exported(ChordsVoice()),
                ElementsAre(NoteEvent{on, kOn, 0, 55, 127}, NoteEvent{on, kOn, 0, 59, 127},
                            NoteEvent{on, kOn, 0, 62, 127}, NoteEvent{on, kOn, 0, 65, 127},
                            NoteEvent{off, kOff, 0, 55, 0}, NoteEvent{off, kOff, 0, 59, 0},
                            NoteEvent{off, kOff, 0, 62, 0}, NoteEvent{off, kOff, 0, 65, 0}));
}

TEST_F(MidiExport, AnotherSeventhOnTheSameRootIsAnotherChord) {
    Load({Note(60, 125, 250), Note(64, 250, 375)});
    using namespace ConsortierClassic;
    rig_->driver.SetChord(0, {0, 4, kNoTriad, kMajorSeventh});
    rig_->driver.SetChord(1, {0, 4, kNoTriad, kDominantSeventh});
    const std::vector<NoteEvent> notes = Exported(ChordsVoice());
    ASSERT_EQ(notes.size(), 16U);
    EXPECT_EQ(notes[10], (NoteEvent{2 * kEighthSecond, kOff, 0, 59, 0}));
    EXPECT_EQ(notes[11], (NoteEvent{2 * kEighthSecond, kOn, 0, 58, 127}));
}

TEST_F(MidiExport, ChordsAreTransposedWithinTheirOctave) {
    Load({Note(60, 125, 250)});
    rig_->driver.SetChord(0, test::kGMajor);
    const std::pair<float, int> roots[] = {{6.9F, 49}, {-8.0F, 59}, {-30.0F, 49}, {24.0F, 55}};
    for (const auto& [transpose, root] : roots) {
        settings_.transpose = transpose;
        EXPECT_EQ(Exported(ChordsVoice()).at(0).key, root) << transpose;
    }
}

TEST_F(MidiExport, ChordsOfARegionEndWithItsLastNote) {
    Load(FourNotes());
    for (std::int32_t note = 0; note < 4; ++note) rig_->driver.SetChord(note, test::kCMajor);
    settings_.playStart = 250;
    settings_.playEnd = 625;
    const std::vector<NoteEvent> notes = Exported(ChordsVoice());
    ASSERT_EQ(notes.size(), 6U);
    EXPECT_EQ(notes.front().tick, 0U);
    EXPECT_EQ(notes.back(), (NoteEvent{3 * kEighthSecond, kOff, 0, 55, 0}));
}

TEST_F(MidiExport, WhatIsPlayedLiveIsPassedBy) {
    Load({Note(60, 250, 500)});
    SetRow(0, {60, 48, 55, 64});
    rig_->driver.StartLive(true, false);
    const std::int32_t keys[CChoirDriver::kHeldKeys] = {71, 72, 73, 74, -1, -1, -1, -1};
    rig_->driver.NoteInput(keys, 300, 4);
    rig_->driver.UpdateLive(true, 300);
    const test::VoiceRow played = rig_->Voices(0, true);
    ASSERT_NE(played, (test::VoiceRow{60, 48, 55, 64}));
    std::vector<int> written;
    for (const NoteEvent& note : Exported(CMidiExport::kAllVoices))
        if (note.kind == kOn) written.push_back(note.key);
    EXPECT_THAT(written, ElementsAre(60, 48, 55, 64));
    EXPECT_EQ(rig_->Voices(0, true), played); // and sounds again afterwards

    EXPECT_EQ(CMidiExport(rig_->driver, settings_).ExportMidi("/nowhere/at/all.mid", 0), kCannotWrite);
    EXPECT_EQ(rig_->Voices(0, true), played); // also after a failure
}

TEST_F(MidiExport, ATriggerIsOneNoteOfTheRegionsLength) {
    Load({});
    settings_.playStart = 1000;
    settings_.playEnd = 3000;
    const CMidiExport exporter(rig_->driver, settings_);
    EXPECT_EQ(exporter.ExportTriggerMidi(Path(), 61), kOk);
    EXPECT_THAT(NotesOfFile(), ElementsAre(NoteEvent{0, kOn, 0, 61, 127}, NoteEvent{4 * 96, kOff, 0, 61, 0}));
    EXPECT_EQ(read_.division, 96); // two seconds are four quarter notes
    EXPECT_EQ(Meta(0x51), std::string("\x07\xA1\x20", 3));
    EXPECT_EQ(Meta(0x58), std::string("\x04\x02\x24\x08", 4));

    settings_.hostTempo = 120;
    settings_.melodyTempo = 60;
    settings_.syncTempoToHost = true;
    EXPECT_EQ(CMidiExport(rig_->driver, settings_).ExportTriggerMidi(Path(), 61), kOk);
    EXPECT_EQ(NotesOfFile().at(1).tick, 2U * 96);

    for (const std::int32_t noKey : {-1, 128, std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(exporter.ExportTriggerMidi(Path(), noKey), kOk);
        EXPECT_THAT(NotesOfFile(), IsEmpty());
    }
}

TEST_F(MidiExport, AFileThatCannotBeWrittenIsToldAndLeavesNothing) {
    Load(TwoNotes());
    const std::filesystem::path missing = folder_.File("missing");
    const CMidiExport exporter(rig_->driver, settings_);
    EXPECT_EQ(exporter.ExportMidi((missing / "a.mid").string(), CMidiExport::kAllVoices), kCannotWrite);
    EXPECT_EQ(exporter.ExportMidi((missing / "a.mid").string(), ChordsVoice()), kCannotWrite);
    EXPECT_EQ(exporter.ExportTriggerMidi((missing / "a.mid").string(), 60), kCannotWrite);
    EXPECT_EQ(exporter.ExportMidi(folder_.Path().string(), CMidiExport::kAllVoices), kCannotWrite);
    EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(MidiExport, AVoiceThatIsNotThereIsRefused) {
    Load(TwoNotes());
    for (const std::int32_t voice : {-2, 5, std::numeric_limits<std::int32_t>::max()})
        EXPECT_EQ(Export(voice), kBadArgument) << voice;
    EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(MidiExport, AbsurdSettingsStillGiveAFile) {
    Load(TwoNotes());
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
    for (const float rate : {0.0F, -1.0F, 1e-30F, std::nanf(""), std::numeric_limits<float>::infinity()}) {
        settings_.sampleRate = rate;
        settings_.playStart = kLowest;
        settings_.playEnd = kHighest;
        settings_.syncTempoToHost = true;
        settings_.melodyTempo = 3e38F;
        settings_.hostTempo = 1e-38F;
        settings_.transpose = -3e38F;
        EXPECT_EQ(Export(CMidiExport::kAllVoices), kOk) << rate;
        EXPECT_EQ(Export(ChordsVoice()), kOk) << rate;
        EXPECT_EQ(CMidiExport(rig_->driver, settings_).ExportTriggerMidi(Path(), 60), kOk) << rate;
    }
    settings_.playStart = kHighest;
    settings_.playEnd = kLowest;
    EXPECT_THAT(Exported(CMidiExport::kAllVoices), IsEmpty());
}

} // namespace
} // namespace sonorelle
