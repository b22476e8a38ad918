// The editor of the plug-in, as a host opens, idles and closes it. The window is made when it is first
// opened, so that a host that only scans needs no display; opening and closing then show and hide it.

#pragma once

#include "host/vst_bridge.h"
#include "host/vst_editor_base.h"

#include <memory>

namespace sonorelle {

class CsonorelleVSTEditor final : public AEffEditor {
public:
    CsonorelleVSTEditor(CvirelainePlugIn& plugIn, CkvoToolkit& editorToolkit,
                        EditorWindowFactory windowFactory);
    ~CsonorelleVSTEditor() override; // closes

    bool getRect(ERect*& rect) override; // always true, and always the same; good as long as the library
    bool open(void* parent) override;    // false where there is no display
    void close() override;
    void idle() override;

private:
    CvirelainePlugIn& core;
    CkvoToolkit& toolkit;
    EditorWindowFactory makeWindow;
    std::unique_ptr<CkvoEditorWindow> window;
};

} // namespace sonorelle
