// The 32 parameters that a host automates: eight values of each of the four voices, each as a number from 0
// to 1, with its name, unit, range and text.
//
// Parameters 0 to 23 are six for each voice: volume, pan, delay, tune, shape, drift. 24 to 31 are two more
// for each: glide and timing. The numbers are in the users' projects.
//
//     const auto parameter = HostParameterAt(1);                    // pan of voice 0
//     const float pan = ModelFromHostValue(parameter->kind, 0.75F); // 0.5, to the right
//     DisplayText(parameter->kind, pan);                            // "0.5"
//     HostParameterName(1);                                         // "orange voice pan"
//
// Pure functions for any thread. Texts allocate when they are longer than 15 characters, the rest does not.

#pragma once

#include "app/voice_controls.h"
#include "app/voice_preset.h"

#include <cstdint>
#include <optional>
#include <string>

namespace sonorelle {

inline constexpr std::int32_t kHostParameterCount = 32;
inline constexpr std::int32_t kNoHostParameter = -1;

enum class HostParameterKind : std::int32_t {
    kVolume = 0,
    kPan = 1,
    kDelay = 2,
    kTune = 3,
    kShape = 4,
    kDrift = 5,
    kGlide = 6,
    kTiming = 7,
};

inline constexpr std::int32_t kHostParameterKinds = 8;

struct HostParameter {
    std::int32_t voice = 0; // 0 to 3
    HostParameterKind kind = HostParameterKind::kVolume;
    bool operator==(const HostParameter&) const = default;
};

// Nothing for an index other than 0 to 31.
std::optional<HostParameter> HostParameterAt(std::int32_t index);

// kNoHostParameter for a voice other than 0 to 3, a kind that does not exist, and a switch.
std::int32_t HostParameterIndex(std::int32_t voice, HostParameterKind kind);
std::int32_t HostParameterIndex(std::int32_t voice, VoiceControl control); // of the control of a strip

VoiceControl ControlOfKind(HostParameterKind kind);

// --- Values; a model value is the stored one: gain, seconds, shares, ratio ---

// `hostValue` is held to 0 to 1; what is not a number counts as 0.
float ModelFromHostValue(HostParameterKind kind, float hostValue);
// 0 to 1; a model value beyond its range is held, what is not a number counts as 0.
float HostValueFromModel(HostParameterKind kind, float model);

float GetModelValue(HostParameterKind kind, const VoiceSettings& settings);
float GetHostValue(HostParameterKind kind, const VoiceSettings& settings); // 0 to 1

// Whether setting a parameter from `oldModel` to `newModel` counts as a change. Volume and pan always move;
// the others by more than 0.01 in their stored unit, so that a replayed automation does not rebuild a voice
// for each of its values. A delay and a timing therefore follow automation in steps of 10 ms: mended,
// projects would sound different. What is not finite is no change.
bool Differs(HostParameterKind kind, float oldModel, float newModel);

// The model value to store for a host value, where it counts as a change from the present one; nothing
// otherwise, and for a host value that is not finite.
//
// Glide has a quirk on this path that whoever stores it has to keep: the knob moves to the value given here,
// but the glide of the voice is then set by its tune, CVoiceBank::SetGlide(voice, quantize). So, as
// automated, glide follows tune; mended, projects with automated glides would sound different. Everywhere
// else the voice glides by the glide value.
std::optional<float> ModelChangeFromHost(HostParameterKind kind, const VoiceSettings& present,
                                         float hostValue);

// --- Texts; numbers are the same under every locale ---

std::string DisplayText(HostParameterKind kind, float model); // one digit behind the point, or "-oo"

// "orange voice volume", " dB ", "-3.5 dB ": empty for an index other than 0 to 31.
std::string HostParameterName(std::int32_t index);
std::string HostParameterUnit(std::int32_t index);
std::string HostParameterDisplayForValue(std::int32_t index, float hostValue);

struct HostParameterRange { // as it is reported: in the unit of the text, volume as a gain
    float least = 0;
    float most = 0;
    bool logarithmic = false;
};
// All 0 for another index than 0 to 31.
HostParameterRange GetHostParameterRange(std::int32_t index);

} // namespace sonorelle
