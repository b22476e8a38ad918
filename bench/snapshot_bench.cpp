// What a MIDI note costs the audio thread when it recalls a snapshot, and what an edit costs the interface
// when it becomes an undo step: an arrangement of 500 notes in the driver's layout. Beside them a plain copy
// of as many bytes.

#include "app/snapshot_store.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace sonorelle::bench {
namespace {

constexpr std::int32_t kSettings = 20;
constexpr std::int32_t kNoteBytes = 28;
constexpr std::int32_t kRowBytes = 16;
constexpr std::int32_t kChordBytes = 16;

// Every row in memory of its own, as the driver has them.
class Arrangement {
public:
    Arrangement(CSnapshotStore& store, std::int32_t notes) {
        for (std::int32_t i = 0; i < kSettings; ++i) Add(store, 4, 1.0F);
        Add(store, kNoteBytes * notes, 1.1F);
        for (std::int32_t i = 0; i < notes; ++i) {
            Add(store, kRowBytes, 1.0F);
            Add(store, kRowBytes, 1.1F);
        }
        Add(store, kChordBytes * notes, 1.1F);
    }
    void Edit(std::int32_t step) {
        auto& row = *pieces[static_cast<std::size_t>(kSettings + 1 + step % 100)];
        row[0] = static_cast<std::byte>(step);
        row[1] = static_cast<std::byte>(step >> 8);
    }

private:
    void Add(CSnapshotStore& store, std::int32_t size, float version) {
        pieces.push_back(std::make_unique<std::vector<std::byte>>(static_cast<std::size_t>(size)));
        store.AddElement(pieces.back()->data(), size, version);
    }
    std::vector<std::unique_ptr<std::vector<std::byte>>> pieces;
};

void RecallSnapshot(benchmark::State& state) {
    CSnapshotStore store;
    Arrangement arrangement(store, static_cast<std::int32_t>(state.range(0)));
    store.AddSnapshot("one");
    arrangement.Edit(77);
    store.AddSnapshot("two");
    std::int32_t next = 0;
    for (auto _ : state) {
        store.RecallSnapshot(next);
        next = 1 - next;
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * store.GetTotalSize());
}
BENCHMARK(RecallSnapshot)->Arg(500)->Arg(2000)->Unit(benchmark::kMicrosecond);

// The bytes of the same block in one go: what no store can be faster than.
void PlainCopy(benchmark::State& state) {
    CSnapshotStore store;
    const Arrangement arrangement(store, static_cast<std::int32_t>(state.range(0)));
    store.AddSnapshot("one");
    std::vector<std::byte> copy(static_cast<std::size_t>(store.GetSnapshotSize(0)));
    for (auto _ : state) {
        std::copy_n(store.GetSnapshotData(0), copy.size(), copy.begin());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * store.GetTotalSize());
}
BENCHMARK(PlainCopy)->Arg(500)->Arg(2000)->Unit(benchmark::kMicrosecond);

void PushUndoAfterAnEdit(benchmark::State& state) {
    CSnapshotStore store;
    Arrangement arrangement(store, static_cast<std::int32_t>(state.range(0)));
    std::int32_t step = 0;
    for (auto _ : state) {
        arrangement.Edit(++step);
        store.PushUndo();
    }
}
BENCHMARK(PushUndoAfterAnEdit)->Arg(500)->Unit(benchmark::kMicrosecond);

void UndoAndRedo(benchmark::State& state) {
    CSnapshotStore store;
    Arrangement arrangement(store, static_cast<std::int32_t>(state.range(0)));
    store.PushUndo();
    arrangement.Edit(1);
    store.PushUndo();
    for (auto _ : state) {
        store.Undo();
        store.Redo();
        benchmark::ClobberMemory();
    }
}
BENCHMARK(UndoAndRedo)->Arg(500)->Unit(benchmark::kMicrosecond);

void RegisterElements(benchmark::State& state) {
    for (auto _ : state) {
        CSnapshotStore store;
        const Arrangement arrangement(store, static_cast<std::int32_t>(state.range(0)));
        benchmark::DoNotOptimize(store.GetTotalSize());
    }
}
BENCHMARK(RegisterElements)->Arg(500)->Arg(2000)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace sonorelle::bench
