#include "dsp/real_fft.h"

#include "dsp/real_fft_kernels.h"
#include "support/direct_dft.h"
#include "support/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

using test::DirectDft;
using test::Noise;
using test::RoundingOfTransform;

constexpr std::size_t kLongest = 32768;

// All bins of small transforms; of long ones the ends, the middle and a scatter of others.
std::vector<std::size_t> BinsOfRealTransform(std::size_t size) {
    const std::size_t half = size / 2;
    std::vector<std::size_t> bins;
    if (size <= 1024) {
        for (std::size_t k = 0; k <= half; ++k) bins.push_back(k);
        return bins;
    }
    bins = {0, 1, 2, 3, half / 4, half / 2 - 1, half / 2, half / 2 + 1, half - 2, half - 1, half};
    std::mt19937 random(static_cast<unsigned>(size));
    for (int i = 0; i < 60; ++i) bins.push_back(random() % half);
    return bins;
}

std::vector<const FftKernels*> RunnableKernels() {
    std::vector<const FftKernels*> kernels = {&BaselineFftKernels()};
    if (HasWideVectors()) kernels.push_back(&WideFftKernels());
    return kernels;
}

std::complex<double> InterleavedBin(const std::vector<float>& data, std::size_t k) {
    const std::size_t half = data.size() / 2;
    if (k == 0) return static_cast<double>(data[0]);
    if (k == half) return static_cast<double>(data[1]);
    return {static_cast<double>(data[2 * k]), static_cast<double>(data[2 * k + 1])};
}

TEST(RealFft, ForwardGivesTheSpectrumInInterleavedOrder) {
    for (const FftKernels* kernels : RunnableKernels()) {
        for (std::size_t size = 2; size <= kLongest; size *= 2) {
            RealFft fft;
            ASSERT_TRUE(fft.Init(static_cast<std::int32_t>(size), *kernels));
            const std::vector<float> signal = Noise(size, static_cast<unsigned>(size));
            std::vector<float> data = signal;
            fft.Forward(data.data());
            const DirectDft direct(size);
            for (const std::size_t k : BinsOfRealTransform(size)) {
                ASSERT_LT(std::abs(InterleavedBin(data, k) - direct.Bin(signal, k)),
                          RoundingOfTransform(size, test::Norm(signal)))
                    << "size " << size << " bin " << k;
            }
        }
    }
}

TEST(RealFft, InverseSumsASpectrumThatNoForwardTransformMade) {
    for (const FftKernels* kernels : RunnableKernels()) {
        for (std::size_t size = 2; size <= kLongest; size *= 2) {
            RealFft fft;
            ASSERT_TRUE(fft.Init(static_cast<std::int32_t>(size), *kernels));
            std::vector<float> data = Noise(size, static_cast<unsigned>(size) + 1);
            std::vector<std::complex<double>> bins(size / 2 + 1);
            for (std::size_t k = 0; k < bins.size(); ++k) bins[k] = InterleavedBin(data, k);
            const double norm = 2.0 * test::Norm(data);
            fft.Inverse(data.data());
            const DirectDft direct(size);
            for (const std::size_t n : BinsOfRealTransform(size)) {
                const std::size_t sample = std::min(n, size - 1);
                ASSERT_NEAR(static_cast<double>(data[sample]), direct.Sample(bins, sample),
                            RoundingOfTransform(size, norm))
                    << "size " << size << " sample " << sample;
            }
        }
    }
}

TEST(RealFft, ForwardAndInverseMultiplyByTheSize) {
    for (const FftKernels* kernels : RunnableKernels()) {
        for (std::size_t size = 2; size <= kLongest; size *= 2) {
            RealFft fft;
            ASSERT_TRUE(fft.Init(static_cast<std::int32_t>(size), *kernels));
            const std::vector<float> signal = Noise(size, static_cast<unsigned>(size) + 2);
            std::vector<float> data = signal;
            fft.Forward(data.data());
            fft.Inverse(data.data());
            const auto scale = static_cast<double>(size);
            for (std::size_t n = 0; n < size; ++n) {
                ASSERT_NEAR(static_cast<double>(data[n]) / scale, static_cast<double>(signal[n]), 2e-6)
                    << "size " << size << " sample " << n;
            }
        }
    }
}

TEST(RealFft, BothVectorWidthsGiveTheSameBits) {
    if (!HasWideVectors()) GTEST_SKIP() << "this processor has no wide vectors";
    for (std::size_t size = 2; size <= kLongest; size *= 2) {
        RealFft narrow, wide;
        ASSERT_TRUE(narrow.Init(static_cast<std::int32_t>(size), BaselineFftKernels()));
        ASSERT_TRUE(wide.Init(static_cast<std::int32_t>(size), WideFftKernels()));
        for (const float peak : {1.0F, 1e-30F, 1e-38F, 1e30F}) {
            std::vector<float> a = Noise(size, static_cast<unsigned>(size) + 3, peak);
            std::vector<float> b = a;
            narrow.Forward(a.data());
            wide.Forward(b.data());
            ASSERT_EQ(std::memcmp(a.data(), b.data(), size * sizeof(float)), 0) << "forward, size " << size;
            narrow.Inverse(a.data());
            wide.Inverse(b.data());
            ASSERT_EQ(std::memcmp(a.data(), b.data(), size * sizeof(float)), 0) << "inverse, size " << size;
        }
    }
}

TEST(RealFft, AnImpulseGivesAFlatSpectrumAndDcOneBin) {
    for (std::size_t size = 2; size <= kLongest; size *= 2) {
        RealFft fft;
        ASSERT_TRUE(fft.Init(static_cast<std::int32_t>(size), BaselineFftKernels()));
        std::vector<float> impulse(size, 0.0F);
        impulse[0] = 1.0F;
        fft.Forward(impulse.data());
        std::vector<float> constant(size, 1.0F);
        fft.Forward(constant.data());
        for (std::size_t k = 0; k <= size / 2; ++k) {
            ASSERT_EQ(InterleavedBin(impulse, k), 1.0) << "size " << size << " bin " << k;
            // Small sizes sum in f64, where the factors are off by their last bit.
            ASSERT_LT(std::abs(InterleavedBin(constant, k) - (k == 0 ? static_cast<double>(size) : 0.0)),
                      1e-13)
                << "size " << size << " bin " << k;
        }
    }
}

TEST(RealFft, TakesDataThatIsNotAligned) {
    for (const FftKernels* kernels : RunnableKernels()) {
        for (const std::size_t size : {8U, 64U, 128U, 4096U}) {
            RealFft fft;
            ASSERT_TRUE(fft.Init(static_cast<std::int32_t>(size), *kernels));
            const std::vector<float> signal = Noise(size, 11);
            std::vector<float> aligned = signal;
            fft.Forward(aligned.data());
            std::vector<float> backAligned = aligned;
            fft.Inverse(backAligned.data());
            for (std::size_t shift = 1; shift < 8; ++shift) {
                std::vector<float> memory(size + shift);
                std::copy(signal.begin(), signal.end(), memory.begin() + static_cast<std::ptrdiff_t>(shift));
                fft.Forward(memory.data() + shift);
                EXPECT_TRUE(std::equal(aligned.begin(), aligned.end(),
                                       memory.begin() + static_cast<std::ptrdiff_t>(shift)));
                fft.Inverse(memory.data() + shift);
                EXPECT_TRUE(std::equal(backAligned.begin(), backAligned.end(),
                                       memory.begin() + static_cast<std::ptrdiff_t>(shift)));
            }
        }
    }
}

TEST(RealFft, RefusesSizesThatAreNoPowersOfTwo) {
    for (const std::int32_t size : {std::numeric_limits<std::int32_t>::min(), -64, -1, 0, 1, 3, 6, 63, 65,
                                    1000, 32767, std::numeric_limits<std::int32_t>::max()}) {
        RealFft fft;
        EXPECT_FALSE(fft.Init(size, BaselineFftKernels())) << size;
    }
}

TEST(RealFft, CanBeSetUpAgainForAnotherSize) {
    RealFft again;
    for (const std::size_t size : {1024U, 64U, 16U, 4096U, 2U}) {
        ASSERT_TRUE(again.Init(static_cast<std::int32_t>(size), BaselineFftKernels()));
        RealFft fresh;
        ASSERT_TRUE(fresh.Init(static_cast<std::int32_t>(size), BaselineFftKernels()));
        std::vector<float> a = Noise(size, 12);
        std::vector<float> b = a;
        again.Forward(a.data());
        fresh.Forward(b.data());
        EXPECT_EQ(a, b) << size;
    }
}

TEST(RealFft, KeepsNothingFromOneTransformToTheNext) {
    RealFft fft;
    ASSERT_TRUE(fft.Init(2048, BaselineFftKernels()));
    std::vector<float> first = Noise(2048, 13);
    const std::vector<float> signal = first;
    fft.Forward(first.data());
    std::vector<float> poison(2048, std::numeric_limits<float>::quiet_NaN());
    fft.Forward(poison.data());
    fft.Inverse(poison.data());
    std::vector<float> second = signal;
    fft.Forward(second.data());
    EXPECT_EQ(first, second);
}

} // namespace
} // namespace sonorelle
