#include "harmony/voice_leader.h"

#include "harmony/chords.h"
#include "harmony/slow_voicing.h"
#include "platform/result_codes.h"
#include "support/sanitizer_share.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace sonorelle::ConsortierClassic {
namespace {

using Row = std::array<std::int32_t, 4>;
constexpr unsigned kGenerator = 44021;
constexpr Row kMark = {901, 902, 903, 904};
constexpr ChordRecord kC{0, 3, kMajorTriad, kNoTetrad};
constexpr ChordRecord kG{7, 3, kMajorTriad, kNoTetrad};
constexpr ChordRecord kNone{};

Row Generate(CVoiceLeader& leader, const CKey& key, std::int32_t pitch, const ChordRecord& chord) {
    Row row = kMark;
    EXPECT_EQ(leader.GenerateVoices(key, pitch, row.data(), chord), kOk);
    return row;
}

// --- Settings
// -------------------------------------------------------------------------------------------------------------

TEST(CVoiceLeader, StartsWithFourVoicesOneAboveAndItsWindow) {
    const CVoiceLeader leader;
    EXPECT_EQ(leader.GetVoiceMode(), 0);
    EXPECT_EQ(leader.GetHarmonyVoiceCount(), 3);
    EXPECT_EQ(leader.GetVoiceRange(), 1);
    EXPECT_EQ(leader.GetMelodySlot(), 2);
    EXPECT_EQ(leader.GetSpread(), 0.5F);
    EXPECT_EQ(leader.GetStepMemory(), 0);
    EXPECT_EQ(leader.GetPreviousVoices(), (Row{-1, -1, -1, -1}));
    EXPECT_EQ(leader.GetRangeLow(), -16);
    EXPECT_EQ(leader.GetRangeHigh(), 12);
    EXPECT_EQ(leader.GetCandidateCapacity(), 11);
}

TEST(CVoiceLeader, EveryWindow) {
    const struct {
        std::int32_t mode, h, range, low, high, capacity;
    } rows[] = {{0, 3, 0, -16, 0, 7}, {0, 3, 1, -16, 12, 11}, {0, 3, 2, -12, 16, 11},
                {0, 3, 3, 0, 16, 7},  {1, 2, 0, -16, 0, 7},   {1, 2, 1, -12, 12, 9},
                {1, 2, 2, 0, 16, 7},  {2, 1, 0, -12, 0, 5},   {2, 1, 1, 0, 12, 5}};
    for (const auto& row : rows) {
        CVoiceLeader leader;
        EXPECT_EQ(leader.SetVoiceMode(row.mode), kOk);
        EXPECT_EQ(leader.SetVoiceRange(row.range), kOk);
        EXPECT_EQ(leader.GetHarmonyVoiceCount(), row.h);
        EXPECT_EQ(leader.GetRangeLow(), row.low);
        EXPECT_EQ(leader.GetRangeHigh(), row.high);
        EXPECT_EQ(leader.GetCandidateCapacity(), row.capacity);
        EXPECT_EQ(leader.GetMelodySlot(), row.h - row.range);
    }
}

TEST(CVoiceLeader, EveryChangeOfMode) {
    // Old mode and range, new mode, new range.
    const std::int32_t rows[][4] = {{0, 0, 2, 0}, {0, 1, 2, 0}, {0, 2, 2, 1}, {0, 3, 2, 1}, {1, 0, 2, 0},
                                    {1, 1, 2, 1}, {1, 2, 2, 1}, {0, 0, 1, 1}, {0, 1, 1, 1}, {0, 2, 1, 1},
                                    {0, 3, 1, 2}, {2, 0, 1, 0}, {2, 1, 1, 2}, {2, 0, 0, 1}, {2, 1, 0, 2},
                                    {1, 0, 0, 1}, {1, 1, 0, 1}, {1, 2, 0, 2}};
    for (const auto& row : rows) {
        CVoiceLeader leader;
        leader.SetVoiceMode(row[0]);
        ASSERT_EQ(leader.SetVoiceRange(row[1]), kOk);
        leader.SetVoiceMode(row[2]);
        EXPECT_EQ(leader.GetVoiceRange(), row[3]) << row[0] << row[1] << row[2];
        EXPECT_EQ(leader.GetHarmonyVoiceCount(), 3 - row[2]);
        EXPECT_EQ(leader.GetVoiceMode(), row[2]);
        // The window belongs to what is set now.
        CVoiceLeader fresh;
        fresh.SetVoiceMode(row[2]);
        fresh.SetVoiceRange(row[3]);
        EXPECT_EQ(leader.GetRangeLow(), fresh.GetRangeLow());
        EXPECT_EQ(leader.GetRangeHigh(), fresh.GetRangeHigh());
    }
}

TEST(CVoiceLeader, OtherModesAreStoredAndMoveNothing) {
    CVoiceLeader leader;
    leader.SetVoiceRange(3);
    for (const std::int32_t mode : {0, 3, 8, -1, INT_MAX}) {
        EXPECT_EQ(leader.SetVoiceMode(mode), kOk);
        EXPECT_EQ(leader.GetVoiceMode(), mode);
        EXPECT_EQ(leader.GetHarmonyVoiceCount(), 3);
        EXPECT_EQ(leader.GetVoiceRange(), 3);
    }
}

TEST(CVoiceLeader, RefusesRangesAndSpreadsBeyondTheirLimits) {
    CVoiceLeader leader;
    leader.SetVoiceMode(1);
    leader.SetVoiceRange(2);
    for (const std::int32_t bad : {-1, 3, INT_MAX, INT_MIN})
        EXPECT_EQ(leader.SetVoiceRange(bad), kBadArgument);
    EXPECT_EQ(leader.GetVoiceRange(), 2);
    EXPECT_EQ(leader.GetRangeHigh(), 16);
    EXPECT_EQ(leader.SetSpread(0.0F), kOk);
    EXPECT_EQ(leader.SetSpread(1.0F), kOk);
    for (const float bad : {-0.001F, 1.001F, std::numeric_limits<float>::infinity(), std::nanf("")})
        EXPECT_EQ(leader.SetSpread(bad), kBadArgument);
    EXPECT_EQ(leader.GetSpread(), 1.0F);
}

// --- Voicing
// --------------------------------------------------------------------------------------------------------------

TEST(GenerateVoices, RangeZeroKeepsAllHarmonyBelowTheMelody) {
    CVoiceLeader leader;
    leader.SetVoiceRange(0);
    for (const std::int32_t pitch : {60, 64, 67, 72, 64}) {
        const Row row = Generate(leader, CKey(), pitch, kC);
        for (std::size_t slot = 1; slot < 4; ++slot) EXPECT_LE(row[slot], pitch);
    }
    // From the root up, as wide as is wanted.
    CVoiceLeader first;
    first.SetVoiceRange(0);
    first.SetSpread(0.75F);
    EXPECT_EQ(Generate(first, CKey(), 72, kC), (Row{72, 60, 64, 67}));
}

TEST(GenerateVoices, TheFullRangeMakesTheMelodyTheBass) {
    for (std::int32_t mode = 0; mode < 3; ++mode) {
        CVoiceLeader leader;
        leader.SetVoiceMode(mode);
        leader.SetVoiceRange(leader.GetHarmonyVoiceCount());
        for (const std::int32_t pitch : {60, 64, 67, 72, 62}) {
            const Row row = Generate(leader, CKey(), pitch, kC);
            for (std::int32_t slot = 1; slot <= leader.GetHarmonyVoiceCount(); ++slot)
                EXPECT_GE(row[static_cast<std::size_t>(slot)], pitch);
        }
    }
}

TEST(GenerateVoices, NoChordAtTheStartIsSilent) {
    CVoiceLeader leader;
    EXPECT_EQ(Generate(leader, CKey(), 61, kNone), (Row{60, -1, -1, -1}));
    EXPECT_EQ(leader.GetPreviousVoices(), (Row{-1, -1, -1, -1}));
}

TEST(GenerateVoices, NoChordHoldsTheLastVoicesAndMovesNothing) {
    for (std::int32_t mode = 0; mode < 3; ++mode) {
        CVoiceLeader leader;
        leader.SetVoiceMode(mode);
        Generate(leader, CKey(), 60, kC);
        Generate(leader, CKey(), 62, kG);
        const Row before = leader.GetPreviousVoices();
        const std::int32_t memory = leader.GetStepMemory();
        Row expected = {64, 0, 0, 0};
        std::size_t slot = 1;
        for (std::size_t voice = 0; voice < 4; ++voice)
            if (static_cast<std::int32_t>(voice) != leader.GetMelodySlot()) expected[slot++] = before[voice];
        EXPECT_EQ(Generate(leader, CKey(), 64, kNone), expected);
        EXPECT_EQ(Generate(leader, CKey(), 64, kNone), expected);
        EXPECT_EQ(leader.GetPreviousVoices(), before);
        EXPECT_EQ(leader.GetStepMemory(), memory);
    }
}

TEST(GenerateVoices, FewerVoicesLeaveTheirSlotsSilent) {
    CVoiceLeader leader;
    leader.SetVoiceMode(1);
    EXPECT_EQ(Generate(leader, CKey(), 60, kC)[3], -1);
    EXPECT_NE(leader.GetPreviousVoices()[3], -1) << "remembered all the same";
    leader.SetVoiceMode(2);
    const Row row = Generate(leader, CKey(), 60, kC);
    EXPECT_EQ(row[2], -1);
    EXPECT_EQ(row[3], -1);
}

// Voices a melody with one chord type throughout, and counts the notes that differ from the literal scorer's.
int CountDifferences(const ChordRecord& type, decltype(slow::Voicing::elementStages) elementStages) {
    std::mt19937 random(kGenerator);
    CVoiceLeader leader;
    auto slow = std::make_unique<slow::Voicing>();
    slow->elementStages = elementStages;
    int different = 0;
    for (int note = 0; note < test::SanitizerShare(200); ++note) {
        const CKey key;
        const std::int32_t pitch = key.SnapToScale(55 + static_cast<int>(random() % 20));
        ChordRecord chords[3];
        ChordsForPitch(key, pitch, chords, 3);
        const ChordRecord chord{chords[random() % 3].root, type.noteCount, type.triadType, type.tetradType};
        Row expected{};
        slow->Generate(pitch, expected.data(), chord);
        different += Generate(leader, key, pitch, chord) == expected ? 0 : 1;
        slow->previous = leader.GetPreviousVoices();
    }
    return different;
}

TEST(GenerateVoices, ATriadInFourVoicesGetsNoStepBonusOrSpacingAndAFourNoteChordDoes) {
    const ChordRecord tetrad{0, 4, kNoTriad, kDominantSeventh};
    EXPECT_EQ(CountDifferences(kC, slow::Voicing::Never), 0);
    EXPECT_GT(CountDifferences(kC, slow::Voicing::Always), test::SanitizerShare(10));
    EXPECT_EQ(CountDifferences(tetrad, slow::Voicing::Always), 0);
    EXPECT_GT(CountDifferences(tetrad, slow::Voicing::Never), test::SanitizerShare(10));
}

TEST(GenerateVoices, ResetForgetsTheLastNoteAndKeepsTheStepMemory) {
    CVoiceLeader leader;
    leader.SetVoiceMode(2);
    std::mt19937 random(kGenerator);
    while (leader.GetStepMemory() == kNoStep) {
        ChordRecord chords[3];
        const CKey key;
        const std::int32_t pitch = key.SnapToScale(55 + static_cast<int>(random() % 20));
        ChordsForPitch(key, pitch, chords, 3);
        Generate(leader, key, pitch, chords[random() % 3]);
    }
    const std::int32_t memory = leader.GetStepMemory();
    leader.Reset();
    EXPECT_EQ(leader.GetPreviousVoices(), (Row{-1, -1, -1, -1}));
    EXPECT_EQ(leader.GetStepMemory(), memory);
}

TEST(GenerateVoices, AMissingRowIsRefusedAndNothingIsRemembered) {
    CVoiceLeader leader;
    EXPECT_EQ(leader.GenerateVoices(CKey(), 60, nullptr, kC), kBadArgument);
    EXPECT_EQ(leader.GetPreviousVoices(), (Row{-1, -1, -1, -1}));
}

// --- Against the literal scorer
// -----------------------------------------------------------------------------------------------

ChordRecord AnyChord(std::mt19937& random, const CKey& key, std::int32_t pitch) {
    ChordRecord chords[7];
    switch (random() % 8) {
    case 0:
        return {static_cast<int>(random() % 12), 3 + static_cast<int>(random() % 2),
                static_cast<int>(random() % 6), 6 + static_cast<int>(random() % 8)};
    case 1:
        return kNone;
    default:
        ChordsForPitch(key, key.Prepare(pitch), chords, 7);
        return chords[random() % 7];
    }
}

void CompareMelodies(unsigned generator, int melodies, bool changeModes) {
    std::mt19937 random(generator);
    std::array<std::uint32_t, 3> compared{};
    for (int melody = 0; melody < test::SanitizerShare(melodies); ++melody) {
        CKey key;
        key.SetRoot(static_cast<int>(random() % 12));
        key.SetMelodyScale(static_cast<int>(random() % 11));
        key.SetHarmonyScale(random() % 2 == 0 ? key.GetMelodyScale() : static_cast<int>(random() % 12));
        key.SetSnapToScale(random() % 5 != 0);
        key.SetMapScale(random() % 5 != 0);
        CVoiceLeader leader;
        auto slow = std::make_unique<slow::Voicing>();
        slow->key = {key.GetRoot(), key.GetMelodyScale(), key.GetHarmonyScale(), key.GetSnapToScale(),
                     key.GetMapScale()};
        std::int32_t pitch = 50 + static_cast<int>(random() % 25);
        for (int note = 0; note < 24; ++note) {
            if (note == 0 || (changeModes && random() % 6 == 0)) {
                leader.SetVoiceMode(static_cast<int>(random() % 3));
                leader.SetVoiceRange(static_cast<int>(random() % 4));
                leader.SetSpread(static_cast<float>(random() % 101) / 100.0F);
                slow->h = leader.GetHarmonyVoiceCount();
                slow->range = leader.GetVoiceRange();
                slow->spread = leader.GetSpread();
                ASSERT_EQ(slow->Low(), leader.GetRangeLow());
                ASSERT_EQ(slow->High(), leader.GetRangeHigh());
            }
            pitch += static_cast<int>(random() % 11) - 5;
            const ChordRecord chord = AnyChord(random, key, pitch);
            Row expected = kMark;
            slow->Generate(pitch, expected.data(), chord);
            ASSERT_EQ(Generate(leader, key, pitch, chord), expected)
                << "generator " << generator << " melody " << melody << " note " << note;
            ASSERT_EQ(leader.GetStepMemory(), slow->stepMemory);
            ASSERT_EQ(leader.GetPreviousVoices(), slow->previous);
            ++compared[static_cast<std::size_t>(slow->h - 1)];
        }
    }
    for (const std::uint32_t count : compared) EXPECT_GT(count, test::SanitizerShare(500U));
}

TEST(GenerateVoices, EqualsTheLiteralScorerOnRandomMelodies) { CompareMelodies(kGenerator, 240, false); }

TEST(GenerateVoices, EqualsTheLiteralScorerWhenModesChangeBetweenNotes) {
    CompareMelodies(kGenerator + 1, 120, true);
}

// Every score, not only the choice, and so every rounding.
TEST(GenerateVoices, EveryScoreEqualsTheLiteralScorersAfterEachStage) {
    std::mt19937 random(kGenerator + 2);
    for (int round = 0; round < 300; ++round) {
        auto slow = std::make_unique<slow::Voicing>();
        CKey key;
        key.SetRoot(static_cast<int>(random() % 12));
        key.SetHarmonyScale(static_cast<int>(random() % 12));
        slow->key = {key.GetRoot(), 0, key.GetHarmonyScale(), false, false};
        slow->h = 1 + static_cast<int>(random() % 3);
        slow->range = static_cast<int>(random() % static_cast<unsigned>(slow->h + 1));
        slow->p = 60 + static_cast<int>(random() % 12);
        slow->stepMemory = static_cast<int>(random() % 3);
        for (int& voice : slow->previous) voice = 48 + static_cast<int>(random() % 25);
        std::sort(slow->previous.begin(), slow->previous.end());
        slow->chord = {static_cast<int>(random() % 12), 3 + static_cast<int>(random() % 2), 0, 13};
        slow->BuildCandidates();
        for (auto& plane : slow->cube)
            for (auto& line : plane) std::fill(std::begin(line), std::end(line), 1.0F);

        VoicingTask task{key};
        task.harmonyVoices = slow->h;
        task.voicesAbove = slow->range;
        task.melody = slow->p;
        task.chordRoot = slow->chord.root;
        task.chordNotes = slow->chord.noteCount;
        task.rangeLow = slow->Low();
        task.rangeHigh = slow->High();
        task.stepMemory = slow->stepMemory;
        task.previous = slow->previous;
        BuildCandidates(task);
        ASSERT_EQ(task.candidateCount, slow->n);
        CScoreCube cube;
        cube.Reset(task.candidateCount);

        const auto compare = [&](const char* stage) {
            for (int i = 0; i < slow->n; ++i)
                for (int j = 0; j < slow->n; ++j)
                    for (int k = 0; k < slow->n; ++k)
                        ASSERT_EQ(cube.At(i, j, k), slow->cube[i][j][k])
                            << stage << " round " << round << " at " << i << " " << j << " " << k;
        };
        ApplyRangeOrder(task, cube), slow->RangeOrder(), compare("range order");
        ApplyChordFit(task, cube), slow->ChordFit(), compare("chord fit");
        ApplyRootAffinity(task, cube), slow->RootAffinity(), compare("root affinity");
        if (slow->h == 1)
            ApplyIntervalPreference(task, cube), slow->IntervalPreference(), compare("interval");
        ApplyVoiceLeading(task, cube), slow->VoiceLeading(), compare("voice leading");
        ApplySpread(task, cube), slow->Spread(), compare("spread");
        ApplyParallels(task, cube), slow->Parallels(), compare("parallels");
        ApplyStepBonus(task, cube), slow->StepBonus(), compare("step bonus");
        ApplySpacing(task, cube), slow->Spacing(), compare("spacing");
        if (slow->h < 3) ApplyLineContinuation(task, cube), slow->LineContinuation(), compare("line");
        if (HasFatalFailure()) return;
    }
}

TEST(GenerateVoices, FourVoicesRiseInTheirVerticalOrder) {
    std::mt19937 random(kGenerator + 3);
    for (int melody = 0; melody < 300; ++melody) {
        CVoiceLeader leader;
        const auto range = static_cast<std::int32_t>(random() % 4);
        leader.SetVoiceRange(range);
        CKey key;
        key.SetRoot(static_cast<int>(random() % 12));
        for (int note = 0; note < 20; ++note) {
            const std::int32_t pitch = key.SnapToScale(52 + static_cast<int>(random() % 20));
            ChordRecord chords[3];
            ChordsForPitch(key, pitch, chords, 3);
            const Row row = Generate(leader, key, pitch, chords[random() % 3]);
            ASSERT_LE(row[1], row[2])
                << "generator " << kGenerator + 3 << " melody " << melody << " note " << note;
            ASSERT_LE(row[2], row[3]);
            for (std::int32_t slot = 1; slot < 4; ++slot) {
                const std::int32_t voice = row[static_cast<std::size_t>(slot)];
                const bool below = slot <= 3 - range;
                ASSERT_TRUE(below ? voice <= pitch : voice >= pitch) << voice << " and the melody " << pitch;
                ASSERT_TRUE(key.IsInScale(voice));
            }
        }
    }
}

TEST(GenerateVoices, PitchesFarOutsideAndChordsFromOutsideAreSurvived) {
    const std::int32_t numbers[] = {INT_MIN, -1000000, -200, -1, 0, 3, 4, 127, 128, 1000000, INT_MAX};
    for (std::int32_t mode = 0; mode < 3; ++mode) {
        CVoiceLeader leader;
        leader.SetVoiceMode(mode);
        for (const std::int32_t pitch : numbers) {
            for (const std::int32_t number : numbers) {
                const Row row = Generate(leader, CKey(), pitch, {number, number, kMajorTriad, number});
                for (std::int32_t slot = 1; slot <= leader.GetHarmonyVoiceCount(); ++slot)
                    ASSERT_LE(std::abs(row[static_cast<std::size_t>(slot)] - row[0]), 16);
            }
        }
        // And then sings on.
        leader.Reset();
        CVoiceLeader fresh;
        fresh.SetVoiceMode(mode);
        if (mode == 0) {
            EXPECT_EQ(Generate(leader, CKey(), 60, kC), Generate(fresh, CKey(), 60, kC));
        }
    }
}

} // namespace
} // namespace sonorelle::ConsortierClassic
