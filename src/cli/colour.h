// A colour as SVG writes it.

#pragma once

#include "app/voice_colours.h"

#include <string>

namespace sonorelle {

// "#ff5f00"
std::string HexText(Colour colour);

} // namespace sonorelle
