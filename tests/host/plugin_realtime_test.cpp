// What the audio thread may not do from its first block on: allocate, and ask the system for anything.

#include "host/c_memory_trap.h"
#include "host/plugin_stage.h"
#include "host/system_call_trap.h"
#include "support/allocation_trap.h"
#include "support/sanitizer_share.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <thread>
#include <unistd.h>

namespace sonorelle::test {
namespace {

// The work of a session, prepared before; then only blocks and keys.
struct Session {
    std::function<void(PlugInStage&)> prepare;
    std::vector<VstMidiEvent> keys; // one with each eighth block
    std::function<bool(PlugInStage&)> happened;
};

void PlayThrough(PlugInStage& stage, const OutputBlock& block, const std::vector<IncomingEvents>& keys) {
    stage.host.Play(true);
    for (std::size_t i = 0; i < 400; ++i) {
        if (!keys.empty() && i % 8 == 0) stage.plugIn->ProcessEvents(keys[i / 8 % keys.size()].List());
        stage.PlayBlock(block, 512);
    }
}

void ExpectQuiet(const Session& session) {
    PlugInStage stage;
    stage.host.keepEvents = false;
    stage.LoadSong();
    stage.plugIn->ToggleSingleVoice();
    session.prepare(stage);
    const OutputBlock block(512);
    std::vector<IncomingEvents> keys;
    for (const VstMidiEvent& key : session.keys) keys.emplace_back(std::vector<VstMidiEvent>{key, key});

    std::int64_t allocations = -1;
    std::int64_t memoryCalls = -1;
    std::thread([&] {
        const std::int64_t before = AllocationCount();
        const std::int64_t callsBefore = MemoryCalls();
        PlayThrough(stage, block, keys);
        memoryCalls = MemoryCalls() - callsBefore;
        allocations = AllocationCount() - before;
    }).join();
    EXPECT_EQ(allocations, 0);
    EXPECT_EQ(memoryCalls, 0);
    EXPECT_TRUE(session.happened(stage));

#ifdef SONORELLE_HAVE_SYSTEM_CALL_TRAP
    if (UnderSanitizer()) return;
    CaughtSystemCalls() = 0;
    stage.host.time.samplePos = 0;
    std::thread([&] {
        ForbidSystemCalls();
        PlayThrough(stage, block, keys);
    }).join();
    EXPECT_EQ(CaughtSystemCalls().load(), 0) << "the last was number " << LastCaughtSystemCall().load();
#endif
}

TEST(MemoryTrap, CountsEachKindOfCall) {
    if (!HasMemoryTrap()) GTEST_SKIP() << "a sanitizer stands in its place";
    const std::int64_t before = MemoryCalls();
    void* volatile first = std::malloc(8);
    void* volatile second = std::realloc(first, 16);
    std::free(second);
    int* volatile third = new int(3);
    delete third;
    EXPECT_EQ(MemoryCalls() - before, 5);
}

#ifdef SONORELLE_HAVE_SYSTEM_CALL_TRAP
TEST(SystemCallTrap, CatchesAFileThatIsOpened) {
    if (UnderSanitizer()) GTEST_SKIP() << "sanitizers ask the system for their own purposes";
    CaughtSystemCalls() = 0;
    std::thread([] {
        ForbidSystemCalls();
        const int file = ::open("/dev/null", O_RDONLY);
        if (file >= 0) ::close(file);
    }).join();
    EXPECT_EQ(CaughtSystemCalls().load(), 1);
}
#endif

TEST(PlugInRealTime, PlayingAndSendingNotesIsQuiet) {
    ExpectQuiet({[](PlugInStage&) {}, {}, [](PlugInStage& stage) { return stage.host.sentCount > 8; }});
}

TEST(PlugInRealTime, OfflineRenderingIsQuiet) {
    ExpectQuiet({[](PlugInStage& stage) { stage.host.processLevel = kVstProcessLevelOffline; },
                 {},
                 [](PlugInStage& stage) { return stage.host.sentCount == 0; }});
}

TEST(PlugInRealTime, RecallingSnapshotsByKeysIsQuiet) {
    std::int32_t before = -1;
    const auto prepare = [&before](PlugInStage& stage) {
        before = stage.VoicePitch(0, 1);
        stage.plugIn->WithApplication([&](CkvovirelaineApp& app) {
            app.SnapshotPanel().Add("low", 61, 0, app.GetMelodyEnd());
            app.PlaybackPanel().SetMode(CkvovirelainePlaybackSettings::kMidi);
            app.OnPlaybackChanged();
        });
        stage.MoveNote(0, 1, 5);
    };
    const auto recalled = [&before](PlugInStage& stage) { return stage.VoicePitch(0, 1) == before; };
    ExpectQuiet({prepare,
                 {MidiMessage(0x90, 61, 100, 5), MidiMessage(0x80, 61, 0), MidiMessage(0x90, 60, 90, 37),
                  MidiMessage(0x80, 60, 0, 100)},
                 recalled});
}

TEST(PlugInRealTime, PlayingLiveIsQuiet) {
    for (const std::int32_t live : {0x10000, 0x10001}) {
        const auto prepare = [live](PlugInStage& stage) {
            stage.plugIn->WithApplication([live](CkvovirelaineApp& app) {
                app.ChoirPanel().SetMode(live);
                app.OnChoirSettingsChanged();
            });
            ASSERT_TRUE(stage.App().Driver().IsLive());
        };
        ExpectQuiet(
            {prepare,
             {MidiMessage(0x90, 60, 100, 5), MidiMessage(0x90, 64, 100), MidiMessage(0x90, 67, 90, 37),
              MidiMessage(0x80, 64, 0, 100), MidiMessage(0xB0, 123, 0)},
             [](PlugInStage& stage) { return stage.host.sentCount > 4; }});
    }
}

TEST(PlugInRealTime, AnEmptyPlugInIsQuiet) {
    PlugInStage stage;
    const OutputBlock block(512);
    const IncomingEvents keys({MidiMessage(0x90, 60, 100)});
    std::int64_t allocations = -1;
    std::thread([&] {
        const std::int64_t before = AllocationCount();
        stage.plugIn->ProcessEvents(keys.List());
        stage.PlayBlock(block, 512);
        allocations = AllocationCount() - before;
    }).join();
    EXPECT_EQ(allocations, 0);
}

} // namespace
} // namespace sonorelle::test
