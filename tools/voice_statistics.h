// What a teacher of harmony would mark in the voices of a melody, counted by the letter: it judges nothing.
#pragma once

#include "harmony/key.h"
#include "harmony/pitch_class.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace sonorelle::tools {

enum FindingKind : std::size_t {
    kParallelFifth,      // two voices, both moving the same way, a fifth (or twelfth) apart before and after
    kParallelOctave,     // the same with octaves and unisons
    kCrossing,           // two voices that stand in the other order than the style has them
    kHarmonyLeap,        // a harmony voice moves by more than an octave
    kMelodyLeap,         // so does the melody, as it was found in the recording
    kOutsideScale,       // a voice sings a note that the harmony scale does not have
    kDoubledLeadingTone, // the semitone below the key root in one more voice
    kFindingKinds,
};

const char* FindingName(std::size_t kind);

using VoiceRow = std::array<std::int32_t, ConsortierClassic::kVoiceSlots>; // slot 0 is the melody

struct VoicedMelody {
    std::vector<VoiceRow> notes;
    std::vector<std::size_t> lowToHigh; // the slots that sound, in the order that the style has them in
    ConsortierClassic::CKey key;
};

struct Finding {
    FindingKind kind = kParallelFifth;
    std::size_t note = 0; // from 0; what moves, moves to this note from the one before
    std::size_t voice = 0;
    std::size_t otherVoice = 0; // the same as `voice` where one voice is enough
    std::int32_t semitones = 0; // of the leap, of the interval between the two, or of the crossing
};

// All of the melody, by note. A voice at -1 is silent and counts nowhere.
std::vector<Finding> FindInVoices(const VoicedMelody& melody);

} // namespace sonorelle::tools
