// Windows of other programs, as the display knows them: those that an editor lies in, those that things are
// dragged to.
//
// Threads: within a ToolkitScope. Each operation waits for the display's answer, some tens of microseconds.

#pragma once

#include <vector>

namespace sonorelle {

// The window that this one lies in; 0 for one that lies on the screen itself, or is gone.
unsigned long ParentOf(unsigned long window);
// The window around this one that a window manager looks after; the outermost one where there is no such
// manager; 0 for a window that is gone.
unsigned long TopWindowOf(unsigned long window);
// A property of 32-bit numbers; empty when there is none of this type.
std::vector<unsigned long> ReadNumbers(unsigned long window, unsigned long property, unsigned long type);

} // namespace sonorelle
