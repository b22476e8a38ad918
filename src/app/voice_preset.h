// What the strip of a voice is set to, and named sets of such settings for all four voices.
//
// Values are kept as the voice bank takes them and the documents store them (seconds, shares, ratios), not in
// the milliseconds, per cents and semitones of the controls.
//
//     VoicePreset preset = FactoryPresets()[kDefaultPreset];
//     preset.voices[2].mute = true;
//     const std::array<bool, kPresetVoices> audible = AudibleVoices(preset.voices);
//     for (std::int32_t voice = 0; voice < kPresetVoices; ++voice)
//         SendVoiceSettings(bank, voice, preset.voices[voice]);
//
// Any thread; a preset's name allocates, nothing else does.

#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace sonorelle {

class CVoiceBank;

inline constexpr std::int32_t kPresetVoices = 4; // 0 is the lead
inline constexpr std::int32_t kPresetCount = 2;
inline constexpr std::int32_t kDefaultPreset = 0; // the choir in its places
inline constexpr std::int32_t kFlatPreset = 1;    // every voice as sung, in the middle

struct VoiceSettings {
    float vol = 1;          // 0 to 1.333 (strip_gain.h)
    float pan = 0;          // -1 (left) to 1 (right)
    float quantize = 0;     // 0 (as sung) to 1 (on the note)
    float delay = 0;        // seconds, 0 to 0.1
    float formantShift = 1; // ratio, 2^(-8/12) to 2^(8/12)
    float drift = 0;        // 1 (no variation of pitch) over 0 (as sung) to -1 (doubled)
    float glide = 0.5F;     // 0 to 1: from note to note in 0 to 0.5 s
    float timing = 0;       // seconds of humanising, 0 to 0.2
    bool mute = false;
    bool solo = false;

    bool operator==(const VoiceSettings&) const = default;
};

using VoiceSettingsOfAll = std::array<VoiceSettings, kPresetVoices>;

struct VoicePreset {
    std::string name;
    VoiceSettingsOfAll voices;
};

// The presets that a new session has: "default" and "flat".
std::array<VoicePreset, kPresetCount> FactoryPresets();

// Which voices sound: those on solo if there are any, whether muted or not; otherwise all that are not muted.
std::array<bool, kPresetVoices> AudibleVoices(const VoiceSettingsOfAll& voices);

// Gives the bank what it needs of the settings: delay, timing, formant, quantize, drift and glide. Volume and
// pan belong to the mix. AudioLock is held when audio runs. A voice other than 0 to 3 is ignored.
void SendVoiceSettings(CVoiceBank& bank, std::int32_t voice, const VoiceSettings& settings);

} // namespace sonorelle
