// One recording on its way from a file name to a finished analysis, with the messages and the progress bar
// that go with it.

#pragma once

#include "analysis/melody_analyzer.h"
#include "cli/melody_report.h"
#include "formats/audio_file.h"

#include <chrono>
#include <cstddef>
#include <string>

namespace sonorelle {

struct Console;

// What the program says of a result that cannot be written.
inline constexpr const char* kCannotWriteFile = "Could not write file!";
// What it says of the recording that was in work when the user cancelled.
inline constexpr const char* kCancelledText = "Cancelled.";
// And of one that cannot be opened.
inline constexpr const char* kCannotLoadText = "Could not load audio file!";
// Of one that opens, but whose analysis comes to nothing.
const char* WhyNotAnalysed(float sampleRate);

enum class Hearing { kDone, kFailed, kCancelled };

struct HearingWish {
    bool useCache = true;
    bool showProgress = true; // on a terminal
    std::size_t index = 0;    // of this recording ...
    std::size_t count = 1;    // ... among so many: what the progress bar tells
};

// "Analysing", or "Analysing 2 of 5": what the progress bar of a step says.
std::string ProgressLabel(const char* step, const HearingWish& wish);

class HeardRecording {
public:
    explicit HeardRecording(std::string file);

    // Opens the recording. False, after a message, when it cannot be taken.
    bool Open(const Console& console);
    // Hears an open recording, from its cache or anew. kFailed comes after a message, kCancelled without.
    Hearing Hear(const HearingWish& wish, const Console& console);
    // After kDone.
    MelodyReport Report();

    CkvoAudioFile& GetAudio() { return audio_; }
    CMelodyAnalyzer& GetAnalyzer() { return analyzer_; }

private:
    std::string file_;
    std::chrono::steady_clock::time_point start_;
    CacheUse cache_ = CacheUse::kNone;
    CkvoAudioFile audio_;
    CMelodyAnalyzer analyzer_;
};

} // namespace sonorelle
