#include "formats/sample_conversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

TEST(SampleConversion, ChannelsAreSplitAndJoinedInOrderAtEveryLengthAndOffset) {
    for (const std::int32_t channelCount : {1, 2, 3, 7})
        for (std::int32_t frames = 0; frames < 40; ++frames)
            for (const std::int32_t first : {0, 3}) {
                const auto count = static_cast<std::size_t>(channelCount) * static_cast<std::size_t>(frames);
                std::vector<std::int16_t> shorts(count);
                std::vector<float> floats(count);
                for (std::size_t i = 0; i < count; ++i) {
                    shorts[i] = static_cast<std::int16_t>(i * 257 - 20000);
                    floats[i] = static_cast<float>(i) * 0.37f;
                }
                const std::size_t length = static_cast<std::size_t>(first + frames) + 1;
                std::vector<std::vector<float>> arrays(static_cast<std::size_t>(channelCount),
                                                       std::vector<float>(length, -7.0f));
                std::vector<float*> to;
                std::vector<const float*> from;
                for (auto& array : arrays) {
                    to.push_back(array.data());
                    from.push_back(array.data());
                }
                SplitShorts(shorts.data(), channelCount, frames, to.data(), first);
                for (std::size_t i = 0; i < count; ++i)
                    ASSERT_EQ(arrays[i % to.size()][static_cast<std::size_t>(first) + i / to.size()],
                              static_cast<float>(shorts[i]) / 32768.0f);
                std::vector<std::int16_t> shortsBack(count);
                JoinAsShorts(from.data(), first, channelCount, frames, shortsBack.data());
                ASSERT_EQ(shortsBack, shorts);

                SplitFloats(floats.data(), channelCount, frames, to.data(), first);
                std::vector<float> floatsBack(count);
                JoinFloats(from.data(), first, channelCount, frames, floatsBack.data());
                ASSERT_EQ(floatsBack, floats);
                for (const auto& array : arrays) {
                    ASSERT_EQ(array.back(), -7.0f);
                    ASSERT_TRUE(first == 0 || array[2] == -7.0f);
                }
            }
}

TEST(SampleConversion, RoundingAgreesWithTheLibrarysEverywhereInRange) {
    constexpr std::uint32_t kSeed = 5;
    std::mt19937 random(kSeed);
    std::uniform_real_distribution<float> anywhere(-1.1f, 1.1f);
    std::vector<float> samples(100000);
    for (float& sample : samples) sample = anywhere(random);
    std::vector<std::int16_t> shorts(samples.size());
    const float* const from = samples.data();
    JoinAsShorts(&from, 0, 1, static_cast<std::int32_t>(samples.size()), shorts.data());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double exact = std::nearbyint(static_cast<double>(samples[i]) * 32768.0);
        ASSERT_EQ(shorts[i], std::fmin(std::fmax(exact, -32768.0), 32767.0)) << samples[i];
    }
}

} // namespace
} // namespace sonorelle
