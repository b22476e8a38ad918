// Melodies for the synthetic singer.
#pragma once

#include "support/synthetic_singer.h"

#include <cstdint>
#include <vector>

namespace sonorelle::test {

struct Melody {
    std::vector<MelodyNote> notes;
    int key = -1; // 0 to 11 major from C, 12 to 23 minor
};

struct MelodyWish {
    int key = 0;              // 0 to 11 major from C, 12 to 23 minor (the natural scale)
    int lowestMidiPitch = 48; // the melody stays within an octave and a fifth from here
    int phrases = 4;        // each ends on tonic or fifth with a long note and a rest; the last on the tonic
    int notesPerPhrase = 8; // at least 3
};

// A singable melody in the key: mostly steps, leaps turned back, tonic and fifth on the strong beats and long
// notes. Notes of equal pitch in a row are set apart by an unvoiced consonant.
Melody RandomDiatonicMelody(const MelodyWish& wish, std::uint64_t seed);

// Sings with the melody's key handed on.
Recording Sing(const Melody& melody, SingerSettings settings);

} // namespace sonorelle::test
