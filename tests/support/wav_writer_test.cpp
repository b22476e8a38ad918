#include "support/wav_writer.h"

#include "support/temporary_folder.h"

#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace sonorelle::test {

namespace {

Recording TwoChannels() {
    Recording recording;
    recording.sampleRate = 48000.0;
    recording.channels = {{0.0f, 0.5f, -1.0f}, {1.0f, -0.5f, 1.0f / 32768.0f}};
    return recording;
}

std::string WrittenBytes(const Recording& recording, WavSamples samples) {
    const TemporaryFolder folder;
    EXPECT_TRUE(WriteWav(folder.File("a.wav"), recording, samples));
    std::ifstream file(folder.File("a.wav"), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Bytes(std::initializer_list<int> values) {
    std::string result;
    for (const int value : values) result.push_back(static_cast<char>(value));
    return result;
}

} // namespace

TEST(WavWriter, WritesSixteenBitsByteByByte) {
    const std::string wanted =
        std::string("RIFF") + Bytes({48, 0, 0, 0}) + "WAVEfmt " + Bytes({16, 0, 0, 0}) +
        Bytes({1, 0, 2, 0, 0x80, 0xBB, 0, 0, 0, 0xEE, 2, 0, 4, 0, 16, 0}) + "data" + Bytes({12, 0, 0, 0}) +
        Bytes({0, 0, 0xFF, 0x7F, 0, 0x40, 0, 0xC0, 0, 0x80, 1, 0});
    EXPECT_EQ(WrittenBytes(TwoChannels(), WavSamples::kInt16), wanted);
}

TEST(WavWriter, WritesTwentyFourBitsAndPadsAnOddLength) {
    Recording recording = TwoChannels();
    recording.channels = {{0.5f, -1.0f, 1.0f}};
    const std::string bytes = WrittenBytes(recording, WavSamples::kInt24);
    ASSERT_EQ(bytes.size(), 44u + 10u);
    EXPECT_EQ(bytes.substr(44), Bytes({0, 0, 0x40, 0, 0, 0x80, 0xFF, 0xFF, 0x7F, 0}));
    EXPECT_EQ(bytes.substr(40, 4), Bytes({9, 0, 0, 0}));
}

TEST(WavWriter, WritesFloatsAsTheyAre) {
    const std::string bytes = WrittenBytes(TwoChannels(), WavSamples::kFloat32);
    ASSERT_EQ(bytes.size(), 44u + 24u);
    EXPECT_EQ(bytes[20], 3);
    float second = 0.0f;
    std::memcpy(&second, bytes.data() + 48, 4);
    EXPECT_EQ(second, 1.0f);
}

TEST(WavWriter, SaysWhenItCannotWrite) {
    const TemporaryFolder folder;
    EXPECT_FALSE(WriteWav(folder.Path() / "missing" / "a.wav", TwoChannels()));
}

TEST(TemporaryFolder, VanishesWithWhatIsInIt) {
    std::filesystem::path path;
    {
        const TemporaryFolder folder;
        const TemporaryFolder another;
        path = folder.Path();
        EXPECT_NE(path, another.Path());
        EXPECT_TRUE(std::filesystem::is_directory(path));
        std::filesystem::create_directory(folder.File("inner"));
        EXPECT_TRUE(WriteWav(folder.Path() / "inner" / "a.wav", TwoChannels()));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

} // namespace sonorelle::test
