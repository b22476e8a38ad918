// The discrete Fourier transform and the correlation by their definitions, in f64: slow, and plainly right.
#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <vector>

namespace sonorelle::test {

// How far a transform in f32 of a signal of that norm may be from it: a rounding of each butterfly stage and
// of its factors, at worst all in one direction: 2^-24 each, and two or three a stage. Seen: less than a
// third of this.
inline double RoundingOfTransform(std::size_t size, double norm) {
    return 1.5e-7 * (1.0 + std::log2(static_cast<double>(size))) * norm;
}

// The transform of real signals of one length, one bin at a time.
class DirectDft {
public:
    explicit DirectDft(std::size_t size) : circle(size) {
        for (std::size_t i = 0; i < size; ++i) {
            circle[i] =
                std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(size));
        }
    }

    // sum over n of x[n] e^(-2 pi i k n / N)
    template<class Sample>
    std::complex<double> Bin(const std::vector<Sample>& x, std::size_t k) const {
        std::complex<double> sum = 0.0;
        for (std::size_t n = 0; n < circle.size(); ++n) {
            sum += static_cast<double>(x[n]) * circle[n * k % circle.size()];
        }
        return sum;
    }

    // Sample n of the real signal whose spectrum is `bins` (0 to N / 2; ends real), times N.
    double Sample(const std::vector<std::complex<double>>& bins, std::size_t n) const {
        const std::size_t half = circle.size() / 2;
        double sum = bins[0].real() + (n % 2 == 0 ? 1.0 : -1.0) * bins[half].real();
        for (std::size_t k = 1; k < half; ++k) {
            sum += 2.0 * (bins[k] * std::conj(circle[n * k % circle.size()])).real();
        }
        return sum;
    }

private:
    std::vector<std::complex<double>> circle;
};

// sum over n of x[n + lag] y[n], with zeros around both.
inline double DirectCorrelation(const float* x, std::int32_t lengthX, const float* y, std::int32_t lengthY,
                                std::int64_t lag) {
    double sum = 0.0;
    for (std::int32_t n = 0; n < lengthY; ++n) {
        const std::int64_t i = n + lag;
        if (i >= 0 && i < lengthX) sum += static_cast<double>(x[i]) * static_cast<double>(y[n]);
    }
    return sum;
}

// The Euclidean length, which the error of a transform is measured against.
template<class Sample>
double Norm(const std::vector<Sample>& x) {
    double sum = 0.0;
    for (const Sample value : x) sum += static_cast<double>(value) * static_cast<double>(value);
    return std::sqrt(sum);
}

} // namespace sonorelle::test
