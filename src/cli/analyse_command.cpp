#include "cli/analyse_command.h"

#include "analysis/analysis_job.h"
#include "analysis/melody_analyzer.h"
#include "cli/console.h"
#include "cli/gather_report.h"
#include "cli/melody_picture.h"
#include "cli/melody_report.h"
#include "cli/progress_bar.h"
#include "cli/report_csv.h"
#include "cli/report_json.h"
#include "cli/report_table.h"
#include "formats/audio_file.h"
#include "platform/atomic_file_writer.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

namespace sonorelle {

namespace {

constexpr const char* kCannotLoad = "Could not load audio file!";
constexpr const char* kTooManyChannels = "Only mono and stereo audio files are supported!";
constexpr const char* kRateTooLow = "Samplerate below 11kHz not supported!";
constexpr const char* kCannotAnalyse = "Could not analyse this file!";
constexpr const char* kRateTooHigh = "Samplerate of 256kHz and above not supported!";
constexpr const char* kCancelledText = "Cancelled.";
constexpr const char* kCannotWriteFile = "Could not write file!";

constexpr std::int32_t kMostChannels = 2;
constexpr float kLowestRate = 11025;
constexpr float kRateLimit = 256000; // of the analysis; not included

bool EndsWith(std::string_view path, std::string_view lowerCaseEnding) {
    if (path.size() < lowerCaseEnding.size()) return false;
    return std::equal(
        lowerCaseEnding.begin(), lowerCaseEnding.end(),
        path.end() - static_cast<std::ptrdiff_t>(lowerCaseEnding.size()),
        [](char wanted, char c) { return wanted == std::tolower(static_cast<unsigned char>(c)); });
}

bool AreTheSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return a == b || std::filesystem::equivalent(a, b, ignored);
}

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

// A result file that the user named: it is opened at the start, so that a folder which cannot be written is
// known before the work is done, and takes its place at the end.
class ResultFile {
public:
    explicit ResultFile(std::string path) : path_(std::move(path)) {}

    bool IsWanted() const { return !path_.empty(); }
    bool Open() { return !IsWanted() || writer_.Open(path_); }
    void Write(const std::string& text) {
        if (writer_.IsOpen()) writer_.Write(text.data(), text.size());
    }
    bool Commit() { return !IsWanted() || writer_.Commit(); }
    const std::string& Path() const { return path_; }

private:
    std::string path_;
    CAtomicFileWriter writer_;
};

class AnalyseRun {
public:
    AnalyseRun(const AnalyseOptions& options, const Console& console)
        : options_(options), console_(console), json_(options.jsonFile), csv_(options.csvFile),
          picture_(options.pictureFile) {}

    int Run();

private:
    enum class FileResult { kDone, kFailed, kCancelled };

    bool OpenResults();
    // False when the reader of standard output has left and no other result is wanted.
    bool SomebodyCares() const {
        return output_ != Written::kNobodyReads || json_.IsWanted() || csv_.IsWanted() || picture_.IsWanted();
    }
    FileResult AnalyseFile(std::size_t index);
    AnalysisOutcome AnalyseWithProgress(std::size_t index, CMelodyAnalyzer& analyzer);
    void Print(const std::string& text);
    void Publish(const MelodyReport& report);
    bool CommitResults();
    FileResult Fail(const std::string& file, const char* text) {
        console_.Complain(file, text);
        return FileResult::kFailed;
    }

    const AnalyseOptions& options_;
    const Console& console_;
    ResultFile json_;
    ResultFile csv_;
    ResultFile picture_;
    std::size_t published_ = 0;      // recordings
    Written output_ = Written::kYes; // what became of standard output
};

int AnalyseRun::Run() {
    if (!OpenResults()) return kExitFailed;
    bool failed = false;
    for (std::size_t i = 0; i < options_.files.size() && SomebodyCares(); ++i) {
        const FileResult result = AnalyseFile(i);
        if (result == FileResult::kCancelled) {
            console_.Complain(options_.files[i], kCancelledText);
            return kExitCancelled;
        }
        failed = failed || result == FileResult::kFailed;
    }
    if (published_ > 0 && !CommitResults()) failed = true;
    const int outputCode = console_.ExitCodeOf(output_);
    return failed ? kExitFailed : outputCode;
}

bool AnalyseRun::OpenResults() {
    bool opened = true;
    for (ResultFile* result : {&json_, &csv_, &picture_}) {
        if (result->Open()) continue;
        console_.Complain(result->Path(), kCannotWriteFile);
        opened = false;
    }
    if (opened) csv_.Write(CsvHeading(options_.files.size() > 1));
    return opened;
}

AnalyseRun::FileResult AnalyseRun::AnalyseFile(std::size_t index) {
    const std::string& file = options_.files[index];
    if (console_.IsCancelled()) return FileResult::kCancelled;
    const auto start = std::chrono::steady_clock::now();
    CkvoAudioFile audio;
    if (audio.OpenRead(file, kAudioCacheFrames, -1, -1) != kOk) return Fail(file, kCannotLoad);
    if (const char* reason = WhyRefused(audio)) return Fail(file, reason);
    CMelodyAnalyzer analyzer;
    if (analyzer.Attach(&audio) != kOk) return Fail(file, kCannotLoad);
    const AnalysisOutcome outcome = AnalyseWithProgress(index, analyzer);
    if (outcome == AnalysisOutcome::kCancelled) return FileResult::kCancelled;
    const std::optional<CacheUse> cache = CacheUseOf(outcome);
    if (!cache) return Fail(file, audio.GetSampleRate() >= kRateLimit ? kRateTooHigh : kCannotAnalyse);
    MelodyReport report = GatherReport(file, *cache, audio, analyzer);
    report.elapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    Publish(report);
    return FileResult::kDone;
}

AnalysisOutcome AnalyseRun::AnalyseWithProgress(std::size_t index, CMelodyAnalyzer& analyzer) {
    std::string label = "Analysing";
    const std::size_t count = options_.files.size();
    if (count > 1)
        label.append(" ").append(std::to_string(index + 1)).append(" of ").append(std::to_string(count));
    ProgressBar bar(console_.err, options_.quiet ? 0 : console_.ErrorColumns(), label);
    return AnalyseMelody(analyzer, options_.useCache, [&](std::int32_t percent) {
        bar.Show(percent);
        return !console_.IsCancelled();
    });
}

void AnalyseRun::Print(const std::string& text) {
    if (output_ == Written::kYes) output_ = console_.Write(text);
}

void AnalyseRun::Publish(const MelodyReport& report) {
    const bool several = options_.files.size() > 1;
    const bool isFirst = published_ == 0;
    if (options_.json) {
        Print(FormatJson(report));
    } else if (options_.csv) {
        if (isFirst) Print(CsvHeading(several));
        Print(FormatCsv(report, several));
    } else {
        if (!isFirst) Print("\n");
        Print(FormatTable(report));
    }
    if (json_.IsWanted()) json_.Write(FormatJson(report));
    if (csv_.IsWanted()) csv_.Write(FormatCsv(report, several));
    if (picture_.IsWanted()) picture_.Write(DrawMelody(report));
    ++published_;
}

bool AnalyseRun::CommitResults() {
    bool written = true;
    for (ResultFile* result : {&json_, &csv_, &picture_}) {
        if (result->Commit()) continue;
        console_.Complain(result->Path(), kCannotWriteFile);
        written = false;
    }
    return written;
}

} // namespace

std::string FindWrongUse(const AnalyseOptions& options) {
    if (options.json && options.csv) {
        return "--json and --csv both go to standard output; name a file for one: --json-file or --csv-file";
    }
    if (!options.pictureFile.empty() && options.files.size() > 1)
        return "--picture takes one recording at a time";
    const std::pair<const std::string&, std::string_view> results[] = {
        {options.jsonFile, ".json"}, {options.csvFile, ".csv"}, {options.pictureFile, ".svg"}};
    for (const auto& [path, ending] : results) {
        // A recording behind such an option is a slip (its file name was left out) that would cost the
        // recording.
        if (!path.empty() && !EndsWith(path, ending))
            return path + ": this name must end in " + std::string(ending);
        for (const std::string& file : options.files) {
            if (!path.empty() && AreTheSameFile(path, file)) return path + ": would replace the recording";
        }
    }
    return "";
}

int RunAnalyse(const AnalyseOptions& options, const Console& console) {
    return AnalyseRun(options, console).Run();
}

} // namespace sonorelle
