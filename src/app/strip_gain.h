// How loud a channel strip makes its voice on either side.
//
// left = sqrt(1 - pan) x vol, right = sqrt(1 + pan) x vol: the power of both sides together is the same
// wherever the voice stands, and the centre is unity. A voice panned hard sounds on one side alone, at
// sqrt(2) (3 dB) above that.
//
// Pure functions for any thread; nothing allocates.

#pragma once

namespace sonorelle {

inline constexpr float kLargestStripVol = 1.333F; // 2.5 dB: the top of the volume slider

struct StripGain {
    // Before the first change of volume or pan a strip stands 3 dB below its unity.
    static constexpr float kBeforeFirstChange = 0.70710678F; // sqrt(0.5)

    float left = kBeforeFirstChange;
    float right = kBeforeFirstChange;
};

// `vol`: 0 to kLargestStripVol; `pan`: -1 (left) to 1 (right). Both are held to these ranges; what is not a
// number counts as silence, or as the centre. StripGainFromVolAndPan(1, 0) is 1 on both sides.
StripGain StripGainFromVolAndPan(float vol, float pan);

} // namespace sonorelle
