// Where the sound is cut (a stop, a jump, the end of the region), a step is left in the waveform, and a step
// clicks. A seam closes it: what is missing between the last sample before and the first one behind is added
// to the samples behind, and dies away within a few milliseconds.
//
//     CSeam seam;
//     seam.CutAt(120);                       // the sound breaks off before sample 120 of this block
//     seam.Close(outputs, 10, 512);          // once the block is written
//
// Silence behind a cut is thus reached in kLength samples instead of one. Where nothing was cut, nothing
// changes.
//
// Threads: Cut from any thread, under the lock that guards the sound; all else on the audio thread. Nothing
// allocates. Outputs that share memory get whatever stands there last.

#pragma once

#include <array>
#include <cstdint>

namespace sonorelle {

class CSeam {
public:
    static constexpr std::int32_t kMostOutputs = 10;
    // 5.8 ms at 44.1 kHz: the step turns into a thump below 100 Hz, which a voice covers.
    static constexpr std::int32_t kLength = 256;

    void Cut() { cutAt = 0; }                           // before the next sample
    void CutAt(std::int32_t sample) { cutAt = sample; } // of the block that is being written
    // At the end of each block, also of a silent one: `outputs` hold `frames` samples (at least 1) each.
    void Close(float* const* outputs, std::int32_t outputCount, std::int32_t frames);

private:
    static constexpr std::int32_t kNowhere = -1;

    std::int32_t cutAt = kNowhere;
    std::int32_t passed = kLength;                // samples since the last cut
    std::array<float, kMostOutputs> step{};       // that was closed there
    std::array<float, kMostOutputs> lastSample{}; // of the block before
};

} // namespace sonorelle
