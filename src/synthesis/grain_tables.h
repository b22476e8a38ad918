// What all grains are weighted and interpolated with. Built once, then only read: the voices of a bank share
// one set.

#pragma once

#include <array>
#include <cstdint>
#include <memory>

namespace sonorelle {

struct GrainTables {
    static constexpr std::int32_t kFadeLength = 32768;
    static constexpr std::int32_t kSincLength = 768;       // three zero crossings to one side
    static constexpr std::int32_t kSincOversampling = 256; // entries from one zero crossing to the next
    static constexpr float kKaiserBeta = 9.0F;             // side lobes below -90 dB
    static constexpr float kSincCutoff = 0.90234375F;      // of Nyquist: leaves the window's slope its room

    // Fills both; about 33,000 sines. Allocates nothing.
    GrainTables();

    // The rising side of every grain, 0 to 1: the cube of a quarter of a sine. The falling side is one minus
    // it, so that two equal grains one period apart add up to what they were cut from.
    std::array<float, kFadeLength> fade;
    std::array<float, kSincLength> sinc;      // right half of a windowed sinc
    std::array<float, kSincLength> sincDelta; // its first differences, 0 behind the last

    // Null when memory ran out.
    static std::shared_ptr<const GrainTables> Create() noexcept;
};

// One side of a grain: looks up the weights of a fade of `samples` samples.
class Fade {
public:
    // A fade of fewer than two samples has one weight, 0.
    Fade(const GrainTables& tables, std::int32_t samples)
        : table(tables.fade.data()),
          step(samples < 2
                   ? static_cast<float>(GrainTables::kFadeLength)
                   : static_cast<float>(GrainTables::kFadeLength - 1) / static_cast<float>(samples - 1)) {}

    // Weight of sample i, 0 <= i < samples; sample 0 alone in a fade of fewer than two.
    float operator[](std::int32_t i) const { return table[Entry(i)]; }

    // Weights of the `count` samples from `first` on, at most kMostAtOnce.
    static constexpr std::int32_t kMostAtOnce = 64;
    void Copy(std::int32_t first, std::int32_t count, float* weights) const {
        std::int32_t entries[kMostAtOnce];
        for (std::int32_t i = 0; i < count; ++i) entries[i] = Entry(first + i); // in whole vectors
        for (std::int32_t i = 0; i < count; ++i) weights[i] = table[entries[i]];
    }

private:
    std::int32_t Entry(std::int32_t i) const {
        return static_cast<std::int32_t>(static_cast<float>(i) * step + 0.5F);
    }

    const float* table;
    float step; // entries from one sample to the next
};

} // namespace sonorelle
