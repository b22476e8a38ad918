// The small borderless window that follows a drag: the chord that the voices form, or the time at a marker.
//
//     CkvoChordDisplayWin window;
//     window.ShowChord("C M7");   // "@s-8@y+6 chord:@s0\n@y+3 C M7"
//     window.ShowTime(66150, 44100);  // "0:01.500"
//
// The texts carry the editor's markup (@s size, @y shift). Belongs to the interface; texts allocate.

#pragma once

#include "app/beat_grid.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace sonorelle {

// "%d.%d.%d": bar, beat and tick; the first bar and beat are 1, the first tick is 0.
std::string FormatBeatPosition(const BeatPosition& position);

// The text around a chord's name; an empty name gives "--".
std::string FormatChordTip(std::string_view chordName);

// Name of the chord as shown beside notes. Empty for type 13 and for types that do not exist.
std::string ChordDisplayName(std::int32_t root, std::int32_t type, bool useFlats);

struct CkvoChordDisplayWin {
    static constexpr std::int32_t kTextMargin = 12; // pixels: window size beyond that of the text

    std::string text;
    std::int32_t x = 0; // of its right upper corner, pixels from the view's left upper corner
    std::int32_t y = 0;

    void ShowChord(std::string_view chordName) { text = FormatChordTip(chordName); }
    // "0:01.500", at `sampleRate` (above 0) in Hz; with the bar in a line below.
    void ShowTime(double sample, float sampleRate);
    void ShowTimeAndBeat(double sample, float sampleRate, const BeatPosition& position);
};

} // namespace sonorelle
