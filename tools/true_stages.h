// Which part of the analysis loses what: the note stages once more over the found marks, with one thing that
// the marks tell replaced by the truth. What becomes right by that was lost by the part that found it.
#pragma once

#include "analysed_melody.h"
#include "support/note_matching.h"

#include <array>
#include <cstddef>

namespace sonorelle::tools {

enum Truth : std::size_t {
    kAsFound,     // nothing replaced
    kTrueVoicing, // voiced where the singer is, and nowhere else
    kTruePitch,   // the sung pitch for that of the found periods
    kTrueBoth,
    kTruths
};

const char* TruthName(std::size_t truth);

struct StageScore {
    test::NoteScore notes;
    double tuningErrorCents = 0.0;
};

// The notes and the tuning of the melody in each of the ways above.
std::array<StageScore, kTruths> RunStagesOnTruth(const test::Recording& recording,
                                                 const AnalysedMelody& melody);

} // namespace sonorelle::tools
