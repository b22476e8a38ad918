// What a slider says: the tip beside the pointer while it is held, the labels of its ticks; and where the
// mouse wheel takes it.
//
//     SliderTip(GetVoiceControl(VoiceControl::kVolume), 0.5F) // "-6.0"
//
// Pure functions for any thread. Texts allocate when they are longer than 15 characters.

#pragma once

#include "app/voice_controls.h"

#include <cstdint>
#include <string>

namespace sonorelle {

inline constexpr std::int32_t kSliderTipOffset = 12;      // pixels, up and left of the slider's origin
inline constexpr std::int32_t kLogarithmicTickCount = 13; // both ends and the twelfths between

// `value` as the control shows it. A logarithmic slider speaks in dB, "-oo" for 0. Without the unit.
std::string SliderTip(const VoiceControlInfo& slider, float value);

// The label at a tick: the shortest text of a linear value, whole decibels of a logarithmic one.
std::string SliderTickLabel(const VoiceControlInfo& slider, float value);

// The value of tick 0 to 12 of a logarithmic slider; held to its ends.
float LogarithmicTick(const VoiceControlInfo& slider, std::int32_t tick);

// The nearest value of the slider's grid within its range; without a step, the value held to the range.
float SnapToStep(const VoiceControlInfo& slider, float value);

// Where `notches` of the wheel (above 0: to larger values) lead from `value`: on the grid, within the range.
// A slider without a step stays.
float WheelValue(const VoiceControlInfo& slider, float value, std::int32_t notches);

// The multiple of `step` (a part of 1: 0.05, 0.1, 1) that lies nearest to `value` + `by`, as the f32 nearest
// to it: 0.1 is 0.1F however many steps led there.
float StepOnGrid(float value, double by, float step);

} // namespace sonorelle
