// The bank beside a slow model of itself, while settings, places and the arrangement change: one thing at a
// time, then everything at random.

#include "synthesis/bank_and_model.h"

#include "support/synthetic_singer.h"
#include "support/voiced_melody_fixture.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace sonorelle::test {
namespace {

// Of ratios that are no simple fractions: at a ratio of 1, the last bit of a logarithm would decide whether a
// grain has one sample more.
constexpr float kOddTuning = 441.3F;

VoicedSong PlainSong(std::int32_t channels = 1) {
    VoicedSongSettings settings;
    settings.channels = channels;
    return MakeVoicedSong({{200, 6000}, {178, 6000, 0}, {150, 5000, 3000}, {225, 7000, 700}}, settings);
}

void GiveIntervals(BankAndModel& pair) {
    constexpr std::array<int, 4> kIntervals = {0, 4, 7, -5};
    for (std::size_t n = 0; n < pair.melody.Song().notes.size(); ++n)
        for (std::size_t v = 0; v < 4; ++v)
            pair.SetVoice(n, v,
                          pair.melody.Driver().GetNotePitch(static_cast<std::int32_t>(n)) + kIntervals[v],
                          1.0F - 0.1F * static_cast<float>(v));
    pair.Both([](auto& it) { it.SetOutputTuning(kOddTuning); });
}

TEST(VoiceBankAgainstModel, SingsTheWholeSongFromStartToEnd) {
    for (const std::int32_t channels : {1, 2}) {
        SCOPED_TRACE(channels);
        BankAndModel pair(PlainSong(channels), 0, 32);
        GiveIntervals(pair);
        ASSERT_TRUE(pair.RenderToTheEnd(2000));
        EXPECT_TRUE(pair.ended);
        EXPECT_GT(pair.loudest, 0.3);
    }
}

TEST(VoiceBankAgainstModel, MovesTheFormants) {
    for (const float ratio : {0.63F, 0.9F, 1.13F, 1.58F}) {
        SCOPED_TRACE(ratio);
        BankAndModel pair(PlainSong(2), 0, 64);
        GiveIntervals(pair);
        pair.Both([=](auto& it) {
            for (int v = 0; v < 4; ++v) it.SetFormantShift(v, ratio);
        });
        ASSERT_TRUE(pair.Render(300));
    }
}

TEST(VoiceBankAgainstModel, HumanisesTheTiming) {
    BankAndModel pair(PlainSong(), 0, 32);
    GiveIntervals(pair);
    pair.Both([](auto& it) {
        for (int v = 1; v < 4; ++v) it.SetTiming(v, 0.03F * static_cast<float>(v));
    });
    ASSERT_TRUE(pair.RenderToTheEnd(2000));
    EXPECT_TRUE(pair.ended);
}

TEST(VoiceBankAgainstModel, PlaysSlowerAndFaster) {
    for (const float speed : {0.37F, 0.8F, 1.7F, 4.3F}) {
        SCOPED_TRACE(speed);
        BankAndModel pair(PlainSong(), 0, 32);
        GiveIntervals(pair);
        pair.Both([=](auto& it) { it.SetSpeed(speed); });
        ASSERT_TRUE(pair.RenderToTheEnd(1500));
    }
}

TEST(VoiceBankAgainstModel, SendsTheSameMidiNotes) {
    BankAndModel pair(PlainSong(), 0, 64);
    GiveIntervals(pair);
    pair.SetVoice(1, 2, -1, 1.0F);
    pair.SetVoice(2, 1, 60, 0.0F);
    pair.Both([](auto& it) {
        it.SetMidiOut(true);
        it.SetTranspose(2.0F);
        it.SetBlockOrigin(0.0);
    });
    ASSERT_TRUE(pair.RenderToTheEnd(1000));
    EXPECT_GT(pair.events, 24U);
}

TEST(VoiceBankAgainstModel, SeeksDuringPlay) {
    BankAndModel pair(PlainSong(2), 0, 32);
    GiveIntervals(pair);
    for (const double place : {9000.0, 150.0, 0.0, 20011.0, -300.0, 5.0, 12345.6, 28000.0, 4000.0}) {
        SCOPED_TRACE(place);
        ASSERT_TRUE(pair.Render(60));
        pair.Seek(place);
        ASSERT_TRUE(pair.Render(60));
    }
}

TEST(VoiceBankAgainstModel, SwitchesVoicesOffAndOn) {
    BankAndModel pair(PlainSong(), 0, 32);
    GiveIntervals(pair);
    pair.Both([](auto& it) {
        it.SetMidiOut(true);
        it.SetDelay(2, 0.02F);
    });
    ASSERT_TRUE(pair.Render(100));
    for (int round = 0; round < 6; ++round) {
        SCOPED_TRACE(round);
        pair.Both([=](auto& it) {
            for (int v = 0; v < 4; ++v) it.SetVoiceEnabled(v, (round + v) % 3 != 0);
        });
        ASSERT_TRUE(pair.Render(50));
    }
}

TEST(VoiceBankAgainstModel, JumpsFromNoteToNote) {
    BankAndModel pair(PlainSong(), 0, 32);
    GiveIntervals(pair);
    ASSERT_TRUE(pair.Render(50));
    for (int round = 0; round < 5; ++round) {
        pair.Both([](auto& it) { it.JumpToNextNote(); });
        ASSERT_TRUE(pair.Render(20 + 10 * round));
    }
    for (int round = 0; round < 3; ++round) {
        pair.Both([](auto& it) { it.JumpToPreviousNote(); });
        ASSERT_TRUE(pair.Render(20));
    }
}

TEST(VoiceBankAgainstModel, LeavesOutAVoiceThatHasNoBuffers) {
    BankAndModel pair(PlainSong(2), 0, 32);
    GiveIntervals(pair);
    pair.LeaveOut(1);
    pair.LeaveOut(3);
    ASSERT_TRUE(pair.RenderToTheEnd(2000));
    EXPECT_TRUE(pair.ended);
}

TEST(VoiceBankAgainstModel, FollowsTheArrangementsNumberOfVoices) {
    BankAndModel pair(PlainSong(), 0, 32);
    GiveIntervals(pair);
    pair.Both([](auto& it) { it.SetMidiOut(true); });
    for (const std::int32_t arrangement : {0, 2, 1, 2, 0}) {
        pair.SetArrangement(arrangement);
        ASSERT_TRUE(pair.Render(120));
    }
}

TEST(VoiceBankAgainstModel, TakesAnotherBlockSizeDuringPlay) {
    BankAndModel pair(PlainSong(), 0, 32);
    GiveIntervals(pair);
    for (const std::int32_t samples : {64, 17, 128, 1, 32, 300}) {
        pair.SetBlockSize(samples);
        ASSERT_TRUE(pair.Render(1 + 3000 / samples));
    }
}

TEST(VoiceBankAgainstModel, GlidesOrJumpsByTheLengthOfTheGap) {
    // With the way to the first grain that is read in the note behind, around 30 ms (41 blocks); the marks so
    // dense that every number of blocks comes up.
    VoicedSongSettings fineMarks;
    fineMarks.restMarks = 24;
    for (int rest = 640; rest < 980; rest += 23) {
        for (const float glide : {0.0F, 0.3F}) {
            SCOPED_TRACE(testing::Message() << "rest " << rest << ", glide " << glide);
            BankAndModel pair(MakeVoicedSong({{200, 3000}, {178, 3000, rest}, {150, 4000, 0}}, fineMarks), 0,
                              32);
            GiveIntervals(pair);
            pair.SetVoice(1, 1, pair.melody.Driver().GetNotePitch(1) - 9, 1.0F);
            pair.SetVoice(2, 2, pair.melody.Driver().GetNotePitch(2) - 3, 1.0F);
            pair.Both([=](auto& it) {
                for (int v = 0; v < 4; ++v) it.SetGlide(v, glide);
            });
            ASSERT_TRUE(pair.RenderToTheEnd(1000));
        }
    }
}

// Up here a grain is shorter than two samples.
TEST(VoiceBankAgainstModel, TakesPeriodsOfAFewSamples) {
    BankAndModel pair(MakeVoicedSong({{4, 3000, 100}, {7, 3000, 0}, {3, 3000, 200}}), 0, 32);
    GiveIntervals(pair);
    pair.Both([](auto& it) { it.SetTranspose(13.3F); });
    ASSERT_TRUE(pair.RenderToTheEnd(2000));
}

// --- Sessions of everything ---

float Between(RandomNumbers& random, double lowest, double highest) {
    return static_cast<float>(lowest + (highest - lowest) * random.Uniform());
}

VoicedSong RandomSong(RandomNumbers& random) {
    constexpr std::array<int, 5> kRests = {0, 0, 300, 1500, 4000};
    constexpr std::array<float, 3> kRates = {22050.0F, 44100.0F, 48000.0F};
    std::vector<SungTone> tones;
    const int count = 1 + random.Below(6);
    for (int i = 0; i < count; ++i) {
        SungTone tone;
        tone.period = 60 + random.Below(300);
        tone.length = 500 + random.Below(7000);
        tone.restBefore = kRests[static_cast<std::size_t>(random.Below(5))];
        tone.level = Between(random, 0.01, 1.0);
        tone.hasNote = random.Below(8) != 0;
        tones.push_back(tone);
    }
    VoicedSongSettings settings;
    settings.sampleRate = kRates[static_cast<std::size_t>(random.Below(3))];
    settings.channels = 1 + random.Below(2);
    settings.tail = random.Below(3000);
    settings.restMarks = 40 + random.Below(300);
    settings.seed = random.Next();
    return MakeVoicedSong(tones, settings);
}

void ArrangeAtRandom(BankAndModel& pair, RandomNumbers& random) {
    const std::int32_t count = pair.melody.Driver().GetNoteCount();
    for (std::int32_t n = 0; n < count; ++n)
        for (std::size_t v = 0; v < 4; ++v) {
            const bool silent = random.Below(8) == 0;
            const bool mute = random.Below(8) == 0;
            const int pitch = pair.melody.Driver().GetNotePitch(n) - 14 + random.Below(29);
            pair.SetVoice(static_cast<std::size_t>(n), v, silent ? -1 : pitch,
                          mute ? 0.0F : Between(random, 0.1, 1.0));
        }
}

void ChangeAVoice(BankAndModel& pair, RandomNumbers& random) {
    const int v = random.Below(4);
    const float share = Between(random, 0.0, 1.0);
    const int kind = random.Below(7);
    pair.Both([=](auto& it) {
        switch (kind) {
        case 0:
            it.SetDelay(v, share * 0.1F);
            break;
        case 1:
            it.SetTiming(v, share * 0.2F);
            break;
        case 2:
            it.SetFormantShift(v, 0.63F + share * 0.95F);
            break;
        case 3:
            it.SetQuantize(v, share);
            break;
        case 4:
            it.SetDrift(v, 1.0F - 2.0F * share);
            break;
        case 5:
            it.SetGlide(v, share);
            break;
        default:
            it.SetVoiceEnabled(v, share > 0.4F);
            break;
        }
    });
}

void ChangeTheBank(BankAndModel& pair, RandomNumbers& random) {
    const float share = Between(random, 0.0, 1.0);
    const int kind = random.Below(9);
    if (random.Below(12) == 0) {
        pair.SetArrangement(random.Below(3));
        return;
    }
    if (kind == 0) {
        pair.Seek(static_cast<double>(share * 1.1F - 0.05F) * pair.melody.Song().Length());
        return;
    }
    pair.Both([=](auto& it) {
        switch (kind) {
        case 1:
            it.SetSpeed(0.4F + 1.6F * share);
            break;
        case 2:
            it.SetTranspose(-7.0F + 14.0F * share);
            break;
        case 3:
            it.SetOutputTuning(430.0F + 20.0F * share);
            break;
        case 4:
            it.SetMidiOut(share > 0.3F);
            break;
        case 5:
            it.SetBlockOrigin(std::floor(it.GetPosition()) - 1000.0 * static_cast<double>(share));
            break;
        case 6:
            if (share < 0.5F)
                it.JumpToNextNote();
            else
                it.JumpToPreviousNote();
            break;
        case 7:
            if (share < 0.5F)
                it.RestartVoices();
            else
                it.ClearVoices();
            break;
        default:
            it.AllNotesOff();
            break;
        }
    });
}

bool RunSession(std::uint64_t seed) {
    RandomNumbers random(seed);
    constexpr std::array<std::int32_t, 4> kBlockSizes = {32, 64, 16, 50};
    VoicedSong song = RandomSong(random);
    const std::int32_t arrangement = random.Below(6) == 0 ? 1 + random.Below(2) : 0;
    BankAndModel pair(std::move(song), arrangement, kBlockSizes[static_cast<std::size_t>(random.Below(4))]);
    ArrangeAtRandom(pair, random);
    pair.Both([](auto& it) { it.SetOutputTuning(kOddTuning); });
    for (int round = 0; round < 40; ++round) {
        if (!pair.Render(random.Below(20))) return false;
        const int changes = random.Below(4);
        for (int i = 0; i < changes; ++i) {
            if (random.Below(3) > 0)
                ChangeAVoice(pair, random);
            else
                ChangeTheBank(pair, random);
        }
        EXPECT_EQ(pair.bank.GetNoteAtPosition(), pair.model.GetNoteAtPosition());
    }
    return true;
}

class VoiceBankSession : public testing::TestWithParam<std::uint64_t> {};

TEST_P(VoiceBankSession, IsTheSameAsTheModels) {
    EXPECT_TRUE(RunSession(GetParam())) << "seed " << GetParam();
}

INSTANTIATE_TEST_SUITE_P(Seeds, VoiceBankSession, testing::Range<std::uint64_t>(1, 41));

} // namespace
} // namespace sonorelle::test
