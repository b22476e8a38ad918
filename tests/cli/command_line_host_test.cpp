#include "cli/command_line_host.h"

#include <gtest/gtest.h>

namespace sonorelle {
namespace {

bool HasFlag(CommandLineHost& host, std::int32_t flag) { return (host.GetTimeInfo(0)->flags & flag) != 0; }

TEST(CommandLineHost, StandsStillAtFirst) {
    CommandLineHost host;
    const VstTimeInfo& time = *host.GetTimeInfo(0);
    EXPECT_EQ(time.samplePos, 0);
    EXPECT_EQ(time.tempo, 120);
    EXPECT_EQ(time.timeSigNumerator, 4);
    EXPECT_EQ(time.timeSigDenominator, 4);
    EXPECT_TRUE(HasFlag(host, kVstTempoValid) && HasFlag(host, kVstTimeSigValid));
    EXPECT_FALSE(host.IsPlaying());
    EXPECT_EQ(host.GetSampleRate(), 0);
    host.Advance(512);
    EXPECT_EQ(time.samplePos, 0);
}

TEST(CommandLineHost, RunsOnFromBlockToBlock) {
    CommandLineHost host;
    host.SetSampleRate(1000);
    host.Play(500);
    EXPECT_TRUE(host.IsPlaying());
    host.Advance(250);
    EXPECT_EQ(host.GetPosition(), 750);
    EXPECT_EQ(host.GetTimeInfo(0)->ppqPos, 1.5); // 120 a minute are two a second
    host.Stop();
    host.Advance(250);
    EXPECT_EQ(host.GetPosition(), 750);
}

TEST(CommandLineHost, TellsOfAChangeForOneBlock) {
    CommandLineHost host;
    host.Play(0);
    EXPECT_TRUE(HasFlag(host, kVstTransportChanged));
    host.Advance(64);
    EXPECT_FALSE(HasFlag(host, kVstTransportChanged));
    host.Locate(9);
    EXPECT_TRUE(HasFlag(host, kVstTransportChanged));
    host.Advance(64);
    host.Stop();
    EXPECT_TRUE(HasFlag(host, kVstTransportChanged));
}

TEST(CommandLineHost, IsOfflineWhileItRendersAFile) {
    CommandLineHost host;
    EXPECT_NE(host.GetCurrentProcessLevel(), kVstProcessLevelOffline);
    host.SetOffline(true);
    EXPECT_EQ(host.GetCurrentProcessLevel(), kVstProcessLevelOffline);
}

TEST(CommandLineHost, KeepsTheNotesThatComeOutAtTheirSamples) {
    CommandLineHost host;
    host.Play(1000);
    VstMidiEvent note;
    note.deltaFrames = 37;
    note.midiData[0] = 0x92;
    note.midiData[1] = 60;
    note.midiData[2] = 90;
    VstEvents list;
    list.numEvents = 2;
    list.events[0] = nullptr;
    list.events[1] = reinterpret_cast<VstEvent*>(&note);
    host.SendVstEventsToHost(&list);
    ASSERT_EQ(host.SentNotes().size(), 1U);
    EXPECT_EQ(host.SentNotes()[0].samplePos, 1037);
    EXPECT_EQ(host.SentNotes()[0].status, 0x92);
    EXPECT_EQ(host.SentNotes()[0].key, 60);
    EXPECT_EQ(host.SentNotes()[0].velocity, 90);
}

} // namespace
} // namespace sonorelle
