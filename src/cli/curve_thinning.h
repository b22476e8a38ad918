// Makes long curves as short as a picture can show.

#pragma once

#include "cli/svg_canvas.h"

#include <cstddef>
#include <vector>

namespace sonorelle {

// A curve with rising x, drawn as a line: of the points that share a pixel column only the first, the lowest,
// the highest and the last remain, in their order. The line looks the same, and is at most 4 points a column
// long.
std::vector<Point> ThinLine(const std::vector<Point>& points);

// The outline of a filled curve with rising x: in each pixel column that holds points, the one with the
// smallest y, which is the highest on the picture.
std::vector<Point> UpperEnvelope(const std::vector<Point>& points);

} // namespace sonorelle
