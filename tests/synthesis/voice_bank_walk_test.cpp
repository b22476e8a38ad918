// A random walk through everything that can be done to a bank while it plays, and what it may not do then.

#include "support/allocation_trap.h"
#include "support/sanitizer_share.h"
#include "support/synthetic_singer.h"
#include "synthesis/voice_bank_player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace sonorelle::test {
namespace {

// How many of a hundred thousand blocks. Sanitizers make a block many times as slow; what they look for shows
// sooner.
int Blocks(int hundredths) { return SanitizerShare(hundredths * 1000, 10); }

constexpr float kWalkBound = 3.98F; // 12 dB over full scale
constexpr std::array<std::int32_t, 6> kBlockSizes = {1, 32, 64, 64, 333, 4096};

VoicedSong LoudSong(float sampleRate, std::int32_t channels) {
    VoicedSongSettings settings;
    settings.sampleRate = sampleRate;
    settings.channels = channels;
    settings.peak = 1.0;
    settings.tail = 700;
    return MakeVoicedSong(
        {{200, 9000}, {160, 3000, 0}, {23, 4000, 500}, {900, 9000, 2500}, {120, 6000, 0}, {2, 600, 9000}},
        settings);
}

class Walk {
public:
    Walk(VoicedSong song, std::uint64_t seed) : melody(std::move(song)), random(seed) {
        EXPECT_EQ(bank.Init(melody.Driver()), 0);
        for (auto& voice : buffers)
            for (auto& channel : voice) channel.resize(CVoiceBank::kLargestBlockSize);
        events.reserve(CkvoMidiEventContainer::kReservedEvents);
        bank.SetMidiOut(true);
    }

    void Step() {
        if (random.Below(8) == 0) Change();
        if (random.Below(200) == 0) Go();
        if (random.Below(30) == 0) Edit();
        if (RenderBlock() != 0) {
            ++ends;
            Go();
        }
        if (random.Below(4) == 0) {
            const std::int32_t count = bank.GetMidiEvents(events);
            for (std::int32_t i = 0; i < count; ++i) bank.MarkMidiConsumed(i);
            bank.PurgeConsumedMidi();
        }
    }

    float loudest = 0;
    int ends = 0;
    bool finite = true;

private:
    float Between(float low, float high) {
        constexpr float kHuge = std::numeric_limits<float>::max();
        switch (random.Below(16)) {
        case 0:
            return low;
        case 1:
            return high;
        case 2:
            return random.Below(2) == 0 ? kHuge : -kHuge;
        case 3:
            return std::numeric_limits<float>::quiet_NaN();
        default:
            return low + (high - low) * static_cast<float>(random.Uniform());
        }
    }

    void Change() {
        const std::int32_t voice = random.Below(4);
        switch (random.Below(14)) {
        case 0:
            return bank.SetDelay(voice, Between(0, 0.1F));
        case 1:
            return bank.SetTiming(voice, Between(0, 0.2F));
        case 2:
            return bank.SetFormantShift(voice, Between(0.63F, 1.5874F));
        case 3:
            return bank.SetQuantize(voice, Between(0, 1));
        case 4:
            return bank.SetDrift(voice, Between(-1, 1));
        case 5:
            return bank.SetGlide(voice, Between(0, 1));
        case 6:
            return bank.SetVoiceEnabled(voice, random.Below(4) != 0);
        case 7:
            return bank.SetSpeed(random.Below(4) == 0 ? Between(0.01F, 100) : Between(0.5F, 2));
        case 8:
            return bank.SetTranspose(Between(-36, 36));
        case 9:
            return bank.SetOutputTuning(Between(220, 880));
        case 10:
            return bank.SetBlockSize(kBlockSizes[static_cast<std::size_t>(random.Below(6))]);
        case 11:
            return random.Below(8) == 0 ? bank.RestartVoices() : bank.ClearVoices();
        case 12:
            return bank.AllNotesOff();
        default:
            leaveOut[static_cast<std::size_t>(voice)] = random.Below(8) == 0;
            return;
        }
    }

    void Go() {
        const double length = static_cast<double>(melody.Song().Length());
        double target = random.Uniform() * length;
        switch (random.Below(10)) {
        case 0:
            return bank.JumpToNextNote();
        case 1:
            return bank.JumpToPreviousNote();
        case 2:
            target = -target;
            break;
        case 3:
            target += length;
            break;
        case 4:
            target *= 1e12;
            break;
        case 5:
            return bank.SetBlockOrigin(target);
        default:
            break;
        }
        bank.Seek(target);
    }

    // As somebody edits the arrangement: pitches from silence to beyond the limits.
    void Edit() {
        CChoirDriver& driver = melody.Driver();
        const std::int32_t note = random.Below(driver.GetNoteCount());
        const std::int32_t voice = random.Below(4);
        driver.SetVoicePitch(note, voice, random.Below(8) == 0 ? -1 : random.Below(128));
        driver.SetVoiceGain(note, voice, random.Below(6) == 0 ? 0.0F : static_cast<float>(random.Uniform()));
    }

    std::int32_t RenderBlock() {
        std::array<std::array<float*, 2>, 4> pointers{};
        for (std::size_t v = 0; v < 4; ++v)
            for (std::size_t c = 0; c < 2; ++c) pointers[v][c] = buffers[v][c].data();
        const auto out = [&](std::size_t v) { return leaveOut[v] ? nullptr : pointers[v].data(); };
        const std::int32_t result = bank.Render(out(0), out(1), out(2), out(3));
        const auto channels = static_cast<std::size_t>(bank.GetChannelCount());
        const auto samples = static_cast<std::size_t>(bank.GetBlockSize());
        for (const auto& voice : buffers)
            for (std::size_t c = 0; c < channels; ++c)
                for (std::size_t i = 0; i < samples; ++i) {
                    finite = finite && std::isfinite(voice[c][i]);
                    loudest = std::max(loudest, std::fabs(voice[c][i]));
                }
        return result;
    }

    VoicedMelody melody;
    CVoiceBank bank;
    RandomNumbers random;
    std::array<std::array<std::vector<float>, 2>, 4> buffers;
    std::array<bool, 4> leaveOut{};
    std::vector<MidiEventRecord> events;
};

void RunWalk(Walk& walk, int blocks) {
    for (int i = 0; i < blocks && walk.finite && walk.loudest <= kWalkBound; ++i) walk.Step();
    EXPECT_TRUE(walk.finite);
    EXPECT_LE(walk.loudest, kWalkBound);
    EXPECT_GE(walk.loudest, 0.02F); // it does sing
    EXPECT_GT(walk.ends, blocks / 1000);
}

TEST(VoiceBankWalk, StaysFiniteAndWithin12DecibelsOfFullScale) {
    for (const std::uint64_t seed : {1u, 2u}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Walk walk(LoudSong(44100, 1), seed);
        RunWalk(walk, Blocks(40));
    }
}

TEST(VoiceBankWalk, AlsoInStereoAt11025Hertz) {
    Walk walk(LoudSong(11025, 2), 3);
    RunWalk(walk, Blocks(10));
}

TEST(VoiceBankWalk, AlsoAt192Kilohertz) {
    Walk walk(LoudSong(192000, 1), 4);
    RunWalk(walk, Blocks(10));
}

TEST(VoiceBankWalk, TheSameStepsGiveTheSameSound) {
    Walk one(LoudSong(44100, 1), 5);
    Walk other(LoudSong(44100, 1), 5);
    for (int i = 0; i < 2000; ++i) {
        one.Step();
        other.Step();
    }
    EXPECT_EQ(one.loudest, other.loudest);
    EXPECT_EQ(one.ends, other.ends);
}

TEST(VoiceBankWalk, NothingAllocatesWhateverHappensAfterTheFirstSecond) {
    Walk walk(LoudSong(44100, 2), 6);
    for (int i = 0; i < 700; ++i) walk.Step();
    const int blocks = Blocks(20);
    const std::int64_t before = AllocationCount();
    for (int i = 0; i < blocks; ++i) walk.Step();
    EXPECT_EQ(AllocationCount(), before);
}

TEST(VoiceBankWalk, NotEvenInTheFirstBlock) {
    VoicedMelody melody(LoudSong(44100, 1));
    CVoiceBank bank;
    ASSERT_EQ(bank.Init(melody.Driver()), 0);
    bank.SetMidiOut(true);
    bank.SetTranspose(-36);
    std::vector<float> block(CVoiceBank::kLargestBlockSize);
    float* out[] = {block.data(), block.data()};
    const std::int64_t before = AllocationCount();
    for (int i = 0; i < 1000; ++i) bank.Render(out, out, out, out);
    EXPECT_EQ(AllocationCount(), before);
}

} // namespace
} // namespace sonorelle::test
