// Keys that come in, and the notes of the voices that go out.

#include "vst/vst_stage.h"

#include <cmath>
#include <random>

namespace sonorelle::test {
namespace {

class VstMidi : public VstStage {
protected:
    // A session that is played by a key instead of the transport.
    void LoadSongForKeys() { LoadSong("<DoSnapshotTrigger str=\"1\"/>\n"); }
    float PeakOfNext(std::int32_t frames) {
        float peak = 0;
        for (const float sample : plugIn.PlayOut(frames, 512)) peak = std::max(peak, std::fabs(sample));
        return peak;
    }
};

TEST_F(VstMidi, EventsAreTakenBeforeThereIsARecording) {
    EXPECT_EQ(plugIn.SendMidi({MidiOf(0x90, 60, 100)}), 1);
    EXPECT_EQ(plugIn.SendMidi({}), 1);
    EXPECT_EQ(PeakOfNext(1024), 0.0F);
}

TEST_F(VstMidi, AKeyPlaysTheSongAndItsReleaseEndsIt) {
    LoadSongForKeys();
    EXPECT_EQ(PeakOfNext(4096), 0.0F);
    EXPECT_EQ(plugIn.SendMidi({MidiOf(0x90, 60, 100, 37)}), 1);
    EXPECT_GT(PeakOfNext(16384), 0.05F);
    plugIn.SendMidi({MidiOf(0x80, 60, 0)});
    PeakOfNext(8192);
    EXPECT_EQ(PeakOfNext(4096), 0.0F);
}

TEST_F(VstMidi, TheKeysLatencyIsAskedOfTheHost) {
    LoadSongForKeys();
    const std::int32_t before = host.CountOf(Request::kGetOutputLatency);
    plugIn.SendMidi({MidiOf(0x90, 60, 100)});
    EXPECT_GT(host.CountOf(Request::kGetOutputLatency), before);
}

TEST_F(VstMidi, TheVoicesNotesGoOutInTheirBlocksAndEnd) {
    LoadSong();
    host.Play(0);
    std::size_t count = 0;
    int sounding = 0;
    HostBlock block(512);
    for (int i = 0; i < 100; ++i) {
        plugIn.PlayBlock(block, 512);
        for (const HostMidiEvent& event : host.TakeMidi()) {
            ++count;
            EXPECT_EQ(event.type, 1);
            EXPECT_EQ(event.byteSize, 24);
            EXPECT_GE(event.deltaFrames, 0);
            EXPECT_LT(event.deltaFrames, 512);
            EXPECT_LT(event.midiData[1], 128);
            EXPECT_LT(event.midiData[2], 128);
            const int status = event.midiData[0] & 0xF0;
            EXPECT_TRUE(status == 0x80 || status == 0x90);
            sounding += status == 0x90 && event.midiData[2] > 0 ? 1 : -1;
        }
    }
    EXPECT_GT(count, 8U); // three notes of four voices, on and off
    EXPECT_EQ(sounding, 0);
}

TEST_F(VstMidi, AHostThatTellsNoLevelIsSentThem) {
    LoadSong();
    host.processLevel = kLevelUntold;
    host.Play(0);
    plugIn.PlayOut(kVstSongFrames, 512);
    EXPECT_GT(host.TakeMidi().size(), 8U);
}

TEST_F(VstMidi, AnOfflineRenderSendsNone) {
    LoadSong();
    host.processLevel = kLevelOffline;
    host.Play(0);
    plugIn.PlayOut(kVstSongFrames, 512);
    EXPECT_TRUE(host.TakeMidi().empty());
    EXPECT_EQ(host.CountOf(Request::kProcessEvents), 0);
}

TEST_F(VstMidi, TenThousandEventsOfAnyKindAreHarmless) {
    LoadSongForKeys();
    std::mt19937 random(17);
    const std::array<std::int32_t, 6> deltas = {0, 100, -1, 511, 2147483647, -2147483647};
    std::vector<HostMidiEvent> events;
    for (std::size_t i = 0; i < 10000; ++i) {
        events.push_back(MidiOf(static_cast<int>(random() % 256), static_cast<int>(random() % 256),
                                static_cast<int>(random() % 256), deltas[i % deltas.size()]));
        events.back().type = random() % 8 == 0 ? static_cast<std::int32_t>(random()) : 1;
    }
    EXPECT_EQ(plugIn.SendMidi(events), 1);
    HostBlock block(512);
    for (int i = 0; i < 8; ++i) {
        plugIn.PlayBlock(block, 512);
        EXPECT_TRUE(block.IsFinite());
    }
}

} // namespace
} // namespace sonorelle::test
