// What opening a recording of ten minutes costs that was analysed before: its marks, notes and frames come
// from the cache beside it. Beside it the same with the audio file itself read whole, which is what a user
// waits for.

#include "bench_recordings.h"

#include "analysis/melody_analyzer.h"
#include "formats/audio_file.h"
#include "platform/result_codes.h"
#include "support/temporary_folder.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace sonorelle::bench {
namespace {

constexpr double kSeconds = 600.0;

// The recording with its cache, made once.
class CachedRecording {
public:
    CachedRecording() : file(folder.File("melody.wav").string()) {
        CkvoAudioFile audio;
        CMelodyAnalyzer analyzer;
        if (!WriteRecording("melody", kSeconds, file)) return;
        if (audio.OpenRead(file, kAudioCacheFrames, -1, -1) != kOk || analyzer.Attach(&audio) != kOk) return;
        while (analyzer.RunStep() != CMelodyAnalyzer::kComplete) {
        }
        ready = analyzer.StoreResults(true) == 1;
    }
    bool IsReady() const { return ready; }
    const std::string& File() const { return file; }

private:
    test::TemporaryFolder folder;
    std::string file;
    bool ready = false;
};

const CachedRecording& Recording() {
    static const CachedRecording recording;
    return recording;
}

// Gives the number of marks, or -1.
std::int32_t Load(CkvoAudioFile& audio) {
    CMelodyAnalyzer analyzer;
    if (analyzer.Attach(&audio) != kOk || analyzer.ReadCacheHeader() != 0 || analyzer.LoadCache() != 1)
        return -1;
    const AnalysisFrame* frames = nullptr;
    return analyzer.GetFrames(frames);
}

void LoadFromCache(benchmark::State& state) {
    CkvoAudioFile audio;
    if (!Recording().IsReady() || audio.OpenRead(Recording().File(), kAudioCacheFrames, -1, -1) != kOk)
        return state.SkipWithError("no recording");
    std::int32_t marks = 0;
    for (auto _ : state)
        if ((marks = Load(audio)) < 1) return state.SkipWithError("not loaded");
    state.counters["marks"] = marks;
}
BENCHMARK(LoadFromCache)->Unit(benchmark::kMillisecond);

void OpenAudioAndLoadFromCache(benchmark::State& state) {
    if (!Recording().IsReady()) return state.SkipWithError("no recording");
    for (auto _ : state) {
        CkvoAudioFile audio;
        if (audio.OpenRead(Recording().File(), kAudioCacheFrames, -1, -1) != kOk || Load(audio) < 1)
            return state.SkipWithError("not loaded");
    }
}
BENCHMARK(OpenAudioAndLoadFromCache)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace sonorelle::bench
