// One arrangement as one JSON object (RFC 8259) on one line, with a line end: several in a row are a stream
// of JSON lines.
//
// It begins as the object of an analysis does (see report_json.h). Then come "settings" (the four strips of
// the voices among them, in the units of their options), the number of voices, the files that were written
// and those of an earlier run that were left, and the notes, each with the record of the melody and
//
//     "chord":{"root":0,"noteCount":3,"triadType":0,"tetradType":13,"name":"C"},
//     "voices":[60,55,52,48],"gains":[1,1,1,1]
//
// Voices are MIDI keys, -1 for a silent one; neither they nor the chord's root are transposed, its name is.
// Styles that do not go by chords have the record of no chord, "--".

#pragma once

#include <string>

namespace sonorelle {

struct ArrangementReport;

std::string FormatArrangementJson(const ArrangementReport& report);

} // namespace sonorelle
