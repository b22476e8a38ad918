// Where in its input a resampler stands: the place of the next output, how far the place moves from one
// output to the next, and how many outputs a stretch of input allows. Knows no samples.
//
// The place is a whole number of frames and a fraction in [0, 1). The fraction advances by the fractional
// part of inputRate/outputRate in f64, and whole frames are carried over exactly: the sequence of places
// depends on nothing but the ratio, and its error after an hour of output at 11025 Hz is below 1/100000
// frame.
//
// One thread; never allocates.

#pragma once

#include <cstdint>

namespace sonorelle {

class ResampleClock {
public:
    // Back to place 0, with no ratio.
    void Reset() { *this = ResampleClock(); }

    // True when the ratio became another one. Rates are positive and at most 1000 times apart.
    bool SetRates(std::int32_t inputRate, std::int32_t outputRate);

    double Ratio() const { return ratio; }     // outputRate / inputRate
    double Inverse() const { return inverse; } // input frames from one output to the next

    // How far one input frame is in the filter table, in units of 1/128 entry: 32768 at equal rates and for
    // upsampling, less for downsampling, where the filter is stretched.
    std::int32_t TableStep() const { return step; }

    // The number of outputs that `usableFrames` of input allow, counted in hundredths of a frame: output i is
    // made while its distance i/ratio from the next place, rounded to hundredths, lies within the usable
    // input. 0 for no usable input. CountOutputs(16) = 4 at 44100 to 11025 Hz.
    std::int64_t CountOutputs(std::int64_t usableFrames) const;

    std::int64_t whole = 0; // the place of the next output: frames ...
    double fraction = 0.0;  // ... and fraction

    void Advance() {
        whole += wholeAdvance;
        fraction += fractionAdvance;
        if (fraction >= 1.0) {
            fraction -= 1.0;
            ++whole;
        }
    }

    // The fraction in 1/32768 frame, cut off: 0 to 32767.
    std::int32_t Fraction15() const { return static_cast<std::int32_t>(fraction * 32768.0); }

private:
    std::int32_t inputRate = 0;
    std::int32_t outputRate = 0;
    std::int32_t step = 0;
    double ratio = 0.0;
    double inverse = 0.0;
    std::int64_t wholeAdvance = 0;
    double fractionAdvance = 0.0;
};

} // namespace sonorelle
