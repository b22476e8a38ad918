// One analysed recording as a picture: the piano roll of its notes and pitch curve, as SVG text.

#pragma once

#include "cli/piano_roll.h"

#include <string>
#include <vector>

namespace sonorelle {

struct MelodyReport;

std::string DrawMelody(const MelodyReport& report);

// The pitches that the lanes of a roll must show for the pitch curve: those of the outliers are left out.
std::vector<float> CurvePitchesToShow(const MelodyReport& report);
// The pitch curve and loudness of a roll; `transpose` in semitones.
std::vector<RollPoint> RollCurve(const MelodyReport& report, float transpose);

} // namespace sonorelle
