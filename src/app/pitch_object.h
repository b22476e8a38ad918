// A note of the pitch view as a widget, and the record of what it shows.
//
//     PitchViewNote& note = view.noteRows[voice][index];
//     if (note.object.isOff != 0) DrawFlatBox(note.object.colour);
//
// Plain values; they belong to the view that holds them.

#pragma once

#include "app/voice_colours.h"
#include "harmony/chord_record.h"

#include <cstdint>

namespace sonorelle {

enum class PitchBoxStyle : std::int32_t { kNote, kOff, kDoubled };

struct CkvoPitchObject {
    Colour colour;       // at rest
    Colour selectColour; // while it is pressed
    std::int32_t note = -1;
    std::int32_t voice = -1;
    std::int32_t isOff = 0;   // its gain is another than 1
    std::int32_t doubled = 0; // a voice of a lower number has this pitch too

    // Off notes look off, whether doubled or not.
    PitchBoxStyle BoxStyle() const {
        if (isOff != 0) return PitchBoxStyle::kOff;
        return doubled != 0 ? PitchBoxStyle::kDoubled : PitchBoxStyle::kNote;
    }
};

struct PitchViewNote {
    static constexpr float kActiveGain = 1.0F;

    float start = 0;  // first sample
    float pitch = 0;  // MIDI pitch, with the view's transposeShift added
    float length = 0; // samples
    float height = 1; // semitones
    float offset = 0; // semitones: all drags together
    std::int32_t chordRoot = 0;
    std::int32_t chordType = ConsortierClassic::kNoTetrad; // not named yet
    std::int32_t detectedRoot = 0;
    std::int32_t detectedType = ConsortierClassic::kNoTetrad;
    std::int32_t noteId = 0;
    float gain = kActiveGain;
    CkvoPitchObject object;
    std::int32_t selected = 0; // 1 while it is dragged
    bool isSilent = true;      // the voice does not sing here: nothing to draw, nothing to hit

    float End() const { return start + length; }
};

// One frame of the analysis.
struct PitchCurvePoint {
    std::int32_t position = 0; // sample
    float pitch = 0;           // MIDI pitch, with fraction
    float level = 0;           // 0 to 1, square root of the frame's level
    bool voiced = false;
};

} // namespace sonorelle
