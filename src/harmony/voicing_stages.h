// The rules of voice leading, one stage after the other. Each multiplies its factors into the score cube; a
// factor of 0.001 means as good as forbidden. A choice whose voices would fall anywhere is out: 0.
//
//   BuildCandidates            the chord tones in the window around the melody
//   ApplyRangeOrder            the right number of voices above and below the melody
//   ApplyChordFit              what is doubled, what is missing
//   ApplyRootAffinity          what stands in the bass
//   ApplyIntervalPreference    two voices: the interval to the melody
//   ApplyVoiceLeading          small steps from the note before
//   ApplySpread                close or wide position
//   ApplyParallels             no fifths, octaves and seconds in parallel; thirds and sixths are welcome
//   ApplyStepBonus             rising steps
//   ApplySpacing               no neighbours a second or third apart
//   ApplyLineContinuation      a stepwise line goes on
//
// Products are single precision, taken in the order of the code: equal scores are common, and rounding
// decides among them. Nothing here allocates.

#pragma once

#include "harmony/chord_record.h"
#include "harmony/key.h"
#include "harmony/score_cube.h"
#include "harmony/voice_vector.h"

#include <array>
#include <cstdint>

namespace sonorelle::ConsortierClassic {

// In which direction the lowest harmony voice last moved by a step.
enum StepMemory : std::int32_t { kNoStep = 0, kStepDown = 1, kStepUp = 2 };

// What the stages know of the note that is being voiced.
struct VoicingTask {
    const CKey& key;
    std::int32_t melody = 0;    // prepared pitch
    std::int32_t chordRoot = 0; // pitch class
    std::int32_t chordNotes = kTriadNotes;
    std::int32_t harmonyVoices = 3; // 1 to 3
    std::int32_t voicesAbove = 1;   // of these, above the melody
    std::int32_t rangeLow = 0;      // the window in semitones around the melody, both ends included
    std::int32_t rangeHigh = 0;
    float spreadTarget = 0.5F; // wanted width, as a share of the window
    std::int32_t stepMemory = kNoStep;
    std::array<std::int32_t, kVoiceSlots>
        previous{}; // the voices of the note before, rising; first -1 for none
    std::array<std::int32_t, kMostCandidates> candidates{}; // rising
    std::int32_t candidateCount = 0;

    bool HasPrevious() const { return previous[0] >= 0; }
    std::int32_t VoicesBelow() const { return harmonyVoices - voicesAbove; }
    std::int32_t MelodySlot() const { return VoicesBelow(); }
    std::int32_t Candidate(std::int32_t index) const { return candidates[static_cast<std::size_t>(index)]; }
};

void BuildCandidates(VoicingTask& task);

void ApplyRangeOrder(const VoicingTask& task, CScoreCube& cube);
void ApplyChordFit(const VoicingTask& task, CScoreCube& cube);
void ApplyRootAffinity(const VoicingTask& task, CScoreCube& cube);
void ApplyIntervalPreference(const VoicingTask& task, CScoreCube& cube);
void ApplyVoiceLeading(const VoicingTask& task, CScoreCube& cube);
void ApplySpread(const VoicingTask& task, CScoreCube& cube);
void ApplyParallels(const VoicingTask& task, CScoreCube& cube);
void ApplyStepBonus(const VoicingTask& task, CScoreCube& cube);
void ApplySpacing(const VoicingTask& task, CScoreCube& cube);
void ApplyLineContinuation(const VoicingTask& task, CScoreCube& cube);

// How well the voices make the chord heard: what is doubled and what is there.
float ChordFitScore(const VoicingTask& task, const VoiceVector& voices);

} // namespace sonorelle::ConsortierClassic
