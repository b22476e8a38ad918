#include "cli/session.h"

#include "app/application.h"
#include "app/state_document.h"
#include "cli/console.h"
#include "cli/gather_report.h"
#include "formats/audio_file.h"
#include "platform/atomic_file_writer.h"
#include "platform/file_system.h"
#include "platform/regular_file.h"
#include "platform/result_codes.h"

#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace sonorelle {

namespace {

constexpr const char* kCannotReadDocument = "Could not read this file!";
constexpr const char* kNoSession = "This is no session!";
constexpr const char* kNoProgram = "This is no program!";

PlugInOptions OptionsOf(const HearingWish& wish) {
    PlugInOptions options;
    options.useCache = wish.useCache;
    return options;
}

// Of a recording that can be opened; 0 for another.
struct Probe {
    float sampleRate = 0;
    std::int32_t channels = 0;
};
Probe ProbeRecording(const std::string& path) {
    constexpr std::int32_t kReadNothing = 0;
    CkvoAudioFile audio;
    if (audio.OpenRead(path, kReadNothing, -1, -1) != kOk) return {};
    return {audio.GetSampleRate(), audio.GetNumChannels()};
}

// A tempo as sequencers write it: what a document holds of it has lost digits behind these.
double RoundTempo(double tempo) {
    constexpr double kThousandths = 1000;
    return std::round(tempo * kThousandths) / kThousandths;
}

// The host's tempo as a document tells it: by how the melody's stood to it when the beginning was last set.
double HostTempoOf(const CkvovirelaineApp& app) {
    const auto factor = static_cast<double>(app.GetTempoRescaleSyncFactor());
    const auto melodyTempo = static_cast<double>(app.GetMelodyTempo());
    return factor == 1 ? melodyTempo : RoundTempo(melodyTempo * factor);
}

// Sets the beginning anew, at its place, so that the document tells how the tempi stand now.
void AnchorTempo(CkvovirelaineApp& app) {
    CkvovirelainePlaybackSettings& panel = app.PlaybackPanel();
    const bool sync = panel.GetSyncTempo();
    panel.SetOffset(panel.GetOffset());
    panel.SetSyncTempo(true);
    app.OnPlaybackChanged();
    panel.ClearOffsetSet();
    if (sync) return;
    panel.SetSyncTempo(false);
    app.OnPlaybackChanged();
}

CacheUse CacheUseOf(const CkvovirelaineApp& app) {
    return app.WasCacheLoaded()    ? CacheUse::kLoaded
           : app.WasCacheWritten() ? CacheUse::kWritten
                                   : CacheUse::kNone;
}

} // namespace

bool IsRecording(const std::string& path) {
    const Probe probe = ProbeRecording(path);
    return probe.channels >= 1 && probe.channels <= CvirelainePlugIn::kMostChannels &&
           probe.sampleRate >= CvirelainePlugIn::kLowestSampleRate;
}

std::optional<std::string> ReadDocumentFile(const std::string& path) {
    CRegularFile file;
    if (!file.Open(path)) return std::nullopt;
    const std::int64_t length = file.Length();
    if (length > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
    std::string text(static_cast<std::size_t>(length), '\0');
    if (file.ReadAt(0, text.data(), text.size()) != text.size()) return std::nullopt;
    return text;
}

CommandLineSession::CommandLineSession(const Console& terminal, const HearingWish& hearingWish)
    : console(terminal), wish(hearingWish), toolkit(terminal), plugIn(&host, toolkit, OptionsOf(hearingWish)),
      start(std::chrono::steady_clock::now()) {
    if (wish.showProgress) toolkit.SetProgressLabel(ProgressLabel("Analysing", wish));
}

// The host takes on the recording's rate, so that nothing is resampled.
Hearing CommandLineSession::Load(const std::string& path) {
    start = std::chrono::steady_clock::now();
    recordingPath = path;
    toolkit.SetSubject(path);
    host.SetSampleRate(ProbeRecording(path).sampleRate);
    toolkit.TakeMessageCount();
    return TellOfFailure(plugIn.LoadAudioFile(path));
}

// The plug-in itself is silent of what the user did, and of an analysis that came to nothing.
Hearing CommandLineSession::TellOfFailure(std::int32_t result) {
    if (result == kOk) return Hearing::kDone;
    if (result == kRunFailed && console.IsCancelled()) return Hearing::kCancelled;
    if (toolkit.TakeMessageCount() == 0)
        console.Complain(recordingPath,
                         result == kRunFailed ? WhyNotAnalysed(host.GetSampleRate()) : kNoMemory);
    return Hearing::kFailed;
}

Hearing CommandLineSession::Restore(const std::string& documentPath, const std::string& recording) {
    start = std::chrono::steady_clock::now();
    const std::optional<std::string> document = ReadDocumentFile(documentPath);
    if (!document) {
        console.Complain(documentPath, kCannotReadDocument);
        return Hearing::kFailed;
    }
    const std::optional<std::string> named = ReadAudioFileName(*document);
    if (!named) {
        console.Complain(documentPath, kNoSession);
        return Hearing::kFailed;
    }
    const Probe there = ProbeRecording(*named);
    const bool isMissing = there.sampleRate <= 0;
    recordingPath = isMissing && !recording.empty() ? recording : *named;
    host.SetSampleRate(isMissing ? ProbeRecording(recordingPath).sampleRate : there.sampleRate);
    toolkit.SetSubject(recordingPath);
    toolkit.AnswerOpen(recording);
    toolkit.TakeMessageCount();
    plugIn.SetChunk(document->data(), static_cast<std::int32_t>(document->size()), false);
    toolkit.AnswerOpen({});
    if (!plugIn.IsLoaded()) {
        if (console.IsCancelled()) return Hearing::kCancelled;
        if (toolkit.TakeMessageCount() == 0)
            console.Complain(recordingPath, IsRecording(recordingPath) ? WhyNotRestored(FileNamePart(*named))
                                                                       : std::string(kCannotLoadText));
        return Hearing::kFailed;
    }
    TakeTempoOfDocument();
    return Hearing::kDone;
}

// Another name than the document's, or an analysis that came to nothing.
std::string CommandLineSession::WhyNotRestored(const std::string& name) {
    if (FileNamePart(recordingPath) != name) return "The session is one of a recording named " + name + "!";
    return WhyNotAnalysed(host.GetSampleRate());
}

// A document tells the melody's tempo and how it stood to the host's. Metre and tempo are then the host's
// own, as a sequencer would have kept them in its project.
void CommandLineSession::TakeTempoOfDocument() {
    constexpr double kLimit = 999;
    With([this](CkvovirelaineApp& app) {
        const double tempo = HostTempoOf(app);
        host.SetTempo(tempo > 0 && tempo < kLimit ? tempo : CommandLineHost::kUsualTempo);
        host.SetMetre(app.GetTimeSigNumerator(), app.GetTimeSigDenominator());
    });
    PassTransport();
}

void CommandLineSession::SetTempo(double quarterNotesPerMinute) {
    host.SetTempo(quarterNotesPerMinute);
    PassTransport();
}

void CommandLineSession::PassTransport() {
    float silence[2] = {};
    float* const outputs[] = {&silence[0], &silence[1], nullptr};
    plugIn.Process(nullptr, outputs, 1);
    host.Advance(1);
}

MelodyReport CommandLineSession::ReportMelody() {
    MelodyReport report;
    With([&](CkvovirelaineApp& app) {
        report = GatherReport(recordingPath, CacheUseOf(app), *app.AudioFile(), app.Analyzer());
    });
    report.elapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return report;
}

bool CommandLineSession::Save(const std::string& path, bool isProgram) {
    if (!isProgram)
        With([this](CkvovirelaineApp& app) {
            if (RoundTempo(HostTempoOf(app)) != RoundTempo(host.GetTempo())) AnchorTempo(app);
        });
    const void* data = nullptr;
    const std::int32_t size = plugIn.GetChunk(data, isProgram);
    CAtomicFileWriter writer;
    const bool written = size > 0 && writer.Open(path) &&
                         writer.Write(data, static_cast<std::size_t>(size)) && writer.Commit();
    if (!written) console.Complain(path, kCannotWriteFile);
    return written;
}

bool CommandLineSession::LoadProgram(const std::string& path) {
    const std::optional<std::string> document = ReadDocumentFile(path);
    if (!document) {
        console.Complain(path, kCannotReadDocument);
        return false;
    }
    if (ReadProgram(*document) == SavedPreset()) {
        console.Complain(path, kNoProgram);
        return false;
    }
    return plugIn.SetChunk(document->data(), static_cast<std::int32_t>(document->size()), true) != 0;
}

} // namespace sonorelle
