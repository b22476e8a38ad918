// A channel strip with nothing but volume and pan, as a master has it.
//
//     CkvoSimpleChannelStrip master;
//     master.SetVol(0.5F);
//     master.GetGain().left; // 0.5
//
// Any thread; nothing allocates or locks.

#pragma once

#include "app/strip_gain.h"

#include <atomic>

namespace sonorelle {

class CkvoSimpleChannelStrip {
public:
    static constexpr float kLargestVol = 2; // 6 dB
    static constexpr float kPanStep = 0.05F;

    float GetVol() const { return vol.load(std::memory_order_relaxed); } // 0 to 2
    float GetPan() const { return pan.load(std::memory_order_relaxed); } // -1 to 1
    // Held to the ranges; what is not finite changes nothing.
    void SetVol(float value);
    void SetPan(float value);
    StripGain GetGain() const;

private:
    std::atomic<float> vol{1};
    std::atomic<float> pan{0};
};

} // namespace sonorelle
