#include "support/vocal_tract.h"

#include "support/portable_math.h"

#include <cmath>

namespace sonorelle::test {

namespace {

// Formants of sung vowels: centre frequencies and bandwidths in Hz, as commonly tabulated for the four
// voices.
constexpr Formants kFormants[4][5] = {
    {
        // bass
        {{600, 1040, 2250, 2450, 2750}, {60, 70, 110, 120, 130}}, // a
        {{400, 1620, 2400, 2800, 3100}, {40, 80, 100, 120, 120}}, // e
        {{250, 1750, 2600, 3050, 3340}, {60, 90, 100, 120, 120}}, // i
        {{400, 750, 2400, 2600, 2900}, {40, 80, 100, 120, 120}},  // o
        {{350, 600, 2400, 2675, 2950}, {40, 80, 100, 120, 120}},  // u
    },
    {
        // tenor
        {{650, 1080, 2650, 2900, 3250}, {80, 90, 120, 130, 140}},
        {{400, 1700, 2600, 3200, 3580}, {70, 80, 100, 120, 120}},
        {{290, 1870, 2800, 3250, 3540}, {40, 90, 100, 120, 120}},
        {{400, 800, 2600, 2800, 3000}, {70, 80, 100, 130, 135}},
        {{350, 600, 2700, 2900, 3300}, {40, 60, 100, 120, 120}},
    },
    {
        // alto
        {{800, 1150, 2800, 3500, 4950}, {80, 90, 120, 130, 140}},
        {{400, 1600, 2700, 3300, 4950}, {60, 80, 120, 150, 200}},
        {{350, 1700, 2700, 3700, 4950}, {50, 100, 120, 150, 200}},
        {{450, 800, 2830, 3500, 4950}, {70, 80, 100, 130, 135}},
        {{325, 700, 2530, 3500, 4950}, {50, 60, 170, 180, 200}},
    },
    {
        // soprano
        {{800, 1150, 2900, 3900, 4950}, {80, 90, 120, 130, 140}},
        {{350, 2000, 2800, 3600, 4950}, {60, 100, 120, 150, 200}},
        {{270, 2140, 2950, 3900, 4950}, {60, 90, 100, 120, 120}},
        {{450, 800, 2830, 3800, 4950}, {70, 80, 100, 130, 135}},
        {{325, 700, 2700, 3800, 4950}, {50, 60, 170, 180, 200}},
    },
};

} // namespace

const Formants& VowelFormants(VoiceRegister voice, Vowel vowel) {
    return kFormants[static_cast<int>(voice)][static_cast<int>(vowel)];
}

void VocalTract::SetFormants(const Formants& formants) {
    for (int i = 0; i < Formants::kCount; ++i) {
        Resonator& r = resonators[i];
        if (formants.centreHertz[i] > 0.47 * sampleRate) {
            r.a = 1.0;
            r.b = r.c = 0.0;
            continue;
        }
        const double radius = Exp(-kPi * formants.bandwidthHertz[i] / sampleRate);
        r.c = -radius * radius;
        r.b = 2.0 * radius * CosTurns(formants.centreHertz[i] / sampleRate);
        r.a = 1.0 - r.b - r.c;
    }
}

void VocalTract::Process(float* frames, std::size_t count) {
    constexpr double kDiedAway = 1e-30; // far below any sample format
    for (Resonator& resonator : resonators) {
        Resonator r = resonator;
        for (std::size_t n = 0; n < count; ++n) {
            const double y = r.a * static_cast<double>(frames[n]) + r.b * r.last + r.c * r.beforeLast;
            r.beforeLast = r.last;
            r.last = y;
            frames[n] = static_cast<float>(y);
        }
        if (std::abs(r.last) < kDiedAway && std::abs(r.beforeLast) < kDiedAway) r.last = r.beforeLast = 0.0;
        resonator = r;
    }
}

} // namespace sonorelle::test
