#include "cli/voice_strip.h"

#include "cli/named_numbers.h"
#include "platform/numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace sonorelle {

namespace {

constexpr std::array<StripControl, 8> kControls = {{
    // key, least, most, unit
    {"vol", 0, 1.333, "", &VoiceStrip::vol},
    {"pan", -1, 1, "", &VoiceStrip::pan},
    {"delay", 0, 100, "ms", &VoiceStrip::delay},
    {"shape", -8, 8, "semitones", &VoiceStrip::shape},
    {"tune", 0, 100, "%", &VoiceStrip::tune},
    {"drift", 0, 200, "%", &VoiceStrip::drift},
    {"glide", 0, 100, "%", &VoiceStrip::glide},
    {"time", 0, 100, "%", &VoiceStrip::time},
}};

// From the bank's units to those of the strips.
constexpr float kPercentPerShare = 100;
constexpr float kMillisecondsPerSecond = 1000;
constexpr float kPercentPerTiming = 500; // 200 ms at the top
constexpr float kSemitonesPerOctave = 12;

VoiceStrip StripOfSettings(const VoiceSettings& settings) {
    VoiceStrip strip;
    strip.vol = settings.vol;
    strip.pan = settings.pan;
    strip.delay = settings.delay * kMillisecondsPerSecond;
    strip.shape = kSemitonesPerOctave * std::log2(settings.formantShift);
    strip.tune = settings.quantize * kPercentPerShare;
    strip.drift = (1 - settings.drift) * kPercentPerShare;
    strip.glide = settings.glide * kPercentPerShare;
    strip.time = settings.timing * kPercentPerTiming;
    strip.mute = settings.mute;
    strip.solo = settings.solo;
    return strip;
}

std::string RangeText(const StripControl& control) {
    std::string text = std::string(control.key) + "=" + FormatFloat(static_cast<float>(control.least)) +
                       " to " + FormatFloat(static_cast<float>(control.most));
    return *control.unit != '\0' ? text + " " + control.unit : text;
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
        const std::optional<double> number = ReadNumber(TrimBlanks(text.substr(equals + 1)));
        if (!number || *number < control.least || *number > control.most) return RangeText(control);
        strip.*control.value = static_cast<float>(*number);
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
    settings.delay = divided(strip.delay, kMillisecondsPerSecond);
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
