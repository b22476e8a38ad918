// Which samples of a grain lie in a buffer. Those that do not are neither read nor written: in front of the
// output they would never be handed out, and outside the input there is silence.

#pragma once

#include <algorithm>
#include <cstdint>

namespace sonorelle {

// Samples `begin` to `end` - 1 of a grain; none when they are equal.
struct GrainRange {
    std::int32_t begin;
    std::int32_t end;

    // Of `samples` samples, the first of which lies at index `first` of a buffer of `size` samples.
    static GrainRange Inside(std::int64_t first, std::int32_t samples, std::int32_t size) {
        const std::int64_t count = std::max(samples, 0);
        const std::int64_t begin = std::clamp<std::int64_t>(-first, 0, count);
        const std::int64_t end = std::clamp<std::int64_t>(size - first, begin, count);
        return {static_cast<std::int32_t>(begin), static_cast<std::int32_t>(end)};
    }

    bool IsEmpty() const { return begin >= end; }
    std::int32_t Count() const { return end - begin; }

    // What both hold. Empty, it lies within this one all the same.
    GrainRange And(const GrainRange& other) const {
        const std::int32_t first = std::clamp(other.begin, begin, end);
        return {first, std::clamp(other.end, first, end)};
    }
};

} // namespace sonorelle
