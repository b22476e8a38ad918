// A song of which everything is known before anybody listens: samples, marks, notes, and the voices of each
// note. The analyser loads marks and notes from a cache, as it does with those of an earlier analysis, and
// the driver makes its voices from them.
//
//     VoicedMelody melody(MakeVoicedSong({{200, 8000}, {160, 8000}}));      // two notes, 220.5 and 275.6 Hz
//     melody.Driver().SetVoicePitch(0, 1, 64);
//     bank.Init(melody.Driver());
#pragma once

#include "analysis/melody_analyzer.h"
#include "analysis/records.h"
#include "app/snapshot_store.h"
#include "harmony/choir_driver.h"
#include "support/temporary_folder.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace sonorelle::test {

// One tone, and the note that stands for it. All lengths in frames.
struct SungTone {
    std::int32_t period = 200;      // exact distance of its pulses and marks
    std::int32_t length = 8000;     // held to whole periods, at least two
    std::int32_t restBefore = 1000; // unvoiced; 0 for a tone that follows at once
    float level = 0.5F;             // of the note, 0 to 1
    bool hasNote = true;            // false: voiced marks that belong to no note
};

struct VoicedSongSettings {
    float sampleRate = 44100.0F;
    std::int32_t channels = 1;
    std::int32_t tail = 2000;     // frames behind the last tone
    std::int32_t restMarks = 128; // distance of the marks in rests
    double restNoise = 0.01;      // peak of the noise in rests; 0 for digital silence
    double peak = 0.5;            // of the whole song, over all channels
    std::uint64_t seed = 1;       // of the noise
};

// What a VoicedMelody is made of. Tests may change any of it first, or bring their own.
struct VoicedSong {
    float sampleRate = 44100.0F;
    std::vector<std::vector<float>> channels; // 1 or 2, of equal length
    std::vector<PitchMarkRecord> marks;       // rising strictly from 0 and within the length
    std::vector<NoteRecord> notes;            // the frame numbers are mark indices

    std::int32_t Length() const;            // frames
    double HertzOf(std::size_t note) const; // of the marks at its start
};

// Each pulse rings in three damped formants from its mark on; the second channel has other formants and is
// softer. Within a tone the wave is exactly periodic once the first few periods have passed. A note begins at
// the first mark of its tone and ends at the last one.
VoicedSong MakeVoicedSong(const std::vector<SungTone>& tones, const VoicedSongSettings& settings = {});

class VoicedMelody {
public:
    // Runs the driver once with `arrangement` of the intelligent style (0: four voices, 1: three, 2: two) and
    // `voicesAbove` harmony voices above the melody. Throws std::runtime_error when the analyser refuses the
    // song.
    explicit VoicedMelody(VoicedSong voicedSong, std::int32_t arrangement = 0, std::int32_t voicesAbove = 1);
    ~VoicedMelody();
    VoicedMelody(const VoicedMelody&) = delete;
    VoicedMelody& operator=(const VoicedMelody&) = delete;

    CMelodyAnalyzer& Analyzer() { return analyzer; }
    CSnapshotStore& Store() { return store; }
    CChoirDriver& Driver() { return driver; }
    const VoicedSong& Song() const { return song; }

    // One voice the same distance from the sung note in all notes (0: unison), at full gain.
    void SetInterval(std::int32_t voice, std::int32_t semitones);
    // The same for all four at once.
    void SetIntervals(const std::array<std::int32_t, 4>& semitones);

    // The audio file: what was asked of it. Reading allocates nothing.
    std::int64_t FramesRead() const;
    std::int32_t ReadCount() const;
    std::int32_t LastSeek() const;
    // From now on the file gives no more samples from `frame` on, as one that was cut off; marks and notes
    // stay.
    void CutAt(std::int32_t frame);

private:
    class SampleFile;

    VoicedSong song;
    TemporaryFolder folder;
    std::unique_ptr<SampleFile> audio;
    CMelodyAnalyzer analyzer;
    CSnapshotStore store;
    CChoirDriver driver;
};

} // namespace sonorelle::test
