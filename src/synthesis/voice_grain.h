// One grain of a voice: a stretch of the recording around a pitch mark, read at the formant's rate by linear
// interpolation, under one rising and one falling fade.
//
// The read position is a fixed-point number with 24 fraction bits: it holds every formant ratio that a float
// can tell between one half and two exactly, so that no error adds up over a long grain and each sample
// depends on its index alone. A read outside the input, before its first sample or behind its last, is 0.

#pragma once

#include "synthesis/grain_tables.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace sonorelle {

class VoiceGrain {
public:
    // `mark`: index of the mark in the input; `fill`: samples of the input; `ratio`: input samples per output
    // sample.
    VoiceGrain(const GrainTables& grainTables, std::int32_t mark, std::int32_t fill, float ratio,
               float grainGain)
        : tables(grainTables), centre(std::int64_t{mark} * kOne), inputFill(fill),
          step(static_cast<std::int64_t>(std::lrint(static_cast<double>(ratio) * kOne))), gain(grainGain) {}

    // Adds the `samples` samples before the mark onto `out`.
    void AddRise(const float* input, std::int32_t samples, float* out) const {
        const float level = gain;
        Run(input, centre - samples * step, samples,
            [=](std::int32_t at, std::int32_t count, const float* read, const float* weights) {
                float* const to = out + at;
                for (std::int32_t i = 0; i < count; ++i) to[i] += read[i] * weights[i] * level;
            });
    }

    // Writes the `samples` samples from the mark on into `out`.
    void WriteFall(const float* input, std::int32_t samples, float* out) const {
        const float level = gain;
        Run(input, centre, samples,
            [=](std::int32_t at, std::int32_t count, const float* read, const float* weights) {
                float* const to = out + at;
                for (std::int32_t i = 0; i < count; ++i) to[i] = read[i] * (1.0F - weights[i]) * level;
            });
    }

private:
    static constexpr std::int32_t kFractionBits = 24;
    static constexpr std::int64_t kOne = std::int64_t{1} << kFractionBits;
    // Samples at a time: what is read and weighted lies side by side in the first cache, so that all but the
    // look-ups is done in whole vectors.
    static constexpr std::int32_t kChunk = Fade::kMostAtOnce;

    // Hands the samples from `start` on to `use`, chunk by chunk, with the weights of the rise.
    template<typename Use>
    void Run(const float* input, std::int64_t start, std::int32_t samples, Use use) const {
        if (samples < 1) return;
        const std::int64_t first = start >> kFractionBits;
        const std::int64_t last = ((start + (samples - 1) * step) >> kFractionBits) + 1;
        const bool inside = first >= 0 && last < inputFill;
        const Fade fade(tables, samples);
        float read[kChunk];
        float weights[kChunk];
        for (std::int32_t at = 0; at < samples; at += kChunk) {
            const std::int32_t count = std::min(samples - at, kChunk);
            fade.Copy(at, count, weights);
            const std::int64_t from = start + at * step;
            if (inside && step == kOne) { // formants as sung: the samples themselves
                std::copy_n(input + (from >> kFractionBits), count, read);
            } else if (inside) {
                Interpolate(
                    from, count, [=](std::int64_t k) { return input[k]; }, read);
            } else {
                const std::int32_t fill = inputFill;
                Interpolate(
                    from, count, [=](std::int64_t k) { return k >= 0 && k < fill ? input[k] : 0.0F; }, read);
            }
            use(at, count, read, weights);
        }
    }

    template<typename Read>
    void Interpolate(std::int64_t start, std::int32_t count, Read sample, float* read) const {
        constexpr float kFraction = 1.0F / static_cast<float>(kOne);
        std::int64_t at = start;
        for (std::int32_t i = 0; i < count; ++i, at += step) {
            const std::int64_t k = at >> kFractionBits;
            const float share = static_cast<float>(static_cast<std::int32_t>(at & (kOne - 1))) * kFraction;
            read[i] = share * sample(k + 1) + (1.0F - share) * sample(k);
        }
    }

    const GrainTables& tables;
    std::int64_t centre; // fixed point
    std::int32_t inputFill;
    std::int64_t step; // fixed point
    float gain;
};

} // namespace sonorelle
