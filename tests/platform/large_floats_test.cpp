#include "platform/large_floats.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace sonorelle {
namespace {

TEST(LargeFloats, EveryFloatOfEverySizeCanBeWritten) {
    constexpr std::size_t kHugePageFloats = (std::size_t{1} << 21) / sizeof(float);
    for (const std::size_t count : {std::size_t{1}, std::size_t{1000}, kHugePageFloats - 1, kHugePageFloats,
                                    kHugePageFloats + 1, 3 * kHugePageFloats + 17}) {
        const LargeFloats floats = AllocateLargeFloats(count);
        ASSERT_TRUE(floats);
        for (std::size_t i = 0; i < count; ++i) floats[i] = static_cast<float>(i);
        EXPECT_EQ(floats[0], 0.0f);
        EXPECT_EQ(floats[count - 1], static_cast<float>(count - 1));
    }
}

TEST(LargeFloats, NoneAtAllIsNoFailure) { EXPECT_TRUE(AllocateLargeFloats(0)); }

TEST(LargeFloats, MoreThanThereIsGivesNull) {
    EXPECT_FALSE(AllocateLargeFloats(std::numeric_limits<std::size_t>::max()));
    EXPECT_FALSE(AllocateLargeFloats(std::numeric_limits<std::size_t>::max() / sizeof(float)));
}

} // namespace
} // namespace sonorelle
