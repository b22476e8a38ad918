// The pitch law of one voice: from a target note and the frequency that the singer sings now to the frequency
// that the voice must have.
//
// The singer's own contour is moved to the voice; `correction` pulls it towards the exact target (1), leaves
// it (0) or mirrors it around the target (-1, twice the variation); `quantize` pulls the note's mean
// deviation to the semitone grid. The result may be averaged over the last blocks; a jump of the singer by
// more than three semitones is followed at once.
//
// One thread at a time (AudioLock). Only Create allocates. Calc costs one logarithm and one power of two.

#pragma once

#include "dsp/ring_buffer.h"

#include <cstdint>
#include <memory>

namespace sonorelle {

class CPitch2Freq final {
public:
    static constexpr float kLongestAverage = 0.1F; // s: longer would blur a vibrato

    // Hz, samples a block, and the length of the average in seconds: 0 for none, as the voices have it, up to
    // kLongestAverage (held); rounded up to whole blocks. kOutOfMemory, kBadArgument for a rate or block that
    // is not positive and finite; `law` is then untouched.
    static std::int32_t Create(std::unique_ptr<CPitch2Freq>& law, float sampleRate, std::int32_t blockSize,
                               float averageSeconds = 0);

    void Reset(); // the last result alone; settings and the last measured pitch stay

    // Hz of MIDI key 69, for what is measured and for the result: 440 until set. What is not positive and
    // finite is ignored.
    void SetInputTuning(float hertz);
    void SetOutputTuning(float hertz);
    // 0 until set. What is not finite is ignored.
    void SetCorrection(float amount); // -1 to 1
    void SetQuantize(float amount);   // 0 to 1

    // `target` and `base` are MIDI pitches with a fraction, `measured` is in Hz. With `addInterval` the
    // contour is moved by target - base; with `average` the result is averaged, if there is an average. Gives
    // Hz, always positive and finite, or 0 where there is no result yet. Arguments that make no frequency (a
    // measured one that is not positive and finite, a pitch that is no number or thousands of semitones away)
    // leave everything as it is and give the last result.
    //   Calc(73, 440, 69, true, false) = 554.37 with all settings at rest: a pure transposition.
    float Calc(float target, float measured, float base, bool addInterval, bool average);

private:
    explicit CPitch2Freq(std::uint32_t averageBlocks);

    float Average(float result);
    float RestartAverage(float result);

    float inputTuning = 440;
    float outputTuning = 440;
    float averageWeight; // 1 / averageLength
    float frequency = 0; // last result, Hz
    float correction = 0;
    float quantize = 0;
    float previousPitch = 0;             // last measured, semitones from inputTuning
    std::uint32_t averageLength;         // blocks of the moving average; 0: none
    std::unique_ptr<RingBuffer> history; // results of these blocks, where there is an average
};

} // namespace sonorelle
