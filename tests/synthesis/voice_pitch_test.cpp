// Which pitch a voice has from block to block, read off the distances of its grains.

#include "synthesis/voice_bank_player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace sonorelle::test {
namespace {

// One sample: distances of grains are rounded, and a value on the edge may round either way.
constexpr double kPitchRounding = 1.0;

// Two notes of half a second without a break, at a rate where a sample of the period is a cent.
constexpr float kHighRate = 192000.0F;
constexpr std::int32_t kLongPeriod = 2000; // 96 Hz
constexpr std::int32_t kBoundary = 96000;

VoicedSong TwoLongNotes() {
    VoicedSong song = PulseTrain(kLongPeriod, 240000, kHighRate);
    AddNote(song, 0, kBoundary - 1);
    AddNote(song, kBoundary, 2 * kBoundary - 1);
    return song;
}

// The interval of voice 1 goes from 0 to `semitones` at the boundary: checks every grain beside
// semitones x (1 - c^k), k the blocks since the glide began. Gives how many grains were in the glide.
int CheckGlide(BankPlayer& player, double semitones, double firstPosition, double coefficient) {
    std::vector<int> step; // glide blocks up to and with block b
    for (const double position : player.readAt[1])
        step.push_back((step.empty() ? 0 : step.back()) + (std::floor(position) >= firstPosition ? 1 : 0));
    int gliding = 0;
    for (const Pulse& pulse : PulsesOf(player.sound[1][0], player.blockSize)) {
        const double interval = semitones * (1 - std::pow(coefficient, step[pulse.block]));
        EXPECT_NEAR(static_cast<double>(pulse.spacing), SpacingFor(kLongPeriod, interval), kPitchRounding)
            << "grain at " << pulse.at << ", block " << pulse.block << ", step " << step[pulse.block];
        if (interval > 0.1 && interval < 0.98 * semitones) ++gliding;
    }
    return gliding;
}

// Glide 0.2 is 0.1 s: 300 blocks of 64 at 192 kHz, c = exp(-2.2 / 300). It begins half of its 19200 samples
// before the boundary; 35% of 96000 samples would allow 33600.
TEST(VoicePitch, AGlideComesNinetyPercentOfItsWayInItsTime) {
    BankPlayer player(TwoLongNotes(), 64);
    player.SetInterval(1, 1, 7);
    player.bank.SetGlide(1, 0.2F);
    player.Play(2600);
    const double coefficient = std::exp(-2.2 / 300.0);
    EXPECT_NEAR(1 - std::pow(coefficient, 300), 0.8892, 1e-4); // what the name says
    EXPECT_GT(CheckGlide(player, 7, kBoundary - 9600, coefficient), 8);
}

// Glide 1 would be 0.5 s; 35% of 96000 samples are 33600 (the length of a note is its last position less
// its first: 33599), 525 blocks.
TEST(VoicePitch, AGlideTakesAtMostThirtyFivePercentOfTheShorterNote) {
    BankPlayer player(TwoLongNotes(), 64);
    player.SetInterval(1, 1, 7);
    player.bank.SetGlide(1, 1.0F);
    player.Play(2600);
    EXPECT_GT(CheckGlide(player, 7, kBoundary - 16799, std::exp(-2.2 * 64 / 33599.0)), 12);
}

TEST(VoicePitch, AGlideOfZeroSetsTheIntervalAtOnceWhereTheNoteBegins) {
    BankPlayer player(TwoLongNotes(), 64);
    player.SetInterval(1, 1, 7);
    player.bank.SetGlide(1, 0.0F);
    player.Play(2600);
    EXPECT_EQ(CheckGlide(player, 7, kBoundary, 0.0), 0);
    const std::vector<Pulse> pulses = PulsesOf(player.sound[1][0], 64);
    EXPECT_EQ(pulses.front().spacing, 2000u);
    EXPECT_EQ(pulses.back().spacing, 1335u); // 2000 / 2^(7/12) = 1334.8
}

// Marks 20 samples apart, so that every block of 32 makes grains and reads further on than the one before.
constexpr std::int32_t kShortPeriod = 20;
constexpr std::int32_t kShortSong = 40000;

// Distances of the grains of voice 1 that were made in the given block.
std::vector<std::size_t> SpacingsIn(const BankPlayer& player, std::size_t block) {
    std::vector<std::size_t> spacings;
    for (const Pulse& pulse : PulsesOf(player.sound[1][0], player.blockSize))
        if (pulse.block == block) spacings.push_back(pulse.spacing);
    return spacings;
}

// A note of 100 samples before one of 10000: 35 samples at most, c = exp(-2.2 x 32 / 35) = 0.134. Three
// blocks read within the short note or see it ahead: -24 x (1 - 0.134^3) = -23.94 semitones are reached by
// its end, 20 x 3.99 = 79.7 samples. A glide of 0.5 s would have got to -0.23 semitones: 20 samples.
TEST(VoicePitch, ANoteOfAHundredSamplesAllowsATransitionOfThirtyFiveWhateverTheGlide) {
    VoicedSong song = PulseTrain(kShortPeriod, kShortSong);
    AddNote(song, 0, 10000);
    AddNote(song, 10001, 10101);
    AddNote(song, 10102, 20102);
    BankPlayer player(std::move(song));
    player.SetInterval(1, 1, -24);
    player.SetInterval(2, 1, -24);
    for (std::int32_t voice = 0; voice < 4; ++voice) player.bank.SetGlide(voice, 1.0F);
    player.Play(400);
    int blocksInGlide = 0;
    std::size_t checked = 0;
    for (std::size_t b = 0; b < player.BlocksPlayed(); ++b) {
        const double position = std::floor(player.readAt[1][b]);
        if (position > 10101) break;
        if (position + 17.5 >= 10001) ++blocksInGlide;
        const double interval = -24 * (1 - std::pow(std::exp(-2.2 * 32 / 35), blocksInGlide));
        for (const std::size_t spacing : SpacingsIn(player, b)) {
            EXPECT_NEAR(static_cast<double>(spacing), SpacingFor(kShortPeriod, interval), kPitchRounding);
            if (blocksInGlide > 0) ++checked;
        }
    }
    EXPECT_GE(blocksInGlide, 2);
    EXPECT_GE(checked, 1u);
}

// Where voice 1 reads in each block while it sings what was sung.
std::vector<std::int32_t> UnisonPositions() {
    VoicedSong song = PulseTrain(kShortPeriod, kShortSong);
    AddNote(song, 0, kShortSong - 1);
    BankPlayer player(std::move(song));
    player.Play(1000);
    std::vector<std::int32_t> positions;
    for (const double position : player.readAt[1]) positions.push_back(static_cast<std::int32_t>(position));
    return positions;
}

// Two notes such that voice 1 reads exactly `blocks` times between them from block kGapStart on, the second
// an octave below the sung one. A glide of 0.01 s (441 samples, 13.8 blocks of 32) sees 220 samples ahead:
// less than the gap.
constexpr std::size_t kGapStart = 400;

std::unique_ptr<BankPlayer> PlayGap(const std::vector<std::int32_t>& positions, std::size_t blocks) {
    VoicedSong song = PulseTrain(kShortPeriod, kShortSong);
    AddNote(song, 0, positions[kGapStart - 1]);
    AddNote(song, positions[kGapStart + blocks], kShortSong - 1);
    auto player = std::make_unique<BankPlayer>(std::move(song));
    player->SetInterval(1, 1, -12);
    player->bank.SetGlide(1, 0.02F);
    player->Play(600);
    return player;
}

// 0.03 s are 41.3 blocks of 32 at 44.1 kHz.
constexpr std::size_t kGapLimit = 41;

TEST(VoicePitch, AGapOfTheLimitMakesTheNextNoteJump) {
    const std::vector<std::int32_t> positions = UnisonPositions();
    const auto played = PlayGap(positions, kGapLimit);
    const BankPlayer& player = *played;
    for (const std::size_t spacing : SpacingsIn(player, kGapStart + kGapLimit - 1)) EXPECT_EQ(spacing, 20u);
    const std::vector<std::size_t> first = SpacingsIn(player, kGapStart + kGapLimit);
    ASSERT_FALSE(first.empty());
    for (const std::size_t spacing : first) EXPECT_EQ(spacing, 40u);
}

// -12 x (1 - exp(-2.2 x 32 / 441)) = -1.77 semitones: 20 x 2^(1.77/12) = 22.2 samples.
TEST(VoicePitch, AGapOneBlockShorterMakesItGlide) {
    const std::vector<std::int32_t> positions = UnisonPositions();
    const auto played = PlayGap(positions, kGapLimit - 1);
    const BankPlayer& player = *played;
    const std::vector<std::size_t> first = SpacingsIn(player, kGapStart + kGapLimit - 1);
    ASSERT_FALSE(first.empty());
    for (const std::size_t spacing : first) EXPECT_EQ(spacing, 22u);
}

// Three notes without a break. The interval of voice 1 is 0, then 5 in a short second note, then -12.
std::unique_ptr<BankPlayer> PlayThreeNotes(float secondGain, bool secondSilent,
                                           std::int32_t firstInterval = 0) {
    VoicedSong song = PulseTrain(kShortPeriod, kShortSong);
    AddNote(song, 0, 9999);
    AddNote(song, 10000, 12999);
    AddNote(song, 13000, kShortSong - 1);
    auto player = std::make_unique<BankPlayer>(std::move(song));
    player->SetInterval(0, 1, firstInterval);
    player->SetInterval(1, 1, 5);
    player->SetInterval(2, 1, -12);
    player->melody.Driver().SetVoiceGain(1, 1, secondGain);
    if (secondSilent) player->melody.Driver().SetVoicePitch(1, 1, -1);
    player->bank.SetGlide(1, 0.02F);
    player->Play(600);
    return player;
}

std::size_t FirstBlockFrom(const BankPlayer& player, double position) {
    const std::vector<double>& reads = player.readAt[1];
    return static_cast<std::size_t>(
        std::find_if(reads.begin(), reads.end(), [=](double at) { return at >= position; }) - reads.begin());
}

TEST(VoicePitch, ANoteOfGainZeroIsSilentAndMakesTheNextOneJump) {
    const auto played = PlayThreeNotes(0.0F, false);
    const BankPlayer& player = *played;
    const std::size_t third = FirstBlockFrom(player, 13000);
    const std::vector<Pulse> pulses = PulsesOf(player.sound[1][0], 32);
    auto next = std::find_if(pulses.begin(), pulses.end(), [](const Pulse& p) { return p.at > 12000; });
    ASSERT_NE(next, pulses.end());
    // The first pulse of the third note ends the silence, and its grains are already an octave down.
    EXPECT_GE(next->at, third * 32);
    EXPECT_LE(next->at, (third + 4) * 32);
    for (; next != pulses.end(); ++next) ASSERT_EQ(next->spacing, 40u) << "at " << next->at;
}

// The third note comes in sight 220 samples ahead: seven blocks later c^7 = 0.33 are left of the way.
TEST(VoicePitch, ThatNoteWithAGainMakesTheNextOneGlide) {
    const auto played = PlayThreeNotes(1.0F, false);
    const BankPlayer& player = *played;
    const std::size_t third = FirstBlockFrom(player, 13000);
    const std::vector<std::size_t> first = SpacingsIn(player, third);
    ASSERT_FALSE(first.empty());
    EXPECT_LT(first.front(), 36u);
    EXPECT_EQ(PulsesOf(player.sound[1][0], 32).back().spacing, 40u);
}

TEST(VoicePitch, ASilentNoteIsPassedOverAsTheNoteAheadAndMakesTheNextOneJump) {
    const auto played = PlayThreeNotes(1.0F, true, -12);
    const BankPlayer& player = *played;
    const std::size_t second = FirstBlockFrom(player, 10000);
    int before = 0;
    for (const Pulse& pulse : PulsesOf(player.sound[1][0], 32)) {
        if (pulse.at < 2000 || pulse.at > 9900) continue;
        ASSERT_EQ(pulse.spacing, 40u) << "at " << pulse.at; // not a step towards anything else
        ++before;
    }
    EXPECT_GT(before, 150);
    std::size_t silent = 0;
    for (std::size_t b = second + 3; b < FirstBlockFrom(player, 13000); ++b)
        for (std::size_t i = b * 32; i < (b + 1) * 32; ++i) {
            ASSERT_EQ(player.sound[1][0][i], 0.0F) << "sample " << i;
            ++silent;
        }
    EXPECT_GT(silent, 2500u);
    for (const std::size_t spacing : SpacingsIn(player, FirstBlockFrom(player, 13000) + 2))
        EXPECT_EQ(spacing, 40u);
}

TEST(VoicePitch, InAnUnvoicedStretchTheLastRatioStands) {
    VoicedSong song = PulseTrain(kShortPeriod, kShortSong);
    AddNote(song, 0, 9999);
    AddNote(song, 10000, kShortSong - 1);
    for (PitchMarkRecord& mark : song.marks)
        if (mark.position >= 10000 && mark.position < 15000) mark.voicing = 0;
    BankPlayer player(std::move(song));
    player.SetInterval(0, 1, 12);
    player.SetInterval(1, 1, -12);
    player.bank.SetGlide(1, 0.0F);
    player.Play(700);
    for (std::size_t b = 200; b < FirstBlockFrom(player, 20000); ++b) {
        const double read = player.readAt[1][b];
        if (std::fabs(read - 10000) < 20 || std::fabs(read - 15000) < 20) continue; // the mark there decides
        for (const std::size_t spacing : SpacingsIn(player, b))
            ASSERT_EQ(spacing, read < 15000 ? 10u : 40u) << "read at " << read;
    }
}

// Ratio and distance in a song of one note with marks 200 samples apart.
std::size_t SpacingWith(std::int32_t interval, float transpose) {
    VoicedSong song = PulseTrain(200, 60000);
    AddNote(song, 0, 59999);
    BankPlayer player(std::move(song));
    player.SetInterval(0, 1, interval);
    player.bank.SetTranspose(transpose);
    player.bank.RestartVoices(); // the interval of the first note holds at once
    player.Play(600);
    const std::vector<Pulse> pulses = PulsesOf(player.sound[1][0], 32);
    return pulses.empty() ? 0 : pulses.back().spacing;
}

TEST(VoicePitch, AfterARestartTheFirstNoteJumpsToItsInterval) {
    VoicedSong song = PulseTrain(200, 60000);
    AddNote(song, 0, 59999);
    BankPlayer player(std::move(song));
    player.bank.SetGlide(1, 1.0F);
    player.Play(300);
    player.SetInterval(0, 1, 12);
    player.bank.RestartVoices();
    const std::size_t start = player.SamplesPlayed();
    player.Play(100);
    int checked = 0;
    for (const Pulse& pulse : PulsesOf(player.sound[1][0], 32)) {
        if (pulse.at < start) continue;
        ASSERT_EQ(pulse.spacing, 100u) << "at " << pulse.at - start;
        ++checked;
    }
    EXPECT_GT(checked, 25);
}

TEST(VoicePitch, TransposeIsOnTopOfTheInterval) {
    EXPECT_EQ(SpacingWith(0, 0.0F), 200u);
    EXPECT_EQ(SpacingWith(12, 0.0F), 100u);
    EXPECT_EQ(SpacingWith(0, 12.0F), 100u);
    EXPECT_EQ(SpacingWith(7, -7.0F), 200u);
    EXPECT_EQ(SpacingWith(-12, -12.0F), 800u);
}

TEST(VoicePitch, RatiosBeyondThreeOctavesAreClampedAfterTheTransposeRatio) {
    EXPECT_EQ(SpacingWith(0, 47.0F), 25u);    // 8: 200 / 8
    EXPECT_EQ(SpacingWith(0, -47.0F), 1600u); // 1/8
    EXPECT_EQ(SpacingWith(48, -24.0F), 50u);  // 16 / 4 = 4; clamped before it would be 8 / 4
    EXPECT_EQ(SpacingWith(-40, 28.0F), 400u); // 1/2; clamped before it would be 0.63
}

float LastHeight(BankPlayer& player, int blocks) {
    player.Play(blocks);
    const std::vector<Pulse> pulses = PulsesOf(player.sound[1][0], player.blockSize);
    return pulses.empty() ? 0.0F : pulses.back().height;
}

TEST(VoicePitch, OutsideAllNotesTheGainIsThatOfTheNearestNote) {
    VoicedSong song = PulseTrain(100, 60000);
    AddNote(song, 10000, 19999);
    AddNote(song, 40000, 49999);
    BankPlayer player(std::move(song));
    player.melody.Driver().SetVoiceGain(0, 1, 0.25F);
    player.melody.Driver().SetVoiceGain(1, 1, 0.75F);
    EXPECT_EQ(LastHeight(player, 200), 0.25F * kPulse); // 6400, before the first
    EXPECT_EQ(LastHeight(player, 700), 0.25F * kPulse); // 28800, between them: the one before
    EXPECT_EQ(LastHeight(player, 850), 0.75F * kPulse); // 56000, behind the last
    const std::size_t pulses = PulsesOf(player.sound[1][0], 32).size();
    EXPECT_GT(pulses, 500u);
}

TEST(VoicePitch, OutsideAllNotesAVoiceThatIsSilentInTheNearestOneIsSilent) {
    VoicedSong song = PulseTrain(100, 60000);
    AddNote(song, 10000, 19999);
    BankPlayer player(std::move(song));
    player.melody.Driver().SetVoicePitch(0, 1, -1);
    player.Play(1500);
    for (const float sample : player.sound[1][0]) ASSERT_EQ(sample, 0.0F);
    EXPECT_GT(PulsesOf(player.sound[0][0], 32).size(), 400u); // the lead sings
}

TEST(VoicePitch, WithoutNotesTheRecordingPassesAtFullGain) {
    BankPlayer player(PulseTrain(100, 60000));
    player.Play(1500);
    for (std::size_t voice = 0; voice < 4; ++voice) {
        const std::vector<Pulse> pulses = PulsesOf(player.sound[voice][0], 32);
        if (voice >= static_cast<std::size_t>(player.melody.Driver().VoiceCount())) continue;
        ASSERT_GT(pulses.size(), 400u);
        for (const Pulse& pulse : pulses) ASSERT_EQ(pulse.spacing, 100u);
        EXPECT_EQ(pulses.back().height, kPulse);
    }
}

} // namespace
} // namespace sonorelle::test
