// A piece of an owner's memory that the snapshot store copies out and back in without knowing its meaning.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace sonorelle {

// Versions from here on are a second sequence: such an element stays behind all others, and what its version
// has above this is the version of the store that it came with.
inline constexpr float kSecondSequence = 10000.0F;

struct SnapshotElement;

// Turns old data into the form of today, and gives the bytes written (at most `newSize`; less leaves the rest
// of the owner's memory alone at a recall; anything else makes the import fail). Sizes are in bytes. May be
// called with `oldSize` 0, never with more bytes than the element `from` has. Neither pointer need be
// aligned. Must not throw.
using SnapshotConvert = std::int32_t (*)(const void* oldData, std::int32_t oldSize, float oldVersion,
                                         void* newData, std::int32_t newSize, float newVersion,
                                         void* context);

struct SnapshotConversion {
    SnapshotConvert convert = nullptr;
    void* context = nullptr; // handed through to `convert`
    const SnapshotElement* from = nullptr;
    const SnapshotElement* to = nullptr;
};

struct SnapshotElement {
    void* data = nullptr;  // the owner's; never freed here
    std::int32_t size = 0; // bytes, now; not negative
    float version = 0.0F; // of the store in which the element first appeared; from 10000 on a second sequence
    bool active = true; // false: a placeholder that only takes part in reading old blocks, and has no memory
    void* owner = nullptr; // free for whoever registered it
    std::optional<SnapshotConversion> conversion;
};

// Each at an address of its own, so that a conversion still finds its elements when others come in between.
using SnapshotElements = std::vector<std::unique_ptr<SnapshotElement>>;

} // namespace sonorelle
