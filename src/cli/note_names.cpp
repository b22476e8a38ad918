#include "cli/note_names.h"

#include "harmony/chord_names.h"
#include "harmony/pitch_class.h"

#include <cmath>

namespace sonorelle {

namespace {

using ConsortierClassic::kSemitonesInOctave;

constexpr bool kUseFlats = false;
constexpr std::int32_t kCentsPerSemitone = 100;
// Makes MIDI note 60 the C of octave 4.
constexpr std::int32_t kOctaveOfMidiNote0 = -1;
// Keeps the conversion to whole cents far from the ends of its type.
constexpr float kFarthestPitch = 1000.0F;

std::int32_t FloorDivide(std::int32_t a, std::int32_t b) {
    const std::int32_t quotient = a / b;
    return a % b < 0 ? quotient - 1 : quotient;
}

} // namespace

std::optional<NamedPitch> NearestNote(float midiPitch) {
    if (!(std::fabs(midiPitch) <= kFarthestPitch)) return std::nullopt;
    // Rounded to whole cents first: one sounding text has one spelling.
    const auto cents =
        static_cast<std::int32_t>(std::floor(static_cast<double>(midiPitch) * kCentsPerSemitone + 0.5));
    NamedPitch named;
    named.midiNote = FloorDivide(cents + kCentsPerSemitone / 2, kCentsPerSemitone);
    named.cents = cents - named.midiNote * kCentsPerSemitone;
    return named;
}

std::string NoteName(std::int32_t midiNote) {
    const std::int32_t octave = FloorDivide(midiNote, kSemitonesInOctave) + kOctaveOfMidiNote0;
    return std::string(ConsortierClassic::NoteName(midiNote, kUseFlats)) + std::to_string(octave);
}

std::string CentsText(std::int32_t cents) {
    std::string text = cents < 0 ? "" : "+";
    return text += std::to_string(cents);
}

std::string PitchText(float midiPitch) {
    const std::optional<NamedPitch> named = NearestNote(midiPitch);
    if (!named) return "-";
    return NoteName(named->midiNote) + " " + CentsText(named->cents);
}

std::string KeyName(std::int32_t key) {
    if (key < 0 || key >= 2 * kSemitonesInOctave) return "none";
    return std::string(ConsortierClassic::NoteName(key, kUseFlats)) +
           (key < kSemitonesInOctave ? " major" : " minor");
}

bool IsBlackKey(std::int32_t midiNote) { return ConsortierClassic::IsBlackKey(midiNote); }

} // namespace sonorelle
