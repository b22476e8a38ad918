// One voice over a recording in memory, fed as it asks, with marks a hundred samples apart.
#pragma once

#include "analysis/pitch_marks.h"
#include "synthesis/virelaine_synthesis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <numbers>
#include <utility>
#include <vector>

namespace sonorelle::test {

inline constexpr std::int32_t kBlock = 32;
inline constexpr std::int32_t kPeriod = 100;
inline constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

inline double RiseWeight(double i, double samples) { // a quarter of a sine, cubed
    return std::pow(std::sin(std::numbers::pi / 2 * i / (samples - 1)), 3.0);
}

inline PitchMarkRecord Mark(std::int32_t position) {
    PitchMarkRecord mark;
    mark.position = position;
    mark.voicing = 20;
    mark.period = static_cast<float>(kPeriod);
    return mark;
}

class SungVoice {
public:
    explicit SungVoice(std::vector<float> samples, std::vector<PitchMarkRecord> records = EvenMarks(),
                       VoiceLimits limits = {kPeriod * 2, 10000})
        : recording(std::move(samples)) {
        marks.SetData(records.data(), static_cast<std::int32_t>(records.size()));
        voice = std::make_unique<CvirelaineSynthesis>(marks, kBlock, 1, limits);
    }

    static std::vector<PitchMarkRecord> EvenMarks() {
        std::vector<PitchMarkRecord> records;
        for (std::int32_t i = 0; i < 1000; ++i) records.push_back(Mark(i * kPeriod));
        return records;
    }

    // Skips the fade-in.
    void PassFade() {
        for (int i = 0; i < CvirelaineSynthesis::kFadeIn / kBlock; ++i) ASSERT_EQ(Render(), 0);
        out.clear();
    }

    std::int32_t Render(float gain = 1) {
        std::vector<float> block(kBlock, 9.0F);
        const std::int32_t need = voice->GetRequiredInput(kBlock);
        if (need < 0) return need;
        std::vector<float> in(static_cast<std::size_t>(need));
        for (std::size_t i = 0; i < in.size(); ++i) {
            const std::size_t at = static_cast<std::size_t>(voice->GetInputEnd()) + i;
            in[i] = at < recording.size() ? recording[at] : 0.0F;
        }
        const float* from = in.data();
        float* to = block.data();
        const std::int32_t result = voice->RenderBlock(&from, need, &to, gain);
        out.insert(out.end(), block.begin(), block.end());
        return result;
    }

    void Play(int blocks) {
        for (int i = 0; i < blocks; ++i) ASSERT_EQ(Render(), 0);
    }

    std::vector<float> recording;
    CPitchMarks marks;
    std::unique_ptr<CvirelaineSynthesis> voice;
    std::vector<float> out;
};

inline std::vector<float> Constant() { return std::vector<float>(100000, 1.0F); }

inline std::vector<float> Pulses() {
    std::vector<float> samples(100000, 0.0F);
    for (std::size_t i = 0; i < samples.size(); i += kPeriod) samples[i] = 1;
    return samples;
}

inline std::vector<std::size_t> PulsePlaces(const std::vector<float>& samples) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (samples[i] > 0.999F) places.push_back(i);
    return places;
}

} // namespace sonorelle::test
