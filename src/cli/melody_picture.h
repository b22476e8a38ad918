// One analysed recording as a picture: the piano roll of its notes and pitch curve, as SVG text.

#pragma once

#include <string>

namespace sonorelle {

struct MelodyReport;

std::string DrawMelody(const MelodyReport& report);

} // namespace sonorelle
