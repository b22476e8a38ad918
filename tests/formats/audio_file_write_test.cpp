// Writing sound files, and that the old one survives whatever goes wrong.

#include "formats/audio_file.h"

#include "formats/sound_bytes.h"
#include "platform/file_size_limit.h"
#include "platform/result_codes.h"
#include "platform/scratch_folder.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <unistd.h>

namespace sonorelle {
namespace {

using Channels = std::vector<std::vector<float>>;

std::vector<const float*> Pointers(const Channels& channels) {
    std::vector<const float*> pointers;
    for (const auto& channel : channels) pointers.push_back(channel.data());
    return pointers;
}

std::int32_t WriteWhole(const std::string& path, const Channels& channels, std::int32_t format,
                        float sampleRate = 44100.0f) {
    CkvoAudioFile file;
    EXPECT_EQ(file.OpenWrite(path, static_cast<std::int32_t>(channels.size()), sampleRate, 0, format), kOk);
    EXPECT_EQ(file.Write(Pointers(channels).data(), static_cast<std::int32_t>(channels[0].size())), 0);
    return file.Close();
}

Channels ReadWhole(const std::string& path) {
    CkvoAudioFile file;
    EXPECT_EQ(file.OpenRead(path, kAudioCacheFrames, -1, -1), kOk);
    Channels channels(static_cast<std::size_t>(file.GetNumChannels()),
                      std::vector<float>(static_cast<std::size_t>(file.GetLength())));
    std::vector<float*> pointers;
    for (auto& channel : channels) pointers.push_back(channel.data());
    EXPECT_EQ(file.Read(pointers.data(), file.GetLength()), file.GetLength());
    return channels;
}

std::uint32_t Bits(float value) { return std::bit_cast<std::uint32_t>(value); }

TEST(CkvoAudioFileWrite, SixteenBitWavIsTheseBytes) {
    const CScratchFolder folder;
    const std::string path = folder.File("a.wav");
    EXPECT_EQ(WriteWhole(path, {{0.0f, 0.5f, -1.0f}, {1.0f / 32768, -0.25f, 0.25f}}, kWav16, 48000.9f), kOk);
    const std::string data = LittleEndian<std::int16_t>(0) + LittleEndian<std::int16_t>(1) +
                             LittleEndian<std::int16_t>(16384) + LittleEndian<std::int16_t>(-8192) +
                             LittleEndian<std::int16_t>(-32768) + LittleEndian<std::int16_t>(8192);
    EXPECT_EQ(CScratchFolder::Content(path), WavFile({.channels = 2, .sampleRate = 48000}, data));
}

TEST(CkvoAudioFileWrite, AiffHoldsLittleEndianShortsAndFloatsInItsOwnOrder) {
    const CScratchFolder folder;
    const Channels channels = {{0.5f, -0.25f}};
    EXPECT_EQ(WriteWhole(folder.File("short"), channels, kAiff16), kOk);
    EXPECT_EQ(WriteWhole(folder.File("float"), channels, kAiffFloat), kOk);
    const std::string asShorts = CScratchFolder::Content(folder.File("short"));
    EXPECT_EQ(asShorts.substr(0, 4) + asShorts.substr(8, 4), "FORMAIFC");
    EXPECT_NE(asShorts.find("sowt"), std::string::npos);
    EXPECT_TRUE(asShorts.ends_with(LittleEndian<std::int16_t>(16384) + LittleEndian<std::int16_t>(-8192)));
    const std::string asFloats = CScratchFolder::Content(folder.File("float"));
    EXPECT_EQ(asFloats.substr(0, 4) + asFloats.substr(8, 4), "FORMAIFC");
    EXPECT_TRUE(asFloats.ends_with(BigEndian(0.5f) + BigEndian(-0.25f)));
}

TEST(CkvoAudioFileWrite, FloatWavEndsWithItsSamplesAndNothingDependsOnTheTime) {
    const CScratchFolder folder;
    EXPECT_EQ(WriteWhole(folder.File("a.wav"), {{0.5f, -0.25f}}, kWavFloat), kOk);
    const std::string bytes = CScratchFolder::Content(folder.File("a.wav"));
    const std::string data = LittleEndian(0.5f) + LittleEndian(-0.25f);
    EXPECT_TRUE(bytes.ends_with("data" + LittleEndian<std::uint32_t>(8) + data));
    EXPECT_EQ(bytes.substr(4, 4), LittleEndian(static_cast<std::uint32_t>(bytes.size() - 8)));
    EXPECT_EQ(bytes.find("PEAK"), std::string::npos);
}

TEST(CkvoAudioFileWrite, ADiscardedFileLeavesNothingAndAnOldOneAsItWas) {
    const CScratchFolder folder;
    const std::string old = folder.Put("old.wav", "old");
    for (const std::string& path : {old, folder.File("new.wav")}) {
        CkvoAudioFile file;
        const Channels channels = {std::vector<float>(1000, 0.5f)};
        ASSERT_EQ(file.OpenWrite(path, 1, 44100.0f, 0, kWav16), kOk);
        EXPECT_EQ(file.Write(Pointers(channels).data(), 1000), 0);
        file.Discard();
        EXPECT_FALSE(file.IsOpen());
        EXPECT_EQ(file.Close(), kOk);
        EXPECT_EQ(file.OpenWrite(folder.File("next.wav"), 1, 44100.0f, 0, kWav16), kOk)
            << "not to be used again";
        file.Discard();
    }
    EXPECT_EQ(CScratchFolder::Content(old), "old");
    EXPECT_EQ(folder.CountFiles(), 1u);
}

class WriteFormatTest : public testing::TestWithParam<std::int32_t> {
protected:
    bool IsFloat() const { return (GetParam() & 0xf) == 6; }
    const CScratchFolder folder;
    const std::string path = folder.File("file");
};

TEST_P(WriteFormatTest, WhatWasWrittenReadsBackToTheSameBits) {
    constexpr std::uint32_t kSeed = 11;
    std::mt19937 random(kSeed);
    for (const std::size_t channelCount : {1u, 2u, 3u}) {
        Channels channels(channelCount, std::vector<float>(40001));
        for (auto& channel : channels)
            for (float& sample : channel) {
                const auto bits = static_cast<std::uint32_t>(random());
                sample = IsFloat() ? std::bit_cast<float>(bits)
                                   : static_cast<float>(std::bit_cast<std::int32_t>(bits) >> 16) / 32768;
                if (!std::isfinite(sample)) sample = 0.0f;
            }
        ASSERT_EQ(WriteWhole(path, channels, GetParam()), kOk);
        const Channels back = ReadWhole(path);
        ASSERT_EQ(back.size(), channelCount);
        for (std::size_t c = 0; c < channelCount; ++c) {
            ASSERT_EQ(back[c].size(), channels[c].size());
            for (std::size_t i = 0; i < back[c].size(); ++i)
                ASSERT_EQ(Bits(back[c][i]), Bits(channels[c][i])) << "channel " << c << " frame " << i;
        }
    }
}

TEST_P(WriteFormatTest, EverySixteenBitValueSurvives) {
    Channels channels(1);
    for (int value = -32768; value <= 32767; ++value)
        channels[0].push_back(static_cast<float>(value) / 32768);
    ASSERT_EQ(WriteWhole(path, channels, GetParam()), kOk);
    EXPECT_EQ(ReadWhole(path), channels);
}

TEST_P(WriteFormatTest, TheFileIsTheSameHoweverItIsCutIntoWrites) {
    const Channels channels(2, std::vector<float>(1000, 0.125f));
    ASSERT_EQ(WriteWhole(path, channels, GetParam()), kOk);
    const std::string inOne = CScratchFolder::Content(path);
    {
        CkvoAudioFile file; // closed by its destructor
        ASSERT_EQ(file.OpenWrite(path, 2, 44100.0f, 0, GetParam()), kOk);
        for (int i = 0; i < 100; ++i) EXPECT_EQ(file.Write(Pointers(channels).data(), 10), 0);
    }
    EXPECT_EQ(CScratchFolder::Content(path), inOne);
}

TEST_P(WriteFormatTest, AFileWithoutFramesIsAFile) {
    CkvoAudioFile file;
    ASSERT_EQ(file.OpenWrite(path, 1, 44100.0f, 0, GetParam()), kOk);
    EXPECT_EQ(file.Write(nullptr, 0), 0);
    EXPECT_EQ(file.Write(nullptr, -3), 0);
    EXPECT_EQ(file.Close(), kOk);
    EXPECT_EQ(file.OpenRead(path, 0, -1, -1), kOk);
    EXPECT_EQ(file.GetLength(), 0);
    EXPECT_EQ(file.GetSampleRate(), 44100.0f);
}

TEST_P(WriteFormatTest, TheOldFileStandsUntilClose) {
    folder.Put("file", "old");
    const Channels channels(1, std::vector<float>(300000, 0.5f));
    CkvoAudioFile file;
    ASSERT_EQ(file.OpenWrite(path, 1, 44100.0f, 0, GetParam()), kOk);
    EXPECT_EQ(file.Write(Pointers(channels).data(), 300000), 0);
    EXPECT_EQ(CScratchFolder::Content(path), "old");
    EXPECT_EQ(file.Close(), kOk);
    EXPECT_EQ(ReadWhole(path), channels);
    EXPECT_EQ(folder.CountFiles(), 1u);
}

TEST_P(WriteFormatTest, AFailedWriteLeavesTheOldFile) {
    folder.Put("file", "old");
    const Channels channels(1, std::vector<float>(300000, 0.5f));
    CkvoAudioFile file;
    ASSERT_EQ(file.OpenWrite(path, 1, 44100.0f, 0, GetParam()), kOk);
    {
        const FileSizeLimit limit(200000);
        EXPECT_EQ(file.Write(Pointers(channels).data(), 300000), -1);
    }
    EXPECT_EQ(file.Write(Pointers(channels).data(), 10), -1);
    EXPECT_EQ(file.Close(), kCannotWrite);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(CScratchFolder::Content(path), "old");
    EXPECT_EQ(folder.CountFiles(), 1u);
}

TEST_P(WriteFormatTest, AFailureThatShowsOnlyAtCloseLeavesTheOldFile) {
    folder.Put("file", "old");
    const Channels channels(1, std::vector<float>(1000, 0.5f));
    CkvoAudioFile file;
    ASSERT_EQ(file.OpenWrite(path, 1, 44100.0f, 0, GetParam()), kOk);
    const FileSizeLimit limit(500); // above the header, below header and samples
    EXPECT_EQ(file.Write(Pointers(channels).data(), 1000), 0);
    EXPECT_EQ(file.Close(), kCannotWrite);
    EXPECT_EQ(CScratchFolder::Content(path), "old");
    EXPECT_EQ(folder.CountFiles(), 1u);
}

TEST_P(WriteFormatTest, TellsWhatItWasGivenWhileOpen) {
    CkvoAudioFile file;
    ASSERT_EQ(file.OpenWrite(path, 2, 48000.5f, 77, GetParam()), kOk);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(file.GetPath(), path);
    EXPECT_EQ(file.GetNumChannels(), 2);
    EXPECT_EQ(file.GetSampleRate(), 48000.5f);
    EXPECT_EQ(file.GetCacheLimit(), 77);
    EXPECT_EQ(file.OpenWrite(path, 1, 8000.0f, 1, GetParam()), kCannotOpen);
    EXPECT_EQ(file.OpenRead(path, 1, -1, -1), kCannotOpen);
    EXPECT_EQ(file.GetNumChannels(), 2);
    float sample = 0;
    float* channels[2] = {&sample, &sample};
    EXPECT_EQ(file.Read(channels, 1), 0);
    EXPECT_EQ(file.Close(), kOk);
    EXPECT_EQ(file.GetPath(), "");
    EXPECT_EQ(file.GetNumChannels(), 0);
    EXPECT_EQ(file.GetSampleRate(), 0.0f);
}

INSTANTIATE_TEST_SUITE_P(AllFormats, WriteFormatTest,
                         testing::Values(kWav16, kWavFloat, kAiff16, kAiffFloat));

TEST(CkvoAudioFileWrite, SixteenBitsRoundToTheNearestAndClip) {
    const CScratchFolder folder;
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kStep = 1.0f / 32768;
    const std::vector<std::pair<float, int>> cases = {
        {0.4999f * kStep, 0},
        {0.5001f * kStep, 1},
        {0.5f * kStep, 0},
        {1.5f * kStep, 2},
        {-0.4999f * kStep, 0},
        {-0.5001f * kStep, -1},
        {-1.5f * kStep, -2},
        {std::nextafter(0.5f, 0.0f) * kStep, 0},
        {1.0f, 32767},
        {32767.4f * kStep, 32767},
        {1.001f, 32767},
        {-1.0f, -32768},
        {-1.001f, -32768},
        {1e30f, 32767},
        {-1e30f, -32768},
        {kInfinity, 32767},
        {-kInfinity, -32768},
        {std::numeric_limits<float>::max(), 32767},
        {std::numeric_limits<float>::quiet_NaN(), 0},
        {std::bit_cast<float>(0x7fc01234u), 0}, // not a number either, and the low bits are no sample
        {std::numeric_limits<float>::denorm_min(), 0}};
    // Twice around, so that both the vector loop and its rest see each case.
    Channels channels(1);
    for (int i = 0; i < 40; ++i)
        channels[0].push_back(cases[static_cast<std::size_t>(i) * 7 % cases.size()].first);
    for (const auto& one : cases) channels[0].push_back(one.first);
    ASSERT_EQ(WriteWhole(folder.File("a.wav"), channels, kWav16), kOk);
    const Channels back = ReadWhole(folder.File("a.wav"));
    for (std::size_t i = 0; i < 40; ++i)
        EXPECT_EQ(back[0][i] * 32768, static_cast<float>(cases[i * 7 % cases.size()].second)) << i;
    for (std::size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(back[0][40 + i] * 32768, static_cast<float>(cases[i].second)) << cases[i].first;
}

TEST(CkvoAudioFileWrite, AnUnknownFormatOpensNothingAndStillSucceeds) {
    const CScratchFolder folder;
    for (const std::int32_t format : {0, 0x10001, 0x30002, 0x10002 | 0x1000000, -1}) {
        CkvoAudioFile file;
        EXPECT_EQ(file.OpenWrite(folder.File("a.wav"), 1, 44100.0f, 0, format), kOk) << format;
        EXPECT_FALSE(file.IsOpen());
        const float sample = 0;
        const float* const channel = &sample;
        EXPECT_EQ(file.Write(&channel, 1), -1);
        EXPECT_EQ(file.Close(), kOk);
    }
    EXPECT_EQ(folder.CountFiles(), 0u);
}

TEST(CkvoAudioFileWrite, WhatCannotBeOpenedLeavesTheFieldsClear) {
    const CScratchFolder folder;
    constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();
    struct Call {
        std::string path;
        std::int32_t channels;
        float sampleRate;
    };
    const std::string good = folder.File("a.wav");
    for (const Call& call :
         {Call{folder.File("none/a.wav"), 1, 44100}, Call{folder.Path(), 1, 44100}, Call{"", 1, 44100},
          Call{good, 0, 44100}, Call{good, -1, 44100}, Call{good, 1 << 30, 44100}, Call{good, 1, 0},
          Call{good, 1, -5}, Call{good, 1, kNotANumber}, Call{good, 1, 1e20f},
          Call{good, 1, 2147483648.0f}}) {
        CkvoAudioFile file;
        EXPECT_EQ(file.OpenWrite(call.path, call.channels, call.sampleRate, 7, kWav16), kCannotOpen)
            << call.path << " " << call.channels << " " << call.sampleRate;
        EXPECT_FALSE(file.IsOpen());
        EXPECT_EQ(file.GetNumChannels(), 0);
        EXPECT_EQ(file.GetSampleRate(), 0.0f);
        EXPECT_EQ(file.GetCacheLimit(), 0);
    }
    EXPECT_EQ(folder.CountFiles(), 0u);
}

TEST(CkvoAudioFileWrite, MoreThanAHeaderCanCountIsRefusedBeforeItIsWritten) {
    const CScratchFolder folder;
    folder.Put("a.wav", "old");
    CkvoAudioFile file;
    ASSERT_EQ(file.OpenWrite(folder.File("a.wav"), 2, 44100.0f, 0, kWav16), kOk);
    const float sample = 0.5f;
    const float* const channels[2] = {&sample, &sample};
    EXPECT_EQ(file.Write(channels, 1), 0);
    // 2^31 bytes: refused by the count alone, since the arrays hold one frame.
    EXPECT_EQ(file.Write(channels, 1 << 29), -1);
    EXPECT_EQ(file.Close(), kCannotWrite);
    EXPECT_EQ(CScratchFolder::Content(folder.File("a.wav")), "old");
}

TEST(CkvoAudioFileWrite, ALinkStaysALink) {
    const CScratchFolder folder;
    const std::string real = folder.Put("real.wav", "old");
    ASSERT_EQ(::symlink("real.wav", folder.File("link.wav").c_str()), 0);
    const Channels channels = {{0.25f, -0.25f}};
    EXPECT_EQ(WriteWhole(folder.File("link.wav"), channels, kWav16), kOk);
    EXPECT_EQ(ReadWhole(real), channels);
    EXPECT_EQ(folder.CountFiles(), 2u);
}

} // namespace
} // namespace sonorelle
