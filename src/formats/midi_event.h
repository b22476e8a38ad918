// Events of a MIDI file: notes, tempo and time signature, at a time in milliseconds.

#pragma once

#include <cstdint>
#include <vector>

namespace sonorelle {

inline constexpr std::int32_t kMidiNoteOn = 0x90;
inline constexpr std::int32_t kMidiNoteOff = 0x80;
inline constexpr std::int32_t kMidiMetaTempo = 0x51;
inline constexpr std::int32_t kMidiMetaTimeSignature = 0x58;

// What all events are to the file: where, what kind, and the bytes behind the kind.
class CkvoMidiFileEvent {
public:
    virtual ~CkvoMidiFileEvent() = default;
    CkvoMidiFileEvent(const CkvoMidiFileEvent&) = delete;
    CkvoMidiFileEvent& operator=(const CkvoMidiFileEvent&) = delete;

    bool IsMeta() const { return isMeta_; }
    std::uint32_t GetTime() const { return time_; }      // milliseconds from the start
    std::int32_t GetType() const { return type_; }       // status without channel, or kind of a meta event
    std::int32_t GetChannel() const { return channel_; } // 0 to 15, as given
    const std::vector<std::uint8_t>& GetData() const { return data_; }

protected:
    CkvoMidiFileEvent(bool isMeta, std::uint32_t time, std::int32_t type, std::int32_t channel,
                      std::vector<std::uint8_t> data);

private:
    bool isMeta_;
    std::uint32_t time_;
    std::int32_t type_;
    std::int32_t channel_;
    std::vector<std::uint8_t> data_;
};

// A note begins or ends. Nothing is checked: `status` is kMidiNoteOn or kMidiNoteOff, `channel` 0 to 15,
// `key` and `velocity` 0 to 127; of other numbers the low byte goes into the file.
class CkvoMidiFileNoteEvent : public CkvoMidiFileEvent {
public:
    CkvoMidiFileNoteEvent(std::uint32_t milliseconds, std::int32_t status, std::int32_t channel,
                          std::int32_t key, std::int32_t velocity);
};

// The tempo from the start of the file on, in quarter notes per minute.
class CkvoMidiFileTempoEvent : public CkvoMidiFileEvent {
public:
    explicit CkvoMidiFileTempoEvent(float bpm);
    float GetBpm() const { return bpm_; }

private:
    float bpm_;
};

// The metre from the start of the file on. 6/8 with a click every 36 clocks of 24 per quarter: (6, 3, 36, 8).
class CkvoMidiFileTimeSigEvent : public CkvoMidiFileEvent {
public:
    CkvoMidiFileTimeSigEvent(std::uint8_t numerator, std::uint8_t denominatorPowerOf2,
                             std::uint8_t clocksPerClick, std::uint8_t thirtySecondsPerQuarter);
};

// Microseconds per quarter note, in the three bytes of a tempo event, high byte first; 120 gives 07 A1 20. A
// tempo too slow for three bytes (below 3.58), or none at all, is the slowest that they hold; one that is
// negative or not a number gives 0.
std::vector<std::uint8_t> MidiTempoBytes(float bpm);

} // namespace sonorelle
