#include "app/tuning_freq.h"

#include "app/slider_text.h"
#include "platform/numbers.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

std::string CkvovirelaineTuningFreq::GetText() const {
    return FormatFixed(static_cast<double>(GetFrequency()), 1) + " " + kUnit;
}

void CkvovirelaineTuningFreq::SetFrequency(float hertz) {
    if (std::isfinite(hertz))
        frequency.store(std::clamp(hertz, kLowest, kHighest), std::memory_order_relaxed);
}

bool CkvovirelaineTuningFreq::EnterFrequency(float hertz) {
    const float before = GetFrequency();
    SetFrequency(hertz);
    if (GetFrequency() == before) return false;
    if (onChanged) onChanged(*this);
    return true;
}

bool CkvovirelaineTuningFreq::StepFrequency(std::int32_t steps, bool wholeSteps) {
    const double step = wholeSteps ? 1.0 : static_cast<double>(kStep);
    return steps != 0 && EnterFrequency(StepOnGrid(GetFrequency(), steps * step, kStep));
}

} // namespace sonorelle
