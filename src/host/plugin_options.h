// How a plug-in is set up by whoever makes it.

#pragma once

namespace sonorelle {

struct PlugInOptions {
    bool useCache = true; // read and write the analysis beside the recording
};

// The buttons above the editor: which of them answer, and where the toggles stand.
struct ToolbarState {
    bool editActive = false; // undo to follow cursor, as one group
    bool saveActive = false;
    bool singleVoiceActive = false;

    bool cutMode = false;
    bool followCursor = false;
    bool singleVoice = false;

    bool operator==(const ToolbarState&) const = default;
};

} // namespace sonorelle
