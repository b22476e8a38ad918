// Four voices and ten outputs for tests of the mix.

#pragma once

#include "app/voice_mix.h"

#include <array>
#include <cstdint>
#include <random>
#include <vector>

namespace sonorelle::test {

inline constexpr std::int32_t kSize = 512; // samples of the voices' buffers and the outputs
// Four voices and ten outputs with everything that Mix wants of them.
struct Desk {
    explicit Desk(std::int32_t channels = 2, float level = 0) {
        for (auto& voice : samples)
            for (auto& channel : voice) channel.assign(kSize, level);
        for (std::size_t v = 0; v < samples.size(); ++v) {
            for (std::size_t c = 0; c < samples[v].size(); ++c) pointers[v][c] = samples[v][c].data();
            voices.buffers[v] = pointers[v].data();
        }
        voices.channels = channels;
        voices.gains.fill({1, 1});
        voices.enabled.fill(true);
        for (std::size_t i = 0; i < outputs.size(); ++i) {
            outputs[i].assign(kSize, 0.0F);
            outputPointers[i] = outputs[i].data();
        }
        block.outputs = outputPointers.data();
        block.outputCount = CVoiceMix::kMostOutputs;
        block.count = kSize;
    }
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    void SetVoice(std::size_t voice, float level) {
        for (auto& channel : samples[voice]) channel.assign(kSize, level);
    }
    void EnableOnly(std::size_t voice) {
        voices.enabled.fill(false);
        voices.enabled[voice] = true;
    }
    void Randomise(std::uint32_t seed) {
        std::mt19937 random(seed);
        const auto next = [&] {
            return static_cast<float>(static_cast<double>(random()) / 2147483648.0 - 1); // -1 to 1
        };
        for (auto& voice : samples)
            for (auto& channel : voice)
                for (float& sample : channel) sample = next();
        for (StripGain& gain : voices.gains) gain = {next() + 1, next() + 1};
    }
    void Mix(CVoiceMix& mix) const { mix.Mix(voices, block); }

    std::array<std::array<std::vector<float>, 2>, 4> samples;
    std::array<std::array<float*, 2>, 4> pointers{};
    std::array<std::vector<float>, CVoiceMix::kMostOutputs> outputs;
    std::array<float*, CVoiceMix::kMostOutputs> outputPointers{};
    VoiceMixInput voices;
    VoiceMixBlock block;
};

// A mix whose fade has arrived, and the gain that it has arrived at: a little below 1.
inline float FadeFullyIn(CVoiceMix& mix) {
    mix.Fade().FadeIn();
    std::vector<float> curve(50000);
    mix.Fade().Next(curve.data(), static_cast<std::int32_t>(curve.size()));
    return mix.Fade().GetGain();
}

inline std::vector<float> FadeInCurve(std::int32_t count) {
    CFade fade;
    fade.FadeIn();
    std::vector<float> curve(static_cast<std::size_t>(count));
    fade.Next(curve.data(), count);
    return curve;
}

} // namespace sonorelle::test
