#include "analysis/frame_stages.h"

#include "analysis/frame_locator.h"
#include "analysis/pitch_marks_if.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr double kConcertPitch = 440.0;  // Hz, MIDI 69
constexpr float kPeriodRise = 0.95F;     // relative rise of the level from one period to the next
constexpr float kOctaveJump = 6.0F;      // semitones: beyond half an octave no singer slides within a window
constexpr double kCarefulStep = 0.125;   // of half a window, while nothing jumps
constexpr double kBridgeSeconds = 0.075; // longest excursion that is bridged
constexpr std::int32_t kShortestBridge = 2;
constexpr std::int32_t kLongestBridge = 32; // frames
constexpr float kSamePitch = 0.5F;          // semitones between the piers of a bridge
constexpr float kExcursion = 1.0F;          // semitones off their mean

} // namespace

Frames FramesFromMarks(const CPitchMarksIf& marks, float sampleRate) {
    const std::int32_t count = std::max(marks.GetCount(), 0);
    Frames frames(Index(count));
    for (std::int32_t i = 0; i < count; ++i) {
        const std::int32_t period = marks.GetPeriod(i);
        AnalysisFrame& frame = frames[Index(i)];
        if (period >= 1) {
            const double hertz = static_cast<double>(sampleRate) / period;
            frame.pitch = static_cast<float>(12.0 * std::log2(hertz / kConcertPitch) + 69.0);
        }
        frame.level = marks.GetEnergy(i);
        frame.voiced = marks.GetVoicing(i) != 0 ? 1 : 0;
        frame.position = marks.GetPosition(i);
    }
    return frames;
}

void NormaliseLevels(Frames& frames) {
    float largest = 0;
    for (const AnalysisFrame& frame : frames) largest = std::max(largest, frame.level);
    const float inverse = largest > 0 ? 1.0F / largest : 0.0F;
    const float scale =
        std::isfinite(inverse) ? inverse : 0.0F; // a largest level below all use counts as silence
    for (AnalysisFrame& frame : frames) frame.level *= scale;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        AnalysisFrame& frame = frames[i];
        if (frame.voiced != 0 && frame.level < kSilentLevel) frame.voiced = 0;
        if (i == 0) continue;
        AnalysisFrame& before = frames[i - 1];
        if (before.voiced != 0 && frame.voiced != 0 &&
            (frame.level - before.level) / before.level > kPeriodRise) {
            before.voiced = 0;
        }
    }
}

void CutOctaveJumps(Frames& frames, const AnalysisLengths& lengths) {
    if (frames.empty()) return;
    FrameLocator locator(frames);
    const auto pitch = [&frames](std::int32_t i) { return frames[Index(i)].pitch; };
    FrameWindow window{0, 0, 0, lengths.window};
    while (window.last < locator.LastIndex()) {
        locator.Locate(window, lengths.shortWindow, lengths.shortWindow);
        float largest = pitch(window.first);
        float smallest = largest;
        std::int32_t cut = window.first;
        for (std::int32_t i = window.first; i <= window.last; ++i) {
            largest = std::max(largest, pitch(i));
            if (pitch(i) < smallest) {
                smallest = pitch(i);
                cut = i;
            }
        }
        if (largest - smallest <= kOctaveJump) {
            const auto step = static_cast<std::int64_t>(lengths.halfWindow * kCarefulStep);
            window.first = locator.FirstNotBefore(window.start + step);
            window.start = locator.Position(window.first);
            window.end = window.start + lengths.halfWindow;
            continue;
        }
        const float middle = (largest + smallest) / 2.0F;
        const bool startsBelow = pitch(window.first) < middle;
        for (std::int32_t i = window.first + 1; i < window.last; ++i) {
            if ((pitch(i) < middle) != startsBelow) {
                cut = i;
                break;
            }
        }
        frames[Index(cut)].voiced = 0;
        locator.SetUnvoiced(cut);
        window.start += lengths.halfWindow;
        window.end = window.start + lengths.halfWindow;
    }
}

void BridgeDeviations(Frames& frames, const AnalysisLengths& lengths) {
    const auto count = static_cast<std::int32_t>(frames.size());
    for (std::int32_t i = 0; i < count - kLongestBridge; ++i) {
        AnalysisFrame* from = &frames[Index(i)];
        if (from->voiced == 0) continue;
        const double distance = static_cast<double>(from[1].position) - from[0].position;
        const double reach =
            std::floor(kBridgeSeconds * static_cast<double>(lengths.sampleRate) / distance + 0.5);
        const auto longest =
            static_cast<std::int32_t>(std::clamp<double>(reach, kShortestBridge, kLongestBridge));
        // The range of the voiced pitches between the piers tells whether there is anything to pull at all.
        float lowest = INFINITY;
        float highest = -INFINITY;
        const auto include = [&](const AnalysisFrame& frame) {
            if (frame.voiced == 0) return;
            lowest = std::min(lowest, frame.pitch);
            highest = std::max(highest, frame.pitch);
        };
        for (std::int32_t j = 1; j <= longest; ++j) {
            if (j > 1) include(from[j - 1]);
            if (from[j].voiced == 0 || !(std::fabs(from->pitch - from[j].pitch) < kSamePitch)) continue;
            const float mean = (from->pitch + from[j].pitch) / 2.0F;
            if (!(highest - mean > kExcursion || mean - lowest > kExcursion)) continue;
            lowest = INFINITY;
            highest = -INFINITY;
            for (std::int32_t k = 1; k < j; ++k) {
                if (from[k].voiced != 0 && std::fabs(from[k].pitch - mean) > kExcursion) from[k].pitch = mean;
                include(from[k]);
            }
        }
    }
}

} // namespace sonorelle
