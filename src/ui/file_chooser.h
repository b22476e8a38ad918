// Asks for a file: the toolkit's own dialog. The desktop's dialogs would bring a second toolkit into the
// host's process.
//
//     kvoNativeFileChooser chooser("Open Audio File", filter, kvoNativeFileChooser::Kind::kOpen);
//     chooser.Show();
//     while (chooser.IsShown()) ...             // run events
//     const std::string path = chooser.Path();  // empty: cancelled
//
// Threads: within a ToolkitScope.

#pragma once

#include <FL/Fl_Widget.H>

#include <memory>
#include <string>

class Fl_File_Chooser;

namespace sonorelle {

class kvoNativeFileChooser {
public:
    enum class Kind { kOpen, kSave };

    // `filter` as in file_filter.h; `start` is a folder, or the path of a file that stands chosen.
    kvoNativeFileChooser(const std::string& dialogTitle, const std::string& filter, Kind kind,
                         const std::string& start);
    ~kvoNativeFileChooser();
    kvoNativeFileChooser(const kvoNativeFileChooser&) = delete;
    kvoNativeFileChooser& operator=(const kvoNativeFileChooser&) = delete;

    // `hostWindow` is the native window that it belongs to; 0: none.
    void Show(unsigned long hostWindow);
    // The middle of the dialog on the screen; for one that is shown.
    void MoveTo(int centreX, int centreY);
    bool IsShown() const;
    std::string Path() const;

private:
    static void OnName(Fl_Widget* input, void* chooser);

    const std::string title;
    std::unique_ptr<Fl_File_Chooser> dialog;
    Fl_Callback* completeName = nullptr; // the dialog's own
};

} // namespace sonorelle
