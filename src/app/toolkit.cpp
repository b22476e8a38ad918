#include "app/toolkit.h"

#include <cstdio>

namespace sonorelle {

void CkvoToolkit::SetTimer(double, TimerCallback, void*) {}
void CkvoToolkit::RemoveTimer(TimerCallback, void*) {}

void CkvoToolkit::ShowMessage(const std::string& title, const std::string& text) {
    std::fprintf(stderr, "%s %s\n", title.c_str(), text.c_str());
}

std::string CkvoToolkit::ChooseFileToOpen(const std::string&, const std::string&) { return {}; }
std::string CkvoToolkit::ChooseFileToSave(const std::string&, const std::string&, const std::string&) {
    return {};
}
std::int32_t CkvoToolkit::ChooseFromMenu(const PopupMenu&) { return PopupItem::kNothing; }
std::optional<std::string> CkvoToolkit::AskForName(const std::string&, const std::string&) { return {}; }
bool CkvoToolkit::Confirm(const std::string&) { return true; }

void CkvoToolkit::OpenProgress() {}
void CkvoToolkit::ShowProgress(std::int32_t, std::int32_t) {}
bool CkvoToolkit::IsProgressCancelled() { return false; }
void CkvoToolkit::CloseProgress() {}

void CkvoToolkit::SetSelection(const std::string&) {}
void CkvoToolkit::ClearSelection() {}

void CkvoToolkit::ActivateMainWindow(bool) {}
void CkvoToolkit::RequestRedraw() {}

} // namespace sonorelle
