// The four voices of the arrangement, sung by the one recording.
//
// Voice 0 is the lead, the recorded melody itself; the other three harmonise. Each is a CvirelaineSynthesis
// that reads the recording through its own cursor of one shared buffer. A block is made in three stages: the
// pitch of each voice where it reads now (voice_pitch), input for all of them (one read of the file, four
// cursors), and the sound itself through the voice's delay line.
//
//     CVoiceBank bank;
//     if (bank.Init(driver) == kOk) {
//         bank.SetBlockSize(64);
//         while (bank.Render(voice0, voice1, voice2, voice3) == kOk) { ... } // voiceN[channel][sample]
//     }
//
// Threads: no lock of its own. Render, Seek, all setters and all queries are called under the application's
// AudioLock, but for SetGlide, SetTiming, SetFormantShift, SetQuantize and SetDrift, which any thread may
// call at any time: a block sees the old value or the new. The constructor and Init allocate; nothing else
// does, but for a MIDI queue that grows beyond the room made for it. The constructor and GetMidiEvents throw
// std::bad_alloc; nothing else throws.
//
// Seconds, semitones, ratios as told; numbers beyond a range are held to it, and one that is not finite is
// ignored. A voice is 0 to 3; another one is ignored.

#pragma once

#include "synthesis/midi_event_container.h"
#include "synthesis/voice_limits.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle {

class CChoirDriver;
class CkvoAudioFile;
class CMelodyAnalyzer;
class CMultiAccessBuffer;
class CPitch2Freq;
class CPitchMarks;
class CvirelaineSynthesis;
struct GrainTables;
struct RingBuffer;

class CVoiceBank {
public:
    static constexpr std::int32_t kVoices = 4;
    static constexpr std::int32_t kFirstBlockSize = 32;
    static constexpr std::int32_t kLargestBlockSize = VoiceLimits::kLargestBlock;
    // Where the count of blocks in a gap stops: far beyond any gapLimit.
    static constexpr std::int32_t kLongestGap = 1 << 30;
    // Longest delay that a line holds. The controls go to 0.1 s; the rest is what a power of two leaves room
    // for at every rate.
    static constexpr float kLongestDelay = 0.15F;
    static constexpr float kLongestTiming = 0.2F; // s
    // Limits of the speed: beyond, a voice is a crackle or a standing tone.
    static constexpr float kSmallestSpeed = 0.01F;
    static constexpr float kLargestSpeed = 100.0F;
    // Beyond, every voice is at the end of its pitch range anyway.
    static constexpr float kLargestTranspose = 48; // semitones either way

    CVoiceBank();
    ~CVoiceBank();
    CVoiceBank(const CVoiceBank&) = delete;
    CVoiceBank& operator=(const CVoiceBank&) = delete;

    // Makes the voices for the recording that `harmony` was made from, and goes to its start; what was set
    // before stays. `harmony`, its analyzer and the audio file must outlive the bank or the next Init. 0;
    // kBadArgument when there is no analysis or the file has no samples to give, kOutOfMemory: the bank is
    // then empty, and Render gives -1.
    std::int32_t Init(CChoirDriver& harmony);

    // Samples that Render makes, 1 to kLargestBlockSize (held).
    void SetBlockSize(std::int32_t samples);
    std::int32_t GetBlockSize() const { return blockSize; }
    std::int32_t GetChannelCount() const { return channels; } // of the recording; 0 without one
    float GetSampleRate() const { return sampleRate; }        // Hz; 0 without a recording

    // One block of each voice into its array of GetChannelCount() pointers. A null array leaves that voice
    // out: it moves on unheard. A voice that is not enabled leaves its arrays as they are. 0, or -1 at the
    // end of the recording: the lead could not be fed, nor any voice behind it. A voice that could not be fed
    // is silent.
    std::int32_t Render(float* const* out0, float* const* out1, float* const* out2, float* const* out3);

    // Goes to `position` (samples), and tells the position reached: that of the mark nearest to it. Nothing
    // happens when the bank is there already.
    void Seek(double& position);
    // The same, even when the bank is there already: all voices begin anew from there.
    void Locate(double& position);
    // By the notes, from where the lead reads. The previous note is the one before when this one began less
    // than 0.75 s ago.
    void JumpToNextNote();
    void JumpToPreviousNote();

    // --- Settings of all voices ---
    void SetSpeed(float speed);                // above 1 the recording plays slower; survives Init
    void SetTranspose(float semitones);        // on top of all voices
    void SetOutputTuning(float hertz);         // of A4; counts once there is an analysis
    void SetMidiOut(bool on) { midiOut = on; } // send the voices' notes

    // --- Settings of one voice; all survive Init ---
    void SetDelay(std::int32_t voice, float seconds);      // 0 to kLongestDelay; jumps, without a fade
    void SetTiming(std::int32_t voice, float seconds);     // 0 to kLongestTiming
    void SetFormantShift(std::int32_t voice, float ratio); // 2^(-8/12) to 2^(8/12)
    void SetQuantize(std::int32_t voice, float amount);    // 0 to 1
    void SetDrift(std::int32_t voice, float amount);       // 1 (none) to -1 (doubled)
    void SetGlide(std::int32_t voice, float amount);       // 0 to 1: glides of 0 to 0.5 s
    // Voices that the arrangement does not have stay silent whatever is set. A voice that goes off ends its
    // MIDI note at once; one that comes on again fades in.
    void SetVoiceEnabled(std::int32_t voice, bool on);
    // Whether the last Render wrote the voice's arrays: it is switched on, and one of the arrangement's.
    bool IsVoiceEnabled(std::int32_t voice) const;

    // --- Playback ---
    void RestartVoices(); // playback begins
    void ClearVoices();   // nothing plays: what comes next fades in
    void AllNotesOff();   // ends every sounding MIDI note

    // Both the play position and the start of the host's block, in samples.
    void SetBlockOrigin(double origin);
    double GetPosition() const { return position; }
    double GetReadPosition(std::int32_t voice) const; // samples; 0 without voices
    std::int32_t GetNoteAtPosition() const;           // -1 outside all notes

    // --- Outgoing MIDI ---
    std::int32_t GetMidiEvents(std::vector<MidiEventRecord>& out) const { return midiEvents.GetEvents(out); }
    void SetMidiDelta(std::int32_t index, std::int32_t deltaFrames) {
        midiEvents.SetDelta(index, deltaFrames);
    }
    void MarkMidiConsumed(std::int32_t index) { midiEvents.MarkConsumed(index); }
    void PurgeConsumedMidi() { midiEvents.PurgeConsumed(); }

private:
    struct Voice; // everything that one voice has

    bool IsVoice(std::int32_t voice) const { return voice >= 0 && voice < kVoices; }
    bool IsReady() const { return harmony != nullptr; }

    std::int32_t Create(); // may throw std::bad_alloc
    std::int32_t CreateVoice(std::int32_t index, const VoiceLimits& limits,
                             const std::shared_ptr<const GrainTables>& tables);
    std::int32_t LongestPeriod() const;
    void PushSettings(Voice& voice) const;
    void FindGapLimit();
    void TearDown();

    // Stage 1, voice_pitch.cpp.
    void RefreshEnabled();
    void SetEnabled(std::int32_t index, bool on);
    void FindPitch(std::int32_t index);
    void PassGap(std::int32_t index, std::int32_t here);
    float GlideCoefficient(float glideSeconds) const;
    void MoveInterval(std::int32_t index, std::int32_t note, std::int32_t ahead, std::int32_t pitch,
                      float coefficient);
    void FindRatio(Voice& voice, std::int32_t note, std::int32_t period) const;
    void ApplyRatio(Voice& voice) const;
    void SendNote(std::int32_t index, std::int32_t note, std::int32_t pitch, bool voiced);
    void EndMidiNote(std::int32_t index, std::int32_t deltaFrames);
    std::int32_t MidiDelta() const;

    // Stages 2 and 3, voice_render.cpp.
    void TakeSettings(std::int32_t index);
    void Delay(Voice& voice, float* const* block, float* const* out) const;
    void Feed();
    std::int32_t FindMissingInput();
    std::int32_t RenderVoices(float* const* const (&outputs)[kVoices]);
    bool RenderVoice(std::int32_t index, float* const* out);
    void Silence(float* const* out) const;

    void GoTo(double& target);
    void ApplyDelay(Voice& voice) const;

    CChoirDriver* harmony = nullptr;
    CMelodyAnalyzer* analysis = nullptr;
    CkvoAudioFile* source = nullptr;
    const CPitchMarks* marks = nullptr;
    std::unique_ptr<CMultiAccessBuffer> sourceBuffer;
    std::array<std::unique_ptr<Voice>, kVoices> voices;
    std::array<std::vector<float>, 2> scratch; // input and output of a voice's block
    std::array<float*, 2> scratchChannels{};
    std::int32_t scratchLength = 0; // samples a channel

    float sampleRate = 0;
    float speed = 1;
    float transposeRatio = 1;
    float transpose = 0; // semitones
    std::int32_t channels = 0;
    std::int32_t blockSize = kFirstBlockSize;
    std::int32_t gapLimit = 0; // blocks in 30 ms
    bool midiOut = false;
    CkvoMidiEventContainer midiEvents;
    double position = 0;    // samples, moved on by each block
    double blockOrigin = 0; // `position` at the start of the host's block
};

} // namespace sonorelle
