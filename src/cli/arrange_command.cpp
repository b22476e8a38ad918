#include "cli/arrange_command.h"

#include "cli/arrangement_files.h"
#include "cli/arrangement_json.h"
#include "cli/arrangement_names.h"
#include "cli/arrangement_picture.h"
#include "cli/arrangement_summary.h"
#include "cli/arranger.h"
#include "cli/console.h"
#include "cli/heard_recording.h"
#include "cli/result_file.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace sonorelle {

namespace {

constexpr const char* kCannotMakeFolder = "Could not make this folder!";
constexpr const char* kNoMemory = "Not enough memory!";

class ArrangeRun {
public:
    ArrangeRun(const ArrangeOptions& options, const ArrangementSettings& settings, const Console& console)
        : options_(options), settings_(settings), console_(console) {}

    int Run();

private:
    Hearing ArrangeFile(std::size_t index);
    bool MakeFolder();
    bool WriteResults(Arranger& arranger, ArrangementReport& report, const ArrangementFiles& files,
                      ResultFile& picture);
    void Print(const ArrangementReport& report);
    bool Fail(const std::string& name, const char* text) {
        console_.Complain(name, text);
        return false;
    }

    const ArrangeOptions& options_;
    const ArrangementSettings& settings_;
    const Console& console_;
    std::size_t printed_ = 0;        // arrangements
    Written output_ = Written::kYes; // what became of standard output
};

// Goes on when nobody reads standard output: the files are what the user wants.
int ArrangeRun::Run() {
    bool failed = false;
    for (std::size_t i = 0; i < options_.files.size(); ++i) {
        const Hearing result = ArrangeFile(i);
        if (result == Hearing::kCancelled) {
            console_.Complain(options_.files[i], kCancelledText);
            return kExitCancelled;
        }
        failed = failed || result == Hearing::kFailed;
    }
    const int outputCode = console_.ExitCodeOf(output_);
    return failed ? kExitFailed : outputCode;
}

Hearing ArrangeRun::ArrangeFile(std::size_t index) {
    if (console_.IsCancelled()) return Hearing::kCancelled;
    const std::string& file = options_.files[index];
    HeardRecording recording(file);
    if (!recording.Open(console_) || !MakeFolder()) return Hearing::kFailed;
    const ArrangementFiles files(options_.folder, file);
    ResultFile picture(files.picture); // a folder that cannot be written is known before the work is done
    if (!picture.Open()) {
        console_.Complain(files.picture, kCannotWriteFile);
        return Hearing::kFailed;
    }
    const HearingWish wish{options_.useCache, !options_.quiet, index, options_.files.size()};
    const Hearing heard = recording.Hear(wish, console_);
    if (heard != Hearing::kDone) return heard;
    Arranger arranger(recording.GetAnalyzer());
    if (!arranger.Arrange(settings_)) {
        console_.Complain(file, kNoMemory);
        return Hearing::kFailed;
    }
    if (console_.IsCancelled()) return Hearing::kCancelled;
    ArrangementReport report = arranger.Report(recording.Report());
    if (!WriteResults(arranger, report, files, picture)) return Hearing::kFailed;
    Print(report);
    return Hearing::kDone;
}

bool ArrangeRun::MakeFolder() {
    std::error_code error;
    std::filesystem::create_directories(options_.folder, error);
    if (std::filesystem::is_directory(options_.folder, error)) return true;
    return Fail(options_.folder, kCannotMakeFolder);
}

bool ArrangeRun::WriteResults(Arranger& arranger, ArrangementReport& report, const ArrangementFiles& files,
                              ResultFile& picture) {
    picture.Write(DrawArrangement(report, options_.smallPicture));
    if (!arranger.WriteVoices(report, files.voices)) return Fail(files.voices, kCannotWriteFile);
    report.files.push_back(files.voices);
    if (report.hasChords) {
        if (!arranger.WriteChords(report, files.chords)) return Fail(files.chords, kCannotWriteFile);
        report.files.push_back(files.chords);
    }
    if (!picture.Commit()) return Fail(files.picture, kCannotWriteFile);
    report.files.push_back(files.picture);
    return true;
}

void ArrangeRun::Print(const ArrangementReport& report) {
    std::string text = printed_ > 0 && !options_.json ? "\n" : "";
    text += options_.json ? FormatArrangementJson(report) : FormatSummary(report);
    if (output_ == Written::kYes) output_ = console_.Write(text);
    ++printed_;
}

} // namespace

int RunArrange(const ArrangeOptions& options, const ArrangementSettings& settings, const Console& console) {
    if (options.list) return console.ExitCodeOf(console.Write(FormatChoices()));
    return ArrangeRun(options, settings, console).Run();
}

} // namespace sonorelle
