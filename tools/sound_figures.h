// What is measured of one sound that the engine made of another, and of many together.
#pragma once

#include "praat_judge.h"
#include "sound_material.h"

#include "support/sound_measures.h"

#include <array>
#include <cstddef>
#include <functional>
#include <vector>

namespace sonorelle::tools {

using Values = std::vector<double>;

// One value a frame, note or sound; pooled by adding up.
struct SoundFigures {
    Values pitchErrorsCents;                 // a frame in vowels; signed
    std::size_t pitchFrames = 0;             // in which the judge hears the source's pitch
    std::size_t unheardFrames = 0;           // ... but none of the output
    std::array<Values, 3> formantsPercent{}; // a vowel; signed
    Values envelopeDecibels;                 // a sound
    Values harmonicityLossDecibels;          // a frame
    Values stepRatios;                       // a sound: largest step over the source's, at equal level
    Values localStepRatios;                  // a sound: the worst step over the source's largest nearby
    Values onsetsMilliseconds;               // an onset; later is positive
    Values levelsDecibels;                   // a vowel
    Values hissLevelsDecibels;               // an unvoiced consonant
    Values hissPeriodicity;                  // ... normalised correlation, 0 to 1
    Values hissPeriodicityBefore;            // ... of the source
    std::size_t hissFrames = 0;              // the judge's, in unvoiced consonants
    std::size_t voicedHissFrames = 0;        // ... that the judge hears a pitch in

    SoundFigures& operator+=(const SoundFigures& other);
};

// How true the unison is; one value a vowel.
struct UnisonFigures {
    // Periods of 128 samples and more (345 Hz at 44.1 kHz): signal to error where it lies, and where the
    // vowel as a whole was moved to.
    Values lowDecibels;
    Values lowPlacedDecibels;
    Values lowLagsMilliseconds;
    // Shorter periods: where it lies, and after local alignment.
    Values highDecibels;
    Values highAlignedDecibels;

    UnisonFigures& operator+=(const UnisonFigures& other);
};

// A sound and what the judge heard of it.
struct JudgedSound {
    test::Samples samples;
    const HeardSound* heard = nullptr;
};

// Pitch that the output ought to have at a time, in Hz; NaN where nobody knows.
using TargetPitch = std::function<double(double seconds)>;

struct Comparison {
    JudgedSound source;
    JudgedSound output;
    double sampleRate = 44100.0;
    double ratio = 1.0; // of the output's pitch to the source's
    const Places* places = nullptr;
    TargetPitch target;
};

SoundFigures Compare(const Comparison& comparison);

UnisonFigures CompareUnison(const Comparison& comparison);

// Medians of the magnitudes, or of the values themselves, and the 95th percentile of the magnitudes.
double Median(const Values& values);
double MedianMagnitude(const Values& values);
double HighMagnitude(const Values& values);
double Largest(const Values& values);
double Smallest(const Values& values);
double Furthest(const Values& values); // from 0, with its sign

} // namespace sonorelle::tools
