// Blocks of sound: every length and rate, the host's transport, and outputs that a host has laid together.

#include "vst/vst_stage.h"

#include "support/sanitizer_share.h"

#include <limits>

namespace sonorelle::test {
namespace {

class VstPlaying : public VstStage {
protected:
    // The song from its beginning.
    std::array<std::vector<float>, kHostOutputs> PlayFromStart(std::int32_t total, std::int32_t frames) {
        host.Play(0);
        return plugIn.PlayAll(total, frames);
    }
};

float PeakOf(const std::vector<float>& samples) {
    float peak = 0;
    for (const float sample : samples) peak = std::max(peak, std::fabs(sample));
    return peak;
}

TEST_F(VstPlaying, WithoutARecordingThePlugInIsSilent) {
    host.Play(0);
    HostBlock block(512);
    plugIn.PlayBlock(block, 512);
    EXPECT_TRUE(block.IsAll(0, 0));
    EXPECT_TRUE(block.IsAll(1, 0));
}

TEST_F(VstPlaying, TheSongSoundsWhileTheTransportRuns) {
    LoadSong();
    const auto playing = PlayFromStart(kVstSongFrames, 512);
    EXPECT_GT(PeakOf(playing[0]), 0.05F);
    EXPECT_GT(PeakOf(playing[1]), 0.05F);
    host.Stop();
    const std::vector<float> stopped = plugIn.PlayOut(8192, 512);
    EXPECT_EQ(PeakOf({stopped.end() - 2048, stopped.end()}), 0); // but for the fade at once
}

TEST_F(VstPlaying, AnyBlockLengthGivesTheSameSound) {
    LoadSong();
    const auto reference = PlayFromStart(24000, 512);
    for (const std::int32_t frames : {10, 17, 2027, 16384}) {
        host.Stop();
        plugIn.PlayAll(8192, 512);
        const auto again = PlayFromStart(24000, frames);
        for (std::size_t output = 0; output < kHostOutputs; ++output)
            EXPECT_EQ(again[output], reference[output]) << frames << " frames, output " << output;
    }
}

TEST_F(VstPlaying, BlocksOfNoneAndOneFrameFitInBetween) {
    LoadSong();
    const auto reference = PlayFromStart(4096, 512);
    host.Stop();
    plugIn.PlayAll(8192, 512);
    host.Play(0);
    std::vector<float> mix;
    HostBlock block(2027);
    while (mix.size() < reference[0].size()) {
        for (const std::int32_t frames : {0, 1, 10, 17, 2027}) {
            block.Refill();
            plugIn.PlayBlock(block, frames);
            mix.insert(mix.end(), block[0].begin(), block[0].begin() + frames);
            for (std::size_t i = 0; i < kHostOutputs; ++i)
                for (std::size_t at = static_cast<std::size_t>(frames); at < 2027; ++at)
                    ASSERT_EQ(block[i][at], HostBlock::kUntouched) << frames << ' ' << i;
        }
    }
    mix.resize(reference[0].size());
    EXPECT_EQ(mix, reference[0]);
}

TEST_F(VstPlaying, NegativeLengthsWriteNothing) {
    LoadSong();
    host.Play(0);
    HostBlock block(64);
    for (const std::int32_t frames : {-1, -64, std::numeric_limits<std::int32_t>::min()}) {
        plugIn.Effect()->processReplacing(plugIn.Effect(), nullptr, block.Pointers(), frames);
        for (std::size_t i = 0; i < kHostOutputs; ++i) EXPECT_TRUE(block.IsAll(i, HostBlock::kUntouched));
    }
}

// All that a host may have: what is announced as block length does not bind it.
TEST_F(VstPlaying, EveryRateAndLengthStaysFinite) {
    LoadSong();
    const std::array<float, 7> rates = {8000, 22050, 44100, 48000, 96000, 192000, 384000};
    for (std::size_t i = 0; i < rates.size(); ++i) {
        for (const std::int32_t level : {kLevelUntold, kLevelRealtime, kLevelOffline}) {
            if (!InSanitizerShare(static_cast<int>(i), 3)) continue;
            host.processLevel = level;
            plugIn.Do(Call::kMainsChanged, 0, 0);
            plugIn.SetSampleRate(rates[i]);
            plugIn.Do(Call::kSetBlockSize, 0, 16384);
            plugIn.Do(Call::kMainsChanged, 0, 1);
            host.Play(0);
            for (const std::int32_t frames : {0, 1, 10, 17, 2027, 16384}) {
                HostBlock block(frames);
                plugIn.PlayBlock(block, frames);
                EXPECT_TRUE(block.IsFinite()) << rates[i] << ' ' << frames;
            }
            host.Stop();
            plugIn.PlayOut(1024, 1024);
        }
    }
}

TEST_F(VstPlaying, AbsurdRatesAreHarmless) {
    LoadSong();
    HostBlock block(256);
    for (const float rate : {0.0F, -44100.0F, 1.0F, 1e30F, 1e-30F, std::numeric_limits<float>::quiet_NaN(),
                             std::numeric_limits<float>::infinity()}) {
        plugIn.SetSampleRate(rate);
        plugIn.Do(Call::kSetBlockSizeAndSampleRate, 0, 256, nullptr, rate);
        host.Play(1000);
        for (int i = 0; i < 4; ++i) {
            plugIn.PlayBlock(block, 256);
            EXPECT_TRUE(block.IsFinite()) << rate;
        }
    }
}

// The session's offset is told in the host's samples; it follows the rate when the next block is played.
TEST_F(VstPlaying, ANewSampleRateReachesTheNextBlock) {
    LoadSong( // at 44100 Hz, as long as the host tells no other
        "<MasterPlaybackStart str=\"44100\"/>\n");
    const auto offset = [&] {
        const std::string session = plugIn.Chunk();
        const std::string key = "<MasterPlaybackStart str=\"";
        return std::stol(session.substr(session.find(key) + key.size()));
    };
    plugIn.PlayOut(64, 64);
    EXPECT_EQ(offset(), 44100);
    plugIn.SetSampleRate(88200);
    plugIn.PlayOut(64, 64);
    EXPECT_EQ(offset(), 88200);
    EXPECT_EQ(plugIn.Do(Call::kSetBlockSizeAndSampleRate, 0, 64, nullptr, 22050), 1);
    plugIn.PlayOut(64, 64);
    EXPECT_EQ(offset(), 22050);
}

// Qtractor plays a stereo bus so: all that it does not want goes into one buffer.
TEST_F(VstPlaying, OutputsMayShareTheirMemory) {
    LoadSong();
    const auto reference = PlayFromStart(8192, 512);
    host.Stop();
    plugIn.PlayAll(8192, 512);
    host.Play(0);
    HostBlock block(512);
    block.AliasFrom(2);
    std::vector<float> left;
    std::vector<float> right;
    for (int i = 0; i < 16; ++i) {
        plugIn.PlayBlock(block, 512);
        EXPECT_TRUE(block.IsFinite());
        left.insert(left.end(), block[0].begin(), block[0].end());
        right.insert(right.end(), block[1].begin(), block[1].end());
    }
    EXPECT_EQ(left, reference[0]);
    EXPECT_EQ(right, reference[1]);
}

TEST_F(VstPlaying, TheAccumulatingCallPlaysTheSameOverWhateverWasThere) {
    LoadSong();
    const auto reference = PlayFromStart(2048, 512);
    host.Stop();
    plugIn.PlayAll(8192, 512);
    host.Play(0);
    HostBlock block(512);
    std::vector<float> mix;
    for (int i = 0; i < 4; ++i) {
        block.Refill(0.5F);
        plugIn.Effect()->process(plugIn.Effect(), nullptr, block.Pointers(), 512);
        host.Advance(512);
        mix.insert(mix.end(), block[0].begin(), block[0].end());
    }
    EXPECT_EQ(mix, reference[0]);
}

TEST_F(VstPlaying, AJumpOfTheTransportIsFollowed) {
    LoadSong();
    const auto reference = PlayFromStart(24576, 512);
    host.Stop();
    plugIn.PlayAll(8192, 512);
    host.Play(12288);
    std::vector<float> later = plugIn.PlayOut(12288, 512);
    // The voices start anew there: the same notes, though not the same samples.
    const std::vector<float> there(reference[0].begin() + 12288, reference[0].end());
    EXPECT_GT(PeakOf(later), 0.3F * PeakOf(there));
    EXPECT_LT(PeakOf(later), 3.0F * PeakOf(there));
    host.Play(1e9);
    plugIn.PlayOut(8192, 512);
    EXPECT_EQ(PeakOf(plugIn.PlayOut(2048, 512)), 0.0F); // far behind the song
}

TEST_F(VstPlaying, TheTimeIsAskedForWithTheFlagsThatAreUsed) {
    LoadSong();
    plugIn.PlayOut(64, 64);
    EXPECT_EQ(host.LastTimeFilter(), 0x2403);
    plugIn.SendMidi({MidiOf(0x90, 60, 100)});
    EXPECT_EQ(host.LastTimeFilter(), 3);
}

TEST_F(VstPlaying, AbsurdTimesAreHarmless) {
    LoadSong();
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    HostBlock block(256);
    for (const double position : {kNaN, kInfinity, -kInfinity, 1e300, -1e300, -1.0, 0.5}) {
        for (const double tempo : {kNaN, kInfinity, 0.0, -120.0, 1e300, 1e-300}) {
            HostTime time{};
            time.samplePos = position;
            time.tempo = tempo;
            time.timeSigNumerator = std::numeric_limits<std::int32_t>::min();
            time.timeSigDenominator = std::numeric_limits<std::int32_t>::max();
            time.flags = -1;
            host.SetTime(time);
            plugIn.Effect()->processReplacing(plugIn.Effect(), nullptr, block.Pointers(), 256);
            EXPECT_TRUE(block.IsFinite()) << position << ' ' << tempo;
        }
    }
    host.hasTime = false;
    plugIn.PlayBlock(block, 256);
    EXPECT_TRUE(block.IsFinite());
}

} // namespace
} // namespace sonorelle::test
