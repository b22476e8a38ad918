// What the user sets of the arrangement, in the form in which the snapshot store keeps it.
//
// Every field is one element of the store. Order, size and version of the elements are the layout of saved
// work: nothing here moves.

#pragma once

#include "harmony/scales.h"
#include "harmony/styles.h"

#include <array>
#include <cstdint>

namespace sonorelle {

class CSnapshotStore;

struct ChoirSettings {
    std::int32_t melodyScale = ConsortierClassic::kMajorScale;  // row of ScaleTable, a named one
    std::int32_t harmonyScale = ConsortierClassic::kMajorScale; // row of ScaleTable
    std::int32_t root = 0;                                      // pitch class of the key
    std::int32_t voiceRange = 2;                                // harmony voices above the melody
    float spread = 1.0F;                                        // width of a voicing, 0 to 1
    std::int32_t snapToScale = 1;                               // flags are 0 or 1
    std::int32_t mapScale = 1;
    std::int32_t autoKey = 1;
    std::int32_t followScale = 1;
    std::int32_t chordsDirty = 1;
    std::int32_t manualOnly = 0;
    std::int32_t arrangement = 0;
    std::int32_t style = ConsortierClassic::kStyleIntelligent;
    std::uint32_t noteCount = 0; // notes in use. What a document brings may be anything; see CChoirNotes
    std::array<std::int32_t, ConsortierClassic::kVoiceSlots> manualIntervals{}; // scale steps, -7 to 7

    // Registers every field with the store, which keeps their addresses.
    void RegisterWith(CSnapshotStore& store, void* owner);
};

} // namespace sonorelle
