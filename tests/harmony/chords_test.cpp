#include "harmony/chords.h"

#include "harmony/chord_names.h"
#include "harmony/slow_chord_path.h"
#include "platform/result_codes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <ostream>
#include <vector>

namespace sonorelle::ConsortierClassic {

void PrintTo(const ChordRecord& chord, std::ostream* out) {
    *out << "{" << chord.root << ", " << chord.noteCount << ", " << chord.triadType << ", "
         << chord.tetradType << "}";
}

namespace {

constexpr ChordRecord Triad(std::int32_t root, std::int32_t type) { return {root, 3, type, kNoTetrad}; }
constexpr ChordRecord Tetrad(std::int32_t root, std::int32_t type) { return {root, 4, kNoTriad, type}; }

CKey MakeKey(std::int32_t root, std::int32_t scale) {
    CKey key;
    key.SetRoot(root);
    key.SetHarmonyScale(scale);
    return key;
}

TEST(RecogniseChord, NamesATriadWithADoubledRoot) {
    EXPECT_EQ(RecogniseChord(60, 64, 67, 72), Triad(0, kMajorTriad));
}

TEST(RecogniseChord, TurnsInversionsBack) {
    EXPECT_EQ(RecogniseChord(64, 67, 72, -1), Triad(0, kMajorTriad));
    EXPECT_EQ(RecogniseChord(67, 72, 76, -1), Triad(0, kMajorTriad));
}

TEST(RecogniseChord, ThreeNeighboursHaveNoType) {
    const ChordRecord chord = RecogniseChord(60, 62, 64, -1);
    EXPECT_EQ(chord.triadType, kNoTriad);
    EXPECT_EQ(chord.tetradType, kNoTetrad);
    EXPECT_EQ(chord.noteCount, 3);
}

TEST(RecogniseChord, TwoPitchClassesNameNothing) {
    EXPECT_EQ(RecogniseChord(67, 71, 79, -1), (ChordRecord{0, 2, kNoTriad, kNoTetrad}));
    EXPECT_EQ(RecogniseChord(67, -1, -1, -1), (ChordRecord{0, 1, kNoTriad, kNoTetrad}));
    EXPECT_EQ(RecogniseChord(-1, -1, -1, -1), (ChordRecord{0, 0, kNoTriad, kNoTetrad}));
}

TEST(RecogniseChord, FourNotesThatCannotStandInThirdsAreAnotherFourNoteChord) {
    const ChordRecord chord = RecogniseChord(60, 61, 62, 63);
    EXPECT_EQ(chord.noteCount, 4);
    EXPECT_EQ(chord.tetradType, kOtherTetrad);
    EXPECT_EQ(ChordName(chord, false), "--");
}

TEST(RecogniseChord, AFourthOverAFifthIsAnotherTriad) {
    EXPECT_EQ(RecogniseChord(60, 65, 67, -1).triadType, kOtherTriad);
}

TEST(RecogniseChord, AnyNegativePitchIsAbsent) {
    EXPECT_EQ(RecogniseChord(60, 64, 67, -5), Triad(0, kMajorTriad));
    EXPECT_EQ(RecogniseChord(60, 64, 67, INT_MIN), Triad(0, kMajorTriad));
    EXPECT_EQ(RecogniseChord(60, 64, 67, INT_MAX).noteCount, 3); // INT_MAX is a G
}

struct Quality {
    std::vector<int> tones;
    std::int32_t type;
};
const Quality kQualities[] = {{{0, 4, 7}, kMajorTriad},         {{0, 3, 7}, kMinorTriad},
                              {{0, 3, 6}, kDiminishedTriad},    {{0, 4, 7, 11}, kMajorSeventh},
                              {{0, 3, 7, 10}, kMinorSeventh},   {{0, 4, 7, 10}, kDominantSeventh},
                              {{0, 3, 6, 10}, kHalfDiminished}, {{0, 3, 7, 11}, kMinorMajorSeventh}};

TEST(RecogniseChord, FindsEveryQualityOnEveryRootInEveryOrderOfItsNotes) {
    for (const Quality& quality : kQualities) {
        for (std::int32_t root = 0; root < 12; ++root) {
            std::vector<int> order = quality.tones;
            do {
                std::vector<int> pitches;
                for (std::size_t i = 0; i < order.size(); ++i)
                    pitches.push_back(36 + root + order[i] + 12 * static_cast<int>(i % 3));
                pitches.resize(4, -1);
                const ChordRecord chord = RecogniseChord(pitches[0], pitches[1], pitches[2], pitches[3]);
                ASSERT_EQ(chord, order.size() == 3 ? Triad(root, quality.type) : Tetrad(root, quality.type));
            } while (std::next_permutation(order.begin(), order.end()));
        }
    }
}

TEST(RecogniseChord, SymmetricChordsAreRootedOnTheirLowestClass) {
    EXPECT_EQ(RecogniseChord(64, 68, 60, -1), Triad(0, kAugmentedTriad));
    EXPECT_EQ(RecogniseChord(69, 66, 63, 60), Tetrad(0, kDiminishedSeventh));
}

TEST(RecogniseChord, EqualsTheSlowFormOnAllSetsOfFourClasses) {
    for (int a = -1; a < 12; ++a)
        for (int b = -1; b < 12; ++b)
            for (int c = -1; c < 12; ++c)
                for (int d = -1; d < 12; ++d)
                    ASSERT_EQ(RecogniseChord(a, b, c, d), slow::Recognise({a, b, c, d})) << a << b << c << d;
}

TEST(ChordToPitches, NoChordIsFourTimesNone) {
    for (const ChordRecord& chord : {ChordRecord{}, ChordRecord{3, 3, kOtherTriad, kNoTetrad},
                                     ChordRecord{3, 4, kNoTriad, kOtherTetrad}}) {
        std::int32_t out[4] = {1, 2, 3, 4};
        ChordToPitches(chord, out);
        for (const std::int32_t pitch : out) EXPECT_EQ(pitch, -1);
    }
}

TEST(ChordToPitches, EveryRow) {
    const struct {
        std::int32_t triad, tetrad;
        std::array<std::int32_t, 4> expected;
    } rows[] = {
        {0, 13, {62, 66, 69, -1}}, {1, 13, {62, 65, 69, -1}}, {2, 13, {62, 65, 68, -1}},
        {3, 13, {62, 66, 70, -1}}, {5, 6, {62, 66, 69, 73}},  {5, 7, {62, 65, 69, 72}},
        {5, 8, {62, 66, 69, 72}},  {5, 9, {62, 65, 68, 72}},  {5, 10, {62, 65, 68, 71}},
        {5, 11, {62, 65, 69, 73}}, {0, 7, {62, 65, 69, 72}},  {0, 12, {62, 66, 69, -1}},
    };
    for (const auto& row : rows) {
        std::int32_t out[4];
        ChordToPitches({2, 4, row.triad, row.tetrad}, out);
        EXPECT_TRUE(std::equal(out, out + 4, row.expected.begin())) << row.triad << " " << row.tetrad;
    }
}

TEST(ChordToPitches, ARootFromOutsideIsReducedToAPitchClass) {
    std::int32_t out[4];
    for (const std::int32_t root : {INT_MAX, INT_MIN, -1, 12}) {
        ChordToPitches(Triad(root, kMajorTriad), out);
        EXPECT_GE(out[0], 60);
        EXPECT_LT(out[0], 72);
        EXPECT_EQ(out[2], out[0] + 7);
    }
}

TEST(ChordsForPitch, TheRootThirdAndFifthOfThreeTriads) {
    ChordRecord chords[3];
    EXPECT_EQ(ChordsForPitch(CKey(), 60, chords, 3), kOk);
    EXPECT_EQ(chords[0], Triad(0, kMajorTriad)); // C
    EXPECT_EQ(chords[1], Triad(9, kMinorTriad)); // a
    EXPECT_EQ(chords[2], Triad(5, kMajorTriad)); // F
}

TEST(ChordsForPitch, TheChordMenuAddsFourSeventhChords) {
    ChordRecord chords[7];
    EXPECT_EQ(ChordsForPitch(CKey(), 72, chords, 7), kOk);
    EXPECT_EQ(chords[3], Tetrad(0, kMajorSeventh));
    EXPECT_EQ(chords[4], Tetrad(9, kMinorSeventh));
    EXPECT_EQ(chords[5], Tetrad(5, kMajorSeventh));
    EXPECT_EQ(chords[6], Tetrad(2, kMinorSeventh));
}

TEST(ChordsForPitch, APitchOutsideTheScaleGetsRecordsThatNameNoChord) {
    ChordRecord chords[7];
    EXPECT_EQ(ChordsForPitch(CKey(), 61, chords, 7), kBadArgument);
    for (const ChordRecord& chord : chords) {
        EXPECT_EQ(chord, (ChordRecord{1, 0, kNoTriad, kNoTetrad}));
        EXPECT_TRUE(IsNoChord(chord));
        EXPECT_EQ(ChordName(chord, false), "--");
    }
}

TEST(ChordsForPitch, WritesNoMoreThanItIsAskedFor) {
    const ChordRecord mark{77, 77, 77, 77};
    for (const std::int32_t pitch : {60, 61}) {
        for (std::int32_t n = -3; n < 12; ++n) {
            std::vector<ChordRecord> chords(12, mark);
            ChordsForPitch(CKey(), pitch, chords.data(), n);
            const int wanted = pitch == 60 ? std::clamp(n, 0, 7) : std::max(n, 0);
            const auto written = std::count_if(chords.begin(), chords.end(),
                                               [&](const ChordRecord& c) { return !(c == mark); });
            EXPECT_EQ(written, wanted);
        }
    }
    EXPECT_EQ(ChordsForPitch(CKey(), 60, nullptr, 3), kBadArgument);
}

TEST(AllDiatonicChords, TheTwoChordsOfEachDegreeOfCMajor) {
    ChordRecord chords[14];
    EXPECT_EQ(AllDiatonicChords(CKey(), nullptr), 14);
    EXPECT_EQ(AllDiatonicChords(CKey(), chords), 14);
    const char* const names[] = {"C",    "C M7", "d",   "d m7", "e",    "e m7",  "F",
                                 "F M7", "G",    "G 7", "a",    "a m7", "b dim", "b m7b5"};
    for (std::size_t i = 0; i < 14; ++i) EXPECT_EQ(ChordName(chords[i], false), names[i]);
}

TEST(AllDiatonicChords, StartsAtTheKeyRoot) {
    ChordRecord chords[14];
    AllDiatonicChords(MakeKey(9, 7), chords); // A harmonic minor
    const char* const names[] = {"a",    "a mM7", "b dim", "b m7b5", "C aug", "--",     "d",
                                 "d m7", "E",     "E 7",   "F",      "F M7",  "g# dim", "g# dim7"};
    for (std::size_t i = 0; i < 14; ++i) EXPECT_EQ(ChordName(chords[i], false), names[i]) << i;
}

TEST(AllDiatonicChords, InTheWholeToneScaleTheSeventhToneIsTheRootAgain) {
    ChordRecord chords[kMostDiatonicChords];
    EXPECT_EQ(AllDiatonicChords(MakeKey(0, 10), chords), 12);
    EXPECT_EQ(chords[0], Triad(0, kAugmentedTriad));
    EXPECT_EQ(chords[1], Tetrad(0, kAugmentedTriad));
    EXPECT_EQ(AllDiatonicChords(MakeKey(0, 11), chords), kMostDiatonicChords);
}

TEST(IsDiatonicChord, TheListsHoldNothingElse) {
    for (std::int32_t root = 0; root < 12; ++root) {
        for (std::int32_t scale = 0; scale < kScaleCount; ++scale) {
            const CKey key = MakeKey(root, scale);
            ChordRecord list[kMostDiatonicChords];
            const std::int32_t count = AllDiatonicChords(key, list);
            for (std::int32_t chordRoot = 0; chordRoot < 12; ++chordRoot) {
                for (std::int32_t type = 0; type < 13; ++type) {
                    if (type == kNoTriad) continue;
                    const ChordRecord chord =
                        type < kMajorSeventh ? Triad(chordRoot, type) : Tetrad(chordRoot, type);
                    const bool listed = std::find(list, list + count, chord) != list + count;
                    ASSERT_EQ(IsDiatonicChord(key, chord), listed)
                        << root << " " << scale << " " << chordRoot << " " << type;
                }
            }
        }
    }
}

TEST(IsDiatonicChord, NoChordAlwaysIsAndOddRecordsAreNot) {
    EXPECT_TRUE(IsDiatonicChord(CKey(), ChordRecord{1, 0, kNoTriad, kNoTetrad}));
    EXPECT_FALSE(IsDiatonicChord(CKey(), ChordRecord{0, 2, kMajorTriad, kNoTetrad}));
    EXPECT_FALSE(IsDiatonicChord(CKey(), Triad(1, kMajorTriad)));
}

TEST(LegacyChord, KeepsTheKindOfTheDegreeAndNotItsRoot) {
    EXPECT_EQ(LegacyChord(CKey(), 62), Triad(0, kMinorTriad));
    EXPECT_EQ(LegacyChord(CKey(), 67), Triad(0, kMajorTriad));
    EXPECT_EQ(LegacyChord(CKey(), 71), Triad(0, kDiminishedTriad));
    EXPECT_EQ(LegacyChord(CKey(), 61), slow::Recognise({1, 4, 8, 1})); // from C#: D, F, A
    EXPECT_EQ(LegacyChord(CKey(), 61).root, 1);
}

} // namespace
} // namespace sonorelle::ConsortierClassic
