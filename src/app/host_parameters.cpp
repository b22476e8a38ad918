#include "app/host_parameters.h"

#include "app/slider_text.h"
#include "app/strip_gain.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace sonorelle {

namespace {

using Kind = HostParameterKind;

struct KindRow {
    VoiceControl control;
    const char* text; // behind the name of the voice
};

// clang-format off
constexpr std::array<KindRow, kHostParameterKinds> kKinds = {{
    {VoiceControl::kVolume, " volume"},
    {VoiceControl::kPan,    " pan"},
    {VoiceControl::kDelay,  " delay"},
    {VoiceControl::kTune,   " tune"},
    {VoiceControl::kShape,  " shape"},
    {VoiceControl::kDrift,  " drift"},
    {VoiceControl::kGlide,  " glide"},
    {VoiceControl::kTime,   " timing"},
}};
// clang-format on

// The first 24 parameters are six of each voice, then come two of each.
constexpr std::int32_t kEarlyKinds = 6;
constexpr std::int32_t kLateKinds = kHostParameterKinds - kEarlyKinds;
constexpr std::int32_t kEarlyParameters = kPresetVoices * kEarlyKinds;
static_assert(kEarlyParameters + kPresetVoices * kLateKinds == kHostParameterCount);

constexpr float kLongestDelay = 0.1F;  // seconds
constexpr float kLongestTiming = 0.2F; // seconds
constexpr float kShapeRange = 16;      // semitones, from -8
constexpr float kLowestShapeSemitones = -8;
constexpr float kSmallestChange = 0.01F; // in the stored unit

bool IsKind(Kind kind) { return kind >= Kind::kVolume && kind <= Kind::kTiming; }

const KindRow& RowOf(Kind kind) { return kKinds[IsKind(kind) ? static_cast<std::size_t>(kind) : 0]; }

float HeldHostValue(float value) { return std::isnan(value) ? 0 : std::clamp(value, 0.0F, 1.0F); }

float HostValueOf(Kind kind, float model) {
    switch (kind) {
    case Kind::kVolume:
        return model / kLargestStripVol;
    case Kind::kPan:
        return (model + 1) / 2;
    case Kind::kDelay:
        return model * 10;
    case Kind::kShape:
        return (SemitonesFromRatio(model) - kLowestShapeSemitones) / kShapeRange;
    case Kind::kDrift:
        return 1 - (model + 1) / 2;
    case Kind::kTiming:
        return model * 5;
    default:
        return model;
    }
}

} // namespace

std::optional<HostParameter> HostParameterAt(std::int32_t index) {
    if (index < 0 || index >= kHostParameterCount) return std::nullopt;
    if (index < kEarlyParameters)
        return HostParameter{index / kEarlyKinds, static_cast<Kind>(index % kEarlyKinds)};
    const std::int32_t late = index - kEarlyParameters;
    return HostParameter{late / kLateKinds, static_cast<Kind>(kEarlyKinds + late % kLateKinds)};
}

std::int32_t HostParameterIndex(std::int32_t voice, Kind kind) {
    if (voice < 0 || voice >= kPresetVoices || !IsKind(kind)) return kNoHostParameter;
    const auto number = static_cast<std::int32_t>(kind);
    if (number < kEarlyKinds) return voice * kEarlyKinds + number;
    return kEarlyParameters + voice * kLateKinds + number - kEarlyKinds;
}

std::int32_t HostParameterIndex(std::int32_t voice, VoiceControl control) {
    for (std::int32_t kind = 0; kind < kHostParameterKinds; ++kind)
        if (RowOf(static_cast<Kind>(kind)).control == control)
            return HostParameterIndex(voice, static_cast<Kind>(kind));
    return kNoHostParameter;
}

VoiceControl ControlOfKind(Kind kind) { return RowOf(kind).control; }

float ModelFromHostValue(Kind kind, float hostValue) {
    const float value = HeldHostValue(hostValue);
    switch (kind) {
    case Kind::kVolume:
        return value * kLargestStripVol;
    case Kind::kPan:
        return value * 2 - 1;
    case Kind::kDelay:
        return value * kLongestDelay;
    case Kind::kShape:
        return std::exp2((value * kShapeRange + kLowestShapeSemitones) / kSemitonesPerOctave);
    case Kind::kDrift:
        return (1 - value) * 2 - 1;
    case Kind::kTiming:
        return value * kLongestTiming;
    default:
        return value;
    }
}

float HostValueFromModel(Kind kind, float model) { return HeldHostValue(HostValueOf(kind, model)); }

float GetModelValue(Kind kind, const VoiceSettings& settings) {
    return settings.*GetVoiceControl(ControlOfKind(kind)).stored;
}

float GetHostValue(Kind kind, const VoiceSettings& settings) {
    return HostValueFromModel(kind, GetModelValue(kind, settings));
}

bool Differs(Kind kind, float oldModel, float newModel) {
    if (!std::isfinite(oldModel) || !std::isfinite(newModel)) return false;
    if (kind == Kind::kVolume || kind == Kind::kPan) return newModel != oldModel;
    return std::fabs(newModel - oldModel) > kSmallestChange;
}

std::optional<float> ModelChangeFromHost(Kind kind, const VoiceSettings& present, float hostValue) {
    if (!std::isfinite(hostValue)) return std::nullopt;
    const float model = ModelFromHostValue(kind, hostValue);
    if (!Differs(kind, GetModelValue(kind, present), model)) return std::nullopt;
    return model;
}

std::string DisplayText(Kind kind, float model) {
    const VoiceControl control = ControlOfKind(kind);
    return SliderTip(GetVoiceControl(control), PanelFromStored(control, model));
}

std::string HostParameterName(std::int32_t index) {
    const auto parameter = HostParameterAt(index);
    if (!parameter) return "";
    return std::string(kVoiceTitles[static_cast<std::size_t>(parameter->voice)]) +
           RowOf(parameter->kind).text;
}

std::string HostParameterUnit(std::int32_t index) {
    const auto parameter = HostParameterAt(index);
    if (!parameter) return "";
    return std::string(" ") + GetVoiceControl(ControlOfKind(parameter->kind)).unit + " ";
}

std::string HostParameterDisplayForValue(std::int32_t index, float hostValue) {
    const auto parameter = HostParameterAt(index);
    if (!parameter) return "";
    return DisplayText(parameter->kind, ModelFromHostValue(parameter->kind, hostValue)) +
           HostParameterUnit(index);
}

HostParameterRange GetHostParameterRange(std::int32_t index) {
    const auto parameter = HostParameterAt(index);
    if (!parameter) return {};
    const VoiceControlInfo& control = GetVoiceControl(ControlOfKind(parameter->kind));
    return {control.least, control.most, control.logarithmic};
}

} // namespace sonorelle
