#include "dsp/fft_sse.h"

#include "dsp/real_fft_kernels.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

// Products of numbers that small turn denormal, which most processors compute a hundred times slower.
constexpr float kSmallestKept = 1e-37F;

} // namespace

std::int32_t CFFT_SSE::Init(std::int32_t windowType) {
    const FftKernels& kernels = HasWideVectors() ? WideFftKernels() : BaselineFftKernels();
    const std::int32_t count = GetSize();
    if (count < 2 || (count & (count - 1)) != 0) return kBadArgument;
    if (!transform.Init(count, kernels)) return kOutOfMemory;
    return BuildWindow(windowType);
}

void CFFT_SSE::Forward(float* data) {
    ApplyWindow(data);
    transform.Forward(data);
}

void CFFT_SSE::Inverse(float* data) { transform.Inverse(data); }

void CFFT_SSE::Magnitude(float* data) {
    const std::int32_t half = GetSize() / 2;
    data[0] = std::fabs(data[0]);
    // Block by block, so that the loops vectorise; the write position never overtakes the bins still to be
    // read.
    constexpr std::int32_t kBlock = 8;
    std::int32_t k = 1;
    for (; k + kBlock <= half; k += kBlock) {
        float powers[kBlock];
        for (std::int32_t j = 0; j < kBlock; ++j) {
            const float re = data[2 * (k + j)];
            const float im = data[2 * (k + j) + 1];
            powers[j] = re * re + im * im;
        }
        for (std::int32_t j = 0; j < kBlock; ++j) data[k + j] = std::sqrt(powers[j]);
    }
    for (; k < half; ++k) data[k] = std::sqrt(data[2 * k] * data[2 * k] + data[2 * k + 1] * data[2 * k + 1]);
    std::fill(data + half, data + GetSize(), 0.0F);
}

void CFFT_SSE::Power(float* data) {
    data[0] = data[0] * data[0];
    for (std::int32_t k = 1; k < GetSize() / 2; ++k) {
        data[2 * k] = data[2 * k] * data[2 * k] + data[2 * k + 1] * data[2 * k + 1];
        data[2 * k + 1] = 0;
    }
}

void CFFT_SSE::Clean(float* data, std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i) data[i] = data[i] < kSmallestKept ? 0.0F : data[i];
}

} // namespace sonorelle
