#include "synthesis/midi_event_container.h"

#include <new>

namespace sonorelle {

namespace {

constexpr std::uint32_t kNoteOn = 0x90;
constexpr std::uint32_t kNoteOff = 0x80;

std::uint8_t SevenBits(std::int32_t value) {
    return static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) & 0x7fU);
}

} // namespace

CkvoMidiEventContainer::CkvoMidiEventContainer() { events.reserve(kReservedEvents); }

void CkvoMidiEventContainer::AddNoteEvent(std::int32_t key, std::int32_t velocity, std::int32_t channel,
                                          bool noteOn, std::int32_t deltaFrames) noexcept {
    const std::uint32_t channelBits = static_cast<std::uint32_t>(channel) & 0x0fU;
    MidiEventRecord pending;
    pending.status = static_cast<std::uint8_t>((noteOn ? kNoteOn : kNoteOff) | channelBits);
    pending.key = SevenBits(key);
    pending.velocity = noteOn ? SevenBits(velocity) : std::uint8_t{0};
    pending.deltaFrames = deltaFrames;
    try {
        events.push_back(pending);
    } catch (const std::bad_alloc&) {
        // A note less is better than an audio thread that ends.
        return;
    }
}

std::int32_t CkvoMidiEventContainer::GetEvents(std::vector<MidiEventRecord>& out) const {
    out = events;
    return static_cast<std::int32_t>(events.size());
}

MidiEventRecord* CkvoMidiEventContainer::Find(std::int32_t index) noexcept {
    if (index < 0 || static_cast<std::size_t>(index) >= events.size()) return nullptr;
    return &events[static_cast<std::size_t>(index)];
}

void CkvoMidiEventContainer::SetDelta(std::int32_t index, std::int32_t deltaFrames) noexcept {
    if (MidiEventRecord* const event = Find(index)) event->deltaFrames = deltaFrames;
}

void CkvoMidiEventContainer::MarkConsumed(std::int32_t index) noexcept {
    if (MidiEventRecord* const event = Find(index)) event->consumed = 1;
}

void CkvoMidiEventContainer::PurgeConsumed() noexcept {
    std::erase_if(events, [](const MidiEventRecord& event) { return event.consumed != 0; });
}

} // namespace sonorelle
