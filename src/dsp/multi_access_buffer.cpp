#include "dsp/multi_access_buffer.h"

#include "platform/result_codes.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

namespace sonorelle {

namespace {

// Differences and sums of absolute positions, which may have passed 2^31.
std::int32_t Difference(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

std::int32_t Sum(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

std::size_t Bytes(std::int32_t samples) { return static_cast<std::size_t>(samples) * sizeof(float); }

} // namespace

std::int32_t CMultiAccessBuffer::Create(std::unique_ptr<CMultiAccessBuffer>& buffer, std::int32_t capacity,
                                        std::int32_t channelCount, std::int32_t readerCount) {
    if (channelCount < 1 || channelCount > 2 || capacity < 1 || readerCount < 1) return kBadArgument;
    try {
        buffer.reset(new CMultiAccessBuffer(capacity, channelCount, readerCount));
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kOk;
}

CMultiAccessBuffer::CMultiAccessBuffer(std::int32_t samples, std::int32_t channels, std::int32_t readers)
    : capacity(samples), readerCount(readers), channelCount(channels),
      readPositions(static_cast<std::size_t>(readers)) {
    for (std::int32_t channel = 0; channel < channelCount; ++channel) {
        data[channel].resize(static_cast<std::size_t>(capacity));
    }
}

void CMultiAccessBuffer::Reset() noexcept {
    fill = 0;
    written = 0;
    std::fill(readPositions.begin(), readPositions.end(), 0);
}

void CMultiAccessBuffer::SetKeep(std::int32_t samples) noexcept { keep = std::max(samples, 0); }

void CMultiAccessBuffer::SetReadPosition(std::int32_t reader, std::int32_t position) noexcept {
    if (IsReader(reader)) readPositions[static_cast<std::size_t>(reader)] = position;
}

std::int32_t CMultiAccessBuffer::Write(const float* const* channelBuffers, std::int32_t n) noexcept {
    if (n < 0 || n > capacity - fill) return kBadArgument;
    if (n == 0) return kOk;
    for (std::int32_t channel = 0; channel < channelCount; ++channel) {
        std::memcpy(data[channel].data() + fill, channelBuffers[channel], Bytes(n));
    }
    fill += n;
    written = Sum(written, n);
    return kOk;
}

std::int32_t CMultiAccessBuffer::GetAvailable(std::int32_t reader) const noexcept {
    if (!IsReader(reader)) return 0;
    return Difference(written, readPositions[static_cast<std::size_t>(reader)]);
}

std::int32_t CMultiAccessBuffer::Read(std::int32_t reader, float* const* channelBuffers,
                                      std::int32_t n) noexcept {
    const std::int32_t available = GetAvailable(reader);
    n = std::min(n, available);
    if (n < 1) return 0;
    if (available > fill) return 0; // the reader stands before what is held

    const std::int32_t from = fill - available;
    for (std::int32_t channel = 0; channel < channelCount; ++channel) {
        std::memcpy(channelBuffers[channel], data[channel].data() + from, Bytes(n));
    }
    std::int32_t& position = readPositions[static_cast<std::size_t>(reader)];
    position = Sum(position, n);
    DropPassedSamples();
    return n;
}

std::int32_t CMultiAccessBuffer::LargestLag() const noexcept {
    std::int32_t lag = 0;
    for (const std::int32_t position : readPositions) lag = std::max(lag, Difference(written, position));
    return lag;
}

void CMultiAccessBuffer::DropPassedSamples() noexcept {
    const std::int64_t passed = std::int64_t{fill} - keep - LargestLag();
    if (passed < 1 || passed < keep) return;
    const auto dropped = static_cast<std::int32_t>(passed);
    fill -= dropped;
    for (std::int32_t channel = 0; channel < channelCount; ++channel) {
        float* const samples = data[channel].data();
        std::memmove(samples, samples + dropped, Bytes(fill));
    }
}

} // namespace sonorelle
