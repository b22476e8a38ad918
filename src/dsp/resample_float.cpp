#include "dsp/resample_float.h"

#include "dsp/finite.h"
#include "dsp/resample_engine_impl.h"

namespace sonorelle {

template class ResampleEngine<FloatArithmetic>;

FloatArithmetic::Sample FloatArithmetic::Clean(Sample sample) { return FiniteOrZero(sample); }

FloatArithmetic::Sample FloatArithmetic::Convolve(const Tap* taps, const Sample* samples, std::int32_t count,
                                                  Gain gain) {
    float sums[8] = {};
    for (std::int32_t n = 0; n < count; n += 8) {
        for (std::int32_t lane = 0; lane < 8; ++lane) sums[lane] += taps[n + lane] * samples[n + lane];
    }
    for (std::int32_t lane = 0; lane < 4; ++lane) sums[lane] += sums[lane + 4];
    return ((sums[0] + sums[2]) + (sums[1] + sums[3])) * gain;
}

} // namespace sonorelle
