// The transform behind the vector forms of CFFT: a real FFT without scaling, spectrum in interleaved order.
//
// A real signal of N samples is taken as N / 2 complex ones (even samples real, odd samples imaginary),
// transformed by a Stockham autosort FFT of radix 4 (radix 8 in the last pass where N / 2 is an odd power of
// two), and the spectra of the even and the odd samples are then told apart and combined. Stockham's form
// needs no bit reversal and reads and writes memory in order, with real and imaginary parts in arrays of
// their own, so that each pass is made of whole vectors. See C. Van Loan, "Computational Frameworks for the
// Fast Fourier Transform" (1992), sections 1.7 and 4.3.
//
// One object serves one thread at a time; transforming allocates nothing.

#pragma once

#include "dsp/aligned_array.h"

#include <cstdint>
#include <vector>

namespace sonorelle {

struct FftKernels;

class RealFft {
public:
    // `transformSize`: N, a power of two, 2 or more; `variant`: which form of the passes to run (the results
    // are the same). False when memory fails or the size is none of these.
    [[nodiscard]] bool Init(std::int32_t transformSize, const FftKernels& variant);

    // `data`: `size` samples in, spectrum out: R[0], R[N/2], R[1], I[1], R[2], I[2], ...
    void Forward(float* data);
    // The way back; forward and inverse together multiply by `size`.
    void Inverse(float* data);

private:
    // The twiddle factors of one radix-4 pass: w^p, w^2p, w^3p for p = 0 to n / 4 - 1, each six numbers for
    // the passes that take one p at a time, and six arrays for the first pass, which takes four.
    struct Pass {
        std::int32_t length; // n: length of the transforms that this pass splits
        std::int32_t stride; // s: how many of them are interleaved
        AlignedArray twiddles;
    };

    void TransformSmall(float* data, bool inverse) const;
    void TransformComplex(float*& real, float*& imaginary);

    const FftKernels* kernels = nullptr;
    std::int32_t size = 0;
    std::int32_t half = 0; // complex length
    std::vector<Pass> passes;
    AlignedArray rotation; // cos and sin of 2 pi k / N for k = 0 to half / 2, two arrays
    AlignedArray work[4];  // two pairs of real and imaginary parts, written in turn
};

} // namespace sonorelle
