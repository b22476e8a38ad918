#include "cli/curve_thinning.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace sonorelle {
namespace {

std::vector<Point> RandomCurve(std::size_t count, double width) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> anyY(0, 100);
    std::vector<Point> points;
    for (std::size_t i = 0; i < count; ++i)
        points.push_back({width * static_cast<double>(i) / static_cast<double>(count), anyY(random)});
    return points;
}

TEST(ThinLine, ShortCurvesStayAsTheyAre) {
    const std::vector<Point> points = {{0, 5}, {1.5, 3}, {2.2, 8}, {2.9, 8}};
    const std::vector<Point> thin = ThinLine(points);
    ASSERT_EQ(thin.size(), points.size());
    for (std::size_t i = 0; i < thin.size(); ++i) {
        EXPECT_EQ(thin[i].x, points[i].x);
        EXPECT_EQ(thin[i].y, points[i].y);
    }
    EXPECT_TRUE(ThinLine({}).empty());
}

TEST(ThinLine, KeepsExtremesAndEndsOfEachColumnInOrder) {
    const std::vector<Point> points = RandomCurve(20000, 300);
    const std::vector<Point> thin = ThinLine(points);
    EXPECT_LE(thin.size(), 4U * 300U);
    EXPECT_TRUE(
        std::is_sorted(thin.begin(), thin.end(), [](const Point& a, const Point& b) { return a.x < b.x; }));
    for (int column = 0; column < 300; ++column) { // the slow and obvious way
        const auto inColumn = [column](const std::vector<Point>& all) {
            std::vector<double> y;
            for (const Point& p : all) {
                if (p.x >= column && p.x < column + 1) y.push_back(p.y);
            }
            return y;
        };
        const std::vector<double> before = inColumn(points);
        const std::vector<double> after = inColumn(thin);
        ASSERT_FALSE(after.empty());
        EXPECT_EQ(*std::max_element(after.begin(), after.end()),
                  *std::max_element(before.begin(), before.end()));
        EXPECT_EQ(*std::min_element(after.begin(), after.end()),
                  *std::min_element(before.begin(), before.end()));
        EXPECT_EQ(after.front(), before.front());
        EXPECT_EQ(after.back(), before.back());
    }
}

TEST(UpperEnvelope, IsTheHighestPointOfEachColumn) {
    const std::vector<Point> envelope = UpperEnvelope({{0.1, 5}, {0.5, 2}, {0.9, 7}, {3.5, 4}, {4.0, 1}});
    ASSERT_EQ(envelope.size(), 3U);
    EXPECT_EQ(envelope[0].y, 2);
    EXPECT_EQ(envelope[1].y, 4);
    EXPECT_EQ(envelope[2].y, 1);
    EXPECT_TRUE(UpperEnvelope({}).empty());
}

} // namespace
} // namespace sonorelle
