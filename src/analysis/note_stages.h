// The last two stages of the note analysis: notes from runs of voiced frames, and their cleaning.

#pragma once

#include "analysis/records.h"

#include <cstdint>
#include <vector>

namespace sonorelle {

// What tells a note from a slip, settable by the user of the analysis.
struct NoteRules {
    float sampleRate = 44100;       // Hz
    float pitchTolerance = 0.75F;   // semitones: nearer notes may be one
    std::int32_t minNoteLength = 0; // sample frames; 42 ms: what is shorter is not heard as a note of its own
    std::int32_t maxGap = 0;        // sample frames; 92 ms: rests within a note, and the longest glide
};

// One note per run of voiced frames in `smoothed`, pitched by the raw `frames`. Allocates.
std::vector<NoteRecord> BuildNotes(const std::vector<AnalysisFrame>& frames,
                                   const std::vector<AnalysisFrame>& smoothed);

// Stretches notes to where their level falls away, joins those that are one, and drops those that are too
// short or mere glides. `frames` are the raw ones. Allocates.
void CleanUpNotes(std::vector<NoteRecord>& notes, const std::vector<AnalysisFrame>& frames,
                  const NoteRules& rules);

} // namespace sonorelle
