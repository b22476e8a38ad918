// The strip of one voice in the mix, with the controls and the units that a user knows.

#pragma once

#include "app/voice_controls.h"
#include "app/voice_preset.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace sonorelle {

struct VoiceStrip {
    float vol = 1;     // gain; 1 leaves the voice as loud as it was sung
    float pan = 0;     // -1 left to 1 right
    float delay = 0;   // ms
    float shape = 0;   // semitones that the formants move
    float tune = 0;    // % of the way from the sung pitch to the note's own
    float drift = 100; // % of the pitch variation within a note
    float glide = 50;  // % of the longest transition between notes
    float time = 0;    // % of the largest human offset in time
    bool mute = false;
    bool solo = false;
    bool operator==(const VoiceStrip&) const = default;
};

// One control of a strip that has a number; its range is GetVoiceControl's.
struct StripControl {
    const char* key; // as it is written in an option
    VoiceControl control;
    float VoiceStrip::*value;
};

// In the order of the strip.
std::span<const StripControl> StripControls();

// Sets one control from "vol=0.5", "mute" or "solo". Blanks around a key and a number are allowed. Empty when
// all is well; else what is allowed, and nothing has changed.
std::string SetStripControl(VoiceStrip& strip, std::string_view text);

// What differs from `usual`, as an option would say it: "vol=0.3,mute". A switch that is off where it usually
// is on cannot be said.
std::string StripChanges(const VoiceStrip& strip, const VoiceStrip& usual);

using VoiceStrips = std::array<VoiceStrip, kPresetVoices>;

// The strips of kDefaultPreset or kFlatPreset.
VoiceStrips StripsOfPreset(std::int32_t preset);

// Of settings in the units of the voice bank, and the other way round.
VoiceStrips StripsOfSettings(const VoiceSettingsOfAll& voices);
VoiceSettings SettingsOfStrip(const VoiceStrip& strip);
VoiceSettingsOfAll SettingsOfStrips(const VoiceStrips& strips);

} // namespace sonorelle
