// The passes of RealFft, in one variant for each vector width.
//
// All variants do the same operations in the same order on each element, so their results are the same to the
// bit; which one runs is a matter of speed alone.

#pragma once

namespace sonorelle {

// Signals and spectra in pairs of real and imaginary parts; `length` and `stride` as in RealFft::Pass.
struct FftKernels {
    // Takes the signal itself: even samples are real, odd ones imaginary parts.
    void (*firstPassFromSignal)(const float* data, float* outRe, float* outIm, int length,
                                const float* twiddles);
    void (*firstPassFromParts)(const float* re, const float* im, float* outRe, float* outIm, int length,
                               const float* twiddles);
    void (*middlePass)(const float* re, const float* im, float* outRe, float* outIm, int length, int stride,
                       const float* twiddles);
    void (*lastPass4)(const float* re, const float* im, float* outRe, float* outIm, int stride);
    void (*lastPass8)(const float* re, const float* im, float* outRe, float* outIm, int stride);
    // From the transform of the complex signal to the spectrum of the real one, and back (times two). `half`:
    // the complex length; `rotation`: half / 2 + 1 cosines, then as many sines, of 2 pi k / (2 half).
    void (*splitSpectra)(float* data, const float* re, const float* im, int half, const float* rotation);
    void (*joinSpectra)(const float* data, float* re, float* im, int half, const float* rotation);
    void (*interleave)(const float* even, const float* odd, float* data, int half);
};

// Four floats at once, in the instruction set that every machine of the architecture has.
const FftKernels& BaselineFftKernels();
// Eight floats at once where the architecture knows AVX, else the baseline. To be run only where
// HasWideVectors() holds.
const FftKernels& WideFftKernels();
// Whether this processor and this operating system run the wide variant.
bool HasWideVectors();

} // namespace sonorelle
