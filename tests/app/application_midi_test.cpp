#include "app/application_export_rig.h"
#include "app/application_gestures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace sonorelle::test {
namespace {

using testing::ElementsAre;

// MIDI: at 120 quarter notes a minute a second is 768 ticks of the voices' file.
std::uint32_t TicksOf(double frames) { return static_cast<std::uint32_t>(frames / 44100 * 768); }

TEST(ApplicationMidi, MidiOfARegionOverNoNoteHoldsTempoAndMetreAlone) {
    ExportSession session;
    session.SetRegion(0, 500); // the rest before the first note
    EXPECT_EQ(session.app->ExportMidi(session.File("out.mid"), -1), kOk);
    const std::string bytes = ExportedBytes(session.File("out.mid"));
    const MidiRead read = CMidiReader(bytes).Read();
    ASSERT_EQ(read.tracks.at(0).size(), 3U);
    EXPECT_EQ(read.tracks[0][0].metaType, 0x51);
    EXPECT_EQ(read.tracks[0][1].metaType, 0x58);
    EXPECT_EQ(read.tracks[0][2].metaType, 0x2F);
}

TEST(ApplicationMidi, MidiNotesThatStickOutAreCutAtTheRegion) {
    ExportSession session;
    const std::int32_t start = session.app->Driver().GetNoteStart(2) + 2000;
    session.SetRegion(start, start + 3000);
    EXPECT_EQ(session.app->ExportMidi(session.File("out.mid"), 0), kOk);
    const std::vector<ExportedKey> keys = ExportedKeys(session.File("out.mid"));
    ASSERT_EQ(keys.size(), 2U);
    EXPECT_EQ(keys[0].tick, 0U);
    EXPECT_NEAR(keys[1].tick, TicksOf(3000), 1); // times are whole milliseconds
}

TEST(ApplicationMidi, SyncedMidiIsStretchedAndTransposedMidiIsMoved) {
    ExportSession session;
    session.app->ExportMidi(session.File("plain.mid"), 0);
    const std::vector<ExportedKey> plain = ExportedKeys(session.File("plain.mid"));
    session.app->PlaybackPanel().ToggleSync();
    session.app->MelodyPanel().EnterTempo(240);
    session.app->ChoirPanel().ChooseRoot((session.app->MelodyPanel().GetRoot() + 9) % 12);
    ASSERT_EQ(session.app->View().GetTransposeShift(), -3);
    session.app->ExportMidi(session.File("moved.mid"), 0);
    const std::vector<ExportedKey> moved = ExportedKeys(session.File("moved.mid"));
    ASSERT_EQ(moved.size(), plain.size());
    ASSERT_EQ(plain.size(), 12U);
    for (std::size_t i = 0; i < plain.size(); ++i) {
        // Each event may lose a tick and a millisecond (0.8 ticks) on either side.
        EXPECT_NEAR(moved[i].tick, 2 * plain[i].tick, 2 * (i + 1) + 2) << i;
        EXPECT_EQ(moved[i].key, plain[i].key - 3) << i;
    }
}

TEST(ApplicationMidi, ChordsMoveWithTheTransposition) {
    ExportSession session;
    session.app->ExportMidi(session.File("plain.mid"), 4);
    session.app->ChoirPanel().ChooseRoot((session.app->MelodyPanel().GetRoot() + 2) % 12);
    session.app->ExportMidi(session.File("moved.mid"), 4);
    const std::vector<ExportedKey> plain = ExportedKeys(session.File("plain.mid"));
    const std::vector<ExportedKey> moved = ExportedKeys(session.File("moved.mid"));
    ASSERT_EQ(moved.size(), plain.size());
    ASSERT_FALSE(plain.empty());
    for (std::size_t i = 0; i < plain.size(); ++i) EXPECT_EQ((moved[i].key - plain[i].key + 24) % 12, 2) << i;
}

TEST(ApplicationMidi, MidiGoesOnTheSelectionOrClearsIt) {
    ExportSession session;
    EXPECT_EQ(session.app->ExportMidi(session.File("out.mid"), -1), kOk);
    EXPECT_EQ(session.toolkit.selection, session.File("out.mid"));
    EXPECT_EQ(session.app->ExportMidi(session.File("none/out.mid"), -1), kCannotWrite);
    EXPECT_TRUE(session.toolkit.selection.empty());
    EXPECT_EQ(session.app->ExportTriggerMidi(session.File("key.mid")), kOk);
    EXPECT_EQ(session.toolkit.selection, session.File("key.mid"));
    EXPECT_EQ(session.app->ExportTriggerMidi(session.File("none/key.mid")), kCannotWrite);
    EXPECT_TRUE(session.toolkit.selection.empty());
}

TEST(ApplicationMidi, WhatIsPlayedLiveIsNotExported) {
    ExportSession session;
    CkvovirelaineApp& app = *session.app;
    SpreadVoicesForEditing(app);
    app.ExportMidi(session.File("stored.mid"), -1);
    const std::string sound = (session.Exported(-1), ExportedBytes(session.File("exported.wav")));
    app.ChoirPanel().SetInterpretation(1);
    app.ChoirPanel().PressLive(true);
    app.Start();
    for (const std::int32_t key : {50, 54, 57}) app.NoteOn(key, 0, 0);
    session.Process(20000, 512);
    app.ExportMidi(session.File("live.mid"), -1);
    EXPECT_TRUE(ExportedBytes(session.File("live.mid")) == ExportedBytes(session.File("stored.mid")));
    session.Exported(-1);
    EXPECT_TRUE(ExportedBytes(session.File("exported.wav")) == sound);
    EXPECT_TRUE(app.Driver().IsLive());
}

TEST(ApplicationMidi, ADragWithShiftCarriesTheVoices) {
    ExportSession session;
    CkvovirelaineApp& app = *session.app;
    app.SnapshotPanel().Choose(0);
    app.SnapshotPanel().BeginDrag(false, false);
    app.SnapshotPanel().EndDrag();
    EXPECT_EQ(session.toolkit.selection, "what was dragged before");
    app.SnapshotPanel().BeginDrag(true, false);
    app.SnapshotPanel().EndDrag();
    EXPECT_EQ(session.toolkit.selection, app.GetTempMidiPath());
    EXPECT_EQ(std::filesystem::path(app.GetTempMidiPath()).filename(), "~sonorelle.mid");
    EXPECT_EQ(ExportedKeys(app.GetTempMidiPath()).size(), 6U * 4 * 2);
}

TEST(ApplicationMidi, ADragWithShiftAndCtrlCarriesTheTriggerKey) {
    ExportSession session;
    CkvovirelaineApp& app = *session.app;
    ASSERT_TRUE(app.SnapshotPanel().Add("part", 72, 10000, 32050));
    app.SnapshotPanel().Choose(1);
    app.SnapshotPanel().BeginDrag(true, true);
    app.SnapshotPanel().EndDrag();
    EXPECT_EQ(session.toolkit.selection, app.GetTempMidiPath());
    // Half a second: a quarter note of 96 ticks.
    EXPECT_THAT(ExportedKeys(app.GetTempMidiPath()),
                ElementsAre(ExportedKey{0, 0x90, 72}, ExportedKey{96, 0x80, 72}));
}

TEST(ApplicationMidi, EachInstanceDragsAFileOfItsOwnAndCleansUp) {
    std::string first;
    std::string second;
    {
        ExportSession one;
        ExportSession other;
        for (ExportSession* session : {&one, &other}) {
            session->app->SnapshotPanel().Choose(0);
            session->app->SnapshotPanel().BeginDrag(true, false);
            session->app->SnapshotPanel().EndDrag();
        }
        first = one.app->GetTempMidiPath();
        second = other.app->GetTempMidiPath();
        EXPECT_NE(first, second);
        EXPECT_TRUE(std::filesystem::exists(first));

        // Somebody has tidied up the temporary folder.
        std::filesystem::remove_all(std::filesystem::path(first).parent_path());
        one.app->SnapshotPanel().BeginDrag(true, false);
        one.app->SnapshotPanel().EndDrag();
        EXPECT_TRUE(std::filesystem::exists(one.toolkit.selection));
        first = one.app->GetTempMidiPath();
    }
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(first).parent_path()));
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(second).parent_path()));
}

} // namespace
} // namespace sonorelle::test
