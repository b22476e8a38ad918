#include "analysis/frame_stages.h"

#include "analysis/frames_with_pitches.h"
#include "analysis/pitch_marks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

namespace sonorelle {
namespace {

constexpr float kRate = 44100.0F;
constexpr std::int32_t kStep = 100; // samples between frames: a voice at 441 Hz

const AnalysisLengths kLengths = AnalysisLengths::For(kRate);

Frames FramesWithLevels(const std::vector<float>& levels) {
    Frames frames = FramesWithPitches(std::vector<float>(levels.size(), 60.0F));
    for (std::size_t i = 0; i < levels.size(); ++i) frames[i].level = levels[i];
    return frames;
}

std::vector<int> Voicing(const Frames& frames) {
    std::vector<int> voicing;
    for (const AnalysisFrame& frame : frames) voicing.push_back(frame.voiced);
    return voicing;
}

std::vector<float> Pitches(const Frames& frames) {
    std::vector<float> pitches;
    for (const AnalysisFrame& frame : frames) pitches.push_back(frame.pitch);
    return pitches;
}

// All voiced but the frame at `index`.
std::vector<int> AllBut(std::size_t count, std::size_t index) {
    std::vector<int> voicing(count, 1);
    voicing[index] = 0;
    return voicing;
}

TEST(FrameLengths, AreCutToWholeSamples) {
    EXPECT_EQ(kLengths.longWindow, 8820);
    EXPECT_EQ(kLengths.shortWindow, 1102); // of 1102.5
    EXPECT_EQ(kLengths.window, 4410);
    EXPECT_EQ(kLengths.halfWindow, 2205);
}

TEST(FramesFromMarks, PeriodsBecomePitches) {
    CPitchMarks marks;
    marks.AddWithPeriod(0, 0.0F, 0.25F, 0.0F, 0.0F, 0.0F);
    marks.AddWithPeriod(90, 7.5F, 0.5F, 0.0F, 0.0F, 100.0F);
    marks.AddWithPeriod(190, -1.0F, 0.75F, 0.0F, 0.0F, 200.0F);
    const Frames frames = FramesFromMarks(marks, kRate);
    ASSERT_EQ(frames.size(), 3U);
    const float a = static_cast<float>(69.0 + 12.0 * std::log2(441.0 / 440.0));
    EXPECT_FLOAT_EQ(frames[1].pitch, a);
    EXPECT_FLOAT_EQ(frames[2].pitch, a - 12.0F);
    EXPECT_EQ(Voicing(frames), (std::vector<int>{0, 1, 1}));
    EXPECT_EQ(frames[1].position, 90);
    EXPECT_EQ(frames[2].position, 190);
    EXPECT_EQ(frames[0].level, 0.25F);
    EXPECT_EQ(frames[2].level, 0.75F);
}

TEST(FramesFromMarks, PeriodsBelowOneSampleGivePitchZero) {
    CPitchMarks marks;
    marks.AddWithPeriod(0, 1.0F, 1.0F, 0.0F, 0.0F, 0.0F);
    marks.AddWithPeriod(10, 1.0F, 1.0F, 0.0F, 0.0F, -5.0F);
    marks.AddWithPeriod(20, 1.0F, 1.0F, 0.0F, 0.0F, 1.0F);
    const Frames frames = FramesFromMarks(marks, kRate);
    EXPECT_EQ(frames[0].pitch, 0.0F);
    EXPECT_EQ(frames[1].pitch, 0.0F);
    EXPECT_FLOAT_EQ(frames[2].pitch, static_cast<float>(69.0 + 12.0 * std::log2(44100.0 / 440.0)));
}

TEST(FrameStages, EmptyListsStayEmpty) {
    CPitchMarks marks;
    Frames frames = FramesFromMarks(marks, kRate);
    Frames other;
    NormaliseLevels(frames);
    CutOctaveJumps(frames, kLengths);
    FlattenVibrato(frames, other, kLengths);
    BridgeDeviations(frames, kLengths);
    SmoothByMedian(frames, other, kLengths);
    SplitAtSteps(frames, kLengths);
    EXPECT_TRUE(frames.empty());
    EXPECT_TRUE(other.empty());
}

TEST(NormaliseLevels, TheLoudestFrameGetsLevelOne) {
    Frames frames = FramesWithLevels({0.25F, 0.4F, 0.5F, 0.1F});
    NormaliseLevels(frames);
    EXPECT_FLOAT_EQ(frames[0].level, 0.5F);
    EXPECT_FLOAT_EQ(frames[1].level, 0.8F);
    EXPECT_FLOAT_EQ(frames[2].level, 1.0F);
    EXPECT_FLOAT_EQ(frames[3].level, 0.2F);
    EXPECT_EQ(Voicing(frames), (std::vector<int>{1, 1, 1, 1}));
}

TEST(NormaliseLevels, ASilentFileHasNoVoice) {
    Frames frames = FramesWithLevels({0.0F, 0.0F, 0.0F});
    NormaliseLevels(frames);
    EXPECT_EQ(Voicing(frames), (std::vector<int>{0, 0, 0}));
    for (const AnalysisFrame& frame : frames) EXPECT_EQ(frame.level, 0.0F);
}

TEST(NormaliseLevels, LevelsOfDenormalsAreSilence) {
    Frames frames = FramesWithLevels({1e-44F, 1e-42F});
    NormaliseLevels(frames);
    for (const AnalysisFrame& frame : frames) EXPECT_EQ(frame.level, 0.0F);
}

TEST(NormaliseLevels, FramesBelowTheSilentLevelLoseTheirVoice) {
    Frames frames = FramesWithLevels({1.0F, 0.00049F, 0.0005F, 0.00051F});
    NormaliseLevels(frames);
    EXPECT_EQ(Voicing(frames), (std::vector<int>{1, 0, 1, 1}));
}

TEST(NormaliseLevels, TheFrameBeforeASuddenRiseLosesItsVoice) {
    Frames frames = FramesWithLevels({0.5F, 0.97F, 1.0F, 0.25F, 0.49F, 0.5F});
    NormaliseLevels(frames);
    EXPECT_EQ(Voicing(frames), (std::vector<int>{1, 1, 1, 0, 1, 1})); // rises of 94 % and 96 %
}

TEST(NormaliseLevels, ARiseBehindAnUnvoicedFrameChangesNothing) {
    Frames frames = FramesWithLevels({0.5F, 0.1F, 1.0F});
    frames[1].voiced = 0;
    NormaliseLevels(frames);
    EXPECT_EQ(Voicing(frames), (std::vector<int>{1, 0, 1}));
}

std::vector<float> TwoPlateaus(float first, float second) {
    std::vector<float> pitches(60, first);
    pitches.insert(pitches.end(), 60, second);
    return pitches;
}

TEST(CutOctaveJumps, AJumpOfExactlySixSemitonesIsLeftAlone) {
    for (const float second : {54.0F, 66.0F}) {
        Frames frames = FramesWithPitches(TwoPlateaus(60.0F, second));
        CutOctaveJumps(frames, kLengths);
        EXPECT_EQ(Voicing(frames), std::vector<int>(120, 1));
    }
}

TEST(CutOctaveJumps, AWiderJumpIsCutAtItsFirstFrame) {
    for (const float second : {48.0F, 53.984375F, 66.015625F, 72.0F}) {
        Frames frames = FramesWithPitches(TwoPlateaus(60.0F, second));
        CutOctaveJumps(frames, kLengths);
        EXPECT_EQ(Voicing(frames), AllBut(120, 60)) << "to " << second;
        EXPECT_EQ(Pitches(frames), TwoPlateaus(60.0F, second));
    }
}

TEST(BridgeDeviations, AShortDeviationIsPulledToTheMeanOfItsPiers) {
    std::vector<float> pitches(100, 60.0F);
    for (std::size_t i = 40; i < 45; ++i) pitches[i] = 63.0F;
    for (std::size_t i = 45; i < 100; ++i) pitches[i] = 60.25F;
    Frames frames = FramesWithPitches(pitches);
    BridgeDeviations(frames, kLengths);
    // The first pier within reach is frame 13, and the first that matches it behind the deviation is
    // frame 45.
    for (std::size_t i = 40; i < 45; ++i) pitches[i] = 60.125F;
    EXPECT_EQ(Pitches(frames), pitches);
}

TEST(BridgeDeviations, ADeviationOfOneSemitoneStays) {
    for (const float deviation : {61.0F, 59.0F}) {
        std::vector<float> pitches(100, 60.0F);
        pitches[40] = deviation;
        Frames frames = FramesWithPitches(pitches);
        BridgeDeviations(frames, kLengths);
        EXPECT_EQ(Pitches(frames), pitches);
    }
}

TEST(BridgeDeviations, PiersHalfASemitoneApartCarryNothing) {
    std::vector<float> pitches(100, 60.0F);
    pitches[40] = 63.0F;
    for (std::size_t i = 41; i < 100; ++i) pitches[i] = 60.5F;
    Frames frames = FramesWithPitches(pitches);
    BridgeDeviations(frames, kLengths);
    EXPECT_EQ(Pitches(frames), pitches);
}

TEST(BridgeDeviations, UnvoicedFramesAreNeitherPiersNorPulled) {
    std::vector<float> pitches(100, 60.0F);
    pitches[40] = pitches[41] = 63.0F;
    Frames frames = FramesWithPitches(pitches);
    frames[40].voiced = 0;
    BridgeDeviations(frames, kLengths);
    pitches[41] = 60.0F;
    EXPECT_EQ(Pitches(frames), pitches);

    Frames unvoicedAround = FramesWithPitches(pitches);
    for (AnalysisFrame& frame : unvoicedAround) frame.voiced = 0;
    unvoicedAround[40].voiced = 1;
    BridgeDeviations(unvoicedAround, kLengths);
    EXPECT_EQ(Pitches(unvoicedAround), pitches);
}

// With frames 1000 samples apart 75 ms reach over 3 frames, so that 2 deviating frames are bridged and 3 are
// not; with frames 10000 samples apart the reach is held to 2.
TEST(BridgeDeviations, TheReachIsSeventyFiveMilliseconds) {
    struct Case {
        std::int32_t step;
        std::size_t deviating;
        bool bridged;
    };
    for (const Case& c :
         {Case{1000, 2, true}, Case{1000, 3, false}, Case{10000, 1, true}, Case{10000, 2, false}}) {
        const std::vector<float> flat(80, 60.0F);
        std::vector<float> pitches = flat;
        for (std::size_t i = 20; i < 20 + c.deviating; ++i) pitches[i] = 64.0F;
        Frames frames = FramesWithPitches(pitches, c.step);
        BridgeDeviations(frames, kLengths);
        EXPECT_EQ(Pitches(frames), c.bridged ? flat : pitches)
            << c.deviating << " frames " << c.step << " apart";
    }
}

TEST(BridgeDeviations, NoBridgeBeginsInTheLastThirtyTwoFrames) {
    // In lists of up to 32 frames none begins at all ...
    std::vector<float> pitches(32, 60.0F);
    pitches[10] = 64.0F;
    Frames frames = FramesWithPitches(pitches);
    BridgeDeviations(frames, kLengths);
    EXPECT_EQ(Pitches(frames), pitches);

    // ... and in longer ones a deviation stays that the frame before the last 32 does not reach over.
    pitches.assign(100, 60.0F);
    pitches[70] = 64.0F; // 3 behind frame 67, within whose reach of 3 no pier lies behind it
    frames = FramesWithPitches(pitches, 1000);
    BridgeDeviations(frames, kLengths);
    EXPECT_EQ(Pitches(frames), pitches);
    std::swap(pitches[69], pitches[70]);
    frames = FramesWithPitches(pitches, 1000);
    BridgeDeviations(frames, kLengths);
    EXPECT_EQ(Pitches(frames), std::vector<float>(100, 60.0F));
}

} // namespace
} // namespace sonorelle
