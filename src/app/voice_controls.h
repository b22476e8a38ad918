// The controls of a voice's channel strip as one table: ranges, steps, texts, and the way between what a
// control shows and what the voice bank and the documents take.
//
//     const VoiceControlInfo& shape = GetVoiceControl(VoiceControl::kShape); // -8 to 8 semitones
//     const float ratio = StoredFromPanel(VoiceControl::kShape, 3);          // 1.189, a minor third up
//
// Pure functions for any thread; nothing allocates.

#pragma once

#include "app/voice_preset.h"

#include <array>
#include <cstdint>

namespace sonorelle {

inline constexpr std::array<const char*, kPresetVoices> kVoiceTitles = {"orange voice", "red voice",
                                                                        "blue voice", "green voice"};

// The number is the change code, with which a panel tells which control was moved.
enum class VoiceControl : std::int32_t {
    kNone = -1,
    kVolume = 0,
    kPan = 1,
    kDelay = 2,
    kShape = 3,
    kTune = 4,
    kDrift = 5,
    kSwitch = 6, // mute or solo
    kGlide = 7,
    kTime = 8,
};

// Where a slider stands on the strip: always in view, or in one of the two bars that fold open over it.
enum class VoiceSection : std::int32_t { kStrip = -1, kPerformance = 0, kFineTuning = 1 };

inline constexpr std::int32_t kVoiceSections = 2; // that fold
inline constexpr std::array<const char*, kVoiceSections> kVoiceSectionLabels = {"Performance", "Fine Tuning"};

struct VoiceControlInfo {
    VoiceControl control = VoiceControl::kNone;
    const char* label = "";
    float least = 0; // range, default and step as the control shows them
    float most = 0;
    float preset = 0;
    float step = 0; // 0: continuous
    const char* unit = "";
    const char* toolTip = "";
    VoiceSection section = VoiceSection::kStrip;
    bool vertical = false;
    bool ticks = false; // on both sides
    bool logarithmic = false;
    float VoiceSettings::*stored = nullptr;
};

inline constexpr std::int32_t kVoiceSliders = 8;

// clang-format off
inline constexpr std::array<VoiceControlInfo, kVoiceSliders> kVoiceControls = {{
    // control               label    least  most  preset  step   unit         tool tip
    {VoiceControl::kVolume,  "",       0,   1.333F,  1,    0,     "dB",        "adjust volume of voice",
     VoiceSection::kStrip, true, true, true, &VoiceSettings::vol},
    {VoiceControl::kPan,     "",      -1,   1,       0,    0.05F, "L-R",       "adjust panning of voice",
     VoiceSection::kStrip, false, false, false, &VoiceSettings::pan},
    {VoiceControl::kDelay,   "Delay",  0,   100,     0,    1,     "ms",        "adjust voice delay",
     VoiceSection::kStrip, false, true, false, &VoiceSettings::delay},
    {VoiceControl::kShape,   "Shape", -8,   8,       0,    0.1F,  "semitones", "adjust formant shape",
     VoiceSection::kStrip, false, true, false, &VoiceSettings::formantShift},
    {VoiceControl::kTune,    "Tune",   0,   100,     0,    0.1F,  "%",         "adjust amount of pitch correction",
     VoiceSection::kFineTuning, false, false, false, &VoiceSettings::quantize},
    {VoiceControl::kDrift,   "Drift",  0,   200,   100,    0.1F,  "%",         "adjust amount of pitch variation",
     VoiceSection::kFineTuning, false, false, false, &VoiceSettings::drift},
    {VoiceControl::kGlide,   "Glide",  0,   100,    50,    0.1F,  "%",         "adjust pitch transition smoothness",
     VoiceSection::kPerformance, false, false, false, &VoiceSettings::glide},
    {VoiceControl::kTime,    "Time",   0,   100,     0,    0.1F,  "%",         "humanize timing of the voice",
     VoiceSection::kPerformance, false, false, false, &VoiceSettings::timing},
}};
// clang-format on

inline constexpr const char* kMuteLabel = "Mute";
inline constexpr const char* kSoloLabel = "Solo";
inline constexpr const char* kResetLabel = "R";
inline constexpr const char* kResetToolTip = "reset vol and pan settings";

// Whether the control is a slider, with a row of its own in the table.
constexpr bool IsVoiceSlider(VoiceControl control) {
    return control >= VoiceControl::kVolume && control <= VoiceControl::kTime &&
           control != VoiceControl::kSwitch;
}

// The row of a slider; an empty one (kNone, no range) for what is none.
const VoiceControlInfo& GetVoiceControl(VoiceControl control);

// From what the control shows (dB faders as gain, ms, semitones, per cents) to what is stored (gain, seconds,
// ratio, shares), and back. The first holds its argument to the control's range, the second the result; what
// is not a number gives the default, and what is no slider 0.
float StoredFromPanel(VoiceControl control, float panelValue);
float PanelFromStored(VoiceControl control, float stored);

// What one stored second, share or octave is on the controls.
inline constexpr float kDelayPerSecond = 1000;  // ms
inline constexpr float kPercentPerTiming = 500; // 200 ms at the top
inline constexpr float kPercentPerShare = 100;
inline constexpr float kSemitonesPerOctave = 12;

// How far a ratio (above 0) moves the formants: 2 gives 12, 1 exactly 0.
float SemitonesFromRatio(float ratio);

// The range of a slider in stored values; drift runs the other way round, so `least` is that of the range.
struct StoredRange {
    float least = 0;
    float most = 0;
};
StoredRange GetStoredRange(VoiceControl control);

// Whether a value from outside is one that the control can have: false for what is not finite.
bool IsStoredValue(VoiceControl control, float stored);

} // namespace sonorelle
