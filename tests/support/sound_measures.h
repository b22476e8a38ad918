// What the ear would say of a sound beside the one that it was made from: level, error, clicks, onsets and
// buzz.
//
// Both sounds are mono and lie on one time line: frame n of the output belongs to frame n of the source.
// Frames outside of a sound count as silence. Levels are in dB, lengths in frames.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace sonorelle::test {

using Samples = std::span<const float>;

// Frames `begin` to `end` - 1. Empty when `end` <= `begin`.
struct FrameRange {
    std::size_t begin = 0;
    std::size_t end = 0;

    std::size_t Count() const { return end > begin ? end - begin : 0; }
    // Without `edge` frames at either end; empty where there are not so many.
    FrameRange Inner(std::size_t edge) const;
};

inline constexpr double kSilenceDecibels = -120.0; // what silence is told as
inline constexpr double kExactDecibels = 120.0;    // what no error at all is told as

// Root mean square, 0 for an empty range.
double Rms(Samples sound, FrameRange range);
// The same in dB of full scale, at least kSilenceDecibels.
double LevelDecibels(Samples sound, FrameRange range);

// Energy of the source over that of the difference, up to kExactDecibels.
double SignalToErrorDecibels(Samples source, Samples output, FrameRange range);

// Where the output lies that the source's range was made into, and how near it comes to it there.
struct Placement {
    std::int64_t lag = 0;               // frames behind the source; before it, when negative
    double decibels = kSilenceDecibels; // signal to error
};

// The place of least error up to `largestLag` either way, the nearest of equal ones.
Placement Place(Samples source, Samples output, FrameRange range, std::size_t largestLag);

// As SignalToErrorDecibels, after each window of `window` frames of the output was moved by the whole frames,
// up to `largestLag` either way, that leave the least error: grains may stand a little away from where they
// were sung, which nobody hears. A rest shorter than a window at the end of the range is left out.
double AlignedSignalToErrorDecibels(Samples source, Samples output, FrameRange range, std::size_t window,
                                    std::size_t largestLag);

// Frames by which the whole output lies behind the source (before it, when negative), up to `largestLag`:
// where the error is least, looking at each `stride`th frame.
std::int64_t WholeLag(Samples source, Samples output, std::size_t largestLag, std::size_t stride);

// Largest magnitude of the difference of two neighbours that both lie in the range.
double LargestStep(Samples sound, FrameRange range);

// A click is a step that the source has not got nearby. The largest, over all pieces of `window` frames, of
// the output's largest step over the source's largest within `reach` frames around; steps of the source below
// `floor` (the noise) count as that.
double WorstStepRatio(Samples source, Samples output, FrameRange range, std::size_t window, std::size_t reach,
                      double floor);

// Frame at which the level in windows of `window` frames first comes within `dropDecibels` of its largest in
// the range, told as the window's middle. Nothing when it is so loud from the first window on.
std::optional<double> OnsetFrame(Samples sound, FrameRange range, std::size_t window, double dropDecibels);

// Largest normalised correlation of the range with itself, shifted by `shortest` to `longest` frames: 1 for a
// tone, near 0 for noise. 0 when the range is not longer than twice the longest shift.
double Periodicity(Samples sound, FrameRange range, std::size_t shortest, std::size_t longest);

// Value below which `share` (0 to 1) of the values lie, straight lines between them; 0 without values.
double Percentile(std::vector<double> values, double share);

// Root mean square of the difference of two envelopes in dB, after their mean difference was taken out: what
// remains is colour, not level. The longer one is cut. 0 without values.
double EnvelopeDistance(std::span<const double> first, std::span<const double> second);

} // namespace sonorelle::test
