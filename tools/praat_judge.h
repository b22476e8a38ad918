// Praat as the judge: an independent program that measures sound files. See sound_check.praat.
#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <vector>

namespace sonorelle::tools {

struct PitchRange {
    double floorHertz = 60.0; // the analysis window spans three of its periods
    double ceilingHertz = 1000.0;
};

// One sound to listen to.
struct PraatJob {
    std::filesystem::path sound;
    PitchRange pitch;
    double formantCeilingHertz = 0.0; // of five formants; 0: pitch alone
};

// What was heard at one moment; NaN where there is nothing.
struct HeardFrame {
    double seconds = 0.0;
    double hertz = 0.0;
    std::array<double, 3> formantHertz{};
    double harmonicityDecibels = 0.0;
};

struct HeardSound {
    static constexpr double kStepSeconds = 0.01;

    std::vector<HeardFrame> frames;       // each kStepSeconds, the first at one step
    std::vector<double> envelopeDecibels; // in bands of 100 Hz, up to 8 kHz

    // The frame nearest to a time; null outside.
    const HeardFrame* At(double seconds) const;
};

// Writes job list and results into `folder`. One result a job, or none at all when Praat cannot be run or
// fails; it says why on stderr itself.
std::vector<HeardSound> Listen(const std::vector<PraatJob>& jobs, const std::filesystem::path& folder);

// Praat's version in one line; empty without Praat.
std::string PraatVersion(const std::filesystem::path& folder);

} // namespace sonorelle::tools
