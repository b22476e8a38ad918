#include "app/simple_channel_strip.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

void CkvoSimpleChannelStrip::SetVol(float value) {
    if (std::isfinite(value)) vol.store(std::clamp(value, 0.0F, kLargestVol), std::memory_order_relaxed);
}

void CkvoSimpleChannelStrip::SetPan(float value) {
    if (std::isfinite(value)) pan.store(std::clamp(value, -1.0F, 1.0F), std::memory_order_relaxed);
}

// The strips' law of panning, of a unit gain: a master may be louder than a voice's strip.
StripGain CkvoSimpleChannelStrip::GetGain() const {
    const StripGain panned = StripGainFromVolAndPan(1, GetPan());
    const float gain = GetVol();
    return {panned.left * gain, panned.right * gain};
}

} // namespace sonorelle
