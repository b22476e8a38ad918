// Memory for long arrays of floats that are filled soon after.
//
// Fresh memory costs one fault of the processor a page: with the usual small pages those take four fifths of
// the time of reading ten minutes of sound (40 ms against 10 measured). Where the system has huge pages, they
// are asked for.

#pragma once

#include <cstddef>
#include <memory>

namespace sonorelle {

struct LargeFloatsDeleter {
    void operator()(float* floats) const noexcept;
};

using LargeFloats = std::unique_ptr<float[], LargeFloatsDeleter>;

// `count` floats of no particular value; null when there is no memory. Throws nothing.
LargeFloats AllocateLargeFloats(std::size_t count) noexcept;

} // namespace sonorelle
