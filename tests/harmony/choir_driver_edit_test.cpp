// Edits of notes, and how they live with the snapshot store.

#include "harmony/choir_driver.h"

#include "harmony/choir_driver_rig.h"
#include "platform/result_codes.h"
#include "support/allocation_trap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace sonorelle::test {
namespace {

constexpr unsigned kGenerator = 90210;

// All that one can ask of the notes.
struct Picture {
    explicit Picture(DriverRig& rig) {
        const CChoirDriver& driver = rig.driver;
        for (std::int32_t note = 0; note < driver.GetNoteCount(); ++note) {
            const NoteRecord record = driver.GetNote(note);
            records.append(reinterpret_cast<const char*>(&record), sizeof record);
            pitches.push_back(driver.GetNotePitch(note));
            deviations.push_back(driver.GetDeviation(note));
            chords.push_back(driver.GetChord(note));
            voices.push_back(rig.Voices(note));
            gains.push_back(rig.Gains(note));
        }
    }
    bool operator==(const Picture&) const = default;

    std::string records;
    std::vector<std::int32_t> pitches;
    std::vector<float> deviations;
    std::vector<ChordRecord> chords;
    std::vector<VoiceRow> voices;
    std::vector<GainRow> gains;
};

// The bytes of all active elements, as the store would keep them.
std::string BytesOf(const CSnapshotStore& store) {
    std::string bytes;
    for (std::int32_t i = 0; i < store.GetElementCount(); ++i) {
        const SnapshotElement& element = *store.GetElement(i);
        if (element.active)
            bytes.append(static_cast<const char*>(element.data), static_cast<std::size_t>(element.size));
    }
    return bytes;
}

// One of each kind of edit by chance.
void EditAnything(CChoirDriver& driver, std::mt19937& random) {
    const auto below = [&random](std::int32_t count) {
        return count < 1 ? 0 : static_cast<std::int32_t>(random() % static_cast<unsigned>(count));
    };
    const std::int32_t note = below(driver.GetNoteCount());
    switch (random() % 7) {
    case 0:
        driver.SetVoicePitch(note, below(4), 30 + below(60));
        break;
    case 1:
        driver.SetVoiceGain(note, below(4), static_cast<float>(below(100)) / 100.0F);
        break;
    case 2:
        driver.SetChord(note, {below(12), 3, below(6), 13});
        break;
    case 3:
        driver.SplitNote(driver.GetNoteStart(note) + below(driver.GetNoteLength(note) + 2));
        break;
    case 4:
        driver.MergeNotes(note, note + 1);
        break;
    case 5:
        driver.SetStyle(below(5));
        driver.SetArrangement(below(9));
        driver.SetRoot(below(12));
        driver.SetChordsDirty(below(2) == 0);
        driver.Run();
        break;
    default:
        driver.SetManualInterval(below(4), below(15) - 7);
        driver.SetHarmonyScale(below(12));
        break;
    }
}

// What `operation` answers when it gets no more than `count` pieces of memory.
template<typename Operation>
std::int32_t WithMemoryFor(int count, Operation operation) {
    const AllocationLimit limit(count);
    return operation();
}

// Voices and gains.

TEST(CChoirDriver, VoicesAndGainsAreSetOneByOne) {
    DriverRig rig(kTune);
    rig.RunInC();
    const Picture before(rig);
    rig.driver.SetVoicePitch(3, 2, 50);
    rig.driver.SetVoiceGain(3, 1, 0.25F);
    VoiceRow voices = before.voices[3];
    voices[2] = 50;
    EXPECT_EQ(rig.Voices(3), voices);
    EXPECT_EQ(rig.Gains(3), (GainRow{1, 0.25F, 1, 1}));
    EXPECT_EQ(rig.Voices(2), before.voices[2]);
    EXPECT_EQ(rig.Voices(4), before.voices[4]);
}

TEST(CChoirDriver, EditsOfBadIndicesAreIgnored) {
    DriverRig rig(kTune);
    rig.RunInC();
    const std::string before = BytesOf(rig.store);
    for (const std::int32_t bad : {INT_MIN, -1, rig.driver.GetNoteCount(), INT_MAX}) {
        rig.driver.SetVoicePitch(bad, 0, 50);
        rig.driver.SetVoiceGain(bad, 0, 0.5F);
    }
    for (const std::int32_t bad : {INT_MIN, -1, 4, INT_MAX}) {
        rig.driver.SetVoicePitch(0, bad, 50);
        rig.driver.SetVoiceGain(0, bad, 0.5F);
    }
    rig.driver.SetVoiceGain(0, 0, std::nanf(""));
    EXPECT_EQ(BytesOf(rig.store), before);
}

TEST(CChoirDriver, GainsAreHeldToTheirRange) {
    DriverRig rig(kTune);
    rig.RunInC();
    rig.driver.SetVoiceGain(0, 0, 7.0F);
    rig.driver.SetVoiceGain(0, 1, -7.0F);
    rig.driver.SetVoiceGain(0, 2, std::numeric_limits<float>::infinity());
    EXPECT_EQ(rig.Gains(0), (GainRow{1, 0, 1, 1}));
}

// Splitting.

TEST(CChoirDriver, SplitCopiesTheRowsAndChangesTheMelodyVoiceAlone) {
    DriverRig rig(kTune);
    rig.RunInC();
    rig.driver.SetChord(3, kGMajor);
    rig.driver.SetVoicePitch(3, 0, 72);
    rig.driver.SetVoiceGain(3, 2, 0.5F);
    const Picture before(rig);
    const NoteRecord whole = rig.driver.GetNote(3);
    const std::int32_t position = whole.start + 400;
    ASSERT_EQ(rig.driver.SplitNote(position), 1);
    const Picture after(rig);

    ASSERT_EQ(rig.driver.GetNoteCount(), static_cast<std::int32_t>(kTune.size()) + 1);
    EXPECT_EQ(rig.driver.GetAnalysedNoteCount(), static_cast<std::int32_t>(kTune.size()));
    const NoteRecord first = rig.driver.GetNote(3);
    const NoteRecord second = rig.driver.GetNote(4);
    EXPECT_EQ(first.start, whole.start);
    EXPECT_EQ(first.end, position);
    EXPECT_EQ(first.length, 400);
    EXPECT_EQ(second.start, position + 1);
    EXPECT_EQ(second.end, whole.end);
    EXPECT_EQ(second.length, whole.end - position - 1);
    EXPECT_EQ(first.pitch, rig.melody.Analyzer().MeasureRange(first.start, first.end));
    EXPECT_EQ(second.pitch, rig.melody.Analyzer().MeasureRange(second.start, second.end));
    for (const std::size_t note : {3U, 4U}) {
        VoiceRow row = before.voices[3];
        row[0] = 65; // what was sung, no more the 72 of the edit
        EXPECT_EQ(after.voices[note], row);
        EXPECT_EQ(after.gains[note], before.gains[3]);
        EXPECT_EQ(after.chords[note], kGMajor);
        EXPECT_EQ(after.pitches[note], 65);
    }
    for (std::size_t note = 0; note < kTune.size(); ++note) {
        if (note == 3) continue;
        const std::size_t moved = note < 3 ? note : note + 1;
        EXPECT_EQ(after.voices[moved], before.voices[note]);
        EXPECT_EQ(after.gains[moved], before.gains[note]);
        EXPECT_EQ(after.chords[moved], before.chords[note]);
        EXPECT_EQ(after.pitches[moved], before.pitches[note]);
        EXPECT_EQ(after.deviations[moved], before.deviations[note]);
    }
}

TEST(CChoirDriver, HalvesOfASplitNoteAreMeasuredAnew) {
    const std::vector<NoteRecord> sung = EvenNotes({60, 64, 67}, 1000, 0);
    DriverRig rig(sung);
    rig.driver.SetAutoKey(false);
    ASSERT_EQ(rig.driver.Run(), kOk);
    ASSERT_EQ(rig.driver.MergeNotes(0, 1), 1);
    EXPECT_GT(rig.driver.GetNote(0).pitch, 61.0F);
    EXPECT_LT(rig.driver.GetNote(0).pitch, 63.5F);
    ASSERT_EQ(rig.driver.SplitNote(sung[0].end), 1);
    EXPECT_EQ(rig.driver.GetNotePitch(0), 60);
    EXPECT_EQ(rig.driver.GetNotePitch(1), 64);
    EXPECT_EQ(rig.Voices(1)[0], 64);
}

TEST(CChoirDriver, SplitOutsideNotesDoesNothing) {
    DriverRig rig(kTune);
    EXPECT_EQ(rig.driver.SplitNote(500), 0) << "no notes yet";
    rig.RunInC();
    const std::string before = BytesOf(rig.store);
    std::int32_t start = 0;
    std::int32_t end = 0;
    rig.driver.GetNoteRange(3, start, end);
    for (const std::int32_t position : {INT_MIN, -1, 0, start - 1, end + 1, rig.melody.Length(), INT_MAX})
        EXPECT_EQ(rig.driver.SplitNote(position), 0) << position;
    EXPECT_EQ(BytesOf(rig.store), before);
}

TEST(CChoirDriver, SplitAtTheFirstPositionLeavesANoteOfOnePosition) {
    DriverRig rig(kTune);
    rig.RunInC();
    std::int32_t start = 0;
    std::int32_t end = 0;
    rig.driver.GetNoteRange(3, start, end);
    ASSERT_EQ(rig.driver.SplitNote(start), 1);
    EXPECT_EQ(rig.driver.GetNoteLength(3), 0);
    EXPECT_EQ(rig.driver.GetNoteLength(4), end - start - 1);
    EXPECT_EQ(rig.driver.FindNoteAt(start), 3);
    EXPECT_EQ(rig.driver.FindNoteAt(start + 1), 4);
    EXPECT_EQ(rig.driver.GetNotePitch(3), 65) << "nothing to be measured: it keeps its pitch";
    EXPECT_TRUE(std::isfinite(rig.driver.GetNote(3).pitch));
}

TEST(CChoirDriver, SplitAtTheLastPositionLeavesANoteThatNothingFinds) {
    DriverRig rig(EvenNotes(kTune, 1000, 0));
    rig.RunInC();
    std::int32_t start = 0;
    std::int32_t end = 0;
    rig.driver.GetNoteRange(3, start, end);
    ASSERT_EQ(rig.driver.FindNoteAt(end), 3);
    ASSERT_EQ(rig.driver.SplitNote(end), 1);
    EXPECT_EQ(rig.driver.GetNoteStart(4), end + 1);
    EXPECT_EQ(rig.driver.GetNotePitch(4), 65);
    for (std::int32_t position = start; position < end + 1000; ++position)
        EXPECT_NE(rig.driver.FindNoteAt(position), 4);
    ASSERT_EQ(rig.driver.MergeNotes(3, 4), 1) << "merging takes it away again";
    EXPECT_EQ(rig.driver.GetNoteLength(3), 1000);
}

TEST(CChoirDriver, SplitNoteIsVoicedByTheNextRun) {
    DriverRig rig(kTune);
    rig.RunInC();
    ASSERT_EQ(rig.driver.SplitNote(rig.Inside(4)), 1);
    rig.driver.SetChordsDirty(false);
    rig.driver.Run();
    for (std::int32_t note = 0; note < rig.driver.GetNoteCount(); ++note)
        EXPECT_EQ(rig.Voices(note)[0], rig.driver.GetNotePitch(note));
}

TEST(CChoirDriver, SplitMovesWhatWasPlayedLive) {
    DriverRig rig(EvenNotes(kTune, 8000, 400));
    rig.RunInC();
    rig.driver.StartLive(true, false);
    const std::int32_t keys[8] = {50, 55, 60, 64, -1, -1, -1, -1};
    rig.driver.NoteInput(keys, rig.Inside(5), 4);
    rig.driver.UpdateLive(true, rig.Inside(5));
    const VoiceRow played = rig.Voices(5, true);
    ASSERT_EQ(rig.Gains(5), (GainRow{1, 1, 1, 1}));
    rig.driver.UpdateLive(false, rig.Inside(9));
    ASSERT_EQ(rig.driver.SplitNote(rig.Inside(2)), 1);
    EXPECT_EQ(rig.Voices(6), played);
    EXPECT_EQ(rig.Gains(6), (GainRow{1, 1, 1, 1}));
    EXPECT_EQ(rig.Gains(5), (GainRow{0, 0, 0, 0}));
    ASSERT_EQ(rig.driver.MergeNotes(2, 3), 1);
    EXPECT_EQ(rig.Voices(5), played);
    EXPECT_EQ(rig.Gains(6), (GainRow{0, 0, 0, 0}));
}

// Merging.

TEST(CChoirDriver, MergeJoinsTwoNeighboursIntoTheFirst) {
    DriverRig rig(kTune);
    rig.RunInC();
    rig.driver.SetVoiceGain(4, 1, 0.5F);
    rig.driver.SetVoicePitch(4, 0, 20);
    const Picture before(rig);
    const NoteRecord first = rig.driver.GetNote(4);
    const NoteRecord last = rig.driver.GetNote(5);
    ASSERT_EQ(rig.driver.MergeNotes(4, 5), 1);
    const Picture after(rig);

    ASSERT_EQ(rig.driver.GetNoteCount(), static_cast<std::int32_t>(kTune.size()) - 1);
    const NoteRecord joined = rig.driver.GetNote(4);
    EXPECT_EQ(joined.start, first.start);
    EXPECT_EQ(joined.end, last.end);
    EXPECT_EQ(joined.length, last.end - first.start);
    EXPECT_EQ(joined.pitch, rig.melody.Analyzer().MeasureRange(first.start, last.end));
    VoiceRow row = before.voices[4];
    row[0] = rig.driver.GetNotePitch(4);
    EXPECT_EQ(row[0], static_cast<std::int32_t>(std::floor(joined.pitch + 0.5F)));
    EXPECT_EQ(after.voices[4], row);
    EXPECT_EQ(after.gains[4], before.gains[4]);
    EXPECT_EQ(after.chords[4], before.chords[4]);
    for (std::size_t note = 0; note < after.voices.size(); ++note) {
        if (note == 4) continue;
        const std::size_t old = note < 4 ? note : note + 1;
        EXPECT_EQ(after.voices[note], before.voices[old]);
        EXPECT_EQ(after.gains[note], before.gains[old]);
        EXPECT_EQ(after.chords[note], before.chords[old]);
        EXPECT_EQ(after.pitches[note], before.pitches[old]);
    }
}

TEST(CChoirDriver, FirstAndLastNotesMerge) {
    DriverRig rig(kTune);
    rig.RunInC();
    EXPECT_EQ(rig.driver.MergeNotes(0, 1), 1);
    const std::int32_t count = rig.driver.GetNoteCount();
    EXPECT_EQ(rig.driver.MergeNotes(count - 2, count - 1), 1);
    EXPECT_EQ(rig.driver.GetNoteCount(), static_cast<std::int32_t>(kTune.size()) - 2);
    while (rig.driver.GetNoteCount() > 1) EXPECT_EQ(rig.driver.MergeNotes(0, 1), 1);
    EXPECT_EQ(rig.driver.GetNoteStart(0), rig.melody.Notes().front().start);
    EXPECT_EQ(rig.driver.GetNoteLength(0), rig.melody.Notes().back().end - rig.melody.Notes().front().start);
    EXPECT_EQ(rig.driver.MergeNotes(0, 1), 0);
}

TEST(CChoirDriver, MergeRefusesAllButNeighbours) {
    DriverRig rig(kTune);
    EXPECT_EQ(rig.driver.MergeNotes(0, 1), 0) << "no notes yet";
    rig.RunInC();
    const std::string before = BytesOf(rig.store);
    const std::int32_t count = rig.driver.GetNoteCount();
    const std::int32_t bad[][2] = {{-1, 0},
                                   {0, -1},
                                   {-1, -1},
                                   {0, 0},
                                   {0, 2},
                                   {3, 2},
                                   {5, 1},
                                   {0, 10},
                                   {count - 1, count},
                                   {count, count + 1},
                                   {INT_MAX, INT_MIN},
                                   {INT_MIN, INT_MAX},
                                   {-2, -1}};
    for (const auto& pair : bad)
        EXPECT_EQ(rig.driver.MergeNotes(pair[0], pair[1]), 0) << pair[0] << ' ' << pair[1];
    EXPECT_EQ(BytesOf(rig.store), before);
}

TEST(CChoirDriver, SplitAfterAMergeNeedsNoNewMemory) {
    DriverRig rig(kTune);
    rig.RunInC();
    const std::int32_t elements = rig.store.GetElementCount();
    rig.driver.MergeNotes(2, 3);
    rig.driver.SplitNote(rig.Inside(5));
    EXPECT_EQ(rig.store.GetElementCount(), elements);
    EXPECT_EQ(rig.driver.GetNoteCapacity(), static_cast<std::int32_t>(kTune.size()));
}

// Growing.

TEST(CChoirDriver, GrowNotesMakesRoomAndChangesNothingElse) {
    DriverRig rig(kTune);
    EXPECT_EQ(rig.driver.GrowNotes(20), kOk) << "before the notes are there it has nothing to do";
    EXPECT_EQ(rig.driver.GetNoteCapacity(), 0);
    rig.RunInC();
    const Picture before(rig);
    const auto count = static_cast<std::int32_t>(kTune.size());
    for (const std::int32_t capacity : {INT_MIN, -1, 0, 3, count}) {
        EXPECT_EQ(rig.driver.GrowNotes(capacity), kOk);
        EXPECT_EQ(rig.driver.GetNoteCapacity(), count);
    }
    EXPECT_EQ(rig.driver.GrowNotes(count + 5), kOk);
    EXPECT_EQ(rig.driver.GetNoteCapacity(), count + 5);
    EXPECT_EQ(rig.driver.GetNoteCount(), count);
    EXPECT_TRUE(Picture(rig) == before);
    for (const std::int32_t capacity : {CChoirNotes::kMostNotes + 1, INT_MAX})
        EXPECT_EQ(rig.driver.GrowNotes(capacity), kBadArgument);
    EXPECT_EQ(rig.driver.GetNoteCapacity(), count + 5);
}

TEST(CChoirDriver, GrowingAtOnceLaysElementsOutAsSplittingDoes) {
    DriverRig split(kTune);
    DriverRig grown(kTune);
    split.RunInC();
    grown.RunInC();
    for (int i = 0; i < 3; ++i) ASSERT_EQ(split.driver.SplitNote(split.Inside(2 * i)), 1);
    ASSERT_EQ(grown.driver.GrowNotes(split.driver.GetNoteCapacity()), kOk);
    ASSERT_EQ(split.store.GetElementCount(), grown.store.GetElementCount());
    for (std::int32_t i = 0; i < split.store.GetElementCount(); ++i) {
        EXPECT_EQ(split.store.GetElement(i)->size, grown.store.GetElement(i)->size) << i;
        EXPECT_EQ(split.store.GetElement(i)->version, grown.store.GetElement(i)->version) << i;
    }
    // So that a state of the one is a state of the other.
    split.store.AddSnapshot("state");
    std::vector<std::int32_t> sizes(static_cast<std::size_t>(split.store.GetSizeCount(0)));
    split.store.GetSizes(0, sizes);
    ASSERT_TRUE(grown.store.ImportSnapshot("state", split.store.GetSnapshotData(0),
                                           split.store.GetSnapshotSize(0), CSnapshotStore::kVersion,
                                           sizes.data(), static_cast<std::int32_t>(sizes.size())));
    ASSERT_TRUE(grown.store.RecallSnapshot(0));
    grown.driver.RefreshFromStore();
    EXPECT_TRUE(Picture(grown) == Picture(split));
}

TEST(CChoirDriver, EditsWithoutMemoryChangeNothing) {
    DriverRig rig(kTune);
    rig.RunInC();
    const std::string before = BytesOf(rig.store);
    const std::int32_t position = rig.Inside(3);
    int refused = 0;
    while (WithMemoryFor(refused, [&] { return rig.driver.SplitNote(position); }) == 0) {
        ++refused;
        ASSERT_LT(refused, 1000);
        ASSERT_EQ(WithMemoryFor(refused, [&] { return rig.driver.GrowNotes(500); }), kOutOfMemory);
        ASSERT_EQ(rig.driver.GetNoteCapacity(), static_cast<std::int32_t>(kTune.size()));
        ASSERT_EQ(BytesOf(rig.store), before);
    }
    EXPECT_GT(refused, 3);
    EXPECT_EQ(rig.driver.GetNoteCount(), static_cast<std::int32_t>(kTune.size()) + 1);
    const std::string split = BytesOf(rig.store);
    EXPECT_EQ(WithMemoryFor(0, [&] { return rig.driver.MergeNotes(5, 6); }), 0);
    EXPECT_EQ(BytesOf(rig.store), split);
    EXPECT_EQ(rig.driver.MergeNotes(5, 6), 1);
}

TEST(CChoirDriver, RunWithoutMemoryMakesNothing) {
    DriverRig rig(kTune);
    int refused = 0;
    while (WithMemoryFor(refused, [&] { return rig.driver.Run(); }) == kOutOfMemory) {
        ++refused;
        ASSERT_LT(refused, 1000);
        for (const VoiceRow& row : rig.AllVoices()) ASSERT_EQ(row, (VoiceRow{-1, -1, -1, -1}));
    }
    EXPECT_GT(refused, static_cast<int>(kTune.size()));
    EXPECT_EQ(rig.Voices(0)[0], 60);
    EXPECT_EQ(rig.driver.Run(), kOk);
}

// Undo.

TEST(CChoirDriver, UndoOfASplitBringsTheNotesBack) {
    DriverRig rig({60, 62, 64, 65, 67});
    rig.RunInC();
    rig.store.PushUndo();
    const Picture whole(rig);
    ASSERT_EQ(rig.driver.SplitNote(rig.Inside(1)), 1);
    rig.store.PushUndo();
    const Picture split(rig);
    ASSERT_FALSE(split == whole);

    ASSERT_TRUE(rig.store.Undo());
    rig.driver.RefreshFromStore();
    EXPECT_TRUE(Picture(rig) == whole) << "the rounded pitches included, which are not stored";
    EXPECT_EQ(rig.driver.GetNoteCapacity(), 6) << "what has grown stays";
    ASSERT_TRUE(rig.store.Redo());
    rig.driver.RefreshFromStore();
    EXPECT_TRUE(Picture(rig) == split);
}

TEST(CChoirDriver, UndoOfAMergeBringsTheNotesBack) {
    DriverRig rig({60, 62, 64, 65, 67});
    rig.RunInC();
    rig.store.PushUndo();
    const Picture before(rig);
    ASSERT_EQ(rig.driver.MergeNotes(1, 2), 1);
    rig.store.PushUndo();
    ASSERT_TRUE(rig.store.Undo());
    rig.driver.RefreshFromStore();
    EXPECT_TRUE(Picture(rig) == before);
}

TEST(CChoirDriver, RefreshTakesTheKeyThatWasBroughtBack) {
    DriverRig rig(kTune);
    rig.RunInC();
    rig.store.PushUndo();
    rig.driver.SetFollowScale(false);
    rig.driver.SetRoot(6);
    rig.driver.SetHarmonyScale(5);
    rig.driver.Run();
    rig.store.PushUndo();
    EXPECT_FALSE(rig.driver.IsInScale(60));
    ASSERT_TRUE(rig.store.Undo());
    rig.driver.RefreshFromStore();
    EXPECT_TRUE(rig.driver.IsInScale(60));
    EXPECT_EQ(rig.driver.GetRoot(), 0);
}

TEST(CChoirDriver, UndoAndRedoOverThousandEditsReturnToTheSameState) {
    constexpr int kEdits = 1000;
    DriverRig rig(EvenNotes({60, 62, 64, 65, 67, 69, 67, 65}, 1000, 100), kEdits + 10);
    rig.RunInC();
    std::mt19937 random(kGenerator);
    SCOPED_TRACE(testing::Message() << "seed " << kGenerator);
    std::vector<Picture> states;
    std::int32_t mostNotes = 0;
    rig.store.PushUndo();
    states.emplace_back(rig);
    while (rig.store.GetUndoIndex() <= kEdits) {
        const std::int32_t before = rig.store.GetUndoIndex();
        EditAnything(rig.driver, random);
        rig.store.PushUndo();
        mostNotes = std::max(mostNotes, rig.driver.GetNoteCount());
        if (rig.store.GetUndoIndex() > before) states.emplace_back(rig);
    }
    ASSERT_GT(mostNotes, 12) << "notes were split beyond the first capacity";
    const std::string last = BytesOf(rig.store);
    ASSERT_EQ(states.size(), static_cast<std::size_t>(kEdits) + 1);
    for (std::size_t i = states.size() - 1; i-- > 0;) {
        ASSERT_TRUE(rig.store.Undo());
        rig.driver.RefreshFromStore();
        ASSERT_TRUE(Picture(rig) == states[i]) << i;
    }
    EXPECT_FALSE(rig.store.Undo());
    for (std::size_t i = 1; i < states.size(); ++i) {
        ASSERT_TRUE(rig.store.Redo());
        rig.driver.RefreshFromStore();
        ASSERT_TRUE(Picture(rig) == states[i]) << i;
    }
    EXPECT_EQ(BytesOf(rig.store), last);
}

TEST(CChoirDriver, RowsStayWhereTheyAreWhenTheNotesGrow) {
    DriverRig rig(kTune);
    rig.RunInC();
    std::vector<const void*> rows;
    for (std::int32_t i = 0; i < rig.store.GetElementCount(); ++i)
        if (rig.store.GetElement(i)->size == 16) rows.push_back(rig.store.GetElement(i)->data);
    ASSERT_EQ(rows.size(), 2 * kTune.size());
    ASSERT_EQ(rig.driver.GrowNotes(500), kOk);
    std::size_t found = 0;
    for (std::int32_t i = 0; i < rig.store.GetElementCount(); ++i)
        if (found < rows.size() && rig.store.GetElement(i)->data == rows[found]) ++found;
    EXPECT_EQ(found, rows.size());
}

} // namespace
} // namespace sonorelle::test
