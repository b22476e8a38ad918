#include "host/vst_editor.h"

#include "host/editor_window.h"
#include "host/plugin_core.h"

#include <utility>

namespace sonorelle {

CsonorelleVSTEditor::CsonorelleVSTEditor(CvirelainePlugIn& plugIn, CkvoToolkit& editorToolkit,
                                         EditorWindowFactory windowFactory)
    : core(plugIn), toolkit(editorToolkit), makeWindow(std::move(windowFactory)) {
    rectangle.bottom = CkvoEditorWindow::kHeight;
    rectangle.right = CkvoEditorWindow::kWidth;
}

CsonorelleVSTEditor::~CsonorelleVSTEditor() { close(); }

bool CsonorelleVSTEditor::getRect(ERect*& rect) {
    rect = &rectangle;
    return true;
}

bool CsonorelleVSTEditor::open(void* parent) {
    if (window == nullptr) window = makeWindow(core, toolkit);
    return window != nullptr && window->Open(parent);
}

void CsonorelleVSTEditor::close() {
    if (window != nullptr) window->Close();
}

// Hosts idle editors that they have not opened, too: a restored session may still have a question.
void CsonorelleVSTEditor::idle() {
    if (window != nullptr) {
        window->Idle();
    } else {
        core.RunEventPass();
    }
}

} // namespace sonorelle
