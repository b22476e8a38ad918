// Sessions as a document holds them, and documents with a value changed.

#pragma once

#include "app/state_document.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sonorelle::test {

inline constexpr std::int32_t kSavedNoteCount = 2;
inline constexpr float kSavedStoreVersion = 1.2F;

inline std::vector<std::byte> CountingBytes(std::size_t count, int first = 1) {
    std::vector<std::byte> bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::byte>(first + static_cast<int>(i)));
    return bytes;
}

inline SavedSnapshot SnapshotSample(std::string name, std::int32_t trigger, int firstByte) {
    SavedSnapshot snapshot;
    snapshot.name = std::move(name);
    snapshot.midiTrigger = trigger;
    snapshot.startTime = 1000;
    snapshot.endTime = 88200;
    snapshot.data = CountingBytes(8, firstByte);
    snapshot.sizes = std::vector<std::int32_t>{4, 0, 4};
    return snapshot;
}

// Every value present (but the mixer's drift, which no save has), and none a default.
inline SavedState SavedStateSample() {
    SavedState state;
    SavedFileSettings& file = state.fileSettings;
    file.audioFileName = "/home/lea/song.wav";
    file.masterPlaybackStart = 44100;
    file.doSnapshotTrigger = true;
    file.singleVoiceOutput = false;
    file.syncTempoToHost = true;
    file.currentTempo = 97.5;
    file.tempoRescaleSyncFactor = 1.25F;
    file.timeSigNumerator = 6;
    file.timeSigDenominator = 8;
    file.tuningFreq = 441.5;

    SavedSnapshots snapshots;
    snapshots.version = kSavedStoreVersion;
    snapshots.analysedNoteCount = kSavedNoteCount;
    snapshots.noteCapacity = 3;
    snapshots.selectedSnapshot = 0;
    snapshots.records = {SnapshotSample("Chorus", 61, 0x10), SnapshotSample("Last State", 62, 0x20)};
    snapshots.endsWithPresentState = true;
    state.snapshots = snapshots;

    VoiceSettings voice;
    for (SavedVoice& saved : state.mixer) {
        voice.vol -= 0.125F;
        voice.pan += 0.125F;
        voice.mute = !voice.mute;
        saved = SavedVoiceFrom(voice);
        saved.drift.reset();
    }
    for (const char* const name : {"default", "flat"}) {
        SavedPreset preset;
        preset.name = name;
        for (SavedVoice& saved : preset.voices) {
            voice.drift += 0.0625F;
            voice.delay += 0.0078125F;
            voice.timing += 0.015625F;
            voice.quantize += 0.125F;
            voice.glide += 0.03125F;
            voice.formantShift -= 0.03125F;
            voice.solo = !voice.solo;
            saved = SavedVoiceFrom(voice);
        }
        state.presets.push_back(preset);
    }
    return state;
}

inline SavedState ReadSaved(std::string_view document) {
    return ReadState(document, kSavedStoreVersion, kSavedNoteCount);
}

// The document with the first `from` replaced; a slip in a test is no reason to pass.
inline std::string WithReplaced(std::string document, std::string_view from, std::string_view to) {
    const std::size_t at = document.find(from);
    if (at == std::string::npos) throw std::logic_error("not in the document: " + std::string(from));
    return document.replace(at, from.size(), to);
}

// What the first element of this name tells: <key str="value"/>.
inline std::string WithValue(const std::string& document, std::string_view key, std::string_view value) {
    const std::string opening = "<" + std::string(key) + " str=\"";
    const std::size_t at = document.find(opening);
    if (at == std::string::npos) throw std::logic_error("not in the document: " + opening);
    const std::size_t start = at + opening.size();
    return std::string(document).replace(start, document.find('"', start) - start, value);
}

// Without the whole line of the first element of this name.
inline std::string WithoutKey(std::string document, std::string_view key) {
    const std::size_t at = document.find("<" + std::string(key) + " ");
    if (at == std::string::npos) throw std::logic_error("not in the document: " + std::string(key));
    return document.erase(at, document.find('\n', at) + 1 - at);
}

inline std::string DocumentSample() { return WriteState(SavedStateSample()); }

// The document read with the first `key` telling `value`.
inline SavedState ReadWith(const char* key, const std::string& value) {
    return ReadSaved(WithValue(DocumentSample(), key, value));
}

} // namespace sonorelle::test
