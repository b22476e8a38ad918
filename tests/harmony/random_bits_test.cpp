#include "harmony/random_bits.h"

#include <gtest/gtest.h>

namespace sonorelle::ConsortierClassic {
namespace {

TEST(CRandomBits, BeginsWithTheKnownNumbers) {
    // 42 x 214013 + 2531011 = 11519557, whose bits 16 to 30 are 175; and so on by hand.
    CRandomBits random;
    for (const std::int32_t expected : {175, 400, 17869, 30056, 16083}) EXPECT_EQ(random.Next(), expected);
}

TEST(CRandomBits, EqualsTheRecurrenceInWideArithmetic) {
    CRandomBits random;
    unsigned long long state = 42;
    for (int i = 0; i < 100000; ++i) {
        state = (state * 214013 + 2531011) % 4294967296ULL;
        ASSERT_EQ(random.Next(), static_cast<std::int32_t>(state / 65536 % 32768));
    }
}

TEST(CRandomBits, TheBitIsTheLowestOfTheNumber) {
    CRandomBits numbers;
    CRandomBits bits;
    for (int i = 0; i < 100; ++i) EXPECT_EQ(bits.NextBit(), numbers.Next() % 2 == 1);
}

} // namespace
} // namespace sonorelle::ConsortierClassic
