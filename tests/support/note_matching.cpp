#include "support/note_matching.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>

namespace sonorelle::test {

namespace {

// Limits are decimal numbers and times are quotients: what lies on a limit must not fall out by rounding.
constexpr double kRounding = 1e-9;

double Ratio(std::size_t part, std::size_t whole) {
    return whole == 0 ? 1.0 : static_cast<double>(part) / static_cast<double>(whole);
}

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

// The largest matching by augmenting paths: each known note in turn takes a free partner, or one whose own
// known note finds another.
class Matcher {
public:
    Matcher(std::span<const TimedNote> knownNotes, std::span<const TimedNote> foundNotes,
            const NoteTolerance& limits)
        : known(knownNotes), found(foundNotes), tolerance(limits), partner(foundNotes.size(), kNone) {}

    std::vector<NotePair> Run() {
        for (std::size_t i = 0; i < known.size(); ++i) {
            visited.assign(found.size(), false);
            Place(i);
        }
        std::vector<NotePair> pairs;
        for (std::size_t j = 0; j < found.size(); ++j)
            if (partner[j] != kNone) pairs.push_back({partner[j], j});
        std::sort(pairs.begin(), pairs.end(),
                  [](const NotePair& a, const NotePair& b) { return a.known < b.known; });
        return pairs;
    }

private:
    bool Agree(const TimedNote& a, const TimedNote& b) const {
        return std::abs(a.onsetSeconds - b.onsetSeconds) <= tolerance.onsetSeconds + kRounding &&
               std::abs(a.midiPitch - b.midiPitch) <= tolerance.semitones + kRounding;
    }

    bool Place(std::size_t i) {
        for (std::size_t j = 0; j < found.size(); ++j) {
            if (visited[j] || !Agree(known[i], found[j])) continue;
            visited[j] = true;
            if (partner[j] == kNone || Place(partner[j])) {
                partner[j] = i;
                return true;
            }
        }
        return false;
    }

    std::span<const TimedNote> known;
    std::span<const TimedNote> found;
    NoteTolerance tolerance;
    std::vector<std::size_t> partner; // of each found note
    std::vector<bool> visited;
};

// The pitches that the curve takes between two times, silent stretches left out. low > high: silent
// throughout.
struct PitchRange {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();
};

PitchRange RangeBetween(const Recording& recording, double firstSeconds, double lastSeconds) {
    PitchRange range;
    const auto take = [&](double hertz) {
        if (!(hertz > 0.0)) return;
        const double pitch = MidiPitchFromHertz(hertz);
        range.low = std::min(range.low, pitch);
        range.high = std::max(range.high, pitch);
    };
    // Straight between knots, so that ends and knots hold the extremes.
    take(recording.HertzAt(firstSeconds));
    take(recording.HertzAt(lastSeconds));
    const auto firstKnot =
        static_cast<std::size_t>(std::max(0.0, std::ceil(firstSeconds / Recording::kCurveStepSeconds)));
    for (std::size_t knot = firstKnot; knot < recording.curveHertz.size() &&
                                       static_cast<double>(knot) * Recording::kCurveStepSeconds < lastSeconds;
         ++knot)
        take(recording.curveHertz[knot]);
    return range;
}

// Where the marks lie in their periods on the whole, 0 to 1: the mean direction on the circle, since 0.99 and
// 0.01 are neighbours.
double MeanPhase(std::span<const double> pulses, std::span<const PitchMarkRecord> marks) {
    std::complex<double> sum = 0.0;
    for (const PitchMarkRecord& mark : marks) {
        const auto next = std::upper_bound(pulses.begin(), pulses.end(), static_cast<double>(mark.position));
        if (next == pulses.begin() || next == pulses.end()) continue;
        const double start = *(next - 1);
        sum += std::polar(1.0, 2.0 * std::numbers::pi * (mark.position - start) / (*next - start));
    }
    const double turns = std::arg(sum) / (2.0 * std::numbers::pi);
    return turns - std::floor(turns);
}

} // namespace

std::vector<TimedNote> SungNotes(const Recording& recording) {
    std::vector<TimedNote> notes;
    for (const SungNote& note : recording.notes)
        notes.push_back({note.onsetSeconds, note.offsetSeconds, note.midiPitchAt440});
    return notes;
}

std::vector<TimedNote> FoundNotes(std::span<const NoteRecord> notes, double sampleRate) {
    std::vector<TimedNote> result;
    for (const NoteRecord& note : notes)
        result.push_back({note.start / sampleRate, note.end / sampleRate, static_cast<double>(note.pitch)});
    return result;
}

double NoteScore::Recall() const { return Ratio(matched, known); }
double NoteScore::Precision() const { return Ratio(matched, found); }
double NoteScore::FMeasure() const { return Ratio(2 * matched, known + found); }

NoteScore& NoteScore::operator+=(const NoteScore& other) {
    known += other.known;
    found += other.found;
    matched += other.matched;
    return *this;
}

std::vector<NotePair> MatchNotes(std::span<const TimedNote> known, std::span<const TimedNote> found,
                                 const NoteTolerance& tolerance) {
    return Matcher(known, found, tolerance).Run();
}

NoteScore ScoreNotes(std::span<const TimedNote> known, std::span<const TimedNote> found,
                     const NoteTolerance& tolerance) {
    return {known.size(), found.size(), MatchNotes(known, found, tolerance).size()};
}

double CurveScore::Accuracy() const { return Ratio(within, voiced); }

CurveScore& CurveScore::operator+=(const CurveScore& other) {
    voiced += other.voiced;
    within += other.within;
    octaves += other.octaves;
    missed += other.missed;
    invented += other.invented;
    worstSemitones = std::max(worstSemitones, other.worstSemitones);
    return *this;
}

CurveScore ScoreCurve(const Recording& recording, std::span<const AnalysisFrame> frames,
                      double toleranceSemitones) {
    CurveScore score;
    for (const AnalysisFrame& frame : frames) {
        const double seconds = frame.position / recording.sampleRate;
        const double hertz = recording.HertzAt(seconds);
        const bool sung = hertz > 0.0;
        if (frame.voiced == 0) {
            score.missed += sung ? 1 : 0;
            continue;
        }
        if (!sung) {
            ++score.invented;
            continue;
        }
        ++score.voiced;
        const PitchRange range = RangeBetween(recording, seconds - 1.0 / hertz, seconds + 1.0 / hertz);
        const auto pitch = static_cast<double>(frame.pitch);
        const double deviation = std::max({0.0, range.low - pitch, pitch - range.high});
        score.worstSemitones = std::max(score.worstSemitones, deviation);
        if (deviation <= toleranceSemitones + kRounding) ++score.within;
        const double octaves = std::round(deviation / 12.0);
        if (octaves >= 1.0 && std::abs(deviation - 12.0 * octaves) <= 1.0) ++score.octaves;
    }
    return score;
}

std::vector<VoicedSpan> SteadyVowels(const Recording& recording, double marginSeconds) {
    constexpr double kShortest = 0.1; // seconds
    std::vector<VoicedSpan> spans;
    for (const SungNote& note : recording.notes) {
        const VoicedSpan span{note.onsetSeconds + marginSeconds, note.offsetSeconds - marginSeconds};
        if (span.endSeconds - span.startSeconds >= kShortest) spans.push_back(span);
    }
    return spans;
}

double MarkScore::Share() const { return Ratio(single, periods); }

MarkScore& MarkScore::operator+=(const MarkScore& other) {
    periods += other.periods;
    single += other.single;
    return *this;
}

MarkScore ScoreMarks(const Recording& recording, std::span<const PitchMarkRecord> marks,
                     std::span<const VoicedSpan> spans) {
    const auto before = [](const PitchMarkRecord& mark, double frame) { return mark.position < frame; };
    MarkScore score;
    for (const VoicedSpan& span : spans) {
        const auto& all = recording.pulseFrames;
        const auto firstPulse =
            std::lower_bound(all.begin(), all.end(), span.startSeconds * recording.sampleRate);
        const auto endPulse = std::lower_bound(firstPulse, all.end(), span.endSeconds * recording.sampleRate);
        const std::span<const double> pulses(firstPulse, endPulse);
        if (pulses.size() < 3) continue;
        const auto firstMark = std::lower_bound(marks.begin(), marks.end(), pulses.front(), before);
        const auto endMark = std::lower_bound(firstMark, marks.end(), pulses.back(), before);

        const double phase = MeanPhase(pulses, {firstMark, endMark});
        const double border = phase < 0.5 ? phase + 0.5 : phase - 0.5; // as far from the marks as can be
        for (std::size_t i = 0; i + 2 < pulses.size(); ++i) {
            const double start = pulses[i] + border * (pulses[i + 1] - pulses[i]);
            const double end = pulses[i + 1] + border * (pulses[i + 2] - pulses[i + 1]);
            const auto inside = std::lower_bound(firstMark, endMark, end, before) -
                                std::lower_bound(firstMark, endMark, start, before);
            ++score.periods;
            if (inside == 1) ++score.single;
        }
    }
    return score;
}

double TuningErrorCents(double foundOffsetSemitones, double sungHertz) {
    const double semitones = foundOffsetSemitones - (MidiPitchFromHertz(sungHertz) - 69.0);
    return 100.0 * (semitones - std::round(semitones));
}

KeyAgreement CompareKeys(int found, int sung) {
    if (found == sung) return KeyAgreement::kSame;
    if (found < 0 || sung < 0) return KeyAgreement::kOther;
    // A minor key counts as the major one of its seven notes, a minor third higher.
    const auto notes = [](int key) { return key < 12 ? key : (key - 12 + 3) % 12; };
    return notes(found) == notes(sung) ? KeyAgreement::kRelative : KeyAgreement::kOther;
}

} // namespace sonorelle::test
