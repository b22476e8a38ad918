#include "app/snapshots.h"

#include "app/snapshot_store.h"
#include "app/toolkit.h"
#include "harmony/chord_names.h"
#include "harmony/pitch_class.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace sonorelle {
namespace {

constexpr std::int32_t kLowestOctave = -2;                                       // of key 0
constexpr std::size_t kLargestImport = std::numeric_limits<std::int32_t>::max(); // bytes, and sizes
constexpr const char* kFullText = "The list is full!\nRemove or replace a snapshot first.";

bool IsKey(std::int32_t key) { return key >= 0 && key <= CkvovirelaineSnapshots::kHighestKey; }

SnapshotEntry SoundEntry(SnapshotEntry entry) {
    if (!IsKey(entry.midiTrigger)) entry.midiTrigger = CkvovirelaineSnapshots::kNoKey;
    entry.markerStart = std::max(entry.markerStart, 0);
    entry.markerEnd = std::max(entry.markerEnd, entry.markerStart);
    return entry;
}

// Room for one snapshot beyond the limit while it lives; under AudioLock.
class RoomForOneMore {
public:
    explicit RoomForOneMore(CSnapshotStore& snapshotStore)
        : store(snapshotStore), limit(snapshotStore.GetSnapshotLimit()) {
        store.SetSnapshotLimit(limit + 1);
    }
    ~RoomForOneMore() { store.SetSnapshotLimit(limit); }
    RoomForOneMore(const RoomForOneMore&) = delete;
    RoomForOneMore& operator=(const RoomForOneMore&) = delete;

private:
    CSnapshotStore& store;
    std::int32_t limit;
};

} // namespace

CkvovirelaineSnapshots::CkvovirelaineSnapshots(CSnapshotStore& snapshotStore, CCriticalSection& lock)
    : store(snapshotStore), audioLock(lock) {
    entries.reserve(kRoom);
    RefreshList();
}

// The present key and region.

void CkvovirelaineSnapshots::SetTriggerNote(std::int32_t key) {
    if (IsKey(key) || key == kNoKey) lastKey.store(key, std::memory_order_relaxed);
}

void CkvovirelaineSnapshots::SetRegion(std::int32_t start, std::int32_t end) {
    lastStart.store(start, std::memory_order_relaxed);
    lastEnd.store(end, std::memory_order_relaxed);
}

void CkvovirelaineSnapshots::GetRegion(std::int32_t& start, std::int32_t& end) const {
    start = lastStart.load(std::memory_order_relaxed);
    end = lastEnd.load(std::memory_order_relaxed);
}

SnapshotEntry CkvovirelaineSnapshots::PresentEntry() const {
    SnapshotEntry entry;
    entry.midiTrigger = GetTriggerNote();
    GetRegion(entry.markerStart, entry.markerEnd);
    return SoundEntry(entry);
}

// The list.

std::int32_t CkvovirelaineSnapshots::GetCount() const {
    const SpinGuard guard(audioLock);
    return static_cast<std::int32_t>(entries.size());
}

bool CkvovirelaineSnapshots::CanAdd() const { return GetCount() < store.GetSnapshotLimit(); }

bool CkvovirelaineSnapshots::IsEntry(std::int32_t index) const {
    return index >= 0 && index < static_cast<std::int32_t>(entries.size());
}

bool CkvovirelaineSnapshots::Add(const std::string& name) {
    if (!AddRecord(name, PresentEntry())) return false;
    Select(GetCount() - 1);
    return true;
}

bool CkvovirelaineSnapshots::Add(const std::string& name, std::int32_t key, std::int32_t start,
                                 std::int32_t end) {
    if (!AddRecord(name, SoundEntry({key, start, end}))) return false;
    Select(GetCount() - 1);
    return true;
}

bool CkvovirelaineSnapshots::AddRecord(const std::string& name, const SnapshotEntry& entry) try {
    const SpinGuard guard(audioLock);
    entries.reserve(entries.size() + 1); // so that nothing fails once the store has it
    if (!store.AddSnapshot(name)) return false;
    entries.push_back(entry);
    RowsChanged();
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool CkvovirelaineSnapshots::Import(const std::string& name, const SnapshotImport& document,
                                    const SnapshotEntry& entry) try {
    const SpinGuard guard(audioLock);
    const RoomForOneMore room(store);
    entries.reserve(entries.size() + 1);
    if (document.data.size() > kLargestImport || document.sizes.size() > kLargestImport) return false;
    static constexpr std::int32_t kNoSizes = 0; // an empty list has an address too: it is not a missing one
    const std::int32_t* const sizes = document.sizes.empty() ? &kNoSizes : document.sizes.data();
    if (!store.ImportSnapshot(name, document.data.data(), static_cast<std::int32_t>(document.data.size()),
                              document.fileVersion, document.hasSizes ? sizes : nullptr,
                              static_cast<std::int32_t>(document.sizes.size())))
        return false;
    entries.push_back(SoundEntry(entry));
    RowsChanged();
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool CkvovirelaineSnapshots::AddTemporary(const std::string& name) {
    const SpinGuard guard(audioLock);
    const RoomForOneMore room(store);
    if (temporary || !AddRecord(name, PresentEntry())) return false;
    temporary = true;
    return true;
}

void CkvovirelaineSnapshots::RemoveTemporary() {
    if (!std::exchange(temporary, false)) return;
    Remove(GetCount() - 1);
}

void CkvovirelaineSnapshots::Rename(std::int32_t index, const std::string& name) {
    const SpinGuard guard(audioLock);
    if (!IsEntry(index)) return;
    store.RenameSnapshot(index, name);
    RowsChanged();
}

bool CkvovirelaineSnapshots::Replace(std::int32_t index) {
    const SpinGuard guard(audioLock);
    if (!IsEntry(index) || !store.ReplaceSnapshot(index)) return false;
    entries[static_cast<std::size_t>(index)] = PresentEntry();
    RowsChanged();
    return true;
}

void CkvovirelaineSnapshots::Remove(std::int32_t index) {
    const SpinGuard guard(audioLock);
    if (!IsEntry(index)) return;
    store.DeleteSnapshot(index);
    entries.erase(entries.begin() + index);
    const std::int32_t row = GetSelected();
    if (row == index) Select(-1);
    if (row > index) Select(row - 1);
    RowsChanged();
}

void CkvovirelaineSnapshots::Clear() {
    const SpinGuard guard(audioLock);
    while (store.GetSnapshotCount() > 0) store.DeleteSnapshot(store.GetSnapshotCount() - 1);
    entries.clear();
    temporary = false;
    Select(-1);
    RowsChanged();
}

void CkvovirelaineSnapshots::RefreshList() {
    const SpinGuard guard(audioLock);
    entries.resize(static_cast<std::size_t>(store.GetSnapshotCount()), PresentEntry());
    if (!IsEntry(GetSelected())) Select(-1);
    RowsChanged();
}

void CkvovirelaineSnapshots::Select(std::int32_t index) {
    const SpinGuard guard(audioLock);
    if (index != -1 && !IsEntry(index)) return;
    selected.store(index, std::memory_order_relaxed);
    RowsChanged();
}

// Recalling.

bool CkvovirelaineSnapshots::RecallRecord(std::int32_t index, Recalled how) {
    const SpinGuard guard(audioLock);
    if (IsDragging() || !IsEntry(index) || !store.RecallSnapshot(index)) return false;
    if (how == kByMouse) store.PushUndo();
    const SnapshotEntry& entry = entries[static_cast<std::size_t>(index)];
    recalled.store(how, std::memory_order_relaxed);
    SetTriggerNote(entry.midiTrigger);
    SetRegion(entry.markerStart, entry.markerEnd);
    Select(index);
    return true;
}

bool CkvovirelaineSnapshots::RecallQuietly(std::int32_t index) { return RecallRecord(index, kByKey); }

bool CkvovirelaineSnapshots::Recall(std::int32_t index) {
    if (!RecallQuietly(index)) return false;
    if (onChanged) onChanged();
    return true;
}

// Questions.

std::int32_t CkvovirelaineSnapshots::FindByKey(std::int32_t key) const {
    if (!IsKey(key)) return -1;
    const SpinGuard guard(audioLock);
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [key](const SnapshotEntry& entry) { return entry.midiTrigger == key; });
    return found == entries.end() ? -1 : static_cast<std::int32_t>(found - entries.begin());
}

bool CkvovirelaineSnapshots::GetEntry(std::int32_t index, SnapshotEntry& entry) const {
    const SpinGuard guard(audioLock);
    if (!IsEntry(index)) return false;
    entry = entries[static_cast<std::size_t>(index)];
    return true;
}

std::int32_t CkvovirelaineSnapshots::GetKey(std::int32_t index) const {
    SnapshotEntry entry;
    return GetEntry(index, entry) ? entry.midiTrigger : kNoKey;
}

bool CkvovirelaineSnapshots::GetMarkers(std::int32_t index, std::int32_t& start, std::int32_t& end) const {
    SnapshotEntry entry;
    if (!GetEntry(index, entry)) return false;
    start = entry.markerStart;
    end = entry.markerEnd;
    return true;
}

std::string CkvovirelaineSnapshots::GetName(std::int32_t index) const { return store.GetSnapshotName(index); }

std::string CkvovirelaineSnapshots::GetRowText(std::int32_t index) const {
    SnapshotEntry entry;
    return GetEntry(index, entry) ? FormatRow(GetName(index), entry.midiTrigger) : std::string();
}

std::string CkvovirelaineSnapshots::FormatRow(const std::string& name, std::int32_t key) {
    constexpr unsigned char kDelete = 0x7f;
    std::string row = name;
    std::replace_if(
        row.begin(), row.end(), [](unsigned char c) { return c < ' ' || c == kDelete; }, ' ');
    row += '\t';
    if (key < 0) return row;
    row += ConsortierClassic::NoteName(key % ConsortierClassic::kSemitonesInOctave, false);
    return row + ' ' + std::to_string(key / ConsortierClassic::kSemitonesInOctave + kLowestOctave);
}

// The user.

std::string CkvovirelaineSnapshots::DefaultName() const {
    return "Snapshot No. " + std::to_string(GetCount() + 1);
}

void CkvovirelaineSnapshots::PressAdd(CkvoToolkit& toolkit) {
    if (!enabled) return;
    if (!CanAdd()) {
        toolkit.ShowMessage(kWarningTitle, kFullText);
        return;
    }
    const auto name = toolkit.AskForName(kDialogLabel, DefaultName());
    if (name && !name->empty() && !Add(*name)) toolkit.ShowMessage(kWarningTitle, kFullText);
}

void CkvovirelaineSnapshots::PressRename(CkvoToolkit& toolkit) {
    const std::int32_t row = GetSelected();
    if (!enabled || row < 0) return;
    const auto name = toolkit.AskForName(kDialogLabel, GetName(row));
    if (name && !name->empty()) Rename(row, *name);
}

void CkvovirelaineSnapshots::PressRemove() {
    if (enabled) Remove(GetSelected());
}

void CkvovirelaineSnapshots::PressReplace() {
    if (enabled && !IsDragging()) Replace(GetSelected());
}

void CkvovirelaineSnapshots::Choose(std::int32_t index) {
    if (enabled && RecallRecord(index, kByMouse) && onChanged) onChanged();
}

void CkvovirelaineSnapshots::BeginDrag(bool shift, bool ctrl) {
    if (!enabled || IsDragging()) return;
    dragging.store(true, std::memory_order_relaxed);
    if (!shift || GetSelected() < 0) return;
    recalled.store(kByMouse, std::memory_order_relaxed);
    shiftHeld = shift;
    ctrlHeld = ctrl;
    if (onChanged) onChanged();
    shiftHeld = false;
    ctrlHeld = false;
}

void CkvovirelaineSnapshots::EndDrag() { dragging.store(false, std::memory_order_relaxed); }

} // namespace sonorelle
