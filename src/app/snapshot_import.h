// Lays a block from a document out for the elements of today.
//
// The document may be older: elements that it did not know take the value that they have now, and an element
// whose form has changed since is converted from its old one. It may also be damaged or made up: it fits the
// elements or it is refused.

#pragma once

#include "app/snapshot_block.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace sonorelle {

// A block as a document holds it. Documents older than size lists have no `sizes`: every element then has the
// size of today.
struct SnapshotDocument {
    std::span<const std::byte> bytes;
    std::span<const std::int32_t> sizes; // one for each element that the document knew, placeholders included
    bool hasSizes = false;
    float version = 0.0F; // of the store that wrote it
};

// Fills `block` (a fresh one) from `document`; `storeVersion` is the version of today, `totalSize` the bytes
// of all active elements. False when a size is negative, larger than the element that it is for, or reaches
// beyond the document's bytes, or when a conversion fails; the block is then of no use. Bytes and sizes
// behind the last element are passed over. Allocates; throws std::bad_alloc.
bool LayOutDocument(const SnapshotDocument& document, const SnapshotElements& elements, float storeVersion,
                    std::int32_t totalSize, SnapshotBlock& block);

} // namespace sonorelle
