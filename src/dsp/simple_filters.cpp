#include "dsp/simple_filters.h"

#include "dsp/finite.h"
#include "platform/result_codes.h"

#include <cmath>
#include <new>

namespace sonorelle {

namespace {

// Keeps the pole's state normal: 14 decades above the smallest normal f32, 480 dB below full scale.
constexpr float kNoDenormals = 1e-24f;

template<typename Filter>
std::int32_t CreateFilter(std::unique_ptr<Filter>& filter, float coefficient) {
    if (!IsFinite(coefficient)) return kBadArgument;
    std::unique_ptr<Filter> made(new (std::nothrow) Filter(coefficient));
    if (!made) return kOutOfMemory;
    filter = std::move(made);
    return kOk;
}

} // namespace

CSimpleIIRFilter::CSimpleIIRFilter(float coefficient) : feedback(-coefficient), gain(1.0f - feedback) {}

void CSimpleIIRFilter::Process(const float* in, float* out, std::int32_t count) noexcept {
    const float pole = feedback;
    const float inputGain = gain;
    float y = state;
    for (std::int32_t n = 0; n < count; ++n) {
        y = pole * y + inputGain * FiniteOrZero(in[n]) + kNoDenormals;
        out[n] = y;
    }
    state = FiniteOrZero(y);
}

CSimpleFIRFilter::CSimpleFIRFilter(float coefficient)
    : tap1(coefficient), tap0(1.0f - std::fabs(coefficient)) {}

void CSimpleFIRFilter::Process(const float* in, float* out, std::int32_t count) noexcept {
    if (count < 1) return;
    const float now = tap0;
    const float before = tap1;
    const float last = FiniteOrZero(in[count - 1]);

    // From the end to the start, so that in place no input is overwritten before it was read; both neighbours
    // come from memory, and the loop vectorises.
    for (std::int32_t n = count - 1; n > 0; --n) {
        out[n] = now * FiniteOrZero(in[n]) + before * FiniteOrZero(in[n - 1]);
    }
    out[0] = now * FiniteOrZero(in[0]) + before * previous;
    previous = last;
}

std::int32_t CreateIIR(std::unique_ptr<CSimpleIIRFilter>& filter, float coefficient) {
    return CreateFilter(filter, coefficient);
}

std::int32_t CreateFIR(std::unique_ptr<CSimpleFIRFilter>& filter, float coefficient) {
    return CreateFilter(filter, coefficient);
}

} // namespace sonorelle
