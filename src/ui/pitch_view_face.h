// Draws the pitch view: the recording as a piano roll, with its notes and the harmony voices.
//
// Threads: within a ToolkitScope, while nobody replaces the view.

#pragma once

#include "ui/toolbar_layout.h"

namespace sonorelle {

class CkvoPitchView;

// The view's size is that of `place`, in the window that is being drawn.
void DrawPitchView(const CkvoPitchView& view, Placement place);

} // namespace sonorelle
