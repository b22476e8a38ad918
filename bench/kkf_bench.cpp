// One correlation as the mark finder asks for it: a window of two periods against the window one period
// later, and the highest value near the expected lag. The argument is the window in samples, that is, twice
// the period. "ratio" compares with the plain form, and with the three transforms where a few direct sums do
// as well.

#include "side_by_side.h"

#include "dsp/kkf.h"
#include "platform/result_codes.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle {
namespace {

constexpr std::int32_t kBatchSamples = 65536;
constexpr std::int32_t kSmallestCorrelator = 512; // of the mark finder at 44.1 kHz

// What the mark finder hands over for a voice whose period is half of the window.
struct Search {
    explicit Search(std::int32_t windowLength)
        : window(windowLength), half(windowLength / 2), radius(std::max(half / 16, 8)) {
        std::uint32_t noise = 1;
        for (std::int32_t n = 0; n < window + half; ++n) {
            noise = noise * 1664525u + 1013904223u;
            const double phase = 6.283185307179586 * n / half;
            signal.push_back(static_cast<float>(0.5 * std::sin(phase) + 0.2 * std::sin(3.0 * phase) +
                                                0.01 * (noise / 4294967296.0)));
        }
    }
    std::vector<float> signal;
    std::int32_t window;
    std::int32_t half;
    std::int32_t radius;
};

std::int32_t ByTransforms(CKKF& kkf, const Search& search) {
    const float* const x = search.signal.data();
    kkf.Correlate(x, x + search.half, search.window, search.window);
    return kkf.FindPeak(search.half - 1, 0, search.radius);
}

std::int32_t AsTheMarkFinderDoes(CKKF& kkf, const Search& search) {
    const float* const x = search.signal.data();
    return kkf.CorrelateAndFindPeak(x, x + search.half, search.window, search.window, search.half - 1, 0,
                                    search.radius);
}

template<typename Peer>
void Compare(benchmark::State& state, const char* peerName, std::uint32_t peerFeatures, Peer peerSearch) {
    const Search search(static_cast<std::int32_t>(state.range(0)));
    const std::int32_t size = std::max(2 * search.window, kSmallestCorrelator);
    std::unique_ptr<CKKF> ours;
    std::unique_ptr<CKKF> peer;
    if (CreateKKF(ours, size) != kOk || CreateKKF(peer, size, peerFeatures) != kOk)
        return state.SkipWithError("no correlator");
    bench::RunSideBySide(
        state, std::max(1, kBatchSamples / search.window), peerName,
        [&] { benchmark::DoNotOptimize(AsTheMarkFinderDoes(*ours, search)); },
        [&] { benchmark::DoNotOptimize(peerSearch(*peer, search)); });
}

void KkfBesidePlainForm(benchmark::State& state) { Compare(state, "plain_us", 0, ByTransforms); }
void KkfBesideThreeTransforms(benchmark::State& state) {
    Compare(state, "transforms_us", ProcessorFeatureWord(), ByTransforms);
}
BENCHMARK(KkfBesidePlainForm)
    ->RangeMultiplier(2)
    ->Range(64, 4096)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(KkfBesideThreeTransforms)
    ->RangeMultiplier(2)
    ->Range(64, 4096)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace sonorelle
