// Blocks, transport and keys, as a host's audio thread brings them.

#include "host/plugin_stage.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <limits>

namespace sonorelle::test {
namespace {

constexpr float kUntouched = OutputBlock::kUntouched;

TEST(PlugInAudio, WithoutARecordingOnlyTheFirstPairIsZeroed) {
    PlugInStage stage;
    OutputBlock block(100);
    stage.plugIn->Process(nullptr, block.Pointers(), 100);
    EXPECT_TRUE(block.IsAll(0, 0));
    EXPECT_TRUE(block.IsAll(1, 0));
    for (std::size_t output = 2; output < 10; ++output)
        EXPECT_TRUE(block.IsAll(output, kUntouched)) << output;
}

TEST(PlugInAudio, WithoutARecordingAMissingOutputOfTheFirstPairLeavesTheOtherAsItIs) {
    PlugInStage stage;
    OutputBlock block(100);
    std::array<float*, 10> pointers{block.Pointers()[0], nullptr};
    stage.plugIn->Process(nullptr, pointers.data(), 100);
    EXPECT_TRUE(block.IsAll(0, kUntouched));
    pointers = {nullptr, block.Pointers()[1]};
    stage.plugIn->Process(nullptr, pointers.data(), 100);
    EXPECT_TRUE(block.IsAll(1, kUntouched));
    stage.plugIn->Process(nullptr, nullptr, 100);
}

TEST(PlugInAudio, WithoutARecordingTheHostsTempoIsNoted) {
    PlugInStage stage;
    EXPECT_EQ(stage.plugIn->GetHostTempo(), 120);
    stage.host.time.tempo = 93.5;
    stage.PlayBlocks(1, 64);
    EXPECT_EQ(stage.host.lastFilter.load(), 0x2403);
    EXPECT_EQ(stage.plugIn->GetHostTempo(), 93.5F);
    for (const double odd : {0.0, -5.0, kDoubleInfinity, -kDoubleInfinity, kDoubleNaN, 1e300}) {
        stage.host.time.tempo = odd;
        stage.PlayBlocks(1, 64);
        EXPECT_EQ(stage.plugIn->GetHostTempo(), 93.5F) << odd;
    }
    stage.host.hasTime = false;
    stage.PlayBlocks(1, 64);
    EXPECT_EQ(stage.plugIn->GetHostTempo(), 93.5F);
}

TEST(PlugInAudio, PlaysWhileTheHostPlays) {
    PlugInStage stage;
    stage.LoadSong();
    OutputBlock block = stage.PlayBlocks(40, 512);
    EXPECT_TRUE(block.IsAll(0, 0)); // the host stands
    stage.host.Play(true);
    float loudest = 0;
    for (int i = 0; i < 100; ++i) loudest = std::max(loudest, stage.PlayBlocks(1, 512).Peak(0));
    EXPECT_GT(loudest, 0.05F);
    EXPECT_TRUE(stage.App().IsPlaying());
    stage.host.Play(false);
    stage.PlayBlocks(3, 512);
    EXPECT_FALSE(stage.App().IsPlaying());
}

TEST(PlugInAudio, AJumpOfThreeSamplesMovesThePositionThoughTheHostIsSilentAboutIt) {
    PlugInStage stage;
    stage.LoadSong();
    stage.host.Play(true);
    stage.PlayBlocks(4, 512);
    ASSERT_TRUE(stage.App().IsPlaying());
    const double before = stage.App().GetExactPosition();

    stage.host.time.samplePos += 2; // a host that rounds
    stage.PlayBlocks(1, 512);
    EXPECT_NEAR(stage.App().GetExactPosition(), before + 512, 1e-6);

    stage.host.time.samplePos += 20000;
    stage.PlayBlocks(1, 512);
    // The voices begin at the mark nearest to the place: within a period, or the distance of marks in a rest.
    EXPECT_NEAR(stage.App().GetExactPosition(), before + 2 + 20000 + 1024, 600);
}

TEST(PlugInAudio, TheHostsTempoReachesTheApplicationOnlyWhenItDiffers) {
    PlugInStage stage;
    stage.LoadSong();
    EXPECT_EQ(stage.App().GetHostTempo(), 100);
    EXPECT_EQ(stage.App().GetTimeSigNumerator(), 3);
    stage.host.time.tempo = 87;
    stage.host.time.timeSigNumerator = 0;
    stage.host.time.timeSigDenominator = 8;
    stage.PlayBlocks(1, 64);
    EXPECT_EQ(stage.App().GetHostTempo(), 87);
    EXPECT_EQ(stage.App().GetTimeSigNumerator(), 4);
    EXPECT_EQ(stage.App().GetTimeSigDenominator(), 8);
    for (const double odd : {0.0, -5.0, kDoubleInfinity, kDoubleNaN, 999.0, 1e300}) {
        stage.host.time.tempo = odd;
        stage.PlayBlocks(1, 64);
        EXPECT_EQ(stage.App().GetHostTempo(), 87) << odd;
    }
}

TEST(PlugInAudio, PositionsThatAreNoNumbersAreTakenForTheExpectedOnes) {
    PlugInStage stage;
    stage.LoadSong();
    stage.host.Play(true);
    stage.PlayBlocks(10, 512);
    const double before = stage.App().GetExactPosition();
    for (const double odd : {kDoubleNaN, kDoubleInfinity, -kDoubleInfinity}) {
        stage.host.time.samplePos = odd;
        const OutputBlock block = stage.PlayBlocks(1, 512);
        EXPECT_TRUE(block.IsFinite()) << odd;
    }
    EXPECT_NEAR(stage.App().GetExactPosition(), before + 3 * 512, 1e-6);
    for (const double far : {-1e300, 1e300, -5.0, 1e12}) {
        stage.host.time.samplePos = far;
        EXPECT_TRUE(stage.PlayBlocks(2, 512).IsFinite()) << far;
    }
}

TEST(PlugInAudio, AnyNumberOfFramesIsHarmless) {
    PlugInStage stage;
    stage.LoadSong();
    stage.host.Play(true);
    OutputBlock block(100000);
    for (const std::int32_t frames : {0, -1, -1000000, 1, 17, 100000, 0, 64}) {
        stage.plugIn->Process(nullptr, block.Pointers(), frames);
        EXPECT_TRUE(block.IsFinite());
        stage.host.Advance(std::max(frames, 0));
    }
}

TEST(PlugInAudio, MissingOutputsAreHarmless) {
    PlugInStage stage;
    stage.LoadSong();
    stage.host.Play(true);
    OutputBlock block(512);
    stage.plugIn->Process(nullptr, nullptr, 512);
    std::array<float*, 10> pointers{};
    stage.plugIn->Process(nullptr, pointers.data(), 512);
    pointers[0] = block.Pointers()[0];
    stage.plugIn->Process(nullptr, pointers.data(), 512);
    EXPECT_TRUE(block.IsAll(0, kUntouched));
    pointers[1] = block.Pointers()[1];
    stage.plugIn->Process(nullptr, pointers.data(), 512);
    EXPECT_FALSE(block.IsAll(0, kUntouched));
    EXPECT_TRUE(block.IsAll(2, kUntouched));
}

TEST(PlugInAudio, TheSoundIsTheSameForEveryBlockLength) {
    const auto play = [](std::int32_t frames) {
        PlugInStage stage;
        stage.LoadSong();
        stage.host.Play(true);
        std::vector<float> heard;
        while (heard.size() < 16384) {
            const OutputBlock block = stage.PlayBlocks(1, frames);
            heard.insert(heard.end(), block[0].begin(), block[0].end());
        }
        heard.resize(16384);
        return heard;
    };
    const std::vector<float> reference = play(64);
    EXPECT_TRUE(
        std::any_of(reference.begin(), reference.end(), [](float s) { return std::fabs(s) > 0.01F; }));
    for (const std::int32_t frames : {1, 17, 100, 4096}) EXPECT_EQ(play(frames), reference) << frames;
}

TEST(PlugInAudio, ANewSampleRateOfTheHostIsTakenWithTheNextBlock) {
    PlugInStage stage;
    stage.LoadSong();
    {
        auto& app = stage.App();
        app.PlaybackPanel().SetOffset(44100);
        app.OnPlaybackChanged();
    }
    stage.host.sampleRate = 88200;
    stage.PlayBlocks(1, 64);
    // The marker keeps its time.
    EXPECT_NEAR(stage.App().PlaybackPanel().GetOffset(), 88200, 1);
    for (const float odd :
         {0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        stage.host.sampleRate = odd;
        stage.PlayBlocks(1, 64);
        EXPECT_NEAR(stage.App().PlaybackPanel().GetOffset(), 88200, 1) << odd;
    }
}

// --- Keys ---

TEST(PlugInEvents, AreTakenWithoutARecordingAndWithoutEvents) {
    PlugInStage stage;
    const IncomingEvents keys({MidiMessage(0x90, 60, 100)});
    EXPECT_EQ(stage.plugIn->ProcessEvents(keys.List()), 1);
    EXPECT_FALSE(stage.plugIn->HasSeenNoteOn());
    stage.LoadSong();
    EXPECT_EQ(stage.plugIn->ProcessEvents(nullptr), 1);
}

void TriggerBySnapshots(PlugInStage& stage) {
    stage.App().PlaybackPanel().SetMode(CkvovirelainePlaybackSettings::kMidi);
    stage.App().OnPlaybackChanged();
    ASSERT_TRUE(stage.App().IsTriggeredBySnapshots());
}

TEST(PlugInEvents, TheTriggerNoteStartsAndAllNotesOffEnds) {
    for (const int controller : {123, 126}) {
        PlugInStage stage;
        stage.LoadSong();
        TriggerBySnapshots(stage);
        stage.host.lastFilter = 0;
        stage.plugIn->ProcessEvents(IncomingEvents({MidiMessage(0x91, 60, 100, 37)}).List());
        EXPECT_EQ(stage.host.lastFilter.load(), 3);
        EXPECT_TRUE(stage.plugIn->HasSeenNoteOn());
        EXPECT_TRUE(stage.App().IsPlaying());
        stage.PlayBlocks(8, 512);
        stage.plugIn->ProcessEvents(
            IncomingEvents({MidiMessage(0xB1, 7, 100), MidiMessage(0xB1, 122, 0)}).List());
        stage.PlayBlocks(8, 512);
        EXPECT_TRUE(stage.App().IsPlaying()); // other controllers mean nothing
        stage.plugIn->ProcessEvents(IncomingEvents({MidiMessage(0xB1, controller, 0)}).List());
        EXPECT_FALSE(stage.plugIn->HasSeenNoteOn());
        stage.PlayBlocks(4, 512);
        EXPECT_FALSE(stage.App().IsPlaying()) << controller;
    }
}

TEST(PlugInEvents, ANoteOnWithoutVelocityIsANoteOff) {
    for (const VstMidiEvent& release : {MidiMessage(0x80, 60, 64), MidiMessage(0x90, 60, 0)}) {
        PlugInStage stage;
        stage.LoadSong();
        TriggerBySnapshots(stage);
        stage.plugIn->ProcessEvents(IncomingEvents({MidiMessage(0x90, 60, 100)}).List());
        stage.PlayBlocks(4, 512);
        stage.plugIn->ProcessEvents(IncomingEvents({release}).List());
        EXPECT_FALSE(stage.plugIn->HasSeenNoteOn());
        stage.PlayBlocks(4, 512);
        EXPECT_FALSE(stage.App().IsPlaying());
    }
}

TEST(PlugInEvents, ANoteStartsTheRegionOnItsSample) {
    PlugInStage stage;
    stage.LoadSong();
    TriggerBySnapshots(stage);
    stage.plugIn->ProcessEvents(IncomingEvents({MidiMessage(0x90, 60, 100, 37)}).List());
    stage.PlayBlocks(1, 512);
    EXPECT_NEAR(stage.App().GetExactPosition(), 512 - 37, 1e-6);
}

TEST(PlugInEvents, EventsOfOtherKindsAndMissingOnesAreIgnored) {
    PlugInStage stage;
    stage.LoadSong();
    TriggerBySnapshots(stage);
    VstMidiEvent foreign = MidiMessage(0x90, 60, 100);
    foreign.type = 6;
    IncomingEvents keys({foreign, MidiMessage(0x90, 60, 100), MidiMessage(0xE0, 60, 100)});
    keys.RemoveEvent(1);
    stage.plugIn->ProcessEvents(keys.List());
    EXPECT_FALSE(stage.plugIn->HasSeenNoteOn());
    EXPECT_FALSE(stage.App().IsPlaying());
}

TEST(PlugInEvents, TenThousandInABlockAndAnyOffsetsAreHarmless) {
    PlugInStage stage;
    stage.LoadSong();
    stage.host.Play(true);
    std::vector<VstMidiEvent> many;
    RandomNumbers random(7);
    for (int i = 0; i < 10000; ++i) {
        const std::int32_t deltas[] = {0,
                                       63,
                                       64,
                                       -1,
                                       std::numeric_limits<std::int32_t>::min(),
                                       std::numeric_limits<std::int32_t>::max()};
        many.push_back(MidiMessage(random.Below(256), random.Below(256), random.Below(256), deltas[i % 6]));
    }
    const IncomingEvents keys(many);
    for (const bool trigger : {false, true}) {
        if (trigger) TriggerBySnapshots(stage);
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(stage.plugIn->ProcessEvents(keys.List()), 1);
            EXPECT_TRUE(stage.PlayBlocks(1, 512).IsFinite());
        }
    }
}

// --- Notes of the voices ---

TEST(PlugInMidiOut, TheVoicesNotesLeaveOnTheirChannelsWithinTheirBlocks) {
    PlugInStage stage;
    stage.LoadSong();
    stage.host.Play(true);
    stage.PlayBlocks(stage.App().GetMelodyEnd() / 512 + 4, 512);
    ASSERT_GT(stage.host.sentCount, 8);
    std::array<int, 16> onsOfChannel{};
    int sounding = 0;
    for (const SentBlock& block : stage.host.sent) {
        EXPECT_FALSE(block.events.empty());
        for (const VstMidiEvent& event : block.events) {
            EXPECT_GE(event.deltaFrames, 0);
            EXPECT_LT(event.deltaFrames, 512);
            EXPECT_EQ(event.byteSize, 24);
            const int status = event.midiData[0] & 0xF0;
            sounding += status == 0x90 ? 1 : -1;
            if (status == 0x90) ++onsOfChannel[event.midiData[0] & 0x0FU];
        }
    }
    for (std::size_t channel = 0; channel < 4; ++channel) EXPECT_GT(onsOfChannel[channel], 0) << channel;
    for (std::size_t channel = 4; channel < 16; ++channel) EXPECT_EQ(onsOfChannel[channel], 0) << channel;
    EXPECT_EQ(sounding, 0); // the song is over
}

TEST(PlugInMidiOut, TheSameNotesLeaveInEveryBlockLength) {
    const auto play = [](std::int32_t frames) {
        PlugInStage stage;
        stage.LoadSong();
        stage.host.Play(true);
        std::vector<std::array<int, 3>> notes;
        stage.PlayBlocks(100000 / frames, frames);
        for (const SentBlock& block : stage.host.sent)
            for (const VstMidiEvent& event : block.events)
                notes.push_back({event.midiData[0], event.midiData[1], event.midiData[2]});
        return notes;
    };
    const auto reference = play(512);
    ASSERT_GT(reference.size(), 4U);
    EXPECT_EQ(play(64), reference);
    EXPECT_EQ(play(17), reference);
}

TEST(PlugInMidiOut, AnOfflineRenderSendsNoneAndDropsWhatWaited) {
    PlugInStage stage;
    stage.LoadSong();
    stage.host.processLevel = kVstProcessLevelOffline;
    stage.host.Play(true);
    stage.PlayBlocks(stage.App().GetMelodyEnd() / 512 + 4, 512);
    EXPECT_EQ(stage.host.sentBlocks, 0);
    stage.host.processLevel = 2;
    stage.host.Play(false);
    stage.PlayBlocks(2, 512);
    EXPECT_EQ(stage.host.sentCount, 0);
    std::vector<MidiEventRecord> rest;
    EXPECT_EQ(stage.App().GetOutgoingMidi(rest), 0);
}

TEST(PlugInMidiOut, WithoutAHostNothingPilesUp) {
    ScriptedToolkit toolkit;
    CvirelainePlugIn plugIn(nullptr, toolkit);
    ASSERT_EQ(plugIn.LoadAudioFile(SungSong()), kOk);
    plugIn.WithApplication([](CkvovirelaineApp& app) {
        app.PlaybackPanel().SetMode(CkvovirelainePlaybackSettings::kMidi);
        app.OnPlaybackChanged();
    });
    plugIn.ProcessEvents(IncomingEvents({MidiMessage(0x90, 60, 100)}).List());
    OutputBlock block(512);
    float loudest = 0;
    for (int i = 0; i < 100; ++i) {
        plugIn.Process(nullptr, block.Pointers(), 512);
        loudest = std::max(loudest, block.Peak(0));
    }
    EXPECT_GT(loudest, 0.05F);
    std::vector<MidiEventRecord> rest;
    EXPECT_EQ(plugIn.Application()->GetOutgoingMidi(rest), 0);
}

TEST(PlugInAudio, TheVoicesHavePairsOfTheirOwnWhenAskedFor) {
    PlugInStage stage;
    stage.LoadSong();
    stage.host.Play(true);
    stage.PlayBlocks(60, 512);
    OutputBlock block = stage.PlayBlocks(1, 512);
    for (std::size_t output = 2; output < 10; ++output) EXPECT_TRUE(block.IsAll(output, 0)) << output;
    ASSERT_TRUE(stage.plugIn->ToggleSingleVoice());
    std::array<float, 10> loudest{};
    for (int i = 0; i < 40; ++i) {
        block = stage.PlayBlocks(1, 512);
        for (std::size_t output = 0; output < 10; ++output)
            loudest[output] = std::max(loudest[output], block.Peak(output));
    }
    for (std::size_t output = 0; output < 10; ++output) EXPECT_GT(loudest[output], 0.01F) << output;
}

TEST(PlugInAudio, ClippingIsToldUntilPlaybackEnds) {
    PlugInStage stage;
    EXPECT_FALSE(stage.plugIn->IsClipping());
    const TemporaryFolder folder;
    const std::string loud = folder.File("loud.wav").string();
    Recording recording = SingStageSong();
    for (auto& channel : recording.channels)
        for (float& sample : channel) sample *= 1.99F;
    ASSERT_TRUE(WriteWav(loud, recording));
    ASSERT_EQ(stage.plugIn->LoadAudioFile(loud), kOk);
    stage.plugIn->SetParameter(0, 1); // volume of the lead: 1.333
    stage.plugIn->SetParameter(1, 0); // all of it to the left
    stage.host.Play(true);
    stage.PlayBlocks(200, 512);
    EXPECT_TRUE(stage.plugIn->IsClipping());
    stage.host.Play(false);
    stage.PlayBlocks(2, 512);
    EXPECT_FALSE(stage.plugIn->IsClipping());
}

} // namespace
} // namespace sonorelle::test
