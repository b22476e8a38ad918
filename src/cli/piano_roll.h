// Draws voices as a piano roll: a keyboard and semitone lanes, note bars in the voices' colours, the sung
// pitch curve, octave lines, chord names, a loudness strip and a time axis.

#pragma once

#include "cli/roll_layout.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace sonorelle {

struct RollNote {
    double startSeconds = 0;
    double endSeconds = 0;
    float midiPitch = 0;
    // Voices on one pitch share a bar: each fills one of its strips, numbered from the top.
    int strip = 0;
    int strips = 1;
};

struct RollVoice {
    std::size_t colour = 0; // index into kVoiceColours
    std::vector<RollNote> notes;
    std::string name = {}; // in the legend; empty: not there
};

// A chord name holds until the next one.
struct RollChord {
    double startSeconds = 0;
    std::string name;
};

struct RollRegion {
    double startSeconds = 0;
    double endSeconds = 0;
};

// One point of the lead's pitch curve and of the loudness strip; they rise in time.
struct RollPoint {
    double seconds = 0;
    float midiPitch = 0; // drawn where `voiced`; not finite or 0 and below: a gap
    bool voiced = false;
    float loudness = 0; // 0 to 1
};

struct PianoRoll {
    std::string title;
    std::string subtitle;
    double seconds = 0; // length of the recording
    PitchSpan span;
    std::vector<RollVoice> voices; // the first is the lead
    std::vector<RollPoint> curve;
    std::vector<RollChord> chords = {};              // rising in time
    std::optional<RollRegion> region = std::nullopt; // what lies outside of it is veiled
    RollFormat format = {};                          // the lines for the chords are counted by the drawing
};

// The whole picture as SVG text. Its size is bounded by the number of notes and by the width of the picture,
// whatever the length of the curve.
std::string DrawPianoRoll(const PianoRoll& roll);

} // namespace sonorelle
