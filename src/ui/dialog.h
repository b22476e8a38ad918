// A window of its own that asks or tells something, in the middle of the main window. The dialogs of a
// plug-in lie above the window of its host.
//
// Threads: within a ToolkitScope.

#pragma once

#include "ui/toolbar_layout.h"

#include <FL/Fl_Double_Window.H>

#include <string>

class Fl_Input;

namespace sonorelle {

class CkvoDialog : public Fl_Double_Window {
public:
    CkvoDialog(int dialogWidth, int dialogHeight, std::string dialogTitle);

    // `hostWindow` is the native window that it belongs to; 0: none.
    void OpenAt(int left, int top, unsigned long hostWindow);

protected:
    void draw() override; // with a line around it, for displays without a window manager

private:
    std::string title;
};

// For a window that is shown: above the one that a window manager knows around `hostWindow`.
void KeepAbove(const Fl_Window& window, unsigned long hostWindow);

inline constexpr int kMessageWidth = 300;
inline constexpr int kMessageHeight = 80;

class CkvoMessageWindow final : public CkvoDialog {
public:
    CkvoMessageWindow(const std::string& messageTitle, std::string messageText);

private:
    std::string text;
};

// Two buttons: to do it, and to leave it.
class CkvoQuestionWindow final : public CkvoDialog {
public:
    explicit CkvoQuestionWindow(std::string questionText);
    bool IsConfirmed() const { return confirmed; }

private:
    std::string text;
    bool confirmed = false;
};

inline constexpr const char* kNameCancelTip = "cancel";
inline constexpr const char* kNameOkayTip = "okay";

// A line of text to be written; a cross to leave it, a tick to take it.
class CkvoNameWindow final : public CkvoDialog {
public:
    CkvoNameWindow(std::string nameLabel, const std::string& presetText);
    bool IsConfirmed() const { return confirmed; }
    std::string Name() const;

private:
    std::string label;
    Fl_Input* input = nullptr; // owned by the toolkit, as widgets are
    bool confirmed = false;
};

} // namespace sonorelle
