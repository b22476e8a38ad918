// Counts what is allocated, and lets allocations fail. A test program that uses it gets its operator new from
// here.
#pragma once

#include <cstdint>

namespace sonorelle::test {

// What this thread has allocated so far with operator new.
std::int64_t AllocationCount();

// Lets `count` more allocations of this thread succeed; the next throw std::bad_alloc, until the scope ends.
class AllocationLimit {
public:
    explicit AllocationLimit(std::int64_t count);
    ~AllocationLimit();
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
};

} // namespace sonorelle::test
