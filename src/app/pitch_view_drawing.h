// What a face needs to draw the pitch view, as plain values in pixels from the view's left upper corner.
//
// Drawing order: loudness strip, grid, notes, recorded pitch, markers, position. What lies in the note area
// is clipped to it.

#pragma once

#include "app/pitch_object.h"
#include "app/pitch_view_geometry.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle {

enum class PitchViewBackground { kNormal, kEdit, kLive };

// What the pointer would do where it is.
enum class PitchViewCursor {
    kArrow,     // nothing
    kHand,      // press a button, or choose a chord
    kPan,       // move what is seen
    kZoom,      // change how much is seen
    kMoveNote,  // up and down
    kSelect,    // add a note to those that move together
    kCut,       // a note in two
    kJoin,      // two notes into one
    kResize,    // a handle of the loudness strip
    kScroll,    // the body of the loudness strip
    kMarker,    // a marker of the play range
    kDragTempo, // the beats
};

struct NoteDrawing {
    std::int32_t note = 0;
    std::int32_t voice = 0;
    PixelRect rect;
    Colour colour; // of its object, selected or at rest
    PitchBoxStyle style = PitchBoxStyle::kNote;
    bool selected = false; // pressed, or one of the selection
    bool hot = false;      // under the pointer
};

// Where the sung note was.
struct RecordedPitchLine {
    static constexpr std::int32_t kWidth = 3;

    std::int32_t note = 0;
    PixelPoint from;
    PixelPoint to;
    Colour colour;
};

// A piece of the sung melody without a gap.
using PixelPolyline = std::vector<PixelPoint>;

// Loudness of the whole recording; each part a closed polygon along the lower edge of the strip, or empty.
struct OverviewDrawing {
    PixelRect strip;
    PixelRect visibleRange; // behind the polygons, in kPanelColour
    PixelPolyline before;   // in kOverviewOutside
    PixelPolyline visible;  // in kOverviewInside
    PixelPolyline behind;   // in kOverviewOutside
    PixelRect leftHandle;
    PixelRect rightHandle;
};

struct MarkerDrawing {
    PixelRect handle;
    std::int32_t lineX = 0; // down through the notes
    bool inSight = false;
};

struct ToggleDrawing {
    PixelRect rect;
    std::string label; // "Key", "Freq", "Beat"
    bool on = false;
    Colour background;
    Colour labelColour;
};

// A row of the grid, a semitone high.
struct PitchRowDrawing {
    PixelRect rect; // in the note area
    std::int32_t pitch = 0;
    std::string name; // "C4" is middle C's
    bool blackKey = false;
    bool inScale = false;
    bool isRoot = false;
};

struct BeatLineDrawing {
    std::int32_t x = 0;
    std::int32_t bar = 0;
    std::int32_t beat = 0; // 1 begins the bar
    bool strong = false;   // a bar line
};

// The time ruler while the beats are not shown.
struct TimeLineDrawing {
    std::int32_t x = 0;
    std::string text; // "0:01.500"
};

struct ChordDrawing {
    std::int32_t note = 0;
    PixelRect rect;           // in the chord row
    std::string name;         // of the arrangement's chord
    std::string detectedName; // of the chord that the voices form; empty where nobody has told
    Colour colour;
};

struct PositionDrawing {
    std::int32_t x = 0;
    bool inSight = false;
    bool playing = false;
};

// The pitch to which a dragged note has come.
struct PitchLabel {
    std::int32_t note = 0;
    std::int32_t voice = 0;
    std::int32_t pitch = 0; // floor(pitch + 0.5)
    std::string name;
    PixelRect rect; // of the note
};

} // namespace sonorelle
