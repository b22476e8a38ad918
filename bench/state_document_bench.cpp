// What a user waits for when the host saves or opens a project: the document of a session of 500 notes with
// 32 snapshots and the present state, written and read. The arrangement has the layout of the driver: 20
// settings and 76 bytes a note. Beside them a plain copy of the text, which a host makes in any case.

#include "app/state_document.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle::bench {
namespace {

constexpr std::int32_t kSettings = 20;
constexpr std::int32_t kVoiceRowBytes = 16;

// Sizes in the order of the store: settings, voices, gains, note list, chords.
std::vector<std::int32_t> ElementSizes(std::int32_t notes) {
    std::vector<std::int32_t> sizes(kSettings, 4);
    sizes.insert(sizes.end(), static_cast<std::size_t>(2 * notes), kVoiceRowBytes);
    for (const std::int32_t listed : {28 * notes, 8 * notes, 16 * notes}) sizes.push_back(listed);
    return sizes;
}

SavedState Session(std::int32_t notes, std::int32_t snapshots) {
    SavedState state;
    state.fileSettings.audioFileName = "/home/lea/recordings/song.wav";
    state.fileSettings.masterPlaybackStart = 44100;
    state.fileSettings.tuningFreq = 441;
    state.snapshots.emplace();
    state.snapshots->version = 1.2F;
    state.snapshots->analysedNoteCount = notes;
    state.snapshots->noteCapacity = notes;
    for (std::int32_t i = 0; i <= snapshots; ++i) {
        SavedSnapshot record;
        record.name = "Snapshot No. " + std::to_string(i + 1);
        record.midiTrigger = 60 + i;
        record.startTime = 0;
        record.endTime = 441000;
        for (std::int32_t byte = 0; byte < 4 * kSettings + 76 * notes; ++byte)
            record.data.push_back(static_cast<std::byte>(byte * 7 + i));
        record.sizes = ElementSizes(notes);
        state.snapshots->records.push_back(record);
    }
    for (SavedVoice& voice : state.mixer) voice = SavedVoiceFrom({});
    for (const VoicePreset& preset : FactoryPresets()) {
        SavedPreset saved;
        saved.name = preset.name;
        for (SavedVoice& voice : saved.voices) voice = SavedVoiceFrom(preset.voices[0]);
        state.presets.push_back(saved);
    }
    return state;
}

void WriteDocument(benchmark::State& state) {
    const SavedState session =
        Session(static_cast<std::int32_t>(state.range(0)), static_cast<std::int32_t>(state.range(1)));
    std::size_t bytes = 0;
    for (auto _ : state) bytes = WriteState(session).size();
    state.counters["megabytes"] = static_cast<double>(bytes) * 1e-6;
}
BENCHMARK(WriteDocument)->Args({500, 32})->Args({2000, 32})->Unit(benchmark::kMicrosecond);

void ReadDocument(benchmark::State& state) {
    const auto notes = static_cast<std::int32_t>(state.range(0));
    const std::string document = WriteState(Session(notes, static_cast<std::int32_t>(state.range(1))));
    for (auto _ : state) {
        const SavedState read = ReadState(document, 1.2F, notes);
        if (read.presets.size() != static_cast<std::size_t>(kPresetCount) ||
            !read.snapshots->endsWithPresentState)
            state.SkipWithError("not read to its end");
    }
}
BENCHMARK(ReadDocument)
    ->Args({500, 8})
    ->Args({500, 16})
    ->Args({500, 32})
    ->Args({2000, 32})
    ->Unit(benchmark::kMicrosecond);

void PlainCopyOfTheText(benchmark::State& state) {
    const std::string document = WriteState(Session(500, 32));
    for (auto _ : state) benchmark::DoNotOptimize(std::string(document));
}
BENCHMARK(PlainCopyOfTheText)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace sonorelle::bench
