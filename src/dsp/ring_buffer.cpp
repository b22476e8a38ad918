#include "dsp/ring_buffer.h"

#include "platform/result_codes.h"

#include <algorithm>
#include <bit>
#include <new>

namespace sonorelle {

std::uint32_t RingSize(std::uint32_t length) {
    if (length < 2) return 1;
    const auto bits = static_cast<std::uint32_t>(std::bit_width(length));
    const std::uint32_t half = 1u << (bits - 1);
    if (length % half == 0) return half;
    return bits < 32 ? half << 1 : 0;
}

std::int32_t RingBuffer::Create(std::unique_ptr<RingBuffer>& ring, std::uint32_t length) {
    const std::uint32_t size = RingSize(length);
    if (size == 0) return kBadArgument;
    try {
        auto made = std::make_unique<RingBuffer>();
        made->data.resize(size);
        made->size = size;
        made->mask = size - 1;
        ring = std::move(made);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kOk;
}

void RingBuffer::Clear() noexcept {
    std::fill(data.begin(), data.end(), 0.0f);
    readIndex = writeIndex = lastIndex = 0;
}

void RingBuffer::Write(const float* samples, std::uint32_t n) noexcept {
    lastIndex = writeIndex;
    const std::uint32_t skipped = n > size ? n - size : 0;
    const std::uint32_t start = (writeIndex + skipped) & mask;
    const std::uint32_t kept = n - skipped;
    const std::uint32_t firstRun = std::min(kept, size - start);
    std::copy_n(samples + skipped, firstRun, data.data() + start);
    std::copy_n(samples + skipped + firstRun, kept - firstRun, data.data());
    writeIndex = (writeIndex + n) & mask;
}

void RingBuffer::Peek(float* samples, std::uint32_t n) const noexcept {
    const std::uint32_t start = readIndex & mask;
    const std::uint32_t copied = std::min(n, size);
    const std::uint32_t firstRun = std::min(copied, size - start);
    std::copy_n(data.data() + start, firstRun, samples);
    std::copy_n(data.data(), copied - firstRun, samples + firstRun);
}

void RingBuffer::Read(float* samples, std::uint32_t n) noexcept {
    Peek(samples, n);
    Skip(std::min(n, size));
}

} // namespace sonorelle
