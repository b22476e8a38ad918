#include "app/vol_pan_dial.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace sonorelle {

namespace {

constexpr float kPointInset = 2; // pixels that the knob's middle keeps from the upper and the lower edge
constexpr float kClipStep = 0.0625F;
static_assert(kClipStep * CkvoVolPanDial::kClipRedraws == 1);

double ShareOf(std::int32_t pixel, std::int32_t pixels) { return pixel / std::max(pixels - 1.0, 1.0); }

float HeldTo(double value, float least, float most) {
    return std::clamp(static_cast<float>(value), least, most);
}

void SetHeld(std::atomic<float>& held, float value, float least, float most) {
    if (std::isfinite(value)) held.store(std::clamp(value, least, most), std::memory_order_relaxed);
}

} // namespace

DialPoint DialPointAt(float vol, float pan, DialSize size) {
    const float heldVol = std::isfinite(vol) ? std::clamp(vol, 0.0F, kLargestStripVol) : 0;
    const float heldPan = std::isfinite(pan) ? std::clamp(pan, -1.0F, 1.0F) : 0;
    const float range = static_cast<float>(size.height) - 2 * kPointInset;
    return {(heldPan + 1) * static_cast<float>(size.width) / 2,
            range * (1 - heldVol * kDialVolShare) + kPointInset};
}

DialPlace DialPlaceAt(std::int32_t x, std::int32_t y, DialSize size) {
    constexpr double kTopVol = kLargestStripVol;
    return {HeldTo((1 - ShareOf(y, size.height)) * kTopVol, 0, kLargestStripVol),
            HeldTo(2 * ShareOf(x, size.width) - 1, -1, 1)};
}

float DialOuterRadius(std::int32_t height) { return static_cast<float>(height) - kDialArcInset; }

float DialUnityRadius(std::int32_t height) {
    return static_cast<float>(height) * kDialUnityShare - kDialArcInset;
}

void CkvoVolPanDial::SetVol(float value) { SetHeld(vol, value, 0, kLargestStripVol); }

void CkvoVolPanDial::SetPan(float value) { SetHeld(pan, value, -1, 1); }

void CkvoVolPanDial::Set(float volValue, float panValue) {
    SetVol(volValue);
    SetPan(panValue);
}

void CkvoVolPanDial::SetPeak(float left, float right) {
    const std::array<float, kSides> powers = {left, right};
    for (std::size_t side = 0; side < peaks.size(); ++side) {
        peaks[side] = powers[side] > 0 ? powers[side] : 0;
        if (peaks[side] > kClipPower) clipCounters[side] = kClipRedraws;
    }
}

float CkvoVolPanDial::GetPeak(std::int32_t side) const {
    return side >= 0 && side < kSides ? peaks[static_cast<std::size_t>(side)] : 0;
}

std::array<PeakWedge, CkvoVolPanDial::kSides> CkvoVolPanDial::NextWedges() {
    std::array<PeakWedge, kSides> wedges;
    for (std::size_t side = 0; side < peaks.size(); ++side) {
        PeakWedge& wedge = wedges[side];
        wedge.radius = std::max(1 - std::pow(peaks[side], 0.25F) * kDialVolShare, 0.0F);
        wedge.visible = wedge.radius < kWedgeHidden;
        wedge.clip = static_cast<float>(clipCounters[side]) * kClipStep;
        clipCounters[side] = std::max(clipCounters[side] - 1, 0);
    }
    return wedges;
}

bool CkvoVolPanDial::IsFading() const {
    return std::any_of(clipCounters.begin(), clipCounters.end(), [](std::int32_t left) { return left > 0; });
}

} // namespace sonorelle
