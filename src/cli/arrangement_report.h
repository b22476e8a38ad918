// All that the program tells of one arranged recording, as plain values: what the summary, JSON and the
// picture are made from.

#pragma once

#include "cli/melody_report.h"
#include "cli/voice_strip.h"
#include "harmony/chord_record.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle {

// Voices 0 (the melody) to 3.
inline constexpr std::int32_t kMostVoices = kPresetVoices;

// One note with all that was made for it. Pitches are as the choir made them, before any transposing.
struct ArrangedNote {
    NoteRecord melody;
    ConsortierClassic::ChordRecord chord;                            // "No Chord" where the style has none
    std::array<std::int32_t, kMostVoices> voices = {-1, -1, -1, -1}; // MIDI keys; -1 silent
    std::array<float, kMostVoices> gains = {}; // 0 to 1; 0 for voices that the style does not have
};

// What the arrangement was made with, every choice filled in.
struct UsedSettings {
    std::int32_t style = 0;
    std::int32_t arrangement = 0;
    std::int32_t root = 0; // pitch class
    std::int32_t scale = 0;
    std::int32_t harmonyScale = 0;
    bool snap = true;
    std::int32_t voiceRange = 0;
    float spread = 0;
    std::array<std::int32_t, kMostVoices> intervals = {};
    std::int32_t transpose = 0; // semitones
    float tempo = 120;          // quarter notes per minute
    std::int32_t preset = 0;
    VoiceStrips voices;                       // by voice, also those that the style does not have
    std::array<bool, kMostVoices> heard = {}; // by mute and solo; false for those that are not there
    float tuning = 440;                       // Hz of A4 in what is heard
    float speed = 1;                          // times as fast as the recording
    std::int32_t regionStart = 0;             // sample frames
    std::int32_t regionEnd = 0;
};

struct ArrangementReport {
    MelodyReport melody;
    UsedSettings settings;
    std::int32_t voiceCount = 0; // the melody included
    bool hasChords = false;      // the style goes by chords
    std::vector<ArrangedNote> notes;
    std::vector<std::string> files;    // that were written: mix, stems, voices, chords, picture
    std::int64_t limitedFrames = 0;    // of the mix: its voices together exceed full scale there
    std::vector<std::string> oldFiles; // of an earlier run, which this one left as they were
};

// "Prime, Down Third": the manual intervals of the voices that there are.
std::string IntervalsText(const ArrangementReport& report);

// "Eb", "c# m7"; "--" for no chord. Spelled as the key is written and transposed as the arrangement is.
std::string ChordText(const ArrangementReport& report, const ConsortierClassic::ChordRecord& chord);

// The same kind on the same root: the chord goes on.
bool IsSameHarmony(const ConsortierClassic::ChordRecord& a, const ConsortierClassic::ChordRecord& b);

// Whether the region leaves some of the recording out.
bool HasRegion(const ArrangementReport& report);

} // namespace sonorelle
