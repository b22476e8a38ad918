#include "dsp/resample_int.h"

#include "platform/result_codes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

using Samples = std::vector<std::int16_t>;

std::unique_ptr<CResampleBase> MakeInt(std::int32_t order, std::int32_t channels = 1) {
    std::unique_ptr<CResampleBase> resampler;
    EXPECT_EQ(CreateResampler(resampler, order, 16384, channels, kResampleInt), kOk);
    return resampler;
}

Samples Noise(std::size_t count, int peak, unsigned generator) {
    std::mt19937 random(generator);
    Samples noise(count);
    for (auto& sample : noise)
        sample =
            static_cast<std::int16_t>(static_cast<int>(random() % (2u * static_cast<unsigned>(peak))) - peak);
    return noise;
}

Samples Feed(CResampleBase& resampler, std::int32_t inputRate, std::int32_t outputRate, const Samples& in) {
    Samples out(in.size() * static_cast<std::size_t>(std::max(1, outputRate / inputRate + 1)) + 2);
    const std::int32_t made = resampler.Process(in.data(), out.data(), inputRate, outputRate, 1,
                                                static_cast<std::int32_t>(in.size()));
    out.resize(static_cast<std::size_t>(made));
    return out;
}

// The resampler as a plain walk along both wings for each output, one table entry and one frame after the
// other.
Samples Walk(const Samples& in, std::int32_t inputRate, std::int32_t outputRate, int order,
             std::size_t outputs) {
    const int size = order * 256;
    const double rolloff = static_cast<double>(static_cast<float>(order * 0.025 * 0.03125 + 0.9));
    std::vector<int> table(static_cast<std::size_t>(size)), deltas(table.size(), 0);
    table[0] = static_cast<int>(rolloff * 32767.0);
    for (int i = 1; i < size; ++i) {
        const double u = std::numbers::pi * i / 256.0, v = i / (size - 1.0);
        const double window =
            std::cyl_bessel_i(0.0, 9.0 * std::sqrt(1.0 - v * v)) / std::cyl_bessel_i(0.0, 9.0);
        const auto at = static_cast<std::size_t>(i);
        table[at] = static_cast<int>(std::floor(std::sin(u * rolloff) / u * window * 32767.0 + 0.5));
        deltas[at - 1] = table[at] - table[at - 1];
    }
    const double ratio = static_cast<double>(outputRate) / inputRate;
    const auto step = static_cast<std::int64_t>(std::min(ratio * 256.0, 256.0) * 128.0 + 0.5);
    const auto gain = static_cast<std::int64_t>((ratio >= 1.0 ? 0.99 : 0.99 * ratio) * 32768.0);
    const auto sampleAt = [&](std::int64_t frame) -> std::int64_t {
        return frame < 0 || frame >= static_cast<std::int64_t>(in.size())
                   ? 0
                   : in[static_cast<std::size_t>(frame)];
    };
    const auto term = [&](std::int64_t p, std::int64_t frame) {
        const auto at = static_cast<std::size_t>(p >> 7);
        return ((((deltas[at] * (p & 127)) >> 7) + table[at]) * sampleAt(frame)) >> 8;
    };
    Samples out;
    double time = 0.0;
    for (std::size_t k = 0; k < outputs; ++k, time += 1.0 / ratio) {
        const auto t = static_cast<std::int64_t>(time * 32768.0);
        std::int64_t sum = 0;
        std::int64_t frame = t >> 15;
        for (std::int64_t p = ((t & 32767) * step) >> 15; p < size * 128; p += step) sum += term(p, frame--);
        frame = t >> 15;
        std::int64_t p = ((-t & 32767) * step) >> 15;
        if ((-t & 32767) == 0) p += step;
        for (; p < size * 128 - 128; p += step) sum += term(p, ++frame);
        out.push_back(static_cast<std::int16_t>(((sum >> 7) * gain) >> 15));
    }
    return out;
}

// Half scale: the filter's overshoot stays within i16, and sums within i32.
constexpr int kHalfScale = 16000;

TEST(CResampleInt, AgreesToTheBitWithAWalkAlongTheTable) {
    // Ratios whose places f64 holds exactly, so that every way of keeping the time agrees.
    const std::pair<std::int32_t, std::int32_t> rates[] = {{44100, 11025}, {22050, 11025}, {11025, 11025},
                                                           {11025, 44100}, {36000, 64000}, {5000, 32000},
                                                           {500, 1}};
    for (const auto& [inputRate, outputRate] : rates) {
        for (const int order : {1, 3, 20}) {
            const Samples in = Noise(16000, kHalfScale, 61);
            const auto resampler = MakeInt(order);
            const Samples out = Feed(*resampler, inputRate, outputRate, in);
            EXPECT_GT(out.size(), 10u);
            EXPECT_EQ(out, Walk(in, inputRate, outputRate, order, out.size()))
                << inputRate << " to " << outputRate << ", order " << order;
        }
    }
}

TEST(CResampleInt, AgreesWithTheWalkAtAwkwardRatios) {
    // A place that f64 cannot hold may be cut to either side of a multiple of 1/32768 frame. Noise of half
    // scale changes by less than pi x 2 x 16000 in a frame, hence by less than 4 in that time; rounding
    // adds 2.
    for (const auto& [inputRate, outputRate] :
         {std::pair{48000, 11025}, {48000, 36000}, {192, 320}, {512, 129}}) {
        for (const int order : {1, 3, 20}) {
            const Samples in = Noise(9000, kHalfScale, 65);
            const auto resampler = MakeInt(order);
            const Samples out = Feed(*resampler, inputRate, outputRate, in);
            const Samples expected = Walk(in, inputRate, outputRate, order, out.size());
            for (std::size_t k = 0; k < out.size(); ++k) {
                ASSERT_NEAR(out[k], expected[k], 6) << inputRate << " to " << outputRate << ", output " << k;
            }
        }
    }
}

TEST(CResampleInt, FollowsTheFloatOneWithinItsRounding) {
    const Samples in = Noise(16384, 12000, 62);
    std::vector<float> inFloat(in.begin(), in.end());
    std::unique_ptr<CResampleBase> exact;
    ASSERT_EQ(CreateResampler(exact, 3, 16384, 1, kResampleFloat), kOk);
    for (const auto& [inputRate, outputRate] : {std::pair{44100, 11025}, {48000, 11025}, {11025, 11025}}) {
        const auto resampler = MakeInt(3);
        exact->Reset();
        std::vector<float> expected(in.size());
        const std::int32_t made =
            exact->Process(inFloat.data(), expected.data(), inputRate, outputRate, 1, 16384);
        const Samples out = Feed(*resampler, inputRate, outputRate, in);
        ASSERT_EQ(out.size(), static_cast<std::size_t>(made));
        for (std::size_t k = 0; k < out.size(); ++k) {
            ASSERT_NEAR(static_cast<float>(out[k]), expected[k], 3.0f) << k;
        }
    }
}

TEST(CResampleInt, FullScaleIsHeldAndDoesNotWrap) {
    // A square wave at full scale overshoots behind a steep filter; wrapped, its top would jump to the
    // bottom.
    Samples in(16384);
    for (std::size_t n = 0; n < in.size(); ++n)
        in[n] = n / 40 % 2 ? std::int16_t{-32768} : std::int16_t{32767};
    const auto resampler = MakeInt(40);
    const Samples out = Feed(*resampler, 44100, 22050, in);
    std::size_t held = 0;
    for (std::size_t k = 60; k < out.size(); ++k) {
        const std::size_t centre = 2 * k;
        const std::size_t intoHalf = centre % 40;
        if (intoHalf < 6 || intoHalf > 34) continue; // the edges themselves
        ASSERT_EQ(out[k] > 0, in[centre] > 0) << k;
        held += out[k] == 32767 || out[k] == -32768;
    }
    EXPECT_GT(held, 0u);
}

TEST(CResampleInt, FullScaleThroughTheLongestFilterStaysRight) {
    const Samples in(16384, 32767);
    std::unique_ptr<CResampleBase> resampler;
    ASSERT_EQ(CreateResampler(resampler, 3, 16384, 1, kResampleInt), kOk);
    const Samples out = Feed(*resampler, 1000, 1, in);
    ASSERT_GE(out.size(), 10u);
    // The gain of 0.00099 is held as 32 / 32768, 1.4% less; the table step of 33 for 32.768 takes another
    // 0.7%.
    for (std::size_t k = 4; k < out.size(); ++k) EXPECT_NEAR(out[k], 0.99 * 32767, 0.025 * 32767) << k;
}

TEST(CResampleInt, OutputStreamDoesNotDependOnBlockSizes) {
    const Samples in = Noise(16000, 32000, 63);
    for (const auto& [inputRate, outputRate] : {std::pair{44100, 11025}, {48000, 11025}, {11025, 48000}}) {
        const auto whole = MakeInt(3), cut = MakeInt(3);
        const Samples expected = Feed(*whole, inputRate, outputRate, in);
        Samples all;
        std::mt19937 random(64);
        for (std::size_t start = 0; start < in.size();) {
            const std::size_t count = std::min<std::size_t>(random() % 900, in.size() - start);
            const auto begin = in.begin() + static_cast<std::ptrdiff_t>(start);
            const Samples block(begin, begin + static_cast<std::ptrdiff_t>(count));
            const Samples out = Feed(*cut, inputRate, outputRate, block);
            all.insert(all.end(), out.begin(), out.end());
            start += count;
        }
        const std::size_t common = std::min(all.size(), expected.size());
        EXPECT_LE(std::max(all.size(), expected.size()) - common, 5u);
        EXPECT_TRUE(
            std::equal(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(common), expected.begin()));
    }
}

TEST(CResampleInt, SilenceStaysExactlySilent) {
    const auto resampler = MakeInt(3);
    const Samples out = Feed(*resampler, 48000, 11025, Samples(10000, 0));
    EXPECT_EQ(out, Samples(out.size(), 0));
}

} // namespace
} // namespace sonorelle
