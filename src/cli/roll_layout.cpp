#include "cli/roll_layout.h"

#include "harmony/pitch_class.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr double kMargin = 24;
constexpr double kHeaderHeight = 84; // title and subtitle, with the margin above
constexpr double kKeysWidth = 54;
constexpr double kStripGap = 10;
constexpr double kStripHeight = 56;
constexpr double kChordLineHeight = 21;
constexpr double kAxisHeight = 40; // with the margin below

// A phrase fills a page at the smallest width; a long song gets a wider picture up to the largest, beyond
// which viewers and converters begin to struggle.
constexpr double kPixelsPerSecond = 60;
constexpr double kSmallestLanesWidth = 1200 - 2 * kMargin - kKeysWidth;
constexpr double kLargestLanesWidth = 9600;
constexpr double kSmallLanesWidth = 860 - 2 * kMargin - kKeysWidth;
// Shorter recordings than this are drawn as if they were so long: no division by 0.
constexpr double kShortestSeconds = 1e-3;

constexpr double kWantedLanesHeight = 400;
constexpr double kWantedSmallHeight = 230;
constexpr double kLaneHeightForNames = 13; // a name of readable size in a bar
constexpr double kSmallestLaneHeight = 7;
constexpr double kLargestLaneHeight = 18;

constexpr std::int32_t kRoom =
    2; // lanes above and below the outermost pitches: space for the labels of notes
constexpr std::int32_t kSmallestLanes = 14;
constexpr float kLargestMidiNote = 127;

constexpr double kLabelDistance = 64; // pixels between labels of the time axis: "123.45" and some air

} // namespace

PitchSpan SpanOf(const std::vector<float>& pitches) {
    std::int32_t lowest = ConsortierClassic::kMiddleC;
    std::int32_t highest = ConsortierClassic::kMiddleC;
    bool found = false;
    for (const float pitch : pitches) {
        if (!(pitch >= 0 && pitch <= kLargestMidiNote)) continue;
        const auto note = static_cast<std::int32_t>(std::floor(pitch + 0.5F));
        lowest = found ? std::min(lowest, note) : note;
        highest = found ? std::max(highest, note) : note;
        found = true;
    }
    PitchSpan span{lowest - kRoom, highest + kRoom};
    const std::int32_t missing = std::max(kSmallestLanes - span.Lanes(), 0);
    span.lowest -= missing / 2;
    span.highest += missing - missing / 2;
    return span;
}

double RollLayout::YOf(double midiPitch) const {
    return lanes.y + (span.highest + 0.5 - midiPitch) * laneHeight;
}

namespace {

double LanesWidth(double seconds, const RollFormat& format) {
    if (format.isSmall) return kSmallLanesWidth;
    return std::clamp(std::ceil(seconds * kPixelsPerSecond), kSmallestLanesWidth, kLargestLanesWidth);
}

double LaneHeight(const PitchSpan& span, const RollFormat& format) {
    const double wanted = format.isSmall ? kWantedSmallHeight : kWantedLanesHeight;
    const double height =
        std::clamp(std::round(wanted / span.Lanes()), kSmallestLaneHeight, kLargestLaneHeight);
    return format.namesInBars && !format.isSmall ? std::max(height, kLaneHeightForNames) : height;
}

} // namespace

RollLayout LayOutRoll(double seconds, const PitchSpan& span, const RollFormat& format) {
    RollLayout layout;
    layout.seconds = seconds > kShortestSeconds ? seconds : kShortestSeconds;
    layout.span = span;
    const double lanesWidth = LanesWidth(layout.seconds, format);
    layout.pixelsPerSecond = lanesWidth / layout.seconds;
    layout.laneHeight = LaneHeight(span, format);
    const double lanesHeight = layout.laneHeight * span.Lanes();
    const double lanesLeft = kMargin + kKeysWidth;
    layout.chords = {lanesLeft, kHeaderHeight, lanesWidth, format.chordLines * kChordLineHeight};
    layout.keys = {kMargin, layout.chords.Bottom(), kKeysWidth, lanesHeight};
    layout.lanes = {lanesLeft, layout.keys.y, lanesWidth, lanesHeight};
    const double stripGap = format.hasLoudness ? kStripGap : 0;
    layout.loudness = {lanesLeft, layout.lanes.Bottom() + stripGap, lanesWidth,
                       format.hasLoudness ? kStripHeight : 0};
    layout.width = layout.lanes.Right() + kMargin;
    layout.height = layout.loudness.Bottom() + kAxisHeight;
    return layout;
}

TimeTicks ChooseTicks(double seconds, double pixelsPerSecond) {
    constexpr double kMultiples[] = {1, 2, 5};
    constexpr double kParts[] = {5, 4, 5}; // minor ticks per step: 0.2, 0.5 and 1 of the step's power of ten
    constexpr int kFinestExponent = -4;
    constexpr int kCoarsestExponent = 6;
    for (int exponent = kFinestExponent; exponent <= kCoarsestExponent; ++exponent) {
        for (int i = 0; i < 3; ++i) {
            const double step = kMultiples[i] * std::pow(10.0, exponent);
            if (step * pixelsPerSecond < kLabelDistance) continue;
            return {step, step / kParts[i], std::max(-exponent, 0)};
        }
    }
    return {seconds, seconds, 0};
}

} // namespace sonorelle
