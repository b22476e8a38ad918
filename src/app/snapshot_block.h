// The state of all elements at one moment, as one flat copy: undo steps and named snapshots are both this.
//
// `bytes` is the plain concatenation of all active elements, in their order, with nothing in between. What
// lies where is told by `sizes` alone: one entry for each element of that moment, those of placeholders
// included though they have no bytes in the block.

#pragma once

#include "app/snapshot_element.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sonorelle {

struct SnapshotBlock {
    std::vector<std::byte> bytes;
    std::vector<std::int32_t> sizes;
};

// Copies the memory of all active elements, `totalSize` bytes in sum. Allocates; throws std::bad_alloc.
SnapshotBlock BuildBlock(const SnapshotElements& elements, std::int32_t totalSize);

// Whether a block built now would hold the same bytes. Allocates nothing.
bool HoldsPresentState(const SnapshotBlock& block, const SnapshotElements& elements) noexcept;

// Copies the block back into the elements' memory. An element that has grown since gets its former bytes at
// its start and keeps the rest; one that came later keeps everything. Nothing is read outside the block or
// written outside an element. Allocates nothing; a flat loop of copies.
void RestoreBlock(const SnapshotBlock& block, const SnapshotElements& elements) noexcept;

} // namespace sonorelle
