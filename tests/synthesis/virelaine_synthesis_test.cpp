// One voice by itself: its grains, its look-ahead and its places, beside numbers worked out by hand.

#include "synthesis/sung_voice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace sonorelle::test {
namespace {

// Everything of a grain shows on a recording of ones: the sum of its weights. Cuts out the stretch from one
// grain's centre to the next, the given number of samples apart.
std::vector<float> SumOfWeights(float pitch, float formant, std::size_t spacing) {
    SungVoice sung(Constant());
    sung.voice->SetPitchAndFormant(pitch, formant);
    sung.PassFade();
    // Where centres lie shows in a twin that sings pulses.
    SungVoice twin(Pulses());
    twin.voice->SetPitchAndFormant(pitch, formant);
    twin.PassFade();
    sung.Play(60);
    twin.Play(60);
    const std::vector<std::size_t> places = PulsePlaces(twin.out);
    EXPECT_GE(places.size(), 2u);
    if (places.size() < 2) return {};
    EXPECT_EQ(places[1] - places[0], spacing);
    const auto first = sung.out.begin() + static_cast<std::ptrdiff_t>(places[0]);
    return {first, sung.out.begin() + static_cast<std::ptrdiff_t>(places[1])};
}

// --- Grains ---

TEST(CvirelaineSynthesis, GrainsLieAWholePeriodOverThePitchApart) {
    SungVoice sung(Pulses());
    sung.voice->SetPitchAndFormant(1.26F, 1); // 79.37
    sung.PassFade();
    sung.Play(100);
    const std::vector<std::size_t> places = PulsePlaces(sung.out);
    ASSERT_GT(places.size(), 30u);
    for (std::size_t i = 1; i < places.size(); ++i) ASSERT_EQ(places[i] - places[i - 1], 79u);
}

TEST(CvirelaineSynthesis, TheFormantRatioLeavesTheSpacingOfTheGrains) {
    for (const float formant : {0.65F, 0.8F, 1.25F, 1.5F}) {
        SungVoice sung(Pulses());
        sung.voice->SetPitchAndFormant(0.8F, formant);
        sung.PassFade();
        sung.Play(100);
        const std::vector<std::size_t> places = PulsePlaces(sung.out);
        ASSERT_GT(places.size(), 20u);
        for (std::size_t i = 1; i < places.size(); ++i) ASSERT_EQ(places[i] - places[i - 1], 125u) << formant;
    }
}

// Read 1.25 times as fast, what lies 40 samples behind the mark comes after 32.
TEST(CvirelaineSynthesis, TheFormantRatioMovesWhatLiesWithinAGrain) {
    std::vector<float> samples(100000, 0.0F);
    for (std::size_t i = 40; i < samples.size(); i += kPeriod) samples[i] = 1;
    SungVoice sung(samples);
    sung.voice->SetPitchAndFormant(1, 1.25F);
    sung.PassFade();
    sung.Play(50);
    SungVoice twin(Pulses());
    twin.voice->SetPitchAndFormant(1, 1.25F);
    twin.PassFade();
    twin.Play(50);
    const std::size_t centre = PulsePlaces(twin.out).at(3);
    const auto first = sung.out.begin() + static_cast<std::ptrdiff_t>(centre);
    EXPECT_NEAR(static_cast<double>(first[32]), 1 - RiseWeight(32, 100), 1e-3);
    // The rise of the next grain reads 40 and 140 samples before its mark: 60 of this period after 52 of it.
    EXPECT_EQ(std::max_element(first + 10, first + 60) - first, 32);
    EXPECT_EQ(first[40], 0.0F);
}

TEST(CvirelaineSynthesis, UnchangedPitchAddsUpToTheRecording) {
    for (const float sample : SumOfWeights(1, 1, 100)) EXPECT_NEAR(sample, 1.0F, 1e-6F);
}

// An octave up the fall is as short as the rise of the next grain: 50 samples each.
TEST(CvirelaineSynthesis, AboveTheSungPitchBothSidesAreAsLongAsTheSpacing) {
    for (const float sample : SumOfWeights(2, 1, 50)) EXPECT_NEAR(sample, 1.0F, 1e-6F);
}

// An octave down grains lie 200 apart, and reach 100 samples to either side as in the recording.
TEST(CvirelaineSynthesis, BelowTheSungPitchBothSidesAreAsLongAsThePeriod) {
    const std::vector<float> sum = SumOfWeights(0.5F, 1, 200);
    ASSERT_EQ(sum.size(), 200u);
    for (std::size_t i = 0; i < 100; ++i) {
        EXPECT_NEAR(static_cast<double>(sum[i]), 1 - RiseWeight(static_cast<double>(i), 100), 1e-4);
        EXPECT_NEAR(static_cast<double>(sum[100 + i]), RiseWeight(static_cast<double>(i), 100), 1e-4);
    }
}

// Read at 0.8 a period of 100 lasts 125 samples: the fall is min(200, 100 / 0.8), the rise
// min(200 x 0.8, 200 x 0.5).
TEST(CvirelaineSynthesis, ASlowReadGrainFallsForAsLongAsItsPeriodLasts) {
    const std::vector<float> sum = SumOfWeights(0.5F, 0.8F, 200);
    ASSERT_EQ(sum.size(), 200u);
    for (int i = 0; i < 200; ++i) {
        const double fall = i < 125 ? 1 - RiseWeight(i, 125) : 0;
        const double rise = i >= 100 ? RiseWeight(i - 100, 100) : 0;
        EXPECT_NEAR(static_cast<double>(sum[static_cast<std::size_t>(i)]), fall + rise, 1e-4) << i;
    }
}

// Between the formant ratio and 1 the rise keeps the whole spacing: 111 samples, as the fall,
// trunc(100 / 0.9) = 111.
TEST(CvirelaineSynthesis, APitchBetweenTheFormantRatioAndOneKeepsTheWholeRise) {
    for (const float sample : SumOfWeights(0.9F, 0.8F, 111)) EXPECT_NEAR(sample, 1.0F, 2e-4F);
}

TEST(CvirelaineSynthesis, TheGainWeightsEachGrain) {
    SungVoice sung(Constant());
    sung.PassFade();
    for (int i = 0; i < 20; ++i) EXPECT_EQ(sung.Render(0.25F), 0);
    EXPECT_NEAR(sung.out.back(), 0.25F, 1e-6F);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(sung.Render(kNoNumber), 0);
    EXPECT_EQ(sung.out.back(), 0.0F);
}

TEST(CvirelaineSynthesis, RatiosAreHeldToTheirLimitsAndNoNumberChangesNothing) {
    SungVoice sung(Pulses(), SungVoice::EvenMarks(), {kPeriod, 0});
    sung.voice->SetPitchAndFormant(1000, 1000);
    sung.PassFade();
    sung.Play(20);
    std::vector<std::size_t> places = PulsePlaces(sung.out);
    EXPECT_EQ(places.at(5) - places.at(4), 13u); // 100 / 8
    for (const float bad : {kNoNumber, -1.0F, 0.0F, std::numeric_limits<float>::infinity()}) {
        sung.voice->SetPitchAndFormant(bad, 1);
        sung.voice->SetPitchAndFormant(1, bad);
    }
    sung.out.clear();
    sung.Play(20);
    places = PulsePlaces(sung.out);
    EXPECT_EQ(places.at(5) - places.at(4), 13u);
    sung.voice->SetPitchAndFormant(0.001F, 0.001F);
    sung.Play(100);
    sung.out.clear();
    sung.Play(100);
    places = PulsePlaces(sung.out);
    EXPECT_EQ(places.at(2) - places.at(1), 800u);
}

TEST(CvirelaineSynthesis, InactiveGrainsMoveEverythingOnButWriteNothing) {
    SungVoice sung(Constant());
    SungVoice twin(Constant());
    sung.PassFade();
    twin.PassFade();
    sung.voice->SetGrainsActive(false);
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(sung.Render(), 0);
        ASSERT_EQ(twin.Render(), 0);
        ASSERT_EQ(sung.voice->GetReadPosition(), twin.voice->GetReadPosition());
        ASSERT_EQ(sung.voice->GetOutputFill(), twin.voice->GetOutputFill());
    }
    EXPECT_EQ(sung.out.back(), 0.0F);
    EXPECT_GT(twin.out.back(), 0.9F);
}

// --- Look-ahead ---

// Grains at 0 and 100 are what a first block makes: the second ends at 200.
TEST(CvirelaineSynthesis, TheFirstBlockNeedsBothPeriodsOfItsGrains) {
    SungVoice sung(Constant());
    EXPECT_EQ(sung.voice->GetRequiredInput(kBlock), 200);
    EXPECT_EQ(sung.Render(), 0);
    EXPECT_EQ(sung.voice->GetOutputFill(), 100 - kBlock); // the second mark, a block later
    EXPECT_EQ(sung.voice->GetRequiredInput(kBlock), 0);   // enough is ready
}

TEST(CvirelaineSynthesis, LowerPitchReadsOneGrainFurther) {
    SungVoice sung(Constant());
    sung.voice->SetPitchAndFormant(0.5F, 1); // grains at marks 0 and 200, each reads 200
    EXPECT_EQ(sung.voice->GetRequiredInput(kBlock), 400);
    sung.voice->SetPitchAndFormant(1, 1.25F); // marks 0 and 100, each reads 125
    EXPECT_EQ(sung.voice->GetRequiredInput(kBlock), 225);
    sung.voice->SetPitchAndFormant(1, 0.8F); // held at a period over the formant ratio: 125
    EXPECT_EQ(sung.voice->GetRequiredInput(kBlock), 225);
}

TEST(CvirelaineSynthesis, TwiceTheSpeedTakesEveryOtherMark) {
    SungVoice sung(Constant());
    sung.voice->SetTimeFactor(0.5F); // marks 0 and 200, each asks for twice its period
    EXPECT_EQ(sung.voice->GetRequiredInput(kBlock), 400);
}

// --- Places ---

TEST(CvirelaineSynthesis, SetPositionGoesToTheNearestMarkAndTheTimelineBeginsThere) {
    SungVoice sung(Constant());
    EXPECT_EQ(sung.voice->SetPosition(1049), 1000);
    EXPECT_EQ(sung.voice->GetReadPosition(), 1000);
    EXPECT_EQ(sung.voice->GetTimeline(), 1000);
    EXPECT_EQ(sung.voice->GetInputEnd(), 1000); // no grain before this one
    EXPECT_EQ(sung.voice->SetPosition(1051), 1100);
}

TEST(CvirelaineSynthesis, WhilePlayingTheInputBeginsOneGrainBeforeThePosition) {
    SungVoice sung(Constant());
    sung.voice->SetPitchAndFormant(0.8F, 1);
    sung.Play(20);
    EXPECT_EQ(sung.voice->SetPosition(1000), 1000);
    EXPECT_EQ(sung.voice->GetInputEnd(), 875);
    EXPECT_EQ(sung.voice->SetPosition(0), 0);
    EXPECT_EQ(sung.voice->GetInputEnd(), 0); // nothing lies before the recording
}

TEST(CvirelaineSynthesis, TheTimelineMovesByTheUnroundedSpacing) {
    SungVoice sung(Constant());
    sung.voice->SetPitchAndFormant(0.7F, 1); // 142.857, twice in the first block
    EXPECT_EQ(sung.Render(), 0);
    EXPECT_NEAR(sung.voice->GetTimeline(), 285.714, 0.001);
    sung.voice->SkipBlock();
    EXPECT_NEAR(sung.voice->GetTimeline(), 317.714, 0.001);
    EXPECT_EQ(sung.voice->GetReadPosition(), kBlock); // a block on from where the timeline stood
}

} // namespace
} // namespace sonorelle::test
