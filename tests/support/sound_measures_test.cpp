#include "support/sound_measures.h"

#include "support/synthetic_singer.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <vector>

namespace sonorelle::test {

namespace {

std::vector<float> Sine(std::size_t frames, double period, double peak = 0.5) {
    std::vector<float> sound(frames);
    for (std::size_t i = 0; i < frames; ++i)
        sound[i] =
            static_cast<float>(peak * std::sin(2.0 * std::numbers::pi * static_cast<double>(i) / period));
    return sound;
}

std::vector<float> Noise(std::size_t frames, std::uint64_t seed) {
    RandomNumbers random(seed);
    std::vector<float> sound(frames);
    for (float& sample : sound) sample = static_cast<float>(0.5 * random.Symmetric());
    return sound;
}

constexpr double kRounding = 1e-3; // dB: sums of f32 products are far better

} // namespace

TEST(SoundMeasures, ASineIsThreeDecibelsBelowItsPeak) {
    EXPECT_NEAR(LevelDecibels(Sine(4000, 40.0, 1.0), {0, 4000}), -3.0103, kRounding);
    EXPECT_EQ(LevelDecibels(std::vector<float>(100), {0, 100}), kSilenceDecibels);
    EXPECT_EQ(Rms(Sine(100, 40.0), {50, 50}), 0.0);
}

TEST(SoundMeasures, AnInnerRangeOfAShortOneIsEmpty) {
    const FrameRange range{100, 160};
    EXPECT_EQ(range.Inner(10).begin, 110U);
    EXPECT_EQ(range.Inner(10).end, 150U);
    EXPECT_EQ(range.Inner(30).Count(), 0U);
}

TEST(SoundMeasures, AnErrorOfOneHundredthIsFortyDecibels) {
    const std::vector<float> source = Sine(4000, 40.0);
    std::vector<float> output = source;
    for (float& sample : output) sample *= 1.01F;
    EXPECT_NEAR(SignalToErrorDecibels(source, output, {0, 4000}), 40.0, 0.01);
    EXPECT_EQ(SignalToErrorDecibels(source, source, {0, 4000}), kExactDecibels);
}

TEST(SoundMeasures, AlignmentForgivesAnOffsetThatChangesFromWindowToWindow) {
    const std::vector<float> source = Noise(4000, 1);
    std::vector<float> output(source.size());
    for (std::size_t i = 0; i < output.size(); ++i) {
        const std::size_t from = i < 2000 ? i + 7 : i - 5;
        if (from < source.size()) output[i] = source[from];
    }
    const FrameRange middle{500, 3500};
    EXPECT_LT(SignalToErrorDecibels(source, output, middle), 0.0); // unrelated noise
    // Exact but for the one window that the change lies in.
    EXPECT_EQ(AlignedSignalToErrorDecibels(source, output, {500, 1900}, 100, 10), kExactDecibels);
    EXPECT_EQ(AlignedSignalToErrorDecibels(source, output, {2100, 3500}, 100, 10), kExactDecibels);
    EXPECT_LT(AlignedSignalToErrorDecibels(source, output, {2100, 3500}, 100, 4), 5.0); // 5 frames away
}

TEST(SoundMeasures, APieceIsFoundWhereItWasMovedTo) {
    const std::vector<float> source = Noise(4000, 5);
    std::vector<float> output(source.size(), 0.0F);
    std::copy(source.begin(), source.begin() + 2000, output.begin() + 25); // late
    std::copy(source.begin() + 2100, source.end(), output.begin() + 2091); // early
    const Placement late = Place(source, output, {500, 1500}, 40);
    EXPECT_EQ(late.lag, 25);
    EXPECT_EQ(late.decibels, kExactDecibels);
    EXPECT_EQ(Place(source, output, {2500, 3500}, 40).lag, -9);
    EXPECT_LT(Place(source, output, {500, 1500}, 24).decibels, 3.0); // out of reach
}

TEST(SoundMeasures, OfEqualPlacesTheNearestIsTaken) {
    const std::vector<float> source = Sine(4000, 50.0);
    EXPECT_EQ(Place(source, source, {1000, 3000}, 120).lag, 0);
}

TEST(SoundMeasures, ALateOutputHasAPositiveLag) {
    const std::vector<float> source = Noise(4000, 4);
    std::vector<float> late(source.size(), 0.0F), early(source.size(), 0.0F);
    std::copy(source.begin(), source.end() - 30, late.begin() + 30);
    std::copy(source.begin() + 17, source.end(), early.begin());
    EXPECT_EQ(WholeLag(source, late, 40, 7), 30);
    EXPECT_EQ(WholeLag(source, early, 40, 7), -17);
    EXPECT_EQ(WholeLag(source, source, 40, 7), 0);
}

TEST(SoundMeasures, AStepIsFoundWhereItIsNotInTheSource) {
    std::vector<float> source = Sine(4000, 100.0, 0.5);
    source[3000] += 0.4F; // its own click, far away
    std::vector<float> output = Sine(4000, 100.0, 0.5);
    const double slope = 2.0 * std::sin(std::numbers::pi / 100.0) * 0.5; // steepest step of the sine
    EXPECT_NEAR(LargestStep(output, {0, 4000}), slope, 1e-4);
    EXPECT_NEAR(WorstStepRatio(source, output, {200, 2500}, 100, 200, 1e-6), 1.0, 0.01);
    output[1000] += 0.2F;
    EXPECT_LT(LargestStep(output, {0, 4000}), LargestStep(source, {0, 4000})); // hidden in the whole file
    EXPECT_NEAR(WorstStepRatio(source, output, {200, 2500}, 100, 200, 1e-6), (0.2 + slope) / slope, 0.05);
}

TEST(SoundMeasures, AStepBetweenTwoPiecesCounts) {
    const std::vector<float> source(400, 0.0F);
    std::vector<float> output(400, 0.0F);
    for (std::size_t i = 200; i < 400; ++i) output[i] = 0.1F;
    EXPECT_NEAR(WorstStepRatio(source, output, {0, 400}, 100, 50, 0.01), 10.0, 1e-4);
}

TEST(SoundMeasures, AnOnsetIsWhereTheLevelComesNearItsPeak) {
    std::vector<float> sound(4000, 0.0F);
    for (std::size_t i = 2000; i < 4000; ++i) sound[i] = 0.5F;
    // 20 dB down is one hundredth of the energy: two frames of the window's 200 are enough.
    const auto onset = OnsetFrame(sound, {0, 4000}, 200, 20.0);
    ASSERT_TRUE(onset.has_value());
    EXPECT_NEAR(*onset, 2000.0 - 98.0, 1.0);
    EXPECT_FALSE(OnsetFrame(sound, {2500, 4000}, 200, 20.0).has_value()); // loud from the start
    EXPECT_FALSE(OnsetFrame(sound, {0, 100}, 200, 20.0).has_value());
}

TEST(SoundMeasures, AToneIsPeriodicAndNoiseIsNot) {
    EXPECT_NEAR(Periodicity(Sine(4000, 80.0), {0, 4000}, 40, 200), 1.0, 1e-3);
    // 3800 products of independent numbers: a deviation of 0.016, the largest of 160 below five of them.
    EXPECT_LT(Periodicity(Noise(4000, 2), {0, 4000}, 40, 200), 0.08);
    EXPECT_EQ(Periodicity(Sine(400, 80.0), {0, 400}, 40, 200), 0.0);
}

TEST(SoundMeasures, RepeatedNoiseIsABuzz) {
    std::vector<float> sound = Noise(4000, 3);
    for (std::size_t i = 64; i < sound.size(); ++i) sound[i] = sound[i % 64];
    EXPECT_NEAR(Periodicity(sound, {0, 4000}, 40, 200), 1.0, 1e-3);
}

TEST(SoundMeasures, PercentilesLieOnStraightLinesBetweenValues) {
    EXPECT_EQ(Percentile({}, 0.5), 0.0);
    EXPECT_DOUBLE_EQ(Percentile({4.0, 1.0, 3.0, 2.0}, 0.5), 2.5);
    EXPECT_DOUBLE_EQ(Percentile({1.0, 2.0, 3.0, 4.0, 5.0}, 0.95), 4.8);
    EXPECT_DOUBLE_EQ(Percentile({7.0}, 0.95), 7.0);
}

TEST(SoundMeasures, AnEnvelopeThatIsOnlyLouderHasNoDistance) {
    const std::vector<double> first{10.0, 20.0, 30.0, 40.0};
    const std::vector<double> louder{16.0, 26.0, 36.0, 46.0};
    const std::vector<double> tilted{13.0, 17.0, 33.0, 37.0};
    EXPECT_NEAR(EnvelopeDistance(first, louder), 0.0, 1e-12);
    EXPECT_NEAR(EnvelopeDistance(first, tilted), 3.0, 1e-12);
    EXPECT_EQ(EnvelopeDistance(first, {}), 0.0);
}

} // namespace sonorelle::test
