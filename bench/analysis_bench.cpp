// The whole analysis of a mono recording at 44.1 kHz that lies in memory: two passes over the samples and the
// nine stages. "x_realtime" tells how many seconds of audio one second of CPU time gets through. Beside it
// aubio's yinfft over the same samples, which finds the pitch alone: no marks, no notes.
//
//     analysis_bench [--seconds=600] [Google Benchmark's options]

#include "bench_recordings.h"

#include "analysis/melody_analyzer.h"
#include "formats/audio_file.h"
#include "platform/result_codes.h"
#include "support/temporary_folder.h"

#include <benchmark/benchmark.h>
#ifdef SONORELLE_HAVE_AUBIO
#include <aubio/aubio.h>
#endif

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace sonorelle::bench {
namespace {

constexpr double kDefaultSeconds = 60.0;

void CountRealTime(benchmark::State& state, double secondsOfAudio) {
    state.counters["x_realtime"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * secondsOfAudio, benchmark::Counter::kIsRate);
}

void AnalyseFile(benchmark::State& state, const std::string& path) {
    CkvoAudioFile audio;
    if (audio.OpenRead(path, kAudioCacheFrames, -1, -1) != kOk) return state.SkipWithError("no recording");
    std::int32_t marks = 0;
    std::int32_t notes = 0;
    for (auto _ : state) {
        CMelodyAnalyzer analyzer;
        if (analyzer.Attach(&audio) != kOk) return state.SkipWithError("not attached");
        while (analyzer.RunStep() != CMelodyAnalyzer::kComplete) {
        }
        if (!analyzer.IsAnalysed()) return state.SkipWithError("not analysed");
        analyzer.StoreResults(false);
        const AnalysisFrame* frameRecords = nullptr;
        const NoteRecord* noteRecords = nullptr;
        marks = analyzer.GetFrames(frameRecords);
        notes = analyzer.GetNotes(noteRecords);
    }
    CountRealTime(state, audio.GetLength() / static_cast<double>(audio.GetSampleRate()));
    state.counters["marks"] = marks;
    state.counters["notes"] = notes;
}

#ifdef SONORELLE_HAVE_AUBIO
constexpr uint_t kAubioWindow = 2048;

void AubioYinfft(benchmark::State& state, const std::string& path, uint_t hop) {
    CkvoAudioFile audio;
    if (audio.OpenRead(path, kAudioCacheFrames, -1, -1) != kOk) return state.SkipWithError("no recording");
    std::vector<float> samples(static_cast<std::size_t>(audio.GetLength()));
    float* const channels[] = {samples.data()};
    audio.Read(channels, audio.GetLength());
    fvec_t* const input = new_fvec(hop);
    fvec_t* const pitch = new_fvec(1);
    for (auto _ : state) {
        aubio_pitch_t* const tracker =
            new_aubio_pitch("yinfft", kAubioWindow, hop, static_cast<uint_t>(kSampleRate));
        for (std::size_t start = 0; start + hop <= samples.size(); start += hop) {
            std::copy_n(samples.data() + start, hop, input->data);
            aubio_pitch_do(tracker, input, pitch);
            benchmark::DoNotOptimize(pitch->data[0]);
        }
        del_aubio_pitch(tracker);
    }
    del_fvec(input);
    del_fvec(pitch);
    CountRealTime(state, static_cast<double>(samples.size()) / kSampleRate);
}
#endif

// Takes "--seconds=N" off the command line.
double TakeSeconds(int& count, char** arguments) {
    constexpr const char* kName = "--seconds=";
    double seconds = kDefaultSeconds;
    int kept = 1;
    for (int i = 1; i < count; ++i) {
        if (std::strncmp(arguments[i], kName, std::strlen(kName)) == 0)
            seconds = std::strtod(arguments[i] + std::strlen(kName), nullptr);
        else
            arguments[kept++] = arguments[i];
    }
    count = kept;
    return seconds > 0.0 ? seconds : kDefaultSeconds;
}

// Writes a recording when its benchmark is first run, so that a filter does not make all of them.
class Recordings {
public:
    explicit Recordings(double lengthSeconds) : seconds(lengthSeconds) {}
    std::string File(const std::string& kind) const {
        const std::filesystem::path file = folder.File(kind + ".wav");
        if (!std::filesystem::exists(file)) WriteRecording(kind, seconds, file);
        return file.string();
    }

private:
    double seconds;
    test::TemporaryFolder folder;
};

void Register(const Recordings& recordings) {
    for (const std::string& kind : Kinds()) {
        benchmark::RegisterBenchmark(("Analysis/" + kind).c_str(), [&recordings,
                                                                    kind](benchmark::State& state) {
            AnalyseFile(state, recordings.File(kind));
        })->Unit(benchmark::kMillisecond);
#ifdef SONORELLE_HAVE_AUBIO
        for (const uint_t hop : {256U, 512U}) {
            const std::string name = "AubioYinfft/" + kind + "/hop:" + std::to_string(hop);
            benchmark::RegisterBenchmark(name.c_str(), [&recordings, kind, hop](benchmark::State& state) {
                AubioYinfft(state, recordings.File(kind), hop);
            })->Unit(benchmark::kMillisecond);
        }
#endif
    }
}

} // namespace
} // namespace sonorelle::bench

int main(int count, char** arguments) {
    const sonorelle::bench::Recordings recordings(sonorelle::bench::TakeSeconds(count, arguments));
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 2;
    sonorelle::bench::Register(recordings);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
