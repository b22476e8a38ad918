// Times two ways to do one thing in turns, so that a machine that others use too slows both of them alike.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <vector>

namespace sonorelle::bench {

// CPU time of the calling thread in seconds: what others do on the same core does not count.
inline double ThreadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

inline double Median(std::vector<double> values) {
    if (values.empty()) return 0.0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template<typename Work>
double SecondsOfBatch(Work&& work, int batch) {
    const double start = ThreadSeconds();
    for (int i = 0; i < batch; ++i) work();
    return ThreadSeconds() - start;
}

// Each iteration of `state` (which must use manual time) runs `batch` calls of `ours` and then of `peer`.
// Reported are the medians over all iterations in microseconds a call, and "ratio", the median of peer /
// ours: above 1 we are quicker.
template<typename Ours, typename Peer>
void RunSideBySide(benchmark::State& state, int batch, const char* peerName, Ours&& ours, Peer&& peer) {
    std::vector<double> oursSeconds;
    std::vector<double> peerSeconds;
    std::vector<double> ratios;
    for (auto _ : state) {
        const double a = SecondsOfBatch(ours, batch);
        const double b = SecondsOfBatch(peer, batch);
        state.SetIterationTime(a);
        oursSeconds.push_back(a / batch);
        peerSeconds.push_back(b / batch);
        ratios.push_back(b / a);
    }
    state.counters["ours_us"] = 1e6 * Median(oursSeconds);
    state.counters[peerName] = 1e6 * Median(peerSeconds);
    state.counters["ratio"] = Median(ratios);
}

} // namespace sonorelle::bench
