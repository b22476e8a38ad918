#include "host/vst_editor.h"

#include "host/editor_window.h"
#include "host/plugin_core.h"

#include <utility>

namespace sonorelle {

namespace {

// One for the process, with the size that the window is made in: hosts keep its address, also when the editor
// that told it has gone, and editors of several threads may tell it at once. Nobody here writes to it; it is
// not constant, since it must not be the end of a host that does.
constinit ERect rectangle = {0, 0, CkvoEditorWindow::kHeight, CkvoEditorWindow::kWidth};

} // namespace

CsonorelleVSTEditor::CsonorelleVSTEditor(CvirelainePlugIn& plugIn, CkvoToolkit& editorToolkit,
                                         EditorWindowFactory windowFactory)
    : core(plugIn), toolkit(editorToolkit), makeWindow(std::move(windowFactory)) {}

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
