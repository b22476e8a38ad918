#include "ui/fltk_toolkit.h"

#include "ui/dialog.h"
#include "ui/display.h"
#include "ui/file_chooser.h"
#include "ui/file_filter.h"
#include "ui/main_window.h"
#include "ui/popup.h"
#include "ui/progress_window.h"

#include <FL/Fl.H>
#include <FL/Fl_Group.H>
#include <FL/x.H>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <poll.h>
#include <utility>

namespace sonorelle {

namespace {

constexpr double kMenuTick = 0.02;    // seconds between two looks at the timers while a menu is open
constexpr int kWaitMilliseconds = 10; // between two passes while a dialog waits for its answer

// Outside of the lock: other threads' windows go on.
void WaitForEvents() {
    pollfd connection{ConnectionNumber(fl_display), POLLIN, 0};
    poll(&connection, 1, kWaitMilliseconds);
}

std::string HomeFolder() {
    const char* home = std::getenv("HOME");
    return home != nullptr && home[0] == '/' ? home : "/";
}

// A dialog that is made and deleted within the scope of the toolkit.
template<class Dialog>
class Shown {
public:
    template<class... Arguments>
    explicit Shown(const Arguments&... arguments) {
        const ToolkitScope scope;
        Fl_Group::current(nullptr);
        dialog = std::make_unique<Dialog>(arguments...);
    }
    ~Shown() {
        const ToolkitScope scope;
        dialog.reset();
    }
    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;
    Dialog& operator*() const { return *dialog; }
    Dialog* operator->() const { return dialog.get(); }

private:
    std::unique_ptr<Dialog> dialog;
};

std::string NamePart(const std::string& path) { return std::filesystem::path(path).filename().string(); }

bool Exists(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

} // namespace

void CFltkToolkit::SetMainWindow(CkvoDNDWindow* mainWindow) {
    const ToolkitScope scope;
    window = mainWindow;
    inactive = 0;
}

bool CFltkToolkit::IsInterfaceThread() const {
    return IsDisplayOpen() && interfaceThread.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

bool CFltkToolkit::RunEvents() {
    if (!IsInterfaceThread()) return false;
    RunTimers();
    const ToolkitScope scope;
    if (redrawWanted.exchange(false, std::memory_order_relaxed) && window != nullptr) window->RedrawPanels();
    Fl::wait(0);
    return true;
}

// --- Timers ---

void CFltkToolkit::SetTimer(double seconds, TimerCallback callback, void* context) {
    RemoveTimer(callback, context);
    constexpr double kLongest = 1e6; // seconds
    const double held = seconds > 0 ? std::min(seconds, kLongest) : 0;
    const auto due =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(held));
    const std::lock_guard guard(timerLock);
    timers.push_back({callback, context, due});
}

void CFltkToolkit::RemoveTimer(TimerCallback callback, void* context) {
    const std::lock_guard guard(timerLock);
    std::erase_if(timers, [&](const Timer& t) { return t.callback == callback && t.context == context; });
}

// One that is set again while these run waits for the next pass.
void CFltkToolkit::RunTimers() {
    const auto now = Clock::now();
    while (true) {
        Timer timer{};
        {
            const std::lock_guard guard(timerLock);
            const auto next =
                std::find_if(timers.begin(), timers.end(), [&](const Timer& t) { return t.due <= now; });
            if (next == timers.end()) return;
            timer = *next;
            timers.erase(next);
        }
        timer.callback(timer.context);
    }
}

// --- Dialogs ---

void CFltkToolkit::RunWhile(const std::function<bool()>& shown) {
    while (true) {
        {
            const ToolkitScope scope;
            if (!IsDisplayOpen() || !MayAsk() || !shown()) return;
        }
        RunEvents();
        WaitForEvents();
    }
}

// Of the main window, or else of the screen.
Placement CFltkToolkit::Centre() const {
    if (window != nullptr && window->IsOpen()) return window->Centred(0, 0);
    return {Fl::w() / 2, Fl::h() / 2, 0, 0};
}

unsigned long CFltkToolkit::HostWindow() const { return window != nullptr ? window->HostWindow() : 0; }

void CFltkToolkit::RunDialog(CkvoDialog& dialog) {
    if (!MayAsk()) return;
    {
        const ToolkitScope scope;
        const Placement middle = Centre();
        dialog.OpenAt(middle.x - dialog.w() / 2, middle.y - dialog.h() / 2, HostWindow());
    }
    RunWhile([&] { return dialog.shown() != 0; });
    const ToolkitScope scope;
    dialog.hide();
    XFlush(fl_display);
}

void CFltkToolkit::ShowMessage(const std::string& title, const std::string& text) {
    if (!IsInterfaceThread()) return CkvoToolkit::ShowMessage(title, text);
    const Shown<CkvoMessageWindow> dialog(title, text);
    RunDialog(*dialog);
}

bool CFltkToolkit::Confirm(const std::string& question) {
    if (!IsInterfaceThread()) return CkvoToolkit::Confirm(question);
    const Shown<CkvoQuestionWindow> dialog(question);
    RunDialog(*dialog);
    return dialog->IsConfirmed();
}

std::optional<std::string> CFltkToolkit::AskForName(const std::string& label, const std::string& presetText) {
    if (!IsInterfaceThread()) return std::nullopt;
    const Shown<CkvoNameWindow> dialog(label, presetText);
    RunDialog(*dialog);
    if (!dialog->IsConfirmed()) return std::nullopt;
    return dialog->Name();
}

std::string CFltkToolkit::ChooseFile(const std::string& title, const std::string& filter, bool save,
                                     const std::string& start) {
    if (!IsInterfaceThread() || !MayAsk()) return {};
    const auto kind = save ? kvoNativeFileChooser::Kind::kSave : kvoNativeFileChooser::Kind::kOpen;
    const Shown<kvoNativeFileChooser> chooser(title, filter, kind, start);
    {
        const ToolkitScope scope;
        chooser->Show(HostWindow());
        const Placement middle = Centre();
        chooser->MoveTo(middle.x, middle.y);
    }
    RunWhile([&] { return chooser->IsShown(); });
    const ToolkitScope scope;
    if (!MayAsk()) return {};
    std::string path = chooser->Path();
    if (!path.empty()) folder = std::filesystem::path(path).parent_path().string();
    return path;
}

std::string CFltkToolkit::ChooseFileToOpen(const std::string& title, const std::string& filter) {
    return ChooseFile(title, filter, false, (folder.empty() ? HomeFolder() : folder) + "/");
}

std::string CFltkToolkit::ChooseFileToSave(const std::string& title, const std::string& filter,
                                           const std::string& presetName) {
    const std::string place = folder.empty() ? HomeFolder() : folder;
    const std::string start = presetName.starts_with('/') ? presetName : place + "/" + presetName;
    std::string path = ChooseFile(title, filter, true, start);
    if (path.empty()) return path;
    // The question below is about the file that is going to be written.
    const std::string extension = ExtensionOfFilter(filter);
    if (NamePart(path).find(extension) == std::string::npos) path += extension;
    if (!Exists(path)) return path;
    std::string question("\"");
    question.append(NamePart(path)).append("\"\nexists. Replace it?");
    return Confirm(question) ? path : std::string();
}

// The menu has the grab; it knows no other end than a key or a click.
void CFltkToolkit::LeaveMenu() {
    Fl_Window* const menu = Fl::grab();
    if (menu == nullptr) return;
    Fl::e_keysym = FL_Escape;
    menu->handle(FL_KEYBOARD);
}

// The menu runs the events itself, and knows nothing of the timers.
void CFltkToolkit::OnMenuTick(void* toolkit) {
    auto* const self = static_cast<CFltkToolkit*>(toolkit);
    if (!self->MayAsk()) LeaveMenu();
    self->RunTimers();
    Fl::repeat_timeout(kMenuTick, OnMenuTick, toolkit);
}

std::int32_t CFltkToolkit::ChooseFromMenu(const PopupMenu& menu) {
    if (!IsInterfaceThread() || !MayAsk()) return PopupItem::kNothing;
    const ToolkitScope scope;
    Fl::add_timeout(kMenuTick, OnMenuTick, this);
    const std::int32_t chosen = RunPopup(menu);
    Fl::remove_timeout(OnMenuTick, this);
    return chosen;
}

// --- The progress window ---

void CFltkToolkit::OpenProgress() {
    if (window == nullptr) return;
    ActivateMainWindow(false);
    const ToolkitScope scope;
    window->Progress().Open();
}

void CFltkToolkit::ShowProgress(std::int32_t percent, std::int32_t spinnerDegrees) {
    if (window == nullptr) return;
    const ToolkitScope scope;
    window->Progress().ShowProgress(percent, spinnerDegrees);
}

bool CFltkToolkit::IsProgressCancelled() {
    const ToolkitScope scope;
    return window != nullptr && window->Progress().IsCancelled();
}

void CFltkToolkit::CloseProgress() {
    if (window == nullptr) return;
    {
        const ToolkitScope scope;
        window->Progress().hide();
    }
    ActivateMainWindow(true);
}

// --- The rest ---

void CFltkToolkit::SetSelection(const std::string& path) {
    const ToolkitScope scope;
    selection = path;
}

void CFltkToolkit::ClearSelection() {
    const ToolkitScope scope;
    selection.clear();
}

bool CFltkToolkit::DragSelectionOut() {
    const ToolkitScope scope;
    return !selection.empty() && window != nullptr && window->DragFileOut(selection);
}

// A load deactivates it, and the analysis within once more.
void CFltkToolkit::ActivateMainWindow(bool active) {
    inactive = std::max(inactive + (active ? -1 : 1), 0);
    if (window != nullptr) window->SetInputActive(inactive == 0);
}

} // namespace sonorelle
