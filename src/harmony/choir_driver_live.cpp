// The voices while they sound, and the keys of a MIDI input in their place.
//
// The input counts from liveNote on. What it makes of a note is kept in the note's live voices as the note
// sounds: with keys as pitches, the key that belongs to each voice; with keys as harmonies, the melody voiced
// in the chord that is held. Notes before liveNote keep what was played then, so that a recording is simply
// the live voices as they are at its end.

#include "harmony/choir_driver.h"

#include "analysis/melody_analyzer.h"
#include "harmony/note_lookup.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sonorelle {

namespace {

using ConsortierClassic::HoldPitch;
using ConsortierClassic::kNoPitch;
using ConsortierClassic::kSemitonesInOctave;

// A note shorter than this is a passing one: a key far from it is taken for one of its octaves. Were longer
// notes moved too, a voice could not be led away from the melody by hand.
constexpr double kPassingNoteSeconds = 0.15;
constexpr float kFarSemitones = 12.0F;

// Keys from which on a chord is heard; two may be any of several.
constexpr std::size_t kFewestChordKeys = 3;

// The places with a key, in their order.
struct HeldKeys {
    std::array<std::int32_t, CChoirDriver::kHeldKeys> keys;
    std::size_t count = 0;

    explicit HeldKeys(const std::int32_t (&places)[CChoirDriver::kHeldKeys]) {
        keys.fill(kNoPitch);
        for (const std::int32_t key : places)
            if (key >= 0) keys[count++] = HoldPitch(key);
    }
};

int Order(std::int32_t a, std::int32_t b) { return a < b ? -1 : (a > b ? 1 : 0); }

// Puts the keys into the vertical order that the voices have. Not a full sort: voices that cross, or stand on
// one pitch, may keep a key that is not theirs.
void OrderLikeVoices(HeldKeys& held, const std::int32_t* voices, std::size_t voiceCount) {
    for (std::size_t s = std::min(voiceCount, held.count); s-- > 1;) {
        for (std::size_t t = 0; t < s; ++t)
            if (Order(held.keys[s], held.keys[t]) != Order(voices[s], voices[t]))
                std::swap(held.keys[s], held.keys[t]);
    }
}

float HeldGain(float gain) { return gain > 0.0F ? std::min(gain, 1.0F) : 0.0F; } // 0 for what is no number

} // namespace

std::int32_t CChoirDriver::GetVoice(std::int32_t note, std::int32_t voice, float& deviation, float& gain,
                                    bool live) {
    if (!notes.Contains(note) || voice < 0 || voice >= kVoiceSlots) return -1;
    const CChoirNotes::Row& row = notes.Voicing(note);
    const auto slot = static_cast<std::size_t>(voice);
    const bool playedLive = liveMode && !liveBypass;
    std::int32_t pitch = HoldPitch(CurrentVoice(note, voice, live));
    const bool sounds = pitch > kNoPitch;
    if (!sounds) pitch = HoldPitch(row.voices[slot]);
    deviation = 0;
    if (voice == 0) deviation = static_cast<float>(pitch - RoundedPitch(note, analysis.GetTuningOffset()));
    gain = playedLive ? (sounds ? 1.0F : 0.0F) : HeldGain(row.gains[slot]);
    return pitch;
}

std::int32_t CChoirDriver::CurrentVoice(std::int32_t note, std::int32_t voice, bool live) {
    CChoirNotes::Row& row = notes.Voicing(note);
    const auto slot = static_cast<std::size_t>(voice);
    if (!liveMode || liveBypass) return row.voices[slot];

    std::int32_t& played = row.liveVoices[slot];
    if (!liveKeysDown) {
        if (liveHarmonies && voice == 0) {
            played = row.voices[0];
        } else if (note >= liveNote) {
            played = kNoPitch;
        }
        return played;
    }
    if (liveHarmonies) {
        if (live && voice == 0 && liveChordNote < note && note >= liveNote) VoiceLiveChord(note);
        if (note >= liveNote && NamesNoChord(liveChord)) played = voice == 0 ? row.voices[0] : kNoPitch;
    } else if (note >= liveNote && liveKeys[0] != kNoPitch) {
        played = KeyForVoice(note, voice);
    }
    return played;
}

// The first sounding of a note with a chord held.
void CChoirDriver::VoiceLiveChord(std::int32_t note) {
    CChoirNotes::Row& row = notes.Voicing(note);
    liveChordNote = note;
    liveStartNote = note;
    liveNote = note;
    const bool held = !NamesNoChord(liveChord);
    if (held && recordLive) notes.Chord(note) = liveChord;
    engine.GenerateVoices(row.voices[0], row.liveVoices.data(), held ? liveChord : notes.Chord(note));
}

std::int32_t CChoirDriver::KeyForVoice(std::int32_t note, std::int32_t voice) const {
    const std::int32_t key = liveKeys[static_cast<std::size_t>(voice)];
    if (key == kNoPitch) return key;
    const NoteRecord& record = notes.Note(note);
    const float away = record.pitch - static_cast<float>(liveKeys[0]);
    const double rate = static_cast<double>(analysis.GetSampleRate());
    const bool isPassing = rate * kPassingNoteSeconds > static_cast<double>(record.length);
    if (!isPassing || !(std::fabs(away) > kFarSemitones)) return key;
    const std::int32_t octaves = HoldPitch(TruncateToI32(static_cast<double>(away))) / kSemitonesInOctave;
    return key + kSemitonesInOctave * octaves;
}

void CChoirDriver::KeepRecording() {
    const auto voiceCount = static_cast<std::size_t>(VoiceCount());
    for (std::int32_t i = 0; i < notes.Count(); ++i) {
        CChoirNotes::Row& row = notes.Voicing(i);
        for (std::size_t voice = 0; voice < voiceCount; ++voice) {
            const bool played = row.liveVoices[voice] != kNoPitch;
            if (played) row.voices[voice] = row.liveVoices[voice];
            row.gains[voice] = played ? 1.0F : 0.0F;
        }
    }
}

void CChoirDriver::StartLive(bool on, bool harmonies) {
    liveNote = -1;
    if (on && !liveMode) {
        settings.style = ConsortierClassic::kStyleIntelligent;
        const auto voiceCount = static_cast<std::size_t>(VoiceCount());
        for (std::int32_t i = 0; i < notes.Count(); ++i)
            std::fill_n(notes.Voicing(i).liveVoices.begin(), voiceCount, kNoPitch);
    }
    liveMode = on;
    liveHarmonies = harmonies;
}

void CChoirDriver::SetRecordLive(bool flag) {
    if (recordLive && !flag) KeepRecording();
    liveKeysDown = false;
    liveNote = -1;
    liveStartNote = -1;
    recordLive = flag;
}

void CChoirDriver::SetLiveBypass(bool flag) { liveBypass = flag; }

void CChoirDriver::ResetLive() {
    liveNote = -1;
    liveChordNote = -1;
}

std::int32_t CChoirDriver::NoteInput(const std::int32_t (&keys)[kHeldKeys], double position, std::int32_t) {
    liveNote = FindNextNote(TruncateToI32(position));
    HeldKeys held(keys);
    if (liveHarmonies) {
        if (held.count >= kFewestChordKeys) {
            const auto& k = held.keys;
            liveChord = ConsortierClassic::CConsortier::RecogniseChord(k[0], k[1], k[2], k[3]);
            liveChordNote = liveNote - 1;
        } else {
            liveChord.triadType = ConsortierClassic::kNoTriad;
            liveChord.tetradType = ConsortierClassic::kNoTetrad;
        }
    } else {
        const auto voiceCount = static_cast<std::size_t>(VoiceCount());
        std::sort(held.keys.begin(), held.keys.begin() + static_cast<std::ptrdiff_t>(held.count));
        if (notes.Contains(liveNote))
            OrderLikeVoices(held, notes.Voicing(liveNote).voices.data(), voiceCount);
        liveKeys.fill(kNoPitch);
        std::copy_n(held.keys.begin(), voiceCount, liveKeys.begin());
    }
    return liveNote - 1;
}

std::int32_t CChoirDriver::UpdateLive(bool down, double position) {
    const std::int32_t frame = TruncateToI32(position);
    liveKeysDown = down;
    liveNote = FindNextNote(frame);
    if (FindNoteAt(frame) < 0) liveNote = std::min(NoteNearest(notes.Notes(), frame) + 1, notes.Count());
    return liveNote - 1;
}

} // namespace sonorelle
