// Samples between samples: band-limited interpolation from a table of a windowed sinc, with linear
// interpolation between the table's entries. Where a grain is read faster than it was recorded the sinc is
// stretched by the ratio, and so is the filter that keeps its upper partials from folding down.
//
// J. O. Smith, "Digital Audio Resampling Home Page". The positions are fixed-point numbers with 15 fraction
// bits. A sample outside the signal counts as 0.

#pragma once

#include "synthesis/grain_tables.h"

#include <cstdint>

namespace sonorelle {

class SincInterpolation {
public:
    static constexpr std::int32_t kPositionBits = 15; // of the fraction of a position
    static constexpr std::int32_t kEntryBits = 7;     // of the fraction between two entries
    static constexpr std::int32_t kEntry = 1 << kEntryBits;
    // Step through the table for a grain that is read at its own rate or slower, in 1/128 of an entry.
    static constexpr std::int32_t kFullStep = GrainTables::kSincOversampling * kEntry;

    // `rate`: signal samples from one read sample to the next; `tableStep`: 1 to kFullStep; `amplitude`: what
    // the sum is multiplied by. The signal is `count` samples from `samples` on, and outlives the object.
    SincInterpolation(const GrainTables& grainTables, std::int32_t tableStep, float readRate, float amplitude,
                      const float* samples, std::int32_t count)
        : tables(grainTables), step(tableStep), rate(static_cast<double>(readRate)), gain(amplitude),
          signal(samples), fill(count), reach(kLimit / tableStep + 1) {}

    // Hands the read samples `begin` to `end` - 1 to `use(index, sample)`; sample 0 is the one at index
    // `base` of the signal.
    template<typename Use>
    void Run(std::int64_t base, std::int32_t begin, std::int32_t end, Use use) const {
        if (begin >= end) return;
        const std::int64_t lowest = base + (Position(begin) >> kPositionBits) - reach;
        const std::int64_t highest = base + (Position(end - 1) >> kPositionBits) + reach;
        const float* const samples = signal;
        const std::int64_t count = fill;
        if (lowest >= 0 && highest < count) {
            Read(
                base, begin, end, [samples](std::int64_t p) { return samples[p]; }, use);
        } else {
            Read(
                base, begin, end,
                [samples, count](std::int64_t p) { return p >= 0 && p < count ? samples[p] : 0.0F; }, use);
        }
    }

private:
    static constexpr std::int32_t kLimit = GrainTables::kSincLength * kEntry; // end of the table
    static constexpr std::int32_t kFractionMask = (1 << kPositionBits) - 1;

    // Of read sample i, from the first one on. Each follows from its index alone: no error adds up.
    std::int64_t Position(std::int32_t i) const {
        return static_cast<std::int64_t>(static_cast<double>(i) * rate * (1 << kPositionBits) + 0.5);
    }

    float Weight(std::int32_t at) const {
        constexpr float kPerEntry = 1.0F / static_cast<float>(kEntry);
        const auto entry = static_cast<std::size_t>(at >> kEntryBits);
        return tables.sinc[entry] +
               tables.sincDelta[entry] * static_cast<float>(at & (kEntry - 1)) * kPerEntry;
    }

    template<typename Sample, typename Use>
    void Read(std::int64_t base, std::int32_t begin, std::int32_t end, Sample sample, Use use) const {
        for (std::int32_t i = begin; i < end; ++i) {
            const std::int64_t position = Position(i);
            use(i, Between(base + (position >> kPositionBits),
                           static_cast<std::int32_t>(position & kFractionMask), sample));
        }
    }

    // The signal at index p and a fraction of 1/32768.
    template<typename Sample>
    float Between(std::int64_t p, std::int32_t fraction, Sample sample) const {
        float left = 0;
        std::int64_t k = p;
        for (std::int32_t at = (fraction * step) >> kPositionBits; at < kLimit; at += step)
            left += Weight(at) * sample(k--);

        const std::int32_t rest = -fraction & kFractionMask;
        std::int32_t at = (rest * step) >> kPositionBits;
        if (rest == 0) at += step; // the sample at p itself is in the left wing
        float right = 0;
        k = p + 1;
        for (; at < kLimit - kEntry; at += step) right += Weight(at) * sample(k++);
        return (left + right) * gain;
    }

    const GrainTables& tables;
    std::int32_t step;
    double rate;
    float gain;
    const float* signal;
    std::int64_t fill;
    std::int64_t reach; // samples to either side
};

} // namespace sonorelle
