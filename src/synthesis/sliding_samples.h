// A stretch of samples that grows at its end and is used up at its front, planar, with index 0 always at the
// front.
//
// Dropping from the front only moves the front; the samples themselves are moved once the storage's end is
// reached, so that the cost of a block does not depend on how much history lies before it.

#pragma once

#include <cstdint>
#include <vector>

namespace sonorelle {

class SlidingSamples {
public:
    // Room for `capacity` samples a channel, all 0. Throws std::bad_alloc.
    SlidingSamples(std::int32_t channelCount, std::int32_t capacity);

    // Room from the front on, for `capacity` samples a channel; what is there stays. Throws std::bad_alloc.
    void Reserve(std::int32_t capacity);
    std::int32_t GetCapacity() const noexcept { return capacity; }

    // Forgets the first n samples (0 <= n <= capacity): what was at index n is now at index 0. `used` tells
    // how many samples from the old front on matter; only those are kept when everything has to move.
    void Drop(std::int32_t n, std::int32_t used) noexcept;

    void Clear(std::int32_t n) noexcept; // zeros at indices 0 to n - 1

    // The sample at index 0 of a channel; good for indices 0 to GetCapacity() - 1, until the next Drop or
    // Reserve.
    float* Channel(std::int32_t channel) noexcept {
        return storage[static_cast<std::size_t>(channel)].data() + front;
    }
    const float* Channel(std::int32_t channel) const noexcept {
        return storage[static_cast<std::size_t>(channel)].data() + front;
    }

private:
    std::int32_t capacity;
    std::int32_t front = 0;
    std::vector<std::vector<float>> storage; // twice the capacity each, so that moves are rare
};

} // namespace sonorelle
