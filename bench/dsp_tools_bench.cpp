// What the small signal tools cost for one second of audio at 44.1 kHz (48 kHz where a name says so). The
// counter "x_realtime" tells how many seconds of audio one second of one core gets through.

#include "dsp/eq.h"
#include "dsp/multi_access_buffer.h"
#include "dsp/resample_base.h"
#include "dsp/ring_buffer.h"
#include "dsp/simple_filters.h"
#include "platform/result_codes.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle {
namespace {

constexpr std::int32_t kRate = 44100;

// A harmonic tone with a little noise, as a voice would have it: no silence, no denormal numbers.
std::vector<float> Tone(std::int32_t frames) {
    std::vector<float> samples(static_cast<std::size_t>(frames));
    std::uint32_t noise = 1;
    for (std::int32_t n = 0; n < frames; ++n) {
        noise = noise * 1664525u + 1013904223u;
        const double phase = 6.283185307179586 * 220.0 * n / kRate;
        const double value =
            0.4 * std::sin(phase) + 0.2 * std::sin(3.0 * phase) + 1e-3 * (noise / 4294967296.0);
        samples[static_cast<std::size_t>(n)] = static_cast<float>(value);
    }
    return samples;
}

void CountRealTime(benchmark::State& state) {
    state.counters["x_realtime"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

// Arguments: input rate, output rate, frames of a block.
void ResampleFloat(benchmark::State& state) {
    const auto inputRate = static_cast<std::int32_t>(state.range(0));
    const auto outputRate = static_cast<std::int32_t>(state.range(1));
    const auto block = static_cast<std::int32_t>(state.range(2));
    std::unique_ptr<CResampleBase> resampler;
    if (CreateResampler(resampler, 3, 16384, 1, kResampleFloat) != kOk)
        return state.SkipWithError("no resampler");
    const std::vector<float> in = Tone(inputRate);
    std::vector<float> out(static_cast<std::size_t>(block) * 5 + 2);
    for (auto _ : state) {
        for (std::int32_t start = 0; start < inputRate; start += block) {
            const std::int32_t count = std::min(block, inputRate - start);
            benchmark::DoNotOptimize(
                resampler->Process(in.data() + start, out.data(), inputRate, outputRate, 1, count));
        }
    }
    CountRealTime(state);
}
BENCHMARK(ResampleFloat)
    ->ArgNames({"from", "to", "block"})
    ->Args({44100, 11025, 2048})
    ->Args({48000, 11025, 2229})
    ->Args({96000, 11025, 4458})
    ->Args({16000, 11025, 743})
    ->Args({11025, 44100, 512})
    ->Args({44101, 11027, 2048}) // fractions hardly ever come back: each output makes its taps
    ->Unit(benchmark::kMicrosecond);

template<typename Filter>
void SimpleFilter(benchmark::State& state) {
    Filter filter(-0.9f);
    const std::vector<float> in = Tone(kRate);
    std::vector<float> out(in.size());
    for (auto _ : state) {
        filter.Process(in.data(), out.data(), kRate);
        benchmark::ClobberMemory();
    }
    CountRealTime(state);
}
BENCHMARK(SimpleFilter<CSimpleIIRFilter>)->Unit(benchmark::kMicrosecond);
BENCHMARK(SimpleFilter<CSimpleFIRFilter>)->Unit(benchmark::kMicrosecond);

// Argument: 0 a tone, 1 silence after a tone, which must not be slower.
void EqLowPass(benchmark::State& state) {
    CEQ eq(static_cast<float>(kRate), 1, kEqLowPass);
    eq.SetParameters(30.0f, 0.0f, 1.0f);
    std::vector<float> in = Tone(kRate);
    std::vector<float> out(in.size());
    const float* const inputs[] = {in.data()};
    float* const outputs[] = {out.data()};
    eq.Process(inputs, outputs, kRate);
    if (state.range(0) == 1) std::fill(in.begin(), in.end(), 0.0f);
    for (auto _ : state) {
        eq.Process(inputs, outputs, kRate);
        benchmark::ClobberMemory();
    }
    CountRealTime(state);
}
BENCHMARK(EqLowPass)->ArgName("silence")->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

void RingBufferWriteRead(benchmark::State& state) {
    std::unique_ptr<RingBuffer> ring;
    if (RingBuffer::Create(ring, 16384) != kOk) return state.SkipWithError("no ring");
    const std::vector<float> in = Tone(512);
    std::vector<float> out(in.size());
    for (auto _ : state) {
        for (std::int32_t start = 0; start < kRate; start += 512) {
            ring->Write(in.data(), 512);
            ring->Read(out.data(), 512);
        }
        benchmark::ClobberMemory();
    }
    CountRealTime(state);
}
BENCHMARK(RingBufferWriteRead)->Unit(benchmark::kMicrosecond);

// Four readers in blocks of 64, as four voices share one input.
void MultiAccessBufferFourReaders(benchmark::State& state) {
    std::unique_ptr<CMultiAccessBuffer> buffer;
    if (CMultiAccessBuffer::Create(buffer, 65536, 1, 4) != kOk) return state.SkipWithError("no buffer");
    buffer->SetKeep(4096);
    const std::vector<float> in = Tone(64);
    std::vector<float> out(in.size());
    const float* const inputs[] = {in.data()};
    float* const outputs[] = {out.data()};
    for (auto _ : state) {
        for (std::int32_t start = 0; start < kRate; start += 64) {
            if (buffer->Write(inputs, 64) != kOk) return state.SkipWithError("the buffer is full");
            for (std::int32_t reader = 0; reader < 4; ++reader) buffer->Read(reader, outputs, 64);
        }
        benchmark::ClobberMemory();
    }
    CountRealTime(state);
}
BENCHMARK(MultiAccessBufferFourReaders)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace sonorelle
