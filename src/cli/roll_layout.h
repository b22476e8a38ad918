// Where things lie in a piano roll: pure arithmetic between seconds, MIDI pitches and pixels.
//
//     +--------------------------------------------------+
//     | title                                     legend |
//     | subtitle                                         |
//     | chord row                                        |
//     | keys | lanes, one a semitone, time to the right  |
//     |      | loudness strip                            |
//     |      | time axis                                 |
//     +--------------------------------------------------+

#pragma once

#include "cli/svg_canvas.h"

#include <cstdint>
#include <vector>

namespace sonorelle {

// The lanes of a roll: whole MIDI notes, both ends included.
struct PitchSpan {
    std::int32_t lowest = 54;
    std::int32_t highest = 67;
    std::int32_t Lanes() const { return highest - lowest + 1; }
};

// The lanes that show `pitches` (not finite ones and those outside the MIDI range are left out) with room
// around them, and at least an octave and a tone. Without pitches: around middle C.
PitchSpan SpanOf(const std::vector<float>& pitches);

// What a picture has besides keys and lanes, and how large it is.
struct RollFormat {
    int chordLines = 0;       // lines of chord names in a row above the lanes; 0: no row
    bool hasLoudness = true;  // a strip below them
    bool isSmall = false;     // for the column of a text; a page otherwise
    bool namesInBars = false; // lanes high enough for note names in their bars, as far as the page allows
};

struct RollLayout {
    double seconds = 0; // of the whole recording
    PitchSpan span;
    double pixelsPerSecond = 1;
    double laneHeight = 1;
    double width = 0; // of the picture
    double height = 0;
    Box chords; // of no height where there are none
    Box keys;
    Box lanes;
    Box loudness; // of no height where there is none

    double XOf(double atSeconds) const { return lanes.x + atSeconds * pixelsPerSecond; }
    // The middle of the lane for a whole note.
    double YOf(double midiPitch) const;
    double LaneTop(std::int32_t midiNote) const { return YOf(midiNote + 0.5); }
};

RollLayout LayOutRoll(double seconds, const PitchSpan& span, const RollFormat& format = {});

// Marks on the time axis: every `step` seconds a line with a label of `decimals` digits, every `minorStep` a
// tick.
struct TimeTicks {
    double step = 1;
    double minorStep = 0.2;
    int decimals = 0;
};

// The finest of 1, 2 and 5 times a power of ten whose labels keep apart.
TimeTicks ChooseTicks(double seconds, double pixelsPerSecond);

} // namespace sonorelle
