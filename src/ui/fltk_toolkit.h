// The toolkit of a program with windows: dialogs, menus and events of the FLTK library.
//
//     CFltkToolkit toolkit;
//     toolkit.SetMainWindow(&window);
//     toolkit.BeInterfaceThread();      // from now on this thread is the one that may ask the user
//     toolkit.RunEvents();
//
// Each plug-in has one of its own, while they all share the display, and FLTK's events: a pass of one of them
// also draws the windows of the others. Timers belong to the toolkit alone, and run in its own passes.
//
// Threads: as CkvoToolkit says. A host may change the thread that runs its windows; whichever opened or idled
// the window last is the interface's. While a dialog of one thread waits for the user, others go on.

#pragma once

#include "app/toolkit.h"
#include "ui/toolbar_layout.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace sonorelle {

class CkvoDialog;
class CkvoDNDWindow;

class CFltkToolkit final : public CkvoToolkit {
public:
    CFltkToolkit() = default;

    // Borrowed; null when it goes away.
    void SetMainWindow(CkvoDNDWindow* mainWindow);
    void BeInterfaceThread() { interfaceThread.store(std::this_thread::get_id(), std::memory_order_relaxed); }
    void BeNoInterfaceThread() { interfaceThread.store({}, std::memory_order_relaxed); }

    bool IsInterfaceThread() const override;
    bool RunEvents() override;
    void SetTimer(double seconds, TimerCallback callback, void* context) override;
    void RemoveTimer(TimerCallback callback, void* context) override;

    void ShowMessage(const std::string& title, const std::string& text) override;
    std::string ChooseFileToOpen(const std::string& title, const std::string& filter) override;
    std::string ChooseFileToSave(const std::string& title, const std::string& filter,
                                 const std::string& presetName) override;
    std::int32_t ChooseFromMenu(const PopupMenu& menu) override;
    std::optional<std::string> AskForName(const std::string& label, const std::string& presetText) override;
    bool Confirm(const std::string& question) override;

    void OpenProgress() override;
    void ShowProgress(std::int32_t percent, std::int32_t spinnerDegrees) override;
    bool IsProgressCancelled() override;
    void CloseProgress() override;

    void SetSelection(const std::string& path) override;
    void ClearSelection() override;
    // Within a drag of the mouse: drags what was selected out of the window. True when it was taken.
    bool DragSelectionOut();

    void ActivateMainWindow(bool active) override;
    void RequestRedraw() override { redrawWanted.store(true, std::memory_order_relaxed); }
    void Abandon() override { abandoned.store(true, std::memory_order_relaxed); }

private:
    using Clock = std::chrono::steady_clock;
    struct Timer {
        TimerCallback callback;
        void* context;
        Clock::time_point due;
    };

    bool MayAsk() const { return !abandoned.load(std::memory_order_relaxed); }
    void RunTimers();
    static void LeaveMenu();
    static void OnMenuTick(void* toolkit);
    Placement Centre() const;
    unsigned long HostWindow() const; // native; 0: none
    void RunDialog(CkvoDialog& dialog);
    void RunWhile(const std::function<bool()>& shown);
    std::string ChooseFile(const std::string& title, const std::string& filter, bool save,
                           const std::string& start);

    CkvoDNDWindow* window = nullptr;
    std::atomic<std::thread::id> interfaceThread{};
    std::atomic<bool> redrawWanted{false};
    std::atomic<bool> abandoned{false}; // for good

    std::mutex timerLock;
    std::vector<Timer> timers;

    std::string folder; // in which the last file was chosen
    std::string selection;
    std::int32_t inactive = 0; // how often the main window was deactivated
};

} // namespace sonorelle
