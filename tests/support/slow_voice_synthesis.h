// One voice of the arrangement the slow way: what CvirelaineSynthesis does, written down step by step.
//
// Nothing is ever thrown away. Input lies at its position in the recording and output at its position since
// the start, both without end and zero wherever nothing was written, so that no buffer, guard or move of
// samples can hide a mistake. Counters and ratios keep their sizes (f32, f64, whole numbers), since they
// decide where grains lie; samples and read positions within a grain are f64.
#pragma once

#include "analysis/records.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace sonorelle::test {

// The questions that a voice asks its marks, each a plain walk.
class SlowMarks {
public:
    explicit SlowMarks(std::vector<PitchMarkRecord> records) : marks(std::move(records)) {}

    int Count() const { return static_cast<int>(marks.size()); }
    int Position(int index) const {
        return Has(index) ? marks[static_cast<std::size_t>(index)].position : -1;
    }
    int Distance(int index) const {
        return Has(index + 1) && Has(index) ? Position(index + 1) - Position(index) : -1;
    }
    int Period(int index) const; // as stored, whole samples
    float Voicing(int index) const {
        return Has(index) ? marks[static_cast<std::size_t>(index)].voicing : -1.0F;
    }
    int FindNearest(int from, int position) const;

private:
    bool Has(int index) const { return index >= 0 && index < Count(); }
    std::vector<PitchMarkRecord> marks;
};

// A line of samples from anywhere to anywhere, zero until set.
class EndlessSamples {
public:
    double At(std::int64_t index) const {
        const std::int64_t i = index - first;
        return i < 0 || i >= Size() ? 0.0 : samples[static_cast<std::size_t>(i)];
    }
    void Set(std::int64_t index, double value);
    void Forget() { samples.clear(); }

private:
    std::int64_t Size() const { return static_cast<std::int64_t>(samples.size()); }
    std::vector<double> samples;
    std::int64_t first = 0; // index of the first one
};

class SlowVoiceSynthesis {
public:
    static constexpr int kFailed = -1;
    static constexpr std::int64_t kFadeIn = 1024;

    SlowVoiceSynthesis(const SlowMarks& pitchMarks, int channelCount);

    int SetPosition(int position);
    int GetRequiredInput(int samples);
    // `in` holds one list of samples a channel. 0 with `out` filled, or kFailed.
    int RenderBlock(const std::vector<std::vector<float>>& in, std::vector<std::vector<double>>& out,
                    float gain);

    void SetPitchAndFormant(float pitch, float formant);
    void SetTimeFactor(float factor);
    double GetReadPosition() const { return readPosition; }
    int GetCurrentPeriod() const; // -1 where the recording is not voiced

    void Restart();     // no output, no grain before
    void RestartFade(); // what comes next fades in, without a grain before
    void SwitchOn();    // no output, and what comes next fades in
    void PassBlock() { timeline += static_cast<double>(static_cast<float>(blockSize) * invTimeFactor); }

    // Plain settings and state, for whoever owns the voice.
    float timingAmount = 0;
    float timingRate = 0;
    double timeline = 0;
    bool grainsActive = true;
    int inputEnd = 0;

private:
    double HumanisedPosition() const;
    void Append(const std::vector<std::vector<float>>& in);
    int RenderGrains(float gain);
    void RenderGrain(int outLength, int inLength, int mark, float gain);
    double Interpolate(std::size_t channel, double position) const;
    void HandOut(std::vector<std::vector<double>>& out);
    void FadeIn(std::vector<std::vector<double>>& out);

    const SlowMarks& marks;
    std::vector<EndlessSamples> input;  // by position in the recording
    std::vector<EndlessSamples> output; // by samples since the start; outputStart is the next one handed out
    std::vector<float> fadeTable;
    std::int64_t outputStart = 0;
    std::int64_t outputEnd = 0;  // from outputStart
    std::int64_t outputMark = 0; // from outputStart

    float timeFactor = 1;
    float invTimeFactor = 1;
    float timeSpan = 1;
    float pitchFactor = 1;
    float invPitchFactor = 1;
    float formantRatio = 1;
    float grainLimit = 1;
    float readSpan = 1;
    double readPosition = 0;
    int inputFill = 0;
    int blockSize = 0;
    int outPeriod = 0;
    int markIndex = 0;
    int prevMarkIndex = 0;
    std::int64_t fadeInCount = 0;
};

} // namespace sonorelle::test
