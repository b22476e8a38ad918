#include "cli/arrange_command.h"

#include "cli/arrangement_files.h"
#include "cli/arrangement_json.h"
#include "cli/arrangement_names.h"
#include "cli/arrangement_picture.h"
#include "cli/arrangement_setup.h"
#include "cli/arrangement_sound.h"
#include "cli/arrangement_summary.h"
#include "cli/arranger.h"
#include "cli/console.h"
#include "cli/progress_bar.h"
#include "cli/result_file.h"
#include "cli/session.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace sonorelle {

namespace {

constexpr const char* kCannotMakeFolder = "Could not make this folder!";
constexpr const char* kNoMemory = "Not enough memory!";
constexpr const char* kTooLong = "At this speed the sound would be longer than a WAV file can be!";
constexpr const char* kCannotRender = "Could not render the voices!";
constexpr double kWholePercent = 100;

class ArrangeRun {
public:
    ArrangeRun(const ArrangeOptions& options, const ArrangementSettings& settings, const Console& console)
        : options_(options), settings_(settings), console_(console) {}

    int Run();

private:
    Hearing ArrangeFile(std::size_t index);
    Hearing ArrangeMelody(CommandLineSession& session, const ArrangementFiles& files, ResultFile& picture);
    bool MakeFolder();
    bool CanWriteResults(const ArrangementFiles& files);
    Hearing WriteSound(Arranger& arranger, ArrangementReport& report, const ArrangementFiles& files,
                       const HearingWish& wish);
    Hearing TellOfSound(std::int32_t result, const std::string& mix);
    bool WriteNotes(Arranger& arranger, ArrangementReport& report, const ArrangementFiles& files,
                    ResultFile& picture);
    void FindOldFiles(ArrangementReport& report, const ArrangementFiles& files);
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
    CommandLineSession session(console_, {options_.useCache, !options_.quiet, index, options_.files.size()});
    if (!IsRecording(file)) return session.Load(file); // which tells why not
    if (!MakeFolder()) return Hearing::kFailed;
    const ArrangementFiles files(options_.folder, file);
    ResultFile picture(files.picture);
    if (!CanWriteResults(files) || !picture.Open()) return Hearing::kFailed;
    if (const Hearing heard = session.Load(file); heard != Hearing::kDone) return heard;
    SetUpArrangement(session, settings_);
    return ArrangeMelody(session, files, picture);
}

// The sound comes first, since it takes the time in which the user may cancel: until it is there, nothing is.
Hearing ArrangeRun::ArrangeMelody(CommandLineSession& session, const ArrangementFiles& files,
                                  ResultFile& picture) {
    Arranger arranger(session, settings_);
    ArrangementReport report = arranger.Report();
    const Hearing sung = WriteSound(arranger, report, files, session.Wish());
    if (sung != Hearing::kDone) return sung;
    if (!WriteNotes(arranger, report, files, picture)) return Hearing::kFailed;
    FindOldFiles(report, files);
    Print(report);
    return Hearing::kDone;
}

bool ArrangeRun::MakeFolder() {
    std::error_code error;
    std::filesystem::create_directories(options_.folder, error);
    if (std::filesystem::is_directory(options_.folder, error)) return true;
    return Fail(options_.folder, kCannotMakeFolder);
}

// A result that cannot be written is known before the work is done.
bool ArrangeRun::CanWriteResults(const ArrangementFiles& files) {
    for (const std::string& path : files.Wanted(settings_, options_.stems))
        if (!ResultFile(path).Open()) return Fail(path, kCannotWriteFile);
    return true;
}

Hearing ArrangeRun::WriteSound(Arranger& arranger, ArrangementReport& report, const ArrangementFiles& files,
                               const HearingWish& wish) {
    if (!FitsIntoSoundFile(report.settings)) {
        Fail(files.mix, kTooLong);
        return Hearing::kFailed;
    }
    std::vector<AudioExportFile> sounds = {{files.mix, CAudioExport::kAllVoices}};
    for (std::int32_t voice = 0; options_.stems && voice < report.voiceCount; ++voice)
        sounds.push_back({files.stems[static_cast<std::size_t>(voice)], voice});
    ProgressBar bar(console_.err, wish.showProgress ? console_.ErrorColumns() : 0,
                    ProgressLabel("Rendering", wish));
    const std::int32_t result = arranger.WriteSound(report, sounds, [&](double share) {
        bar.Show(TruncateToI32(share * kWholePercent));
        return !console_.IsCancelled();
    });
    bar.Clear();
    for (const AudioExportFile& sound : sounds) report.files.push_back(sound.path);
    return TellOfSound(result, files.mix);
}

Hearing ArrangeRun::TellOfSound(std::int32_t result, const std::string& mix) {
    if (result == kOk) return Hearing::kDone;
    if (result == CAudioExport::kCancelled) return Hearing::kCancelled;
    Fail(mix, result == kCannotWrite ? kCannotWriteFile : result == kOutOfMemory ? kNoMemory : kCannotRender);
    return Hearing::kFailed;
}

bool ArrangeRun::WriteNotes(Arranger& arranger, ArrangementReport& report, const ArrangementFiles& files,
                            ResultFile& picture) {
    picture.Write(DrawArrangement(report, options_.smallPicture));
    if (!arranger.WriteVoices(files.voices)) return Fail(files.voices, kCannotWriteFile);
    report.files.push_back(files.voices);
    if (report.hasChords) {
        if (!arranger.WriteChords(files.chords)) return Fail(files.chords, kCannotWriteFile);
        report.files.push_back(files.chords);
    }
    if (!picture.Commit()) return Fail(files.picture, kCannotWriteFile);
    report.files.push_back(files.picture);
    return true;
}

// An earlier run may have left results that this one does not replace, such as stems. They are the user's and
// stay, but do not belong to the new ones.
void ArrangeRun::FindOldFiles(ArrangementReport& report, const ArrangementFiles& files) {
    for (const std::string& path : files.All()) {
        std::error_code ignored;
        const bool isNew = std::find(report.files.begin(), report.files.end(), path) != report.files.end();
        if (!isNew && std::filesystem::exists(path, ignored)) report.oldFiles.push_back(path);
    }
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
