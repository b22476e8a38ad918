#include "support/slow_pitch_analysis.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <numbers>

namespace sonorelle::test {

namespace {

constexpr int kSize = 8192;
constexpr int kHalf = kSize / 2;
constexpr int kFrame = 1024;
constexpr double kRate = 11025.0;

using Complex = std::complex<double>;

// e^(-2 pi i k / kSize)
std::vector<Complex> MakeCircle() {
    std::vector<Complex> circle(kSize);
    for (std::size_t k = 0; k < circle.size(); ++k) {
        circle[k] = std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(k) / kSize);
    }
    return circle;
}

// The recursion of the textbook: transforms of the even and the odd samples, turned and added. Takes `n`
// samples, `stride` apart, and gives `n` bins in a row.
void Transform(const Complex* x, Complex* out, std::size_t n, std::size_t stride,
               const std::vector<Complex>& circle) {
    if (n == 1) {
        out[0] = x[0];
        return;
    }
    Transform(x, out, n / 2, 2 * stride, circle);
    Transform(x + stride, out + n / 2, n / 2, 2 * stride, circle);
    for (std::size_t k = 0; k < n / 2; ++k) {
        const Complex even = out[k];
        const Complex turned = circle[k * stride] * out[k + n / 2];
        out[k] = even + turned;
        out[k + n / 2] = even - turned;
    }
}

double HertzOf(int bin) { return bin * kRate / kSize; }

int Truncated(double value) { return static_cast<int>(value); }

std::size_t Place(int i) { return static_cast<std::size_t>(i); }

// The first index of the largest value, 0 if none is above 0.
int FirstLargest(const std::vector<double>& values) {
    int best = 0;
    double largest = 0.0;
    for (int i = 0; i < kHalf; ++i) {
        if (values[Place(i)] > largest) {
            largest = values[Place(i)];
            best = i;
        }
    }
    return best;
}

// Second largest by largest.
double Rivalry(const std::vector<double>& values, int best) {
    double second = 0.0;
    for (int i = 0; i < kHalf; ++i) {
        if (i != best) second = std::max(second, values[Place(i)]);
    }
    return values[Place(best)] > 0.0 ? 1.0 - second / values[Place(best)] : 0.0;
}

} // namespace

std::vector<double> ZeroPaddedMagnitudes(const std::vector<double>& windowed) {
    std::vector<Complex> padded(Place(kSize));
    std::copy(windowed.begin(), windowed.end(), padded.begin());
    static const std::vector<Complex> circle = MakeCircle();
    std::vector<Complex> transformed(padded.size());
    Transform(padded.data(), transformed.data(), padded.size(), 1, circle);
    std::vector<double> magnitudes(Place(kHalf));
    for (int k = 0; k < kHalf; ++k) magnitudes[Place(k)] = std::abs(transformed[Place(k)]);
    return magnitudes;
}

double SlowPitchAnalysis::GetBinHertz() const { return HertzOf(decidedBin); }

void SlowPitchAnalysis::Expect(double hertz) {
    history.fill(hertz);
    older = hertz;
    last = hertz;
    previousRms = 0.0;
    useSumBin = false;
}

void SlowPitchAnalysis::Process(const float* frame, Result& result) {
    double sum = 0.0;
    for (int i = 0; i < kFrame; ++i) {
        const auto s = static_cast<double>(frame[i]);
        sum += s > 1e-24 ? s * s : 1e-24;
    }
    rms = std::sqrt(sum / kFrame);
    const double rise = (rms - previousRms) / (rms + 1e-32);
    previousRms = rms;

    FormSpectrum(frame);
    ReduceToPeaks();
    FormProduct();
    FormSum();

    int bin = CorrectedBin();
    decidedBin = bin;
    comb = CombDecibels(bin);
    const double f = HertzOf(bin);
    const double needed = f < 160.0 ? 3.5 : 5.0;
    margins.salience = std::fabs(comb - needed);
    const double p = result.pitch;
    double hertz = 0.0;
    events.aboveComb += bin >= kSize / 4;
    ++(comb < needed ? events.unvoiced : events.voiced);
    if (comb < needed) {
        events.fallBacks += std::fabs(p - f) > 0.2 * p;
        if (std::fabs(p - f) > 0.2 * p) bin = Truncated(kSize * history[5] / kRate + 0.5);
        hertz = Interpolated(bin);
        result.salience = 0.0;
    } else {
        hertz = Interpolated(bin);
        for (std::size_t i = history.size() - 1; i > 0; --i) history[i] = history[i - 1];
        history[0] = older;
        older = p;
        result.salience = comb;
    }
    last = p;
    result.pitch = hertz;
    result.rms = rms;
    result.rise = rise;
    result.change = (last - hertz) / (hertz + last + 1.0);
}

void SlowPitchAnalysis::FormSpectrum(const float* frame) {
    std::vector<double> windowed(Place(kFrame));
    for (int i = 0; i < kFrame; ++i) {
        const auto s = static_cast<double>(frame[i]);
        const double hann = (1.0 - std::cos(2.0 * std::numbers::pi * i / (kFrame - 1))) / 2.0;
        windowed[Place(i)] = std::fabs(s) >= 1e-15 ? s * hann : 0.0;
    }
    spectrum = ZeroPaddedMagnitudes(windowed);
    const double largest = std::max(1e-25, *std::max_element(spectrum.begin(), spectrum.end()));
    for (double& value : spectrum) value /= largest;
    std::fill_n(spectrum.begin(), 18, 0.0);
    spectrum.resize(Place(kSize), 0.0);
}

void SlowPitchAnalysis::ReduceToPeaks() {
    constexpr int kLow = 18;
    constexpr int kHigh = 148;
    peaks.assign(Place(kSize), 0.0);
    std::fill_n(peaks.begin(), kLow, 1e-25);
    for (int k = kLow; k < kHigh; ++k) {
        const bool isPeak =
            spectrum[Place(k)] > spectrum[Place(k - 1)] && spectrum[Place(k + 1)] <= spectrum[Place(k)];
        for (int i = k - 4; isPeak && i <= k + 4; ++i) peaks[Place(i)] = spectrum[Place(i)];
    }
    for (int k = kHigh - 4; k < kHalf; ++k) peaks[Place(k)] = spectrum[Place(k)];
}

void SlowPitchAnalysis::FormProduct() {
    product.assign(peaks.begin(), peaks.begin() + kHalf);
    for (int h = 2; h <= 5; ++h) {
        for (int i = 0; i < kHalf; ++i) {
            const double harmonic = i < kHalf / h ? peaks[Place(i * h)] : 0.0;
            product[Place(i)] *= (harmonic + 0.05) / h;
        }
    }
    hpsBin = FirstLargest(product);
    margins.product = Rivalry(product, hpsBin);
}

void SlowPitchAnalysis::FormSum() {
    constexpr int kLowest = 28;
    constexpr int kBeyond = 2972;
    peaks.assign(Place(kSize), 0.0);
    int harmonics = 9;
    for (int b = kLowest; b < kBeyond; ++b) {
        harmonics = std::min(harmonics, (kSize - 1) / b);
        double v = 0.0;
        for (int h = 1; h <= harmonics; ++h) v += spectrum[Place(h * b)] * 31.0 / (30.0 + h);
        v -= 0.25 * spectrum[Place(Truncated(b * 0.5))];
        v -= 0.1 * spectrum[Place(Truncated(b * 0.6666))];
        v -= 0.1 * spectrum[Place(Truncated(b * 0.3333))];
        peaks[Place(b)] = v / harmonics;
    }
    sumBin = FirstLargest(peaks);
    margins.sum = Rivalry(peaks, sumBin);
}

int SlowPitchAnalysis::CorrectedBin() {
    constexpr int kLowestSumBin = 44;
    int bin = hpsBin;
    const bool high = (last + history[0]) * 0.75 < HertzOf(hpsBin);
    const bool before = useSumBin;
    useSumBin = false;
    if ((high || before) && sumBin > kLowestSumBin) {
        for (const int factor : {2, 3}) {
            if (std::abs(hpsBin - factor * sumBin) <= 0.3 * hpsBin) {
                useSumBin = true;
                bin = sumBin;
                ++events.bySum;
            }
        }
    }
    if (1.8 * last < HertzOf(bin) && last > 80.0) {
        const int expected = Truncated(last * kSize / kRate + 0.5);
        const int reach = std::clamp(expected / 2, 2, 16);
        for (int d = -reach; d <= reach - 1; ++d) {
            const int c = std::max(expected + d, 2);
            const double here = spectrum[Place(c)];
            if (here > spectrum[Place(c - 1)] && here > spectrum[Place(c + 1)] &&
                here > 0.0625 * spectrum[Place(bin)]) {
                ++events.byContinuity;
                return c;
            }
        }
    }
    return bin;
}

double SlowPitchAnalysis::CombDecibels(int bin) const {
    if (bin < 1) return std::log(1e-24) * 4.3429446;
    double mean = 0.0;
    for (int i = bin; i < kHalf; ++i) mean += spectrum[Place(i)];
    mean /= kHalf - bin;
    double sum = 0.0;
    int teeth = 0;
    for (int m = bin; m < kSize / 4; m += bin, ++teeth) sum += spectrum[Place(m)];
    if (!(rms * rms > 1e-7)) return 0.0;
    return std::log(teeth == 0 ? sum / mean : sum / (teeth * mean)) * 4.3429446;
}

double SlowPitchAnalysis::Interpolated(int bin) const {
    const int b = std::max(bin, 1);
    const double y0 = spectrum[Place(b - 1)];
    const double y1 = spectrum[Place(b)];
    const double y2 = spectrum[Place(b + 1)];
    const double s = (y1 - y0) / 30.0;
    double previous = -1e-25;
    int found = 0;
    for (int t = 0; t <= 60; ++t) {
        const double q = ((t - 30) * ((y2 - y0) - 60.0 * s) / 1800.0 + s) * t + y0;
        if (q <= previous) {
            found = t - 1;
            break;
        }
        previous = q;
    }
    return (found / 30.0 + b - 1) * kRate / kSize;
}

} // namespace sonorelle::test
