#include "support/slow_mark_finder.h"

#include "platform/result_codes.h"
#include "support/direct_dft.h"

#include <algorithm>
#include <cmath>

namespace sonorelle::test {

namespace {

// Column of the tables by sample rate.
int ColumnOf(float rate) {
    int column = 0;
    for (float limit = 32000.0F; column < 4 && rate >= limit; limit *= 2.0F) ++column;
    return column;
}

std::size_t Index(int i) { return static_cast<std::size_t>(i); }

float LargestMagnitude(const float* samples, int count) {
    float largest = 0.0F;
    for (int i = 0; i < count; ++i) largest = std::max(largest, std::fabs(samples[i]));
    return largest;
}

} // namespace

SlowMarkFinder::SlowMarkFinder(float rate, int channelCount, int blockSize, bool wantTracking)
    : sampleRate(rate), channels(channelCount), tracking(wantTracking && blockSize > 0) {
    const int column = ColumnOf(rate);
    constexpr int kFactor[] = {1, 1, 2, 4, 8};
    constexpr int kDefaultBlock[] = {256, 512, 1024, 2048, 4096};
    if (tracking && CreatePitchTrack(tracker, static_cast<std::int32_t>(rate), 1, 1) != kOk) tracking = false;
    maxLength = 4096 << column;
    if (blockSize > 0) {
        block = blockSize * kFactor[column];
        minPeriod = (tracking ? 16 : 64) << column;
    } else {
        block = kDefaultBlock[column];
        minPeriod = blockSize == 0 ? block : block / 4;
    }
    window = block;
    half = window / 2;
    quarter = window / 4;
    if (blockSize <= 0) {
        radius = block / 2;
    } else if (blockSize >= 1024) {
        radius = quarter;
    } else {
        radius = blockSize < 512 ? quarter / 2 : quarter / 4;
    }
    const std::vector<int> sizes = tracking
                                       ? std::vector<int>{block / 4, block / 2, block, 2 * block, 4 * block}
                                       : std::vector<int>{2 * block};
    for (const int size : sizes) {
        correlators.emplace_back();
        CreateKKF(correlators.back(), size);
    }
    ClearState();
}

void SlowMarkFinder::ClearState() {
    lastPeriod = half;
    lastMark = nextMark = lag = expectedLag = period = 0;
    expectedPeriod = static_cast<float>(maxLength / (2 * block));
    previousFir = previousIir = 0.0F;
    hold1 = hold2 = false;
    buffer.clear();
    trackBuffer.clear();
    marks.assign(1, PitchMarkRecord{});
}

void SlowMarkFinder::Reset() {
    ClearState();
    if (tracking) tracker->Reset();
    result = {};
    voicing = 0.0F;
}

void SlowMarkFinder::Process(const std::vector<std::vector<float>>& channelSamples, std::size_t first,
                             std::size_t count) {
    for (std::size_t i = first; i < first + count; ++i) {
        float sum = channelSamples[0][i];
        for (std::size_t c = 1; c < Index(channels); ++c) sum += channelSamples[c][i];
        buffer.push_back(sum);
        trackBuffer.push_back(sum);
    }
    PlaceMarks();
}

void SlowMarkFinder::PlaceMarks() {
    while (static_cast<int>(buffer.size()) >= 2 * block) {
        lag = half - 1;
        if (tracking) {
            FollowTracker();
        } else {
            trackBuffer.clear();
            voicing = 12.0F;
        }
        if (static_cast<int>(buffer.size()) < window) return;
        nextMark = lastMark + half;
        lag = FindLag();
        expectedLag = lag;
        if (tracking && voicing != 0.0F) {
            const int snapped = Snapped(lag);
            snaps += snapped != lag;
            lag = snapped;
        }
        nextMark -= lag;
        period = nextMark - lastMark;
        if (nextMark - marks.back().position < minPeriod / 4) {
            if (tracking) {
                ++passedOver;
                lastMark = nextMark;
                lastPeriod = period;
                buffer.erase(buffer.begin(), buffer.begin() + period);
                continue;
            }
            period = lastPeriod;
            nextMark = lastMark + period;
            if (block >= 1024) {
                window = block;
                half = window / 2;
                quarter = window / 4;
                radius = half;
                expectedLag = half - period;
            }
        }
        if (static_cast<int>(buffer.size()) < period) return;

        std::vector<float> filtered(Index(period));
        fir.Process(buffer.data(), filtered.data(), period);
        const float byFir = Attack(filtered, previousFir, 0.01F);
        iir.Process(buffer.data(), filtered.data(), period);
        const float byIir = Attack(filtered, previousIir, 0.1F);
        const float transient = std::max(byFir, byIir);
        if (!tracking && previousIir < 0.02F) voicing = 0.0F;

        double squares = 0.0;
        for (int i = 0; i < period; ++i) squares += static_cast<double>(At(i)) * static_cast<double>(At(i));
        buffer.erase(buffer.begin(), buffer.begin() + period);
        lastMark = nextMark;
        marks.push_back({nextMark, static_cast<float>(squares / period), transient, voicing, result.change,
                         static_cast<float>(half - expectedLag)});
        lastPeriod = period;
        hold2 = hold1;
        hold1 = transient > 0.7F;
    }
}

void SlowMarkFinder::FollowTracker() {
    int need = tracker->GetRequiredInput();
    while (static_cast<int>(buffer.size()) / 2 + need < static_cast<int>(trackBuffer.size())) {
        std::vector<float> samples(trackBuffer.begin(), trackBuffer.begin() + need);
        samples.resize(Index(need) + 64);
        tracker->Process(samples.data(), need, result);
        voicing = result.salience;
        expectedPeriod = std::min(sampleRate / result.pitch, static_cast<float>(2 * block));
        const float rounded = std::floor(expectedPeriod + 0.5F);
        if (expectedPeriod <= 0.0F) expectedPeriod = -1.0F;
        trackBuffer.erase(trackBuffer.begin(), trackBuffer.begin() + need);
        need = tracker->GetRequiredInput();
        if (rounded > 0.0F) Expect(voicing == 0.0F ? 0.125 : 0.0625);
    }
    const int whole = static_cast<int>(expectedPeriod);
    if (whole > 0 && whole < 2 * minPeriod) Expect(0.0625);
}

void SlowMarkFinder::Expect(double share) {
    const int whole = static_cast<int>(expectedPeriod);
    window = std::clamp(2 * whole, 2 * minPeriod, 2 * block);
    half = window / 2;
    quarter = window / 4;
    radius = std::min(std::max(static_cast<int>(static_cast<double>(expectedPeriod) * share), minPeriod / 4),
                      quarter);
    expectedLag = half - std::min(whole, half);
}

int SlowMarkFinder::FindLag() {
    std::vector<float> stretch(Index(half + window));
    for (int i = 0; i < half + window; ++i) stretch[Index(i)] = At(i);
    if (LargestMagnitude(stretch.data(), window) < 1e-24F) return 0;
    std::size_t chosen = 0;
    if (tracking) {
        for (const int fits : {block / 8, block / 4, block / 2, block}) chosen += window > fits ? 1 : 0;
    }
    CKKF& correlator = *correlators[chosen];
    correlator.Correlate(stretch.data(), stretch.data() + half, window, window);
    const int found = correlator.FindPeak(half - 1, expectedLag, radius);
    return SettledTie(found, stretch, correlator);
}

// Correlations are compared in steps of 1/10000 of N times their value, and computed to a few millionths of
// what the two stretches could reach at most: within that, either lag is right. The quick search then
// decides; anywhere else it is not believed.
int SlowMarkFinder::SettledTie(int found, const std::vector<float>& stretch, CKKF& correlator) {
    const float* x = stretch.data();
    const float* y = stretch.data() + half;
    const int held = std::clamp(static_cast<int>(buffer.size()) - half, 0, window);
    const int other = correlator.CorrelateAndFindPeak(x, y, window, held, half - 1, expectedLag, radius);
    if (other == found) return found;
    const double reachable =
        std::sqrt(DirectCorrelation(x, window, x, window, 0) * DirectCorrelation(y, window, y, window, 0));
    const double tie = 1.05e-4 / correlator.GetSize() + 3e-6 * reachable;
    const double here = DirectCorrelation(x, window, y, window, found);
    const double there = DirectCorrelation(x, window, y, window, other);
    if (std::fabs(here - there) > tie) return found;
    ++ties;
    return other;
}

int SlowMarkFinder::Snapped(int found) const {
    int l = found;
    const int d = half - l;
    if (d <= 4 * minPeriod) return found;
    const int reach = d / 2;
    float best = 1.25F * At(half - l) * At(half - l);
    int o = l; // the lag stands where an offset would be expected
    for (int u = -reach; u <= reach - 1; ++u) {
        const float sample = At(std::max(half - l + u, 1));
        if (sample * sample > best) {
            best = sample * sample;
            o = u;
        }
    }
    if (o < -4) {
        l += 2;
    } else if (o < 5) {
        l = half - std::max(half - l + o, 1);
    } else {
        l -= 2;
    }
    return l > -half && l < half ? l : found;
}

float SlowMarkFinder::Attack(const std::vector<float>& filtered, float& previous, float threshold) const {
    const float a = LargestMagnitude(filtered.data(), static_cast<int>(filtered.size()));
    const float q = previous;
    previous = a;
    if (a <= q || a <= threshold || hold1 || hold2) return 0.0F;
    constexpr double e = 1e-31;
    const auto now = static_cast<double>(a);
    const auto before = static_cast<double>(q);
    return static_cast<float>(
        std::tanh((((now + e) / (before + e)) * (now - before) + e) / ((before + now) + e)));
}

void SlowMarkFinder::Finish() {
    const int end = lastMark + static_cast<int>(buffer.size());
    while (lastMark < end) {
        const int missing = maxLength - static_cast<int>(buffer.size());
        if (missing < 1) break;
        buffer.resize(Index(maxLength), 0.0F);
        PlaceMarks();
    }
    while (!marks.empty() && marks.back().position >= end) marks.pop_back();
    marks.push_back({end, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F});
}

} // namespace sonorelle::test
