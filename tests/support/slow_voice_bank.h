// The four voices of the arrangement the slow way: what CVoiceBank does, written down step by step over plain
// data. Notes, voices and gains are a list, the recording lies in memory whole, delay lines keep everything.
//
// Answers what a test compares: every sample of every voice, positions, and the MIDI notes. Where a number
// decides what happens it has the size that it has in the bank (f32, f64, whole); samples are f64.
#pragma once

#include "support/slow_voice_synthesis.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle::test {

struct SlowNote {
    int start = 0;
    int end = 0; // last position
    int length = 0;
    int pitch = 0;       // rounded
    float deviation = 0; // semitones above it
    float level = 0;
    std::array<int, 4> voices{};  // pitches, -1 silent
    std::array<float, 4> gains{}; // 0 to 1
};

struct SlowArrangement {
    float sampleRate = 44100.0F;
    std::vector<std::vector<float>> channels;
    std::vector<PitchMarkRecord> marks;
    std::vector<SlowNote> notes;
    int voiceCount = 4;    // of style and arrangement
    float tuning = 440.0F; // Hz, the singer's
};

struct SlowMidiEvent {
    int status = 0;
    int key = 0;
    int velocity = 0;
    int delta = 0;
    bool operator==(const SlowMidiEvent&) const = default;
};

// Of one voice: [channel][sample].
using SlowBlock = std::vector<std::vector<double>>;

class SlowVoiceBank {
public:
    static constexpr std::size_t kVoices = 4;

    SlowVoiceBank(SlowArrangement arrangementToSing, int samplesPerBlock);

    // The outputs; those of a voice that leaves its buffers alone stay.
    int Render(std::array<SlowBlock, kVoices>& out);

    void Seek(double& target);
    void JumpToNextNote();
    void JumpToPreviousNote();

    void SetBlockSize(int samples);
    void SetSpeed(float factor);
    void SetTranspose(float semitones);
    void SetOutputTuning(float hertz) { outputTuning = hertz; }
    void SetMidiOut(bool on) { midiOut = on; }
    void SetDelay(std::size_t voice, float seconds);
    void SetTiming(std::size_t voice, float seconds);
    void SetFormantShift(std::size_t voice, float ratio) { voices[voice].formantShift = ratio; }
    void SetQuantize(std::size_t voice, float amount) { voices[voice].quantize = amount; }
    void SetDrift(std::size_t voice, float amount) { voices[voice].correction = amount; }
    void SetGlide(std::size_t voice, float amount) { voices[voice].glideTime = amount * 0.5F; }
    void SetVoiceEnabled(std::size_t voice, bool on);
    void SetVoiceCount(int count) { song.voiceCount = count; } // from the next block on
    // Whether anybody wants its samples; it moves on either way.
    void SetHeard(std::size_t voice, bool on) { voices[voice].heard = on; }
    void AllNotesOff();
    void ClearVoices();
    void RestartVoices();
    void SetBlockOrigin(double origin) { position = blockOrigin = origin; }

    // Edits of the arrangement while it plays.
    void SetVoicePitch(std::size_t note, std::size_t voice, int pitch) {
        song.notes[note].voices[voice] = pitch;
    }
    void SetVoiceGain(std::size_t note, std::size_t voice, float gain) {
        song.notes[note].gains[voice] = gain;
    }

    double GetPosition() const { return position; }
    double GetReadPosition(std::size_t voice) const { return voices[voice].synthesis->GetReadPosition(); }
    int GetNoteAtPosition() { return FindNoteAt(static_cast<int>(position)); }
    // All since the last call.
    std::vector<SlowMidiEvent> TakeMidiEvents();

private:
    struct Voice {
        std::unique_ptr<SlowVoiceSynthesis> synthesis;
        std::vector<EndlessSamples> delayLine; // by samples written
        std::int64_t written = 0;
        int delay = 0; // samples
        float timingRate = 0;
        float interval = 0;
        float pitchRatio = 1;
        float formantShift = 1;
        float glideTime = 0.1F;
        float quantize = 0;
        float correction = 0;
        float gain = 1; // of the block
        int gapBlocks = 0;
        int need = 0;
        int cursor = 0; // position in the recording of the next sample that it takes
        int lastNote = -1;
        int soundingKey = 0;
        bool heard = true;
        bool wanted = true;  // as set
        bool enabled = true; // and one of the arrangement's
        bool outOfMarks = false;
    };

    int FindNoteAt(int at);
    int FindNearestNote(int at);
    int NoteLength(int note) const { return HasNote(note) ? NoteOf(note).length : -1; }
    bool HasNote(int note) const { return note >= 0 && note < static_cast<int>(song.notes.size()); }
    const SlowNote& NoteOf(int note) const { return song.notes[static_cast<std::size_t>(note)]; }

    void FindPitch(std::size_t index);
    void PassGap(std::size_t index, int at);
    void RefreshEnabled(std::size_t index);
    void PlayMidi(std::size_t index, int note, int pitch, int period);
    float Calc(const Voice& voice, float target, float measured, float base) const;
    void Feed();
    bool RenderVoice(std::size_t index, SlowBlock& out);
    void AddEvent(int status, std::size_t voice, int key, int velocity, int delta);
    void EndNote(std::size_t voice, int delta);
    int MidiDelta() const;

    SlowArrangement song;
    SlowMarks marks;
    std::array<Voice, kVoices> voices;
    std::vector<SlowMidiEvent> events;
    int blockSize;
    int gapLimit = 0;
    int sourceEnd = 0;  // position in the recording behind the last sample that was read
    int noteCursor = 0; // of the last look-up
    float speed = 1;
    float transpose = 0;
    float transposeRatio = 1;
    float outputTuning;
    bool midiOut = false;
    double position = 0;
    double blockOrigin = 0;
    double leadTimeline = 0; // of voice 0 before its block
};

} // namespace sonorelle::test
