#include "cli/curve_thinning.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

bool LiesLower(const Point& a, const Point& b) { return a.y < b.y; }

// The end (exclusive) of the points that share a pixel column with the one at `first`.
std::size_t EndOfColumn(const std::vector<Point>& points, std::size_t first) {
    const double column = std::floor(points[first].x);
    std::size_t end = first + 1;
    while (end < points.size() && std::floor(points[end].x) == column) ++end;
    return end;
}

} // namespace

std::vector<Point> ThinLine(const std::vector<Point>& points) {
    std::vector<Point> thin;
    for (std::size_t first = 0; first < points.size();) {
        const std::size_t end = EndOfColumn(points, first);
        const auto begin = points.begin() + static_cast<std::ptrdiff_t>(first);
        const auto [lowest, highest] =
            std::minmax_element(begin, points.begin() + static_cast<std::ptrdiff_t>(end), LiesLower);
        std::size_t kept[] = {first, static_cast<std::size_t>(lowest - points.begin()),
                              static_cast<std::size_t>(highest - points.begin()), end - 1};
        std::sort(std::begin(kept), std::end(kept));
        const auto keptEnd = std::unique(std::begin(kept), std::end(kept));
        std::for_each(std::begin(kept), keptEnd, [&](std::size_t i) { thin.push_back(points[i]); });
        first = end;
    }
    return thin;
}

std::vector<Point> UpperEnvelope(const std::vector<Point>& points) {
    std::vector<Point> envelope;
    for (std::size_t first = 0; first < points.size();) {
        const std::size_t end = EndOfColumn(points, first);
        envelope.push_back(*std::min_element(points.begin() + static_cast<std::ptrdiff_t>(first),
                                             points.begin() + static_cast<std::ptrdiff_t>(end), LiesLower));
        first = end;
    }
    return envelope;
}

} // namespace sonorelle
