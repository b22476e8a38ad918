// What a plug-in in a host costs: whole blocks through the core, for each number of voices and block length
// of the host; the loads and saves of a session of more than 500 notes with 32 snapshots; a snapshot that a
// key recalls. Sung melodies, mono, 44.1 kHz, a minute of them where they are played.

#include "bench_recordings.h"
#include "side_by_side.h"

#include "app/application.h"
#include "app/toolkit.h"
#include "host/plugin_core.h"
#include "platform/result_codes.h"
#include "support/temporary_folder.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace sonorelle::bench {
namespace {

constexpr double kSeconds = 60.0;
constexpr double kSessionSeconds = 420.0; // more than 500 notes
constexpr std::int32_t kFramesOfASecond = 44100;

class Transport final : public CkvoHost {
public:
    const VstTimeInfo* GetTimeInfo(std::int32_t) override { return &time; }
    float GetSampleRate() override { return 44100; }
    void SendVstEventsToHost(VstEvents* events) override { sent += events->numEvents; }

    VstTimeInfo time = [] {
        VstTimeInfo start;
        start.tempo = 120;
        start.timeSigNumerator = start.timeSigDenominator = 4;
        start.flags = kVstTransportPlaying | kVstTempoValid | kVstTimeSigValid;
        return start;
    }();
    std::int64_t sent = 0;
};

class Stage {
public:
    explicit Stage(std::int32_t voices = 4, std::int32_t blockFrames = 64, double seconds = kSeconds)
        : frames(blockFrames), path((folder.Path() / "melody.wav").string()), plugIn(&host, toolkit) {
        if (!WriteRecording("melody", seconds, path)) throw std::runtime_error("no recording");
        if (plugIn.LoadAudioFile(path) != kOk) throw std::runtime_error("not loaded");
        for (std::int32_t voice = voices; voice < 4; ++voice)
            plugIn.WithApplication([voice](CkvovirelaineApp& app) { app.VoicePanel().ToggleMute(voice); });
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i].resize(static_cast<std::size_t>(frames));
            outputs[i] = samples[i].data();
        }
    }

    void PlayBlock() {
        plugIn.Process(nullptr, outputs.data(), frames);
        host.time.samplePos += frames;
        if (host.time.samplePos > kSeconds * kFramesOfASecond) host.time.samplePos = 0;
        benchmark::DoNotOptimize(samples[0][0]);
    }
    CvirelainePlugIn& PlugIn() { return plugIn; }
    std::int32_t NoteCount() { return plugIn.Application()->Driver().GetNoteCount(); }
    std::string Save() {
        const void* data = nullptr;
        const std::int32_t size = plugIn.GetChunk(data, false);
        return {static_cast<const char*>(data), static_cast<std::size_t>(size)};
    }
    std::int32_t Restore(const std::string& document) {
        return plugIn.SetChunk(document.data(), static_cast<std::int32_t>(document.size()), false);
    }

private:
    std::int32_t frames;
    test::TemporaryFolder folder;
    std::string path;
    Transport host;
    CkvoToolkit toolkit;
    CvirelainePlugIn plugIn;
    std::array<std::vector<float>, CvirelainePlugIn::kOutputs> samples;
    std::array<float*, CvirelainePlugIn::kOutputs> outputs{};
};

// `percent`: CPU time of one core per time of music.
void PlaySecond(benchmark::State& state) {
    const auto voices = static_cast<std::int32_t>(state.range(0));
    const auto frames = static_cast<std::int32_t>(state.range(1));
    Stage stage(voices, frames);
    std::int64_t played = 0;
    for (auto _ : state)
        for (std::int32_t done = 0; done < kFramesOfASecond; done += frames, played += frames)
            stage.PlayBlock();
    state.counters["percent"] = benchmark::Counter(static_cast<double>(played) / kFramesOfASecond / 100,
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(PlaySecond)
    ->ArgNames({"voices", "frames"})
    ->ArgsProduct({{1, 2, 3, 4}, {17, 64, 512, 4096}})
    ->Unit(benchmark::kMillisecond);

// The silence of a plug-in without a recording.
void PlaySilence(benchmark::State& state) {
    Transport host;
    CkvoToolkit toolkit;
    CvirelainePlugIn plugIn(&host, toolkit);
    std::vector<float> silence(64);
    std::array<float*, CvirelainePlugIn::kOutputs> outputs{};
    outputs.fill(silence.data());
    for (auto _ : state) plugIn.Process(nullptr, outputs.data(), 64);
}
BENCHMARK(PlaySilence);

// A session of more than 500 notes, with as many snapshots as it takes.
class SessionStage : public Stage {
public:
    SessionStage() : Stage(4, 64, kSessionSeconds) {
        if (NoteCount() < 500) throw std::runtime_error("too few notes");
    }
};

void FillSnapshots(Stage& stage) {
    stage.PlugIn().WithApplication([](CkvovirelaineApp& app) {
        for (std::int32_t key = 61; app.SnapshotPanel().CanAdd(); ++key)
            app.SnapshotPanel().Add("Verse", key, 0, app.GetMelodyEnd());
        app.PlaybackPanel().SetMode(CkvovirelainePlaybackSettings::kMidi);
        app.OnPlaybackChanged();
    });
}

void SaveSession(benchmark::State& state) {
    SessionStage stage;
    FillSnapshots(stage);
    std::size_t bytes = 0;
    for (auto _ : state) bytes = stage.Save().size();
    state.counters["bytes"] = static_cast<double>(bytes);
    state.counters["notes"] = stage.NoteCount();
}
BENCHMARK(SaveSession)->Unit(benchmark::kMillisecond);

void RestoreSession(benchmark::State& state) {
    SessionStage stage;
    FillSnapshots(stage);
    const std::string saved = stage.Save();
    for (auto _ : state)
        if (stage.Restore(saved) != 1) state.SkipWithError("not restored");
    state.counters["notes"] = stage.NoteCount();
}
BENCHMARK(RestoreSession)->Unit(benchmark::kMillisecond);

void RecallByKey(benchmark::State& state) {
    SessionStage stage;
    FillSnapshots(stage);
    VstMidiEvent key;
    key.midiData[0] = 0x90;
    key.midiData[1] = 61;
    key.midiData[2] = 100;
    VstEvents events;
    events.numEvents = 1;
    events.events[0] = reinterpret_cast<VstEvent*>(&key);
    stage.PlugIn().ProcessEvents(&events);
    if (!stage.PlugIn().Application()->IsPlaying()) state.SkipWithError("not recalled");
    for (auto _ : state) {
        key.midiData[1] ^= 3; // 61 and 62 in turn: the key of the present snapshot only starts it again
        stage.PlugIn().ProcessEvents(&events);
    }
}
BENCHMARK(RecallByKey)->Unit(benchmark::kMicrosecond);

void LoadFromCache(benchmark::State& state) {
    Stage stage;
    const std::string path = stage.PlugIn().GetAudioPath();
    for (auto _ : state)
        if (stage.PlugIn().LoadAudioFile(path) != kOk) state.SkipWithError("not loaded");
}
BENCHMARK(LoadFromCache)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace sonorelle::bench
