// The fade of the whole mix when playback starts and stops: an exponential approach, so that neither end
// clicks.
//
//     CFade fade;
//     fade.FadeIn();
//     fade.Next(curve, 64); // the gains of the next 64 samples, rising from 0
//
// Threads: FadeIn, FadeOut and IsFadingIn from any thread; all else on the audio thread. Nothing allocates.

#pragma once

#include <atomic>
#include <cstdint>

namespace sonorelle {

class CFade {
public:
    // exp(-0.0021484375) a sample: 465 samples (10.6 ms at 44.1 kHz) to 37%. Counted in samples, so that it
    // is shorter at higher rates; 1024 samples, the notice that a stop is given, leave 11%.
    static constexpr float kCoefficient = 0.99785387F;
    // Keeps a fade that has arrived at 0 away from denormal numbers, which would make each sample a hundred
    // times slower. It comes to 4.7e-22, or -427 dB.
    static constexpr float kDenormalGuard = 1e-24F;

    void FadeIn() { Approach(1); }
    void FadeOut() { Approach(0); }
    void Silence() { fadeGain = 0; } // at once; the direction stays
    bool IsFadingIn() const {
        return fadeTarget.load(std::memory_order_relaxed) == 1;
    } // or has arrived there

    // Writes the gains of the next `count` samples, and moves on by them.
    void Next(float* curve, std::int32_t count);
    float GetGain() const { return fadeGain; } // of the last sample

private:
    void Approach(float target) {
        fadeTarget.store(target, std::memory_order_relaxed);
        fadeCoefficient.store(kCoefficient, std::memory_order_relaxed);
    }

    float fadeGain = 0;
    std::atomic<float> fadeTarget{0};
    std::atomic<float> fadeCoefficient{1}; // stands still until the first start
};

static_assert(std::atomic<float>::is_always_lock_free);

} // namespace sonorelle
