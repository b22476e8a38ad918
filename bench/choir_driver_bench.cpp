// What a user waits for after each change of a setting: all voices of a melody of 500 notes made anew, in
// every style and arrangement. In the intelligent style once with the chords found anew and once with those
// that are there.

#include "app/snapshot_store.h"
#include "harmony/choir_driver.h"
#include "harmony/styles.h"
#include "support/analysed_melody_fixture.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle::bench {
namespace {

using namespace ConsortierClassic;

constexpr std::int32_t kNotes = 500;

// A melody that wanders by up to a fourth, always the same, each note up to 40 cents off.
std::vector<float> MidiPitches() {
    std::vector<float> pitches;
    std::uint32_t state = 1;
    std::int32_t pitch = kMiddleC;
    for (std::int32_t note = 0; note < kNotes; ++note) {
        state = state * 1664525u + 1013904223u;
        pitch += static_cast<std::int32_t>((state >> 16) % 11) - 5 - (pitch - kMiddleC) / 8;
        const auto cents = static_cast<float>(static_cast<std::int32_t>((state >> 8) % 81) - 40);
        pitches.push_back(static_cast<float>(pitch) + cents / 100.0F);
    }
    return pitches;
}

void RunDriver(benchmark::State& state, std::int32_t style, std::int32_t arrangement, bool newChords) {
    test::AnalysedMelody melody(test::EvenNotes(MidiPitches()));
    CSnapshotStore store;
    CChoirDriver driver(melody.Analyzer(), store);
    driver.SetManualOnly(style == kStyleParallel);
    driver.SetStyle(style);
    driver.SetArrangement(arrangement);
    driver.SetVoiceRange(1);
    driver.SetSpread(0.6F);
    if (driver.Run() != 0 || driver.GetNoteCount() != kNotes) state.SkipWithError("no melody");
    driver.SetAutoKey(false);
    for (auto _ : state) {
        driver.SetChordsDirty(newChords);
        driver.Run();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kNotes);
    store.ClearAll();
}

void Register(const std::string& name, std::int32_t style, std::int32_t arrangement, bool newChords) {
    std::string title = "Run500/" + name;
    std::replace(title.begin(), title.end(), ' ', '_'); // run.sh reads columns
    benchmark::RegisterBenchmark(title.c_str(), RunDriver, style, arrangement, newChords)
        ->Unit(benchmark::kMicrosecond);
}

void RegisterStyle(const StyleEntry& entry) {
    for (std::int32_t i = 0; i < entry.arrangementCount; ++i) {
        const std::int32_t arrangement = entry.arrangement + i;
        std::string name = entry.name;
        for (const ArrangementEntry& known : ArrangementList(entry.style))
            if (known.arrangement == arrangement && entry.arrangementCount > 1)
                name += std::string("/") + known.name;
        Register(name, entry.style, arrangement, true);
        if (entry.style == kStyleIntelligent)
            Register(name + "/chords kept", entry.style, arrangement, false);
    }
}

[[maybe_unused]] const bool kRegistered = [] {
    for (const StyleEntry& entry : StyleList()) RegisterStyle(entry);
    return true;
}();

} // namespace
} // namespace sonorelle::bench
