// The first stage of a block: which pitch each voice has where it reads now.
//
//   1. the notes here and a little ahead     a glide begins half its length before the next note does, and is
//                                             never longer than 35% of the shorter of both notes
//   2. the interval of the voice             smoothed from note to note; after a gap it jumps, so that a note
//                                             after a rest begins clean
//   3. the ratio of target to source         by the voice's pitch law; in unvoiced stretches the last one
//   stands
//   4. the MIDI note

#include "synthesis/voice_bank_voice.h"

#include "harmony/choir_driver.h"
#include "platform/saturate.h"
#include "synthesis/sample_counts.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr float kGlideShare = 0.35F; // of the shorter note: the longest glide that leaves both their middles
constexpr float kGlideDecay = 2.2F;  // exp(-2.2) = 0.11: a glide has come 90% of its way in its time

// Velocity of a note by its level, 0 to 1: 127 for full scale, 0 for 0.001 (-60 dB, whose log is -6.9).
constexpr float kLoudest = 127.0F;
constexpr float kSilentLogLevel = -6.9F;

std::int32_t Velocity(float level) {
    if (!(level > 0)) return 0;
    const float velocity = kLoudest - std::log(level) * kLoudest / kSilentLogLevel;
    return std::clamp(TruncateToI32(static_cast<double>(velocity)), 0, 127);
}

// Longest glide, in samples, that two neighbours allow; a note that is not there has the other's length.
std::int32_t LongestGlide(std::int32_t length, std::int32_t nextLength) {
    if (length == -1) length = nextLength;
    if (nextLength == -1) nextLength = length;
    return std::max(WholeSamples(static_cast<float>(std::min(length, nextLength)) * kGlideShare), 0);
}

} // namespace

// What of the interval before is left after one block.
float CVoiceBank::GlideCoefficient(float glideSeconds) const {
    if (!(glideSeconds > 0)) return 0;
    const float blocks = sampleRate / static_cast<float>(blockSize) * glideSeconds;
    return std::exp(-kGlideDecay / blocks);
}

void CVoiceBank::FindPitch(std::int32_t index) {
    Voice& voice = *voices[static_cast<std::size_t>(index)];
    const std::int32_t here = TruncateToI32(voice.synthesis->GetReadPosition());
    const std::int32_t note = harmony->FindNoteAt(here);
    const std::int32_t longest = LongestGlide(harmony->GetNoteLength(note), harmony->GetNoteLength(note + 1));
    const float glideTime = voice.glideTime.load(std::memory_order_relaxed);
    const float glideSamples = std::min(static_cast<float>(longest), sampleRate * glideTime);
    std::int32_t ahead = harmony->FindNoteAt(
        TruncateToI32(static_cast<double>(here) + static_cast<double>(glideSamples) * 0.5));
    if (note < 0 || !voice.enabled) {
        PassGap(index, here);
        return;
    }
    if (ahead < 0) ahead = note;

    const auto period = WholeSamples(voice.synthesis->GetCurrentPeriod());
    float deviation = 0;
    float gain = 1;
    const std::int32_t pitch = harmony->GetVoice(note, index, deviation, gain, true);
    const bool sounds = pitch >= 0;
    voice.gain = sounds ? gain : 0;
    if (voice.gain == 0) voice.gapBlocks = gapLimit;
    if (sounds) {
        const float coefficient =
            GlideCoefficient(std::min(glideTime, static_cast<float>(longest) / sampleRate));
        MoveInterval(index, note, ahead, pitch, coefficient);
        if (period > 0) FindRatio(voice, note, period);
    }
    if (midiOut) SendNote(index, note, pitch, period >= 1);
    if (voice.gain != 0) voice.gapBlocks = 0; // a silent note counts as a gap
    ApplyRatio(voice);
}

// Towards the interval of the note ahead, or at once to that of the note here when the voice comes out of a
// gap.
void CVoiceBank::MoveInterval(std::int32_t index, std::int32_t note, std::int32_t ahead, std::int32_t pitch,
                              float coefficient) {
    Voice& voice = *voices[static_cast<std::size_t>(index)];
    if (voice.gapBlocks >= gapLimit) {
        voice.interval = static_cast<float>(pitch - harmony->GetNotePitch(note));
        return;
    }
    float deviation = 0;
    float gain = 0;
    std::int32_t target = harmony->GetVoice(ahead, index, deviation, gain, false);
    std::int32_t base = harmony->GetNotePitch(ahead);
    if (target < 0) { // the voice is silent there: it stays with this note
        target = pitch;
        base = harmony->GetNotePitch(note);
    }
    voice.interval = static_cast<float>(target - base) * (1.0F - coefficient) + coefficient * voice.interval;
}

void CVoiceBank::FindRatio(Voice& voice, std::int32_t note, std::int32_t period) const {
    const float frequency = sampleRate / static_cast<float>(period);
    const auto base = static_cast<float>(harmony->GetNotePitch(note));
    const float deviation = harmony->GetDeviation(note);
    const float target = base + voice.interval + deviation;
    const float ratio = voice.law->Calc(target, frequency, base + deviation, true, true) / frequency;
    if (std::isfinite(ratio) && ratio > 0) voice.pitchRatio = ratio;
}

void CVoiceBank::ApplyRatio(Voice& voice) const {
    voice.synthesis->SetPitchAndFormant(
        std::clamp(voice.pitchRatio * transposeRatio, VoiceLimits::kLowestPitch, VoiceLimits::kHighestPitch),
        voice.formantShift.load(std::memory_order_relaxed));
}

// Outside all notes the voice goes on as it was; only the gap grows, and its MIDI note ends.
void CVoiceBank::PassGap(std::int32_t index, std::int32_t here) {
    Voice& voice = *voices[static_cast<std::size_t>(index)];
    const std::int32_t nearest = harmony->FindNearestNote(here);
    voice.gain = 1;
    if (nearest >= 0) {
        float deviation = 0;
        float gain = 1;
        const std::int32_t pitch = harmony->GetVoice(nearest, index, deviation, gain, false);
        voice.gain = pitch < 0 ? 0 : gain;
        const auto period = voice.synthesis->GetCurrentPeriod();
        if (pitch >= 0 && period > 0) {
            voice.law->Calc(static_cast<float>(pitch), sampleRate / period,
                            static_cast<float>(harmony->GetNotePitch(nearest)), false, false);
        }
    }
    if (midiOut && voice.enabled && voice.HasNoteSounding()) EndMidiNote(index, MidiDelta());
    voice.gapBlocks = std::min(voice.gapBlocks + 1, kLongestGap);
    voice.lastNote = -1;
}

void CVoiceBank::SendNote(std::int32_t index, std::int32_t note, std::int32_t pitch, bool voiced) {
    Voice& voice = *voices[static_cast<std::size_t>(index)];
    const bool ends = pitch < 0 || !voiced;
    if (ends) {
        if (voice.HasNoteSounding()) EndMidiNote(index, MidiDelta());
        return;
    }
    if (note == voice.lastNote) return;
    if (voice.HasNoteSounding()) EndMidiNote(index, MidiDelta());
    voice.soundingKey = std::clamp(WholeSamples(static_cast<float>(pitch) + transpose), 0, 127);
    midiEvents.AddNoteEvent(voice.soundingKey, Velocity(harmony->GetNoteLevel(note)), index, true,
                            MidiDelta());
    voice.lastNote = note;
}

void CVoiceBank::EndMidiNote(std::int32_t index, std::int32_t deltaFrames) {
    Voice& voice = *voices[static_cast<std::size_t>(index)];
    midiEvents.AddNoteEvent(voice.soundingKey, 0, index, false, deltaFrames);
    voice.lastNote = -1;
}

std::int32_t CVoiceBank::MidiDelta() const { return std::max(TruncateToI32(position - blockOrigin), 0); }

} // namespace sonorelle
