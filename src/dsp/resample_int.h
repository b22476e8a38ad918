// The band-limited resampler on i16 samples, in integers: resample_base.h tells what it does. Nothing in the
// system builds it; it serves callers whose samples are i16 anyway.
//
// The table is held in 1/32767, a term is cut to 1/256 and the gain is held in 1/32768, each cut towards
// minus infinity: the output lies up to about two steps of i16 below the exact value. Where the filter
// overshoots full scale the output is held to the range of i16; to let it wrap round would be heard as a
// click.

#pragma once

#include "dsp/resample_engine.h"

#include <cstdint>

namespace sonorelle {

struct IntArithmetic {
    using Sample = std::int16_t;
    using Entry = std::int16_t;
    using Tap = std::int32_t;
    using Gain = std::int32_t;

    static Entry CentreEntry(double value); // cut off, where all other entries are rounded
    static Entry TableEntry(double value);
    static Gain MakeGain(double gain) { return static_cast<Gain>(gain * 32768.0); }
    static Sample Clean(Sample sample) { return sample; }

    static Tap Interpolate(Entry entry, Entry delta, std::int32_t part) {
        return ((delta * part) >> 7) + entry;
    }

    static Sample Convolve(const Tap* taps, const Sample* samples, std::int32_t count, Gain gain);
};

class CResampleInt final : public ResampleEngine<IntArithmetic> {
public:
    using ResampleEngine::ResampleEngine;
};

} // namespace sonorelle
