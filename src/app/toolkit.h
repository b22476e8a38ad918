// What the application asks of whatever shows it to a user: one pass of events, timers, messages, questions,
// the window of a running analysis, what is being dragged out. A desktop toolkit, a terminal and a test each
// implement it in their own way.
//
// As it stands here it is the toolkit of a program without a face: messages become lines on standard error,
// questions remain unanswered, timers never run, and the work goes on.
//
// Threads. IsInterfaceThread, and whatever is marked so, from any thread; all else only where
// IsInterfaceThread answers true. An implementation with windows answers it for the one thread that runs its
// events.

#pragma once

#include "app/popup_menu.h"

#include <cstdint>
#include <optional>
#include <string>

namespace sonorelle {

inline constexpr const char* kErrorTitle = "Error!";
inline constexpr const char* kWarningTitle = "Warning!";

class CkvoToolkit {
public:
    using TimerCallback = void (*)(void* context);

    CkvoToolkit() = default;
    virtual ~CkvoToolkit() = default;
    CkvoToolkit(const CkvoToolkit&) = delete;
    CkvoToolkit& operator=(const CkvoToolkit&) = delete;

    // Any thread: whether the calling one may ask the user, and run events.
    virtual bool IsInterfaceThread() const { return true; }
    // One pass of the events that wait, timers included; never waits itself. False where there are no events
    // to run, so that a caller who waits for something else should rather sleep.
    virtual bool RunEvents() { return false; }

    // Calls `callback` once in `seconds`, within RunEvents. One timer a callback and context; setting it
    // again moves it, removing one that is not set does nothing.
    virtual void SetTimer(double seconds, TimerCallback callback, void* context);
    virtual void RemoveTimer(TimerCallback callback, void* context);

    // Modal: return when the user has answered.
    virtual void ShowMessage(const std::string& title, const std::string& text);
    // A path; empty when the user has cancelled. `filter` as "WAV Files\t*.wav\nAIFF Files\t*.{aif,aiff}".
    virtual std::string ChooseFileToOpen(const std::string& title, const std::string& filter);
    virtual std::string ChooseFileToSave(const std::string& title, const std::string& filter,
                                         const std::string& presetName); // asks before it overwrites
    virtual std::int32_t ChooseFromMenu(const PopupMenu& menu);          // PopupItem::kNothing for none
    virtual std::optional<std::string> AskForName(const std::string& label, const std::string& presetText);
    virtual bool Confirm(const std::string& question); // true as it stands here

    // The window of a running analysis: a bar, a turning spinner, a button that cancels.
    virtual void OpenProgress();
    virtual void ShowProgress(std::int32_t percent, std::int32_t spinnerDegrees); // 0 to 100; 0 to 359
    virtual bool IsProgressCancelled();                                           // the user has had enough
    virtual void CloseProgress();

    // What a drag out of the window carries: the path of a file.
    virtual void SetSelection(const std::string& path);
    virtual void ClearSelection();

    // While a dialog or an analysis runs, the window behind it takes no input.
    virtual void ActivateMainWindow(bool active);
    // Any thread: panels have changed, and what shows them should be drawn again.
    virtual void RequestRedraw();

    // Any thread: whoever asks is about to go. Questions that are open end as cancelled, and no further one
    // is asked.
    virtual void Abandon() {}
};

} // namespace sonorelle
