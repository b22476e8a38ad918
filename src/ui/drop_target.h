// Lets windows take what is dragged over them from other programs: the target's side of the X drag-and-drop
// protocol, version 5. They get the toolkit's events of a drag, and what is dropped as FL_PASTE.
//
// Such a window lies in one of a host, and many programs (all file managers that are made with GTK) look for
// targets no deeper than at the windows that a window manager knows. So the outermost window names a window
// of our own as its proxy, as the protocol has it. What happens outside of an editor is passed on to the
// host, and its answers to the source, so that a host which takes drops itself goes on to do so.
//
// Threads: within a ToolkitScope.

#pragma once

class Fl_Window;

namespace sonorelle {

void WatchDrops(); // once, when the display is open

void TakeDrops(Fl_Window& window); // for a window that is shown
// Again whenever the window may have come to lie in another one.
void FollowHostWindow(Fl_Window& window);
void TakeNoDrops(Fl_Window& window); // before it is hidden

} // namespace sonorelle
