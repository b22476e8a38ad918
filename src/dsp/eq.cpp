#include "dsp/eq.h"

#include "dsp/finite.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <stdexcept>

namespace sonorelle {

namespace {

// Above this part of the sample rate a low-pass has nothing left to take away.
constexpr float kLowPassLimit = 0.45f;

// Below this part of the sample rate a high-pass is left out. The pitch tracker's 30 Hz at 11025 Hz lie
// below.
constexpr float kHighPassLimit = 0.01f;

// How often a decay is looked at: a filter then spends at most this many samples among denormal numbers.
constexpr std::int32_t kDecayCheck = 64;

} // namespace

CEQ::CEQ(float rate, std::int32_t channelCount, std::int32_t filterType)
    : channels(channelCount), type(filterType), sampleRate(rate), x1(static_cast<std::size_t>(channelCount)),
      x2(x1), y1(x1), y2(x1) {
    pending.frequency = type == kEqHighPass ? 0.0f : 0.5f;
}

void CEQ::SetParameters(float frequency, float gain, float q) {
    const float relative = frequency / sampleRate;
    if (!IsFinite(relative) || !IsFinite(gain) || !IsFinite(q)) return;
    pending = {relative, gain, q};
    dirty = true;
}

void CEQ::GetParameters(float* frequency, float* gain, float* q) const {
    if (frequency) *frequency = pending.frequency * sampleRate;
    if (gain) *gain = pending.gain;
    if (q) *q = pending.q;
}

void CEQ::Reset() {
    for (auto* state : {&x1, &x2, &y1, &y2}) std::fill(state->begin(), state->end(), 0.0f);
}

void CEQ::ApplyParameters() {
    applied = pending;
    dirty = false;
    coefficients = ComputeEqCoefficients(type, applied.frequency, applied.gain, applied.q);
    DecideBypass();
    if (!IsStable(coefficients)) bypass = true;
}

void CEQ::DecideBypass() {
    switch (type) {
    case kEqLowPass:
        bypass = applied.frequency > kLowPassLimit;
        break;
    case kEqHighPass:
        bypass = applied.frequency < kHighPassLimit;
        break;
    case kEqPeak:
    case kEqPeakDifference:
        bypass = false;
        break;
    default:
        break; // as it was
    }
}

void CEQ::Process(const float* const* in, float* const* out, std::int32_t count) {
    if (dirty) ApplyParameters();
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        if (!bypass) {
            Filter(channel, in[channel], out[channel], count);
        } else if (in[channel] != out[channel] && count > 0) {
            std::copy_n(in[channel], count, out[channel]);
        }
    }
}

void CEQ::ProcessInPlace(float* const* buffer, std::int32_t count) { Process(buffer, buffer, count); }

void CEQ::Filter(std::int32_t channel, const float* in, float* out, std::int32_t count) {
    const EqCoefficients c = coefficients;
    const auto at = static_cast<std::size_t>(channel);
    float inOne = x1[at];
    float inTwo = x2[at];
    float outOne = y1[at];
    float outTwo = y2[at];
    for (std::int32_t start = 0; start < count; start += kDecayCheck) {
        const std::int32_t end = std::min(count, start + kDecayCheck);
        for (std::int32_t n = start; n < end; ++n) {
            const float x = AudibleOrZero(in[n]);
            const float y = c.b0 * x + c.b1 * inOne + c.b2 * inTwo + c.a1 * outOne + c.a2 * outTwo;
            inTwo = inOne;
            inOne = x;
            outTwo = outOne;
            outOne = y;
            out[n] = y;
        }
        const bool silentInput = inOne == 0.0f && inTwo == 0.0f;
        if (silentInput && std::max(std::fabs(outOne), std::fabs(outTwo)) < kSilenceFloor)
            outOne = outTwo = 0.0f;
        if (!IsFinite(outOne) || !IsFinite(outTwo)) outOne = outTwo = 0.0f;
    }
    x1[at] = inOne;
    x2[at] = inTwo;
    y1[at] = outOne;
    y2[at] = outTwo;
}

std::int32_t CreateEq(std::unique_ptr<CEqIf>& eq, float sampleRate, std::int32_t channels,
                      std::int32_t type) {
    if (!IsFinite(sampleRate) || sampleRate <= 0.0f || channels < 1) return kBadArgument;
    if (type < 0 || type >= kEqTypeCount) return kBadArgument;
    try {
        eq = std::make_unique<CEQ>(sampleRate, channels, type);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kOk;
}

std::int32_t DestroyEq(std::unique_ptr<CEqIf>& eq) {
    if (!eq) return kBadArgument;
    eq.reset();
    return kOk;
}

} // namespace sonorelle
