#include "dsp/real_fft_kernels.h"
#include "dsp/real_fft_passes.h"

namespace sonorelle {

const FftKernels& BaselineFftKernels() {
    using Passes = fft_passes::Passes<4>;
    static constexpr FftKernels kKernels = {
        Passes::FirstPassFromSignal, Passes::FirstPassFromParts, Passes::MiddlePass,  Passes::LastPass4,
        Passes::LastPass8,           Passes::SplitSpectra,       Passes::JoinSpectra, Passes::Interleave};
    return kKernels;
}

bool HasWideVectors() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx") != 0;
#else
    return false;
#endif
}

} // namespace sonorelle
