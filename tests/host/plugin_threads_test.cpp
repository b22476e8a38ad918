// A host's threads all at once: audio, automation, the interface with its user, and a saver.
//
// SONORELLE_SOAK_SECONDS makes it last longer than a moment.

#include "host/plugin_stage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace sonorelle::test {
namespace {

constexpr double kUsualSeconds = 2.5;

double SoakSeconds() {
    const char* const wish = std::getenv("SONORELLE_SOAK_SECONDS");
    const double seconds = wish != nullptr ? std::atof(wish) : 0;
    return seconds > 0 ? seconds : kUsualSeconds;
}

class Crowd {
public:
    Crowd() {
        stage.host.keepEvents = false;
        other = CopyOfSong(folder, "other.wav", true);
        stage.LoadSong();
        stage.MoveNote(0, 1, 2);
        stage.App().SnapshotPanel().Add("Verse", 62, 0, stage.App().GetMelodyEnd());
        saved = stage.Chunk();
        end = std::chrono::steady_clock::now() +
              std::chrono::milliseconds(static_cast<std::int64_t>(1000 * SoakSeconds()));
    }
    // Each goes on for the time of the test, and until it has done enough: on a busy machine one of them may
    // hardly have had a turn by then.
    bool GoesOn(bool hasDoneEnough) const {
        constexpr std::chrono::seconds kPatience{60};
        const auto now = std::chrono::steady_clock::now();
        return now < end || (!hasDoneEnough && now < end + kPatience);
    }

    // The transport runs, jumps, stops; keys come in.
    void PlayAudio() {
        RandomNumbers random(1);
        OutputBlock block(1024);
        stage.host.Play(true);
        while (GoesOn(blocks > 10)) {
            const std::int32_t frames = 1 + random.Below(1024);
            {
                const std::lock_guard guard(stage.host.timeLock);
                if (random.Below(50) == 0) stage.host.time.samplePos = random.Below(200000);
                if (random.Below(100) == 0) stage.host.Play(random.Below(4) != 0);
                if (random.Below(30) == 0) stage.host.time.tempo = 60 + random.Below(100);
            }
            if (random.Below(10) == 0) {
                const int keys[] = {60, 62, 64};
                const int status[] = {0x90, 0x80, 0xB0};
                const int kind = random.Below(3);
                stage.plugIn->ProcessEvents(
                    IncomingEvents(
                        {MidiMessage(status[kind], kind == 2 ? 123 : keys[random.Below(3)], 100, 7)})
                        .List());
            }
            stage.PlayBlock(block, frames);
            if (!block.IsFinite()) wrong.store(true);
            ++blocks;
        }
    }

    void Automate() {
        RandomNumbers random(2);
        std::string text;
        while (GoesOn(automations > 10)) {
            stage.plugIn->SetParameter(random.Below(34) - 1, static_cast<float>(random.Uniform()));
            const float value = stage.plugIn->GetParameter(random.Below(32));
            if (!(value >= 0 && value <= 1)) wrong.store(true);
            stage.plugIn->GetParameterDisplay(random.Below(32), text);
            if (random.Below(20) == 0) stage.plugIn->SetProgram(random.Below(2));
            stage.plugIn->GetProgramName(text);
            if (stage.plugIn->IsClipping()) ++clips;
            ++automations;
        }
    }

    void Save() {
        while (GoesOn(saves > 0)) {
            const void* data = nullptr;
            if (stage.plugIn->GetChunk(data, false) > 0) ++saves;
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
        }
    }

    void EditLikeAUser(bool untilLoaded) {
        RandomNumbers random(3);
        while (GoesOn(edits > 10 && (!untilLoaded || loads > 0))) {
            DoOneThing(random);
            stage.plugIn->RunEventPass();
            stage.toolkit.FireTimers();
            ++edits;
        }
    }

    void RestoreAgainAndAgain() {
        RandomNumbers random(4);
        while (GoesOn(restores > 1)) {
            if (stage.SetChunk(saved) == 1) ++restores;
            std::this_thread::sleep_for(std::chrono::milliseconds(20 + random.Below(60)));
        }
    }

    PlugInStage stage;
    std::atomic<bool> wrong{false};
    std::atomic<int> blocks{0};
    std::atomic<int> automations{0};
    std::atomic<int> clips{0};
    std::atomic<int> saves{0};
    std::atomic<int> restores{0};
    int edits = 0;
    int loads = 0;

private:
    void DoOneThing(RandomNumbers& random) {
        CvirelainePlugIn& plugIn = *stage.plugIn;
        switch (random.Below(12)) {
        case 0:
            plugIn.PressUndo();
            break;
        case 1:
            plugIn.PressRedo();
            break;
        case 2:
            plugIn.ToggleSingleVoice();
            plugIn.PressViewAll();
            break;
        case 3:
            plugIn.WithApplication([&](CkvovirelaineApp& app) {
                app.SnapshotPanel().Add("more");
                app.SnapshotPanel().Choose(random.Below(4));
            });
            break;
        case 4:
            plugIn.WithApplication([&](CkvovirelaineApp& app) {
                if (!app.HasAudio()) return;
                const bool keys = random.Below(2) == 0;
                app.PlaybackPanel().SetMode(keys ? CkvovirelainePlaybackSettings::kMidi
                                                 : CkvovirelainePlaybackSettings::kTime);
                app.OnPlaybackChanged();
            });
            break;
        case 5:
            plugIn.WithApplication([&](CkvovirelaineApp& app) {
                if (!app.HasAudio()) return;
                const std::int32_t modes[] = {0, 1, 2, 4, 8, 0x10000, 0x10001};
                app.ChoirPanel().SetMode(modes[random.Below(7)]);
                app.OnChoirSettingsChanged();
            });
            break;
        case 6:
            if (random.Below(4) == 0 && plugIn.LoadAudioFile(other) == kOk) ++loads;
            break;
        case 7:
            if (random.Below(4) == 0)
                plugIn.SetChunk(saved.data(), static_cast<std::int32_t>(saved.size()), false);
            break;
        default:
            plugIn.WithApplication([&](CkvovirelaineApp& app) {
                app.VoicePanel().MoveControl(random.Below(4), VoiceControl::kVolume,
                                             static_cast<float>(random.Uniform()));
                app.Poll();
            });
            break;
        }
    }

    TemporaryFolder folder;
    std::string other;
    std::string saved;
    std::chrono::steady_clock::time_point end;
};

TEST(PlugInThreads, AudioAutomationSavingAndAUserGetAlong) {
    Crowd crowd;
    std::thread audio([&] { crowd.PlayAudio(); });
    std::thread automation([&] { crowd.Automate(); });
    std::thread saver([&] { crowd.Save(); });
    crowd.EditLikeAUser(true);
    audio.join();
    automation.join();
    saver.join();
    EXPECT_FALSE(crowd.wrong);
    EXPECT_GT(crowd.blocks, 10);
    EXPECT_GT(crowd.automations, 10);
    EXPECT_GT(crowd.saves, 0);
    EXPECT_GT(crowd.edits, 10);
    EXPECT_GT(crowd.loads, 0);
}

TEST(PlugInThreads, RestoresOnAnotherThreadGetAlongWithTheInterface) {
    Crowd crowd;
    std::thread audio([&] { crowd.PlayAudio(); });
    std::thread restorer([&] { crowd.RestoreAgainAndAgain(); });
    crowd.EditLikeAUser(false);
    audio.join();
    restorer.join();
    EXPECT_FALSE(crowd.wrong);
    EXPECT_GT(crowd.blocks, 10);
    EXPECT_GT(crowd.restores, 1);
    EXPECT_GT(crowd.edits, 10);
}

} // namespace
} // namespace sonorelle::test
