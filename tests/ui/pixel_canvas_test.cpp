#include "ui/pixel_canvas.h"
#include "ui/toolbar_pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <set>
#include <string>

namespace sonorelle {
namespace {

std::string Bytes(const CPixelCanvas& canvas) {
    return {reinterpret_cast<const char*>(canvas.Data()),
            static_cast<std::size_t>(canvas.Width() * canvas.Height() * 3)};
}

// How much of the picture is black, in pixels.
double BlackArea(const CPixelCanvas& canvas) {
    double area = 0;
    for (std::int32_t y = 0; y < canvas.Height(); ++y)
        for (std::int32_t x = 0; x < canvas.Width(); ++x) area += 1 - canvas.At(x, y).red / 255.0;
    return area;
}

TEST(PixelCanvas, BoxOnWholePixelsHasHardEdges) {
    CPixelCanvas canvas(6, 5, kWhite);
    canvas.FillRoundedBox({1, 1, 3, 2}, 0, kBlack, kBlack);
    for (std::int32_t y = 0; y < 5; ++y)
        for (std::int32_t x = 0; x < 6; ++x)
            EXPECT_EQ(canvas.At(x, y), x >= 1 && x < 4 && y >= 1 && y < 3 ? kBlack : kWhite) << x << ',' << y;
}

// Half a pixel at each edge is what smoothing may add or take.
TEST(PixelCanvas, DiscHasItsArea) {
    CPixelCanvas canvas(40, 40, kWhite);
    canvas.FillDisc({20, 20}, 15, kBlack);
    EXPECT_NEAR(BlackArea(canvas), M_PI * 225, 0.01 * M_PI * 225);
    EXPECT_EQ(canvas.At(20, 20), kBlack);
    EXPECT_EQ(canvas.At(2, 2), kWhite);
}

TEST(PixelCanvas, PolygonHasItsArea) {
    CPixelCanvas canvas(20, 20, kWhite);
    const std::array<CanvasPoint, 3> triangle = {CanvasPoint{2, 2}, {18, 2}, {2, 18}};
    canvas.FillPolygon(triangle, kBlack);
    EXPECT_NEAR(BlackArea(canvas), 128, 3); // 16 squared by 2; samples on the long edge fall either way
}

TEST(PixelCanvas, LineIsAsWideAsItIsTold) {
    CPixelCanvas canvas(20, 9, kWhite);
    canvas.DrawLine({-10, 4.5F}, {30, 4.5F}, 3, kBlack);
    EXPECT_NEAR(BlackArea(canvas), 60, 0.5);
}

TEST(PixelCanvas, CornersOfARoundedBoxStayClear) {
    CPixelCanvas canvas(20, 20, kWhite);
    canvas.FillRoundedBox({0, 0, 20, 20}, 6, kBlack, kBlack);
    EXPECT_EQ(canvas.At(0, 0), kWhite);
    EXPECT_EQ(canvas.At(19, 19), kWhite);
    EXPECT_EQ(canvas.At(10, 0), kBlack);
}

TEST(PixelCanvas, WhatLiesOutsideIsCutOff) {
    CPixelCanvas canvas(4, 4, kWhite);
    canvas.DrawLine({-100, -100}, {100, 100}, 1, kBlack);
    canvas.FillDisc({1e9F, 1e9F}, 3, kBlack);
    EXPECT_EQ(canvas.At(-1, 0), kBlack);
    EXPECT_EQ(canvas.At(0, 4), kBlack);
    EXPECT_NE(canvas.At(2, 2), kWhite);
}

TEST(PixelCanvas, PictureWithoutASizeIsEmpty) {
    CPixelCanvas canvas(-3, 5, kWhite);
    canvas.FillDisc({0, 0}, 3, kBlack);
    EXPECT_EQ(canvas.Width(), 0);
}

TEST(ToolbarPictures, EachButtonHasItsOwnPicture) {
    std::set<std::string> pictures;
    for (const ToolbarEntry& entry : kToolbar)
        if (entry.label == nullptr)
            pictures.insert(Bytes(DrawToolbarPicture(entry, ButtonLook::kNormal, false)));
    EXPECT_EQ(pictures.size(), 10U);
}

TEST(ToolbarPictures, EachStateLooksDifferent) {
    for (const ToolbarEntry& entry : kToolbar) {
        if (entry.button == ToolbarButton::kLogo) continue;
        std::set<std::string> pictures;
        for (const ButtonLook look :
             {ButtonLook::kNormal, ButtonLook::kHovered, ButtonLook::kPressed, ButtonLook::kDisabled})
            pictures.insert(Bytes(DrawToolbarPicture(entry, look, false)));
        EXPECT_EQ(pictures.size(), 4U) << static_cast<int>(entry.button);
    }
}

TEST(ToolbarPictures, ToggleThatIsOnIsSeenInEveryState) {
    const ToolbarEntry& cut = kToolbar[static_cast<std::size_t>(ToolbarButton::kCutMode)];
    for (const ButtonLook look :
         {ButtonLook::kNormal, ButtonLook::kHovered, ButtonLook::kPressed, ButtonLook::kDisabled})
        EXPECT_NE(Bytes(DrawToolbarPicture(cut, look, true)), Bytes(DrawToolbarPicture(cut, look, false)));
}

// A reader of pale pictures should still tell that a button does not answer.
TEST(ToolbarPictures, DisabledPictureHasLessContrast) {
    for (const ToolbarEntry& entry : kToolbar) {
        if (entry.button == ToolbarButton::kLogo || entry.label != nullptr) continue;
        const auto darkest = [&](ButtonLook look) {
            const CPixelCanvas picture = DrawToolbarPicture(entry, look, false);
            int least = 255;
            for (std::int32_t y = 2; y < picture.Height() - 2; ++y)
                for (std::int32_t x = 4; x < picture.Width() - 4; ++x)
                    least = std::min<int>(least, picture.At(x, y).green);
            return least;
        };
        EXPECT_GT(darkest(ButtonLook::kDisabled), darkest(ButtonLook::kNormal) + 40)
            << static_cast<int>(entry.button);
    }
}

} // namespace
} // namespace sonorelle
