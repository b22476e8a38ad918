#include "harmony/table_styles.h"

#include "harmony/slow_key.h"
#include "harmony/styles.h"
#include "platform/result_codes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <functional>
#include <utility>
#include <vector>

namespace sonorelle::ConsortierClassic {
namespace {

using Row = std::array<std::int32_t, 4>;
constexpr Row kMark = {901, 902, 903, 904};
const CKey kCMajor;

CKey KeyOf(std::int32_t root, std::int32_t melodyScale, std::int32_t harmonyScale) {
    CKey key;
    key.SetRoot(root);
    key.SetMelodyScale(melodyScale);
    key.SetHarmonyScale(harmonyScale);
    return key;
}

Row Parallel(const CKey& key, std::int32_t pitch, Row intervals) {
    Row row = kMark;
    EXPECT_EQ(GenerateParallel(key, pitch, row.data(), intervals.data()), kOk);
    return row;
}

Row Block(const CKey& key, std::int32_t pitch, std::int32_t next, std::int32_t arrangement) {
    Row row = kMark;
    CRandomBits random;
    EXPECT_EQ(GenerateBlock(key, random, pitch, next, row.data(), arrangement), kOk);
    return row;
}

Row Fauxbourdon(const CKey& key, std::int32_t pitch, std::int32_t arrangement) {
    Row row = kMark;
    EXPECT_EQ(GenerateFauxbourdon(key, pitch, row.data(), arrangement), kOk);
    return row;
}

Row Organum(const CKey& key, std::int32_t pitch, std::int32_t arrangement) {
    Row row = kMark;
    EXPECT_EQ(GenerateOrganum(key, pitch, row.data(), arrangement), kOk);
    return row;
}

Row Below(std::int32_t p, Row semitones) {
    for (std::int32_t& slot : semitones) slot = p - slot;
    return semitones;
}

// --- Parallel
// --------------------------------------------------------------------------------------------------

TEST(GenerateParallel, DownOctaveIsAnOctaveBelowInEveryScale) {
    for (std::int32_t scale = 0; scale < kScaleCount; ++scale) {
        CKey key = KeyOf(0, 0, scale);
        for (std::int32_t pitch = 55; pitch < 70; ++pitch)
            EXPECT_EQ(Parallel(key, pitch, {0, -7, 7, 0})[1], key.Prepare(pitch) - 12);
    }
}

TEST(GenerateParallel, EveryIntervalFromC) {
    const std::int32_t expected[] = {48, 50, 52, 53, 55, 57, 59, 60, 62, 64, 65, 67, 69, 71, 72};
    for (std::int32_t interval = -7; interval <= 7; ++interval)
        EXPECT_EQ(Parallel(kCMajor, 60, {0, interval, 0, 0})[1], expected[interval + 7]) << interval;
}

TEST(GenerateParallel, TheFirstIntervalMovesTheMelody) {
    EXPECT_EQ(Parallel(kCMajor, 60, {2, 0, 0, -3}), (Row{64, 60, 60, 55}));
}

TEST(GenerateParallel, OutsideTheHarmonyScaleTheWalkComesOneToneLater) {
    CKey key;
    key.SetSnapToScale(false);
    key.SetMapScale(false);
    EXPECT_EQ(Parallel(key, 61, {0, 2, -2, 7}), (Row{61, 65, 57, 73})); // C#: D E F and C B A
}

TEST(GenerateParallel, EqualsTheSlowWalkInAllKeys) {
    for (std::int32_t root = 0; root < 12; ++root) {
        for (std::int32_t scale = 0; scale < kNamedScaleCount; ++scale) {
            const CKey key = KeyOf(root, scale, scale);
            const slow::Key slow{root, scale, scale, true, true};
            for (std::int32_t pitch = 50; pitch < 62; ++pitch) {
                const std::int32_t p = slow.Prepared(pitch);
                for (std::int32_t i = 1; i < 7; ++i)
                    ASSERT_EQ(Parallel(key, pitch, {0, i, -i, 0}),
                              (Row{p, p + slow.Walk(slow.Position(p), 1, i + 1),
                                   p - slow.Walk(slow.Position(p), -1, i + 1), p}));
            }
        }
    }
}

TEST(GenerateParallel, RefusesWhatIsMissingOrBeyondAnOctave) {
    Row row = kMark;
    const Row none{};
    EXPECT_EQ(GenerateParallel(kCMajor, 60, nullptr, none.data()), kBadArgument);
    EXPECT_EQ(GenerateParallel(kCMajor, 60, row.data(), nullptr), kBadArgument);
    for (const std::int32_t bad : {8, -8, INT_MAX, INT_MIN})
        EXPECT_EQ(GenerateParallel(kCMajor, 60, row.data(), Row{0, 0, 0, bad}.data()), kBadArgument);
    EXPECT_EQ(row, kMark);
}

// --- Block
// ---------------------------------------------------------------------------------------------------------

TEST(GenerateBlock, CToFIsAPassingNote) {
    EXPECT_EQ(Block(kCMajor, 72, 77, kBlockIntelligent), Below(72, {0, 2, 5, 8}));
}

TEST(GenerateBlock, ARepeatedNoteUsesTheRegularTable) {
    EXPECT_EQ(Block(kCMajor, 72, 72, kBlockIntelligent), Below(72, {0, 3, 5, 8}));
    EXPECT_EQ(Block(kCMajor, 67, 67, kBlockIntelligent), Below(67, {0, 3, 7, 10}));
}

TEST(GenerateBlock, GGoesToCOrAByPatternAAndElsewhereByTheFifth) {
    for (std::int32_t next = 55; next < 79; ++next) {
        const bool passing = next % 12 == 0 || next % 12 == 9;
        EXPECT_EQ(Block(kCMajor, 67, next, kBlockIntelligent),
                  Below(67, passing ? Row{0, 2, 5, 8} : Row{0, 3, 7, 10}))
            << next;
    }
}

TEST(GenerateBlock, TonicInDrop2) { EXPECT_EQ(Block(kCMajor, 72, 72, kDrop2), (Row{72, 67, 64, 57})); }

TEST(GenerateBlock, EveryRegularPatternInCMajor) {
    const struct {
        std::int32_t pitch;
        Row block, shearing, drop2;
    } rows[] = {
        {72, {0, 3, 5, 8}, {0, 3, 8, 12}, {0, 5, 8, 15}},    // C: A G E
        {76, {0, 4, 7, 9}, {0, 7, 9, 12}, {0, 7, 9, 16}},    // E: C A G
        {67, {0, 3, 7, 10}, {0, 7, 10, 12}, {0, 7, 10, 15}}, // G: E C A
        {69, {0, 2, 5, 9}, {0, 2, 9, 12}, {0, 5, 9, 14}},    // A: G E C
        {74, {0, 3, 6, 9}, {0, 3, 6, 12}, {0, 6, 9, 15}},    {77, {0, 3, 6, 9}, {0, 3, 6, 12}, {0, 6, 9, 15}},
        {71, {0, 3, 6, 9}, {0, 3, 6, 12}, {0, 6, 9, 15}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Block(kCMajor, row.pitch, 65, kBlock), Below(row.pitch, row.block));
        EXPECT_EQ(Block(kCMajor, row.pitch, 65, kShearing), Below(row.pitch, row.shearing));
        EXPECT_EQ(Block(kCMajor, row.pitch, 65, kDrop2), Below(row.pitch, row.drop2));
    }
}

TEST(GenerateBlock, EveryPassingPairInEveryKeyAndForm) {
    const struct {
        std::int32_t q, r;
        Row block, shearing, drop2;
    } pairs[] = {
        {7, 0, {0, 2, 5, 8}, {0, 2, 8, 12}, {0, 5, 8, 14}},
        {7, 9, {0, 2, 5, 8}, {0, 2, 8, 12}, {0, 5, 8, 14}},
        {2, 7, {0, 2, 5, 8}, {0, 2, 8, 12}, {0, 5, 8, 14}},
        {0, 5, {0, 2, 5, 8}, {0, 2, 8, 12}, {0, 5, 8, 14}},
        {11, 0, {0, 4, 6, 9}, {0, 4, 6, 12}, {0, 6, 9, 16}},
        {6, 7, {0, 4, 6, 9}, {0, 4, 6, 12}, {0, 6, 9, 16}},
        {8, 9, {0, 4, 6, 9}, {0, 4, 6, 12}, {0, 6, 9, 16}},
        {8, 7, {0, 1, 5, 8}, {0, 1, 8, 12}, {0, 5, 8, 13}},
    };
    for (std::int32_t root = 0; root < 12; ++root) {
        CKey key = KeyOf(root, 0, 0);
        key.SetSnapToScale(false); // F# and G# pass as they are
        for (const auto& pair : pairs) {
            const std::int32_t p = 60 + root + pair.q;
            const std::int32_t next = 72 + root + pair.r;
            EXPECT_EQ(Block(key, p, next, kBlockIntelligent), Below(p, pair.block));
            EXPECT_EQ(Block(key, p, next, kShearingIntelligent), Below(p, pair.shearing));
            EXPECT_EQ(Block(key, p, next, kDrop2Intelligent), Below(p, pair.drop2));
            // Without "Intelligent" the same notes use the regular table, which differs.
            EXPECT_NE(Block(key, p, next, kBlock), Below(p, pair.block));
        }
    }
}

TEST(GenerateBlock, OtherPairsAreNoPassingNotes) {
    CKey key;
    key.SetSnapToScale(false);
    const std::vector<std::pair<std::int32_t, std::int32_t>> passing = {{7, 0},  {7, 9}, {2, 7}, {0, 5},
                                                                        {11, 0}, {6, 7}, {8, 9}, {8, 7}};
    int others = 0;
    for (std::int32_t q = 0; q < 12; ++q) {
        for (std::int32_t r = 0; r < 12; ++r) {
            if (std::find(passing.begin(), passing.end(), std::pair{q, r}) != passing.end()) continue;
            ++others;
            EXPECT_EQ(Block(key, 60 + q, 60 + r, kBlockIntelligent), Block(key, 60 + q, 60 + r, kBlock));
        }
    }
    EXPECT_EQ(others, 136);
}

TEST(GenerateBlock, TheNextPitchIsComparedAsItWasSung) {
    // C# is snapped to C; the next note is a C: the same pitch, so no passing note, though C to C is none
    // anyway. With the melody on G and the next sung as A flat, nothing is snapped in `next`.
    EXPECT_EQ(Block(kCMajor, 67, 68, kBlockIntelligent), Below(67, {0, 3, 7, 10}));
    // A C that is sung as C# and followed by a C# again counts as followed by another pitch.
    EXPECT_EQ(Block(kCMajor, 73, 73, kBlockIntelligent), Block(kCMajor, 73, 73, kBlock));
    // An F# is snapped to F, followed by a G: the position is that of F, no passing note.
    EXPECT_EQ(Block(kCMajor, 66, 67, kBlockIntelligent), Below(65, {0, 3, 6, 9}));
}

TEST(GenerateBlock, PatternsFollowTheHarmonyScale) {
    const CKey minor = KeyOf(0, 5, 5);
    EXPECT_EQ(Block(minor, 72, 72, kBlock), (Row{72, 68, 67, 63})); // C: A flat, G, E flat
}

TEST(GenerateBlock, RandomisedArrangementsIgnoreNextAndKeyButPrepareTheMelody) {
    const struct {
        std::int32_t arrangement;
        Row set, clear;
    } rows[] = {{kBlockRandomized, {0, 3, 5, 8}, {0, 3, 7, 10}},
                {kShearingRandomized, {0, 3, 8, 12}, {0, 7, 10, 12}},
                {kDrop2Randomized, {0, 5, 8, 15}, {0, 7, 10, 15}}};
    for (const auto& row : rows) {
        CRandomBits expected;
        CRandomBits random;
        int set = 0;
        for (std::int32_t i = 0; i < 200; ++i) {
            const CKey key = KeyOf(i % 12, 0, i % 12 == 3 ? 5 : 0);
            const std::int32_t pitch = 50 + i % 25;
            const bool bit = expected.NextBit();
            set += bit ? 1 : 0;
            Row out = kMark;
            ASSERT_EQ(GenerateBlock(key, random, pitch, i * 7, out.data(), row.arrangement), kOk);
            ASSERT_EQ(out, Below(key.Prepare(pitch), bit ? row.set : row.clear));
        }
        EXPECT_GT(set, 60);
        EXPECT_LT(set, 140);
    }
}

TEST(GenerateBlock, ArrangementNineIsRefusedAndLeavesTheRow) {
    Row row = kMark;
    CRandomBits random;
    for (const std::int32_t bad : {9, 10, INT_MAX, -1, INT_MIN})
        EXPECT_EQ(GenerateBlock(kCMajor, random, 60, 62, row.data(), bad), kBadArgument);
    EXPECT_EQ(GenerateBlock(kCMajor, random, 60, 62, nullptr, kBlockRandomized), kBadArgument);
    EXPECT_EQ(row, kMark);
    EXPECT_EQ(random.Next(), CRandomBits().Next()) << "a refused call takes no bit";
}

// --- Fauxbourdon
// ------------------------------------------------------------------------------------------------

TEST(GenerateFauxbourdon, TenorDiatonicIsAFourthAboveAndAThirdBelow) {
    EXPECT_EQ(Fauxbourdon(kCMajor, 60, kTenorDiatonic), (Row{60, 65, 57, 60}));
    EXPECT_EQ(Fauxbourdon(kCMajor, 65, kTenorDiatonic), (Row{65, 71, 62, 65})); // an augmented fourth
}

TEST(GenerateFauxbourdon, DescantDiatonicIsAFourthAndASixthBelow) {
    EXPECT_EQ(Fauxbourdon(kCMajor, 60, kDescantDiatonic), (Row{60, 55, 52, 60}));
}

TEST(GenerateFauxbourdon, TenorIntelligentSingsAPerfectFourthOnTheFourthDegree) {
    for (std::int32_t root = 0; root < 12; ++root) {
        const CKey key = KeyOf(root, 0, 0);
        const std::int32_t fourth = 60 + root + 5;
        EXPECT_EQ(Fauxbourdon(key, fourth, kTenorIntelligent), (Row{fourth, fourth + 5, fourth - 3, fourth}));
        for (const std::int32_t degree : {0, 2, 4, 7, 9, 11})
            EXPECT_EQ(Fauxbourdon(key, 60 + root + degree, kTenorIntelligent),
                      Fauxbourdon(key, 60 + root + degree, kTenorDiatonic));
    }
}

TEST(GenerateFauxbourdon, DescantIntelligentAlwaysHasAPerfectFourthBelow) {
    for (const std::int32_t degree : {0, 2, 4, 5, 7, 9, 11}) {
        const std::int32_t p = 60 + degree;
        const Row row = Fauxbourdon(kCMajor, p, kDescantIntelligent);
        EXPECT_EQ(row[0], p);
        EXPECT_EQ(row[1], p - 5);
        EXPECT_EQ(row[2], Fauxbourdon(kCMajor, p, kDescantDiatonic)[2]);
        EXPECT_EQ(row[3], p);
    }
    EXPECT_NE(Fauxbourdon(kCMajor, 71, kDescantDiatonic)[1], 66); // where the diatonic one is F
}

TEST(GenerateFauxbourdon, TheSecondSnapIsMadeAndTheMapIsNotAppliedTwice) {
    // C major sung over C minor: E becomes E flat, which the second snap, in major again, puts on D.
    const CKey key = KeyOf(0, 0, 5);
    EXPECT_EQ(Fauxbourdon(key, 64, kTenorDiatonic), (Row{62, 67, 58, 62})); // from D: G above, B flat below
    EXPECT_EQ(key.Prepare(64), 63);
    EXPECT_EQ(Fauxbourdon(key, 64, kDescantIntelligent)[0], 63);
    // Lydian's F# goes to F of major; a map applied twice would not change it, a map of major on to Lydian
    // would.
    const CKey up = KeyOf(0, 0, 3);
    EXPECT_EQ(up.Prepare(65), 66);
    EXPECT_EQ(Fauxbourdon(up, 65, kTenorDiatonic)[0], 65);
    EXPECT_TRUE(key.GetMapScale());
}

TEST(GenerateFauxbourdon, RefusesWhatIsMissingOrUnknown) {
    Row row = kMark;
    for (std::int32_t arrangement = 0; arrangement < 4; ++arrangement)
        EXPECT_EQ(GenerateFauxbourdon(kCMajor, 60, nullptr, arrangement), kBadArgument);
    for (const std::int32_t bad : {-1, 4, INT_MAX})
        EXPECT_EQ(GenerateFauxbourdon(kCMajor, 60, row.data(), bad), kBadArgument);
    EXPECT_EQ(row, kMark);
}

// --- Organum
// -------------------------------------------------------------------------------------------------------

TEST(GenerateOrganum, FollowsTheScaleWithTheMap) {
    const Row expected[] = {{65, 71, 65, 65}, {65, 60, 65, 65}, {65, 72, 65, 65}, {65, 59, 65, 65},
                            {65, 77, 65, 65}, {65, 53, 65, 65}, {65, 59, 71, 65}};
    for (std::int32_t arrangement = 0; arrangement < 7; ++arrangement) {
        EXPECT_EQ(Organum(kCMajor, 65, arrangement), expected[arrangement]);
        EXPECT_EQ(Organum(kCMajor, 66, arrangement), expected[arrangement]); // F# is snapped
    }
}

TEST(GenerateOrganum, IsFixedInSemitonesWithoutTheMapAndPreparesNothing) {
    CKey key = KeyOf(4, 0, 0);
    key.SetMapScale(false);
    const Row expected[] = {{66, 71, 66, 66}, {66, 61, 66, 66}, {66, 66, 66, 73}, {66, 59, 66, 66},
                            {66, 78, 66, 66}, {66, 54, 66, 66}, {66, 59, 71, 66}};
    for (std::int32_t arrangement = 0; arrangement < 7; ++arrangement)
        EXPECT_EQ(Organum(key, 66, arrangement), expected[arrangement]);
    EXPECT_EQ(Organum(key, 65, kOctaveAbove), (Row{65, 77, 65, 65})); // not a tone of E major
}

TEST(GenerateOrganum, FifthAboveWithoutTheMapSingsTheMelodyTwice) {
    CKey key;
    key.SetMapScale(false);
    EXPECT_EQ(Organum(key, 60, kFifthAbove), (Row{60, 60, 60, 67}));
}

TEST(GenerateOrganum, RefusesWhatIsMissingOrUnknown) {
    CKey key;
    for (const bool map : {true, false}) {
        key.SetMapScale(map);
        Row row = kMark;
        EXPECT_EQ(GenerateOrganum(key, 60, nullptr, 0), kBadArgument);
        for (const std::int32_t bad : {-1, 7, INT_MAX})
            EXPECT_EQ(GenerateOrganum(key, 60, row.data(), bad), kBadArgument);
        EXPECT_EQ(row, kMark);
    }
}

TEST(TableStyles, PitchesFarOutsideKeepTheirShape) {
    const std::function<Row(std::int32_t)> styles[] = {
        [](std::int32_t p) {
            return Parallel(kCMajor, p, {0, 3, -4, 7});
        },
        [](std::int32_t p) { return Block(kCMajor, p, p + 5, kDrop2Intelligent); },
        [](std::int32_t p) { return Fauxbourdon(kCMajor, p, kDescantIntelligent); },
        [](std::int32_t p) { return Organum(kCMajor, p, kOctaveAround); },
    };
    for (const auto& style : styles) {
        const Row near = style(60);
        for (const std::int32_t octaves : {-1000000, -20, 20, 1000000}) {
            Row far = style(60 + 12 * octaves);
            for (std::int32_t& pitch : far) pitch -= 12 * octaves;
            EXPECT_EQ(far, near);
        }
    }
    for (const std::int32_t end : {INT_MIN, INT_MAX}) {
        Row row{};
        CRandomBits random;
        EXPECT_EQ(GenerateBlock(kCMajor, random, end, end, row.data(), kDrop2Intelligent), kOk);
        EXPECT_EQ(GenerateOrganum(kCMajor, end, row.data(), kOctaveAbove), kOk);
        EXPECT_LE(std::abs(row[1] - row[0]), 12);
    }
}

} // namespace
} // namespace sonorelle::ConsortierClassic
