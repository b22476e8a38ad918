#include "host/user_state.h"

#include "app/snapshot_store.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sonorelle {

namespace {

// Documents hold the marker through an f32.
constexpr double kMarkerPrecision = 0x1p-22; // of its value
constexpr double kMarkerRounding = 2;        // samples

SavedVoice SwitchesOf(const SavedVoice& voice) {
    SavedVoice switches;
    switches.mute = voice.mute;
    switches.solo = voice.solo;
    return switches;
}

} // namespace

UserState UserStateOf(std::string_view document, std::int32_t analysedNotes, float hostRate) {
    UserState result;
    SavedState state = ReadState(document, CSnapshotStore::kVersion, analysedNotes);
    result.markerStart = state.fileSettings.masterPlaybackStart.value_or(0);
    result.hostRate = hostRate;
    state.fileSettings.masterPlaybackStart.reset();
    state.fileSettings.timeSigNumerator.reset();
    state.fileSettings.timeSigDenominator.reset();
    state.fileSettings.tempoRescaleSyncFactor.reset();
    for (SavedVoice& voice : state.mixer) voice = SwitchesOf(voice);
    for (SavedPreset& preset : state.presets) preset.voices = {};
    result.state = std::move(state);
    return result;
}

bool SameUserState(const UserState& one, const UserState& other) {
    if (one.state != other.state) return false;
    const bool ratesKnown = one.hostRate > 0 && other.hostRate > 0;
    const double scale =
        ratesKnown ? static_cast<double>(other.hostRate) / static_cast<double>(one.hostRate) : 1.0;
    const double expected = one.markerStart * scale;
    const double tolerance = kMarkerRounding * std::max(scale, 1.0) + std::fabs(expected) * kMarkerPrecision;
    return std::fabs(other.markerStart - expected) <= tolerance;
}

} // namespace sonorelle
