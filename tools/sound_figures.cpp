#include "sound_figures.h"

#include <algorithm>
#include <cmath>

namespace sonorelle::tools {
namespace {

using test::FrameRange;

// Two blocks: in shorter periods the engine repeats and skips marks. At 44.1 kHz that is from 345 Hz on.
constexpr double kShortPeriod = 128.0; // samples
// Above, a formant lies between two harmonics and no linear prediction finds it.
constexpr double kHighestFormantPitch = 350.0;
constexpr double kAlignSeconds = 0.005;      // about a grain: from one to the next the offset may change
constexpr double kLargestLagSeconds = 0.015; // of a whole vowel
constexpr double kStepPieceSeconds = 0.002;
constexpr double kStepReachSeconds = 0.03;
constexpr double kStepFloor = 0.03; // of the source's largest step: 30 dB below is masked
constexpr double kOnsetWindowSeconds = 0.005;
constexpr double kOnsetDropDecibels = 20.0;
// Where a buzz would lie.
constexpr double kShortestBuzzSeconds = 0.0012; // 830 Hz
constexpr double kLongestBuzzSeconds = 0.0125;  // 80 Hz

void Append(Values& to, const Values& from) { to.insert(to.end(), from.begin(), from.end()); }

std::size_t Frames(double seconds, double sampleRate) {
    return static_cast<std::size_t>(std::max(1.0, std::floor(seconds * sampleRate + 0.5)));
}

double Cents(double hertz, double target) { return 1200.0 * std::log2(hertz / target); }

Values Magnitudes(const Values& values) {
    Values magnitudes;
    for (const double value : values) magnitudes.push_back(std::fabs(value));
    return magnitudes;
}

// The judge's frames in a range.
template<typename Use>
void ForEachFrame(const HeardSound& heard, FrameRange range, double sampleRate, Use use) {
    for (const HeardFrame& frame : heard.frames) {
        const double at = frame.seconds * sampleRate;
        if (at >= static_cast<double>(range.begin) && at < static_cast<double>(range.end)) use(frame);
    }
}

double MedianIn(const Comparison& of, const HeardSound& heard, FrameRange range,
                double (*get)(const HeardFrame&)) {
    Values values;
    ForEachFrame(heard, range, of.sampleRate, [&](const HeardFrame& frame) {
        if (!std::isnan(get(frame))) values.push_back(get(frame));
    });
    return values.empty() ? std::nan("") : Median(values);
}

double Pitch(const HeardFrame& frame) { return frame.hertz; }

void ComparePitch(const Comparison& of, SoundFigures& figures) {
    for (const FrameRange& vowel : of.places->vowels) {
        ForEachFrame(*of.source.heard, vowel, of.sampleRate, [&](const HeardFrame& before) {
            const double target = of.target(before.seconds);
            if (std::isnan(before.hertz) || std::isnan(target)) return;
            ++figures.pitchFrames;
            const HeardFrame* const now = of.output.heard->At(before.seconds);
            if (now == nullptr || std::isnan(now->hertz)) {
                ++figures.unheardFrames;
                return;
            }
            figures.pitchErrorsCents.push_back(Cents(now->hertz, target));
            const double loss = before.harmonicityDecibels - now->harmonicityDecibels;
            if (!std::isnan(loss)) figures.harmonicityLossDecibels.push_back(loss);
        });
    }
}

void CompareFormants(const Comparison& of, SoundFigures& figures) {
    constexpr std::array<double (*)(const HeardFrame&), 3> kFormants = {
        [](const HeardFrame& frame) { return frame.formantHertz[0]; },
        [](const HeardFrame& frame) { return frame.formantHertz[1]; },
        [](const HeardFrame& frame) { return frame.formantHertz[2]; }};
    for (const FrameRange& vowel : of.places->vowels) {
        const double pitch = MedianIn(of, *of.source.heard, vowel, Pitch);
        if (std::isnan(pitch) || pitch * std::max(of.ratio, 1.0) > kHighestFormantPitch) continue;
        for (std::size_t i = 0; i < kFormants.size(); ++i) {
            const double before = MedianIn(of, *of.source.heard, vowel, kFormants[i]);
            const double now = MedianIn(of, *of.output.heard, vowel, kFormants[i]);
            if (before > 0.0 && now > 0.0) figures.formantsPercent[i].push_back(100.0 * (now / before - 1.0));
        }
    }
}

void CompareSteps(const Comparison& of, SoundFigures& figures) {
    const FrameRange all{0, of.source.samples.size()};
    const double level = std::pow(10.0, Median(figures.levelsDecibels) / 20.0);
    const double before = test::LargestStep(of.source.samples, all);
    if (before <= 0.0 || level <= 0.0) return;
    figures.stepRatios.push_back(test::LargestStep(of.output.samples, all) / before / level);
    figures.localStepRatios.push_back(test::WorstStepRatio(of.source.samples, of.output.samples, all,
                                                           Frames(kStepPieceSeconds, of.sampleRate),
                                                           Frames(kStepReachSeconds, of.sampleRate),
                                                           kStepFloor * before) /
                                      level);
}

void CompareOnsets(const Comparison& of, SoundFigures& figures) {
    const std::size_t window = Frames(kOnsetWindowSeconds, of.sampleRate);
    for (const FrameRange& place : of.places->onsets) {
        const auto before = test::OnsetFrame(of.source.samples, place, window, kOnsetDropDecibels);
        const auto now = test::OnsetFrame(of.output.samples, place, window, kOnsetDropDecibels);
        if (before && now) figures.onsetsMilliseconds.push_back(1e3 * (*now - *before) / of.sampleRate);
    }
}

void CompareHisses(const Comparison& of, SoundFigures& figures) {
    const std::size_t shortest = Frames(kShortestBuzzSeconds, of.sampleRate);
    for (const FrameRange& hiss : of.places->hisses) {
        // A short one holds fewer periods of a deep buzz.
        const std::size_t longest =
            std::min(Frames(kLongestBuzzSeconds, of.sampleRate), (hiss.Count() - 1) / 3);
        if (longest < shortest) continue;
        figures.hissLevelsDecibels.push_back(test::LevelDecibels(of.output.samples, hiss) -
                                             test::LevelDecibels(of.source.samples, hiss));
        figures.hissPeriodicity.push_back(test::Periodicity(of.output.samples, hiss, shortest, longest));
        figures.hissPeriodicityBefore.push_back(
            test::Periodicity(of.source.samples, hiss, shortest, longest));
        ForEachFrame(*of.output.heard, hiss, of.sampleRate, [&](const HeardFrame& frame) {
            ++figures.hissFrames;
            if (!std::isnan(frame.hertz)) ++figures.voicedHissFrames;
        });
    }
}

} // namespace

SoundFigures& SoundFigures::operator+=(const SoundFigures& other) {
    Append(pitchErrorsCents, other.pitchErrorsCents);
    pitchFrames += other.pitchFrames;
    unheardFrames += other.unheardFrames;
    for (std::size_t i = 0; i < formantsPercent.size(); ++i)
        Append(formantsPercent[i], other.formantsPercent[i]);
    Append(envelopeDecibels, other.envelopeDecibels);
    Append(harmonicityLossDecibels, other.harmonicityLossDecibels);
    Append(stepRatios, other.stepRatios);
    Append(localStepRatios, other.localStepRatios);
    Append(onsetsMilliseconds, other.onsetsMilliseconds);
    Append(levelsDecibels, other.levelsDecibels);
    Append(hissLevelsDecibels, other.hissLevelsDecibels);
    Append(hissPeriodicity, other.hissPeriodicity);
    Append(hissPeriodicityBefore, other.hissPeriodicityBefore);
    hissFrames += other.hissFrames;
    voicedHissFrames += other.voicedHissFrames;
    return *this;
}

UnisonFigures& UnisonFigures::operator+=(const UnisonFigures& other) {
    Append(lowDecibels, other.lowDecibels);
    Append(lowPlacedDecibels, other.lowPlacedDecibels);
    Append(lowLagsMilliseconds, other.lowLagsMilliseconds);
    Append(highDecibels, other.highDecibels);
    Append(highAlignedDecibels, other.highAlignedDecibels);
    return *this;
}

SoundFigures Compare(const Comparison& comparison) {
    SoundFigures figures;
    for (const FrameRange& vowel : comparison.places->vowels)
        figures.levelsDecibels.push_back(test::LevelDecibels(comparison.output.samples, vowel) -
                                         test::LevelDecibels(comparison.source.samples, vowel));
    ComparePitch(comparison, figures);
    CompareFormants(comparison, figures);
    CompareSteps(comparison, figures);
    CompareOnsets(comparison, figures);
    CompareHisses(comparison, figures);
    figures.envelopeDecibels.push_back(test::EnvelopeDistance(comparison.source.heard->envelopeDecibels,
                                                              comparison.output.heard->envelopeDecibels));
    return figures;
}

UnisonFigures CompareUnison(const Comparison& of) {
    UnisonFigures figures;
    const std::size_t window = Frames(kAlignSeconds, of.sampleRate);
    for (const FrameRange& vowel : of.places->vowels) {
        const double pitch = MedianIn(of, *of.source.heard, vowel, Pitch);
        if (std::isnan(pitch)) continue;
        const double plain = test::SignalToErrorDecibels(of.source.samples, of.output.samples, vowel);
        if (pitch <= of.sampleRate / kShortPeriod) {
            const test::Placement place = test::Place(of.source.samples, of.output.samples, vowel,
                                                      Frames(kLargestLagSeconds, of.sampleRate));
            figures.lowDecibels.push_back(plain);
            figures.lowPlacedDecibels.push_back(place.decibels);
            figures.lowLagsMilliseconds.push_back(1e3 * static_cast<double>(place.lag) / of.sampleRate);
        } else {
            const std::size_t period = Frames(1.0 / pitch, of.sampleRate);
            figures.highDecibels.push_back(plain);
            figures.highAlignedDecibels.push_back(test::AlignedSignalToErrorDecibels(
                of.source.samples, of.output.samples, vowel, window, period));
        }
    }
    return figures;
}

double Median(const Values& values) { return test::Percentile(values, 0.5); }
double MedianMagnitude(const Values& values) { return Median(Magnitudes(values)); }
double HighMagnitude(const Values& values) { return test::Percentile(Magnitudes(values), 0.95); }
double Largest(const Values& values) {
    return values.empty() ? 0.0 : *std::max_element(values.begin(), values.end());
}
double Smallest(const Values& values) {
    return values.empty() ? 0.0 : *std::min_element(values.begin(), values.end());
}
double Furthest(const Values& values) {
    return Largest(values) > -Smallest(values) ? Largest(values) : Smallest(values);
}

} // namespace sonorelle::tools
