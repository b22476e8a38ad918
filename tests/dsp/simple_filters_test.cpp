#include "dsp/simple_filters.h"

#include "platform/result_codes.h"

#include "support/hostile_numbers.h"
#include "support/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

using test::Noise;

template<typename Filter>
std::vector<float> Filtered(Filter& filter, const std::vector<float>& in) {
    std::vector<float> out(in.size());
    filter.Process(in.data(), out.data(), static_cast<std::int32_t>(in.size()));
    return out;
}

template<typename Filter>
void ExpectCutsDoNotMatter() {
    const std::vector<float> in = Noise(5000, 11);
    Filter whole(-0.9f);
    const std::vector<float> expected = Filtered(whole, in);
    Filter cut(-0.9f);
    std::vector<float> inPlace = in;
    std::mt19937 random(12);
    for (std::size_t start = 0; start < in.size();) {
        const std::size_t count = std::min<std::size_t>(random() % 70, in.size() - start);
        cut.Process(inPlace.data() + start, inPlace.data() + start, static_cast<std::int32_t>(count));
        start += count;
    }
    EXPECT_EQ(inPlace, expected);
}

TEST(CSimpleIIRFilter, ImpulseDecaysByTheFeedback) {
    CSimpleIIRFilter filter(-0.9f);
    std::vector<float> impulse(100, 0.0f);
    impulse[0] = 1.0f;
    const std::vector<float> out = Filtered(filter, impulse);
    for (std::size_t n = 0; n < out.size(); ++n) {
        // Each step rounds once or twice, so the relative error grows by less than 1.2e-7 a sample.
        const double expected = 0.1 * std::pow(0.9, static_cast<double>(n));
        EXPECT_NEAR(out[n], expected, expected * 2e-7 * static_cast<double>(n + 4));
    }
}

TEST(CSimpleIIRFilter, FollowsItsRecurrenceInF64) {
    CSimpleIIRFilter filter(-0.9f);
    const std::vector<float> in = Noise(20000, 1);
    const std::vector<float> out = Filtered(filter, in);
    double y = 0.0;
    for (std::size_t n = 0; n < in.size(); ++n) {
        y = 0.9 * y + 0.1 * static_cast<double>(in[n]) + 1e-24;
        // Three roundings of values below 1 a step, in a loop whose gain is 1 / (1 - 0.9).
        ASSERT_NEAR(out[n], y, 3 * 6e-8 * 10) << n;
    }
}

TEST(CSimpleIIRFilter, ArithmeticIsF32InTheWrittenOrder) {
    CSimpleIIRFilter filter(-0.9f);
    const std::vector<float> in = Noise(1000, 2);
    const std::vector<float> out = Filtered(filter, in);
    volatile float y = 0.0f; // volatile: every step is rounded on its own
    const float feedback = 0.9f;
    const float gain = 1.0f - 0.9f;
    for (std::size_t n = 0; n < in.size(); ++n) {
        volatile float fed = feedback * y;
        volatile float driven = gain * in[n];
        volatile float sum = fed + driven;
        y = sum + 1e-24f;
        ASSERT_EQ(out[n], y) << n;
    }
}

TEST(CSimpleIIRFilter, OutputOnSilenceSettlesNear1e23AndNeverAtZero) {
    CSimpleIIRFilter filter(-0.9f);
    const std::vector<float> out = Filtered(filter, std::vector<float>(44100, 0.0f));
    for (const float y : out) ASSERT_GT(y, 0.0f);
    EXPECT_NEAR(out.back(), 1e-23, 1e-28); // 1e-24 / (1 - 0.9)
}

TEST(CSimpleIIRFilter, SilenceAfterSoundHoldsNoDenormalNumbers) {
    CSimpleIIRFilter filter(-0.9f);
    Filtered(filter, Noise(1000, 3));
    for (const float y : Filtered(filter, std::vector<float>(44100, 0.0f))) {
        ASSERT_GE(std::fabs(y), std::numeric_limits<float>::min());
    }
}

TEST(CSimpleIIRFilter, ConstantInputComesOutUnchanged) {
    CSimpleIIRFilter filter(-0.9f);
    EXPECT_NEAR(Filtered(filter, std::vector<float>(2000, 0.5f)).back(), 0.5, 1e-6); // gain + feedback = 1
}

TEST(CSimpleIIRFilter, InPlaceAndInAnyCutsTheSame) { ExpectCutsDoNotMatter<CSimpleIIRFilter>(); }

TEST(CSimpleIIRFilter, NotFiniteSamplesCountAsZero) {
    std::vector<float> dirty = Noise(500, 4);
    std::vector<float> clean = dirty;
    const float bad[] = {kInfinity, -kInfinity, kNaN};
    for (std::size_t n = 0; n < dirty.size(); n += 7) {
        dirty[n] = bad[n % 3];
        clean[n] = 0.0f;
    }
    CSimpleIIRFilter a(-0.9f), b(-0.9f);
    EXPECT_EQ(Filtered(a, dirty), Filtered(b, clean));
}

TEST(CSimpleIIRFilter, StartsAgainAfterAFeedbackThatRanAway) {
    CSimpleIIRFilter filter(-2.0f); // doubles at each step
    Filtered(filter, std::vector<float>(1000, 1.0f));
    std::vector<float> silence(1, 0.0f);
    EXPECT_TRUE(std::isfinite(Filtered(filter, silence)[0]));
}

TEST(CSimpleFIRFilter, HalfTheFirstDifference) {
    CSimpleFIRFilter filter(-0.5f);
    const std::vector<float> in = Noise(1003, 5);
    const std::vector<float> out = Filtered(filter, in);
    EXPECT_EQ(out[0], 0.5f * in[0]);
    for (std::size_t n = 1; n < in.size(); ++n) ASSERT_EQ(out[n], 0.5f * in[n] - 0.5f * in[n - 1]) << n;
}

TEST(CSimpleFIRFilter, TapsFollowFromTheCoefficient) {
    CSimpleFIRFilter filter(0.25f);
    EXPECT_EQ(Filtered(filter, {1.0f, 0.0f, 0.0f}), (std::vector<float>{0.75f, 0.25f, 0.0f}));
}

TEST(CSimpleFIRFilter, SilenceStaysSilent) {
    CSimpleFIRFilter filter(-0.5f);
    EXPECT_EQ(Filtered(filter, std::vector<float>(100, 0.0f)), std::vector<float>(100, 0.0f));
}

TEST(CSimpleFIRFilter, InPlaceAndInAnyCutsTheSame) { ExpectCutsDoNotMatter<CSimpleFIRFilter>(); }

TEST(CSimpleFIRFilter, NotFiniteSamplesCountAsZero) {
    CSimpleFIRFilter filter(-0.5f);
    EXPECT_EQ(Filtered(filter, {kNaN, 1.0f, kInfinity}), (std::vector<float>{0.0f, 0.5f, -0.5f}));
    EXPECT_EQ(Filtered(filter, {0.0f}), std::vector<float>{0.0f}); // and the last one left nothing behind
}

TEST(SimpleFilters, AnEmptyBlockChangesNothing) {
    CSimpleIIRFilter pole(-0.9f);
    CSimpleFIRFilter taps(-0.5f);
    pole.Process(nullptr, nullptr, 0);
    taps.Process(nullptr, nullptr, 0);
    EXPECT_EQ(Filtered(taps, {1.0f}), std::vector<float>{0.5f});
    EXPECT_NEAR(Filtered(pole, {1.0f})[0], 0.1, 1e-7);
}

TEST(SimpleFilters, CreatorsMakeFiltersAtRest) {
    std::unique_ptr<CSimpleIIRFilter> pole;
    std::unique_ptr<CSimpleFIRFilter> taps;
    ASSERT_EQ(CreateIIR(pole, -0.9f), kOk);
    ASSERT_EQ(CreateFIR(taps, -0.5f), kOk);
    EXPECT_EQ(Filtered(*taps, {2.0f}), std::vector<float>{1.0f});
    EXPECT_NEAR(Filtered(*pole, {1.0f})[0], 0.1, 1e-7);
}

TEST(SimpleFilters, CreatorsRefuseACoefficientThatIsNotFinite) {
    std::unique_ptr<CSimpleIIRFilter> pole;
    std::unique_ptr<CSimpleFIRFilter> taps;
    EXPECT_EQ(CreateIIR(pole, kNaN), kBadArgument);
    EXPECT_EQ(CreateFIR(taps, kInfinity), kBadArgument);
    EXPECT_FALSE(pole);
    EXPECT_FALSE(taps);
}

} // namespace
} // namespace sonorelle
