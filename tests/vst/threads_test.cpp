// A host's threads at work together.

#include "vst/vst_stage.h"

#include "support/sanitizer_share.h"

#include <random>
#include <thread>

namespace sonorelle::test {
namespace {

class VstThreads : public VstStage {
protected:
    // Plays blocks of `frames` on a thread of its own until Join.
    void StartAudio(std::int32_t frames) {
        audio = std::thread([this, frames] {
            HostBlock block(frames);
            while (!audioEnds.load()) {
                plugIn.RawPlayBlock(block, frames);
                if (!block.IsFinite()) ++brokenBlocks;
                ++blocks;
                if (host.Time().samplePos > kVstSongFrames) host.Play(0);
            }
        });
    }
    void WaitForBlocks(int count) {
        const int end = blocks + count;
        while (blocks < end) std::this_thread::yield();
    }
    void JoinAudio() {
        audioEnds = true;
        if (audio.joinable()) audio.join();
        EXPECT_EQ(brokenBlocks, 0);
    }
    void TearDown() override { JoinAudio(); }

    std::atomic<bool> audioEnds{false};
    std::atomic<int> blocks{0};
    std::atomic<int> brokenBlocks{0};
    std::thread audio;
};

void SetAtRandom(const HostedPlugIn& plugIn, unsigned seed, int count) {
    std::mt19937 random(seed);
    HostedEffect* const effect = plugIn.Effect();
    for (int i = 0; i < count; ++i) {
        const auto index = static_cast<std::int32_t>(random() % 32);
        effect->setParameter(effect, index, static_cast<float>(random() % 1001) / 1000);
        const float value = effect->getParameter(effect, static_cast<std::int32_t>(random() % 32));
        if (!(value >= 0 && value <= 1)) ADD_FAILURE() << value;
    }
}

// Ableton's step, on the audio thread itself.
TEST_F(VstThreads, AutomationInStepsOf32FramesPlaysOn) {
    LoadSong();
    host.Play(0);
    HostBlock block(32);
    HostedEffect* const effect = plugIn.Effect();
    for (int step = 0; step < SanitizerShare(400); ++step) {
        for (std::int32_t index = 0; index < 32; ++index)
            effect->setParameter(effect, index, static_cast<float>((step * 7 + index) % 100) / 99);
        plugIn.RawPlayBlock(block, 32);
        ASSERT_TRUE(block.IsFinite()) << step;
    }
}

TEST_F(VstThreads, ParametersAtRandomFromTwoThreadsWhileItPlays) {
    LoadSong();
    host.Play(0);
    StartAudio(64);
    std::thread first([this] { SetAtRandom(plugIn, 1, SanitizerShare(3000)); });
    std::thread second([this] { SetAtRandom(plugIn, 2, SanitizerShare(3000)); });
    first.join();
    second.join();
    WaitForBlocks(10);
}

TEST_F(VstThreads, AStateIsSetFromAnotherThreadWhileItPlays) {
    LoadSong();
    const std::string saved = plugIn.Chunk();
    host.Play(0);
    StartAudio(128);
    std::thread restorer([&] {
        for (int i = 0; i < SanitizerShare(16); ++i) {
            EXPECT_EQ(plugIn.RawSetChunk(saved), 1);
            WaitForBlocks(3);
            if (i % 4 == 3) plugIn.RawSetChunk("rubbish");
        }
        EXPECT_EQ(plugIn.RawSetChunk(saved), 1);
    });
    std::mt19937 random(3);
    for (int i = 0; i < SanitizerShare(40); ++i) {
        SetAtRandom(plugIn, static_cast<unsigned>(random()), 20);
        void* data = nullptr;
        plugIn.Raw(Call::kGetChunk, static_cast<std::int32_t>(random() % 2), 0, static_cast<void*>(&data));
        std::array<char, 64> text{};
        plugIn.Raw(Call::kGetParamDisplay, static_cast<std::int32_t>(random() % 32), 0, text.data());
        plugIn.Raw(Call::kSetProgram, 0, static_cast<std::intptr_t>(random() % 2));
        plugIn.Raw(Call::kEditIdle);
    }
    restorer.join();
    WaitForBlocks(10);
}

TEST_F(VstThreads, CreationOnOneThreadAndEverythingElseOnOthers) {
    std::unique_ptr<HostedPlugIn> made;
    TestHost own;
    std::thread([&] { made = std::make_unique<HostedPlugIn>(own, library); }).join();
    std::thread([&] { EXPECT_EQ(made->SetChunk(SessionNaming(VstSong())), 1); }).join();
    std::thread([&] {
        own.Play(0);
        EXPECT_EQ(made->PlayOut(1024, 256).size(), 1024U);
    }).join();
    std::thread([&] { made.reset(); }).join();
}

} // namespace
} // namespace sonorelle::test
