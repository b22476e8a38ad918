// What the user asks of an arrangement, checked and in the codes of the choir.

#pragma once

#include "cli/sound_settings.h"
#include "harmony/styles.h"

#include <array>
#include <cstdint>
#include <optional>

namespace sonorelle {

// A stretch of the recording; without an end it goes on to the recording's own.
struct RegionWish {
    double startSeconds = 0;
    std::optional<double> endSeconds;
};

struct ArrangementSettings {
    // Limits of what may be asked for; each is included.
    static constexpr std::int32_t kLargestTranspose = 24; // semitones, up or down
    static constexpr float kSlowestTempo = 4;             // a MIDI file's tempo cannot be much slower
    static constexpr float kFastestTempo = 998;
    static constexpr float kUsualTempo = 120;

    std::int32_t style = ConsortierClassic::kStyleIntelligent;
    std::int32_t arrangement = ConsortierClassic::kFourVoices;
    std::optional<std::int32_t> root;         // none: as found in the recording
    std::optional<std::int32_t> scale;        // of the melody; none: as found
    std::optional<std::int32_t> harmonyScale; // none: the melody's
    bool snap = true;
    std::int32_t voiceRange = 1; // harmony voices above the melody
    float spread = 0.6F;
    std::array<std::int32_t, 4> intervals = {0, -2, 2, 5}; // scale steps, by voice
    std::int32_t transpose = 0;                            // semitones
    float tempo = kUsualTempo;                             // quarter notes per minute of the MIDI file
    std::optional<RegionWish> region;                      // none: the whole recording
    SoundSettings sound;

    bool HasChords() const { return style == ConsortierClassic::kStyleIntelligent; } // the others go without
};

} // namespace sonorelle
