#include "app/state_document.h"

#include "app/saved_state_samples.h"
#include "app/snapshot_store.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace sonorelle {
namespace {

using test::DocumentSample;
using test::kSavedNoteCount;
using test::kSavedStoreVersion;
using test::ReadSaved;
using test::ReadWith;
using test::SavedStateSample;
using test::SnapshotSample;
using test::WithoutKey;
using test::WithReplaced;
using test::WithValue;

// What is left when nothing behind the file settings is read.
SavedState FileSettingsAlone(SavedState::Stop stop) {
    SavedState state;
    state.fileSettings = SavedStateSample().fileSettings;
    state.stop = stop;
    return state;
}

// The sample with the list ended before the record `count`.
SavedState EndedAfter(std::size_t count) {
    SavedState state = SavedStateSample();
    state.snapshots->records.resize(count);
    state.snapshots->endsWithPresentState = false;
    return state;
}

// The sample's document with the second record's text changed, the first left alone.
std::string WithSecond(const std::string& from, const std::string& to) {
    const std::string document = DocumentSample();
    const std::size_t second = document.find("<Snapshot_1>");
    return document.substr(0, second) + WithReplaced(document.substr(second), from, to);
}

TEST(StateDocumentSnapshots, AStateWithoutSnapshotsHasNone) {
    SavedState state = SavedStateSample();
    state.snapshots.reset();
    EXPECT_EQ(ReadSaved(WriteState(state)), state);
}

TEST(StateDocumentSnapshots, AStateWithoutTheirCountHasNone) {
    SavedState state = SavedStateSample();
    state.snapshots.reset();
    EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), "NumOfSnapshots")), state);
    for (const char* const count : {"-1", "none", "", "2147483647", "2147483648", "100000"})
        EXPECT_EQ(ReadWith("NumOfSnapshots", count), state) << count;
}

TEST(StateDocumentSnapshots, AnEmptyListIsThereAndEndsWithNoPresentState) {
    SavedState state = SavedStateSample();
    state.snapshots->records.clear();
    state.snapshots->endsWithPresentState = false;
    EXPECT_EQ(ReadSaved(WriteState(state)), state);
}

TEST(StateDocumentSnapshots, AVersionOfOneThousandthMoreStopsBehindTheFileSettings) {
    EXPECT_EQ(ReadWith("SnapshotVersion", "1.201"), FileSettingsAlone(SavedState::Stop::kNewerVersion));
    EXPECT_EQ(ReadWith("SnapshotVersion", "1.200"), SavedStateSample());
}

TEST(StateDocumentSnapshots, VersionsAreComparedInWholeThousandths) {
    EXPECT_EQ(ReadWith("SnapshotVersion", "1.2009").stop, SavedState::Stop::kNone);
    EXPECT_EQ(ReadWith("SnapshotVersion", "2.000").stop, SavedState::Stop::kNewerVersion);
    EXPECT_EQ(ReadWith("SnapshotVersion", "100000").stop, SavedState::Stop::kNewerVersion);
    EXPECT_EQ(ReadWith("SnapshotVersion", "1.199").snapshots->version, 1.199F);
}

TEST(StateDocumentSnapshots, TheStoreAgreesOnWhichVersionsAreNewer) {
    const CSnapshotStore store;
    for (const char* const version :
         {"1.000", "1.1", "1.199", "1.200", "1.2004", "1.2009", "1.201", "1.3", "7"}) {
        const SavedState read = ReadWith("SnapshotVersion", version);
        EXPECT_EQ(store.CanImport(std::stof(version)), read.stop == SavedState::Stop::kNone) << version;
    }
}

TEST(StateDocumentSnapshots, WithoutAVersionADocumentIsOfTheOldest) {
    SavedState expected = SavedStateSample();
    expected.snapshots->version = 1.0F;
    EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), "SnapshotVersion")), expected);
    for (const char* const version : {"nan", "inf", "-1.2", "0", "new"})
        EXPECT_EQ(ReadWith("SnapshotVersion", version), expected) << version;
}

TEST(StateDocumentSnapshots, AnotherNoteCountStopsBehindTheFileSettings) {
    EXPECT_EQ(ReadState(DocumentSample(), kSavedStoreVersion, kSavedNoteCount + 1),
              FileSettingsAlone(SavedState::Stop::kOtherAnalysis));
    EXPECT_EQ(ReadWith("InitNumElem", "3"), FileSettingsAlone(SavedState::Stop::kOtherAnalysis));
}

TEST(StateDocumentSnapshots, WithoutANoteCountAnyAnalysisWillDo) {
    SavedState expected = SavedStateSample();
    expected.snapshots->analysedNoteCount.reset();
    EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), "InitNumElem")), expected);
    EXPECT_EQ(ReadState(WithoutKey(DocumentSample(), "InitNumElem"), kSavedStoreVersion, 77), expected);
    EXPECT_EQ(ReadWith("InitNumElem", "-2"), expected);
    EXPECT_EQ(ReadWith("InitNumElem", "many"), expected);
}

TEST(StateDocumentSnapshots, ANewerVersionIsToldBeforeAnotherAnalysis) {
    EXPECT_EQ(ReadState(WithValue(DocumentSample(), "SnapshotVersion", "1.3"), kSavedStoreVersion, 77).stop,
              SavedState::Stop::kNewerVersion);
}

TEST(StateDocumentSnapshots, ANoteCapacityThatTheDocumentCannotHoldIsAbsent) {
    SavedState expected = SavedStateSample();
    expected.snapshots->noteCapacity.reset();
    for (const char* const capacity : {"2147483647", "1000000", "-1", "none"})
        EXPECT_EQ(ReadWith("MaxNumElem", capacity), expected) << capacity;
    EXPECT_EQ(ReadWith("MaxNumElem", "0").snapshots->noteCapacity, 0);
}

// 76 bytes a note: the whole of what the driver registers for one.
TEST(StateDocumentSnapshots, ACapacityThatTheDocumentFillsIsThere) {
    for (const std::int32_t notes : {1, 500, 5000}) {
        SavedState state = SavedStateSample();
        state.snapshots->noteCapacity = notes;
        state.snapshots->records[1].data.resize(static_cast<std::size_t>(notes) * 76);
        EXPECT_EQ(ReadSaved(WriteState(state)), state) << notes;
    }
}

TEST(StateDocumentSnapshots, ASelectionThatCannotBeIsAbsent) {
    EXPECT_EQ(ReadWith("SelectedSnapshot", "-1").snapshots->selectedSnapshot, -1);
    EXPECT_EQ(ReadWith("SelectedSnapshot", "-2").snapshots->selectedSnapshot, std::nullopt);
}

TEST(StateDocumentSnapshots, ASizeListShorterThanDeclaredEndsTheListThere) {
    EXPECT_EQ(ReadSaved(WithSecond("<NumOfSizeElements str=\"3\"", "<NumOfSizeElements str=\"4\"")),
              EndedAfter(1));
    EXPECT_EQ(ReadWith("NumOfSizeElements", "4"), EndedAfter(0));
    EXPECT_EQ(ReadWith("NumOfSizeElements", "2"), EndedAfter(0));
    EXPECT_EQ(ReadWith("NumOfSizeElements", "0"), EndedAfter(0));
    EXPECT_EQ(ReadWith("NumOfSizeElements", "1073741827"), EndedAfter(0)); // four times this is 12 in 32 bits
    EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), "SizeElemData")), EndedAfter(0));
}

TEST(StateDocumentSnapshots, ASizeListThatTellsAnotherLengthThanItHasEndsTheList) {
    for (const char* const length : {"8", "16", "-12", "2147483647", ""})
        EXPECT_EQ(ReadSaved(WithReplaced(DocumentSample(), "<SizeElemData len=\"12\"",
                                         "<SizeElemData len=\"" + std::string(length) + "\"")),
                  EndedAfter(0))
            << length;
    EXPECT_EQ(ReadSaved(WithReplaced(DocumentSample(), "bin=\"00000004", "bin=\"")), EndedAfter(0));
}

TEST(StateDocumentSnapshots, DataOfAnotherSizeThanToldEndsTheListThere) {
    EXPECT_EQ(ReadSaved(WithSecond("<DataSize str=\"8\"", "<DataSize str=\"12\"")), EndedAfter(1));
    for (const char* const size : {"7", "9", "0", "-1", "-8", "2147483647", "4294967304", "none"})
        EXPECT_EQ(ReadWith("DataSize", size), EndedAfter(0)) << size;
    EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), "DataSize")), EndedAfter(0));
}

TEST(StateDocumentSnapshots, DataThatTellsAnotherLengthThanItHasEndsTheList) {
    for (const char* const length : {"4", "9", "-8", "2147483647", ""})
        EXPECT_EQ(ReadSaved(WithReplaced(DocumentSample(), "<Data len=\"8\"",
                                         "<Data len=\"" + std::string(length) + "\"")),
                  EndedAfter(0))
            << length;
    EXPECT_EQ(ReadSaved(WithReplaced(DocumentSample(), "bin=\"13121110", "bin=\"")), EndedAfter(0));
    EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), "Data")), EndedAfter(0));
    EXPECT_EQ(ReadSaved(WithReplaced(DocumentSample(), " bin=\"1312111017161514\"", "")), EndedAfter(0));
}

TEST(StateDocumentSnapshots, MoreDeclaredThanThereAreEndsWithTheLastThatIsThere) {
    EXPECT_EQ(ReadWith("NumOfSnapshots", "3"), EndedAfter(2));
}

TEST(StateDocumentSnapshots, BehindADamagedListTheMixerAndThePresetsAreRead) {
    const SavedState read = ReadWith("DataSize", "9");
    EXPECT_EQ(read.mixer, SavedStateSample().mixer);
    EXPECT_EQ(read.presets, SavedStateSample().presets);
}

TEST(StateDocumentSnapshots, EmptyDataAndAnEmptySizeListAreRead) {
    SavedState state = SavedStateSample();
    state.snapshots->records[0].data.clear();
    state.snapshots->records[0].sizes->clear();
    EXPECT_EQ(ReadSaved(WriteState(state)), state);
}

TEST(StateDocumentSnapshots, ADocumentOlderThanSizeListsHasNone) {
    SavedState state = SavedStateSample();
    for (SavedSnapshot& record : state.snapshots->records) record.sizes.reset();
    EXPECT_EQ(ReadSaved(WriteState(state)), state);
    EXPECT_EQ(ReadSaved(WithoutKey(WriteState(state), "DataSize")), ReadSaved(WriteState(state)));
}

TEST(StateDocumentSnapshots, ACountOfSizesThatIsNoneCountsAsMissing) {
    SavedState expected = SavedStateSample();
    expected.snapshots->records[0].sizes.reset();
    EXPECT_EQ(ReadWith("NumOfSizeElements", "-3"), expected);
    EXPECT_EQ(ReadWith("NumOfSizeElements", "none"), expected);
}

TEST(StateDocumentSnapshots, WithoutATriggerTheRegionMeansNothing) {
    SavedState expected = SavedStateSample();
    expected.snapshots->records[0].midiTrigger.reset();
    expected.snapshots->records[0].startTime.reset();
    expected.snapshots->records[0].endTime.reset();
    EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), "MidiTrigger")), expected);
    for (const char* const trigger : {"-2", "132", "c3"})
        EXPECT_EQ(ReadWith("MidiTrigger", trigger), expected) << trigger;
}

TEST(StateDocumentSnapshots, TriggersFromNoneToTheHighestOfThePanelComeBack) {
    for (const std::int32_t trigger : {-1, 0, 127, 131})
        EXPECT_EQ(ReadWith("MidiTrigger", std::to_string(trigger)).snapshots->records[0].midiTrigger,
                  trigger);
}

TEST(StateDocumentSnapshots, EndsOfTheRegionBelowZeroAreAbsent) {
    SavedState expected = SavedStateSample();
    expected.snapshots->records[0].startTime.reset();
    EXPECT_EQ(ReadWith("StartTime", "-1"), expected);
    EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), "StartTime")), expected);
    expected = SavedStateSample();
    expected.snapshots->records[0].endTime.reset();
    EXPECT_EQ(ReadWith("EndTime", "-1"), expected);
    EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), "EndTime")), expected);
}

TEST(StateDocumentSnapshots, ARecordWithoutANameHasAnEmptyOne) {
    SavedState expected = SavedStateSample();
    expected.snapshots->records[0].name.clear();
    EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), "Name")), expected);
}

// Data far beyond what a reader takes by itself, in every record, and everything behind it.
TEST(StateDocumentSnapshots, LongRecordsAndWhatStandsBehindThemComeBack) {
    for (const std::size_t bytes : {16'000U, 16'128U, 16'384U, 60'000U, 1'000'000U}) {
        SavedState state = SavedStateSample();
        for (SavedSnapshot& record : state.snapshots->records) {
            record.data = test::CountingBytes(bytes);
            record.sizes =
                std::vector<std::int32_t>(2000, 4); // 8000 bytes: fits what a reader takes by itself
        }
        EXPECT_EQ(ReadSaved(WriteState(state)), state) << bytes;
    }
}

// One element a setting and four a note: a long melody has a size list that is too long by itself.
TEST(StateDocumentSnapshots, ALongSizeListComesBack) {
    for (const std::size_t elements : {4000U, 4096U, 10'000U, 200'000U}) {
        SavedState state = SavedStateSample();
        state.snapshots->records[0].data = test::CountingBytes(elements * 4);
        state.snapshots->records[0].sizes = std::vector<std::int32_t>(elements, 4);
        EXPECT_EQ(ReadSaved(WriteState(state)), state) << elements;
    }
}

TEST(StateDocumentSnapshots, LongDataOlderThanSizeListsComesBack) {
    SavedState state = SavedStateSample();
    state.snapshots->records[0].data = test::CountingBytes(60'000);
    state.snapshots->records[0].sizes.reset();
    EXPECT_EQ(ReadSaved(WriteState(state)), state);
}

// The room that long data has is its own: everywhere else a text of this length is too long, whatever stands
// before it.
TEST(StateDocumentSnapshots, TheRoomForLongDataEndsWithIt) {
    SavedState state = SavedStateSample();
    state.snapshots->records[1].data = test::CountingBytes(60'000);
    state.presets[1].name = std::string(40'000, 'n');
    const SavedState read = ReadSaved(WriteState(state));
    EXPECT_EQ(read.snapshots, state.snapshots);
    EXPECT_EQ(read.presets[0], state.presets[0]);
    EXPECT_EQ(read.presets[1].name, std::nullopt);
}

TEST(StateDocumentSnapshots, AFullListAndThePresentStateBehindItComeBack) {
    SavedState state = SavedStateSample();
    state.snapshots->records.clear();
    for (std::int32_t i = 0; i < CSnapshotStore::kSnapshotLimit; ++i)
        state.snapshots->records.push_back(SnapshotSample("Snapshot No. " + std::to_string(i + 1), i, i));
    state.snapshots->records.push_back(SnapshotSample("Last State", 33, 77));
    EXPECT_EQ(ReadSaved(WriteState(state)), state);
}

TEST(StateDocumentSnapshots, OfTooManyTheFirstAndTheLastAreRead) {
    SavedState state = SavedStateSample();
    state.snapshots->records.clear();
    for (std::int32_t i = 0; i < 40; ++i)
        state.snapshots->records.push_back(SnapshotSample(std::to_string(i), i, i));
    const SavedState read = ReadSaved(WriteState(state));
    ASSERT_TRUE(read.snapshots.has_value());
    ASSERT_EQ(read.snapshots->records.size(), 33U);
    EXPECT_EQ(read.snapshots->records[31].name, "31");
    EXPECT_EQ(read.snapshots->records[32].name, "39");
    EXPECT_TRUE(read.snapshots->endsWithPresentState);
}

} // namespace
} // namespace sonorelle
