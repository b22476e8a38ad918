#include "app/voice_controls.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace sonorelle {

namespace {

// Each way has a factor of its own, exact or nearest, so that round values stay round in both.
constexpr float kSecondsPerMillisecond = 0.001F;
constexpr float kTimingPerPercent = 0.002F; // seconds: 200 ms at the top
constexpr float kSharePerPercent = 0.01F;
constexpr float kSemitonesPerLogRatio = 17.31234F; // 12 / ln 2

constexpr VoiceControlInfo kNoSlider;

constexpr std::size_t RowOf(VoiceControl control) {
    const auto code = static_cast<std::size_t>(control);
    return control < VoiceControl::kSwitch ? code : code - 1; // the switches have no row
}

constexpr bool RowsAreInOrder() {
    for (std::size_t row = 0; row < kVoiceControls.size(); ++row)
        if (RowOf(kVoiceControls[row].control) != row) return false;
    return true;
}
static_assert(RowsAreInOrder());

float Held(const VoiceControlInfo& info, float panelValue) {
    return std::isnan(panelValue) ? info.preset : std::clamp(panelValue, info.least, info.most);
}

float PanelValueOf(VoiceControl control, float stored) {
    switch (control) {
    case VoiceControl::kDelay:
        return stored * kDelayPerSecond;
    case VoiceControl::kShape:
        return kSemitonesPerLogRatio * std::log(stored);
    case VoiceControl::kDrift:
        return (1 - stored) * kPercentPerShare;
    case VoiceControl::kTune:
    case VoiceControl::kGlide:
        return stored * kPercentPerShare;
    case VoiceControl::kTime:
        return stored * kPercentPerTiming;
    default:
        return stored;
    }
}

} // namespace

const VoiceControlInfo& GetVoiceControl(VoiceControl control) {
    return IsVoiceSlider(control) ? kVoiceControls[RowOf(control)] : kNoSlider;
}

float StoredFromPanel(VoiceControl control, float panelValue) {
    const float value = Held(GetVoiceControl(control), panelValue);
    switch (control) {
    case VoiceControl::kDelay:
        return value * kSecondsPerMillisecond;
    case VoiceControl::kShape:
        return std::exp2(value / kSemitonesPerOctave);
    case VoiceControl::kDrift:
        return 1 - value * kSharePerPercent;
    case VoiceControl::kTune:
    case VoiceControl::kGlide:
        return value * kSharePerPercent;
    case VoiceControl::kTime:
        return value * kTimingPerPercent;
    default:
        return value;
    }
}

float PanelFromStored(VoiceControl control, float stored) {
    return Held(GetVoiceControl(control), PanelValueOf(control, stored));
}

float SemitonesFromRatio(float ratio) { return kSemitonesPerOctave * std::log2(ratio); }

StoredRange GetStoredRange(VoiceControl control) {
    const VoiceControlInfo& info = GetVoiceControl(control);
    StoredRange range = {StoredFromPanel(control, info.least), StoredFromPanel(control, info.most)};
    if (range.least > range.most) std::swap(range.least, range.most); // drift: 200 % is the least
    return range;
}

bool IsStoredValue(VoiceControl control, float stored) {
    const StoredRange range = GetStoredRange(control);
    return IsVoiceSlider(control) && stored >= range.least && stored <= range.most;
}

} // namespace sonorelle
