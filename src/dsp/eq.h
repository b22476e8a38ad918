// The equaliser: one second-order filter of a fixed type (eq_coefficients.h) over any number of channels, in
// direct form I. The pitch tracker limits its band with two of them.
//
// It starts in bypass, where it copies. Which types ever leave it is a quirk that must stay, since the pitch
// tracker's thresholds were set with it: the low-pass filters up to 0.45 of the sample rate and copies above;
// the high-pass copies below 0.01 of the rate (so that its 30 Hz at 11025 Hz do nothing); both peak types
// filter from their first Process on; the shelves and the one-pole leave bypass as it is, and so always copy.
//
// Parameters so extreme that f32 cannot hold the filter stable put it in bypass too.
//
// Samples that are not finite, or below 8e-25, count as 0 inside the filter. When the input has gone silent
// and the output has died away below that too, the state is set to 0 (looked at every 64 samples): a decay
// never lingers among denormal numbers, and the signal needs no added constant. Output that leaves the range
// of numbers starts the state again from 0.
//
// Only construction allocates. Cost: about 16 cycles a sample and channel, bound by the latency of the
// feedback.

#pragma once

#include "dsp/eq_coefficients.h"
#include "dsp/eq_if.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle {

class CEQ final : public CEqIf {
public:
    // Gain 0, q 1, and half the sample rate as frequency (0 for the high-pass). Arguments as CreateEq checks
    // them.
    CEQ(float sampleRate, std::int32_t channels, std::int32_t type);

    void Process(const float* const* in, float* const* out, std::int32_t count) override;
    void ProcessInPlace(float* const* buffer, std::int32_t count) override;
    void SetParameters(float frequency, float gain, float q) override;
    void GetParameters(float* frequency, float* gain, float* q) const override;
    std::int32_t GetType() const override { return type; }
    void Reset() override;

    // Whether Process copies; decided when parameters are applied.
    bool IsBypassed() const { return bypass; }

private:
    struct Parameters {
        float frequency = 0.0f; // relative to the sample rate
        float gain = 0.0f;      // decibels
        float q = 1.0f;
    };

    void ApplyParameters();
    void DecideBypass();
    void Filter(std::int32_t channel, const float* in, float* out, std::int32_t count);

    std::int32_t channels;
    std::int32_t type;
    float sampleRate;
    std::vector<float> x1, x2, y1, y2; // one of each a channel
    EqCoefficients coefficients;
    bool dirty = true;
    bool bypass = true;
    Parameters applied;
    Parameters pending;
};

// kBadArgument unless the rate is positive and finite, there is at least one channel, and the type is 0 to 6;
// kOutOfMemory; `eq` is then untouched.
std::int32_t CreateEq(std::unique_ptr<CEqIf>& eq, float sampleRate, std::int32_t channels, std::int32_t type);

// Destroys and empties; kBadArgument when there is nothing.
std::int32_t DestroyEq(std::unique_ptr<CEqIf>& eq);

} // namespace sonorelle
