#include "harmony/table_styles.h"

#include "harmony/chords.h"
#include "harmony/styles.h"
#include "platform/result_codes.h"

#include <algorithm>

namespace sonorelle::ConsortierClassic {
namespace {

constexpr std::int32_t kHarmonySlots = kVoiceSlots - 1;

// --- Block chord
// ---------------------------------------------------------------------------------------------------------

enum BlockPattern : std::int32_t {
    kTonicPattern,
    kThirdPattern,
    kFifthPattern,
    kSixthPattern,
    kDiminishedPattern,
    kPassingA,
    kPassingB,
    kPassingC,
    kBlockPatternCount,
};

enum BlockForm : std::int32_t { kBlockForm, kShearingForm, kDrop2Form, kBlockFormCount };

// A place below the melody: the tone-th tone of the harmony scale downward, the melody counted as the first
// (0: the melody itself), and further semitones below that.
struct PlaceBelow {
    std::int32_t tone;
    std::int32_t semitones;
};

constexpr PlaceBelow Tone(std::int32_t n) { return {n, 0}; }
constexpr PlaceBelow Drop(std::int32_t n) { return {n, kSemitonesInOctave}; } // the same, an octave lower
constexpr PlaceBelow Semi(std::int32_t n) { return {0, n}; }

struct BlockRow {
    PlaceBelow voices[kBlockFormCount][kHarmonySlots];
};

struct PassingRow {
    std::int32_t position;     // of the melody note in the key
    std::int32_t nextPosition; // of the note after it
    BlockPattern pattern;
};

struct FormRow {
    BlockForm form;
    bool intelligent;
};

struct RandomRow {
    std::int32_t bitSet[kHarmonySlots]; // semitones below the melody
    std::int32_t bitClear[kHarmonySlots];
};

// clang-format off

// By the place of the melody note in the key; the names are those of C.
constexpr BlockPattern kRegularPatterns[kSemitonesInOctave] = {
    kTonicPattern,      // C
    kDiminishedPattern, // C#
    kDiminishedPattern, // D
    kDiminishedPattern, // D#
    kThirdPattern,      // E
    kDiminishedPattern, // F
    kDiminishedPattern, // F#
    kFifthPattern,      // G
    kDiminishedPattern, // G#
    kSixthPattern,      // A
    kDiminishedPattern, // A#
    kDiminishedPattern, // B
};

// Passing notes, which the "Intelligent" arrangements harmonise by where they go.
constexpr PassingRow kPassingPatterns[] = {
    // note  next
    {  7,    0,   kPassingA }, // G  to C
    {  7,    9,   kPassingA }, // G  to A
    {  2,    7,   kPassingA }, // D  to G
    {  0,    5,   kPassingA }, // C  to F
    { 11,    0,   kPassingB }, // B  to C
    {  6,    7,   kPassingB }, // F# to G
    {  8,    9,   kPassingB }, // G# to A
    {  8,    7,   kPassingC }, // G# to G
};

// Tonic to sixth follow the harmony scale; the others are fixed in semitones and so ignore it.
constexpr BlockRow kBlockVoicings[kBlockPatternCount] = {
    //  Block                        Shearing                      Drop2
    {{ {Tone(3), Tone(4), Tone(6)}, {Tone(3), Tone(6), Semi(12)}, {Tone(4), Tone(6), Drop(3)}  }}, // tonic
    {{ {Tone(3), Tone(5), Tone(6)}, {Tone(5), Tone(6), Semi(12)}, {Tone(5), Tone(6), Drop(3)}  }}, // third
    {{ {Tone(3), Tone(5), Tone(7)}, {Tone(5), Tone(7), Semi(12)}, {Tone(5), Tone(7), Drop(3)}  }}, // fifth
    {{ {Tone(2), Tone(4), Tone(6)}, {Tone(2), Tone(6), Semi(12)}, {Tone(4), Tone(6), Drop(2)}  }}, // sixth
    {{ {Semi(3), Semi(6), Semi(9)}, {Semi(3), Semi(6), Semi(12)}, {Semi(6), Semi(9), Semi(15)} }}, // diminished
    {{ {Semi(2), Semi(5), Semi(8)}, {Semi(2), Semi(8), Semi(12)}, {Semi(5), Semi(8), Semi(14)} }}, // passing A
    {{ {Semi(4), Semi(6), Semi(9)}, {Semi(4), Semi(6), Semi(12)}, {Semi(6), Semi(9), Semi(16)} }}, // passing B
    {{ {Semi(1), Semi(5), Semi(8)}, {Semi(1), Semi(8), Semi(12)}, {Semi(5), Semi(8), Semi(13)} }}, // passing C
};

// The arrangements that know the key, by code.
constexpr FormRow kForms[kBlockRandomized] = {
    { kBlockForm,    false }, // Block
    { kBlockForm,    true  }, // Block Intelligent
    { kShearingForm, false }, // Shearing
    { kShearingForm, true  }, // Shearing Intelligent
    { kDrop2Form,    false }, // Drop2
    { kDrop2Form,    true  }, // Drop2 Intelligent
};

// Those that ignore it, from kBlockRandomized on.
constexpr RandomRow kRandomVoicings[] = {
    //  bit set         bit clear
    { {3, 5,  8},    { 3,  7, 10} }, // Block Randomized
    { {3, 8, 12},    { 7, 10, 12} }, // Shearing Randomized
    { {5, 8, 15},    { 7, 10, 15} }, // Drop2 Randomized
};

// --- Fauxbourdon and organum -----------------------------------------------------------------------------

constexpr std::int32_t kPerfectFourth = 5; // semitones

// In steps of the harmony scale.
constexpr std::int32_t kTenorIntervals[kVoiceSlots]   = { 0,  3, -2, 0 }; // a fourth above, a third below
constexpr std::int32_t kDescantIntervals[kVoiceSlots] = { 0, -3, -5, 0 }; // a fourth below, a sixth below
constexpr std::int32_t kFourthTone = 4;
constexpr std::int32_t kSixthTone  = 6;

struct OrganumRow {
    std::int32_t steps[kVoiceSlots];     // of the harmony scale, where the key's mapScale is set
    std::int32_t semitones[kVoiceSlots]; // where it is not
};

// A quirk that stays: "Fifth Above" in semitones has its voice in the last slot, where two sounding voices do not
// reach it, and sings the melody twice. Work saved with it sounds that way.
constexpr OrganumRow kOrganum[] = {
    //  scale steps        semitones
    { {0,  3, 0, 0},    {0,   5, 0, 0} }, // Fourth Above
    { {0, -3, 0, 0},    {0,  -5, 0, 0} }, // Fourth Below
    { {0,  4, 0, 0},    {0,   0, 0, 7} }, // Fifth Above
    { {0, -4, 0, 0},    {0,  -7, 0, 0} }, // Fifth Below
    { {0,  7, 0, 0},    {0,  12, 0, 0} }, // Octave Above
    { {0, -7, 0, 0},    {0, -12, 0, 0} }, // Octave Below
    { {0, -4, 3, 0},    {0,  -7, 5, 0} }, // Octave Around
};
// clang-format on

// --- Code
// ---------------------------------------------------------------------------------------------------------

// Semitones from the melody p down, or up, to the n-th tone of the harmony scale.
std::int32_t DownTo(const CKey& key, std::int32_t p, std::int32_t n) {
    return key.ScaleWalk(key.Position(p), Direction::kDown, n);
}

std::int32_t UpTo(const CKey& key, std::int32_t p, std::int32_t n) {
    return key.ScaleWalk(key.Position(p), Direction::kUp, n);
}

std::int32_t AtInterval(const CKey& key, std::int32_t p, std::int32_t interval) {
    if (interval == 0) return p;
    if (interval == kLargestManualInterval) return p + kSemitonesInOctave;
    if (interval == -kLargestManualInterval) return p - kSemitonesInOctave;
    return interval > 0 ? p + UpTo(key, p, interval + 1) : p - DownTo(key, p, 1 - interval);
}

void WriteParallel(const CKey& key, std::int32_t p, std::int32_t* row, const std::int32_t* intervals) {
    for (std::int32_t slot = 0; slot < kVoiceSlots; ++slot) row[slot] = AtInterval(key, p, intervals[slot]);
}

void WriteBelow(std::int32_t p, std::int32_t* row, const std::int32_t (&semitones)[kHarmonySlots]) {
    row[0] = p;
    for (std::int32_t voice = 0; voice < kHarmonySlots; ++voice) row[voice + 1] = p - semitones[voice];
}

void WriteBelow(const CKey& key, std::int32_t p, std::int32_t* row,
                const PlaceBelow (&places)[kHarmonySlots]) {
    std::int32_t semitones[kHarmonySlots];
    for (std::int32_t voice = 0; voice < kHarmonySlots; ++voice) {
        const PlaceBelow& place = places[voice];
        semitones[voice] = place.semitones + (place.tone > 0 ? DownTo(key, p, place.tone) : 0);
    }
    WriteBelow(p, row, semitones);
}

BlockPattern ChoosePattern(const CKey& key, std::int32_t p, std::int32_t next, bool intelligent) {
    const std::int32_t position = key.Position(p);
    if (intelligent && next != p)
        for (const PassingRow& row : kPassingPatterns)
            if (row.position == position && row.nextPosition == key.Position(next)) return row.pattern;
    return kRegularPatterns[position];
}

void WriteRow(std::int32_t* row, std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    row[0] = a;
    row[1] = b;
    row[2] = c;
    row[3] = d;
}

// Snapped once more and not mapped again, since p is prepared already. Where the scales differ the map may
// have left the melody scale, and then the second snap moves it: that is heard, and stays.
void WriteFauxbourdon(const CKey& key, std::int32_t p, std::int32_t* row, const std::int32_t* intervals) {
    WriteParallel(key, key.SnapIfSet(p), row, intervals);
}

} // namespace

std::int32_t GenerateParallel(const CKey& key, std::int32_t pitch, std::int32_t* row,
                              const std::int32_t* intervals) {
    if (row == nullptr || intervals == nullptr) return kBadArgument;
    if (!std::all_of(intervals, intervals + kVoiceSlots, IsManualInterval)) return kBadArgument;
    WriteParallel(key, key.Prepare(pitch), row, intervals);
    return kOk;
}

std::int32_t GenerateBlock(const CKey& key, CRandomBits& random, std::int32_t pitch, std::int32_t next,
                           std::int32_t* row, std::int32_t arrangement) {
    if (row == nullptr || !IsArrangement(kStyleBlock, arrangement)) return kBadArgument;
    const std::int32_t p = key.Prepare(pitch);
    if (arrangement >= kBlockRandomized) {
        const RandomRow& voicing = kRandomVoicings[arrangement - kBlockRandomized];
        WriteBelow(p, row, random.NextBit() ? voicing.bitSet : voicing.bitClear);
        return kOk;
    }
    const FormRow& form = kForms[arrangement];
    const BlockPattern pattern = ChoosePattern(key, p, next, form.intelligent);
    WriteBelow(key, p, row, kBlockVoicings[pattern].voices[form.form]);
    return kOk;
}

std::int32_t GenerateFauxbourdon(const CKey& key, std::int32_t pitch, std::int32_t* row,
                                 std::int32_t arrangement) {
    if (row == nullptr) return kBadArgument;
    const std::int32_t p = key.Prepare(pitch);
    switch (arrangement) {
    case kTenorIntelligent: // a perfect fourth in place of one that is not
        if (UpTo(key, p, kFourthTone) == kPerfectFourth)
            WriteFauxbourdon(key, p, row, kTenorIntervals);
        else
            WriteRow(row, p, p + kPerfectFourth, p - DownTo(key, p, kThirdTone), p);
        return kOk;
    case kTenorDiatonic:
        WriteFauxbourdon(key, p, row, kTenorIntervals);
        return kOk;
    case kDescantDiatonic:
        WriteFauxbourdon(key, p, row, kDescantIntervals);
        return kOk;
    case kDescantIntelligent:
        // Unlike its sister above it never asks whether the diatonic fourth is perfect: the melody is not
        // snapped a second time here, and asking would change saved work in keys whose two scales differ.
        WriteRow(row, p, p - kPerfectFourth, p - DownTo(key, p, kSixthTone), p);
        return kOk;
    default:
        return kBadArgument;
    }
}

std::int32_t GenerateOrganum(const CKey& key, std::int32_t pitch, std::int32_t* row,
                             std::int32_t arrangement) {
    if (row == nullptr || !IsArrangement(kStyleOrganum, arrangement)) return kBadArgument;
    const OrganumRow& voicing = kOrganum[arrangement];
    if (key.GetMapScale()) return GenerateParallel(key, pitch, row, voicing.steps);
    const std::int32_t x = HoldPitch(pitch);
    for (std::int32_t slot = 0; slot < kVoiceSlots; ++slot) row[slot] = x + voicing.semitones[slot];
    return kOk;
}

} // namespace sonorelle::ConsortierClassic
