// The stages of the note analysis that work on frames, in the order in which they run.
//
// Each walks over the whole list once. A list without frames is left alone. All of them allocate.

#pragma once

#include "analysis/analysis_lengths.h"
#include "analysis/records.h"

#include <vector>

namespace sonorelle {

class CPitchMarksIf;

using Frames = std::vector<AnalysisFrame>;

// One frame per mark: its period as a pitch, its energy as a level.
Frames FramesFromMarks(const CPitchMarksIf& marks, float sampleRate);

// Scales levels to a largest of 1; then what is all but silent is no voice, and neither is the frame in front
// of a sudden rise: the correlation there reached into the onset.
void NormaliseLevels(Frames& frames);

// Where the pitch jumps by more than half an octave within a window, the frame at the jump becomes unvoiced,
// so that no note runs across it.
void CutOctaveJumps(Frames& frames, const AnalysisLengths& lengths);

// Replaces the pitch of stretches with vibrato in `flattened` by the vibrato's centre. Reads `frames` alone.
void FlattenVibrato(const Frames& frames, Frames& flattened, const AnalysisLengths& lengths);

// Short excursions between two places of about the same pitch are pulled to the mean of the two. None of them
// begins behind one of the last 32 frames.
void BridgeDeviations(Frames& frames, const AnalysisLengths& lengths);

// Replaces the pitch of steady stretches in `smoothed` by their median. Reads `frames` alone.
void SmoothByMedian(const Frames& frames, Frames& smoothed, const AnalysisLengths& lengths);

// Where the pitch steps by more than half a semitone, the frame at the step becomes unvoiced: there a new
// note begins.
void SplitAtSteps(Frames& frames, const AnalysisLengths& lengths);

} // namespace sonorelle
