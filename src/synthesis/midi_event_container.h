// Note messages of the voices on their way to the host, in the order in which they were made: nothing sorts
// by deltaFrames. One that is not due in a host block stays, with its delta lowered by the block's length.
//
//     const std::int32_t count = container.GetEvents(events);
//     for (std::int32_t i = 0; i < count; ++i) {
//         if (events[i].deltaFrames < blockLength) {
//             ... send it ...
//             container.MarkConsumed(i);
//         } else {
//             container.SetDelta(i, events[i].deltaFrames - blockLength);
//         }
//     }
//     container.PurgeConsumed();
//
// They are made while a block is rendered and taken right after it, on the same thread: no lock.

#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

namespace sonorelle {

// One note message. The layout is what the host's list of events is made from.
struct MidiEventRecord {
    std::uint8_t status = 0;   // 0x90 + channel for a note on, 0x80 + channel for a note off
    std::uint8_t key = 0;      // 0 to 127
    std::uint8_t velocity = 0; // 0 to 127; 0 in a note off
    std::uint8_t zero = 0;
    std::int32_t byteSize = 24;   // what a host's MIDI event says of its own size
    std::int32_t deltaFrames = 0; // samples from the start of the coming host block
    std::int32_t consumed = 0;    // 1 once it has been passed on
};
static_assert(sizeof(MidiEventRecord) == 16 && std::is_trivially_copyable_v<MidiEventRecord>);

class CkvoMidiEventContainer {
public:
    // Room that is made before the audio starts: what four voices that end and begin a note in each inner
    // block of 32 samples make of a host block of 16384.
    static constexpr std::size_t kReservedEvents = 4096;

    CkvoMidiEventContainer(); // reserves; throws std::bad_alloc
    virtual ~CkvoMidiEventContainer() = default;

    // Key and velocity are masked to 7 bits, the channel to 4; a note off has velocity 0. Grows without
    // limit, and allocates beyond kReservedEvents; where memory runs out the event is dropped.
    void AddNoteEvent(std::int32_t key, std::int32_t velocity, std::int32_t channel, bool noteOn,
                      std::int32_t deltaFrames) noexcept;
    // Copies all events into `out`, whose room is reused, in place of what is there; gives their count.
    // Allocates, and throws std::bad_alloc, only where `out` has less room than that.
    std::int32_t GetEvents(std::vector<MidiEventRecord>& out) const;
    // These two ignore an index that there is no event for.
    void SetDelta(std::int32_t index, std::int32_t deltaFrames) noexcept;
    void MarkConsumed(std::int32_t index) noexcept;
    void PurgeConsumed() noexcept; // the order of the others stays

private:
    MidiEventRecord* Find(std::int32_t index) noexcept; // null where there is none

    std::vector<MidiEventRecord> events;
};

} // namespace sonorelle
