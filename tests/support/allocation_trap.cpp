#include "support/allocation_trap.h"

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();

thread_local std::int64_t allocations = 0;
thread_local std::int64_t allowed = kNoLimit;

} // namespace

// Not inlined: the compiler would take the pair for a mismatch of new and free.
// All forms but the aligned ones: address sanitizer would mix its own with these.
[[gnu::noinline]] void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    ++allocations;
    void* const memory = allowed > 0 ? std::malloc(bytes > 0 ? bytes : 1) : nullptr;
    if (memory != nullptr) --allowed;
    return memory;
}
[[gnu::noinline]] void* operator new(std::size_t bytes) {
    if (void* const memory = operator new(bytes, std::nothrow)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new[](std::size_t bytes) { return operator new(bytes); }
[[gnu::noinline]] void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return operator new(bytes, std::nothrow);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace sonorelle::test {

std::int64_t AllocationCount() { return allocations; }

AllocationLimit::AllocationLimit(std::int64_t count) { allowed = count; }
AllocationLimit::~AllocationLimit() { allowed = kNoLimit; }

} // namespace sonorelle::test
