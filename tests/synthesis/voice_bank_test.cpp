// Making a bank, what it keeps, its lines and fades, its voices going on and off.

#include "synthesis/voice_bank_player.h"

#include "platform/result_codes.h"
#include "support/allocation_trap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace sonorelle::test {
namespace {

constexpr std::int32_t kPeriod = 50;
constexpr std::int32_t kSong = 60000;

VoicedSong OneNote() {
    VoicedSong song = PulseTrain(kPeriod, kSong);
    AddNote(song, 0, kSong - 1);
    return song;
}

VoicedSong RealSong(std::int32_t channels = 1) {
    VoicedSongSettings settings;
    settings.channels = channels;
    return MakeVoicedSong({{200, 12000}, {160, 12000, 0}, {180, 12000}}, settings);
}

std::vector<float> From(const std::vector<float>& samples, std::size_t first) {
    return {samples.begin() + static_cast<std::ptrdiff_t>(first), samples.end()};
}

// --- Making ---

TEST(VoiceBank, WithoutARecordingItDoesNothing) {
    CVoiceBank bank;
    float sample = 3;
    float* out[] = {&sample, &sample};
    EXPECT_EQ(bank.Render(out, out, out, out), -1);
    EXPECT_EQ(sample, 3.0F);
    double position = 100;
    bank.Seek(position);
    bank.SetOutputTuning(450);
    bank.SetDelay(0, 0.1F);
    bank.SetVoiceEnabled(0, false);
    bank.JumpToNextNote();
    bank.JumpToPreviousNote();
    bank.RestartVoices();
    bank.ClearVoices();
    bank.AllNotesOff();
    EXPECT_EQ(position, 100);
    EXPECT_EQ(bank.GetPosition(), 0);
    EXPECT_EQ(bank.GetReadPosition(0), 0);
    EXPECT_EQ(bank.GetNoteAtPosition(), -1);
    EXPECT_EQ(bank.GetChannelCount(), 0);
    EXPECT_EQ(bank.GetSampleRate(), 0);
}

TEST(VoiceBank, InitWithoutAnAnalysisIsRefusedAndLeavesItEmpty) {
    CMelodyAnalyzer analyzer;
    CSnapshotStore store;
    CChoirDriver driver(analyzer, store);
    BankPlayer player(OneNote());
    player.Play(10);
    EXPECT_EQ(player.bank.Init(driver), kBadArgument);
    EXPECT_EQ(player.Render(), -1);
    EXPECT_EQ(player.bank.GetChannelCount(), 0);
    EXPECT_EQ(player.bank.Init(player.melody.Driver()), kOk);
    EXPECT_EQ(player.Render(), 0);
}

TEST(VoiceBank, InitThatFindsNoMemoryLeavesItEmpty) {
    BankPlayer player(OneNote());
    int failures = 0;
    for (std::int64_t allowed = 0; allowed < 1000; ++allowed) {
        const auto init = [&] {
            const AllocationLimit limit(allowed);
            return player.bank.Init(player.melody.Driver());
        };
        const std::int32_t result = init();
        if (result == kOk) break;
        ASSERT_EQ(result, kOutOfMemory);
        EXPECT_EQ(player.Render(), -1);
        ++failures;
    }
    EXPECT_GT(failures, 10);
    EXPECT_EQ(player.Render(), 0);
}

TEST(VoiceBank, TellsRateAndChannelsOfTheRecording) {
    BankPlayer player(RealSong(2), 64);
    EXPECT_EQ(player.bank.GetChannelCount(), 2);
    EXPECT_EQ(player.bank.GetSampleRate(), 44100.0F);
    EXPECT_EQ(player.bank.GetBlockSize(), 64);
}

void Set(CVoiceBank& bank) {
    bank.SetSpeed(1.3F);
    bank.SetTranspose(-2);
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        const auto v = static_cast<float>(voice);
        bank.SetDelay(voice, 0.01F * v);
        bank.SetTiming(voice, 0.03F * v);
        bank.SetFormantShift(voice, 1 + 0.1F * v);
        bank.SetQuantize(voice, 0.3F * v);
        bank.SetDrift(voice, 1 - 0.4F * v);
        bank.SetGlide(voice, 0.2F * v);
    }
    bank.SetVoiceEnabled(3, false);
}

TEST(VoiceBank, SettingsAreTheSameBeforeAndAfterInitAndSurviveTheNext) {
    BankPlayer after(RealSong());
    BankPlayer before(RealSong());
    BankPlayer again(RealSong());
    BankPlayer plain(RealSong());
    for (BankPlayer* each : {&after, &before, &again, &plain}) {
        for (std::int32_t note = 0; note < 3; ++note) each->SetInterval(note, 2, 3 + note);
    }
    Set(after.bank);
    Set(before.bank);
    ASSERT_EQ(before.bank.Init(before.melody.Driver()), kOk);
    Set(again.bank);
    again.Play(100);
    ASSERT_EQ(again.bank.Init(again.melody.Driver()), kOk);
    for (auto& voice : again.sound) voice[0].clear();
    for (BankPlayer* each : {&after, &before, &again, &plain}) each->Play(900);
    EXPECT_EQ(before.sound, after.sound);
    EXPECT_EQ(again.sound, after.sound);
    EXPECT_NE(plain.sound, after.sound);
    EXPECT_EQ(after.sound[3][0][5], kUntouched);
}

TEST(VoiceBank, ABlockSizeIsHeldToWhatThereIsRoomFor) {
    CVoiceBank bank;
    EXPECT_EQ(bank.GetBlockSize(), 32);
    for (const auto& [asked, held] : {std::pair{0, 1}, {-5, 1}, {64, 64}, {4096, 4096}, {100000, 4096}}) {
        bank.SetBlockSize(asked);
        EXPECT_EQ(bank.GetBlockSize(), held);
    }
}

// --- Speed ---

TEST(VoiceBank, AtSpeedTwoTheRecordingPlaysTwiceAsLongAtTheSamePitch) {
    BankPlayer slow(OneNote());
    BankPlayer plain(OneNote());
    slow.bank.SetSpeed(2);
    slow.Play(1000);
    plain.Play(500);
    EXPECT_NEAR(slow.bank.GetReadPosition(0), plain.bank.GetReadPosition(0), 2 * kPeriod);
    EXPECT_EQ(PulsesOf(slow.sound[0][0], 32).back().spacing, 50u);
    EXPECT_EQ(slow.bank.GetPosition(), 64000); // the play position runs the other way: told so, kept so
    EXPECT_EQ(plain.bank.GetPosition(), 16000);
}

// --- Delay lines ---

TEST(VoiceBank, ADelayMovesTheAudioByItsSamples) {
    BankPlayer delayed(RealSong(2));
    BankPlayer plain(RealSong(2));
    delayed.bank.SetDelay(1, 0.05F); // 2205 samples
    delayed.Play(600);
    plain.Play(600);
    EXPECT_EQ(delayed.sound[0], plain.sound[0]);
    for (std::size_t channel = 0; channel < 2; ++channel) {
        const std::vector<float>& late = delayed.sound[1][channel];
        for (std::size_t i = 0; i < 2205; ++i) ASSERT_EQ(late[i], 0.0F);
        for (std::size_t i = 2205; i < late.size(); ++i)
            ASSERT_EQ(late[i], plain.sound[1][channel][i - 2205]);
    }
}

// A block that is longer than what the line holds behind the delay.
TEST(VoiceBank, ADelayIsTheSameInBlocksOfEverySize) {
    for (const float rate : {11025.0F, 44100.0F}) {
        VoicedSong song = PulseTrain(100, 40000, rate);
        BankPlayer plain(song, VoiceLimits::kLargestBlock);
        BankPlayer delayed(song, VoiceLimits::kLargestBlock);
        delayed.bank.SetDelay(1, 0.1F);
        plain.Play(8);
        delayed.Play(8);
        const auto shift = static_cast<std::size_t>(rate * 0.1F);
        const auto& before = plain.sound[1][0];
        const auto& after = delayed.sound[1][0];
        ASSERT_EQ(after.size(), before.size());
        ASSERT_GT(before.size(), 5U * VoiceLimits::kLargestBlock);
        for (std::size_t i = 0; i < after.size(); ++i)
            ASSERT_EQ(after[i], i < shift ? 0.0F : before[i - shift]) << rate << " " << i;
    }
}

TEST(VoiceBank, TellsWhichVoicesItRenders) {
    VoicedSong song = PulseTrain(200, 20000);
    AddNote(song, 2000, 15000);
    BankPlayer player(song, 64, 2); // two voices
    ASSERT_EQ(player.melody.Driver().VoiceCount(), 2);
    player.bank.SetVoiceEnabled(0, false);
    ASSERT_EQ(player.Render(), 0);
    EXPECT_FALSE(player.bank.IsVoiceEnabled(0));
    EXPECT_TRUE(player.bank.IsVoiceEnabled(1));
    for (const std::int32_t voice : {-1, 2, 3, 4}) EXPECT_FALSE(player.bank.IsVoiceEnabled(voice)) << voice;
    EXPECT_FALSE(CVoiceBank().IsVoiceEnabled(0));
}

TEST(VoiceBank, ADelaySetWhilePlayingJumpsWithoutAFade) {
    BankPlayer delayed(RealSong());
    BankPlayer plain(RealSong());
    delayed.Play(300);
    delayed.bank.SetDelay(1, 0.05F);
    delayed.Play(200);
    delayed.bank.SetDelay(1, 0.01F); // 441
    delayed.Play(100);
    plain.Play(600);
    const std::vector<float>& wanted = plain.sound[1][0];
    const std::vector<float>& got = delayed.sound[1][0];
    for (std::size_t i = 0; i < got.size(); ++i) {
        const std::size_t delay = i < 9600 ? 0 : i < 16000 ? 2205 : 441;
        ASSERT_EQ(got[i], wanted[i - delay]) << "sample " << i;
    }
}

TEST(VoiceBank, ADelayIsHeldToAHundredAndFiftyMilliseconds) {
    BankPlayer player(OneNote());
    player.bank.SetDelay(0, 1e9F);
    player.bank.SetDelay(1, -1.0F);
    player.bank.SetDelay(2, 0.15F);
    player.bank.SetDelay(2, std::numeric_limits<float>::quiet_NaN());
    player.bank.SetDelay(4, 0.1F);
    player.bank.SetDelay(-1, 0.1F);
    player.Play(500);
    EXPECT_EQ(player.sound[0], player.sound[2]);
    const std::vector<float>& late = player.sound[0][0];
    for (std::size_t i = 6615; i < late.size(); ++i) ASSERT_EQ(late[i], player.sound[1][0][i - 6615]);
}

// --- Fades and restarts ---

TEST(VoiceBank, AfterClearVoicesTheFirst1024SamplesFadeIn) {
    BankPlayer player(OneNote());
    player.Play(200);
    player.bank.ClearVoices();
    const std::size_t start = player.SamplesPlayed();
    player.Play(200);
    for (std::size_t voice = 0; voice < 4; ++voice) {
        int pulses = 0;
        for (std::size_t i = start; i < player.SamplesPlayed(); ++i) {
            const float sample = player.sound[voice][0][i];
            if (sample == 0.0F) continue;
            const double weight = FadeInWeight(static_cast<double>(i - start));
            ASSERT_NEAR(static_cast<double>(sample), static_cast<double>(kPulse) * weight, 1e-4) << i - start;
            ++pulses;
        }
        EXPECT_GT(pulses, 120);
    }
}

TEST(VoiceBank, ARestartForgetsWhatIsInFlight) {
    BankPlayer player(OneNote());
    player.bank.SetDelay(1, 0.05F);
    player.Play(201); // 6432 samples: the next grain would come 18 later
    player.bank.RestartVoices();
    const std::size_t start = player.SamplesPlayed();
    player.Play(200);
    for (std::size_t i = 0; i < 2205; ++i)
        ASSERT_EQ(player.sound[1][0][start + i], 0.0F); // the line is empty
    EXPECT_EQ(player.sound[0][0][start], kPulse);       // a grain at once, and nothing of the one before
    EXPECT_EQ(player.sound[1][0][start + 2205], kPulse);
}

// --- Enabling ---

TEST(VoiceBank, AVoiceThatIsOffLeavesItsBuffersAndReadsOn) {
    BankPlayer player(RealSong());
    BankPlayer twin(RealSong());
    for (BankPlayer* each : {&player, &twin}) each->Play(200);
    player.bank.SetVoiceEnabled(2, false);
    for (BankPlayer* each : {&player, &twin}) each->Play(300);
    EXPECT_EQ(player.readAt[2], twin.readAt[2]);
    for (std::size_t i = 6400; i < player.SamplesPlayed(); ++i) ASSERT_EQ(player.sound[2][0][i], kUntouched);
    for (const std::size_t other : {0u, 1u, 3u}) EXPECT_EQ(player.sound[other], twin.sound[other]);
}

TEST(VoiceBank, SwitchedOnAgainItFadesInWithACleanLine) {
    BankPlayer player(OneNote());
    BankPlayer twin(OneNote());
    for (BankPlayer* each : {&player, &twin}) {
        each->bank.SetDelay(2, 0.01F); // 441 samples
        each->Play(200);
    }
    player.bank.SetVoiceEnabled(2, false);
    for (BankPlayer* each : {&player, &twin}) each->Play(50);
    player.bank.SetVoiceEnabled(2, true);
    const std::size_t start = player.SamplesPlayed();
    for (BankPlayer* each : {&player, &twin}) each->Play(200);
    for (std::size_t i = 0; i < 441; ++i) ASSERT_EQ(player.sound[2][0][start + i], 0.0F);
    int pulses = 0;
    for (std::size_t i = 441; start + i < player.SamplesPlayed(); ++i) {
        const float wanted = twin.sound[2][0][start + i];
        const float got = player.sound[2][0][start + i];
        if (i < 441 + 2 * kPeriod && got == 0.0F) continue; // grains made while it was off
        const double weight = FadeInWeight(static_cast<double>(i - 441));
        ASSERT_NEAR(static_cast<double>(got), static_cast<double>(wanted) * weight, 1e-4) << i;
        if (got > 0) ++pulses;
    }
    EXPECT_GT(pulses, 100);
}

TEST(VoiceBank, VoicesThatTheArrangementDoesNotHaveAreOff) {
    for (const std::int32_t arrangement : {0, 1, 2}) {
        BankPlayer player(OneNote(), 32, arrangement);
        const auto count = static_cast<std::size_t>(player.melody.Driver().VoiceCount());
        EXPECT_EQ(count, static_cast<std::size_t>(4 - arrangement));
        for (std::int32_t voice = 0; voice < 4; ++voice) player.bank.SetVoiceEnabled(voice, true);
        player.Play(100);
        for (std::size_t voice = 0; voice < 4; ++voice)
            EXPECT_EQ(player.sound[voice][0].back() == kUntouched, voice >= count) << voice;
    }
}

TEST(VoiceBank, AnArrangementThatLosesVoicesWhilePlayingSilencesThem) {
    BankPlayer player(OneNote());
    player.bank.SetMidiOut(true);
    player.Play(100);
    player.TakeEvents();
    player.melody.Driver().SetArrangement(2);
    player.melody.Driver().Run();
    ASSERT_EQ(player.melody.Driver().VoiceCount(), 2);
    player.Play(100);
    EXPECT_NE(player.sound[1][0].back(), kUntouched);
    EXPECT_EQ(player.sound[2][0].back(), kUntouched);
    std::vector<int> ended;
    for (const MidiEventRecord& event : player.TakeEvents())
        if (event.status >= 0x82 && event.status <= 0x8f) ended.push_back(event.status);
    EXPECT_EQ(ended, (std::vector<int>{0x82, 0x83}));
}

TEST(VoiceBank, VoicesOfOtherNumbersAreIgnored) {
    BankPlayer player(RealSong());
    BankPlayer twin(RealSong());
    for (const std::int32_t voice : {-1, 4, INT32_MIN, INT32_MAX}) {
        player.bank.SetVoiceEnabled(voice, false);
        player.bank.SetTiming(voice, 0.1F);
        player.bank.SetFormantShift(voice, 1.2F);
        player.bank.SetQuantize(voice, 1);
        player.bank.SetDrift(voice, 1);
        player.bank.SetGlide(voice, 1);
        EXPECT_EQ(player.bank.GetReadPosition(voice), 0);
    }
    for (BankPlayer* each : {&player, &twin}) each->Play(200);
    EXPECT_EQ(player.sound, twin.sound);
}

// --- Voices that are left out ---

TEST(VoiceBank, AVoiceWithoutBuffersMovesOnUnheard) {
    BankPlayer player(RealSong());
    BankPlayer twin(RealSong());
    for (BankPlayer* each : {&player, &twin}) {
        each->bank.SetDelay(2, 0.02F);
        each->Play(100);
    }
    player.leaveOut = {true, false, true, false};
    for (BankPlayer* each : {&player, &twin}) each->Play(200);
    player.leaveOut = {true, true, true, true};
    for (BankPlayer* each : {&player, &twin}) each->Play(50);
    player.leaveOut = {};
    for (BankPlayer* each : {&player, &twin}) each->Play(200);
    EXPECT_EQ(player.readAt, twin.readAt);
    for (std::size_t voice = 0; voice < 4; ++voice)
        EXPECT_EQ(From(player.sound[voice][0], 350 * 32), From(twin.sound[voice][0], 350 * 32)) << voice;
    EXPECT_EQ(player.sound[1][0][150 * 32], twin.sound[1][0][150 * 32]);
}

} // namespace
} // namespace sonorelle::test
