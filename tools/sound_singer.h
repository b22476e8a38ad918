// The whole engine on one file: analysed afresh, then sung in voices at fixed distances from the melody, with
// every setting at rest. What comes out ought to be the recording itself, at other pitches.
#pragma once

#include "analysis/melody_analyzer.h"
#include "app/snapshot_store.h"
#include "formats/audio_file.h"
#include "harmony/choir_driver.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace sonorelle::tools {

class SoundSinger {
public:
    static constexpr std::size_t kVoices = 4;
    // Of one channel, the first; as long as the recording.
    using Voices = std::array<std::vector<float>, kVoices>;

    // Null when the file cannot be read or analysed. Neither reads nor writes a cache.
    static std::unique_ptr<SoundSinger> Open(const std::filesystem::path& file);

    double SampleRate() const { return static_cast<double>(analyzer.GetSampleRate()); }
    std::vector<float> Source(); // the first channel of the recording
    std::int32_t NoteCount() const { return driver.GetNoteCount(); }

    // Each voice by its number of semitones above the sung note, whose pitch it keeps to: voice 0 is the
    // lead, whose clock the others follow. Nothing when the engine refuses.
    std::optional<Voices> Sing(const std::array<std::int32_t, kVoices>& semitones);

private:
    SoundSinger() : driver(analyzer, store) {}

    CkvoAudioFile audio;
    CMelodyAnalyzer analyzer;
    CSnapshotStore store;
    CChoirDriver driver;
};

} // namespace sonorelle::tools
