// The two smallest filters, with which the mark finder brings out the attacks of a signal.
//
//   CSimpleIIRFilter, one pole:  y[n] = feedback y[n-1] + gain x[n] + 1e-24
//   CSimpleFIRFilter, two taps:  y[n] = tap0 x[n] + tap1 x[n-1]
//
// The textbook sections (J. O. Smith, Introduction to Digital Filters, one-pole and one-zero). The 1e-24
// keeps the state of the pole from dying away through denormal numbers, which would slow silence down a
// hundredfold; on silence the output so settles at 1e-24 / (1 - feedback) and never at 0.
//
// Mono, f32. `in` and `out` hold `count` samples and are the same array or do not overlap. State goes on from
// call to call, so that the cut into blocks does not matter. One thread uses a filter at a time. Process
// never allocates, locks or throws; cost: 4 operations a sample for the pole (bound by their latency, about
// 12 cycles), under one cycle for the two taps. A sample that is not finite counts as 0.

#pragma once

#include <cstdint>
#include <memory>

namespace sonorelle {

class CSimpleIIRFilter {
public:
    // `coefficient` c, finite: feedback = -c, gain = 1 - feedback. c = -0.9 smooths with feedback 0.9 and
    // gain 0.1, a time constant of 9.5 samples. With |c| above 1 the output grows; when it leaves the range
    // of numbers, the state starts again from 0.
    explicit CSimpleIIRFilter(float coefficient);

    void Process(const float* in, float* out, std::int32_t count) noexcept;

private:
    float state = 0.0f; // y[n-1]
    float feedback;
    float gain;
};

class CSimpleFIRFilter {
public:
    // `coefficient` c, finite: tap1 = c, tap0 = 1 - |c|. c = -0.5 gives half the first difference.
    explicit CSimpleFIRFilter(float coefficient);

    void Process(const float* in, float* out, std::int32_t count) noexcept;

private:
    float previous = 0.0f; // x[n-1]
    float tap1;
    float tap0;
};

// Give kOk and a filter at rest; kBadArgument for a coefficient that is not finite and kOutOfMemory leave
// `filter` untouched.
std::int32_t CreateIIR(std::unique_ptr<CSimpleIIRFilter>& filter, float coefficient);
std::int32_t CreateFIR(std::unique_ptr<CSimpleFIRFilter>& filter, float coefficient);

} // namespace sonorelle
