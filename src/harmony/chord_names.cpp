#include "harmony/chord_names.h"

#include "harmony/pitch_class.h"

#include <cstdio>

namespace sonorelle::ConsortierClassic {
namespace {

enum LetterCase : std::int32_t { kUpper = 0, kLower = 1, kNoLetter = 2 };

struct NameRow {
    LetterCase letter;
    const char* suffix;
};

// clang-format off
constexpr const char* kNoteNames[2][2][kSemitonesInOctave] = {
    { // sharps
        { "C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B" },
        { "c", "c#", "d", "d#", "e", "f", "f#", "g", "g#", "a", "a#", "b" },
    },
    { // flats
        { "C", "Db", "D", "Eb", "E", "F", "Gb", "G", "Ab", "A", "Bb", "B" },
        { "c", "db", "d", "eb", "e", "f", "gb", "g", "ab", "a", "bb", "b" },
    },
};

// By chord type.
constexpr NameRow kChordNames[kNoTetrad] = {
    { kUpper,    ""      }, //  0  major
    { kLower,    ""      }, //  1  minor
    { kLower,    " dim"  }, //  2  diminished
    { kUpper,    " aug"  }, //  3  augmented
    { kNoLetter, "--"    }, //  4  another triad
    { kNoLetter, "--"    }, //  5  no triad
    { kUpper,    " M7"   }, //  6  major seventh
    { kLower,    " m7"   }, //  7  minor seventh
    { kUpper,    " 7"    }, //  8  dominant seventh
    { kLower,    " m7b5" }, //  9  half-diminished
    { kLower,    " dim7" }, // 10  diminished seventh
    { kLower,    " mM7"  }, // 11  minor-major seventh
    { kNoLetter, "--"    }, // 12  another four-note chord
};
// clang-format on

} // namespace

const char* NoteName(std::int32_t pitchClass, bool useFlats, bool lowerCase) {
    return kNoteNames[useFlats ? 1 : 0][lowerCase ? kLower : kUpper][PitchClass(pitchClass)];
}

void FormatChordName(std::span<char> buffer, std::int32_t root, std::int32_t type, bool useFlats) {
    if (buffer.empty() || type < 0 || type >= kNoTetrad) return;
    const NameRow& row = kChordNames[type];
    const char* const note = row.letter == kNoLetter ? "" : NoteName(root, useFlats, row.letter == kLower);
    std::snprintf(buffer.data(), buffer.size(), "%s%s", note, row.suffix);
}

std::string ChordName(const ChordRecord& chord, bool useFlats) {
    char name[kChordNameSize] = "";
    FormatChordName(name, chord.root, TypeOf(chord), useFlats);
    return name;
}

} // namespace sonorelle::ConsortierClassic
