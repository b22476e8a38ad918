// Voicing one note:
//
//   1  prepare the melody pitch; a note without a chord ends here, holding the last voices
//   2  list the chord tones in the window around the melody
//   3  score every choice of them, stage after stage
//   4  take the best, and remember it for the next note

#include "harmony/voice_leader.h"

#include "harmony/styles.h"

#include "platform/result_codes.h"

#include <algorithm>

namespace sonorelle::ConsortierClassic {
namespace {

// What becomes of the number of harmony voices, and of how many lie above the melody, when the mode changes.
struct ModeChange {
    std::int32_t oldHarmonyVoices;
    std::int32_t mode;
    std::int32_t newHarmonyVoices;
    std::int32_t limit; // the old range from which on "above" holds, and below it "below"
    std::int32_t rangeBelow;
    std::int32_t rangeAbove;
};

// clang-format off
constexpr ModeChange kModeChanges[] = {
    // old  mode         new  limit  below  above
    {  3,   kTwoVoices,   1,   2,     0,     1 },
    {  2,   kTwoVoices,   1,   1,     0,     1 },
    {  3,   kThreeVoices, 2,   3,     1,     2 },
    {  1,   kThreeVoices, 2,   1,     0,     2 },
    {  1,   kFourVoices,  3,   1,     1,     2 },
    {  2,   kFourVoices,  3,   2,     1,     2 },
};
// clang-format on

// The window, in semitones: an octave for each voice on a side of the melody, but not beyond a tenth.
constexpr std::int32_t kWidestSide = 16;
constexpr std::int32_t kNarrowestLow = -12;

constexpr std::int32_t kCandidatesInOctave = 4; // of a four-note chord

// Four candidates an octave, begun octaves counted in full, and one for the chord tone on the far edge.
std::int32_t CapacityOf(std::int32_t window) {
    return (window * kCandidatesInOctave + kSemitonesInOctave - 1) / kSemitonesInOctave + 1;
}

} // namespace

CVoiceLeader::CVoiceLeader() {
    previousVoices.fill(kNoPitch);
    UpdateRange();
}

std::int32_t CVoiceLeader::SetVoiceMode(std::int32_t mode) {
    voiceMode = mode;
    for (const ModeChange& change : kModeChanges) {
        if (change.oldHarmonyVoices != harmonyVoiceCount || change.mode != mode) continue;
        harmonyVoiceCount = change.newHarmonyVoices;
        voiceRange = voiceRange < change.limit ? change.rangeBelow : change.rangeAbove;
        UpdateRange();
        break;
    }
    return kOk;
}

std::int32_t CVoiceLeader::SetVoiceRange(std::int32_t voicesAbove) {
    if (voicesAbove < 0 || voicesAbove > harmonyVoiceCount) return kBadArgument;
    voiceRange = voicesAbove;
    UpdateRange();
    return kOk;
}

std::int32_t CVoiceLeader::SetSpread(float share) {
    if (!(share >= 0.0F && share <= 1.0F)) return kBadArgument; // also what is not a number
    spreadTarget = share;
    return kOk;
}

void CVoiceLeader::UpdateRange() {
    const std::int32_t below = (voiceRange - harmonyVoiceCount) * kSemitonesInOctave;
    rangeLow = below > kNarrowestLow ? kNarrowestLow : std::max(below, -kWidestSide);
    rangeHigh = std::min(voiceRange * kSemitonesInOctave, kWidestSide);
    if (voiceRange >= harmonyVoiceCount)
        rangeLow = 0;
    else if (voiceRange < 1)
        rangeHigh = 0;
    candidateCapacity = CapacityOf(rangeHigh - rangeLow);
}

std::int32_t CVoiceLeader::GenerateVoices(const CKey& key, std::int32_t pitch, std::int32_t* row,
                                          const ChordRecord& chord) {
    if (row == nullptr) return kBadArgument;
    const std::int32_t melody = key.Prepare(pitch);
    if (IsNoChord(chord)) {
        HoldVoices(melody, row);
        return kOk;
    }
    VoicingTask task = Describe(key, melody, chord);
    BuildCandidates(task);
    if (task.candidateCount == 0) return kOk; // the row keeps the voices that it has
    scoreCube.Reset(task.candidateCount);
    ApplyStages(task);
    CScoreCube::Choice best{};
    scoreCube.PickBest(best);

    const std::int32_t chosen[] = {task.Candidate(best.i), task.Candidate(best.j), task.Candidate(best.k)};
    row[0] = melody;
    for (std::int32_t voice = 0; voice < kVoiceSlots - 1; ++voice)
        row[voice + 1] = voice < harmonyVoiceCount ? chosen[voice] : kNoPitch;
    if (harmonyVoiceCount < 3) UpdateStepMemory(key, chosen[0]);
    // All three, whatever the mode: with fewer voices the slots beyond them are not read again.
    previousVoices = InsertMelody(melody, chosen[0], chosen[1], chosen[2]).pitches;
    return kOk;
}

void CVoiceLeader::HoldVoices(std::int32_t melody, std::int32_t* row) const {
    row[0] = melody;
    std::int32_t slot = 1;
    for (std::int32_t voice = 0; voice < kVoiceSlots; ++voice)
        if (voice != GetMelodySlot()) row[slot++] = previousVoices[static_cast<std::size_t>(voice)];
}

VoicingTask CVoiceLeader::Describe(const CKey& key, std::int32_t melody, const ChordRecord& chord) const {
    VoicingTask task{key};
    task.melody = melody;
    task.chordRoot = PitchClass(chord.root);
    task.chordNotes = chord.noteCount;
    task.harmonyVoices = harmonyVoiceCount;
    task.voicesAbove = voiceRange;
    task.rangeLow = rangeLow;
    task.rangeHigh = rangeHigh;
    task.spreadTarget = spreadTarget;
    task.stepMemory = stepMemory;
    task.previous = previousVoices;
    return task;
}

void CVoiceLeader::ApplyStages(const VoicingTask& task) {
    const bool fourVoices = harmonyVoiceCount == 3;
    const bool twoVoices = harmonyVoiceCount == 1;
    const bool fourVoiceTriad = fourVoices && task.chordNotes == kTriadNotes;
    ApplyRangeOrder(task, scoreCube);
    ApplyChordFit(task, scoreCube);
    ApplyRootAffinity(task, scoreCube);
    if (twoVoices) ApplyIntervalPreference(task, scoreCube);
    ApplyVoiceLeading(task, scoreCube);
    ApplySpread(task, scoreCube);
    ApplyParallels(task, scoreCube);
    if (!fourVoiceTriad) ApplyStepBonus(task, scoreCube);
    if (!fourVoiceTriad) ApplySpacing(task, scoreCube);
    if (!fourVoices) ApplyLineContinuation(task, scoreCube);
}

void CVoiceLeader::UpdateStepMemory(const CKey& key, std::int32_t lowestHarmony) {
    if (previousVoices[1] == kNoPitch) return;
    const std::int32_t steps = key.StepsWithinOctave(previousVoices[1], lowestHarmony);
    stepMemory = steps == 1 ? kStepUp : steps == -1 ? kStepDown : kNoStep;
}

} // namespace sonorelle::ConsortierClassic
