// The tables of the sound check, with what each figure ought to be beside it.
#pragma once

#include "sound_session.h"

#include <string>
#include <vector>

namespace sonorelle::tools {

struct ReportTable {
    std::string title;
    std::string note;                           // what to know in order to read it; may be empty
    std::vector<std::vector<std::string>> rows; // the first holds the headings
};

// A figure that misses its target carries this behind it.
inline constexpr const char* kMissed = " MISSED";

// Songs and recordings apart; either may be empty.
std::vector<ReportTable> MakeTables(const std::vector<SoundResult>& songs,
                                    const std::vector<SoundResult>& recordings);

std::size_t CountMissed(const std::vector<ReportTable>& tables);

std::string AsText(const ReportTable& table);
std::string AsMarkdown(const ReportTable& table);

} // namespace sonorelle::tools
