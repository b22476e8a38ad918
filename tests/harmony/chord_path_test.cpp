#include "harmony/chord_path.h"

#include "harmony/slow_chord_path.h"
#include "platform/result_codes.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <vector>

namespace sonorelle::ConsortierClassic {
namespace {

constexpr unsigned kGenerator = 31117;
constexpr ChordRecord kMark{77, 77, 77, 77};

CKey MakeKey(std::int32_t root, std::int32_t melodyScale, std::int32_t harmonyScale, bool snap = true) {
    CKey key;
    key.SetRoot(root);
    key.SetMelodyScale(melodyScale);
    key.SetHarmonyScale(harmonyScale);
    key.SetSnapToScale(snap);
    key.SetMapScale(snap);
    return key;
}

slow::ChordPath SlowOf(const CKey& key, const std::vector<int>& pitches) {
    return {slow::Key{key.GetRoot(), key.GetMelodyScale(), key.GetHarmonyScale(), key.GetSnapToScale(),
                      key.GetMapScale()},
            pitches};
}

std::vector<ChordRecord> Find(const CKey& key, const std::vector<int>& pitches) {
    std::vector<ChordRecord> chords(pitches.size(), kMark);
    EXPECT_EQ(FindChordPath(key, pitches.data(), chords.data(), static_cast<std::int32_t>(pitches.size())),
              kOk);
    return chords;
}

int StateOf(const ChordRecord& chord) { return chord.root + 12 * chord.triadType; }

ChordRecord Major(std::int32_t root) { return {root, 3, kMajorTriad, kNoTetrad}; }
ChordRecord Minor(std::int32_t root) { return {root, 3, kMinorTriad, kNoTetrad}; }

std::vector<int> Melody(std::mt19937& random, int count) {
    std::vector<int> pitches;
    for (int i = 0; i < count; ++i) pitches.push_back(55 + static_cast<int>(random() % 20));
    return pitches;
}

CKey AnyKey(std::mt19937& random) {
    return MakeKey(static_cast<int>(random() % 12), static_cast<int>(random() % 11),
                   static_cast<int>(random() % 12), random() % 4 != 0);
}

TEST(FindChordPath, OneNoteTakesTheStateOfLowestCost) {
    EXPECT_EQ(Find(CKey(), {60})[0], Major(0)); // C
    EXPECT_EQ(Find(CKey(), {64})[0], Major(0)); // E
    EXPECT_EQ(Find(CKey(), {67})[0], Major(0)); // G
    EXPECT_EQ(Find(CKey(), {62})[0], Major(7)); // D: of d, G and b
    EXPECT_EQ(Find(MakeKey(9, 5, 5), {69})[0], Minor(9));
}

TEST(FindChordPath, AMelodyThatEndsOnTheThirdEndsOnTheTonicChord) {
    for (std::int32_t root = 0; root < 12; ++root) {
        const auto chords = Find(MakeKey(root, 0, 0), {60 + root, 62 + root, 65 + root, 64 + root});
        EXPECT_EQ(chords.back(), Major(root));
    }
}

TEST(FindChordPath, ARepeatedNoteKeepsItsChord) {
    for (std::int32_t scale = 0; scale < 2; ++scale) {
        for (const int pitch : {60, 62, 64, 65, 67, 69}) {
            const auto chords = Find(MakeKey(0, 5 * scale, 5 * scale), std::vector<int>(12, pitch));
            for (const ChordRecord& chord : chords) EXPECT_EQ(chord, chords.front()) << pitch;
        }
    }
}

TEST(FindChordPath, CInCMajorGivesWeightToThreeStates) {
    // Asked of the oracle, on which the other tests lean: a note in the middle, degree weights 1.0, 0.7 and
    // 0.8.
    const auto weights = SlowOf(CKey(), {60, 60, 60}).weights[1];
    for (int state = 0; state < 25; ++state) {
        const float expected = state == 0 ? 1.0F : state == 21 ? 0.7F : state == 5 ? 0.8F : 0.0F;
        EXPECT_EQ(weights[static_cast<std::size_t>(state)], expected) << state;
    }
    // And of the path: a C between two a's of A minor is harmonised by one of the three.
    const int state = StateOf(Find(CKey(), {69, 60, 69})[1]);
    EXPECT_TRUE(state == 0 || state == 21 || state == 5);
}

TEST(FindChordPath, ACadence) {
    // I IV ? V I, as a musician would set it.
    const std::vector<int> pitches = {60, 65, 67, 71, 72};
    const auto chords = Find(CKey(), pitches);
    EXPECT_EQ(chords.front(), Major(0));
    EXPECT_EQ(chords.back(), Major(0));
    EXPECT_EQ(chords[1], Major(5));
    EXPECT_EQ(chords[3], Major(7));
}

TEST(FindChordPath, TheSeventhDegreeIsTheMinorTriadOnItsRoot) {
    // The triads e, G and b dim hold a B; the diminished one counts as minor.
    const auto weights = SlowOf(CKey(), {60, 71, 60}).weights[1];
    EXPECT_EQ(weights[23], 0.4F);
    EXPECT_EQ(weights[11], 0.0F);
}

TEST(FindChordPath, TheWholeToneScaleHasSixDegrees) {
    std::mt19937 random(kGenerator);
    for (int round = 0; round < 50; ++round) {
        const CKey key = MakeKey(round % 12, 10, 10);
        const auto pitches = Melody(random, 40);
        const auto chords = Find(key, pitches);
        EXPECT_EQ(chords, SlowOf(key, pitches).Search());
    }
}

TEST(FindChordPath, OfEqualCostsTheLowestStateWins) {
    // In the scale of all twelve tones each note is held by triads of equal degree weights, so ties abound.
    std::mt19937 random(kGenerator);
    const CKey key = MakeKey(0, 0, 11, false);
    for (int round = 0; round < 50; ++round) {
        const auto pitches = Melody(random, 30);
        ASSERT_EQ(Find(key, pitches), SlowOf(key, pitches).Search()) << "generator " << kGenerator;
    }
    // A note outside the scale, alone: no weight is a number, all other states cost 1, and the lowest is C
    // major.
    EXPECT_EQ(Find(MakeKey(0, 0, 0, false), {61})[0], Major(0));
    // The same on C# itself, whose own state is not a number: C major again; and outside A major the C is
    // passed over.
    EXPECT_EQ(Find(MakeKey(9, 0, 0, false), {60})[0], SlowOf(MakeKey(9, 0, 0, false), {60}).Search()[0]);
}

TEST(FindChordPath, EqualsASearchOverAllPathsOnShortMelodies) {
    RecordProperty("generator", static_cast<int>(kGenerator));
    std::mt19937 random(kGenerator);
    for (int round = 0; round < 120; ++round) {
        const int count = 1 + round % 6;
        const CKey key = AnyKey(random);
        const auto pitches = Melody(random, count);
        const slow::ChordPath slow = SlowOf(key, pitches);
        std::vector<int> states;
        for (const ChordRecord& chord : Find(key, pitches)) states.push_back(StateOf(chord));
        ASSERT_EQ(slow.CostOf(states), slow.LeastCost()) << "generator " << kGenerator << " round " << round;
    }
}

TEST(FindChordPath, EqualsTheSearchWithFiftyCandidatesOnLongMelodies) {
    std::mt19937 random(kGenerator + 1);
    for (int round = 0; round < 150; ++round) {
        const CKey key = AnyKey(random);
        const auto pitches = Melody(random, 1 + static_cast<int>(random() % 120));
        ASSERT_EQ(Find(key, pitches), SlowOf(key, pitches).Search())
            << "generator " << kGenerator + 1 << " round " << round;
    }
}

TEST(FindChordPath, EdgesOutsideTheScaleAreSurvived) {
    const CKey key = MakeKey(0, 0, 0, false);
    for (const std::vector<int>& pitches :
         {std::vector<int>{61, 60, 64}, {60, 64, 66}, {61, 61}, {61, 63, 66, 68, 70}}) {
        const auto chords = Find(key, pitches);
        EXPECT_EQ(chords, SlowOf(key, pitches).Search());
        for (const ChordRecord& chord : chords) EXPECT_EQ(chord.noteCount, 3);
    }
}

TEST(FindChordPath, ChordsAreTriadsThatHoldTheirNotesInATonalMelody) {
    const std::vector<int> pitches = {67, 67, 69, 67, 72, 71, 67, 67, 69, 67, 74, 72};
    const auto chords = Find(CKey(), pitches);
    for (std::size_t i = 0; i < pitches.size(); ++i) {
        const int above = (pitches[i] - chords[i].root + 12) % 12;
        const int third = chords[i].triadType == kMajorTriad ? 4 : 3;
        EXPECT_TRUE(above == 0 || above == third || above == 7) << i;
        EXPECT_EQ(chords[i].tetradType, kNoTetrad);
    }
}

TEST(FindChordPath, NoNotesLeaveTheChordsAlone) {
    ChordRecord chord = kMark;
    const std::int32_t pitch = 60;
    for (const std::int32_t none : {0, -1, INT_MIN})
        EXPECT_EQ(FindChordPath(CKey(), &pitch, &chord, none), kOk);
    EXPECT_EQ(FindChordPath(CKey(), nullptr, nullptr, 0), kOk);
    EXPECT_EQ(chord, kMark);
}

TEST(FindChordPath, MissingArraysAreRefused) {
    ChordRecord chord = kMark;
    const std::int32_t pitch = 60;
    EXPECT_EQ(FindChordPath(CKey(), nullptr, &chord, 1), kBadArgument);
    EXPECT_EQ(FindChordPath(CKey(), &pitch, nullptr, 1), kBadArgument);
    EXPECT_EQ(chord, kMark);
}

TEST(FindChordPath, PitchesFarOutsideGetTheChordsOfTheirPitchClasses) {
    const std::vector<int> near = {60, 62, 64, 65, 67, 71, 72};
    std::vector<int> far = near;
    for (std::size_t i = 0; i < far.size(); ++i) far[i] += 12 * (i % 2 == 0 ? 10000 : -10000);
    EXPECT_EQ(Find(CKey(), far), Find(CKey(), near));
    EXPECT_EQ(Find(CKey(), {INT_MIN, INT_MAX, 0}).size(), 3U);
}

TEST(FindChordPath, TwoThousandNotes) {
    std::mt19937 random(kGenerator + 2);
    const auto pitches = Melody(random, 2000);
    EXPECT_EQ(Find(CKey(), pitches), SlowOf(CKey(), pitches).Search());
}

TEST(FindChordPath, MinorUsesItsOwnProgressions) {
    std::mt19937 random(kGenerator + 3);
    int different = 0;
    for (int round = 0; round < 40; ++round) {
        const auto pitches = Melody(random, 12);
        different += Find(CKey(), pitches) == Find(MakeKey(9, 5, 5), pitches) ? 0 : 1;
        EXPECT_EQ(Find(MakeKey(9, 5, 5), pitches), SlowOf(MakeKey(9, 5, 5), pitches).Search());
    }
    EXPECT_GT(different, 20);
}

} // namespace
} // namespace sonorelle::ConsortierClassic
