// From a path to a session that can be played:
//   1. what was loaded goes, and the audio thread passes silence from here on;
//   2. the file is opened and checked; what cannot be used ends at the start-up screen, with a message;
//   3. a new application analyses it, while the toolkit's events run;
//   4. the host's tempo, the program and the toolbar's toggles are passed on, the parameters told to the
//   host;
//   5. the audio thread may play.
// GuiLock is held all the way, so that two loads never mix; FileLock only where the audio thread would see
// it.

#include "app/beat_grid.h"
#include "host/plugin_core.h"

#include "app/application.h"
#include "app/host_parameters.h"
#include "app/state_document.h"
#include "app/toolkit.h"
#include "host/interface_scope.h"
#include "platform/result_codes.h"

#include <new>
#include <utility>

namespace sonorelle {

namespace {

constexpr const char* kNotLoaded = "Could not load audio file!";
constexpr const char* kTooManyChannels = "Only mono and stereo audio files are supported!";
constexpr const char* kRateTooLow = "Samplerate below 11kHz not supported!";
constexpr const char* kOtherRate = "Samplerate of loaded file and host mismatch!";

} // namespace

std::int32_t CvirelainePlugIn::LoadAudioFile(const std::string& path) {
    const auto stillThere = alive;
    std::int32_t result = kOk;
    {
        const CallScope call(*this);
        const InterfaceScope scope(*this);
        result = RunExclusively([&] { return Load(path); });
    }
    if (stillThere->load(std::memory_order_relaxed)) TellUser();
    return result;
}

// A session that arrives meanwhile, from within the events, has the last word.
std::int32_t CvirelainePlugIn::RunExclusively(const std::function<std::int32_t()>& work) {
    if (loading) return kNothingThere;
    if (!IsAlive()) return kRunFailed;
    loading = true;
    std::int32_t result = kOutOfMemory;
    try {
        result = work();
        while (const Document next = std::exchange(queuedDocument, nullptr)) result = RestoreDocument(next);
    } catch (const std::bad_alloc&) {
        queuedDocument.reset();
        BecomeEmpty();
    }
    loading = false;
    return result;
}

std::int32_t CvirelainePlugIn::Load(const std::string& path) {
    // A session that still waits for its recording is given up only for another one.
    const Document waiting = IsLoaded() ? nullptr : KeptDocument();
    TearDown(waiting);
    {
        const SpinGuard guard(fileLock);
        audioPath = path;
    }
    const std::int32_t opened = OpenRecording(path);
    if (opened != kOk) {
        BecomeEmpty();
        return opened;
    }
    WarnOfOtherRate();
    MakeApplication(&audioFile);
    if (RunApplication() != kOk) {
        BecomeEmpty();
        return kRunFailed;
    }
    PassTempoOfHost();
    ConnectApplication();
    application->SetMelodyTempo(GetHostTempo());
    ArmPoll();
    application->PushUndo();
    ApplyCurrentProgram();
    AutomateAll();
    ActivateToolbar(true);
    application->SetFollowCursor(followCursor.load(std::memory_order_relaxed));
    application->SetSingleVoiceOutput(singleVoice.load(std::memory_order_relaxed));
    PublishLoaded(nullptr);
    return kOk;
}

std::int32_t CvirelainePlugIn::OpenRecording(const std::string& path) {
    if (audioFile.OpenRead(path, kAudioCacheFrames, -1, -1) != kOk) {
        ShowMessage(kErrorTitle, kNotLoaded);
        return kCannotOpen;
    }
    return CheckRecording(audioFile);
}

std::int32_t CvirelainePlugIn::CheckRecording(const CkvoAudioFile& audio) {
    if (audio.GetNumChannels() > kMostChannels) {
        ShowMessage(kErrorTitle, kTooManyChannels);
        return kBadArgument;
    }
    if (audio.GetSampleRate() < kLowestSampleRate) {
        ShowMessage(kErrorTitle, kRateTooLow);
        return kSampleRateTooLow;
    }
    return kOk;
}

// The recording is not resampled: it plays faster or slower, and sharper or flatter.
void CvirelainePlugIn::WarnOfOtherRate() {
    const float rate = HostSampleRate();
    if (rate > 0 && rate != audioFile.GetSampleRate()) ShowMessage(kWarningTitle, kOtherRate);
}

std::int32_t CvirelainePlugIn::RunApplication() {
    const bool shown = toolkit.IsInterfaceThread();
    if (shown) toolkit.ActivateMainWindow(false);
    const std::int32_t result = application->Run();
    if (shown) toolkit.ActivateMainWindow(true);
    return result;
}

void CvirelainePlugIn::PassTempoOfHost() {
    const VstTimeInfo* const told =
        host != nullptr ? host->GetTimeInfo(kVstTimeSigValid | kVstTempoValid) : nullptr;
    if (told == nullptr) {
        application->SetHostTempo(kStartTempo, kUsualMetre, kUsualMetre);
        return;
    }
    const VstTimeInfo time = *told;
    TakeHostTempo(time);
    application->SetHostTempo(GetHostTempo(), time.timeSigNumerator, time.timeSigDenominator);
}

void CvirelainePlugIn::ConnectApplication() {
    application->SetParameterChanged([this](std::int32_t index) { OnParameterChanged(index); });
    application->SetLoop(false);
}

// A strip was moved in the editor.
void CvirelainePlugIn::OnParameterChanged(std::int32_t index) {
    userChanged.store(true, std::memory_order_relaxed);
    if (host != nullptr) host->SetParameterAutomated(index, application->GetParameter(index));
}

void CvirelainePlugIn::ApplyCurrentProgram() { application->ApplyPreset(GetProgram()); }

void CvirelainePlugIn::AutomateAll() {
    if (host == nullptr) return;
    for (std::int32_t index = 0; index < kHostParameterCount; ++index)
        host->SetParameterAutomated(index, application->GetParameter(index));
}

void CvirelainePlugIn::ActivateToolbar(bool active) {
    editActive.store(active, std::memory_order_relaxed);
    saveActive.store(active, std::memory_order_relaxed);
    singleVoiceActive.store(active, std::memory_order_relaxed);
}

// From the next block on the audio thread plays. `keep`: what GetChunk is to hand out nevertheless.
void CvirelainePlugIn::PublishLoaded(Document keep) {
    userChanged.store(false, std::memory_order_relaxed);
    {
        const SpinGuard guard(fileLock);
        keptDocument.swap(keep);
        isLoaded = true;
        // A host may have chosen another one meanwhile.
        if (application->GetCurrentPreset() != GetProgram()) application->ApplyPreset(GetProgram());
    }
    toolkit.RequestRedraw();
}

bool CvirelainePlugIn::IsLoaded() const {
    const SpinGuard guard(fileLock);
    return isLoaded;
}

std::string CvirelainePlugIn::GetAudioPath() const {
    const SpinGuard guard(fileLock);
    return audioPath;
}

void CvirelainePlugIn::DropFile(const std::string& path) {
    constexpr std::int32_t kReadNothing = 0;
    {
        CkvoAudioFile probe;
        if (probe.OpenRead(path, kReadNothing, -1, -1) != kOk) return;
    }
    LoadAudioFile(path);
}

void CvirelainePlugIn::DropText(std::int32_t mode, const std::string& text) {
    if (mode != kDroppedText) return;
    const std::optional<std::string> named = ReadDroppedFileName(text);
    if (!named) {
        DropFile(text);
    } else if (!named->empty()) {
        LoadAudioFile(*named);
    }
}

} // namespace sonorelle
