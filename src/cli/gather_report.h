// From the objects of a finished analysis to a report.

#pragma once

#include "cli/melody_report.h"

#include <string>

namespace sonorelle {

class CMelodyAnalyzer;
class CkvoAudioFile;

// Collects the results of a finished analysis. `elapsedSeconds` is left at 0.
MelodyReport GatherReport(std::string file, CacheUse cache, const CkvoAudioFile& audio,
                          CMelodyAnalyzer& analyzer);

} // namespace sonorelle
