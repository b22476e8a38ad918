// A guest's manners, in a host with settings of its own. HostedPlugIn looks after each call that nothing has
// changed; here is what could.

#include "vst/vst_stage.h"

#include "vst/process_state.h"

#include <X11/Xlib.h>

#include <cfenv>
#include <clocale>
#include <csignal>
#include <filesystem>
#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace sonorelle::test {
namespace {

int HostsErrors(Display*, XErrorEvent*) { return 0; }
int HostsLosses(Display*) { return 0; }
void HostsSignals(int) {}

// A host's settings, for a scope.
class PeculiarHost {
public:
    PeculiarHost() {
        std::setlocale(LC_ALL, "C.UTF-8");
        errors = XSetErrorHandler(HostsErrors);
        losses = XSetIOErrorHandler(HostsLosses);
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            struct sigaction action {};
            action.sa_handler = HostsSignals;
            sigaction(kSignals[i], &action, &actions[i]);
        }
        std::filesystem::current_path(folder.Path());
    }
    ~PeculiarHost() {
        std::setlocale(LC_ALL, "C");
        XSetErrorHandler(errors);
        XSetIOErrorHandler(losses);
        for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &actions[i], nullptr);
        std::filesystem::current_path(home);
    }
    PeculiarHost(const PeculiarHost&) = delete;
    PeculiarHost& operator=(const PeculiarHost&) = delete;

private:
    static constexpr std::array<int, 4> kSignals = {SIGPIPE, SIGALRM, SIGUSR1, SIGCHLD};
    const TemporaryFolder folder;
    const std::filesystem::path home = std::filesystem::current_path();
    XErrorHandler errors = nullptr;
    XIOErrorHandler losses = nullptr;
    std::array<struct sigaction, kSignals.size()> actions{};
};

void UseAllOfIt(HostedPlugIn& plugIn, TestHost& host) {
    EXPECT_EQ(plugIn.SetChunk(SessionNaming(VstSong())), 1);
    host.Play(0);
    HostBlock block(512);
    for (int i = 0; i < 8; ++i) plugIn.PlayBlock(block, 512);
    plugIn.SendMidi({MidiOf(0x90, 60, 100)});
    for (std::int32_t i = 0; i < 32; ++i) plugIn.Set(i, 0.5F);
    plugIn.Do(Call::kEditIdle);
    const std::string saved = plugIn.Chunk();
    EXPECT_EQ(plugIn.SetChunk(saved), 1);
    plugIn.SetChunk("rubbish");
}

TEST(VstGuest, LeavesAPeculiarHostAsItIs) {
    const PeculiarHost peculiar;
    const ProcessState before = ProcessState::Take();
    {
        const OwnPlugInFile file;
        const PlugInLibrary library(file.Path());
        EXPECT_EQ(ProcessState::Take().DifferenceTo(before), ""); // no work while it is loaded
        TestHost host;
        HostedPlugIn plugIn(host, library);
        UseAllOfIt(plugIn, host);
    }
    EXPECT_EQ(ProcessState::Take().DifferenceTo(before), "");
}

// Otherwise the tests above could not fail.
TEST(VstGuest, EachPartOfTheProcessIsSeen) {
    const ProcessState before = ProcessState::Take();
    std::fesetround(FE_DOWNWARD);
    const std::string rounded = ProcessState::Take().DifferenceTo(before);
    std::fesetround(FE_TONEAREST);
    EXPECT_NE(rounded.find("rounding"), std::string::npos);
    std::string found;
    {
        const PeculiarHost peculiar;
        found = ProcessState::Take().DifferenceTo(before);
    }
    for (const char* const part :
         {"locale", "signal handlers", "X error handler", "X connection handler", "working folder"})
        EXPECT_NE(found.find(part), std::string::npos) << part;
    EXPECT_EQ(ProcessState::Take().DifferenceTo(before), "");
}

TEST(VstGuest, SoundsInWhateverRoundingAHostCalculates) {
    const PlugInLibrary library;
    for (const int rounding : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(rounding);
        {
            TestHost host;
            HostedPlugIn plugIn(host, library);
            UseAllOfIt(plugIn, host);
        }
        EXPECT_EQ(std::fegetround(), rounding);
        std::fesetround(FE_TONEAREST);
    }
}

#if defined(__x86_64__)
// As nearly all hosts do on their audio threads.
TEST(VstGuest, KeepsTheHostsFlushingOfSmallNumbers) {
    constexpr unsigned kFlushAndZero = 0x8040;
    const unsigned before = _mm_getcsr();
    _mm_setcsr(before | kFlushAndZero);
    {
        const PlugInLibrary library;
        TestHost host;
        HostedPlugIn plugIn(host, library);
        UseAllOfIt(plugIn, host);
    }
    EXPECT_EQ(_mm_getcsr() & kFlushAndZero, kFlushAndZero);
    _mm_setcsr(before);
}
#endif

} // namespace
} // namespace sonorelle::test
