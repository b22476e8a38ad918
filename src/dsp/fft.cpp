#include "dsp/fft.h"

#include "dsp/fft_sse.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <numbers>
#include <utility>

namespace sonorelle {

namespace {

constexpr float kHalfSqrt2 = 0.70710677F; // cosine and sine of an eighth of a circle

double Cycle(double turns) { return 2.0 * std::numbers::pi * turns; }

void PermuteBitReversed(float* x, std::int32_t size) {
    for (std::int32_t i = 1, j = size / 2; i < size - 1; ++i) {
        if (i < j) std::swap(x[i], x[j]);
        std::int32_t bit = size / 2;
        while (bit <= j) {
            j -= bit;
            bit /= 2;
        }
        j += bit;
    }
}

// The index pattern of the split-radix map: calls visit(i) for the first index of every block of length
// `length` that is due at this stage.
template<class Visit>
void ForEachBlock(std::int32_t size, std::int32_t length, Visit visit) {
    std::int32_t spacing = 2 * length;
    for (std::int32_t start = 0; start < size; start = 2 * spacing - length, spacing *= 4) {
        for (std::int32_t i = start; i < size; i += spacing) visit(i);
    }
}

void LengthTwoButterflies(float* x, std::int32_t size) {
    if (size < 2) return;
    ForEachBlock(size, 2, [x](std::int32_t i) {
        const float first = x[i];
        x[i] = first + x[i + 1];
        x[i + 1] = first - x[i + 1];
    });
}

// The L-shaped butterflies of the forward transform, at the four elements of a block's index 0 ...
void ForwardAtZero(float* x, std::int32_t quarter) {
    float* x2 = x + quarter;
    float* x3 = x2 + quarter;
    float* x4 = x3 + quarter;
    const float sum = *x4 + *x3;
    *x4 = *x4 - *x3;
    *x3 = *x - sum;
    *x = *x + sum;
}

// ... at its quarter points ...
void ForwardAtEighth(float* x, std::int32_t quarter) {
    float* x2 = x + quarter;
    float* x3 = x2 + quarter;
    float* x4 = x3 + quarter;
    const float t1 = (*x3 + *x4) * kHalfSqrt2;
    const float t2 = (*x3 - *x4) * kHalfSqrt2;
    *x4 = *x2 - t1;
    *x3 = -*x2 - t1;
    *x2 = *x - t2;
    *x = *x + t2;
}

// ... and between: index j together with its mirror image.
void ForwardBetween(float* x, std::int32_t j, std::int32_t quarter, SplitRadixRotation w) {
    float* x1 = x + j;
    float* x2 = x1 + quarter;
    float* x3 = x2 + quarter;
    float* x4 = x3 + quarter;
    float* x5 = x + quarter - j;
    float* x6 = x5 + quarter;
    float* x7 = x6 + quarter;
    float* x8 = x7 + quarter;
    const float re1 = *x3 * w.cos1 + *x7 * w.sin1;
    const float im1 = *x7 * w.cos1 - *x3 * w.sin1;
    const float re3 = *x4 * w.cos3 + *x8 * w.sin3;
    const float im3 = *x8 * w.cos3 - *x4 * w.sin3;
    const float reSum = re1 + re3;
    const float imSum = im1 + im3;
    const float reDifference = re1 - re3;
    const float imDifference = im1 - im3;
    *x8 = *x6 + imSum;
    *x3 = imSum - *x6;
    *x4 = *x2 - reDifference;
    *x7 = -*x2 - reDifference;
    *x6 = *x1 - reSum;
    *x1 = *x1 + reSum;
    *x2 = *x5 + imDifference;
    *x5 = *x5 - imDifference;
}

// The same three for the inverse transform, with its doubled terms.
void InverseAtZero(float* x, std::int32_t quarter) {
    float* x2 = x + quarter;
    float* x3 = x2 + quarter;
    float* x4 = x3 + quarter;
    const float difference = *x - *x3;
    *x = *x + *x3;
    *x2 = 2.0F * *x2;
    *x3 = difference - 2.0F * *x4;
    *x4 = difference + 2.0F * *x4;
}

void InverseAtEighth(float* x, std::int32_t quarter) {
    float* x2 = x + quarter;
    float* x3 = x2 + quarter;
    float* x4 = x3 + quarter;
    const float t1 = (*x2 - *x) * kHalfSqrt2;
    const float t2 = (*x4 + *x3) * kHalfSqrt2;
    *x = *x + *x2;
    *x2 = *x4 - *x3;
    *x3 = 2.0F * (-t2 - t1);
    *x4 = 2.0F * (-t2 + t1);
}

void InverseBetween(float* x, std::int32_t j, std::int32_t quarter, SplitRadixRotation w) {
    float* x1 = x + j;
    float* x2 = x1 + quarter;
    float* x3 = x2 + quarter;
    float* x4 = x3 + quarter;
    float* x5 = x + quarter - j;
    float* x6 = x5 + quarter;
    float* x7 = x6 + quarter;
    float* x8 = x7 + quarter;
    const float t1 = *x1 - *x6;
    const float t2 = *x5 - *x2;
    const float t3 = *x8 + *x3;
    const float t4 = *x4 + *x7;
    *x1 = *x1 + *x6;
    *x5 = *x2 + *x5;
    *x6 = *x8 - *x3;
    *x2 = *x4 - *x7;
    const float re1 = t1 - t4;
    const float re3 = t1 + t4;
    const float im1 = t2 - t3;
    const float im3 = t2 + t3;
    *x3 = re1 * w.cos1 + im1 * w.sin1;
    *x7 = re1 * w.sin1 - im1 * w.cos1;
    *x4 = re3 * w.cos3 - im3 * w.sin3;
    *x8 = im3 * w.cos3 + re3 * w.sin3;
}

} // namespace

std::int32_t CFFT::Init(std::int32_t windowType) {
    if (size < 1 || (size & (size - 1)) != 0) return kBadArgument;
    const std::int32_t rotations = std::max(size / 8 - 1, 0);
    if (!sinTable.Allocate(2 * static_cast<std::size_t>(rotations)) ||
        !cosTable.Allocate(2 * static_cast<std::size_t>(rotations))) {
        return kOutOfMemory;
    }
    for (std::int32_t j = 1; j <= rotations; ++j) {
        const double angle = Cycle(static_cast<double>(j) / size);
        sinTable.Data()[j - 1] = static_cast<float>(std::sin(angle));
        cosTable.Data()[j - 1] = static_cast<float>(std::cos(angle));
        sinTable.Data()[rotations + j - 1] = static_cast<float>(std::sin(3.0 * angle));
        cosTable.Data()[rotations + j - 1] = static_cast<float>(std::cos(3.0 * angle));
    }
    return BuildWindow(windowType);
}

std::int32_t CFFT::BuildWindow(std::int32_t windowType) {
    window = {};
    if (windowType != kSineSquaredWindow && windowType != kBlackmanWindow) return kOk;
    if (!window.Allocate(static_cast<std::size_t>(size))) return kOutOfMemory;
    for (std::int32_t i = 0; i < size; ++i) {
        const double phase = Cycle(static_cast<double>(i) / size);
        const double sine = std::sin(phase / 2.0);
        const double value = windowType == kSineSquaredWindow
                                 ? sine * sine
                                 : 0.42 - 0.5 * std::cos(phase) + 0.08 * std::cos(2.0 * phase);
        window.Data()[i] = static_cast<float>(value);
    }
    return kOk;
}

void CFFT::ApplyWindow(float* data) {
    const float* factors = window.Data();
    for (std::size_t i = 0; i < window.Size(); ++i) data[i] *= factors[i];
}

SplitRadixRotation CFFT::RotationAt(std::int32_t step) const {
    const std::size_t once = static_cast<std::size_t>(step) - 1;
    const std::size_t triple = cosTable.Size() / 2 + once;
    return {cosTable.Data()[once], sinTable.Data()[once], cosTable.Data()[triple], sinTable.Data()[triple]};
}

void CFFT::Forward(float* data) {
    ApplyWindow(data);
    PermuteBitReversed(data, size);
    LengthTwoButterflies(data, size);
    for (std::int32_t length = 4; length <= size; length *= 2) {
        const std::int32_t quarter = length / 4;
        const std::int32_t eighth = length / 8;
        ForEachBlock(size, length, [&](std::int32_t i) {
            ForwardAtZero(data + i, quarter);
            if (eighth > 0) ForwardAtEighth(data + i + eighth, quarter);
        });
        for (std::int32_t j = 1; j < eighth; ++j) {
            const SplitRadixRotation w = RotationAt(j * (size / length));
            ForEachBlock(size, length, [&](std::int32_t i) { ForwardBetween(data + i, j, quarter, w); });
        }
    }
}

void CFFT::Inverse(float* data) {
    for (std::int32_t length = size; length >= 4; length /= 2) {
        const std::int32_t quarter = length / 4;
        const std::int32_t eighth = length / 8;
        ForEachBlock(size, length, [&](std::int32_t i) {
            InverseAtZero(data + i, quarter);
            if (eighth > 0) InverseAtEighth(data + i + eighth, quarter);
        });
        for (std::int32_t j = 1; j < eighth; ++j) {
            const SplitRadixRotation w = RotationAt(j * (size / length));
            ForEachBlock(size, length, [&](std::int32_t i) { InverseBetween(data + i, j, quarter, w); });
        }
    }
    LengthTwoButterflies(data, size);
    PermuteBitReversed(data, size);
}

void CFFT::Magnitude(float* data) {
    data[0] = std::fabs(data[0]);
    for (std::int32_t k = 1; k < size / 2; ++k) {
        data[k] = std::sqrt(data[k] * data[k] + data[size - k] * data[size - k]);
        data[size - k] = 0;
    }
}

void CFFT::Power(float* data) {
    data[0] = data[0] * data[0];
    for (std::int32_t k = 1; k < size / 2; ++k) {
        data[k] = data[k] * data[k] + data[size - k] * data[size - k];
        data[size - k] = 0;
    }
}

void CFFT::Clean(float*, std::int32_t) {}

std::int32_t CreateFFT(std::unique_ptr<CFFT>& fft, std::int32_t size, std::int32_t windowType,
                       std::uint32_t features) {
    std::unique_ptr<CFFT> made;
    if ((features & kFeatureSse2) != 0) {
        made.reset(new (std::nothrow) CFFT_SSE2(size));
    } else if ((features & kFeatureSse) != 0) {
        made.reset(new (std::nothrow) CFFT_SSE(size));
    } else {
        made.reset(new (std::nothrow) CFFT(size));
    }
    if (!made) return kOutOfMemory;
    const std::int32_t result = made->Init(windowType);
    if (result == kOk) fft = std::move(made);
    return result;
}

} // namespace sonorelle
