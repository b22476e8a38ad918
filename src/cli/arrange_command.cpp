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
#include "cli/live_playing.h"
#include "cli/playing_settings.h"
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
constexpr const char* kTooLong = "At this speed the sound would be longer than a WAV file can be!";
constexpr const char* kCannotRender = "Could not render the voices!";
constexpr double kWholePercent = 100;

class ArrangeRun {
public:
    ArrangeRun(const ArrangeOptions& options, const ArrangementSettings& settings,
               const PlayingSettings& playing, const Console& console)
        : options_(options), settings_(settings), playing_(playing), console_(console) {}

    int Run();

private:
    Hearing ArrangeFile(std::size_t index);
    Hearing ArrangeState();
    Hearing ArrangeMelody(CommandLineSession& session, const ArrangementSettings& settings,
                          const ArrangementFiles& files);
    bool PrepareFolder(const ArrangementFiles& files, const ArrangementSettings& settings);
    bool Adjust(CommandLineSession& session, ArrangementSettings& settings);
    bool SaveDocuments(CommandLineSession& session);
    bool MakeFolder();
    bool CanWriteResults(const ArrangementFiles& files, const ArrangementSettings& settings);
    Hearing WriteSound(CommandLineSession& session, Arranger& arranger, ArrangementReport& report,
                       const ArrangementFiles& files);
    Hearing PlaySound(CommandLineSession& session, Arranger& arranger, ArrangementReport& report,
                      const ArrangementFiles& files);
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
    const PlayingSettings& playing_;
    const Console& console_;
    bool wrongUse_ = false;          // found only when the session stood
    std::size_t printed_ = 0;        // arrangements
    Written output_ = Written::kYes; // what became of standard output
};

// Goes on when nobody reads standard output: the files are what the user wants.
int ArrangeRun::Run() {
    bool failed = false;
    const std::size_t count = options_.state ? 1 : options_.files.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Hearing result = options_.state ? ArrangeState() : ArrangeFile(i);
        if (wrongUse_) return kExitWrongUse;
        if (result == Hearing::kCancelled) {
            console_.Complain(options_.files.empty() ? *options_.state : options_.files[i], kCancelledText);
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
    const ArrangementFiles files(options_.folder, file);
    if (!PrepareFolder(files, settings_)) return Hearing::kFailed;
    if (const Hearing heard = session.Load(file); heard != Hearing::kDone) return heard;
    SetUpArrangement(session, settings_);
    ArrangementSettings settings = settings_;
    if (options_.program && !Adjust(session, settings)) return Hearing::kFailed;
    return ArrangeMelody(session, settings, files);
}

// What a session says comes first, and the options depart from it.
Hearing ArrangeRun::ArrangeState() {
    if (console_.IsCancelled()) return Hearing::kCancelled;
    CommandLineSession session(console_, {options_.useCache, !options_.quiet, 0, 1});
    const std::string recording = options_.files.empty() ? std::string() : options_.files.front();
    if (const Hearing heard = session.Restore(*options_.state, recording); heard != Hearing::kDone)
        return heard;
    ArrangementSettings settings;
    if (!Adjust(session, settings)) return Hearing::kFailed;
    if (const std::string wrong = FindWrongPlaces(options_, {session.RecordingPath()}, settings);
        !wrong.empty())
        return wrongUse_ = !Fail("", wrong.c_str()), Hearing::kFailed;
    const ArrangementFiles files(options_.folder, session.RecordingPath());
    if (!PrepareFolder(files, settings)) return Hearing::kFailed;
    return ArrangeMelody(session, settings, files);
}

// The program, then the options. `settings`: as the session stands afterwards.
bool ArrangeRun::Adjust(CommandLineSession& session, ArrangementSettings& settings) {
    if (options_.preset)
        if (const auto preset = FindPreset(*options_.preset)) session.PlugIn().SetProgram(*preset);
    if (options_.program && !session.LoadProgram(*options_.program)) return false;
    const ArrangementSettings present = PresentSettings(session);
    settings = present;
    if (const std::string wrong = ReadSettings(options_, settings); !wrong.empty()) {
        wrongUse_ = true;
        return Fail("", wrong.c_str());
    }
    ChangeSettings(session, present, settings);
    return true;
}

// The sound comes first, since it takes the time in which the user may cancel: until it is there, nothing is.
Hearing ArrangeRun::ArrangeMelody(CommandLineSession& session, const ArrangementSettings& settings,
                                  const ArrangementFiles& files) {
    ResultFile picture(files.picture);
    picture.Open();
    Arranger arranger(session, settings);
    ArrangementReport report = arranger.Report();
    const Hearing sung = playing_.blocks ? PlaySound(session, arranger, report, files)
                                         : WriteSound(session, arranger, report, files);
    if (sung != Hearing::kDone) return sung;
    if (!WriteNotes(arranger, report, files, picture) || !SaveDocuments(session)) return Hearing::kFailed;
    FindOldFiles(report, files);
    Print(report);
    return Hearing::kDone;
}

bool ArrangeRun::PrepareFolder(const ArrangementFiles& files, const ArrangementSettings& settings) {
    return MakeFolder() && CanWriteResults(files, settings);
}

bool ArrangeRun::SaveDocuments(CommandLineSession& session) {
    return (!options_.saveState || session.SaveState(*options_.saveState)) &&
           (!options_.saveProgram || session.SaveProgram(*options_.saveProgram));
}

bool ArrangeRun::MakeFolder() {
    std::error_code error;
    std::filesystem::create_directories(options_.folder, error);
    if (std::filesystem::is_directory(options_.folder, error)) return true;
    return Fail(options_.folder, kCannotMakeFolder);
}

// A result that cannot be written is known before the work is done.
bool ArrangeRun::CanWriteResults(const ArrangementFiles& files, const ArrangementSettings& settings) {
    std::vector<std::string> paths = files.Wanted(settings, options_.stems);
    for (const std::optional<std::string>* document : {&options_.saveState, &options_.saveProgram})
        if (*document) paths.push_back(**document);
    for (const std::string& path : paths)
        if (!ResultFile(path).Open()) return Fail(path, kCannotWriteFile);
    return true;
}

Hearing ArrangeRun::WriteSound(CommandLineSession& session, Arranger& arranger, ArrangementReport& report,
                               const ArrangementFiles& files) {
    const HearingWish& wish = session.Wish();
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

// Keys change notes: the report is made anew.
Hearing ArrangeRun::PlaySound(CommandLineSession& session, Arranger& arranger, ArrangementReport& report,
                              const ArrangementFiles& files) {
    if (!FitsIntoSoundFile(report.settings)) {
        Fail(files.mix, kTooLong);
        return Hearing::kFailed;
    }
    const HearingWish& wish = session.Wish();
    ProgressBar bar(console_.err, wish.showProgress ? console_.ErrorColumns() : 0,
                    ProgressLabel("Playing", wish));
    const PlayedSound played = PlayIntoFile(session, playing_, files.mix, [&](double share) {
        bar.Show(TruncateToI32(share * kWholePercent));
        return !console_.IsCancelled();
    });
    bar.Clear();
    if (playing_.record) report = arranger.Report();
    report.limitedFrames = played.limitedFrames;
    report.files.push_back(files.mix);
    return TellOfSound(played.result, files.mix);
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

int RunArrange(const ArrangeOptions& options, const ArrangementSettings& settings,
               const PlayingSettings& playing, const Console& console) {
    if (options.list) return console.ExitCodeOf(console.Write(FormatChoices()));
    return ArrangeRun(options, settings, playing, console).Run();
}

} // namespace sonorelle
