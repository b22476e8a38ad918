#include "analysis/analysis_job.h"

#include "analysis/melody_analyzer.h"
#include "formats/audio_file.h"
#include "platform/thread.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace sonorelle {

namespace {

// How often the poll is called while a job runs: smooth for a bar, nothing for a processor.
constexpr std::chrono::milliseconds kPollInterval{10};

} // namespace

AnalysisProgress::AnalysisProgress(std::int32_t blocks) : blockCount(blocks) {}

std::int32_t AnalysisProgress::Advance(std::int32_t stepResult) {
    // Two passes of so many blocks and one: half of this many.
    const float passes = 4.0F * static_cast<float>(blockCount) + 1.0F;
    constexpr float kStages = 9.0F;
    if (stepResult == CMelodyAnalyzer::kReadAudio) {
        return static_cast<std::int32_t>(static_cast<float>(first++) * 100.0F / passes);
    }
    return static_cast<std::int32_t>(static_cast<float>(second++) * 50.0F / kStages + 50.0F);
}

struct AnalysisJob::State {
    explicit State(CMelodyAnalyzer& target) : analyzer(target), progress(target.GetBlockCount()) {}

    void Run() {
        std::int32_t outcome = 0;
        for (;;) {
            const std::int32_t step = analyzer.RunStep();
            percent.store(progress.Advance(step), std::memory_order_relaxed);
            if (cancelled.load(std::memory_order_relaxed)) {
                outcome = -1;
                break;
            }
            if (step == CMelodyAnalyzer::kComplete) break;
        }
        {
            const std::lock_guard guard(mutex);
            result = outcome;
            // Released to whoever sees that the job has ended and then reads the analyzer.
            running.store(false, std::memory_order_release);
        }
        ended.notify_all();
    }

    CMelodyAnalyzer& analyzer;
    AnalysisProgress progress;
    std::atomic<std::int32_t> percent{0};
    std::atomic<bool> cancelled{false};
    std::atomic<bool> running{true};
    std::mutex mutex;
    std::condition_variable ended;
    std::int32_t result = 0;
    CThread thread;
};

AnalysisJob::AnalysisJob(CMelodyAnalyzer& analyzer) : state(std::make_unique<State>(analyzer)) {
    // Without a thread to give, the job is done here and now.
    if (!state->thread.Start([job = state.get()] { job->Run(); })) state->Run();
}

// Nobody waits for the results any more.
AnalysisJob::~AnalysisJob() { Cancel(); }

std::int32_t AnalysisJob::GetPercent() const { return state->percent.load(std::memory_order_relaxed); }

bool AnalysisJob::IsRunning() const { return state->running.load(std::memory_order_acquire); }

void AnalysisJob::Cancel() { state->cancelled.store(true, std::memory_order_relaxed); }

bool AnalysisJob::WaitFor(std::chrono::milliseconds time) {
    std::unique_lock guard(state->mutex);
    return state->ended.wait_for(guard, time,
                                 [this] { return !state->running.load(std::memory_order_relaxed); });
}

std::int32_t AnalysisJob::Join() {
    state->thread.Join();
    return state->result;
}

AnalysisOutcome AnalyseMelody(CMelodyAnalyzer& analyzer, bool useCache, const AnalysisPoll& poll) {
    CkvoAudioFile* audio = nullptr;
    if (analyzer.GetAudioFile(audio) != 0) return AnalysisOutcome::kFailed;
    const bool cacheable = useCache && !audio->HasLimits();
    if (analyzer.ReadCacheHeader() == 0) {
        if (cacheable && analyzer.LoadCache() != 0) return AnalysisOutcome::kLoaded;
        analyzer.CloseCache();
    }
    AnalysisJob job(analyzer);
    // Who cancels gets no results, also when the last step was done before the job heard of it.
    bool cancelled = false;
    do {
        if (!poll || poll(job.GetPercent())) continue;
        cancelled = true;
        job.Cancel();
    } while (!job.WaitFor(kPollInterval));
    if (job.Join() != 0 || cancelled) return AnalysisOutcome::kCancelled;
    if (poll) poll(job.GetPercent());
    if (!analyzer.IsAnalysed()) return AnalysisOutcome::kFailed;
    return analyzer.StoreResults(cacheable) != 0 ? AnalysisOutcome::kWritten : AnalysisOutcome::kComputed;
}

} // namespace sonorelle
