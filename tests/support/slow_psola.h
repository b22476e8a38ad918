// Pitch-synchronous overlap-add, written a second time: sample by sample in double precision, weights
// straight from their formulas, history erased from the front. The oracle for CPSOLASynthesis. It knows no
// limits: feed it what an ordinary voice would bring.
#pragma once

#include "analysis/records.h"

#include <cstdint>
#include <vector>

namespace sonorelle::test {

class SlowPsola {
public:
    SlowPsola(std::vector<PitchMarkRecord> pitchMarks, int block, int channelCount);

    int SetPosition(int position);
    void Reset();
    // `in` and `out`: a vector a channel; `out` has room for a block.
    int Process(const std::vector<std::vector<float>>& in, int count, std::vector<std::vector<double>>& out);
    int CalcRequiredInput() const;
    void SetPitchFactor(float factor);
    void SetTimeFactor(float factor);
    void SetFreeze(bool on);
    void SetReadPosition(double position);

    bool resampleGrains = true;
    bool transientHandling = false;
    float transientThreshold = 0.7F;
    int transientSearch = 1024;
    int blockSize;

    double readPosition = 0;
    int inputEnd = 0;
    int outputMark = 0;
    int repeatCount = 1;
    int copiedAttacks = 0; // how often an attack was copied

private:
    int Count() const { return static_cast<int>(marks.size()); }
    int PositionOf(int mark) const;
    int Distance(int mark) const; // -1 for the last
    bool Attack(int mark) const;
    int Nearest(int from, double position) const;
    int Span(int mark) const;
    bool Unity() const { return !resampleGrains || pitchFactor == 1.0F; }

    double In(int channel, int index) const;
    double& Out(int channel, int index);
    double Read(int channel, int base, int i) const;
    double Between(int channel, int p, int fraction) const;
    bool NextGrain();
    void UnityGrain();
    void ResampledGrain();
    void CopyAttack(int span);
    void HandOut(std::vector<std::vector<double>>& out);

    std::vector<PitchMarkRecord> marks;
    int channels;
    std::vector<std::vector<float>> input;
    std::vector<std::vector<double>> output;
    std::vector<double> sincWeights; // at every 1/128 of an entry

    float timeFactor = 1, invTimeFactor = 1, pitchFactor = 1, invPitchFactor = 1;
    float readSpan = 1, timeSpan = 1, resampleGain = 1;
    int sincStep = 32768;
    int outputEnd = 0, outPeriod = 0, inPeriod = 0;
    int prevMarkPos = 0, markPos = 0, markIndex = 0, prevMarkIndex = 0;
    bool inTransient = false;
};

} // namespace sonorelle::test
