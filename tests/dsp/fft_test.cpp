#include "dsp/fft.h"

#include "dsp/fft_sse.h"
#include "platform/result_codes.h"
#include "support/direct_dft.h"
#include "support/hostile_numbers.h"
#include "support/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

using test::DirectDft;
using test::Noise;
using test::RoundingOfTransform;

constexpr std::int32_t kLargest = 32768;

struct Form {
    const char* name;
    std::uint32_t features;
    bool interleaved;
};

std::unique_ptr<CFFT> Make(const Form& form, std::int32_t size, std::int32_t window = kNoWindow) {
    std::unique_ptr<CFFT> fft;
    EXPECT_EQ(CreateFFT(fft, size, window, form.features), kOk);
    return fft;
}

// Bin k of a spectrum in the form's own order.
std::complex<double> BinOf(const Form& form, const std::vector<float>& data, std::size_t k) {
    const std::size_t half = data.size() / 2;
    const auto at = [&](std::size_t i) { return static_cast<double>(data[i]); };
    if (k == 0) return at(0);
    if (k == half) return form.interleaved ? at(1) : at(half);
    return form.interleaved ? std::complex{at(2 * k), at(2 * k + 1)}
                            : std::complex{at(k), at(data.size() - k)};
}

std::vector<std::size_t> BinsToLookAt(std::size_t size) {
    const std::size_t half = size / 2;
    std::vector<std::size_t> bins;
    if (size <= 512) {
        for (std::size_t k = 0; k <= half; ++k) bins.push_back(k);
        return bins;
    }
    bins = {0, 1, 2, 3, half / 2 - 1, half / 2, half / 2 + 1, half - 1, half};
    std::mt19937 random(static_cast<unsigned>(size));
    for (int i = 0; i < 40; ++i) bins.push_back(random() % half);
    return bins;
}

double WindowAt(std::int32_t type, std::int32_t i, std::int32_t size) {
    const double turn = 2.0 * std::numbers::pi * i / size;
    if (type == kSineSquaredWindow) return std::pow(std::sin(turn / 2.0), 2.0);
    if (type == kBlackmanWindow) return 0.42 - 0.5 * std::cos(turn) + 0.08 * std::cos(2.0 * turn);
    return 1.0;
}

class CFFTForm : public testing::TestWithParam<Form> {};

TEST_P(CFFTForm, ForwardGivesTheSpectrumInTheOrderOfItsForm) {
    for (std::int32_t size = 2; size <= kLargest; size *= 2) {
        const std::vector<float> signal = Noise(size, static_cast<unsigned>(size));
        std::vector<float> data = signal;
        Make(GetParam(), size)->Forward(data.data());
        const DirectDft direct(signal.size());
        for (const std::size_t k : BinsToLookAt(signal.size())) {
            ASSERT_LT(std::abs(BinOf(GetParam(), data, k) - direct.Bin(signal, k)),
                      RoundingOfTransform(signal.size(), test::Norm(signal)))
                << "size " << size << " bin " << k;
        }
    }
}

// One cosine with a phase per bin, so that a bin in the wrong place or with the wrong sign shows by itself.
TEST_P(CFFTForm, EachBinStandsAtItsPlace) {
    constexpr std::int32_t kSize = 64;
    const auto fft = Make(GetParam(), kSize);
    for (std::size_t k = 0; k <= kSize / 2; ++k) {
        std::vector<float> data(kSize);
        for (std::size_t n = 0; n < kSize; ++n) {
            data[n] = static_cast<float>(
                std::cos(2.0 * std::numbers::pi * static_cast<double>(n * k) / kSize + 0.7));
        }
        fft->Forward(data.data());
        const bool end = k == 0 || k == kSize / 2;
        const std::complex<double> expected =
            end ? std::complex{kSize * std::cos(0.7)} : std::polar(kSize / 2.0, 0.7);
        for (std::size_t other = 0; other <= kSize / 2; ++other) {
            ASSERT_LT(std::abs(BinOf(GetParam(), data, other) - (other == k ? expected : 0.0)), 2e-5)
                << "tone at " << k << ", bin " << other;
        }
    }
}

TEST_P(CFFTForm, ForwardAndInverseMultiplyByTheSize) {
    for (std::int32_t size = 2; size <= kLargest; size *= 2) {
        const auto fft = Make(GetParam(), size);
        const std::vector<float> signal = Noise(size, 3);
        std::vector<float> data = signal;
        fft->Forward(data.data());
        fft->Inverse(data.data());
        for (std::size_t n = 0; n < data.size(); ++n) {
            ASSERT_NEAR(static_cast<double>(data[n]) / size, static_cast<double>(signal[n]), 2e-6)
                << "size " << size << " sample " << n;
        }
    }
}

TEST_P(CFFTForm, InverseSumsAnySpectrum) {
    for (std::int32_t size = 2; size <= 2048; size *= 2) {
        std::vector<float> data = Noise(size, 4);
        std::vector<std::complex<double>> bins;
        for (std::size_t k = 0; k <= data.size() / 2; ++k) bins.push_back(BinOf(GetParam(), data, k));
        const double tolerance = RoundingOfTransform(data.size(), 2.0 * test::Norm(data));
        Make(GetParam(), size)->Inverse(data.data());
        const DirectDft direct(data.size());
        for (std::size_t n = 0; n < data.size(); n += std::max<std::size_t>(1, data.size() / 256)) {
            ASSERT_NEAR(static_cast<double>(data[n]), direct.Sample(bins, n), tolerance) << "size " << size;
        }
    }
}

TEST_P(CFFTForm, WindowsAreAppliedBeforeTheTransformAndByTheirFormulas) {
    for (const std::int32_t type : {kNoWindow + 0, kSineSquaredWindow + 0, kBlackmanWindow + 0}) {
        for (const std::int32_t size : {2, 8, 256, 8192}) {
            const auto fft = Make(GetParam(), size, type);
            std::vector<float> ones(static_cast<std::size_t>(size), 1.0F);
            fft->ApplyWindow(ones.data());
            for (std::int32_t i = 0; i < size; ++i) {
                ASSERT_NEAR(static_cast<double>(ones[static_cast<std::size_t>(i)]), WindowAt(type, i, size),
                            6e-8)
                    << "window " << type << " size " << size << " at " << i;
            }
            std::vector<float> windowed = Noise(size, 5);
            std::vector<float> data = windowed;
            for (std::size_t i = 0; i < windowed.size(); ++i) windowed[i] *= ones[i];
            fft->Forward(data.data());
            const DirectDft direct(windowed.size());
            for (std::size_t k = 0; k <= windowed.size() / 2;
                 k += std::max<std::size_t>(1, windowed.size() / 32)) {
                ASSERT_LT(std::abs(BinOf(GetParam(), data, k) - direct.Bin(windowed, k)),
                          RoundingOfTransform(windowed.size(), test::Norm(windowed) + 1e-3))
                    << "window " << type << " size " << size << " bin " << k;
            }
        }
    }
}

TEST_P(CFFTForm, AnUnknownWindowIsNone) {
    for (const std::int32_t type : {-1, 3, 1000}) {
        const auto fft = Make(GetParam(), 16, type);
        std::vector<float> data = Noise(16, 6);
        const std::vector<float> before = data;
        fft->ApplyWindow(data.data());
        EXPECT_EQ(data, before);
    }
}

TEST_P(CFFTForm, MagnitudesLieInTheLowerHalfAndZerosAbove) {
    for (std::int32_t size = 4; size <= 1024; size *= 2) {
        const auto fft = Make(GetParam(), size);
        std::vector<float> data = Noise(size, 7);
        data[0] = -size; // a negative R[0] shows that its magnitude is taken
        fft->Forward(data.data());
        const std::vector<float> spectrum = data;
        fft->Magnitude(data.data());
        const std::size_t half = data.size() / 2;
        for (std::size_t k = 0; k < half; ++k) {
            const double expected = std::abs(BinOf(GetParam(), spectrum, k));
            ASSERT_NEAR(static_cast<double>(data[k]), expected, 3e-7 * expected)
                << "size " << size << " bin " << k;
        }
        // The plain form leaves R[N/2] where it is, the vector forms clear it.
        EXPECT_EQ(data[half], GetParam().interleaved ? 0.0F : spectrum[half]);
        for (std::size_t i = half + 1; i < data.size(); ++i) ASSERT_EQ(data[i], 0.0F) << "size " << size;
    }
}

TEST_P(CFFTForm, PowersStandWhereTheRealPartsStood) {
    for (std::int32_t size = 4; size <= 1024; size *= 2) {
        const auto fft = Make(GetParam(), size);
        std::vector<float> data = Noise(size, 8);
        fft->Forward(data.data());
        const std::vector<float> spectrum = data;
        fft->Power(data.data());
        const std::size_t half = data.size() / 2;
        EXPECT_EQ(data[0], spectrum[0] * spectrum[0]);
        for (std::size_t k = 1; k < half; ++k) {
            const double expected = std::norm(BinOf(GetParam(), spectrum, k));
            const std::size_t place = GetParam().interleaved ? 2 * k : k;
            const std::size_t cleared = GetParam().interleaved ? 2 * k + 1 : data.size() - k;
            ASSERT_NEAR(static_cast<double>(data[place]), expected, 3e-7 * expected) << "size " << size;
            ASSERT_EQ(data[cleared], 0.0F) << "size " << size;
        }
        // R[N/2] stays as it is in both orders: at N/2 in the one, at 1 in the other.
        const std::size_t highest = GetParam().interleaved ? 1 : half;
        EXPECT_EQ(data[highest], spectrum[highest]);
    }
}

TEST_P(CFFTForm, CleanClearsSmallAndNegativeValuesInTheVectorFormsAlone) {
    const auto fft = Make(GetParam(), 16);
    const std::vector<float> before = {1.0F,    -1.0F, 1e-37F, 0.99e-37F, 1.01e-37F,
                                       -1e-40F, 0.0F,  1e-45F, -5.0F};
    std::vector<float> data = before;
    fft->Clean(data.data(), 8);
    std::vector<float> expected = before;
    if (GetParam().interleaved) {
        expected = {1.0F, 0.0F, 1e-37F, 0.0F, 1.01e-37F,
                    0.0F, 0.0F, 0.0F,   -5.0F}; // the ninth was not asked for
    }
    EXPECT_EQ(data, expected);
    fft->Clean(data.data(), 0);
    fft->Clean(data.data(), -3);
    EXPECT_EQ(data, expected);
}

TEST_P(CFFTForm, RefusesSizesThatAreNoPowersOfTwo) {
    for (const std::int32_t size : {std::numeric_limits<std::int32_t>::min(), -8, -1, 0, 3, 5, 12, 1000,
                                    32767, std::numeric_limits<std::int32_t>::max()}) {
        std::unique_ptr<CFFT> fft = Make(GetParam(), 8);
        const CFFT* before = fft.get();
        EXPECT_EQ(CreateFFT(fft, size, kNoWindow, GetParam().features), kBadArgument) << size;
        EXPECT_EQ(fft.get(), before) << "a failure leaves what was there";
    }
}

TEST_P(CFFTForm, CanBeSetUpAgainWithAnotherWindow) {
    const auto fft = Make(GetParam(), 64, kBlackmanWindow);
    ASSERT_EQ(fft->Init(kNoWindow), kOk);
    std::vector<float> data = Noise(64, 9);
    std::vector<float> expected = data;
    Make(GetParam(), 64)->Forward(expected.data());
    fft->Forward(data.data());
    EXPECT_EQ(data, expected);
}

TEST_P(CFFTForm, NumbersThatAreNotFiniteStayInTheirOwnTransform) {
    const auto fft = Make(GetParam(), 256);
    const std::vector<float> signal = Noise(256, 10);
    std::vector<float> before = signal;
    fft->Forward(before.data());
    std::vector<float> hostile = signal;
    hostile[17] = kNaN;
    hostile[99] = std::numeric_limits<float>::infinity();
    fft->Forward(hostile.data());
    fft->Magnitude(hostile.data());
    fft->Inverse(hostile.data());
    std::vector<float> after = signal;
    fft->Forward(after.data());
    EXPECT_EQ(after, before);
}

INSTANTIATE_TEST_SUITE_P(EveryProcessor, CFFTForm,
                         testing::Values(Form{"Plain", 0, false}, Form{"Sse", kFeatureSse, true},
                                         Form{"Sse2", kFeatureSse2, true},
                                         Form{"SseAndSse2", kFeatureSse | kFeatureSse2, true}),
                         [](const auto& tested) { return tested.param.name; });

TEST(CreateFFT, ChoosesTheClassByTheFeatureWord) {
    const auto make = [](std::uint32_t features) {
        std::unique_ptr<CFFT> fft;
        EXPECT_EQ(CreateFFT(fft, 64, kNoWindow, features), kOk);
        return fft;
    };
    const auto isVector = [](const CFFT& fft) { return dynamic_cast<const CFFT_SSE*>(&fft) != nullptr; };
    const auto isSecond = [](const CFFT& fft) { return dynamic_cast<const CFFT_SSE2*>(&fft) != nullptr; };

    for (const std::uint32_t features : {0U, ~(kFeatureSse | kFeatureSse2)}) {
        EXPECT_FALSE(isVector(*make(features)));
    }
    EXPECT_TRUE(isVector(*make(kFeatureSse)));
    EXPECT_FALSE(isSecond(*make(kFeatureSse)));
    EXPECT_TRUE(isSecond(*make(kFeatureSse2)));
    EXPECT_TRUE(isSecond(*make(kFeatureSse | kFeatureSse2)));
    EXPECT_EQ(make(0)->GetSize(), 64);
}

TEST(CreateFFT, BothVectorFormsGiveTheSameBits) {
    std::unique_ptr<CFFT> first, second;
    ASSERT_EQ(CreateFFT(first, 1024, kBlackmanWindow, kFeatureSse), kOk);
    ASSERT_EQ(CreateFFT(second, 1024, kBlackmanWindow, kFeatureSse2), kOk);
    std::vector<float> a = Noise(1024, 11);
    std::vector<float> b = a;
    first->Forward(a.data());
    second->Forward(b.data());
    EXPECT_EQ(a, b);
    first->Inverse(a.data());
    second->Inverse(b.data());
    EXPECT_EQ(a, b);
}

} // namespace
} // namespace sonorelle
