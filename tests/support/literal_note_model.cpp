#include "support/literal_note_model.h"

#include <algorithm>
#include <cmath>

namespace sonorelle::test {

namespace {

using FrameList = std::vector<AnalysisFrame>;

int Count(const FrameList& array) { return static_cast<int>(array.size()); }

int Held(int index, int n) { return std::max(0, std::min(index, n - 1)); }

const AnalysisFrame& At(const FrameList& array, int index) { return array[static_cast<std::size_t>(index)]; }

AnalysisFrame& At(FrameList& array, int index) { return array[static_cast<std::size_t>(index)]; }

bool Voiced(const FrameList& array, int index) { return At(array, index).voiced != 0; }

double Pitch(const FrameList& array, int index) { return static_cast<double>(At(array, index).pitch); }

double Level(const FrameList& array, int index) { return static_cast<double>(At(array, index).level); }

std::int64_t Position(const FrameList& array, int index) { return At(array, index).position; }

struct Extremes {
    double largest = 0;
    double smallest = 0;
    int largestIndex = 0;
    int smallestIndex = 0;
    double Range() const { return largest - smallest; }
};

// Of equal values the first counts.
Extremes FindExtremes(const FrameList& array, int first, int last) {
    Extremes found{Pitch(array, first), Pitch(array, first), first, first};
    for (int i = first; i <= last; ++i) {
        if (Pitch(array, i) > found.largest) {
            found.largest = Pitch(array, i);
            found.largestIndex = i;
        }
        if (Pitch(array, i) < found.smallest) {
            found.smallest = Pitch(array, i);
            found.smallestIndex = i;
        }
    }
    return found;
}

// Not a number when nothing is voiced.
double MeanOfVoiced(const FrameList& array, int first, int last) {
    double sum = 0;
    int count = 0;
    for (int i = first; i < last; ++i) {
        if (!Voiced(array, i)) continue;
        sum += Pitch(array, i);
        ++count;
    }
    return sum / count;
}

struct Turns {
    std::vector<int> indices;
    std::vector<double> values;
    int Number() const { return static_cast<int>(indices.size()); }
    double Mean() const {
        double sum = 0;
        for (double value : values) sum += value;
        return sum / Number();
    }
};

// Peaks with sign 1, valleys with sign -1.
Turns FindTurns(const FrameList& array, int first, int last, int sign) {
    Turns turns;
    int openedAt = -1;
    for (int i = first + 1; i <= last; ++i) {
        const double d = (Pitch(array, i) - Pitch(array, i - 1)) * sign;
        if (d > 0 && openedAt < 0) openedAt = i;
        if (d < 0 && openedAt >= 0) {
            const int turn = openedAt + static_cast<int>(std::floor((i - openedAt) * 0.5 + 0.5));
            turns.indices.push_back(turn);
            turns.values.push_back(Pitch(array, turn));
            openedAt = -1;
        }
    }
    return turns;
}

int CountSlowPairs(const FrameList& array, const Turns& turns, double sampleRate) {
    int slow = 0;
    for (std::size_t i = 1; i < turns.indices.size(); ++i) {
        const auto distance =
            static_cast<double>(Position(array, turns.indices[i]) - Position(array, turns.indices[i - 1]));
        if (sampleRate / distance <= 20.0) ++slow;
    }
    return slow;
}

int CountCrossings(const FrameList& array, int first, int last, double centre, std::int64_t apart) {
    int crossings = 0;
    std::int64_t lastCrossing = Position(array, first) - apart;
    for (int i = first + 1; i <= last; ++i) {
        const double before = Pitch(array, i - 1);
        const double now = Pitch(array, i);
        const bool crosses = (before < centre && now >= centre) || (before > centre && now <= centre);
        if (!crosses || Position(array, i) - lastCrossing <= apart) continue;
        ++crossings;
        lastCrossing = Position(array, i);
    }
    return crossings;
}

std::int64_t Floored(double seconds, double rate) {
    return static_cast<std::int64_t>(std::floor(seconds * rate));
}

constexpr double kMajorScale[12] = {1, 0, 1, 0, 1, 1, 0, 1, 0, 1, 0, 1};
constexpr double kMinorScale[12] = {1, 0, 1, 1, 0, 1, 0, 1, 1, 0, 1, 1};
constexpr double kMajorProfile[12] = {6.35, 2.23, 3.48, 2.33, 4.38, 4.09, 2.52, 5.19, 2.39, 3.66, 2.29, 2.88};
constexpr double kMinorProfile[12] = {6.33, 2.68, 3.52, 5.38, 2.6, 3.53, 2.54, 4.75, 3.98, 2.69, 3.34, 3.17};

double Correlate(const double (&histogram)[12], int root, const double (&weights)[12]) {
    double sum = 0;
    for (int j = 0; j < 12; ++j) sum += histogram[(root + j) % 12] * weights[j];
    return sum;
}

double Total(const double (&weights)[12]) {
    double sum = 0;
    for (double weight : weights) sum += weight;
    return sum;
}

} // namespace

void LiteralLocate(const FrameList& array, LiteralWindow& window, std::int64_t minLength,
                   std::int64_t nextLength) {
    const int n = Count(array);
    const std::int64_t wanted = window.end - window.start;
    int first = 0;
    if (Position(array, 0) <= window.start) {
        while (first < n - 1 && Position(array, first) <= window.start) ++first;
        first = Held(first - 1, n);
    }
    while (first < n - 1 && !Voiced(array, first)) ++first;
    window.start = Position(array, first);
    int last = first;
    if (window.start < window.end) {
        window.end = window.start + wanted;
        last = std::min(first + 1, n - 1);
        while (last < n && Voiced(array, last) && Position(array, last) <= window.end) ++last;
        last = Held(last - 1, n);
    }
    window.end = Position(array, last);
    if (window.end - window.start < minLength) {
        first = std::min(last + 1, n - 1);
        while (first < n - 1 && !Voiced(array, first)) ++first;
        window.start = Position(array, first);
        window.end = window.start + nextLength;
        last = std::min(first + 1, n - 1);
        while (last < n - 1 && Voiced(array, last) && Position(array, last) < window.end)
            last = std::min(last + 1, n - 1);
    }
    window.first = first;
    window.last = last;
    window.start = Position(array, first);
    window.end = Position(array, last);
}

float LiteralMeanPitch(const FrameList& array, int first, int last, bool stable) {
    std::vector<double> pitches;
    for (int i = first; i < last; ++i) {
        if (Voiced(array, i)) pitches.push_back(Pitch(array, i));
    }
    std::sort(pitches.begin(), pitches.end());
    const int n = static_cast<int>(pitches.size());
    const int q = n >> 2;
    const int from = q > 1 ? (n >> 1) - q : 0;
    const int below = q > 1 ? (n >> 1) + q : n;
    double sum = 0;
    for (int i = from; i < below; ++i) sum += pitches[static_cast<std::size_t>(i)];
    double mean = sum / (below - from);
    if (stable) {
        double deviation = 0;
        for (int i = from; i < below; ++i)
            deviation += std::fabs(pitches[static_cast<std::size_t>(i)] - mean);
        if (deviation / (below - from) < 0.1) {
            double all = 0;
            for (double pitch : pitches) all += pitch;
            mean = all / n;
        }
    }
    return static_cast<float>(mean);
}

float LiteralTuning(const std::vector<NoteRecord>& notes) {
    double s1 = 0, a1 = 0, s2 = 0, a2 = 0, total = 0;
    for (const NoteRecord& note : notes) {
        const double p = static_cast<double>(note.pitch);
        const double w = note.length;
        const double onGrid = p - std::floor(p + 0.5);
        const double betweenGrid = p - (std::floor(p) + 0.5);
        s1 += onGrid * w;
        a1 += std::fabs(onGrid) * w;
        s2 += betweenGrid * w;
        a2 += std::fabs(betweenGrid) * w;
        total += w;
    }
    if (!notes.empty()) {
        s1 /= total;
        a1 /= total;
        s2 /= total;
        a2 /= total;
    }
    const double r1 = std::floor(a1 * 100 + 0.5);
    const double r2 = std::floor(a2 * 100 + 0.5);
    s2 = s2 <= 0 ? s2 + 0.5 : s2 - 0.5;
    const bool firstGrid = r2 > r1 || (r1 == r2 && std::fabs(s2) > std::fabs(s1));
    return static_cast<float>(firstGrid ? s1 : s2);
}

int LiteralKey(const std::vector<NoteRecord>& notes, int offset) {
    const double tuning = static_cast<double>(LiteralTuning(notes));
    double histogram[12] = {};
    for (const NoteRecord& note : notes) {
        const double semitone = std::floor(static_cast<double>(note.pitch) + 0.5 - tuning + offset);
        const int c = ((static_cast<int>(std::trunc(semitone)) % 12) + 12) % 12;
        histogram[c] += note.length;
    }
    double score1[12], score2[12], best = 0;
    for (int k = 0; k < 12; ++k) {
        score1[k] = Correlate(histogram, k, kMajorScale);
        score2[k] = Correlate(histogram, k, kMinorScale);
        best = std::max(best, std::max(score1[k], score2[k]));
    }
    std::vector<int> candidates;
    for (int k = 0; k < 12; ++k) {
        if (score1[k] > 0.95 * best) candidates.push_back(k);
    }
    for (int k = 0; k < 12; ++k) {
        if (score2[k] > 0.95 * best) candidates.push_back(k + 12);
    }
    double fit1[12] = {}, fit2[12] = {};
    for (int c : candidates) {
        if (c < 12) fit1[c] = Correlate(histogram, c, kMajorProfile) / Total(kMajorProfile);
        if (c >= 12) fit2[c % 12] = Correlate(histogram, c % 12, kMinorProfile) / Total(kMinorProfile);
    }
    int result = -1;
    double score = 0;
    for (int c : candidates) {
        if (c < 12 && fit1[c] > score) {
            result = c;
            score = fit1[c];
        }
    }
    for (int c : candidates) { // the major ones as well: of k and k + 12 it is k that wins for both
        if (fit2[c % 12] > score) {
            result = c;
            score = fit2[c % 12];
        }
    }
    return result;
}

LiteralNoteModel::LiteralNoteModel(float rate)
    : sampleRate(static_cast<double>(rate)), lengthLong(Floored(0.2, sampleRate)),
      lengthShort(Floored(0.025, sampleRate)), lengthWindow(Floored(0.1, sampleRate)),
      lengthHalf(Floored(0.05, sampleRate)), minNoteLength(Floored(0.042, sampleRate)),
      maxGap(Floored(0.092, sampleRate)) {}

bool LiteralNoteModel::BuildFrames(const std::vector<PitchMarkRecord>& marks) {
    if (marks.empty()) return false;
    frames.clear();
    for (const PitchMarkRecord& mark : marks) {
        const int period = static_cast<int>(mark.period);
        AnalysisFrame frame;
        if (period >= 1) frame.pitch = static_cast<float>(12 * std::log2(sampleRate / period / 440) + 69);
        frame.level = mark.energy;
        frame.voiced = mark.voicing != 0 ? 1 : 0;
        frame.position = mark.position;
        frames.push_back(frame);
    }
    frames1 = frames;
    frames2 = frames;
    return true;
}

void LiteralNoteModel::NormaliseFrames() {
    double largest = 0;
    for (const AnalysisFrame& frame : frames) largest = std::max(largest, static_cast<double>(frame.level));
    const double factor = largest > 0 ? 1 / largest : 0;
    for (AnalysisFrame& frame : frames)
        frame.level = static_cast<float>(static_cast<double>(frame.level) * factor);
    for (int i = 0; i < Count(frames); ++i) {
        if (Voiced(frames, i) && At(frames, i).level < 0.0005F) At(frames, i).voiced = 0;
        if (i == 0 || !Voiced(frames, i - 1) || !Voiced(frames, i)) continue;
        if ((Level(frames, i) - Level(frames, i - 1)) / Level(frames, i - 1) > 0.95)
            At(frames, i - 1).voiced = 0;
    }
}

void LiteralNoteModel::CutOctaveJumps() {
    const int n = Count(frames);
    LiteralWindow w;
    w.end = lengthWindow;
    while (w.last < n - 1) {
        LiteralLocate(frames, w, lengthShort, lengthShort);
        const Extremes found = FindExtremes(frames, w.first, w.last);
        if (found.Range() <= 6.0) {
            w.start += static_cast<std::int64_t>(static_cast<double>(lengthHalf) * 0.125);
            w.first = 0;
            while (w.first < n - 1 && Position(frames, w.first) < w.start) ++w.first;
            w.start = Position(frames, w.first);
        } else {
            const double mid = (found.largest + found.smallest) / 2;
            int cut = found.smallestIndex;
            for (int i = w.first + 1; i < w.last; ++i) {
                if ((Pitch(frames, i) < mid) == (Pitch(frames, w.first) < mid)) continue;
                cut = i;
                break;
            }
            At(frames, cut).voiced = 0;
            w.start += lengthHalf;
        }
        w.end = w.start + lengthHalf;
    }
    frames1 = frames;
}

void LiteralNoteModel::FlattenVibrato() {
    const int n = Count(frames);
    const auto apart = static_cast<std::int64_t>(0.0116 * sampleRate);
    int c = 0;
    LiteralWindow w;
    w.end = lengthLong;
    const auto startAt = [&](int index) {
        w.first = Held(index, n);
        w.start = Position(frames, w.first);
        w.end = w.start + lengthLong;
    };
    const auto locate = [&] { LiteralLocate(frames, w, lengthShort, lengthLong); };
    while (w.last < n - 1) {
        locate();
        const Extremes found = FindExtremes(frames, w.first, w.last);
        if (found.Range() >= 6.0) {
            startAt(c + 1);
            locate();
            c = w.first;
            continue;
        }
        const Turns peaks = FindTurns(frames, w.first, w.last, 1);
        const Turns valleys = FindTurns(frames, w.first, w.last, -1);
        if (peaks.Number() < 2 || valleys.Number() < 2) {
            startAt(c + 1);
            while (c + 1 < n && Position(frames, c + 1) < w.start + lengthShort) ++c;
            locate();
            continue;
        }
        const double centre = (peaks.Mean() + valleys.Mean()) / 2;
        const double meanA = MeanOfVoiced(frames, w.first, w.last);
        const double offset = (found.largest + found.smallest) / 2 - meanA;
        LiteralWindow second;
        second.start = w.end - lengthWindow;
        second.end = w.end + lengthWindow;
        LiteralLocate(frames, second, lengthShort, lengthLong);
        const double meanB = MeanOfVoiced(frames, second.first, second.last);
        const double slow =
            CountSlowPairs(frames, peaks, sampleRate) + CountSlowPairs(frames, valleys, sampleRate);
        const int crossings = CountCrossings(frames, w.first, w.last, centre, apart);
        if (slow / (peaks.Number() + valleys.Number() - 2) < 0.4 || crossings < 4 ||
            std::fabs(offset) > 0.25 || std::fabs(meanB - meanA) > 0.5) {
            startAt(c + 1);
            locate();
            c = w.first;
            continue;
        }
        for (int i = w.first; i < w.last; ++i) At(frames1, i).pitch = static_cast<float>(centre);
        c = w.last;
        w.end += lengthShort;
        locate();
        if (w.last == c) startAt(w.last + 1);
    }
}

void LiteralNoteModel::BridgeDeviations() {
    const int n = Count(frames1);
    for (int i = 0; i < n - 32; ++i) {
        const auto distance = static_cast<double>(Position(frames1, i + 1) - Position(frames1, i));
        const double reach = std::floor(0.075 * sampleRate / distance + 0.5);
        const int length = static_cast<int>(std::max(2.0, std::min(reach, 32.0)));
        for (int j = 1; j <= length; ++j) {
            if (!Voiced(frames1, i) || !Voiced(frames1, i + j)) continue;
            if (!(std::fabs(Pitch(frames1, i) - Pitch(frames1, i + j)) < 0.5)) continue;
            const auto m =
                static_cast<float>((Pitch(frames1, i) + Pitch(frames1, i + j)) / 2); // enters a record
            for (int k = 1; k < j; ++k) {
                if (!Voiced(frames1, i + k) ||
                    !(std::fabs(Pitch(frames1, i + k) - static_cast<double>(m)) > 1.0))
                    continue;
                At(frames1, i + k).pitch = m;
            }
        }
    }
    frames2 = frames1;
}

void LiteralNoteModel::SmoothByMedian() {
    const int n = Count(frames1);
    int c = 0;
    LiteralWindow w;
    w.end = lengthWindow;
    while (w.last < n - 1) {
        LiteralLocate(frames1, w, lengthShort, lengthWindow);
        LiteralWindow small;
        small.start = w.end - lengthShort;
        small.end = w.end + lengthShort;
        LiteralLocate(frames1, small, lengthShort, lengthWindow);
        const double meanB = MeanOfVoiced(frames1, small.first, small.last);
        const double meanA = MeanOfVoiced(frames1, w.first, w.last);
        if (std::fabs(meanB - meanA) <= 0.5) {
            std::vector<float> pitches;
            for (int i = w.first; i <= w.last; ++i) {
                if (Voiced(frames1, i)) pitches.push_back(At(frames1, i).pitch);
            }
            std::sort(pitches.begin(), pitches.end());
            const float median = pitches[pitches.size() / 2];
            for (int i = w.first; i < w.last; ++i) At(frames2, i).pitch = median;
            c = w.last;
            w.end += lengthWindow;
            LiteralLocate(frames1, w, lengthShort, lengthWindow);
            if (w.last == c) {
                w.first = std::min(w.last + 1, n - 1);
                w.start = Position(frames, w.first);
                w.end = w.start + lengthLong;
            }
        } else {
            w.first = std::min(c + 1, n - 1);
            c = w.first;
            w.start = Position(frames1, w.first);
            w.end = w.start + lengthWindow;
            LiteralLocate(frames1, w, lengthShort, lengthWindow);
        }
    }
}

void LiteralNoteModel::SplitAtSteps() {
    const int n = Count(frames2);
    double bestRange = 0;
    int hi = 0;
    int lo = 0;
    LiteralWindow w;
    w.end = lengthHalf;
    const auto startAt = [&](int index) {
        w.first = Held(index, n);
        w.start = Position(frames2, w.first);
        w.end = w.start + lengthHalf;
        bestRange = 0;
        hi = lo = 0;
    };
    while (w.last < n - 1) {
        LiteralLocate(frames2, w, lengthShort, lengthHalf);
        const Extremes found = FindExtremes(frames2, w.first, w.last);
        const double m = MeanOfVoiced(frames2, w.first, w.last);
        if (found.Range() <= 0.5) {
            startAt(w.first + 1);
            continue;
        }
        const bool falls = found.smallestIndex - found.largestIndex >= 0;
        const bool remembered = lo - hi >= 0;
        if (found.Range() > bestRange && (falls == remembered || lo == hi)) {
            w.end = Position(frames2, std::min(w.last + 4, n - 1));
            bestRange = found.Range();
            hi = found.largestIndex;
            lo = found.smallestIndex;
            continue;
        }
        int i = w.first + 1;
        while (i < w.last && (Pitch(frames2, i) < m) == (Pitch(frames2, w.first) < m)) ++i;
        At(frames2, std::min(i, w.last)).voiced = 0;
        startAt(std::max(hi, lo) + 1);
    }
}

double LiteralNoteModel::MeanLevel(const FrameList& array, int first, int last) const {
    double sum = 0;
    for (int i = first; i < last; ++i) sum += Level(array, i);
    return sum / (last - first);
}

void LiteralNoteModel::BuildNotes() {
    notes.clear();
    const int n = Count(frames2);
    int first = 0;
    int last = 0;
    while (last < n - 1) {
        while (first < n - 1 && !Voiced(frames2, first)) ++first;
        last = first + 1;
        if (first == n - 1) break;
        while (last < n - 1 && Voiced(frames2, last)) ++last;
        NoteRecord note;
        note.firstFrame = first;
        note.lastFrame = last;
        note.start = At(frames2, first).position;
        note.end = At(frames2, last).position;
        note.length = note.end - note.start;
        note.pitch = LiteralMeanPitch(frames, first, last, false);
        note.level = static_cast<float>(MeanLevel(frames2, first, last));
        notes.push_back(note);
        first = last;
    }
}

void LiteralNoteModel::Extend(int index, bool withUpperStop) {
    const int n = Count(frames);
    const int noteCount = static_cast<int>(notes.size());
    NoteRecord& note = notes[static_cast<std::size_t>(index)];
    const double low = 0.125 * static_cast<double>(note.level);
    const double high = 100 * static_cast<double>(note.level);
    const auto goesOn = [&](int k) {
        return Level(frames, k) > low && (!withUpperStop || Level(frames, k) < high);
    };
    int k = std::max(note.firstFrame - 1, 0);
    int limit = index > 0 ? notes[static_cast<std::size_t>(index - 1)].lastFrame : 0;
    while (k > limit && goesOn(k)) --k;
    note.firstFrame = Held(std::max(k, limit + 1), n);
    note.start = At(frames, note.firstFrame).position;

    k = std::min(note.lastFrame + 1, n - 1);
    limit = index < noteCount - 1 ? notes[static_cast<std::size_t>(index + 1)].firstFrame : n - 1;
    while (k < limit && goesOn(k)) ++k;
    note.lastFrame = Held(std::min(k, limit - 1), n);
    note.end = At(frames, note.lastFrame).position;
    note.length = note.end - note.start;
}

void LiteralNoteModel::MergePass() {
    const auto isNear = [&](const NoteRecord& earlier, const NoteRecord& later) {
        return std::fabs(static_cast<double>(earlier.pitch) - static_cast<double>(later.pitch)) <
                   pitchTolerance &&
               later.start - earlier.end < maxGap;
    };
    const auto beginsSoftly = [&](const NoteRecord& earlier, const NoteRecord& later) {
        const double e = Level(frames, earlier.lastFrame);
        return (Level(frames, later.firstFrame) - e) / e < 0.95;
    };
    const auto weigh = [&](NoteRecord& t, const NoteRecord& neighbour) {
        t.length = t.end - t.start;
        const double own = t.length;
        const double other = neighbour.length;
        t.pitch = static_cast<float>(
            (other * static_cast<double>(neighbour.pitch) * 2.0 + own * static_cast<double>(t.pitch) * 0.5) /
            (own * 0.5 + other * 2));
        t.level = static_cast<float>(MeanLevel(frames, t.firstFrame, t.lastFrame));
    };
    int i = 0;
    while (i < static_cast<int>(notes.size())) {
        NoteRecord& t = notes[static_cast<std::size_t>(i)];
        const bool isShort = t.length < minNoteLength;
        if (isShort && t.level < 0.0005F) {
            notes.erase(notes.begin() + i);
            continue;
        }
        if (i > 0 && i < static_cast<int>(notes.size()) - 1) {
            const NoteRecord p = notes[static_cast<std::size_t>(i - 1)];
            const NoteRecord q = notes[static_cast<std::size_t>(i + 1)];
            if (isNear(p, t)) {
                if (beginsSoftly(p, t) || isShort) {
                    t.start = p.start;
                    t.firstFrame = p.firstFrame;
                    weigh(t, p);
                    notes.erase(notes.begin() + i - 1);
                    --i;
                    continue;
                }
            } else if (isNear(t, q) && (beginsSoftly(t, q) || isShort)) {
                t.end = q.end;
                t.lastFrame = q.lastFrame;
                weigh(t, q);
                notes.erase(notes.begin() + i + 1);
                --i;
                continue;
            }
        }
        ++i;
    }
}

bool LiteralNoteModel::IsGlide(const NoteRecord& note) const {
    const int first = note.firstFrame;
    const int last = note.lastFrame;
    int a = first;
    while (a < last && !Voiced(frames, a)) ++a;
    int b = last;
    while (b > a && !Voiced(frames, b)) --b; // without any voiced frame both meet at the last
    if (Position(frames, b) - Position(frames, a) > maxGap) return false;
    if (a == b) return true;
    const double d = Pitch(frames, b) - Pitch(frames, a);
    if (std::fabs(d) < 1.0 || std::fabs(d / (b - a)) < 0.03) return false;
    const double m = static_cast<double>(LiteralMeanPitch(frames, first, last, true));
    int total = 0, crossings = 0, below = 0;
    for (int k = first; k < last; ++k) {
        if (!Voiced(frames, k)) continue;
        ++total;
        const double now = Pitch(frames, k);
        const double next = Pitch(frames, k + 1);
        if ((now < m && m < next) || (now > m && m > next)) ++crossings;
        if (now < m) ++below;
    }
    if (crossings > 1 || 2 * total < last - first) return false;
    const double share = static_cast<double>(below) / total;
    return share > 0.4 && share < 0.6;
}

void LiteralNoteModel::DropPass() {
    std::size_t i = 0;
    while (i < notes.size()) {
        if (notes[i].length < minNoteLength || IsGlide(notes[i])) {
            notes.erase(notes.begin() + static_cast<std::ptrdiff_t>(i));
        } else {
            ++i;
        }
    }
}

void LiteralNoteModel::CleanUpNotes() {
    const auto count = [&] { return static_cast<int>(notes.size()); };
    for (int i = 0; i < count(); ++i) {
        if (notes[static_cast<std::size_t>(i)].level > 0.05F) Extend(i, false);
    }
    MergePass();
    for (int i = 0; i < count(); ++i) Extend(i, true);
    DropPass();
    for (int i = count() - 1; i >= 0; --i) Extend(i, true);
    for (NoteRecord& note : notes) {
        const float pitch = LiteralMeanPitch(frames, note.firstFrame, note.lastFrame, false);
        if (pitch > 0) note.pitch = pitch;
    }
}

void LiteralNoteModel::RunStage(int index) {
    if (index == 1) NormaliseFrames();
    if (index == 2) CutOctaveJumps();
    if (index == 3) FlattenVibrato();
    if (index == 4) BridgeDeviations();
    if (index == 5) SmoothByMedian();
    if (index == 6) SplitAtSteps();
    if (index == 7) BuildNotes();
    if (index == 8) CleanUpNotes();
}

} // namespace sonorelle::test
