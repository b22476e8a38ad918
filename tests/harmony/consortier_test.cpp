#include "harmony/consortier.h"

#include "platform/result_codes.h"
#include "support/allocation_trap.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <random>
#include <vector>

namespace sonorelle::ConsortierClassic {
namespace {

using Row = std::array<std::int32_t, 4>;
constexpr Row kUntouched = {901, 902, 903, 904};

TEST(CConsortier, TheTrapSeesTheChordPathAllocate) {
    const CConsortier engine;
    const std::int32_t pitches[] = {60, 62, 64};
    ChordRecord chords[3];
    const std::int64_t before = test::AllocationCount();
    engine.FindChordPath(pitches, chords, 3);
    EXPECT_EQ(test::AllocationCount() - before, 2);
}

TEST(CConsortier, AChordPathWithoutMemoryLeavesTheChordsAlone) {
    const CConsortier engine;
    const std::int32_t pitches[] = {60, 62, 64};
    const ChordRecord mark{7, 7, 7, 7};
    ChordRecord chords[3] = {mark, mark, mark};
    for (const int granted : {0, 1}) {
        const test::AllocationLimit limit(granted);
        EXPECT_EQ(engine.FindChordPath(pitches, chords, 3), kOutOfMemory);
    }
    for (const ChordRecord& chord : chords) EXPECT_EQ(chord, mark);
}

TEST(CConsortier, VoicingAndSettingAllocateNothing) {
    CConsortier engine;
    std::mt19937 random(7);
    Row row{};
    ChordRecord chords[7];
    std::int64_t found = -1;
    {
        const std::int64_t before = test::AllocationCount();
        for (int note = 0; note < 3000; ++note) {
            if (note % 100 == 0) {
                engine.SetVoiceMode(note / 100 % 3);
                engine.SetVoiceRange(note / 100 % 4);
                engine.SetRoot(note / 100 % 12);
                engine.SetHarmonyScale(note / 100 % 12);
                engine.Reset();
            }
            const auto pitch = static_cast<std::int32_t>(50 + random() % 25);
            engine.ChordsForPitch(engine.GetKey().Prepare(pitch), chords, 7);
            engine.GenerateVoices(pitch, row.data(), chords[random() % 7]);
            engine.GenerateBlock(pitch, pitch + 2, row.data(), note % 9);
            engine.GenerateFauxbourdon(pitch, row.data(), note % 4);
            engine.GenerateOrganum(pitch, row.data(), note % 7);
        }
        found = test::AllocationCount() - before;
    }
    EXPECT_EQ(found, 0);
}

TEST(CConsortier, ANewEngineIsInCMajorWithItsWindowReady) {
    const CConsortier engine;
    EXPECT_EQ(engine.GetKey().GetRoot(), 0);
    EXPECT_EQ(engine.GetMelodySlot(), 2);
    EXPECT_EQ(engine.GetVoiceLeader().GetCandidateCapacity(), 11);
    EXPECT_TRUE(engine.IsInScale(64));
    EXPECT_FALSE(engine.IsInScale(63));
}

TEST(CConsortier, SettersAnswerAndForward) {
    CConsortier engine;
    EXPECT_EQ(engine.SetRoot(2), kOk);
    EXPECT_EQ(engine.SetMelodyScale(0), kOk);
    EXPECT_EQ(engine.SetHarmonyScale(5), kOk);
    EXPECT_EQ(engine.SnapToScale(63), 62);
    EXPECT_EQ(engine.ApplyScaleMap(66), 65);
    EXPECT_EQ(engine.SetSnapToScale(0), kOk);
    EXPECT_EQ(engine.SetMapScale(0), kOk);
    EXPECT_EQ(engine.GetKey().Prepare(63), 63);
    EXPECT_EQ(engine.SetSnapToScale(2), kOk);
    EXPECT_TRUE(engine.GetKey().GetSnapToScale());
    EXPECT_EQ(engine.SetSpread(0.25F), kOk);
    EXPECT_EQ(engine.GetVoiceLeader().GetSpread(), 0.25F);
    EXPECT_EQ(engine.SetVoiceMode(1), kOk);
    EXPECT_EQ(engine.SetVoiceRange(2), kOk);
    EXPECT_EQ(engine.SetVoiceRange(3), kBadArgument);
    EXPECT_EQ(engine.GetMelodySlot(), 0);
    EXPECT_EQ(engine.SetRoot(12), kBadArgument);
    EXPECT_EQ(engine.SetMelodyScale(11), kBadArgument);
    EXPECT_EQ(engine.SetHarmonyScale(12), kBadArgument);
    EXPECT_EQ(engine.GetKey().GetRoot(), 2);
}

TEST(CConsortier, ASecondRunOfARandomStyleGoesOnInTheSequence) {
    const auto run = [](CConsortier& engine) {
        std::vector<Row> rows;
        for (std::int32_t note = 0; note < 32; ++note) {
            Row row = kUntouched;
            engine.GenerateBlock(60 + note % 8, 60, row.data(), 6);
            rows.push_back(row);
        }
        return rows;
    };
    CConsortier engine;
    CConsortier other;
    const auto first = run(engine);
    EXPECT_EQ(run(other), first) << "every engine starts alike";
    engine.Reset();
    EXPECT_NE(run(engine), first) << "and goes on";
}

TEST(CConsortier, TheChordPathLeavesTheVoicingAlone) {
    CConsortier engine;
    Row row{};
    engine.GenerateVoices(60, row.data(), {0, 3, kMajorTriad, kNoTetrad});
    const auto previous = engine.GetVoiceLeader().GetPreviousVoices();
    const std::int32_t pitches[] = {60, 62, 64};
    ChordRecord chords[3];
    EXPECT_EQ(engine.FindChordPath(pitches, chords, 3), kOk);
    EXPECT_EQ(engine.GetVoiceLeader().GetPreviousVoices(), previous);
    EXPECT_EQ(chords[2], (ChordRecord{0, 3, kMajorTriad, kNoTetrad}));
}

TEST(CConsortier, TableStylesLeaveTheVoicingAlone) {
    CConsortier engine;
    Row row{};
    engine.GenerateVoices(60, row.data(), {0, 3, kMajorTriad, kNoTetrad});
    const auto previous = engine.GetVoiceLeader().GetPreviousVoices();
    const Row intervals = {0, 2, 4, 7};
    EXPECT_EQ(engine.GenerateParallel(64, row.data(), intervals.data()), kOk);
    EXPECT_EQ(row, (Row{64, 67, 71, 76}));
    EXPECT_EQ(engine.GenerateFauxbourdon(64, row.data(), 0), kOk);
    EXPECT_EQ(engine.GenerateOrganum(64, row.data(), 0), kOk);
    EXPECT_EQ(engine.GetVoiceLeader().GetPreviousVoices(), previous);
    EXPECT_TRUE(engine.GetKey().GetMapScale());
}

TEST(CConsortier, ForwardsTheChordOperations) {
    CConsortier engine;
    EXPECT_EQ(CConsortier::RecogniseChord(64, 67, 72, -1), (ChordRecord{0, 3, kMajorTriad, kNoTetrad}));
    std::int32_t pitches[4];
    CConsortier::ChordToPitches({0, 3, kMinorTriad, kNoTetrad}, pitches);
    EXPECT_EQ(pitches[1], 63);
    char name[kChordNameSize] = "";
    CConsortier::FormatChordName(name, 1, kMinorSeventh, true);
    EXPECT_STREQ(name, "db m7");
    EXPECT_TRUE(engine.IsDiatonicChord({9, 3, kMinorTriad, kNoTetrad}));
    EXPECT_FALSE(engine.IsDiatonicChord({9, 3, kMajorTriad, kNoTetrad}));
    ChordRecord chords[kMostDiatonicChords];
    EXPECT_EQ(engine.AllDiatonicChords(chords), 14);
    EXPECT_EQ(engine.ChordsForPitch(61, chords, 3), kBadArgument);
    const std::int32_t entry[2] = {71, -123456};
    ChordRecord legacy;
    engine.LegacyChord(legacy, entry);
    EXPECT_EQ(legacy, (ChordRecord{0, 3, kDiminishedTriad, kNoTetrad}));
}

TEST(CConsortier, TwoThousandNotesThroughPathAndVoicing) {
    CConsortier engine;
    std::mt19937 random(11);
    std::vector<std::int32_t> pitches;
    for (int i = 0; i < 2000; ++i) pitches.push_back(static_cast<std::int32_t>(50 + random() % 25));
    std::vector<ChordRecord> chords(pitches.size());
    ASSERT_EQ(engine.FindChordPath(pitches.data(), chords.data(), 2000), kOk);
    for (std::size_t i = 0; i < pitches.size(); ++i) {
        Row row = kUntouched;
        ASSERT_EQ(engine.GenerateVoices(pitches[i], row.data(), chords[i]), kOk);
        for (const std::int32_t pitch : row) ASSERT_TRUE(engine.IsInScale(pitch));
        ASSERT_EQ(row[0], engine.SnapToScale(pitches[i]));
    }
}

} // namespace
} // namespace sonorelle::ConsortierClassic
