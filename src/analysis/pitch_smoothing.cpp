// Median smoothing of steady stretches, and the splitting of runs at steps of the pitch.

#include "analysis/frame_locator.h"
#include "analysis/frame_stages.h"
#include "analysis/voiced_mean.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <queue>
#include <vector>

namespace sonorelle {

namespace {

constexpr double kSteadyDrift = 0.5;  // semitones between a window's mean and that around its end
constexpr float kSmallestStep = 0.5F; // semitones
constexpr std::int32_t kWidening = 4; // frames by which the window around a step grows

// The pitch in the middle of the sorted pitches of the voiced frames of a window that mostly grows: two heaps
// hold the lower and the upper half.
class RunningMedian {
public:
    explicit RunningMedian(const Frames& source) : frames(source) {}

    // Element count / 2 of the voiced frames from `newFirst` to `last`, both included; there must be one.
    float Median(std::int32_t newFirst, std::int32_t last) {
        if (newFirst != first || last < end - 1) {
            first = end = newFirst;
            lower = {};
            upper = {};
        }
        for (; end <= last; ++end) {
            if (frames[Index(end)].voiced != 0) Add(frames[Index(end)].pitch);
        }
        return upper.top();
    }

private:
    void Add(float pitch) {
        if (upper.empty() || pitch >= upper.top())
            upper.push(pitch);
        else
            lower.push(pitch);
        const std::size_t half = (lower.size() + upper.size()) / 2;
        if (lower.size() > half) {
            upper.push(lower.top());
            lower.pop();
        } else if (lower.size() < half) {
            lower.push(upper.top());
            upper.pop();
        }
    }

    const Frames& frames;
    std::int32_t first = -1;
    std::int32_t end = 0;
    std::priority_queue<float> lower; // the lower half, rounded down
    std::priority_queue<float, std::vector<float>, std::greater<float>>
        upper; // the rest; its least is the median
};

class MedianSmoother {
public:
    MedianSmoother(const Frames& source, Frames& target, const AnalysisLengths& analysisLengths)
        : frames(source), smoothed(target), lengths(analysisLengths), locator(source), windowMean(source),
          median(source) {
        window.end = lengths.window;
    }

    void Run() {
        while (window.last < locator.LastIndex()) {
            Locate();
            if (IsSteady())
                SmoothAndGrow();
            else
                MoveOn();
        }
        Write();
    }

private:
    // Kept back while the window grows: every growth writes the whole of it anew.
    struct Pending {
        std::int32_t first = 0;
        std::int32_t last = 0; // excluded
        float pitch = 0;
    };

    void Locate() { locator.Locate(window, lengths.shortWindow, lengths.window); }

    void StartAt(std::int32_t frame, std::int32_t length) {
        window.first = std::min(frame, locator.LastIndex());
        window.start = locator.Position(window.first);
        window.end = window.start + length;
    }

    bool IsSteady() {
        FrameWindow around{0, 0, window.end - lengths.shortWindow, window.end + lengths.shortWindow};
        locator.Locate(around, lengths.shortWindow, lengths.window);
        const double meanAround = VoicedMean(frames).Mean(around.first, around.last);
        const double mean = windowMean.Mean(window.first, window.last);
        return std::fabs(meanAround - mean) <= kSteadyDrift;
    }

    void SmoothAndGrow() {
        if (pending.first != window.first || pending.last > window.last) Write();
        pending = {window.first, window.last, median.Median(window.first, window.last)};
        current = window.last;
        window.end += lengths.window;
        Locate();
        if (window.last == current) StartAt(current + 1, lengths.longWindow);
    }

    void MoveOn() {
        current = std::min(current + 1, locator.LastIndex());
        StartAt(current, lengths.window);
        Locate();
    }

    void Write() {
        for (std::int32_t i = pending.first; i < pending.last; ++i) smoothed[Index(i)].pitch = pending.pitch;
        pending = {};
    }

    const Frames& frames;
    Frames& smoothed;
    const AnalysisLengths& lengths;
    FrameLocator locator;
    VoicedMean windowMean;
    RunningMedian median;
    FrameWindow window;
    std::int32_t current = 0; // where the window last stood
    Pending pending;
};

// The highest and the lowest pitch of a window that mostly grows, and where they first lie.
class PitchRange {
public:
    explicit PitchRange(const Frames& source) : frames(source) {}

    void Scan(std::int32_t newFirst, std::int32_t last) {
        if (newFirst != first || last < end - 1) {
            first = end = highest = lowest = newFirst;
        }
        for (; end <= last; ++end) {
            if (Pitch(end) > Pitch(highest)) highest = end;
            if (Pitch(end) < Pitch(lowest)) lowest = end;
        }
    }

    std::int32_t Highest() const { return highest; }
    std::int32_t Lowest() const { return lowest; }
    float Range() const { return Pitch(highest) - Pitch(lowest); }

private:
    float Pitch(std::int32_t i) const { return frames[Index(i)].pitch; }

    const Frames& frames;
    std::int32_t first = -1;
    std::int32_t end = 0;
    std::int32_t highest = 0;
    std::int32_t lowest = 0;
};

class StepSplitter {
public:
    StepSplitter(Frames& target, const AnalysisLengths& analysisLengths)
        : frames(target), lengths(analysisLengths), locator(target), windowMean(target), range(target) {
        window.end = lengths.halfWindow;
    }

    void Run() {
        while (window.last < locator.LastIndex()) {
            locator.Locate(window, lengths.shortWindow, lengths.halfWindow);
            range.Scan(window.first, window.last);
            if (range.Range() <= kSmallestStep) {
                StartAt(window.first + 1);
            } else if (range.Range() > widest && ContinuesStep()) {
                Widen();
            } else {
                Split();
            }
        }
    }

private:
    void StartAt(std::int32_t frame) {
        window.first = std::min(frame, locator.LastIndex());
        window.start = locator.Position(window.first);
        window.end = window.start + lengths.halfWindow;
        widest = 0;
        highest = lowest = 0;
    }

    // Whether the range still opens in the direction of the step that is remembered, if one is.
    bool ContinuesStep() const {
        const bool rises = range.Lowest() >= range.Highest();
        const bool rose = lowest >= highest;
        return rises == rose || lowest == highest;
    }

    void Widen() {
        window.end = locator.Position(std::min(window.last + kWidening, locator.LastIndex()));
        widest = range.Range();
        highest = range.Highest();
        lowest = range.Lowest();
    }

    void Split() {
        // A mean over no voiced frames is not a number, and nothing lies below it.
        const double mean = windowMean.Mean(window.first, window.last);
        const auto isBelow = [&](std::int32_t i) {
            return static_cast<double>(frames[Index(i)].pitch) < mean;
        };
        const bool startsBelow = isBelow(window.first);
        std::int32_t cut = window.first + 1;
        while (cut < window.last && isBelow(cut) == startsBelow) ++cut;
        cut = std::min(cut, window.last);
        frames[Index(cut)].voiced = 0;
        locator.SetUnvoiced(cut);
        windowMean.Forget();
        // Only a range that is not a number gets here with no step remembered; the walk must still move on.
        StartAt(highest == lowest ? window.first + 1 : std::max(highest, lowest) + 1);
    }

    Frames& frames;
    const AnalysisLengths& lengths;
    FrameLocator locator;
    VoicedMean windowMean;
    PitchRange range;
    FrameWindow window;
    float widest = 0;         // range of the step so far
    std::int32_t highest = 0; // where its pitches lie; equal: no step is remembered
    std::int32_t lowest = 0;
};

} // namespace

void SmoothByMedian(const Frames& frames, Frames& smoothed, const AnalysisLengths& lengths) {
    if (!frames.empty()) MedianSmoother(frames, smoothed, lengths).Run();
}

void SplitAtSteps(Frames& frames, const AnalysisLengths& lengths) {
    if (!frames.empty()) StepSplitter(frames, lengths).Run();
}

} // namespace sonorelle
