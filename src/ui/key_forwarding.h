// Keys that no control of the editor uses belong to the host: its space bar, its transport.
//
// Threads: within a ToolkitScope.

#pragma once

class Fl_Window;

namespace sonorelle {

void ForwardUnusedKeys(); // once, when the display is open

// From now on, keys that `window` does not use go to the native window around it.
void ForwardKeysOf(Fl_Window& window, unsigned long hostWindow);
void ForwardNoKeysOf(Fl_Window& window);

} // namespace sonorelle
