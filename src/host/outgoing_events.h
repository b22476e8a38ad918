// The note messages of one block in the form in which hosts take them.
//
//     outgoing.Clear();
//     while (outgoing.Add(record)) ...        // false: full, the record has to wait for the next block
//     host.SendVstEventsToHost(&outgoing.List());
//
// The audio thread's. The constructor makes all the memory (throws std::bad_alloc), nothing else allocates.

#pragma once

#include "host/vst_records.h"
#include "synthesis/midi_event_container.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle {

class COutgoingEvents {
public:
    static constexpr std::int32_t kMostEvents = 512; // of a block

    COutgoingEvents();
    COutgoingEvents(const COutgoingEvents&) = delete;
    COutgoingEvents& operator=(const COutgoingEvents&) = delete;

    void Clear() { block->list.numEvents = 0; }
    bool Add(const MidiEventRecord& record); // false when it is full
    std::int32_t GetCount() const { return block->list.numEvents; }
    // Good until the next Clear or Add.
    VstEvents& List() { return block->list; }

private:
    // The list and, right behind it, the rest of its pointers.
    struct Block {
        VstEvents list;
        VstEvent* more[kMostEvents - 2] = {};
        std::array<VstMidiEvent, kMostEvents> events;
    };
    static_assert(offsetof(Block, more) == sizeof(VstEvents));

    std::unique_ptr<Block> block;
};

// Shares out what waits in `queue`, an application or whatever has its four operations of outgoing MIDI: what
// is due in a block of `frames` samples is marked as sent and put into `outgoing`, in order and as long as
// there is room; the rest comes that much nearer, and what was due is due at the start of the next block.
// With `discard` everything is marked, and nothing put in. `records` is scratch room.
template<typename Queue>
void ShareOutMidi(Queue& queue, std::vector<MidiEventRecord>& records, std::int32_t frames, bool discard,
                  COutgoingEvents& outgoing) {
    outgoing.Clear();
    const std::int32_t count = queue.GetOutgoingMidi(records);
    for (std::int32_t i = 0; i < count; ++i) {
        const MidiEventRecord& record = records[static_cast<std::size_t>(i)];
        if (discard || (record.deltaFrames < frames && outgoing.Add(record))) {
            queue.MarkMidiSent(i);
        } else {
            queue.DelayMidi(i, std::max(record.deltaFrames - frames, 0));
        }
    }
}

} // namespace sonorelle
