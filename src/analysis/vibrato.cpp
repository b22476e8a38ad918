// Flattening of vibrato: a window slides over the voiced runs until the pitch in it swings like a vibrato
// does (regular peaks and valleys, not faster than 20 Hz, around a centre that is also the mean); then the
// window grows for as long as it does.

#include "analysis/frame_locator.h"
#include "analysis/frame_stages.h"
#include "analysis/voiced_mean.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr float kTooWide = 6.0F;             // semitones: no vibrato spans half an octave
constexpr double kFastestVibrato = 20.0;     // Hz
constexpr double kShareOfSlowSwings = 0.4;   // of all swings
constexpr std::int32_t kFewestCrossings = 4; // of the centre: two full swings
constexpr double kCrossingSeconds = 0.0116;  // apart, or it is jitter
constexpr double kLargestAsymmetry = 0.25;   // semitones between the middle of the range and the mean
constexpr double kLargestDrift = 0.5;        // semitones between the window's mean and that around its end

// Turning points of one kind, in rising order.
struct TurningPoints {
    double sampleRate;
    std::int32_t count = 0;
    std::int32_t slowPairs = 0; // successive ones not closer than a period of the fastest vibrato
    double sum = 0;             // of their pitches, semitones
    std::int64_t lastPosition = 0;
    std::int32_t opened = -1; // where the rise (or fall) that leads to the next one began

    void Add(const AnalysisFrame& frame) {
        if (count > 0 && sampleRate / static_cast<double>(frame.position - lastPosition) <= kFastestVibrato)
            ++slowPairs;
        ++count;
        sum += static_cast<double>(frame.pitch);
        lastPosition = frame.position;
    }
};

// Range and turning points of the pitch from a first frame on. Going on with the same first frame costs only
// what is new.
class SwingScan {
public:
    SwingScan(const Frames& source, double sampleRate) : frames(source), rate(sampleRate) { Restart(0); }

    void Scan(std::int32_t newFirst, std::int32_t last) {
        if (newFirst != first || last < end) Restart(newFirst);
        for (std::int32_t i = end + 1; i <= last; ++i) Step(i);
        end = std::max(end, last);
    }

    float Largest() const { return largest; }
    float Smallest() const { return smallest; }
    const TurningPoints& Peaks() const { return peaks; }
    const TurningPoints& Valleys() const { return valleys; }

private:
    void Restart(std::int32_t newFirst) {
        first = end = newFirst;
        largest = smallest = At(newFirst).pitch;
        peaks = TurningPoints{rate};
        valleys = TurningPoints{rate};
    }

    void Step(std::int32_t i) {
        const float pitch = At(i).pitch;
        largest = std::max(largest, pitch);
        smallest = std::min(smallest, pitch);
        const float change = pitch - At(i - 1).pitch;
        if (change > 0) {
            Turn(valleys, i);
            if (peaks.opened < 0) peaks.opened = i;
        } else if (change < 0) {
            Turn(peaks, i);
            if (valleys.opened < 0) valleys.opened = i;
        }
    }

    // Closes the rise (or fall) that is open: the turning point lies in the middle of the plateau.
    void Turn(TurningPoints& points, std::int32_t i) {
        if (points.opened < 0) return;
        points.Add(At(points.opened + (i - points.opened + 1) / 2));
        points.opened = -1;
    }

    const AnalysisFrame& At(std::int32_t i) const { return frames[static_cast<std::size_t>(i)]; }

    const Frames& frames;
    double rate;
    std::int32_t first = 0;
    std::int32_t end = 0; // last frame scanned
    float largest = 0;
    float smallest = 0;
    TurningPoints peaks{0};
    TurningPoints valleys{0};
};

class VibratoFlattener {
public:
    VibratoFlattener(const Frames& source, Frames& target, const AnalysisLengths& analysisLengths)
        : frames(source), flattened(target), lengths(analysisLengths), locator(source),
          scan(source, static_cast<double>(analysisLengths.sampleRate)), windowMean(source),
          crossingDistance(
              static_cast<std::int64_t>(kCrossingSeconds * static_cast<double>(analysisLengths.sampleRate))) {
        window.end = lengths.longWindow;
    }

    void Run() {
        while (window.last < locator.LastIndex()) {
            Locate();
            scan.Scan(window.first, window.last);
            const bool tooWide = scan.Largest() - scan.Smallest() >= kTooWide;
            const bool swings = scan.Peaks().count >= 2 && scan.Valleys().count >= 2;
            if (!tooWide && !swings) {
                MovePastSteadyPitch();
            } else if (!tooWide && IsVibrato()) {
                FlattenAndGrow();
            } else {
                MoveOn();
            }
        }
        Write();
    }

private:
    // What is to be written is kept back while the window grows: every growth writes the whole of it anew.
    struct Pending {
        std::int32_t first = 0;
        std::int32_t last = 0; // excluded
        float pitch = 0;
    };

    void Locate() { locator.Locate(window, lengths.shortWindow, lengths.longWindow); }

    void StartAt(std::int32_t frame) {
        window.first = std::min(frame, locator.LastIndex());
        window.start = locator.Position(window.first);
        window.end = window.start + lengths.longWindow;
    }

    void MoveOn() {
        StartAt(current + 1);
        Locate();
        current = window.first;
    }

    void MovePastSteadyPitch() {
        StartAt(current + 1);
        current = locator.FirstNotBefore(window.start + lengths.shortWindow);
        if (current > 0 && locator.Position(current) >= window.start + lengths.shortWindow) --current;
        Locate();
    }

    double Centre() const {
        return (scan.Peaks().sum / scan.Peaks().count + scan.Valleys().sum / scan.Valleys().count) / 2.0;
    }

    bool IsVibrato() {
        const TurningPoints& peaks = scan.Peaks();
        const TurningPoints& valleys = scan.Valleys();
        const double share =
            static_cast<double>(peaks.slowPairs + valleys.slowPairs) / (peaks.count + valleys.count - 2);
        if (share < kShareOfSlowSwings || !CrossesOften(static_cast<float>(Centre()))) return false;
        const double mean = windowMean.Mean(window.first, window.last);
        const double middle =
            (static_cast<double>(scan.Largest()) + static_cast<double>(scan.Smallest())) / 2.0;
        if (std::fabs(middle - mean) > kLargestAsymmetry) return false;
        FrameWindow around{0, 0, window.end - lengths.window, window.end + lengths.window};
        locator.Locate(around, lengths.shortWindow, lengths.longWindow);
        const double meanAround = VoicedMean(frames).Mean(around.first, around.last);
        return !(std::fabs(meanAround - mean) > kLargestDrift);
    }

    // Whether the pitch crosses `centre` at least four times.
    bool CrossesOften(float centre) const {
        std::int32_t crossings = 0;
        std::int64_t lastCrossing = locator.Position(window.first) - crossingDistance;
        for (std::int32_t i = window.first + 1; i <= window.last && crossings < kFewestCrossings; ++i) {
            const float before = frames[static_cast<std::size_t>(i - 1)].pitch;
            const float now = frames[static_cast<std::size_t>(i)].pitch;
            const bool crosses = (before < centre && now >= centre) || (before > centre && now <= centre);
            if (crosses && locator.Position(i) - lastCrossing > crossingDistance) {
                ++crossings;
                lastCrossing = locator.Position(i);
            }
        }
        return crossings >= kFewestCrossings;
    }

    void FlattenAndGrow() {
        if (pending.first != window.first || pending.last > window.last) Write();
        pending = {window.first, window.last, static_cast<float>(Centre())};
        current = window.last;
        window.end += lengths.shortWindow;
        Locate();
        if (window.last == current) StartAt(current + 1);
    }

    void Write() {
        for (std::int32_t i = pending.first; i < pending.last; ++i) {
            flattened[static_cast<std::size_t>(i)].pitch = pending.pitch;
        }
        pending = {};
    }

    const Frames& frames;
    Frames& flattened;
    const AnalysisLengths& lengths;
    FrameLocator locator;
    SwingScan scan;
    VoicedMean windowMean;
    std::int64_t crossingDistance;
    FrameWindow window;
    std::int32_t current = 0; // where the window last stood
    Pending pending;
};

} // namespace

void FlattenVibrato(const Frames& frames, Frames& flattened, const AnalysisLengths& lengths) {
    if (!frames.empty()) VibratoFlattener(frames, flattened, lengths).Run();
}

} // namespace sonorelle
