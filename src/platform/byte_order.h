// Numbers as big-endian bytes, whatever the machine's own order. Nothing is checked: the bytes must be there.
//
// Floats travel as plain 32-bit words and are never computed with, so that every value comes back to the bit,
// those that are not a number included.

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace sonorelle {

namespace byte_order_detail {

// Compilers know this pattern and make one instruction of it.
constexpr std::uint32_t Swapped(std::uint32_t word) {
    return word >> 24 | (word >> 8 & 0xff00u) | (word << 8 & 0xff0000u) | word << 24;
}

constexpr std::uint32_t BigEndianWord(std::uint32_t word) {
    return std::endian::native == std::endian::big ? word : Swapped(word);
}

} // namespace byte_order_detail

inline std::uint32_t ReadBigEndianU32(const void* from) {
    std::uint32_t word;
    std::memcpy(&word, from, sizeof word);
    return byte_order_detail::BigEndianWord(word);
}

inline void WriteBigEndianU32(void* to, std::uint32_t value) {
    const std::uint32_t word = byte_order_detail::BigEndianWord(value);
    std::memcpy(to, &word, sizeof word);
}

inline std::int32_t ReadBigEndianI32(const void* from) {
    return static_cast<std::int32_t>(ReadBigEndianU32(from));
}
inline void WriteBigEndianI32(void* to, std::int32_t value) {
    WriteBigEndianU32(to, static_cast<std::uint32_t>(value));
}

inline std::int64_t ReadBigEndianI64(const void* from) {
    const auto* const bytes = static_cast<const unsigned char*>(from);
    const std::uint64_t high = ReadBigEndianU32(bytes);
    return static_cast<std::int64_t>(high << 32 | ReadBigEndianU32(bytes + 4));
}

inline void WriteBigEndianI64(void* to, std::int64_t value) {
    auto* const bytes = static_cast<unsigned char*>(to);
    const auto word = static_cast<std::uint64_t>(value);
    WriteBigEndianU32(bytes, static_cast<std::uint32_t>(word >> 32));
    WriteBigEndianU32(bytes + 4, static_cast<std::uint32_t>(word));
}

inline float ReadBigEndianF32(const void* from) { return std::bit_cast<float>(ReadBigEndianU32(from)); }
inline void WriteBigEndianF32(void* to, float value) {
    WriteBigEndianU32(to, std::bit_cast<std::uint32_t>(value));
}

// `count` words of 32 bits (integers, floats, or records made of nothing else) between the machine's order
// and big-endian bytes; the same step leads both ways. `from` and `to` are the same memory or do not overlap.
inline void ConvertBigEndianWords(const void* from, void* to, std::size_t count) {
    const auto* const source = static_cast<const unsigned char*>(from);
    auto* const target = static_cast<unsigned char*>(to);
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t word;
        std::memcpy(&word, source + 4 * i, sizeof word);
        WriteBigEndianU32(target + 4 * i, word);
    }
}

} // namespace sonorelle
