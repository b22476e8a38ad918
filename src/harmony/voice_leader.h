// The voicing of a melody note by note: settings, the memory of the note before, and the row of stages.

#pragma once

#include "harmony/chord_record.h"
#include "harmony/key.h"
#include "harmony/score_cube.h"
#include "harmony/voicing_stages.h"

#include <array>
#include <cstdint>

namespace sonorelle::ConsortierClassic {

class CVoiceLeader {
public:
    CVoiceLeader();

    // Four, three or two voices (IntelligentArrangement). Any other mode is stored and changes nothing else:
    // the arrangements of other styles come through here as well. Always 0.
    std::int32_t SetVoiceMode(std::int32_t mode);
    // How many harmony voices lie above the melody. kBadArgument, with nothing changed, unless 0 to the
    // number there is.
    std::int32_t SetVoiceRange(std::int32_t voicesAbove);
    // The wanted width of a voicing as a share of its window. kBadArgument, with nothing changed, unless 0
    // to 1.
    std::int32_t SetSpread(float share);
    // Forgets the note before. The direction of the last step stays.
    void Reset() { previousVoices.fill(kNoPitch); }

    // Voices one note; see CConsortier.
    std::int32_t GenerateVoices(const CKey& key, std::int32_t pitch, std::int32_t* row,
                                const ChordRecord& chord);

    std::int32_t GetVoiceMode() const { return voiceMode; }
    std::int32_t GetVoiceRange() const { return voiceRange; }
    std::int32_t GetHarmonyVoiceCount() const { return harmonyVoiceCount; }
    std::int32_t GetMelodySlot() const { return harmonyVoiceCount - voiceRange; }
    std::int32_t GetCandidateCapacity() const { return candidateCapacity; }
    std::int32_t GetRangeLow() const { return rangeLow; }
    std::int32_t GetRangeHigh() const { return rangeHigh; }
    float GetSpread() const { return spreadTarget; }
    std::int32_t GetStepMemory() const { return stepMemory; }
    const std::array<std::int32_t, kVoiceSlots>& GetPreviousVoices() const { return previousVoices; }

private:
    void UpdateRange();
    void HoldVoices(std::int32_t melody, std::int32_t* row) const;
    VoicingTask Describe(const CKey& key, std::int32_t melody, const ChordRecord& chord) const;
    void ApplyStages(const VoicingTask& task);
    void UpdateStepMemory(const CKey& key, std::int32_t lowestHarmony);

    std::int32_t voiceMode = 0;
    std::int32_t voiceRange = 1;
    std::int32_t harmonyVoiceCount = 3;
    std::int32_t candidateCapacity = 0;
    std::int32_t rangeLow = 0;
    std::int32_t rangeHigh = 0;
    float spreadTarget = 0.5F;
    std::int32_t stepMemory = kNoStep;
    std::array<std::int32_t, kVoiceSlots> previousVoices;
    CScoreCube scoreCube;
};

} // namespace sonorelle::ConsortierClassic
