// Pitch and voicing of one frame of signal, decided in the spectrum.
//
//   1. the frame's level;
//   2. a Hann-windowed, eight times zero-padded magnitude spectrum (bins of 1.3 Hz);
//   3. below 200 Hz only the neighbourhoods of spectral peaks are kept: the valleys there are wide, and a
//   product over
//      harmonics would find pitch in them;
//   4. a harmonic product over five harmonics and a harmonic sum over nine propose a bin each (after M. R.
//   Schroeder,
//      "Period Histogram and Product Spectrum", JASA 43, 1968; D. J. Hermes, "Measurement of pitch by
//      subharmonic summation", JASA 83, 1988); the sum is reduced by what lies at 1/2, 2/3 and 1/3 of the
//      bin, so that it does not prefer an octave or a twelfth above;
//   5. the earlier pitches correct octave errors of the product;
//   6. a comb over the harmonics against the mean of the spectrum gives the salience, which decides on
//   voicing;
//   7. a parabola through three bins refines the pitch.
//
// One thread. Construction allocates; processing does not.

#pragma once

#include "dsp/aligned_array.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle {

class CFFT;

// What the tracker finds in one frame.
struct PitchTrackResult {
    float pitch = 0;    // Hz; kept for unvoiced frames too
    float salience = 0; // dB; exactly 0 for an unvoiced frame
    float rms = 0;      // half-wave: negative samples count as nothing
    float rise = 0;     // (rms - previous rms) / rms
    float change = 0;   // (previous pitch - pitch) / (pitch + previous pitch + 1)
};

class CPTAnalysis {
public:
    CPTAnalysis();
    ~CPTAnalysis();

    // `rate` in Hz; `size`: FFT size, a power of two of at least 1024; `length`: samples in a frame, 2 to
    // `size`. 0, kBadArgument or kOutOfMemory.
    std::int32_t Init(std::int32_t rate, std::int32_t size, std::int32_t length);

    // `frame`: `length` samples. `result` holds the previous frame's result and takes this one's. A frame
    // with a sample that is not finite must not be given.
    void Process(const float* frame, PitchTrackResult& result);

    // Forgets all frames. The pitch expected next is then 220 Hz, while a new object expects 440: singing
    // that starts within 0.75 of the expectation is taken at its word.
    void Reset();

    float GetThreshold() const { return threshold; } // dB, above 160 Hz
    void SetThreshold(float decibels) { threshold = decibels; }

private:
    static constexpr std::int32_t kHistoryLength = 10;

    // What the harmonic sum of one bin needs.
    struct SumBin {
        std::int32_t half;
        std::int32_t twoThirds;
        std::int32_t third;
        float harmonics;
    };

    void BuildSumTable();
    void ExpectPitch(float hertz);
    void MeasureLevel(const float* frame);
    void FormSpectrum(const float* frame);
    void ReduceToPeaks();
    void FormProduct();
    void FormSum();
    std::int32_t CorrectOctave();
    std::int32_t CorrectByContinuity(std::int32_t bin) const;
    float MeasureSalience(std::int32_t bin) const; // dB
    float Interpolate(std::int32_t bin) const;     // Hz
    float Frequency(std::int32_t bin) const;       // Hz

    std::int32_t hpsBin = 0; // proposed by the harmonic product
    std::int32_t sumBin = 0; // proposed by the harmonic sum
    float rms = 0;
    float previousRms = 0;
    float rise = 0;
    std::int32_t sampleRate = 0;
    std::int32_t fftSize = 0;
    std::int32_t windowLength = 0;
    std::int32_t minSumBin = 0; // about 59 Hz
    std::int32_t startBin = 0;  // about 38 Hz
    std::int32_t sumEndBin = 0; // about 4000 Hz, excluded
    std::vector<SumBin> sumTable;
    AlignedArray window; // Hann
    AlignedArray spectrum;
    AlignedArray product;
    AlignedArray peaks; // the spectrum reduced around its peaks, then the harmonic sum
    std::array<float, kHistoryLength> history{}; // pitches of earlier voiced frames in Hz, newest first
    float older = 0;                             // pitch two frames back, Hz
    float last = 0;                              // last pitch, Hz
    float threshold = 0;
    bool useSumBin = false; // the last frame was corrected from the harmonic sum
    std::unique_ptr<CFFT> fft;
};

} // namespace sonorelle
