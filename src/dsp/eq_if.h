// The interface of the equaliser: one second-order filter over planar f32 channels.
//
// All operations belong to the thread that processes. None of them allocates, locks or throws.

#pragma once

#include <cstdint>

namespace sonorelle {

class CEqIf {
public:
    // Filters `count` samples of each channel; `in` and `out` hold one pointer a channel, pairwise the same
    // array or not overlapping. New parameters take effect here.
    virtual void Process(const float* const* in, float* const* out, std::int32_t count) = 0;
    virtual void ProcessInPlace(float* const* buffer, std::int32_t count) = 0;

    // Frequency in hertz, gain in decibels, q without unit; they wait for the next Process. A call with a
    // number that is not finite is ignored.
    virtual void SetParameters(float frequency, float gain, float q) = 0;

    // The parameters that were set last, applied or still waiting. A null pointer is skipped.
    virtual void GetParameters(float* frequency, float* gain, float* q) const = 0;

    virtual std::int32_t GetType() const = 0;

    // Forgets the signal; parameters and coefficients stay.
    virtual void Reset() = 0;

    virtual ~CEqIf() = default;

protected:
    CEqIf() = default;
    CEqIf(const CEqIf&) = default;
    CEqIf& operator=(const CEqIf&) = default;
};

} // namespace sonorelle
