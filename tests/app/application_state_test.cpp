#include "app/application.h"

#include "app/application_fixture.h"
#include "app/saved_state_samples.h"
#include "platform/result_codes.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sonorelle::test {
namespace {

std::string SavedBy(CkvovirelaineApp& app) {
    const void* data = nullptr;
    const std::int32_t size = app.SaveState(data);
    return std::string(DocumentText(data, size));
}

SavedState StateSavedBy(CkvovirelaineApp& app) {
    return ReadState(SavedBy(app), CSnapshotStore::kVersion, app.Driver().GetAnalysedNoteCount());
}

std::int32_t LoadInto(CkvovirelaineApp& app, std::string_view document, bool openFile) {
    return app.LoadState(document.data(), static_cast<std::int32_t>(document.size()), openFile);
}

// An application as a host that opens a project has it: nothing is open, nothing has run.
class RestoredSession {
public:
    explicit RestoredSession(std::string_view document, bool useCache = true) {
        MakeApplication(useCache);
        result = LoadInto(*app, document, true);
    }
    // The recording has been opened by the user, from wherever it is now.
    RestoredSession(std::string_view document, const std::string& path) {
        audio.OpenRead(path, kAudioCacheFrames, -1, -1);
        MakeApplication(true);
        result = LoadInto(*app, document, false);
    }
    ~RestoredSession() {
        app.reset();
        store.ClearAll();
    }

    AnsweringToolkit toolkit;
    CCriticalSection audioLock;
    CSnapshotStore store;
    CVoicePresetBank presets;
    CkvoAudioFile audio;
    std::unique_ptr<CkvovirelaineApp> app;
    std::int32_t result = -2;

private:
    void MakeApplication(bool useCache) {
        ApplicationWiring wiring = {toolkit, audioLock, &audio, store};
        wiring.useCache = useCache;
        app = std::make_unique<CkvovirelaineApp>(wiring);
        app->SetPresets(&presets);
    }
};

std::vector<std::string> NamesIn(CkvovirelaineApp& app) {
    std::vector<std::string> names;
    for (std::int32_t i = 0; i < app.SnapshotPanel().GetCount(); ++i)
        names.push_back(app.SnapshotPanel().GetName(i));
    return names;
}

VoiceSettings OddSettings() {
    VoiceSettings settings;
    settings.vol = 0.75F;
    settings.pan = -0.25F;
    settings.quantize = 0.5F;
    settings.delay = 0.03125F;
    settings.formantShift = 1.125F;
    settings.drift = 0.25F;
    settings.glide = 0.125F;
    settings.timing = 0.0625F;
    settings.mute = true;
    return settings;
}

// Strips, tempo, metre, tuning, modes, an edited note, a cut note and two snapshots besides the first.
void Work(CkvovirelaineApp& app) {
    app.SetHostTempo(96, 3, 4);
    app.SetMelodyTempo(110);
    app.VoicePanel().SetSettings(2, OddSettings());
    VoiceSettings heard = OddSettings();
    heard.mute = false;
    app.VoicePanel().SetSettings(1, heard);
    app.PushVoiceSettings();
    app.PlaybackPanel().SetOffset(12345);
    app.PlaybackPanel().SetRegion(1000, 20000);
    app.PlaybackPanel().SetTriggerNote(48);
    app.PlaybackPanel().ToggleSync();
    app.TuningPanel().EnterFrequency(442);
    app.SetSingleVoiceOutput(true);
    app.SnapshotPanel().Add("Verse & \"Chorus\"");
    app.Driver().SplitNote(app.Driver().GetNoteStart(0) + 3000);
    app.Driver().SetVoicePitch(1, 2, 65);
    app.SnapshotPanel().Add("</Snapshots>");
    app.PlaybackPanel().SetTriggerNote(50);
    app.OnPlaybackChanged();
    app.Driver().SetVoicePitch(3, 1, 70);
    app.RefreshFromStore();
    app.PushUndo();
}

TEST(ApplicationState, SavedRestoredAndSavedAgainItIsTheSameToTheByte) {
    LoadedSession session;
    Work(*session.app);
    const std::string saved = SavedBy(*session.app);
    ASSERT_GT(saved.size(), 1000U);
    RestoredSession restored(saved);
    ASSERT_EQ(restored.result, kOk);
    EXPECT_EQ(restored.app->GetStateRefusal(), CkvovirelaineApp::StateRefusal::kNone);
    EXPECT_EQ(SavedBy(*restored.app), saved);
    EXPECT_EQ(SavedBy(*restored.app), saved) << "a second time";
}

std::string ExportOf(CkvovirelaineApp& app, const std::string& path) {
    app.SetHostTempo(96, 3, 4); // the host tells it with its first block
    EXPECT_EQ(app.ExportAudio(path, -1), kOk);
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

TEST(ApplicationState, ARestoredSessionIsExportedAsTheSameFile) {
    LoadedSession session;
    Work(*session.app);
    const std::string saved = SavedBy(*session.app);
    const std::string before = ExportOf(*session.app, session.folder.Path() / "before.wav");
    EXPECT_GT(before.size(), 10'000U);
    RestoredSession restored(saved);
    EXPECT_TRUE(ExportOf(*restored.app, session.folder.Path() / "after.wav") == before);
}

TEST(ApplicationState, EverythingThatPersistsComesBack) {
    LoadedSession session;
    Work(*session.app);
    CkvovirelaineApp& before = *session.app;
    RestoredSession restored(SavedBy(before));
    CkvovirelaineApp& after = *restored.app;
    EXPECT_EQ(after.GetMasterPlaybackStart(), 12345);
    EXPECT_EQ(after.PlaybackPanel().GetOffset(), 12345);
    EXPECT_TRUE(after.PlaybackPanel().IsOffsetSet());
    EXPECT_TRUE(after.IsSyncingTempo());
    EXPECT_TRUE(after.PlaybackPanel().GetSyncTempo());
    EXPECT_TRUE(after.GetSingleVoiceOutput());
    EXPECT_EQ(after.GetMelodyTempo(), 110);
    EXPECT_EQ(after.MelodyPanel().GetTempo(), 110);
    EXPECT_NEAR(after.GetTempoRescaleSyncFactor(), before.GetTempoRescaleSyncFactor(), 5e-7); // six decimals
    EXPECT_EQ(after.GetTimeSigNumerator(), 3);
    EXPECT_EQ(after.GetTimeSigDenominator(), 4);
    EXPECT_EQ(after.TuningPanel().GetFrequency(), 442);
    EXPECT_EQ(after.VoicePanel().GetSettings(2), OddSettings());
    EXPECT_EQ(after.GetPlayStart(), before.GetPlayStart());
    EXPECT_EQ(after.GetPlayEnd(), before.GetPlayEnd());
    EXPECT_EQ(after.PlaybackPanel().GetTriggerNote(), 50);
    EXPECT_EQ(after.SnapshotPanel().GetTriggerNote(), 50);
    EXPECT_EQ(NamesIn(after), NamesIn(before));
    EXPECT_EQ(after.Driver().GetNoteCount(), before.Driver().GetNoteCount());
    EXPECT_EQ(after.Driver().GetNoteCapacity(), before.Driver().GetNoteCapacity());
    EXPECT_EQ(after.View().GetNoteCount(), before.View().GetNoteCount());
}

TEST(ApplicationState, TheModeOfTriggersComesBackAndKeepsLiveModesOff) {
    LoadedSession session;
    session.app->PlaybackPanel().PressMidi();
    ASSERT_TRUE(session.app->IsTriggeredBySnapshots());
    RestoredSession restored(SavedBy(*session.app));
    EXPECT_TRUE(restored.app->IsTriggeredBySnapshots());
    EXPECT_EQ(restored.app->PlaybackPanel().GetMode(), CkvovirelainePlaybackSettings::kMidi);
    EXPECT_FALSE(restored.app->ChoirPanel().GetAllowLive());
}

TEST(ApplicationState, TheLastStateDoesNotStayInTheListOfTheSaving) {
    LoadedSession session;
    Work(*session.app);
    const std::vector<std::string> names = NamesIn(*session.app);
    session.app->SnapshotPanel().Select(1);
    const SavedState saved = StateSavedBy(*session.app);
    EXPECT_EQ(NamesIn(*session.app), names);
    EXPECT_EQ(session.app->SnapshotPanel().GetSelected(), 1);
    ASSERT_TRUE(saved.snapshots.has_value());
    ASSERT_EQ(saved.snapshots->records.size(), names.size() + 1);
    EXPECT_EQ(saved.snapshots->records.back().name, "Last State");
    EXPECT_EQ(saved.snapshots->records.back().midiTrigger, 50);
    EXPECT_EQ(saved.snapshots->selectedSnapshot, 1);
}

TEST(ApplicationState, TheLastStateDoesNotStayInTheListOfTheLoading) {
    LoadedSession session;
    Work(*session.app);
    RestoredSession restored(SavedBy(*session.app));
    EXPECT_EQ(NamesIn(*restored.app),
              (std::vector<std::string>{"Initial Snapshot", "Verse & \"Chorus\"", "</Snapshots>"}));
}

TEST(ApplicationState, AUsersSnapshotOfTheSameNameStays) {
    LoadedSession session;
    session.app->SnapshotPanel().Add("Last State");
    RestoredSession restored(SavedBy(*session.app));
    EXPECT_EQ(NamesIn(*restored.app), (std::vector<std::string>{"Initial Snapshot", "Last State"}));
}

TEST(ApplicationState, AFullListLosesNothing) {
    LoadedSession session;
    for (int i = 1; i < CSnapshotStore::kSnapshotLimit; ++i)
        session.app->SnapshotPanel().Add(std::to_string(i));
    ASSERT_FALSE(session.app->SnapshotPanel().CanAdd());
    session.app->Driver().SetVoicePitch(2, 1, 71);
    const std::vector<std::string> names = NamesIn(*session.app);
    const std::string saved = SavedBy(*session.app);
    EXPECT_EQ(NamesIn(*session.app), names);
    RestoredSession restored(saved);
    EXPECT_EQ(NamesIn(*restored.app), names);
    EXPECT_EQ(SavedBy(*restored.app), saved);
}

TEST(ApplicationState, UndoRestartsAfterALoad) {
    LoadedSession session;
    Work(*session.app);
    RestoredSession restored(SavedBy(*session.app));
    // What the analysis gave, and what was saved.
    EXPECT_EQ(restored.store.GetUndoCount(), 2);
    EXPECT_EQ(restored.store.GetUndoIndex(), 2);
}

// A document of this session with a change.
TEST(ApplicationState, AStateWithoutSnapshotsKeepsTheInitialSnapshotOfTheRun) {
    LoadedSession session;
    Work(*session.app);
    SavedState state = StateSavedBy(*session.app);
    state.snapshots.reset();
    RestoredSession restored(WriteState(state));
    EXPECT_EQ(restored.result, kOk);
    EXPECT_EQ(NamesIn(*restored.app), (std::vector<std::string>{"Initial Snapshot"}));
    EXPECT_EQ(restored.app->VoicePanel().GetVol(2), 0.75F);
    EXPECT_EQ(restored.app->TuningPanel().GetFrequency(), 442);
}

// The host has told its tempo; nothing but the document tells that the melody follows it.
TEST(ApplicationState, WithoutSnapshotsTooTheMelodyFollowsTheHost) {
    LoadedSession session;
    SavedState state;
    state.fileSettings.audioFileName = session.path;
    state.fileSettings.syncTempoToHost = true;
    RestoredSession restored("");
    restored.app->SetHostTempo(90, 4, 4); // the melody has no other, and takes it
    restored.app->SetHostTempo(180, 4, 4);
    ASSERT_EQ(LoadInto(*restored.app, WriteState(state), true), kOk);
    EXPECT_EQ(restored.app->View().GetTempoGrid(), 90);
    // At double speed a second of the host is two of the melody.
    restored.app->Start();
    std::array<float, 64> left{};
    std::array<float, 64> right{};
    float* outputs[] = {left.data(), right.data(), nullptr};
    for (int block = 0; block < 10; ++block) restored.app->ProcessAudio(outputs, 64);
    EXPECT_NEAR(restored.app->GetExactPosition(), 1280, 1);
}

TEST(ApplicationState, ANewerDocumentGivesItsFileSettingsAlone) {
    LoadedSession session;
    Work(*session.app);
    RestoredSession restored(WithValue(SavedBy(*session.app), "SnapshotVersion", "1.201"));
    EXPECT_EQ(restored.result, kOk);
    EXPECT_EQ(restored.app->GetStateRefusal(), CkvovirelaineApp::StateRefusal::kNewerVersion);
    EXPECT_EQ(restored.app->TuningPanel().GetFrequency(), 442);
    EXPECT_EQ(restored.app->VoicePanel().GetVol(2), 1);
    EXPECT_EQ(restored.app->SnapshotPanel().GetCount(), 0);
    EXPECT_EQ(restored.app->Driver().GetNoteCount(), restored.app->Driver().GetAnalysedNoteCount());
}

TEST(ApplicationState, ADocumentOfAnotherAnalysisGivesItsFileSettingsAlone) {
    LoadedSession session;
    Work(*session.app);
    RestoredSession restored(WithValue(SavedBy(*session.app), "InitNumElem", "5"));
    EXPECT_EQ(restored.result, kOk);
    EXPECT_EQ(restored.app->GetStateRefusal(), CkvovirelaineApp::StateRefusal::kOtherAnalysis);
    EXPECT_EQ(restored.app->TuningPanel().GetFrequency(), 442);
    EXPECT_EQ(restored.app->VoicePanel().GetVol(2), 1);
    EXPECT_EQ(restored.app->SnapshotPanel().GetCount(), 0);
}

TEST(ApplicationState, OfADamagedListTheSnapshotsBeforeRemainAndTheLastIsRecalled) {
    LoadedSession session;
    Work(*session.app);
    std::string document = SavedBy(*session.app);
    const std::size_t third = document.find("<Snapshot_2>");
    ASSERT_NE(third, std::string::npos);
    document = document.substr(0, third) + WithReplaced(document.substr(third), "<NumOfSizeElements str=\"",
                                                        "<NumOfSizeElements str=\"9");
    RestoredSession restored(document);
    EXPECT_EQ(restored.result, kOk);
    EXPECT_EQ(NamesIn(*restored.app), (std::vector<std::string>{"Initial Snapshot", "Verse & \"Chorus\""}));
    EXPECT_EQ(restored.app->SnapshotPanel().GetTriggerNote(), restored.app->SnapshotPanel().GetKey(1));
    EXPECT_EQ(restored.app->Driver().GetNoteCount(), 6); // it was taken before the cut
    EXPECT_EQ(restored.app->VoicePanel().GetVol(2), 0.75F) << "the mixer stands behind the list";
}

// Its data is whole and its size list says so, but the elements of this arrangement are others.
TEST(ApplicationState, ASnapshotThatDoesNotFitIsLeftOutAndTheOthersStay) {
    LoadedSession session;
    session.app->SnapshotPanel().Add("second");
    SavedState state = StateSavedBy(*session.app);
    ASSERT_EQ(state.snapshots->records.size(), 3U);
    (*state.snapshots->records[0].sizes)[0] = 1 << 20;
    RestoredSession restored(WriteState(state));
    EXPECT_EQ(NamesIn(*restored.app), (std::vector<std::string>{"second"}));

    state = StateSavedBy(*session.app);
    (*state.snapshots->records[2].sizes)[0] = -4;
    RestoredSession withoutLast(WriteState(state));
    EXPECT_EQ(NamesIn(*withoutLast.app), (std::vector<std::string>{"Initial Snapshot", "second"}))
        << "none of the user's is dropped for it";
}

TEST(ApplicationState, WithoutTriggersTheSnapshotsTakeOneKeyAfterTheOther) {
    LoadedSession session;
    session.app->SnapshotPanel().Add("second");
    SavedState state = StateSavedBy(*session.app);
    for (SavedSnapshot& record : state.snapshots->records) record.midiTrigger.reset();
    RestoredSession restored(WriteState(state));
    EXPECT_EQ(restored.app->SnapshotPanel().GetKey(0), 60);
    EXPECT_EQ(restored.app->SnapshotPanel().GetKey(1), 61);
    EXPECT_EQ(restored.app->SnapshotPanel().GetTriggerNote(), 62) << "that of the last state";
}

TEST(ApplicationState, ARegionThatCannotBeIsThatOfTheSnapshotBefore) {
    LoadedSession session;
    SavedState state = StateSavedBy(*session.app);
    state.snapshots->records[0].startTime = 500;
    state.snapshots->records[0].endTime = 9000;
    for (const auto& [start, end] : {std::pair{9000, 500}, std::pair{0, session.End() + 1}}) {
        state.snapshots->records[1].startTime = start;
        state.snapshots->records[1].endTime = end;
        RestoredSession restored(WriteState(state));
        EXPECT_EQ(restored.app->GetPlayStart(), 500);
        EXPECT_EQ(restored.app->GetPlayEnd(), 9000);
    }
}

TEST(ApplicationState, AMissingKeyKeepsWhatTheRunHasSet) {
    LoadedSession session;
    SavedState state;
    state.fileSettings.audioFileName = session.path;
    RestoredSession restored(WriteState(state));
    EXPECT_EQ(restored.result, kOk);
    const CkvovirelaineApp& fresh = *session.app;
    EXPECT_EQ(restored.app->GetMasterPlaybackStart(), 0);
    EXPECT_FALSE(restored.app->PlaybackPanel().IsOffsetSet());
    EXPECT_EQ(restored.app->GetTimeSigNumerator(), fresh.GetTimeSigNumerator());
    EXPECT_EQ(restored.app->GetTempoRescaleSyncFactor(), fresh.GetTempoRescaleSyncFactor());
    EXPECT_EQ(restored.app->TuningPanel().GetFrequency(), session.app->TuningPanel().GetFrequency());
    EXPECT_EQ(SavedBy(*restored.app), SavedBy(*session.app));
}

// Which file.

TEST(ApplicationState, WithoutAPathNothingIsOpenedOrRun) {
    for (const std::string& document :
         {std::string(), std::string("<quillon-xml>"), WriteProgram({}), std::string(1000, '\0')}) {
        RestoredSession restored(document);
        EXPECT_EQ(restored.result, kCannotOpen);
        EXPECT_FALSE(restored.app->HasAudio());
        EXPECT_FALSE(restored.audio.IsOpen());
    }
    RestoredSession nothing("");
    EXPECT_EQ(nothing.app->LoadState(nullptr, 100, true), kCannotOpen);
    EXPECT_EQ(nothing.app->LoadState("<", -5, true), kCannotOpen);
}

TEST(ApplicationState, AFileThatCannotBeOpenedIsTold) {
    TemporaryFolder folder;
    for (const std::string& path :
         {std::string(folder.Path() / "gone.wav"), std::string(folder.Path()), std::string("/dev/null")}) {
        SavedState state;
        state.fileSettings.audioFileName = path;
        RestoredSession restored(WriteState(state));
        EXPECT_EQ(restored.result, kCannotOpen) << path;
        EXPECT_FALSE(restored.app->HasAudio());
    }
}

TEST(ApplicationState, AMovedRecordingIsTakenByItsName) {
    LoadedSession session;
    Work(*session.app);
    const std::string saved = SavedBy(*session.app);
    for (const char* const path : {"/gone/away/song.wav", "C:\\Songs\\song.wav", "song.wav"}) {
        RestoredSession restored(WithValue(saved, "AudioFileName", path), session.path);
        EXPECT_EQ(restored.result, kOk) << path;
        EXPECT_EQ(SavedBy(*restored.app), saved) << "the path is the present one";
    }
}

TEST(ApplicationState, AnotherNameIsAnotherRecording) {
    LoadedSession session;
    const std::string saved = SavedBy(*session.app);
    for (const char* const path : {"/gone/away/other.wav", "/song.wav/", "song.wav.bak"}) {
        RestoredSession restored(WithValue(saved, "AudioFileName", path), session.path);
        EXPECT_EQ(restored.result, kCannotOpen) << path;
        EXPECT_FALSE(restored.app->HasAudio());
    }
    RestoredSession closed(saved, std::string("/nowhere/song.wav"));
    EXPECT_EQ(closed.result, kCannotOpen) << "nothing is open";
}

TEST(ApplicationState, AnAnalysisThatIsCancelledIsTold) {
    LoadedSession session;
    const std::string saved = SavedBy(*session.app);
    RestoredSession restored("", false);
    restored.toolkit.cancel = true;
    EXPECT_EQ(LoadInto(*restored.app, saved, true), kRunFailed);
    EXPECT_FALSE(restored.app->HasAudio());
}

TEST(ApplicationState, WithoutARecordingThereIsNoState) {
    AnsweringToolkit toolkit;
    CCriticalSection lock;
    CSnapshotStore store;
    CkvovirelaineApp app({toolkit, lock, nullptr, store});
    app.Run();
    const void* data = &app;
    EXPECT_EQ(app.SaveState(data), 0);
    EXPECT_EQ(data, nullptr);
    SavedState state;
    state.fileSettings.audioFileName = "/song.wav";
    EXPECT_EQ(LoadInto(app, WriteState(state), true), kCannotOpen);
    EXPECT_EQ(LoadInto(app, WriteState(state), false), kCannotOpen);
}

TEST(ApplicationState, ChangedBytesOfADocumentLeaveASessionThatCanBeSaved) {
    LoadedSession session;
    session.app->SnapshotPanel().Add("second");
    const std::string saved = SavedBy(*session.app);
    std::mt19937 random(7);
    const std::size_t settings = saved.find("<MasterPlaybackStart");
    for (int round = 0; round < 60; ++round) {
        std::string changed = saved;
        for (int i = 0; i < 4; ++i)
            changed[settings + random() % (changed.size() - settings)] = static_cast<char>(random());
        RestoredSession restored(changed);
        ASSERT_EQ(restored.result, kOk) << "seed 7, round " << round;
        ASSERT_FALSE(SavedBy(*restored.app).empty()) << "seed 7, round " << round;
    }
}

// Presets.

TEST(ApplicationState, ADocumentOfOnePresetChangesTheFirstAlone) {
    LoadedSession session;
    SavedState state = StateSavedBy(*session.app);
    state.presets.resize(1);
    state.presets[0].name = "Mine";
    state.presets[0].voices[1] = SavedVoiceFrom(OddSettings());
    RestoredSession restored(WriteState(state));
    EXPECT_EQ(restored.presets.GetName(0), "Mine");
    EXPECT_EQ(restored.presets.GetVoices(0)[1], OddSettings());
    EXPECT_EQ(restored.presets.GetName(1), "flat");
    EXPECT_EQ(restored.presets.GetVoices(1), FactoryPresets()[1].voices);
}

// The document has no drift of the mixer: it is that of the preset which was the present one.
TEST(ApplicationState, DriftComesBackThroughThePresentPresetAlone) {
    LoadedSession session;
    session.app->VoicePanel().SetDrift(1, 0.5F);
    SavedState state = StateSavedBy(*session.app);
    EXPECT_FALSE(state.mixer[1].drift.has_value());
    EXPECT_EQ(state.presets[0].voices[1].drift, 0.5F);
    RestoredSession restored(WriteState(state));
    EXPECT_EQ(restored.app->VoicePanel().GetDrift(1), 0.5F);
    state.presets[0].voices[3].vol = 0.125F; // not what the mixer has
    RestoredSession other(WriteState(state));
    EXPECT_EQ(other.app->VoicePanel().GetDrift(1), 0);
}

TEST(ApplicationState, ASaveKeepsTheStripsInThePresentPreset) {
    LoadedSession session;
    session.app->ApplyPreset(1);
    session.app->VoicePanel().SetSettings(3, OddSettings());
    const SavedState saved = StateSavedBy(*session.app);
    EXPECT_EQ(saved.presets[1].voices[3], SavedVoiceFrom(OddSettings()));
    EXPECT_EQ(session.presets.GetVoices(1)[3], OddSettings());
    EXPECT_EQ(session.presets.GetVoices(0), FactoryPresets()[0].voices);
}

TEST(ApplicationState, APresetGoesToTheStripsAndIsThePresentOne) {
    LoadedSession session;
    session.app->ApplyPreset(0);
    for (std::int32_t voice = 0; voice < 4; ++voice)
        EXPECT_EQ(session.app->VoicePanel().GetSettings(voice),
                  FactoryPresets()[0].voices[static_cast<std::size_t>(voice)]);
    session.app->ApplyPreset(1);
    EXPECT_EQ(session.app->GetCurrentPreset(), 1);
    EXPECT_EQ(session.app->VoicePanel().GetPan(1), 0);
}

TEST(ApplicationState, ABadPresetChangesNothing) {
    LoadedSession session;
    session.app->ApplyPreset(1);
    session.app->VoicePanel().SetSettings(0, OddSettings());
    for (const std::int32_t index : {-1, 2, 1000}) {
        session.app->ApplyPreset(index);
        session.app->StorePreset(index);
        EXPECT_EQ(session.app->SavePreset(index), "");
    }
    EXPECT_EQ(session.app->GetCurrentPreset(), 1);
    EXPECT_EQ(session.app->VoicePanel().GetSettings(0), OddSettings());
    EXPECT_EQ(session.presets.GetVoices(0), FactoryPresets()[0].voices);
    EXPECT_EQ(session.presets.GetVoices(1), FactoryPresets()[1].voices);
}

TEST(ApplicationState, AMutedVoiceOfAPresetIsNotHeard) {
    LoadedSession session;
    VoiceSettingsOfAll voices = FactoryPresets()[1].voices;
    voices[1].mute = true;
    session.presets.SetVoices(1, voices);
    session.app->ApplyPreset(1);
    EXPECT_FALSE(session.app->View().IsVoiceEnabled(1));
    EXPECT_TRUE(session.app->View().IsVoiceEnabled(2));
    session.app->ApplyPreset(0);
    EXPECT_TRUE(session.app->View().IsVoiceEnabled(1));
}

TEST(ApplicationState, AProgramComesBack) {
    LoadedSession session;
    session.app->VoicePanel().SetSettings(1, OddSettings());
    session.presets.SetName(0, "Mine");
    const std::string program = session.app->SavePreset(0);
    LoadedSession other;
    EXPECT_EQ(other.app->LoadPreset(1, program.data(), static_cast<std::int32_t>(program.size())), kOk);
    EXPECT_EQ(other.app->VoicePanel().GetSettings(1), OddSettings());
    EXPECT_EQ(other.presets.GetVoices(1)[1], OddSettings());
    EXPECT_EQ(other.presets.GetName(1), "Mine");
    EXPECT_EQ(other.presets.GetName(0), "default");
    EXPECT_EQ(other.app->SavePreset(1), program);
}

TEST(ApplicationState, AProgramWithoutSomeKeysKeepsThoseOfTheStrips) {
    LoadedSession session;
    session.app->VoicePanel().SetSettings(1, OddSettings());
    SavedPreset preset;
    preset.voices[1].pan = 0.5F;
    const std::string program = WriteProgram(preset);
    session.app->LoadPreset(0, program.data(), static_cast<std::int32_t>(program.size()));
    VoiceSettings expected = OddSettings();
    expected.pan = 0.5F;
    EXPECT_EQ(session.app->VoicePanel().GetSettings(1), expected);
    EXPECT_EQ(session.presets.GetName(0), "default");
}

TEST(ApplicationState, ASessionInPlaceOfAProgramChangesNothing) {
    LoadedSession session;
    session.app->VoicePanel().SetSettings(1, OddSettings());
    const VoiceSettingsOfAll before = session.presets.GetVoices(1);
    const std::string document = WriteState(SavedStateSample());
    EXPECT_EQ(session.app->LoadPreset(1, document.data(), static_cast<std::int32_t>(document.size())), kOk);
    EXPECT_EQ(session.app->LoadPreset(1, nullptr, 0), kOk);
    EXPECT_EQ(session.app->VoicePanel().GetSettings(1), OddSettings());
    EXPECT_EQ(session.presets.GetVoices(1), before);
}

} // namespace
} // namespace sonorelle::test
