#include "host/outgoing_events.h"

#include "synthesis/midi_event_container.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace sonorelle::test {
namespace {

// The queue as an application offers it.
struct NoteQueue {
    CkvoMidiEventContainer container;
    std::int32_t GetOutgoingMidi(std::vector<MidiEventRecord>& out) const { return container.GetEvents(out); }
    void MarkMidiSent(std::int32_t index) { container.MarkConsumed(index); }
    void DelayMidi(std::int32_t index, std::int32_t offset) { container.SetDelta(index, offset); }
    std::vector<MidiEventRecord> Rest() {
        container.PurgeConsumed();
        std::vector<MidiEventRecord> rest;
        container.GetEvents(rest);
        return rest;
    }
};

const VstMidiEvent& EventAt(COutgoingEvents& outgoing, std::int32_t index) {
    return *reinterpret_cast<const VstMidiEvent*>(EventSlots(outgoing.List())[index]);
}

TEST(COutgoingEvents, CarriesTheBytesTheSizeAndTheOffset) {
    COutgoingEvents outgoing;
    MidiEventRecord record;
    record.status = 0x92;
    record.key = 64;
    record.velocity = 101;
    record.deltaFrames = 37;
    ASSERT_TRUE(outgoing.Add(record));
    ASSERT_EQ(outgoing.List().numEvents, 1);
    const VstMidiEvent& event = EventAt(outgoing, 0);
    EXPECT_EQ(event.type, kVstMidiType);
    EXPECT_EQ(event.byteSize, 24);
    EXPECT_EQ(event.deltaFrames, 37);
    EXPECT_EQ(event.flags, 0);
    EXPECT_EQ(event.midiData[0], 0x92);
    EXPECT_EQ(event.midiData[1], 64);
    EXPECT_EQ(event.midiData[2], 101);
    EXPECT_EQ(event.midiData[3], 0);
}

TEST(ShareOutMidi, AnEventAtTheBlocksEndWaitsAndIsThenDueAtOnce) {
    NoteQueue queue;
    queue.container.AddNoteEvent(60, 100, 0, true, 511);
    queue.container.AddNoteEvent(61, 100, 0, true, 512);
    queue.container.AddNoteEvent(62, 100, 0, true, 600);
    COutgoingEvents outgoing;
    std::vector<MidiEventRecord> scratch;
    ShareOutMidi(queue, scratch, 512, false, outgoing);
    ASSERT_EQ(outgoing.GetCount(), 1);
    EXPECT_EQ(EventAt(outgoing, 0).midiData[1], 60);
    const std::vector<MidiEventRecord> rest = queue.Rest();
    ASSERT_EQ(rest.size(), 2U);
    EXPECT_EQ(rest[0].deltaFrames, 0);
    EXPECT_EQ(rest[1].deltaFrames, 88);
}

TEST(ShareOutMidi, TheFiveHundredAndThirteenthEventWaitsInOrder) {
    constexpr std::int32_t kEvents = 1100;
    NoteQueue queue;
    for (std::int32_t i = 0; i < kEvents; ++i)
        queue.container.AddNoteEvent(i % 128, i / 128 + 1, i % 4, true, 9);
    COutgoingEvents outgoing;
    std::vector<MidiEventRecord> scratch;
    std::int32_t next = 0;
    for (const std::int32_t expected : {512, 512, 76, 0}) {
        ShareOutMidi(queue, scratch, 64, false, outgoing);
        ASSERT_EQ(outgoing.GetCount(), expected);
        for (std::int32_t i = 0; i < expected; ++i, ++next) {
            EXPECT_EQ(EventAt(outgoing, i).midiData[1], next % 128) << next;
            EXPECT_EQ(EventAt(outgoing, i).midiData[2], next / 128 + 1) << next;
            EXPECT_EQ(EventAt(outgoing, i).deltaFrames, next < 512 ? 9 : 0) << next;
        }
        queue.Rest();
    }
    EXPECT_EQ(next, kEvents);
}

TEST(ShareOutMidi, ABlockOfNoFramesSendsNothingAndKeepsTheOffsets) {
    NoteQueue queue;
    queue.container.AddNoteEvent(60, 100, 0, true, 0);
    queue.container.AddNoteEvent(60, 100, 0, true, 5);
    COutgoingEvents outgoing;
    std::vector<MidiEventRecord> scratch;
    ShareOutMidi(queue, scratch, 0, false, outgoing);
    EXPECT_EQ(outgoing.GetCount(), 0);
    const std::vector<MidiEventRecord> rest = queue.Rest();
    ASSERT_EQ(rest.size(), 2U);
    EXPECT_EQ(rest[0].deltaFrames, 0);
    EXPECT_EQ(rest[1].deltaFrames, 5);
}

TEST(ShareOutMidi, DiscardingEmptiesTheQueueAndPutsNothingIn) {
    NoteQueue queue;
    for (std::int32_t i = 0; i < 700; ++i) queue.container.AddNoteEvent(60, 100, 0, true, i * 10);
    COutgoingEvents outgoing;
    std::vector<MidiEventRecord> scratch;
    ShareOutMidi(queue, scratch, 64, true, outgoing);
    EXPECT_EQ(outgoing.GetCount(), 0);
    EXPECT_TRUE(queue.Rest().empty());
}

} // namespace
} // namespace sonorelle::test
