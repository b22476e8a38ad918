#include "analysis/mark_records.h"
#include "analysis/pitch_marks.h"
#include "analysis/psola_analysis.h"
#include "platform/result_codes.h"
#include "support/melodies.h"
#include "support/sanitizer_share.h"
#include "support/synthetic_singer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace sonorelle {
namespace {

constexpr std::int32_t kPulsePeriod = 100; // 441 Hz at 44.1 kHz

bool SameRecord(const PitchMarkRecord& a, const PitchMarkRecord& b) {
    return a.position == b.position && a.energy == b.energy && a.transient == b.transient &&
           a.voicing == b.voicing && a.pitchChange == b.pitchChange && a.period == b.period;
}

void ExpectSame(const std::vector<PitchMarkRecord>& a, const std::vector<PitchMarkRecord>& b) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) ASSERT_TRUE(SameRecord(a[i], b[i])) << "mark " << i;
}

std::vector<float> PulsePairs(std::int32_t period, std::size_t frames) {
    std::vector<float> train(frames, 0.0F);
    for (std::size_t i = 40; i + 1 < frames; i += static_cast<std::size_t>(period)) {
        train[i] = 0.8F;
        train[i + 1] = 0.5F;
    }
    return train;
}

float MidiPitchOfPeriod(double samples) {
    return static_cast<float>(69.0 + 12.0 * std::log2(44100.0 / samples / 440.0));
}

class ReanalyseRange : public testing::TestWithParam<bool> {
protected:
    void Analyse(const std::vector<float>& samples, std::int32_t blockSize = 2048) {
        signal = samples;
        MarkFinderSettings settings;
        settings.tracking = GetParam();
        settings.blockSize = blockSize;
        ASSERT_EQ(finder.Init(settings), kOk);
        ASSERT_EQ(finder.Reset(), kOk);
        const float* const channels[] = {signal.data()};
        ASSERT_EQ(finder.Process(channels, static_cast<std::int32_t>(signal.size())), kOk);
        finder.Finish();
        before = RecordsOf(marks);
    }

    std::int32_t Reanalyse(std::int32_t markIndex, std::int32_t count, float pitch) {
        const float* const channels[] = {signal.data() + std::max(marks.GetPosition(markIndex), 0)};
        return finder.ReanalyseRange(channels, count, markIndex, pitch);
    }

    std::vector<float> signal;
    CPitchMarks marks;
    CPSOLAAnalysis finder{&marks};
    std::vector<PitchMarkRecord> before;
};

TEST_P(ReanalyseRange, ReplacesTheMarksOfTheStretchByMarksOfThePitch) {
    Analyse(PulsePairs(kPulsePeriod, 80000));
    const auto from = static_cast<std::int32_t>(before.size() / 3);
    const std::int32_t start = before[static_cast<std::size_t>(from)].position;
    constexpr std::int32_t kCount = 20000;
    ASSERT_EQ(Reanalyse(from, kCount, MidiPitchOfPeriod(kPulsePeriod)), kOk);

    const auto after = RecordsOf(marks);
    for (std::size_t i = 1; i < after.size(); ++i) ASSERT_GT(after[i].position, after[i - 1].position) << i;
    // Before the stretch nothing changes; its own first mark stays, with the way to the next as its period.
    for (std::int32_t i = 0; i < from; ++i) {
        ASSERT_TRUE(SameRecord(after[static_cast<std::size_t>(i)], before[static_cast<std::size_t>(i)]));
    }
    const auto first = static_cast<std::size_t>(from);
    EXPECT_EQ(after[first].position, start);
    EXPECT_EQ(after[first].period, static_cast<float>(after[first + 1].position - start));
    // Within it marks are voiced, one period apart.
    std::size_t i = first + 1;
    for (; after[i].voicing == 12.0F && after[i].position <= start + kCount; ++i) {
        EXPECT_EQ(after[i].position - after[i - 1].position, kPulsePeriod) << i;
        EXPECT_EQ(after[i].period, static_cast<float>(kPulsePeriod));
        EXPECT_EQ(after[i].transient, 0.0F);
        EXPECT_GT(after[i].energy, 0.0F) << "from the old mark near by";
    }
    EXPECT_NEAR(static_cast<double>(i - first), kCount / kPulsePeriod, 3.0);
    // Behind it the old ones follow to the end.
    const std::int32_t lastNew = after[i - 1].position;
    std::size_t old = before.size() - (after.size() - i);
    for (; i < after.size(); ++i, ++old) ASSERT_TRUE(SameRecord(after[i], before[old])) << i;
    EXPECT_EQ(after.back().position, 80000);
    EXPECT_GT(lastNew, start + kCount - 2 * kPulsePeriod);
}

// The first search is centred on the pitch that is told, each later one on what the one before found.
TEST_P(ReanalyseRange, TheFirstPeriodLiesWithinHalfAPeriodOfThePitchThatIsTold) {
    const auto noise = test::WhiteNoise(2.0, test::SingerSettings{}).channels[0];
    for (const int period : {80, 150, 400}) {
        for (const std::int32_t from : {3, 11, 20, 25}) {
            Analyse(noise);
            ASSERT_EQ(Reanalyse(from, 20000, MidiPitchOfPeriod(period)), kOk);
            EXPECT_EQ(marks.GetVoicing(from + 1), 12.0F);
            EXPECT_GE(marks.GetPeriod(from + 1), period / 2 - 1) << "period " << period;
            EXPECT_LE(marks.GetPeriod(from + 1), period * 3 / 2 + 1) << "period " << period;
        }
    }
}

TEST_P(ReanalyseRange, LeavesTheWalkAsItWas) {
    // Half of a melody, a reanalysis, the other half: as without the reanalysis, from there on.
    const auto melody = test::Sing(test::RandomDiatonicMelody({}, 5), test::SingerSettings{}).channels[0];
    const std::size_t half = 90000;
    const auto run = [&](bool disturbed) {
        CPitchMarks list;
        CPSOLAAnalysis walk(&list);
        MarkFinderSettings settings;
        settings.tracking = GetParam();
        EXPECT_EQ(walk.Init(settings), kOk);
        const float* const first[] = {melody.data()};
        EXPECT_EQ(walk.Process(first, static_cast<std::int32_t>(half)), kOk);
        const std::int32_t free = walk.GetFreeSpace();
        const std::int32_t last = list.GetLastPosition();
        if (disturbed) {
            const float* const stretch[] = {melody.data() + list.GetPosition(10)};
            EXPECT_EQ(walk.ReanalyseRange(stretch, 20000, 10, 60.0F), kOk);
            EXPECT_EQ(walk.GetFreeSpace(), free);
            EXPECT_EQ(list.GetLastPosition(), last);
        }
        const float* const second[] = {melody.data() + half};
        EXPECT_EQ(walk.Process(second, 60000), kOk);
        walk.Finish();
        std::vector<PitchMarkRecord> later;
        for (const auto& mark : RecordsOf(list)) {
            if (mark.position > last) later.push_back(mark);
        }
        return later;
    };
    ExpectSame(run(true), run(false));
}

TEST_P(ReanalyseRange, TheListRisesWhateverPitchIsTold) {
    const auto melody = test::Sing(test::RandomDiatonicMelody({}, 6), test::SingerSettings{}).channels[0];
    int turn = 0;
    for (const std::int32_t blockSize : {2048, 512, 64}) {
        for (const float pitch :
             {-1e30F, -100.0F, 0.0F, 21.0F, 48.3F, 60.0F, 72.7F, 108.0F, 150.0F, 300.0F, 1e30F}) {
            if (!test::InSanitizerShare(turn++, 4)) continue;
            CPitchMarks list;
            CPSOLAAnalysis walk(&list);
            MarkFinderSettings settings;
            settings.tracking = GetParam();
            settings.blockSize = blockSize;
            ASSERT_EQ(walk.Init(settings), kOk);
            const float* const all[] = {melody.data()};
            ASSERT_EQ(walk.Process(all, 60000), kOk);
            walk.Finish();
            const std::int32_t from = list.GetCount() / 4;
            const float* const stretch[] = {melody.data() + list.GetPosition(from)};
            ASSERT_EQ(walk.ReanalyseRange(stretch, 25000, from, pitch), kOk);
            for (std::int32_t i = 0; i + 1 < list.GetCount(); ++i) {
                ASSERT_GT(list.GetDistance(i), 0)
                    << "pitch " << pitch << " block " << blockSize << " mark " << i;
            }
            EXPECT_EQ(list.GetLastPosition(), 60000);
            EXPECT_EQ(list.GetPosition(0), 0);
        }
    }
}

TEST_P(ReanalyseRange, AStretchOfOneSampleOrUpToTheEndIsFine) {
    Analyse(PulsePairs(kPulsePeriod, 30000));
    ASSERT_EQ(Reanalyse(5, 1, 69.0F), kOk);
    const auto after = RecordsOf(marks);
    for (std::size_t i = 1; i < after.size(); ++i) ASSERT_GT(after[i].position, after[i - 1].position) << i;
    const std::int32_t from = marks.GetCount() / 2;
    ASSERT_EQ(Reanalyse(from, 30000 - marks.GetPosition(from), 69.0F), kOk);
    for (std::int32_t i = 0; i + 1 < marks.GetCount(); ++i) ASSERT_GT(marks.GetDistance(i), 0) << i;
    EXPECT_LE(marks.GetLastPosition(), 30000);
    EXPECT_GT(marks.GetLastPosition(), 29700);
}

TEST_P(ReanalyseRange, SilenceGetsMarksToo) {
    Analyse(std::vector<float>(40000, 0.0F));
    ASSERT_EQ(Reanalyse(2, 20000, 69.0F), kOk);
    for (std::int32_t i = 0; i + 1 < marks.GetCount(); ++i) ASSERT_GT(marks.GetDistance(i), 0) << i;
    // Half of a window of two periods; untracked, it is at least two of the smallest periods, 128, long.
    EXPECT_EQ(marks.GetDistance(3), GetParam() ? 100 : 128);
}

TEST_P(ReanalyseRange, BadArgumentsChangeNothing) {
    Analyse(PulsePairs(kPulsePeriod, 30000));
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    const float* const channels[] = {signal.data()};
    EXPECT_EQ(finder.ReanalyseRange(nullptr, 1000, 3, 69.0F), kBadArgument);
    for (const std::int32_t count : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
        EXPECT_EQ(finder.ReanalyseRange(channels, count, 3, 69.0F), kBadArgument);
    }
    for (const std::int32_t index : {-1, marks.GetCount(), std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(finder.ReanalyseRange(channels, 1000, index, 69.0F), kBadArgument);
    }
    for (const float pitch :
         {kNaN, std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(finder.ReanalyseRange(channels, 1000, 3, pitch), kBadArgument);
    }
    ExpectSame(RecordsOf(marks), before);
}

INSTANTIATE_TEST_SUITE_P(CPSOLAAnalysis, ReanalyseRange, testing::Bool(),
                         [](const auto& tested) { return tested.param ? "Tracked" : "Untracked"; });

} // namespace
} // namespace sonorelle
