// How a chord is recognised: its notes are reduced to different pitch classes, and notes are turned down an
// octave, one gap at a time from the bottom, until the chord stands in thirds or has turned through all its
// inversions. Then the distances of the upper notes from the lowest name it.

#include "harmony/chords.h"

#include "platform/result_codes.h"

#include <algorithm>
#include <array>
#include <utility>

namespace sonorelle::ConsortierClassic {
namespace {

constexpr std::int32_t kMinorThird = 3;
constexpr std::int32_t kMajorThird = 4;

struct TriadRow {
    std::int32_t fifth, third; // semitones above the lowest note
    std::int32_t type;
};

struct TetradRow {
    std::int32_t third, fifth, seventh; // semitones above the root
    std::int32_t type;
};

// clang-format off
constexpr TriadRow kTriads[] = {
    // fifth third
    {  7,    4,   kMajorTriad      },
    {  7,    3,   kMinorTriad      },
    {  6,    3,   kDiminishedTriad },
    {  8,    4,   kAugmentedTriad  },
};

constexpr TetradRow kTetrads[] = {
    // third fifth seventh
    {  4,    7,    11,  kMajorSeventh      },
    {  3,    7,    10,  kMinorSeventh      },
    {  4,    7,    10,  kDominantSeventh   },
    {  3,    6,    10,  kHalfDiminished    },
    {  3,    6,     9,  kDiminishedSeventh },
    {  3,    7,    11,  kMinorMajorSeventh },
};
// clang-format on

struct PitchSet {
    std::array<std::int32_t, 4> notes{};
    std::int32_t count = 0;

    std::int32_t& operator[](std::int32_t index) { return notes[static_cast<std::size_t>(index)]; }
    std::int32_t Above(std::int32_t index) { return (*this)[index] - notes[0]; }
    bool Has(std::int32_t note) const { return std::find(notes.begin(), End(), note) != End(); }
    void Add(std::int32_t note) { (*this)[count++] = note; }
    void Sort() {
        for (std::int32_t i = 1; i < count; ++i)
            for (std::int32_t j = i; j > 0 && (*this)[j] < (*this)[j - 1]; --j)
                std::swap((*this)[j], (*this)[j - 1]);
    }

private:
    std::array<std::int32_t, 4>::const_iterator End() const { return notes.begin() + count; }
};

PitchSet DifferentClasses(const std::array<std::int32_t, 4>& pitches) {
    PitchSet set;
    for (const std::int32_t pitch : pitches)
        if (pitch >= 0 && !set.Has(PitchClass(pitch))) set.Add(PitchClass(pitch));
    set.Sort();
    return set;
}

void TurnIntoThirds(PitchSet& set) {
    for (std::int32_t round = 0; round < set.count; ++round) {
        std::int32_t upper = 1;
        while (upper < set.count &&
               (set[upper] - set[upper - 1] == kMinorThird || set[upper] - set[upper - 1] == kMajorThird))
            ++upper;
        for (; upper < set.count; ++upper) set[upper] -= kSemitonesInOctave;
        set.Sort();
    }
}

// A fifth that no triad has leaves the chord without a type; one that some triad has, over another third,
// makes it "other".
std::int32_t TriadTypeOf(std::int32_t third, std::int32_t fifth) {
    std::int32_t type = kNoTriad;
    for (const TriadRow& row : kTriads) {
        if (row.fifth != fifth) continue;
        if (row.third == third) return row.type;
        type = kOtherTriad;
    }
    return type;
}

std::int32_t TetradTypeOf(std::int32_t third, std::int32_t fifth, std::int32_t seventh) {
    for (const TetradRow& row : kTetrads)
        if (row.third == third && row.fifth == fifth && row.seventh == seventh) return row.type;
    return kOtherTetrad;
}

ChordRecord DegreeTriad(const CKey& key, std::int32_t position) {
    const auto tone = [&](std::int32_t n) { return key.ScaleWalk(position, Direction::kUp, n); };
    return RecogniseChord(tone(kRootTone), tone(kThirdTone), tone(kFifthTone), tone(kRootTone));
}

ChordRecord DegreeTetrad(const CKey& key, std::int32_t position) {
    const auto tone = [&](std::int32_t n) { return key.ScaleWalk(position, Direction::kUp, n); };
    return RecogniseChord(tone(kRootTone), tone(kThirdTone), tone(kFifthTone), tone(kSeventhTone));
}

// By how many notes were found, not by how many were asked for: in the whole-tone scale the seventh tone is
// the root again, and its four-note chords have the type of a triad.
std::int32_t TypeFound(const ChordRecord& chord) {
    return chord.noteCount < kTetradNotes ? chord.triadType : chord.tetradType;
}

ChordRecord TriadOn(const CKey& key, std::int32_t pitchClass) {
    return {pitchClass, kTriadNotes, DiatonicTriadType(key, key.Position(pitchClass)), kNoTetrad};
}

ChordRecord TetradOn(const CKey& key, std::int32_t pitchClass) {
    return {pitchClass, kTetradNotes, kNoTriad, DiatonicTetradType(key, key.Position(pitchClass))};
}

} // namespace

ChordRecord RecogniseChord(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    PitchSet set = DifferentClasses({a, b, c, d});
    ChordRecord chord{0, set.count, kNoTriad, kNoTetrad};
    if (set.count < kTriadNotes) return chord;
    TurnIntoThirds(set);
    chord.root = PitchClass(set[0]);
    if (set.count == kTriadNotes)
        chord.triadType = TriadTypeOf(set.Above(1), set.Above(2));
    else
        chord.tetradType = TetradTypeOf(set.Above(1), set.Above(2), set.Above(3));
    return chord;
}

void ChordToPitches(const ChordRecord& chord, std::int32_t (&out)[4]) {
    std::fill_n(out, 4, kNoPitch);
    if (NamesNoChord(chord)) return;
    const std::int32_t root = kMiddleC + PitchClass(chord.root);
    out[0] = root;
    for (const TriadRow& row : kTriads) {
        if (row.type != chord.triadType) continue;
        out[1] = root + row.third;
        out[2] = root + row.fifth;
    }
    for (const TetradRow& row : kTetrads) {
        if (row.type != chord.tetradType) continue;
        out[1] = root + row.third;
        out[2] = root + row.fifth;
        out[3] = root + row.seventh;
    }
}

std::int32_t DiatonicTriadType(const CKey& key, std::int32_t position) {
    return TypeFound(DegreeTriad(key, position));
}

std::int32_t DiatonicTetradType(const CKey& key, std::int32_t position) {
    return TypeFound(DegreeTetrad(key, position));
}

bool IsDiatonicChord(const CKey& key, const ChordRecord& chord) {
    if (IsNoChord(chord)) return true;
    if (!key.IsInScale(chord.root)) return false;
    const std::int32_t position = key.Position(chord.root);
    if (chord.noteCount == kTriadNotes) return chord.triadType == DiatonicTriadType(key, position);
    if (chord.noteCount == kTetradNotes) return chord.tetradType == DiatonicTetradType(key, position);
    return false;
}

std::int32_t ChordsForPitch(const CKey& key, std::int32_t pitch, ChordRecord* out, std::int32_t n) {
    if (out == nullptr) return kBadArgument;
    const std::int32_t pitchClass = PitchClass(pitch);
    if (!key.IsInScale(pitch)) {
        for (std::int32_t i = 0; i < n; ++i) out[i] = {pitchClass, 0, kNoTriad, kNoTetrad};
        return kBadArgument;
    }
    const std::int32_t position = key.Position(pitch);
    const auto rootOfWhichItIs = [&](std::int32_t tone) {
        return PitchClass(pitchClass - key.ScaleWalk(position, Direction::kDown, tone));
    };
    std::int32_t written = 0;
    for (const std::int32_t tone : {kRootTone, kThirdTone, kFifthTone})
        if (written < n) out[written++] = TriadOn(key, rootOfWhichItIs(tone));
    for (const std::int32_t tone : {kRootTone, kThirdTone, kFifthTone, kSeventhTone})
        if (written < n) out[written++] = TetradOn(key, rootOfWhichItIs(tone));
    return kOk;
}

std::int32_t AllDiatonicChords(const CKey& key, ChordRecord* out) {
    std::int32_t count = 0;
    for (std::int32_t position = 0; position < kSemitonesInOctave; ++position) {
        const std::int32_t pitchClass = PitchClass(key.GetRoot() + position);
        if (!key.IsInScale(pitchClass)) continue;
        if (out != nullptr) {
            out[count] = TriadOn(key, pitchClass);
            out[count + 1] = TetradOn(key, pitchClass);
        }
        count += 2;
    }
    return count;
}

ChordRecord LegacyChord(const CKey& key, std::int32_t pitch) { return DegreeTriad(key, key.Position(pitch)); }

} // namespace sonorelle::ConsortierClassic
