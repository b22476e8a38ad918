// What the bank holds for one voice.

#pragma once

#include "dsp/ring_buffer.h"
#include "synthesis/pitch2freq.h"
#include "synthesis/virelaine_synthesis.h"
#include "synthesis/voice_bank.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

namespace sonorelle {

// The recording is read at least so many samples at a time.
inline constexpr std::int32_t kReadAtLeast = 4096;

struct CVoiceBank::Voice {
    // As set.
    float delay = 0; // seconds
    bool switchedOn = true;
    // These are set from any thread, and taken at the start of each block.
    std::atomic<float> formantShift{1}; // ratio
    std::atomic<float> quantize{0};     // 0 to 1
    std::atomic<float> drift{0};        // 1 to -1
    std::atomic<float> glideTime{0.1F}; // longest glide, seconds
    std::atomic<float> timing{0};       // seconds
    static_assert(std::atomic<float>::is_always_lock_free);

    std::unique_ptr<CvirelaineSynthesis> synthesis;
    std::unique_ptr<CPitch2Freq> law;
    std::array<std::unique_ptr<RingBuffer>, 2> delayLines; // one a channel

    float interval = 0;         // smoothed, semitones above the note
    float pitchRatio = 1;       // last ratio of target to source frequency
    float gain = 1;             // of this block's grains
    std::int32_t gapBlocks = 0; // since the voice last had a sounding note
    std::int32_t need = 0;      // input samples of this block; negative: there are no marks to go by
    bool enabled = true;        // switched on, and one of the arrangement's voices
    bool exhausted = false;     // no marks here: silent until the next Seek

    std::int32_t lastNote = -1;   // note whose MIDI note is sounding; -1 for none
    std::int32_t soundingKey = 0; // its key

    bool HasNoteSounding() const { return lastNote != -1; }
};

} // namespace sonorelle
