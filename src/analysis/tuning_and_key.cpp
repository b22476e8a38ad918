#include "analysis/tuning_and_key.h"

#include "platform/saturate.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr std::size_t kPitchClasses = 12;
using Profile = std::array<float, kPitchClasses>;

//                                      C  C# D  D# E  F  F# G  G# A  A# B
constexpr Profile kMajorScale = {1, 0, 1, 0, 1, 1, 0, 1, 0, 1, 0, 1};
constexpr Profile kMinorScale = {1, 0, 1, 1, 0, 1, 0, 1, 1, 0, 1, 1}; // with both sevenths

//                               C     C#    D     D#    E     F     F#    G     G#    A     A#    B
constexpr Profile kMajorFit = {6.35F, 2.23F, 3.48F, 2.33F, 4.38F, 4.09F,
                               2.52F, 5.19F, 2.39F, 3.66F, 2.29F, 2.88F};
constexpr Profile kMinorFit = {6.33F, 2.68F, 3.52F, 5.38F, 2.60F, 3.53F,
                               2.54F, 4.75F, 3.98F, 2.69F, 3.34F, 3.17F};

// A scale is a candidate when it holds this share of what the best one holds.
constexpr float kCandidateShare = 0.95F;

Profile Normalised(Profile profile) {
    float sum = 0;
    for (const float value : profile) sum += value;
    for (float& value : profile) value /= sum;
    return profile;
}

// The histogram counted from `root`, weighed by a profile.
float Fit(const PitchClassHistogram& histogram, std::size_t root, const Profile& profile) {
    float sum = 0;
    for (std::size_t j = 0; j < kPitchClasses; ++j) sum += histogram[(root + j) % kPitchClasses] * profile[j];
    return sum;
}

// Length-weighted means of a deviation and of its size.
struct Deviation {
    double sum = 0;
    double size = 0;

    void Add(double deviation, double weight) {
        sum += deviation * weight;
        size += std::fabs(deviation) * weight;
    }
};

} // namespace

float EstimateTuning(std::span<const NoteRecord> notes) {
    Deviation onGrid;
    Deviation offGrid;
    double weight = 0;
    for (const NoteRecord& note : notes) {
        const auto pitch = static_cast<double>(note.pitch);
        const double length = note.length;
        onGrid.Add(pitch - std::floor(pitch + 0.5), length);
        offGrid.Add(pitch - (std::floor(pitch) + 0.5), length);
        weight += length;
    }
    if (!(weight > 0)) return 0;
    const double deviation = onGrid.sum / weight;
    double otherDeviation = offGrid.sum / weight;
    const double cents = std::floor(onGrid.size / weight * 100.0 + 0.5);
    const double otherCents = std::floor(offGrid.size / weight * 100.0 + 0.5);
    // Back to the grid of semitones.
    otherDeviation += otherDeviation <= 0 ? 0.5 : -0.5;
    const bool first =
        otherCents > cents || (otherCents == cents && std::fabs(otherDeviation) > std::fabs(deviation));
    return static_cast<float>(first ? deviation : otherDeviation);
}

PitchClassHistogram CountPitchClasses(std::span<const NoteRecord> notes, float tuning, std::int32_t offset) {
    PitchClassHistogram histogram{};
    for (const NoteRecord& note : notes) {
        const double pitch =
            std::floor(static_cast<double>(note.pitch) + 0.5 - static_cast<double>(tuning) + offset);
        constexpr auto kOctave = static_cast<std::int32_t>(kPitchClasses);
        const std::int32_t remainder = TruncateToI32(pitch) % kOctave;
        histogram[static_cast<std::size_t>((remainder + kOctave) % kOctave)] +=
            static_cast<float>(note.length);
    }
    return histogram;
}

std::int32_t EstimateKey(const PitchClassHistogram& histogram) {
    std::array<float, kPitchClasses> majorScores{};
    std::array<float, kPitchClasses> minorScores{};
    float best = 0;
    for (std::size_t root = 0; root < kPitchClasses; ++root) {
        majorScores[root] = Fit(histogram, root, kMajorScale);
        minorScores[root] = Fit(histogram, root, kMinorScale);
        best = std::max({best, majorScores[root], minorScores[root]});
    }
    const auto isCandidate = [best](float score) { return score > kCandidateShare * best; };

    const Profile majorFit = Normalised(kMajorFit);
    const Profile minorFit = Normalised(kMinorFit);
    std::array<float, kPitchClasses> minorFits{};
    std::int32_t key = -1;
    float highest = 0;
    for (std::size_t root = 0; root < kPitchClasses; ++root) {
        if (isCandidate(minorScores[root])) minorFits[root] = Fit(histogram, root, minorFit);
        if (!isCandidate(majorScores[root])) continue;
        const float fit = Fit(histogram, root, majorFit);
        if (fit > highest) {
            highest = fit;
            key = static_cast<std::int32_t>(root);
        }
    }
    // A quirk that stays: major candidates are asked a second time, with the fit of the minor key on the same
    // root. Where both are candidates and minor fits best, the major key is the answer. Melodies that use
    // both sevenths come out in major for it, and the harmonies of saved work rest on that.
    const auto challenge = [&](std::int32_t candidate, std::size_t root) {
        if (minorFits[root] > highest) {
            highest = minorFits[root];
            key = candidate;
        }
    };
    for (std::size_t root = 0; root < kPitchClasses; ++root) {
        if (isCandidate(majorScores[root])) challenge(static_cast<std::int32_t>(root), root);
    }
    for (std::size_t root = 0; root < kPitchClasses; ++root) {
        if (isCandidate(minorScores[root])) challenge(static_cast<std::int32_t>(root + kPitchClasses), root);
    }
    return key;
}

} // namespace sonorelle
