// The four voices become one stereo sound: fade, gain and pan, meters.
//
// A block of the mix takes these steps for each voice that is enabled:
//   1. the voice's buffer is faded in place, all voices by the same curve;
//   2. output 0 (left) and 1 (right) receive the buffer's channels, times the strip's gains; a mono recording
//      feeds both from its one channel;
//   3. the squared peak of what was added goes into the meters, and full scale or more raises the clip flag;
//   4. on request, a pair of outputs of its own receives the faded voice, without gain and pan.
//
//     CVoiceMix mix;
//     mix.Fade().FadeIn();
//     VoiceMixBlock block;
//     block.outputs = outputs;   // zeroed by the caller
//     block.outputCount = 2;
//     block.count = 64;
//     mix.Mix(voices, block);
//
// A quirk that stays: in a mono recording the fade counts twice on the right side (and in a voice's own
// outputs), since the one channel is faded once for each side: a start from the middle of the stage comes a
// few milliseconds later on the right. Mended, saved sessions would begin differently.
//
// Threads: Mix on the audio thread. Meters and clip flag may be read and cleared on any thread meanwhile; a
// peak may then stand one poll longer. The enabled flags are told to the bank by the caller. Nothing
// allocates, locks or throws.

#pragma once

#include "app/fade.h"
#include "app/strip_gain.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace sonorelle {

// The voices as the bank has made them.
struct VoiceMixInput {
    static constexpr std::int32_t kVoices = 4;

    std::array<float* const*, kVoices> buffers{}; // [voice][channel], faded in place; not null if enabled
    std::int32_t channels = 2;                    // of each voice, 1 or 2
    std::array<StripGain, kVoices> gains{};
    // Of the block before: the gains move from there in a straight line (VoiceMixBlock::length), since a step
    // would click.
    std::array<StripGain, kVoices> gainsBefore{};
    std::array<bool, kVoices> enabled{}; // as the bank rendered them (IsVoiceEnabled); a voice that is not
                                         // adds nothing, and its buffer is not touched
};

// What is mixed to where.
struct VoiceMixBlock {
    float* const* outputs = nullptr; // the two of the mix, then a pair for each voice
    std::int32_t outputCount = 0;    // 2 to CVoiceMix::kMostOutputs
    std::int32_t from = 0;           // index into the voices' buffers
    std::int32_t to = 0;             // index into the outputs
    std::int32_t count = 0;          // samples
    // Samples of the voices' whole block, over which the gains move; 0: they stand as they are.
    std::int32_t length = 0;
    bool singleVoiceOutput = false; // the voices' own outputs are written too
};

class CVoiceMix {
public:
    static constexpr std::int32_t kVoices = VoiceMixInput::kVoices;
    static constexpr std::int32_t kSides = 2;
    static constexpr std::int32_t kMostOutputs = kSides + kVoices * kSides;
    // Of a meter from one poll (0.1 s) to the next, in power: it falls by 1 dB.
    static constexpr float kPeakDecay = 0.8F;
    // Added at each poll, so that a meter at rest is no denormal number.
    static constexpr float kPeakFloor = 1e-24F;

    CFade& Fade() { return fade; }

    // Adds the voices to outputs 0 and 1 and overwrites the voices' own. Without an enabled voice nothing
    // happens, and the fade waits.
    void Mix(const VoiceMixInput& voices, const VoiceMixBlock& block);

    // The same into stereo pairs of samples, `count` of them from the start of the voices' buffers, without
    // the fade; `master` is a gain for each side of the sum. What was there is overwritten.
    void MixInterleaved(const VoiceMixInput& voices, StripGain master, float* interleaved,
                        std::int32_t count);

    // --- Meters: squared peaks; `voice` 0 to 3, `side` 0 or 1; 0 for another one ---

    float GetPeak(std::int32_t voice, std::int32_t side) const;
    void DecayPeaks(); // one poll, once the peaks have been shown

    bool IsClipped() const { return clipped.load(std::memory_order_relaxed); }
    void ClearClipped() { clipped.store(false, std::memory_order_relaxed); }

private:
    struct Meter {
        std::atomic<float> peak{0};      // what the strips show
        std::atomic<float> blockPeak{0}; // since the last poll
    };

    void MixChunk(const VoiceMixInput& voices, const VoiceMixBlock& block, std::int32_t offset,
                  std::int32_t count);
    static void CopyVoice(const VoiceMixInput& voices, std::int32_t voice, const VoiceMixBlock& block,
                          std::int32_t offset, std::int32_t count);
    void Measure(std::int32_t voice, std::int32_t side, float squaredPeak);

    CFade fade;
    std::array<std::array<Meter, kSides>, kVoices> meters;
    std::atomic<bool> clipped{false};
};

} // namespace sonorelle
