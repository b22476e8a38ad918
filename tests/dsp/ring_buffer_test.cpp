#include "dsp/ring_buffer.h"

#include "platform/result_codes.h"

#include <gtest/gtest.h>

#include <deque>
#include <numeric>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

std::unique_ptr<RingBuffer> MakeRing(std::uint32_t length) {
    std::unique_ptr<RingBuffer> ring;
    EXPECT_EQ(RingBuffer::Create(ring, length), kOk);
    return ring;
}

std::vector<float> Ramp(std::size_t count, float from) {
    std::vector<float> ramp(count);
    std::iota(ramp.begin(), ramp.end(), from);
    return ramp;
}

TEST(RingBuffer, SizeIsTheNextPowerOfTwoNotBelowTheLength) {
    for (std::uint32_t length = 1; length <= 70000; ++length) {
        std::uint32_t expected = 1;
        while (expected < length) expected *= 2;
        ASSERT_EQ(RingSize(length), expected) << length;
    }
}

TEST(RingBuffer, SizeHoldsAtTheEndsOfItsRange) {
    EXPECT_EQ(RingSize(0), 1u);
    EXPECT_EQ(RingSize(1u << 31), 1u << 31);
    EXPECT_EQ(RingSize((1u << 31) - 1), 1u << 31);
    EXPECT_EQ(RingSize((1u << 31) + 1), 0u);
    EXPECT_EQ(RingSize(0xffffffffu), 0u);
    std::unique_ptr<RingBuffer> ring;
    EXPECT_EQ(RingBuffer::Create(ring, 0xffffffffu), kBadArgument);
    EXPECT_FALSE(ring);
}

TEST(RingBuffer, ReadsBackWhatWasWrittenAcrossTheEnd) {
    const auto ring = MakeRing(16);
    std::deque<float> expected;
    std::mt19937 random(21);
    float next = 0.0f;
    for (int round = 0; round < 2000; ++round) {
        const std::uint32_t count = random() % (16 - ring->Available());
        const std::vector<float> in = Ramp(count, next);
        next += static_cast<float>(count);
        ring->Write(in.data(), count);
        expected.insert(expected.end(), in.begin(), in.end());
        ASSERT_EQ(ring->Available(), expected.size());

        std::vector<float> out(random() % (expected.size() + 1));
        ring->Read(out.data(), static_cast<std::uint32_t>(out.size()));
        ASSERT_TRUE(std::equal(out.begin(), out.end(), expected.begin())) << round;
        expected.erase(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(out.size()));
    }
}

TEST(RingBuffer, LastIndexTellsWhereTheLastWriteBegan) {
    const auto ring = MakeRing(8);
    const std::vector<float> in = Ramp(6, 1.0f);
    ring->Write(in.data(), 6);
    EXPECT_EQ(ring->lastIndex, 0u);
    ring->Write(in.data(), 5);
    EXPECT_EQ(ring->lastIndex, 6u);
    EXPECT_EQ(ring->writeIndex, 3u);
    EXPECT_EQ(ring->data[6], 1.0f);
    EXPECT_EQ(ring->data[2], 5.0f);
}

TEST(RingBuffer, PeekLeavesTheReader) {
    const auto ring = MakeRing(8);
    ring->Write(Ramp(4, 1.0f).data(), 4);
    std::vector<float> out(3);
    ring->Peek(out.data(), 3);
    EXPECT_EQ(out, Ramp(3, 1.0f));
    EXPECT_EQ(ring->Available(), 4u);
    ring->Skip(2);
    ring->Read(out.data(), 2);
    EXPECT_EQ(out[0], 3.0f);
    EXPECT_EQ(ring->Available(), 0u);
}

TEST(RingBuffer, AReaderSetBehindTheStartFindsSilenceFirst) {
    const auto ring = MakeRing(16384);
    ring->readIndex = ring->size - 1024 + 512; // as the pitch tracker sets it
    EXPECT_EQ(ring->Available(), 512u);
    ring->Write(Ramp(512, 1.0f).data(), 512);
    std::vector<float> frame(1024);
    ring->Peek(frame.data(), 1024);
    EXPECT_EQ(std::vector<float>(frame.begin(), frame.begin() + 512), std::vector<float>(512, 0.0f));
    EXPECT_EQ(std::vector<float>(frame.begin() + 512, frame.end()), Ramp(512, 1.0f));
}

TEST(RingBuffer, OfTooLongAWriteTheNewestSamplesRemain) {
    const auto ring = MakeRing(8);
    const auto inTurn = MakeRing(8);
    const std::vector<float> in = Ramp(21, 1.0f);
    ring->Write(in.data(), 3);
    ring->Write(in.data(), 21);
    for (int n = 0; n < 3; ++n) inTurn->Write(&in[static_cast<std::size_t>(n)], 1);
    for (const float& sample : in) inTurn->Write(&sample, 1);
    EXPECT_EQ(ring->data, inTurn->data);
    EXPECT_EQ(ring->writeIndex, inTurn->writeIndex);
}

TEST(RingBuffer, TooLongAReadGivesOneRound) {
    const auto ring = MakeRing(8);
    ring->Write(Ramp(8, 1.0f).data(), 8);
    std::vector<float> out(20, -1.0f);
    ring->Read(out.data(), 20);
    EXPECT_EQ(out[7], 8.0f);
    EXPECT_EQ(out[8], -1.0f);
}

TEST(RingBuffer, LengthZeroAndOneAreSafe) {
    for (const std::uint32_t length : {0u, 1u}) {
        const auto ring = MakeRing(length);
        EXPECT_EQ(ring->size, 1u);
        EXPECT_EQ(ring->mask, 0u);
        const std::vector<float> in = Ramp(3, 1.0f);
        ring->Write(in.data(), 3);
        float out = 0.0f;
        ring->Read(&out, 1);
        EXPECT_EQ(out, 3.0f);
        EXPECT_EQ(ring->Available(), 0u);
    }
}

TEST(RingBuffer, IndicesOutOfRangeAreMasked) {
    const auto ring = MakeRing(8);
    ring->Write(Ramp(8, 0.0f).data(), 8);
    ring->readIndex = 0xfffffffdu; // -3
    std::vector<float> out(4);
    ring->Read(out.data(), 4);
    EXPECT_EQ(out, (std::vector<float>{5.0f, 6.0f, 7.0f, 0.0f}));
    ring->writeIndex = 0xffffffffu;
    ring->Write(Ramp(2, 50.0f).data(), 2);
    EXPECT_EQ(ring->data[7], 50.0f);
    EXPECT_EQ(ring->data[0], 51.0f);
}

TEST(RingBuffer, ClearForgetsSamplesAndPlaces) {
    const auto ring = MakeRing(8);
    ring->Write(Ramp(5, 1.0f).data(), 5);
    ring->Clear();
    EXPECT_EQ(ring->data, std::vector<float>(8, 0.0f));
    EXPECT_EQ(ring->writeIndex, 0u);
    EXPECT_EQ(ring->Available(), 0u);
}

} // namespace
} // namespace sonorelle
