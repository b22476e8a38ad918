#include "app/pitch_view_geometry.h"

#include "dsp/finite.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {
namespace {

// Pixels are held within this distance of the view, far beyond any screen, so that sums of a few stay whole
// numbers.
constexpr std::int32_t kPixelLimit = 1 << 20;

constexpr double kWheelSemitones = 3;    // a step of the wheel moves the range's ends by so much together
constexpr double kWheelSamples = 128;    // of one pixel's step in time
constexpr double kZoomOutWeight = 0.8;   // makes a step out undo a step in, on a view of the usual width
constexpr double kMostWheelSteps = 1000; // what a face could report at most, by far

std::int32_t ToPixel(double position) {
    return std::clamp(TruncateToI32(position), -kPixelLimit, kPixelLimit);
}

// As std::clamp, also where the limits are crossed: the lower one wins.
double Hold(double value, double lowest, double highest) {
    return std::max(lowest, std::min(value, highest));
}

} // namespace

bool PixelRect::Contains(std::int32_t pointX, std::int32_t pointY) const {
    const std::int64_t right = std::int64_t{x} + width;
    const std::int64_t lower = std::int64_t{y} + height;
    return pointX >= x && pointX < right && pointY >= y && pointY < lower;
}

std::int32_t PitchViewLayout::NoteAreaWidth() const { return std::max(1, width - leftMargin); }
std::int32_t PitchViewLayout::NoteAreaHeight() const { return std::max(1, height - topMargin); }

PixelRect PitchViewLayout::NoteArea() const {
    return {leftMargin, topMargin, NoteAreaWidth(), NoteAreaHeight()};
}

PixelRect PitchViewLayout::Overview() const { return {leftMargin, 0, NoteAreaWidth(), overviewHeight}; }

PixelRect PitchViewLayout::ChordRow() const {
    return {leftMargin, overviewHeight + overviewGap, NoteAreaWidth(), keyRowHeight};
}

PixelRect PitchViewLayout::Ruler() const {
    return {leftMargin, topMargin - rulerHeight, NoteAreaWidth(), rulerHeight};
}

PixelRect PitchViewLayout::PitchAxis() const { return {0, topMargin, leftMargin, NoteAreaHeight()}; }

PixelRect PitchViewLayout::Toggle(std::int32_t row) const {
    constexpr std::int32_t kRows = 3;
    const std::int32_t held = std::clamp(row, 0, kRows - 1);
    return {1, held * topMargin / kRows, kToggleWidth, topMargin / kRows - 1};
}

float PitchViewAxes::PixelsPerSample() const {
    return static_cast<float>(layout.NoteAreaWidth()) / std::max(viewEnd - viewStart, 1.0F);
}

float PitchViewAxes::PixelsPerSemitone() const {
    return static_cast<float>(layout.NoteAreaHeight()) / std::max(topPitch - bottomPitch, 1.0F);
}

std::int32_t PitchViewAxes::XFromSample(double sample) const {
    return ToPixel((sample - double{viewStart}) * double{PixelsPerSample()} + layout.leftMargin);
}

double PitchViewAxes::SampleFromX(std::int32_t x) const {
    return double{viewStart} + (double{1} * x - layout.leftMargin) / double{PixelsPerSample()};
}

std::int32_t PitchViewAxes::RowTopFromPitch(double midiPitch) const {
    return ToPixel(layout.height - (midiPitch - double{bottomPitch} + 1) * double{PixelsPerSemitone()} + 1);
}

std::int32_t PitchViewAxes::YFromPitch(double midiPitch) const {
    return ToPixel(layout.height - (midiPitch - double{bottomPitch}) * double{PixelsPerSemitone()});
}

double PitchViewAxes::PitchFromY(std::int32_t y) const {
    return double{topPitch} - (double{1} * y - layout.topMargin) / double{PixelsPerSemitone()};
}

PixelRect PitchViewAxes::NoteRect(float start, float length, float midiPitch, float heightSemitones) const {
    const double rowHeight = double{PixelsPerSemitone()} * double{heightSemitones} + 1;
    const double across = double{PixelsPerSample()} * double{length};
    return {XFromSample(double{start}), RowTopFromPitch(double{midiPitch}), std::max(1, ToPixel(across)),
            std::max(1, ToPixel(rowHeight))};
}

double PitchViewAxes::OverviewPixelsPerSample() const {
    return layout.NoteAreaWidth() / std::max(double{TotalLength()}, 1.0);
}

std::int32_t PitchViewAxes::OverviewXFromSample(double sample) const {
    return ToPixel((sample - double{totalStart}) * OverviewPixelsPerSample() + layout.leftMargin);
}

void PitchViewAxes::ShowSamples(double start, double end, float leastSamples) {
    if (!std::isfinite(start) || !std::isfinite(end)) return;
    const double total = std::max(0.0, double{TotalLength()});
    const double length = Hold(end - start, std::min(double{leastSamples}, total), total);
    const double middle = (start + end) / 2;
    const double first = length == end - start ? start : middle - length / 2;
    const double held = Hold(first, double{totalStart}, double{totalEnd} - length);
    viewStart = static_cast<float>(held);
    viewEnd = static_cast<float>(held + length);
}

void PitchViewAxes::ShowPitches(double bottom, double top) {
    if (!std::isfinite(bottom) || !std::isfinite(top)) return;
    const double lowest = double{kLowestPitch};
    const double highest = double{kHighestPitch};
    double lower = std::floor(Hold(bottom, lowest, highest));
    double upper = std::max(lower, std::ceil(Hold(top, lowest, highest)));
    const double missing = std::max(0.0, double{kLeastSemitones} - (upper - lower));
    upper += std::ceil(missing / 2);
    lower -= std::floor(missing / 2);
    const double range = upper - lower;
    const double held = Hold(upper, lowest + range, highest);
    topPitch = static_cast<float>(held);
    bottomPitch = static_cast<float>(held - range);
}

void PitchViewAxes::ScrollToSample(double start) {
    if (!std::isfinite(start)) return;
    const double length = double{viewEnd} - double{viewStart};
    const double held = Hold(start, double{totalStart}, double{totalEnd} - length);
    viewStart = static_cast<float>(held);
    viewEnd = static_cast<float>(held + length);
}

void PitchViewAxes::ScrollToPitch(double midiTop) {
    if (!std::isfinite(midiTop)) return;
    const double range = double{topPitch} - double{bottomPitch};
    const double held = Hold(midiTop, double{kLowestPitch} + range, double{kHighestPitch});
    topPitch = static_cast<float>(held);
    bottomPitch = static_cast<float>(held - range);
}

void PitchViewAxes::WheelPitch(std::int32_t y, std::int32_t wheel) {
    const double share = Hold((double{1} * y - layout.topMargin) / layout.NoteAreaHeight(), 0, 1);
    const double step = -kWheelSemitones * Hold(wheel, -kMostWheelSteps, kMostWheelSteps);
    const double least = double{kLeastSemitones};
    const double top = std::max(double{topPitch} + std::trunc(step * share), double{bottomPitch} + least);
    const double bottom = std::min(double{bottomPitch} - std::trunc((1 - share) * step), top - least);
    topPitch = static_cast<float>(std::min(top, double{kHighestPitch}));
    bottomPitch = static_cast<float>(std::max(bottom, double{kLowestPitch}));
}

void PitchViewAxes::WheelTime(std::int32_t x, std::int32_t wheel, float leastSamples) {
    if (wheel == 0) return;
    const double length = double{viewEnd} - double{viewStart};
    const double share = Hold((double{1} * x - layout.leftMargin) / layout.NoteAreaWidth(), 0, 1);
    const double steps = -Hold(wheel, -kMostWheelSteps, kMostWheelSteps);
    const double weight = steps > 0 ? kZoomOutWeight : 1;
    double pixels = std::trunc(steps / (double{PixelsPerSample()} * weight));
    if (pixels == 0) pixels = steps > 0 ? 1 : -1; // of a view in which a sample is several pixels wide
    const double step = pixels * kWheelSamples;
    const double least = std::min(double{leastSamples}, double{TotalLength()});
    if (length + step < least) { // as near as may be, about the sample under the pointer
        const double start = double{viewStart} + share * (length - least);
        ShowSamples(start, start + least, leastSamples);
        return;
    }
    const double start = std::max(double{viewStart} - share * step, double{totalStart});
    const double end = std::min(double{viewEnd} + (1 - share) * step, double{totalEnd});
    ShowSamples(start, end, leastSamples);
}

OverviewHandles PlaceOverviewHandles(const PitchViewAxes& axes) {
    constexpr std::int32_t kWidth = PitchViewLayout::kHandleWidth;
    constexpr std::int32_t kHeight = PitchViewLayout::kHandleHeight;
    const PixelRect strip = axes.layout.Overview();
    const std::int32_t start = axes.OverviewXFromSample(double{axes.viewStart});
    const std::int32_t end = axes.OverviewXFromSample(double{axes.viewEnd});
    std::int32_t left = start;
    std::int32_t right = end - kWidth;
    if (right < left + kWidth) {
        const std::int32_t most = strip.x + strip.width - 2 * kWidth;
        left = std::max(strip.x, std::min((start + end) / 2 - kWidth, most));
        right = left + kWidth;
    }
    const std::int32_t y = strip.y + (strip.height - kHeight) / 2;
    return {{left, y, kWidth, kHeight},
            {right, y, kWidth, kHeight},
            {start, strip.y, std::max(1, end - start), strip.height}};
}

} // namespace sonorelle
