// The memory of the arrangement: undo, named snapshots and the saved state, for raw memory that its owners
// register.
//
// An owner registers pieces of its own memory as elements (a setting, the pitches of one note, the chord
// list) and is done: the store copies all of them into one block and copies such blocks back, byte for byte.
// It never calls its owners; after Undo, Redo or RecallSnapshot the caller asks them to look at their memory
// again.
//
//     CSnapshotStore store;
//     store.AddElement(&root, sizeof root, 1.0F, true, this);
//     store.PushUndo(); // the state that Undo never goes behind
//     root = 7;
//     store.PushUndo();
//     store.Undo(); // root is what it was
//
// Order. Elements lie in a block by rising version, equal versions in the order of registration. Versions of
// 10000 and above are a second sequence, behind all others and always in the order of registration: what is
// registered while there already are undo steps or snapshots (the notes that a split adds) takes one of
// those, since blocks tell elements apart by their place alone.
//
// Threads. No lock of its own. Whatever changes elements, undo steps or snapshots, or copies into the owners'
// memory, runs under the application's AudioLock once audio runs: a MIDI note recalls snapshots from the
// audio thread. Undo, Redo and RecallSnapshot allocate nothing, and cost a flat copy: a few microseconds for
// 500 notes.
//
// Failure. Nothing throws. Bad indexes are ignored or answered as told below. When memory runs out, the
// operation does nothing: no step is pushed, no snapshot added, the element is not registered.

#pragma once

#include "app/snapshot_block.h"
#include "app/snapshot_element.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace sonorelle {

class CSnapshotStore {
public:
    static constexpr float kVersion = 1.2F;            // of the set of elements that this program registers
    static constexpr std::int32_t kUndoLimit = 32;     // steps
    static constexpr std::int32_t kSnapshotLimit = 32; // records

    // A limit below 1 leaves no room for snapshots, and room for the present state alone among the undo
    // steps.
    explicit CSnapshotStore(float version = kVersion, std::int32_t undoLimit = kUndoLimit,
                            std::int32_t snapshotLimit = kSnapshotLimit) noexcept;
    ~CSnapshotStore() = default;
    CSnapshotStore(const CSnapshotStore&) = delete;
    CSnapshotStore& operator=(const CSnapshotStore&) = delete;

    // Registers `size` bytes at `data`, which must stay there until ReplaceElement or ClearAll. With `active`
    // false it is a placeholder of that size: it has no part in blocks, `data` may be null, and only old
    // documents hold bytes for it.
    //
    // Gives the place of the element. It is 0 whatever the place when `version` is of the second sequence,
    // whose elements are never named by index. -1 when memory ran out. A negative size, memory that is not
    // there, and a size that would take the sum beyond 2^31 - 1 count as 0 bytes.
    std::int32_t AddElement(void* data, std::int32_t size, float version, bool active = true,
                            void* owner = nullptr) noexcept;

    // The owner has moved an element: the first with exactly this memory and size gets the new ones. Blocks
    // that hold the old size stay restorable. Unknown memory is ignored.
    void ReplaceElement(const void* oldData, std::int32_t oldSize, void* newData,
                        std::int32_t newSize) noexcept;

    // Documents of exactly the version of the placeholder `fromIndex` fill the element `toIndex` through
    // `convert`. Both are places as AddElement gave them, as they are now: a later element of a lower version
    // moves them.
    void SetConversion(std::int32_t fromIndex, std::int32_t toIndex, SnapshotConvert convert,
                       void* context) noexcept;

    // Makes the present state the newest undo step and drops the steps that were undone; the oldest makes
    // room at the limit. A state equal to the newest step leaves none.
    void PushUndo() noexcept;
    // One step back or forward; false, with nothing changed, when there is none. The first state is never
    // undone.
    bool Undo() noexcept;
    bool Redo() noexcept;

    // How many snapshots there may be. Raised by one while the present state joins a full list for the time
    // of a save or a load; lowering it removes none.
    void SetSnapshotLimit(std::int32_t limit) noexcept { snapshotLimit_ = limit; }
    std::int32_t GetSnapshotLimit() const noexcept { return snapshotLimit_; }

    // Keeps the present state under `name`. False at the limit; nothing is added then, and the name is lost.
    bool AddSnapshot(std::string name) noexcept;
    // Puts the present state in the place of an older one; the name stays.
    bool ReplaceSnapshot(std::int32_t index) noexcept;
    bool RecallSnapshot(std::int32_t index) noexcept; // false for a bad index
    void DeleteSnapshot(std::int32_t index) noexcept; // later ones move down
    void RenameSnapshot(std::int32_t index, std::string name) noexcept;

    std::int32_t GetSnapshotCount() const noexcept;
    std::string GetSnapshotName(std::int32_t index) const;               // empty for a bad index
    const std::byte* GetSnapshotData(std::int32_t index) const noexcept; // null for a bad index
    std::int32_t GetSnapshotSize(std::int32_t index) const noexcept;     // bytes; 0 for a bad index
    std::int32_t GetSizeCount(std::int32_t index) const noexcept;        // 0 for a bad index
    // Copies the GetSizeCount(index) sizes of the record, as many as `sizes` has room for. A bad index is
    // ignored.
    void GetSizes(std::int32_t index, std::span<std::int32_t> sizes) const noexcept;

    // Whether a document of this version can be read: not when it is newer than the store, in whole
    // thousandths (1.2004 is not newer than 1.2, 1.201 is).
    bool CanImport(float fileVersion) const noexcept;

    // Adds a snapshot from a document: `data` as GetSnapshotData gave it, with GetSizes, to a store of
    // `fileVersion`. `sizes` null: the document is older than size lists. Elements that the document did not
    // know take the value that they have now. False, with nothing changed, at the limit, for a newer
    // document, and for one that does not fit the elements (see LayOutDocument); the arguments may hold
    // anything, as long as `dataSize` bytes and `sizeCount` numbers are there.
    bool ImportSnapshot(std::string name, const void* data, std::int32_t dataSize, float fileVersion,
                        const std::int32_t* sizes, std::int32_t sizeCount) noexcept;

    // Forgets elements, undo steps and snapshots: the owners may then free their memory.
    void ClearAll() noexcept;
    void ClearHistory() noexcept; // undo steps and snapshots alone

    float GetVersion() const noexcept { return version_; }
    std::int32_t GetTotalSize() const noexcept { return totalSize_; } // bytes of a block built now
    std::int32_t GetUndoCount() const noexcept; // steps, those that were undone included
    std::int32_t GetUndoIndex() const noexcept {
        return undoIndex_;
    } // steps that count as done; the last is now
    std::int32_t GetElementCount() const noexcept;
    const SnapshotElement* GetElement(std::int32_t index) const noexcept; // null for a bad index

private:
    struct Snapshot {
        std::string name;
        SnapshotBlock block;
    };

    const Snapshot* Find(std::int32_t index) const noexcept;
    bool IsElement(std::int32_t index) const noexcept;
    bool HasRoomForSnapshot() const noexcept;
    std::int32_t HeldSize(const void* data, std::int32_t size, bool active,
                          std::int32_t replaced) const noexcept;

    SnapshotElements elements_;
    std::vector<SnapshotBlock> undoStack_;
    std::vector<Snapshot> snapshots_;
    std::int32_t undoLimit_;
    std::int32_t snapshotLimit_;
    std::int32_t totalSize_ = 0;
    std::int32_t undoIndex_ = 0;
    float version_;
};

} // namespace sonorelle
