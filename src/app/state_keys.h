// The keys of the documents that a host keeps, for those who write and those who read them.

#pragma once

#include "app/state_document.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sonorelle {

inline constexpr std::string_view kFileSettingsSection = "FileSettings";
inline constexpr std::string_view kSnapshotsSection = "Snapshots";
inline constexpr std::string_view kMixerSection = "MixerSettings";
inline constexpr std::string_view kPresetsSection = "Presets";
inline constexpr std::string_view kProgramSection = "Preset"; // of a document of its own

inline std::string Numbered(std::string_view prefix, std::int32_t index) {
    return std::string(prefix) + std::to_string(index);
}
inline std::string SnapshotSection(std::int32_t index) { return Numbered("Snapshot_", index); }
inline std::string PresetSection(std::int32_t index) { return Numbered("Preset_", index); }
inline std::string VoiceElement(std::int32_t voice) { return Numbered("Voice_", voice); }

struct VoiceNumberKey {
    std::string_view name;
    std::optional<float> SavedVoice::*field;
    double lowest;
    double highest;
};

// Eight semitones down to eight up.
inline constexpr double kLowestShape = 0.62996052494743658;
inline constexpr double kHighestShape = 1.5874010519681994;

// clang-format off
inline constexpr std::array<VoiceNumberKey, 8> kVoiceNumberKeys = {{
    // in the order of writing                       lowest        highest
    { "Vol",          &SavedVoice::vol,              0,            1.333         },
    { "Pan",          &SavedVoice::pan,             -1,            1             },
    { "Delay",        &SavedVoice::delay,            0,            0.1           }, // s
    { "Timing",       &SavedVoice::timing,           0,            0.2           }, // s
    { "Quantize",     &SavedVoice::quantize,         0,            1             },
    { "Glide",        &SavedVoice::glide,            0,            1             },
    { "Drift",        &SavedVoice::drift,           -1,            1             },
    { "FormantShift", &SavedVoice::formantShift,     kLowestShape, kHighestShape },
}};
// clang-format on

struct VoiceSwitchKey {
    std::string_view name;
    std::optional<bool> SavedVoice::*field;
};

inline constexpr std::array<VoiceSwitchKey, 2> kVoiceSwitchKeys = {
    {{"Mute", &SavedVoice::mute}, {"Solo", &SavedVoice::solo}}};

} // namespace sonorelle
