#include "support/sound_measures.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace sonorelle::test {

namespace {

double At(Samples sound, std::int64_t frame) {
    if (frame < 0 || frame >= static_cast<std::int64_t>(sound.size())) return 0.0;
    return static_cast<double>(sound[static_cast<std::size_t>(frame)]);
}

double Energy(Samples sound, FrameRange range) {
    double sum = 0.0;
    for (std::size_t i = range.begin; i < std::min(range.end, sound.size()); ++i)
        sum += static_cast<double>(sound[i]) * static_cast<double>(sound[i]);
    return sum;
}

double RatioDecibels(double signal, double error) {
    if (error <= 0.0) return kExactDecibels;
    if (signal <= 0.0) return kSilenceDecibels;
    return std::clamp(10.0 * std::log10(signal / error), kSilenceDecibels, kExactDecibels);
}

// Of the output moved by `lag`; stops as soon as it comes to `enough`.
double ErrorEnergy(Samples source, Samples output, FrameRange range, std::int64_t lag, double enough,
                   std::size_t stride = 1) {
    double sum = 0.0;
    for (std::size_t i = range.begin; i < range.end && sum < enough; i += stride) {
        const auto frame = static_cast<std::int64_t>(i);
        const double error = At(source, frame) - At(output, frame + lag);
        sum += error * error;
    }
    return sum;
}

struct LeastError {
    std::int64_t lag = 0;
    double energy = std::numeric_limits<double>::infinity();
};

// From lag 0 outwards.
LeastError FindLeastError(Samples source, Samples output, FrameRange range, std::size_t largestLag,
                          std::size_t stride = 1) {
    LeastError least;
    for (std::size_t step = 0; step <= 2 * largestLag; ++step) {
        const auto distance = static_cast<std::int64_t>((step + 1) / 2);
        const std::int64_t lag = step % 2 == 0 ? distance : -distance;
        const double energy = ErrorEnergy(source, output, range, lag, least.energy, stride);
        if (energy < least.energy) least = {lag, energy};
    }
    return least;
}

double SelfCorrelation(Samples sound, FrameRange range, std::size_t shift) {
    double product = 0.0, first = 0.0, second = 0.0;
    for (std::size_t i = range.begin; i + shift < range.end; ++i) {
        const double a = At(sound, static_cast<std::int64_t>(i));
        const double b = At(sound, static_cast<std::int64_t>(i + shift));
        product += a * b;
        first += a * a;
        second += b * b;
    }
    const double norm = std::sqrt(first * second);
    return norm > 0.0 ? product / norm : 0.0;
}

} // namespace

FrameRange FrameRange::Inner(std::size_t edge) const {
    if (Count() <= 2 * edge) return {begin, begin};
    return {begin + edge, end - edge};
}

double Rms(Samples sound, FrameRange range) {
    if (range.Count() == 0) return 0.0;
    return std::sqrt(Energy(sound, range) / static_cast<double>(range.Count()));
}

double LevelDecibels(Samples sound, FrameRange range) {
    const double rms = Rms(sound, range);
    return rms > 0.0 ? std::max(20.0 * std::log10(rms), kSilenceDecibels) : kSilenceDecibels;
}

double SignalToErrorDecibels(Samples source, Samples output, FrameRange range) {
    constexpr double kAll = std::numeric_limits<double>::infinity();
    return RatioDecibels(Energy(source, range), ErrorEnergy(source, output, range, 0, kAll));
}

Placement Place(Samples source, Samples output, FrameRange range, std::size_t largestLag) {
    const LeastError least = FindLeastError(source, output, range, largestLag);
    return {least.lag, RatioDecibels(Energy(source, range), least.energy)};
}

double AlignedSignalToErrorDecibels(Samples source, Samples output, FrameRange range, std::size_t window,
                                    std::size_t largestLag) {
    double signal = 0.0, error = 0.0;
    for (std::size_t at = range.begin; window > 0 && at + window <= range.end; at += window) {
        const FrameRange piece{at, at + window};
        signal += Energy(source, piece);
        error += FindLeastError(source, output, piece, largestLag).energy;
    }
    return RatioDecibels(signal, error);
}

std::int64_t WholeLag(Samples source, Samples output, std::size_t largestLag, std::size_t stride) {
    return FindLeastError(source, output, {0, source.size()}, largestLag, std::max<std::size_t>(stride, 1))
        .lag;
}

double LargestStep(Samples sound, FrameRange range) {
    double largest = 0.0;
    for (std::size_t i = range.begin + 1; i < std::min(range.end, sound.size()); ++i)
        largest =
            std::max(largest, std::fabs(static_cast<double>(sound[i]) - static_cast<double>(sound[i - 1])));
    return largest;
}

double WorstStepRatio(Samples source, Samples output, FrameRange range, std::size_t window, std::size_t reach,
                      double floor) {
    double worst = 0.0;
    for (std::size_t at = range.begin; window > 0 && at < range.end; at += window) {
        const std::size_t end = std::min(at + window, range.end);
        const FrameRange around{at - std::min(at, reach), end + reach};
        const double before = std::max(LargestStep(source, around), floor);
        if (before > 0.0) worst = std::max(worst, LargestStep(output, {at, end + 1}) / before);
    }
    return worst;
}

std::optional<double> OnsetFrame(Samples sound, FrameRange range, std::size_t window, double dropDecibels) {
    if (window == 0 || range.Count() < window) return std::nullopt;
    const std::size_t places = range.Count() - window + 1;
    std::vector<double> energies(places);
    double energy = Energy(sound, {range.begin, range.begin + window});
    for (std::size_t i = 0; i < places; ++i) {
        energies[i] = std::max(energy, 0.0);
        const double leaves = At(sound, static_cast<std::int64_t>(range.begin + i));
        const double enters = At(sound, static_cast<std::int64_t>(range.begin + i + window));
        energy += enters * enters - leaves * leaves;
    }
    const double threshold =
        *std::max_element(energies.begin(), energies.end()) * std::pow(10.0, -dropDecibels / 10.0);
    const auto found = std::find_if(energies.begin(), energies.end(),
                                    [threshold](double value) { return value >= threshold; });
    if (found == energies.begin() || found == energies.end()) return std::nullopt;
    const auto index = static_cast<double>(found - energies.begin());
    return static_cast<double>(range.begin) + index + 0.5 * static_cast<double>(window);
}

double Periodicity(Samples sound, FrameRange range, std::size_t shortest, std::size_t longest) {
    if (range.Count() <= 2 * longest) return 0.0;
    double largest = 0.0;
    for (std::size_t shift = shortest; shift <= longest; ++shift)
        largest = std::max(largest, SelfCorrelation(sound, range, shift));
    return largest;
}

double Percentile(std::vector<double> values, double share) {
    if (values.empty()) return 0.0;
    std::sort(values.begin(), values.end());
    const double at = std::clamp(share, 0.0, 1.0) * static_cast<double>(values.size() - 1);
    const auto index = static_cast<std::size_t>(at);
    const std::size_t next = std::min(index + 1, values.size() - 1);
    return values[index] + (at - static_cast<double>(index)) * (values[next] - values[index]);
}

double EnvelopeDistance(std::span<const double> first, std::span<const double> second) {
    const std::size_t count = std::min(first.size(), second.size());
    if (count == 0) return 0.0;
    double mean = 0.0;
    for (std::size_t i = 0; i < count; ++i) mean += (first[i] - second[i]) / static_cast<double>(count);
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const double difference = first[i] - second[i] - mean;
        sum += difference * difference;
    }
    return std::sqrt(sum / static_cast<double>(count));
}

} // namespace sonorelle::test
