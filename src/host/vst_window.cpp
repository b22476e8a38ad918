#include "host/vst_window.h"

#include "app/application.h"
#include "host/plugin_core.h"
#include "ui/display.h"
#include "ui/fltk_toolkit.h"
#include "ui/main_window.h"
#include "ui/main_window_owner.h"

#include <cstdint>
#include <string>

namespace sonorelle {

namespace {

static_assert(CkvoEditorWindow::kWidth == kWindowWidth && CkvoEditorWindow::kHeight == kWindowHeight);

// Where UpdatePage() lies; empty as long as there is no such place.
constexpr const char* kUpdateServer = "";

class CkvoPlugInWindow final : public CkvoEditorWindow, private CkvoMainWindowOwner {
public:
    CkvoPlugInWindow(CvirelainePlugIn& plugIn, CFltkToolkit& plugInToolkit)
        : core(plugIn), toolkit(plugInToolkit) {}

    ~CkvoPlugInWindow() override {
        Close();
        const ToolkitScope scope;
        toolkit.SetMainWindow(nullptr);
        window.reset();
    }

    bool Open(void* hostWindow) override {
        if (!OpenDisplay()) return false;
        // The instances show their windows one after the other.
        const std::lock_guard guard(CkvoPlugInBase::InstanceLock());
        toolkit.BeInterfaceThread();
        if (window == nullptr) {
            const ToolkitScope scope;
            CkvoMainWindowOwner& owner = *this;
            window = std::make_unique<CkvoDNDWindow>(owner);
            toolkit.SetMainWindow(window.get());
        }
        core.AttachToHostWindow(hostWindow);
        if (!window->OpenInside(reinterpret_cast<std::uintptr_t>(hostWindow))) return false;
        window->Follow();
        return true;
    }

    void Close() override {
        if (window != nullptr) window->CloseInside();
        toolkit.BeNoInterfaceThread();
    }

    bool IsOpen() const override { return window != nullptr && window->IsOpen(); }

    void Idle() override {
        if (!IsDisplayOpen() || window == nullptr) return;
        toolkit.BeInterfaceThread();
        if (!core.RunEventPass()) return;
        window->Follow();
        window->RunActions();
    }

private:
    void PressToolbar(ToolbarButton button) override {
        switch (button) {
        case ToolbarButton::kLoad:
            core.PressLoad();
            break;
        case ToolbarButton::kSave:
            core.PressSave();
            break;
        case ToolbarButton::kUndo:
            core.PressUndo();
            break;
        case ToolbarButton::kRedo:
            core.PressRedo();
            break;
        case ToolbarButton::kCutMode:
            core.ToggleCutMode();
            break;
        case ToolbarButton::kViewAll:
            core.PressViewAll();
            break;
        case ToolbarButton::kFitPlayRegion:
            core.PressFitPlayRegion();
            break;
        case ToolbarButton::kFitVertically:
            core.PressFitVertically();
            break;
        case ToolbarButton::kFitHorizontally:
            core.PressFitHorizontally();
            break;
        case ToolbarButton::kFollowCursor:
            core.ToggleFollowCursor();
            break;
        case ToolbarButton::kSingleVoice:
            core.ToggleSingleVoice();
            break;
        case ToolbarButton::kLogo:
            break; // the window's own
        }
    }

    ToolbarLook GetToolbarLook() override {
        const ToolbarState state = core.GetToolbar();
        return {state.editActive, state.saveActive,   state.singleVoiceActive,
                state.cutMode,    state.followCursor, state.singleVoice};
    }

    CkvoPitchView* PitchView() override {
        CkvovirelaineApp* application = core.Application();
        return application != nullptr && application->HasAudio() ? &application->View() : nullptr;
    }
    void DropText(const std::string& text) override { core.DropText(CvirelainePlugIn::kDroppedText, text); }
    std::string AboutText() override { return CvirelainePlugIn::AboutText(); }

    std::string UpdateAddress() override {
        const std::string server = kUpdateServer;
        return server.empty() ? server : server + CvirelainePlugIn::UpdatePage();
    }

    bool TryEnterInterface() override { return core.GuiLock().TryEnterCriticalSection(); }
    void LeaveInterface() override { core.GuiLock().LeaveCriticalSection(); }

    CvirelainePlugIn& core;
    CFltkToolkit& toolkit;
    std::unique_ptr<CkvoDNDWindow> window;
};

} // namespace

std::unique_ptr<CkvoToolkit> MakePlugInToolkit() { return std::make_unique<CFltkToolkit>(); }

std::unique_ptr<CkvoEditorWindow> MakePlugInWindow(CvirelainePlugIn& core, CkvoToolkit& toolkit) {
    return std::make_unique<CkvoPlugInWindow>(core, dynamic_cast<CFltkToolkit&>(toolkit));
}

} // namespace sonorelle
