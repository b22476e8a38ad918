#include "host/outgoing_events.h"

namespace sonorelle {

COutgoingEvents::COutgoingEvents() : block(std::make_unique<Block>()) {}

bool COutgoingEvents::Add(const MidiEventRecord& record) {
    const std::int32_t count = GetCount();
    if (count >= kMostEvents) return false;
    VstMidiEvent& event = block->events[static_cast<std::size_t>(count)];
    event.byteSize = record.byteSize;
    event.deltaFrames = record.deltaFrames;
    event.midiData[0] = record.status;
    event.midiData[1] = record.key;
    event.midiData[2] = record.velocity;
    event.midiData[3] = record.zero;
    EventSlots(block->list)[count] = reinterpret_cast<VstEvent*>(&event);
    ++block->list.numEvents;
    return true;
}

} // namespace sonorelle
