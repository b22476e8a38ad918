// What notes and chords are called, in sharps and in flats.

#pragma once

#include "harmony/chord_record.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace sonorelle::ConsortierClassic {

// Room for every chord name and its end.
inline constexpr std::size_t kChordNameSize = 16;

// The plain entries and the headings of the chord menu.
inline constexpr const char* kNoChordName = "No Chord";
inline constexpr const char* kMajorTriadName = "Triad Major";
inline constexpr const char* kMinorTriadName = "Triad Minor";
inline constexpr const char* kSeventhChordsHeading = "7th";
inline constexpr const char* kAllChordsHeading = "all";

// The name of an absolute pitch class; any number is reduced to one. Chords with a minor third write their
// root small.
const char* NoteName(std::int32_t pitchClass, bool useFlats, bool lowerCase = false);

// Writes the name of the chord of `type` (see ChordType) on `root`, ended by a zero and cut to the buffer:
// "C M7", "eb m7b5", "--" where there is no name. kNoTetrad, a type that does not exist, and an empty buffer
// write nothing.
void FormatChordName(std::span<char> buffer, std::int32_t root, std::int32_t type, bool useFlats);

// The same of a whole record, as a string of its own. Allocates where the string does.
std::string ChordName(const ChordRecord& chord, bool useFlats);

} // namespace sonorelle::ConsortierClassic
