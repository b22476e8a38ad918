#include "dsp/multi_access_buffer.h"

#include "platform/result_codes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

std::unique_ptr<CMultiAccessBuffer> MakeBuffer(std::int32_t capacity, std::int32_t channels,
                                               std::int32_t readers, std::int32_t keep) {
    std::unique_ptr<CMultiAccessBuffer> buffer;
    EXPECT_EQ(CMultiAccessBuffer::Create(buffer, capacity, channels, readers), kOk);
    buffer->SetKeep(keep);
    return buffer;
}

// Sample n of the stream is n on the left and -n on the right: a lost or doubled one shows at once.
std::int32_t WriteRamp(CMultiAccessBuffer& buffer, std::int32_t& position, std::int32_t count) {
    std::vector<float> left(static_cast<std::size_t>(count)), right(left.size());
    std::iota(left.begin(), left.end(), static_cast<float>(position));
    std::transform(left.begin(), left.end(), right.begin(), [](float sample) { return -sample; });
    const float* const channels[] = {left.data(), right.data()};
    const std::int32_t result = buffer.Write(channels, count);
    if (result == kOk) position += count;
    return result;
}

std::vector<float> ReadMono(CMultiAccessBuffer& buffer, std::int32_t reader, std::int32_t count) {
    std::vector<float> left(static_cast<std::size_t>(std::max(count, 0)));
    float* const channels[] = {left.data()};
    left.resize(static_cast<std::size_t>(buffer.Read(reader, channels, count)));
    return left;
}

TEST(CMultiAccessBuffer, EachReaderGetsTheWholeStreamAtItsOwnPace) {
    const auto buffer = MakeBuffer(5000, 2, 3, 100);
    std::mt19937 random(31);
    std::int32_t position = 0;
    std::vector<std::int32_t> places(3);
    for (int round = 0; round < 3000; ++round) {
        if (position - *std::min_element(places.begin(), places.end()) < 3000) {
            ASSERT_EQ(WriteRamp(*buffer, position, static_cast<std::int32_t>(random() % 200)), kOk);
        }
        const auto reader = static_cast<std::int32_t>(random() % 3);
        std::int32_t& place = places[static_cast<std::size_t>(reader)];
        ASSERT_EQ(buffer->GetAvailable(reader), position - place);
        const auto wanted = static_cast<std::int32_t>(random() % 400);
        std::vector<float> left(400), right(400);
        float* const channels[] = {left.data(), right.data()};
        const std::int32_t given = buffer->Read(reader, channels, wanted);
        ASSERT_EQ(given, std::min(wanted, position - place));
        for (std::size_t n = 0; n < static_cast<std::size_t>(given); ++n) {
            ASSERT_EQ(left[n], static_cast<float>(place) + static_cast<float>(n));
            ASSERT_EQ(right[n], -left[n]);
        }
        place += given;
    }
    EXPECT_GT(position, 20000);
}

TEST(CMultiAccessBuffer, WithKeep4096NothingMovesUntilTheSlowestReaderIs8192SamplesIn) {
    const auto buffer = MakeBuffer(20000, 1, 2, 4096);
    std::int32_t position = 0;
    ASSERT_EQ(WriteRamp(*buffer, position, 10000), kOk);
    ReadMono(*buffer, 0, 10000); // the quick one alone moves nothing
    EXPECT_EQ(buffer->GetFill(), 10000);
    ReadMono(*buffer, 1, 8191);
    EXPECT_EQ(buffer->GetFill(), 10000);
    ReadMono(*buffer, 1, 1);
    EXPECT_EQ(buffer->GetFill(), 10000 - 4096);
    EXPECT_EQ(ReadMono(*buffer, 1, 1), std::vector<float>{8192.0f});
}

TEST(CMultiAccessBuffer, KeepSamplesBehindTheSlowestReaderStayReadable) {
    const auto buffer = MakeBuffer(20000, 1, 1, 4096);
    std::int32_t position = 0;
    for (int round = 0; round < 100; ++round) {
        ASSERT_EQ(WriteRamp(*buffer, position, 1000), kOk);
        ReadMono(*buffer, 0, 1000);
        if (position < 4096) continue;
        buffer->SetReadPosition(0, position - 4096);
        EXPECT_EQ(ReadMono(*buffer, 0, 1), std::vector<float>{static_cast<float>(position - 4096)});
        buffer->SetReadPosition(0, position);
    }
}

TEST(CMultiAccessBuffer, AReaderThatNeverReadsKeepsEverySample) {
    const auto buffer = MakeBuffer(50000, 1, 2, 64);
    std::int32_t position = 0;
    for (int round = 0; round < 100; ++round) {
        ASSERT_EQ(WriteRamp(*buffer, position, 500), kOk);
        ReadMono(*buffer, 0, 500);
    }
    EXPECT_EQ(buffer->GetFill(), 50000);
    const std::vector<float> all = ReadMono(*buffer, 1, 50000);
    ASSERT_EQ(all.size(), 50000u);
    EXPECT_EQ(all.front(), 0.0f);
    EXPECT_EQ(all.back(), 49999.0f);
}

TEST(CMultiAccessBuffer, AWriteThatDoesNotFitWritesNothing) {
    const auto buffer = MakeBuffer(100, 1, 1, 0);
    std::int32_t position = 0;
    ASSERT_EQ(WriteRamp(*buffer, position, 60), kOk);
    EXPECT_EQ(WriteRamp(*buffer, position, 41), kBadArgument);
    EXPECT_EQ(buffer->GetFill(), 60);
    EXPECT_EQ(buffer->GetWritten(), 60);
    EXPECT_EQ(WriteRamp(*buffer, position, 40), kOk); // to the brim
    EXPECT_EQ(WriteRamp(*buffer, position, 1), kBadArgument);
    EXPECT_EQ(ReadMono(*buffer, 0, 200).size(), 100u);
    EXPECT_EQ(WriteRamp(*buffer, position, 100), kOk); // all were read: there is room again
}

TEST(CMultiAccessBuffer, NegativeCountsAreRefused) {
    const auto buffer = MakeBuffer(100, 1, 1, 0);
    EXPECT_EQ(buffer->Write(nullptr, -1), kBadArgument);
    EXPECT_EQ(buffer->Write(nullptr, std::numeric_limits<std::int32_t>::min()), kBadArgument);
    EXPECT_EQ(buffer->Write(nullptr, 0), kOk);
    EXPECT_EQ(buffer->Read(0, nullptr, -5), 0);
}

TEST(CMultiAccessBuffer, PositionsOutsideTheHeldSamplesGiveNothing) {
    const auto buffer = MakeBuffer(100, 1, 1, 10);
    std::int32_t position = 0;
    ASSERT_EQ(WriteRamp(*buffer, position, 100), kOk);
    ReadMono(*buffer, 0, 100);
    EXPECT_EQ(buffer->GetFill(), 10);
    buffer->SetReadPosition(0, 50); // dropped by now
    EXPECT_TRUE(ReadMono(*buffer, 0, 5).empty());
    buffer->SetReadPosition(0, 107); // not yet written
    EXPECT_EQ(buffer->GetAvailable(0), -7);
    EXPECT_TRUE(ReadMono(*buffer, 0, 5).empty());
    ASSERT_EQ(WriteRamp(*buffer, position, 10), kOk);
    EXPECT_EQ(ReadMono(*buffer, 0, 5), (std::vector<float>{107.0f, 108.0f, 109.0f}));
}

TEST(CMultiAccessBuffer, UnknownReadersGetNothing) {
    const auto buffer = MakeBuffer(100, 1, 2, 0);
    std::int32_t position = 0;
    ASSERT_EQ(WriteRamp(*buffer, position, 10), kOk);
    for (const std::int32_t reader : {-1, 2, 1000000}) {
        buffer->SetReadPosition(reader, 3);
        EXPECT_EQ(buffer->GetAvailable(reader), 0);
        EXPECT_EQ(buffer->Read(reader, nullptr, 5), 0);
    }
}

TEST(CMultiAccessBuffer, GoesOnPastTwoToThe31Samples) {
    constexpr std::int32_t kBlock = 1 << 14;
    const auto buffer = MakeBuffer(kBlock, 1, 1, 0);
    std::vector<float> in(kBlock);
    std::iota(in.begin(), in.end(), 0.0f);
    const float* const channels[] = {in.data()};
    for (std::int64_t total = 0; total <= std::int64_t{1} << 31; total += kBlock) {
        ASSERT_EQ(buffer->Write(channels, kBlock), kOk);
        ASSERT_EQ(buffer->GetAvailable(0), kBlock);
        // Only the last sample is read, which frees the whole block.
        const std::uint32_t last = static_cast<std::uint32_t>(buffer->GetWritten()) - 1u;
        buffer->SetReadPosition(0, static_cast<std::int32_t>(last));
        float sample = 0.0f;
        float* const out[] = {&sample};
        ASSERT_EQ(buffer->Read(0, out, kBlock), 1);
        ASSERT_EQ(sample, static_cast<float>(kBlock - 1));
        ASSERT_EQ(buffer->GetFill(), 0);
    }
    EXPECT_LT(buffer->GetWritten(), 0); // it has wrapped round
}

TEST(CMultiAccessBuffer, ResetForgetsSamplesAndKeepsKeep) {
    const auto buffer = MakeBuffer(100, 1, 2, 30);
    std::int32_t position = 0;
    ASSERT_EQ(WriteRamp(*buffer, position, 50), kOk);
    ReadMono(*buffer, 1, 20);
    buffer->Reset();
    EXPECT_EQ(buffer->GetFill(), 0);
    EXPECT_EQ(buffer->GetAvailable(0), 0);
    EXPECT_EQ(buffer->GetAvailable(1), 0);
    position = 0;
    ASSERT_EQ(WriteRamp(*buffer, position, 59), kOk);
    ReadMono(*buffer, 0, 59);
    ReadMono(*buffer, 1, 59);
    EXPECT_EQ(buffer->GetFill(), 59); // 59 passed less 30 kept are fewer than 30: nothing moves
}

TEST(CMultiAccessBuffer, CreateRefusesWhatItCannotHold) {
    std::unique_ptr<CMultiAccessBuffer> buffer;
    EXPECT_EQ(CMultiAccessBuffer::Create(buffer, 100, 0, 1), kBadArgument);
    EXPECT_EQ(CMultiAccessBuffer::Create(buffer, 100, 3, 1), kBadArgument);
    EXPECT_EQ(CMultiAccessBuffer::Create(buffer, 0, 1, 1), kBadArgument);
    EXPECT_EQ(CMultiAccessBuffer::Create(buffer, -5, 1, 1), kBadArgument);
    EXPECT_EQ(CMultiAccessBuffer::Create(buffer, 100, 1, 0), kBadArgument);
    EXPECT_FALSE(buffer);
}

} // namespace
} // namespace sonorelle
