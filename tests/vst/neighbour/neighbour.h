// Another maker's plug-in, as far as it matters to this one: a window in a window of the host, drawn by a
// copy of the toolkit that is the neighbour's own. Built twice: with the toolkit inside and hidden, and with
// the system's shared library of it, all names in sight.
//
// Threads: one at a time.
#pragma once

namespace sonorelle::test {

inline constexpr int kNeighbourSize = 200;                  // pixels, both ways
inline constexpr unsigned long kNeighbourColour = 0x28A05A; // of its left upper corner

enum class NeighbourKind { kHidden, kPlain };
const char* NeighbourPath(NeighbourKind kind); // of the built library; not in it

// What the library exports under the name "Neighbour".
struct NeighbourCalls {
    bool (*open)(unsigned long parent); // false: no display
    void (*idle)();
    void (*close)();
    int (*errors)(); // how many X errors have come to its handler
    void (*leave)(); // closes its display; the library may be unloaded then
};

} // namespace sonorelle::test
