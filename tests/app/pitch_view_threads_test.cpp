#include "pitch_view_stage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace sonorelle {
namespace {

class PitchViewThreads : public ::testing::Test, public PitchViewStage {};

TEST_F(PitchViewThreads, TheAudioThreadMaySetWhatItMayWhileTheViewIsUsed) {
    std::atomic<bool> stop{false};
    std::atomic<bool> started{false};
    std::atomic<std::int32_t> torn{0};
    std::thread audio([&] {
        for (std::int32_t i = 0; !stop.load(); i = (i + 1) % 1000) {
            view.SetVoiceEnabled(i % 4, i % 3 != 0);
            view.IsVoiceEnabled(i % 4);
            view.SetTempoGrid(static_cast<float>(60 + i), 120, i, 4, 4);
            view.SetPlayPosition(i, true);
            view.SetSampleRate(static_cast<float>(44100 + i % 2));
            view.SetPlayRegion(i, i + 1000);
            std::int32_t start = 0;
            std::int32_t end = 0;
            view.GetPlayRegion(start, end);
            if (start > end) ++torn;
            started.store(true);
            view.SetTransposeShift(static_cast<float>(i % 5));
            view.SetNoteEdit(i % 2 == 0);
            view.SetCutMode(i % 7 == 0);
        }
    });
    view.SetShowBeatRow(true);
    while (!started.load()) std::this_thread::yield();
    for (std::int32_t i = 0; i < 300; ++i) {
        view.DrawNotes();
        view.DrawBeats();
        view.DrawPosition();
        view.DrawRecordedPitch();
        Click(OnNote(i % kNotes, i % 4));
        view.Wheel(Turn(300, 100, i % 2 == 0 ? 1 : -1));
        view.FollowPosition();
        SetPitch(i % kNotes, 0, 60);
        const auto markers = view.DrawMarkers();
        EXPECT_LE(markers[0].lineX, markers[1].lineX);
    }
    stop.store(true);
    audio.join();
    EXPECT_EQ(torn.load(), 0);
}

} // namespace
} // namespace sonorelle
