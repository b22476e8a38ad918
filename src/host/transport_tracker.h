// Whether the host's position has jumped. Hosts say so themselves, but not all of them always do.
//
//     CTransportTracker transport;
//     transport.Follow(0, 512);      // false: a start at 0 is where it is expected
//     transport.Follow(512, 512);    // false
//     transport.Follow(1027, 512);   // true: three samples too far
//
// The audio thread's; plain values.

#pragma once

#include <cmath>
#include <cstdint>

namespace sonorelle {

class CTransportTracker {
public:
    // Hosts that count in musical time round: up to two samples off are no jump.
    static constexpr double kTolerance = 2; // whole samples

    // A block of `frames` samples begins at `samplePos`, which is finite. True when it has jumped there: it
    // is more than kTolerance whole samples off, and on another sample than the last block, so that a host
    // which stands still does not jump in every block.
    bool Follow(double samplePos, std::int32_t frames) {
        const double jump = std::trunc(std::fabs(samplePos - expected));
        const bool jumped = jump > kTolerance && std::trunc(samplePos) != std::trunc(last);
        expected = samplePos + frames;
        last = samplePos;
        return jumped;
    }

    double GetExpected() const { return expected; } // samples

private:
    double expected = 0; // where the next block begins if nothing jumps
    double last = 0;     // where the last one began
};

} // namespace sonorelle
