#include "cli/heard_recording.h"

#include "analysis/analysis_job.h"
#include "cli/console.h"
#include "cli/gather_report.h"
#include "cli/progress_bar.h"
#include "platform/result_codes.h"

#include <optional>
#include <utility>

namespace sonorelle {

namespace {

constexpr const char* kTooManyChannels = "Only mono and stereo audio files are supported!";
constexpr const char* kRateTooLow = "Samplerate below 11kHz not supported!";
constexpr const char* kCannotAnalyse = "Could not analyse this file!";
constexpr const char* kRateTooHigh = "Samplerate of 256kHz and above not supported!";

constexpr std::int32_t kMostChannels = 2;
constexpr float kLowestRate = 11025;
constexpr float kRateLimit = 256000; // of the analysis; not included

// The text of an audio file that cannot be taken; null when it can.
const char* WhyRefused(const CkvoAudioFile& audio) {
    if (audio.GetNumChannels() > kMostChannels) return kTooManyChannels;
    if (!(audio.GetSampleRate() >= kLowestRate)) return kRateTooLow;
    return nullptr;
}

std::optional<CacheUse> CacheUseOf(AnalysisOutcome outcome) {
    switch (outcome) {
    case AnalysisOutcome::kLoaded:
        return CacheUse::kLoaded;
    case AnalysisOutcome::kWritten:
        return CacheUse::kWritten;
    case AnalysisOutcome::kComputed:
        return CacheUse::kNone;
    case AnalysisOutcome::kCancelled:
    case AnalysisOutcome::kFailed:
        break;
    }
    return std::nullopt;
}

} // namespace

const char* WhyNotAnalysed(float sampleRate) {
    return sampleRate >= kRateLimit ? kRateTooHigh : kCannotAnalyse;
}

std::string ProgressLabel(const char* step, const HearingWish& wish) {
    std::string label = step;
    if (wish.count > 1)
        label.append(" ")
            .append(std::to_string(wish.index + 1))
            .append(" of ")
            .append(std::to_string(wish.count));
    return label;
}

HeardRecording::HeardRecording(std::string file)
    : file_(std::move(file)), start_(std::chrono::steady_clock::now()) {}

bool HeardRecording::Open(const Console& console) {
    const char* reason = nullptr;
    if (audio_.OpenRead(file_, kAudioCacheFrames, -1, -1) != kOk) {
        reason = kCannotLoadText;
    } else {
        reason = WhyRefused(audio_);
        if (reason == nullptr && analyzer_.Attach(&audio_) != kOk) reason = kCannotLoadText;
    }
    if (reason != nullptr) console.Complain(file_, reason);
    return reason == nullptr;
}

Hearing HeardRecording::Hear(const HearingWish& wish, const Console& console) {
    ProgressBar bar(console.err, wish.showProgress ? console.ErrorColumns() : 0,
                    ProgressLabel("Analysing", wish));
    const AnalysisOutcome outcome = AnalyseMelody(analyzer_, wish.useCache, [&](std::int32_t percent) {
        bar.Show(percent);
        return !console.IsCancelled();
    });
    bar.Clear();
    if (outcome == AnalysisOutcome::kCancelled) return Hearing::kCancelled;
    const std::optional<CacheUse> cache = CacheUseOf(outcome);
    if (!cache) {
        console.Complain(file_, WhyNotAnalysed(audio_.GetSampleRate()));
        return Hearing::kFailed;
    }
    cache_ = *cache;
    return Hearing::kDone;
}

MelodyReport HeardRecording::Report() {
    MelodyReport report = GatherReport(file_, cache_, audio_, analyzer_);
    report.elapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    return report;
}

} // namespace sonorelle
