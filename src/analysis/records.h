// The records that pass from the analysis to everything else: marks, frames and notes.
//
// All positions are sample frames from the start of the audio file. Pitch is a MIDI note number with a
// fraction, 69.0 being 440 Hz whatever the singer's tuning is. `PitchMarkRecord` and `NoteRecord` are stored
// word by word in the cache file: their layout is a promise.

#pragma once

#include <cstddef>
#include <cstdint>

namespace sonorelle {

// One pitch period. Marks rise strictly in position; the first lies at 0.
struct PitchMarkRecord {
    std::int32_t position = 0;
    float energy = 0; // mean square of the mono sum since the previous mark (file normalised to a peak of 1)
    float transient = 0;   // attack strength, 0 to below 1; above 0.7 the mark counts as a transient
    float voicing = 0;     // salience of the tracked pitch in dB; 0: unvoiced
    float pitchChange = 0; // (previous - current) / (current + previous + 1) of the tracked pitch in Hz
    float period = 0;      // period by correlation, whole samples; 0 for the first and the last mark
};
static_assert(sizeof(PitchMarkRecord) == 24);

// One note. Covers the frames from `firstFrame` to `lastFrame`; notes rise in time and do not overlap.
struct NoteRecord {
    float pitch = 0;         // MIDI note number with fraction
    float level = 0;         // mean normalised frame level over the note, 0 to 1
    std::int32_t length = 0; // end - start, in sample frames
    std::int32_t start = 0;
    std::int32_t end = 0;
    std::int32_t firstFrame = 0; // frame index, which is also a mark index
    std::int32_t lastFrame = 0;
};
static_assert(sizeof(NoteRecord) == 28);

// One analysis frame per mark. Rebuilt from the marks on every load, never stored.
struct AnalysisFrame {
    float pitch = 0;         // MIDI note number with fraction; 0 when the mark has no period
    float level = 0;         // energy relative to the loudest mark of the file, 0 to 1
    std::int32_t voiced = 0; // 0 or 1
    std::int32_t position = 0;
};
static_assert(sizeof(AnalysisFrame) == 16);

// Frames below this level are silence: -33 dB of the loudest.
inline constexpr float kSilentLevel = 0.0005F;

// A place in a vector of the above; negative places are the caller's to keep out.
inline std::size_t Index(std::int32_t place) { return static_cast<std::size_t>(place); }

} // namespace sonorelle
