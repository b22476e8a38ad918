#include "ui/file_chooser.h"

#include "ui/file_filter.h"
#include "ui/theme.h"

#include <FL/Fl.H>
#include <FL/Fl_File_Chooser.H>
#include <FL/Fl_Window.H>

#include <algorithm>

namespace sonorelle {

kvoNativeFileChooser::kvoNativeFileChooser(const std::string& dialogTitle, const std::string& filter,
                                           Kind kind, const std::string& start)
    : title(dialogTitle),
      dialog(std::make_unique<Fl_File_Chooser>(
          start.c_str(), ToolkitFilter(filter).c_str(),
          kind == Kind::kSave ? Fl_File_Chooser::CREATE : Fl_File_Chooser::SINGLE, title.c_str())) {
    dialog->preview(0);
    dialog->previewButton->hide();
    dialog->textsize(kTextSize);
    if (kind == Kind::kSave) dialog->ok_label("Save");
}

kvoNativeFileChooser::~kvoNativeFileChooser() = default;

void kvoNativeFileChooser::Show() { dialog->show(); }
// The dialog keeps its window to itself, but it is the modal one.
void kvoNativeFileChooser::MoveTo(int centreX, int centreY) {
    Fl_Window* window = Fl::modal();
    if (window == nullptr) return;
    window->position(std::max(centreX - window->w() / 2, 0), std::max(centreY - window->h() / 2, 0));
}

bool kvoNativeFileChooser::IsShown() const { return dialog->shown() != 0; }

std::string kvoNativeFileChooser::Path() const {
    const char* path = dialog->count() > 0 ? dialog->value() : nullptr;
    return path != nullptr ? path : "";
}

} // namespace sonorelle
