#include "app/seam.h"

#include "app/application_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace sonorelle::test {
namespace {

constexpr std::int32_t kSeamBlock = 100;

std::vector<float> CloseAll(CSeam& seam, std::vector<float> samples) {
    for (std::size_t done = 0; done < samples.size(); done += kSeamBlock) {
        float* outputs[] = {samples.data() + done};
        seam.Close(outputs, 1,
                   std::min<std::int32_t>(kSeamBlock, static_cast<std::int32_t>(samples.size() - done)));
    }
    return samples;
}

double LargestStep(const std::vector<float>& samples, std::size_t from, std::size_t to) {
    double largest = 0;
    for (std::size_t i = std::max<std::size_t>(from, 1); i < to; ++i)
        largest = std::max(largest,
                           std::fabs(static_cast<double>(samples[i]) - static_cast<double>(samples[i - 1])));
    return largest;
}

TEST(Seam, ChangesNothingWhereNothingWasCut) {
    CSeam seam;
    const std::vector<float> samples(500, 0.7F);
    EXPECT_EQ(CloseAll(seam, samples), samples);
}

TEST(Seam, AStepBecomesASlope) {
    CSeam seam;
    std::vector<float> samples(1000, 0.0F);
    std::fill_n(samples.begin(), 130, 0.5F);
    float* first[] = {samples.data()};
    seam.Close(first, 1, 100);
    seam.CutAt(30);
    float* rest[] = {samples.data() + 100};
    seam.Close(rest, 1, 900);
    EXPECT_NEAR(samples[130], 0.5, 1e-4);                           // a 257th of half a cosine below
    EXPECT_LT(LargestStep(samples, 1, 1000), 0.5 * 3.15 / 2 / 256); // the steepest of the cosine
    EXPECT_EQ(samples[130 + CSeam::kLength], 0.0F);
}

TEST(Seam, IsTheSameForEveryBlockSize) {
    const auto run = [](std::int32_t block) {
        CSeam seam;
        std::vector<float> samples(1000, 0.0F);
        std::fill_n(samples.begin(), 200, -0.25F);
        for (std::int32_t done = 0; done < 1000; done += block) {
            if (done == 200) seam.Cut();
            float* outputs[] = {samples.data() + done};
            seam.Close(outputs, 1, block);
        }
        return samples;
    };
    EXPECT_EQ(run(10), run(200));
    EXPECT_EQ(run(1), run(200));
}

TEST(Seam, ANewSoundBehindTheCutIsJoined) {
    CSeam seam;
    std::vector<float> samples(600, 0.3F);
    std::fill_n(samples.begin(), 300, -0.4F);
    float* first[] = {samples.data()};
    seam.Close(first, 1, 300);
    seam.Cut();
    float* rest[] = {samples.data() + 300};
    seam.Close(rest, 1, 300);
    EXPECT_LT(LargestStep(samples, 1, 600), 0.01);
    EXPECT_EQ(samples[599], 0.3F);
}

TEST(Seam, WhatIsNotANumberIsNotCarriedOn) {
    CSeam seam;
    std::vector<float> samples(600, 0.0F);
    samples[299] = std::numeric_limits<float>::quiet_NaN();
    float* first[] = {samples.data()};
    seam.Close(first, 1, 300);
    seam.Cut();
    float* rest[] = {samples.data() + 300};
    seam.Close(rest, 1, 300);
    for (std::size_t i = 300; i < 600; ++i) EXPECT_EQ(samples[i], 0.0F);
}

// What a stop or a jump in the middle of a vowel adds is no larger than the vowel's own steps.
TEST(Seam, AStopInTheMiddleOfANoteDoesNotClick) {
    for (const std::int32_t block : {64, 100, 441}) {
        LoadedSession session;
        const Outputs before = session.Play(block * 100, block);
        session.app->Stop();
        Outputs after = session.Process(block * 10, block);
        after[0].insert(after[0].begin(), before[0].end() - 1000, before[0].end());
        const double own = LargestStep(after[0], 1, 1000);
        EXPECT_GT(own, 0.01) << block;
        EXPECT_LE(LargestStep(after[0], 1000, after[0].size()), own) << block;
        EXPECT_EQ(after[0].back(), 0.0F) << block;
    }
}

TEST(Seam, AJumpDuringPlaybackDoesNotClick) {
    LoadedSession session;
    const Outputs before = session.Play(12800, 64);
    session.app->SynchronizeToHost(30000, true, true, 64);
    Outputs after = session.Process(6400, 64);
    after[0].insert(after[0].begin(), before[0].end() - 1000, before[0].end());
    // The note that is reached has steps of its own.
    const double own = std::max(LargestStep(after[0], 1, 1000), LargestStep(after[0], 2000, 6000));
    EXPECT_LE(LargestStep(after[0], 1000, 1300), own);
}

TEST(Seam, TheEndOfTheRegionDoesNotClick) {
    LoadedSession session;
    session.app->PlaybackPanel().SetRegion(1000, 8000);
    session.app->OnPlaybackChanged();
    const Outputs heard = session.Play(9000, 64);
    EXPECT_LE(LargestStep(heard[0], 6900, 9000), LargestStep(heard[0], 3000, 6000));
    EXPECT_EQ(heard[0].back(), 0.0F);
}

} // namespace
} // namespace sonorelle::test
