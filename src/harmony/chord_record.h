// A chord: its root, how many notes it has, and its kind. Also the layout in which chords are stored, so
// order and sizes stay.

#pragma once

#include <cstdint>

namespace sonorelle::ConsortierClassic {

// What a chord is. A triad stands in ChordRecord::triadType, a four-note chord in ChordRecord::tetradType.
enum ChordType : std::int32_t {
    kMajorTriad = 0,
    kMinorTriad = 1,
    kDiminishedTriad = 2,
    kAugmentedTriad = 3,
    kOtherTriad = 4, // three notes that are none of these
    kNoTriad = 5,

    kMajorSeventh = 6,
    kMinorSeventh = 7,
    kDominantSeventh = 8,
    kHalfDiminished = 9,
    kDiminishedSeventh = 10,
    kMinorMajorSeventh = 11,
    kOtherTetrad = 12, // four notes that are none of these
    kNoTetrad = 13,
};

inline constexpr std::int32_t kChordTypeCount = 14;
inline constexpr std::int32_t kTriadNotes = 3;
inline constexpr std::int32_t kTetradNotes = 4;

struct ChordRecord {
    std::int32_t root = 0;               // absolute pitch class
    std::int32_t noteCount = 0;          // 3 for a triad, 4 for a four-note chord
    std::int32_t triadType = kNoTriad;   // 0 to 5
    std::int32_t tetradType = kNoTetrad; // 6 to 13

    friend bool operator==(const ChordRecord&, const ChordRecord&) = default;
};
static_assert(sizeof(ChordRecord) == 16, "chords are stored in this layout");

// The record that stands for "No Chord".
constexpr bool IsNoChord(const ChordRecord& chord) {
    return chord.triadType == kNoTriad && chord.tetradType == kNoTetrad;
}

// Whether the record names neither a known triad nor a known four-note chord: "No Chord" and the "other"
// ones.
constexpr bool NamesNoChord(const ChordRecord& chord) {
    return (chord.triadType == kOtherTriad || chord.triadType == kNoTriad) &&
           (chord.tetradType == kOtherTetrad || chord.tetradType == kNoTetrad);
}

// The kind of the chord in one number.
constexpr std::int32_t TypeOf(const ChordRecord& chord) {
    return chord.noteCount == kTetradNotes ? chord.tetradType : chord.triadType;
}

} // namespace sonorelle::ConsortierClassic
