#include "app/time_display.h"

#include "dsp/finite.h"
#include "platform/numbers.h"
#include "platform/saturate.h"
#include "platform/units.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace sonorelle {
namespace {

constexpr double kMillisecondsPerMinute = 60 * kMillisecondsPerSecond;
constexpr double kMostMinutes = 999;
constexpr double kMostSeconds = 59;
constexpr double kMostMilliseconds = 999;

bool IsRate(float hertz) { return IsFinite(hertz) && hertz > 0; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Takes the digits at the beginning of `text` off it; numbers beyond `most` are `most`.
double TakeWhole(std::string_view& text, double most) {
    double number = 0;
    for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1))
        number = std::min(number * 10 + (text.front() - '0'), most);
    return number;
}

void SkipBlanks(std::string_view& text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
}

// True for a minus, which is taken off like a plus.
bool TakeSign(std::string_view& text) {
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
    return negative;
}

// Milliseconds of a number of seconds within a minute.
double MillisecondsOfSeconds(double seconds) {
    const double whole = std::floor(seconds);
    const double rest = std::round((seconds - whole) * kMillisecondsPerSecond);
    return std::min(whole, kMostSeconds) * kMillisecondsPerSecond + std::min(rest, kMostMilliseconds);
}

std::optional<double> ReadSeconds(std::string_view text) {
    const auto seconds = ReadLeadingNumber(text);
    if (!seconds) return std::nullopt;
    return MillisecondsOfSeconds(std::max(*seconds, 0.0));
}

// Milliseconds of a text without sign.
std::optional<double> ReadMilliseconds(std::string_view text) {
    const bool startsWithDigit = !text.empty() && IsDigit(text.front());
    if (text.find(':') != std::string_view::npos) {
        if (!startsWithDigit) return std::nullopt;
        const double minutes = TakeWhole(text, kMostMinutes) * kMillisecondsPerMinute;
        if (text.front() != ':') return minutes;
        text.remove_prefix(1);
        return minutes + ReadSeconds(text).value_or(0);
    }
    if (text.find('.') != std::string_view::npos)
        return startsWithDigit || text.front() == '.' ? ReadSeconds(text) : std::nullopt;
    if (!startsWithDigit) return std::nullopt;
    return TakeWhole(text, kMostMilliseconds);
}

} // namespace

std::string FormatTime(double samples, float sampleRate) {
    double milliseconds = IsRate(sampleRate) ? samples * kMillisecondsPerSecond / double{sampleRate} : 0;
    if (!std::isfinite(milliseconds)) milliseconds = 0;
    milliseconds = std::round(milliseconds);

    const double size = std::fabs(milliseconds);
    const std::int32_t minutes = TruncateToI32(size / kMillisecondsPerMinute);
    const std::int32_t rest = TruncateToI32(std::fmod(size, kMillisecondsPerMinute));
    constexpr auto kPerSecond = static_cast<std::int32_t>(kMillisecondsPerSecond);
    char text[32] = "";
    std::snprintf(text, sizeof text, milliseconds < 0 ? "-%d:%02d.%03d" : "%d:%02d.%03d", minutes,
                  rest / kPerSecond, rest % kPerSecond);
    return text;
}

std::optional<double> ParseTime(std::string_view text, float sampleRate) {
    if (!IsRate(sampleRate)) return std::nullopt;
    SkipBlanks(text);
    const bool negative = TakeSign(text);
    const auto milliseconds = ReadMilliseconds(text);
    if (!milliseconds) return std::nullopt;
    const double samples = std::round(*milliseconds * double{sampleRate} / kMillisecondsPerSecond);
    return negative && samples > 0 ? -samples : samples;
}

bool CkvoTimeDisplay::SetValue(double samples) {
    if (std::isnan(samples)) return false;
    const double held = std::max(GetMinimum(), std::min(samples, GetMaximum()));
    return value.exchange(held, std::memory_order_relaxed) != held;
}

void CkvoTimeDisplay::SetRange(double lowest, double highest) {
    if (!(lowest <= highest)) return;
    minimum.store(lowest, std::memory_order_relaxed);
    maximum.store(highest, std::memory_order_relaxed);
}

void CkvoTimeDisplay::SetSampleRate(float hertz) {
    if (IsRate(hertz)) sampleRate.store(hertz, std::memory_order_relaxed);
}

std::string CkvoTimeDisplay::GetText() const {
    return GetShowSamples() ? FormatFixed(GetValue(), 0) : FormatTime(GetValue(), GetSampleRate());
}

bool CkvoTimeDisplay::Enter(std::string_view text) {
    const auto entered = GetShowSamples() ? ReadLeadingNumber(text) : ParseTime(text, GetSampleRate());
    if (!entered) return false;
    if (SetValue(std::round(*entered))) Fire();
    return true;
}

void CkvoTimeDisplay::TurnWheel(std::int32_t steps) {
    if (!SetValue(GetValue() + steps * kStep)) return;
    tip.Show(GetText());
    Fire();
}

void CkvoTimeDisplay::BeginDrag() {
    dragging = true;
    dragStart = GetValue();
}

void CkvoTimeDisplay::DragTo(std::int32_t pixelsUp) {
    if (!dragging) return;
    SetValue(dragStart + pixelsUp * kStep);
    tip.Show(GetText());
}

void CkvoTimeDisplay::EndDrag() {
    if (!dragging) return;
    dragging = false;
    tip.Hide();
    if (GetValue() != dragStart) Fire();
}

void CkvoTimeDisplay::Fire() {
    if (onChanged) onChanged();
}

} // namespace sonorelle
