// A loaded plug-in, a host, and a window of the host on a display of the tests' own.
//
// SONORELLE_SCREENSHOTS names a folder for a picture of each test's editor.
#pragma once

#include "vst/vst_stage.h"

#include "ui/virtual_display.h" // behind all else: X has macros for common words

#include <X11/Xutil.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>

namespace sonorelle::test {

using sonorelle::testing::CHostDisplay;
using sonorelle::testing::StartVirtualDisplay;
using sonorelle::testing::WorkUntil;

inline constexpr int kEditorWidth = 959;
inline constexpr int kEditorHeight = 599;
inline constexpr int kPixelStep = 5; // enough to see what changes

inline void* AsParent(Window window) { return reinterpret_cast<void*>(window); }

inline double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

class VstEditorStage : public VstStage {
protected:
    void SetUp() override {
        if (StartVirtualDisplay().empty())
            GTEST_SKIP() << "Xvfb is not installed: no display to show windows on";
        display = std::make_unique<CHostDisplay>();
        display->MovePointer(1270, 890); // over nothing
        parent = display->MakeWindow(60, 40, kEditorWidth, kEditorHeight);
    }
    void TearDown() override {
        if (display == nullptr) return;
        Picture();
        plugIn.Do(Call::kEditClose);
        if (parent != 0) display->Destroy(parent);
    }

    std::intptr_t Open(HostedPlugIn& which, Window where) {
        return which.Do(Call::kEditOpen, 0, 0, AsParent(where));
    }
    std::intptr_t Open() { return Open(plugIn, parent); }
    bool IdleUntil(const std::function<bool()>& done) {
        return WorkUntil([this] { plugIn.Raw(Call::kEditIdle); }, done);
    }
    void Idle(int times) {
        for (int i = 0; i < times; ++i) plugIn.Do(Call::kEditIdle);
    }
    // Row by row, every `step`-th pixel of the window, or of its part that an editor covers.
    std::vector<unsigned long> Pixels(Window window, int step = kPixelStep) {
        display->Sync();
        const XWindowAttributes size = display->Attributes(window);
        const int width = std::min(size.width, kEditorWidth);
        const int height = std::min(size.height, kEditorHeight);
        std::vector<unsigned long> pixels;
        XImage* const image = XGetImage(display->Get(), window, 0, 0, static_cast<unsigned>(width),
                                        static_cast<unsigned>(height), AllPlanes, ZPixmap);
        if (image == nullptr) return pixels;
        for (int y = 0; y < height; y += step)
            for (int x = 0; x < width; x += step) pixels.push_back(XGetPixel(image, x, y) & 0xFFFFFFUL);
        XDestroyImage(image);
        return pixels;
    }
    // The first picture is on the display when the window has more colours than an empty one could.
    bool IsDrawn(Window window) {
        constexpr std::size_t kColoursOfAPicture = 16;
        const std::vector<unsigned long> pixels = Pixels(window);
        return std::set<unsigned long>(pixels.begin(), pixels.end()).size() >= kColoursOfAPicture;
    }
    bool WaitForPicture() {
        return IdleUntil([this] { return IsDrawn(parent); });
    }
    void Picture() {
        const char* const folder = std::getenv("SONORELLE_SCREENSHOTS");
        if (folder == nullptr || parent == 0) return;
        const XWindowAttributes size = display->Attributes(parent);
        if (size.width < kEditorWidth || size.height < kEditorHeight) return;
        const std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        std::ofstream out(std::filesystem::path(folder) / ("vst-" + name + ".ppm"), std::ios::binary);
        out << "P6 " << kEditorWidth << ' ' << kEditorHeight << " 255\n";
        for (const unsigned long pixel : Pixels(parent, 1))
            for (const int shift : {16, 8, 0}) out.put(static_cast<char>(pixel >> shift & 0xFF));
    }
    void ExpectInPlace(Window where) {
        const Window child = display->OnlyChild(where);
        ASSERT_NE(child, 0U);
        const XWindowAttributes attributes = display->Attributes(child);
        EXPECT_EQ(attributes.x, 0);
        EXPECT_EQ(attributes.y, 0);
        EXPECT_EQ(attributes.width, kEditorWidth);
        EXPECT_EQ(attributes.height, kEditorHeight);
        EXPECT_NE(attributes.map_state, IsUnmapped);
    }

    std::unique_ptr<CHostDisplay> display;
    Window parent = 0;
};

} // namespace sonorelle::test
