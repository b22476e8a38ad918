#include "dsp/resample_int.h"

#include "dsp/resample_engine_impl.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

template class ResampleEngine<IntArithmetic>;

IntArithmetic::Entry IntArithmetic::CentreEntry(double value) { return static_cast<Entry>(value * 32767.0); }

IntArithmetic::Entry IntArithmetic::TableEntry(double value) {
    return static_cast<Entry>(std::floor(value * 32767.0 + 0.5));
}

IntArithmetic::Sample IntArithmetic::Convolve(const Tap* taps, const Sample* samples, std::int32_t count,
                                              Gain gain) {
    // Wider than needed for usual signals, so that full scale through a filter of thousands of taps stays
    // right.
    std::int64_t sum = 0;
    for (std::int32_t n = 0; n < count; ++n) sum += (taps[n] * samples[n]) >> 8;
    const std::int64_t scaled = ((sum >> 7) * gain) >> 15;
    return static_cast<Sample>(std::clamp<std::int64_t>(scaled, -32768, 32767));
}

} // namespace sonorelle
