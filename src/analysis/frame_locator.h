// Finds runs of voiced frames under a window of sample positions.
//
// The stages of the note analysis walk a window over the frames. A window is wanted by its sample positions and has to be
// fitted onto frames that are voiced throughout. Positions rise, so frames are found by binary search, and the ends of runs
// from a set of bits, 64 frames at a look: the cost of a look-up does not grow with the length of the run.

#pragma once

#include "analysis/records.h"

#include <cstdint>
#include <vector>

namespace sonorelle {

// Frames `first` to `last` and the sample positions that belong to them.
struct FrameWindow {
    std::int32_t first = 0;
    std::int32_t last = 0;
    std::int64_t start = 0;
    std::int64_t end = 0;
};

class FrameLocator {
public:
    // Copies positions and voicing; there must be at least one frame. Allocates.
    explicit FrameLocator(const std::vector<AnalysisFrame>& frames);

    std::int32_t Count() const { return static_cast<std::int32_t>(positions.size()); }
    std::int32_t LastIndex() const { return Count() - 1; }
    std::int64_t Position(std::int32_t index) const { return positions[static_cast<std::size_t>(index)]; }
    bool IsVoiced(std::int32_t index) const;
    void SetUnvoiced(std::int32_t index);

    // The first voiced frame from `index` on, or the last frame of all.
    std::int32_t FirstVoiced(std::int32_t index) const;
    // The first frame at or behind `position`, or the last frame of all.
    std::int32_t FirstNotBefore(std::int64_t position) const;

    // Fits `window`, wanted from its `start` to its `end`, onto a run of voiced frames: it begins with the last frame at
    // or before the start, or the next voiced one, and keeps its length as far as the run goes. A fit shorter than
    // `minLength` samples gives way to the next run, taken with the length `nextLength`. Near the end of the file the
    // window may come to lie on unvoiced frames; its `last` is then the last frame of all.
    void Locate(FrameWindow& window, std::int64_t minLength, std::int64_t nextLength) const;

private:
    std::int32_t FirstUnvoiced(std::int32_t index) const; // or Count()
    // The first frame behind `position`, or Count(); quick when it lies near `guess`.
    std::int32_t FirstBehind(std::int64_t position, std::int32_t guess) const;

    std::vector<std::int32_t> positions;
    std::vector<std::uint64_t> voiced; // a bit a frame
};

} // namespace sonorelle
