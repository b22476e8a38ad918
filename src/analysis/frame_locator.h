// Finds runs of voiced frames under a window of sample positions.
//
// The stages of the note analysis walk a window over the frames. A window is wanted by its sample positions
// and has to be fitted onto frames that are voiced throughout. Positions rise, so frames are found by binary
// search, and the ends of runs from sets of bits in two layers, 4096 frames at a look: a run of ten minutes
// costs hardly more than a short one.

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

// Frame indices from 0 up to below a count.
class FrameSet {
public:
    explicit FrameSet(std::size_t size); // empty
    bool Contains(std::int32_t index) const;
    void Insert(std::int32_t index);
    void Remove(std::int32_t index);
    // The first member from `index` on, or the count.
    std::int32_t FirstFrom(std::int32_t index) const;

private:
    std::int32_t count;
    std::vector<std::uint64_t> members;  // a bit a frame
    std::vector<std::uint64_t> occupied; // a bit a word of `members`: it is not 0
};

class FrameLocator {
public:
    // Copies positions and voicing; there must be at least one frame. A position below the one before counts
    // as equal to it, so that a walk over the frames ends whatever they hold. Allocates.
    explicit FrameLocator(const std::vector<AnalysisFrame>& frames);

    std::int32_t Count() const { return static_cast<std::int32_t>(positions.size()); }
    std::int32_t LastIndex() const { return Count() - 1; }
    std::int64_t Position(std::int32_t index) const { return positions[static_cast<std::size_t>(index)]; }
    bool IsVoiced(std::int32_t index) const { return voiced.Contains(index); }
    void SetUnvoiced(std::int32_t index);

    // The first voiced frame from `index` on, or the last frame of all.
    std::int32_t FirstVoiced(std::int32_t index) const;
    // The first frame at or behind `position`, or the last frame of all.
    std::int32_t FirstNotBefore(std::int64_t position) const;

    // Fits `window`, wanted from its `start` to its `end`, onto a run of voiced frames: it begins with the
    // last frame at or before the start, or the next voiced one, and keeps its length as far as the run goes.
    // A fit shorter than `minLength` samples gives way to the next run, taken with the length `nextLength`.
    // Near the end of the file the window may come to lie on unvoiced frames; its `last` is then the last
    // frame of all.
    void Locate(FrameWindow& window, std::int64_t minLength, std::int64_t nextLength) const;

private:
    // The first frame behind `position`, or Count(); quick when it lies near `guess`.
    std::int32_t FirstBehind(std::int64_t position, std::int32_t guess) const;

    std::vector<std::int32_t> positions;
    FrameSet voiced;
    FrameSet unvoiced; // all others
};

} // namespace sonorelle
