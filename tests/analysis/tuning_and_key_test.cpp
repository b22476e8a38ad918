#include "analysis/tuning_and_key.h"

#include "support/hostile_numbers.h"
#include "support/literal_note_model.h"
#include "support/synthetic_singer.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace sonorelle {
namespace {

NoteRecord Note(float pitch, std::int32_t length = 1000) {
    NoteRecord note;
    note.pitch = pitch;
    note.length = length;
    return note;
}

std::int32_t KeyOf(const std::vector<NoteRecord>& notes, std::int32_t offset = 0) {
    return EstimateKey(CountPitchClasses(notes, EstimateTuning(notes), offset));
}

// One note for each pitch class, from the octave of middle C.
std::vector<NoteRecord> NotesOf(const std::array<std::int32_t, 12>& lengths, int root = 0) {
    std::vector<NoteRecord> notes;
    for (int c = 0; c < 12; ++c) {
        const std::int32_t length = lengths[static_cast<std::size_t>(c)];
        if (length > 0) notes.push_back(Note(static_cast<float>(60 + (c + root) % 12), length));
    }
    return notes;
}

TEST(EstimateTuning, WithoutNotesIsZero) { EXPECT_EQ(EstimateTuning({}), 0.0F); }

TEST(EstimateTuning, OfNotesOnOneGridIsTheGridsOffset) {
    for (const float offset : {-0.375F, -0.125F, 0.0F, 0.125F, 0.375F}) {
        const std::vector<NoteRecord> notes{Note(60.0F + offset), Note(64.0F + offset), Note(71.0F + offset)};
        EXPECT_EQ(EstimateTuning(notes), offset);
    }
}

TEST(EstimateTuning, NotesAreWeighedByTheirLength) {
    EXPECT_FLOAT_EQ(EstimateTuning(std::vector<NoteRecord>{Note(60.125F, 3000), Note(62.0F, 1000)}),
                    0.09375F);
}

TEST(EstimateTuning, HalfASemitoneIsCountedUpward) {
    EXPECT_EQ(EstimateTuning(std::vector<NoteRecord>{Note(60.5F), Note(63.5F)}), 0.5F);
}

TEST(EstimateTuning, AroundHalfASemitoneNotesDoNotCancel) {
    // 0.4375 above and 0.4375 below: on the grid of semitones they would meet at 0.
    const std::vector<NoteRecord> notes{Note(60.4375F, 1200), Note(62.5625F, 1000)};
    const float expected = static_cast<float>((1200 * -0.0625 + 1000 * 0.0625) / 2200 + 0.5);
    EXPECT_FLOAT_EQ(EstimateTuning(notes), expected);
}

TEST(EstimateTuning, AQuarterToneIsATieThatGoesToTheSecondGrid) {
    EXPECT_EQ(EstimateTuning(std::vector<NoteRecord>{Note(60.25F)}), 0.25F);
    EXPECT_EQ(EstimateTuning(std::vector<NoteRecord>{Note(60.75F)}), -0.25F);
}

TEST(EstimateTuning, ATieGoesToTheFirstGridWhenItsOffsetIsSmaller) {
    EXPECT_EQ(EstimateTuning(std::vector<NoteRecord>{Note(60.25F), Note(61.75F)}), 0.0F);
    // The first grid says 1/8, the second -1/8 and, moved back, 3/8.
    EXPECT_EQ(EstimateTuning(std::vector<NoteRecord>{Note(60.25F, 3000), Note(60.75F, 1000)}), 0.125F);
}

TEST(EstimateTuning, IsWithinHalfASemitoneWhateverTheNotes) {
    test::RandomNumbers random(3);
    for (int round = 0; round < 1000; ++round) {
        std::vector<NoteRecord> notes;
        const double grid = random.Symmetric();
        const double spread = random.Uniform();
        for (int i = 0; i < 1 + random.Below(30); ++i) {
            const double pitch = 40 + random.Below(40) + grid + spread * random.Symmetric();
            notes.push_back(Note(static_cast<float>(pitch), 1 + random.Below(50000)));
        }
        const float tuning = EstimateTuning(notes);
        ASSERT_LE(std::fabs(tuning), 0.5F);
        ASSERT_NEAR(tuning, test::LiteralTuning(notes), 1e-6F); // both sum in f64
    }
}

TEST(EstimateTuning, NotesWithoutLengthGiveZero) {
    EXPECT_EQ(EstimateTuning(std::vector<NoteRecord>{Note(60.25F, 0), Note(61.0F, 0)}), 0.0F);
}

TEST(CountPitchClasses, LengthsAddUpOnTheNearestSemitone) {
    const std::vector<NoteRecord> notes{Note(60.0F, 100), Note(72.4F, 10), Note(59.6F, 1), Note(61.0F, 1000)};
    const PitchClassHistogram histogram = CountPitchClasses(notes, 0.0F, 0);
    EXPECT_EQ(histogram, (PitchClassHistogram{111, 1000}));
}

TEST(CountPitchClasses, TuningIsTakenOffAndOffsetAdded) {
    const std::vector<NoteRecord> notes{Note(60.75F, 100)};
    EXPECT_EQ(CountPitchClasses(notes, 0.5F, 0)[0], 100.0F);
    EXPECT_EQ(CountPitchClasses(notes, -0.25F, 0)[1], 100.0F);
    EXPECT_EQ(CountPitchClasses(notes, 0.5F, 7)[7], 100.0F);
    EXPECT_EQ(CountPitchClasses(notes, 0.5F, -1)[11], 100.0F);
}

TEST(CountPitchClasses, NegativePitchesFallIntoTheirClass) {
    EXPECT_EQ(CountPitchClasses(std::vector<NoteRecord>{Note(-1.0F, 5)}, 0.0F, 0)[11], 5.0F);
    EXPECT_EQ(CountPitchClasses(std::vector<NoteRecord>{Note(-12.0F, 5)}, 0.0F, 0)[0], 5.0F);
    EXPECT_EQ(CountPitchClasses(std::vector<NoteRecord>{Note(-13.0F, 5)}, 0.0F, 0)[11], 5.0F);
}

TEST(CountPitchClasses, AnyPitchTuningAndOffsetIsSafe) {
    for (const float pitch : {kNaN, kInfinity, -kInfinity, 3e38F, -3e38F, 2147483648.0F, -2147483648.0F}) {
        for (const float tuning : {0.0F, kNaN, kInfinity, -kInfinity}) {
            for (const std::int32_t offset : {0, kLargestI32, kSmallestI32}) {
                const PitchClassHistogram histogram =
                    CountPitchClasses(std::vector<NoteRecord>{Note(pitch, 5)}, tuning, offset);
                float sum = 0;
                for (const float value : histogram) sum += value;
                EXPECT_EQ(sum, 5.0F);
                const std::int32_t key = EstimateKey(histogram);
                EXPECT_GE(key, 0);
                EXPECT_LT(key, 24);
            }
        }
    }
}

TEST(EstimateKey, WithoutNotesThereIsNone) {
    EXPECT_EQ(KeyOf({}), -1);
    EXPECT_EQ(KeyOf({Note(60.0F, 0)}), -1);
}

//                                                C    C#  D    D#   E    F    F#  G    G#   A    A#   B
constexpr std::array<std::int32_t, 12> kInMajor{900, 0, 400, 0, 600, 400, 0, 700, 0, 300, 0, 200};
constexpr std::array<std::int32_t, 12> kInMinor{900, 0, 400, 600, 0, 400, 0, 700, 300, 0, 200, 0};

TEST(EstimateKey, FindsAllTwentyFourKeys) {
    for (int root = 0; root < 12; ++root) {
        EXPECT_EQ(KeyOf(NotesOf(kInMajor, root)), root);
        EXPECT_EQ(KeyOf(NotesOf(kInMinor, root)), root + 12);
    }
}

TEST(EstimateKey, OffsetsTransposeTheKey) {
    for (int offset = -24; offset <= 24; ++offset) {
        EXPECT_EQ(KeyOf(NotesOf(kInMajor), offset), (offset + 24) % 12);
        EXPECT_EQ(KeyOf(NotesOf(kInMinor), offset), (offset + 24) % 12 + 12);
    }
}

TEST(EstimateKey, ForeignTuningDoesNotMoveTheKey) {
    for (const float tuning : {-0.45F, -0.2F, 0.2F, 0.45F}) {
        std::vector<NoteRecord> notes = NotesOf(kInMajor, 2);
        for (NoteRecord& note : notes) note.pitch += tuning;
        EXPECT_EQ(KeyOf(notes), 2);
    }
}

// A melody that A major and A minor hold equally well, while no other major key fits better than A minor's
// profile: the minor profile wins, and the answer is the major key all the same.
TEST(EstimateKey, WhereMajorAndMinorOfOneRootAreCandidatesMajorIsTheAnswer) {
    //                                              C   C#  D   D#  E   F   F#  G   G#  A   A#  B
    constexpr std::array<std::int32_t, 12> kMixed{47, 0, 41, 0, 44, 2, 39, 0, 56, 16, 44, 17};
    const std::vector<NoteRecord> notes = NotesOf(kMixed);
    const PitchClassHistogram histogram = CountPitchClasses(notes, 0.0F, 0);
    constexpr std::array<double, 12> kMajor{6.35, 2.23, 3.48, 2.33, 4.38, 4.09,
                                            2.52, 5.19, 2.39, 3.66, 2.29, 2.88};
    constexpr std::array<double, 12> kMinor{6.33, 2.68, 3.52, 5.38, 2.6,  3.53,
                                            2.54, 4.75, 3.98, 2.69, 3.34, 3.17};
    double major = 0, minor = 0, majorTotal = 0, minorTotal = 0;
    for (std::size_t j = 0; j < 12; ++j) {
        major += static_cast<double>(histogram[(9 + j) % 12]) * kMajor[j];
        minor += static_cast<double>(histogram[(9 + j) % 12]) * kMinor[j];
        majorTotal += kMajor[j];
        minorTotal += kMinor[j];
    }
    ASSERT_GT(minor / minorTotal, major / majorTotal);
    EXPECT_EQ(test::LiteralKey(notes, 0), 9);
    EXPECT_EQ(KeyOf(notes), 9);
}

TEST(EstimateKey, AgreesWithThePlainModel) {
    test::RandomNumbers random(5);
    for (int round = 0; round < 5000; ++round) {
        std::array<std::int32_t, 12> lengths{};
        for (std::int32_t& length : lengths) length = random.Below(3) == 0 ? 0 : 1 + random.Below(100000);
        const std::vector<NoteRecord> notes = NotesOf(lengths);
        ASSERT_EQ(KeyOf(notes), test::LiteralKey(notes, 0)) << "round " << round;
    }
}

} // namespace
} // namespace sonorelle
