// The connection to the display, which all windows of all instances share, and the one lock around it.
//
//     if (!OpenDisplay()) return false;      // no display: no windows, and nothing worse
//     {
//         const ToolkitScope scope;          // whatever thread this is
//         window->show();
//     }
//
// A host's own state is the same before and after a scope: its X error handlers and its locale. Within one,
// errors of this connection are swallowed (a host may destroy the window that an editor lies in at any time),
// and those of other connections go to the host's handler.
//
// The connection is kept when the last window is gone, since fonts and colours belong to it, and closed when
// the library is unloaded.
//
// Threads: any. A scope waits for that of another thread; one thread may nest them.

#pragma once

namespace sonorelle {

// True when there is a connection; makes it at the first call. False where there is no display, or where it
// has gone away.
bool OpenDisplay();
bool IsDisplayOpen();

class ToolkitScope {
public:
    ToolkitScope();
    ~ToolkitScope();
    ToolkitScope(const ToolkitScope&) = delete;
    ToolkitScope& operator=(const ToolkitScope&) = delete;
};

} // namespace sonorelle
