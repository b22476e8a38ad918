// A neighbour in the same process that is made with the same toolkit, loaded before and after, unloaded
// before and after, with its toolkit hidden or in everybody's sight.

#include "vst/editor_stage.h"

#include "vst/neighbour/neighbour.h"
#include "vst/process_state.h"

#include <dlfcn.h>
#include <optional>
#include <tuple>

namespace sonorelle::test {
namespace {

class NeighbourLibrary {
public:
    explicit NeighbourLibrary(const char* path) : handle(dlopen(path, RTLD_NOW | RTLD_GLOBAL)) {
        if (handle == nullptr) throw std::runtime_error(dlerror());
        calls = static_cast<const NeighbourCalls*>(dlsym(handle, "Neighbour"));
    }
    ~NeighbourLibrary() {
        calls->close();
        calls->leave();
        dlclose(handle);
    }
    NeighbourLibrary(const NeighbourLibrary&) = delete;
    NeighbourLibrary& operator=(const NeighbourLibrary&) = delete;
    const NeighbourCalls* operator->() const { return calls; }

private:
    void* handle;
    const NeighbourCalls* calls = nullptr;
};

bool IsMapped(const std::string& path) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find(path) != std::string::npos) return true;
    return false;
}

// An effect of a library of its own.
struct Ours {
    explicit Ours(const std::string& path) : library(path) {}
    PlugInLibrary library;
    TestHost host;
    HostedPlugIn plugIn{host, library};
};

// Whose toolkit; whether the neighbour comes first; whether it goes first.
using Order = std::tuple<NeighbourKind, bool, bool>;

class VstNeighbour : public VstEditorStage, public ::testing::WithParamInterface<Order> {
protected:
    void SetUp() override {
        VstEditorStage::SetUp();
        if (IsSkipped()) return;
        neighboursParent = display->MakeWindow(1040, 40, kNeighbourSize, kNeighbourSize);
        // What our editor looks like where it is alone.
        EXPECT_EQ(Open(), 1);
        EXPECT_TRUE(WaitForPicture());
        alone = Pixels(parent);
        plugIn.Do(Call::kEditClose);
    }
    void TearDown() override {
        if (display != nullptr) display->Destroy(neighboursParent);
        VstEditorStage::TearDown();
    }

    void Load(bool neighbourNow) {
        if (neighbourNow) {
            neighbour.emplace(NeighbourPath(std::get<0>(GetParam())));
        } else {
            ours.emplace(file.Path());
        }
    }
    void Unload(bool neighbourNow) {
        if (neighbourNow) {
            neighbour.reset();
        } else {
            ours.reset();
        }
    }
    // A pass of everything that is there, as a host does.
    void Pass() {
        if (ours) ours->plugIn.Raw(Call::kEditIdle);
        if (neighbour) (*neighbour)->idle();
    }
    bool OursIsDrawn() {
        return WorkUntil([this] { Pass(); }, [this] { return Pixels(parent) == alone; });
    }
    bool NeighbourIsDrawn() {
        return WorkUntil([this] { Pass(); },
                         [this] { return display->Pixel(neighboursParent, 3, 3) == kNeighbourColour; });
    }
    // Wiped by the host, a window must be drawn anew by whoever owns it.
    void Wipe() {
        for (const Window window : {parent, neighboursParent}) {
            XUnmapWindow(display->Get(), window);
            XClearWindow(display->Get(), window);
            XMapWindow(display->Get(), window);
        }
        display->Sync();
    }
    void OpenAndCloseBoth() {
        EXPECT_TRUE((*neighbour)->open(neighboursParent));
        EXPECT_EQ(Open(ours->plugIn, parent), 1);
        EXPECT_TRUE(NeighbourIsDrawn());
        EXPECT_TRUE(OursIsDrawn());
        Wipe();
        EXPECT_TRUE(OursIsDrawn());
        EXPECT_TRUE(NeighbourIsDrawn());
        ours->plugIn.Do(Call::kEditClose);
        EXPECT_EQ(display->ViewableChildren(parent), 0);
        Wipe();
        EXPECT_TRUE(NeighbourIsDrawn()); // its own window stays
        EXPECT_EQ(Open(ours->plugIn, parent), 1);
        (*neighbour)->close();
        EXPECT_EQ(display->ViewableChildren(neighboursParent), 0);
        Wipe();
        EXPECT_TRUE(OursIsDrawn());
    }

    Window neighboursParent = 0;
    std::vector<unsigned long> alone;
    OwnPlugInFile file;
    std::optional<Ours> ours;
    std::optional<NeighbourLibrary> neighbour;
};

TEST_P(VstNeighbour, WithTheSameToolkitGoesOnDrawingAndSoDoesTheEditor) {
    const auto& [kind, comesFirst, goesFirst] = GetParam();
    const ProcessState before = ProcessState::Take();
    for (int turn = 0; turn < 2; ++turn) {
        Load(comesFirst);
        Load(!comesFirst);
        OpenAndCloseBoth();
        EXPECT_TRUE((*neighbour)->open(neighboursParent));
        Unload(goesFirst); // with its window open
        Wipe();
        EXPECT_TRUE(goesFirst ? OursIsDrawn() : NeighbourIsDrawn());
        Unload(!goesFirst);
        EXPECT_FALSE(IsMapped(NeighbourPath(kind))) << turn;
        EXPECT_FALSE(file.IsInMemory()) << turn;
        EXPECT_EQ(ProcessState::Take().DifferenceTo(before), "") << turn;
    }
}

// It has set its handler for the whole process, and it would count them.
TEST_P(VstNeighbour, HearsNothingOfTheErrorsOfOurs) {
    const bool comesFirst = std::get<1>(GetParam());
    Load(comesFirst);
    Load(!comesFirst);
    EXPECT_TRUE((*neighbour)->open(neighboursParent));
    EXPECT_EQ(Open(ours->plugIn, parent), 1);
    EXPECT_TRUE(OursIsDrawn());
    display->Destroy(parent);
    for (int i = 0; i < 5; ++i) Pass();
    ours->plugIn.Do(Call::kEditClose);
    EXPECT_EQ((*neighbour)->errors(), 0);
    XClearWindow(display->Get(), parent); // the host's own mistake does reach it
    display->Sync();
    EXPECT_EQ((*neighbour)->errors(), 1);
    parent = 0;
}

std::string NameOf(const ::testing::TestParamInfo<Order>& order) {
    const auto& [kind, comesFirst, goesFirst] = order.param;
    return std::string(kind == NeighbourKind::kHidden ? "Hidden" : "Plain") +
           (comesFirst ? "ComesFirst" : "ComesLast") + (goesFirst ? "GoesFirst" : "GoesLast");
}

INSTANTIATE_TEST_SUITE_P(VstNeighbour, VstNeighbour,
                         ::testing::Combine(::testing::Values(NeighbourKind::kHidden, NeighbourKind::kPlain),
                                            ::testing::Values(true, false), ::testing::Values(true, false)),
                         NameOf);

} // namespace
} // namespace sonorelle::test
