// One sound after the other: sung by the engine at all distances, judged, measured.
#pragma once

#include "sound_figures.h"
#include "sound_material.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace sonorelle::tools {

inline constexpr std::array<int, 9> kIntervals = {-12, -7, -4, -3, 0, 3, 4, 7, 12}; // semitones

struct SoundResult {
    std::string name;
    std::size_t analysedNotes = 0;
    std::map<int, SoundFigures> voices; // by interval: what the engine sings, beside the source
    // Songs alone: what an ideal voice would get from the same judge, and the engine's voice beside that one.
    std::map<int, SoundFigures> ideal;
    std::map<int, SoundFigures> againstIdeal;
    UnisonFigures unison;
    double startMilliseconds = 0.0; // of all voices behind the source; taken out of everything else
    // How far the onsets wander when the lead itself is moved, in ms: largest over the sound.
    std::map<int, double> leadOnsetMilliseconds;
};

// Write their sounds into `folder`. Nothing when the engine or Praat
// refuses; they say why on stderr.
std::optional<SoundResult> CheckSong(const Song& song, const std::filesystem::path& folder);
std::optional<SoundResult> CheckRecording(const std::filesystem::path& file,
                                          const std::filesystem::path& folder);

} // namespace sonorelle::tools
