// The mean pitch of the voiced frames of a window that mostly grows.

#pragma once

#include "analysis/records.h"

#include <cstdint>
#include <vector>

namespace sonorelle {

class VoicedMean {
public:
    explicit VoicedMean(const std::vector<AnalysisFrame>& source) : frames(source) {}

    // Over the voiced frames from `newFirst` up to below `last`; not a number when there are none. Going on
    // with the same first frame costs only what is new.
    double Mean(std::int32_t newFirst, std::int32_t last) {
        if (newFirst != first || last < end) {
            first = end = newFirst;
            sum = 0;
            count = 0;
        }
        for (; end < last; ++end) {
            const AnalysisFrame& frame = frames[static_cast<std::size_t>(end)];
            if (frame.voiced == 0) continue;
            sum += static_cast<double>(frame.pitch);
            ++count;
        }
        return sum / count;
    }

    // To be called when the frames have changed.
    void Forget() { first = end = -1; }

private:
    const std::vector<AnalysisFrame>& frames;
    std::int32_t first = -1;
    std::int32_t end = -1;
    double sum = 0;
    std::int32_t count = 0;
};

} // namespace sonorelle
