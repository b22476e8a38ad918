#include "formats/midi_file.h"

#include "formats/midi_reader.h"
#include "platform/file_size_limit.h"
#include "platform/result_codes.h"
#include "platform/scratch_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace sonorelle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Bytes as a MIDI monitor shows them: "90 3C 7F".
std::string FromHex(const std::string& text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == ' ') {
            ++at;
            continue;
        }
        bytes += static_cast<char>(std::stoi(text.substr(at, 2), nullptr, 16));
        at += 2;
    }
    return bytes;
}

std::string ToHex(const std::string& bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        if (!text.empty()) text += ' ';
        text += kDigits[static_cast<unsigned char>(c) >> 4];
        text += kDigits[static_cast<unsigned char>(c) & 15];
    }
    return text;
}

void AddNote(CkvoMidiTrack& track, std::uint32_t time, std::int32_t key, std::int32_t velocity = 100,
             std::int32_t channel = 0) {
    track.AddEvent(std::make_shared<CkvoMidiFileNoteEvent>(time, kMidiNoteOn, channel, key, velocity));
}

// The whole file that these tracks make.
std::string Written(const std::vector<CkvoMidiTrack>& tracks, std::int32_t division, float bpm,
                    std::int32_t format = 0) {
    const CScratchFolder folder;
    CkvoMidiFile file;
    for (const CkvoMidiTrack& track : tracks) file.AddTrack(track);
    EXPECT_EQ(file.Write(folder.File("out.mid"), format, division, bpm), kOk);
    EXPECT_EQ(folder.CountFiles(), 1U);
    return CScratchFolder::Content(folder.File("out.mid"));
}

constexpr std::size_t kHeaderBytes = 14;
constexpr std::size_t kTrackHeaderBytes = 8;

// The events of the only track, in hex, without the end of the track.
std::string EventBytes(const CkvoMidiTrack& track, std::int32_t division, float bpm) {
    const std::string file = Written({track}, division, bpm);
    const std::string events = file.substr(kHeaderBytes + kTrackHeaderBytes);
    EXPECT_EQ(ToHex(events.substr(events.size() - 4)), "00 FF 2F 00");
    return ToHex(events.substr(0, events.size() - 4));
}

std::vector<std::uint32_t> Deltas(const CkvoMidiTrack& track, std::int32_t division, float bpm) {
    std::vector<std::uint32_t> deltas;
    const std::string file = Written({track}, division, bpm);
    const MidiRead read = CMidiReader(file).Read();
    for (const auto& event : read.tracks.at(0)) deltas.push_back(event.delta);
    deltas.pop_back(); // the end of the track
    return deltas;
}

std::vector<int> DataOf(const CkvoMidiFileEvent& event) {
    return {event.GetData().begin(), event.GetData().end()};
}

// Events.

TEST(CkvoMidiFileNoteEvent, HoldsItsArguments) {
    const CkvoMidiFileNoteEvent event(4000000000U, kMidiNoteOn, 3, 60, 127);
    EXPECT_FALSE(event.IsMeta());
    EXPECT_EQ(event.GetTime(), 4000000000U);
    EXPECT_EQ(event.GetType(), 144);
    EXPECT_EQ(event.GetChannel(), 3);
    EXPECT_THAT(DataOf(event), ElementsAre(60, 127));
    EXPECT_EQ(CkvoMidiFileNoteEvent(0, kMidiNoteOff, 0, 60, 0).GetType(), 128);
}

TEST(CkvoMidiFileTempoEvent, TempoOf120IsBytes07A120) {
    const CkvoMidiFileTempoEvent event(120.0F);
    EXPECT_TRUE(event.IsMeta());
    EXPECT_EQ(event.GetTime(), 0U);
    EXPECT_EQ(event.GetType(), 81);
    EXPECT_EQ(event.GetChannel(), 0);
    EXPECT_EQ(event.GetBpm(), 120.0F);
    EXPECT_THAT(DataOf(event), ElementsAre(0x07, 0xA1, 0x20));
}

TEST(CkvoMidiFileTempoEvent, BytesAreTruncatedAfterArithmeticInF32) {
    EXPECT_THAT(DataOf(CkvoMidiFileTempoEvent(70.0F)), ElementsAre(0x0D, 0x14, 0x36)); // 857142.86
    // 794701.99, which f32 rounds up before it is truncated.
    EXPECT_THAT(DataOf(CkvoMidiFileTempoEvent(75.5F)), ElementsAre(0x0C, 0x20, 0x4E));
}

TEST(CkvoMidiFileTempoEvent, AbsurdTemposStayInThreeBytes) {
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float tooSlow : {3.5F, 1e-30F, 0.0F})
        EXPECT_THAT(DataOf(CkvoMidiFileTempoEvent(tooSlow)), ElementsAre(0xFF, 0xFF, 0xFF)) << tooSlow;
    for (const float nothing : {infinity, -infinity, -120.0F, std::numeric_limits<float>::quiet_NaN(), 1e30F})
        EXPECT_THAT(DataOf(CkvoMidiFileTempoEvent(nothing)), ElementsAre(0, 0, 0)) << nothing;
}

TEST(CkvoMidiFileTimeSigEvent, HoldsTheFourBytesAsTheyAre) {
    const CkvoMidiFileTimeSigEvent event(6, 3, 36, 8);
    EXPECT_TRUE(event.IsMeta());
    EXPECT_EQ(event.GetTime(), 0U);
    EXPECT_EQ(event.GetType(), 88);
    EXPECT_EQ(event.GetChannel(), 0);
    EXPECT_THAT(DataOf(event), ElementsAre(6, 3, 36, 8));
}

// Tracks.

std::vector<int> Keys(const CkvoMidiTrack& track) {
    std::vector<int> keys;
    for (const auto& event : track.GetEvents()) keys.push_back(event->GetData()[0]);
    return keys;
}

TEST(CkvoMidiTrack, OrdersEventsByTime) {
    CkvoMidiTrack track;
    for (const int key : {5, 1, 4, 2, 3}) AddNote(track, static_cast<std::uint32_t>(key) * 10, key);
    EXPECT_THAT(Keys(track), ElementsAre(1, 2, 3, 4, 5));
}

TEST(CkvoMidiTrack, EqualTimesStayInTheOrderOfAdding) {
    CkvoMidiTrack track;
    AddNote(track, 20, 1);
    AddNote(track, 10, 2);
    AddNote(track, 20, 3);
    AddNote(track, 10, 4);
    AddNote(track, 20, 5);
    EXPECT_THAT(Keys(track), ElementsAre(2, 4, 1, 3, 5));
}

TEST(CkvoMidiTrack, TimesAreUnsigned) {
    CkvoMidiTrack track;
    AddNote(track, 0x80000000U, 2);
    AddNote(track, 0x7FFFFFFFU, 1);
    AddNote(track, 0xFFFFFFFFU, 3);
    EXPECT_THAT(Keys(track), ElementsAre(1, 2, 3));
}

TEST(CkvoMidiTrack, NoEventIsIgnored) {
    CkvoMidiTrack track;
    track.AddEvent(nullptr);
    EXPECT_THAT(track.GetEvents(), IsEmpty());
}

TEST(CkvoMidiTrack, CopyHasItsOwnListOfTheSameEvents) {
    CkvoMidiTrack track;
    AddNote(track, 0, 1);
    CkvoMidiTrack copy = track;
    AddNote(track, 0, 2);
    AddNote(copy, 0, 3);
    EXPECT_THAT(Keys(track), ElementsAre(1, 2));
    EXPECT_THAT(Keys(copy), ElementsAre(1, 3));
    EXPECT_EQ(track.GetEvents()[0], copy.GetEvents()[0]);
}

// Files.

TEST(CkvoMidiFile, WithoutTracksIsItsHeader) {
    EXPECT_EQ(ToHex(Written({}, 384, 120.0F)), "4D 54 68 64 00 00 00 06 00 00 00 00 01 80");
}

TEST(CkvoMidiFile, EmptyTrackIsEightBytesOfHeaderAndTheEndWithLength4) {
    EXPECT_EQ(ToHex(Written({CkvoMidiTrack()}, 96, 120.0F)), "4D 54 68 64 00 00 00 06 00 00 00 01 00 60 "
                                                             "4D 54 72 6B 00 00 00 04 00 FF 2F 00");
}

TEST(CkvoMidiFile, TwoNotesWithTempoAndMetreToTheByte) {
    CkvoMidiTrack track;
    track.AddEvent(std::make_shared<CkvoMidiFileTempoEvent>(120.0F));
    track.AddEvent(std::make_shared<CkvoMidiFileTimeSigEvent>(3, 2, 36, 8));
    AddNote(track, 0, 60, 100, 0);
    AddNote(track, 250, 64, 90, 1);
    track.AddEvent(std::make_shared<CkvoMidiFileNoteEvent>(500, kMidiNoteOff, 0, 60, 0));
    track.AddEvent(std::make_shared<CkvoMidiFileNoteEvent>(1500, kMidiNoteOff, 1, 64, 0));
    EXPECT_EQ(Written({track}, 384, 120.0F), FromHex("4D 54 68 64 00 00 00 06 00 00 00 01 01 80" // MThd
                                                     "4D 54 72 6B 00 00 00 26"                   // MTrk
                                                     "00 FF 51 03 07 A1 20"                      // tempo
                                                     "00 FF 58 04 03 02 24 08"                   // 3/4
                                                     "00 90 3C 64"
                                                     "81 40 91 40 5A" // 192 ticks
                                                     "81 40 80 3C 00"
                                                     "86 00 81 40 00" // 768 ticks
                                                     "00 FF 2F 00"));
}

TEST(CkvoMidiFile, SameStatusIsWrittenAgain) {
    CkvoMidiTrack track;
    AddNote(track, 0, 60);
    AddNote(track, 0, 64);
    EXPECT_EQ(EventBytes(track, 96, 120.0F), "00 90 3C 64 00 90 40 64");
}

TEST(CkvoMidiFile, EventsOfEqualTimeKeepTheirOrderAndTheSecondHasDelta0) {
    CkvoMidiTrack track;
    AddNote(track, 500, 67);
    AddNote(track, 500, 60);
    EXPECT_EQ(EventBytes(track, 96, 120.0F), "60 90 43 64 00 90 3C 64");
}

TEST(CkvoMidiFile, TempoEventBehindANoteAtTime0TakesEffectFromTheNextDeltaOn) {
    CkvoMidiTrack track;
    AddNote(track, 0, 60);
    track.AddEvent(std::make_shared<CkvoMidiFileTempoEvent>(240.0F));
    AddNote(track, 250, 62);
    EXPECT_EQ(EventBytes(track, 96, 60.0F), "00 90 3C 64 00 FF 51 03 03 D0 90 60 90 3E 64");
}

TEST(CkvoMidiFile, WithoutTempoEventsTheArgumentSetsTheTempo) {
    CkvoMidiTrack track;
    AddNote(track, 1000, 60);
    EXPECT_THAT(Deltas(track, 96, 60.0F), ElementsAre(96));
    EXPECT_THAT(Deltas(track, 96, 90.0F), ElementsAre(144));
}

TEST(CkvoMidiFile, TempoGoesOnIntoTheNextTrack) {
    CkvoMidiTrack first;
    first.AddEvent(std::make_shared<CkvoMidiFileTempoEvent>(240.0F));
    CkvoMidiTrack second;
    AddNote(second, 1000, 60);
    const std::string file = Written({first, second}, 100, 60.0F);
    EXPECT_EQ(CMidiReader(file).Read().tracks.at(1).at(0).delta, 400U);
}

TEST(CkvoMidiFile, OneSecondAt120Is192TicksOf96) {
    CkvoMidiTrack track;
    AddNote(track, 1000, 60);
    EXPECT_EQ(EventBytes(track, 96, 120.0F), "81 40 90 3C 64");
}

TEST(CkvoMidiFile, DeltaBelowOneTickIsLostAndNotCarriedOver) {
    CkvoMidiTrack track;
    for (std::uint32_t time = 5; time <= 50; time += 5) AddNote(track, time, 60); // 0.96 ticks each
    EXPECT_THAT(Deltas(track, 96, 120.0F), testing::Each(0U));
    AddNote(track, 56, 60); // 1.152 ticks, not 10.752
    EXPECT_EQ(Deltas(track, 96, 120.0F).back(), 1U);
}

TEST(CkvoMidiFile, TicksAreTruncatedAfterArithmeticInF32) {
    // 125 ms at 110 are 88 ticks exactly, and 875 ms at 90 are 504; 60 / bpm x 1000 in f32 is a little above.
    for (const auto& [bpm, milliseconds, ticks] :
         {std::tuple(110.0F, 125U, 87U), std::tuple(90.0F, 875U, 503U), std::tuple(97.0F, 625U, 388U),
          std::tuple(120.0F, 625U, 480U)}) {
        CkvoMidiTrack track;
        AddNote(track, milliseconds, 60);
        EXPECT_THAT(Deltas(track, 384, bpm), ElementsAre(ticks)) << bpm;
    }
}

TEST(CkvoMidiFile, VariableLengthsAtTheirEdges) {
    // At 60000 beats a minute and one tick a beat a millisecond is a tick; beyond 2^24 only what f32 holds
    // exactly.
    const std::vector<std::pair<std::uint32_t, std::string>> edges = {
        {0, "00"},
        {1, "01"},
        {0x7F, "7F"},
        {0x80, "81 00"},
        {0x3FFF, "FF 7F"},
        {0x4000, "81 80 00"},
        {0x1FFFFF, "FF FF 7F"},
        {0x200000, "81 80 80 00"},
        {0x0FFFFFF0, "FF FF FF 70"},
        {0x10000000, "81 80 80 80 00"},
        {0xFFFFFF00, "8F FF FF FE 00"},
    };
    for (const auto& [ticks, bytes] : edges) {
        CkvoMidiTrack track;
        AddNote(track, ticks, 60);
        EXPECT_EQ(EventBytes(track, 1, 60000.0F), bytes + " 90 3C 64") << ticks;
    }
}

TEST(CkvoMidiFile, AbsurdNumbersGiveAFileAllTheSame) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float none = std::numeric_limits<float>::quiet_NaN();
    CkvoMidiTrack track;
    AddNote(track, 1000, 60);
    for (const float bpm : {0.0F, -120.0F, none, -infinity})
        EXPECT_THAT(Deltas(track, 96, bpm), ElementsAre(0)) << bpm;
    EXPECT_THAT(Deltas(track, 0, 120.0F), ElementsAre(0));
    EXPECT_THAT(Deltas(track, -96, 120.0F), ElementsAre(0));
    EXPECT_THAT(Deltas(track, 96, 1e30F), ElementsAre(std::numeric_limits<std::uint32_t>::max()));
    EXPECT_THAT(Deltas(track, 96, infinity), ElementsAre(std::numeric_limits<std::uint32_t>::max()));
}

TEST(CkvoMidiFile, Format1HasATempoEventStraightBehindTheHeader) {
    EXPECT_EQ(ToHex(Written({CkvoMidiTrack()}, 384, 60.0F, 1)), "4D 54 68 64 00 00 00 06 00 01 00 01 01 80 "
                                                                "00 FF 51 03 0F 42 40 "
                                                                "4D 54 72 6B 00 00 00 04 00 FF 2F 00");
    EXPECT_EQ(ToHex(Written({}, 384, 60.0F, 2)), "4D 54 68 64 00 00 00 06 00 02 00 00 01 80");
}

TEST(CkvoMidiFile, ChannelAbove15IsComplainedOfAndWrittenAsItIs) {
    CkvoMidiTrack track;
    AddNote(track, 0, 60, 100, 16);
    AddNote(track, 0, 60, 100, 15);
    testing::internal::CaptureStderr();
    const std::string bytes = EventBytes(track, 96, 120.0F);
    const std::string complaint = testing::internal::GetCapturedStderr();
    EXPECT_EQ(bytes, "00 90 3C 64 00 9F 3C 64"); // 0x90 | 16 is 0x90
    EXPECT_THAT(complaint, HasSubstr("error: MIDI channel greater than 16\n"));
    EXPECT_EQ(complaint.find("error"), complaint.rfind("error")) << "once, for the one event";
}

TEST(CkvoMidiFile, WhatIsAddedToTheCallersTrackLaterIsNotInTheFile) {
    const CScratchFolder folder;
    CkvoMidiFile file;
    {
        CkvoMidiTrack track;
        AddNote(track, 0, 60);
        file.AddTrack(track);
        AddNote(track, 0, 61);
    } // the caller's track is gone before the file is written
    ASSERT_EQ(file.Write(folder.File("out.mid"), 0, 96, 120.0F), kOk);
    const std::string bytes = CScratchFolder::Content(folder.File("out.mid"));
    EXPECT_EQ(CMidiReader(bytes).Read().tracks.at(0).size(), 2U);
}

TEST(CkvoMidiFile, CanBeWrittenTwiceWithTheSameBytes) {
    const CScratchFolder folder;
    CkvoMidiTrack track;
    track.AddEvent(std::make_shared<CkvoMidiFileTempoEvent>(90.0F));
    AddNote(track, 700, 60);
    CkvoMidiFile file;
    file.AddTrack(track);
    ASSERT_EQ(file.Write(folder.File("a.mid"), 0, 96, 120.0F), kOk);
    ASSERT_EQ(file.Write(folder.File("b.mid"), 0, 96, 120.0F), kOk);
    EXPECT_EQ(CScratchFolder::Content(folder.File("a.mid")), CScratchFolder::Content(folder.File("b.mid")));
}

// Where it is written.

TEST(CkvoMidiFile, ReplacesAnOldFileAndTakesAnyName) {
    const CScratchFolder folder;
    const std::string path = folder.Put("Ch\xC5\x93ur \xE5\x90\x88\xE5\x94\xB1.mid", std::string(1000, 'x'));
    EXPECT_EQ(CkvoMidiFile().Write(path, 0, 96, 120.0F), kOk);
    EXPECT_EQ(CScratchFolder::Content(path).size(), kHeaderBytes);
    EXPECT_EQ(folder.CountFiles(), 1U);
}

TEST(CkvoMidiFile, FileThatCannotBeOpenedGives3000004AndLeavesNothing) {
    const CScratchFolder folder;
    std::filesystem::create_directory(folder.File("folder.mid"));
    const std::string plain = folder.Put("plain", "text");
    for (const std::string& path : {std::string(), folder.File("missing/out.mid"), folder.File("folder.mid"),
                                    plain + "/out.mid", folder.File(std::string("a\0b", 3))})
        EXPECT_EQ(CkvoMidiFile().Write(path, 0, 96, 120.0F), 3000004) << path;
    EXPECT_EQ(folder.CountFiles(), 2U);
    EXPECT_EQ(CScratchFolder::Content(plain), "text");
}

TEST(CkvoMidiFile, FullDiskGives3000004AndLeavesTheOldFile) {
    const CScratchFolder folder;
    const std::string old = folder.Put("old.mid", "old");
    CkvoMidiTrack track;
    for (std::uint32_t i = 0; i < 1000; ++i) AddNote(track, i, 60);
    CkvoMidiFile file;
    file.AddTrack(track);
    {
        const FileSizeLimit limit(100);
        EXPECT_EQ(file.Write(old, 0, 96, 120.0F), kCannotWrite);
        EXPECT_EQ(file.Write(folder.File("new.mid"), 0, 96, 120.0F), kCannotWrite);
    }
    EXPECT_EQ(folder.CountFiles(), 1U);
    EXPECT_EQ(CScratchFolder::Content(old), "old");
    EXPECT_EQ(file.Write(old, 0, 96, 120.0F), kOk);
}

// Random tracks, at a tempo where a tick is a millisecond: every event is read back where it was put.
TEST(CkvoMidiFile, RandomTracksAreReadBackInOrder) {
    constexpr std::uint32_t kSeed = 4711;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    for (int round = 0; round < 50; ++round) {
        CkvoMidiTrack track;
        std::vector<std::pair<std::uint32_t, MidiRead::Event>> expected;
        for (std::uint32_t i = random() % 200; i > 0; --i) {
            const std::uint32_t time = random() % 16000; // time x division stays exact in f32
            const std::int32_t status = random() % 2 == 0 ? kMidiNoteOn : kMidiNoteOff;
            const auto channel = static_cast<std::int32_t>(random() % 16);
            const auto key = static_cast<char>(random() % 128);
            const auto velocity = static_cast<char>(random() % 128);
            track.AddEvent(std::make_shared<CkvoMidiFileNoteEvent>(time, status, channel, key, velocity));
            expected.push_back({time, {0, status + channel, 0, {key, velocity}}});
        }
        std::stable_sort(expected.begin(), expected.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        const std::string bytes = Written({track}, 1000, 60.0F);
        const MidiRead read = CMidiReader(bytes).Read();
        ASSERT_EQ(read.format, 0);
        ASSERT_EQ(read.division, 1000);
        ASSERT_EQ(read.tracks.size(), 1U);
        ASSERT_EQ(read.tracks[0].size(), expected.size() + 1);
        std::uint32_t now = 0;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            MidiRead::Event event = read.tracks[0][i];
            now += event.delta;
            event.delta = 0;
            ASSERT_EQ(now, expected[i].first) << "event " << i;
            ASSERT_EQ(event, expected[i].second) << "event " << i;
        }
    }
}

} // namespace
} // namespace sonorelle
