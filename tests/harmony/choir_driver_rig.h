// A driver over a melody of known notes, and what its tests ask it again and again.
#pragma once

#include "app/snapshot_store.h"
#include "harmony/choir_driver.h"
#include "support/analysed_melody_fixture.h"

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace sonorelle::test {

using VoiceRow = std::array<std::int32_t, 4>;
using GainRow = std::array<float, 4>;
using ConsortierClassic::ChordRecord;

inline constexpr ChordRecord kCMajor = {0, 3, ConsortierClassic::kMajorTriad, ConsortierClassic::kNoTetrad};
inline constexpr ChordRecord kFMajor = {5, 3, ConsortierClassic::kMajorTriad, ConsortierClassic::kNoTetrad};
inline constexpr ChordRecord kGMajor = {7, 3, ConsortierClassic::kMajorTriad, ConsortierClassic::kNoTetrad};
inline constexpr ChordRecord kNoChord = {0, 3, ConsortierClassic::kNoTriad, ConsortierClassic::kNoTetrad};

inline const std::vector<float> kTune = {60, 62, 64, 65, 67, 69, 67, 65, 64, 62, 60};

struct DriverRig {
    explicit DriverRig(std::vector<NoteRecord> notes, std::int32_t undoLimit = 32,
                       float sampleRate = 44100.0F)
        : melody(std::move(notes), 1000, sampleRate), store(CSnapshotStore::kVersion, undoLimit),
          driver(melody.Analyzer(), store) {}
    explicit DriverRig(const std::vector<float>& midiPitches) : DriverRig(EvenNotes(midiPitches)) {}

    // In C major, whatever the melody's own key is.
    void RunInC() {
        driver.SetAutoKey(false);
        driver.Run();
    }
    VoiceRow Voices(std::int32_t note, bool live = false) {
        VoiceRow row{};
        float deviation = 0;
        float gain = 0;
        for (std::int32_t voice = 0; voice < 4; ++voice)
            row[static_cast<std::size_t>(voice)] = driver.GetVoice(note, voice, deviation, gain, live);
        return row;
    }
    GainRow Gains(std::int32_t note) {
        GainRow row{};
        float deviation = 0;
        for (std::int32_t voice = 0; voice < 4; ++voice)
            driver.GetVoice(note, voice, deviation, row[static_cast<std::size_t>(voice)], false);
        return row;
    }
    float Deviation(std::int32_t note, std::int32_t voice) {
        float deviation = -99;
        float gain = 0;
        driver.GetVoice(note, voice, deviation, gain, false);
        return deviation;
    }
    std::vector<VoiceRow> AllVoices() {
        std::vector<VoiceRow> rows;
        for (std::int32_t note = 0; note < driver.GetNoteCount(); ++note) rows.push_back(Voices(note));
        return rows;
    }
    std::vector<ChordRecord> Chords() const {
        std::vector<ChordRecord> chords;
        for (std::int32_t note = 0; note < driver.GetNoteCount(); ++note)
            chords.push_back(driver.GetChord(note));
        return chords;
    }
    // Well inside the note, in its first half.
    std::int32_t Inside(std::int32_t note) const {
        return driver.GetNoteStart(note) + driver.GetNoteLength(note) / 4;
    }

    AnalysedMelody melody;
    CSnapshotStore store;
    CChoirDriver driver;
};

} // namespace sonorelle::test
