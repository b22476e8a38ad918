// Chords from pitches, pitches from chords, and the chords that a key has of its own. Nothing here allocates.

#pragma once

#include "harmony/chord_record.h"
#include "harmony/key.h"

#include <cstdint>

namespace sonorelle::ConsortierClassic {

// Scale tones counted from the chord root, itself the first.
inline constexpr std::int32_t kRootTone = 1;
inline constexpr std::int32_t kThirdTone = 3;
inline constexpr std::int32_t kFifthTone = 5;
inline constexpr std::int32_t kSeventhTone = 7;

// The chord of up to four pitches or pitch classes, in any inversion; a negative one is absent. With fewer
// than three different pitch classes the root is 0 and both types are none; noteCount is then how many there
// are. Example: (64, 67, 72, -1) is {0, 3, kMajorTriad, kNoTetrad}.
ChordRecord RecogniseChord(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d);

// The pitches of a chord from its root in the octave of middle C upward, kNoPitch for none. Four times
// kNoPitch for a record that names no chord.
void ChordToPitches(const ChordRecord& chord, std::int32_t (&out)[4]);

// What RecogniseChord says of the triad, or of the four-note chord, that the harmony scale has on a position.
std::int32_t DiatonicTriadType(const CKey& key, std::int32_t position);
std::int32_t DiatonicTetradType(const CKey& key, std::int32_t position);

// Whether the chord is the one that the harmony scale has on its root. "No Chord" is; a root outside the
// scale is not.
bool IsDiatonicChord(const CKey& key, const ChordRecord& chord);

// The diatonic chords that hold a pitch: the triads of which it is root, third and fifth, then the four-note
// chords of which it is root, third, fifth and seventh. Writes at most n and at most kChordsForPitch records.
// A pitch outside the harmony scale: n records that name no chord, and kBadArgument.
inline constexpr std::int32_t kChordsForPitch = 7;
std::int32_t ChordsForPitch(const CKey& key, std::int32_t pitch, ChordRecord* out, std::int32_t n);

// Triad and four-note chord on each tone of the harmony scale, upward from the key root. Returns how many
// there are, at most kMostDiatonicChords; with `out` null it only counts.
inline constexpr std::int32_t kMostDiatonicChords = 2 * kSemitonesInOctave;
std::int32_t AllDiatonicChords(const CKey& key, ChordRecord* out);

// A chord of the old layout, of which only the degree's pitch was kept.
//
// A quirk that stays: the root of the result counts from that pitch and is 0 for a tone of the scale, so that
// a converted chord keeps the kind of the old one and not its root. Old work was saved and heard again that
// way.
ChordRecord LegacyChord(const CKey& key, std::int32_t pitch);

} // namespace sonorelle::ConsortierClassic
