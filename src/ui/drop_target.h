// Makes a window take what is dragged over it from other programs.
//
// Threads: within a ToolkitScope.

#pragma once

class Fl_Window;

namespace sonorelle {

void WatchDrops(); // once, when the display is open

// For a window that is shown. It gets the toolkit's events of a drag, and what is dropped as FL_PASTE.
void TakeDrops(const Fl_Window& window);

} // namespace sonorelle
