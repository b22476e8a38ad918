#include "cli/analyse_command.h"

#include "cli/console.h"
#include "cli/heard_recording.h"
#include "cli/melody_picture.h"
#include "cli/melody_report.h"
#include "cli/report_csv.h"
#include "cli/report_json.h"
#include "cli/report_table.h"
#include "cli/result_file.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

namespace sonorelle {

namespace {

bool EndsWith(std::string_view path, std::string_view lowerCaseEnding) {
    if (path.size() < lowerCaseEnding.size()) return false;
    return std::equal(
        lowerCaseEnding.begin(), lowerCaseEnding.end(),
        path.end() - static_cast<std::ptrdiff_t>(lowerCaseEnding.size()),
        [](char wanted, char c) { return wanted == std::tolower(static_cast<unsigned char>(c)); });
}

class AnalyseRun {
public:
    AnalyseRun(const AnalyseOptions& options, const Console& console)
        : options_(options), console_(console), json_(options.jsonFile), csv_(options.csvFile),
          picture_(options.pictureFile) {}

    int Run();

private:
    bool OpenResults();
    // False when the reader of standard output has left and no other result is wanted.
    bool SomebodyCares() const {
        return output_ != Written::kNobodyReads || json_.IsWanted() || csv_.IsWanted() || picture_.IsWanted();
    }
    Hearing AnalyseFile(std::size_t index);
    void Print(const std::string& text);
    void Publish(const MelodyReport& report);
    bool CommitResults();

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
        const Hearing result = AnalyseFile(i);
        if (result == Hearing::kCancelled) {
            console_.Complain(options_.files[i], kCancelledText);
            return kExitCancelled;
        }
        failed = failed || result == Hearing::kFailed;
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

Hearing AnalyseRun::AnalyseFile(std::size_t index) {
    if (console_.IsCancelled()) return Hearing::kCancelled;
    HeardRecording recording(options_.files[index]);
    if (!recording.Open(console_)) return Hearing::kFailed;
    const HearingWish wish{options_.useCache, !options_.quiet, index, options_.files.size()};
    const Hearing result = recording.Hear(wish, console_);
    if (result == Hearing::kDone) Publish(recording.Report());
    return result;
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
