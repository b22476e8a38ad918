#include "dsp/real_fft.h"

#include "dsp/real_fft_kernels.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace sonorelle {

namespace {

// Below this size the passes would not fill whole vectors; a direct sum is short enough then.
constexpr std::int32_t kSmallestVectorSize = 64;

// Below this size the passes would not fill vectors of eight.
constexpr std::int32_t kSmallestWideSize = 128;

double Angle(std::int64_t numerator, std::int64_t denominator) {
    return 2.0 * std::numbers::pi * static_cast<double>(numerator) / static_cast<double>(denominator);
}

// w^p, w^2p and w^3p with w = e^(-2 pi i / length). `byArrays`: real parts of all w^p, then their imaginary
// parts, and so on; otherwise the six numbers of one p side by side.
bool FillTwiddles(AlignedArray& twiddles, std::int32_t length, bool byArrays) {
    const std::int32_t quarter = length / 4;
    if (!twiddles.Allocate(static_cast<std::size_t>(6) * static_cast<std::size_t>(quarter))) return false;
    for (std::int32_t p = 0; p < quarter; ++p) {
        for (std::int32_t power = 1; power <= 3; ++power) {
            const double angle = Angle(static_cast<std::int64_t>(power) * p, length);
            const std::int32_t slot = 2 * (power - 1);
            const std::int32_t re = byArrays ? slot * quarter + p : 6 * p + slot;
            const std::int32_t im = byArrays ? re + quarter : re + 1;
            twiddles.Data()[re] = static_cast<float>(std::cos(angle));
            twiddles.Data()[im] = static_cast<float>(-std::sin(angle));
        }
    }
    return true;
}

} // namespace

bool RealFft::Init(std::int32_t transformSize, const FftKernels& variant) {
    if (transformSize < 2 || (transformSize & (transformSize - 1)) != 0) return false;
    kernels = transformSize < kSmallestWideSize ? &BaselineFftKernels() : &variant;
    size = transformSize;
    half = size / 2;
    passes.clear();
    for (AlignedArray& part : work) {
        if (!part.Allocate(static_cast<std::size_t>(half))) return false;
    }
    const std::int32_t rotations = half / 2 + 1;
    if (!rotation.Allocate(2 * static_cast<std::size_t>(rotations))) return false;
    for (std::int32_t k = 0; k < rotations; ++k) {
        rotation.Data()[k] = static_cast<float>(std::cos(Angle(k, size)));
        rotation.Data()[rotations + k] = static_cast<float>(std::sin(Angle(k, size)));
    }
    if (size < kSmallestVectorSize) return true;
    std::int32_t stride = 1;
    for (std::int32_t length = half; length > 8; length /= 4, stride *= 4) {
        Pass pass{length, stride, {}};
        if (!FillTwiddles(pass.twiddles, length, stride == 1)) return false;
        passes.push_back(std::move(pass));
    }
    return true;
}

void RealFft::Forward(float* data) {
    if (size < kSmallestVectorSize) {
        TransformSmall(data, false);
        return;
    }
    float* re = work[0].Data();
    float* im = work[1].Data();
    kernels->firstPassFromSignal(data, re, im, passes[0].length, passes[0].twiddles.Data());
    TransformComplex(re, im);
    kernels->splitSpectra(data, re, im, half, rotation.Data());
}

void RealFft::Inverse(float* data) {
    if (size < kSmallestVectorSize) {
        TransformSmall(data, true);
        return;
    }
    float* spectrumRe = work[2].Data();
    float* spectrumIm = work[3].Data();
    kernels->joinSpectra(data, spectrumRe, spectrumIm, half, rotation.Data());
    // An inverse transform is a forward one with real and imaginary parts exchanged on both sides.
    float* re = work[1].Data();
    float* im = work[0].Data();
    kernels->firstPassFromParts(spectrumIm, spectrumRe, im, re, passes[0].length, passes[0].twiddles.Data());
    TransformComplex(im, re);
    kernels->interleave(re, im, data, half);
}

// All passes after the first. Takes the parts in work[0] and work[1] (in either order) and gives those that
// hold the result.
void RealFft::TransformComplex(float*& real, float*& imaginary) {
    float* otherReal = work[2].Data();
    float* otherImaginary = work[3].Data();
    const auto swapParts = [&] {
        std::swap(real, otherReal);
        std::swap(imaginary, otherImaginary);
    };
    for (std::size_t i = 1; i < passes.size(); ++i) {
        const Pass& pass = passes[i];
        kernels->middlePass(real, imaginary, otherReal, otherImaginary, pass.length, pass.stride,
                            pass.twiddles.Data());
        swapParts();
    }
    const std::int32_t lastLength = passes.back().length / 4;
    const std::int32_t stride = half / lastLength;
    if (lastLength == 8) {
        kernels->lastPass8(real, imaginary, otherReal, otherImaginary, stride);
    } else {
        kernels->lastPass4(real, imaginary, otherReal, otherImaginary, stride);
    }
    swapParts();
}

// The definition, for sizes below a few vectors.
void RealFft::TransformSmall(float* data, bool inverse) const {
    float result[kSmallestVectorSize] = {};
    if (inverse) {
        for (std::int32_t n = 0; n < size; ++n) {
            double sum =
                static_cast<double>(data[0]) + ((n & 1) != 0 ? -1.0 : 1.0) * static_cast<double>(data[1]);
            for (std::int32_t k = 1; k < half; ++k) {
                const double angle = Angle(static_cast<std::int64_t>(n) * k, size);
                sum += 2.0 * (static_cast<double>(data[2 * k]) * std::cos(angle) -
                              static_cast<double>(data[2 * k + 1]) * std::sin(angle));
            }
            result[n] = static_cast<float>(sum);
        }
    } else {
        for (std::int32_t k = 0; k <= half; ++k) {
            double re = 0;
            double im = 0;
            for (std::int32_t n = 0; n < size; ++n) {
                const double angle = Angle(static_cast<std::int64_t>(n) * k, size);
                re += static_cast<double>(data[n]) * std::cos(angle);
                im -= static_cast<double>(data[n]) * std::sin(angle);
            }
            const bool real = k == 0 || k == half;
            result[k == half ? 1 : 2 * k] = static_cast<float>(re);
            if (!real) result[2 * k + 1] = static_cast<float>(im);
        }
    }
    std::copy_n(result, size, data);
}

} // namespace sonorelle
