// Sessions and programs as hosts save and restore them.

#include "host/plugin_stage.h"

#include <gtest/gtest.h>

#include <thread>

namespace sonorelle::test {
namespace {

constexpr const char* kLocateSong = "Please Locate Audio File: song.wav";
constexpr const char* kDoesNotFit = "Warning! The saved arrangement does not fit this recording's analysis!";
constexpr const char* kNewerVersion = "Warning! The saved arrangement comes from a newer version!";

// A session with work in it.
std::string WorkedSession(PlugInStage& stage, const std::string& path) {
    EXPECT_EQ(stage.plugIn->LoadAudioFile(path), kOk);
    stage.MoveNote(0, 1, 2);
    stage.App().SnapshotPanel().Add("Verse");
    stage.MoveNote(1, 2, -3);
    stage.plugIn->SetParameter(7, 0.25F);
    stage.plugIn->SetProgramName("mine");
    return stage.Chunk();
}

void ExpectEmptyPlugIn(PlugInStage& stage) {
    EXPECT_FALSE(stage.plugIn->IsLoaded());
    EXPECT_FALSE(stage.App().HasAudio());
    EXPECT_EQ(stage.plugIn->GetToolbar(), ToolbarState());
    OutputBlock block(64);
    stage.plugIn->Process(nullptr, block.Pointers(), 64);
    EXPECT_TRUE(block.IsAll(0, 0));
}

TEST(PlugInState, ARestoredSessionIsTheSameAgain) {
    PlugInStage first;
    const std::string saved = WorkedSession(first, SungSong());
    const std::int32_t low = first.VoicePitch(0, 1);
    const std::int32_t high = first.VoicePitch(1, 2);

    PlugInStage second;
    EXPECT_EQ(second.SetChunk(saved), 1);
    EXPECT_TRUE(second.plugIn->IsLoaded());
    EXPECT_EQ(second.plugIn->GetAudioPath(), SungSong());
    EXPECT_EQ(second.VoicePitch(0, 1), low);
    EXPECT_EQ(second.VoicePitch(1, 2), high);
    EXPECT_NEAR(second.plugIn->GetParameter(7), 0.25F, 1e-6F);
    EXPECT_TRUE(second.toolkit.messages.empty());
    EXPECT_TRUE(second.toolkit.questions.empty());
    EXPECT_EQ(second.toolkit.timers.size(), 1U);
    std::string name;
    second.plugIn->GetProgramName(name);
    EXPECT_EQ(name, "mine");
    EXPECT_EQ(second.Chunk(), saved);
}

TEST(PlugInState, SavingTwiceGivesTheSameBytesAndKeepsTheFirstOnesUntilThen) {
    PlugInStage stage;
    WorkedSession(stage, SungSong());
    const void* data = nullptr;
    const std::int32_t size = stage.plugIn->GetChunk(data, false);
    ASSERT_GT(size, 1000);
    const std::string first(static_cast<const char*>(data), static_cast<std::size_t>(size));
    stage.plugIn->CreateEmptyApplication(); // the host still holds its memory
    EXPECT_EQ(std::memcmp(data, first.data(), first.size()), 0);
    stage.SetChunk(first);
    EXPECT_EQ(stage.Chunk(), first);
    EXPECT_EQ(stage.Chunk(), first);
}

TEST(PlugInState, AnOffsetOfTheMelodySurvivesAHostOfAnotherRate) {
    PlugInStage stage;
    stage.host.sampleRate = 48000;
    stage.LoadSong();
    stage.plugIn->WithApplication([](CkvovirelaineApp& app) {
        app.PlaybackPanel().SetOffset(96000);
        app.OnPlaybackChanged();
    });
    ASSERT_EQ(stage.App().GetMasterPlaybackStart(), 96000);
    const std::string saved = stage.Chunk();
    PlugInStage second;
    second.host.sampleRate = 48000;
    second.SetChunk(saved);
    second.PlayBlocks(2, 64);
    EXPECT_EQ(second.App().GetMasterPlaybackStart(), 96000);
}

TEST(PlugInState, TheCurrentProgramIsTheOneThatIsSavedAfterARestoreToo) {
    PlugInStage stage;
    stage.plugIn->SetProgram(1);
    stage.LoadSong();
    stage.plugIn->SetParameter(0, 0.1F);
    const std::string saved = stage.Chunk();
    const VoiceSettingsOfAll first = stage.plugIn->Presets().GetVoices(0);
    EXPECT_EQ(stage.SetChunk(saved), 1);
    EXPECT_EQ(stage.Chunk(), saved);
    EXPECT_EQ(stage.plugIn->Presets().GetVoices(0), first);
}

TEST(PlugInState, AProgramChosenBeforehandDoesNotReplaceTheSessionsStrips) {
    PlugInStage first;
    first.LoadSong();
    first.plugIn->SetParameter(0, 0.125F);
    const std::string saved = first.Chunk();
    PlugInStage second;
    second.plugIn->SetProgram(1);
    EXPECT_EQ(second.SetChunk(saved), 1);
    EXPECT_NEAR(second.plugIn->GetParameter(0), 0.125F, 1e-6F);
    EXPECT_EQ(second.App().GetCurrentPreset(), 1);
}

TEST(PlugInState, TheSingleVoiceButtonFollowsTheSessionAndFollowTheButton) {
    PlugInStage stage;
    stage.LoadSong();
    stage.plugIn->ToggleSingleVoice();
    const std::string saved = stage.Chunk();
    PlugInStage second;
    second.LoadSong();
    second.plugIn->ToggleFollowCursor();
    second.SetChunk(saved);
    EXPECT_TRUE(second.plugIn->GetToolbar().singleVoice);
    EXPECT_TRUE(second.App().GetSingleVoiceOutput());
    EXPECT_TRUE(second.App().GetFollowCursor());
}

TEST(PlugInState, NoSizeAndNoDataRestoreNothing) {
    PlugInStage stage;
    stage.LoadSong();
    const std::string saved = stage.Chunk();
    EXPECT_EQ(stage.plugIn->SetChunk(saved.data(), 0, false), 0);
    EXPECT_EQ(stage.plugIn->SetChunk(saved.data(), -5, false), 0);
    EXPECT_EQ(stage.plugIn->SetChunk(nullptr, 100, false), 0);
    EXPECT_EQ(stage.plugIn->SetChunk(nullptr, 100, true), 0);
    EXPECT_TRUE(stage.plugIn->IsLoaded());
}

TEST(PlugInState, RubbishLeavesAnEmptyPlugInThatStillLoads) {
    PlugInStage stage;
    stage.LoadSong();
    const std::string saved = stage.Chunk();
    const std::string program = stage.Chunk(true);
    for (const std::string& text :
         {std::string("x"), std::string(5000, '\0'), std::string(20000, '<'), program, saved.substr(0, 60)}) {
        EXPECT_EQ(stage.SetChunk(text), 0);
        ExpectEmptyPlugIn(stage);
        EXPECT_EQ(stage.Chunk(), "");
        EXPECT_TRUE(stage.toolkit.messages.empty());
        EXPECT_TRUE(stage.toolkit.questions.empty());
        EXPECT_EQ(stage.SetChunk(saved), 1);
        EXPECT_EQ(stage.Chunk(), saved);
    }
}

TEST(PlugInState, ADocumentThatWasCutOffAnywhereIsHarmless) {
    PlugInStage stage;
    const std::string saved = WorkedSession(stage, SungSong());
    const std::size_t step = saved.size() / 23 + 1;
    for (std::size_t length = 1; length < saved.size(); length += step) {
        stage.SetChunk(saved.substr(0, length));
        EXPECT_TRUE(stage.PlayBlocks(2, 64).IsFinite());
    }
    stage.SetChunk(saved);
    EXPECT_EQ(stage.Chunk(), saved);
}

TEST(PlugInState, ChangedBytesAreHarmless) {
    PlugInStage stage;
    const std::string saved = WorkedSession(stage, SungSong());
    RandomNumbers random(11);
    for (int turn = 0; turn < 25; ++turn) {
        std::string broken = saved;
        for (int i = 0; i < 20; ++i)
            broken[static_cast<std::size_t>(random.Below(static_cast<int>(saved.size())))] =
                static_cast<char>(random.Below(256));
        stage.SetChunk(broken);
        EXPECT_TRUE(stage.PlayBlocks(2, 64).IsFinite()) << turn;
    }
}

// --- The recording is gone ---

TEST(PlugInState, AMissingRecordingIsAskedForOnceAndTakenFromItsNewFolder) {
    const TemporaryFolder oldFolder;
    const TemporaryFolder newFolder;
    PlugInStage first;
    const std::string saved = WorkedSession(first, CopyOfSong(oldFolder, "song.wav", true));
    const std::int32_t pitch = first.VoicePitch(1, 2);
    std::filesystem::remove(oldFolder.File("song.wav"));

    PlugInStage stage;
    const std::string moved = CopyOfSong(newFolder, "song.wav", true);
    stage.toolkit.answers = {moved};
    EXPECT_EQ(stage.SetChunk(saved), 0); // the answer comes after the document
    EXPECT_EQ(stage.toolkit.questions, std::vector<std::string>{kLocateSong});
    EXPECT_EQ(stage.toolkit.filters[0],
              "All Audio Files\t*.{wav,aif,aiff}\nWAV Files\t*.wav\nAIFF Files\t*.{aif,aiff}");
    EXPECT_TRUE(stage.plugIn->IsLoaded());
    EXPECT_EQ(stage.plugIn->GetAudioPath(), moved);
    EXPECT_EQ(stage.VoicePitch(1, 2), pitch);
    EXPECT_TRUE(stage.toolkit.messages.empty());
}

// A session whose recording does not exist any more.
std::string OrphanedSession() {
    const TemporaryFolder folder;
    PlugInStage stage;
    return WorkedSession(stage, CopyOfSong(folder, "song.wav", true));
}

TEST(PlugInState, ACancelledQuestionLeavesAnEmptyPlugInWhichStillSavesTheSession) {
    const std::string saved = OrphanedSession();
    PlugInStage stage;
    stage.SetChunk(saved);
    EXPECT_EQ(stage.toolkit.questions, std::vector<std::string>{kLocateSong});
    EXPECT_TRUE(stage.toolkit.messages.empty());
    ExpectEmptyPlugIn(stage);
    EXPECT_EQ(stage.plugIn->GetAudioPath(), "");
    EXPECT_EQ(stage.Chunk(), saved);
    EXPECT_EQ(stage.Chunk(true), "");
    stage.plugIn->RunEventPass();
    EXPECT_EQ(stage.toolkit.questions.size(), 1U);

    EXPECT_EQ(stage.plugIn->LoadAudioFile("/nowhere/else.wav"), kCannotOpen);
    EXPECT_EQ(stage.Chunk(), saved); // still nothing else to save
    stage.LoadSong();
    EXPECT_NE(stage.Chunk(), saved);
    EXPECT_EQ(stage.SetChunk(stage.Chunk()), 1);
}

TEST(PlugInState, AnotherFileThanTheMissingOneIsNotTaken) {
    const std::string saved = OrphanedSession();
    const TemporaryFolder folder;
    for (const std::string& wrong :
         {CopyOfSong(folder, "other.wav", true), std::string("/nowhere/song.wav"), folder.Path().string()}) {
        PlugInStage stage;
        stage.toolkit.answers = {wrong};
        stage.SetChunk(saved);
        EXPECT_EQ(stage.toolkit.questions.size(), 1U);
        ExpectEmptyPlugIn(stage);
        EXPECT_EQ(stage.Chunk(), saved);
    }
}

TEST(PlugInState, ARestoreOnAnotherThreadAsksAtTheNextPassOfEvents) {
    const std::string saved = OrphanedSession();
    const TemporaryFolder folder;
    PlugInStage stage;
    std::thread([&] { stage.SetChunk(saved); }).join();
    EXPECT_TRUE(stage.toolkit.questions.empty());
    EXPECT_FALSE(stage.plugIn->IsLoaded());
    std::thread([&] { EXPECT_EQ(stage.Chunk(), saved); }).join();

    stage.toolkit.answers = {CopyOfSong(folder, "song.wav", true)};
    EXPECT_TRUE(stage.plugIn->RunEventPass());
    EXPECT_EQ(stage.toolkit.questions, std::vector<std::string>{kLocateSong});
    EXPECT_TRUE(stage.plugIn->IsLoaded());
    EXPECT_TRUE(stage.plugIn->RunEventPass());
    EXPECT_EQ(stage.toolkit.questions.size(), 1U);
}

TEST(PlugInState, ARestoreOnAnotherThreadIsPolledFromTheNextPassOn) {
    PlugInStage first;
    const std::string saved = WorkedSession(first, SungSong());
    PlugInStage stage;
    std::thread([&] { EXPECT_EQ(stage.SetChunk(saved), 1); }).join();
    EXPECT_TRUE(stage.plugIn->IsLoaded());
    EXPECT_TRUE(stage.toolkit.timers.empty());
    EXPECT_TRUE(stage.toolkit.windowActive.empty());
    EXPECT_TRUE(stage.plugIn->RunEventPass());
    EXPECT_EQ(stage.toolkit.timers.size(), 1U);
    std::thread([&] { EXPECT_EQ(stage.Chunk(), saved); }).join();
}

TEST(PlugInState, ALoadElsewhereTakesTheQuestionBack) {
    const std::string saved = OrphanedSession();
    PlugInStage stage;
    std::thread([&] { stage.SetChunk(saved); }).join();
    stage.LoadSong();
    stage.plugIn->RunEventPass();
    EXPECT_TRUE(stage.toolkit.questions.empty());
    EXPECT_TRUE(stage.plugIn->IsLoaded());
}

TEST(PlugInState, ASessionThatArrivesDuringTheQuestionWins) {
    PlugInStage first;
    const std::string other = WorkedSession(first, SungSong());
    const std::string saved = OrphanedSession();
    const TemporaryFolder folder;
    PlugInStage stage;
    stage.toolkit.answers = {CopyOfSong(folder, "song.wav", true)};
    stage.toolkit.onQuestion = [&] { std::thread([&] { EXPECT_EQ(stage.SetChunk(other), 1); }).join(); };
    stage.SetChunk(saved);
    EXPECT_EQ(stage.plugIn->GetAudioPath(), SungSong());
    EXPECT_EQ(stage.Chunk(), other);
}

TEST(PlugInState, ASessionThatArrivesWithinALoadEndsItAndIsRestored) {
    PlugInStage first;
    const std::string saved = WorkedSession(first, SungSong());
    const TemporaryFolder folder;
    const std::string path = CopyOfSong(folder, "other.wav");
    PlugInStage stage;
    bool done = false;
    stage.toolkit.onEvents = [&] {
        if (std::exchange(done, true)) return;
        EXPECT_EQ(stage.SetChunk(saved), 1);
        EXPECT_EQ(stage.Chunk(), saved);
    };
    stage.plugIn->LoadAudioFile(path);
    ASSERT_TRUE(done);
    EXPECT_EQ(stage.plugIn->GetAudioPath(), SungSong());
    EXPECT_EQ(stage.Chunk(), saved);
}

TEST(PlugInState, ARecordingThatIsNoLongerFitIsToldAndTheSessionKept) {
    const TemporaryFolder folder;
    PlugInStage first;
    const std::string path = CopyOfSong(folder, "song.wav", true);
    const std::string saved = WorkedSession(first, path);
    Recording recording = SingStageSong();
    recording.channels.resize(3, recording.channels[0]);
    ASSERT_TRUE(WriteWav(path, recording));
    PlugInStage stage;
    EXPECT_EQ(stage.SetChunk(saved), 0);
    EXPECT_EQ(stage.toolkit.messages,
              std::vector<std::string>{"Error! Only mono and stereo audio files are supported!"});
    EXPECT_TRUE(stage.toolkit.questions.empty());
    ExpectEmptyPlugIn(stage);
    EXPECT_EQ(stage.Chunk(), saved);
}

TEST(PlugInState, ACancelledAnalysisKeepsTheSession) {
    const TemporaryFolder folder;
    PlugInStage first;
    const std::string path = CopyOfSong(folder, "song.wav", true);
    const std::string saved = WorkedSession(first, path);
    std::filesystem::remove(folder.File("song.kva"));
    PlugInStage stage({false});
    stage.toolkit.cancelProgress = true;
    EXPECT_EQ(stage.SetChunk(saved), 0);
    EXPECT_TRUE(stage.toolkit.questions.empty());
    ExpectEmptyPlugIn(stage);
    EXPECT_EQ(stage.Chunk(), saved);
}

TEST(PlugInState, WhileASessionIsRestoredItIsTheOneThatIsSaved) {
    const TemporaryFolder folder;
    PlugInStage first;
    const std::string saved = WorkedSession(first, CopyOfSong(folder, "song.wav", true));
    PlugInStage stage({false}); // analyses, which takes a moment
    int asked = 0;
    stage.toolkit.onEvents = [&] {
        ++asked;
        std::thread([&] { EXPECT_EQ(stage.Chunk(), saved); }).join();
    };
    EXPECT_EQ(stage.SetChunk(saved), 1);
    EXPECT_GT(asked, 0);
}

// --- An arrangement that does not fit ---

class RefusedSession : public testing::TestWithParam<bool> {
protected:
    RefusedSession() {
        PlugInStage maker;
        saved = WorkedSession(maker, SungSong());
        const std::string notes = std::to_string(maker.App().Driver().GetAnalysedNoteCount());
        refused = GetParam()
                      ? WithReplaced(saved, "1.200", "1.201")
                      : WithReplaced(saved, "InitNumElem str=\"" + notes, "InitNumElem str=\"1" + notes);
        stage.SetChunk(refused);
    }

    std::string saved;
    std::string refused;
    PlugInStage stage;
};

INSTANTIATE_TEST_SUITE_P(PlugInState, RefusedSession, testing::Values(true, false));

TEST_P(RefusedSession, IsToldAndHandedOutAsItCameIn) {
    EXPECT_EQ(stage.toolkit.messages, std::vector<std::string>{GetParam() ? kNewerVersion : kDoesNotFit});
    EXPECT_TRUE(stage.plugIn->IsLoaded());
    EXPECT_EQ(stage.Chunk(), refused);
    EXPECT_EQ(stage.Chunk(), refused);
}

TEST_P(RefusedSession, PlaybackTempoAndAutomationAreNoChangesOfTheUsers) {
    stage.host.time.tempo = 77;
    stage.host.time.timeSigNumerator = 7;
    stage.host.sampleRate = 48000;
    stage.host.Play(true);
    for (int i = 0; i < 50; ++i) {
        stage.plugIn->SetParameter(i % 32, static_cast<float>(i) / 50);
        stage.PlayBlocks(2, 512);
    }
    stage.plugIn->SetProgram(1);
    stage.toolkit.FireTimers();
    stage.plugIn->RunEventPass();
    EXPECT_EQ(stage.Chunk(), refused);
}

TEST_P(RefusedSession, AMovedNoteReplacesIt) {
    stage.MoveNote(0, 1, 1);
    const std::string chunk = stage.Chunk();
    EXPECT_NE(chunk, refused);
    EXPECT_EQ(stage.SetChunk(chunk), 1);
    EXPECT_EQ(stage.toolkit.messages.size(), 1U);
    EXPECT_EQ(stage.Chunk(), chunk);
}

TEST_P(RefusedSession, AMovedMarkerASnapshotAStripAndAProgramReplaceIt) {
    const std::function<void(CkvovirelaineApp&)> changes[] = {
        [](CkvovirelaineApp& app) {
            app.PlaybackPanel().SetOffset(4410);
            app.OnPlaybackChanged();
        },
        [](CkvovirelaineApp& app) { app.SnapshotPanel().Add("Verse"); },
        [](CkvovirelaineApp& app) { app.VoicePanel().ToggleMute(1); },
        [](CkvovirelaineApp& app) { app.VoicePanel().MoveControl(1, VoiceControl::kVolume, 0.25F); },
    };
    for (const auto& change : changes) {
        ASSERT_EQ(stage.Chunk(), refused);
        stage.plugIn->WithApplication(change);
        EXPECT_NE(stage.Chunk(), refused);
        stage.SetChunk(refused);
    }
    const std::string program = stage.Chunk(true);
    EXPECT_EQ(stage.SetChunk(program, true), 1);
    EXPECT_NE(stage.Chunk(), refused);
}

TEST_P(RefusedSession, LookingAtItLeavesThePresetsAlone) {
    const VoiceSettingsOfAll before = stage.plugIn->Presets().GetVoices(0);
    EXPECT_NE(before, VoiceSettingsOfAll()); // "default" has the voices in their places
    stage.Chunk();
    EXPECT_EQ(stage.plugIn->Presets().GetVoices(0), before);
}

TEST_P(RefusedSession, AnotherRecordingEndsIt) {
    stage.LoadSong();
    EXPECT_NE(stage.Chunk(), refused);
    stage.SetChunk(refused);
    EXPECT_EQ(stage.plugIn->LoadAudioFile("/nowhere/song.wav"), kCannotOpen);
    EXPECT_EQ(stage.Chunk(), "");
}

// --- Programs ---

TEST(PlugInProgramChunk, BringsTheStripsAndTheNameAndTellsTheHost) {
    PlugInStage first;
    first.LoadSong();
    first.plugIn->SetParameter(0, 0.2F);
    first.plugIn->SetParameter(5, 0.9F); // drift
    first.plugIn->SetProgramName("soft");
    const std::string program = first.Chunk(true);
    ASSERT_FALSE(program.empty());

    PlugInStage stage;
    EXPECT_EQ(stage.SetChunk(program, true), 0); // nothing loaded
    stage.LoadSong();
    stage.plugIn->SetProgram(1);
    stage.host.automated.clear();
    EXPECT_EQ(stage.SetChunk(program, true), 1);
    EXPECT_NEAR(stage.plugIn->GetParameter(0), 0.2F, 1e-6F);
    EXPECT_NEAR(stage.plugIn->GetParameter(5), 0.9F, 1e-6F);
    std::string name;
    stage.plugIn->GetProgramName(name);
    EXPECT_EQ(name, "soft");
    ASSERT_EQ(stage.host.automated.size(), 32U);
    for (std::int32_t index = 0; index < 32; ++index) {
        EXPECT_EQ(stage.host.automated[static_cast<std::size_t>(index)].first, index);
        EXPECT_EQ(stage.host.automated[static_cast<std::size_t>(index)].second,
                  stage.plugIn->GetParameter(index));
    }
    EXPECT_EQ(stage.Chunk(true), program);
}

TEST(PlugInProgramChunk, ASessionInItsPlaceChangesNothing) {
    PlugInStage stage;
    stage.LoadSong();
    const std::string session = stage.Chunk();
    const std::string program = stage.Chunk(true);
    stage.SetChunk(session, true);
    stage.SetChunk("rubbish", true);
    EXPECT_EQ(stage.Chunk(true), program);
    EXPECT_EQ(stage.Chunk(), session);
}

} // namespace
} // namespace sonorelle::test
