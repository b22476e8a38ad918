#include "analysis/melody_analyzer.h"

#include "analysis/pitch_marks.h"
#include "platform/result_codes.h"
#include "support/allocation_trap.h"
#include "support/analysis_results.h"
#include "support/memory_audio_file.h"
#include "support/synthetic_singer.h"
#include "support/temporary_folder.h"
#include "support/wav_writer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace sonorelle::test {

namespace {

using testing::ElementsAre;

constexpr float kRate = 44100.0F;
constexpr int kBlock = CMelodyAnalyzer::kBlockLength;

MemoryAudioFile Constant(std::size_t frames, std::vector<float> channelValues) {
    std::vector<std::vector<float>> channels;
    for (const float value : channelValues) channels.emplace_back(frames, value);
    return {std::move(channels), kRate};
}

MemoryAudioFile Silent(std::size_t frames) { return Constant(frames, {0.0F}); }

Recording ThreeNotes() {
    SingerSettings settings;
    settings.channels = 2;
    settings.balance = 0.3;
    std::vector<MelodyNote> melody(3);
    melody[0].midiPitch = 57.25;
    melody[1].midiPitch = 61.25;
    melody[2].midiPitch = 54.25;
    for (MelodyNote& note : melody) note.consonant = Consonant::kPlosive;
    return Sing(melody, settings);
}

std::vector<std::int32_t> RunToEnd(CMelodyAnalyzer& analyzer) {
    std::vector<std::int32_t> results;
    do results.push_back(analyzer.RunStep());
    while (results.back() != CMelodyAnalyzer::kComplete && results.size() < 100'000);
    return results;
}

std::vector<std::int32_t> ExpectedResults(int readsInEachPass) {
    std::vector<std::int32_t> results(static_cast<std::size_t>(2 * readsInEachPass),
                                      CMelodyAnalyzer::kReadAudio);
    results.insert(results.end(), 9, CMelodyAnalyzer::kRanStage);
    results.push_back(CMelodyAnalyzer::kComplete);
    return results;
}

} // namespace

TEST(CMelodyAnalyzer, AttachesNothingButAnOpenFile) {
    CMelodyAnalyzer analyzer;
    EXPECT_EQ(analyzer.Attach(nullptr), kCannotOpen);
    MemoryAudioFile closed = Silent(10);
    closed.open = false;
    EXPECT_EQ(analyzer.Attach(&closed), kCannotOpen);
    CkvoAudioFile* file = &closed;
    EXPECT_EQ(analyzer.GetAudioFile(file), kCannotOpen);
    EXPECT_EQ(file, &closed) << "outputs stay untouched on failure";
    EXPECT_EQ(analyzer.GetCachePath(), "");
}

TEST(CMelodyAnalyzer, AttachRewindsTheFileAndNamesItsCache) {
    MemoryAudioFile audio({{0.0F, 0.0F}}, kRate, "/some folder/song.tar.wav");
    audio.Seek(1);
    audio.seeks.clear();
    CMelodyAnalyzer analyzer;
    EXPECT_EQ(analyzer.Attach(&audio), kOk);
    EXPECT_THAT(audio.seeks, ElementsAre(0));
    EXPECT_EQ(analyzer.GetCachePath(), "/some folder/song.tar.wav.kva");
    CkvoAudioFile* file = nullptr;
    EXPECT_EQ(analyzer.GetAudioFile(file), kOk);
    EXPECT_EQ(file, &audio);
    EXPECT_EQ(analyzer.GetSampleRate(), kRate);
}

TEST(CMelodyAnalyzer, AttachAgainForgetsThatThereWereResults) {
    MemoryAudioFile audio = Silent(2000);
    CMelodyAnalyzer analyzer;
    analyzer.Attach(&audio);
    RunToEnd(analyzer);
    EXPECT_TRUE(analyzer.IsAnalysed());
    analyzer.Attach(&audio);
    EXPECT_FALSE(analyzer.IsAnalysed());
}

TEST(CMelodyAnalyzer, ReadsTheFileTwiceAndThenRunsNineStages) {
    MemoryAudioFile audio = Silent(3 * kBlock + 100);
    CMelodyAnalyzer analyzer;
    ASSERT_EQ(analyzer.Attach(&audio), kOk);
    audio.seeks.clear();
    EXPECT_EQ(RunToEnd(analyzer), ExpectedResults(4));
    EXPECT_THAT(audio.seeks, ElementsAre(0, 0)) << "before the first pass and before the second";

    std::vector<std::int32_t> reads = {kBlock, kBlock, kBlock, 100, kBlock, kBlock, kBlock, 100};
    reads.insert(reads.end(), 10, 0); // every step reads, the nine stages and the last one in vain
    EXPECT_EQ(audio.reads, reads);
}

// Steps run on a thread of their own, which an exception would take down with the whole program.
TEST(CMelodyAnalyzer, WithoutMemoryTheFirstStepEndsTheAnalysisAndALaterOneBeginsIt) {
    MemoryAudioFile audio = Constant(100, {0.5F, 0.25F});
    audio.seeks.reserve(1000);
    audio.reads.reserve(1000);
    CMelodyAnalyzer analyzer;
    ASSERT_EQ(analyzer.Attach(&audio), kOk);
    std::int32_t failures = 0;
    for (std::int32_t result = CMelodyAnalyzer::kComplete; result == CMelodyAnalyzer::kComplete; ++failures) {
        ASSERT_LT(failures, 900);
        const AllocationLimit limit(failures);
        ASSERT_NO_THROW(result = analyzer.RunStep()) << "after " << failures << " allocations";
        EXPECT_FALSE(analyzer.IsAnalysed());
    }
    EXPECT_GT(failures, 5);
    std::vector<std::int32_t> rest = ExpectedResults(1);
    rest.erase(rest.begin());
    EXPECT_EQ(RunToEnd(analyzer), rest);
}

TEST(CMelodyAnalyzer, FileOfWholeBlocksTakesOneMoreReadInEachPass) {
    for (const int k : {1, 2, 7}) {
        SCOPED_TRACE(k);
        MemoryAudioFile audio = Silent(static_cast<std::size_t>(k * kBlock));
        CMelodyAnalyzer analyzer;
        ASSERT_EQ(analyzer.Attach(&audio), kOk);
        EXPECT_EQ(RunToEnd(analyzer), ExpectedResults(k + 1));
        std::vector<std::int32_t> pass(static_cast<std::size_t>(k), kBlock);
        pass.push_back(0);
        ASSERT_GE(audio.reads.size(), 2 * pass.size());
        EXPECT_TRUE(std::equal(pass.begin(), pass.end(), audio.reads.begin()));
        EXPECT_TRUE(std::equal(pass.begin(), pass.end(), audio.reads.begin() + k + 1));
        EXPECT_TRUE(std::all_of(audio.reads.begin() + 2 * (k + 1), audio.reads.end(),
                                [](std::int32_t frames) { return frames == 0; }));
    }
}

TEST(CMelodyAnalyzer, FileShorterThanABlockTakesOneReadInEachPass) {
    for (const std::size_t frames : {0U, 1U, 1023U}) {
        MemoryAudioFile audio = Silent(frames);
        CMelodyAnalyzer analyzer;
        ASSERT_EQ(analyzer.Attach(&audio), kOk);
        EXPECT_EQ(RunToEnd(analyzer), ExpectedResults(1)) << frames;
    }
}

TEST(CMelodyAnalyzer, StepDoesNothingWithoutAnOpenFileOrAfterTheEnd) {
    CMelodyAnalyzer analyzer;
    EXPECT_EQ(analyzer.RunStep(), CMelodyAnalyzer::kComplete);
    EXPECT_FALSE(analyzer.IsAnalysed());
    EXPECT_EQ(analyzer.GetMarks(), nullptr);

    MemoryAudioFile audio = Silent(5000);
    analyzer.Attach(&audio);
    audio.open = false;
    EXPECT_EQ(analyzer.RunStep(), CMelodyAnalyzer::kComplete);
    EXPECT_TRUE(audio.reads.empty());
    audio.open = true;
    RunToEnd(analyzer);
    const std::size_t reads = audio.reads.size();
    EXPECT_EQ(analyzer.RunStep(), CMelodyAnalyzer::kComplete);
    EXPECT_EQ(audio.reads.size(), reads);
}

TEST(CMelodyAnalyzer, ScalesThePeakOfAllChannelsToOne) {
    // A mark's energy is the mean square of the sum of the channels: it shows the gain.
    struct Case {
        std::vector<float> channels;
        double energy;
    };
    for (const Case& c : {Case{{0.25F}, 1.0}, Case{{-0.25F}, 1.0}, Case{{3.0F}, 1.0},
                          Case{{0.5F, 0.25F}, 1.5 * 1.5}, Case{{-0.25F, 0.5F}, 0.5 * 0.5}}) {
        MemoryAudioFile audio = Constant(10'000, c.channels);
        CMelodyAnalyzer analyzer;
        analyzer.Attach(&audio);
        RunToEnd(analyzer);
        ASSERT_GT(analyzer.GetMarks()->GetCount(), 2);
        for (std::int32_t i = 1; i + 1 < analyzer.GetMarks()->GetCount(); ++i)
            EXPECT_NEAR(static_cast<double>(analyzer.GetMarks()->GetEnergy(i)), c.energy, 1e-5);
    }
}

TEST(CMelodyAnalyzer, PeakMayLieInTheLastFrameOfThePartialBlock) {
    std::vector<float> samples(2 * kBlock + 77, 0.125F);
    samples.back() = -0.5F;
    MemoryAudioFile audio({samples}, kRate);
    CMelodyAnalyzer analyzer;
    analyzer.Attach(&audio);
    RunToEnd(analyzer);
    EXPECT_NEAR(static_cast<double>(analyzer.GetMarks()->GetEnergy(1)), 0.0625, 1e-6);
}

TEST(CMelodyAnalyzer, TinyNumberKeepsTheGainOfNearSilenceFinite) {
    // gain = 1 / (peak + 1e-24): a peak of 1e-24 becomes one half, 9e-24 nine tenths.
    for (const float peak : {1e-24F, 9e-24F}) {
        MemoryAudioFile audio = Constant(10'000, {peak});
        CMelodyAnalyzer analyzer;
        analyzer.Attach(&audio);
        RunToEnd(analyzer);
        const double scaled = static_cast<double>(peak) / (static_cast<double>(peak) + 1e-24);
        EXPECT_NEAR(static_cast<double>(analyzer.GetMarks()->GetEnergy(1)), scaled * scaled, 1e-5);
    }
}

TEST(CMelodyAnalyzer, SilentFileHasMarksButNothingVoicedAndNoNotes) {
    MemoryAudioFile audio = Silent(100'000);
    CMelodyAnalyzer analyzer;
    analyzer.Attach(&audio);
    EXPECT_EQ(RunToEnd(analyzer), ExpectedResults(100'000 / kBlock + 1));
    EXPECT_TRUE(analyzer.IsAnalysed());
    EXPECT_EQ(analyzer.StoreResults(false), 0);
    const AnalysisResults results(analyzer);
    EXPECT_EQ(WhatIsWrong(results, 100'000), "");
    EXPECT_GT(results.marks.size(), 10U);
    for (const AnalysisFrame& frame : results.frames) {
        EXPECT_EQ(frame.voiced, 0);
        EXPECT_EQ(frame.level, 0.0F);
    }
    EXPECT_TRUE(results.notes.empty());
    EXPECT_EQ(analyzer.EstimateKey(0), -1);
}

TEST(CMelodyAnalyzer, NoNotesGiveTuningZeroAndAFourFortyConcertPitch) {
    MemoryAudioFile audio = Silent(20'000);
    CMelodyAnalyzer analyzer;
    EXPECT_EQ(analyzer.GetTuningFrequency(), 440.0F);
    analyzer.Attach(&audio);
    RunToEnd(analyzer);
    EXPECT_EQ(analyzer.GetTuningOffset(), 0.0F);
    EXPECT_EQ(analyzer.GetTuningFrequency(), 440.0F);
}

TEST(CMelodyAnalyzer, TuningFrequencyIsThatOfTheSingersA4) {
    const Recording recording = ThreeNotes(); // a quarter of a semitone above the notes of A 440
    MemoryAudioFile audio(recording);
    CMelodyAnalyzer analyzer;
    analyzer.Attach(&audio);
    RunToEnd(analyzer);
    // Whole-sample periods of 44.1 kHz are worth 4 to 9 cents at these pitches.
    EXPECT_NEAR(static_cast<double>(analyzer.GetTuningOffset()), 0.25, 0.06);
    EXPECT_NEAR(static_cast<double>(analyzer.GetTuningFrequency()),
                440.0 * std::pow(2.0, static_cast<double>(analyzer.GetTuningOffset()) / 12.0), 1e-4);
}

TEST(CMelodyAnalyzer, CountsWholeBlocks) {
    CMelodyAnalyzer analyzer;
    EXPECT_EQ(analyzer.GetBlockCount(), 0);
    for (const int frames : {0, 1, 1023, 1024, 1025, 2047, 2048, 100'000}) {
        MemoryAudioFile audio = Silent(static_cast<std::size_t>(frames));
        analyzer.Attach(&audio);
        EXPECT_EQ(analyzer.GetBlockCount(), frames / 1024);
    }
}

TEST(CMelodyAnalyzer, NotesArePublishedByStoringWithoutWriting) {
    const TemporaryFolder folder;
    const std::string path = folder.File("song.wav").string();
    const Recording recording = ThreeNotes();
    MemoryAudioFile audio(recording.channels, kRate, path);
    CMelodyAnalyzer analyzer;
    analyzer.Attach(&audio);
    const NoteRecord* notes = nullptr;
    EXPECT_EQ(analyzer.StoreResults(false), 0) << "nothing to store yet";
    RunToEnd(analyzer);
    EXPECT_EQ(analyzer.GetNotes(notes), 0);
    EXPECT_EQ(analyzer.StoreResults(false), 0);
    EXPECT_EQ(analyzer.GetNotes(notes), 3);
    ASSERT_NE(notes, nullptr);
    EXPECT_NEAR(static_cast<double>(notes[0].pitch), 57.25, 0.1);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));

    EXPECT_EQ(analyzer.StoreResults(true), 1);
    EXPECT_EQ(std::filesystem::file_size(path + ".kva"),
              20U + 24U * static_cast<std::size_t>(analyzer.GetMarks()->GetCount()) + 28U * 3U);
    audio.open = false;
    EXPECT_EQ(analyzer.StoreResults(true), 0);
}

TEST(CMelodyAnalyzer, MeasuresThePitchBetweenTwoPositions) {
    const Recording recording = ThreeNotes();
    MemoryAudioFile audio(recording);
    CMelodyAnalyzer analyzer;
    EXPECT_EQ(analyzer.MeasureRange(0, 1000), -1.0F) << "nothing analysed";
    analyzer.Attach(&audio);
    RunToEnd(analyzer);
    analyzer.StoreResults(false);
    for (const SungNote& note : recording.notes) {
        const auto start = static_cast<std::int32_t>((note.onsetSeconds + 0.1) * recording.sampleRate);
        const auto end = static_cast<std::int32_t>((note.offsetSeconds - 0.1) * recording.sampleRate);
        // Vibrato is as wide above as below; whole-sample periods leave up to 9 cents.
        EXPECT_NEAR(static_cast<double>(analyzer.MeasureRange(start, end)), note.midiPitchAt440, 0.1);
    }
    EXPECT_EQ(analyzer.MeasureRange(2'000'000'000, 2'000'000'001), -1.0F) << "behind the last mark";
}

TEST(CMelodyAnalyzer, MeasuresFromTheNearestMarkToTheNearestMark) {
    // The frames between the two marks, the second not among them, with the trimming of the mean worked out
    // here.
    const Recording recording = ThreeNotes();
    MemoryAudioFile audio(recording);
    CMelodyAnalyzer analyzer;
    analyzer.Attach(&audio);
    RunToEnd(analyzer);
    analyzer.StoreResults(false);
    const AnalysisResults results(analyzer);
    const auto nearest = [&](double position) {
        return std::min_element(results.marks.begin(), results.marks.end(),
                                [=](const PitchMarkRecord& a, const PitchMarkRecord& b) {
                                    return std::abs(a.position - position) < std::abs(b.position - position);
                                }) -
               results.marks.begin();
    };
    for (const double start : {20'000.0, 40'000.0, 70'000.0}) {
        const double end = start + 7'000.0;
        std::vector<double> pitches;
        for (auto i = nearest(start); i < nearest(end); ++i) {
            const AnalysisFrame& frame = results.frames[static_cast<std::size_t>(i)];
            if (frame.voiced != 0) pitches.push_back(static_cast<double>(frame.pitch));
        }
        ASSERT_GT(pitches.size(), 8U);
        std::sort(pitches.begin(), pitches.end());
        const std::size_t middle = pitches.size() / 2;
        const std::size_t quarter = pitches.size() / 4;
        double sum = 0.0;
        for (std::size_t i = middle - quarter; i < middle + quarter; ++i) sum += pitches[i];
        EXPECT_NEAR(static_cast<double>(analyzer.MeasureRange(static_cast<std::int32_t>(start),
                                                              static_cast<std::int32_t>(end))),
                    sum / static_cast<double>(2 * quarter), 1e-4);
    }
}

TEST(CMelodyAnalyzer, SameFileGivesTheSameBits) {
    const Recording recording = ThreeNotes();
    std::vector<AnalysisResults> runs;
    for (int run = 0; run < 2; ++run) {
        MemoryAudioFile audio(recording);
        CMelodyAnalyzer analyzer;
        analyzer.Attach(&audio);
        RunToEnd(analyzer);
        analyzer.StoreResults(false);
        runs.emplace_back(analyzer);
    }
    EXPECT_TRUE(runs[0].SameBits(runs[1]));
    EXPECT_EQ(runs[0].notes.size(), 3U);
}

TEST(CMelodyAnalyzer, ResultsFromTheCacheAreThoseOfTheAnalysisToTheBit) {
    const TemporaryFolder folder;
    const std::string path = folder.File("song.wav").string();
    const Recording recording = ThreeNotes();
    ASSERT_TRUE(WriteWav(path, recording));
    SetModificationTime(path, 1'000'000'000'000'000'000);
    CkvoAudioFile audio;
    ASSERT_EQ(audio.OpenRead(path, kAudioCacheFrames, -1, -1), kOk);

    CMelodyAnalyzer analyzer;
    analyzer.Attach(&audio);
    EXPECT_EQ(analyzer.ReadCacheHeader(), -1);
    RunToEnd(analyzer);
    ASSERT_EQ(analyzer.StoreResults(true), 1);
    const AnalysisResults analysed(analyzer);

    CMelodyAnalyzer loader;
    loader.Attach(&audio);
    ASSERT_EQ(loader.ReadCacheHeader(), 0);
    ASSERT_EQ(loader.LoadCache(), 1);
    EXPECT_TRUE(loader.IsAnalysed());
    const AnalysisResults loaded(loader);
    EXPECT_TRUE(SameRecords(loaded.marks, analysed.marks));
    EXPECT_TRUE(SameRecords(loaded.notes, analysed.notes));
    EXPECT_TRUE(SameRecords(loaded.frames, analysed.frames));
    EXPECT_EQ(loader.GetTuningOffset(), analyzer.GetTuningOffset());
    EXPECT_EQ(loader.EstimateKey(0), analyzer.EstimateKey(0));
    EXPECT_EQ(loader.MeasureRange(20'000, 30'000), analyzer.MeasureRange(20'000, 30'000));
    EXPECT_EQ(loader.RunStep(), CMelodyAnalyzer::kComplete) << "there is nothing left to do";
}

TEST(CMelodyAnalyzer, OpenCacheHoldsTheAnalysisBack) {
    const TemporaryFolder folder;
    const std::string path = folder.File("song.wav").string();
    ASSERT_TRUE(WriteWav(path, ThreeNotes()));
    SetModificationTime(path, 1'000'000'000'000'000'000);
    CkvoAudioFile audio;
    ASSERT_EQ(audio.OpenRead(path, kAudioCacheFrames, -1, -1), kOk);
    {
        CMelodyAnalyzer analyzer;
        analyzer.Attach(&audio);
        RunToEnd(analyzer);
        ASSERT_EQ(analyzer.StoreResults(true), 1);
    }
    CMelodyAnalyzer analyzer;
    analyzer.Attach(&audio);
    EXPECT_EQ(analyzer.LoadCache(), 0) << "no cache was opened";
    ASSERT_EQ(analyzer.ReadCacheHeader(), 0);
    EXPECT_EQ(analyzer.RunStep(), CMelodyAnalyzer::kComplete);
    EXPECT_FALSE(analyzer.IsAnalysed());
    EXPECT_EQ(analyzer.CloseCache(), 1);
    EXPECT_EQ(analyzer.RunStep(), CMelodyAnalyzer::kReadAudio);
    EXPECT_EQ(analyzer.LoadCache(), 0) << "the cache was closed";
}

TEST(CMelodyAnalyzer, RatesAndChannelsOutsideOfItsReachEndWithoutResults) {
    struct Case {
        float rate;
        std::size_t channels;
        bool works;
    };
    for (const Case& c : {Case{7999.0F, 1, false}, Case{8000.0F, 1, true}, Case{255'999.0F, 1, true},
                          Case{256'000.0F, 1, false}, Case{384'000.0F, 2, false}, Case{kRate, 47, true},
                          Case{kRate, 48, false}, Case{kRate, 0, false}}) {
        SCOPED_TRACE(std::to_string(c.rate) + " Hz, " + std::to_string(c.channels) + " channels");
        MemoryAudioFile audio(std::vector<std::vector<float>>(c.channels, std::vector<float>(3000)), c.rate);
        CMelodyAnalyzer analyzer;
        ASSERT_EQ(analyzer.Attach(&audio), kOk);
        RunToEnd(analyzer);
        EXPECT_EQ(analyzer.IsAnalysed(), c.works);
        EXPECT_EQ(audio.reads.empty(), !c.works);
        if (!c.works) {
            EXPECT_EQ(analyzer.StoreResults(true), 0);
        }
    }
}

} // namespace sonorelle::test
