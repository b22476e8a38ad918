// A report as a table for people: a block about the recording, then one line a note.
//
//     song.wav
//       Rate      44100 Hz
//       Channels  1 (mono)
//       Length    12.345 s (544414 frames)
//       Marks     2345
//       Tuning    441.23 Hz (+5 cents)
//       Key       C major
//       Cache     written
//       Time      0.123 s
//
//       Note  Start (s)  End (s)  Length (s)  Pitch    Level
//          1      0.302    0.900       0.598  A#3 +12  0.412
//
// Pitches are names against A4 = 440 Hz, whatever the tuning is; middle C is C4.

#pragma once

#include <string>

namespace sonorelle {

struct MelodyReport;

// Digits behind the point that a reader of tables can use.
inline constexpr int kSecondsDecimals = 3;
inline constexpr int kHertzDecimals = 2;

std::string FormatTable(const MelodyReport& report);

} // namespace sonorelle
