// Whole sessions, saved in one plug-in and restored into a fresh one while the host plays.

#include "host/plugin_stage.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace sonorelle::test {
namespace {

// How a session is set up that is saved.
struct SessionWish {
    std::int32_t styleRow = 0;
    std::int32_t liveRow = -1; // 0 harmonies, 1 pitches
    bool edit = false;
    bool sync = false;
    bool trigger = false;
};

void Arrange(PlugInStage& stage, const SessionWish& wish) {
    stage.LoadSong();
    stage.plugIn->WithApplication([&](CkvovirelaineApp& app) {
        app.SetMelodyTempo(140);
        app.SplitAt(app.Driver().GetNoteStart(1) + app.Driver().GetNoteLength(1) / 2);
        app.SnapshotPanel().Add("Cut");
        app.ChoirPanel().ChooseStyle(wish.styleRow);
        app.SnapshotPanel().SetTriggerNote(64);
        app.SnapshotPanel().Add("Styled <&\">");
        if (wish.edit) app.ChoirPanel().PressEdit(true);
        if (wish.liveRow >= 0) {
            app.ChoirPanel().PressLive(true);
            app.ChoirPanel().ChooseInterpretation(wish.liveRow);
        }
        if (wish.edit) app.SetNotePitch(2, 1, stage.VoicePitch(2, 1) + 3);
        app.PlaybackPanel().SetSyncTempo(wish.sync);
        if (wish.trigger) app.PlaybackPanel().PressMidi();
        app.PlaybackPanel().SetOffset(1000);
        app.OnPlaybackChanged();
        app.SplitAt(app.Driver().GetNoteStart(3) + app.Driver().GetNoteLength(3) / 2);
    });
    stage.plugIn->SetParameter(7, 0.25F);
    stage.plugIn->SetParameter(20, 0.75F);
}

std::vector<float> Perform(PlugInStage& stage, const SessionWish& wish) {
    stage.host.Play(false);
    stage.PlayBlocks(3, 512);
    stage.host.time.samplePos = 0;
    stage.host.Play(true);
    std::vector<float> sound;
    for (int i = 0; i < 200; ++i) {
        if (i == 4 && (wish.trigger || wish.liveRow >= 0)) {
            const IncomingEvents on({MidiMessage(0x90, wish.trigger ? 64 : 62, 100, 100)});
            stage.plugIn->ProcessEvents(on.List());
        }
        OutputBlock block(512);
        stage.PlayBlock(block, 512);
        sound.insert(sound.end(), block[0].begin(), block[0].end());
        sound.insert(sound.end(), block[1].begin(), block[1].end());
    }
    stage.host.Play(false);
    stage.PlayBlocks(3, 512);
    return sound;
}

constexpr std::int32_t kStyles = 8;

void ExpectSameAfterRestore(const SessionWish& wish) {
    PlugInStage first;
    Arrange(first, wish);
    const std::string saved = first.Chunk();
    const std::vector<float> sound = Perform(first, wish);
    EXPECT_TRUE(std::any_of(sound.begin(), sound.end(), [](float sample) { return sample != 0; }));

    PlugInStage second;
    second.host.Play(true);
    second.PlayBlocks(7, 512);
    EXPECT_EQ(second.SetChunk(saved), 1);
    second.PlayBlocks(7, 512);
    second.plugIn->RunEventPass();
    second.toolkit.FireTimers();
    EXPECT_TRUE(second.Chunk() == saved);
    EXPECT_EQ(second.App().ChoirPanel().GetMode(), first.App().ChoirPanel().GetMode());
    EXPECT_EQ(second.App().GetMelodyTempo(), first.App().GetMelodyTempo());
    EXPECT_EQ(second.App().View().GetVoiceCount(), first.App().View().GetVoiceCount());
    EXPECT_TRUE(Perform(second, wish) == sound);
}

TEST(PlugInSession, OfEveryStyleSoundsAndIsSavedAgainTheSame) {
    for (std::int32_t style = 0; style < kStyles; ++style) {
        for (const bool sync : {false, true}) {
            SCOPED_TRACE("style " + std::to_string(style) + " sync " + std::to_string(sync));
            SessionWish wish;
            wish.styleRow = style;
            wish.sync = sync;
            ExpectSameAfterRestore(wish);
            wish.edit = true;
            ExpectSameAfterRestore(wish);
        }
    }
}

TEST(PlugInSession, PlayedByTriggersSoundsAndIsSavedAgainTheSame) {
    for (std::int32_t style = 0; style < kStyles; ++style) {
        for (const bool sync : {false, true}) {
            SCOPED_TRACE("style " + std::to_string(style) + " sync " + std::to_string(sync));
            SessionWish wish;
            wish.styleRow = style;
            wish.sync = sync;
            wish.trigger = true;
            ExpectSameAfterRestore(wish);
        }
    }
}

// Notes that were cut or moved after the choir has run are the user's work, though keys play the voices now.
TEST(PlugInSession, PlayedLiveSoundsAndIsSavedAgainTheSame) {
    for (std::int32_t style = 0; style < kStyles; ++style) {
        for (const std::int32_t live : {0, 1}) {
            SCOPED_TRACE("style " + std::to_string(style) + " live " + std::to_string(live));
            SessionWish wish;
            wish.styleRow = style;
            wish.liveRow = live;
            ExpectSameAfterRestore(wish);
            wish.edit = true;
            wish.sync = true;
            ExpectSameAfterRestore(wish);
        }
    }
}

TEST(PlugInSession, UndoAndRedoAfterARestoreComeBackToIt) {
    SessionWish wish;
    wish.styleRow = 3;
    PlugInStage first;
    Arrange(first, wish);
    const std::string saved = first.Chunk();
    PlugInStage second;
    EXPECT_EQ(second.SetChunk(saved), 1);
    EXPECT_TRUE(second.plugIn->PressUndo());
    EXPECT_FALSE(second.plugIn->PressUndo());
    EXPECT_FALSE(second.Chunk() == saved); // the first arrangement of the recording
    EXPECT_TRUE(second.plugIn->PressRedo());
    EXPECT_FALSE(second.plugIn->PressRedo());
    EXPECT_TRUE(second.Chunk() == saved);
}

// Times are those that the host's clock shows, also for a recording of another rate.
TEST(PlugInSession, TimesAreShownAtTheRateOfTheHost) {
    PlugInStage first;
    first.host.sampleRate = 48000;
    first.LoadSong();
    EXPECT_EQ(first.App().PlaybackPanel().GetSampleRate(), 48000);
    EXPECT_EQ(first.App().View().GetSampleRate(), 48000);
    const std::string saved = first.Chunk();
    PlugInStage second;
    second.host.sampleRate = 48000;
    second.host.Play(true);
    EXPECT_EQ(second.SetChunk(saved), 1);
    EXPECT_EQ(second.App().PlaybackPanel().GetSampleRate(), 48000);
    second.PlayBlocks(3, 64);
    EXPECT_EQ(second.App().PlaybackPanel().GetSampleRate(), 48000);
    EXPECT_EQ(second.App().View().GetSampleRate(), 48000);
    EXPECT_TRUE(second.toolkit.messages.empty());
}

TEST(PlugInSession, TimesAreShownAtTheRateOfTheRecordingWhereNoHostTellsOne) {
    PlugInStage stage;
    stage.host.sampleRate = 0;
    const TemporaryFolder folder;
    const std::string path = folder.File("high.wav").string();
    ASSERT_TRUE(WriteWav(path, SingStageSong(48000)));
    ASSERT_EQ(stage.plugIn->LoadAudioFile(path), kOk);
    EXPECT_EQ(stage.App().PlaybackPanel().GetSampleRate(), 48000);
    EXPECT_EQ(stage.App().View().GetSampleRate(), 48000);
}

// A document does not tell which program was current: a host may, or may not.
TEST(PlugInSession, OfTheSecondProgramLeavesTheFirstAlone) {
    PlugInStage first;
    first.plugIn->SetProgram(1);
    first.LoadSong();
    first.plugIn->SetParameter(0, 0.1F);
    constexpr float kDrift = 0.5F; // a document has it in the programs alone
    first.App().VoicePanel().SetDrift(1, kDrift);
    const std::string saved = first.Chunk();

    for (const bool told : {false, true}) {
        PlugInStage second;
        if (told) second.plugIn->SetProgram(1);
        EXPECT_EQ(second.SetChunk(saved), 1);
        EXPECT_EQ(second.plugIn->GetProgram(), 1);
        EXPECT_EQ(second.App().VoicePanel().GetDrift(1), kDrift);
        EXPECT_EQ(second.plugIn->Presets().GetVoices(0), first.plugIn->Presets().GetVoices(0));
        EXPECT_TRUE(second.Chunk() == saved);
        if (told) second.plugIn->SetProgram(1); // some tell it behind the session
        EXPECT_TRUE(second.Chunk() == saved);
    }
}

TEST(PlugInSession, TwoInstancesOfASessionSoundAlike) {
    SessionWish wish;
    PlugInStage first;
    Arrange(first, wish);
    const std::string saved = first.Chunk();
    PlugInStage second;
    EXPECT_EQ(second.SetChunk(saved), 1);
    OutputBlock one(256);
    OutputBlock other(256);
    first.host.Play(true);
    second.host.Play(true);
    for (int block = 0; block < 100; ++block) {
        first.PlayBlock(one, 256);
        second.PlayBlock(other, 256);
        ASSERT_EQ(one[0], other[0]) << block;
    }
    EXPECT_GT(one.Peak(0), 0);
}

// What a host without any editor does: no pass of events, no interface thread.
TEST(PlugInSession, IsRestoredWhereNobodyRunsAnInterface) {
    SessionWish wish;
    wish.styleRow = 1;
    wish.sync = true;
    PlugInStage first;
    Arrange(first, wish);
    const std::string saved = first.Chunk();
    const std::vector<float> sound = Perform(first, wish);
    PlugInStage second;
    second.toolkit.interfaceThread = {};
    EXPECT_EQ(second.SetChunk(saved), 1);
    EXPECT_TRUE(Perform(second, wish) == sound);
    EXPECT_TRUE(second.Chunk() == saved);
    EXPECT_TRUE(second.toolkit.timers.empty());
}

// A mistake of the host, which must not end it: the memory that they wait in stays until they have left. What
// came too late would stand still in what is there then.
TEST(PlugInSession, CallsThatWaitWhileThePlugInGoesFindNothingOrAreServed) {
    ScriptedToolkit toolkit;
    for (int round = 0; round < 20; ++round) {
        alignas(CvirelainePlugIn) std::array<unsigned char, sizeof(CvirelainePlugIn)> memory{};
        CvirelainePlugIn& core = *new (memory.data()) CvirelainePlugIn(nullptr, toolkit);
        EXPECT_EQ(core.LoadAudioFile(SungSong()), kOk);
        std::atomic<int> begun{0};
        std::array<std::int32_t, 3> sizes{};
        std::int32_t loaded = kOk;
        core.GuiLock().EnterCriticalSection(); // as an event pass that takes its time
        std::vector<std::thread> callers;
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            callers.emplace_back([&, i] {
                const void* data = nullptr;
                ++begun;
                sizes[i] = core.GetChunk(data, i == 0);
            });
        }
        callers.emplace_back([&] {
            ++begun;
            loaded = core.LoadAudioFile(SungSong());
        });
        while (begun.load() < 4) std::this_thread::yield();
        for (int i = 0; i < 100; ++i) std::this_thread::yield(); // into the calls
        std::thread ending([&] {
            ++begun;
            core.~CvirelainePlugIn();
            constexpr unsigned char kUsedOtherwise = 0xFF;
            memory.fill(kUsedOtherwise);
        });
        while (begun.load() < 5) std::this_thread::yield();
        core.GuiLock().LeaveCriticalSection();
        ending.join();
        for (std::thread& caller : callers) caller.join();
        for (const std::int32_t size : sizes) EXPECT_TRUE(size == 0 || size > 100) << size;
        EXPECT_TRUE(loaded == kOk || loaded == kRunFailed) << loaded;
    }
}

} // namespace
} // namespace sonorelle::test
