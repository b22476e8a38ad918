// Loading and restoring over and over leaves nothing behind: memory, open files, threads.
//
// SONORELLE_LOADS sets how often; the usual number takes a moment.

#include "host/plugin_stage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <malloc.h>

namespace sonorelle::test {
namespace {

constexpr int kUsualLoads = 40;

int Loads() {
    const char* const wish = std::getenv("SONORELLE_LOADS");
    return wish != nullptr && std::atoi(wish) > 0 ? std::atoi(wish) : kUsualLoads;
}

std::ptrdiff_t EntriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

// What the program holds, wherever the allocator has got it from.
std::size_t BytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

TEST(PlugInGrowth, LoadsAndRestoresLeaveNothingBehind) {
    PlugInStage stage;
    stage.LoadSong();
    stage.MoveNote(0, 1, 2);
    stage.App().SnapshotPanel().Add("Verse");
    const std::string saved = stage.Chunk();
    const auto turn = [&](int i) {
        stage.LoadSong();
        stage.host.Play(true);
        stage.PlayBlocks(2, 512);
        stage.SetChunk(saved);
        stage.PlayBlocks(2, 512);
        stage.plugIn->RunEventPass();
        EXPECT_EQ(stage.Chunk().size(), saved.size());
        if (i % 8 == 0) {
            stage.SetChunk("rubbish");
            stage.plugIn->LoadAudioFile("/nowhere/song.wav");
        }
        stage.host.automated.clear();
        stage.host.automated.shrink_to_fit();
        stage.host.sent.clear();
        stage.host.sent.shrink_to_fit();
        stage.toolkit.messages.clear();
        stage.toolkit.windowActive.clear();
    };
    for (int i = 0; i < 10; ++i) turn(i); // what is made once, and the allocator's own reserves
    const std::ptrdiff_t files = EntriesOf("/proc/self/fd");
    const std::ptrdiff_t threads = EntriesOf("/proc/self/task");
    const std::size_t bytes = BytesInUse();
    for (int i = 0; i < Loads(); ++i) turn(i);
    EXPECT_EQ(EntriesOf("/proc/self/fd"), files);
    EXPECT_EQ(EntriesOf("/proc/self/task"), threads);
    // 40 turns of a leak of 1 KB would show; a session takes about a hundred times as much.
    EXPECT_LT(BytesInUse(), bytes + 40000);
}

} // namespace
} // namespace sonorelle::test
