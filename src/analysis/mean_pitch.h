// Means over stretches of frames.

#pragma once

#include "analysis/records.h"

#include <cstdint>
#include <vector>

namespace sonorelle {

// The trimmed mean pitch of the voiced frames from `first` up to below `last`: the mean of their middle half
// when there are eight or more, of all of them when there are fewer. With `stable`, a middle half that hardly
// deviates (by less than 0.1 semitones on average) gives way to the mean of all. Not a number when there are
// none. `scratch` is working space.
float MeanPitch(const AnalysisFrame* frames, std::int32_t first, std::int32_t last, bool stable,
                std::vector<float>& scratch);

// Mean levels over any stretch at the cost of one subtraction.
class LevelMeans {
public:
    explicit LevelMeans(const std::vector<AnalysisFrame>& frames);
    // Over the frames from `first` up to below `last`; not a number when there are none.
    float Mean(std::int32_t first, std::int32_t last) const;

private:
    std::vector<double> sums; // of all levels before each frame
};

} // namespace sonorelle
