// The window of a running analysis: a spinner, a bar, a button that cancels. It lies within the main window,
// in its middle.
//
// Threads: within a ToolkitScope.

#pragma once

#include "ui/toolbar_layout.h"

#include <FL/Fl_Double_Window.H>

class Fl_Button;

namespace sonorelle {

inline constexpr Placement kProgressPlace{(kWindowWidth - 303) / 2, (kWindowHeight - 40) / 2, 303, 40};
// From its corner.
inline constexpr Placement kSpinnerPlace{8, 10, 15, 20};
inline constexpr Placement kBarPlace{25, 10, 255, 20};
inline constexpr Placement kCancelPlace{280, 12, 17, 17};
inline constexpr const char* kCancelTip = "Cancel analysis";

class CkvoProgressWindow final : public Fl_Double_Window {
public:
    CkvoProgressWindow(); // hidden

    void Open();                                           // from zero, not cancelled
    void ShowProgress(int newPercent, int spinnerDegrees); // 0 to 100, 0 to 359; shows the window, too
    bool IsCancelled() const { return cancelled; }
    int Percent() const { return percent; }

protected:
    void draw() override;

private:
    Fl_Button* cancel; // owned by the toolkit, as widgets are
    int percent = 0;
    int degrees = 0;
    bool cancelled = false;
};

} // namespace sonorelle
