// The choir engine as a run of the arranger asks it: a melody of 500 notes, its chords, and its voices. The
// argument of the voicing is the mode (0 four voices, 1 three, 2 two).

#include "harmony/consortier.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace sonorelle::ConsortierClassic {
namespace {

constexpr std::int32_t kNotes = 500;

using Row = std::array<std::int32_t, kVoiceSlots>;

// A melody that wanders by up to a fourth, always the same.
std::vector<std::int32_t> Melody() {
    std::vector<std::int32_t> pitches;
    std::uint32_t state = 1;
    std::int32_t pitch = kMiddleC;
    for (std::int32_t note = 0; note < kNotes; ++note) {
        state = state * 1664525u + 1013904223u;
        pitch += static_cast<std::int32_t>((state >> 16) % 11) - 5 - (pitch - kMiddleC) / 8;
        pitches.push_back(pitch);
    }
    return pitches;
}

std::vector<ChordRecord> Chords(const CConsortier& engine, const std::vector<std::int32_t>& pitches) {
    std::vector<ChordRecord> chords(pitches.size());
    engine.FindChordPath(pitches.data(), chords.data(), kNotes);
    return chords;
}

void FindChordPathOf500(benchmark::State& state) {
    const CConsortier engine;
    const auto pitches = Melody();
    std::vector<ChordRecord> chords(pitches.size());
    for (auto _ : state) {
        engine.FindChordPath(pitches.data(), chords.data(), kNotes);
        benchmark::DoNotOptimize(chords.data());
    }
    state.SetItemsProcessed(state.iterations() * kNotes);
}
BENCHMARK(FindChordPathOf500)->Unit(benchmark::kMicrosecond);

void Voice(benchmark::State& state, const std::vector<ChordRecord>& chords, CConsortier& engine,
           const std::vector<std::int32_t>& pitches) {
    Row row{};
    for (auto _ : state) {
        engine.Reset();
        for (std::size_t i = 0; i < pitches.size(); ++i)
            engine.GenerateVoices(pitches[i], row.data(), chords[i]);
        benchmark::DoNotOptimize(row);
    }
    state.SetItemsProcessed(state.iterations() * kNotes);
}

void VoiceTriadsOf500(benchmark::State& state) {
    CConsortier engine;
    engine.SetVoiceMode(static_cast<std::int32_t>(state.range(0)));
    const auto pitches = Melody();
    Voice(state, Chords(engine, pitches), engine, pitches);
}
BENCHMARK(VoiceTriadsOf500)->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);

void VoiceSeventhsOf500(benchmark::State& state) {
    CConsortier engine;
    engine.SetVoiceMode(static_cast<std::int32_t>(state.range(0)));
    const auto pitches = Melody();
    std::vector<ChordRecord> chords = Chords(engine, pitches);
    for (ChordRecord& chord : chords) chord = {chord.root, kTetradNotes, kNoTriad, kDominantSeventh};
    Voice(state, chords, engine, pitches);
}
BENCHMARK(VoiceSeventhsOf500)->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);

void DropTwoOf500(benchmark::State& state) {
    CConsortier engine;
    const auto pitches = Melody();
    Row row{};
    for (auto _ : state) {
        for (std::size_t i = 0; i + 1 < pitches.size(); ++i)
            engine.GenerateBlock(pitches[i], pitches[i + 1], row.data(), 5);
        benchmark::DoNotOptimize(row);
    }
    state.SetItemsProcessed(state.iterations() * kNotes);
}
BENCHMARK(DropTwoOf500)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace sonorelle::ConsortierClassic
