#include "support/slow_psola.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <utility>

namespace sonorelle::test {

namespace {

constexpr int kGuard = 200000;  // output in front of index 0
constexpr int kLength = 400000; // and behind it
constexpr int kSincEntries = 768;
constexpr int kFraction = 128;

int Floor(float x) { return static_cast<int>(std::floor(x)); }
int Trunc(float x) { return static_cast<int>(x); }

double I0(double x) {
    double sum = 1;
    double term = 1;
    for (int n = 1; n < 200; ++n) {
        term *= (x / 2 / n) * (x / 2 / n);
        sum += term;
    }
    return sum;
}

double SincEntry(int i) {
    constexpr double kCutoff = 0.90234375;
    if (i >= kSincEntries) return 0;
    if (i == 0) return kCutoff;
    const double x = i / 256.0;
    const double side = i / 767.0;
    const double window = I0(9.0 * std::sqrt(1 - side * side)) / I0(9.0);
    return std::sin(x * kCutoff * std::numbers::pi) / (x * std::numbers::pi) * window;
}

// Weight of sample i of a rise of n samples.
double Rise(int i, int n) {
    const float step = n < 2 ? 32768.0F : 32767.0F / static_cast<float>(n - 1);
    const int entry = Trunc(static_cast<float>(i) * step + 0.5F);
    return std::pow(std::sin(entry * std::numbers::pi / 2 / 32767), 3);
}

} // namespace

SlowPsola::SlowPsola(std::vector<PitchMarkRecord> pitchMarks, int block, int channelCount)
    : blockSize(block), marks(std::move(pitchMarks)), channels(channelCount),
      input(static_cast<std::size_t>(channelCount)),
      output(static_cast<std::size_t>(channelCount), std::vector<double>(kGuard + kLength)) {
    for (int t = 0; t < kSincEntries * kFraction; ++t) {
        const double share = (t % kFraction) / static_cast<double>(kFraction);
        const double here = SincEntry(t / kFraction);
        // Behind the last entry the table is flat.
        const double next = t / kFraction == kSincEntries - 1 ? here : SincEntry(t / kFraction + 1);
        sincWeights.push_back(here + (next - here) * share);
    }
}

int SlowPsola::PositionOf(int mark) const {
    return mark >= 0 && mark < Count() ? marks[static_cast<std::size_t>(mark)].position : -1;
}

int SlowPsola::Distance(int mark) const {
    return mark >= 0 && mark + 1 < Count() ? PositionOf(mark + 1) - PositionOf(mark) : -1;
}

bool SlowPsola::Attack(int mark) const {
    return mark >= 0 && mark < Count() &&
           marks[static_cast<std::size_t>(mark)].transient > transientThreshold;
}

int SlowPsola::Nearest(int from, double position) const {
    if (Count() < 2 || from >= Count() - 1) return -1;
    const int at = static_cast<int>(position);
    int best = std::max(from, 0);
    for (int mark = best + 1; mark < Count(); ++mark) {
        if (std::abs(PositionOf(mark) - at) < std::abs(PositionOf(best) - at)) best = mark;
    }
    return best;
}

// From an attack to the next one, but no further than the end of the search; -1 when the marks end first.
int SlowPsola::Span(int mark) const {
    const int search = Trunc(static_cast<float>(transientSearch) * invPitchFactor);
    int end = mark;
    while (end < Count() && PositionOf(end) - PositionOf(mark) <= search) ++end;
    if (end == Count()) return -1;
    for (int next = mark + 1; next <= end; ++next) {
        if (Attack(next)) return PositionOf(next) - PositionOf(mark);
    }
    return PositionOf(end) - PositionOf(mark);
}

double SlowPsola::In(int channel, int index) const {
    const std::vector<float>& samples = input[static_cast<std::size_t>(channel)];
    if (index < 0 || index >= static_cast<int>(samples.size())) return 0;
    return static_cast<double>(samples[static_cast<std::size_t>(index)]);
}

double& SlowPsola::Out(int channel, int index) {
    return output[static_cast<std::size_t>(channel)].at(static_cast<std::size_t>(kGuard + index));
}

double SlowPsola::Between(int channel, int p, int fraction) const {
    constexpr int kLimit = kSincEntries * kFraction;
    double sum = 0;
    int k = 0;
    for (int t = (fraction * sincStep) >> 15; t < kLimit; t += sincStep, ++k)
        sum += sincWeights[static_cast<std::size_t>(t)] * In(channel, p - k);
    const int rest = (32768 - fraction) % 32768;
    int t = (rest * sincStep) >> 15;
    if (rest == 0) t += sincStep;
    for (k = 1; t < kLimit - kFraction; t += sincStep, ++k)
        sum += sincWeights[static_cast<std::size_t>(t)] * In(channel, p + k);
    return sum * static_cast<double>(resampleGain);
}

double SlowPsola::Read(int channel, int base, int i) const {
    const auto q = static_cast<std::int64_t>(i * static_cast<double>(pitchFactor) * 32768 + 0.5);
    return Between(channel, base + static_cast<int>(q / 32768), static_cast<int>(q % 32768));
}

int SlowPsola::SetPosition(int position) {
    const int mark = Nearest(0, position);
    markPos = 0;
    readPosition = position < 0 ? position : PositionOf(mark);
    inputEnd = position < 0 ? 0 : static_cast<int>(readPosition - outPeriod);
    for (auto& samples : input) samples.clear();
    inPeriod = prevMarkPos = prevMarkIndex = 0;
    markIndex = mark;
    inTransient = false;
    repeatCount = 1;
    return static_cast<int>(readPosition);
}

void SlowPsola::Reset() {
    for (auto& samples : input) samples.clear();
    inputEnd = outputEnd = outputMark = outPeriod = inPeriod = 0;
    prevMarkPos = markPos = markIndex = prevMarkIndex = 0;
    readPosition = 0;
    repeatCount = 1;
    inTransient = false;
    SetTimeFactor(1);
    SetPitchFactor(1);
}

void SlowPsola::SetPitchFactor(float factor) {
    pitchFactor = factor;
    invPitchFactor = 1 / factor;
    sincStep = Trunc(std::min(256 / factor, 256.0F) * 128 + 0.5F);
    readSpan = invPitchFactor > 1 ? invPitchFactor : 1;
    resampleGain = (invPitchFactor > 1 ? 1 : invPitchFactor) * 0.99F;
}

void SlowPsola::SetTimeFactor(float factor) {
    timeFactor = factor;
    invTimeFactor = 1 / factor;
    timeSpan = std::max(invTimeFactor, 1.0F);
}

void SlowPsola::SetFreeze(bool on) {
    if (!on) return SetTimeFactor(timeFactor);
    invTimeFactor = 0;
}

void SlowPsola::SetReadPosition(double position) {
    readPosition = static_cast<double>(static_cast<float>(outputEnd) * invTimeFactor) + position;
}

int SlowPsola::Process(const std::vector<std::vector<float>>& in, int count,
                       std::vector<std::vector<double>>& out) {
    for (std::size_t channel = 0; channel < input.size(); ++channel)
        input[channel].insert(input[channel].end(), in[channel].begin(), in[channel].begin() + count);
    inputEnd += count;
    if (input[0].empty()) {
        if (outputMark >= blockSize) HandOut(out);
        return 0;
    }
    while (outputMark < outPeriod * repeatCount * (transientHandling ? 1 : 0) + blockSize) {
        if (!NextGrain()) return -1;
    }
    const int fill = static_cast<int>(input[0].size());
    const int n = std::min(markPos - outPeriod * repeatCount - inputEnd + fill - 4096, fill);
    for (auto& samples : input) {
        if (n >= 1) samples.erase(samples.begin(), samples.begin() + n);
    }
    HandOut(out);
    return 0;
}

bool SlowPsola::NextGrain() {
    int mark = Nearest(prevMarkIndex, readPosition);
    if (mark < 0) return false;
    if (transientHandling && mark > prevMarkIndex + 1 && Attack(mark - 1)) --mark;
    int period = Distance(mark);
    if (mark == Count() - 1) period = Floor(static_cast<float>(outPeriod) * pitchFactor + 0.5F);
    const bool copies = !inTransient && transientHandling && Attack(mark);
    if (copies) period = Span(mark);
    if (period < 0) return false;
    markIndex = mark;
    markPos = PositionOf(mark);
    inPeriod = period;
    if (copies) {
        CopyAttack(period);
        prevMarkPos = markPos;
    } else if (Unity()) {
        UnityGrain();
    } else {
        ResampledGrain();
    }
    inTransient = copies;
    repeatCount = markIndex == prevMarkIndex ? repeatCount + 1 : 1;
    prevMarkIndex = markIndex;
    const float d = static_cast<float>(inPeriod) * invPitchFactor;
    outPeriod = Floor(d + 0.5F);
    readPosition += static_cast<double>(d * invTimeFactor);
    return true;
}

void SlowPsola::UnityGrain() {
    const int c = markPos + static_cast<int>(input[0].size()) - inputEnd;
    const float d = static_cast<float>(inPeriod) * invPitchFactor;
    int rise = outPeriod;
    if (pitchFactor < 1) rise = std::min(Trunc(static_cast<float>(outPeriod) * pitchFactor), outPeriod);
    const int fall = std::min(inPeriod, Trunc(d));
    outputMark = outputEnd - rise;
    for (int channel = 0; channel < channels; ++channel) {
        for (int i = 0; i < rise; ++i)
            Out(channel, outputMark + i) += Rise(i, rise) * In(channel, c - rise + i);
        for (int i = 0; i < fall; ++i) Out(channel, outputEnd + i) = (1 - Rise(i, fall)) * In(channel, c + i);
        for (int i = fall; i < Floor(d + 1.5F); ++i) Out(channel, outputEnd + i) = 0;
    }
    outputMark += rise;
    outputEnd = outputMark + Floor(d + 0.5F);
}

void SlowPsola::ResampledGrain() {
    const int c = markPos + static_cast<int>(input[0].size()) - inputEnd;
    const int b = c - Floor(static_cast<float>(outPeriod) * pitchFactor + 0.5F);
    const int length = Floor(static_cast<float>(inPeriod) * invPitchFactor + 0.5F);
    outputMark = outputEnd - outPeriod;
    for (int channel = 0; channel < channels; ++channel) {
        for (int i = 0; i < outPeriod; ++i) {
            double& sample = Out(channel, outputMark + i);
            const double w = Rise(i, outPeriod);
            sample = sample * (1 - w) + Read(channel, b, i) * w;
        }
        for (int i = 0; i < length; ++i) Out(channel, outputEnd + i) = Read(channel, c, i);
    }
    outputMark += outPeriod;
    outputEnd = outputMark + length;
}

void SlowPsola::CopyAttack(int span) {
    ++copiedAttacks;
    const bool unity = Unity();
    const int c = markPos + static_cast<int>(input[0].size()) - inputEnd;
    const int lead = std::min(outPeriod * repeatCount, (markPos - prevMarkPos) / 2);
    const int fade = lead / 16;
    const int b = c - lead;
    const int rest = lead - fade + span;
    const int length = unity ? rest : Trunc(static_cast<float>(rest) * invPitchFactor);
    const int from = b + (unity ? fade : Trunc(static_cast<float>(fade) * pitchFactor));
    outputMark = outputEnd - lead;
    for (int channel = 0; channel < channels; ++channel) {
        for (int i = 0; i < fade; ++i) {
            double& sample = Out(channel, outputMark + i);
            const double w = Rise(i, fade);
            sample = sample * (1 - w) + (unity ? In(channel, b + i) : Read(channel, b, i)) * w;
        }
        for (int i = 0; i < length; ++i)
            Out(channel, outputMark + fade + i) = unity ? In(channel, from + i) : Read(channel, from, i);
    }
    outputEnd = outputMark + fade + length;
    outputMark = outputEnd - (unity ? lead : Trunc(static_cast<float>(lead) * invPitchFactor));
}

void SlowPsola::HandOut(std::vector<std::vector<double>>& out) {
    for (int channel = 0; channel < channels; ++channel) {
        for (int i = 0; i < blockSize; ++i)
            out[static_cast<std::size_t>(channel)][static_cast<std::size_t>(i)] = Out(channel, i);
        for (int i = 0; i < outputEnd - blockSize; ++i) Out(channel, i) = Out(channel, i + blockSize);
    }
    outputEnd -= blockSize;
    outputMark -= blockSize;
}

int SlowPsola::CalcRequiredInput() const {
    if (marks.empty()) return -1;
    int spacing = outPeriod, centre = outputMark, end = outputEnd, repeats = repeatCount;
    int last = prevMarkIndex, lastAttack = prevMarkPos, most = 0;
    bool copied = inTransient;
    double at = readPosition;
    while (centre < spacing * repeats * (transientHandling ? 1 : 0) + blockSize) {
        int mark = Nearest(last, at);
        if (mark < 0) return -1;
        if (transientHandling && mark > last + 1 && Attack(mark - 1)) --mark;
        if (mark == last && Attack(mark)) ++mark;
        if (Distance(mark) < 0) return -1;
        const bool copies = transientHandling && !copied && Attack(mark);
        const int period = copies ? Span(mark) : Distance(mark);
        if (period < 0) return -1;
        most = std::max(most, PositionOf(mark) + Trunc(timeSpan * readSpan * static_cast<float>(period)) -
                                  inputEnd);
        const float d = static_cast<float>(period) * invPitchFactor;
        const int next = std::max(Floor(d + 0.5F), 2);
        if (copies) {
            const int lead = std::min(spacing * repeats, (PositionOf(mark) - lastAttack) / 2);
            const int rest = lead - lead / 16 + period;
            end += lead / 16 - lead;
            end += Unity() ? rest : Trunc(static_cast<float>(rest) * invPitchFactor);
            centre = end - (Unity() ? lead : Trunc(static_cast<float>(lead) * invPitchFactor));
            lastAttack = PositionOf(mark);
        } else {
            centre = end;
            end += next;
        }
        copied = copies;
        repeats = mark == last ? repeats + 1 : 1;
        last = mark;
        spacing = next;
        at += static_cast<double>(d * invTimeFactor);
    }
    return most;
}

} // namespace sonorelle::test
