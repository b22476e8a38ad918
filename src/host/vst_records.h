// The records that pass between a host and the plug-in's core: the host's time, and MIDI events both ways.
//
// The layout is the hosts' own: their memory is read through these types, and ours is handed to them. Natural
// alignment; sizes and offsets are checked below.

#pragma once

#include <cstddef>
#include <cstdint>

namespace sonorelle {

// --- Time ---

// Bits of VstTimeInfo::flags; together also the filter of what is asked for.
inline constexpr std::int32_t kVstTransportChanged = 1; // also where the play position has jumped
inline constexpr std::int32_t kVstTransportPlaying = 2;
inline constexpr std::int32_t kVstTempoValid = 1 << 10;
inline constexpr std::int32_t kVstTimeSigValid = 1 << 13;

struct VstTimeInfo {
    double samplePos = 0; // samples of the host from the start of its song, of the block's first one
    double sampleRate = 0;
    double nanoSeconds = 0;
    double ppqPos = 0;
    double tempo = 0; // quarter notes per minute
    double barStartPos = 0;
    double cycleStartPos = 0;
    double cycleEndPos = 0;
    std::int32_t timeSigNumerator = 0;
    std::int32_t timeSigDenominator = 0;
    std::int32_t smpteOffset = 0;
    std::int32_t smpteFrameRate = 0;
    std::int32_t samplesToNextClock = 0;
    std::int32_t flags = 0;
};
static_assert(sizeof(VstTimeInfo) == 88);
static_assert(offsetof(VstTimeInfo, tempo) == 32 && offsetof(VstTimeInfo, timeSigNumerator) == 64);
static_assert(offsetof(VstTimeInfo, flags) == 84);

// --- Events ---

inline constexpr std::int32_t kVstMidiType = 1;

// What every event begins with; `type` tells how it goes on.
struct VstEvent {
    std::int32_t type = 0;
    std::int32_t byteSize = 0;
    std::int32_t deltaFrames = 0; // samples from the start of the block
    std::int32_t flags = 0;
    char data[16] = {};
};
static_assert(sizeof(VstEvent) == 32 && offsetof(VstEvent, data) == 16);

struct VstMidiEvent {
    // What the program writes into byteSize; hosts do not look at it.
    static constexpr std::int32_t kByteSize = 24;

    std::int32_t type = kVstMidiType;
    std::int32_t byteSize = kByteSize;
    std::int32_t deltaFrames = 0; // samples from the start of the block
    std::int32_t flags = 0;
    std::int32_t noteLength = 0;
    std::int32_t noteOffset = 0;
    std::uint8_t midiData[4] = {};
    std::int8_t detune = 0;
    std::uint8_t noteOffVelocity = 0;
    std::uint8_t reserved1 = 0;
    std::uint8_t reserved2 = 0;
};
static_assert(sizeof(VstMidiEvent) == sizeof(VstEvent));
static_assert(offsetof(VstMidiEvent, deltaFrames) == 8 && offsetof(VstMidiEvent, midiData) == 24);

// A list of events. The array is as long as numEvents tells, whatever its declaration says: see EventSlots.
struct VstEvents {
    std::int32_t numEvents = 0;
    std::intptr_t reserved = 0;
    VstEvent* events[2] = {};
};
static_assert(offsetof(VstEvents, reserved) == sizeof(std::intptr_t));
static_assert(offsetof(VstEvents, events) == 2 * sizeof(std::intptr_t));

// The pointers of a list, numEvents of them; any may be null.
inline VstEvent** EventSlots(VstEvents& list) {
    return reinterpret_cast<VstEvent**>(reinterpret_cast<std::byte*>(&list) + offsetof(VstEvents, events));
}
inline VstEvent* const* EventSlots(const VstEvents& list) {
    return reinterpret_cast<VstEvent* const*>(reinterpret_cast<const std::byte*>(&list) +
                                              offsetof(VstEvents, events));
}

// --- The kind of work that a host is at ---

inline constexpr std::int32_t kVstProcessLevelOffline = 4; // renders a file: nobody listens

} // namespace sonorelle
