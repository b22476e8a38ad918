#include "support/slow_voice_synthesis.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace sonorelle::test {

namespace {

constexpr int kFadeLength = 32768;

int WholeOf(double value) { return static_cast<int>(value); }

// Steps of the table for a fade over `count` samples.
float FadeStep(std::int64_t count) {
    return count < 2 ? static_cast<float>(kFadeLength)
                     : static_cast<float>(kFadeLength - 1) / static_cast<float>(count - 1);
}

} // namespace

int SlowMarks::Period(int index) const {
    return Has(index) ? static_cast<int>(marks[static_cast<std::size_t>(index)].period) : -1;
}

int SlowMarks::FindNearest(int from, int position) const {
    if (Count() < 2 || from >= Count() - 1) return -1;
    int best = std::max(from, 0);
    for (int i = best + 1; i < Count(); ++i) {
        if (std::abs(Position(i) - position) >= std::abs(Position(best) - position)) break;
        best = i;
    }
    return best;
}

void EndlessSamples::Set(std::int64_t index, double value) {
    if (samples.empty()) first = index;
    if (index < first) {
        samples.insert(samples.begin(), static_cast<std::size_t>(first - index), 0.0);
        first = index;
    }
    if (index - first >= Size()) samples.resize(static_cast<std::size_t>(index - first + 1));
    samples[static_cast<std::size_t>(index - first)] = value;
}

SlowVoiceSynthesis::SlowVoiceSynthesis(const SlowMarks& pitchMarks, int channelCount)
    : marks(pitchMarks), input(static_cast<std::size_t>(channelCount)),
      output(static_cast<std::size_t>(channelCount)) {
    for (int i = 0; i < kFadeLength; ++i)
        fadeTable.push_back(
            static_cast<float>(std::pow(std::sin(i * (std::numbers::pi / 2) / (kFadeLength - 1)), 3)));
}

int SlowVoiceSynthesis::SetPosition(int position) {
    const int mark = marks.FindNearest(0, position);
    if (position < 0) {
        inputEnd = 0;
        readPosition = position;
    } else {
        readPosition = marks.Position(mark);
        inputEnd = WholeOf(readPosition - outPeriod);
    }
    for (EndlessSamples& channel : input) channel.Forget();
    inputFill = 0;
    markIndex = mark;
    prevMarkIndex = 0;
    timeline = WholeOf(readPosition);
    return WholeOf(readPosition);
}

int SlowVoiceSynthesis::GetRequiredInput(int samples) {
    blockSize = samples;
    double step = static_cast<double>(outputEnd - outputMark);
    std::int64_t made = outputMark;
    double position = readPosition;
    int mark = prevMarkIndex;
    int result = 0;
    if (marks.Count() == 0) return kFailed;
    if (made > blockSize) return 0;
    while (true) {
        const int next = marks.FindNearest(mark, WholeOf(position));
        if (next < 0) return next;
        const int period = marks.Distance(next);
        if (period < 1) return kFailed;
        const float reach = static_cast<float>(period) * readSpan * timeSpan;
        result = std::max(result, marks.Position(next) + WholeOf(static_cast<double>(reach)) - inputEnd);
        made += WholeOf(step);
        mark = next;
        const float distance = static_cast<float>(period) * invPitchFactor;
        if (made > blockSize) return result;
        position += static_cast<double>(distance * invTimeFactor);
        step = std::max(std::floor(static_cast<double>(distance) + 0.5), 2.0);
    }
}

void SlowVoiceSynthesis::SetPitchAndFormant(float pitch, float formant) {
    formantRatio = formant;
    pitchFactor = pitch;
    invPitchFactor = 1.0F / pitch;
    const float invFormantRatio = 1.0F / formant;
    if (invFormantRatio > 1) {
        readSpan = invFormantRatio;
        grainLimit = formant;
    } else {
        readSpan = formant;
        grainLimit = 1;
    }
    if (invPitchFactor > 1) readSpan *= invPitchFactor;
}

void SlowVoiceSynthesis::SetTimeFactor(float factor) {
    timeFactor = factor;
    invTimeFactor = 1.0F / factor;
    timeSpan = std::max(invTimeFactor, 1.0F);
}

int SlowVoiceSynthesis::GetCurrentPeriod() const {
    const int mark = marks.FindNearest(markIndex - 1, WholeOf(readPosition));
    return marks.Voicing(mark) > 0 ? marks.Period(mark) : -1;
}

void SlowVoiceSynthesis::Restart() {
    outPeriod = 0;
    outputEnd = 0;
    outputMark = 0;
}

void SlowVoiceSynthesis::RestartFade() {
    outPeriod = 0;
    fadeInCount = 0;
}

void SlowVoiceSynthesis::SwitchOn() {
    for (EndlessSamples& channel : output) channel.Forget();
    fadeInCount = 0;
}

int SlowVoiceSynthesis::RenderBlock(const std::vector<std::vector<float>>& in,
                                    std::vector<std::vector<double>>& out, float gain) {
    Append(in);
    if (inputFill < 1) {
        if (outputMark >= blockSize) HandOut(out);
        return 0;
    }
    const double base = HumanisedPosition();
    if (RenderGrains(gain) != 0) return kFailed;
    readPosition = static_cast<double>(static_cast<float>(blockSize) * invTimeFactor) + base;
    HandOut(out);
    FadeIn(out);
    return 0;
}

void SlowVoiceSynthesis::Append(const std::vector<std::vector<float>>& in) {
    for (std::size_t c = 0; c < input.size(); ++c)
        for (std::size_t i = 0; i < in[c].size(); ++i)
            input[c].Set(inputEnd + static_cast<std::int64_t>(i), static_cast<double>(in[c][i]));
    inputFill += static_cast<int>(in[0].size());
    inputEnd += static_cast<int>(in[0].size());
}

double SlowVoiceSynthesis::HumanisedPosition() const {
    const double amount = static_cast<double>(timingAmount);
    const double phase = static_cast<double>(timingRate) * timeline / blockSize + amount * 0.25;
    const double u = std::fmod(phase, 2.0);
    const double triangle = std::fabs(u - 1) * 2 - 1;
    return std::max(timeline - (triangle + 0.6) * amount * 0.5, 0.0);
}

int SlowVoiceSynthesis::RenderGrains(float gain) {
    while (outputMark <= blockSize) {
        markIndex = marks.FindNearest(prevMarkIndex, WholeOf(readPosition));
        if (markIndex < 0) return kFailed;
        const int inPeriod = marks.Distance(markIndex);
        if (inPeriod < 1) return kFailed;
        RenderGrain(outPeriod, inPeriod, marks.Position(markIndex), gain);
        prevMarkIndex = markIndex;
        const float distance = static_cast<float>(inPeriod) * invPitchFactor;
        outPeriod = std::max(WholeOf(std::floor(static_cast<double>(distance) + 0.5)), 0);
        const double step = static_cast<double>(distance * invTimeFactor);
        readPosition += step;
        timeline += step;
    }
    return 0;
}

void SlowVoiceSynthesis::RenderGrain(int outLength, int inLength, int mark, float gain) {
    const auto length = static_cast<float>(outLength);
    const auto period = static_cast<float>(inLength);
    int rising = outLength;
    if (pitchFactor < grainLimit)
        rising =
            WholeOf(static_cast<double>(std::min(length * grainLimit, std::trunc(length * pitchFactor))));
    const int falling =
        WholeOf(static_cast<double>(std::min(std::trunc(period * invPitchFactor), period / grainLimit)));
    const int behind = WholeOf(std::floor(static_cast<double>(period * invPitchFactor) + 0.5));

    outputMark = outputEnd;
    outputEnd = outputMark + behind;
    if (!grainsActive) return;

    const auto ratio = static_cast<double>(formantRatio);
    const double begin = mark - rising * ratio;
    const std::int64_t centre = outputStart + outputMark;
    for (std::size_t c = 0; c < output.size(); ++c) {
        const auto weight = [this](int i, int count) {
            const float place = static_cast<float>(i) * FadeStep(count) + 0.5F;
            return static_cast<double>(fadeTable[static_cast<std::size_t>(place)]);
        };
        for (int i = 0; i < rising; ++i) {
            const std::int64_t at = centre - rising + i;
            const double sample = Interpolate(c, begin + i * ratio) * static_cast<double>(gain);
            output[c].Set(at, output[c].At(at) + sample * weight(i, rising));
        }
        for (int i = 0; i < falling; ++i) {
            const double sample = Interpolate(c, begin + (rising + i) * ratio) * static_cast<double>(gain);
            output[c].Set(centre + i, sample * (1 - weight(i, falling)));
        }
        for (int i = falling; i < behind; ++i) output[c].Set(centre + i, 0.0);
    }
}

double SlowVoiceSynthesis::Interpolate(std::size_t channel, double position) const {
    const double whole = std::floor(position);
    const double fraction = position - whole;
    const auto k = static_cast<std::int64_t>(whole);
    return fraction * input[channel].At(k + 1) + (1 - fraction) * input[channel].At(k);
}

void SlowVoiceSynthesis::HandOut(std::vector<std::vector<double>>& out) {
    for (std::size_t c = 0; c < output.size(); ++c) {
        out[c].clear();
        for (int i = 0; i < blockSize; ++i) out[c].push_back(output[c].At(outputStart + i));
    }
    outputStart += blockSize;
    outputEnd -= blockSize;
    outputMark -= blockSize;
}

void SlowVoiceSynthesis::FadeIn(std::vector<std::vector<double>>& out) {
    if (fadeInCount < kFadeIn) {
        for (std::vector<double>& channel : out)
            for (std::size_t i = 0; i < channel.size(); ++i) {
                const auto at = std::min(fadeInCount + static_cast<std::int64_t>(i), kFadeIn - 1);
                const float place = static_cast<float>(at) * FadeStep(kFadeIn) + 0.5F;
                channel[i] *= static_cast<double>(fadeTable[static_cast<std::size_t>(place)]);
            }
    }
    fadeInCount += blockSize;
}

} // namespace sonorelle::test
