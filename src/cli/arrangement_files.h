// Where the results of an arrangement go.

#pragma once

#include "app/voice_preset.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle {

struct ArrangeOptions;
struct ArrangementSettings;

// For "a/song.wav" and the folder "out" all names begin with "out/Out_song".
struct ArrangementFiles {
    ArrangementFiles(const std::string& folder, const std::string& recording);

    // Those that an arrangement with these settings writes, in the order in which they are told.
    std::vector<std::string> Wanted(const ArrangementSettings& settings, bool withStems) const;
    // Every name that some run could have written.
    std::vector<std::string> All() const;

    std::string mix;                              // ".wav"
    std::array<std::string, kPresetVoices> stems; // "_orange.wav" and so on, by voice
    std::string voices;                           // ".mid"
    std::string chords;                           // "_chords.mid"
    std::string picture;                          // ".svg"
};

} // namespace sonorelle
