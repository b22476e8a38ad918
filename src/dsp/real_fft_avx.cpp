// Compiled for AVX (see the build file) and run only where it is there.

#include "dsp/real_fft_kernels.h"

#if defined(__AVX__)

#include "dsp/real_fft_passes.h"

namespace sonorelle {

const FftKernels& WideFftKernels() {
    using Passes = fft_passes::Passes<8>;
    static constexpr FftKernels kKernels = {
        Passes::FirstPassFromSignal, Passes::FirstPassFromParts, Passes::MiddlePass,  Passes::LastPass4,
        Passes::LastPass8,           Passes::SplitSpectra,       Passes::JoinSpectra, Passes::Interleave};
    return kKernels;
}

} // namespace sonorelle

#else

namespace sonorelle {

const FftKernels& WideFftKernels() { return BaselineFftKernels(); }

} // namespace sonorelle

#endif
