#include "analysis/analysis_job.h"

#include "analysis/melody_analyzer.h"
#include "formats/audio_file.h"
#include "platform/result_codes.h"
#include "support/analysis_results.h"
#include "support/memory_audio_file.h"
#include "support/synthetic_singer.h"
#include "support/temporary_folder.h"
#include "support/wav_writer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace sonorelle::test {

namespace {

using std::chrono::milliseconds;

Recording TwoNotes() {
    std::vector<MelodyNote> melody(2);
    melody[1].midiPitch = 64.0;
    melody[1].consonant = Consonant::kPlosive;
    SingerSettings settings;
    settings.sampleRate = 22050.0;
    return Sing(melody, settings);
}

// Reads silence for ever: only cancelling ends its analysis.
class EndlessAudioFile final : public CkvoAudioFile {
public:
    std::int32_t Seek(std::int32_t frame) override { return frame; }
    std::int32_t GetLength() const override { return 2'000'000'000; }
    std::int32_t Read(float* const* channels, std::int32_t frames) override {
        std::fill_n(channels[0], frames, 0.0F);
        reads.fetch_add(1, std::memory_order_relaxed);
        return frames;
    }
    std::int32_t GetNumChannels() const override { return 1; }
    float GetSampleRate() const override { return 44100.0F; }
    std::string GetPath() const override { return "/nowhere/endless.wav"; }
    bool IsOpen() const override { return true; }
    bool HasLimits() const override { return false; }

    std::atomic<std::int32_t> reads{0};
};

// Lets the analysis read one block at a time, when the test says so.
class StepwiseAudioFile final : public CkvoAudioFile {
public:
    explicit StepwiseAudioFile(std::int32_t frames) : length(frames) {}

    std::int32_t Seek(std::int32_t frame) override { return position = frame; }
    std::int32_t GetLength() const override { return length; }
    std::int32_t Read(float* const* channels, std::int32_t frames) override {
        {
            std::unique_lock guard(mutex);
            ++arrived;
            changed.notify_all();
            changed.wait(guard, [this] { return allowed >= arrived; });
        }
        const std::int32_t count = std::min(length - position, frames);
        std::fill_n(channels[0], count, 0.25F);
        position += count;
        return count;
    }
    std::int32_t GetNumChannels() const override { return 1; }
    float GetSampleRate() const override { return 44100.0F; }
    std::string GetPath() const override { return "/nowhere/stepwise.wav"; }
    bool IsOpen() const override { return true; }
    bool HasLimits() const override { return false; }

    // Until the analysis waits in its n-th read, counted from 1.
    void WaitForRead(int n) {
        std::unique_lock guard(mutex);
        changed.wait(guard, [this, n] { return arrived >= n; });
    }
    void Allow(int reads) {
        const std::lock_guard guard(mutex);
        allowed = reads;
        changed.notify_all();
    }
    int Arrived() {
        const std::lock_guard guard(mutex);
        return arrived;
    }

private:
    std::int32_t length;
    std::int32_t position = 0;
    std::mutex mutex;
    std::condition_variable changed;
    int arrived = 0;
    int allowed = 0;
};

constexpr int kAllReads = 1'000'000;

// A song on the disk, one second into 2009, and what AnalyseMelody says about it.
class AnalyseMelodyOnDisk : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(WriteWav(path, TwoNotes()));
        SetModificationTime(path, 1'230'768'001'000'000'000);
    }

    AnalysisOutcome Analyse(bool useCache, const AnalysisPoll& poll = nullptr, std::int32_t first = -1,
                            std::int32_t end = -1) {
        CkvoAudioFile audio;
        EXPECT_EQ(audio.OpenRead(path, kAudioCacheFrames, first, end), kOk);
        CMelodyAnalyzer analyzer;
        EXPECT_EQ(analyzer.Attach(&audio), kOk);
        const AnalysisOutcome outcome = AnalyseMelody(analyzer, useCache, poll);
        analysed = analyzer.IsAnalysed();
        results = AnalysisResults(analyzer);
        length = audio.GetLength();
        return outcome;
    }

    std::size_t FilesInFolder() const {
        const std::filesystem::directory_iterator entries(folder.Path());
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    const TemporaryFolder folder;
    const std::string path = folder.File("song.wav").string();
    const std::string cache = path + ".kva";
    bool analysed = false;
    AnalysisResults results;
    std::int32_t length = 0;
};

} // namespace

TEST(AnalysisProgress, TwoPassesFillTheFirstHalfOfTheBarAndTheStagesTheSecond) {
    for (const std::int32_t blocks : {0, 1, 2, 3, 10, 99, 1000, 25'839}) {
        SCOPED_TRACE(blocks);
        AnalysisProgress progress(blocks);
        // In whole numbers, where truncation is exact.
        const std::int64_t steps = 2 * (blocks + 1);
        for (std::int64_t i = 0; i < steps; ++i)
            ASSERT_EQ(progress.Advance(CMelodyAnalyzer::kReadAudio), i * 100 / (4 * blocks + 1)) << i;
        for (std::int64_t j = 0; j < 9; ++j)
            EXPECT_EQ(progress.Advance(CMelodyAnalyzer::kRanStage), (j * 50 + 450) / 9) << j;
        EXPECT_EQ(progress.Advance(CMelodyAnalyzer::kComplete), 100);
    }
}

TEST(AnalysisProgress, StagesShowFiftyFiftyFiveAndSoOn) {
    AnalysisProgress progress(5);
    std::vector<std::int32_t> shown;
    for (int j = 0; j < 9; ++j) shown.push_back(progress.Advance(CMelodyAnalyzer::kRanStage));
    shown.push_back(progress.Advance(CMelodyAnalyzer::kComplete));
    EXPECT_EQ(shown, (std::vector<std::int32_t>{50, 55, 61, 66, 72, 77, 83, 88, 94, 100}));
}

TEST(AnalysisJob, ShowsThePercentageOfEachStep) {
    constexpr int kBlocks = 4;
    StepwiseAudioFile audio(kBlocks * 1024);
    CMelodyAnalyzer analyzer;
    ASSERT_EQ(analyzer.Attach(&audio), kOk);
    AnalysisJob job(analyzer);
    audio.WaitForRead(1);
    EXPECT_EQ(job.GetPercent(), 0);
    EXPECT_TRUE(job.IsRunning());
    EXPECT_FALSE(job.WaitFor(milliseconds(1)));
    for (int read = 2; read <= 2 * (kBlocks + 1) + 1; ++read) {
        audio.Allow(read - 1);
        audio.WaitForRead(read); // the step before is done
        EXPECT_EQ(job.GetPercent(), (read - 2) * 100 / (4 * kBlocks + 1)) << read;
    }
    for (int stage = 0; stage < 9; ++stage) {
        const int read = 2 * (kBlocks + 1) + 2 + stage;
        audio.Allow(read - 1);
        audio.WaitForRead(read);
        EXPECT_EQ(job.GetPercent(), 50 + stage * 50 / 9) << stage;
    }
    audio.Allow(kAllReads);
    EXPECT_EQ(job.Join(), 0);
    EXPECT_FALSE(job.IsRunning());
    EXPECT_TRUE(job.WaitFor(milliseconds(0)));
    EXPECT_EQ(job.GetPercent(), 100);
    EXPECT_TRUE(analyzer.IsAnalysed());
}

TEST(AnalysisJob, CancelEndsItAfterTheStepItIsInAndLeavesNoResults) {
    for (const int read : {1, 3, 8, 10, 12, 20}) { // in both passes, in a stage, in the last step
        SCOPED_TRACE(read);
        StepwiseAudioFile audio(4 * 1024);
        CMelodyAnalyzer analyzer;
        ASSERT_EQ(analyzer.Attach(&audio), kOk);
        AnalysisJob job(analyzer);
        audio.Allow(read - 1);
        audio.WaitForRead(read);
        job.Cancel();
        audio.Allow(kAllReads);
        EXPECT_EQ(job.Join(), -1);
        EXPECT_EQ(audio.Arrived(), read) << "no further step was begun";
        EXPECT_FALSE(job.IsRunning());
        const NoteRecord* notes = nullptr;
        EXPECT_EQ(analyzer.GetNotes(notes), 0);
        EXPECT_EQ(notes, nullptr);
    }
}

TEST(AnalysisJob, DestructionWhileRunningCancelsAndWaits) {
    EndlessAudioFile audio;
    CMelodyAnalyzer analyzer;
    ASSERT_EQ(analyzer.Attach(&audio), kOk);
    {
        const AnalysisJob job(analyzer);
        while (audio.reads.load(std::memory_order_relaxed) < 5) std::this_thread::yield();
    }
    const std::int32_t reads = audio.reads.load(std::memory_order_relaxed);
    EXPECT_FALSE(analyzer.IsAnalysed());
    // The worker is gone: the analyzer is this thread's again, and nobody else reads.
    EXPECT_EQ(analyzer.RunStep(), CMelodyAnalyzer::kReadAudio);
    EXPECT_EQ(audio.reads.load(std::memory_order_relaxed), reads + 1);
}

TEST(AnalysisJob, MayBeDestroyedBeforeItHasBegun) {
    for (int i = 0; i < 50; ++i) {
        EndlessAudioFile audio;
        CMelodyAnalyzer analyzer;
        ASSERT_EQ(analyzer.Attach(&audio), kOk);
        const AnalysisJob job(analyzer);
    }
}

TEST(AnalysisJob, AnyThreadMayCancel) {
    EndlessAudioFile audio;
    CMelodyAnalyzer analyzer;
    ASSERT_EQ(analyzer.Attach(&audio), kOk);
    AnalysisJob job(analyzer);
    std::thread other([&job] {
        while (job.GetPercent() < 0 || !job.IsRunning()) std::this_thread::yield();
        job.Cancel();
    });
    while (!job.WaitFor(milliseconds(50))) {
    }
    EXPECT_EQ(job.Join(), -1);
    other.join();
}

TEST(AnalysisJob, EndsAtOnceWhenThereIsNothingToDo) {
    CMelodyAnalyzer detached;
    AnalysisJob job(detached);
    EXPECT_EQ(job.Join(), 0);
    EXPECT_FALSE(detached.IsAnalysed());
}

TEST(AnalyseMelody, FailsWithoutAnAttachedFile) {
    CMelodyAnalyzer analyzer;
    EXPECT_EQ(AnalyseMelody(analyzer, true, nullptr), AnalysisOutcome::kFailed);
}

TEST(AnalyseMelody, PollEndsAnEndlessJob) {
    EndlessAudioFile audio;
    CMelodyAnalyzer analyzer;
    ASSERT_EQ(analyzer.Attach(&audio), kOk);
    int polls = 0;
    const auto poll = [&polls](std::int32_t) { return ++polls < 3; };
    EXPECT_EQ(AnalyseMelody(analyzer, true, poll), AnalysisOutcome::kCancelled);
    EXPECT_GE(polls, 3);
    EXPECT_FALSE(analyzer.IsAnalysed());
}

TEST(AnalyseMelody, PercentageRisesToAHundredOnTheCallersThread) {
    SingerSettings settings;
    MemoryAudioFile audio(SteadyTone(220.0, 20.0, settings));
    CMelodyAnalyzer analyzer;
    ASSERT_EQ(analyzer.Attach(&audio), kOk);
    std::vector<std::int32_t> shown;
    const std::thread::id caller = std::this_thread::get_id();
    bool elsewhere = false;
    EXPECT_EQ(AnalyseMelody(analyzer, false,
                            [&](std::int32_t percent) {
                                elsewhere = elsewhere || std::this_thread::get_id() != caller;
                                shown.push_back(percent);
                                return true;
                            }),
              AnalysisOutcome::kComputed);
    ASSERT_GE(shown.size(), 2U);
    EXPECT_TRUE(std::is_sorted(shown.begin(), shown.end()));
    EXPECT_GE(shown.front(), 0);
    EXPECT_EQ(shown.back(), 100);
    EXPECT_FALSE(elsewhere);
}

TEST_F(AnalyseMelodyOnDisk, WritesACacheAndThenLoadsIt) {
    EXPECT_EQ(Analyse(true), AnalysisOutcome::kWritten);
    EXPECT_TRUE(std::filesystem::exists(cache));
    const AnalysisResults computed = results;
    EXPECT_EQ(WhatIsWrong(computed, length), "");
    EXPECT_EQ(computed.notes.size(), 2U);
    EXPECT_EQ(Analyse(true), AnalysisOutcome::kLoaded);
    EXPECT_TRUE(results.SameBits(computed));
    EXPECT_EQ(FilesInFolder(), 2U);
}

TEST_F(AnalyseMelodyOnDisk, WithoutCacheNoneIsWrittenAndNoneRead) {
    EXPECT_EQ(Analyse(false), AnalysisOutcome::kComputed);
    EXPECT_EQ(FilesInFolder(), 1U);
    const AnalysisResults computed = results;
    EXPECT_EQ(Analyse(true), AnalysisOutcome::kWritten);
    EXPECT_EQ(Analyse(false), AnalysisOutcome::kComputed) << "the valid cache is not used";
    EXPECT_TRUE(results.SameBits(computed));
}

TEST_F(AnalyseMelodyOnDisk, SectionNeitherReadsNorWritesACache) {
    EXPECT_EQ(Analyse(true, nullptr, 2000, 20'000), AnalysisOutcome::kComputed);
    EXPECT_EQ(length, 18'000);
    EXPECT_EQ(WhatIsWrong(results, 18'000), "");
    EXPECT_EQ(FilesInFolder(), 1U);

    EXPECT_EQ(Analyse(true), AnalysisOutcome::kWritten);
    const std::filesystem::file_time_type time = std::filesystem::last_write_time(cache);
    const std::uintmax_t size = std::filesystem::file_size(cache);
    EXPECT_EQ(Analyse(true, nullptr, 2000, 20'000), AnalysisOutcome::kComputed);
    EXPECT_EQ(results.marks.back().position, 18'000) << "not from the cache of the whole file";
    EXPECT_EQ(std::filesystem::last_write_time(cache), time);
    EXPECT_EQ(std::filesystem::file_size(cache), size);
}

TEST_F(AnalyseMelodyOnDisk, CancellingLeavesNoCacheAndNoResults) {
    EXPECT_EQ(Analyse(true, [](std::int32_t) { return false; }), AnalysisOutcome::kCancelled);
    EXPECT_TRUE(results.notes.empty());
    EXPECT_EQ(FilesInFolder(), 1U) << "nothing but the song";
}

TEST_F(AnalyseMelodyOnDisk, CancellingLeavesAStaleCacheAsItWas) {
    EXPECT_EQ(Analyse(true), AnalysisOutcome::kWritten);
    SetModificationTime(cache, 1'000'000'000);
    EXPECT_EQ(Analyse(true, [](std::int32_t) { return false; }), AnalysisOutcome::kCancelled);
    EXPECT_EQ(FilesInFolder(), 2U);
    SetModificationTime(path, 1);
    EXPECT_EQ(Analyse(true), AnalysisOutcome::kLoaded) << "it is still whole";
}

TEST_F(AnalyseMelodyOnDisk, FileOf384KilohertzFails) {
    Recording recording;
    recording.sampleRate = 384'000.0;
    recording.channels.assign(1, std::vector<float>(5000, 0.25F));
    ASSERT_TRUE(WriteWav(path, recording));
    EXPECT_EQ(Analyse(true), AnalysisOutcome::kFailed);
    EXPECT_FALSE(analysed);
    EXPECT_TRUE(results.marks.empty() || results.notes.empty());
    EXPECT_EQ(FilesInFolder(), 1U);
}

} // namespace sonorelle::test
