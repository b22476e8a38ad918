// The analysis of one file as a job on a thread of its own, with a percentage and cooperative cancelling.

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace sonorelle {

class CMelodyAnalyzer;

// Maps the results of CMelodyAnalyzer::RunStep to the percentage that a progress bar shows: the two passes
// over the file fill the first half, the nine stages the second.
class AnalysisProgress {
public:
    // `blocks`: CMelodyAnalyzer::GetBlockCount() of the file.
    explicit AnalysisProgress(std::int32_t blocks);
    // Takes one result of RunStep and gives the percentage to show after it, 0 to 100.
    std::int32_t Advance(std::int32_t stepResult);

private:
    std::int32_t blockCount;
    std::int32_t first = 0;  // steps so far that read audio
    std::int32_t second = 0; // other steps so far
};

// Starts on construction; destruction cancels it and waits for its end. The analyzer must be attached, and is
// touched by nobody else before `IsRunning` is false.
class AnalysisJob {
public:
    explicit AnalysisJob(CMelodyAnalyzer& analyzer);
    ~AnalysisJob();
    AnalysisJob(const AnalysisJob&) = delete;
    AnalysisJob& operator=(const AnalysisJob&) = delete;

    std::int32_t GetPercent() const; // 0 to 100, any thread
    bool IsRunning() const;          // any thread
    void Cancel();                   // any thread; the job ends after the step it is in
    // Waits for the end, but no longer than `time`; true when it has come.
    bool WaitFor(std::chrono::milliseconds time);
    // Waits for the end. 0: complete; -1: cancelled, and there are no results.
    std::int32_t Join();

private:
    struct State;
    std::unique_ptr<State> state;
};

enum class AnalysisOutcome {
    kLoaded,    // taken from a valid cache
    kWritten,   // analysed, and the cache written
    kComputed,  // analysed; no cache was wanted, or it could not be written
    kCancelled, // no results, no cache
    kFailed // the file cannot be analysed (a sample rate or channel count outside what the analysis takes)
};

// Called on the caller's thread every few milliseconds while a job runs; false cancels the job.
using AnalysisPoll = std::function<bool(std::int32_t percent)>;

// The whole road of one attached file: from a valid cache at once, else by a job. `useCache` 0 neither reads
// nor writes one; a section of a file (CkvoAudioFile::HasLimits) never does. After kLoaded, kWritten and
// kComputed the analyzer's results are there.
AnalysisOutcome AnalyseMelody(CMelodyAnalyzer& analyzer, bool useCache, const AnalysisPoll& poll);

} // namespace sonorelle
