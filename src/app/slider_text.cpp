#include "app/slider_text.h"

#include "platform/numbers.h"
#include "platform/saturate.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace sonorelle {

namespace {

constexpr const char* kSilence = "-oo";
constexpr int kSignificantDigits = 6; // of a tick's label

// In f32, where the gains of whole decibels give whole decibels.
float Decibels(float gain) { return 20 * std::log10(gain); }

float HeldTo(const VoiceControlInfo& slider, float value) {
    return std::isnan(value) ? slider.preset : std::clamp(value, slider.least, slider.most);
}

// As "%g" gives it where the decimal point is a point: no zeros behind the last digit that counts.
std::string ShortNumber(float value) {
    std::array<char, 32> text; // sign, 6 digits, point, exponent
    const auto result = std::to_chars(text.data(), text.data() + text.size(), static_cast<double>(value),
                                      std::chars_format::general, kSignificantDigits);
    return std::string(text.data(), result.ptr);
}

} // namespace

std::string SliderTip(const VoiceControlInfo& slider, float value) {
    const float held = HeldTo(slider, value);
    if (!slider.logarithmic) return FormatFixed(static_cast<double>(held), 1);
    return held > 0 ? FormatFixed(static_cast<double>(Decibels(held)), 1) : kSilence;
}

std::string SliderTickLabel(const VoiceControlInfo& slider, float value) {
    const float held = HeldTo(slider, value);
    if (!slider.logarithmic) return ShortNumber(held);
    return held > 0 ? std::to_string(TruncateToI32(Decibels(held))) : kSilence;
}

float LogarithmicTick(const VoiceControlInfo& slider, std::int32_t tick) {
    const auto twelfths = static_cast<float>(std::clamp(tick, 0, kLogarithmicTickCount - 1));
    return slider.least + (slider.most - slider.least) * twelfths / (kLogarithmicTickCount - 1);
}

float StepOnGrid(float value, double by, float step) {
    const double stepsPerOne = std::round(1 / static_cast<double>(step));
    return static_cast<float>(std::round((static_cast<double>(value) + by) * stepsPerOne) / stepsPerOne);
}

float SnapToStep(const VoiceControlInfo& slider, float value) {
    const float held = HeldTo(slider, value);
    return slider.step > 0 ? HeldTo(slider, StepOnGrid(held, 0, slider.step)) : held;
}

float WheelValue(const VoiceControlInfo& slider, float value, std::int32_t notches) {
    const float held = HeldTo(slider, value);
    if (!(slider.step > 0)) return held;
    const double way = static_cast<double>(notches) * static_cast<double>(slider.step);
    return HeldTo(slider, StepOnGrid(held, way, slider.step));
}

} // namespace sonorelle
