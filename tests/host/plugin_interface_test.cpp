// The event pass, the toolbar, the messages, and plug-ins beside one another.

#include "host/plugin_stage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace sonorelle::test {
namespace {

TEST(PlugInEventPass, RunsTheToolkitsEventsOnce) {
    PlugInStage stage;
    EXPECT_TRUE(stage.plugIn->RunEventPass());
    EXPECT_EQ(stage.toolkit.passes, 1);
}

TEST(PlugInEventPass, DoesNothingOnAnotherThread) {
    PlugInStage stage;
    std::thread([&] { EXPECT_FALSE(stage.plugIn->RunEventPass()); }).join();
    EXPECT_EQ(stage.toolkit.passes, 0);
}

TEST(PlugInEventPass, DoesNotWaitForALoadOnAnotherThread) {
    PlugInStage stage;
    stage.plugIn->GuiLock().EnterCriticalSection();
    stage.toolkit.interfaceThread = {};
    std::thread([&] {
        stage.toolkit.interfaceThread = std::this_thread::get_id();
        EXPECT_FALSE(stage.plugIn->RunEventPass());
    }).join();
    stage.plugIn->GuiLock().LeaveCriticalSection();
    EXPECT_EQ(stage.toolkit.passes, 0);
    stage.toolkit.interfaceThread = std::this_thread::get_id();
}

TEST(PlugInEventPass, IsNotRunFromWithinItself) {
    PlugInStage stage;
    stage.toolkit.onEvents = [&] { EXPECT_FALSE(stage.plugIn->RunEventPass()); };
    EXPECT_TRUE(stage.plugIn->RunEventPass());
    EXPECT_EQ(stage.toolkit.passes, 1);
}

TEST(PlugInEventPass, FacesGoBeforeTheirApplicationAndComeWithTheNextPass) {
    std::vector<CkvovirelaineApp*> shown; // outlives the plug-in, which says when its last faces go
    PlugInStage stage;
    stage.plugIn->SetFaceCallback([&](CkvovirelaineApp* application) { shown.push_back(application); });
    EXPECT_TRUE(stage.plugIn->PanelsNeedRebuild());
    CkvovirelaineApp* const startUp = stage.plugIn->Application();
    stage.plugIn->RunEventPass();
    stage.plugIn->RunEventPass();
    EXPECT_EQ(shown, (std::vector<CkvovirelaineApp*>{startUp}));
    EXPECT_FALSE(stage.plugIn->PanelsNeedRebuild());
    shown.clear();
    stage.LoadSong();
    EXPECT_EQ(shown, (std::vector<CkvovirelaineApp*>{nullptr}));
    stage.plugIn->RunEventPass();
    EXPECT_EQ(shown, (std::vector<CkvovirelaineApp*>{nullptr, stage.plugIn->Application()}));

    const std::string saved = stage.Chunk();
    shown.clear();
    std::thread([&] { stage.SetChunk(saved); }).join();
    EXPECT_TRUE(shown.empty());
    stage.plugIn->RunEventPass();
    EXPECT_EQ(shown, (std::vector<CkvovirelaineApp*>{stage.plugIn->Application()}));
}

TEST(PlugInMessages, AreShownAtOnceOnTheInterfaceThreadAndElseWithTheNextPass) {
    PlugInStage stage;
    stage.plugIn->ShowMessage("Hint", "one");
    EXPECT_EQ(stage.toolkit.messages, std::vector<std::string>{"Hint one"});
    std::thread([&] {
        stage.plugIn->ShowMessage("Hint", "two");
        stage.plugIn->ShowMessage("Hint", "three");
    }).join();
    EXPECT_EQ(stage.toolkit.messages.size(), 1U);
    stage.plugIn->RunEventPass();
    EXPECT_EQ(stage.toolkit.messages, (std::vector<std::string>{"Hint one", "Hint two", "Hint three"}));
}

TEST(PlugInMessages, OfALoadAreShownWhenItHasEnded) {
    const TemporaryFolder folder;
    const std::string path = CopyOfSong(folder, "song.wav");
    PlugInStage stage;
    stage.host.sampleRate = 48000;
    stage.toolkit.onEvents = [&] { EXPECT_TRUE(stage.toolkit.messages.empty()); };
    EXPECT_EQ(stage.plugIn->LoadAudioFile(path), kOk);
    EXPECT_EQ(stage.toolkit.messages.size(), 1U);
}

TEST(PlugInMessages, OfALoadWithinAnEventPassAreShownWhenThatHasEnded) {
    PlugInStage stage;
    stage.toolkit.onEvents = [&] {
        stage.plugIn->LoadAudioFile("/nowhere/song.wav");
        EXPECT_TRUE(stage.toolkit.messages.empty());
    };
    EXPECT_TRUE(stage.plugIn->RunEventPass());
    EXPECT_EQ(stage.toolkit.messages.size(), 1U);
}

TEST(PlugInToolbar, DoesNotAnswerWithoutARecording) {
    PlugInStage stage;
    CvirelainePlugIn& plugIn = *stage.plugIn;
    for (bool (CvirelainePlugIn::*press)() :
         {&CvirelainePlugIn::PressSave, &CvirelainePlugIn::PressUndo, &CvirelainePlugIn::PressRedo,
          &CvirelainePlugIn::PressViewAll, &CvirelainePlugIn::PressFitPlayRegion,
          &CvirelainePlugIn::PressFitVertically, &CvirelainePlugIn::PressFitHorizontally,
          &CvirelainePlugIn::ToggleCutMode, &CvirelainePlugIn::ToggleFollowCursor,
          &CvirelainePlugIn::ToggleSingleVoice}) {
        EXPECT_FALSE((plugIn.*press)());
    }
    EXPECT_EQ(plugIn.GetToolbar(), ToolbarState());
    EXPECT_EQ(stage.toolkit.menus, 0);
}

TEST(PlugInToolbar, SaveOpensTheMenuOfExports) {
    PlugInStage stage;
    stage.LoadSong();
    EXPECT_TRUE(stage.plugIn->PressSave());
    EXPECT_EQ(stage.toolkit.menus, 1);
}

// Saves the session on another thread; 1 when that gave one.
int SaveElsewhere(CvirelainePlugIn& plugIn) {
    std::int32_t size = 0;
    std::thread([&] {
        const void* data = nullptr;
        size = plugIn.GetChunk(data, false);
    }).join();
    return size > 0 ? 1 : 0;
}

// A host saves its projects when it likes, and must not wait for a user.
TEST(PlugInToolbar, WhileSaveAsksTheHostCanSaveTheSession) {
    PlugInStage stage;
    stage.LoadSong();
    stage.toolkit.menuChoice = 0;
    int saved = 0;
    stage.toolkit.onQuestion = [&] { saved += SaveElsewhere(*stage.plugIn); };
    EXPECT_TRUE(stage.plugIn->PressSave());
    EXPECT_EQ(stage.toolkit.questions, std::vector<std::string>{"Save as Audio File"});
    EXPECT_EQ(saved, 2); // under the menu, under the dialog
}

TEST(PlugInToolbar, WhileItTellsOfAFailedExportTheHostCanSaveTheSession) {
    PlugInStage stage;
    stage.LoadSong();
    stage.toolkit.menuChoice = 0;
    stage.toolkit.answers = {"/nowhere/out.wav"};
    int saved = 0;
    stage.toolkit.onMessage = [&] { saved += SaveElsewhere(*stage.plugIn); };
    EXPECT_TRUE(stage.plugIn->PressSave());
    EXPECT_EQ(stage.toolkit.messages, std::vector<std::string>{"Error! Could not write file!"});
    EXPECT_EQ(saved, 1);
    EXPECT_EQ(stage.toolkit.windowActive, (std::vector<bool>{false, true, false, true, false, true}))
        << "the load, the dialog, the export";
}

TEST(PlugInToolbar, ARecordingThatWasLoadedWhileSaveAskedIsNotExportedUnderTheOthersName) {
    PlugInStage stage;
    stage.LoadSong();
    const TemporaryFolder folder;
    const std::string other = CopyOfSong(folder, "other.wav", true);
    const std::string out = folder.File("out.wav").string();
    stage.toolkit.menuChoice = 0;
    stage.toolkit.answers = {out};
    std::int32_t loaded = -1;
    stage.toolkit.onQuestion = [&] {
        const bool dialogIsOpen = !stage.toolkit.questions.empty();
        if (dialogIsOpen) loaded = stage.plugIn->LoadAudioFile(other);
    };
    EXPECT_TRUE(stage.plugIn->PressSave());
    EXPECT_EQ(loaded, kOk);
    EXPECT_FALSE(std::filesystem::exists(out));
    stage.toolkit.onQuestion = {};
    stage.toolkit.answers = {out};
    EXPECT_TRUE(stage.plugIn->PressSave());
    EXPECT_TRUE(std::filesystem::exists(out));
}

TEST(PlugInToolbar, APlugInThatGoesWhileSaveAsksDoesNotExport) {
    PlugInStage stage;
    stage.LoadSong();
    stage.toolkit.menuChoice = 0;
    stage.toolkit.onQuestion = [&] {
        stage.toolkit.onQuestion = {};
        stage.plugIn.reset();
    };
    CvirelainePlugIn* const plugIn = stage.plugIn.get();
    EXPECT_TRUE(plugIn->PressSave());
    EXPECT_EQ(stage.toolkit.questions.size(), 1U);
}

TEST(PlugInToolbar, TheViewIsFittedToWhatWasPressed) {
    PlugInStage stage;
    stage.LoadSong();
    CkvoPitchView& view = stage.App().View();
    view.SetPlayRegion(10000, 30000);
    EXPECT_TRUE(stage.plugIn->PressFitPlayRegion());
    const PitchViewAxes region = view.GetAxes();
    EXPECT_NEAR(region.viewStart, 10000, 2000);
    EXPECT_NEAR(region.viewEnd, 30000, 2000);
    EXPECT_TRUE(stage.plugIn->PressFitHorizontally());
    EXPECT_EQ(view.GetAxes().viewStart, region.totalStart);
    EXPECT_EQ(view.GetAxes().viewEnd, region.totalEnd);
    EXPECT_TRUE(stage.plugIn->PressFitPlayRegion());
    EXPECT_EQ(view.GetAxes().viewEnd, region.viewEnd);
    EXPECT_TRUE(stage.plugIn->PressFitVertically());
    const float top = view.GetAxes().topPitch;
    EXPECT_TRUE(stage.plugIn->PressViewAll());
    EXPECT_EQ(view.GetAxes().viewEnd, region.totalEnd);
    EXPECT_GE(view.GetAxes().topPitch, top);
}

TEST(PlugInToolbar, AStripThatIsMovedInTheEditorIsToldToTheHost) {
    PlugInStage stage;
    stage.LoadSong();
    stage.host.automated.clear();
    stage.plugIn->WithApplication(
        [](CkvovirelaineApp& app) { app.VoicePanel().MoveControl(1, VoiceControl::kVolume, 0.25F); });
    ASSERT_EQ(stage.host.automated.size(), 1U);
    EXPECT_EQ(stage.host.automated[0].first, 6);
    EXPECT_EQ(stage.host.automated[0].second, stage.plugIn->GetParameter(6));
}

// --- Several at once, and their end ---

TEST(PlugInInstances, AreCounted) {
    const std::int32_t before = CkvoPlugInBase::InstanceCount();
    {
        PlugInStage one;
        EXPECT_EQ(CkvoPlugInBase::InstanceCount(), before + 1);
        PlugInStage two;
        EXPECT_EQ(CkvoPlugInBase::InstanceCount(), before + 2);
    }
    EXPECT_EQ(CkvoPlugInBase::InstanceCount(), before);
}

TEST(PlugInInstances, TwoDoNotDisturbEachOther) {
    PlugInStage alone;
    alone.LoadSong();
    alone.host.Play(true);
    std::vector<std::vector<float>> expected;
    for (int i = 0; i < 60; ++i) expected.push_back(alone.PlayBlocks(1, 512)[0]);

    PlugInStage one;
    PlugInStage two;
    one.LoadSong();
    two.LoadSong();
    one.host.Play(true);
    two.host.Play(true);
    two.plugIn->SetParameter(0, 0);
    two.MoveNote(0, 1, 3);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(one.PlayBlocks(1, 512)[0], expected[i]) << i;
        two.PlayBlocks(1, 512);
    }
    EXPECT_NE(one.Chunk(), two.Chunk());
}

TEST(PlugInInstances, ALoadOnAnotherThreadIsCancelledByTheDestructor) {
    const TemporaryFolder folder;
    const std::string path = folder.File("long.wav").string();
    MelodyWish wish;
    wish.phrases = 12;
    ASSERT_TRUE(WriteWav(path, Sing(RandomDiatonicMelody(wish, 5), SingerSettings())));
    ScriptedToolkit toolkit;
    toolkit.interfaceThread = {};
    auto plugIn = std::make_unique<CvirelainePlugIn>(nullptr, toolkit);
    std::int32_t result = kOk;
    std::atomic<bool> begins{false};
    std::thread loader([&] {
        begins.store(true);
        result = plugIn->LoadAudioFile(path);
    });
    while (!begins.load()) std::this_thread::yield();
    while (true) { // until the analysis runs
        bool running = false;
        if (plugIn->GuiLock().TryEnterCriticalSection()) {
            plugIn->GuiLock().LeaveCriticalSection();
        } else {
            running = true;
        }
        if (running) break;
        std::this_thread::yield();
    }
    plugIn.reset();
    loader.join();
    EXPECT_EQ(result, kRunFailed);
    EXPECT_FALSE(std::filesystem::exists(folder.File("long.kva")));
}

} // namespace
} // namespace sonorelle::test
