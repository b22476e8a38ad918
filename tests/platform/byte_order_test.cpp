#include "platform/byte_order.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <vector>

namespace sonorelle {
namespace {

using Bytes4 = std::array<unsigned char, 4>;
using Bytes8 = std::array<unsigned char, 8>;

TEST(BigEndian, MostSignificantByteComesFirst) {
    Bytes4 four = {};
    WriteBigEndianU32(four.data(), 0x01020304u);
    EXPECT_EQ(four, (Bytes4{1, 2, 3, 4}));
    WriteBigEndianI32(four.data(), -2);
    EXPECT_EQ(four, (Bytes4{0xff, 0xff, 0xff, 0xfe}));
    WriteBigEndianF32(four.data(), 1.0f);
    EXPECT_EQ(four, (Bytes4{0x3f, 0x80, 0, 0}));
    Bytes8 eight = {};
    WriteBigEndianI64(eight.data(), 0x0102030405060708);
    EXPECT_EQ(eight, (Bytes8{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(BigEndian, ExtremesReadBackFromUnalignedMemory) {
    std::array<unsigned char, 9> memory = {};
    unsigned char* const odd = memory.data() + 1;
    for (const std::uint32_t value : {0u, 1u, 0x80000000u, 0xffffffffu}) {
        WriteBigEndianU32(odd, value);
        EXPECT_EQ(ReadBigEndianU32(odd), value);
        WriteBigEndianI32(odd, static_cast<std::int32_t>(value));
        EXPECT_EQ(ReadBigEndianI32(odd), static_cast<std::int32_t>(value));
    }
    using Limits = std::numeric_limits<std::int64_t>;
    for (const std::int64_t value : {std::int64_t{0}, std::int64_t{-1}, Limits::min(), Limits::max()}) {
        WriteBigEndianI64(odd, value);
        EXPECT_EQ(ReadBigEndianI64(odd), value);
    }
}

TEST(BigEndian, FloatsKeepEveryBitEvenWhenTheyAreNotANumber) {
    for (const std::uint32_t bits :
         {0x7f800001u, 0x7fc12345u, 0xffc00000u, 0x80000000u, 0x00000001u, 0x7f800000u}) {
        Bytes4 bytes = {};
        WriteBigEndianU32(bytes.data(), bits);
        const float value = ReadBigEndianF32(bytes.data());
        EXPECT_EQ(std::bit_cast<std::uint32_t>(value), bits);
        Bytes4 again = {};
        WriteBigEndianF32(again.data(), value);
        EXPECT_EQ(again, bytes);
    }
}

TEST(ConvertBigEndianWords, DoesWhatTheSingleWordsDoAtEveryLengthAndInPlace) {
    for (std::size_t count = 0; count < 40; ++count) {
        std::vector<std::uint32_t> words(count);
        for (std::size_t i = 0; i < count; ++i)
            words[i] = static_cast<std::uint32_t>(i * 2654435761u + 12345u);
        std::vector<unsigned char> bytes(4 * count + 1, 0xee);
        ConvertBigEndianWords(words.data(), bytes.data(), count);
        for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(ReadBigEndianU32(bytes.data() + 4 * i), words[i]);
        EXPECT_EQ(bytes.back(), 0xee);
        std::vector<std::uint32_t> back(count);
        ConvertBigEndianWords(bytes.data(), back.data(), count);
        EXPECT_EQ(back, words);
        ConvertBigEndianWords(back.data(), back.data(), count);
        EXPECT_TRUE(count == 0 || std::memcmp(back.data(), bytes.data(), 4 * count) == 0);
    }
}

} // namespace
} // namespace sonorelle
