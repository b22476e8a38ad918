#include "app/beat_grid.h"

#include "platform/saturate.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {
namespace {

constexpr double kSecondsInMinute = 60;
constexpr double kBeatsOfAQuarterTempo =
    4; // a tempo counts quarters; the signature's beat is 4 / denominator of one
constexpr std::int32_t kLargestSignature = 256; // beyond any music
constexpr double kFarthestAnchor = 1e12;        // samples: more than half a year
constexpr float kLeastTempo = 0.001F;
constexpr float kMostTempo = 1e6F;
constexpr float kLeastRate = 1; // Hz
constexpr float kMostRate = 1e7F;
constexpr double kFarthestGridSample = 1e15;

} // namespace

BeatGrid BeatGrid::Cleaned() const {
    BeatGrid clean = *this;
    if (!(tempo >= kLeastTempo && tempo <= kMostTempo)) clean.tempo = kDefaultTempo;
    if (!(sampleRate >= kLeastRate && sampleRate <= kMostRate)) clean.sampleRate = kDefaultRate;
    if (!(std::abs(anchor) <= kFarthestAnchor)) clean.anchor = 0;
    if (numerator < 1 || numerator > kLargestSignature) clean.numerator = 4;
    if (denominator < 1 || denominator > kLargestSignature) clean.denominator = 4;
    return clean;
}

double BeatGrid::SamplesPerBeat() const {
    const BeatGrid clean = Cleaned();
    const double quarter = kSecondsInMinute * double{clean.sampleRate} / double{clean.tempo};
    return quarter * kBeatsOfAQuarterTempo / clean.denominator;
}

double BeatGrid::BeatFromSample(double sample) const {
    return (sample - Cleaned().anchor) / SamplesPerBeat();
}

double BeatGrid::SampleFromBeat(double beat) const { return Cleaned().anchor + beat * SamplesPerBeat(); }

BeatPosition BeatGrid::PositionAt(double sample) const {
    const std::int32_t beats = Cleaned().numerator;
    // A tick's start, turned into samples and back, must not fall into the tick before.
    constexpr double kRounding = 1e-6;
    if (!(std::abs(sample) <= kFarthestGridSample)) return {};
    const double ticks = std::floor(BeatFromSample(sample) * kTicksPerBeat + kRounding);
    const double beat = std::floor(ticks / kTicksPerBeat);
    const double bar = std::floor(beat / beats);
    return {TruncateToI32(bar + 1), TruncateToI32(beat - bar * beats) + 1,
            TruncateToI32(ticks - beat * kTicksPerBeat)};
}

float BeatGrid::TempoAfterDrag(double from, double to) const {
    const BeatGrid clean = Cleaned();
    const double ratio = (from - clean.anchor) / (to - clean.anchor);
    if (!(ratio > 0) || !std::isfinite(ratio)) return clean.tempo;
    return static_cast<float>(
        std::clamp(double{clean.tempo} * ratio, double{kLowestTempo}, double{kHighestTempo}));
}

} // namespace sonorelle
