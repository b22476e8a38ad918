#include "analysis/psola_analysis.h"

#include "analysis/mark_records.h"
#include "analysis/pitch_marks.h"
#include "platform/result_codes.h"
#include "support/melodies.h"
#include "support/sanitizer_share.h"
#include "support/slow_mark_finder.h"
#include "support/synthetic_singer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace sonorelle {
namespace {

using Channels = std::vector<std::vector<float>>;

constexpr float kRates[] = {8000.0F, 11025.0F, 22050.0F, 44100.0F, 48000.0F, 96000.0F, 192000.0F};
constexpr std::int32_t kBlockSizes[] = {2048, 1024, 512, 300, 64, 0, -1};

// Of what is walked slowly.
double LengthShare() { return test::UnderSanitizer() ? 0.15 : 1.0; }

// How a signal is cut into blocks: evenly, or at random with the same cuts each time.
class Cut {
public:
    explicit Cut(std::size_t evenly) : block(evenly) {}
    static Cut Ragged() { return Cut(0); }
    std::size_t Next() { return block > 0 ? block : 1 + random() % 3000; }

private:
    std::size_t block;
    std::mt19937 random{5};
};

void Feed(CPSOLAAnalysis& finder, const Channels& signal, Cut cut, std::size_t first = 0) {
    for (std::size_t at = first; at < signal[0].size();) {
        const std::size_t count = std::min(cut.Next(), signal[0].size() - at);
        std::vector<const float*> pointers;
        for (const auto& channel : signal) pointers.push_back(channel.data() + at);
        ASSERT_EQ(finder.Process(pointers.data(), static_cast<std::int32_t>(count)), kOk);
        at += count;
    }
}

std::vector<PitchMarkRecord> FindMarks(const Channels& signal, MarkFinderSettings settings, Cut cut) {
    CPitchMarks marks;
    CPSOLAAnalysis finder(&marks);
    settings.channels = static_cast<std::int32_t>(signal.size());
    EXPECT_EQ(finder.Init(settings), kOk);
    Feed(finder, signal, cut);
    EXPECT_EQ(finder.Finish(), kOk);
    return RecordsOf(marks);
}

MarkFinderSettings Settings(float rate, std::int32_t blockSize = 2048, bool tracking = true) {
    MarkFinderSettings settings;
    settings.sampleRate = rate;
    settings.blockSize = blockSize;
    settings.tracking = tracking;
    return settings;
}

double Relative(float a, float b) {
    return std::fabs(static_cast<double>(a) - static_cast<double>(b)) /
           (std::fabs(static_cast<double>(b)) + 1e-12);
}

void ExpectEqualMarks(const std::vector<PitchMarkRecord>& got, const std::vector<PitchMarkRecord>& expected,
                      const std::string& what) {
    ASSERT_EQ(got.size(), expected.size()) << what;
    for (std::size_t i = 0; i < got.size(); ++i) {
        ASSERT_EQ(got[i].position, expected[i].position) << what << ", mark " << i;
        ASSERT_EQ(got[i].period, expected[i].period) << what << ", mark " << i;
        ASSERT_EQ(got[i].voicing, expected[i].voicing) << what << ", mark " << i;
        ASSERT_EQ(got[i].pitchChange, expected[i].pitchChange) << what << ", mark " << i;
        // Sums in another order: 24 bits, some thousands of terms.
        ASSERT_LT(Relative(got[i].energy, expected[i].energy), 1e-5) << what << ", mark " << i;
        ASSERT_LT(Relative(got[i].transient, expected[i].transient), 1e-5) << what << ", mark " << i;
    }
}

void ExpectAscending(const std::vector<PitchMarkRecord>& marks) {
    ASSERT_FALSE(marks.empty());
    for (std::size_t i = 1; i < marks.size(); ++i) ASSERT_GT(marks[i].position, marks[i - 1].position) << i;
}

struct Totals {
    int marks = 0, ties = 0, snaps = 0, passedOver = 0;
};

Totals ExpectTheMarksOfTheSlowWalk(const Channels& signal, float rate, std::int32_t blockSize, bool tracking,
                                   bool ragged, const std::string& name) {
    const Cut cut = ragged ? Cut::Ragged() : Cut(1024);
    test::SlowMarkFinder slow(rate, static_cast<int>(signal.size()), blockSize, tracking);
    Cut slowCut = cut;
    for (std::size_t at = 0; at < signal[0].size();) {
        const std::size_t count = std::min(slowCut.Next(), signal[0].size() - at);
        slow.Process(signal, at, count);
        at += count;
    }
    slow.Finish();
    const auto got = FindMarks(signal, Settings(rate, blockSize, tracking), cut);
    ExpectEqualMarks(got, slow.Marks(),
                     name + " at " + std::to_string(rate) + " Hz, block " + std::to_string(blockSize) +
                         (tracking ? ", tracked" : ", untracked") + (ragged ? ", ragged" : ""));
    return {static_cast<int>(slow.Marks().size()), slow.CountOfTies(), slow.CountOfSnaps(),
            slow.CountOfPassedOver()};
}

// Every block size and cut for one rate; under a sanitizer the cuts take turns.
Totals CompareEverywhere(const Channels& signal, float rate, const std::string& name) {
    Totals totals;
    bool turn = false;
    for (const std::int32_t blockSize : kBlockSizes) {
        turn = !turn;
        for (const bool tracking : {true, false}) {
            if (tracking && blockSize <= 0) continue;
            for (const bool ragged : {false, true}) {
                if (test::UnderSanitizer() && ragged != (tracking == turn)) continue;
                const Totals one =
                    ExpectTheMarksOfTheSlowWalk(signal, rate, blockSize, tracking, ragged, name);
                totals.marks += one.marks;
                totals.ties += one.ties;
                totals.snaps += one.snaps;
                totals.passedOver += one.passedOver;
            }
        }
    }
    return totals;
}

test::SingerSettings SingerAt(float rate, int channels = 1) {
    test::SingerSettings settings;
    settings.sampleRate = static_cast<double>(rate);
    settings.channels = channels;
    settings.leadInSeconds = 0.1;
    settings.leadOutSeconds = 0.1;
    return settings;
}

Channels SungMelody(float rate, int channels, double seconds, std::uint64_t melody) {
    auto settings = SingerAt(rate, channels);
    settings.balance = channels > 1 ? 0.4 : 0.0;
    settings.seed = melody;
    test::MelodyWish wish;
    wish.key = static_cast<int>(melody * 7 % 24);
    wish.lowestMidiPitch = melody % 2 == 0 ? 62 : 45;
    wish.phrases = 1;
    Channels signal = test::Sing(test::RandomDiatonicMelody(wish, melody), settings).channels;
    for (auto& channel : signal) {
        channel.resize(
            std::min(channel.size(), static_cast<std::size_t>(seconds * static_cast<double>(rate))));
    }
    return signal;
}

TEST(CPSOLAAnalysis, MarksOfSingingAreThoseOfTheSlowWalk) {
    Totals totals;
    int turn = 0; // under a sanitizer each rate with one or two channels
    for (const float rate : kRates) {
        ++turn;
        const double seconds = (rate > 50000.0F ? 0.8 : 2.0) * LengthShare();
        for (const int channels : {1, 2}) {
            if (!test::InSanitizerShare(turn + channels, 2)) continue;
            const auto melody = static_cast<std::uint64_t>(channels + 2);
            const Totals one =
                CompareEverywhere(SungMelody(rate, channels, seconds, melody), rate, "singing");
            totals.marks += one.marks;
            totals.ties += one.ties;
            totals.snaps += one.snaps;
            totals.passedOver += one.passedOver;
        }
    }
    EXPECT_GT(totals.marks, test::SanitizerShare(20000, 40));
    EXPECT_GT(totals.snaps, test::SanitizerShare(500, 40)) << "marks moved by the waveform were among them";
    EXPECT_GT(totals.passedOver, test::SanitizerShare(500, 40)) << "so were periods too short for a mark";
    EXPECT_LT(totals.ties * 200, totals.marks) << "few searches are a matter of rounding";
}

TEST(CPSOLAAnalysis, MarksOfNoiseAreThoseOfTheSlowWalk) {
    for (const float rate : kRates) {
        CompareEverywhere(
            test::WhiteNoise((rate > 50000.0F ? 0.3 : 0.8) * LengthShare(), SingerAt(rate)).channels, rate,
            "noise");
    }
}

TEST(CPSOLAAnalysis, MarksOfSilenceAreThoseOfTheSlowWalk) {
    for (const float rate : kRates) {
        const double samples = static_cast<double>(rate) * 0.5 * LengthShare();
        CompareEverywhere({std::vector<float>(static_cast<std::size_t>(samples), 0.0F)}, rate, "silence");
    }
}

TEST(CPSOLAAnalysis, MarksOfClicksAreThoseOfTheSlowWalk) {
    for (const float rate : kRates) {
        std::vector<float> clicks(static_cast<std::size_t>(static_cast<double>(rate) * 0.6 * LengthShare()),
                                  0.0F);
        for (std::size_t i = 0; i < clicks.size(); i += 1741) clicks[i] = i % 2 == 0 ? 1.0F : -0.8F;
        CompareEverywhere({clicks}, rate, "clicks");
    }
}

// Constant magnitude: where the end of what is there cuts a stretch short, many lags correlate alike.
TEST(CPSOLAAnalysis, MarksOfASquareWaveAtNyquistAndOfDcAreThoseOfTheSlowWalk) {
    for (const float rate : kRates) {
        std::vector<float> nyquist(static_cast<std::size_t>(static_cast<double>(rate) * 0.6 * LengthShare())),
            constant(nyquist.size(), 0.5F);
        for (std::size_t i = 0; i < nyquist.size(); ++i) nyquist[i] = i % 2 == 0 ? 1.0F : -1.0F;
        CompareEverywhere({nyquist}, rate, "square wave");
        CompareEverywhere({constant}, rate, "DC");
    }
}

TEST(CPSOLAAnalysis, MarksAfterAResetAreThoseOfTheSlowWalkAfterAReset) {
    for (const std::int32_t blockSize : {2048, 512, 0, -1}) {
        for (const bool tracking : {true, false}) {
            if (tracking && blockSize <= 0) continue;
            const Channels first = SungMelody(44100.0F, 1, 0.7, 3);
            const Channels second = SungMelody(44100.0F, 1, 1.2, 4);
            test::SlowMarkFinder slow(44100.0F, 1, blockSize, tracking);
            slow.Process(first, 0, first[0].size());
            slow.Reset();
            for (std::size_t at = 0; at < second[0].size(); at += 1024) {
                slow.Process(second, at, std::min<std::size_t>(1024, second[0].size() - at));
            }
            slow.Finish();

            CPitchMarks marks;
            CPSOLAAnalysis finder(&marks);
            ASSERT_EQ(finder.Init(Settings(44100.0F, blockSize, tracking)), kOk);
            Feed(finder, first, Cut(first[0].size()));
            ASSERT_GT(marks.GetCount(), 1);
            ASSERT_EQ(finder.Reset(), kOk);
            ASSERT_EQ(marks.GetCount(), 1);
            EXPECT_EQ(marks.GetPosition(0), 0);
            Feed(finder, second, Cut(1024));
            finder.Finish();
            ExpectEqualMarks(RecordsOf(marks), slow.Marks(), "reset, block " + std::to_string(blockSize));
        }
    }
}

TEST(CPSOLAAnalysis, TheFirstMarkIsAtZeroTheLastAtTheEndAndNeitherHasAPeriod) {
    for (const float rate : {8000.0F, 44100.0F, 96000.0F}) {
        for (const std::size_t frames : {1U, 31U, 1023U, 1024U, 1025U, 4095U, 4096U, 4097U, 20000U, 70001U}) {
            for (const auto& signal :
                 {std::vector<float>(frames, 0.0F), std::vector<float>(frames, 0.25F),
                  test::WhiteNoise(static_cast<double>(frames + 2) / static_cast<double>(rate),
                                   SingerAt(rate))
                      .channels[0]}) {
                const std::vector<float> cut(signal.begin(),
                                             signal.begin() + static_cast<std::ptrdiff_t>(frames));
                const auto marks = FindMarks({cut}, Settings(rate), Cut(1024));
                ASSERT_GE(marks.size(), 2U);
                EXPECT_EQ(marks.front().position, 0);
                EXPECT_EQ(marks.front().period, 0.0F);
                EXPECT_EQ(marks.back().position, static_cast<std::int32_t>(frames));
                EXPECT_EQ(marks.back().voicing, 0.0F);
                EXPECT_EQ(marks.back().period, 0.0F);
                EXPECT_EQ(marks.back().energy, 0.0F);
                ExpectAscending(marks);
            }
        }
    }
}

TEST(CPSOLAAnalysis, WithoutAnySampleOneMarkIsLeft) {
    CPitchMarks marks;
    CPSOLAAnalysis finder(&marks);
    ASSERT_EQ(finder.Init(Settings(44100.0F)), kOk);
    EXPECT_EQ(finder.Finish(), kOk);
    ASSERT_EQ(marks.GetCount(), 1);
    EXPECT_EQ(marks.GetPosition(0), 0);
}

// Rising tenfold from period to period, every mark would be a transient.
TEST(CPSOLAAnalysis, AfterATransientTheTwoNextMarksAreNone) {
    std::mt19937 random(6);
    std::uniform_real_distribution<float> sample(-1.0F, 1.0F);
    for (const bool tracking : {true, false}) {
        std::vector<float> rising(9 * 441);
        for (std::size_t i = 0; i < rising.size(); ++i) {
            rising[i] = sample(random) * 0.005F * std::pow(10.0F, static_cast<float>(i) / 441.0F);
        }
        rising.resize(rising.size() + 8192, 0.0F); // silence behind lets the walk come through before it ends
        const auto marks =
            FindMarks({rising}, Settings(44100.0F, tracking ? 2048 : 512, tracking), Cut(1024));
        int transients = 0;
        for (std::size_t i = 0; i < marks.size(); ++i) {
            if (marks[i].transient <= 0.7F) continue;
            ++transients;
            EXPECT_LT(marks[i].transient, 1.0001F);
            ASSERT_LT(i + 2, marks.size());
            EXPECT_EQ(marks[i + 1].transient, 0.0F) << "mark " << i;
            EXPECT_EQ(marks[i + 2].transient, 0.0F) << "mark " << i;
        }
        EXPECT_GE(transients, 2) << (tracking ? "tracked" : "untracked");
    }
}

TEST(CPSOLAAnalysis, AnOnsetIsATransientAndASteadyToneIsNone) {
    constexpr std::int32_t kOnset = 30000;
    std::vector<float> tone(70000);
    for (std::size_t i = 0; i < tone.size(); ++i) {
        const double loudness = i < kOnset ? 0.003 : 0.5;
        tone[i] = static_cast<float>(
            loudness * std::sin(2.0 * std::numbers::pi * 440.0 * static_cast<double>(i) / 44100.0));
    }
    float atOnset = 0.0F, elsewhere = 0.0F;
    for (const auto& mark : FindMarks({tone}, Settings(44100.0F), Cut(1024))) {
        float& peak = std::abs(mark.position - kOnset) < 300 ? atOnset : elsewhere;
        if (mark.position > 5000) peak = std::max(peak, mark.transient);
    }
    EXPECT_GT(atOnset, 0.95F);
    EXPECT_LT(elsewhere, 0.05F);
}

// The lowest pitch that the tracker gives is far below what small blocks hold.
TEST(CPSOLAAnalysis, AnExpectationAboveTwoBlocksIsHeldThere) {
    constexpr std::int32_t kBlock = 128;
    const auto low = test::SteadyTone(75.0, 1.0, SingerAt(44100.0F)).channels; // 588 samples
    for (const auto& mark : FindMarks(low, Settings(44100.0F, kBlock), Cut(512)))
        EXPECT_LE(mark.period, 2.0F * kBlock);
    // In silence behind it the mark falls half a window on: the window is 2 blocks long, and no longer.
    Channels silence = low;
    silence[0].resize(silence[0].size() + 44100, 0.0F);
    const auto marks = FindMarks(silence, Settings(44100.0F, kBlock), Cut(512));
    EXPECT_EQ(marks[marks.size() - 5].period, static_cast<float>(kBlock));
}

// A square wave has no sample stronger than another. While the pitch rises, the tracker's word is late and
// the period it tells too long: the lag is positive, and the quirk lengthens the step by 2 samples.
TEST(CPSOLAAnalysis, WithoutAStrongerSampleALagOf5OrMoreLengthensTheStepByTwo) {
    const auto square = [](double fromHertz, double toHertz) {
        std::vector<float> samples(3 * 44100);
        double phase = 0.0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double part = static_cast<double>(i) / static_cast<double>(samples.size());
            phase += fromHertz * std::pow(toHertz / fromHertz, part) / 44100.0;
            samples[i] = phase - std::floor(phase) < 0.5 ? 0.5F : -0.5F;
        }
        return samples;
    };
    int longer = 0, shorter = 0, others = 0;
    for (const bool rising : {true, false}) {
        const auto marks =
            FindMarks({rising ? square(90, 200) : square(200, 90)}, Settings(44100.0F), Cut(1024));
        int same = 0;
        for (std::size_t i = 1; i + 1 < marks.size(); ++i) {
            if (marks[i].voicing == 0.0F) continue;
            const int step = marks[i].position - marks[i - 1].position;
            const int by = step - static_cast<int>(marks[i].period);
            ASSERT_LE(std::abs(by), 4) << "mark " << i;
            (by == 2 ? (rising ? longer : others) : by == -2 ? (rising ? others : shorter) : same) += 1;
        }
    }
    EXPECT_GT(longer, 100);
    EXPECT_GT(shorter, 100);
    EXPECT_LT(others, 40);
}

TEST(CPSOLAAnalysis, MarksCloserThanAQuarterOfTheSmallestPeriodAreNotStored) {
    const auto signal = SungMelody(48000.0F, 1, 2.0, 3);
    CPitchMarks marks;
    CPSOLAAnalysis finder(&marks);
    ASSERT_EQ(finder.Init(Settings(48000.0F, 64)), kOk);
    Feed(finder, signal, Cut(1024));
    EXPECT_GT(finder.GetPeriodsTried(), marks.GetCount() + 50) << "some were passed over";
    for (std::int32_t i = 0; i + 1 < marks.GetCount(); ++i) ASSERT_GE(marks.GetDistance(i), 32 / 4) << i;
}

TEST(CPSOLAAnalysis, WithoutTrackingATooShortStepRepeatsTheOneBefore) {
    // Blocks of 64 at 44.1 kHz: half of one is just a quarter of the smallest period, 128.
    const auto marks = FindMarks(test::WhiteNoise(1.0, SingerAt(44100.0F)).channels,
                                 Settings(44100.0F, 64, false), Cut(1024));
    ASSERT_GT(marks.size(), 300U);
    for (std::size_t i = 1; i + 1 < marks.size(); ++i)
        ASSERT_GE(marks[i].position - marks[i - 1].position, 32);
}

TEST(CPSOLAAnalysis, SilenceGetsMarksHalfAWindowApart) {
    const Channels silence = {std::vector<float>(50000, 0.0F)};
    for (const std::int32_t blockSize : {2048, 512}) {
        const auto marks = FindMarks(silence, Settings(44100.0F, blockSize, false), Cut(1024));
        for (std::size_t i = 1; i + 2 < marks.size(); ++i) {
            ASSERT_EQ(marks[i].position, static_cast<std::int32_t>(i) * blockSize / 2);
            ASSERT_EQ(marks[i].period, static_cast<float>(blockSize / 2));
            ASSERT_EQ(marks[i].voicing, 0.0F) << "too soft to count as voiced";
            ASSERT_EQ(marks[i].energy, 0.0F);
        }
    }
}

TEST(CPSOLAAnalysis, WithoutTrackingWhatIsLoudCountsAsVoiced) {
    for (const auto& [peak, voicing] : {std::pair{0.5F, 12.0F}, {0.015F, 0.0F}}) {
        const auto marks =
            FindMarks({std::vector<float>(20000, peak)}, Settings(44100.0F, 1024, false), Cut(1024));
        EXPECT_EQ(marks[marks.size() / 2].voicing, voicing) << peak;
    }
}

// One row of sizes for each range of rates, with both of its ends.
TEST(CPSOLAAnalysis, SizesFollowTheSampleRate) {
    struct Row {
        float lowest, highest;
        std::int32_t factor, tailAdvance, minPeriodTracked, bufferSize, shortBlock;
    };
    constexpr Row kRows[] = {{11025.0F, 31999.0F, 1, 512, 16, 16384, 256},
                             {32000.0F, 63999.0F, 1, 1024, 32, 32768, 512},
                             {64000.0F, 127999.0F, 2, 2048, 64, 65536, 1024},
                             {128000.0F, 255999.0F, 4, 4096, 128, 131072, 2048},
                             {256000.0F, 768000.0F, 8, 8192, 256, 262144, 4096}};
    for (const Row& row : kRows) {
        for (const float rate : {row.lowest, row.highest}) {
            SCOPED_TRACE(rate);
            const Channels silence = {std::vector<float>(static_cast<std::size_t>(row.bufferSize) - 1, 0.0F)};
            // Where the first mark falls, when there are just two blocks of silence.
            const auto firstMark = [&](std::int32_t blockSize, bool tracking, std::int32_t* tail) {
                CPitchMarks marks;
                CPSOLAAnalysis finder(&marks);
                EXPECT_EQ(finder.Init(Settings(rate, blockSize, tracking)), kOk);
                EXPECT_EQ(finder.IsTracking(), tracking);
                EXPECT_EQ(finder.GetFreeSpace(), row.bufferSize);
                finder.AddTailMark();
                *tail = marks.GetLastPosition();
                finder.Reset();
                Feed(finder, silence, Cut(64));
                return marks.GetPosition(1);
            };
            std::int32_t tail = 0;
            // The tracker has not heard enough yet: the shortest window, two smallest periods long.
            EXPECT_EQ(firstMark(512, true, &tail), row.minPeriodTracked);
            EXPECT_EQ(tail, row.tailAdvance);
            EXPECT_EQ(firstMark(2048, false, &tail), 2048 * row.factor / 2);
            EXPECT_EQ(tail, row.tailAdvance);
            EXPECT_EQ(firstMark(512, false, &tail), 512 * row.factor / 2);
            EXPECT_EQ(firstMark(0, false, &tail), row.shortBlock / 2);
            EXPECT_EQ(tail, row.tailAdvance);
            EXPECT_EQ(firstMark(-1, false, &tail), row.shortBlock / 2);
            EXPECT_EQ(tail, row.shortBlock / 2);
        }
    }
}

TEST(CPSOLAAnalysis, TheSpecialBlockSizesSwitchTrackingOff) {
    for (const std::int32_t blockSize : {0, -1}) {
        CPitchMarks marks;
        CPSOLAAnalysis finder(&marks);
        ASSERT_EQ(finder.Init(Settings(44100.0F, blockSize, true)), kOk);
        EXPECT_FALSE(finder.IsTracking());
    }
}

TEST(CPSOLAAnalysis, WithoutATrackerTheCorrelationGoesOnAlone) {
    CPitchMarks marks;
    CPSOLAAnalysis finder(&marks);
    ASSERT_EQ(finder.Init(Settings(8000.0F)), kOk);
    EXPECT_FALSE(finder.IsTracking());
    EXPECT_EQ(finder.GetVoicingThreshold(), 0.0F);
    finder.SetVoicingThreshold(7.0F);
    EXPECT_EQ(finder.GetVoicingThreshold(), 0.0F);
    const auto tone = test::SteadyTone(200.0, 1.0, SingerAt(8000.0F)).channels; // 40 samples
    Feed(finder, tone, Cut(1024));
    finder.Finish();
    ExpectAscending(RecordsOf(marks));
    EXPECT_EQ(marks.GetLastPosition(), static_cast<std::int32_t>(tone[0].size()));
}

TEST(CPSOLAAnalysis, TheVoicingThresholdReachesTheTracker) {
    const auto tone = test::SteadyTone(300.0, 0.5, SingerAt(44100.0F)).channels;
    CPitchMarks marks;
    CPSOLAAnalysis finder(&marks);
    ASSERT_EQ(finder.Init(Settings(44100.0F)), kOk);
    EXPECT_EQ(finder.GetVoicingThreshold(), 5.0F);
    finder.SetVoicingThreshold(90.0F);
    Feed(finder, tone, Cut(1024));
    for (std::int32_t i = 0; i < marks.GetCount(); ++i) {
        // Room noise may pass for a low pitch, which has a limit of its own.
        if (marks.GetDistance(i) < 200) {
            ASSERT_EQ(marks.GetVoicing(i), 0.0F) << i;
        }
    }
}

std::vector<float> PulseTrain(float rate, int period) {
    std::vector<float> train(static_cast<std::size_t>(rate) * 2, 0.0F);
    for (std::size_t i = 40; i + 2 < train.size(); i += static_cast<std::size_t>(period)) {
        train[i] = 0.5F;
        train[i + 1] = 0.9F;
        train[i + 2] = 0.3F;
    }
    return train;
}

// Periods up to four smallest ones are not drawn to the waveform: marks stand exactly one period apart.
TEST(CPSOLAAnalysis, MarksOfASteadyPulseTrainStandExactlyOnePeriodApart) {
    for (const auto& [rate, period] : {std::pair{44100.0F, 60},
                                       {44100.0F, 100},
                                       {44100.0F, 128},
                                       {22050.0F, 63},
                                       {48000.0F, 120},
                                       {96000.0F, 240},
                                       {192000.0F, 500},
                                       {11025.0F, 50}}) {
        SCOPED_TRACE(period);
        const auto marks = FindMarks({PulseTrain(rate, period)}, Settings(rate), Cut(1024));
        std::size_t exact = 0, all = 0;
        for (std::size_t i = 1; i + 1 < marks.size(); ++i) {
            const auto position = static_cast<double>(marks[i].position);
            if (position < 0.3 * static_cast<double>(rate) || position > 1.8 * static_cast<double>(rate))
                continue;
            ++all;
            exact += marks[i].position - marks[i - 1].position == period &&
                     marks[i].period == static_cast<float>(period);
            EXPECT_GT(marks[i].voicing, 0.0F);
        }
        EXPECT_NEAR(static_cast<double>(all), 1.5 * static_cast<double>(rate) / period, 2.0);
        EXPECT_EQ(exact, all);
    }
}

// Longer ones are: whatever the walk began with, the marks come to lie on the pulses. The correlation's own
// period is exact; the place is off by a sample where the tracker's word, cut to whole samples, is one short.
TEST(CPSOLAAnalysis, MarksOfALowPulseTrainSettleOnThePulses) {
    for (const auto& [rate, period] : {std::pair{44100.0F, 147},
                                       {44100.0F, 300},
                                       {44100.0F, 441},
                                       {22050.0F, 90},
                                       {192000.0F, 600},
                                       {11025.0F, 120}}) {
        SCOPED_TRACE(period);
        const auto marks = FindMarks({PulseTrain(rate, period)}, Settings(rate), Cut(1024));
        int on = 0, exact = 0, all = 0;
        for (const auto& mark : marks) {
            const auto position = static_cast<double>(mark.position);
            if (position < static_cast<double>(rate) || position > 1.8 * static_cast<double>(rate)) continue;
            ++all;
            exact += mark.period == static_cast<float>(period);
            on += std::abs((mark.position - 41 + period / 2) % period - period / 2) <= 2;
        }
        EXPECT_NEAR(all, 0.8 * static_cast<double>(rate) / period, 2.0);
        EXPECT_GE(on * 100, all * 99);
        EXPECT_GE(exact * 100, all * 99);
    }
}

TEST(CPSOLAAnalysis, ASteadyVowelHasOneMarkAPeriod) {
    for (const double hertz : {110.0, 220.0, 440.0, 880.0}) {
        const auto recording = test::SteadyTone(hertz, 2.0, SingerAt(44100.0F));
        const auto marks = FindMarks(recording.channels, Settings(44100.0F), Cut(1024));
        // Between pulses well inside the tone lies one mark each.
        std::size_t good = 0, all = 0, next = 0;
        const auto& pulses = recording.pulseFrames;
        for (std::size_t i = pulses.size() / 6; i + pulses.size() / 12 < pulses.size(); ++i) {
            // Half a jitter of play: marks lie anywhere in the period, and may straddle a pulse.
            int within = 0;
            while (next < marks.size() && marks[next].position < pulses[i]) ++next;
            while (next < marks.size() && marks[next].position < pulses[i + 1]) ++next, ++within;
            good += within == 1;
            ++all;
        }
        EXPECT_GE(static_cast<double>(good), 0.97 * static_cast<double>(all)) << hertz;
    }
}

TEST(CPSOLAAnalysis, StereoIsTheSumOfItsChannels) {
    const Channels stereo = SungMelody(44100.0F, 2, 1.0, 3);
    Channels sum = {stereo[0]};
    for (std::size_t i = 0; i < sum[0].size(); ++i) sum[0][i] += stereo[1][i];
    const auto ofBoth = FindMarks(stereo, Settings(44100.0F), Cut(1024));
    const auto ofSum = FindMarks(sum, Settings(44100.0F), Cut(1024));
    ExpectEqualMarks(ofBoth, ofSum, "stereo");
}

TEST(CPSOLAAnalysis, TakesMoreThanItsBufferHoldsInOneCall) {
    const Channels signal = SungMelody(44100.0F, 1, 5.0, 4);
    ASSERT_GT(signal[0].size(), 100000U);
    const auto marks = FindMarks(signal, Settings(44100.0F), Cut(signal[0].size()));
    ExpectAscending(marks);
    EXPECT_EQ(marks.back().position, static_cast<std::int32_t>(signal[0].size()));
    EXPECT_GT(marks.size(), 300U);
}

TEST(CPSOLAAnalysis, ABufferThatIsAskedForIsAtLeastWhatTheWalkNeeds) {
    for (const auto& [asked, got] : {std::pair{0, 32768}, {100000, 100000}, {1, 8192}, {8192, 8192}}) {
        CPitchMarks marks;
        CPSOLAAnalysis finder(&marks);
        auto settings = Settings(44100.0F);
        settings.bufferSize = asked;
        ASSERT_EQ(finder.Init(settings), kOk);
        EXPECT_EQ(finder.GetFreeSpace(), got);
        const Channels signal = SungMelody(44100.0F, 1, 1.0, 4);
        Feed(finder, signal, Cut::Ragged());
        EXPECT_LE(finder.GetFreeSpace(), got);
        EXPECT_GT(finder.GetFreeSpace(), got - 4096);
        finder.Finish();
        ExpectAscending(RecordsOf(marks));
    }
}

TEST(CPSOLAAnalysis, AddTailMarkGoesOnFromTheLastOne) {
    CPitchMarks marks;
    CPSOLAAnalysis finder(&marks);
    ASSERT_EQ(finder.Init(Settings(44100.0F, 2048, false)), kOk);
    Feed(finder, {std::vector<float>(10240, 0.0F)}, Cut(1024));
    const std::int32_t last = marks.GetLastPosition();
    const std::int32_t count = marks.GetCount();
    EXPECT_EQ(finder.AddTailMark(), kOk);
    EXPECT_EQ(finder.AddTailMark(), kOk);
    ASSERT_EQ(marks.GetCount(), count + 2);
    EXPECT_EQ(marks.GetPosition(count), last + 1024);
    EXPECT_EQ(marks.GetPosition(count + 1), last + 2048);
    EXPECT_EQ(marks.GetPeriod(count), 0);
    EXPECT_EQ(marks.GetVoicing(count), 0.0F);
}

TEST(CPSOLAAnalysis, ConstructionAddsTheFirstMarkToAnEmptyListOnly) {
    CPitchMarks marks;
    marks.Add(0, 1, 2, 3, 4);
    marks.Add(77, 5, 6, 7, 8);
    CPSOLAAnalysis finder(&marks);
    ASSERT_EQ(finder.Init(Settings(44100.0F)), kOk);
    EXPECT_EQ(marks.GetCount(), 2);
    EXPECT_EQ(marks.GetPosition(1), 77);
}

TEST(CPSOLAAnalysis, ProcessWithoutChannelsOrFramesTakesNothing) {
    CPitchMarks marks;
    CPSOLAAnalysis finder(&marks);
    ASSERT_EQ(finder.Init(Settings(44100.0F)), kOk);
    const std::int32_t free = finder.GetFreeSpace();
    const std::vector<float> samples(16, 0.5F);
    const float* const channel[] = {samples.data()};
    EXPECT_EQ(finder.Process(nullptr, 1000), kOk);
    EXPECT_EQ(finder.Process(channel, 0), kOk);
    EXPECT_EQ(finder.Process(channel, -1), kBadArgument);
    EXPECT_EQ(finder.Process(nullptr, std::numeric_limits<std::int32_t>::min()), kBadArgument);
    EXPECT_EQ(finder.GetFreeSpace(), free);
    EXPECT_EQ(finder.Process(channel, 16), kOk);
    EXPECT_EQ(finder.GetFreeSpace(), free - 16);
    EXPECT_EQ(marks.GetCount(), 1);
}

TEST(CPSOLAAnalysis, HostileSamplesLeaveARisingListThatEnds) {
    std::mt19937 random(9);
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const float values[] = {
        std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity, 3e38F, -3e38F, 1e-44F, 0.0F, 1.0F};
    for (const bool tracking : {true, false}) {
        for (const std::int32_t blockSize : {2048, 64}) {
            std::vector<float> hostile(60000);
            for (float& value : hostile) value = values[random() % 8];
            const auto marks = FindMarks({hostile}, Settings(44100.0F, blockSize, tracking), Cut::Ragged());
            ExpectAscending(marks);
            EXPECT_EQ(marks.back().position, 60000);
        }
    }
}

TEST(CPSOLAAnalysis, RefusesSettingsThatMakeNoSense) {
    CPitchMarks marks;
    const auto init = [&marks](auto change) {
        MarkFinderSettings settings;
        change(settings);
        CPSOLAAnalysis finder(&marks);
        return finder.Init(settings);
    };
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    for (const float rate : {0.0F, -44100.0F, 0.5F, 2e6F, kNaN, std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(init([rate](MarkFinderSettings& s) { s.sampleRate = rate; }), kBadArgument) << rate;
    }
    for (const std::int32_t blockSize : {-2, -2048, 1, 63, 65537, std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(init([blockSize](MarkFinderSettings& s) { s.blockSize = blockSize; }), kBadArgument)
            << blockSize;
    }
    EXPECT_EQ(init([](MarkFinderSettings& s) { s.channels = 0; }), kBadArgument);
    EXPECT_EQ(init([](MarkFinderSettings& s) { s.bufferSize = -1; }), kBadArgument);
    EXPECT_EQ(marks.GetCount(), 0);
    CPSOLAAnalysis without(nullptr);
    EXPECT_EQ(without.Init(MarkFinderSettings{}), kBadArgument);
    EXPECT_EQ(init([](MarkFinderSettings&) {}), kOk);
    EXPECT_EQ(marks.GetCount(), 1);
}

TEST(CPSOLAAnalysis, TheSystemsMarkFinderIsThisOne) {
    const Channels signal = SungMelody(44100.0F, 1, 1.0, 4);
    CPitchMarks marks;
    CCANTOREExtendedAnalysis finder(&marks);
    ASSERT_EQ(finder.Init(Settings(44100.0F)), kOk);
    Feed(finder, signal, Cut(1024));
    finder.Finish();
    ExpectEqualMarks(RecordsOf(marks), FindMarks(signal, Settings(44100.0F), Cut(1024)), "extended");
}

} // namespace
} // namespace sonorelle
