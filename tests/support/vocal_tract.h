// The singer's throat and mouth: five formant resonators in cascade.
#pragma once

#include "support/synthetic_singer.h"

namespace sonorelle::test {

class VocalTract {
public:
    explicit VocalTract(double framesPerSecond) : sampleRate(framesPerSecond) {}

    // Each resonator has gain 1 at 0 Hz; one whose centre lies too near to half the sample rate is left out.
    void SetFormants(const Formants& formants);

    // In place. Once the sound has died away the state is cleared, so that a long rest does not crawl through
    // denormals.
    void Process(float* frames, std::size_t count);

private:
    struct Resonator {
        double a = 1.0, b = 0.0, c = 0.0; // y[n] = a x[n] + b y[n - 1] + c y[n - 2]
        double last = 0.0, beforeLast = 0.0;
    };
    double sampleRate;
    Resonator resonators[Formants::kCount];
};

} // namespace sonorelle::test
