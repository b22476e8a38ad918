// Feeds any bytes to the readers of a session, a program and a dropped text. What was read is written, read
// again, and must be the same.

#include "app/state_document.h"
#include "app/snapshot_store.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using sonorelle::SavedPreset;
using sonorelle::SavedState;

constexpr float kStoreVersion = sonorelle::CSnapshotStore::kVersion;
constexpr std::int32_t kNoteCount = 2; // as the files of the corpus have it

void Check(bool holds) {
    if (!holds) std::abort();
}

void CheckBounds(const SavedState& state, std::size_t documentBytes) {
    Check(state.stop == SavedState::Stop::kNone || (!state.snapshots && state.presets.empty()));
    Check(state.presets.size() <= static_cast<std::size_t>(sonorelle::kPresetCount));
    if (!state.snapshots) return;
    Check(state.snapshots->records.size() <=
          static_cast<std::size_t>(sonorelle::SavedSnapshots::kMostRecords));
    std::size_t bytes = 0;
    for (const auto& record : state.snapshots->records)
        bytes += record.data.size() + 4 * (record.sizes ? record.sizes->size() : 0);
    Check(bytes <= documentBytes);
}

// Texts grow up to fivefold when they are written; no path of any system is so long that it then has no room.
bool HasLongText(const SavedState& state) {
    constexpr std::size_t kLongText = 6000;
    if (state.fileSettings.audioFileName->size() > kLongText) return true;
    if (!state.snapshots) return false;
    for (const auto& record : state.snapshots->records)
        if (record.name.size() > kLongText) return true;
    return false;
}

// Numbers are cut to their decimals by the first writing, and data that is no whole number of words cannot be
// written; what was written once stays the same for ever.
void CheckRoundTrip(const SavedState& state) {
    const std::string first = WriteState(state);
    if (first.empty() || HasLongText(state)) return;
    const SavedState again = sonorelle::ReadState(first, kStoreVersion, kNoteCount);
    Check(again.fileSettings.audioFileName == state.fileSettings.audioFileName);
    Check(again.snapshots.has_value() == state.snapshots.has_value());
    if (again.snapshots) Check(again.snapshots->records == state.snapshots->records);
    const std::string second = WriteState(again);
    Check(WriteState(sonorelle::ReadState(second, kStoreVersion, kNoteCount)) == second);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = sonorelle::DocumentText(data, static_cast<std::int64_t>(size));
    const auto path = sonorelle::ReadAudioFileName(text);
    const SavedState state = sonorelle::ReadState(text, kStoreVersion, kNoteCount);
    Check(state.fileSettings.audioFileName == path);
    CheckBounds(state, size);
    if (path) CheckRoundTrip(state);

    const SavedPreset preset = sonorelle::ReadProgram(text);
    const std::string program = WriteProgram(preset);
    Check(WriteProgram(sonorelle::ReadProgram(program)) == program);
    sonorelle::ReadDroppedFileName(text);
    return 0;
}
