#include "dsp/eq.h"

#include "platform/result_codes.h"

#include "support/hostile_numbers.h"
#include "support/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

using test::Noise;

constexpr float kRate = 11025.0f;

std::vector<float> Impulse(std::size_t count) {
    std::vector<float> impulse(count, 0.0f);
    impulse[0] = 1.0f;
    return impulse;
}

std::vector<float> Filtered(CEqIf& eq, const std::vector<float>& in) {
    std::vector<float> out(in.size(), -7.0f);
    const float* const inputs[] = {in.data()};
    float* const outputs[] = {out.data()};
    eq.Process(inputs, outputs, static_cast<std::int32_t>(in.size()));
    return out;
}

double Magnitude(const std::vector<float>& impulseResponse, double frequency) {
    std::complex<double> sum = 0.0;
    for (std::size_t n = 0; n < impulseResponse.size(); ++n) {
        sum += static_cast<double>(impulseResponse[n]) *
               std::polar(1.0, -2.0 * std::numbers::pi * frequency * static_cast<double>(n));
    }
    return std::abs(sum);
}

TEST(CEQ, LowPassAndHighPassHaveTheButterworthResponse) {
    for (const float hertz : {200.0f, 1000.0f, 4000.0f}) {
        CEQ low(kRate, 1, kEqLowPass), high(kRate, 1, kEqHighPass);
        low.SetParameters(hertz, 0.0f, 1.0f);
        high.SetParameters(hertz, 0.0f, 1.0f);
        const std::vector<float> lowResponse = Filtered(low, Impulse(4000));
        const std::vector<float> highResponse = Filtered(high, Impulse(4000));
        for (double at = 0.001; at < 0.5; at += 0.0171) {
            const double warped = std::tan(std::numbers::pi * at) /
                                  std::tan(std::numbers::pi * static_cast<double>(hertz / kRate));
            const double fourth = std::pow(warped, 4.0); // |H|^2 = 1 / (1 + w^4) and w^4 / (1 + w^4)
            EXPECT_NEAR(Magnitude(lowResponse, at), std::sqrt(1.0 / (1.0 + fourth)), 1e-4);
            EXPECT_NEAR(Magnitude(highResponse, at), std::sqrt(fourth / (1.0 + fourth)), 1e-4);
        }
    }
}

TEST(CEQ, PeakBoostsItsFrequencyByItsGain) {
    for (const float gain : {-12.0f, 6.0f, 12.0f}) {
        CEQ eq(kRate, 1, kEqPeak);
        eq.SetParameters(1000.0f, gain, 2.0f);
        const std::vector<float> response = Filtered(eq, Impulse(4000));
        EXPECT_NEAR(20.0 * std::log10(Magnitude(response, 1000.0 / 11025.0)), static_cast<double>(gain),
                    0.01);
        EXPECT_NEAR(Magnitude(response, 0.0), 1.0, 1e-4);
    }
}

TEST(CEQ, PeakDifferenceIsThePeakLessItsFirstTap) {
    CEQ peak(kRate, 1, kEqPeak), difference(kRate, 1, kEqPeakDifference);
    peak.SetParameters(1000.0f, 6.0f, 2.0f);
    difference.SetParameters(1000.0f, 6.0f, 2.0f);
    const std::vector<float> both = Filtered(peak, Impulse(200));
    const std::vector<float> rest = Filtered(difference, Impulse(200));
    const EqCoefficients section = ComputeEqCoefficients(kEqPeak, 1000.0f / kRate, 6.0f, 2.0f);
    // Without b0, the response is the peak's less b0 times that of the poles alone.
    double one = 0.0, two = 0.0;
    for (std::size_t n = 0; n < both.size(); ++n) {
        const double pole = (n == 0 ? 1.0 : 0.0) + double{section.a1} * one + double{section.a2} * two;
        two = one;
        one = pole;
        EXPECT_NEAR(rest[n], static_cast<double>(both[n]) - double{section.b0} * pole, 2e-6) << n;
    }
    EXPECT_EQ(rest[0], 0.0f);
}

TEST(CEQ, FollowsItsRecurrenceInF64) {
    CEQ eq(kRate, 1, kEqLowPass);
    eq.SetParameters(4000.0f, 0.0f, 1.0f);
    const std::vector<float> in = Noise(20001, 71);
    const std::vector<float> out = Filtered(eq, in);
    const EqCoefficients c = ComputeEqCoefficients(kEqLowPass, 4000.0f / kRate, 0.0f, 1.0f);
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
    for (std::size_t n = 0; n < in.size(); ++n) {
        const double x = static_cast<double>(in[n]);
        const double y =
            double{c.b0} * x + double{c.b1} * x1 + double{c.b2} * x2 + double{c.a1} * y1 + double{c.a2} * y2;
        x2 = x1, x1 = x, y2 = y1, y1 = y;
        ASSERT_NEAR(out[n], y, 2e-6) << n; // nine roundings a sample in a loop that forgets within a few
    }
}

TEST(CEQ, ALowPassAbove045OfTheRatePassesItsInputUnchanged) {
    CEQ eq(kRate, 1, kEqLowPass);
    const std::vector<float> in = Noise(1000, 72);
    EXPECT_EQ(Filtered(eq, in), in); // half the rate from the start
    eq.SetParameters(0.4501f * kRate, 0.0f, 1.0f);
    EXPECT_EQ(Filtered(eq, in), in);
    eq.SetParameters(0.4499f * kRate, 0.0f, 1.0f);
    EXPECT_NE(Filtered(eq, in), in);
    eq.SetParameters(0.46f * kRate, 0.0f, 1.0f);
    EXPECT_EQ(Filtered(eq, in), in); // and back in bypass
}

TEST(CEQ, AHighPassBelowAHundredthOfTheRateChangesNothing) {
    CEQ eq(kRate, 1, kEqHighPass);
    const std::vector<float> in = Noise(1000, 73);
    EXPECT_EQ(Filtered(eq, in), in); // 0 Hz from the start
    eq.SetParameters(30.0f, 0.0f, 1.0f);
    EXPECT_EQ(Filtered(eq, in), in);
    EXPECT_TRUE(eq.IsBypassed());
    eq.SetParameters(111.0f, 0.0f, 1.0f);
    EXPECT_NE(Filtered(eq, in), in);
    eq.SetParameters(110.0f, 0.0f, 1.0f);
    EXPECT_EQ(Filtered(eq, in), in);
}

TEST(CEQ, ShelvesAndOnePoleStayInBypass) {
    const std::vector<float> in = Noise(1000, 74);
    for (const std::int32_t type : {kEqLowShelf, kEqHighShelf, kEqOnePole}) {
        CEQ eq(kRate, 1, type);
        eq.SetParameters(1000.0f, 12.0f, 1.0f);
        EXPECT_EQ(Filtered(eq, in), in) << type;
        EXPECT_TRUE(eq.IsBypassed());
    }
}

TEST(CEQ, PeaksFilterFromTheStart) {
    const std::vector<float> in = Noise(1000, 75);
    CEQ peak(kRate, 1, kEqPeak), difference(kRate, 1, kEqPeakDifference);
    EXPECT_TRUE(peak.IsBypassed());
    EXPECT_TRUE(difference.IsBypassed());
    const std::vector<float> flat = Filtered(peak, in); // gain 0: nothing to hear, but the filter runs
    for (std::size_t n = 0; n < in.size(); ++n) ASSERT_NEAR(flat[n], in[n], 1e-3f) << n;
    EXPECT_EQ(Filtered(difference, in)[0], 0.0f);
    EXPECT_FALSE(peak.IsBypassed());
    EXPECT_FALSE(difference.IsBypassed());
}

TEST(CEQ, AFilterThatCannotBeHeldStableCopies) {
    CEQ eq(kRate, 1, kEqPeak);
    eq.SetParameters(0.0f, -120.0f, 0.01f);
    const std::vector<float> in = Noise(1000, 83);
    EXPECT_EQ(Filtered(eq, in), in);
    eq.SetParameters(1000.0f, -12.0f, 1.0f);
    EXPECT_NE(Filtered(eq, in), in);
}

TEST(CEQ, ParametersWaitForTheNextProcess) {
    CEQ eq(kRate, 1, kEqLowPass);
    EXPECT_TRUE(eq.IsBypassed());
    eq.SetParameters(1000.0f, 0.0f, 1.0f);
    EXPECT_TRUE(eq.IsBypassed());
    eq.SetParameters(4000.0f, 0.0f, 1.0f); // only the last ones count
    const std::vector<float> out = Filtered(eq, Impulse(10));
    EXPECT_FALSE(eq.IsBypassed());
    EXPECT_EQ(out[0], ComputeEqCoefficients(kEqLowPass, 4000.0f / kRate, 0.0f, 1.0f).b0);
}

TEST(CEQ, TellsItsParametersAndType) {
    const float startFrequency[] = {0.5f, 0.5f, 0.5f, 0.5f, 0.0f, 0.5f, 0.5f};
    for (std::int32_t type = 0; type < kEqTypeCount; ++type) {
        CEQ eq(kRate, 1, type);
        float frequency = -1.0f, gain = -1.0f, q = -1.0f;
        eq.GetParameters(&frequency, &gain, &q);
        EXPECT_EQ(frequency, startFrequency[type] * kRate);
        EXPECT_EQ(gain, 0.0f);
        EXPECT_EQ(q, 1.0f);
        EXPECT_EQ(eq.GetType(), type);
        eq.SetParameters(1234.5f, -3.0f, 0.7f);
        eq.GetParameters(&frequency, &gain, &q);
        EXPECT_NEAR(frequency, 1234.5f, 1e-3f);
        EXPECT_EQ(gain, -3.0f);
        EXPECT_EQ(q, 0.7f);
        eq.GetParameters(nullptr, nullptr, nullptr);
    }
}

TEST(CEQ, StateGoesOnAcrossBlocksOfAnySize) {
    const std::vector<float> in = Noise(5000, 76);
    CEQ whole(kRate, 1, kEqLowPass), cut(kRate, 1, kEqLowPass);
    whole.SetParameters(4000.0f, 0.0f, 1.0f);
    cut.SetParameters(4000.0f, 0.0f, 1.0f);
    const std::vector<float> expected = Filtered(whole, in);
    std::vector<float> inPlace = in;
    std::mt19937 random(77);
    for (std::size_t start = 0; start < in.size();) {
        const std::size_t count = std::min<std::size_t>(random() % 150, in.size() - start);
        float* const channel[] = {inPlace.data() + start};
        cut.ProcessInPlace(channel, static_cast<std::int32_t>(count));
        start += count;
    }
    EXPECT_EQ(inPlace, expected);
}

TEST(CEQ, ChannelsHaveStatesOfTheirOwn) {
    CEQ both(kRate, 2, kEqLowPass), left(kRate, 1, kEqLowPass), right(kRate, 1, kEqLowPass);
    for (CEQ* eq : {&both, &left, &right}) eq->SetParameters(500.0f, 0.0f, 1.0f);
    for (unsigned block = 0; block < 3; ++block) {
        const std::vector<float> a = Noise(333, 78 + block), b = Noise(333, 88 + block);
        std::vector<float> outA(333), outB(333);
        const float* const inputs[] = {a.data(), b.data()};
        float* const outputs[] = {outA.data(), outB.data()};
        both.Process(inputs, outputs, 333);
        EXPECT_EQ(outA, Filtered(left, a));
        EXPECT_EQ(outB, Filtered(right, b));
    }
}

TEST(CEQ, ResetForgetsTheSignalAndKeepsTheFilter) {
    CEQ eq(kRate, 1, kEqLowPass);
    eq.SetParameters(300.0f, 0.0f, 1.0f);
    const std::vector<float> expected = Filtered(eq, Impulse(100));
    Filtered(eq, Noise(1000, 79));
    eq.Reset();
    EXPECT_EQ(Filtered(eq, Impulse(100)), expected);
}

TEST(CEQ, ADecayNeverLingersAmongDenormalNumbers) {
    // A narrow low resonance rings for a long time, and without help would stay among the denormals for ever.
    CEQ peak(kRate, 1, kEqPeak), low(kRate, 1, kEqLowPass), high(kRate, 1, kEqHighPass);
    peak.SetParameters(50.0f, 20.0f, 10.0f);
    low.SetParameters(20.0f, 0.0f, 1.0f);
    high.SetParameters(200.0f, 0.0f, 1.0f);
    for (CEQ* eq : {&peak, &low, &high}) {
        Filtered(*eq, Noise(1000, 80));
        const std::vector<float> tail = Filtered(*eq, std::vector<float>(200000, 0.0f));
        const auto denormal = std::count_if(tail.begin(), tail.end(), [](float sample) {
            return sample != 0.0f && std::fabs(sample) < std::numeric_limits<float>::min();
        });
        EXPECT_LE(denormal, 64);
        EXPECT_EQ(tail.back(), 0.0f);
        EXPECT_NE(tail[100], 0.0f);
    }
}

TEST(CEQ, DenormalInputCountsAsSilence) {
    CEQ eq(kRate, 1, kEqLowPass);
    eq.SetParameters(4000.0f, 0.0f, 1.0f);
    EXPECT_EQ(Filtered(eq, std::vector<float>(1000, 1e-40f)), std::vector<float>(1000, 0.0f));
}

TEST(CEQ, NotFiniteSamplesCountAsZero) {
    CEQ eq(kRate, 1, kEqLowPass), reference(kRate, 1, kEqLowPass);
    eq.SetParameters(4000.0f, 0.0f, 1.0f);
    reference.SetParameters(4000.0f, 0.0f, 1.0f);
    std::vector<float> dirty = Noise(1000, 81), clean = dirty;
    const float bad[] = {kNaN, kInfinity, -kInfinity};
    for (std::size_t n = 0; n < dirty.size(); n += 11) {
        dirty[n] = bad[n % 3];
        clean[n] = 0.0f;
    }
    EXPECT_EQ(Filtered(eq, dirty), Filtered(reference, clean));
}

TEST(CEQ, RecoversWhenItsOutputLeftTheRangeOfNumbers) {
    CEQ eq(kRate, 1, kEqPeak);
    eq.SetParameters(1000.0f, 100.0f, 1.0f);
    Filtered(eq, std::vector<float>(1000, std::numeric_limits<float>::max()));
    Filtered(eq, std::vector<float>(64, 0.0f));
    for (const float sample : Filtered(eq, std::vector<float>(1000, 0.0f)))
        ASSERT_TRUE(std::isfinite(sample));
}

TEST(CEQ, ParametersThatAreNotFiniteAreIgnored) {
    CEQ eq(kRate, 1, kEqLowPass);
    eq.SetParameters(1000.0f, 0.0f, 1.0f);
    const std::vector<float> expected = Filtered(eq, Impulse(50));
    eq.Reset();
    for (const float bad : {kNaN, kInfinity, -kInfinity}) {
        eq.SetParameters(bad, 0.0f, 1.0f);
        eq.SetParameters(2000.0f, bad, 1.0f);
        eq.SetParameters(2000.0f, 0.0f, bad);
    }
    float frequency = 0.0f;
    eq.GetParameters(&frequency, nullptr, nullptr);
    EXPECT_NEAR(frequency, 1000.0f, 1e-3f);
    EXPECT_EQ(Filtered(eq, Impulse(50)), expected);
}

TEST(CEQ, AbsurdParametersKeepTheOutputBounded) {
    const float largest = std::numeric_limits<float>::max();
    const std::vector<float> in = Noise(3000, 82);
    for (std::int32_t type = 0; type < kEqTypeCount; ++type) {
        CEQ eq(kRate, 1, type);
        for (const float frequency : {-largest, 0.0f, 1e-30f, 1.0f, 5512.0f, 1e5f, largest}) {
            for (const float q : {-1.0f, 0.0f, 1e-20f, 1e20f, largest}) {
                for (const float gain : {-largest, -40.0f, 0.0f, 40.0f}) {
                    eq.SetParameters(frequency, gain, q);
                    for (const float sample : Filtered(eq, in)) {
                        // A sweep through all of these at up to 40 dB; the highest q stores up energy for
                        // thousands of samples.
                        ASSERT_LT(std::fabs(sample), 1e9f)
                            << type << ": " << frequency << ", " << gain << ", " << q;
                    }
                }
            }
        }
    }
}

TEST(CEQ, AnEmptyBlockIsHarmless) {
    CEQ eq(kRate, 1, kEqLowPass);
    const std::vector<float> nothing;
    EXPECT_EQ(Filtered(eq, nothing), nothing);
    eq.SetParameters(1000.0f, 0.0f, 1.0f);
    EXPECT_EQ(Filtered(eq, nothing), nothing);
}

TEST(CreateEq, ChecksItsArguments) {
    std::unique_ptr<CEqIf> eq;
    EXPECT_EQ(CreateEq(eq, 0.0f, 1, kEqLowPass), kBadArgument);
    EXPECT_EQ(CreateEq(eq, -44100.0f, 1, kEqLowPass), kBadArgument);
    EXPECT_EQ(CreateEq(eq, kNaN, 1, kEqLowPass), kBadArgument);
    EXPECT_EQ(CreateEq(eq, kInfinity, 1, kEqLowPass), kBadArgument);
    EXPECT_EQ(CreateEq(eq, kRate, 0, kEqLowPass), kBadArgument);
    EXPECT_EQ(CreateEq(eq, kRate, 1, -1), kBadArgument);
    EXPECT_EQ(CreateEq(eq, kRate, 1, 7), kBadArgument);
    EXPECT_FALSE(eq);
    for (std::int32_t type = 0; type < kEqTypeCount; ++type) {
        ASSERT_EQ(CreateEq(eq, kRate, 2, type), kOk);
        EXPECT_EQ(eq->GetType(), type);
    }
}

TEST(DestroyEq, EmptiesAndRefusesWhatIsEmpty) {
    std::unique_ptr<CEqIf> eq;
    EXPECT_EQ(DestroyEq(eq), kBadArgument);
    ASSERT_EQ(CreateEq(eq, kRate, 1, kEqLowPass), kOk);
    EXPECT_EQ(DestroyEq(eq), kOk);
    EXPECT_FALSE(eq);
}

} // namespace
} // namespace sonorelle
