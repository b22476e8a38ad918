// A forward and an inverse real transform of each size: the vector form (ours_us) beside FFTW's ESTIMATE
// plans in single precision, and beside the plain form. Both sides copy the same input into their working
// memory first. "ratio" is the other's time over ours: above 1 ours is quicker.

#include "side_by_side.h"

#include "dsp/aligned_array.h"
#include "dsp/fft.h"
#include "dsp/fft_sse.h"
#include "platform/result_codes.h"

#include <benchmark/benchmark.h>
#ifdef SONORELLE_HAVE_FFTW
#include <fftw3.h>
#endif

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace sonorelle {
namespace {

// A batch is about this many samples long: some 100 microseconds, far above what reading the clock costs.
constexpr std::int32_t kBatchSamples = 131072;

int BatchOf(std::int32_t size) { return std::max(1, kBatchSamples / size); }

std::vector<float> Input(std::int32_t size) {
    std::vector<float> samples(static_cast<std::size_t>(size));
    std::uint32_t noise = 1;
    for (float& sample : samples) {
        noise = noise * 1664525u + 1013904223u;
        sample = static_cast<float>(noise) / 2147483648.0f - 1.0f;
    }
    return samples;
}

// Copy, forward, inverse, in place.
template<typename Transform>
class RoundTrip {
public:
    explicit RoundTrip(const std::vector<float>& samples)
        : input(samples), transform(static_cast<std::int32_t>(samples.size())) {
        ready = transform.Init(kNoWindow) == kOk && work.Allocate(samples.size());
    }
    bool IsReady() const { return ready; }
    void operator()() {
        std::memcpy(work.Data(), input.data(), input.size() * sizeof(float));
        transform.Forward(work.Data());
        transform.Inverse(work.Data());
        benchmark::ClobberMemory();
    }

private:
    const std::vector<float>& input;
    Transform transform;
    AlignedArray work;
    bool ready = false;
};

#ifdef SONORELLE_HAVE_FFTW
// Copy, real to complex, complex to real, each out of place.
class FftwRoundTrip {
public:
    explicit FftwRoundTrip(const std::vector<float>& samples)
        : input(samples), real(fftwf_alloc_real(samples.size())),
          spectrum(fftwf_alloc_complex(samples.size() / 2 + 1)), result(fftwf_alloc_real(samples.size())) {
        const int size = static_cast<int>(samples.size());
        forward = fftwf_plan_dft_r2c_1d(size, real, spectrum, FFTW_ESTIMATE);
        inverse = fftwf_plan_dft_c2r_1d(size, spectrum, result, FFTW_ESTIMATE);
    }
    ~FftwRoundTrip() {
        fftwf_destroy_plan(forward);
        fftwf_destroy_plan(inverse);
        fftwf_free(real);
        fftwf_free(spectrum);
        fftwf_free(result);
    }
    FftwRoundTrip(const FftwRoundTrip&) = delete;
    FftwRoundTrip& operator=(const FftwRoundTrip&) = delete;
    void operator()() {
        std::memcpy(real, input.data(), input.size() * sizeof(float));
        fftwf_execute(forward);
        fftwf_execute(inverse);
        benchmark::ClobberMemory();
    }

private:
    const std::vector<float>& input;
    float* real;
    fftwf_complex* spectrum;
    float* result;
    fftwf_plan forward;
    fftwf_plan inverse;
};

void FftBesideFftw(benchmark::State& state) {
    const auto size = static_cast<std::int32_t>(state.range(0));
    const std::vector<float> input = Input(size);
    RoundTrip<CFFT_SSE2> ours(input);
    if (!ours.IsReady()) return state.SkipWithError("no transform");
    FftwRoundTrip fftw(input);
    bench::RunSideBySide(state, BatchOf(size), "fftw_us", ours, fftw);
}
BENCHMARK(FftBesideFftw)
    ->RangeMultiplier(2)
    ->Range(64, 32768)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
#endif

void FftBesidePlainForm(benchmark::State& state) {
    const auto size = static_cast<std::int32_t>(state.range(0));
    const std::vector<float> input = Input(size);
    RoundTrip<CFFT_SSE2> ours(input);
    RoundTrip<CFFT> plain(input);
    if (!ours.IsReady() || !plain.IsReady()) return state.SkipWithError("no transform");
    bench::RunSideBySide(state, BatchOf(size), "plain_us", ours, plain);
}
BENCHMARK(FftBesidePlainForm)
    ->RangeMultiplier(2)
    ->Range(64, 32768)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace sonorelle
