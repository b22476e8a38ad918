#include "app/application_fixture.h"

#include "app/application.h"
#include "platform/result_codes.h"

#include <gtest/gtest.h>

namespace sonorelle::test {
namespace {

TEST(ApplicationRun, LoadsTheCachedAnalysisAtOnce) {
    LoadedSession session;
    EXPECT_EQ(session.result, 0);
    EXPECT_TRUE(session.app->WasCacheLoaded());
    EXPECT_EQ(session.toolkit.progressOpened, 0);
    EXPECT_TRUE(session.app->HasAudio());
    EXPECT_EQ(session.app->Driver().GetNoteCount(), 6);
}

TEST(ApplicationRun, BeginsWithTheWholeMelodyAndOneSnapshot) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    EXPECT_EQ(app.GetPlayStart(), 0);
    EXPECT_EQ(app.GetPlayEnd(), app.GetMelodyEnd());
    EXPECT_EQ(app.GetMelodyEnd(), session.song.marks.back().position);
    EXPECT_EQ(app.SnapshotPanel().GetCount(), 1);
    EXPECT_EQ(app.SnapshotPanel().GetName(0), "Initial Snapshot");
    EXPECT_EQ(app.GetPosition(), 0);
    EXPECT_FALSE(app.IsPlaying());
    EXPECT_FALSE(app.Driver().GetAutoKey());
    EXPECT_FALSE(app.Driver().GetFollowScale());
    EXPECT_EQ(app.VoicePanel().GetVisibleVoices(), 4);
    EXPECT_EQ(app.View().GetNoteCount(), 6);
    EXPECT_EQ(app.TuningPanel().GetFrequency(), app.Analyzer().GetTuningFrequency());
}

TEST(ApplicationRun, WithoutARecordingItOnlyStandsForTheStartUpScreen) {
    AnsweringToolkit toolkit;
    CCriticalSection lock;
    CSnapshotStore store;
    CkvovirelaineApp app({toolkit, lock, nullptr, store});
    EXPECT_EQ(app.Run(), 0);
    EXPECT_FALSE(app.PanelsActive());
    std::array<float, 64> left;
    std::array<float, 64> right;
    left.fill(1);
    right.fill(1);
    float* outputs[] = {left.data(), right.data(), nullptr};
    EXPECT_EQ(app.ProcessAudio(outputs, 64), 0);
    EXPECT_EQ(left, (std::array<float, 64>{}));
    EXPECT_EQ(right, (std::array<float, 64>{}));
    app.Start();
    app.NoteOn(60, 0, 0);
    app.NoteOff(60, 0, 0);
    app.AllNotesOff(0, 0);
    app.SynchronizeToHost(0, true, true, 64);
    app.SetPosition(100);
    app.NextNote();
    app.PreviousNote();
    app.Poll();
    app.RefreshFromStore();
    app.OnPlaybackChanged();
    EXPECT_FALSE(app.IsPlaying());
    const void* data = &app;
    EXPECT_EQ(app.SaveState(data), 0);
    EXPECT_EQ(app.ExportAudio("nowhere.wav", -1), kBadArgument);
    EXPECT_EQ(store.GetSnapshotCount(), 0);
}

TEST(ApplicationRun, ACancelledAnalysisGivesMinusOneAndLeavesNoCache) {
    LoadedSession session(SessionSong(), false);
    std::filesystem::remove(session.path + ".kva");
    session.toolkit.cancel = true;
    EXPECT_EQ(session.app->Run(), CkvovirelaineApp::kCancelled);
    EXPECT_EQ(session.app->GetAnalysisState(), CkvovirelaineApp::kCancelled);
    EXPECT_FALSE(std::filesystem::exists(session.path + ".kva"));
    EXPECT_EQ(session.toolkit.progressOpened, 1);
    EXPECT_EQ(session.toolkit.progressClosed, 1);
    EXPECT_FALSE(session.app->HasAudio());
}

TEST(ApplicationRun, AFreshAnalysisIsKeptBesideTheRecording) {
    LoadedSession session(SessionSong(), false);
    std::filesystem::remove(session.path + ".kva");
    EXPECT_EQ(session.app->Run(), 0);
    EXPECT_TRUE(session.app->WasCacheWritten());
    EXPECT_TRUE(std::filesystem::exists(session.path + ".kva"));
}

TEST(ApplicationRun, TheElementsOfSavedWorkStandInTheirOrder) {
    LoadedSession session(SessionSong(), false);
    // Tempo and transposition, the 18 settings of the choir, and the mode of its panel.
    ASSERT_EQ(session.store.GetElementCount(), 21);
    for (std::int32_t i = 0; i < 21; ++i) EXPECT_EQ(session.store.GetElement(i)->size, 4) << i;
    EXPECT_EQ(session.store.GetElement(0)->owner, session.app.get());
    EXPECT_EQ(session.store.GetElement(1)->owner, session.app.get());
    EXPECT_EQ(session.store.GetElement(2)->owner, &session.app->Driver());
}

} // namespace
} // namespace sonorelle::test
