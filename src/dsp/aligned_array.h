// A float array for vector code: aligned to a cache line, zeroed, and without exceptions.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>

namespace sonorelle {

class AlignedArray {
public:
    // Aligned to 64 bytes: enough for every vector load, and no vector straddles two cache lines.
    static constexpr std::size_t kAlignment = 64;

    // Replaces the content by `count` zeros. False when memory fails; the array is then empty.
    [[nodiscard]] bool Allocate(std::size_t count) {
        const std::size_t bytes = (count * sizeof(float) + kAlignment - 1) / kAlignment * kAlignment;
        data.reset(static_cast<float*>(std::aligned_alloc(kAlignment, std::max(bytes, kAlignment))));
        size = data ? count : 0;
        std::fill_n(data.get(), size, 0.0F);
        return data != nullptr;
    }

    float* Data() { return data.get(); }
    const float* Data() const { return data.get(); }
    std::size_t Size() const { return size; }

private:
    struct Free {
        void operator()(float* memory) const { std::free(memory); }
    };
    std::unique_ptr<float[], Free> data;
    std::size_t size = 0;
};

} // namespace sonorelle
