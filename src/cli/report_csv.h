// The pitch curve as comma-separated values (RFC 4180, line ends of one byte): a line of headings, then one
// line a frame.
//
//     seconds,pitch,voiced,level,period,salience
//     0.012290,57.01,1,0.25,201,14.5
//
// `pitch` is a MIDI note number (0: the frame has no period), `voiced` 0 or 1, `level` the energy relative to
// the loudest frame, `period` in sample frames, `salience` in dB. Each f32 is the shortest text that reads
// back to the same bits. Where one stream holds the curves of several recordings, a first column `file` names
// them.

#pragma once

#include <string>

namespace sonorelle {

struct MelodyReport;

// With its line end.
std::string CsvHeading(bool withFile);

// The lines of one recording, without the heading.
std::string FormatCsv(const MelodyReport& report, bool withFile);

} // namespace sonorelle
