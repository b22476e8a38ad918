#include "dsp/kkf.h"

#include "platform/result_codes.h"
#include "support/direct_dft.h"
#include "support/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

using test::Noise;

constexpr std::uint32_t kEveryFeatureWord[] = {0, kFeatureSse, kFeatureSse2, kFeatureSse | kFeatureSse2};
constexpr float kSmallestNormal = 1.1754944e-38F;
constexpr std::int32_t kIntMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kIntMin = std::numeric_limits<std::int32_t>::min();

std::unique_ptr<CKKF> Make(std::int32_t size, std::uint32_t features = kFeatureSse2) {
    std::unique_ptr<CKKF> kkf;
    EXPECT_EQ(CreateKKF(kkf, size, features), kOk);
    return kkf;
}

// Sum of (-1)^n x[n]: the highest bin.
double HighestBin(const std::vector<float>& x) {
    double sum = 0.0;
    for (std::size_t n = 0; n < x.size(); ++n) sum += (n % 2 == 0 ? 1.0 : -1.0) * static_cast<double>(x[n]);
    return sum;
}

// Makes the result of the correlation equal to `values` (index = lag + N / 2), but for rounding: the values,
// one N-th, against one click in the middle.
void MakeResult(CKKF& kkf, const std::vector<float>& values) {
    std::vector<float> scaled = values;
    for (float& value : scaled) value /= static_cast<float>(kkf.GetSize());
    std::vector<float> click(static_cast<std::size_t>(kkf.GetHalfSize()) + 1, 0.0F);
    click.back() = 1.0F;
    kkf.Correlate(scaled.data(), click.data(), kkf.GetSize(), kkf.GetHalfSize() + 1);
}

// A correlator of 64 whose result is 0 but at these lags.
std::unique_ptr<CKKF> WithPeaks(std::initializer_list<std::pair<int, float>> peaks, float floor = 0.0F) {
    auto kkf = Make(64);
    std::vector<float> values(64, floor);
    for (const auto& [lag, value] : peaks) values[static_cast<std::size_t>(32 + lag)] = value;
    MakeResult(*kkf, values);
    return kkf;
}

TEST(CKKF, SizeIsTheNextPowerOfTwo) {
    for (const std::uint32_t features : kEveryFeatureWord) {
        for (const auto& [wanted, size] : {std::pair{2, 2},
                                           {3, 4},
                                           {5, 8},
                                           {63, 64},
                                           {65, 128},
                                           {1000, 1024},
                                           {1025, 2048},
                                           {4097, 8192}}) {
            const auto kkf = Make(wanted, features);
            EXPECT_EQ(kkf->GetSize(), size) << wanted;
            EXPECT_EQ(kkf->GetHalfSize(), size / 2) << wanted;
        }
    }
}

TEST(CKKF, ASizeThatIsAPowerOfTwoAlreadyIsNotDoubled) {
    for (std::int32_t size = 2; size <= 16384; size *= 2) EXPECT_EQ(Make(size)->GetSize(), size);
}

TEST(CKKF, RefusesSizesThatItCannotHave) {
    for (const std::uint32_t features : kEveryFeatureWord) {
        for (const std::int32_t size : {kIntMin, -1024, -1, 0, 1, (1 << 30) + 1, kIntMax}) {
            auto kkf = Make(8, features);
            const CKKF* before = kkf.get();
            EXPECT_EQ(CreateKKF(kkf, size, features), kBadArgument) << size;
            EXPECT_EQ(kkf.get(), before) << "a failure leaves what was there";
        }
    }
}

TEST(CKKF, TheFeatureWordChoosesTheForm) {
    for (const std::uint32_t features : kEveryFeatureWord) {
        EXPECT_EQ(dynamic_cast<CKKF_SSE*>(Make(64, features).get()) != nullptr, features != 0);
    }
    EXPECT_EQ(dynamic_cast<CKKF_SSE*>(Make(64, ~(kFeatureSse | kFeatureSse2)).get()), nullptr);
}

TEST(CKKF, PlainProductIsInSplitOrderWithTheHighestBinDoubled) {
    for (const std::int32_t size : {2, 4, 8, 64, 1024}) {
        const auto kkf = Make(size, 0);
        const std::vector<float> a = Noise(size, 1);
        const std::vector<float> b = Noise(size, 2);
        std::vector<float> out(a.size(), 99.0F);
        kkf->MultiplySpectra(a.data(), b.data(), out.data());
        const std::size_t half = a.size() / 2;
        EXPECT_EQ(out[0], a[0] * b[0]);
        EXPECT_FLOAT_EQ(out[half], 2.0F * a[half] * b[half]);
        for (std::size_t k = 1; k < half; ++k) {
            const std::complex<double> x{static_cast<double>(a[k]), static_cast<double>(a[a.size() - k])};
            const std::complex<double> y{static_cast<double>(b[k]), static_cast<double>(b[a.size() - k])};
            const std::complex<double> expected = x * std::conj(y) * (k % 2 == 0 ? 1.0 : -1.0);
            ASSERT_NEAR(static_cast<double>(out[k]), expected.real(), 3e-7) << "bin " << k;
            ASSERT_NEAR(static_cast<double>(out[a.size() - k]), expected.imag(), 3e-7) << "bin " << k;
        }
    }
}

TEST(CKKF, VectorProductIsInInterleavedOrder) {
    for (const std::int32_t size : {2, 4, 8, 16, 64, 1024}) {
        const auto kkf = Make(size);
        const std::vector<float> a = Noise(size, 3);
        const std::vector<float> b = Noise(size, 4);
        std::vector<float> out(a.size(), 99.0F);
        kkf->MultiplySpectra(a.data(), b.data(), out.data());
        EXPECT_EQ(out[0], a[0] * b[0]);
        EXPECT_EQ(out[1], a[1] * b[1]);
        for (std::size_t k = 1; k < a.size() / 2; ++k) {
            const std::complex<double> x{static_cast<double>(a[2 * k]), static_cast<double>(a[2 * k + 1])};
            const std::complex<double> y{static_cast<double>(b[2 * k]), static_cast<double>(b[2 * k + 1])};
            const std::complex<double> expected = x * std::conj(y) * (k % 2 == 0 ? 1.0 : -1.0);
            ASSERT_NEAR(static_cast<double>(out[2 * k]), expected.real(), 3e-7) << "bin " << k;
            ASSERT_NEAR(static_cast<double>(out[2 * k + 1]), expected.imag(), 3e-7) << "bin " << k;
        }
    }
}

TEST(CKKF, VectorProductKeepsItsFirstEightEntriesNormal) {
    const auto kkf = Make(32);
    const std::vector<float> ones(32, 1.0F);
    std::vector<float> a(32, 0.0F);
    std::vector<float> out(32, 99.0F);
    kkf->MultiplySpectra(a.data(), ones.data(), out.data());
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(out[i], kSmallestNormal) << i;
    for (std::size_t i = 8; i < 32; ++i) EXPECT_EQ(out[i], 0.0F) << i;

    // Tiny values of either sign: bin 1 is (-tiny, 0), bin 2 (tiny, 0), bin 3 (-tiny, 0), ... against real
    // ones.
    std::vector<float> realOnes(32, 0.0F);
    for (std::size_t i = 0; i < 32; i += 2) realOnes[i] = 1.0F;
    realOnes[1] = -1.0F;
    for (std::size_t i = 0; i < 32; i += 2) a[i] = 1e-40F;
    a[1] = 1e-40F;
    kkf->MultiplySpectra(a.data(), realOnes.data(), out.data());
    EXPECT_EQ(out[0], kSmallestNormal);
    EXPECT_EQ(out[1], -kSmallestNormal);
    EXPECT_EQ(out[2], -kSmallestNormal);
    EXPECT_EQ(out[4], kSmallestNormal);
    EXPECT_EQ(out[6], -kSmallestNormal);
    EXPECT_EQ(std::fabs(out[7]), kSmallestNormal);
    EXPECT_EQ(out[8], 1e-40F) << "the ninth is left alone";
    EXPECT_EQ(out[10], -1e-40F);

    // What is just normal stays.
    a.assign(32, 0.0F);
    a[0] = kSmallestNormal;
    a[1] = -kSmallestNormal * 1.5F;
    kkf->MultiplySpectra(a.data(), ones.data(), out.data());
    EXPECT_EQ(out[0], kSmallestNormal);
    EXPECT_EQ(out[1], -kSmallestNormal * 1.5F);
}

TEST(CKKF, PlainProductClampsNothing) {
    const auto kkf = Make(32, 0);
    const std::vector<float> zeros(32, 0.0F);
    std::vector<float> out(32, 99.0F);
    kkf->MultiplySpectra(zeros.data(), zeros.data(), out.data());
    for (const float value : out) EXPECT_EQ(value, 0.0F);
}

TEST(CKKF, CorrelationIsTheDirectSumTimesTheSize) {
    std::mt19937 random(5);
    for (const std::uint32_t features : kEveryFeatureWord) {
        for (const std::int32_t wanted : {4, 8, 48, 64, 500, 1024, 4096}) {
            const auto kkf = Make(wanted, features);
            const std::int32_t half = kkf->GetHalfSize();
            for (int round = 0; round < 3; ++round) {
                const std::int32_t lengthX =
                    round == 0 ? half : 1 + static_cast<std::int32_t>(random() % static_cast<unsigned>(half));
                const std::int32_t lengthY =
                    round == 0 ? half : 1 + static_cast<std::int32_t>(random() % static_cast<unsigned>(half));
                const std::vector<float> x = Noise(lengthX, random());
                const std::vector<float> y = Noise(lengthY, random());
                kkf->Correlate(x.data(), y.data(), lengthX, lengthY);
                const double tolerance = 4e-6 * kkf->GetSize() * (test::Norm(x) * test::Norm(y) + 1e-3);
                for (std::int32_t lag = -half; lag < half; ++lag) {
                    double expected =
                        kkf->GetSize() * test::DirectCorrelation(x.data(), lengthX, y.data(), lengthY, lag);
                    if (features == 0) {
                        // The doubled highest bin adds itself once more, with alternating sign.
                        expected += (lag + half) % 2 == 0 ? HighestBin(x) * HighestBin(y)
                                                          : -HighestBin(x) * HighestBin(y);
                    } else {
                        expected = std::max(expected, 0.0); // cleaned
                    }
                    ASSERT_NEAR(static_cast<double>(kkf->GetResult()[half + lag]), expected, tolerance)
                        << "features " << features << " size " << kkf->GetSize() << " lag " << lag;
                }
            }
        }
    }
}

TEST(CKKF, ASignalAgainstItselfPeaksInTheMiddle) {
    for (const std::uint32_t features : kEveryFeatureWord) {
        for (const std::int32_t size : {16, 256, 2048}) {
            const auto kkf = Make(size, features);
            const std::vector<float> x = Noise(size / 2, 6);
            kkf->Correlate(x.data(), x.data(), size / 2, size / 2);
            const float* result = kkf->GetResult();
            EXPECT_EQ(std::max_element(result, result + size) - result, kkf->GetHalfSize());
            EXPECT_EQ(kkf->FindPeak(size / 2 - 1, 0, size / 2 - 1), 0);
        }
    }
}

TEST(CKKF, ADelayedCopyPeaksAtItsDelay) {
    for (const std::uint32_t features : kEveryFeatureWord) {
        const auto kkf = Make(1024, features);
        const std::vector<float> x = Noise(512, 7);
        for (const std::int32_t delay : {0, 1, 17, 200}) {
            // x[n + lag] y[n] is largest where y is the copy of x `lag` samples on.
            kkf->Correlate(x.data(), x.data() + delay, 512, 512 - delay);
            EXPECT_EQ(kkf->FindPeak(511, delay, 40), delay);
            kkf->Correlate(x.data() + delay, x.data(), 512 - delay, 512);
            EXPECT_EQ(kkf->FindPeak(511, -delay, 40), -delay);
        }
    }
}

TEST(CKKF, LengthsBeyondTheSizeAreCutAndNegativeOnesAreNone) {
    for (const std::uint32_t features : kEveryFeatureWord) {
        const auto kkf = Make(64, features);
        const std::vector<float> x = Noise(200, 8);
        kkf->Correlate(x.data(), x.data(), 64, 64);
        const std::vector<float> whole(kkf->GetResult(), kkf->GetResult() + 64);
        kkf->Correlate(x.data(), x.data(), 200, kIntMax);
        EXPECT_EQ(std::vector<float>(kkf->GetResult(), kkf->GetResult() + 64), whole);
        kkf->Correlate(x.data(), x.data(), -1, kIntMin);
        for (int i = 0; i < 64; ++i) EXPECT_LT(std::fabs(kkf->GetResult()[i]), 1e-35F);
        EXPECT_EQ(kkf->FindPeak(31, 5, 10), 5);
    }
}

TEST(CKKF, NothingOfAnEarlierCorrelationIsLeft) {
    for (const std::uint32_t features : kEveryFeatureWord) {
        const auto used = Make(256, features);
        const auto fresh = Make(256, features);
        const std::vector<float> loud(256, std::numeric_limits<float>::infinity());
        used->Correlate(loud.data(), loud.data(), 256, 256);
        used->CorrelateAndFindPeak(loud.data(), loud.data(), 128, 128, 127, 0, 2);
        const std::vector<float> x = Noise(90, 9);
        used->Correlate(x.data(), x.data(), 90, 33);
        fresh->Correlate(x.data(), x.data(), 90, 33);
        EXPECT_TRUE(std::equal(used->GetResult(), used->GetResult() + 256, fresh->GetResult()));
    }
}

TEST(CKKF, FindPeakSearchesAroundTheExpectedLagAndBothEndsCount) {
    const auto kkf = WithPeaks({{-10, 5.00005F}, {10, 5.00005F}, {4, 2.00005F}, {-4, 1.00005F}});
    EXPECT_EQ(kkf->FindPeak(31, 0, 3), 0) << "none within";
    EXPECT_EQ(kkf->FindPeak(31, 0, 4), 4);
    EXPECT_EQ(kkf->FindPeak(31, -1, 3), -4);
    EXPECT_EQ(kkf->FindPeak(31, 7, 3), 10);
    EXPECT_EQ(kkf->FindPeak(31, 6, 3), 4);
    EXPECT_EQ(kkf->FindPeak(31, 7, 2), 7) << "between two peaks";
}

TEST(CKKF, ARangeThatCrossesTheLowestLagShiftsAsAWhole) {
    // Lags -20 - 1 to -20 - 1 + 2 x 5 = -11 are searched.
    EXPECT_EQ(WithPeaks({{-21, 1.00005F}})->FindPeak(20, -16, 5), -21);
    EXPECT_EQ(WithPeaks({{-22, 1.00005F}})->FindPeak(20, -16, 5), -16) << "outside";
    EXPECT_EQ(WithPeaks({{-11, 1.00005F}})->FindPeak(20, -16, 5), -11);
    EXPECT_EQ(WithPeaks({{-10, 1.00005F}})->FindPeak(20, -16, 5), -16) << "outside";
    // Just inside nothing shifts.
    EXPECT_EQ(WithPeaks({{-10, 1.00005F}})->FindPeak(20, -15, 5), -10);
    EXPECT_EQ(WithPeaks({{-21, 1.00005F}})->FindPeak(20, -15, 5), -15);
}

TEST(CKKF, ARangeThatCrossesTheHighestLagShiftsAsAWhole) {
    // Lags 20 - 1 - 2 x 5 = 9 to 19 are searched: the highest lag itself is not.
    EXPECT_EQ(WithPeaks({{19, 1.00005F}})->FindPeak(20, 16, 5), 19);
    EXPECT_EQ(WithPeaks({{20, 1.00005F}})->FindPeak(20, 16, 5), 16) << "outside";
    EXPECT_EQ(WithPeaks({{9, 1.00005F}})->FindPeak(20, 16, 5), 9);
    EXPECT_EQ(WithPeaks({{8, 1.00005F}})->FindPeak(20, 16, 5), 16) << "outside";
    // Just inside nothing shifts, and the highest lag counts.
    EXPECT_EQ(WithPeaks({{20, 1.00005F}})->FindPeak(20, 15, 5), 20);
}

TEST(CKKF, ARangeThatCrossesBothSidesIsPutAtTheLowest) {
    // -4 - 1 to -5 + 2 x 10 = 15: it may then reach beyond the highest lag.
    EXPECT_EQ(WithPeaks({{15, 1.00005F}})->FindPeak(4, 0, 10), 15);
    EXPECT_EQ(WithPeaks({{16, 1.00005F}})->FindPeak(4, 0, 10), 0);
    EXPECT_EQ(WithPeaks({{-5, 1.00005F}})->FindPeak(4, 0, 10), -5);
    EXPECT_EQ(WithPeaks({{-6, 1.00005F}})->FindPeak(4, 0, 10), 0);
}

TEST(CKKF, SearchWindowTellsTheLagsOfFindPeak) {
    const auto window = [](std::int32_t maxLag, std::int32_t expected, std::int32_t radius) {
        const LagWindow lags = CKKF::SearchWindow(maxLag, expected, radius);
        return std::pair{lags.first, lags.last};
    };
    EXPECT_EQ(window(31, 3, 2), (std::pair{1, 5}));
    EXPECT_EQ(window(20, -16, 5), (std::pair{-21, -11}));
    EXPECT_EQ(window(20, 16, 5), (std::pair{9, 19}));
    EXPECT_EQ(window(4, 0, 10), (std::pair{-5, 15}));
    EXPECT_EQ(window(31, 7, 0), (std::pair{7, 7}));
}

TEST(CKKF, ValuesWithinAStepOfATenThousandthTieAndTheLowestLagWins) {
    EXPECT_EQ(WithPeaks({{-3, 2.00003F}, {5, 2.00007F}})->FindPeak(31, 0, 10), -3);
    EXPECT_EQ(WithPeaks({{-3, 2.00003F}, {5, 2.00013F}})->FindPeak(31, 0, 10), 5) << "a step above";
    EXPECT_EQ(WithPeaks({{-3, 2.00007F}, {5, 2.00003F}})->FindPeak(31, 0, 10), -3);
}

TEST(CKKF, WithNoPositiveValueTheExpectedLagComesBack) {
    for (const std::uint32_t features : kEveryFeatureWord) {
        const auto kkf = Make(64, features);
        MakeResult(*kkf, std::vector<float>(64, -3.0F));
        for (const std::int32_t expected : {-31, -5, 0, 6, 31}) {
            EXPECT_EQ(kkf->FindPeak(31, expected, 4), expected);
        }
        // Less than one step above 0 does not count either.
        MakeResult(*kkf, std::vector<float>(64, 0.00005F));
        EXPECT_EQ(kkf->FindPeak(31, 6, 4), 6);
        MakeResult(*kkf, std::vector<float>(64, 0.00015F));
        EXPECT_EQ(kkf->FindPeak(31, 6, 4), 2);
    }
}

TEST(CKKF, ANegativeValueIsNeverThePeak) {
    EXPECT_EQ(WithPeaks({{3, 0.5F}}, -8.0F)->FindPeak(31, 0, 10), 3);
    EXPECT_EQ(WithPeaks({{3, -9.0F}}, 0.0F)->FindPeak(31, 0, 10), 0);
}

TEST(CKKF, ANumberThatIsNoneIsNeverThePeak) {
    const auto kkf = Make(64, 0);
    std::vector<float> x(32, std::numeric_limits<float>::quiet_NaN());
    kkf->Correlate(x.data(), x.data(), 32, 32);
    EXPECT_EQ(kkf->FindPeak(31, -7, 12), -7);
    EXPECT_EQ(kkf->CorrelateAndFindPeak(x.data(), x.data(), 32, 32, 31, -7, 1), -7);
}

TEST(CKKF, HostileSearchesStayWithinTheResult) {
    for (const std::uint32_t features : kEveryFeatureWord) {
        const auto kkf = Make(64, features);
        const std::vector<float> x = Noise(64, 10);
        for (const std::int32_t maxLag : {kIntMin, -1000, -1, 0, 31, 32, 1000, kIntMax}) {
            for (const std::int32_t expected : {kIntMin, -100000, -33, 0, 33, 100000, kIntMax}) {
                for (const std::int32_t radius : {kIntMin, -5, 0, 5, 100, 100000, kIntMax}) {
                    kkf->Correlate(x.data(), x.data(), 64, 64);
                    const std::int32_t found = kkf->FindPeak(maxLag, expected, radius);
                    EXPECT_TRUE(found == expected || (found >= -32 && found < 32))
                        << maxLag << " " << expected << " " << radius;
                    for (const std::int32_t length : {0, 32, 64}) {
                        const std::int32_t direct = kkf->CorrelateAndFindPeak(
                            x.data(), x.data(), length, length, maxLag, expected, radius);
                        EXPECT_TRUE(direct == expected || (direct >= -32 && direct < 32));
                    }
                }
            }
        }
    }
}

// What CorrelateAndFindPeak is asked for by the mark finder: windows of 2 periods, and one half of it on.
struct Search {
    std::int32_t length, maxLag, expected, radius;
};

std::vector<Search> SearchesLikeTheMarkFinders(std::int32_t size) {
    std::vector<Search> searches;
    for (const std::int32_t length : {size / 2, size / 2 - 1, size / 3, size / 4 + 1}) {
        const std::int32_t half = length / 2;
        for (const std::int32_t radius : {0, 1, 2, 3, 5, 8, 15, 16, 17, half / 8, half / 4, half / 2}) {
            for (const std::int32_t expected : {0, 1, -1, half - 1, -half + 1, half / 2}) {
                if (radius <= half / 2 && half > 1) searches.push_back({length, half - 1, expected, radius});
            }
        }
    }
    return searches;
}

TEST(CKKF, CorrelateAndFindPeakSumsTheLagsThatItSearches) {
    for (const std::uint32_t features : {0U, kFeatureSse2}) {
        for (const std::int32_t size : {16, 64, 256, 2048}) {
            const auto kkf = Make(size, features);
            const std::vector<float> signal = Noise(2 * size, 11);
            for (const Search& search : SearchesLikeTheMarkFinders(size)) {
                const float* x = signal.data();
                const float* y = signal.data() + search.length / 2;
                kkf->CorrelateAndFindPeak(x, y, search.length, search.length, search.maxLag, search.expected,
                                          search.radius);
                const LagWindow lags = CKKF::SearchWindow(search.maxLag, search.expected, search.radius);
                // The doubled highest bin of the plain form may or may not be in it.
                const double ripple =
                    features == 0
                        ? std::fabs(HighestBin({x, x + search.length}) * HighestBin({y, y + search.length}))
                        : 0.0;
                for (std::int32_t lag = lags.first; lag <= lags.last; ++lag) {
                    const double expected =
                        size * test::DirectCorrelation(x, search.length, y, search.length, lag);
                    const double got = static_cast<double>(kkf->GetResult()[size / 2 + lag]);
                    ASSERT_NEAR(std::max(got, 0.0), std::max(expected, 0.0),
                                1e-6 * size * search.length + ripple * 1.001)
                        << "size " << size << " length " << search.length << " lag " << lag;
                }
            }
        }
    }
}

TEST(CKKF, CorrelateAndFindPeakFindsWhatTheTwoStepsFindWhereOnePeakIsClear) {
    std::mt19937 random(12);
    for (const std::int32_t size : {64, 512, 2048, 8192}) {
        const auto together = Make(size);
        const auto apart = Make(size);
        std::int32_t compared = 0;
        for (const Search& search : SearchesLikeTheMarkFinders(size)) {
            const std::vector<float> signal = Noise(2 * search.length, random());
            const float* x = signal.data();
            const float* y = signal.data() + search.length / 2;
            const LagWindow lags = CKKF::SearchWindow(search.maxLag, search.expected, search.radius);
            std::vector<double> values;
            for (std::int32_t lag = lags.first; lag <= lags.last; ++lag) {
                values.push_back(size * test::DirectCorrelation(x, search.length, y, search.length, lag));
            }
            std::sort(values.rbegin(), values.rend());
            const double rounding = 4e-6 * size * search.length;
            if (std::fabs(values[0]) < rounding || (values.size() > 1 && values[0] - values[1] < rounding))
                continue;
            ++compared;
            apart->Correlate(x, y, search.length, search.length);
            ASSERT_EQ(together->CorrelateAndFindPeak(x, y, search.length, search.length, search.maxLag,
                                                     search.expected, search.radius),
                      apart->FindPeak(search.maxLag, search.expected, search.radius))
                << "size " << size << " length " << search.length;
        }
        EXPECT_GT(compared, 50) << "size " << size;
    }
}

TEST(CKKF, CorrelateAndFindPeakTakesStretchesOfUnequalLength) {
    const auto kkf = Make(1024);
    const std::vector<float> signal = Noise(1024, 13);
    for (const auto& [lengthX, lengthY] :
         {std::pair{512, 1}, {1, 512}, {100, 400}, {400, 100}, {0, 100}, {100, 0}}) {
        for (const std::int32_t expected : {-300, 0, 300}) {
            const std::int32_t radius = 6;
            kkf->CorrelateAndFindPeak(signal.data(), signal.data() + 200, lengthX, lengthY, 511, expected,
                                      radius);
            for (std::int32_t lag = expected - radius; lag <= expected + radius; ++lag) {
                const double sum =
                    test::DirectCorrelation(signal.data(), lengthX, signal.data() + 200, lengthY, lag);
                EXPECT_NEAR(std::max(static_cast<double>(kkf->GetResult()[512 + lag]) / 1024.0, 0.0),
                            std::max(sum, 0.0), 1e-4);
            }
        }
    }
}

} // namespace
} // namespace sonorelle
