#include "dsp/kaiser_sinc.h"

#include <cmath>
#include <numbers>

namespace sonorelle {

double BesselI0(double argument) {
    // Terms below this part of the sum no longer change its f64 value.
    constexpr double kSmallestTerm = 1e-21;
    const double half = argument / 2.0;
    double sum = 1.0;
    double term = 1.0;
    for (int n = 1; term >= kSmallestTerm * sum; ++n) {
        const double factor = half / n;
        term *= factor * factor;
        sum += term;
    }
    return sum;
}

double KaiserSinc(std::int32_t index, std::int32_t tableSize, double rolloff, double beta) {
    if (index == 0) return rolloff;
    const double u = std::numbers::pi * index / kSamplesPerCrossing;
    const double v = static_cast<double>(index) / (tableSize - 1);
    const double window = BesselI0(beta * std::sqrt(1.0 - v * v)) / BesselI0(beta);
    return std::sin(u * rolloff) / u * window;
}

} // namespace sonorelle
