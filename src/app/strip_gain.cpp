#include "app/strip_gain.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

StripGain StripGainFromVolAndPan(float vol, float pan) {
    const float heldVol = std::isnan(vol) ? 0 : std::clamp(vol, 0.0F, kLargestStripVol);
    const float heldPan = std::isnan(pan) ? 0 : std::clamp(pan, -1.0F, 1.0F);
    return {std::sqrt(1 - heldPan) * heldVol, std::sqrt(1 + heldPan) * heldVol};
}

} // namespace sonorelle
