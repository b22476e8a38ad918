#include "harmony/voicing_stages.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace sonorelle::ConsortierClassic {
namespace {

using Stage = void (*)(const VoicingTask&, CScoreCube&);
using Voices = std::array<std::int32_t, 4>;
const CKey kPlainKey;

// A note in C major whose candidates are given by hand.
VoicingTask Task(std::int32_t harmonyVoices, std::int32_t voicesAbove, std::int32_t melody,
                 const std::vector<std::int32_t>& candidates, Voices previous = {-1, -1, -1, -1}) {
    VoicingTask task{kPlainKey};
    task.harmonyVoices = harmonyVoices;
    task.voicesAbove = voicesAbove;
    task.melody = melody;
    task.rangeLow = -16;
    task.rangeHigh = 16;
    task.previous = previous;
    task.candidateCount = static_cast<std::int32_t>(candidates.size());
    for (std::size_t i = 0; i < candidates.size(); ++i) task.candidates[i] = candidates[i];
    return task;
}

// The cube after one stage, from scores of 1.
CScoreCube After(Stage stage, const VoicingTask& task) {
    CScoreCube cube;
    cube.Reset(task.candidateCount);
    stage(task, cube);
    return cube;
}

// Whether every score of a choice among the candidates is still 1.
bool Untouched(const CScoreCube& cube) {
    const std::int32_t n = cube.GetCandidateCount();
    for (std::int32_t i = 0; i < n; ++i)
        for (std::int32_t j = 0; j < n; ++j)
            for (std::int32_t k = 0; k < n; ++k)
                if (cube.At(i, j, k) != 1.0F) return false;
    return true;
}

// One four-voice choice of three harmony pitches around a melody: its score after a stage.
float FourVoices(Stage stage, std::int32_t melody, const std::vector<std::int32_t>& harmony,
                 Voices previous) {
    return After(stage, Task(3, 1, melody, harmony, previous)).At(0, 1, 2);
}

// --- Candidates
// ---------------------------------------------------------------------------------------------------------

TEST(BuildCandidates, ChordTonesOfTheWindowWithBothEnds) {
    VoicingTask task{kPlainKey};
    task.melody = 60;
    task.rangeLow = -12;
    task.rangeHigh = 12;
    BuildCandidates(task);
    const std::vector<std::int32_t> expected = {48, 52, 55, 60, 64, 67, 72};
    ASSERT_EQ(task.candidateCount, 7);
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(task.candidates[i], expected[i]);
    EXPECT_EQ(task.candidates[7], -1);
}

TEST(BuildCandidates, AChordOutsideTheScaleGetsTheTonesOfTheScaleAboveItsRoot) {
    VoicingTask task{kPlainKey};
    task.chordRoot = 1; // C#: then E, G by the walk, one tone later than from a tone
    task.melody = 60;
    task.rangeHigh = 12;
    BuildCandidates(task);
    ASSERT_EQ(task.candidateCount, 3);
    EXPECT_EQ(task.candidates[0], 61);
    EXPECT_EQ(task.candidates[1], 65);
    EXPECT_EQ(task.candidates[2], 69);
}

TEST(BuildCandidates, AWindowWithoutAChordToneHasNone) {
    VoicingTask task{kPlainKey};
    task.melody = 60;
    task.rangeLow = 1;
    task.rangeHigh = 3;
    BuildCandidates(task);
    EXPECT_EQ(task.candidateCount, 0);
}

TEST(BuildCandidates, NoChordFillsMoreThanTheCube) {
    for (std::int32_t scale = 0; scale < kScaleCount; ++scale) {
        CKey key;
        key.SetHarmonyScale(scale);
        for (const std::int32_t notes : {-5, 0, 1, 3, 4, 5, 1000000}) {
            for (std::int32_t root = 0; root < 12; ++root) {
                VoicingTask task{key};
                task.chordRoot = root;
                task.chordNotes = notes;
                task.melody = 60;
                task.rangeLow = -16;
                task.rangeHigh = 12;
                BuildCandidates(task);
                ASSERT_GE(task.candidateCount, 2);
                ASSERT_LE(task.candidateCount, kMostCandidates);
            }
        }
    }
}

// --- The order of the stages' own rules
// -----------------------------------------------------------------------------------

TEST(ApplyRangeOrder, VoicesOnTheWrongSideAreScaledOncePerVoice) {
    const VoicingTask task = Task(3, 1, 62, {60, 64, 67}); // two below, one above
    const CScoreCube cube = After(ApplyRangeOrder, task);
    const float wrong = 1e-5F;
    EXPECT_EQ(cube.At(0, 0, 1), 1.0F);                          // C C | E
    EXPECT_EQ(cube.At(0, 0, 0), wrong);                         // the highest is below the melody
    EXPECT_EQ(cube.At(0, 1, 2), wrong);                         // the middle one is above
    EXPECT_EQ(cube.At(1, 2, 2), wrong * wrong);                 // so are both
    EXPECT_EQ(cube.At(2, 1, 0), wrong * wrong * wrong * wrong); // and it falls
}

TEST(ApplyRangeOrder, AllBelowWithRangeZeroAndAllAboveWithTheFullRange) {
    const CScoreCube below = After(ApplyRangeOrder, Task(3, 0, 62, {60, 64}));
    EXPECT_EQ(below.At(0, 0, 0), 1.0F);
    EXPECT_LT(below.At(0, 0, 1), 1e-4F);
    const CScoreCube above = After(ApplyRangeOrder, Task(3, 3, 62, {60, 64}));
    EXPECT_EQ(above.At(1, 1, 1), 1.0F);
    EXPECT_LT(above.At(0, 1, 1), 1e-4F);
}

TEST(ApplyRangeOrder, ACandidateOfTheMelodysPitchIsOnNeitherSide) {
    EXPECT_TRUE(Untouched(After(ApplyRangeOrder, Task(3, 1, 60, {60}))));
}

TEST(ApplyChordFit, AMelodyEqualToACandidateStandsBelowItAndIsAUnison) {
    const VoicingTask task = Task(3, 1, 60, {60, 64, 67});
    const VoiceVector voices = InsertMelody(60, 60, 64, 67);
    EXPECT_EQ(voices.pitches, (Voices{60, 60, 64, 67}));
    EXPECT_EQ(After(ApplyChordFit, task).At(0, 1, 2), 1.0F * 0.15F * 0.9F); // unison, and the root doubled
}

TEST(ApplyChordFit, AnOctaveIsADoublingAndNoUnison) {
    EXPECT_EQ(FourVoices(ApplyChordFit, 72, {60, 64, 67}, {}), 0.9F * 4.0F);
    EXPECT_EQ(FourVoices(ApplyChordFit, 76, {60, 64, 67}, {}), 0.7F * 4.0F);
    EXPECT_EQ(FourVoices(ApplyChordFit, 79, {60, 64, 67}, {}), 0.8F * 4.0F);
}

TEST(ApplyChordFit, AnIncompleteTriadLosesATenth) {
    EXPECT_EQ(FourVoices(ApplyChordFit, 74, {60, 64, 69}, {}), 4.0F * 0.1F); // no fifth
    EXPECT_EQ(FourVoices(ApplyChordFit, 74, {60, 65, 67}, {}), 4.0F * 0.1F); // no third
    EXPECT_EQ(FourVoices(ApplyChordFit, 71, {60, 62, 64}, {}), 4.0F);        // the seventh stands in
    EXPECT_EQ(FourVoices(ApplyChordFit, 71, {62, 65, 67}, {}), 4.0F);
}

TEST(ApplyChordFit, AFourNoteChordSumsWhatIsThere) {
    const auto score = [](std::int32_t melody, const std::vector<std::int32_t>& harmony) {
        VoicingTask task = Task(3, 1, melody, harmony);
        task.chordNotes = 4;
        return After(ApplyChordFit, task).At(0, 1, 2);
    };
    EXPECT_EQ(score(71, {60, 64, 67}), (0.5F + 0.4F + 0.1F + 0.7F) * 4.0F);
    EXPECT_EQ(score(74, {60, 64, 71}), (0.5F + 0.4F + 0.7F) * 4.0F);
    EXPECT_EQ(score(74, {62, 65, 69}), 0.0F); // nothing, and the ninth doubled
}

TEST(ApplyChordFit, TwoVoicesLoseByAnOctaveOrUnison) {
    const CScoreCube cube = After(ApplyChordFit, Task(1, 1, 60, {60, 64, 72}));
    EXPECT_EQ(cube.At(0, 0, 0), 0.15F);
    EXPECT_EQ(cube.At(1, 0, 0), 1.0F);
    EXPECT_EQ(cube.At(2, 2, 2), 0.15F);
}

TEST(ApplyChordFit, FallingVoicesAreOut) {
    const CScoreCube four = After(ApplyChordFit, Task(3, 1, 62, {60, 64, 67}));
    EXPECT_EQ(four.At(2, 1, 0), 0.0F);
    EXPECT_EQ(four.At(1, 0, 2), 0.0F);
    EXPECT_GT(four.At(0, 1, 2), 0.0F);
    const CScoreCube three = After(ApplyChordFit, Task(2, 1, 62, {60, 64, 67}));
    for (std::int32_t k = 0; k < 3; ++k) EXPECT_EQ(three.At(1, 0, k), 0.0F);
    EXPECT_GT(three.At(0, 1, 2), 0.0F);
}

TEST(ApplyRootAffinity, WeighsTheLowestVoiceWhereOneIsBelowTheMelody) {
    const VoicingTask below = Task(3, 0, 72, {60, 62, 64, 67, 71});
    const CScoreCube cube = After(ApplyRootAffinity, below);
    const float expected[] = {1.0F, 0.0F, 0.7F, 0.6F, 0.7F};
    for (std::int32_t i = 0; i < 5; ++i)
        for (std::int32_t j = 0; j < 5; ++j) EXPECT_EQ(cube.At(i, j, 4 - j), expected[i]);
    EXPECT_TRUE(Untouched(After(ApplyRootAffinity, Task(3, 3, 60, {60, 62, 64}))));
    EXPECT_TRUE(Untouched(After(ApplyRootAffinity, Task(1, 1, 60, {60, 62, 64}))));
}

TEST(ApplyRootAffinity, ARootOutsideTheScaleIsNoError) {
    VoicingTask task = Task(3, 0, 72, {61, 64});
    task.chordRoot = 1;
    const CScoreCube cube = After(ApplyRootAffinity, task);
    EXPECT_EQ(cube.At(0, 0, 0), 1.0F); // -1 steps, held to the prime
    EXPECT_EQ(cube.At(1, 0, 0), 0.0F); // D and E above: a second
}

TEST(ApplyIntervalPreference, EveryIntervalOfTheOctave) {
    const CScoreCube cube =
        After(ApplyIntervalPreference, Task(1, 1, 60, {60, 62, 64, 65, 67, 69, 71, 72, 74}));
    const float expected[] = {0.1F, 0.5F, 1.0F, 0.6F, 0.5F, 1.0F, 0.8F, 0.0F, 0.0F};
    for (std::int32_t i = 0; i < 9; ++i) EXPECT_EQ(cube.At(i, 3, 5), expected[i]) << i;
}

TEST(ApplyVoiceLeading, HalvesForEachStepAndPrefersSemitones) {
    // Bass C, tenor G, melody slot 2, soprano C above.
    const Voices previous = {48, 55, 64, 72};
    EXPECT_EQ(FourVoices(ApplyVoiceLeading, 64, {48, 55, 72}, previous), 1.0F);
    EXPECT_EQ(FourVoices(ApplyVoiceLeading, 64, {48, 57, 72}, previous), 0.5F);
    EXPECT_EQ(FourVoices(ApplyVoiceLeading, 64, {48, 53, 72}, previous), 0.5F);
    EXPECT_EQ(FourVoices(ApplyVoiceLeading, 64, {48, 55, 71}, previous), 0.5F * 1.6F);
    EXPECT_EQ(FourVoices(ApplyVoiceLeading, 64, {48, 60, 72}, previous), 0.125F);
    EXPECT_EQ(FourVoices(ApplyVoiceLeading, 65, {48, 55, 72}, previous), 1.0F) << "the melody is passed over";
}

TEST(ApplyVoiceLeading, TheBassFallsFurtherThanItRises) {
    const Voices previous = {48, 55, 64, 72};
    EXPECT_EQ(FourVoices(ApplyVoiceLeading, 64, {53, 55, 72}, previous), 0.5F);  // a fourth up: one
    EXPECT_EQ(FourVoices(ApplyVoiceLeading, 64, {43, 55, 72}, previous), 0.25F); // a fourth down: two
}

TEST(ApplyVoiceLeading, OfTwoVoicesTheOneOfTheMelodysPitchIsPassedOver) {
    const CScoreCube cube = After(ApplyVoiceLeading, Task(1, 1, 60, {60, 64, 67}, {60, 64, 0, 0}));
    EXPECT_EQ(cube.At(0, 0, 0), 1.0F);
    EXPECT_EQ(cube.At(1, 0, 0), 1.0F);
    EXPECT_EQ(cube.At(2, 1, 2), 0.25F);
}

TEST(ApplySpread, IsABellAroundTheWantedShareOfTheWindow) {
    VoicingTask task = Task(3, 1, 64, {52, 55, 68});
    task.spreadTarget = 0.4F;
    const float x = (16.0F / 32.0F - 0.4F) / 0.1F;
    EXPECT_NEAR(After(ApplySpread, task).At(0, 1, 2), std::exp(-x * x),
                1e-6F); // one rounding to single precision
    task.spreadTarget = 0.5F;
    EXPECT_EQ(After(ApplySpread, task).At(0, 1, 2), 1.0F);
}

TEST(ApplySpread, NeverFallsBelowItsFloor) {
    VoicingTask task = Task(3, 1, 64, {64});
    task.spreadTarget = 1.0F;
    EXPECT_EQ(After(ApplySpread, task).At(0, 0, 0), 1e-10F);
}

TEST(ApplyParallels, FifthsThatRiseByTheSameStepLoseAThousandfold) {
    // C and G, both a step up to D and A; the others held.
    EXPECT_EQ(FourVoices(ApplyParallels, 76, {50, 57, 72}, {48, 55, 72, 76}), 0.001F);
}

TEST(ApplyParallels, TheSameDirectionByDifferentStepsIsUntouched) {
    // A fifth to a fifth in sound, C G to F B, but the voices move by a fourth and a third.
    EXPECT_EQ(FourVoices(ApplyParallels, 76, {53, 59, 72}, {48, 55, 72, 76}), 1.0F);
}

TEST(ApplyParallels, EveryIntervalThatMovesByAStep) {
    const struct {
        std::int32_t upper;
        float factor;
    } rows[] = {{52, 0.001F}, {53, 1.4F}, {55, 0.05F}, {57, 0.001F}, {59, 1.4F}, {60, 0.001F}, {62, 0.002F}};
    const std::int32_t before[] = {50, 52, 53, 55, 57, 59, 60}; // a step lower
    for (std::size_t i = 0; i < std::size(rows); ++i)
        EXPECT_EQ(FourVoices(ApplyParallels, 76, {50, rows[i].upper, 72}, {48, before[i], 72, 76}),
                  rows[i].factor)
            << i;
}

TEST(ApplyParallels, UnisonsAreNoPair) {
    EXPECT_EQ(FourVoices(ApplyParallels, 76, {50, 50, 72}, {48, 48, 72, 76}), 1.0F);
}

TEST(ApplyParallels, ThirdsThatLeapAreLessWelcome) {
    EXPECT_EQ(FourVoices(ApplyParallels, 76, {52, 55, 72}, {48, 52, 72, 76}), 1.4F * 0.7214286F);
    const CScoreCube three = After(ApplyParallels, Task(2, 1, 76, {52, 55}, {48, 52, 76, 0}));
    EXPECT_EQ(three.At(0, 1, 0), 1.01F);
    const CScoreCube step = After(ApplyParallels, Task(2, 1, 76, {50, 53}, {48, 52, 76, 0}));
    EXPECT_EQ(step.At(0, 1, 1), 1.4F);
}

TEST(ApplyParallels, TwoVoicesThatMoveAlikeAtAnyIntervalCountAsOctaves) {
    for (const std::int32_t upper : {62, 65, 67, 69, 74})
        EXPECT_EQ(After(ApplyParallels, Task(1, 1, 62, {upper}, {60, upper == 65 ? 64 : upper - 2, 0, 0}))
                      .At(0, 0, 0),
                  0.002F)
            << upper;
    EXPECT_EQ(After(ApplyParallels, Task(1, 1, 62, {64}, {60, 67, 0, 0})).At(0, 0, 0), 1.0F);
    EXPECT_EQ(After(ApplyParallels, Task(1, 1, 60, {64}, {60, 64, 0, 0})).At(0, 0, 0), 1.0F) << "held";
}

TEST(ApplyParallels, AnOctaveLeapIsAMotionOfItsOwn) {
    // C and E each leap an octave: motion 7 both, parallel thirds that leap.
    EXPECT_EQ(FourVoices(ApplyParallels, 79, {60, 64, 76}, {48, 52, 76, 79}), 1.4F * 0.7214286F);
}

TEST(ApplyStepBonus, RewardsRisingStepsOfTheLowestThreeVoices) {
    EXPECT_EQ(FourVoices(ApplyStepBonus, 76, {50, 57, 72}, {48, 55, 72, 76}), 25.0F);
    EXPECT_EQ(FourVoices(ApplyStepBonus, 76, {50, 57, 72}, {48, 55, 71, 76}), 125.0F);
    EXPECT_EQ(FourVoices(ApplyStepBonus, 77, {48, 55, 72}, {48, 55, 72, 76}), 1.0F) << "the fourth voice";
}

TEST(ApplyStepBonus, AFallingStepReadsAsSixAndIsNotRewarded) {
    EXPECT_EQ(kPlainKey.StepsUpwards(50, 48), 6);
    EXPECT_EQ(kPlainKey.StepsUpwards(48, 50), 1);
    EXPECT_EQ(FourVoices(ApplyStepBonus, 76, {48, 55, 72}, {50, 57, 74, 76}), 1.0F);
}

TEST(ApplyStepBonus, WithFewerVoicesReachesTheFirstElementAlone) {
    const CScoreCube three = After(ApplyStepBonus, Task(2, 1, 76, {50, 57, 60}, {48, 55, 76, 0}));
    EXPECT_EQ(three.At(0, 1, 0), 25.0F);
    EXPECT_EQ(three.At(0, 1, 1), 1.0F);
    const CScoreCube two = After(ApplyStepBonus, Task(1, 1, 60, {65, 67}, {60, 64, 0, 0}));
    EXPECT_EQ(two.At(0, 0, 0), 5.0F);
    EXPECT_EQ(two.At(0, 1, 0), 1.0F);
    EXPECT_EQ(two.At(0, 0, 1), 1.0F);
}

TEST(ApplyStepBonus, SlotsThatDoNotExistEarnNothing) {
    // The memory of slots beyond the voices is left over from the note before: it must not count.
    const CScoreCube two = After(ApplyStepBonus, Task(1, 1, 60, {67}, {60, 67, -2, -2}));
    EXPECT_EQ(two.At(0, 0, 0), 1.0F);
}

TEST(ApplySpacing, NeighboursASecondOrThirdApartLoseWhateverTheOctave) {
    EXPECT_EQ(FourVoices(ApplySpacing, 76, {48, 55, 67}, {}), 1.0F);
    EXPECT_EQ(FourVoices(ApplySpacing, 76, {48, 50, 60}, {}), 0.05F * 0.15F); // C D, then an E over a C
    EXPECT_EQ(FourVoices(ApplySpacing, 79, {48, 62, 67}, {}), 0.05F);         // a ninth
    EXPECT_EQ(FourVoices(ApplySpacing, 79, {48, 52, 60}, {}), 0.15F);
    const CScoreCube two = After(ApplySpacing, Task(1, 1, 60, {62, 64, 67}));
    EXPECT_EQ(two.At(0, 0, 0), 0.05F);
    EXPECT_EQ(two.At(1, 0, 0), 0.15F);
    EXPECT_EQ(two.At(1, 0, 1), 1.0F);
    EXPECT_EQ(two.At(2, 0, 0), 1.0F);
}

TEST(ApplyLineContinuation, AStepwiseLineGoesOn) {
    VoicingTask task = Task(1, 0, 72, {65, 67, 69}, {67, 72, 0, 0});
    task.stepMemory = kStepUp;
    const CScoreCube up = After(ApplyLineContinuation, task);
    EXPECT_EQ(up.At(0, 0, 0), 1.0F);
    EXPECT_EQ(up.At(1, 1, 1), 1.0F);
    EXPECT_EQ(up.At(2, 1, 0), 2.0F);
    task.stepMemory = kStepDown;
    const CScoreCube down = After(ApplyLineContinuation, task);
    EXPECT_EQ(down.At(0, 2, 2), 2.0F);
    EXPECT_EQ(down.At(2, 0, 0), 1.0F);
    task.stepMemory = kNoStep;
    EXPECT_TRUE(Untouched(After(ApplyLineContinuation, task)));
}

TEST(ApplyLineContinuation, WithThreeVoicesOnlyTheLowestCandidateIsLeftBelow) {
    VoicingTask task = Task(2, 1, 62, {60, 64, 67}, {60, 62, 64, 0});
    task.stepMemory = kStepUp;
    const CScoreCube cube = After(ApplyLineContinuation, task);
    EXPECT_GT(cube.At(0, 1, 0), 0.0F);
    for (std::int32_t j = 0; j < 3; ++j) {
        EXPECT_EQ(cube.At(1, j, 0), 0.0F);
        EXPECT_EQ(cube.At(2, j, 2), 0.0F);
    }
}

TEST(VoicingStages, TheFirstNoteSkipsWhatNeedsAPredecessorAndNothingElse) {
    VoicingTask task = Task(1, 0, 72, {60, 62, 64, 67, 71});
    task.stepMemory = kStepUp;
    for (const Stage stage : {ApplyVoiceLeading, ApplyParallels, ApplyStepBonus, ApplyLineContinuation})
        EXPECT_TRUE(Untouched(After(stage, task)));
    for (const Stage stage : {ApplyRangeOrder, ApplyChordFit, ApplyRootAffinity, ApplyIntervalPreference,
                              ApplySpread, ApplySpacing})
        EXPECT_FALSE(Untouched(After(stage, task)));
}

TEST(VoicingStages, WithoutCandidatesNothingIsTouched) {
    const VoicingTask task = Task(3, 1, 60, {}, {48, 55, 64, 72});
    for (const Stage stage :
         {ApplyRangeOrder, ApplyChordFit, ApplyRootAffinity, ApplyIntervalPreference, ApplyVoiceLeading,
          ApplySpread, ApplyParallels, ApplyStepBonus, ApplySpacing, ApplyLineContinuation}) {
        CScoreCube::Choice best{9, 9, 9};
        EXPECT_EQ(After(stage, task).PickBest(best), kNothingToChoose);
        EXPECT_EQ(best.i, 9);
    }
}

} // namespace
} // namespace sonorelle::ConsortierClassic
