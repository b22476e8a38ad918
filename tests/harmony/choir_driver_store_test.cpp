// What the driver registers with the snapshot store, and what it makes of bytes that come from elsewhere.

#include "harmony/choir_driver.h"

#include "harmony/choir_driver_rig.h"
#include "support/allocation_trap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace sonorelle::test {
namespace {

using namespace ConsortierClassic;

constexpr unsigned kStoreGenerator = 515;

using SizeAndVersion = std::pair<std::int32_t, float>;

std::vector<SizeAndVersion> LayoutOf(const CSnapshotStore& store) {
    std::vector<SizeAndVersion> layout;
    for (std::int32_t i = 0; i < store.GetElementCount(); ++i)
        layout.emplace_back(store.GetElement(i)->size, store.GetElement(i)->version);
    return layout;
}

// Where the elements of a melody of n notes lie in the store: the first of each kind.
struct Layout {
    // 1.0: eleven settings, four intervals, the voices of each note, the old chords
    static constexpr std::int32_t kSpread = 4;
    static constexpr std::int32_t kVoices = 15;
    // 1.1: arrangement, number of notes, notes, the gains of each note, chords
    std::int32_t noteCount;
    std::int32_t notes;
    std::int32_t gains;
    std::int32_t chords;
    // 1.2
    std::int32_t style;
    // 10001.0 and 10001.1 in turns: the voices and gains of each later note
    std::int32_t later;
};

Layout LayoutFor(std::int32_t n) {
    Layout layout{};
    layout.noteCount = Layout::kVoices + n + 1 + 1;
    layout.notes = layout.noteCount + 1;
    layout.gains = layout.notes + 1;
    layout.chords = layout.gains + n;
    layout.style = layout.chords + 1;
    layout.later = layout.style + 1;
    return layout;
}

template<typename Value>
void Write(CSnapshotStore& store, std::int32_t element, const Value& value, std::size_t offset = 0) {
    const SnapshotElement* const target = store.GetElement(element);
    ASSERT_LE(offset + sizeof value, static_cast<std::size_t>(target->size));
    std::memcpy(static_cast<std::byte*>(target->data) + offset, &value, sizeof value);
}

// Everything that can be asked and done, at every note and some beyond.
void UseEverything(DriverRig& rig, std::mt19937& random) {
    CChoirDriver& driver = rig.driver;
    const auto anything = [&random] { return static_cast<std::int32_t>(random()); };
    const std::int32_t count = driver.GetNoteCount();
    ASSERT_LE(count, driver.GetNoteCapacity());
    for (std::int32_t note = -1; note <= count; ++note) {
        driver.GetNotePitch(note);
        driver.GetNoteLength(note);
        driver.GetChord(note);
        ASSERT_TRUE(std::isfinite(driver.GetDeviation(note)));
        ASSERT_TRUE(std::isfinite(driver.GetNoteLevel(note)));
        driver.ChordsForNote(note, 7);
        for (std::int32_t voice = 0; voice < 4; ++voice) {
            float deviation = 0;
            float gain = 0;
            driver.GetVoice(note, voice, deviation, gain, true);
            ASSERT_TRUE(std::isfinite(deviation));
            ASSERT_GE(gain, 0.0F);
            ASSERT_LE(gain, 1.0F);
        }
    }
    driver.AllChords();
    for (int i = 0; i < 20; ++i) {
        const std::int32_t position = i % 2 == 0 ? anything() : anything() % 12000;
        for (const std::int32_t note :
             {driver.FindNoteAt(position), driver.FindNearestNote(position), driver.FindNextNote(position)}) {
            ASSERT_GE(note, -1);
            ASSERT_LT(note, driver.GetNoteCount());
        }
        std::int32_t keys[8];
        for (std::int32_t& key : keys)
            key = random() % 3 == 0 ? -1 : static_cast<std::int32_t>(random() % 128);
        driver.NoteInput(keys, position, 8);
        driver.UpdateLive(i % 3 != 0, position);
        driver.SplitNote(position);
        driver.MergeNotes(anything() % 12, anything() % 12);
    }
    driver.VoiceCount();
    driver.Rewind();
    driver.RefreshFromStore();
    driver.Run();
}

TEST(CChoirDriver, RegistersItsSettingsInTheToldOrderAndVersions) {
    DriverRig rig(kTune);
    std::vector<SizeAndVersion> expected(15, {4, 1.0F});
    expected.insert(expected.end(), {{4, 1.1F}, {4, 1.1F}, {4, 1.2F}});
    EXPECT_EQ(LayoutOf(rig.store), expected);

    CChoirDriver& driver = rig.driver;
    driver.SetMelodyScale(1);
    driver.SetHarmonyScale(2);
    driver.SetRoot(3);
    driver.SetVoiceRange(1);
    driver.SetSpread(0.5F);
    driver.SetSnapToScale(false);
    driver.SetMapScale(true);
    driver.SetAutoKey(false);
    driver.SetFollowScale(true);
    driver.SetChordsDirty(false);
    driver.SetManualOnly(true);
    for (std::int32_t voice = 0; voice < 4; ++voice) driver.SetManualInterval(voice, voice + 1);
    driver.SetArrangement(6);
    driver.SetStyle(4);
    const std::int32_t half = std::bit_cast<std::int32_t>(0.5F);
    const std::int32_t values[] = {1, 2, 3, 1, half, 0, 1, 0, 1, 0, 1, 1, 2, 3, 4, 6, 0, 4};
    for (std::int32_t i = 0; i < 18; ++i) {
        std::int32_t stored = 0;
        std::memcpy(&stored, rig.store.GetElement(i)->data, sizeof stored);
        EXPECT_EQ(stored, values[i]) << i;
        EXPECT_TRUE(rig.store.GetElement(i)->active);
    }
}

TEST(CChoirDriver, FirstRunRegistersTheNotesInTheToldOrderAndVersions) {
    DriverRig rig({60, 62, 64});
    rig.driver.Run();
    std::vector<SizeAndVersion> expected(15, {4, 1.0F});
    expected.insert(expected.end(), 3, {16, 1.0F}); // voices
    expected.push_back({24, 1.0F});                 // the old chords, a placeholder
    expected.insert(expected.end(), 2, {4, 1.1F});  // arrangement, number of notes
    expected.push_back({84, 1.1F});                 // notes
    expected.insert(expected.end(), 3, {16, 1.1F}); // gains
    expected.push_back({48, 1.1F});                 // chords
    expected.push_back({4, 1.2F});                  // style
    EXPECT_EQ(LayoutOf(rig.store), expected);

    const Layout layout = LayoutFor(3);
    const SnapshotElement& old = *rig.store.GetElement(Layout::kVoices + 3);
    EXPECT_FALSE(old.active);
    ASSERT_TRUE(old.conversion.has_value());
    EXPECT_EQ(old.conversion->to, rig.store.GetElement(layout.chords));
    for (std::int32_t note = 0; note < 3; ++note) {
        VoiceRow row{};
        GainRow gains{};
        std::memcpy(row.data(), rig.store.GetElement(Layout::kVoices + note)->data, sizeof row);
        std::memcpy(gains.data(), rig.store.GetElement(layout.gains + note)->data, sizeof gains);
        EXPECT_EQ(row, rig.Voices(note));
        EXPECT_EQ(gains, (GainRow{1, 1, 1, 1}));
    }
    std::uint32_t count = 0;
    std::memcpy(&count, rig.store.GetElement(layout.noteCount)->data, sizeof count);
    EXPECT_EQ(count, 3U);

    const std::vector<SizeAndVersion> before = LayoutOf(rig.store);
    rig.driver.Run();
    EXPECT_EQ(LayoutOf(rig.store), before) << "later runs register nothing";
}

TEST(CChoirDriver, SplitRegistersTheNewNoteBehindEverythingElse) {
    DriverRig rig({60, 62, 64});
    rig.driver.Run();
    std::vector<SizeAndVersion> expected = LayoutOf(rig.store);
    ASSERT_EQ(rig.driver.SplitNote(rig.Inside(1)), 1);
    const Layout layout = LayoutFor(3);
    expected[static_cast<std::size_t>(layout.notes)].first = 4 * 28;
    expected[static_cast<std::size_t>(layout.chords)].first = 4 * 16;
    expected.insert(expected.end(), {{16, 10001.0F}, {16, 10001.1F}});
    EXPECT_EQ(LayoutOf(rig.store), expected);

    // The store writes into the new arrays.
    NoteRecord note = rig.driver.GetNote(3);
    note.start += 7;
    Write(rig.store, layout.notes, note, 3 * sizeof note);
    EXPECT_EQ(rig.driver.GetNoteStart(3), note.start);
    Write(rig.store, layout.chords, kGMajor, 3 * sizeof kGMajor);
    EXPECT_EQ(rig.driver.GetChord(3), kGMajor);
    Write(rig.store, layout.later, std::int32_t{33}, 8);
    EXPECT_EQ(rig.Voices(3)[2], 33);
    Write(rig.store, layout.later + 1, 0.5F, 4);
    EXPECT_EQ(rig.Gains(3)[1], 0.5F);
}

TEST(CChoirDriver, ChordsOfTheOldLayoutKeepTheirKindAndLoseTheirRoot) {
    DriverRig rig({60, 62, 64, 65});
    rig.RunInC();
    const Layout layout = LayoutFor(4);
    rig.driver.SetSpread(0.25F);

    // A document of version 1.0: its elements alone, the old chords among them.
    std::vector<std::byte> bytes;
    std::vector<std::int32_t> sizes;
    const std::array<std::array<std::int32_t, 2>, 4> oldChords = {{{60, 999}, {62, -1}, {71, 5}, {61, 0}}};
    for (std::int32_t i = 0; i < layout.noteCount - 1; ++i) {
        const SnapshotElement& element = *rig.store.GetElement(i);
        ASSERT_EQ(element.version, 1.0F);
        const auto* from = static_cast<const std::byte*>(element.data);
        if (!element.active) from = reinterpret_cast<const std::byte*>(oldChords.data());
        bytes.insert(bytes.end(), from, from + element.size);
        sizes.push_back(element.size);
    }
    rig.driver.SetSpread(0.75F);
    rig.driver.SetVoiceGain(2, 1, 0.5F);
    ASSERT_TRUE(rig.store.ImportSnapshot("old", bytes.data(), static_cast<std::int32_t>(bytes.size()), 1.0F,
                                         sizes.data(), static_cast<std::int32_t>(sizes.size())));
    ASSERT_TRUE(rig.store.RecallSnapshot(0));
    EXPECT_EQ(rig.driver.GetSpread(), 0.25F);
    EXPECT_EQ(rig.Gains(2)[1], 0.5F) << "what the document did not know stays";
    EXPECT_EQ(rig.driver.GetNoteCount(), 4);
    const std::int32_t kinds[] = {kMajorTriad, kMinorTriad, kDiminishedTriad};
    for (std::int32_t note = 0; note < 3; ++note) {
        EXPECT_EQ(rig.driver.GetChord(note).triadType, kinds[note]);
        EXPECT_EQ(rig.driver.GetChord(note).noteCount, 3);
        EXPECT_EQ(rig.driver.GetChord(note).root, 0);
    }
    ChordRecord outside;
    rig.driver.GetEngine().LegacyChord(outside, oldChords[3].data());
    EXPECT_EQ(rig.driver.GetChord(3), outside);
}

TEST(CChoirDriver, RefusedSettingsOfADocumentFallBackToWhatTheEngineHolds) {
    DriverRig rig(kTune);
    rig.driver.SetRoot(7);
    rig.driver.SetMelodyScale(4);
    rig.driver.SetFollowScale(false);
    rig.driver.SetHarmonyScale(6);
    rig.driver.SetSpread(0.5F);
    rig.driver.SetVoiceRange(1);
    rig.RunInC();
    for (const std::int32_t bad : {INT_MIN, -1, 12, INT_MAX}) {
        for (const std::int32_t element : {0, 1, 2, 3}) Write(rig.store, element, bad);
        Write(rig.store, Layout::kSpread, std::nanf(""));
        rig.driver.Run();
        EXPECT_EQ(rig.driver.GetMelodyScale(), 4);
        EXPECT_EQ(rig.driver.GetHarmonyScale(), 6);
        EXPECT_EQ(rig.driver.GetRoot(), 7);
        EXPECT_EQ(rig.driver.GetVoiceRange(), 1);
        EXPECT_EQ(rig.driver.GetSpread(), 0.5F);
    }
}

// Row 11 is refused as a melody scale, and would be taken as a harmony scale.
TEST(CChoirDriver, HarmonyDoesNotFollowARefusedMelodyScale) {
    DriverRig rig(kTune);
    rig.driver.SetMelodyScale(4);
    rig.RunInC();
    const std::vector<VoiceRow> before = rig.AllVoices();
    Write(rig.store, 0, kChromaticScale);
    rig.driver.Run();
    EXPECT_EQ(rig.driver.GetMelodyScale(), 4);
    EXPECT_EQ(rig.driver.GetHarmonyScale(), 4);
    EXPECT_EQ(rig.driver.GetEngine().GetKey().GetHarmonyScale(), 4);
    EXPECT_EQ(rig.AllVoices(), before);
}

TEST(CChoirDriver, CountOfADocumentIsHeldToTheCapacity) {
    DriverRig rig(kTune);
    rig.RunInC();
    const Layout layout = LayoutFor(static_cast<std::int32_t>(kTune.size()));
    for (const std::uint32_t count : {12U, 0x7fffffffU, 0x80000000U, 0xffffffffU}) {
        Write(rig.store, layout.noteCount, count);
        EXPECT_EQ(rig.driver.GetNoteCount(), 11);
        rig.driver.Run();
        EXPECT_EQ(rig.driver.GetNoteStart(11), -1);
    }
    EXPECT_EQ(rig.driver.SplitNote(rig.Inside(2)), 1);
    EXPECT_EQ(rig.driver.GetNoteCount(), 12);
    Write(rig.store, layout.noteCount, std::uint32_t{0});
    EXPECT_EQ(rig.driver.GetNoteCount(), 0);
    rig.driver.Run();
    EXPECT_EQ(rig.driver.FindNoteAt(rig.Inside(2)), -1);
}

TEST(CChoirDriver, UnknownStyleOfADocumentKeepsTheVoices) {
    DriverRig rig(kTune);
    rig.RunInC();
    const std::vector<VoiceRow> before = rig.AllVoices();
    const Layout layout = LayoutFor(static_cast<std::int32_t>(kTune.size()));
    for (const std::int32_t style : {-1, 5, INT_MIN, INT_MAX}) {
        Write(rig.store, layout.style, style);
        rig.driver.Run();
        EXPECT_EQ(rig.AllVoices(), before);
        EXPECT_EQ(rig.driver.VoiceCount(), 4);
    }
}

// Run under the sanitizers, this is where a document could reach out of bounds.
TEST(CChoirDriver, AnyBytesOfADocumentAreHarmless) {
    SCOPED_TRACE(testing::Message() << "seed " << kStoreGenerator);
    std::mt19937 random(kStoreGenerator);
    for (int round = 0; round < 60; ++round) {
        DriverRig rig({60, 62, 64, 65, 67});
        rig.driver.Run();
        rig.driver.StartLive(round % 3 != 0, round % 2 == 0);
        rig.driver.SetRecordLive(round % 5 == 0);
        for (int state = 0; state < 6; ++state) {
            for (std::int32_t i = 0; i < rig.store.GetElementCount(); ++i) {
                const SnapshotElement& element = *rig.store.GetElement(i);
                if (!element.active || random() % 2 == 0) continue;
                for (std::int32_t offset = 0; offset < element.size; offset += 4) {
                    const std::array<std::uint_fast32_t, 8> words = {random(),   random() % 16,   0xffffffff,
                                                                     0x80000000, 0x7fffffff,      0x7fc00000,
                                                                     0x7f800000, random() % 12000};
                    Write(rig.store, i, static_cast<std::uint32_t>(words[random() % 8]),
                          static_cast<std::size_t>(offset));
                }
            }
            if (random() % 2 == 0) rig.driver.RefreshFromStore();
            UseEverything(rig, random);
        }
    }
}

// The audio thread.

TEST(CChoirDriver, WhatTheAudioThreadCallsAllocatesNothing) {
    DriverRig rig(EvenNotes(kTune, 8000, 400));
    rig.RunInC();
    std::int64_t counted = AllocationCount();
    EXPECT_GT(counted, 0) << "the count counts";
    const std::array<std::array<std::int32_t, 8>, 3> held = {{{60, 64, 67, -1, -1, -1, -1, -1},
                                                              {50, 55, 60, 64, 67, 70, 72, 75},
                                                              {-1, -1, -1, -1, -1, -1, -1, -1}}};
    int voiced = 0;
    for (const bool harmonies : {false, true}) {
        for (const std::int32_t arrangement : {0, 1, 2}) {
            rig.driver.StartLive(false, false);
            rig.driver.SetArrangement(arrangement);
            rig.driver.Run();
            rig.driver.StartLive(true, harmonies);
            rig.driver.SetRecordLive(true);
            counted = AllocationCount();
            for (const auto& places : held) {
                rig.driver.ResetLive();
                for (std::int32_t note = 0; note < rig.driver.GetNoteCount(); ++note) {
                    std::int32_t keys[8];
                    std::copy(places.begin(), places.end(), keys);
                    const std::int32_t position = rig.driver.GetNoteStart(note) + 100;
                    rig.driver.NoteInput(keys, position, 8);
                    rig.driver.UpdateLive(places[0] != -1, position);
                    rig.driver.FindNoteAt(position);
                    rig.driver.FindNearestNote(position);
                    for (std::int32_t voice = 0; voice < 4; ++voice) {
                        float deviation = 0;
                        float gain = 0;
                        rig.driver.GetVoice(note, voice, deviation, gain, true);
                        rig.driver.GetVoice(note + 1, voice, deviation, gain, false);
                        if (gain > 0) ++voiced;
                    }
                    rig.driver.GetDeviation(note);
                }
            }
            EXPECT_EQ(AllocationCount(), counted);
        }
    }
    EXPECT_GT(voiced, 100);
}

TEST(CChoirDriver, RecallOfASnapshotAllocatesNothing) {
    DriverRig rig(kTune);
    rig.RunInC();
    rig.store.AddSnapshot("one");
    rig.driver.SplitNote(rig.Inside(3));
    const std::int64_t before = AllocationCount();
    ASSERT_TRUE(rig.store.RecallSnapshot(0));
    rig.driver.RefreshFromStore();
    EXPECT_EQ(AllocationCount(), before);
    EXPECT_EQ(rig.driver.GetNoteCount(), static_cast<std::int32_t>(kTune.size()));
}

} // namespace
} // namespace sonorelle::test
