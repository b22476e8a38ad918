// The pictures of the toolbar's buttons, with the box under them.
//
//     const CPixelCanvas picture = DrawToolbarPicture(kToolbar[2], ButtonLook::kHovered, false);
//
// Pure computation, for any thread; a picture of 35 x 15 takes some tens of microseconds.

#pragma once

#include "ui/pixel_canvas.h"
#include "ui/toolbar_layout.h"

namespace sonorelle {

enum class ButtonLook { kNormal, kHovered, kPressed, kDisabled };

inline constexpr int kLogoSignWidth = 20; // pixels; the word stands behind

CPixelCanvas DrawToolbarPicture(const ToolbarEntry& entry, ButtonLook look, bool on);

} // namespace sonorelle
