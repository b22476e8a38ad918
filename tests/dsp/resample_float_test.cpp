#include "dsp/resample_float.h"

#include "dsp/kaiser_sinc.h"
#include "platform/result_codes.h"
#include "support/noise.h"
#include "support/portable_math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace sonorelle {
namespace {

using test::kPi;
using test::Noise;

constexpr std::int32_t kBlock = 16384;

struct Rates {
    std::int32_t in, out;
    double Ratio() const { return static_cast<double>(out) / in; }
};

std::unique_ptr<CResampleBase> MakeFloat(std::int32_t order = 3, std::int32_t channels = 1,
                                         std::int32_t blockSize = kBlock) {
    std::unique_ptr<CResampleBase> resampler;
    EXPECT_EQ(CreateResampler(resampler, order, blockSize, channels, kResampleFloat), kOk);
    return resampler;
}

std::vector<float> Sine(double hertz, double rate, std::size_t count) {
    std::vector<float> sine(count);
    for (std::size_t n = 0; n < count; ++n) {
        sine[n] = static_cast<float>(std::sin(2.0 * kPi * hertz * static_cast<double>(n) / rate));
    }
    return sine;
}

// One call, in an array with exactly the promised room, so that AddressSanitizer sees what lies beyond.
std::vector<float> Feed(CResampleBase& resampler, Rates rates, const float* in, std::size_t frames,
                        std::int32_t channels = 1) {
    const double usable = static_cast<double>(frames) + std::max(0, resampler.HeldFrames());
    std::vector<float> out(static_cast<std::size_t>(usable * rates.Ratio() + 2.0) *
                           static_cast<std::size_t>(channels));
    const std::int32_t made =
        resampler.Process(in, out.data(), rates.in, rates.out, channels, static_cast<std::int32_t>(frames));
    EXPECT_LE(static_cast<std::size_t>(made * channels), out.size());
    out.resize(static_cast<std::size_t>(made * channels));
    return out;
}

std::vector<float> Feed(CResampleBase& resampler, Rates rates, const std::vector<float>& in,
                        std::int32_t channels = 1) {
    return Feed(resampler, rates, in.data(), in.size() / static_cast<std::size_t>(channels), channels);
}

std::vector<float> FeedInRandomCuts(CResampleBase& resampler, Rates rates, const std::vector<float>& in,
                                    unsigned generator, std::size_t largest, std::int32_t channels = 1) {
    std::mt19937 random(generator);
    std::vector<float> all;
    const std::size_t frames = in.size() / static_cast<std::size_t>(channels);
    for (std::size_t start = 0; start < frames;) {
        const std::size_t count = std::min<std::size_t>(random() % (largest + 1), frames - start);
        const std::vector<float> out =
            Feed(resampler, rates, in.data() + start * static_cast<std::size_t>(channels), count, channels);
        all.insert(all.end(), out.begin(), out.end());
        start += count;
    }
    return all;
}

// The filter that is meant, in f64 and at any distance: a sinc with its edge at the roll-off under a Kaiser
// window that ends with the table's last entry.
double Kernel(double crossings, std::int32_t order) {
    const double rolloff = 0.9 + order * 0.025 * 0.03125;
    const double v = std::fabs(crossings) * 256.0 / (order * 256.0 - 1.0);
    if (v > 1.0) return 0.0;
    const double u = kPi * crossings;
    const double sinc = crossings == 0.0 ? rolloff : std::sin(u * rolloff) / u;
    return sinc * std::cyl_bessel_i(0.0, 9.0 * std::sqrt(1.0 - v * v)) / std::cyl_bessel_i(0.0, 9.0);
}

// Output k as the direct sum over all input frames around its exact place; silence before the first.
double DirectOutput(const std::vector<float>& in, Rates rates, std::int64_t k, std::int32_t order) {
    const double squeeze = std::min(rates.Ratio(), 1.0);
    const std::int64_t whole = k * rates.in / rates.out;
    const double fraction = static_cast<double>(k * rates.in % rates.out) / rates.out;
    const auto wing = static_cast<std::int64_t>(order / squeeze) + 2;
    double sum = 0.0;
    for (std::int64_t j = std::max<std::int64_t>(0, whole - wing); j <= whole + wing; ++j) {
        if (j >= static_cast<std::int64_t>(in.size())) break;
        const double distance = (static_cast<double>(whole - j) + fraction) * squeeze;
        sum += static_cast<double>(in[static_cast<std::size_t>(j)]) * Kernel(distance, order);
    }
    return sum * 0.99 * squeeze;
}

double Decibels(double ratio) { return 20.0 * std::log10(ratio); }

// The amplitude of the sine of `hertz` that fits best, and what is left beside it (both as amplitudes).
std::pair<double, double> FitSine(const std::vector<float>& signal, double hertz, double rate,
                                  std::size_t from) {
    double ss = 0, cc = 0, sc = 0, ys = 0, yc = 0;
    for (std::size_t n = from; n < signal.size(); ++n) {
        const double phase = 2.0 * kPi * hertz * static_cast<double>(n) / rate;
        const double s = std::sin(phase), c = std::cos(phase), y = static_cast<double>(signal[n]);
        ss += s * s, cc += c * c, sc += s * c, ys += y * s, yc += y * c;
    }
    const double det = ss * cc - sc * sc;
    const double a = (ys * cc - yc * sc) / det;
    const double b = (yc * ss - ys * sc) / det;
    double rest = 0.0;
    for (std::size_t n = from; n < signal.size(); ++n) {
        const double phase = 2.0 * kPi * hertz * static_cast<double>(n) / rate;
        const double y = static_cast<double>(signal[n]) - a * std::sin(phase) - b * std::cos(phase);
        rest += y * y;
    }
    return {std::hypot(a, b), std::sqrt(2.0 * rest / static_cast<double>(signal.size() - from))};
}

// The filter's gain at a frequency given in Nyquist frequencies of the lower rate, by Simpson's rule.
double KernelGain(double frequency, std::int32_t order) {
    constexpr int kSteps = 20000;
    const double width = static_cast<double>(order) / kSteps;
    double sum = 0.0;
    for (int i = 0; i <= kSteps; ++i) {
        const double t = i * width;
        const double weight = i == 0 || i == kSteps ? 1.0 : (i % 2 ? 4.0 : 2.0);
        sum += weight * Kernel(t, order) * std::cos(kPi * frequency * t);
    }
    return 2.0 * sum * width / 3.0;
}

class ResampleFloatAtRates : public testing::TestWithParam<Rates> {};

INSTANTIATE_TEST_SUITE_P(Rates, ResampleFloatAtRates,
                         testing::Values(Rates{44100, 11025}, Rates{48000, 11025}, Rates{22050, 11025},
                                         Rates{32000, 11025}, Rates{96000, 11025}, Rates{192000, 11025},
                                         Rates{11025, 11025}, Rates{11026, 11025}, Rates{11025, 44100},
                                         Rates{44100, 48000}, Rates{48000, 44100}, Rates{1498, 1000},
                                         Rates{999983, 1009}),
                         [](const auto& rates) {
                             return std::to_string(rates.param.in) + "To" + std::to_string(rates.param.out);
                         });

TEST_P(ResampleFloatAtRates, AgreesWithTheDirectSumAtExactPlaces) {
    const Rates rates = GetParam();
    const std::vector<float> in = Noise(rates.in > 500000 ? 40000 : 3000, 41);
    for (const std::int32_t order : {1, 3, 16}) {
        const auto resampler = MakeFloat(order);
        const std::vector<float> out = Feed(*resampler, rates, in);
        double error = 0.0;
        for (std::size_t k = 0; k < out.size(); ++k) {
            const double expected = DirectOutput(in, rates, static_cast<std::int64_t>(k), order);
            error = std::max(error, std::fabs(static_cast<double>(out[k]) - expected));
        }
        RecordProperty("error_of_order_" + std::to_string(order), std::to_string(error));
        // The place is cut to 1/32768 frame and to 1/32768 crossing, which moves each tap by up to 1.5 (the
        // slope of the filter) times that. With noise at full scale the errors of the taps hardly add up.
        EXPECT_LT(error, 3e-4) << "order " << order;
        EXPECT_GT(out.size(), 5u);
    }
}

TEST_P(ResampleFloatAtRates, OutputStreamDoesNotDependOnBlockSizes) {
    const Rates rates = GetParam();
    const std::vector<float> in = Noise(30000, 42);
    const auto whole = MakeFloat(3, 1, 30000);
    const std::vector<float> expected = Feed(*whole, rates, in);
    unsigned generator = 0;
    for (const std::size_t largest : {3u, 60u, 900u, 2500u, 9000u, 16384u}) {
        const auto cut = MakeFloat();
        const std::vector<float> out = FeedInRandomCuts(*cut, rates, in, ++generator, largest);
        const std::size_t common = std::min(out.size(), expected.size());
        EXPECT_LE(std::max(out.size(), expected.size()) - common,
                  1u + static_cast<std::size_t>(rates.Ratio()));
        for (std::size_t k = 0; k < common; ++k) ASSERT_EQ(out[k], expected[k]) << largest << ", " << k;
    }
}

TEST_P(ResampleFloatAtRates, FirstOutputsStartOnlyAfterHistoryFrames) {
    const Rates rates = GetParam();
    const auto resampler = MakeFloat();
    EXPECT_EQ(resampler->HeldFrames(), -8);
    const auto history =
        std::max(8, static_cast<std::int32_t>(4.0 * std::max(1.0 / rates.Ratio(), 1.0) + 1.0));
    const float sample = 1.0f;
    for (std::int32_t n = 0; n < history; ++n) {
        ASSERT_EQ(Feed(*resampler, rates, &sample, 1).size(), 0u) << n;
        ASSERT_EQ(resampler->GetHistory(), history);
        ASSERT_EQ(resampler->HeldFrames(), n + 1 - history);
    }
    EXPECT_GE(Feed(*resampler, rates, &sample, 1).size(), 1u);
}

TEST_P(ResampleFloatAtRates, ASingleCallGivesTheCountedNumberOfOutputs) {
    const Rates rates = GetParam();
    for (const std::int32_t frames : {500, 1000, 4093, kBlock}) {
        const auto resampler = MakeFloat();
        const std::vector<float> in(static_cast<std::size_t>(frames), 0.5f);
        const std::size_t made = Feed(*resampler, rates, in).size();
        ResampleClock clock;
        clock.SetRates(rates.in, rates.out);
        EXPECT_EQ(static_cast<std::int64_t>(made), clock.CountOutputs(frames - resampler->GetHistory()));
    }
}

TEST(CResampleFloat, HeldFramesTellWhatIsStillNeeded) {
    // The pitch tracker's own sum: a hop's worth of input less the held frames gives a hop each time.
    for (const Rates rates :
         {Rates{44100, 11025}, Rates{48000, 11025}, Rates{22050, 11025}, Rates{32000, 11025},
          Rates{96000, 11025}, Rates{192000, 11025}, Rates{11025, 11025}, Rates{11026, 11025}}) {
        const auto resampler = MakeFloat();
        const double perOutput = 1.0 / rates.Ratio();
        const std::vector<float> in = Noise(10000, 43);
        Feed(*resampler, rates, in.data(), 1000);
        for (int hop = 0; hop < 200; ++hop) {
            const double needed = std::ceil(512.0 * perOutput - resampler->HeldFrames());
            const std::size_t made =
                Feed(*resampler, rates, in.data(), static_cast<std::size_t>(needed)).size();
            ASSERT_GE(made, 512u) << rates.in << ", hop " << hop;
            ASSERT_LE(made, 513u) << rates.in << ", hop " << hop;
        }
    }
}

TEST_P(ResampleFloatAtRates, ResetBringsBackTheFirstState) {
    const Rates rates = GetParam();
    const std::vector<float> in = Noise(16000, 44);
    const auto resampler = MakeFloat();
    const std::vector<float> expected = Feed(*resampler, rates, in);
    EXPECT_TRUE(resampler->HasRun());
    resampler->Reset();
    EXPECT_FALSE(resampler->HasRun());
    EXPECT_EQ(resampler->GetHistory(), 8);
    EXPECT_EQ(resampler->HeldFrames(), -8);
    EXPECT_EQ(Feed(*resampler, rates, in), expected);
}

TEST_P(ResampleFloatAtRates, ChannelsAreResampledEachOnItsOwn) {
    const Rates rates = GetParam();
    const std::vector<float> left = Noise(4000, 45), right = Noise(4000, 46);
    std::vector<float> both;
    for (std::size_t n = 0; n < left.size(); ++n) both.insert(both.end(), {left[n], right[n]});
    const auto stereo = MakeFloat(3, 2);
    const auto a = MakeFloat(), b = MakeFloat();
    const std::vector<float> out = FeedInRandomCuts(*stereo, rates, both, 3, 700, 2);
    const std::vector<float> outLeft = FeedInRandomCuts(*a, rates, left, 3, 700);
    const std::vector<float> outRight = FeedInRandomCuts(*b, rates, right, 3, 700);
    ASSERT_EQ(out.size(), 2 * outLeft.size());
    for (std::size_t k = 0; k < outLeft.size(); ++k) {
        ASSERT_EQ(out[2 * k], outLeft[k]);
        ASSERT_EQ(out[2 * k + 1], outRight[k]);
    }
}

TEST_P(ResampleFloatAtRates, ConstantInputKeepsItsLevelTimes099) {
    const Rates rates = GetParam();
    const auto resampler = MakeFloat();
    const std::vector<float> out = Feed(*resampler, rates, std::vector<float>(kBlock, 1.0f));
    const auto settled = static_cast<std::size_t>(std::ceil(3.0 * std::max(1.0, rates.Ratio()))) + 1;
    ASSERT_GT(out.size(), settled);
    // A filter of order 3 lets the images of the constant (at whole multiples of the input rate) through at
    // -63 dB at most when its width is one crossing a frame; stretched filters are far better.
    for (std::size_t k = settled; k < out.size(); ++k) ASSERT_NEAR(out[k], 0.99, 1.5e-3) << k;
}

TEST(CResampleFloat, EqualRatesAt11025AreAFilterWithAGainOf099) {
    const auto resampler = MakeFloat();
    const std::vector<float> in = Noise(4000, 47);
    const std::vector<float> out = Feed(*resampler, {11025, 11025}, in);
    ASSERT_EQ(out.size(), in.size() - 8);
    for (std::size_t k = 3; k < out.size(); ++k) {
        double expected = 0.0;
        for (int j = -2; j <= 2; ++j) {
            const std::size_t at = k + static_cast<std::size_t>(j + 3) - 3;
            expected += static_cast<double>(in[at]) * Kernel(j, 3);
        }
        ASSERT_NEAR(out[k], 0.99 * expected, 1e-6) << k; // places are exact: only f32 rounds
    }
    EXPECT_NEAR(KernelGain(0.0, 3), 1.0, 1e-3); // a sinc cut off after three crossings
}

TEST(CResampleFloat, SinesComeOutPureAndWithTheFiltersGain) {
    for (const Rates rates : {Rates{44100, 11025}, Rates{48000, 11025}}) {
        for (const double hertz : {60.0, 220.0, 440.0, 1000.0, 2500.0, 4000.0}) {
            const auto resampler = MakeFloat();
            const std::vector<float> out = Feed(*resampler, rates, Sine(hertz, rates.in, kBlock));
            const auto [amplitude, rest] = FitSine(out, hertz, rates.out, 20);
            EXPECT_NEAR(amplitude, 0.99 * KernelGain(hertz / (rates.out / 2.0), 3), 3e-4) << hertz;
            // What lies beside the sine comes from places cut to 1/32768 frame. It grows with the frequency,
            // to -92.9 dB at 4000 Hz from 48000; the noise of 16-bit samples lies at -98.
            EXPECT_LT(Decibels(rest / amplitude), -90.0) << hertz << " Hz from " << rates.in;
        }
    }
}

TEST(CResampleFloat, SinesKeepTheirPlaceInTime) {
    // No delay: the phase at output k is that of the input at k times the ratio.
    const Rates rates{48000, 11025};
    const auto resampler = MakeFloat();
    const std::vector<float> out = Feed(*resampler, rates, Sine(440.0, rates.in, kBlock));
    double s = 0.0, c = 0.0;
    for (std::size_t k = 25; k < 25 + 2205; ++k) { // 88 whole periods
        const double phase = 2.0 * kPi * 440.0 * static_cast<double>(k) / rates.out;
        s += static_cast<double>(out[k]) * std::sin(phase);
        c += static_cast<double>(out[k]) * std::cos(phase);
    }
    const double frames = std::atan2(c, s) / (2.0 * kPi * 440.0) * rates.in;
    EXPECT_NEAR(frames, 0.0, 1e-3);
}

TEST(CResampleFloat, FrequenciesAboveTheBandAreTakenAwayAsFarAsTheFilterReaches) {
    // Order 3 is a gentle filter: 6 dB down at 4975 Hz, and at its floor only one crossing above that.
    for (const Rates rates : {Rates{44100, 11025}, Rates{48000, 11025}}) {
        for (const auto& [hertz, limit] : {std::pair{6500.0, -14.0},
                                           {8000.0, -28.0},
                                           {9500.0, -54.0},
                                           {11000.0, -80.0},
                                           {15000.0, -80.0},
                                           {20000.0, -80.0}}) {
            const auto resampler = MakeFloat();
            const std::vector<float> out = Feed(*resampler, rates, Sine(hertz, rates.in, kBlock));
            double power = 0.0;
            for (std::size_t k = 20; k < out.size(); ++k) power += std::pow(static_cast<double>(out[k]), 2.0);
            const double amplitude = std::sqrt(2.0 * power / static_cast<double>(out.size() - 20));
            EXPECT_LT(Decibels(amplitude), limit) << hertz << " Hz from " << rates.in;
        }
    }
}

TEST(CResampleFloat, LongerFiltersAreSteeper) {
    double last = 0.0;
    for (const std::int32_t order : {3, 8, 32, 120}) {
        const auto resampler = MakeFloat(order);
        const std::vector<float> out = Feed(*resampler, {44100, 11025}, Sine(6500.0, 44100.0, kBlock));
        const double level = Decibels(static_cast<double>(
            *std::max_element(out.begin() + static_cast<std::ptrdiff_t>(order) + 1, out.end())));
        EXPECT_LT(level, last);
        last = level;
    }
    EXPECT_LT(last, -75.0);
}

TEST(CResampleFloat, SilenceGivesExactZeros) {
    const auto resampler = MakeFloat();
    const std::vector<float> out = Feed(*resampler, {48000, 11025}, std::vector<float>(kBlock, 0.0f));
    EXPECT_EQ(out, std::vector<float>(out.size(), 0.0f));
}

TEST(CResampleFloat, WorksInPlaceForDownsampling) {
    for (const Rates rates :
         {Rates{44100, 11025}, Rates{48000, 11025}, Rates{11025, 11025}, Rates{11026, 11025}}) {
        const std::vector<float> in = Noise(kBlock, 48);
        const auto apart = MakeFloat(), within = MakeFloat();
        const std::vector<float> expected = Feed(*apart, rates, in);
        std::vector<float> array = in;
        array.resize(in.size() + 2);
        const std::int32_t made = within->Process(array.data(), array.data(), rates.in, rates.out, 1, kBlock);
        array.resize(static_cast<std::size_t>(made));
        EXPECT_EQ(array, expected);
    }
}

TEST(CResampleFloat, MoreThanABlockIsTakenInPortions) {
    const std::vector<float> in = Noise(10000, 49);
    for (const Rates rates : {Rates{44100, 11025}, Rates{48000, 11025}, Rates{11025, 48000}}) {
        const auto large = MakeFloat(3, 1, 10000);
        const auto small = MakeFloat(3, 1, 64);
        const std::vector<float> expected = Feed(*large, rates, in);
        const std::vector<float> out = Feed(*small, rates, in);
        const std::size_t common = std::min(out.size(), expected.size());
        EXPECT_LE(std::max(out.size(), expected.size()) - common, 5u); // one frame's outputs
        EXPECT_TRUE(
            std::equal(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(common), expected.begin()));
    }
}

TEST(CResampleFloat, ALongerHistoryHoldsOutputsBackUntilItIsFilled) {
    const auto resampler = MakeFloat();
    const std::vector<float> in = Noise(kBlock, 50);
    Feed(*resampler, {44100, 44100}, in.data(), 1000);
    EXPECT_EQ(resampler->GetHistory(), 8);
    EXPECT_EQ(resampler->HeldFrames(), 0);
    const float sample = 0.5f;
    for (int n = 0; n < 9; ++n) EXPECT_EQ(Feed(*resampler, {44100, 11025}, &sample, 1).size(), 0u) << n;
    EXPECT_EQ(resampler->GetHistory(), 17);
    EXPECT_EQ(resampler->HeldFrames(), 0);
    EXPECT_EQ(Feed(*resampler, {44100, 11025}, &sample, 1).size(), 1u);
    Feed(*resampler, {44100, 44100}, in.data(), 100);
    EXPECT_EQ(resampler->GetHistory(), 17); // it never shrinks
}

TEST(CResampleFloat, AChangedRatioNeverReadsWhatWasNotWritten) {
    // Whatever an earlier stream left in the buffers must not be heard after a reset and several growths.
    const std::vector<float> in = Noise(3000, 51);
    const std::vector<float> loud(kBlock, 1e6f);
    const auto fresh = MakeFloat(), used = MakeFloat();
    Feed(*used, {11025, 11025}, loud);
    Feed(*used, {1000, 1}, loud);
    used->Reset();
    for (const Rates rates : {Rates{11025, 11025}, Rates{22050, 11025}, Rates{48000, 11025}, Rates{100, 1},
                              Rates{11025, 44100}, Rates{1000, 1}, Rates{3, 2}}) {
        const std::vector<float> a = Feed(*fresh, rates, in), b = Feed(*used, rates, in);
        EXPECT_EQ(a, b);
        for (const float sample : b) ASSERT_LT(std::fabs(sample), 4.0f);
    }
}

TEST(CResampleFloat, SettlesOnTheNewRatioAfterAChange) {
    const auto resampler = MakeFloat();
    const std::vector<float> ones(kBlock, 1.0f);
    Feed(*resampler, {44100, 44100}, ones);
    const std::vector<float> out = Feed(*resampler, {44100, 11025}, ones);
    // The past that the wider left wing looks for was not kept, and counts as silence for three crossings.
    for (std::size_t k = 4; k < out.size(); ++k) ASSERT_NEAR(out[k], 0.99, 1e-3) << k;
}

TEST(CResampleFloat, RatiosUpTo1000WorkBothWays) {
    const std::vector<float> in = Noise(16000, 52);
    const auto down = MakeFloat();
    const std::vector<float> slow = Feed(*down, {1000, 1}, in);
    ASSERT_EQ(down->GetHistory(), 4001);
    ASSERT_EQ(slow.size(), 12u); // (16000 - 4001) / 1000, rounded up
    for (std::size_t k = 0; k < slow.size(); ++k) {
        // The table step of 33 for 32.768 narrows the filter by 0.7%: its gain and its edge move so far.
        EXPECT_NEAR(slow[k], DirectOutput(in, {1000, 1}, static_cast<std::int64_t>(k), 3), 5e-3);
    }
    const auto up = MakeFloat();
    const std::vector<float> fast = Feed(*up, {1, 1000}, in.data(), 100);
    EXPECT_EQ(fast.size(), 92000u);
    for (std::size_t k = 0; k < fast.size(); k += 97) {
        ASSERT_NEAR(fast[k], DirectOutput(in, {1, 1000}, static_cast<std::int64_t>(k), 3), 3e-4);
    }
}

TEST(CResampleFloat, TheLongestFilterWorksAtExtremeRatios) {
    const auto resampler = MakeFloat(120, 2, 1024);
    const std::vector<float> in = Noise(2 * 130000, 53);
    for (const Rates rates : {Rates{1000, 1}, Rates{980, 1}, Rates{2, 1}, Rates{1, 3}}) {
        for (const float sample : Feed(*resampler, rates, in, 2)) ASSERT_LT(std::fabs(sample), 4.0f);
    }
}

TEST(CResampleFloat, AnOutputWaitsForAWingThatReachesBeyondTheHistory) {
    // 980 to 1 has a table step of 33 for 33.44, so that the wings of the longest filter are 1.3% longer than
    // the ratio says, and reach beyond the look-ahead. Cut into small blocks, an output that did not wait
    // would differ.
    const Rates rates{980, 1};
    const std::vector<float> in = Noise(260000, 57);
    const auto whole = MakeFloat(120, 1, 260000), cut = MakeFloat(120, 1, 1000);
    const std::vector<float> expected = Feed(*whole, rates, in);
    const std::vector<float> out = FeedInRandomCuts(*cut, rates, in, 58, 1000);
    EXPECT_GT(out.size(), 100u);
    EXPECT_EQ(out, expected);
}

TEST(CResampleFloat, HostileArgumentsGiveNoFramesAndTakeNone) {
    const auto resampler = MakeFloat();
    const std::vector<float> in = Noise(1000, 54);
    std::vector<float> out(1000);
    const std::int32_t low = std::numeric_limits<std::int32_t>::min();
    const std::int32_t high = std::numeric_limits<std::int32_t>::max();
    const std::pair<std::int32_t, std::int32_t> bad[] = {
        {0, 11025}, {11025, 0}, {0, 0},    {-44100, 11025}, {44100, -1},  {-1, -1}, {low, low},  {low, high},
        {1001, 1},  {1, 1001},  {high, 1}, {1, high},       {high, 2000}, {low, 1}, {11025, low}};
    for (const auto& [inputRate, outputRate] : bad) {
        EXPECT_EQ(resampler->Process(in.data(), out.data(), inputRate, outputRate, 1, 1000), 0);
    }
    EXPECT_EQ(resampler->Process(in.data(), out.data(), 44100, 11025, 0, 1000), 0);
    EXPECT_EQ(resampler->Process(in.data(), out.data(), 44100, 11025, 2, 500), 0);
    EXPECT_EQ(resampler->Process(in.data(), out.data(), 44100, 11025, 1, -1), 0);
    EXPECT_EQ(resampler->Process(in.data(), out.data(), 44100, 11025, 1, low), 0);
    EXPECT_FALSE(resampler->HasRun());
    EXPECT_EQ(resampler->HeldFrames(), -8);
    const auto untouched = MakeFloat();
    EXPECT_EQ(Feed(*resampler, {44100, 11025}, in), Feed(*untouched, {44100, 11025}, in));
}

TEST(CResampleFloat, AnEmptyCallIsARun) {
    const auto resampler = MakeFloat();
    EXPECT_EQ(resampler->Process(nullptr, nullptr, 44100, 11025, 1, 0), 0);
    EXPECT_TRUE(resampler->HasRun());
    EXPECT_EQ(resampler->HeldFrames(), -17);
}

TEST(CResampleFloat, NotFiniteSamplesCountAsZero) {
    std::vector<float> dirty = Noise(2000, 55), clean = dirty;
    const float bad[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity()};
    for (std::size_t n = 0; n < dirty.size(); n += 5) {
        dirty[n] = bad[n % 3];
        clean[n] = 0.0f;
    }
    const auto a = MakeFloat(), b = MakeFloat();
    EXPECT_EQ(Feed(*a, {48000, 11025}, dirty), Feed(*b, {48000, 11025}, clean));
}

TEST(CResampleFloat, AShorterTableMakesAShorterFilter) {
    const auto cut = MakeFloat(16), made = MakeFloat(3);
    EXPECT_EQ(cut->GetHalfLength(), 17);
    ASSERT_EQ(cut->BuildTable(3 * 256), kOk);
    EXPECT_EQ(cut->GetHalfLength(), 4);
    EXPECT_EQ(cut->GetHistory(), 8);
    const std::vector<float> in = Noise(1000, 56);
    EXPECT_EQ(Feed(*cut, {44100, 11025}, in).size(), Feed(*made, {44100, 11025}, in).size());
    for (const std::int32_t size : {0, -256, 255, 257, 17 * 256})
        EXPECT_EQ(cut->BuildTable(size), kBadArgument);
    EXPECT_EQ(cut->GetHalfLength(), 4);
}

TEST(CreateResampler, ChecksItsArguments) {
    std::unique_ptr<CResampleBase> resampler;
    for (const std::int32_t order : {0, -1, 121, std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(CreateResampler(resampler, order, 1024, 1, kResampleFloat), kBadArgument);
    }
    for (const std::int32_t type : {-1, 2, 99}) {
        EXPECT_EQ(CreateResampler(resampler, 3, 1024, 1, type), kBadArgument);
    }
    EXPECT_EQ(CreateResampler(resampler, 3, 0, 1, kResampleFloat), kBadArgument);
    EXPECT_EQ(CreateResampler(resampler, 3, 1024, 0, kResampleFloat), kBadArgument);
    EXPECT_FALSE(resampler);
    for (const std::int32_t order : {1, 120}) {
        EXPECT_EQ(CreateResampler(resampler, order, 1024, 1, kResampleFloat), kOk);
        EXPECT_EQ(CreateResampler(resampler, order, 1, 3, kResampleInt, 1), kOk);
    }
}

TEST(CreateResampler, HalfLengthAndHistoryFollowFromTheOrder) {
    for (const std::int32_t order : {1, 3, 120}) {
        const auto resampler = MakeFloat(order);
        EXPECT_EQ(resampler->GetHalfLength(), order + 1);
        EXPECT_EQ(resampler->GetHistory(), 2 * (order + 1));
        EXPECT_FALSE(resampler->HasRun());
    }
}

} // namespace
} // namespace sonorelle
