// The decision on one frame's pitch and voicing, written a second time in f64, step by step and with no
// thought of speed: the oracle for CPTAnalysis. It shares no code with it, the Fourier transform included.
#pragma once

#include "analysis/pt_analysis.h"

#include <array>
#include <vector>

namespace sonorelle::test {

class SlowPitchAnalysis {
public:
    SlowPitchAnalysis() { Expect(440.0); }
    void Reset() { Expect(220.0); }

    struct Result {
        double pitch = 0, salience = 0, rms = 0, rise = 0, change = 0;
    };
    // `frame`: 1024 samples at 11025 Hz. `result` holds the result of the frame before.
    void Process(const float* frame, Result& result);

    // How near the last frame came to being decided otherwise; 0 is a tie.
    struct Margins {
        double product = 1;  // of the largest products, relative
        double sum = 1;      // of the largest sums, relative
        double salience = 0; // dB between the salience and its threshold
    };
    const Margins& GetMargins() const { return margins; }
    double GetComb() const { return comb; } // dB; of an unvoiced frame too
    double GetBinHertz() const;             // where the comb stood

    // How often each part had a say, so that a test can tell that it met them all.
    struct Events {
        int bySum = 0, byContinuity = 0, aboveComb = 0, fallBacks = 0, voiced = 0, unvoiced = 0;
    };
    const Events& GetEvents() const { return events; }

private:
    void Expect(double hertz);
    void FormSpectrum(const float* frame);
    void ReduceToPeaks();
    void FormProduct();
    void FormSum();
    int CorrectedBin();
    double CombDecibels(int bin) const;
    double Interpolated(int bin) const;

    std::vector<double> spectrum, peaks, product;
    std::array<double, 10> history{};
    double older = 0, last = 0, rms = 0, previousRms = 0, comb = 0;
    int hpsBin = 0, sumBin = 0, decidedBin = 0;
    bool useSumBin = false;
    Margins margins;
    Events events;
};

// |X[k]| of 1024 samples with zeros behind them up to 8192, k = 0 to 4095.
std::vector<double> ZeroPaddedMagnitudes(const std::vector<double>& windowed);

} // namespace sonorelle::test
