#include "analysis/pt_analysis.h"

#include "dsp/fft.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sonorelle {

namespace {

constexpr float kFirstExpectation = 440.0F;      // Hz, of a new tracker
constexpr float kExpectationAfterReset = 220.0F; // Hz

constexpr float kVoicingThreshold = 5.0F; // dB of comb salience for pitches from 160 Hz on ...
constexpr float kLowVoicingThreshold =
    3.5F; // ... and below, where the bins of a comb lie closer and it stands out less
constexpr float kLowVoiceLimit = 160.0F; // Hz

constexpr float kQuietestLevel = 1e-24F; // what a sample counts at least in the level
constexpr float kQuietestSample =
    1e-15F; // samples below are left out of the spectrum: they would turn denormal
constexpr float kQuietestPeak = 1e-25F;         // the spectrum is never divided by less
constexpr float kSilentPower = 1e-7F;           // rms^2 at or below: no salience is measured
constexpr float kNoSalience = 1e-24F;           // of bin 0
constexpr float kDecibelsPerNeper = 4.3429446F; // 10 / ln 10

// Limits of the search, in Hz; 11025 and 8192 are the rate and the size for which they were set.
constexpr double kSetRate = 11025.0;
constexpr double kSetSize = 8192.0;
constexpr double kLowestHertz = 25.0;       // bins below are cleared
constexpr double kPeaksOnlyHertz = 200.0;   // below, only neighbourhoods of peaks are kept
constexpr double kHighestSumHertz = 4000.0; // of the harmonic sum
constexpr double kMinSumBin = 44.0;
constexpr double kStartBin = 28.0;
constexpr std::int32_t kLowestPeakBin = 6;
constexpr std::int32_t kPeakReach = 4; // bins kept on either side of a peak

constexpr std::int32_t kProductHarmonics = 5;
constexpr float kProductFloor = 0.05F; // a missing harmonic lowers the product, and does not kill it
constexpr std::int32_t kSumHarmonics = 9;

std::int32_t Truncate(double value) { return static_cast<std::int32_t>(value); }

} // namespace

CPTAnalysis::CPTAnalysis() = default;
CPTAnalysis::~CPTAnalysis() = default;

std::int32_t CPTAnalysis::Init(std::int32_t rate, std::int32_t size, std::int32_t length) {
    if (rate < 1 || size < 1024 || length < 2 || length > size) return kBadArgument;
    sampleRate = rate;
    fftSize = size;
    windowLength = length;
    minSumBin = Truncate(size * kMinSumBin / kSetSize);
    startBin = Truncate(size * kStartBin / kSetSize);
    threshold = kVoicingThreshold;
    const auto count = static_cast<std::size_t>(size);
    if (!window.Allocate(static_cast<std::size_t>(length)) || !spectrum.Allocate(count) ||
        !product.Allocate(count / 2) || !peaks.Allocate(count)) {
        return kOutOfMemory;
    }
    for (std::int32_t i = 0; i < length; ++i) {
        const double phase = 2.0 * std::numbers::pi * i / (length - 1);
        window.Data()[i] = static_cast<float>((1.0 - std::cos(phase)) / 2.0);
    }
    BuildSumTable();
    ExpectPitch(kFirstExpectation);
    return CreateFFT(fft, size, kNoWindow);
}

// The bins that the harmonic sum of each bin is reduced by, and how many harmonics it counts: nine, or as
// many as lie below the end of the array.
void CPTAnalysis::BuildSumTable() {
    sumEndBin = Truncate(fftSize * kHighestSumHertz / kSetRate);
    sumTable.resize(static_cast<std::size_t>(sumEndBin));
    for (std::int32_t b = startBin; b < sumEndBin; ++b) {
        const std::int32_t harmonics = std::min(kSumHarmonics, (fftSize - 1) / b);
        sumTable[static_cast<std::size_t>(b)] = {Truncate(b * 0.5), Truncate(b * 0.6666),
                                                 Truncate(b * 0.3333), static_cast<float>(harmonics)};
    }
}

void CPTAnalysis::ExpectPitch(float hertz) {
    history.fill(hertz);
    older = hertz;
    last = hertz;
}

void CPTAnalysis::Reset() {
    ExpectPitch(kExpectationAfterReset);
    rms = 0;
    previousRms = 0;
    rise = 0;
    hpsBin = 0;
    sumBin = 0;
    useSumBin = false;
}

float CPTAnalysis::Frequency(std::int32_t bin) const {
    return static_cast<float>(bin) * static_cast<float>(sampleRate) / static_cast<float>(fftSize);
}

void CPTAnalysis::Process(const float* frame, PitchTrackResult& result) {
    MeasureLevel(frame);
    FormSpectrum(frame);
    ReduceToPeaks();
    FormProduct();
    FormSum();

    std::int32_t bin = CorrectByContinuity(CorrectOctave());
    const float salience = MeasureSalience(bin);
    const float frequency = Frequency(bin);
    const float previous = result.pitch;
    const float needed = frequency < kLowVoiceLimit ? kLowVoicingThreshold : threshold;
    if (!(salience >= needed)) {
        // Far from the frame before, an unvoiced frame's pitch means nothing: it falls back on an earlier
        // voiced one.
        if (std::fabs(previous - frequency) > 0.2F * previous) {
            bin = Truncate(static_cast<double>(fftSize) * static_cast<double>(history[5]) / sampleRate + 0.5);
        }
        result.pitch = Interpolate(bin);
        result.salience = 0;
    } else {
        result.pitch = Interpolate(bin);
        result.salience = salience;
        std::shift_right(history.begin(), history.end(), 1);
        history[0] = older;
        older = previous;
    }
    last = previous;
    result.rms = rms;
    result.rise = rise;
    result.change = (last - result.pitch) / (result.pitch + last + 1.0F);
}

// A half-wave measure, to which the thresholds are set: the test is on the signed sample, so that every
// negative one counts as nothing. "Mended" to a true rms, quiet breaths would count as loud enough to have a
// salience.
void CPTAnalysis::MeasureLevel(const float* frame) {
    float sum = 0;
    for (std::int32_t i = 0; i < windowLength; ++i) {
        const float sample = frame[i] > kQuietestLevel ? frame[i] : kQuietestLevel;
        sum += sample * sample;
    }
    rms = std::sqrt(sum / static_cast<float>(windowLength));
    rise = (rms - previousRms) / (rms + 1e-32F);
    previousRms = rms;
}

// The magnitude spectrum, normalised to a largest value of 1.
void CPTAnalysis::FormSpectrum(const float* frame) {
    float* bins = spectrum.Data();
    const float* shape = window.Data();
    for (std::int32_t i = 0; i < windowLength; ++i) {
        bins[i] = std::fabs(frame[i]) >= kQuietestSample ? frame[i] * shape[i] : 0.0F;
    }
    std::fill(bins + windowLength, bins + fftSize, 0.0F);
    fft->Forward(bins);
    fft->Magnitude(bins);

    const std::int32_t half = fftSize / 2;
    const float largest = std::max(kQuietestPeak, *std::max_element(bins, bins + half));
    const float scale = 1.0F / largest;
    for (std::int32_t k = 0; k < half; ++k) bins[k] *= scale;
    std::fill(bins + half, bins + fftSize, 0.0F);
    std::fill(bins, bins + Truncate(fftSize * kLowestHertz / kSetRate), 0.0F);
}

void CPTAnalysis::ReduceToPeaks() {
    const float* bins = spectrum.Data();
    float* reduced = peaks.Data();
    const std::int32_t half = fftSize / 2;
    const std::int32_t low = std::max(kLowestPeakBin, Truncate(fftSize * kLowestHertz / kSetRate));
    const std::int32_t high = Truncate(fftSize * kPeaksOnlyHertz / kSetRate);
    std::fill(reduced, reduced + half, 0.0F);
    std::fill(reduced, reduced + low, kQuietestPeak);
    for (std::int32_t k = low; k < high; ++k) {
        if (bins[k] > bins[k - 1] && bins[k + 1] <= bins[k]) {
            std::copy(bins + k - kPeakReach, bins + k + kPeakReach + 1, reduced + k - kPeakReach);
        }
    }
    std::copy(bins + high - kPeakReach, bins + half, reduced + high - kPeakReach);
}

void CPTAnalysis::FormProduct() {
    const float* reduced = peaks.Data();
    float* values = product.Data();
    const std::int32_t half = fftSize / 2;
    std::copy(reduced, reduced + half, values);
    for (std::int32_t harmonic = 2; harmonic <= kProductHarmonics; ++harmonic) {
        const auto divisor = static_cast<float>(harmonic);
        const std::int32_t reach = half / harmonic;
        for (std::int32_t i = 0; i < reach; ++i) {
            values[i] *= (reduced[i * harmonic] + kProductFloor) / divisor;
        }
        const float missing = kProductFloor / divisor;
        for (std::int32_t i = reach; i < half; ++i) values[i] *= missing;
    }
    const float* largest = std::max_element(values, values + half);
    hpsBin = *largest > 0 ? static_cast<std::int32_t>(largest - values) : 0;
}

void CPTAnalysis::FormSum() {
    const float* bins = spectrum.Data();
    float* sums = peaks.Data();
    const std::int32_t half = fftSize / 2;
    std::fill(sums, sums + half, 0.0F);
    // Harmonics in the upper half of the array are zeros: they count in the divisor, and are not read.
    for (std::int32_t h = 1; h <= kSumHarmonics; ++h) {
        const float weight = 31.0F / (30.0F + static_cast<float>(h));
        const std::int32_t end = std::min(sumEndBin, (half - 1) / h + 1);
        for (std::int32_t b = startBin; b < end; ++b) sums[b] += bins[h * b] * weight;
    }
    const SumBin* sumBins = sumTable.data();
    for (std::int32_t b = startBin; b < sumEndBin; ++b) {
        const SumBin& entry = sumBins[b];
        const float value =
            sums[b] - 0.25F * bins[entry.half] - 0.1F * bins[entry.twoThirds] - 0.1F * bins[entry.third];
        sums[b] = value / entry.harmonics;
    }
    const float* largest = std::max_element(sums, sums + half);
    sumBin = *largest > 0 ? static_cast<std::int32_t>(largest - sums) : 0;
}

// The product likes to land on a harmonic. When it lies well above the last pitches, and the sum proposes
// about a half or a third of it, the sum is believed, and goes on being asked in the next frame.
std::int32_t CPTAnalysis::CorrectOctave() {
    const bool jumped = (last + history[0]) * 0.75F < Frequency(hpsBin);
    const bool asked = jumped || useSumBin;
    useSumBin = false;
    if (!asked || sumBin <= minSumBin) return hpsBin;
    const float tolerance = 0.3F * static_cast<float>(hpsBin);
    for (const std::int32_t multiple : {2, 3}) {
        if (static_cast<float>(std::abs(hpsBin - multiple * sumBin)) <= tolerance) {
            useSumBin = true;
            return sumBin;
        }
    }
    return hpsBin;
}

// A pitch almost an octave or more above the last one gives way to a peak near the last one, if there is one
// of at least a sixteenth of its height.
std::int32_t CPTAnalysis::CorrectByContinuity(std::int32_t bin) const {
    constexpr float kNearlyAnOctave = 1.8F;
    constexpr float kLowestTrusted = 80.0F; // Hz
    constexpr float kPeakShare = 0.0625F;
    if (!(kNearlyAnOctave * last < Frequency(bin) && last > kLowestTrusted)) return bin;
    const float* bins = spectrum.Data();
    const std::int32_t expected =
        Truncate(static_cast<double>(last) * fftSize / static_cast<double>(sampleRate) + 0.5);
    const std::int32_t reach = std::clamp(expected / 2, 2, 16);
    for (std::int32_t d = -reach; d < reach; ++d) {
        const std::int32_t c = std::clamp(expected + d, 2, fftSize - 2);
        if (bins[c] > bins[c - 1] && bins[c] > bins[c + 1] && bins[c] > kPeakShare * bins[bin]) return c;
    }
    return bin;
}

// The mean of the harmonics below a quarter of the rate over the mean of the spectrum from the first one on.
float CPTAnalysis::MeasureSalience(std::int32_t bin) const {
    const float* bins = spectrum.Data();
    const std::int32_t half = fftSize / 2;
    float value = kNoSalience;
    if (bin >= 1) {
        float mean = 0;
        for (std::int32_t k = bin; k < half; ++k) mean += bins[k];
        mean /= static_cast<float>(half - bin);
        value = 0;
        std::int32_t end = bin;
        for (; end < fftSize / 4; end += bin) value += bins[end];
        if (!(rms * rms > kSilentPower)) {
            value = 1.0F;
        } else if (end == bin) {
            value = value / mean;
        } else {
            const std::int32_t others = end / bin - 1; // harmonics behind the first
            value = value / (static_cast<float>(others) * mean);
        }
    }
    return std::log(value) * kDecibelsPerNeper;
}

// The highest point of a parabola through three bins, on a grid of thirtieths of a bin.
float CPTAnalysis::Interpolate(std::int32_t bin) const {
    constexpr std::int32_t kSteps = 30;
    const std::int32_t centre = std::clamp(bin, 1, fftSize - 2);
    const float* bins = spectrum.Data();
    const auto y0 = static_cast<double>(bins[centre - 1]);
    const auto y1 = static_cast<double>(bins[centre]);
    const auto y2 = static_cast<double>(bins[centre + 1]);
    const double slope = (y1 - y0) / kSteps;
    const double bend = ((y2 - y0) - 2 * kSteps * slope) / (2.0 * kSteps * kSteps);
    double previous = -1e-25;
    std::int32_t highest = 0;
    for (std::int32_t t = 0; t <= 2 * kSteps; ++t) {
        const double value = ((t - kSteps) * bend + slope) * t + y0;
        if (value <= previous) {
            highest = t - 1;
            break;
        }
        previous = value;
    }
    const double place = highest / static_cast<double>(kSteps) + centre - 1;
    return static_cast<float>(place * sampleRate / fftSize);
}

} // namespace sonorelle
