#include "app/snapshot_block.h"

#include <algorithm>
#include <cstring>

namespace sonorelle {

SnapshotBlock BuildBlock(const SnapshotElements& elements, std::int32_t totalSize) {
    SnapshotBlock block;
    block.bytes.reserve(static_cast<std::size_t>(totalSize));
    block.sizes.reserve(elements.size());
    for (const auto& element : elements) {
        block.sizes.push_back(element->size);
        if (!element->active) continue;
        const auto* const data = static_cast<const std::byte*>(element->data);
        block.bytes.insert(block.bytes.end(), data, data + element->size);
    }
    return block;
}

bool HoldsPresentState(const SnapshotBlock& block, const SnapshotElements& elements) noexcept {
    std::size_t position = 0;
    for (const auto& element : elements) {
        const auto size = static_cast<std::size_t>(element->size);
        if (!element->active || size == 0) continue;
        if (size > block.bytes.size() - position) return false;
        if (std::memcmp(block.bytes.data() + position, element->data, size) != 0) return false;
        position += size;
    }
    return position == block.bytes.size();
}

void RestoreBlock(const SnapshotBlock& block, const SnapshotElements& elements) noexcept {
    const std::size_t count = std::min(block.sizes.size(), elements.size());
    std::size_t position = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const SnapshotElement& element = *elements[i];
        const auto size = static_cast<std::size_t>(block.sizes[i]);
        if (!element.active || size == 0) continue;
        if (size > block.bytes.size() - position) return; // elements came in between: the rest tells nothing
        const std::size_t held = std::min(size, static_cast<std::size_t>(element.size));
        if (held > 0) std::memcpy(element.data, block.bytes.data() + position, held);
        position += size;
    }
}

} // namespace sonorelle
