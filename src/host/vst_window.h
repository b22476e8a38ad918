// The window and the toolkit of the plug-in in a host: what the bridge is made with.
//
//     CsonorelleVST(audioMaster, MakePlugInToolkit(), MakePlugInWindow)
//
// Threads: see editor_window.h.

#pragma once

#include "app/toolkit.h"
#include "host/editor_window.h"

#include <memory>

namespace sonorelle {

class CvirelainePlugIn;

std::unique_ptr<CkvoToolkit> MakePlugInToolkit();
// `toolkit` is one that MakePlugInToolkit has made. Both are borrowed.
std::unique_ptr<CkvoEditorWindow> MakePlugInWindow(CvirelainePlugIn& core, CkvoToolkit& toolkit);

} // namespace sonorelle
