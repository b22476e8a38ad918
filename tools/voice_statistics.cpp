#include "voice_statistics.h"

#include <cstdlib>
#include <utility>

namespace sonorelle::tools {
namespace {

using ConsortierClassic::kNoPitch;
using ConsortierClassic::kSemitonesInOctave;
using ConsortierClassic::PitchClass;

constexpr std::int32_t kFifth = 7;                                // semitones
constexpr std::int32_t kLeadingPosition = kSemitonesInOctave - 1; // in the key
constexpr std::size_t kMelody = 0;

class Examiner {
public:
    explicit Examiner(const VoicedMelody& voiced) : melody(voiced) {}

    std::vector<Finding> Examine() {
        for (note = 0; note < melody.notes.size(); ++note) {
            now = melody.notes[note];
            before = note > 0 ? melody.notes[note - 1] : VoiceRow{kNoPitch, kNoPitch, kNoPitch, kNoPitch};
            const std::vector<std::size_t>& slots = melody.lowToHigh;
            for (std::size_t a = 0; a < slots.size(); ++a) {
                ExamineLeap(slots[a]);
                ExamineScale(slots[a]);
                for (std::size_t b = a + 1; b < slots.size(); ++b) {
                    ExamineParallels(slots[a], slots[b]);
                    ExamineCrossing(slots[a], slots[b]);
                }
            }
            ExamineLeadingTones();
        }
        return std::move(findings);
    }

private:
    bool Sings(std::size_t voice) const { return now[voice] != kNoPitch; }
    bool Sang(std::size_t voice) const { return before[voice] != kNoPitch; }
    std::int32_t Move(std::size_t voice) const {
        return Sings(voice) && Sang(voice) ? now[voice] - before[voice] : 0;
    }
    void Add(FindingKind kind, std::size_t voice, std::size_t other, std::int32_t semitones) {
        findings.push_back({kind, note, voice, other, semitones});
    }

    void ExamineLeap(std::size_t voice) {
        const std::int32_t move = Move(voice);
        if (std::abs(move) > kSemitonesInOctave)
            Add(voice == kMelody ? kMelodyLeap : kHarmonyLeap, voice, voice, move);
    }

    void ExamineScale(std::size_t voice) {
        if (Sings(voice) && !melody.key.IsInScale(now[voice])) Add(kOutsideScale, voice, voice, 0);
    }

    void ExamineParallels(std::size_t low, std::size_t high) {
        const std::int32_t lowMove = Move(low);
        const std::int32_t highMove = Move(high);
        if (lowMove == 0 || highMove == 0 || (lowMove > 0) != (highMove > 0)) return;
        const std::int32_t interval = std::abs(now[high] - now[low]);
        const std::int32_t intervalBefore = std::abs(before[high] - before[low]);
        const std::int32_t pitchClass = PitchClass(interval);
        if (pitchClass != PitchClass(intervalBefore)) return;
        if (pitchClass == kFifth) Add(kParallelFifth, low, high, interval);
        if (pitchClass == 0) Add(kParallelOctave, low, high, interval);
    }

    void ExamineCrossing(std::size_t low, std::size_t high) {
        if (Sings(low) && Sings(high) && now[low] > now[high])
            Add(kCrossing, low, high, now[low] - now[high]);
    }

    void ExamineLeadingTones() {
        std::vector<std::size_t> singers;
        for (const std::size_t voice : melody.lowToHigh)
            if (Sings(voice) && melody.key.Position(now[voice]) == kLeadingPosition) singers.push_back(voice);
        for (std::size_t i = 1; i < singers.size(); ++i)
            Add(kDoubledLeadingTone, singers[0], singers[i], now[singers[i]] - now[singers[0]]);
    }

    const VoicedMelody& melody;
    std::vector<Finding> findings;
    std::size_t note = 0;
    VoiceRow now{};
    VoiceRow before{};
};

} // namespace

const char* FindingName(std::size_t kind) {
    constexpr std::array<const char*, kFindingKinds> kNames{
        "parallel fifths", "parallel octaves",  "crossings",           "leaps > octave",
        "melody's leaps",  "outside the scale", "leading tone doubled"};
    return kNames[kind];
}

std::vector<Finding> FindInVoices(const VoicedMelody& melody) { return Examiner(melody).Examine(); }

} // namespace sonorelle::tools
