// The documents that hosts keep.
//
// Hosts save whatever GetChunk gives them over what they had. So a document that could not be restored, or
// not whole, is kept and handed out as it came in:
//   - while it is being restored;
//   - while its recording is not to be found;
//   - while its arrangement does not fit, until the user has changed something himself.

#include "host/plugin_core.h"

#include "app/application.h"
#include "app/state_document.h"
#include "app/toolkit.h"
#include "host/interface_scope.h"
#include "platform/file_system.h"
#include "platform/result_codes.h"

#include <limits>
#include <new>
#include <utility>

namespace sonorelle {

namespace {

constexpr const char* kDoesNotFit = "The saved arrangement does not fit this recording's analysis!";
constexpr const char* kNewerVersion = "The saved arrangement comes from a newer version!";
constexpr const char* kLocateTitle = "Please Locate Audio File: ";
constexpr const char* kRecordingFilter =
    "All Audio Files\t*.{wav,aif,aiff}\nWAV Files\t*.wav\nAIFF Files\t*.{aif,aiff}";

std::int32_t SizeOf(const std::string& document) {
    constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
    return static_cast<std::int32_t>(document.size() > kMost ? 0 : document.size());
}

// The host's memory is its own again when the call returns. Null where there is no room.
std::shared_ptr<const std::string> CopyOf(const void* data, std::int32_t size) {
    try {
        return std::make_shared<const std::string>(DocumentText(data, size));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace

// --- Saving ---

std::int32_t CvirelainePlugIn::GetChunk(const void*& data, bool isPreset) {
    data = nullptr;
    const CallScope call(*this);
    if (!IsLoaded()) return isPreset ? 0 : HandOut(KeptDocument(), data);
    const InterfaceScope scope(*this);
    if (!IsLoaded()) return isPreset ? 0 : HandOut(KeptDocument(), data);
    if (isPreset)
        return HandOut(std::make_shared<const std::string>(application->SavePreset(GetProgram())), data);
    return HandOut(SaveSession(), data);
}

// A copy of our own: the host may read it while the application is replaced.
std::int32_t CvirelainePlugIn::HandOut(Document document, const void*& data) {
    const void* const memory = document ? document->data() : nullptr;
    const std::int32_t size = document ? SizeOf(*document) : 0;
    {
        const SpinGuard guard(fileLock);
        handedOut.swap(document);
    }
    data = size > 0 ? memory : nullptr;
    return size;
}

CvirelainePlugIn::Document CvirelainePlugIn::KeptDocument() const {
    const SpinGuard guard(fileLock);
    return keptDocument;
}

CvirelainePlugIn::Document CvirelainePlugIn::SaveSession() {
    Document kept = KeptDocument();
    if (kept && refusedState && !userChanged.load(std::memory_order_relaxed) &&
        SameUserState(*refusedState, ReadUserState())) {
        return kept;
    }
    refusedState.reset();
    kept.reset();
    {
        const SpinGuard guard(fileLock);
        keptDocument.swap(kept);
    }
    const void* data = nullptr;
    const std::int32_t size = application->SaveState(data);
    auto document = std::make_shared<const std::string>(DocumentText(data, size));
    application->ReleaseStateBuffer();
    return document;
}

// Saving writes the strips into the current program; this look at the session must not.
UserState CvirelainePlugIn::ReadUserState() {
    const std::int32_t program = application->GetCurrentPreset();
    const VoiceSettingsOfAll voices = presets.GetVoices(program);
    const void* data = nullptr;
    const std::int32_t size = application->SaveState(data);
    UserState state =
        UserStateOf(DocumentText(data, size), application->Driver().GetAnalysedNoteCount(), HostSampleRate());
    application->ReleaseStateBuffer();
    presets.SetVoices(program, voices);
    return state;
}

// --- Restoring ---

std::int32_t CvirelainePlugIn::SetChunk(const void* data, std::int32_t size, bool isPreset) {
    if (data == nullptr || size < 1) return 0;
    const auto stillThere = alive;
    std::int32_t taken = 0;
    {
        const CallScope call(*this);
        taken = isPreset ? LoadProgram(data, size) : Restore(data, size);
    }
    if (stillThere->load(std::memory_order_relaxed)) TellUser();
    return taken;
}

std::int32_t CvirelainePlugIn::LoadProgram(const void* data, std::int32_t size) {
    if (!IsLoaded()) return 0;
    const InterfaceScope scope(*this);
    if (!IsLoaded()) return 0;
    application->LoadPreset(GetProgram(), data, size);
    userChanged.store(true, std::memory_order_relaxed);
    AutomateAll();
    return 1;
}

std::int32_t CvirelainePlugIn::Restore(const void* data, std::int32_t size) {
    const Document document = CopyOf(data, size);
    if (!document) return 0;
    const InterfaceScope scope(*this);
    if (loading) { // called by the events of that load, which ends now
        queuedDocument = document;
        Document keep = document;
        {
            const SpinGuard guard(fileLock);
            keptDocument.swap(keep);
        }
        if (application) application->CancelAnalysis();
        return 1;
    }
    return RunExclusively([&] { return RestoreDocument(document); }) == kOk ? 1 : 0;
}

std::int32_t CvirelainePlugIn::RestoreDocument(const Document& document) {
    {
        const SpinGuard guard(pendingLock);
        question.reset();
    }
    const std::optional<std::string> path = ReadAudioFileName(*document);
    TearDown(path ? document : nullptr);
    {
        const SpinGuard guard(fileLock);
        audioPath = path.value_or(std::string());
    }
    if (!path) {
        BecomeEmpty();
        return kCannotOpen;
    }
    CkvoAudioFile probe;
    constexpr std::int32_t kReadNothing = 0;
    const bool found = probe.OpenRead(*path, kReadNothing, -1, -1) == kOk;
    if (!found) {
        {
            const SpinGuard guard(pendingLock);
            question = document;
        }
        return FinishRestore(document, kCannotOpen);
    }
    if (const std::int32_t fit = CheckRecording(probe); fit != kOk) return FinishRestore(document, fit);
    probe.Close();
    MakeRestoring();
    return FinishRestore(document, application->LoadState(document->data(), SizeOf(*document), true));
}

// The user has told where the recording is now: any folder will do, but the file's name must be the same.
std::int32_t CvirelainePlugIn::RestoreLocated(const Document& document, const std::string& path) {
    if (KeptDocument() != document || IsLoaded()) return kNothingThere;
    TearDown(document);
    if (audioFile.OpenRead(path, kAudioCacheFrames, -1, -1) != kOk)
        return FinishRestore(document, kCannotOpen);
    if (const std::int32_t fit = CheckRecording(audioFile); fit != kOk) return FinishRestore(document, fit);
    MakeRestoring();
    return FinishRestore(document, application->LoadState(document->data(), SizeOf(*document), false));
}

std::int32_t CvirelainePlugIn::FinishRestore(const Document& document, std::int32_t result) {
    if (result != kOk) {
        {
            const SpinGuard guard(fileLock);
            audioPath.clear();
        }
        BecomeEmpty();
        return result;
    }
    TakeProgramOfSession();
    ConnectApplication();
    ArmPoll();
    ActivateToolbar(true);
    singleVoice.store(application->GetSingleVoiceOutput(), std::memory_order_relaxed);
    application->SetFollowCursor(followCursor.load(std::memory_order_relaxed));
    {
        const SpinGuard guard(fileLock);
        audioPath = audioFile.GetPath();
    }
    const auto refusal = application->GetStateRefusal();
    const bool whole = refusal == CkvovirelaineApp::StateRefusal::kNone;
    if (!whole) {
        PassTempoOfHost(); // as the first block would, so that it changes nothing
        refusedState = ReadUserState();
        ShowMessage(kWarningTitle,
                    refusal == CkvovirelaineApp::StateRefusal::kNewerVersion ? kNewerVersion : kDoesNotFit);
    }
    PublishLoaded(whole ? nullptr : document);
    return kOk;
}

// Where nobody has chosen a program, that of the session goes on: its strips would else be saved into
// another.
void CvirelainePlugIn::TakeProgramOfSession() {
    std::int32_t untouched = kDefaultPreset;
    currentProgram.compare_exchange_strong(untouched, application->GetCurrentPreset(),
                                           std::memory_order_relaxed);
}

// --- A recording that is not where it was ---

CvirelainePlugIn::Document CvirelainePlugIn::TakeQuestion() {
    const SpinGuard guard(pendingLock);
    return std::exchange(question, nullptr);
}

// Asks once for each restore. False when there is nothing to ask, and when the dialog has outlasted the
// plug-in. No lock is held while the user thinks.
bool CvirelainePlugIn::AskForMissingRecording() {
    const Document document = TakeQuestion();
    if (!document) return false;
    if (KeptDocument() != document || IsLoaded()) return true; // it has come up elsewhere
    const auto stillThere = alive;
    CkvoToolkit& shower = toolkit;
    const std::string missing = FileNamePart(ReadAudioFileName(*document).value_or(std::string()));
    shower.ActivateMainWindow(false);
    const std::string path = shower.ChooseFileToOpen(kLocateTitle + missing, kRecordingFilter);
    shower.ActivateMainWindow(true);
    if (!stillThere->load(std::memory_order_relaxed)) return false;
    if (path.empty()) return true;
    const InterfaceScope scope(*this);
    RunExclusively([&] { return RestoreLocated(document, path); });
    return true;
}

// Asks for a recording to load; here because it is the same question.
bool CvirelainePlugIn::PressLoad() {
    if (HoldsGuiLock() && loading) return false;
    const auto stillThere = alive;
    CkvoToolkit& shower = toolkit;
    shower.ActivateMainWindow(false);
    const std::string path = shower.ChooseFileToOpen("Open Audio File", kRecordingFilter);
    shower.ActivateMainWindow(true);
    if (!stillThere->load(std::memory_order_relaxed) || path.empty()) return false;
    return LoadAudioFile(path) == kOk;
}

} // namespace sonorelle
