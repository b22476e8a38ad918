// Counts what a thread asks of the C library's memory, operator new and delete included: malloc, calloc,
// realloc and free, as the program and the rooms in it call them. The linker puts the count in front of these
// calls in the optimised program alone; a sanitizer has its own in that place.
#pragma once

#include <cstdint>

namespace sonorelle::test {

bool HasMemoryTrap();       // whether this program counts
std::int64_t MemoryCalls(); // of the calling thread so far

} // namespace sonorelle::test
