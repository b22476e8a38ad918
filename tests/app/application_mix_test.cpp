#include "app/application_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace sonorelle::test {
namespace {

float Largest(const std::vector<float>& samples) {
    float largest = 0;
    for (const float sample : samples) largest = std::max(largest, std::fabs(sample));
    return largest;
}

TEST(ApplicationMix, SoundsTheSameForEveryBlockSizeOfTheHost) {
    LoadedSession session;
    const std::int32_t frames = session.End() + 4096;
    const Outputs expected = session.Play(frames, 64, 10);
    EXPECT_GT(Largest(expected[0]), 0.05F);
    for (const std::int32_t block : {1, 17, 100, 4096}) {
        LoadedSession other;
        const Outputs heard = other.Play(frames, block, 10);
        for (std::size_t output = 0; output < heard.size(); ++output)
            EXPECT_TRUE(heard[output] == expected[output]) << block << " " << output;
    }
}

TEST(ApplicationMix, BlocksOfOneSampleAreRenderedEverySixtyFourthCall) {
    LoadedSession session;
    session.app->Rewind();
    session.app->Start();
    std::int32_t renders = 0;
    double before = session.app->Bank().GetReadPosition(0);
    for (std::int32_t i = 0; i < 64 * 40; ++i) {
        session.Process(1, 1);
        const double now = session.app->Bank().GetReadPosition(0);
        renders += now != before ? 1 : 0;
        before = now;
        EXPECT_EQ(session.app->GetPosition(), i + 1);
    }
    EXPECT_LE(renders, 40);
}

TEST(ApplicationMix, ABlockOfAHundredIsTheRestOfABlockAndTwoMore) {
    LoadedSession session;
    session.app->Rewind();
    session.app->Start();
    const auto renders = [&] { // the bank counts from the position at the start of the call
        const double before = session.app->GetExactPosition();
        session.Process(100, 100);
        return (session.app->Bank().GetPosition() - before) / 64;
    };
    EXPECT_EQ(renders(), 2); // 64 and 36, of which 28 stay
    EXPECT_EQ(renders(), 2); // those 28, 64 and 8
    EXPECT_EQ(renders(), 1); // 56 and 44
    double all = 5;
    for (std::int32_t i = 3; i < 16; ++i) all += renders();
    EXPECT_EQ(all, 25); // 1600 samples
}

TEST(ApplicationMix, BeforeTheRegionIsSilenceThatPasses) {
    LoadedSession session;
    session.app->View().SetPlayRegion(20000, 40000);
    session.app->PlaybackPanel().SetRegion(20000, 40000);
    session.app->OnPlaybackChanged();
    session.app->SetPosition(-10000);
    session.app->Start();
    const Outputs heard = session.Process(12000, 128);
    EXPECT_EQ(session.app->GetPosition(), 22000);
    EXPECT_EQ(Largest({heard[0].begin(), heard[0].begin() + 9900}), 0.0F);
    EXPECT_GT(Largest({heard[0].begin() + 10100, heard[0].end()}), 0.01F);
}

TEST(ApplicationMix, FadesOutOnceBeforeTheEndOfTheRegion) {
    LoadedSession session;
    session.app->PlaybackPanel().SetRegion(1000, 12000);
    session.app->OnPlaybackChanged();
    const Outputs heard = session.Play(14000, 64);
    const auto around = [&](std::int32_t sample) {
        return Largest({heard[0].begin() + sample - 300, heard[0].begin() + sample});
    };
    EXPECT_GT(around(9000), 0.05F);
    EXPECT_LT(around(10990), around(9000) * 0.3F); // about exp(-990/465) = 12%
    EXPECT_EQ(Largest({heard[0].begin() + 11064 + CSeam::kLength, heard[0].end()}), 0.0F);
}

TEST(ApplicationMix, ANullSecondOutputReturnsAtOnce) {
    LoadedSession session;
    session.app->Start();
    std::vector<float> left(64, 1.0F);
    float* outputs[] = {left.data(), nullptr};
    EXPECT_EQ(session.app->ProcessAudio(outputs, 64), 1);
    EXPECT_EQ(left, std::vector<float>(64, 1.0F));
    EXPECT_EQ(session.app->ProcessAudio(nullptr, 64), 1);
    float* two[] = {left.data(), left.data(), nullptr};
    EXPECT_EQ(session.app->ProcessAudio(two, 0), 0);
    EXPECT_EQ(session.app->ProcessAudio(two, -5), 0);
    EXPECT_EQ(left, std::vector<float>(64, 1.0F));
}

TEST(ApplicationMix, AMonoRecordingFeedsBothSides) {
    LoadedSession session;
    for (std::int32_t voice = 0; voice < 4; ++voice) session.app->VoicePanel().SetPan(voice, 0);
    const Outputs heard = session.Play(40000, 256);
    EXPECT_GT(Largest(heard[0]), 0.05F);
    EXPECT_GT(Largest(heard[1]), 0.05F);
}

TEST(ApplicationMix, VoicesOwnOutputsSoundOnlyOnRequest) {
    LoadedSession session;
    const Outputs silent = session.Play(20000, 256, 10);
    for (std::size_t output = 2; output < 10; ++output) EXPECT_EQ(Largest(silent[output]), 0.0F) << output;
    session.app->SetSingleVoiceOutput(true);
    const Outputs heard = session.Play(20000, 256, 10);
    for (std::size_t output = 2; output < 10; ++output) EXPECT_GT(Largest(heard[output]), 0.01F) << output;
}

TEST(ApplicationMix, StopsAtTheEndOfTheRecording) {
    LoadedSession session;
    session.Play(session.song.Length() + 20000, 512);
    const Outputs after = session.Process(2048, 512);
    EXPECT_EQ(Largest(after[0]), 0.0F);
}

TEST(ApplicationMix, AMutedVoiceFadesWithinOneBlock) {
    LoadedSession session;
    for (std::int32_t voice = 1; voice < 4; ++voice) session.app->VoicePanel().ToggleMute(voice);
    session.Play(4096, 64); // the lead alone, in its first note
    session.app->VoicePanel().ToggleMute(0);
    const Outputs heard = session.Process(256, 64);
    EXPECT_GT(Largest({heard[0].begin(), heard[0].begin() + 64}), 0.0F);
    EXPECT_LT(std::fabs(heard[0][63]), 1e-6F);
    EXPECT_EQ(Largest({heard[0].begin() + 64, heard[0].end()}), 0.0F);
}

TEST(ApplicationMix, AChangedVolumeMovesInAStraightLine) {
    LoadedSession session;
    for (std::int32_t voice = 1; voice < 4; ++voice) session.app->VoicePanel().ToggleMute(voice);
    LoadedSession steady;
    for (std::int32_t voice = 1; voice < 4; ++voice) steady.app->VoicePanel().ToggleMute(voice);
    session.Play(4096, 64);
    steady.Play(4096, 64);
    session.app->SetParameter(0, 0.375F); // half the volume of 1
    const Outputs heard = session.Process(128, 64);
    const Outputs full = steady.Process(128, 64);
    const float target = session.app->VoicePanel().GetVol(0);
    for (std::size_t i = 0; i < 128; ++i) {
        const float share = std::min(1.0F, static_cast<float>(i + 1) / 64.0F);
        const float expected = full[0][i] * (1 + (target - 1) * share);
        EXPECT_NEAR(heard[0][i], expected, 1e-6) << i; // rounding of the line
    }
}

TEST(ApplicationMix, AnInnerBlockForACallerWithoutAHost) {
    LoadedSession session;
    session.app->Rewind();
    session.app->Start();
    std::vector<float> block(128);
    float largest = 0;
    std::int32_t blocks = 0;
    while (session.app->ProcessBlock(block.data()) == 0) {
        largest = std::max(largest, Largest(block));
        ASSERT_LT(++blocks, 4000);
    }
    EXPECT_GT(largest, 0.05F);
    EXPECT_NEAR(blocks * 64, session.End(), 2000);
    session.app->SetLoop(true);
    for (std::int32_t i = 0; i < 3000; ++i) EXPECT_EQ(session.app->ProcessBlock(block.data()), 0);
    EXPECT_EQ(session.app->ProcessBlock(nullptr), 1);
}

TEST(ApplicationMix, EqualsTheExportButForTheFade) {
    LoadedSession session;
    const std::string path = session.folder.File("mix.wav").string();
    ASSERT_EQ(session.app->ExportAudio(path, -1), 0);
    CkvoAudioFile file;
    ASSERT_EQ(file.OpenRead(path, kAudioCacheFrames, -1, -1), 0);
    const std::int32_t frames = file.GetLength();
    std::vector<float> left(static_cast<std::size_t>(frames));
    std::vector<float> right(left);
    float* channels[] = {left.data(), right.data()};
    ASSERT_EQ(file.Seek(0), 0);
    ASSERT_EQ(file.Read(channels, frames), frames);
    LoadedSession other;
    const Outputs heard = other.Play(frames, 441);
    double curve = 0;
    const double step = static_cast<double>(CFade::kCoefficient);
    for (std::int32_t i = 0; i < frames - 1200; ++i) {
        curve = (1 - step) + step * curve;
        const auto s = static_cast<std::size_t>(i);
        if (std::fabs(left[s]) > 0.9989F) continue; // the file is limited
        // 16 bits: half a step (1.5e-5); the fade of f32 ends some 1e-5 beside 1.
        ASSERT_NEAR(static_cast<double>(heard[0][s]), static_cast<double>(left[s]) * curve, 4e-5) << i;
    }
}

TEST(ApplicationMix, TheRecordingBeginsAtItsOwnSampleWhenTheHostStartsBeforeIt) {
    LoadedSession atZero;
    const Outputs expected = atZero.Play(20000, 64);
    LoadedSession session;
    session.app->PlaybackPanel().SetOffset(1000);
    session.app->OnPlaybackChanged();
    session.app->SynchronizeToHost(512, true, true, 512); // the region begins within the block
    const Outputs heard = session.Process(20488, 512);
    for (std::size_t i = 0; i < 488; ++i) ASSERT_EQ(heard[0][i], 0.0F) << i;
    for (std::size_t i = 0; i < 20000; ++i) ASSERT_EQ(heard[0][i + 488], expected[0][i]) << i;
}

} // namespace
} // namespace sonorelle::test
