#include "cli/voice_strip.h"

#include "cli/named_numbers.h"
#include "platform/numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace sonorelle {

namespace {

constexpr std::array<StripControl, 8> kControls = {{
    {"vol", VoiceControl::kVolume, &VoiceStrip::vol},
    {"pan", VoiceControl::kPan, &VoiceStrip::pan},
    {"delay", VoiceControl::kDelay, &VoiceStrip::delay},
    {"shape", VoiceControl::kShape, &VoiceStrip::shape},
    {"tune", VoiceControl::kTune, &VoiceStrip::tune},
    {"drift", VoiceControl::kDrift, &VoiceStrip::drift},
    {"glide", VoiceControl::kGlide, &VoiceStrip::glide},
    {"time", VoiceControl::kTime, &VoiceStrip::time},
}};

VoiceStrip StripOfSettings(const VoiceSettings& settings) {
    VoiceStrip strip;
    for (const StripControl& row : kControls)
        strip.*row.value = PanelFromStored(row.control, settings.*GetVoiceControl(row.control).stored);
    // Nearer than the sliders' own logarithm, whose factor has seven digits.
    strip.shape = SemitonesFromRatio(settings.formantShift);
    strip.mute = settings.mute;
    strip.solo = settings.solo;
    return strip;
}

// An option gives volume and panning as the plain numbers that they are, not in the units of the faders.
bool HasUnit(VoiceControl control) {
    return control != VoiceControl::kVolume && control != VoiceControl::kPan;
}

std::string RangeText(const StripControl& row) {
    const VoiceControlInfo& info = GetVoiceControl(row.control);
    const std::string text =
        std::string(row.key) + "=" + FormatFloat(info.least) + " to " + FormatFloat(info.most);
    return HasUnit(row.control) ? text + " " + info.unit : text;
}

// Nothing for a text that is no number or one beyond the control's range.
std::optional<float> ReadControl(const StripControl& row, std::string_view text) {
    const VoiceControlInfo& info = GetVoiceControl(row.control);
    const std::optional<double> number = ReadNumber(text);
    constexpr double kLargest = std::numeric_limits<float>::max();
    if (!number || !(std::fabs(*number) <= kLargest)) return std::nullopt;
    const auto value = static_cast<float>(*number); // 1.333 is in the range as the f32 that the range ends at
    if (value < info.least || value > info.most) return std::nullopt;
    return value;
}

std::string KeyChoices() {
    std::string text;
    for (const StripControl& control : kControls) text += std::string(control.key) + "=, ";
    return text + "mute, solo";
}

} // namespace

std::span<const StripControl> StripControls() { return kControls; }

std::string SetStripControl(VoiceStrip& strip, std::string_view text) {
    const std::size_t equals = text.find('=');
    const std::string_view key = TrimBlanks(text.substr(0, equals));
    if (equals == std::string_view::npos) {
        if (key != "mute" && key != "solo") return KeyChoices();
        (key == "mute" ? strip.mute : strip.solo) = true;
        return "";
    }
    for (const StripControl& control : kControls) {
        if (key != control.key) continue;
        const std::optional<float> value = ReadControl(control, TrimBlanks(text.substr(equals + 1)));
        if (!value) return RangeText(control);
        strip.*control.value = *value;
        return "";
    }
    return KeyChoices();
}

std::string StripChanges(const VoiceStrip& strip, const VoiceStrip& usual) {
    std::string text;
    const auto add = [&](const std::string& change) { text += (text.empty() ? "" : ",") + change; };
    for (const StripControl& control : kControls) {
        const float value = strip.*control.value;
        if (value != usual.*control.value) add(std::string(control.key) + "=" + FormatFloat(value));
    }
    if (strip.mute && !usual.mute) add("mute");
    if (strip.solo && !usual.solo) add("solo");
    return text;
}

VoiceStrips StripsOfPreset(std::int32_t preset) {
    return StripsOfSettings(FactoryPresets()[static_cast<std::size_t>(preset)].voices);
}

VoiceStrips StripsOfSettings(const VoiceSettingsOfAll& voices) {
    VoiceStrips strips;
    std::transform(voices.begin(), voices.end(), strips.begin(), StripOfSettings);
    return strips;
}

// Rounded to the digits that a session's document has: a value comes back from there as it was, to the bit.
VoiceSettings SettingsOfStrip(const VoiceStrip& strip) {
    const auto stored = [](double value) {
        constexpr double kDigits = 1e8;
        return static_cast<float>(std::round(value * kDigits) / kDigits);
    };
    const auto divided = [&](float value, float unit) {
        return stored(static_cast<double>(value) / static_cast<double>(unit));
    };
    VoiceSettings settings;
    settings.vol = stored(static_cast<double>(strip.vol));
    settings.pan = stored(static_cast<double>(strip.pan));
    settings.quantize = divided(strip.tune, kPercentPerShare);
    settings.delay = divided(strip.delay, kDelayPerSecond);
    settings.formantShift =
        stored(std::exp2(static_cast<double>(strip.shape) / static_cast<double>(kSemitonesPerOctave)));
    settings.drift = stored(1 - static_cast<double>(strip.drift) / static_cast<double>(kPercentPerShare));
    settings.glide = divided(strip.glide, kPercentPerShare);
    settings.timing = divided(strip.time, kPercentPerTiming);
    settings.mute = strip.mute;
    settings.solo = strip.solo;
    return settings;
}

VoiceSettingsOfAll SettingsOfStrips(const VoiceStrips& strips) {
    VoiceSettingsOfAll settings;
    std::transform(strips.begin(), strips.end(), settings.begin(), SettingsOfStrip);
    return settings;
}

} // namespace sonorelle
