#include "dsp/lfo.h"

#include "dsp/finite.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <numbers>

namespace sonorelle {

namespace {

constexpr float kPi = std::numbers::pi_v<float>;
constexpr std::uint32_t kPhaseModes = 4;

constexpr float kSawShift = 0.5F;                // periods, of the odd modes
constexpr float kTriangleShift = 0.25F;          // periods, of the odd modes
constexpr float kTriangleHeight = 1.9993288181F; // a hair below 2: the peaks stay inside -1 to 1

// The smoother of the saw and the noise: a time constant of 1000 ticks.
constexpr float kSmootherInput = 0.001F;
constexpr float kSmootherMemory = 0.999F;

constexpr float kSignedToUnit = 4.656613e-10F; // 2^-31

// 0 to 1, for negative numbers too.
float Fraction(float value) { return value - std::floor(value); }

// Saw and triangle: modes 0 and 1 upright, 2 and 3 upside down.
float WaveSign(std::uint32_t mode) { return mode < 2 ? 1.0F : -1.0F; }

} // namespace

// --- Sine ---

void CSineLFO::SetFrequency(float hertz) {
    const float halfAngle = hertz * kPi / sampleRate;
    if (!IsFinite(halfAngle)) return;
    frequency = hertz;
    c = 2 * std::sin(halfAngle);
    Reset();
}

void CSineLFO::SetPhase(std::uint32_t mode) {
    if (mode >= kPhaseModes) return;
    sign = mode < 2 ? -1.0F : 1.0F;
    k = mode % 2 == 0 ? 1 : 0;
}

// With the cosine side at the cosine of half a tick, both sides swing by exactly 1.
void CSineLFO::Reset() {
    a = std::cos(frequency * kPi / sampleRate);
    b = 0;
}

// Neither side ever leaves -1 to 1 but by rounding. Close to half the rate, where c is as good as 2, rounding
// adds up without end: hence the limits.
float CSineLFO::Tick() {
    a = std::clamp(a - c * b, -1.0F, 1.0F);
    b = std::clamp(b + a * c, -1.0F, 1.0F);
    return (k == 0 ? a : b) * sign;
}

// --- Saw ---

void CSawLFO::SetFrequency(float hertz) {
    const float periods = hertz / sampleRate;
    if (!IsFinite(periods)) return;
    frequency = hertz;
    step = periods;
    y = 0;
}

void CSawLFO::SetPhase(std::uint32_t phaseMode) {
    if (phaseMode >= kPhaseModes) return;
    mode = phaseMode;
    sign = WaveSign(mode);
    if (mode % 2 != 0) phase = Fraction(phase + kSawShift);
}

void CSawLFO::Reset() {
    phase = 0;
    SetPhase(mode);
}

float CSawLFO::Tick() {
    phase = Fraction(phase + step);
    y = (phase - 0.5F) * sign * 2 * kSmootherInput + y * kSmootherMemory;
    return y;
}

// --- Triangle ---

void CTriangLFO::SetFrequency(float hertz) {
    const float periods = hertz / sampleRate;
    if (!IsFinite(periods)) return;
    frequency = hertz;
    step = periods;
}

void CTriangLFO::SetPhase(std::uint32_t phaseMode) {
    if (phaseMode >= kPhaseModes) return;
    mode = phaseMode;
    sign = WaveSign(mode);
    if (mode % 2 == 0) return;
    p = Fraction(p + kTriangleShift);
    q = Fraction(q + kTriangleShift);
}

void CTriangLFO::Reset() {
    p = 0;
    q = 0.5F;
    SetPhase(mode);
}

// q - p is a square wave of 1/2 that turns the slope of q around.
float CTriangLFO::Tick() {
    p = Fraction(p + step);
    q = Fraction(q + step);
    const float triangle = (q - p) * (q - 0.5F) * 4;
    return (triangle - 0.5F) * sign * kTriangleHeight;
}

// --- Noise ---

void CNoiseLFO::SetFrequency(float hertz) {
    frequency = hertz;
    seed = 0;
}

// The multiplier and the addend of "Numerical Recipes in C" (1992), chapter 7.1.
float CNoiseLFO::Tick() {
    seed = seed * 1664525U + 1013904223U;
    const float x = static_cast<float>(static_cast<std::int32_t>(seed)) * kSignedToUnit;
    y = x * kSmootherInput + y * kSmootherMemory;
    return y;
}

std::int32_t CreateLFO(std::unique_ptr<CLFO>& lfo, std::int32_t rate, std::uint32_t kind) {
    if (rate < 1) return kBadArgument;
    const auto ticksPerSecond = static_cast<float>(rate);
    try {
        switch (kind) {
        case kSineLfo:
            lfo = std::make_unique<CSineLFO>(ticksPerSecond);
            return kOk;
        case kSawLfo:
            lfo = std::make_unique<CSawLFO>(ticksPerSecond);
            return kOk;
        case kTriangleLfo:
            lfo = std::make_unique<CTriangLFO>(ticksPerSecond);
            return kOk;
        case kNoiseLfo:
            lfo = std::make_unique<CNoiseLFO>(ticksPerSecond);
            return kOk;
        case kNoLfo:
            lfo = std::make_unique<CNoLFO>(ticksPerSecond);
            return kOk;
        default:
            return kBadArgument;
        }
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

} // namespace sonorelle
