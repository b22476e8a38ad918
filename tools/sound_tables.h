// The single tables of the report, and what their cells are written with.
#pragma once

#include "sound_report.h"

#include <map>
#include <string>
#include <vector>

namespace sonorelle::tools {

using ReportRow = std::vector<std::string>;
using SoundResults = std::vector<SoundResult>;

struct PitchTargets {
    double medianCents;
    double highCents; // 95th percentile
};

// sound_tables_pitch.cpp
ReportTable UnisonTable(const SoundResults& results);
ReportTable PitchTable(const SoundResults& results, const PitchTargets& targets, bool songs);
ReportTable PitchBySound(const SoundResults& results, const PitchTargets& targets, const char* what);
ReportTable LeadTable(const SoundResults& results);

// sound_tables_colour.cpp
ReportTable FormantTable(const SoundResults& results, bool songs);
ReportTable ColourTable(const SoundResults& results, bool songs);
ReportTable TimeTable(const SoundResults& results, const char* what);
ReportTable HissTable(const SoundResults& results, const char* what);

// As printf, up to 900 characters.
[[gnu::format(printf, 1, 2)]] std::string Text(const char* format, ...);
// With kMissed behind it where it does not hold.
std::string Marked(const std::string& text, bool holds);
std::string Interval(int semitones); // with its sign

// All sounds at one interval.
SoundFigures Pooled(const SoundResults& results, std::map<int, SoundFigures> SoundResult::*which,
                    int interval);

} // namespace sonorelle::tools
