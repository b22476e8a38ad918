#include "app/melody_properties.h"

#include "app/slider_text.h"
#include "harmony/scales.h"
#include "platform/numbers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace sonorelle {

void CkvovirelaineMelodyProperties::SetRoot(std::int32_t pitchClass) {
    if (ConsortierClassic::IsKeyRoot(pitchClass)) root.store(pitchClass, std::memory_order_relaxed);
}

void CkvovirelaineMelodyProperties::SetScale(std::int32_t scaleIndex) {
    if (ConsortierClassic::IsMelodyScale(scaleIndex)) scale.store(scaleIndex, std::memory_order_relaxed);
}

void CkvovirelaineMelodyProperties::SetTempo(float beatsPerMinute) {
    if (std::isfinite(beatsPerMinute) && beatsPerMinute > 0)
        tempo.store(beatsPerMinute, std::memory_order_relaxed);
}

std::string CkvovirelaineMelodyProperties::GetTempoText() const {
    return FormatFixed(static_cast<double>(GetTempo()), 1);
}

bool CkvovirelaineMelodyProperties::ChooseRoot(std::int32_t pitchClass) {
    if (!IsActive()) return false;
    const std::int32_t before = GetRoot();
    SetRoot(pitchClass);
    return GetRoot() != before && Report();
}

bool CkvovirelaineMelodyProperties::ChooseScale(std::int32_t scaleIndex) {
    if (!IsActive()) return false;
    const std::int32_t before = GetScale();
    SetScale(scaleIndex);
    return GetScale() != before && Report();
}

bool CkvovirelaineMelodyProperties::EnterTempo(float beatsPerMinute) {
    if (!IsActive() || !std::isfinite(beatsPerMinute)) return false;
    const float before = GetTempo();
    SetTempo(std::clamp(beatsPerMinute, kLowestTempo, kHighestTempo));
    return GetTempo() != before && Report();
}

bool CkvovirelaineMelodyProperties::StepTempo(std::int32_t steps, bool wholeSteps) {
    const double step = wholeSteps ? 1.0 : static_cast<double>(kTempoStep);
    return steps != 0 && EnterTempo(StepOnGrid(GetTempo(), steps * step, kTempoStep));
}

bool CkvovirelaineMelodyProperties::PressRatio(std::int32_t button) {
    if (button < 0 || button >= static_cast<std::int32_t>(kTempoRatios.size())) return false;
    const TempoRatio& ratio = kTempoRatios[static_cast<std::size_t>(button)];
    return EnterTempo(GetTempo() * ratio.numerator / ratio.denominator);
}

bool CkvovirelaineMelodyProperties::Report() {
    if (onChanged) onChanged(*this);
    return true;
}

} // namespace sonorelle
