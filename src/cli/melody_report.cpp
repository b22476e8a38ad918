#include "cli/melody_report.h"

namespace sonorelle {

const char* CacheUseName(CacheUse use) {
    switch (use) {
    case CacheUse::kLoaded:
        return "loaded";
    case CacheUse::kWritten:
        return "written";
    case CacheUse::kNone:
        return "none";
    }
    return "none";
}

double SecondsOf(const MelodyReport& report, std::int32_t position) {
    return report.sampleRate > 0 ? position / static_cast<double>(report.sampleRate) : 0.0;
}

} // namespace sonorelle
