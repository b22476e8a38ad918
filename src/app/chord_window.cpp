#include "app/chord_window.h"

#include "harmony/chord_names.h"
#include "platform/saturate.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace sonorelle {

namespace {
constexpr float kUnknownRate = 44100;
constexpr double kMostMilliseconds = 1e15; // longer than anything, and exact in a double
constexpr std::int64_t kMillisecondsInSecond = 1000;
constexpr std::int64_t kSecondsInMinute = 60;
} // namespace

std::string FormatSampleTime(double sample, float sampleRate) {
    const bool rateIsUsable = sampleRate > 0 && std::isfinite(sampleRate);
    const double rate = double{rateIsUsable ? sampleRate : kUnknownRate};
    const double exact = std::abs(sample) * double{kMillisecondsInSecond} / rate;
    const auto milliseconds = static_cast<std::int64_t>(exact < kMostMilliseconds ? exact : 0);
    const std::int64_t seconds = milliseconds / kMillisecondsInSecond;
    const bool negative = sample < 0 && milliseconds > 0;
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%s%d:%02d.%03d", negative ? "-" : "",
                  TruncateToI32(static_cast<double>(seconds / kSecondsInMinute)),
                  static_cast<int>(seconds % kSecondsInMinute),
                  static_cast<int>(milliseconds % kMillisecondsInSecond));
    return text.data();
}

std::string FormatBeatPosition(const BeatPosition& position) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%d.%d.%d", position.bar, position.beat, position.tick);
    return text.data();
}

std::string FormatChordTip(std::string_view chordName) {
    std::string text = "@s-8@y+6 chord:@s0\n@y+3 ";
    text += chordName.empty() ? std::string_view("--") : chordName;
    return text;
}

std::string ChordDisplayName(std::int32_t root, std::int32_t type, bool useFlats) {
    std::array<char, ConsortierClassic::kChordNameSize> name{};
    ConsortierClassic::FormatChordName(name, root, type, useFlats);
    return name.data();
}

void CkvoChordDisplayWin::ShowTimeAndBeat(double sample, float sampleRate, const BeatPosition& position) {
    text = FormatSampleTime(sample, sampleRate) + "\n" + FormatBeatPosition(position);
}

} // namespace sonorelle
