// What the voices cost while the music plays: a block of 64 of all four and their mix, in per cent of real
// time and as the slowest single block; beside it two stretchers that shift four copies of the same melody,
// one with formants preserved, one without.
//
//     voice_bank_bench [Google Benchmark's options]
//
// The melody is one minute of the synthetic tenor at 44.1 kHz, mono, arranged in four voices.

#include "bench_recordings.h"
#include "side_by_side.h"

#include "analysis/melody_analyzer.h"
#include "app/snapshot_store.h"
#include "app/voice_mix.h"
#include "app/voice_preset.h"
#include "formats/audio_file.h"
#include "harmony/choir_driver.h"
#include "platform/result_codes.h"
#include "support/temporary_folder.h"
#include "synthesis/voice_bank.h"

#include <benchmark/benchmark.h>
#ifdef SONORELLE_HAVE_RUBBERBAND
#include <rubberband/RubberBandStretcher.h>
#endif
#ifdef SONORELLE_HAVE_SOUNDTOUCH
#include <SoundTouch.h>
#endif

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace sonorelle::bench {
namespace {

constexpr double kSeconds = 60.0;
constexpr std::int32_t kBlock = 64;
constexpr std::int32_t kBlocksOfASecond = 44100 / kBlock;
constexpr std::int32_t kManyBlocks = 100000;
constexpr double kBlockMicroseconds = 1e6 * kBlock / 44100.0;
constexpr std::array<double, 4> kIntervals = {0, 4, -3, 7}; // of the peers' voices, semitones

// A melody that has been heard and arranged, ready to play over and over.
class Stage {
public:
    Stage() : path((folder.Path() / "melody.wav").string()) {
        if (!WriteRecording("melody", kSeconds, path)) throw std::runtime_error("no recording");
        if (audio.OpenRead(path, kAudioCacheFrames, -1, -1) != kOk) throw std::runtime_error("not read");
        if (analyzer.Attach(&audio) != kOk) throw std::runtime_error("not attached");
        while (analyzer.RunStep() != CMelodyAnalyzer::kComplete) {
        }
        analyzer.StoreResults(false);
        driver = std::make_unique<CChoirDriver>(analyzer, store);
        driver->SetVoiceRange(1);
        driver->SetSpread(0.6F);
        if (driver->Run() != kOk || bank.Init(*driver) != kOk) throw std::runtime_error("not arranged");
        bank.SetBlockSize(kBlock);
        const VoicePreset preset = FactoryPresets()[kDefaultPreset];
        for (std::int32_t voice = 0; voice < kPresetVoices; ++voice) {
            const auto slot = static_cast<std::size_t>(voice);
            SendVoiceSettings(bank, voice, preset.voices[slot]);
            input.gains[slot] = StripGainFromVolAndPan(preset.voices[slot].vol, preset.voices[slot].pan);
            input.enabled[slot] = true;
            pointers[slot] = samples[slot].data();
            input.buffers[slot] = &pointers[slot];
        }
        input.channels = bank.GetChannelCount();
        mix.Fade().FadeIn();
    }
    ~Stage() { store.ClearAll(); }

    void ShiftFormants() {
        for (std::int32_t voice = 0; voice < kPresetVoices; ++voice)
            bank.SetFormantShift(voice, 1.1F + 0.05F * static_cast<float>(voice));
    }

    // One block of the mix; begins again at the end of the melody.
    void PlayBlock() {
        if (bank.Render(input.buffers[0], input.buffers[1], input.buffers[2], input.buffers[3]) != kOk) {
            double start = 0;
            bank.Seek(start);
        }
        for (std::vector<float>& side : sides) std::fill(side.begin(), side.end(), 0.0F);
        VoiceMixBlock block;
        block.outputs = outputs.data();
        block.outputCount = 2;
        block.count = kBlock;
        mix.Mix(input, block);
        benchmark::DoNotOptimize(sides[0][0]);
    }

private:
    test::TemporaryFolder folder;
    std::string path;
    CkvoAudioFile audio;
    CMelodyAnalyzer analyzer;
    CSnapshotStore store;
    std::unique_ptr<CChoirDriver> driver;
    CVoiceBank bank;
    CVoiceMix mix;
    VoiceMixInput input;
    std::array<std::array<float, kBlock>, 4> samples{};
    std::array<float*, 4> pointers{};
    std::array<std::vector<float>, 2> sides{std::vector<float>(kBlock), std::vector<float>(kBlock)};
    std::array<float*, 2> outputs{sides[0].data(), sides[1].data()};
};

void PlaySecond(Stage& stage) {
    for (std::int32_t i = 0; i < kBlocksOfASecond; ++i) stage.PlayBlock();
}

// `percent`: CPU time of one core per time of music.
void CountPercent(benchmark::State& state) {
    state.counters["percent"] = benchmark::Counter(static_cast<double>(state.iterations()) *
                                                       kBlocksOfASecond * kBlock / 44100.0 / 100.0,
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void FourVoicesAndMix(benchmark::State& state) {
    Stage stage;
    for (auto _ : state) PlaySecond(stage);
    CountPercent(state);
}
BENCHMARK(FourVoicesAndMix)->Unit(benchmark::kMillisecond);

void FourVoicesWithFormants(benchmark::State& state) {
    Stage stage;
    stage.ShiftFormants();
    for (auto _ : state) PlaySecond(stage);
    CountPercent(state);
}
BENCHMARK(FourVoicesWithFormants)->Unit(benchmark::kMillisecond);

// Every block timed alone. A block that the system interrupts counts what this thread itself has used.
template<typename Play>
void TimeBlocks(benchmark::State& state, std::int32_t blocks, Play&& play) {
    std::vector<double> microseconds;
    for (auto _ : state) {
        microseconds.clear();
        for (std::int32_t i = 0; i < blocks; ++i) {
            const double start = ThreadSeconds();
            play();
            microseconds.push_back(1e6 * (ThreadSeconds() - start));
        }
    }
    std::sort(microseconds.begin(), microseconds.end());
    state.counters["slowest_us"] = microseconds.back();
    state.counters["median_us"] = microseconds[microseconds.size() / 2];
    state.counters["slowest_percent"] = 100.0 * microseconds.back() / kBlockMicroseconds;
}

void SlowestBlock(benchmark::State& state) {
    Stage stage;
    stage.PlayBlock();
    TimeBlocks(state, kManyBlocks, [&] { stage.PlayBlock(); });
}
BENCHMARK(SlowestBlock)->Unit(benchmark::kMillisecond)->Iterations(1);

std::vector<float> Melody() {
    const std::vector<float> samples = MakeRecording("melody", kSeconds).channels.at(0);
    return samples;
}

// Four copies of one stretcher, each fed with the same melody. `Peer(semitones)` has Play(in, out), kBlock
// samples each.
template<typename Peer>
class PeerChoir {
public:
    PeerChoir() : melody(Melody()) {
        for (const double semitones : kIntervals) peers.push_back(std::make_unique<Peer>(semitones));
    }
    void PlayBlock() {
        if (at + kBlock > melody.size()) at = 0;
        for (const auto& peer : peers) peer->Play(melody.data() + at, out.data());
        at += kBlock;
        benchmark::DoNotOptimize(out[0]);
    }

private:
    std::vector<float> melody;
    std::vector<std::unique_ptr<Peer>> peers;
    std::array<float, kBlock> out{};
    std::size_t at = 0;
};

template<typename Peer>
void FourCopies(benchmark::State& state) {
    PeerChoir<Peer> choir;
    for (auto _ : state)
        for (std::int32_t i = 0; i < kBlocksOfASecond; ++i) choir.PlayBlock();
    CountPercent(state);
}

template<typename Peer>
void SlowestBlockOfFourCopies(benchmark::State& state) {
    PeerChoir<Peer> choir;
    choir.PlayBlock();
    TimeBlocks(state, kManyBlocks / 10, [&] { choir.PlayBlock(); });
}

#ifdef SONORELLE_HAVE_RUBBERBAND
template<RubberBand::RubberBandStretcher::Option kEngine>
class RubberBandVoice {
public:
    explicit RubberBandVoice(double semitones)
        : stretcher(44100, 1,
                    RubberBand::RubberBandStretcher::OptionProcessRealTime |
                        RubberBand::RubberBandStretcher::OptionFormantPreserved | kEngine,
                    1.0, std::exp2(semitones / 12.0)) {
        stretcher.setMaxProcessSize(kBlock);
    }
    void Play(const float* in, float* out) {
        stretcher.process(&in, kBlock, false);
        if (stretcher.available() >= kBlock) stretcher.retrieve(&out, kBlock);
    }

private:
    RubberBand::RubberBandStretcher stretcher;
};
using RubberBandFiner = RubberBandVoice<RubberBand::RubberBandStretcher::OptionEngineFiner>;
using RubberBandFaster = RubberBandVoice<RubberBand::RubberBandStretcher::OptionEngineFaster>;
BENCHMARK_TEMPLATE(FourCopies, RubberBandFiner)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(FourCopies, RubberBandFaster)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(SlowestBlockOfFourCopies, RubberBandFiner)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK_TEMPLATE(SlowestBlockOfFourCopies, RubberBandFaster)->Unit(benchmark::kMillisecond)->Iterations(1);
#endif

#ifdef SONORELLE_HAVE_SOUNDTOUCH
class SoundTouchVoice {
public:
    explicit SoundTouchVoice(double semitones) {
        stretcher.setSampleRate(44100);
        stretcher.setChannels(1);
        stretcher.setSetting(SETTING_USE_QUICKSEEK, 1);
        stretcher.setPitchSemiTones(semitones);
    }
    void Play(const float* in, float* out) {
        stretcher.putSamples(in, kBlock);
        stretcher.receiveSamples(out, kBlock);
    }

private:
    soundtouch::SoundTouch stretcher;
};
BENCHMARK_TEMPLATE(FourCopies, SoundTouchVoice)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(SlowestBlockOfFourCopies, SoundTouchVoice)->Unit(benchmark::kMillisecond)->Iterations(1);
#endif

} // namespace
} // namespace sonorelle::bench
