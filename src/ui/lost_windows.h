// Windows that a host has destroyed: an editor lies in a window of the host, and goes with it. The toolkit
// would make such a window anew, on the desktop; here it counts as closed instead.
//
// Threads: within a ToolkitScope.

#pragma once

namespace sonorelle {

void WatchLostWindows(); // once, when the display is open

} // namespace sonorelle
