// What a host keeps of a session: one XML document, as plain values on this side and as text on the other.
//
//     SavedState state;
//     state.fileSettings.audioFileName = path;
//     state.mixer[2] = SavedVoiceFrom(settings);
//     const std::string document = WriteState(state);
//
//     if (ReadAudioFileName(document)) ... open the recording, analyse it ...
//     const SavedState restored = ReadState(document, CSnapshotStore::kVersion, analysedNoteCount);
//     if (restored.fileSettings.timeSigNumerator) ...
//
// A value is absent when the document lacks its key, when it is no number, and when it lies outside its
// range: whoever restores keeps what he has. Writing leaves absent values out. Texts may hold any byte but
// zero, and come back as they were; numbers are the same under every locale.
//
// The audio is never part of a document, nor is the analysis.
//
// Any thread; pure functions. They allocate, and throw std::bad_alloc alone. Documents come from host
// projects and may hold anything: reading takes no more memory than a few times their length, and a number of
// walks through them that does not depend on what they hold.

#pragma once

#include "app/voice_preset.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sonorelle {

// The ten values of a channel strip, see VoiceSettings.
struct SavedVoice {
    std::optional<float> vol;
    std::optional<float> pan;
    std::optional<float> quantize;
    std::optional<float> delay;
    std::optional<float> formantShift;
    std::optional<float> drift;
    std::optional<float> glide;
    std::optional<float> timing;
    std::optional<bool> mute;
    std::optional<bool> solo;

    bool operator==(const SavedVoice&) const = default;
};

using SavedVoices = std::array<SavedVoice, kPresetVoices>;

SavedVoice SavedVoiceFrom(const VoiceSettings& settings);       // nothing absent
void Restore(const SavedVoice& saved, VoiceSettings& settings); // what is absent stays

struct SavedPreset {
    std::optional<std::string> name;
    SavedVoices voices;

    bool operator==(const SavedPreset&) const = default;
};

struct SavedFileSettings {
    std::optional<std::string> audioFileName;  // whole path; never empty when it was read
    std::optional<double> masterPlaybackStart; // samples of the host, within +-1e24; whole, through an f32
    std::optional<bool> doSnapshotTrigger;
    std::optional<bool> singleVoiceOutput;
    std::optional<bool> syncTempoToHost;
    std::optional<double> currentTempo;             // quarter notes per minute, above 0, to 999; two decimals
    std::optional<float> tempoRescaleSyncFactor;    // above 0; six decimals
    std::optional<std::int32_t> timeSigNumerator;   // from 1
    std::optional<std::int32_t> timeSigDenominator; // from 1
    std::optional<double> tuningFreq;               // Hz, 350 to 500; eight decimals

    bool operator==(const SavedFileSettings&) const = default;
};

struct SavedSnapshot {
    std::string name;
    std::optional<std::int32_t>
        midiTrigger; // key, 0 to 131, or -1 for none; without it the other two mean nothing
    std::optional<std::int32_t> startTime; // samples, from 0
    std::optional<std::int32_t> endTime;   // samples, from 0
    std::vector<std::byte> data;           // a block of the snapshot store; a multiple of 4 bytes
    std::optional<std::vector<std::int32_t>>
        sizes; // of its elements; documents older than size lists have none

    bool operator==(const SavedSnapshot&) const = default;
};

struct SavedSnapshots {
    static constexpr float kOldestVersion = 1.0F; // of a document that tells none

    // As many snapshots as a session has, and the present state behind them.
    static constexpr std::int32_t kMostRecords = 33;

    float version = kOldestVersion;                // of the store that wrote them; three decimals
    std::optional<std::int32_t> analysedNoteCount; // from 0
    std::optional<std::int32_t> noteCapacity;      // from 0; no more than a document of this length can fill
    std::optional<std::int32_t> selectedSnapshot;  // from -1
    std::vector<SavedSnapshot> records;

    // Reading alone: the last record is the last of the document, that is the state at the time of saving.
    // Without it the list ended at a damaged record, and what was read are snapshots of the user.
    bool endsWithPresentState = false;

    bool operator==(const SavedSnapshots&) const = default;
};

struct SavedState {
    enum class Stop {
        kNone,
        kNewerVersion, // snapshots of a newer program: behind the file settings nothing was read
        kOtherAnalysis // snapshots for another number of notes: likewise
    };

    SavedFileSettings fileSettings;
    std::optional<SavedSnapshots> snapshots; // absent also when reading stopped before them
    SavedVoices mixer;                       // drift is read, but not written: a save has it in the presets
    std::vector<SavedPreset> presets;        // as many as there are, kPresetCount at most when read
    Stop stop = Stop::kNone;                 // reading alone

    bool operator==(const SavedState&) const = default;
};

// The whole document. Empty when it would grow beyond 2^31 - 1 bytes, and when a snapshot's data is no
// multiple of 4 bytes.
std::string WriteState(const SavedState& state);

// What a chunk holds, for the functions below; null and sizes below 1 give an empty text. Not copied.
std::string_view DocumentText(const void* data, std::int64_t size);

// The path of the recording alone, which must be open and analysed before the rest makes sense. Nothing for
// a text that is no document of a session, and for an empty path.
std::optional<std::string> ReadAudioFileName(std::string_view document);

// `storeVersion`: of the store of today; a document is newer if its version is, in whole thousandths.
// `presentNoteCount`: notes of the present analysis. A text that ReadAudioFileName gives nothing for gives
// nothing at all.
SavedState ReadState(std::string_view document, float storeVersion, std::int32_t presentNoteCount);

// The document of a single preset. Reading one of a session gives a preset without any value, and the other
// way round.
std::string WriteProgram(const SavedPreset& preset);
SavedPreset ReadProgram(std::string_view document);

// The path in a text that was dropped on the window, if it is a document that holds one; it may be empty.
std::optional<std::string> ReadDroppedFileName(std::string_view text);

} // namespace sonorelle
