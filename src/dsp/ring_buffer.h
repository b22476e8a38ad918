// A ring of f32 samples whose size is a power of two, so that indices wrap with a mask.
//
// One thread uses a ring at a time. Only Create allocates; everything else is at most two copies.
//
// readIndex and writeIndex are free to set to any value (they are masked when used): the pitch tracker starts
// with readIndex = size - windowLength + hop, so that its first frame begins with silence.

#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle {

// The size of the ring for `length` samples: the next power of two not below it. Found through the number of
// bits b of the length: 2^(b-1) where the length is a multiple of that, else 2^b. 1 for a length of 0 or 1;
// 0 for a length above 2^31, whose size no u32 holds. RingSize(1000) = 1024, RingSize(1024) = 1024.
std::uint32_t RingSize(std::uint32_t length);

struct RingBuffer {
    std::uint32_t readIndex = 0;
    std::uint32_t writeIndex = 0;
    std::uint32_t lastIndex = 0; // writeIndex as it was before the last write
    std::uint32_t size = 0;      // samples, a power of two
    std::uint32_t mask = 0;      // size - 1
    std::vector<float> data;

    // A ring of RingSize(length) zeros with both indices at 0. kBadArgument for a length above 2^31,
    // kOutOfMemory; `ring` is then untouched.
    static std::int32_t Create(std::unique_ptr<RingBuffer>& ring, std::uint32_t length);

    // Zeros everywhere, all three indices at 0.
    void Clear() noexcept;

    // Writes n samples at writeIndex, which moves on; lastIndex tells where they begin. Of more than `size`
    // samples only the newest `size` remain, where they would lie had all been written in turn. Unread
    // samples may be overwritten: nothing stops the writer.
    void Write(const float* samples, std::uint32_t n) noexcept;

    // Copies n samples from readIndex, and moves it on (Peek leaves it). Not held back by the writer: what
    // lies beyond writeIndex are the samples of the round before. Of n above `size` only `size` are copied.
    void Read(float* samples, std::uint32_t n) noexcept;
    void Peek(float* samples, std::uint32_t n) const noexcept;
    void Skip(std::uint32_t n) noexcept { readIndex = (readIndex + n) & mask; }

    // Samples from readIndex to writeIndex, 0 to size - 1: a ring that is full to the brim counts as empty.
    std::uint32_t Available() const noexcept { return (writeIndex - readIndex) & mask; }
};

} // namespace sonorelle
