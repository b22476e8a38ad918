// Shows a menu at the pointer.
//
// Threads: within a ToolkitScope; returns when the user has chosen, events run meanwhile.

#pragma once

#include "app/popup_menu.h"

#include <cstdint>

namespace sonorelle {

inline constexpr int kMarkSize = 16; // pixels, of the red and the green mark

std::int32_t RunPopup(const PopupMenu& menu); // the id chosen; PopupItem::kNothing

} // namespace sonorelle
