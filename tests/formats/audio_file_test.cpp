// Opening, sections, cache, seeking and reading of well-formed files.

#include "formats/audio_file.h"

#include "formats/sound_bytes.h"
#include "platform/result_codes.h"
#include "platform/scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace sonorelle {
namespace {

constexpr std::int32_t kInt32Max = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kInt32Min = std::numeric_limits<std::int32_t>::min();

// Frame i of channel c of the test files.
std::int16_t SampleAt(std::int32_t frame, std::int32_t channel) {
    return static_cast<std::int16_t>((frame * 7919 + channel * 15013) % 65536 - 32768);
}

float ValueAt(std::int32_t frame, std::int32_t channel) {
    return static_cast<float>(SampleAt(frame, channel)) / 32768.0f;
}

std::string ShortSamples(std::int32_t frames, std::int32_t channels) {
    std::string data;
    for (std::int32_t i = 0; i < frames; ++i)
        for (std::int32_t c = 0; c < channels; ++c) data += LittleEndian(SampleAt(i, c));
    return data;
}

std::string TestWav(std::int32_t frames, std::int32_t channels) {
    return WavFile({.channels = static_cast<std::uint16_t>(channels)}, ShortSamples(frames, channels));
}

// As many arrays as a file has channels, with a guard behind each.
struct Buffers {
    Buffers(std::int32_t channels, std::int32_t frames) : frameCount(frames) {
        for (std::int32_t c = 0; c < channels; ++c)
            arrays.emplace_back(static_cast<std::size_t>(frames) + 1, kUntouched);
        for (auto& array : arrays) pointers.push_back(array.data());
    }
    bool GuardsStand() const {
        return std::all_of(arrays.begin(), arrays.end(),
                           [](const auto& array) { return array.back() == kUntouched; });
    }

    static constexpr float kUntouched = -7.0f;
    std::int32_t frameCount;
    std::vector<std::vector<float>> arrays;
    std::vector<float*> pointers;
};

void ExpectFrames(const Buffers& buffers, std::int32_t firstInFile, std::int32_t count) {
    for (std::size_t c = 0; c < buffers.arrays.size(); ++c)
        for (std::int32_t i = 0; i < count; ++i)
            ASSERT_EQ(buffers.arrays[c][static_cast<std::size_t>(i)],
                      ValueAt(firstInFile + i, static_cast<std::int32_t>(c)))
                << "channel " << c << " frame " << i;
    EXPECT_TRUE(buffers.GuardsStand());
}

class CkvoAudioFileTest : public testing::Test {
protected:
    CScratchFolder folder;
    CkvoAudioFile file;
};

TEST_F(CkvoAudioFileTest, TellsWhatTheHeaderSays) {
    const std::string path = folder.Put("a.wav", TestWav(1000, 2));
    ASSERT_EQ(file.OpenRead(path, kAudioCacheFrames, -1, -1), kOk);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(file.GetNumChannels(), 2);
    EXPECT_EQ(file.GetSampleRate(), 44100.0f);
    EXPECT_EQ(file.GetLength(), 1000);
    EXPECT_EQ(file.GetCacheLimit(), kAudioCacheFrames);
    EXPECT_EQ(file.GetPath(), path);
    EXPECT_EQ(file.Tell(), 0);
    EXPECT_FALSE(file.HasLimits());
}

TEST_F(CkvoAudioFileTest, CloseForgetsPathRateChannelsAndPosition) {
    ASSERT_EQ(file.OpenRead(folder.Put("a.wav", TestWav(1000, 2)), kAudioCacheFrames, -1, -1), kOk);
    file.Seek(10);
    EXPECT_EQ(file.Close(), kOk);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetPath(), "");
    EXPECT_EQ(file.GetNumChannels(), 0);
    EXPECT_EQ(file.GetSampleRate(), 0.0f);
    Buffers buffers(2, 4);
    EXPECT_EQ(file.Read(buffers.pointers.data(), 4), 0);
    EXPECT_EQ(file.Close(), kOk);
    ASSERT_EQ(file.OpenRead(folder.File("a.wav"), kAudioCacheFrames, -1, -1), kOk);
    EXPECT_EQ(file.Tell(), 0);
}

TEST_F(CkvoAudioFileTest, OpeningTwiceFailsAndLeavesTheFirstOpen) {
    const std::string path = folder.Put("a.wav", TestWav(100, 1));
    const std::string other = folder.Put("b.wav", TestWav(50, 2));
    ASSERT_EQ(file.OpenRead(path, kAudioCacheFrames, 10, 90), kOk);
    EXPECT_EQ(file.OpenRead(other, 7, -1, -1), kCannotOpen);
    EXPECT_EQ(file.OpenWrite(other, 2, 48000.0f, 7, kWav16), kCannotOpen);
    EXPECT_EQ(file.GetPath(), path);
    EXPECT_EQ(file.GetLength(), 80);
    EXPECT_EQ(file.GetNumChannels(), 1);
    EXPECT_EQ(file.GetCacheLimit(), kAudioCacheFrames);
    EXPECT_TRUE(file.HasLimits());
    Buffers buffers(1, 100);
    file.Seek(0);
    EXPECT_EQ(file.Read(buffers.pointers.data(), 100), 80);
    ExpectFrames(buffers, 10, 80);
}

TEST_F(CkvoAudioFileTest, AFailedOpenKeepsThePathAndStaysClosed) {
    EXPECT_EQ(file.OpenRead(folder.File("none.wav"), 5, -1, -1), kCannotOpen);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetPath(), folder.File("none.wav"));
    EXPECT_EQ(file.OpenRead(folder.Put("a.wav", TestWav(10, 1)), 5, -1, -1), kOk);
}

struct Limits {
    std::int32_t first;
    std::int32_t end;
    std::int32_t expectedFirst;
    std::int32_t expectedEnd;
    bool hasLimits;
};

class LimitsTest : public testing::TestWithParam<Limits> {};

TEST_P(LimitsTest, ChooseThePartThatCountsFromZero) {
    const Limits& limits = GetParam();
    const CScratchFolder folder;
    CkvoAudioFile file;
    ASSERT_EQ(file.OpenRead(folder.Put("a.wav", TestWav(1000, 2)), 1000, limits.first, limits.end), kOk);
    EXPECT_EQ(file.HasLimits(), limits.hasLimits);
    EXPECT_EQ(file.GetLength(), limits.expectedEnd - limits.expectedFirst);
    EXPECT_EQ(file.Seek(0), limits.expectedFirst);
    EXPECT_EQ(file.Tell(), 0);
    Buffers buffers(2, 2000);
    EXPECT_EQ(file.Read(buffers.pointers.data(), 2000), limits.expectedEnd - limits.expectedFirst);
    ExpectFrames(buffers, limits.expectedFirst, limits.expectedEnd - limits.expectedFirst);
    EXPECT_EQ(file.Tell(), file.GetLength());
}

INSTANTIATE_TEST_SUITE_P(
    Parts, LimitsTest,
    testing::Values(Limits{-1, -1, 0, 1000, false},               //
                    Limits{100, 50, 0, 1000, false},              // crossed: no limit on either side
                    Limits{50, 50, 0, 1000, false},               // empty: none either
                    Limits{100, 200, 100, 200, true},             //
                    Limits{0, 1000, 0, 1000, true},               // both count though they take nothing away
                    Limits{-1, 200, 0, 200, true},                //
                    Limits{200, -1, 0, 1000, false},              // a first frame counts only before an end
                    Limits{100, 2000, 100, 1000, true},           // an end behind the file does not count
                    Limits{1000, 2000, 0, 1000, false},           // nor a first frame behind it
                    Limits{999, 1000, 999, 1000, true},           //
                    Limits{-1, 0, 0, 0, true},                    // an empty part
                    Limits{-5, 200, 0, 200, true},                // absurd numbers are none
                    Limits{kInt32Min, kInt32Max, 0, 1000, false}, //
                    Limits{kInt32Min, -3, 0, 1000, false}));

TEST_F(CkvoAudioFileTest, CacheAndDiskGiveTheSameSamples) {
    for (const std::int32_t channels : {1, 2, 3, 5}) {
        // More than one chunk, and no multiple of it.
        const std::int32_t frames = 70001;
        const std::string path = folder.Put("a.wav", TestWav(frames, channels));
        for (const std::int32_t cacheLimit : {frames, frames - 1}) {
            ASSERT_EQ(file.OpenRead(path, cacheLimit, -1, -1), kOk);
            Buffers all(channels, frames);
            EXPECT_EQ(file.Read(all.pointers.data(), frames), frames);
            ExpectFrames(all, 0, frames);
            Buffers block(channels, 777);
            for (const std::int32_t start : {0, 1, 32767, 32768, 69000}) {
                EXPECT_EQ(file.Seek(start), start);
                EXPECT_EQ(file.Read(block.pointers.data(), 777), 777);
                ExpectFrames(block, start, 777);
                EXPECT_EQ(file.Tell(), start + 777);
            }
            file.Close();
        }
    }
}

// Overwrites the samples behind the opened file's back: what is in memory stays, what is read from the disk
// changes.
bool ReadsFromDisk(const CScratchFolder& folder, std::int32_t frames, std::int32_t cacheLimit) {
    const std::string path = folder.Put("changing.wav", TestWav(frames, 1));
    CkvoAudioFile file;
    EXPECT_EQ(file.OpenRead(path, cacheLimit, -1, -1), kOk);
    {
        std::fstream change(path, std::ios::binary | std::ios::in | std::ios::out);
        change.seekp(44);
        change << std::string(static_cast<std::size_t>(frames) * 2, '\0');
    }
    Buffers buffers(1, 1);
    file.Seek(3);
    EXPECT_EQ(file.Read(buffers.pointers.data(), 1), 1);
    EXPECT_TRUE(buffers.arrays[0][0] == ValueAt(3, 0) || buffers.arrays[0][0] == 0.0f);
    return buffers.arrays[0][0] == 0.0f;
}

TEST_F(CkvoAudioFileTest, OneFrameMoreThanTheCacheLimitIsReadFromDiskOnEachRead) {
    EXPECT_FALSE(ReadsFromDisk(folder, 1000, 1000));
    EXPECT_TRUE(ReadsFromDisk(folder, 1001, 1000));
    EXPECT_TRUE(ReadsFromDisk(folder, 1000, 0));
    EXPECT_TRUE(ReadsFromDisk(folder, 1000, -1));
}

TEST_F(CkvoAudioFileTest, ReadAtTheEndGivesNothing) {
    const std::string path = folder.Put("a.wav", TestWav(100, 1));
    for (const std::int32_t cacheLimit : {100, 10}) {
        ASSERT_EQ(file.OpenRead(path, cacheLimit, -1, 60), kOk);
        Buffers buffers(1, 50);
        file.Seek(40);
        EXPECT_EQ(file.Read(buffers.pointers.data(), 50), 20);
        ExpectFrames(buffers, 40, 20);
        EXPECT_EQ(buffers.arrays[0][20], Buffers::kUntouched);
        EXPECT_EQ(file.Read(buffers.pointers.data(), 50), 0);
        EXPECT_EQ(file.Tell(), 60);
        file.Close();
    }
}

TEST_F(CkvoAudioFileTest, ReadOfFewerThanOneFrameGivesTheNumberBack) {
    ASSERT_EQ(file.OpenRead(folder.Put("a.wav", TestWav(100, 1)), 100, -1, -1), kOk);
    EXPECT_EQ(file.Read(nullptr, 0), 0);
    EXPECT_EQ(file.Read(nullptr, -5), -5);
    EXPECT_EQ(file.Read(nullptr, kInt32Min), kInt32Min);
    EXPECT_EQ(file.Tell(), 0);
}

TEST_F(CkvoAudioFileTest, AnySeekIsSafe) {
    const std::string path = folder.Put("a.wav", TestWav(100, 2));
    for (const std::int32_t cacheLimit : {100, 10})
        for (const std::int32_t first : {-1, 20}) {
            ASSERT_EQ(file.OpenRead(path, cacheLimit, first, 90), kOk);
            const std::int32_t base = first == -1 ? 0 : first;
            for (const std::int32_t frame :
                 {-21, kInt32Min, 90 - base, 100, 101, kInt32Max, kInt32Max - 20}) {
                const std::int64_t wanted = std::int64_t{base} + frame;
                EXPECT_EQ(file.Seek(frame), std::min<std::int64_t>(wanted, kInt32Max)) << frame;
                Buffers buffers(2, 1000);
                EXPECT_EQ(file.Read(buffers.pointers.data(), 1000), 0) << frame;
                file.Tell();
            }
            file.Seek(0);
            Buffers buffers(2, 1000);
            EXPECT_EQ(file.Read(buffers.pointers.data(), kInt32Max), 90 - base);
            file.Close();
        }
}

// A quirk that stays: without a cache, the disk goes to the frame of the whole file.
TEST_F(CkvoAudioFileTest, ASectionWithoutCacheIsReadFromTheWholeFilesFrame) {
    ASSERT_EQ(file.OpenRead(folder.Put("a.wav", TestWav(1000, 1)), 999, 100, 500), kOk);
    EXPECT_EQ(file.Seek(30), 130);
    Buffers buffers(1, 10);
    EXPECT_EQ(file.Read(buffers.pointers.data(), 10), 10);
    ExpectFrames(buffers, 30, 10);
    EXPECT_EQ(file.Tell(), 40 - 100);
}

TEST_F(CkvoAudioFileTest, FilesOfNoneAndOneFrameAreFiles) {
    for (const std::int32_t cacheLimit : {kAudioCacheFrames, 0, -1}) {
        ASSERT_EQ(file.OpenRead(folder.Put("none.wav", TestWav(0, 1)), cacheLimit, -1, -1), kOk);
        EXPECT_EQ(file.GetLength(), 0);
        Buffers buffers(1, 4);
        EXPECT_EQ(file.Read(buffers.pointers.data(), 4), 0);
        file.Close();
        ASSERT_EQ(file.OpenRead(folder.Put("one.wav", TestWav(1, 1)), cacheLimit, -1, -1), kOk);
        EXPECT_EQ(file.GetLength(), 1);
        EXPECT_EQ(file.Read(buffers.pointers.data(), 4), 1);
        ExpectFrames(buffers, 0, 1);
        file.Close();
    }
}

TEST_F(CkvoAudioFileTest, NamesWithSpacesLettersOfAllLanguagesAndAnyBytesOpen) {
    for (const std::string name :
         {"my song.wav", "Ch\xc5\x93ur \xe6\xad\x8c.wav", "\xff\xfe.wav", "noextension"}) {
        const std::string path = folder.Put(name, TestWav(10, 1));
        ASSERT_EQ(file.OpenRead(path, 10, -1, -1), kOk) << name;
        EXPECT_EQ(file.GetPath(), path);
        file.Close();
    }
}

TEST_F(CkvoAudioFileTest, ModificationTimeIsTheFilesInSeconds) {
    const std::string path = folder.Put("a.wav", TestWav(10, 1));
    const timespec times[2] = {{1234567890, 987654321}, {1234567890, 987654321}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    EXPECT_EQ(file.GetModificationTime(), 0);
    ASSERT_EQ(file.OpenRead(path, 10, -1, -1), kOk);
    EXPECT_EQ(file.GetModificationTime(), 1234567890);
}

// The same samples in every encoding that is read.
struct Encoding {
    const char* name;
    std::string bytes;
    std::vector<float> expected;
};

template<typename Value>
std::string All(const std::vector<Value>& values, std::string (*encode)(Value)) {
    std::string data;
    for (const Value value : values) data += encode(value);
    return data;
}

std::vector<Encoding> Encodings() {
    using namespace std::string_literals;
    const std::vector<std::int16_t> shorts = {0, 1, -1, 12345, 32767, -32768};
    const std::vector<float> shortValues = {
        0.0f, 1.0f / 32768, -1.0f / 32768, 12345.0f / 32768, 32767.0f / 32768, -1.0f};
    const std::vector<float> floats = {0.0f, 0.1f, -0.7f, 1.5f, 1e-30f};
    const std::vector<double> doubles = {0.0, 0.25, -0.7, 1e-300};
    const std::vector<float> doubleValues = {0.0f, 0.25f, -0.7f, 0.0f};
    const std::vector<std::int32_t> longs = {0, 1 << 30, std::numeric_limits<std::int32_t>::min(), 1};
    const std::vector<float> longValues = {0.0f, 0.5f, -1.0f, 1.0f / 2147483648.0f};
    const std::string threes = "\x01\x00\x00\xff\xff\xff\x00\x00\x40\x00\x00\x80"s; // little-endian
    const std::string threesBig = "\x00\x00\x01\xff\xff\xff\x40\x00\x00\x80\x00\x00"s;
    const std::vector<float> threeValues = {1.0f / 8388608, -1.0f / 8388608, 0.5f, -1.0f};
    return {
        {"WAV 8", WavFile({.bits = 8}, "\x80\xff\x00\xc0"s), {0.0f, 127.0f / 128, -1.0f, 0.5f}},
        {"WAV 16", WavFile({}, All(shorts, LittleEndian)), shortValues},
        {"WAV 24", WavFile({.bits = 24}, threes), threeValues},
        {"WAV 32", WavFile({.bits = 32}, All(longs, LittleEndian)), longValues},
        {"WAV float", WavFile({.formatTag = 3, .bits = 32}, All(floats, LittleEndian)), floats},
        {"WAV double", WavFile({.formatTag = 3, .bits = 64}, All(doubles, LittleEndian)), doubleValues},
        // The loudest and the softest code of mu-law: 14 bits, 8031 steps, at four 16-bit steps each.
        {"WAV mu-law",
         WavFile({.formatTag = 7, .bits = 8}, "\x00\x80\xff"s),
         {-32124.0f / 32768, 32124.0f / 32768, 0}},
        {"AIFF 8", AiffFile({.bits = 8}, "\x00\x7f\x80\x40"s), {0.0f, 127.0f / 128, -1.0f, 0.5f}},
        {"AIFF 16", AiffFile({}, All(shorts, BigEndian)), shortValues},
        {"AIFF 24", AiffFile({.bits = 24}, threesBig), threeValues},
        {"AIFF 32", AiffFile({.bits = 32}, All(longs, BigEndian)), longValues},
        {"AIFC sowt", AiffFile({.encoding = "sowt"}, All(shorts, LittleEndian)), shortValues},
        {"AIFC fl32", AiffFile({.bits = 32, .encoding = "fl32"}, All(floats, BigEndian)), floats},
        {"AIFC fl64", AiffFile({.bits = 64, .encoding = "fl64"}, All(doubles, BigEndian)), doubleValues},
        {"AU 16",
         ".snd" + BigEndian<std::uint32_t>(24) + BigEndian<std::uint32_t>(12) + BigEndian<std::uint32_t>(3) +
             BigEndian<std::uint32_t>(44100) + BigEndian<std::uint32_t>(1) + All(shorts, BigEndian),
         shortValues},
    };
}

TEST_F(CkvoAudioFileTest, EveryEncodingGivesItsSamplesFromMemoryAndFromDisk) {
    for (const Encoding& encoding : Encodings()) {
        const std::string path = folder.Put("file", encoding.bytes);
        for (const std::int32_t cacheLimit : {kAudioCacheFrames, 0}) {
            ASSERT_EQ(file.OpenRead(path, cacheLimit, -1, -1), kOk) << encoding.name;
            EXPECT_EQ(file.GetSampleRate(), 44100.0f) << encoding.name;
            EXPECT_EQ(file.GetLength(), static_cast<std::int32_t>(encoding.expected.size())) << encoding.name;
            Buffers buffers(1, file.GetLength());
            EXPECT_EQ(file.Read(buffers.pointers.data(), file.GetLength()), file.GetLength());
            buffers.arrays[0].pop_back();
            EXPECT_EQ(buffers.arrays[0], encoding.expected) << encoding.name;
            file.Close();
        }
    }
}

TEST_F(CkvoAudioFileTest, SamplesThatAreNotFiniteAreReadAsSilence) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> samples;
    for (int i = 0; i < 37; ++i)
        samples.insert(samples.end(), {0.5f, kInfinity, -kInfinity, kNotANumber, -kNotANumber});
    const std::string asFloats = WavFile({.formatTag = 3, .bits = 32}, All(samples, LittleEndian));
    std::vector<double> wide(samples.begin(), samples.end());
    wide[1] = 1e300; // finite there, but not as a float
    const std::string asDoubles = WavFile({.formatTag = 3, .bits = 64}, All(wide, LittleEndian));
    for (const std::string& bytes : {asFloats, asDoubles})
        for (const std::int32_t cacheLimit : {kAudioCacheFrames, 0}) {
            ASSERT_EQ(file.OpenRead(folder.Put("file.wav", bytes), cacheLimit, -1, -1), kOk);
            const auto frames = static_cast<std::int32_t>(samples.size());
            Buffers buffers(1, frames);
            ASSERT_EQ(file.Read(buffers.pointers.data(), frames), frames);
            for (std::size_t i = 0; i < samples.size(); ++i)
                ASSERT_EQ(buffers.arrays[0][i], i % 5 == 0 ? 0.5f : 0.0f) << i;
            file.Close();
        }
}

} // namespace
} // namespace sonorelle
