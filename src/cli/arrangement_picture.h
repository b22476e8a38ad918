// One arrangement as a picture: the voices in their colours, the sung pitch curve over them, the chords
// above, as SVG text. Everything is drawn transposed, as the MIDI file sounds.

#pragma once

#include <string>

namespace sonorelle {

struct ArrangementReport;

// `isSmall`: for the column of a text; a page otherwise.
std::string DrawArrangement(const ArrangementReport& report, bool isSmall);

} // namespace sonorelle
