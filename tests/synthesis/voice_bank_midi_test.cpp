// The notes that the voices send.

#include "synthesis/voice_bank_player.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace sonorelle::test {
namespace {

constexpr std::int32_t kMidiPeriod = 20; // each block of 32 reads further on than the one before
constexpr std::int32_t kMidiSong = 40000;

struct Event {
    int block; // in which it was sent
    int status;
    int key;
    int velocity;
    int delta;
};

std::vector<Event> TakeEvents(BankPlayer& player) {
    std::vector<Event> events;
    for (const MidiEventRecord& e : player.TakeEvents())
        events.push_back(
            {static_cast<int>(player.BlocksPlayed()) - 1, e.status, e.key, e.velocity, e.deltaFrames});
    return events;
}

std::vector<Event> PlayEvents(BankPlayer& player, int blocks) {
    std::vector<Event> events;
    for (int i = 0; i < blocks; ++i) {
        EXPECT_EQ(player.Render(), 0);
        for (const Event& event : TakeEvents(player)) events.push_back(event);
    }
    return events;
}

std::vector<Event> OfVoice(const std::vector<Event>& events, int voice) {
    std::vector<Event> own;
    for (const Event& event : events)
        if ((event.status & 15) == voice) own.push_back(event);
    return own;
}

// A rest, two notes without a break, a rest, a third note.
VoicedSong ThreeNotes() {
    VoicedSong song = PulseTrain(kMidiPeriod, kMidiSong);
    AddNote(song, 3000, 9999, 1.0F);
    AddNote(song, 10000, 15999, 0.5F);
    AddNote(song, 22000, 35999, 0.1F);
    return song;
}

int SungPitch(BankPlayer& player) { return player.melody.Driver().GetNotePitch(0); }

TEST(VoiceBankMidi, NotesGoOnAndOffInOrderWithTheirKeys) {
    BankPlayer player(ThreeNotes());
    player.SetInterval(0, 1, -30);
    player.SetInterval(1, 1, -26);
    player.SetInterval(2, 1, -20);
    player.bank.SetMidiOut(true);
    const std::vector<Event> events = OfVoice(PlayEvents(player, 1180), 1);
    ASSERT_EQ(events.size(), 6u);
    const int sung = SungPitch(player);
    const int keys[] = {sung - 30, sung - 30, sung - 26, sung - 26, sung - 20, sung - 20};
    const int statuses[] = {0x91, 0x81, 0x91, 0x81, 0x91, 0x81};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(events[i].key, keys[i]) << i;
        EXPECT_EQ(events[i].status, statuses[i]) << i;
    }
    EXPECT_EQ(events[1].block, events[2].block); // the one ends as the other begins
    // Each in the first block that reads in its note.
    const std::vector<double>& reads = player.readAt[1];
    const auto firstFrom = [&](double position) {
        int block = 0;
        while (reads[static_cast<std::size_t>(block)] < position) ++block;
        return block;
    };
    EXPECT_EQ(events[0].block, firstFrom(3000));
    EXPECT_EQ(events[2].block, firstFrom(10000));
    EXPECT_EQ(events[3].block, firstFrom(16000));
    EXPECT_EQ(events[4].block, firstFrom(22000));
    EXPECT_EQ(events[5].block, firstFrom(36000));
}

TEST(VoiceBankMidi, EachVoiceHasItsChannel) {
    BankPlayer player(ThreeNotes());
    player.bank.SetMidiOut(true);
    const std::vector<Event> events = PlayEvents(player, 200);
    ASSERT_EQ(events.size(), 4u);
    for (int voice = 0; voice < 4; ++voice)
        EXPECT_EQ(events[static_cast<std::size_t>(voice)].status, 0x90 + voice);
}

// 127 - 127 x ln(level) / -6.9: 127; 127 - 12.76 = 114.24 at 0.5; 127 - 42.38 = 84.62 at 0.1.
TEST(VoiceBankMidi, VelocityFollowsTheLogarithmOfTheLevel) {
    BankPlayer player(ThreeNotes());
    player.bank.SetMidiOut(true);
    const std::vector<Event> events = OfVoice(PlayEvents(player, 1180), 0);
    ASSERT_EQ(events.size(), 6u);
    EXPECT_EQ(events[0].velocity, 127);
    EXPECT_EQ(events[2].velocity, 114);
    EXPECT_EQ(events[4].velocity, 84);
    EXPECT_EQ(events[1].velocity, 0); // of a note off
}

TEST(VoiceBankMidi, ALevelOfNothingIsVelocityZero) {
    for (const float level : {0.0F, 1e-4F, 1e-30F}) {
        VoicedSong song = PulseTrain(kMidiPeriod, kMidiSong);
        AddNote(song, 0, kMidiSong - 1, level);
        BankPlayer player(std::move(song));
        player.bank.SetMidiOut(true);
        const std::vector<Event> events = PlayEvents(player, 10);
        ASSERT_EQ(events.size(), 4u);
        EXPECT_EQ(events[0].velocity, 0);
    }
}

// Blocks of 32 from the start of the host's block: the third is 64 samples behind it.
TEST(VoiceBankMidi, DeltaIsTheWayFromTheStartOfTheHostsBlock) {
    VoicedSong song = PulseTrain(kMidiPeriod, kMidiSong);
    AddNote(song, 3000, 9999);
    BankPlayer player(std::move(song));
    player.bank.SetMidiOut(true);
    player.PlayTo(2950);
    player.bank.SetBlockOrigin(1000000);
    const std::vector<Event> events = PlayEvents(player, 20);
    ASSERT_EQ(events.size(), 4u);
    int before = 0; // blocks since the origin was set, until one reads in the note
    while (player.readAt[0][player.BlocksPlayed() - 20 + static_cast<std::size_t>(before)] < 3000) ++before;
    EXPECT_GE(before, 1);
    for (const Event& event : events) EXPECT_EQ(event.delta, 32 * before);
}

TEST(VoiceBankMidi, TransposeMovesTheKeyByWholeSemitones) {
    BankPlayer player(ThreeNotes());
    player.bank.SetMidiOut(true);
    player.bank.SetTranspose(-13.3F); // the key is cut, not rounded
    const std::vector<Event> events = OfVoice(PlayEvents(player, 200), 0);
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].key, SungPitch(player) - 14);
}

TEST(VoiceBankMidi, AVoiceSwitchedOffInANoteEndsItsNoteAtOnceAndReadsOn) {
    BankPlayer player(ThreeNotes());
    BankPlayer twin(ThreeNotes());
    for (BankPlayer* each : {&player, &twin}) {
        each->bank.SetMidiOut(true);
        each->PlayTo(5000);
        each->bank.SetBlockOrigin(0);
        each->Play(10);
        TakeEvents(*each);
    }
    player.bank.SetVoiceEnabled(2, false);
    const std::vector<Event> events = TakeEvents(player);
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].status, 0x82);
    EXPECT_EQ(events[0].key, SungPitch(player));
    EXPECT_EQ(events[0].delta, 0);
    EXPECT_TRUE(PlayEvents(player, 50).empty());
    twin.Play(50);
    EXPECT_EQ(player.readAt[2], twin.readAt[2]);
    EXPECT_EQ(player.sound[2][0].back(), kUntouched);
    player.bank.SetVoiceEnabled(2, false); // no change
    EXPECT_TRUE(TakeEvents(player).empty());
}

TEST(VoiceBankMidi, SwitchedOnAgainInTheNoteItBeginsAnew) {
    BankPlayer player(ThreeNotes());
    player.bank.SetMidiOut(true);
    player.PlayTo(5000);
    player.bank.SetVoiceEnabled(2, false);
    player.Play(2);
    TakeEvents(player);
    player.bank.SetVoiceEnabled(2, true);
    const std::vector<Event> events = PlayEvents(player, 5);
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].status, 0x92);
}

TEST(VoiceBankMidi, AVoiceThatIsOffSendsNothing) {
    BankPlayer player(ThreeNotes());
    player.bank.SetMidiOut(true);
    player.bank.SetVoiceEnabled(1, false);
    EXPECT_TRUE(OfVoice(PlayEvents(player, 1180), 1).empty());
}

TEST(VoiceBankMidi, InUnvoicedStretchesNoNoteBeginsAndASoundingOneEnds) {
    VoicedSong song = ThreeNotes();
    for (PitchMarkRecord& mark : song.marks) {
        const bool inFirst = mark.position > 6000 && mark.position < 8000;
        const bool startsThird = mark.position > 21000 && mark.position < 30000;
        if (inFirst || startsThird) mark.voicing = 0;
    }
    BankPlayer player(std::move(song));
    player.bank.SetMidiOut(true);
    const std::vector<Event> events = OfVoice(PlayEvents(player, 1180), 0);
    std::vector<int> statuses;
    std::vector<double> places;
    for (const Event& event : events) {
        statuses.push_back(event.status);
        places.push_back(player.readAt[0][static_cast<std::size_t>(event.block)]);
    }
    ASSERT_EQ(statuses, (std::vector<int>{0x90, 0x80, 0x90, 0x80, 0x90, 0x80, 0x90, 0x80}));
    const double expected[] = {3000, 6000, 8000, 10000, 10000, 16000, 30000, 36000};
    for (std::size_t i = 0; i < 8; ++i) EXPECT_NEAR(places[i], expected[i], 64) << i; // two blocks
}

TEST(VoiceBankMidi, ANoteThatTheVoiceIsSilentInSendsNothing) {
    BankPlayer player(ThreeNotes());
    player.melody.Driver().SetVoicePitch(1, 3, -1);
    player.bank.SetMidiOut(true);
    const std::vector<Event> events = OfVoice(PlayEvents(player, 1180), 3);
    ASSERT_EQ(events.size(), 4u);
    EXPECT_NEAR(player.readAt[3][static_cast<std::size_t>(events[1].block)], 10000, 64); // ends with its note
    EXPECT_NEAR(player.readAt[3][static_cast<std::size_t>(events[2].block)], 22000, 64);
}

TEST(VoiceBankMidi, AllNotesOffEndsEverySoundingNoteOnce) {
    BankPlayer player(ThreeNotes());
    player.bank.SetMidiOut(true);
    player.PlayTo(5000);
    TakeEvents(player);
    player.bank.AllNotesOff();
    const std::vector<Event> events = TakeEvents(player);
    ASSERT_EQ(events.size(), 4u);
    for (int voice = 0; voice < 4; ++voice) {
        EXPECT_EQ(events[static_cast<std::size_t>(voice)].status, 0x80 + voice);
        EXPECT_EQ(events[static_cast<std::size_t>(voice)].delta, 0);
    }
    player.bank.AllNotesOff();
    EXPECT_TRUE(TakeEvents(player).empty());
}

TEST(VoiceBankMidi, NothingIsSentUntilItIsSwitchedOn) {
    BankPlayer player(ThreeNotes());
    player.Play(200);
    player.bank.AllNotesOff();
    EXPECT_TRUE(player.TakeEvents().empty());
    player.bank.SetMidiOut(true);
    EXPECT_EQ(PlayEvents(player, 1).size(), 4u); // in the middle of the note
}

TEST(VoiceBankMidi, ARestartForgetsTheSoundingNotes) {
    BankPlayer player(ThreeNotes());
    player.bank.SetMidiOut(true);
    player.PlayTo(5000);
    TakeEvents(player);
    player.bank.RestartVoices();
    player.bank.AllNotesOff();
    EXPECT_TRUE(player.TakeEvents().empty());
    EXPECT_EQ(PlayEvents(player, 1).size(), 4u); // each begins again
}

TEST(VoiceBankMidi, EventsWaitUntilTheyAreTaken) {
    BankPlayer player(ThreeNotes());
    player.bank.SetMidiOut(true);
    player.Play(200);
    player.bank.SetMidiDelta(1, 77);
    player.bank.MarkMidiConsumed(0);
    player.bank.PurgeConsumedMidi();
    std::vector<MidiEventRecord> events;
    ASSERT_EQ(player.bank.GetMidiEvents(events), 3);
    EXPECT_EQ(events[0].status, 0x91);
    EXPECT_EQ(events[0].deltaFrames, 77);
}

} // namespace
} // namespace sonorelle::test
