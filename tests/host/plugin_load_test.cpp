// Recordings that are loaded, dropped, refused, cancelled.

#include "host/plugin_stage.h"

#include "app/state_document.h"

#include <gtest/gtest.h>

#include <fstream>
#include <unistd.h>

namespace sonorelle::test {
namespace {

constexpr const char* kNotLoaded = "Error! Could not load audio file!";
constexpr const char* kTooManyChannels = "Error! Only mono and stereo audio files are supported!";
constexpr const char* kRateTooLow = "Error! Samplerate below 11kHz not supported!";
constexpr const char* kOtherRate = "Warning! Samplerate of loaded file and host mismatch!";

void ExpectEmpty(PlugInStage& stage) {
    EXPECT_FALSE(stage.plugIn->IsLoaded());
    ASSERT_NE(stage.plugIn->Application(), nullptr);
    EXPECT_FALSE(stage.App().HasAudio());
    EXPECT_EQ(stage.plugIn->GetToolbar(), ToolbarState());
    EXPECT_TRUE(stage.toolkit.timers.empty());
    EXPECT_EQ(stage.Chunk(), "");
    OutputBlock block(64);
    stage.plugIn->Process(nullptr, block.Pointers(), 64);
    EXPECT_TRUE(block.IsAll(0, 0));
}

TEST(PlugInLoad, BeginsWithTheStartUpScreen) {
    PlugInStage stage;
    ExpectEmpty(stage);
    EXPECT_TRUE(stage.toolkit.messages.empty());
}

TEST(PlugInLoad, ALoadedRecordingIsReadyToPlay) {
    PlugInStage stage;
    stage.LoadSong();
    EXPECT_TRUE(stage.plugIn->IsLoaded());
    EXPECT_TRUE(stage.App().HasAudio());
    EXPECT_EQ(stage.plugIn->GetAudioPath(), SungSong());
    EXPECT_TRUE(stage.toolkit.messages.empty());
    EXPECT_EQ(stage.toolkit.windowActive, (std::vector<bool>{false, true}));
    EXPECT_EQ(stage.toolkit.progressWindows, 0);
}

TEST(PlugInLoad, TheHostsTempoBecomesTheMelodys) {
    PlugInStage stage;
    stage.LoadSong();
    EXPECT_EQ(stage.App().GetHostTempo(), 100);
    EXPECT_EQ(stage.App().GetTimeSigNumerator(), 3);
    EXPECT_EQ(stage.App().GetMelodyTempo(), 100);
    EXPECT_EQ(stage.plugIn->GetHostTempo(), 100);
}

TEST(PlugInLoad, WithoutATimeTheTempoIs120In4By4) {
    PlugInStage stage;
    stage.host.hasTime = false;
    stage.LoadSong();
    EXPECT_EQ(stage.App().GetHostTempo(), 120);
    EXPECT_EQ(stage.App().GetTimeSigNumerator(), 4);
    EXPECT_EQ(stage.App().GetTimeSigDenominator(), 4);
    EXPECT_EQ(stage.App().GetMelodyTempo(), 120);
}

TEST(PlugInLoad, AnImpossibleTempoOfTheHostDoesNotReachTheMelody) {
    PlugInStage stage;
    stage.host.time.tempo = std::numeric_limits<double>::infinity();
    stage.LoadSong();
    EXPECT_EQ(stage.App().GetMelodyTempo(), 120);
}

TEST(PlugInLoad, TheHostIsToldAllParametersInOrder) {
    PlugInStage stage;
    stage.LoadSong();
    ASSERT_EQ(stage.host.automated.size(), 32U);
    for (std::int32_t index = 0; index < 32; ++index) {
        const auto& [told, value] = stage.host.automated[static_cast<std::size_t>(index)];
        EXPECT_EQ(told, index);
        EXPECT_EQ(value, stage.plugIn->GetParameter(index)) << index;
    }
    EXPECT_NEAR(stage.host.automated[6].second, 0.5F / 1.333F, 1e-6F); // the first harmony voice of "default"
}

TEST(PlugInLoad, TheChosenProgramIsAppliedToTheNewRecording) {
    PlugInStage stage;
    stage.plugIn->SetProgram(1);
    stage.LoadSong();
    EXPECT_EQ(stage.App().GetCurrentPreset(), 1);
    EXPECT_NEAR(stage.plugIn->GetParameter(6), 1 / 1.333F, 1e-6F); // "flat"
    EXPECT_EQ(stage.plugIn->GetProgram(), 1);
}

TEST(PlugInLoad, TheStateAfterTheAnalysisIsTheBottomOfTheUndoSteps) {
    PlugInStage stage;
    stage.LoadSong();
    EXPECT_FALSE(stage.plugIn->PressUndo());
    const std::int32_t before = stage.VoicePitch(0, 1);
    stage.MoveNote(0, 1, 1);
    EXPECT_TRUE(stage.plugIn->PressUndo());
    EXPECT_EQ(stage.VoicePitch(0, 1), before);
    EXPECT_TRUE(stage.plugIn->PressRedo());
    EXPECT_EQ(stage.VoicePitch(0, 1), before + 1);
    EXPECT_FALSE(stage.plugIn->PressRedo());
}

TEST(PlugInLoad, ActivatesTheToolbarAndPassesItsTogglesOn) {
    PlugInStage stage;
    stage.LoadSong();
    ToolbarState expected;
    expected.editActive = expected.saveActive = expected.singleVoiceActive = true;
    EXPECT_EQ(stage.plugIn->GetToolbar(), expected);
    EXPECT_TRUE(stage.plugIn->ToggleFollowCursor());
    EXPECT_TRUE(stage.plugIn->ToggleSingleVoice());
    EXPECT_TRUE(stage.plugIn->ToggleCutMode());
    EXPECT_TRUE(stage.App().GetCutMode());
    stage.LoadSong();
    EXPECT_TRUE(stage.App().GetFollowCursor());
    EXPECT_TRUE(stage.App().GetSingleVoiceOutput());
    EXPECT_FALSE(stage.App().GetCutMode());
    expected.followCursor = expected.singleVoice = true; // and cut mode is off again
    EXPECT_EQ(stage.plugIn->GetToolbar(), expected);
}

TEST(PlugInLoad, TheApplicationIsPolledEveryTenthOfASecond) {
    PlugInStage stage;
    stage.LoadSong();
    ASSERT_EQ(stage.toolkit.timers.size(), 1U);
    EXPECT_EQ(stage.toolkit.timers[0].seconds, 0.1);
    stage.host.Play(true);
    stage.PlayBlocks(20, 512);
    EXPECT_EQ(stage.App().View().GetPlayPosition(), 0);
    stage.toolkit.FireTimers();
    EXPECT_NEAR(stage.App().View().GetPlayPosition(), 20 * 512, 1);
    EXPECT_EQ(stage.toolkit.timers.size(), 1U);
    stage.plugIn.reset();
    EXPECT_TRUE(stage.toolkit.timers.empty());
}

// --- What cannot be loaded ---

TEST(PlugInLoad, AMissingFileIsToldAndLeavesTheStartUpScreen) {
    PlugInStage stage;
    stage.LoadSong();
    EXPECT_EQ(stage.plugIn->LoadAudioFile("/nowhere/song.wav"), kCannotOpen);
    EXPECT_EQ(stage.toolkit.messages, std::vector<std::string>{kNotLoaded});
    EXPECT_EQ(stage.plugIn->GetAudioPath(), "/nowhere/song.wav");
    ExpectEmpty(stage);
    stage.LoadSong();
    EXPECT_TRUE(stage.plugIn->IsLoaded());
}

TEST(PlugInLoad, AFolderADeviceAndRubbishAreNoRecordings) {
    const TemporaryFolder folder;
    const std::string rubbish = folder.File("rubbish.wav").string();
    std::ofstream(rubbish) << "no sound at all";
    for (const std::string& path :
         {folder.Path().string(), std::string("/dev/null"), rubbish, std::string()}) {
        PlugInStage stage;
        EXPECT_EQ(stage.plugIn->LoadAudioFile(path), kCannotOpen) << path;
        EXPECT_EQ(stage.toolkit.messages, std::vector<std::string>{kNotLoaded});
        ExpectEmpty(stage);
    }
}

TEST(PlugInLoad, MoreThanTwoChannelsAreRefused) {
    const TemporaryFolder folder;
    const std::string path = folder.File("three.wav").string();
    Recording recording = SingStageSong();
    recording.channels.resize(3, recording.channels[0]);
    ASSERT_TRUE(WriteWav(path, recording));
    PlugInStage stage;
    EXPECT_EQ(stage.plugIn->LoadAudioFile(path), kBadArgument);
    EXPECT_EQ(stage.toolkit.messages, std::vector<std::string>{kTooManyChannels});
    ExpectEmpty(stage);
}

TEST(PlugInLoad, StereoIsTaken) {
    const TemporaryFolder folder;
    const std::string path = folder.File("two.wav").string();
    ASSERT_TRUE(WriteWav(path, SingStageSong(44100, 2)));
    PlugInStage stage;
    EXPECT_EQ(stage.plugIn->LoadAudioFile(path), kOk);
}

TEST(PlugInLoad, RatesBelow11kHzAreRefusedAndTheLowestIsTaken) {
    const TemporaryFolder folder;
    Recording recording = SingStageSong(11025);
    const std::string lowest = folder.File("lowest.wav").string();
    ASSERT_TRUE(WriteWav(lowest, recording));
    recording.sampleRate = 11024;
    const std::string tooLow = folder.File("low.wav").string();
    ASSERT_TRUE(WriteWav(tooLow, recording));
    PlugInStage stage;
    stage.host.sampleRate = 11025;
    EXPECT_EQ(stage.plugIn->LoadAudioFile(lowest), kOk);
    EXPECT_TRUE(stage.toolkit.messages.empty());
    EXPECT_EQ(stage.plugIn->LoadAudioFile(tooLow), kSampleRateTooLow);
    EXPECT_EQ(stage.toolkit.messages, std::vector<std::string>{kRateTooLow});
    ExpectEmpty(stage);
}

TEST(PlugInLoad, AnotherRateThanTheHostsIsWarnedOfOnceAndLoads) {
    PlugInStage stage;
    stage.host.sampleRate = 48000;
    stage.LoadSong();
    EXPECT_EQ(stage.toolkit.messages, std::vector<std::string>{kOtherRate});
    stage.PlayBlocks(3, 64);
    EXPECT_EQ(stage.toolkit.messages.size(), 1U);
    EXPECT_EQ(stage.SetChunk(stage.Chunk()), 1); // a restore says nothing
    EXPECT_EQ(stage.toolkit.messages.size(), 1U);
}

TEST(PlugInLoad, WithoutAHostOrItsRateThereIsNothingToWarnOf) {
    PlugInStage stage;
    stage.host.sampleRate = 0;
    stage.LoadSong();
    EXPECT_TRUE(stage.toolkit.messages.empty());

    ScriptedToolkit toolkit;
    CvirelainePlugIn alone(nullptr, toolkit);
    EXPECT_EQ(alone.LoadAudioFile(SungSong()), kOk);
    EXPECT_TRUE(toolkit.messages.empty());
}

TEST(PlugInLoad, ACancelledAnalysisLeavesTheStartUpScreenAndAClosedFile) {
    const TemporaryFolder folder;
    const std::string path = CopyOfSong(folder, "song.wav");
    PlugInStage stage;
    stage.toolkit.cancelProgress = true;
    EXPECT_EQ(stage.plugIn->LoadAudioFile(path), kRunFailed);
    EXPECT_TRUE(stage.toolkit.messages.empty());
    EXPECT_EQ(stage.toolkit.progressWindows, 0);
    EXPECT_EQ(stage.plugIn->GetAudioPath(), path);
    EXPECT_FALSE(std::filesystem::exists(folder.File("song.kva")));
    EXPECT_EQ(stage.toolkit.windowActive, (std::vector<bool>{false, true}));
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        EXPECT_NE(std::filesystem::read_symlink(entry.path(), gone).string(), path);
    }
    ExpectEmpty(stage);
    stage.toolkit.cancelProgress = false;
    EXPECT_EQ(stage.plugIn->LoadAudioFile(path), kOk);
}

TEST(PlugInLoad, AnalysesWithoutACacheWhereThatIsWished) {
    const TemporaryFolder folder;
    const std::string path = CopyOfSong(folder, "song.wav");
    PlugInStage stage({false});
    EXPECT_EQ(stage.plugIn->LoadAudioFile(path), kOk);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
}

TEST(PlugInLoad, ASecondLoadFromWithinTheFirstIsRefused) {
    const TemporaryFolder folder;
    const std::string path = CopyOfSong(folder, "song.wav");
    PlugInStage stage;
    std::vector<std::int32_t> nested;
    stage.toolkit.onEvents = [&] {
        nested.push_back(stage.plugIn->LoadAudioFile(SungSong()));
        EXPECT_FALSE(stage.plugIn->PressLoad());
        EXPECT_FALSE(stage.plugIn->PressUndo());
        EXPECT_FALSE(stage.plugIn->RunEventPass());
    };
    EXPECT_EQ(stage.plugIn->LoadAudioFile(path), kOk);
    ASSERT_FALSE(nested.empty());
    for (const std::int32_t result : nested) EXPECT_EQ(result, kNothingThere);
    EXPECT_EQ(stage.plugIn->GetAudioPath(), path);
}

TEST(PlugInLoad, HostCallsFromWithinALoadAreHarmless) {
    const TemporaryFolder folder;
    const std::string path = CopyOfSong(folder, "song.wav");
    PlugInStage stage;
    int calls = 0;
    stage.toolkit.onEvents = [&] {
        ++calls;
        OutputBlock block(64);
        stage.plugIn->Process(nullptr, block.Pointers(), 64);
        EXPECT_TRUE(block.IsAll(0, 0));
        stage.plugIn->ProcessEvents(IncomingEvents({MidiMessage(0x90, 60, 100)}).List());
        stage.plugIn->SetParameter(0, 0.1F);
        EXPECT_EQ(stage.plugIn->GetParameter(0), 0);
        EXPECT_EQ(stage.Chunk(), "");
        EXPECT_EQ(stage.Chunk(true), "");
        stage.plugIn->SetProgram(1);
        EXPECT_FALSE(stage.plugIn->IsClipping());
    };
    EXPECT_EQ(stage.plugIn->LoadAudioFile(path), kOk);
    EXPECT_GT(calls, 0);
    EXPECT_EQ(stage.App().GetCurrentPreset(), 1);
    EXPECT_NEAR(stage.plugIn->GetParameter(6), 1 / 1.333F, 1e-6F);
}

// Answers the news of a parameter with another program.
class HostThatChangesItsMind : public ScriptedHost {
public:
    void SetParameterAutomated(std::int32_t, float) override { plugIn->SetProgram(1); }
    CvirelainePlugIn* plugIn = nullptr;
};

TEST(PlugInLoad, AProgramChosenAtTheVeryEndOfALoadCounts) {
    HostThatChangesItsMind host;
    ScriptedToolkit toolkit;
    CvirelainePlugIn plugIn(&host, toolkit);
    host.plugIn = &plugIn;
    ASSERT_EQ(plugIn.LoadAudioFile(SungSong()), kOk);
    EXPECT_EQ(plugIn.Application()->GetCurrentPreset(), 1);
    EXPECT_NEAR(plugIn.GetParameter(6), 1 / 1.333F, 1e-6F);
}

TEST(PlugInLoad, UnloadsToTheStartUpScreen) {
    PlugInStage stage;
    stage.LoadSong();
    stage.plugIn->CreateEmptyApplication();
    ExpectEmpty(stage);
}

// --- Drops and the dialog ---

TEST(PlugInDrop, ADroppedPathIsLoaded) {
    PlugInStage stage;
    stage.plugIn->DropText(CvirelainePlugIn::kDroppedText, SungSong());
    EXPECT_TRUE(stage.plugIn->IsLoaded());
}

TEST(PlugInDrop, PressAndReleaseOfTheMouseChangeNothing) {
    PlugInStage stage;
    for (const std::int32_t mode : {1, 2, -1}) stage.plugIn->DropText(mode, SungSong());
    EXPECT_FALSE(stage.plugIn->IsLoaded());
}

TEST(PlugInDrop, ADroppedDocumentLoadsTheRecordingItNames) {
    const std::string document = "<quillon-xml><filename>" + SungSong() + "</filename></quillon-xml>";
    ASSERT_EQ(ReadDroppedFileName(document).value_or("no name"), SungSong()) << "the sample itself is wrong";
    PlugInStage stage;
    stage.plugIn->DropText(CvirelainePlugIn::kDroppedText, document);
    EXPECT_TRUE(stage.plugIn->IsLoaded());
}

TEST(PlugInDrop, RubbishChangesNothing) {
    PlugInStage stage;
    stage.LoadSong();
    CkvovirelaineApp* const before = stage.plugIn->Application();
    const std::string texts[] = {"",
                                 "hello",
                                 "/nowhere/song.wav",
                                 "/dev/null",
                                 "/",
                                 std::string(100000, '<'),
                                 "<quillon-xml></quillon-xml>",
                                 std::string("a\0b", 3)};
    for (const std::string& text : texts) {
        stage.plugIn->DropText(CvirelainePlugIn::kDroppedText, text);
        stage.plugIn->DropFile(text);
    }
    EXPECT_TRUE(stage.plugIn->IsLoaded());
    EXPECT_EQ(stage.plugIn->Application(), before);
    EXPECT_TRUE(stage.toolkit.messages.empty());
}

TEST(PlugInDialog, LoadAsksForARecording) {
    PlugInStage stage;
    EXPECT_FALSE(stage.plugIn->PressLoad()); // cancelled
    EXPECT_FALSE(stage.plugIn->IsLoaded());
    stage.toolkit.answers = {SungSong()};
    EXPECT_TRUE(stage.plugIn->PressLoad());
    EXPECT_TRUE(stage.plugIn->IsLoaded());
    EXPECT_EQ(stage.toolkit.questions, (std::vector<std::string>{"Open Audio File", "Open Audio File"}));
    EXPECT_EQ(stage.toolkit.filters[0],
              "All Audio Files\t*.{wav,aif,aiff}\nWAV Files\t*.wav\nAIFF Files\t*.{aif,aiff}");
}

} // namespace
} // namespace sonorelle::test
