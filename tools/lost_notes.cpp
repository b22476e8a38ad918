#include "lost_notes.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace sonorelle::tools {
namespace {

constexpr double kNearSeconds = 0.3;       // an onset further off belongs to another note
constexpr double kTransitionSeconds = 0.1; // shorter than any sung note here

double Middle(const test::TimedNote& note) { return 0.5 * (note.onsetSeconds + note.offsetSeconds); }

bool Covers(const test::TimedNote& note, double seconds) {
    return note.onsetSeconds <= seconds && seconds < note.offsetSeconds;
}

bool AtPitch(const test::TimedNote& a, const test::TimedNote& b, const test::NoteTolerance& tolerance) {
    return std::abs(a.midiPitch - b.midiPitch) <= tolerance.semitones;
}

struct Explanation {
    Loss loss;
    std::size_t found; // the found note that this known one should have been, or found.size()
};

Explanation WhyLost(const test::TimedNote& note, std::span<const test::TimedNote> found,
                    const std::vector<bool>& taken, const test::NoteTolerance& tolerance) {
    for (std::size_t j = 0; j < found.size(); ++j) {
        const double late = found[j].onsetSeconds - note.onsetSeconds;
        if (taken[j] || std::abs(late) > kNearSeconds || !AtPitch(found[j], note, tolerance)) continue;
        return {late > 0.0 ? kOnsetLate : kOnsetEarly, j};
    }
    for (std::size_t j = 0; j < found.size(); ++j)
        if (!taken[j] && std::abs(found[j].onsetSeconds - note.onsetSeconds) <= tolerance.onsetSeconds)
            return {kPitchOff, j};
    const auto cover = std::find_if(found.begin(), found.end(), [&](const test::TimedNote& other) {
        return Covers(other, Middle(note));
    });
    if (cover == found.end()) return {kNothingThere, found.size()};
    return {AtPitch(*cover, note, tolerance) ? kJoined : kSwallowed, found.size()};
}

Loss WhySurplus(const test::TimedNote& note, std::span<const test::TimedNote> known,
                const test::NoteTolerance& tolerance) {
    for (const test::TimedNote& sung : known)
        if (Covers(sung, Middle(note)) && AtPitch(sung, note, tolerance)) return kSplit;
    return note.offsetSeconds - note.onsetSeconds < kTransitionSeconds ? kTransition : kOtherSurplus;
}

} // namespace

LostNotes& LostNotes::operator+=(const LostNotes& other) {
    for (std::size_t i = 0; i < counts.size(); ++i) counts[i] += other.counts[i];
    return *this;
}

const char* LossName(std::size_t loss) {
    constexpr std::array<const char*, kLossKinds> kNames{
        "known: found at its pitch, begins too late",
        "known: found at its pitch, begins too early",
        "known: found at its time, at another pitch",
        "known: joined to another note of its pitch",
        "known: within a note of another pitch",
        "known: nothing found there",
        "found besides: second piece of a known note",
        "found besides: shorter than 0.1 s",
        "found besides: other",
    };
    return kNames[loss];
}

LostNotes FindLostNotes(std::span<const test::TimedNote> known, std::span<const test::TimedNote> found,
                        const test::NoteTolerance& tolerance) {
    std::vector<bool> matched(known.size(), false);
    std::vector<bool> taken(found.size(), false);
    for (const test::NotePair& pair : test::MatchNotes(known, found, tolerance)) {
        matched[pair.known] = true;
        taken[pair.found] = true;
    }
    LostNotes lost;
    for (std::size_t i = 0; i < known.size(); ++i) {
        if (!matched[i]) {
            const Explanation why = WhyLost(known[i], found, taken, tolerance);
            ++lost.counts[why.loss];
            if (why.found < found.size()) taken[why.found] = true;
        }
    }
    for (std::size_t j = 0; j < found.size(); ++j)
        if (!taken[j]) ++lost.counts[WhySurplus(found[j], known, tolerance)];
    return lost;
}

} // namespace sonorelle::tools
