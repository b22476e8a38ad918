// How an arrangement is to sound, in the units of the voices' strips: what a user sets and reads back.

#pragma once

#include "cli/voice_strip.h"

#include <array>
#include <cstdint>
#include <optional>

namespace sonorelle {

struct SoundSettings {
    // Limits of what may be asked for; each is included.
    static constexpr double kLowestTuning = 350;  // Hz: from a third below the usual ...
    static constexpr double kHighestTuning = 500; // ... to a whole tone above
    static constexpr double kSlowestSpeed = 0.01; // a second lasts a minute and a half
    static constexpr double kFastestSpeed = 20;   // beyond, grains of low voices outrun what is read for them

    std::int32_t preset = kDefaultPreset;
    // What the presets are, by number: a session may have changed them.
    std::array<VoiceStrips, kPresetCount> presets = {StripsOfPreset(kDefaultPreset),
                                                     StripsOfPreset(kFlatPreset)};
    VoiceStrips voices = StripsOfPreset(kDefaultPreset); // solo on at most one
    std::optional<float> tuning;                         // Hz of A4; none: the singer's own
    float speed = 1;                                     // times as fast as the recording
};

} // namespace sonorelle
