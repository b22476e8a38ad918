#include "app/snapshot_store.h"

#include "app/snapshot_import.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

namespace sonorelle {

CSnapshotStore::CSnapshotStore(float version, std::int32_t undoLimit, std::int32_t snapshotLimit) noexcept
    : undoLimit_(undoLimit), snapshotLimit_(snapshotLimit), version_(version) {}

// Elements.

std::int32_t CSnapshotStore::AddElement(void* data, std::int32_t size, float version, bool active,
                                        void* owner) noexcept try {
    const bool behindAll = version >= kSecondSequence;
    const auto place = behindAll
                           ? elements_.end()
                           : std::partition_point(elements_.begin(), elements_.end(),
                                                  [version](const auto& e) { return e->version <= version; });
    const auto index = static_cast<std::int32_t>(place - elements_.begin());
    const std::int32_t held = HeldSize(data, size, active, 0);
    auto element = std::make_unique<SnapshotElement>();
    element->data = data;
    element->size = held;
    element->version = version;
    element->active = active;
    element->owner = owner;
    elements_.insert(place, std::move(element));
    if (active) totalSize_ += held;
    return behindAll ? 0 : index;
} catch (const std::bad_alloc&) {
    return -1;
}

void CSnapshotStore::ReplaceElement(const void* oldData, std::int32_t oldSize, void* newData,
                                    std::int32_t newSize) noexcept {
    const auto found = std::find_if(elements_.begin(), elements_.end(), [oldData, oldSize](const auto& e) {
        return e->data == oldData && e->size == oldSize;
    });
    if (found == elements_.end()) return;
    SnapshotElement& element = **found;
    const std::int32_t held = HeldSize(newData, newSize, element.active, element.size);
    if (element.active) totalSize_ += held - element.size;
    element.data = newData;
    element.size = held;
}

void CSnapshotStore::SetConversion(std::int32_t fromIndex, std::int32_t toIndex, SnapshotConvert convert,
                                   void* context) noexcept {
    if (!IsElement(fromIndex) || !IsElement(toIndex) || convert == nullptr) return;
    SnapshotElement& from = *elements_[static_cast<std::size_t>(fromIndex)];
    const SnapshotElement& to = *elements_[static_cast<std::size_t>(toIndex)];
    from.conversion = {convert, context, &from, &to};
}

// What an element of `size` bytes counts as, in the place of one of `replaced` bytes.
std::int32_t CSnapshotStore::HeldSize(const void* data, std::int32_t size, bool active,
                                      std::int32_t replaced) const noexcept {
    if (size < 0) return 0;
    if (!active) return size;
    const std::int32_t others = totalSize_ - replaced;
    return data != nullptr && size <= std::numeric_limits<std::int32_t>::max() - others ? size : 0;
}

bool CSnapshotStore::IsElement(std::int32_t index) const noexcept {
    return index >= 0 && index < GetElementCount();
}

std::int32_t CSnapshotStore::GetElementCount() const noexcept {
    return static_cast<std::int32_t>(elements_.size());
}

const SnapshotElement* CSnapshotStore::GetElement(std::int32_t index) const noexcept {
    return IsElement(index) ? elements_[static_cast<std::size_t>(index)].get() : nullptr;
}

// Undo.

void CSnapshotStore::PushUndo() noexcept try {
    undoStack_.erase(undoStack_.begin() + undoIndex_, undoStack_.end());
    if (!undoStack_.empty() && HoldsPresentState(undoStack_.back(), elements_)) return;
    SnapshotBlock block = BuildBlock(elements_, totalSize_);
    undoStack_.reserve(undoStack_.size() + 1);
    while (!undoStack_.empty() && GetUndoCount() >= undoLimit_) undoStack_.erase(undoStack_.begin());
    undoStack_.push_back(std::move(block));
    undoIndex_ = GetUndoCount();
} catch (const std::bad_alloc&) {
    return;
}

bool CSnapshotStore::Undo() noexcept {
    if (undoIndex_ < 2) return false;
    --undoIndex_;
    RestoreBlock(undoStack_[static_cast<std::size_t>(undoIndex_ - 1)], elements_);
    return true;
}

bool CSnapshotStore::Redo() noexcept {
    if (undoIndex_ >= GetUndoCount()) return false;
    ++undoIndex_;
    RestoreBlock(undoStack_[static_cast<std::size_t>(undoIndex_ - 1)], elements_);
    return true;
}

std::int32_t CSnapshotStore::GetUndoCount() const noexcept {
    return static_cast<std::int32_t>(undoStack_.size());
}

// Snapshots.

bool CSnapshotStore::AddSnapshot(std::string name) noexcept try {
    if (!HasRoomForSnapshot()) return false;
    snapshots_.push_back({std::move(name), BuildBlock(elements_, totalSize_)});
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool CSnapshotStore::ReplaceSnapshot(std::int32_t index) noexcept try {
    if (Find(index) == nullptr) return false;
    snapshots_[static_cast<std::size_t>(index)].block = BuildBlock(elements_, totalSize_);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool CSnapshotStore::RecallSnapshot(std::int32_t index) noexcept {
    const Snapshot* const snapshot = Find(index);
    if (snapshot == nullptr) return false;
    RestoreBlock(snapshot->block, elements_);
    return true;
}

void CSnapshotStore::DeleteSnapshot(std::int32_t index) noexcept {
    if (Find(index) != nullptr) snapshots_.erase(snapshots_.begin() + index);
}

void CSnapshotStore::RenameSnapshot(std::int32_t index, std::string name) noexcept {
    if (Find(index) != nullptr) snapshots_[static_cast<std::size_t>(index)].name = std::move(name);
}

std::int32_t CSnapshotStore::GetSnapshotCount() const noexcept {
    return static_cast<std::int32_t>(snapshots_.size());
}

std::string CSnapshotStore::GetSnapshotName(std::int32_t index) const {
    const Snapshot* const snapshot = Find(index);
    return snapshot == nullptr ? std::string() : snapshot->name;
}

const std::byte* CSnapshotStore::GetSnapshotData(std::int32_t index) const noexcept {
    const Snapshot* const snapshot = Find(index);
    return snapshot == nullptr ? nullptr : snapshot->block.bytes.data();
}

std::int32_t CSnapshotStore::GetSnapshotSize(std::int32_t index) const noexcept {
    const Snapshot* const snapshot = Find(index);
    return snapshot == nullptr ? 0 : static_cast<std::int32_t>(snapshot->block.bytes.size());
}

std::int32_t CSnapshotStore::GetSizeCount(std::int32_t index) const noexcept {
    const Snapshot* const snapshot = Find(index);
    return snapshot == nullptr ? 0 : static_cast<std::int32_t>(snapshot->block.sizes.size());
}

void CSnapshotStore::GetSizes(std::int32_t index, std::span<std::int32_t> sizes) const noexcept {
    const Snapshot* const snapshot = Find(index);
    if (snapshot == nullptr) return;
    std::copy_n(snapshot->block.sizes.begin(), std::min(snapshot->block.sizes.size(), sizes.size()),
                sizes.begin());
}

const CSnapshotStore::Snapshot* CSnapshotStore::Find(std::int32_t index) const noexcept {
    return index >= 0 && index < GetSnapshotCount() ? &snapshots_[static_cast<std::size_t>(index)] : nullptr;
}

bool CSnapshotStore::HasRoomForSnapshot() const noexcept { return GetSnapshotCount() < snapshotLimit_; }

// Documents.

bool CSnapshotStore::CanImport(float fileVersion) const noexcept {
    // In f32, where 1.201 x 1000 is 1201; in f64 the error of the f32 number would show, and 1200.99 pass
    // for 1.2.
    constexpr float kThousandths = 1000.0F;
    return std::floor(fileVersion * kThousandths) <= std::floor(version_ * kThousandths);
}

bool CSnapshotStore::ImportSnapshot(std::string name, const void* data, std::int32_t dataSize,
                                    float fileVersion, const std::int32_t* sizes,
                                    std::int32_t sizeCount) noexcept try {
    if (!HasRoomForSnapshot() || !CanImport(fileVersion)) return false;
    if (dataSize < 0 || (data == nullptr && dataSize > 0) || (sizes != nullptr && sizeCount < 0))
        return false;

    SnapshotDocument document;
    document.bytes = {static_cast<const std::byte*>(data), static_cast<std::size_t>(dataSize)};
    document.hasSizes = sizes != nullptr;
    if (document.hasSizes) document.sizes = {sizes, static_cast<std::size_t>(sizeCount)};
    document.version = fileVersion;

    SnapshotBlock block;
    if (!LayOutDocument(document, elements_, version_, totalSize_, block)) return false;
    snapshots_.push_back({std::move(name), std::move(block)});
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

// Forgetting.

void CSnapshotStore::ClearAll() noexcept {
    ClearHistory();
    elements_.clear();
    totalSize_ = 0;
}

void CSnapshotStore::ClearHistory() noexcept {
    undoStack_.clear();
    snapshots_.clear();
    undoIndex_ = 0;
}

} // namespace sonorelle
