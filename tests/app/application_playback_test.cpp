// The host's transport, the two tempos, the sample rate, and what starts and stops.
#include "app/application_fixture.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace sonorelle::test {
namespace {

float LoudestBetween(const std::vector<float>& samples, std::int32_t from, std::int32_t to) {
    float largest = 0;
    for (std::int32_t i = from; i < to; ++i)
        largest = std::max(largest, std::fabs(samples[static_cast<std::size_t>(i)]));
    return largest;
}

// A host that plays from `start` on, and tells its position before each block.
Outputs PlayWithHost(LoadedSession& session, double start, std::int32_t frames, std::int32_t block) {
    Outputs heard(2);
    for (std::int32_t done = 0; done < frames; done += block) {
        session.app->SynchronizeToHost(start + done, true, done == 0, block);
        const Outputs piece = session.Process(block, block);
        for (std::size_t side = 0; side < 2; ++side)
            heard[side].insert(heard[side].end(), piece[side].begin(), piece[side].end());
    }
    return heard;
}

void MoveAnchor(LoadedSession& session, double hostSample) {
    session.app->PlaybackPanel().SetOffset(hostSample);
    session.app->OnPlaybackChanged();
}

void FollowTempo(LoadedSession& session, float host, float melody) {
    session.app->SetHostTempo(host, 4, 4);
    session.app->SetMelodyTempo(melody);
    session.app->PlaybackPanel().ToggleSync();
}

float PeakOf(LoadedSession& session) { return session.app->VoicePanel().GetStrip(0).Dial().GetPeak(0); }

// --- The transport ---

TEST(ApplicationPlayback, AHostFarBeforeTheMelodyIsSilence) {
    LoadedSession session;
    MoveAnchor(session, 10000);
    session.app->SynchronizeToHost(0, true, true, 512); // more than a block before it
    EXPECT_FALSE(session.app->IsPlaying());
    EXPECT_EQ(LoudestBetween(session.Process(512, 512)[0], 0, 512), 0.0F);
    EXPECT_FALSE(session.app->IsPlaying());
    // The panel learns where the host stands, all the same.
    EXPECT_EQ(session.app->PlaybackPanel().GetShownHostPosition(), 0);
    EXPECT_EQ(session.app->PlaybackPanel().GetShownMelodyPosition(), 0);
}

TEST(ApplicationPlayback, TheMelodyBeginsInTheBlockThatReachesIt) {
    LoadedSession session;
    MoveAnchor(session, 10000);
    session.app->SynchronizeToHost(10000 - 513, true, true, 512);
    EXPECT_FALSE(session.app->IsPlaying());
    session.app->SynchronizeToHost(10000 - 512, true, false, 512);
    EXPECT_TRUE(session.app->IsPlaying());
    EXPECT_EQ(session.app->GetExactPosition(), -512);
}

TEST(ApplicationPlayback, AHostBehindTheMelodyStopsIt) {
    LoadedSession session;
    const double end = session.End();
    session.app->SynchronizeToHost(end, true, true, 64);
    EXPECT_TRUE(session.app->IsPlaying()); // the last sample belongs to it
    session.app->SynchronizeToHost(end + 1, true, true, 64);
    EXPECT_FALSE(session.app->IsPlaying());
    EXPECT_EQ(LoudestBetween(session.Process(512, 512)[0], 0, 512), 0.0F);
}

TEST(ApplicationPlayback, AStartGoesToTheHostsPlaceInTheMelody) {
    LoadedSession session;
    MoveAnchor(session, 1000);
    session.app->SynchronizeToHost(6000.9, true, true, 64);
    EXPECT_TRUE(session.app->IsPlaying());
    EXPECT_EQ(session.app->GetExactPosition(), 5000); // whole samples
}

TEST(ApplicationPlayback, WhileBothRunNothingIsMoved) {
    LoadedSession session;
    session.app->SynchronizeToHost(0, true, true, 64);
    session.Process(640, 64);
    session.app->SynchronizeToHost(50000, true, false, 64); // the core would have told of a change
    EXPECT_EQ(session.app->GetExactPosition(), 640);
    EXPECT_TRUE(session.app->IsPlaying());
}

TEST(ApplicationPlayback, AJumpWhileRunningIsFollowedAtOnce) {
    LoadedSession session;
    PlayWithHost(session, 0, 640, 64);
    session.app->SynchronizeToHost(20000, true, true, 64);
    EXPECT_EQ(session.app->GetExactPosition(), 20000);
    const Outputs heard = session.Process(640, 64);
    EXPECT_EQ(session.app->GetExactPosition(), 20640);
    EXPECT_GT(LoudestBetween(heard[0], 0, 640), 0.01F);
}

TEST(ApplicationPlayback, AStopOfTheHostStopsTheMelody) {
    LoadedSession session;
    PlayWithHost(session, 0, 640, 64);
    session.app->SynchronizeToHost(640, false, true, 64);
    EXPECT_FALSE(session.app->IsPlaying());
    EXPECT_EQ(session.app->GetExactPosition(), 640);
    const Outputs after = session.Process(512, 64);
    EXPECT_EQ(LoudestBetween(after[0], CSeam::kLength, 512), 0.0F);
}

TEST(ApplicationPlayback, TheFirstRelocationBehindAStopIsNotReported) {
    LoadedSession session;
    // In the beginning as behind a stop.
    session.app->SynchronizeToHost(3000, false, true, 64);
    EXPECT_EQ(session.app->GetExactPosition(), 0);
    session.app->SynchronizeToHost(4000, false, true, 64);
    EXPECT_EQ(session.app->GetExactPosition(), 4000);
    EXPECT_EQ(session.app->PlaybackPanel().GetShownHostPosition(), 4000);
    PlayWithHost(session, 4000, 640, 64);
    session.app->SynchronizeToHost(4640, false, true, 64); // the stop itself
    EXPECT_FALSE(session.app->IsPlaying());
    session.app->SynchronizeToHost(9000, false, true, 64);
    EXPECT_EQ(session.app->GetExactPosition(), 4640);
    session.app->SynchronizeToHost(9500, false, true, 64);
    EXPECT_EQ(session.app->GetExactPosition(), 9500);
}

TEST(ApplicationPlayback, AStoppedHostThatDoesNotMoveMovesNothing) {
    LoadedSession session;
    session.app->SynchronizeToHost(0, false, true, 64);
    session.app->SetPosition(700);
    session.app->SynchronizeToHost(3000, false, false, 64);
    session.app->SynchronizeToHost(3000, false, false, 64);
    EXPECT_EQ(session.app->GetExactPosition(), 700);
}

TEST(ApplicationPlayback, ThePanelShowsWhereTheHostStartedUntilItStops) {
    LoadedSession session;
    session.app->SynchronizeToHost(2000, true, true, 64);
    EXPECT_EQ(session.app->PlaybackPanel().GetShownHostPosition(), 2000);
    session.app->SynchronizeToHost(5000, true, true, 64);
    EXPECT_EQ(session.app->PlaybackPanel().GetShownHostPosition(), 2000);
    session.app->SynchronizeToHost(5064, false, true, 64);
    session.app->SynchronizeToHost(7000, true, true, 64);
    EXPECT_EQ(session.app->PlaybackPanel().GetShownHostPosition(), 7000);
}

TEST(ApplicationPlayback, AnAuditionIsNotSteeredByTheTransport) {
    LoadedSession session;
    session.app->ChoirPanel().SetMode(kModeEdit);
    session.app->OnChoirSettingsChanged();
    CkvoPitchView& view = session.app->View();
    view.SetSize(900, 300);
    PointerEvent at;
    bool found = false;
    for (at.x = 20; at.x < 900 && !found; at.x += 3) {
        for (at.y = 100; at.y < 300 && !found; at.y += 3) {
            view.Press(at);
            found = session.app->IsPlaying();
            if (!found) view.Release(at);
        }
    }
    ASSERT_TRUE(found); // a note was pressed, and sounds
    const double before = session.app->GetExactPosition();
    session.app->SynchronizeToHost(30000, true, true, 64);
    session.app->SynchronizeToHost(30064, false, true, 64);
    EXPECT_EQ(session.app->GetExactPosition(), before);
    EXPECT_TRUE(session.app->IsPlaying());
    view.Release(at);
    EXPECT_FALSE(session.app->IsPlaying());
    EXPECT_EQ(session.app->GetPlayStart(), 0);
    EXPECT_EQ(session.app->GetPlayEnd(), session.End());
}

TEST(ApplicationPlayback, TriggeringSnapshotsIsNotSteeredByTheTransport) {
    LoadedSession session;
    session.app->PlaybackPanel().PressMidi();
    session.app->SynchronizeToHost(5000, true, true, 64);
    EXPECT_FALSE(session.app->IsPlaying());
    session.app->NoteOn(60, 0, 0);
    session.app->SynchronizeToHost(5064, false, true, 64);
    EXPECT_TRUE(session.app->IsPlaying());
}

TEST(ApplicationPlayback, AChangeThatIsNoneIsNotHeard) {
    for (const std::int32_t block : {64, 100}) {
        LoadedSession steady;
        const Outputs expected = PlayWithHost(steady, 0, 6400, block);
        LoadedSession session;
        for (std::int32_t done = 0; done < 6400; done += block) {
            session.app->SynchronizeToHost(done, true, true, block); // told anew before each block
            const Outputs heard = session.Process(block, block);
            for (std::size_t i = 0; i < heard[0].size(); ++i)
                ASSERT_EQ(heard[0][i], expected[0][static_cast<std::size_t>(done) + i])
                    << block << " " << done;
        }
    }
}

// The bank counts its own position at the stretched pace, and whole blocks.
TEST(ApplicationPlayback, AJumpToWhereTheBankBelievesToBeIsAJump) {
    LoadedSession session;
    FollowTempo(session, 60, 120);
    session.app->Start();
    session.Process(2048, 512);
    const double believed = session.app->Bank().GetPosition();
    ASSERT_EQ(believed, std::floor(believed));
    ASSERT_NE(believed, session.app->GetExactPosition());
    session.app->Stop();
    session.Process(64, 64);
    session.app->SetPosition(static_cast<std::int32_t>(believed));
    session.app->Start();
    const Outputs heard = session.Process(2048, 512);
    EXPECT_NEAR(session.app->Bank().GetReadPosition(0), believed + 1024, 400); // within two periods
    EXPECT_GT(LoudestBetween(heard[0], 0, 2048), 0.01F);
}

TEST(ApplicationPlayback, NothingSoundsWhileTheHostRunsOnBehindTheEnd) {
    LoadedSession session;
    const Outputs heard = PlayWithHost(session, 0, session.song.Length() + 20000, 100);
    // The last tone ends with the melody.
    EXPECT_LT(LoudestBetween(heard[0], session.End() + 300, static_cast<std::int32_t>(heard[0].size())),
              1e-6F);
}

TEST(ApplicationPlayback, PositionsThatAreNoneAreIgnored) {
    LoadedSession session;
    for (const double at : {kDoubleNaN, kDoubleInfinity, -kDoubleInfinity, 1e300}) {
        session.app->SynchronizeToHost(at, true, true, 64);
        EXPECT_FALSE(session.app->IsPlaying());
        EXPECT_EQ(session.app->GetExactPosition(), 0);
    }
    for (const double at : {-1e15, 1e15, 1e10, -1e10}) {
        session.app->SynchronizeToHost(at, true, true, 64);
        session.app->SynchronizeToHost(at, false, true, 64);
        session.app->SynchronizeToHost(at, false, true, 64);
        session.app->Start();
        EXPECT_EQ(LoudestBetween(session.Process(640, 64)[0], 0, 640), 0.0F) << at;
        session.app->Stop();
    }
    session.app->SynchronizeToHost(0, true, true, std::numeric_limits<std::int32_t>::min());
    session.app->SynchronizeToHost(0, true, true, std::numeric_limits<std::int32_t>::max());
    session.app->SetPosition(0);
    session.app->Start();
    EXPECT_GT(LoudestBetween(session.Process(6400, 64)[0], 0, 6400), 0.01F);
}

TEST(ApplicationPlayback, AnAnchorOfAnySizeLeavesThePositionFinite) {
    LoadedSession session;
    for (const double anchor : {1e24, -1e24, 4e9, -4e9}) {
        MoveAnchor(session, anchor);
        session.app->SynchronizeToHost(0, true, true, 64);
        session.Process(640, 64);
        EXPECT_TRUE(std::isfinite(session.app->GetExactPosition())) << anchor;
        session.app->SynchronizeToHost(0, false, true, 64);
    }
}

// --- Tempo ---

TEST(ApplicationPlayback, AMelodyOfTwiceTheTempoIsReadAtHalfSpeed) {
    LoadedSession session;
    FollowTempo(session, 60, 120);
    session.app->Start();
    session.Process(100, 100);
    EXPECT_EQ(session.app->GetExactPosition(), 50);
    const double before = session.app->Bank().GetReadPosition(0);
    session.Process(20000, 100);
    EXPECT_EQ(session.app->GetExactPosition(), 10050);
    // A voice reads on in whole periods of 200 samples, and a block ahead.
    EXPECT_NEAR(session.app->Bank().GetReadPosition(0) - before, 10000, 400);
}

TEST(ApplicationPlayback, TheMelodysPlaceFollowsBothTempos) {
    LoadedSession session;
    MoveAnchor(session, 2000);
    FollowTempo(session, 60, 120);
    session.app->SynchronizeToHost(12000, true, true, 64);
    EXPECT_EQ(session.app->GetExactPosition(), 5000); // (12000 - 2000) x 60 / 120
    EXPECT_EQ(session.app->PlaybackPanel().GetShownHostPosition(), 12000);
    // The panel takes its offset off again.
    EXPECT_EQ(session.app->PlaybackPanel().GetShownMelodyPosition(), 7000);
}

TEST(ApplicationPlayback, WhetherTheHostIsWithinTheMelodyIsAskedInItsOwnSamples) {
    LoadedSession session;
    FollowTempo(session, 240, 120); // twice as fast: over at half of its length
    const double three = session.End() * 0.75;
    session.app->SynchronizeToHost(three, true, true, 64);
    EXPECT_TRUE(session.app->IsPlaying());
    EXPECT_EQ(LoudestBetween(session.Process(64, 64)[0], 0, 64), 0.0F);
    FollowTempo(session, 60, 120); // off again
    EXPECT_FALSE(session.app->IsSyncingTempo());
    session.app->PlaybackPanel().ToggleSync(); // half as fast: cut off at half of it
    session.app->SynchronizeToHost(session.End() + 1.0, true, true, 64);
    EXPECT_FALSE(session.app->IsPlaying());
}

TEST(ApplicationPlayback, HostTemposBeyondReasonAreRefused) {
    LoadedSession session;
    session.app->SetHostTempo(100, 0, 0);
    EXPECT_EQ(session.app->GetHostTempo(), 100);
    EXPECT_EQ(session.app->GetTimeSigNumerator(), 4);
    EXPECT_EQ(session.app->GetTimeSigDenominator(), 4);
    session.app->SetHostTempo(100, 3, 8);
    for (const float tempo : {1000.0F, 999.0F, 0.0F, -120.0F, static_cast<float>(kDoubleNaN),
                              static_cast<float>(kDoubleInfinity)})
        session.app->SetHostTempo(tempo, 5, 16);
    EXPECT_EQ(session.app->GetHostTempo(), 100);
    EXPECT_EQ(session.app->GetTimeSigNumerator(), 3);
    EXPECT_EQ(session.app->GetTimeSigDenominator(), 8);
    session.app->SetHostTempo(100, -7, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(session.app->GetTimeSigNumerator(), 4);
    EXPECT_EQ(session.app->GetTimeSigDenominator(), 4);
}

TEST(ApplicationPlayback, TheFirstTempoOfEitherIsThatOfBoth) {
    LoadedSession session;
    EXPECT_EQ(session.app->GetHostTempo(), CkvovirelaineApp::kUnknownTempo);
    EXPECT_EQ(session.app->GetMelodyTempo(), CkvovirelaineApp::kUnknownTempo);
    session.app->SetHostTempo(90, 4, 4);
    EXPECT_EQ(session.app->GetMelodyTempo(), 90);
    EXPECT_EQ(session.app->MelodyPanel().GetTempo(), 90);
    session.app->SetHostTempo(110, 4, 4);
    EXPECT_EQ(session.app->GetMelodyTempo(), 90);
    LoadedSession other;
    other.app->SetMelodyTempo(70);
    EXPECT_EQ(other.app->GetHostTempo(), 70);
    other.app->SetMelodyTempo(80);
    EXPECT_EQ(other.app->GetHostTempo(), 70);
    EXPECT_EQ(other.app->MelodyPanel().GetTempo(), 80);
}

TEST(ApplicationPlayback, MelodyTemposThatAreNoneAreRefused) {
    LoadedSession session;
    session.app->SetMelodyTempo(120);
    for (const float tempo :
         {0.0F, -1.0F, static_cast<float>(kDoubleNaN), static_cast<float>(kDoubleInfinity)})
        session.app->SetMelodyTempo(tempo);
    EXPECT_EQ(session.app->GetMelodyTempo(), 120);
    session.app->PlaybackPanel().ToggleSync();
    session.app->Start();
    for (const float tempo : {std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::max()}) {
        session.app->SetMelodyTempo(tempo);
        session.Process(640, 64);
        EXPECT_TRUE(std::isfinite(session.app->GetExactPosition())) << tempo;
        EXPECT_TRUE(std::isfinite(session.app->GetTempoRescaleSyncFactor())) << tempo;
    }
}

TEST(ApplicationPlayback, TheRescalingFollowsTheMelodysTempo) {
    LoadedSession session;
    session.app->SetHostTempo(100, 4, 4);
    EXPECT_EQ(session.app->GetTempoRescaleSyncFactor(), 1);
    session.app->SetMelodyTempo(50);
    EXPECT_EQ(session.app->GetTempoRescaleSyncFactor(), 2);
    session.app->SetMelodyTempo(200);
    EXPECT_EQ(session.app->GetTempoRescaleSyncFactor(), 0.5F);
    // An anchor that is set while the melody follows the host takes the ratio as it is.
    session.app->SetMelodyTempo(80);
    session.app->PlaybackPanel().SetOffset(100);
    session.app->PlaybackPanel().ToggleSync();
    EXPECT_EQ(session.app->GetTempoRescaleSyncFactor(), 1.25F);
}

TEST(ApplicationPlayback, TheGridShowsTheTempoThatTheMelodyIsHeardIn) {
    LoadedSession session;
    session.app->SetHostTempo(100, 3, 4);
    session.app->SetMelodyTempo(80);
    EXPECT_EQ(session.app->View().GetTempoGrid(), 100);
    session.app->PlaybackPanel().ToggleSync();
    EXPECT_EQ(session.app->View().GetTempoGrid(), 80);
}

// --- Sample rate ---

TEST(ApplicationPlayback, AnUnchangedSampleRateDoesNothing) {
    LoadedSession session;
    session.app->Start();
    session.app->SetSampleRate(44100);
    EXPECT_TRUE(session.app->IsPlaying());
    EXPECT_FALSE(session.app->PlaybackPanel().IsOffsetSet());
}

TEST(ApplicationPlayback, TheAnchorKeepsItsTimeAtAnotherRate) {
    LoadedSession session;
    MoveAnchor(session, 44100);
    const std::int32_t steps = session.store.GetUndoCount();
    session.app->Start();
    session.app->SetSampleRate(88200);
    EXPECT_FALSE(session.app->IsPlaying());
    EXPECT_EQ(session.app->PlaybackPanel().GetOffset(), 88200);
    EXPECT_TRUE(session.app->PlaybackPanel().IsOffsetSet());
    EXPECT_EQ(session.app->GetMasterPlaybackStart(), 88200);
    EXPECT_EQ(session.app->PlaybackPanel().GetSampleRate(), 88200);
    EXPECT_EQ(session.store.GetUndoCount(), steps);
    for (const float rate :
         {0.0F, -44100.0F, static_cast<float>(kDoubleNaN), static_cast<float>(kDoubleInfinity)})
        session.app->SetSampleRate(rate);
    EXPECT_EQ(session.app->GetMasterPlaybackStart(), 88200);
    session.app->PlaybackPanel().PressMidi();
    session.app->NoteOn(60, 0, 0);
    session.app->SetSampleRate(44100);
    EXPECT_FALSE(session.app->IsPlaying()); // whatever drives the position
}

// --- The panel ---

TEST(ApplicationPlayback, ThePanelsRegionGoesToViewAndSnapshots) {
    LoadedSession session;
    session.app->PlaybackPanel().SetRegion(1000, 9000);
    session.app->PlaybackPanel().SetTriggerNote(62);
    session.app->Start();
    session.app->OnPlaybackChanged();
    EXPECT_FALSE(session.app->IsPlaying());
    EXPECT_EQ(session.app->GetPlayStart(), 1000);
    EXPECT_EQ(session.app->GetPlayEnd(), 9000);
    EXPECT_EQ(session.app->View().GetMarkerStart(), 1000);
    EXPECT_EQ(session.app->View().GetMarkerEnd(), 9000);
    std::int32_t start = 0;
    std::int32_t end = 0;
    session.app->SnapshotPanel().GetRegion(start, end);
    EXPECT_EQ(start, 1000);
    EXPECT_EQ(end, 9000);
    EXPECT_EQ(session.app->SnapshotPanel().GetTriggerNote(), 62);
}

TEST(ApplicationPlayback, AMovedAnchorMovesTheMelodyUnderTheHost) {
    LoadedSession session;
    session.app->SynchronizeToHost(0, false, true, 64);
    session.app->SynchronizeToHost(9000, false, true, 64);
    EXPECT_EQ(session.app->GetExactPosition(), 9000);
    MoveAnchor(session, 4000);
    EXPECT_EQ(session.app->GetMasterPlaybackStart(), 4000);
    EXPECT_EQ(session.app->GetExactPosition(), 5000);
    EXPECT_EQ(session.app->PlaybackPanel().GetShownHostPosition(), 9000);
}

// --- Start, stop, jumps ---

TEST(ApplicationPlayback, AnAnnouncedStopFadesAndThenCuts) {
    for (const std::int32_t block : {1, 64, 100, 512}) {
        LoadedSession session;
        session.app->PlaybackPanel().PressMidi();
        session.app->NoteOn(60, 0, 0);
        session.Process(6000, block);
        session.app->StopAt(3000);
        const Outputs heard = session.Process(6000, block);
        EXPECT_GT(LoudestBetween(heard[0], 0, 300), 0.02F) << block;
        // exp(-3000 x 0.00215) is 0.2%, and it ends no later than a block of 64 behind its sample
        EXPECT_LT(LoudestBetween(heard[0], 2800, 3000), 0.01F) << block;
        EXPECT_EQ(LoudestBetween(heard[0], 3064 + CSeam::kLength, 6000), 0.0F) << block;
        EXPECT_FALSE(session.app->IsPlaying()) << block;
    }
}

TEST(ApplicationPlayback, AStopHasAtLeast1024SamplesToFadeIn) {
    for (const double notice : {0.0, -5e9, 1024.0, kDoubleNaN, kDoubleInfinity, -kDoubleInfinity}) {
        LoadedSession session;
        session.app->PlaybackPanel().PressMidi();
        session.app->NoteOn(60, 0, 0);
        session.Process(6400, 64);
        session.app->StopAt(notice);
        session.Process(960, 64);
        EXPECT_TRUE(session.app->IsPlaying()) << notice;
        session.Process(128, 64);
        EXPECT_FALSE(session.app->IsPlaying()) << notice;
    }
}

TEST(ApplicationPlayback, AStartCallsAnAnnouncedStopOff) {
    LoadedSession session;
    session.app->PlaybackPanel().PressMidi();
    session.app->NoteOn(60, 0, 0);
    session.Process(3200, 64);
    session.app->StopAt(0);
    session.Process(512, 64);
    session.app->Start();
    const Outputs heard = session.Process(6400, 64);
    EXPECT_TRUE(session.app->IsPlaying());
    EXPECT_GT(LoudestBetween(heard[0], 3200, 6400), 0.02F);
}

TEST(ApplicationPlayback, StartShowsThePositionBehindTheHostsLatency) {
    LoadedSession session;
    session.app->SetHostLatency(300);
    session.app->SetPosition(5000);
    session.app->Start();
    EXPECT_EQ(session.app->View().GetPlayPosition(), 4700);
    EXPECT_TRUE(session.app->View().IsPlaying());
    session.app->Stop();
    EXPECT_EQ(session.app->View().GetPlayPosition(), 5000);
    EXPECT_FALSE(session.app->View().IsPlaying());
}

TEST(ApplicationPlayback, PositionsCountFromTheStartOfTheRegion) {
    LoadedSession session;
    session.app->PlaybackPanel().SetRegion(3000, 30000);
    session.app->OnPlaybackChanged();
    session.app->SetPosition(500);
    EXPECT_EQ(session.app->GetPosition(), 3500);
    session.app->Rewind();
    EXPECT_EQ(session.app->GetPosition(), 3000);
    session.app->SetPosition(std::numeric_limits<std::int32_t>::max());
    session.app->Start();
    EXPECT_EQ(LoudestBetween(session.Process(640, 64)[0], 0, 640), 0.0F);
    session.app->SetPosition(std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(LoudestBetween(session.Process(640, 64)[0], 0, 640), 0.0F);
}

TEST(ApplicationPlayback, JumpsFromNoteToNote) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    const auto start = [&](std::int32_t note) { return app.Driver().GetNoteStart(note); };
    app.SetPosition(start(2) + 3000);
    app.NextNote();
    EXPECT_NEAR(app.GetPosition(), start(3), 100); // at a mark
    app.SetPosition(start(5) + 100);
    app.PreviousNote(); // begun less than 0.75 s ago: the one before
    EXPECT_LT(app.GetPosition(), start(5));
    app.SetPosition(start(5) + 3000);
    const double last = app.GetExactPosition();
    app.NextNote(); // there is none
    EXPECT_NEAR(app.GetExactPosition(), last, 200);
}

TEST(ApplicationPlayback, WithoutANextNoteAStretchedMelodyStaysWhereItIs) {
    LoadedSession session;
    FollowTempo(session, 60, 120);
    session.app->SetPosition(session.app->Driver().GetNoteStart(5));
    session.app->Start();
    session.Process(2048, 512);
    const double before = session.app->GetExactPosition();
    session.app->NextNote();
    EXPECT_EQ(session.app->GetExactPosition(), before);
}

// --- Meters and poll ---

TEST(ApplicationPlayback, APollShowsPositionAndPeaks) {
    LoadedSession session;
    session.Play(12800, 64);
    session.app->Poll();
    EXPECT_EQ(session.app->View().GetPlayPosition(), 12800);
    EXPECT_TRUE(session.app->View().IsPlaying());
    const float shown = PeakOf(session);
    EXPECT_GT(shown, 1e-4F);
    session.app->Stop();
    session.app->Poll();
    EXPECT_NEAR(PeakOf(session), shown * 0.8F, shown * 1e-5F); // f32
    for (std::int32_t i = 0; i < 400; ++i) session.app->Poll();
    EXPECT_LT(PeakOf(session), 1e-20F);
    EXPECT_GT(PeakOf(session), 0.0F); // never a denormal number
}

TEST(ApplicationPlayback, ClippingIsShownUntilTheNextStart) {
    VoicedSongSettings loud;
    loud.peak = 0.95;
    LoadedSession session(MakeVoicedSong({{200, 12000}, {160, 24000}}, loud));
    for (std::int32_t voice = 0; voice < 4; ++voice) session.app->SetParameter(voice * 6, 1.0F);
    session.app->VoicePanel().SetPan(0, -1);
    session.Play(30000, 64);
    ASSERT_TRUE(session.app->IsClipping());
    session.app->Poll();
    EXPECT_TRUE(session.app->IsClipping());
    session.app->Start();
    EXPECT_FALSE(session.app->IsClipping());
    session.Play(30000, 64);
    ASSERT_TRUE(session.app->IsClipping());
    session.app->Stop();
    EXPECT_FALSE(session.app->IsClipping());
}

} // namespace
} // namespace sonorelle::test
