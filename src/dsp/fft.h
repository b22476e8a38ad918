// Real-input FFT of a power-of-two size with an optional analysis window.
//
// Two forms exist, which hold their spectra in different orders. For a real signal of N samples with the
// spectrum X[k] = R[k] + i I[k], k = 0 to N / 2:
//
//   split order (CFFT):              R[0] R[1] ... R[N/2] I[N/2 - 1] ... I[2] I[1]
//   interleaved order (vector forms): R[0] R[N/2] R[1] I[1] R[2] I[2] ... R[N/2 - 1] I[N/2 - 1]
//
// What a caller sees in a magnitude spectrum or after the inverse transform is the same. Transforms are not
// scaled: forward and inverse together multiply by N. One object serves one thread at a time; nothing
// allocates after Init.

#pragma once

#include "dsp/aligned_array.h"
#include "platform/processor_features.h"

#include <cstdint>
#include <memory>

namespace sonorelle {

// Analysis windows, for i = 0 to N - 1.
enum FftWindow : std::int32_t {
    kNoWindow = 0,
    kSineSquaredWindow = 1, // sin^2(pi i / N)
    kBlackmanWindow = 2     // 0.42 - 0.5 cos(2 pi i / N) + 0.08 cos(4 pi i / N)
};

// Cosines and sines of an angle and of its triple.
struct SplitRadixRotation {
    float cos1, sin1, cos3, sin3;
};

// The plain form: split-radix real FFT (H. V. Sorensen, D. L. Jones, M. T. Heideman, C. S. Burrus,
// "Real-Valued Fast Fourier Transform Algorithms", IEEE Trans. ASSP 35, 1987).
class CFFT {
public:
    // `transformSize`: N, a power of two. Init must have given 0 before anything else is called.
    explicit CFFT(std::int32_t transformSize) : size(transformSize) {}
    virtual ~CFFT() = default;
    CFFT(const CFFT&) = delete;
    CFFT& operator=(const CFFT&) = delete;

    // All work in place on N floats (aligned to 16 bytes for the vector forms' best speed, any alignment is
    // correct).
    virtual void Forward(float* data); // windows, then transforms
    virtual void Inverse(float* data);
    // Spectrum to magnitudes |X[k]| in data[0 .. N/2); data[N/2] is not to be read, everything above is 0.
    virtual void Magnitude(float* data);
    // Spectrum to powers |X[k]|^2: in data[k] for the plain form, in data[2k] for the vector forms, zeros
    // between.
    virtual void Power(float* data);
    // Plain form: nothing. Vector forms: values below 1e-37 become 0, negative ones too.
    virtual void Clean(float* data, std::int32_t count);
    // Builds tables and window. 0, kBadArgument for a size that is no power of two, or kOutOfMemory.
    virtual std::int32_t Init(std::int32_t windowType);
    virtual void ApplyWindow(float* data);

    std::int32_t GetSize() const { return size; }

protected:
    std::int32_t BuildWindow(std::int32_t windowType);

private:
    SplitRadixRotation RotationAt(std::int32_t step) const; // at step x 2 pi / N, step from 1 to N / 8 - 1

    std::int32_t size;
    AlignedArray window;   // N, or empty
    AlignedArray sinTable; // sin(j step) for j = 1 to N / 8 - 1, then sin(3 j step); step = 2 pi / N
    AlignedArray cosTable;
};

// Makes the form that the processor's feature word asks for: CFFT_SSE2 with kFeatureSse2, else CFFT_SSE with
// kFeatureSse, else CFFT. 0, or Init's failure; `fft` is then untouched.
std::int32_t CreateFFT(std::unique_ptr<CFFT>& fft, std::int32_t size, std::int32_t windowType,
                       std::uint32_t features = ProcessorFeatureWord());

} // namespace sonorelle
