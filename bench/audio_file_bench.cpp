// Reading a 16-bit file of ten minutes whole into memory, beside libsndfile's own conversion to float into
// fresh memory; and reading it from there in the analysis's blocks. The file is in the system's page cache.

#include "bench_recordings.h"
#include "side_by_side.h"

#include "formats/audio_file.h"
#include "platform/result_codes.h"
#include "support/temporary_folder.h"

#include <benchmark/benchmark.h>
#include <sndfile.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace sonorelle::bench {
namespace {

constexpr double kSeconds = 600.0;
constexpr std::int32_t kBlock = 1024;

class LongFile {
public:
    LongFile() : file(folder.File("tone.wav").string()) {
        ready = WriteRecording("tone_220", kSeconds, file);
    }
    bool IsReady() const { return ready; }
    const std::string& File() const { return file; }

private:
    test::TemporaryFolder folder;
    std::string file;
    bool ready = false;
};

const LongFile& Long() {
    static const LongFile file;
    return file;
}

std::int32_t OpenWhole() {
    CkvoAudioFile audio;
    return audio.OpenRead(Long().File(), kAudioCacheFrames, -1, -1) == kOk ? audio.GetLength() : 0;
}

sf_count_t OpenWholeWithSndfile() {
    SF_INFO info{};
    SNDFILE* const file = sf_open(Long().File().c_str(), SFM_READ, &info);
    if (file == nullptr) return 0;
    const std::unique_ptr<float[]> samples(new float[static_cast<std::size_t>(info.frames)]);
    const sf_count_t frames = sf_readf_float(file, samples.get(), info.frames);
    benchmark::DoNotOptimize(samples[static_cast<std::size_t>(frames) - 1]);
    sf_close(file);
    return frames;
}

void OpenTenMinutesBesideSndfile(benchmark::State& state) {
    if (!Long().IsReady() || OpenWhole() != OpenWholeWithSndfile())
        return state.SkipWithError("no recording");
    RunSideBySide(state, 1, "sndfile_us", OpenWhole, OpenWholeWithSndfile);
}
BENCHMARK(OpenTenMinutesBesideSndfile)->UseManualTime()->Unit(benchmark::kMillisecond);

void ReadTenMinutesFromMemory(benchmark::State& state) {
    CkvoAudioFile audio;
    if (!Long().IsReady() || audio.OpenRead(Long().File(), kAudioCacheFrames, -1, -1) != kOk)
        return state.SkipWithError("no recording");
    std::vector<float> block(kBlock);
    float* const channels[] = {block.data()};
    for (auto _ : state) {
        audio.Seek(0);
        while (audio.Read(channels, kBlock) > 0) benchmark::ClobberMemory();
    }
}
BENCHMARK(ReadTenMinutesFromMemory)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace sonorelle::bench
