#include "ui/file_chooser.h"

#include "ui/dialog.h"
#include "ui/file_filter.h"
#include "ui/theme.h"

#include <FL/Fl.H>
#include <FL/Fl_File_Chooser.H>
#include <FL/Fl_File_Input.H>
#include <FL/Fl_Window.H>

#include <algorithm>
#include <string_view>

namespace sonorelle {

namespace {

constexpr int kChooserWidth = 620; // pixels
constexpr int kChooserHeight = 420;

Fl_File_Input* FindNameInput(Fl_Group& group) {
    for (int i = 0; i < group.children(); ++i) {
        Fl_Widget* child = group.child(i);
        if (auto* input = dynamic_cast<Fl_File_Input*>(child)) return input;
        Fl_Group* inner = child->as_group();
        if (inner == nullptr) continue;
        if (Fl_File_Input* input = FindNameInput(*inner)) return input;
    }
    return nullptr;
}

} // namespace

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

void kvoNativeFileChooser::Show(unsigned long hostWindow) {
    dialog->show();
    Fl_Window* window = Fl::modal(); // the dialog keeps it to itself, but it is the modal one
    if (window == nullptr) return;
    window->size(kChooserWidth, kChooserHeight);
    KeepAbove(*window, hostWindow);
    Fl_File_Input* name = FindNameInput(*window);
    if (name == nullptr || completeName != nullptr) return;
    completeName = name->callback();
    name->callback(OnName, this);
}

// The dialog would look for a name without a folder in the process's own folder instead of the one that it
// shows, and lose a path as soon as its first slash is there.
void kvoNativeFileChooser::OnName(Fl_Widget* input, void* chooser) {
    auto& self = *static_cast<kvoNativeFileChooser*>(chooser);
    auto& name = *static_cast<Fl_File_Input*>(input);
    const std::string text = name.value();
    const char* folder = self.dialog->directory();
    if (!text.empty() && std::string_view("/~$").find(text.front()) == std::string_view::npos &&
        folder != nullptr && folder[0] == '/') {
        const std::string start = std::string(folder) + (std::string_view(folder) == "/" ? "" : "/");
        const int position = name.position() + static_cast<int>(start.size());
        name.value((start + text).c_str());
        name.position(position);
    }
    const bool rootOnly = text.starts_with('/') && text.find('/', 1) == std::string::npos;
    if (!rootOnly || Fl::event_key() == FL_Enter) self.completeName(input, nullptr);
}

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
