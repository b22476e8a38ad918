// Draws labels with their markup.
//
// Threads: within a ToolkitScope; sizes need the display, drawing needs a widget's draw().

#pragma once

#include "app/voice_colours.h"
#include "ui/toolbar_layout.h"

#include <string_view>

namespace sonorelle {

struct LabelSize {
    int width = 0; // pixels
    int height = 0;
};

enum class LabelAlign { kLeft, kCentre };

LabelSize MeasureLabel(std::string_view label, int size);
// In the middle of the height of `box`. Clips nothing.
void DrawLabel(std::string_view label, int size, Placement box, LabelAlign align, Colour colour);

} // namespace sonorelle
