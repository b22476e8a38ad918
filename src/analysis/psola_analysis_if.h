// The mark finder, as its users see it.

#pragma once

#include <cstdint>

namespace sonorelle {

class CPSOLAAnalysisIf {
public:
    virtual ~CPSOLAAnalysisIf() = default;

    // Forgets all input and empties the list of marks but for one at 0. 0.
    virtual std::int32_t Reset() = 0;
    // Takes `count` samples of each channel (f32, a peak of about 1) and places every mark that they allow.
    // Without channels nothing is taken. 0; kBadArgument for a negative count.
    virtual std::int32_t Process(const float* const* channelBuffers, std::int32_t count) = 0;
    // Sets a mark a fixed way behind the last one, for callers who need one behind the end of what they gave.
    virtual std::int32_t AddTailMark() = 0;
    // Places the marks of what is still waiting, and a last one at the end of the signal. 0.
    virtual std::int32_t Finish() = 0;
    // Samples that Process takes before it has to make room.
    virtual std::int32_t GetFreeSpace() const = 0;
};

class CPSOLAAnalysisEnhIf : public CPSOLAAnalysisIf {
public:
    // Replaces the marks of the `count` samples that begin at mark `markIndex` by marks at the period of
    // `pitch` (MIDI, fraction). `channelBuffers` hold these samples. 0; kBadArgument for an index outside the
    // list, no samples or a pitch that is not finite; the list is then untouched.
    virtual std::int32_t ReanalyseRange(const float* const* channelBuffers, std::int32_t count,
                                        std::int32_t markIndex, float pitch) = 0;
};

} // namespace sonorelle
