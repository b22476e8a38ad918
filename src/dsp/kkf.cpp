#include "dsp/kkf.h"

#include "dsp/fft.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace sonorelle {

namespace {

constexpr std::int32_t kLargestSize = 1 << 30;

// The smallest normal number: what lies below it would make the inverse transform slow.
constexpr float kSmallestNormal = 1.1754944e-38F;
constexpr std::int32_t kClampedEntries = 8;

// Steps in which FindPeak compares, so that values which differ by rounding alone tie.
constexpr float kPeakSteps = 10000.0F;

// The direct sums are made in vectors of four lags, up to eight vectors at once, so that they stay in
// registers.
using Lags4 = float __attribute__((vector_size(16)));
constexpr std::int32_t kLanes = 4;
constexpr std::int32_t kMostVectors = 8;

// What the three transforms cost, in multiplications of the direct sum for each sample and each halving of
// the size; measured where both take the same time. It decides speed alone: the results agree to rounding.
constexpr double kFftCost = 3.5;

// sums[j] = sum over n of x[n + j] y[n], for 4 x Vectors neighbouring j.
template<int Vectors>
void SumLags(const float* x, const float* y, std::int32_t length, float* sums) {
    Lags4 total[Vectors] = {};
    for (std::int32_t n = 0; n < length; ++n) {
        for (int v = 0; v < Vectors; ++v) {
            Lags4 shifted;
            std::memcpy(&shifted, x + n + v * kLanes, sizeof shifted);
            total[v] += shifted * y[n];
        }
    }
    std::memcpy(sums, total, sizeof total);
}

using LagSum = void (*)(const float* x, const float* y, std::int32_t length, float* sums);
constexpr LagSum kLagSums[kMostVectors] = {SumLags<1>, SumLags<2>, SumLags<3>, SumLags<4>,
                                           SumLags<5>, SumLags<6>, SumLags<7>, SumLags<8>};

} // namespace

CKKF::CKKF(std::int32_t wantedSize) {
    if (wantedSize < 2 || wantedSize > kLargestSize) return;
    size = static_cast<std::int32_t>(std::bit_ceil(static_cast<std::uint32_t>(wantedSize)));
    halfSize = size / 2;
}

CKKF::~CKKF() = default;

std::int32_t CKKF::Init(std::uint32_t features) {
    if (size == 0) return kBadArgument;
    const auto count = static_cast<std::size_t>(size);
    if (!spectrumA.Allocate(count) || !spectrumB.Allocate(count) || !result.Allocate(count) ||
        !padded.Allocate(3 * count + kLanes)) {
        return kOutOfMemory;
    }
    return CreateFFT(fft, size, kNoWindow, features);
}

void CKKF::Correlate(const float* x, const float* y, std::int32_t lengthX, std::int32_t lengthY) {
    const auto enter = [this](const float* from, std::int32_t length, float* spectrum) {
        const std::int32_t used = std::clamp(length, 0, size);
        std::copy_n(from, used, spectrum);
        std::fill(spectrum + used, spectrum + size, 0.0F);
        fft->Forward(spectrum);
    };
    enter(x, lengthX, spectrumA.Data());
    enter(y, lengthY, spectrumB.Data());
    MultiplySpectra(spectrumA.Data(), spectrumB.Data(), result.Data());
    fft->Inverse(result.Data());
    fft->Clean(result.Data(), size);
}

void CKKF::MultiplySpectra(const float* a, const float* b, float* out) const {
    out[0] = a[0] * b[0];
    float sign = -1.0F;
    for (std::int32_t k = 1; k < halfSize; ++k) {
        const std::int32_t mirrored = size - k;
        out[k] = (a[k] * b[k] + a[mirrored] * b[mirrored]) * sign;
        out[mirrored] = (b[k] * a[mirrored] - a[k] * b[mirrored]) * sign;
        sign = -sign;
    }
    // A quirk of this form: the highest bin counts double and keeps its sign. It adds a faint ripple at half
    // the sample rate to the correlation, far below what moves a peak.
    out[halfSize] = 2.0F * a[halfSize] * b[halfSize];
}

void CKKF_SSE::MultiplySpectra(const float* a, const float* b, float* out) const {
    out[0] = a[0] * b[0];
    out[1] = a[1] * b[1];
    const std::int32_t count = GetSize();
    const auto multiply = [=](std::int32_t i, float sign) {
        const float re = (a[i] * b[i] + a[i + 1] * b[i + 1]) * sign;
        const float im = (a[i + 1] * b[i] - a[i] * b[i + 1]) * sign;
        out[i] = re;
        out[i + 1] = im;
    };
    // Two bins a round, so that the alternating sign is a constant and the loop vectorises.
    std::int32_t i = 2;
    for (; i + 3 < count; i += 4) {
        multiply(i, -1.0F);
        multiply(i + 2, 1.0F);
    }
    for (; i < count; i += 2) multiply(i, -1.0F);
    for (std::int32_t n = 0; n < std::min(kClampedEntries, count); ++n) {
        if (std::fabs(out[n]) < kSmallestNormal) out[n] = out[n] < 0 ? -kSmallestNormal : kSmallestNormal;
    }
}

LagWindow CKKF::SearchWindow(std::int32_t maxLag, std::int32_t expectedLag, std::int32_t radius) {
    // In 64 bits, so that no argument overflows.
    const std::int64_t farthest = maxLag;
    const std::int64_t width = 2 * static_cast<std::int64_t>(radius);
    std::int64_t first = static_cast<std::int64_t>(expectedLag) - radius;
    std::int64_t last = first + width;
    if (first < -farthest) {
        first = -farthest - 1;
        last = first + width;
    } else if (last > farthest) {
        last = farthest - 1;
        first = last - width;
    }
    constexpr std::int64_t kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t kHighest = std::numeric_limits<std::int32_t>::max();
    return {static_cast<std::int32_t>(std::clamp(first, kLowest, kHighest)),
            static_cast<std::int32_t>(std::clamp(last, kLowest, kHighest))};
}

std::int32_t CKKF::Highest(LagWindow lags, std::int32_t otherwise) const {
    const float* values = result.Data() + halfSize;
    const std::int32_t last = std::min(lags.last, size - halfSize - 1);
    float best = 0;
    std::int32_t bestLag = otherwise;
    for (std::int32_t lag = std::max(lags.first, -halfSize); lag <= last; ++lag) {
        const float value = std::floor(values[lag] * kPeakSteps);
        if (value > best) {
            best = value;
            bestLag = lag;
        }
    }
    return bestLag;
}

std::int32_t CKKF::FindPeak(std::int32_t maxLag, std::int32_t expectedLag, std::int32_t radius) const {
    return Highest(SearchWindow(maxLag, expectedLag, radius), expectedLag);
}

std::int32_t CKKF::CorrelateAndFindPeak(const float* x, const float* y, std::int32_t lengthX,
                                        std::int32_t lengthY, std::int32_t maxLag, std::int32_t expectedLag,
                                        std::int32_t radius) {
    const LagWindow lags = SearchWindow(maxLag, expectedLag, radius);
    if (IsDirectQuicker(lags, lengthX, lengthY)) {
        CorrelateDirectly(x, y, lengthX, lengthY, lags);
    } else {
        Correlate(x, y, lengthX, lengthY);
    }
    return Highest(lags, expectedLag);
}

bool CKKF::IsDirectQuicker(LagWindow lags, std::int32_t lengthX, std::int32_t lengthY) const {
    const bool wraps = lengthX < 0 || lengthY < 0 || lengthX > halfSize || lengthY > halfSize;
    if (wraps || lags.first < -halfSize || lags.last >= halfSize || lags.last < lags.first) return false;
    const double direct = static_cast<double>(lags.last - lags.first + kLanes) * lengthY;
    return direct < kFftCost * size * (std::bit_width(static_cast<std::uint32_t>(size)) - 1);
}

void CKKF::CorrelateDirectly(const float* x, const float* y, std::int32_t lengthX, std::int32_t lengthY,
                             LagWindow lags) {
    // x[n + t] is read for all n and t; zeros stand in front of and behind x.
    const std::int32_t front = std::max(-lags.first, 0);
    const std::int32_t behind = std::max(lags.last + kLanes + lengthY - lengthX, 0);
    float* origin = padded.Data() + front;
    std::fill(padded.Data(), origin, 0.0F);
    std::copy_n(x, lengthX, origin);
    std::fill_n(origin + lengthX, behind, 0.0F);

    const auto scale = static_cast<float>(size);
    float* values = result.Data() + halfSize;
    std::int32_t lag = lags.first;
    while (lag <= lags.last) {
        const std::int32_t vectors = std::min((lags.last - lag) / kLanes + 1, kMostVectors);
        float sums[kMostVectors * kLanes];
        kLagSums[vectors - 1](origin + lag, y, lengthY, sums);
        const std::int32_t count = std::min(vectors * kLanes, lags.last - lag + 1);
        for (std::int32_t j = 0; j < count; ++j) values[lag + j] = sums[j] * scale;
        lag += count;
    }
}

std::int32_t CreateKKF(std::unique_ptr<CKKF>& kkf, std::int32_t size, std::uint32_t features) {
    std::unique_ptr<CKKF> made;
    if ((features & (kFeatureSse | kFeatureSse2)) != 0) {
        made.reset(new (std::nothrow) CKKF_SSE(size));
    } else {
        made.reset(new (std::nothrow) CKKF(size));
    }
    if (!made) return kOutOfMemory;
    const std::int32_t initialised = made->Init(features);
    if (initialised == kOk) kkf = std::move(made);
    return initialised;
}

} // namespace sonorelle
