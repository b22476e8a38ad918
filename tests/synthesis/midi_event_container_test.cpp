#include "synthesis/midi_event_container.h"

#include "support/allocation_trap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

namespace sonorelle {
namespace {

std::vector<MidiEventRecord> Events(const CkvoMidiEventContainer& container) {
    std::vector<MidiEventRecord> events;
    const std::int32_t count = container.GetEvents(events);
    EXPECT_EQ(count, static_cast<std::int32_t>(events.size()));
    return events;
}

std::vector<int> Keys(const CkvoMidiEventContainer& container) {
    std::vector<int> keys;
    for (const MidiEventRecord& event : Events(container)) keys.push_back(event.key);
    return keys;
}

// What the host's side does after a block: gives the keys that went out.
std::vector<int> PassBlock(CkvoMidiEventContainer& container, std::int32_t blockLength) {
    std::vector<int> sent;
    const std::vector<MidiEventRecord> events = Events(container);
    for (std::size_t n = 0; n < events.size(); ++n) {
        const auto index = static_cast<std::int32_t>(n);
        if (events[n].deltaFrames < blockLength) {
            sent.push_back(events[n].key);
            container.MarkConsumed(index);
        } else {
            container.SetDelta(index, events[n].deltaFrames - blockLength);
        }
    }
    container.PurgeConsumed();
    return sent;
}

TEST(CkvoMidiEventContainer, ANoteOnTellsChannelKeyAndVelocity) {
    CkvoMidiEventContainer container;
    container.AddNoteEvent(60, 100, 3, true, 96);
    const MidiEventRecord event = Events(container).at(0);
    EXPECT_EQ(event.status, 0x93);
    EXPECT_EQ(event.key, 60);
    EXPECT_EQ(event.velocity, 100);
    EXPECT_EQ(event.zero, 0);
    EXPECT_EQ(event.byteSize, 24);
    EXPECT_EQ(event.deltaFrames, 96);
    EXPECT_EQ(event.consumed, 0);
}

TEST(CkvoMidiEventContainer, ANoteOffHasVelocityZero) {
    CkvoMidiEventContainer container;
    container.AddNoteEvent(61, 100, 2, false, 32);
    const MidiEventRecord event = Events(container).at(0);
    EXPECT_EQ(event.status, 0x82);
    EXPECT_EQ(event.key, 61);
    EXPECT_EQ(event.velocity, 0);
    EXPECT_EQ(event.deltaFrames, 32);
}

TEST(CkvoMidiEventContainer, ARecordIsSixteenBytesInTheHostsOrder) {
    CkvoMidiEventContainer container;
    container.AddNoteEvent(64, 127, 1, true, 5);
    container.MarkConsumed(0);
    const MidiEventRecord event = Events(container).at(0);
    unsigned char bytes[16] = {};
    std::int32_t words[4] = {};
    static_assert(sizeof(event) == sizeof(bytes));
    std::memcpy(bytes, &event, sizeof(event));
    std::memcpy(words, &event, sizeof(event));
    EXPECT_EQ(bytes[0], 0x91);
    EXPECT_EQ(bytes[1], 64);
    EXPECT_EQ(bytes[2], 127);
    EXPECT_EQ(bytes[3], 0);
    EXPECT_EQ(words[1], 24);
    EXPECT_EQ(words[2], 5);
    EXPECT_EQ(words[3], 1);
}

TEST(CkvoMidiEventContainer, KeyVelocityAndChannelAreMasked) {
    CkvoMidiEventContainer container;
    container.AddNoteEvent(128 + 5, 256 + 7, 16 + 1, true, 0);
    container.AddNoteEvent(-1, -1, -1, true, 0);
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    container.AddNoteEvent(kLowest, kLowest, kLowest, true, kLowest);
    const std::vector<MidiEventRecord> events = Events(container);
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[0].status, 0x91);
    EXPECT_EQ(events[0].key, 5);
    EXPECT_EQ(events[0].velocity, 7);
    EXPECT_EQ(events[1].status, 0x9f);
    EXPECT_EQ(events[1].key, 127);
    EXPECT_EQ(events[1].velocity, 127);
    EXPECT_EQ(events[2].status, 0x90);
    EXPECT_EQ(events[2].key, 0);
    EXPECT_EQ(events[2].deltaFrames, kLowest);
}

TEST(CkvoMidiEventContainer, EventsStayInTheOrderTheyWereMadeInWhateverTheirDelta) {
    CkvoMidiEventContainer container;
    container.AddNoteEvent(60, 100, 0, true, 96);
    container.AddNoteEvent(64, 100, 1, true, 96);
    container.AddNoteEvent(55, 0, 2, false, 0); // a voice that was switched off ends its note at once
    container.AddNoteEvent(62, 100, 0, true, 128);
    EXPECT_EQ(Keys(container), (std::vector<int>{60, 64, 55, 62}));
    EXPECT_EQ(Events(container)[2].deltaFrames, 0);
}

TEST(CkvoMidiEventContainer, AnEventBeyondAShortBlockGoesOutOneBlockLaterWithItsDeltaReduced) {
    CkvoMidiEventContainer container;
    container.AddNoteEvent(60, 100, 0, true, 30);
    container.AddNoteEvent(61, 100, 1, true, 50);
    container.AddNoteEvent(62, 100, 2, true, 96);
    EXPECT_EQ(PassBlock(container, 50), (std::vector<int>{60})); // at the block's length is beyond it
    EXPECT_EQ(Events(container)[0].deltaFrames, 0);
    EXPECT_EQ(Events(container)[1].deltaFrames, 46);
    EXPECT_EQ(PassBlock(container, 50), (std::vector<int>{61, 62}));
    EXPECT_TRUE(Events(container).empty());
}

TEST(CkvoMidiEventContainer, PurgeRemovesWhatIsConsumedAndKeepsTheOrderOfTheRest) {
    CkvoMidiEventContainer container;
    for (std::int32_t key = 0; key < 10; ++key) container.AddNoteEvent(key, 100, 0, true, 100 - key);
    for (const std::int32_t index : {0, 3, 4, 9}) container.MarkConsumed(index);
    EXPECT_EQ(Events(container).size(), 10u); // until then they stay
    container.PurgeConsumed();
    EXPECT_EQ(Keys(container), (std::vector<int>{1, 2, 5, 6, 7, 8}));
    container.PurgeConsumed();
    EXPECT_EQ(Keys(container), (std::vector<int>{1, 2, 5, 6, 7, 8}));
    container.MarkConsumed(2); // indices count anew
    container.PurgeConsumed();
    EXPECT_EQ(Keys(container), (std::vector<int>{1, 2, 6, 7, 8}));
}

TEST(CkvoMidiEventContainer, IsEmptyWhenAllWasConsumed) {
    CkvoMidiEventContainer container;
    for (std::int32_t key = 0; key < 100; ++key) container.AddNoteEvent(key, 100, key % 4, key % 2 == 0, key);
    for (std::int32_t index = 0; index < 100; ++index) container.MarkConsumed(index);
    container.PurgeConsumed();
    EXPECT_TRUE(Events(container).empty());
}

TEST(CkvoMidiEventContainer, GetEventsReplacesWhatWasThereAndLeavesTheQueue) {
    CkvoMidiEventContainer container;
    container.AddNoteEvent(60, 100, 0, true, 0);
    std::vector<MidiEventRecord> events(7);
    EXPECT_EQ(container.GetEvents(events), 1);
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].key, 60);
    events[0].key = 1; // the caller's copy
    EXPECT_EQ(Keys(container), (std::vector<int>{60}));
    EXPECT_EQ(CkvoMidiEventContainer().GetEvents(events), 0);
    EXPECT_TRUE(events.empty());
}

TEST(CkvoMidiEventContainer, IgnoresIndicesThatThereIsNoEventFor) {
    CkvoMidiEventContainer container;
    container.MarkConsumed(0);
    container.SetDelta(0, 5);
    container.AddNoteEvent(60, 100, 0, true, 7);
    for (const std::int32_t index :
         {-1, 1, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
        container.MarkConsumed(index);
        container.SetDelta(index, 99);
    }
    container.PurgeConsumed();
    ASSERT_EQ(Events(container).size(), 1u);
    EXPECT_EQ(Events(container)[0].deltaFrames, 7);
}

TEST(CkvoMidiEventContainer, AllocatesNothingWithinItsRoom) {
    CkvoMidiEventContainer container;
    std::vector<MidiEventRecord> out;
    out.reserve(CkvoMidiEventContainer::kReservedEvents);
    const std::int64_t before = test::AllocationCount();
    for (int round = 0; round < 3; ++round) {
        for (std::size_t n = 0; n < CkvoMidiEventContainer::kReservedEvents; ++n)
            container.AddNoteEvent(60, 100, 0, true, 0);
        const std::int32_t count = container.GetEvents(out);
        for (std::int32_t index = 0; index < count; ++index) container.MarkConsumed(index);
        container.PurgeConsumed();
    }
    EXPECT_EQ(test::AllocationCount(), before);
}

TEST(CkvoMidiEventContainer, GrowsBeyondItsRoom) {
    constexpr std::size_t kMany = 3 * CkvoMidiEventContainer::kReservedEvents;
    CkvoMidiEventContainer container;
    for (std::size_t n = 0; n < kMany; ++n)
        container.AddNoteEvent(60, 100, 0, true, static_cast<std::int32_t>(n));
    const std::vector<MidiEventRecord> events = Events(container);
    ASSERT_EQ(events.size(), kMany);
    for (std::size_t n = 0; n < kMany; ++n) ASSERT_EQ(events[n].deltaFrames, static_cast<std::int32_t>(n));
}

TEST(CkvoMidiEventContainer, DropsAnEventWhereMemoryRanOut) {
    CkvoMidiEventContainer container;
    for (std::size_t n = 0; n < CkvoMidiEventContainer::kReservedEvents; ++n)
        container.AddNoteEvent(60, 100, 0, true, 0);
    {
        const test::AllocationLimit limit(0);
        container.AddNoteEvent(61, 100, 0, true, 0);
    }
    ASSERT_EQ(Events(container).size(), CkvoMidiEventContainer::kReservedEvents);
    EXPECT_EQ(Events(container).back().key, 60);
    container.AddNoteEvent(62, 100, 0, true, 0); // memory is back
    EXPECT_EQ(Events(container).back().key, 62);
}

} // namespace
} // namespace sonorelle
