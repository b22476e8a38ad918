// An arrangement in a few lines for people.
//
//     song.wav
//       Key       C Major (found in the recording)
//       Style     Intelligent 4 Voices
//       Notes     17
//       Chords    C  F  C  G  C
//       Written   out/Out_song.wav
//                 out/Out_song.mid
//                 out/Out_song_chords.mid
//                 out/Out_song.svg

#pragma once

#include <string>

namespace sonorelle {

struct ArrangementReport;

std::string FormatSummary(const ArrangementReport& report);

} // namespace sonorelle
