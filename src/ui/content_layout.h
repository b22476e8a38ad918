// Where the panels lie below the toolbar: a strip along the top, a column on the left, the pitch view in the
// middle, the mixer below it.
//
//     const ContentLayout layout = LayOutContent(959, 573);
//
// Pure values for any thread; in pixels, from the corner of the whole.

#pragma once

#include "ui/toolbar_layout.h"

namespace sonorelle {

inline constexpr int kStripHeight = 50;
inline constexpr int kColumnWidth = 250;
inline constexpr int kLowerHeight = 250;

inline constexpr const char* kSynchronizationTitle = "@b Host Synchronization";
inline constexpr const char* kTuningTitle = "@b Tuning Freq";
inline constexpr const char* kVoiceTitle = "@b Voice Settings";
inline constexpr const char* kMelodyTitle = "@b Melody Properties";
inline constexpr const char* kChoirTitle = "@b Harmonization Settings";
inline constexpr const char* kSnapshotsTitle = "@b Snapshots";
inline constexpr const char* kStartText = "Drag audio file here\nor use Load button";

// A frame, and the place of the panel within it.
struct FramePlace {
    Placement frame;
    Placement panel;
};

struct ContentLayout {
    FramePlace synchronization;
    FramePlace tuning;
    FramePlace view; // its frame has no title
    FramePlace voices;
    FramePlace melody;
    FramePlace choir;
    FramePlace snapshots;
};

constexpr Placement Inset(Placement frame, int left, int top, int narrower, int lower) {
    return {frame.x + left, frame.y + top, frame.width - narrower, frame.height - lower};
}

// The column begins below the strip and ends with the whole. The view lies in the middle of the mixer's
// width: it reaches a little beyond the right edge of its frame.
constexpr ContentLayout LayOutContent(int width, int height) {
    constexpr int kMelodyTop = 10;
    constexpr int kChoirTop = 100;
    constexpr int kSnapshotsTop = 315;
    ContentLayout layout;
    layout.synchronization.frame = {10, 0, width - 115, kStripHeight};
    layout.synchronization.panel = Inset(layout.synchronization.frame, 5, 12, 5, 18);
    layout.tuning.frame = {width - 105, 0, 103, kStripHeight};
    layout.tuning.panel = Inset(layout.tuning.frame, 5, 12, 5, 18);
    layout.view.frame = {kColumnWidth + 6, kStripHeight, width - 265, height - 300};
    layout.view.panel = Inset(layout.view.frame, 8, 6, 4, 12);
    layout.voices.frame = {kColumnWidth + 10, height - kLowerHeight, width - kColumnWidth - 10, kLowerHeight};
    layout.voices.panel = Inset(layout.voices.frame, 0, 0, 0, 0);
    layout.melody.frame = {0, kStripHeight + kMelodyTop, kColumnWidth, kChoirTop - kMelodyTop};
    layout.melody.panel = Inset(layout.melody.frame, 10, 10, 20, 20);
    layout.choir.frame = {0, kStripHeight + kChoirTop, kColumnWidth, kSnapshotsTop - kChoirTop};
    layout.choir.panel = Inset(layout.choir.frame, 10, 10, 20, 20);
    layout.snapshots.frame = {0, kStripHeight + kSnapshotsTop, kColumnWidth,
                              height - kStripHeight - kSnapshotsTop};
    layout.snapshots.panel = Inset(layout.snapshots.frame, 10, 10, 20, 20);
    return layout;
}

} // namespace sonorelle
