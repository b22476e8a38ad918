#include "formats/midi_file_reader.h"

#include "formats/midi_file.h"
#include "platform/result_codes.h"
#include "platform/scratch_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace sonorelle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Times are sums of a few products: far less than a sample's length off.
constexpr double kTimeTolerance = 1e-9; // seconds

std::string Word(std::uint32_t value, int bytes) {
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text += static_cast<char>(value >> shift & 0xFF);
    return text;
}
std::string MidiHeader(std::uint32_t format, std::uint32_t tracks, std::uint32_t division) {
    return "MThd" + Word(6, 4) + Word(format, 2) + Word(tracks, 2) + Word(division, 2);
}
std::string MidiBytes(std::initializer_list<int> bytes) {
    std::string text;
    for (const int byte : bytes) text += static_cast<char>(byte);
    return text;
}
std::string MidiTrackChunk(const std::string& events) {
    return "MTrk" + Word(static_cast<std::uint32_t>(events.size()), 4) + events;
}
std::string EndOfTrack() { return MidiBytes({0, 0xFF, 0x2F, 0}); }

std::int32_t ParseText(const std::string& bytes, MidiFileContents& contents) {
    return ParseMidiFile(std::as_bytes(std::span(bytes)), contents);
}
std::vector<MidiFileMessage> MessagesOf(const std::string& bytes) {
    MidiFileContents contents;
    EXPECT_EQ(ParseText(bytes, contents), kOk);
    return contents.messages;
}
std::vector<double> TimesOf(const std::string& bytes) {
    std::vector<double> times;
    for (const MidiFileMessage& message : MessagesOf(bytes)) times.push_back(message.seconds);
    return times;
}
bool IsRefused(const std::string& bytes) {
    MidiFileContents contents;
    contents.messages.resize(1);
    const std::int32_t result = ParseText(bytes, contents);
    EXPECT_EQ(contents.messages.size(), 1U) << "changed by a refused file";
    return result == kCannotOpen;
}
// A file of one track at 120 a minute, 100 ticks a quarter: a tick is 5 ms.
std::string OneTrack(const std::string& events) {
    return MidiHeader(0, 1, 100) + MidiTrackChunk(events + EndOfTrack());
}

TEST(MidiFileReader, ReadsNotesWithTheirTimes) {
    EXPECT_THAT(MessagesOf(OneTrack(MidiBytes({0, 0x90, 60, 100, 100, 0x80, 60, 0}))),
                ElementsAre(MidiFileMessage{0, 0x90, 60, 100}, MidiFileMessage{0.5, 0x80, 60, 0}));
}

TEST(MidiFileReader, ReadsBackWhatTheWriterWrote) {
    CkvoMidiTrack track;
    track.AddEvent(std::make_shared<CkvoMidiFileTempoEvent>(100.0F));
    track.AddEvent(std::make_shared<CkvoMidiFileNoteEvent>(0, kMidiNoteOn, 2, 69, 90));
    track.AddEvent(std::make_shared<CkvoMidiFileNoteEvent>(1500, kMidiNoteOff, 2, 69, 0));
    CkvoMidiFile file;
    file.AddTrack(track);
    CScratchFolder folder;
    const std::string path = folder.File("a.mid");
    ASSERT_EQ(file.Write(path, 0, 384, 100.0F), kOk);
    MidiFileContents contents;
    ASSERT_EQ(ReadMidiFile(path, contents), kOk);
    ASSERT_EQ(contents.messages.size(), 2U);
    EXPECT_EQ(contents.messages[0], (MidiFileMessage{0, 0x92, 69, 90}));
    EXPECT_NEAR(contents.messages[1].seconds, 1.5, 60.0 / 100 / 384); // a tick
}

TEST(MidiFileReader, KeepsTheStatusUntilAnother) {
    EXPECT_THAT(MessagesOf(OneTrack(MidiBytes({0, 0x90, 60, 100, 0, 64, 100, 100, 60, 0, 0, 0x81, 64, 3}))),
                ElementsAre(MidiFileMessage{0, 0x90, 60, 100}, MidiFileMessage{0, 0x90, 64, 100},
                            MidiFileMessage{0.5, 0x90, 60, 0}, MidiFileMessage{0.5, 0x81, 64, 3}));
}

TEST(MidiFileReader, SkipsWhatIsNoNoteAndNoController) {
    const std::string events =
        MidiBytes({0, 0xFF, 3, 2, 'h', 'i', 0, 0xF0, 3, 0x7E, 1, 0xF7, 0, 0xF7, 2, 0xF3, 1}) +
        MidiBytes({0, 0xC0, 5, 0, 0xD0, 5, 0, 0xE0, 0, 64, 0, 0xA0, 60, 1}) +
        MidiBytes({10, 0xB3, 123, 0, 10, 0x90, 60, 1});
    EXPECT_THAT(MessagesOf(OneTrack(events)),
                ElementsAre(MidiFileMessage{0.05, 0xB3, 123, 0}, MidiFileMessage{0.1, 0x90, 60, 1}));
}

TEST(MidiFileReader, FollowsTheTempoMapOfAnotherTrack) {
    // 120, from the second quarter on 60 a minute.
    const std::string map = MidiBytes({0, 0xFF, 0x51, 3, 7, 0xA1, 0x20, 100, 0xFF, 0x51, 3, 15, 0x42, 0x40});
    const std::string notes = MidiBytes({50, 0x90, 60, 1, 50, 61, 1, 50, 62, 1, 100, 63, 1});
    const std::string bytes =
        MidiHeader(1, 2, 100) + MidiTrackChunk(map + EndOfTrack()) + MidiTrackChunk(notes + EndOfTrack());
    const std::vector<double> expected = {0.25, 0.5, 1.0, 2.0};
    EXPECT_THAT(TimesOf(bytes), testing::Pointwise(testing::DoubleNear(kTimeTolerance), expected));
}

TEST(MidiFileReader, MergesTracksByTimeAndThenByTheirOrder) {
    const std::string first = MidiBytes({50, 0x90, 60, 1, 50, 61, 1});
    const std::string second = MidiBytes({0, 0x90, 70, 1, 50, 71, 1});
    std::vector<int> keys;
    for (const MidiFileMessage& message :
         MessagesOf(MidiHeader(1, 2, 100) + MidiTrackChunk(first + EndOfTrack()) +
                    MidiTrackChunk(second + EndOfTrack())))
        keys.push_back(message.data1);
    EXPECT_THAT(keys, ElementsAre(70, 60, 71, 61));
}

TEST(MidiFileReader, CountsInFramesOfFilm) {
    const std::string events = MidiBytes({0, 0x90, 60, 1, 100, 60, 0});
    const auto seconds = [&](int framesPerSecond, int ticksPerFrame) {
        const auto division = static_cast<std::uint32_t>((0x100 - framesPerSecond) << 8 | ticksPerFrame);
        // A tempo says nothing here.
        const std::string tempo = MidiBytes({0, 0xFF, 0x51, 3, 0, 0, 1});
        return TimesOf(MidiHeader(0, 1, division) + MidiTrackChunk(tempo + events + EndOfTrack())).back();
    };
    EXPECT_NEAR(seconds(25, 40), 0.1, kTimeTolerance);
    EXPECT_NEAR(seconds(24, 10), 100.0 / 240, kTimeTolerance);
    EXPECT_NEAR(seconds(30, 80), 100.0 / 2400, kTimeTolerance);
    EXPECT_NEAR(seconds(29, 80), 100.0 / (30000.0 / 1001 * 80), kTimeTolerance);
}

TEST(MidiFileReader, ReadsDistancesOfSeveralBytes) {
    // 0x81 0x48 is 200 ticks.
    EXPECT_THAT(TimesOf(OneTrack(MidiBytes({0x81, 0x48, 0x90, 60, 1}))), ElementsAre(1.0));
}

TEST(MidiFileReader, TakesUnknownChunksLongHeadersAndTracksWithoutAnEnd) {
    const std::string note = MidiBytes({0, 0x90, 60, 1});
    const std::string longHeader = "MThd" + Word(8, 4) + Word(0, 2) + Word(1, 2) + Word(100, 2) + "xx";
    for (const std::string& bytes :
         {longHeader + MidiTrackChunk(note + EndOfTrack()),
          MidiHeader(0, 1, 100) + "XFIH" + Word(3, 4) + "abc" + MidiTrackChunk(note + EndOfTrack()),
          MidiHeader(0, 1, 100) + MidiTrackChunk(note), OneTrack(note) + "some bytes behind it",
          MidiHeader(0, 7, 100) + MidiTrackChunk(note)})
        EXPECT_THAT(MessagesOf(bytes), ElementsAre(MidiFileMessage{0, 0x90, 60, 1}));
}

TEST(MidiFileReader, HoldsNothingBehindTheEndOfATrack) {
    const std::string bytes =
        MidiHeader(0, 1, 100) + MidiTrackChunk(EndOfTrack() + MidiBytes({0, 0x90, 60, 1}));
    EXPECT_THAT(MessagesOf(bytes), IsEmpty());
}

TEST(MidiFileReader, RefusesWhatIsNoWholeFileOfItsKind) {
    const std::string note = MidiBytes({0, 0x90, 60, 1});
    EXPECT_TRUE(IsRefused(""));
    EXPECT_TRUE(IsRefused("MThd"));
    EXPECT_TRUE(IsRefused("RIFF" + OneTrack(note)));
    EXPECT_TRUE(IsRefused(MidiHeader(0, 1, 100))) << "no track";
    EXPECT_TRUE(IsRefused(MidiHeader(2, 1, 100) + MidiTrackChunk(note)));
    EXPECT_TRUE(IsRefused(MidiHeader(0, 1, 0) + MidiTrackChunk(note)));
    EXPECT_TRUE(IsRefused(MidiHeader(0, 1, 0xE700) + MidiTrackChunk(note))) << "no ticks in a frame";
    EXPECT_TRUE(IsRefused(MidiHeader(0, 1, 0xFF28) + MidiTrackChunk(note))) << "a frame a second";
    EXPECT_TRUE(IsRefused(OneTrack(MidiBytes({0, 60, 1})))) << "no status yet";
    EXPECT_TRUE(IsRefused(OneTrack(MidiBytes({0, 0x90, 0x90, 1})))) << "data with the high bit";
    EXPECT_TRUE(IsRefused(OneTrack(MidiBytes({0, 0xF8})))) << "a clock has no place in a file";
    EXPECT_TRUE(IsRefused(OneTrack(MidiBytes({0xFF, 0xFF, 0xFF, 0xFF, 0, 0x90, 60, 1}))));
}

TEST(MidiFileReader, RefusesSizesBeyondTheFile) {
    EXPECT_TRUE(IsRefused("MThd" + Word(0xFFFFFFFF, 4) + Word(0, 2)));
    EXPECT_TRUE(
        IsRefused(MidiHeader(0, 1, 100) + "MTrk" + Word(0xFFFFFFFF, 4) + MidiBytes({0, 0x90, 60, 1})));
    EXPECT_TRUE(IsRefused(OneTrack(MidiBytes({0, 0xF0, 0xFF, 0xFF, 0xFF, 0x7F, 1}))));
    EXPECT_TRUE(IsRefused(OneTrack(MidiBytes({0, 0xFF, 1, 0xFF, 0xFF, 0xFF, 0x7F, 1}))));
}

TEST(MidiFileReader, RefusesATrackCutOffAnywhere) {
    const std::string bytes = OneTrack(MidiBytes({0, 0x90, 60, 100, 0x81, 0x48, 0xB0, 123, 0}));
    for (std::size_t length = 0; length < bytes.size(); ++length)
        EXPECT_TRUE(IsRefused(bytes.substr(0, length))) << length;
}

TEST(MidiFileReader, BearsAnyByteInAnyPlace) {
    const std::string bytes =
        OneTrack(MidiBytes({0, 0xFF, 0x51, 3, 7, 0xA1, 0x20, 0, 0x90, 60, 100, 50, 60, 0}));
    std::mt19937 random(20240611);
    for (int round = 0; round < 20000; ++round) {
        std::string changed = bytes;
        for (int i = 0; i < 3; ++i) changed[random() % changed.size()] = static_cast<char>(random());
        MidiFileContents contents;
        const std::int32_t result = ParseText(changed, contents);
        ASSERT_TRUE(result == kOk || result == kCannotOpen);
        double before = 0;
        for (const MidiFileMessage& message : contents.messages) {
            ASSERT_GE(message.seconds, before);
            ASSERT_LT(message.data1, 128);
            ASSERT_LT(message.data2, 128);
            before = message.seconds;
        }
    }
}

TEST(MidiFileReader, RefusesFoldersAndFilesThatAreNotThere) {
    CScratchFolder folder;
    MidiFileContents contents;
    EXPECT_EQ(ReadMidiFile(folder.File("none.mid"), contents), kCannotOpen);
    EXPECT_EQ(ReadMidiFile(folder.Path(), contents), kCannotOpen);
    EXPECT_EQ(ReadMidiFile("/dev/zero", contents), kCannotOpen);
}

} // namespace
} // namespace sonorelle
