// The list of stored arrangements: each with a name, a MIDI key that recalls it, and a play region. It is the
// panel in front of the snapshot store, and keeps the store's records and its own in step.
//
//     CkvovirelaineSnapshots panel(store, audioLock);
//     panel.SetOnChanged([&] { application.OnSnapshotDragged(); });
//     panel.SetTriggerNote(60);
//     panel.SetRegion(0, 44100);
//     panel.Add("Verse");                       // GetRowText(0) is "Verse\tC 3"
//     panel.Recall(panel.FindByKey(60));        // fires; GetRecalled() is 0
//
// Threads. FindByKey, GetKey, GetMarkers, Recall and RecallQuietly also on the audio thread: they take
// AudioLock and allocate nothing. The present key and region, the selection and GetRecalled are atomics for
// any thread. All else belongs to whoever holds the interface lock; every change of the store happens here
// under AudioLock.
//
// Keys run from 0 to 131 (octave 8 of the key field ends there; MIDI's own end is 127), -1 is none. Markers
// are samples of the melody.

#pragma once

#include "platform/critical_section.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace sonorelle {

class CSnapshotStore;
class CkvoToolkit;

struct SnapshotEntry {
    std::int32_t midiTrigger = -1; // key that recalls the snapshot
    std::int32_t markerStart = 0;  // of the play region
    std::int32_t markerEnd = 0;

    bool operator==(const SnapshotEntry&) const = default;
};

// A snapshot as a document brings it, see CSnapshotStore::ImportSnapshot.
struct SnapshotImport {
    std::span<const std::byte> data;
    float fileVersion = 1.0F;
    bool hasSizes = false;
    std::span<const std::int32_t> sizes;
};

class CkvovirelaineSnapshots {
public:
    using Callback = std::function<void()>;

    static constexpr std::int32_t kNoKey = -1;
    static constexpr std::int32_t kHighestKey = 131;
    static constexpr std::int32_t kDefaultKey = 60;
    static constexpr std::int32_t kMostSnapshots = 32;
    static constexpr std::int32_t kRoom = kMostSnapshots + 1; // with the temporary one

    static constexpr const char* kNameHeader = "Name";
    static constexpr const char* kKeyHeader = "MIDI";
    static constexpr const char* kAddLabel = "Add";
    static constexpr const char* kRenameLabel = "Rename";
    static constexpr const char* kRemoveLabel = "Remove";
    static constexpr const char* kReplaceLabel = "Replace";
    static constexpr const char* kDialogLabel = "Snapshot:";
    static constexpr const char* kCancelTip = "cancel";
    static constexpr const char* kOkayTip = "okay";
    static constexpr const char* kTip =
        "click to choose snapshot\n\nhold SHIFT and drag to sequencer to export snapshot as MIDI\n"
        "hold SHIFT+CTRL and drag to sequencer to export MIDI trigger";

    // How the present arrangement was recalled.
    enum Recalled : std::int32_t { kByKey = 0, kByMouse = 1 };

    // Both are borrowed; `lock` is the application's AudioLock.
    CkvovirelaineSnapshots(CSnapshotStore& snapshotStore, CCriticalSection& lock);
    ~CkvovirelaineSnapshots() = default;
    CkvovirelaineSnapshots(const CkvovirelaineSnapshots&) = delete;
    CkvovirelaineSnapshots& operator=(const CkvovirelaineSnapshots&) = delete;

    // Called after a recall and at a drag, on the thread that caused it.
    void SetOnChanged(Callback callback) { onChanged = std::move(callback); }

    // --- What a new snapshot takes, and what a recall brings. Any thread ---

    void SetTriggerNote(std::int32_t key); // ignored beyond -1 to kHighestKey
    void SetRegion(std::int32_t start, std::int32_t end);
    std::int32_t GetTriggerNote() const { return lastKey.load(std::memory_order_relaxed); }
    void GetRegion(std::int32_t& start, std::int32_t& end) const;
    std::int32_t GetRecalled() const { return recalled.load(std::memory_order_relaxed); } // see Recalled

    // --- The list ---

    std::int32_t GetCount() const;
    bool CanAdd() const; // the list is not full
    // Stores the present arrangement with the present key and region, or with the given ones, and selects it.
    // False at the limit of 32, and when memory runs out; nothing is added then.
    bool Add(const std::string& name);
    bool Add(const std::string& name, std::int32_t key, std::int32_t start, std::int32_t end);
    // The same of a snapshot from a document, which must fit the store. It is not selected. Room for one
    // beyond the limit: a document holds the state of its saving as its last.
    bool Import(const std::string& name, const SnapshotImport& document, const SnapshotEntry& entry);
    // Adds the present arrangement for the time of a save, beyond the limit too, and does not select it.
    // RemoveTemporary ends it and leaves the selection as it was. False when memory runs out, and when the
    // list is fuller than that already.
    bool AddTemporary(const std::string& name);
    void RemoveTemporary();
    void Rename(std::int32_t index, const std::string& name);
    // The snapshot takes the present arrangement, key and region; its name stays. False for a bad index.
    bool Replace(std::int32_t index);
    // The present arrangement stays as it is, also when it was this one. A bad index is ignored.
    void Remove(std::int32_t index);
    void Clear(); // of the store, only the snapshots
    // After the store's list was changed by somebody else: brings the entries in step with it. Missing ones
    // take the present key and region.
    void RefreshList();

    // Makes snapshot `index` the present arrangement, key and region, selects its row and tells the callback,
    // with GetRecalled 0. No undo step. False, with nothing changed, for a bad index and during a drag.
    bool Recall(std::int32_t index);
    bool RecallQuietly(std::int32_t index); // without the callback

    std::int32_t FindByKey(std::int32_t key) const; // the first with that key; -1, also for key -1
    std::int32_t GetKey(std::int32_t index) const;  // -1 for a bad index
    bool GetMarkers(std::int32_t index, std::int32_t& start, std::int32_t& end) const; // false, outputs
                                                                                       // untouched
    bool GetEntry(std::int32_t index, SnapshotEntry& entry) const;
    std::string GetName(std::int32_t index) const; // empty for a bad index
    // "Verse\tC# 3", and "Verse\t" without a key. Control characters of the name are shown as blanks. Empty
    // for a bad index.
    std::string GetRowText(std::int32_t index) const;
    static std::string FormatRow(const std::string& name, std::int32_t key);

    // The row in use; -1 for none. Selecting recalls nothing.
    std::int32_t GetSelected() const { return selected.load(std::memory_order_relaxed); }
    void Select(std::int32_t index);
    // Grows with each change of rows or selection, so that a face knows when to read them again. Any thread.
    std::uint32_t GetRevision() const { return revision.load(std::memory_order_relaxed); }

    // --- The user; nothing of this happens while the panel is disabled ---

    void SetEnabled(bool on) { enabled = on; }
    bool IsEnabled() const { return enabled; }

    std::string DefaultName() const;        // "Snapshot No. 3" behind two others
    void PressAdd(CkvoToolkit& toolkit);    // asks for a name; a full list gives a message instead
    void PressRename(CkvoToolkit& toolkit); // the selected row; asks for a name
    void PressRemove();                     // the selected row
    void PressReplace();                    // the selected row
    // A row was clicked: Recall with GetRecalled 1, and an undo step behind it.
    void Choose(std::int32_t index);

    // A drag leaves the list. With Shift the selected snapshot is exported: the callback is told, with
    // GetRecalled 1 and the keys held. Without, nothing happens but that clicks and recalls wait for its end.
    void BeginDrag(bool shift, bool ctrl);
    void EndDrag();
    bool IsDragging() const { return dragging.load(std::memory_order_relaxed); }
    bool IsShiftHeld() const { return shiftHeld; } // of the callback of a drag; false in all others
    bool IsCtrlHeld() const { return ctrlHeld; }

private:
    bool IsEntry(std::int32_t index) const;
    bool AddRecord(const std::string& name, const SnapshotEntry& entry);
    bool RecallRecord(std::int32_t index, Recalled how);
    SnapshotEntry PresentEntry() const;
    void RowsChanged() { revision.fetch_add(1, std::memory_order_relaxed); }

    CSnapshotStore& store;
    CCriticalSection& audioLock;
    Callback onChanged;

    std::vector<SnapshotEntry> entries; // AudioLock; one for each record of the store, in its order

    std::atomic<std::int32_t> lastKey{kDefaultKey};
    std::atomic<std::int32_t> lastStart{0};
    std::atomic<std::int32_t> lastEnd{0};
    std::atomic<std::int32_t> recalled{kByKey};
    std::atomic<std::int32_t> selected{-1};
    std::atomic<std::uint32_t> revision{0};
    std::atomic<bool> dragging{false};
    bool enabled = true;
    bool temporary = false; // the last record is the one of a save
    bool shiftHeld = false;
    bool ctrlHeld = false;
};

} // namespace sonorelle
