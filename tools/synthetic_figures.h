// The figures of the analysis over a seeded set of synthetic melodies whose truth is known exactly.
#pragma once

#include "lost_notes.h"
#include "support/note_matching.h"
#include "true_stages.h"

#include <array>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace sonorelle::tools {

struct KeyScore {
    std::size_t melodies = 0;
    std::size_t same = 0;
    std::size_t relative = 0; // the major key for its minor, or the other way round
    std::size_t shifted =
        0; // right, with all names and the tuning a semitone apart: a tuning near a quarter tone
};

struct MelodyFigures {
    test::NoteScore notes;     // onset within 50 ms, pitch within 50 cents
    test::NoteScore notesLate; // onset within 100 ms
    test::CurveScore curve;
    test::MarkScore marks; // of the steady inner parts of the notes
    KeyScore keys;
    LostNotes lost;
    std::array<test::NoteScore, kTruths> notesOnTruth;
    std::array<std::vector<double>, kTruths> tuningErrorsOnTruth; // cents
    std::vector<double> tuningErrorsCents;
    std::vector<double> onsetErrorsSeconds; // found - sung, of pairs within 100 ms
    std::size_t failed = 0;                 // recordings without a result

    MelodyFigures& operator+=(const MelodyFigures& other);
};

// Every register from 70 to 1000 Hz at every rate from 11025 to 96000 Hz, keys and tunings at random: figures
// by what stands in the row's name ("from 70 Hz", "11025 Hz", "all").
struct MelodySet {
    MelodyFigures all;
    std::map<int, MelodyFigures> byLowestPitch; // MIDI
    std::map<int, MelodyFigures> byRate;        // Hz
};
// Told before each melody: how many are done and how many there are.
using Progress = std::function<void(std::size_t done, std::size_t all)>;
enum class Hisses { kAsWritten, kPlosivesInstead };
MelodySet MeasureMelodies(Hisses hisses, const Progress& progress);

// Many melodies at 22050 Hz, slow and fast ones in turns, five in each of the 24 keys: the key, and the rest
// as well.
MelodyFigures MeasureKeys(const Progress& progress);

// Sung vowels of one pitch, by pitch in Hz.
std::map<int, test::MarkScore> MeasureSteadyVowels(const Progress& progress);

} // namespace sonorelle::tools
