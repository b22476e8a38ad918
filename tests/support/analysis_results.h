// A copy of all that an analysis found, and what must hold for the results of any file whatever.
#pragma once

#include "analysis/melody_analyzer.h"
#include "analysis/records.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace sonorelle::test {

// Of the same number and the same bits.
template<class Record>
bool SameRecords(const std::vector<Record>& a, const std::vector<Record>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Record)) == 0);
}

struct AnalysisResults {
    AnalysisResults() = default;
    // After StoreResults or LoadCache.
    explicit AnalysisResults(const CMelodyAnalyzer& analyzer);

    bool SameBits(const AnalysisResults& other) const;

    std::vector<PitchMarkRecord> marks;
    std::vector<AnalysisFrame> frames;
    std::vector<NoteRecord> notes;
    float tuningOffset = 0;
};

// What every analysis of a file of `length` frames keeps: marks rise strictly from 0 to its end, one frame a
// mark, all numbers finite, levels and tuning in their ranges, notes in order and within the file. Names the
// first thing that does not hold; empty when all does.
std::string WhatIsWrong(const AnalysisResults& results, std::int32_t length);

// Sets a file's time of last change; nanoseconds since the start of 1970.
void SetModificationTime(const std::filesystem::path& path, std::int64_t nanoseconds);

} // namespace sonorelle::test
