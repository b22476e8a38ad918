// Drags a file out of a window, to any program that takes files: the source's side of the X drag-and-drop
// protocol, version 5, with the file's address as "text/uri-list".
//
// Threads: within a ToolkitScope, inside of a drag of the mouse. Returns when the button is released and the
// target has answered, or has not for some seconds; events run meanwhile.

#pragma once

#include <string>

namespace sonorelle {

// True when a target took it. `path` begins with a slash.
bool DragOut(unsigned long sourceWindow, const std::string& path);

} // namespace sonorelle
