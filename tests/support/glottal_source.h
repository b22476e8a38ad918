// The flow through the glottis, differentiated as by the lips' radiation, pulse by pulse.
//
// The pulse is the polynomial of Klatt and Klatt (1990, "KLGLOTT88"): the flow rises with the square of time
// and falls with the cube until the glottis closes at once. Its derivative in the open phase, x from 0 to 1,
// is 2 x - 3 x^2; the closure is a step of height 1, and it is what excites the tract. Sampled as it is, that
// step would sound differently at every sub-sample position and fold back above half of the sample rate; so
// the corners are replaced by band-limited ones.
#pragma once

#include <cstddef>
#include <vector>

namespace sonorelle::test {

class GlottalSource {
public:
    GlottalSource();

    // Adds one pulse to frames 0 to count - 1. The closure lies at closureFrame, which need not be whole, the
    // opening openFrames before it. What falls outside of the buffer is left out.
    void AddPulse(float* frames, std::size_t count, double closureFrame, double openFrames,
                  double strength) const;

private:
    static constexpr int kReach = 16; // frames on either side of a corner that its correction touches
    static constexpr int kPhases =
        256; // table points a frame; straight lines between leave an error of -100 dB

    void AddCorner(float* frames, std::size_t count, double position, double step, double slope) const;

    std::vector<double> stepTable; // band-limited unit step, from -kReach to kReach
    std::vector<double> rampTable; // band-limited ramp less the ideal one: max(u, 0)
};

} // namespace sonorelle::test
