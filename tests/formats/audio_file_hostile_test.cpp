// Files that are broken, that lie, or that are no sound files at all.

#include "formats/audio_file.h"

#include "formats/sound_bytes.h"
#include "platform/result_codes.h"
#include "platform/scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

#include <sndfile.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sonorelle {
namespace {

std::int32_t OpenResult(const std::string& path) {
    CkvoAudioFile file;
    const std::int32_t result = file.OpenRead(path, kAudioCacheFrames, -1, -1);
    EXPECT_EQ(file.IsOpen(), result == kOk);
    EXPECT_EQ(file.GetPath(), path);
    return result;
}

// Opens with and without a cache, reads all in odd pieces, and gives the frames that came; both ways must
// agree.
std::int64_t CountFrames(const std::string& path) {
    std::int64_t counts[2] = {};
    for (const bool cached : {false, true}) {
        CkvoAudioFile file;
        if (file.OpenRead(path, cached ? kAudioCacheFrames : -1, -1, -1) != kOk) {
            counts[cached] = -1;
            continue;
        }
        std::vector<std::vector<float>> arrays(static_cast<std::size_t>(file.GetNumChannels()),
                                               std::vector<float>(97));
        std::vector<float*> pointers;
        for (auto& array : arrays) pointers.push_back(array.data());
        file.Seek(0);
        while (const std::int32_t got = file.Read(pointers.data(), 97)) counts[cached] += got;
        EXPECT_EQ(counts[cached], file.GetLength()) << path;
    }
    EXPECT_EQ(counts[0], counts[1]) << path;
    return counts[1];
}

std::string Ramp(std::size_t bytes) {
    std::string data(bytes, '\0');
    for (std::size_t i = 0; i < bytes; ++i) data[i] = static_cast<char>(i * 37);
    return data;
}

TEST(CkvoAudioFileHostile, DataWithoutAHeaderFailsThoughItCouldBeReadAsSamples) {
    const CScratchFolder folder;
    EXPECT_EQ(OpenResult(folder.Put("samples.raw", Ramp(44100))), kCannotOpen);
    EXPECT_EQ(OpenResult(folder.Put("samples.wav", Ramp(44100))), kCannotOpen);
    EXPECT_EQ(OpenResult(folder.Put("zeros.wav", std::string(44100, '\0'))), kCannotOpen);
}

TEST(CkvoAudioFileHostile, WhatIsNoSoundFileFails) {
    const CScratchFolder folder;
    EXPECT_EQ(OpenResult(folder.Put("empty.wav", "")), kCannotOpen);
    EXPECT_EQ(OpenResult(folder.Put("byte.wav", "R")), kCannotOpen);
    EXPECT_EQ(OpenResult(folder.Put("text.wav", "These are the words of the song, la la la la la la.\n")),
              kCannotOpen);
    EXPECT_EQ(OpenResult(folder.Put("riff.avi", "RIFF\x40\0\0\0AVI LIST")), kCannotOpen);
    EXPECT_EQ(OpenResult(folder.Path()), kCannotOpen);
    EXPECT_EQ(OpenResult(folder.File("none.wav")), kCannotOpen);
    EXPECT_EQ(OpenResult(""), kCannotOpen);
    EXPECT_EQ(OpenResult("/dev/zero"), kCannotOpen);
    EXPECT_EQ(OpenResult(folder.Put("cut.wav", WavFile({}, Ramp(8))) + std::string("\0off", 4)), kCannotOpen);
}

TEST(CkvoAudioFileHostile, APipeFailsAtOnceInsteadOfWaiting) {
    const CScratchFolder folder;
    ASSERT_EQ(::mkfifo(folder.File("pipe.wav").c_str(), 0600), 0);
    EXPECT_EQ(OpenResult(folder.File("pipe.wav")), kCannotOpen);
}

TEST(CkvoAudioFileHostile, AFileWithoutReadPermissionFails) {
    const CScratchFolder folder;
    const std::string path = folder.Put("a.wav", WavFile({}, Ramp(8)));
    ASSERT_EQ(::chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0200), 0);
    // Permissions do not hold for root, which therefore opens as somebody else.
    const bool isRoot = ::geteuid() == 0;
    constexpr uid_t kNobody = 65534;
    ASSERT_TRUE(!isRoot || ::seteuid(kNobody) == 0);
    const std::int32_t result = OpenResult(path);
    ASSERT_TRUE(!isRoot || ::seteuid(0) == 0);
    EXPECT_EQ(result, kCannotOpen);
}

TEST(CkvoAudioFileHostile, CompressedSoundFails) {
    const CScratchFolder folder;
    struct Compressed {
        const char* name;
        int format;
    };
    for (const Compressed& one : {Compressed{"a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
                                  Compressed{"a.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
                                  Compressed{"a.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III},
                                  Compressed{"ima.wav", SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM},
                                  Compressed{"gsm.wav", SF_FORMAT_WAV | SF_FORMAT_GSM610},
                                  Compressed{"alac.caf", SF_FORMAT_CAF | SF_FORMAT_ALAC_16}}) {
        SF_INFO info = {};
        info.channels = 1;
        info.samplerate = 44100;
        info.format = one.format;
        const std::string path = folder.File(one.name);
        SNDFILE* const sound = ::sf_open(path.c_str(), SFM_WRITE, &info);
        ASSERT_NE(sound, nullptr) << one.name;
        const std::vector<std::int16_t> samples(20000, 1000);
        EXPECT_EQ(::sf_writef_short(sound, samples.data(), 20000), 20000);
        ::sf_close(sound);
        EXPECT_EQ(OpenResult(path), kCannotOpen) << one.name;
    }
}

TEST(CkvoAudioFileHostile, AHeaderAloneHasNoFrames) {
    const CScratchFolder folder;
    EXPECT_EQ(CountFrames(folder.Put("a.wav", WavFile({}, ""))), 0);
    EXPECT_EQ(CountFrames(folder.Put("b.wav", WavFile({.claimedDataBytes = 100000}, ""))), 0);
    EXPECT_EQ(CountFrames(folder.Put("c.aif", AiffFile({.claimedFrames = 100000}, ""))), 0);
    EXPECT_EQ(OpenResult(folder.Put("d.wav", WavFile({}, "").substr(0, 36))),
              kCannotOpen); // ends before the data
}

TEST(CkvoAudioFileHostile, ATruncatedFileIsAsLongAsWhatItHolds) {
    const CScratchFolder folder;
    for (const std::uint16_t channels : {std::uint16_t{1}, std::uint16_t{2}, std::uint16_t{3}}) {
        const std::size_t frameBytes = 2u * channels;
        const std::string wav = WavFile({.channels = channels}, Ramp(1000 * frameBytes));
        const std::string aiff = AiffFile({.channels = channels}, Ramp(1000 * frameBytes));
        for (const std::size_t lost :
             {std::size_t{1}, std::size_t{2}, frameBytes, 400 * frameBytes, 999 * frameBytes}) {
            const auto expected = static_cast<std::int64_t>((1000 * frameBytes - lost) / frameBytes);
            EXPECT_EQ(CountFrames(folder.Put("a.wav", wav.substr(0, wav.size() - lost))), expected) << lost;
            EXPECT_EQ(CountFrames(folder.Put("a.aif", aiff.substr(0, aiff.size() - lost))), expected) << lost;
        }
    }
}

TEST(CkvoAudioFileHostile, EveryTruncationIsRefusedOrShortened) {
    const CScratchFolder folder;
    for (const std::string& whole : {WavFile({}, Ramp(64)), AiffFile({}, Ramp(64)),
                                     AiffFile({.bits = 32, .encoding = "fl32"}, Ramp(64))})
        for (std::size_t length = 0; length < whole.size(); ++length)
            EXPECT_LT(CountFrames(folder.Put("a", whole.substr(0, length))), 32) << length;
}

// The most memory this process ever had, in bytes.
std::int64_t PeakMemory() {
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return std::int64_t{usage.ru_maxrss} * 1024;
}

TEST(CkvoAudioFileHostile, LengthsThatTheFileCannotHoldCostNoMemory) {
    const CScratchFolder folder;
    const std::int64_t before = PeakMemory();
    for (const std::int64_t claimed : {0x7fffffffLL, 0xffffffffLL, 0x80000000LL, 0xfffffff0LL}) {
        EXPECT_LE(CountFrames(folder.Put("a.wav", WavFile({.claimedDataBytes = claimed}, Ramp(200)))), 100);
        EXPECT_LE(
            CountFrames(folder.Put("b.wav", WavFile({.bits = 8, .claimedDataBytes = claimed}, Ramp(200)))),
            200);
        EXPECT_LE(CountFrames(folder.Put("a.aif", AiffFile({.claimedFrames = claimed}, Ramp(200)))), 100);
    }
    EXPECT_LT(PeakMemory() - before, 32 << 20);
}

TEST(CkvoAudioFileHostile, AbsurdHeaderFieldsFailOrAreBounded) {
    const CScratchFolder folder;
    const std::int64_t before = PeakMemory();
    for (const int channels : {0, 1023, 1024, 1025, 32767, 65535})
        for (const int bits : {0, 1, 7, 8, 12, 16, 33, 64, 65535}) {
            const WavHeader wav = {.channels = static_cast<std::uint16_t>(channels),
                                   .bits = static_cast<std::uint16_t>(bits)};
            EXPECT_LE(CountFrames(folder.Put("a.wav", WavFile(wav, Ramp(5000)))), 5000)
                << channels << " " << bits;
            AiffHeader aiff = {.channels = static_cast<std::uint16_t>(channels),
                               .bits = static_cast<std::uint16_t>(bits),
                               .claimedFrames = 0x7fffffff};
            EXPECT_LE(CountFrames(folder.Put("a.aif", AiffFile(aiff, Ramp(5000)))), 5000)
                << channels << " " << bits;
        }
    EXPECT_LT(PeakMemory() - before, 32 << 20);
}

TEST(CkvoAudioFileHostile, ManyChannelsAreReadWhenTheFileHoldsThem) {
    const CScratchFolder folder;
    EXPECT_EQ(CountFrames(folder.Put("a.wav", WavFile({.channels = 1024}, Ramp(2048 * 7)))), 7);
    EXPECT_EQ(CountFrames(folder.Put("b.wav", WavFile({.channels = 1025}, Ramp(2050 * 7)))), -1);
}

TEST(CkvoAudioFileHostile, AnyRateOpensAndIsToldAsItIs) {
    const CScratchFolder folder;
    for (const std::uint32_t rate : {1u, 8000u, 384000u, 0x7fffffffu}) {
        CkvoAudioFile file;
        ASSERT_EQ(file.OpenRead(folder.Put("a.wav", WavFile({.sampleRate = rate}, Ramp(8))), 10, -1, -1), kOk)
            << rate;
        EXPECT_EQ(file.GetSampleRate(), static_cast<float>(rate));
    }
}

// A hole in the file costs no disk.
std::string PutSparse(const CScratchFolder& folder, const std::string& name, const std::string& head,
                      std::int64_t bytes) {
    const std::string path = folder.Put(name, head);
    EXPECT_EQ(::truncate(path.c_str(), bytes), 0);
    return path;
}

TEST(CkvoAudioFileHostile, MoreFramesThanCanBeCountedAreRefused) {
    const CScratchFolder folder;
    // W64 counts in 64 bits: 2^31 frames of one byte are one too many, one fewer is the longest file there
    // is.
    const auto w64 = [&](std::int64_t frames) {
        const std::string tail("\xf3\xac\xd3\x11\x8c\xd1\x00\xc0\x4f\x8e\xdb\x8a", 12);
        const std::string head = std::string("riff\x2e\x91\xcf\x11\xa5\xd6\x28\xdb\x04\xc1\x00\x00", 16) +
                                 LittleEndian<std::int64_t>(frames + 104) + "wave" + tail + "fmt " + tail +
                                 LittleEndian<std::int64_t>(40) + LittleEndian<std::uint16_t>(1) +
                                 LittleEndian<std::uint16_t>(1) + LittleEndian<std::uint32_t>(44100) +
                                 LittleEndian<std::uint32_t>(44100) + LittleEndian<std::uint16_t>(1) +
                                 LittleEndian<std::uint16_t>(8) + "data" + tail +
                                 LittleEndian<std::int64_t>(frames + 24);
        return PutSparse(folder, "a.w64", head, frames + 104);
    };
    EXPECT_EQ(OpenResult(w64(0x80000000LL)), kCannotOpen);
    CkvoAudioFile file;
    ASSERT_EQ(file.OpenRead(w64(0x7fffffffLL), kAudioCacheFrames, -1, -1), kOk);
    EXPECT_EQ(file.GetLength(), 0x7fffffff);
    EXPECT_EQ(file.Seek(0x7ffffff0), 0x7ffffff0);
    float samples[32];
    float* const channel = samples;
    EXPECT_EQ(file.Read(&channel, 32), 15);
    EXPECT_EQ(file.Read(&channel, 32), 0);
}

TEST(CkvoAudioFileHostile, ACacheThatWouldTakeAllMemoryIsLeftOut) {
    const CScratchFolder folder;
    const std::int64_t before = PeakMemory();
    // 400 channels of a million frames within a hole: 1.6 GB as floats.
    const std::int64_t dataBytes = 400000000;
    const std::string head = WavFile({.channels = 400, .bits = 8, .claimedDataBytes = dataBytes}, "");
    CkvoAudioFile file;
    ASSERT_EQ(file.OpenRead(PutSparse(folder, "a.wav", head, dataBytes + 44), kAudioCacheFrames, -1, -1),
              kOk);
    EXPECT_EQ(file.GetLength(), 1000000);
    EXPECT_LT(PeakMemory() - before, 64 << 20);
}

TEST(CkvoAudioFileHostile, AFileThatShrinksWhileItIsReadEndsEarly) {
    const CScratchFolder folder;
    const std::string path = folder.Put("a.wav", WavFile({}, Ramp(200000)));
    CkvoAudioFile file;
    ASSERT_EQ(file.OpenRead(path, 0, -1, -1), kOk);
    ASSERT_EQ(::truncate(path.c_str(), 44 + 1000), 0);
    std::vector<float> samples(100000);
    float* const channel = samples.data();
    EXPECT_EQ(file.Read(&channel, 100000), 500);
    EXPECT_EQ(file.Read(&channel, 100000), 0);
}

TEST(CkvoAudioFileHostile, RandomDamageNeverReadsMoreThanTheFileHolds) {
    constexpr std::uint32_t kSeed = 4711;
    std::mt19937 random(kSeed);
    const CScratchFolder folder;
    const std::string originals[] = {WavFile({}, Ramp(300)), WavFile({.channels = 2, .bits = 24}, Ramp(300)),
                                     AiffFile({}, Ramp(300)), AiffFile({.encoding = "sowt"}, Ramp(300)),
                                     WavFile({.formatTag = 3, .bits = 64}, Ramp(320))};
    for (int round = 0; round < 1500; ++round) {
        std::string bytes = originals[random() % std::size(originals)];
        for (auto hits = 1 + random() % 4; hits > 0; --hits)
            bytes[random() % 64] = static_cast<char>(random() % 3 == 0 ? 0xff : random());
        const std::int64_t frames = CountFrames(folder.Put("a", bytes));
        EXPECT_LE(frames, static_cast<std::int64_t>(bytes.size())) << "round " << round;
    }
}

TEST(CkvoAudioFileHostile, NothingIsPrinted) {
    const CScratchFolder folder;
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    OpenResult(folder.Put("a.wav", WavFile({.channels = 65535, .claimedDataBytes = 0xffffffff}, Ramp(100))));
    OpenResult(folder.Put("b.wav", Ramp(100)));
    OpenResult(folder.Put("c.wav", std::string("\xff\xfb\x90\x64", 4) + Ramp(2000)));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
} // namespace sonorelle
