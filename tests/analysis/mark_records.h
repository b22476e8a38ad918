// The records of a container of marks.

#pragma once

#include "analysis/pitch_marks.h"

#include <vector>

namespace sonorelle {

inline std::vector<PitchMarkRecord> RecordsOf(const CPitchMarks& marks) {
    const PitchMarkRecord* data = nullptr;
    const std::int32_t count = marks.GetData(data);
    return {data, data + count};
}

} // namespace sonorelle
