// How the editor looks: fonts, colours, boxes.
//
//     button->box(kvoRPlasticBox());
//     label->labelcolor(ToolkitColour(kLabelColour));
//
// Threads: within a ToolkitScope.

#pragma once

#include "app/voice_colours.h"

#include <FL/Enumerations.H>

namespace sonorelle {

inline constexpr int kLabelSize = 12; // pixels
inline constexpr int kTextSize = 11;  // of tips, lists, and what is typed: one less

inline constexpr Colour kFrameColour = ColourFromRgb(0x8b94a1); // the lines of frames and boxes
inline constexpr Colour kDisabledColour = ColourFromRgb(0xa3abb5);
inline constexpr Colour kTipColour = ColourFromRgb(0xfffbe6);

// The rounded box around a panel, or below a picture: flat, with a line around it.
void DrawFrame(int x, int y, int width, int height, Colour fill, Colour line = kFrameColour);

void LoadTheme(); // once, when the display is open

inline Fl_Color ToolkitColour(Colour colour) { return fl_rgb_color(colour.red, colour.green, colour.blue); }
Colour ColourOfToolkit(Fl_Color colour);

// Rounded boxes of plastic: one that stands out, as buttons do, and one that is pressed in.
inline constexpr Fl_Boxtype kvoRPlasticBox() { return FL_FREE_BOXTYPE; }
inline constexpr Fl_Boxtype kvosRPlasticBox() { return static_cast<Fl_Boxtype>(FL_FREE_BOXTYPE + 1); }
// The knob of a slider, with a notch across its way: for Fl_Slider::slider().
inline constexpr Fl_Boxtype CkvoSliderGlyph() { return static_cast<Fl_Boxtype>(FL_FREE_BOXTYPE + 2); }

} // namespace sonorelle
