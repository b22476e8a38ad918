// The interface's side: the event pass, the timer, the toolbar, and what the user is told.

#include "host/plugin_core.h"

#include "app/application.h"
#include "app/toolkit.h"
#include "host/interface_scope.h"
#include "platform/result_codes.h"

#include <cstdio>
#include <utility>

namespace sonorelle {

namespace {

void OnPollTimer(void* plugIn) { static_cast<CvirelainePlugIn*>(plugIn)->PollApplication(); }

struct Version {
    int major = 1;
    int minor = 5;
    int patch = 5;
    int build = 112;
};
constexpr Version kVersion;

} // namespace

// --- Events ---

// Never waits for a load on another thread: the host's window stays alive.
bool CvirelainePlugIn::RunEventPass() {
    if (!toolkit.IsInterfaceThread() || HoldsGuiLock()) return false;
    TellUser();
    if (!guiLock.TryEnterCriticalSection()) return false;
    {
        const InterfaceScope scope(*this, std::adopt_lock);
        if (pollWanted.load(std::memory_order_relaxed) && !pollArmed.load(std::memory_order_relaxed))
            ArmPoll();
        RebuildFaces();
        toolkit.RunEvents();
    }
    TellUser();
    return true;
}

void CvirelainePlugIn::RebuildFaces() {
    if (!application || !panelsNeedRebuild.exchange(false, std::memory_order_relaxed)) return;
    if (faces) faces(application.get());
    toolkit.RequestRedraw();
}

void CvirelainePlugIn::SetFaceCallback(FaceCallback callback) {
    const InterfaceScope scope(*this);
    faces = std::move(callback);
    panelsNeedRebuild.store(true, std::memory_order_relaxed);
}

bool CvirelainePlugIn::HoldsGuiLock() const {
    return guiHolder.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

// Timers are the interface thread's; after a restore elsewhere the next pass sets it.
void CvirelainePlugIn::ArmPoll() {
    pollWanted.store(true, std::memory_order_relaxed);
    if (!toolkit.IsInterfaceThread()) return;
    toolkit.SetTimer(CkvovirelaineApp::kPollSeconds, OnPollTimer, this);
    pollArmed.store(true, std::memory_order_relaxed);
}

void CvirelainePlugIn::DisarmPoll() {
    pollWanted.store(false, std::memory_order_relaxed);
    if (!toolkit.IsInterfaceThread()) return; // a timer that fires finds that it is not wanted
    ForgetTimer();
}

void CvirelainePlugIn::ForgetTimer() {
    toolkit.RemoveTimer(OnPollTimer, this);
    pollArmed.store(false, std::memory_order_relaxed);
}

void CvirelainePlugIn::PollApplication() {
    pollArmed.store(false, std::memory_order_relaxed);
    if (!pollWanted.load(std::memory_order_relaxed)) return;
    if (guiLock.TryEnterCriticalSection()) {
        const InterfaceScope scope(*this, std::adopt_lock);
        if (application && !loading) application->Poll();
    }
    ArmPoll();
}

// --- What the user is told ---

void CvirelainePlugIn::ShowMessage(const std::string& title, const std::string& text) {
    {
        const SpinGuard guard(pendingLock);
        messages.push_back({title, text});
    }
    TellUser();
}

std::optional<CvirelainePlugIn::Message> CvirelainePlugIn::TakeMessage() {
    const SpinGuard guard(pendingLock);
    if (messages.empty()) return std::nullopt;
    Message message = std::move(messages.front());
    messages.pop_front();
    return message;
}

// Outside of GuiLock: a window that waits for the user keeps nobody else waiting. What is said from within a
// load is said when it has ended.
void CvirelainePlugIn::TellUser() {
    if (!toolkit.IsInterfaceThread() || HoldsGuiLock()) return;
    const auto stillThere = alive;
    do {
        while (const std::optional<Message> message = TakeMessage()) {
            toolkit.ShowMessage(message->title, message->text);
            if (!stillThere->load(std::memory_order_relaxed)) return;
        }
    } while (AskForMissingRecording());
}

// --- The toolbar ---

ToolbarState CvirelainePlugIn::GetToolbar() const {
    ToolbarState state;
    state.editActive = editActive.load(std::memory_order_relaxed);
    state.saveActive = saveActive.load(std::memory_order_relaxed);
    state.singleVoiceActive = singleVoiceActive.load(std::memory_order_relaxed);
    state.cutMode = cutMode.load(std::memory_order_relaxed);
    state.followCursor = followCursor.load(std::memory_order_relaxed);
    state.singleVoice = singleVoice.load(std::memory_order_relaxed);
    return state;
}

// False, and nothing happens, without a recording: the buttons do not answer then.
bool CvirelainePlugIn::WithRecording(const std::function<void(CkvovirelaineApp&)>& work) {
    {
        const InterfaceScope scope(*this);
        if (loading || !IsLoaded()) return false;
        work(*application);
    }
    TellUser();
    return true;
}

bool CvirelainePlugIn::PressSave() {
    ExportQuestion toAsk;
    const auto stillThere = alive;
    if (!WithRecording([&](CkvovirelaineApp& app) { toAsk = app.MakeExportQuestion(); })) return false;
    if (!stillThere->load(std::memory_order_relaxed)) return true;
    // Outside of GuiLock: the host may save its project from another thread while the user thinks.
    const std::optional<ExportWish> wish = AskForExport(toolkit, toAsk);
    if (!wish || !stillThere->load(std::memory_order_relaxed)) return true;
    std::int32_t result = kOk;
    WithRecording([&](CkvovirelaineApp& app) { result = app.Export(*wish); });
    if (stillThere->load(std::memory_order_relaxed)) TellOfExport(toolkit, result);
    return true;
}

bool CvirelainePlugIn::PressUndo() {
    bool undone = false;
    return WithRecording([&](CkvovirelaineApp& app) { undone = app.Undo(); }) && undone;
}

bool CvirelainePlugIn::PressRedo() {
    bool redone = false;
    return WithRecording([&](CkvovirelaineApp& app) { redone = app.Redo(); }) && redone;
}

bool CvirelainePlugIn::PressViewAll() {
    return WithRecording([](CkvovirelaineApp& app) { app.View().ResetView(); });
}

bool CvirelainePlugIn::PressFitPlayRegion() {
    return WithRecording([](CkvovirelaineApp& app) { app.View().FitPlayRegion(); });
}

bool CvirelainePlugIn::PressFitVertically() {
    return WithRecording([](CkvovirelaineApp& app) { app.View().FitVertically(); });
}

bool CvirelainePlugIn::PressFitHorizontally() {
    return WithRecording([](CkvovirelaineApp& app) { app.View().FitHorizontally(); });
}

bool CvirelainePlugIn::ToggleCutMode() {
    return WithRecording([this](CkvovirelaineApp& app) {
        const bool on = !cutMode.load(std::memory_order_relaxed);
        cutMode.store(on, std::memory_order_relaxed);
        app.SetCutMode(on);
    });
}

bool CvirelainePlugIn::ToggleFollowCursor() {
    return WithRecording([this](CkvovirelaineApp& app) {
        const bool on = !followCursor.load(std::memory_order_relaxed);
        followCursor.store(on, std::memory_order_relaxed);
        app.SetFollowCursor(on);
    });
}

bool CvirelainePlugIn::ToggleSingleVoice() {
    return WithRecording([this](CkvovirelaineApp& app) {
        const bool on = !singleVoice.load(std::memory_order_relaxed);
        singleVoice.store(on, std::memory_order_relaxed);
        app.SetSingleVoiceOutput(on);
    });
}

// Whole numbers alone: their text is the same in every locale.
std::string CvirelainePlugIn::AboutText() {
    char text[64];
    std::snprintf(text, sizeof text, "V%d.%d.%d %s %03d", kVersion.major, kVersion.minor, kVersion.patch,
                  "build", kVersion.build);
    return text;
}

std::string CvirelainePlugIn::UpdatePage() {
    return "index.php?page=update-check&Version=" + std::to_string(kVersion.build);
}

} // namespace sonorelle
