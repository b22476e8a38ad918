// How a session is played in place of being exported.

#pragma once

#include "formats/midi_file_reader.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace sonorelle {

// What keys do.
enum class LiveInput { kHarmonies, kPitches, kTrigger };

struct PlayingSettings {
    std::optional<std::int32_t> blocks; // frames; none: not played, but exported
    std::optional<LiveInput> live;      // none: no keys
    std::vector<MidiFileMessage> keys;  // in the host's time
    bool record = false;                // what the keys make of the voices stays
};

} // namespace sonorelle
