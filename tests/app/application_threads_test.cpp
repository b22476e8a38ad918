// What the audio thread may do, and that it may do it beside the others.
#include "app/application_fixture.h"
#include "support/allocation_trap.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

namespace sonorelle::test {
namespace {

constexpr std::int32_t kFrames = 512;

struct AudioHost {
    explicit AudioHost(CkvovirelaineApp& application) : app(application) {
        events.reserve(1024); // what a core keeps
        for (std::vector<float>& output : outputs) output.resize(kFrames);
        for (std::size_t i = 0; i < outputs.size(); ++i) pointers[i] = outputs[i].data();
    }

    // One block of a host that plays.
    void Block(std::int32_t frames, bool changed) {
        app.SetSampleRate(44100);
        app.SynchronizeToHost(at, true, changed, frames);
        app.SetHostTempo(tempo, 4, 4);
        app.ProcessAudio(pointers.data(), frames);
        at += frames;
        const std::int32_t count = app.GetOutgoingMidi(events);
        for (std::int32_t i = 0; i < count; ++i) {
            if (i % 5 == 0)
                app.DelayMidi(i, 3);
            else
                app.MarkMidiSent(i);
        }
        app.PurgeSentMidi();
        for (std::int32_t i = 0; i < frames; ++i)
            sane = sane && std::isfinite(outputs[0][static_cast<std::size_t>(i)]);
    }

    CkvovirelaineApp& app;
    std::vector<MidiEventRecord> events;
    std::array<std::vector<float>, 10> outputs;
    std::array<float*, 11> pointers{};
    double at = 0;
    float tempo = 110;
    bool sane = true;
};

TEST(ApplicationThreads, TheTransportAllocatesNothingFromTheFirstBlockOn) {
    LoadedSession session;
    session.app->SetSingleVoiceOutput(true);
    AudioHost host(*session.app);
    const std::int64_t before = AllocationCount();
    for (std::int32_t i = 0; i < 400; ++i) {
        host.Block(i % 3 == 0 ? kFrames : 100, i % 50 == 0);
        if (i == 100) host.at = -700;
        if (i == 200) host.tempo = 90;
        if (i == 250) session.app->SynchronizeToHost(host.at, false, true, 64);
        if (i == 260) session.app->SetSampleRate(48000);
        session.app->SetParameter(i % 32, static_cast<float>(i % 7) / 7);
    }
    EXPECT_EQ(AllocationCount(), before);
    EXPECT_TRUE(host.sane);
}

TEST(ApplicationThreads, RecallingByKeyAllocatesNothing) {
    LoadedSession session;
    for (std::int32_t key = 62; key < 70; ++key)
        session.app->SnapshotPanel().Add("One of several", key, (key - 62) * 3000, 40000);
    session.app->PlaybackPanel().PressMidi();
    AudioHost host(*session.app);
    const std::int64_t before = AllocationCount();
    for (std::int32_t i = 0; i < 200; ++i) {
        const std::int32_t key = 61 + i % 10;
        session.app->NoteOn(key, i % 64, host.at);
        host.Block(100, false);
        if (i % 4 == 0) session.app->NoteOff(key, 10, host.at);
        if (i % 30 == 0) session.app->AllNotesOff(0, host.at);
    }
    EXPECT_EQ(AllocationCount(), before);
    EXPECT_TRUE(host.sane);
    EXPECT_TRUE(session.app->IsPlaying());
}

// Enough changes that at least one of them is overtaken on any machine: a recall comes with each block.
TEST(ApplicationThreads, ARunThatARecallOvertakesLeavesTheViewReadyToDraw) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    app.SnapshotPanel().Add("One of two", 62, 0, 40000);
    app.SnapshotPanel().Add("The other", 64, 0, 30000);
    app.PlaybackPanel().PressMidi();
    std::atomic<bool> done{false};
    std::thread audio([&] {
        AudioHost host(app);
        for (std::int32_t key = 62; !done; key = 126 - key) {
            app.NoteOn(key, 0, host.at);
            host.Block(64, false);
            app.NoteOff(key, 0, host.at);
        }
    });
    std::int32_t waiting = 0;
    for (std::int32_t i = 0; i < 200; ++i) {
        app.ChoirPanel().MoveRange(i % 2 == 0 ? 0.2 : 0.8);
        if (app.View().NeedsRebuild()) ++waiting;
        app.Poll();
    }
    done = true;
    audio.join();
    EXPECT_EQ(waiting, 0);
}

TEST(ApplicationThreads, PlayingLiveAllocatesNothing) {
    for (const std::int32_t mode : {std::int32_t{kModeHarmonies}, std::int32_t{kModePitches}}) {
        LoadedSession session;
        session.app->ChoirPanel().SetRecording(true);
        session.app->ChoirPanel().SetMode(mode);
        session.app->OnChoirSettingsChanged();
        AudioHost host(*session.app);
        const std::int64_t before = AllocationCount();
        for (std::int32_t i = 0; i < 300; ++i) {
            session.app->NoteOn(60 + i % 11, i % 100, host.at);
            host.Block(100, false);
            if (i % 3 == 0) session.app->NoteOff(60 + (i * 7) % 11, 10, host.at);
            if (i % 90 == 0) session.app->AllNotesOff(0, host.at);
        }
        EXPECT_EQ(AllocationCount(), before) << mode;
        EXPECT_TRUE(host.sane);
    }
}

TEST(ApplicationThreads, KeysTemposAndJumpsDuringAnExportDoNotReachTheFile) {
    const auto bytesOf = [](const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    app.SetHostTempo(100, 4, 4);
    app.PlaybackPanel().ToggleSync();
    app.Driver().SetVoicePitch(0, 1, 50);
    app.SnapshotPanel().Add("Low", 62, 12000, 40000);
    app.Driver().SetVoicePitch(0, 1, 67);
    app.PlaybackPanel().PressMidi();
    const std::string quiet = session.folder.File("quiet.wav").string();
    const std::string busy = session.folder.File("busy.wav").string();
    ASSERT_EQ(app.ExportAudio(quiet, -1), 0);
    std::int32_t calls = 0;
    const auto disturb = [&](double) {
        ++calls;
        app.NoteOn(62, 0, 0);
        app.SetHostTempo(140, 4, 4);
        app.SetSampleRate(96000);
        app.SetPosition(20000);
        app.NoteOff(62, 0, 0);
        return true;
    };
    ASSERT_EQ(app.ExportAudio(busy, -1, disturb), 0);
    EXPECT_GT(calls, 10);
    EXPECT_TRUE(bytesOf(busy) == bytesOf(quiet));
    EXPECT_FALSE(app.IsPlaying());
    app.NoteOn(62, 0, 0); // and afterwards all goes on
    EXPECT_EQ(app.GetPlayStart(), 12000);
    EXPECT_TRUE(app.IsPlaying());
}

TEST(ApplicationThreads, PlaybackGoesOnInItsPlaceBehindAnExport) {
    LoadedSession session;
    session.app->Start();
    session.Process(6400, 64);
    ASSERT_EQ(session.app->ExportAudio(session.folder.File("mix.wav").string(), -1), 0);
    EXPECT_TRUE(session.app->IsPlaying());
    EXPECT_EQ(session.app->GetExactPosition(), 6400);
    session.Process(640, 64);
    EXPECT_NEAR(session.app->Bank().GetReadPosition(0), 7040, 600); // some periods of 200 samples
}

// What a user does to one application in a few seconds, while it plays and is automated.
class BusySession {
public:
    explicit BusySession(bool triggered) : triggerMode(triggered) {
        for (std::int32_t key = 62; key < 66; ++key)
            session.app->SnapshotPanel().Add("Busy", key, (key - 62) * 3000, 40000);
        if (triggered) session.app->PlaybackPanel().PressMidi();
    }

    void Play(std::int32_t blocks) {
        AudioHost host(*session.app);
        for (std::int32_t i = 0; i < blocks; ++i) {
            host.tempo = 100 + static_cast<float>(i % 3);
            if (i % 5 == 0) session.app->NoteOn(60 + i % 7, i % 100, host.at);
            host.Block(100, i % 40 == 0);
            if (i % 7 == 0) session.app->NoteOff(60 + i % 7, 0, host.at);
            if (i % 160 == 0) host.at = 0;
            if (i % 97 == 0) session.app->AllNotesOff(0, host.at);
        }
        sane = host.sane;
        done = true;
    }

    void Automate() {
        for (std::int32_t i = 0; !done; ++i) {
            session.app->SetParameter(i % 32, static_cast<float>(i % 101) / 100);
            read += session.app->GetParameter((i + 5) % 32);
            if (i % 50 == 0) session.app->ApplyPreset(i / 50 % 2);
            session.app->SetSingleVoiceOutput(i % 2 == 0);
            read += session.app->IsClipping() ? 1.0F : 0.0F;
            read += static_cast<float>(session.app->GetPosition());
        }
    }

    void Edit() {
        CkvovirelaineApp& app = *session.app;
        for (std::int32_t i = 0; !done; ++i) {
            app.Poll();
            switch (i % 11) {
            case 0:
                app.ChoirPanel().SetMode(kModeIntelligent);
                app.OnChoirSettingsChanged();
                break;
            case 1:
                app.ChoirPanel().SetMode(kModeBlock);
                app.OnChoirSettingsChanged();
                break;
            case 2:
                app.Undo();
                break;
            case 3:
                app.Redo();
                break;
            case 4:
                app.MelodyPanel().ChooseRoot(i % 12);
                break;
            case 5:
                app.SnapshotPanel().Recall(i % app.SnapshotPanel().GetCount());
                break;
            case 6:
                app.VoicePanel().ToggleMute(i % 4);
                app.VoicePanel().ToggleSolo(i % 4);
                break;
            case 7:
                app.SetMelodyTempo(100 + static_cast<float>(i % 5));
                break;
            case 8:
                if (!triggerMode) {
                    app.ChoirPanel().SetMode(i % 2 == 0 ? kModeHarmonies : kModePitches);
                    app.OnChoirSettingsChanged();
                }
                break;
            case 9:
                app.PlaybackPanel().ToggleSync();
                break;
            case 10: {
                const void* data = nullptr;
                const std::int32_t size = app.SaveState(data);
                read += size > 0 ? 1.0F : 0.0F;
                break;
            }
            }
            if (i % 25 == 24) app.ExportAudio(session.folder.File("busy.wav").string(), -1);
        }
    }

    void Run(std::int32_t blocks) {
        std::thread audio([&] { Play(blocks); });
        std::thread automation([&] { Automate(); });
        Edit();
        audio.join();
        automation.join();
    }

    LoadedSession session;
    const bool triggerMode;
    std::atomic<bool> done{false};
    std::atomic<bool> sane{false};
    std::atomic<float> read{0};
};

TEST(ApplicationThreads, AudioInterfaceAndAutomationShareAnApplicationThatFollowsTheHost) {
    BusySession busy(false);
    busy.Run(3000);
    EXPECT_TRUE(busy.sane);
    EXPECT_TRUE(std::isfinite(busy.session.app->GetExactPosition()));
}

TEST(ApplicationThreads, AudioInterfaceAndAutomationShareAnApplicationThatKeysTrigger) {
    BusySession busy(true);
    busy.Run(3000);
    EXPECT_TRUE(busy.sane);
    EXPECT_TRUE(std::isfinite(busy.session.app->GetExactPosition()));
}

} // namespace
} // namespace sonorelle::test
