#include "platform/large_floats.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include <sys/mman.h>

namespace sonorelle {

namespace {

constexpr std::size_t kHugePage = std::size_t{1} << 21;
constexpr std::size_t kCacheLine = 64;

std::size_t RoundedUp(std::size_t bytes, std::size_t unit) { return (bytes + unit - 1) / unit * unit; }

} // namespace

void LargeFloatsDeleter::operator()(float* floats) const noexcept { std::free(floats); }

LargeFloats AllocateLargeFloats(std::size_t count) noexcept {
    if (count > (std::numeric_limits<std::size_t>::max() - kHugePage) / sizeof(float)) return nullptr;
    const std::size_t bytes = std::max(count * sizeof(float), kCacheLine);
    const std::size_t unit = bytes < kHugePage ? kCacheLine : kHugePage;
    void* const memory = std::aligned_alloc(unit, RoundedUp(bytes, unit));
    // Advice: where it is not taken, small pages serve as well. A last page that is only begun stays small.
    if (memory != nullptr && unit == kHugePage)
        ::madvise(memory, bytes / kHugePage * kHugePage, MADV_HUGEPAGE);
    return LargeFloats(static_cast<float*>(memory));
}

} // namespace sonorelle
