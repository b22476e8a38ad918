#include "host/c_memory_trap.h"

#include <cstddef>

namespace {

thread_local std::int64_t calls = 0;

} // namespace

// The names are the linker's (--wrap): __wrap_malloc is what callers get, __real_malloc the library's own.
extern "C" {

[[gnu::weak]] void* __real_malloc(std::size_t bytes);
[[gnu::weak]] void* __real_calloc(std::size_t count, std::size_t bytes);
[[gnu::weak]] void* __real_realloc(void* memory, std::size_t bytes);
[[gnu::weak]] void __real_free(void* memory);

void* __wrap_malloc(std::size_t bytes) {
    ++calls;
    return __real_malloc(bytes);
}
void* __wrap_calloc(std::size_t count, std::size_t bytes) {
    ++calls;
    return __real_calloc(count, bytes);
}
void* __wrap_realloc(void* memory, std::size_t bytes) {
    ++calls;
    return __real_realloc(memory, bytes);
}
void __wrap_free(void* memory) {
    ++calls;
    __real_free(memory);
}
}

namespace sonorelle::test {

bool HasMemoryTrap() { return __real_malloc != nullptr; }
std::int64_t MemoryCalls() { return calls; }

} // namespace sonorelle::test
