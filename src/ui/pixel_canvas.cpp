#include "ui/pixel_canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace sonorelle {

namespace {

constexpr std::int32_t kChannels = 3;
constexpr std::int32_t kSamples = 4; // a side of a pixel, where a shape has no distance

float DistanceToSegment(CanvasPoint p, CanvasPoint a, CanvasPoint b) {
    const float dx = b.x - a.x;
    const float dy = b.y - a.y;
    const float length = dx * dx + dy * dy;
    const float along =
        length > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / length, 0.0F, 1.0F) : 0;
    return std::hypot(p.x - a.x - along * dx, p.y - a.y - along * dy);
}

// Below 0 inside.
float DistanceToRoundedBox(CanvasPoint p, CanvasBox box, float radius) {
    const float held = std::min({radius, box.width / 2, box.height / 2});
    const float dx = std::abs(p.x - box.x - box.width / 2) - box.width / 2 + held;
    const float dy = std::abs(p.y - box.y - box.height / 2) - box.height / 2 + held;
    return std::hypot(std::max(dx, 0.0F), std::max(dy, 0.0F)) + std::min(std::max(dx, dy), 0.0F) - held;
}

bool IsInside(CanvasPoint p, std::span<const CanvasPoint> points) {
    bool inside = false;
    for (std::size_t i = 0, before = points.size() - 1; i < points.size(); before = i++) {
        const CanvasPoint a = points[i];
        const CanvasPoint b = points[before];
        if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x)
            inside = !inside;
    }
    return inside;
}

} // namespace

CPixelCanvas::CPixelCanvas(std::int32_t canvasWidth, std::int32_t canvasHeight, Colour background)
    : width(std::max(canvasWidth, 0)), height(std::max(canvasHeight, 0)) {
    pixels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * kChannels);
    for (std::int32_t i = 0; i < width * height; ++i)
        pixels.insert(pixels.end(), {background.red, background.green, background.blue});
}

void CPixelCanvas::Blend(std::int32_t x, std::int32_t y, Colour colour, float share) {
    std::uint8_t* pixel = &pixels[static_cast<std::size_t>((y * width + x) * kChannels)];
    const Colour mixed = LerpColour({pixel[0], pixel[1], pixel[2]}, colour, share);
    pixel[0] = mixed.red;
    pixel[1] = mixed.green;
    pixel[2] = mixed.blue;
}

Colour CPixelCanvas::At(std::int32_t x, std::int32_t y) const {
    if (x < 0 || y < 0 || x >= width || y >= height) return kBlack;
    const std::uint8_t* pixel = &pixels[static_cast<std::size_t>((y * width + x) * kChannels)];
    return {pixel[0], pixel[1], pixel[2]};
}

// A pixel's share of a shape follows from how far its centre lies from the edge.
template<class Distance>
void CPixelCanvas::Fill(const Distance& distance, Colour top, Colour bottom) {
    for (std::int32_t y = 0; y < height; ++y) {
        const float down = height > 1 ? static_cast<float>(y) / static_cast<float>(height - 1) : 0;
        const Colour colour = LerpColour(top, bottom, down);
        for (std::int32_t x = 0; x < width; ++x) {
            const float share =
                0.5F - distance(CanvasPoint{static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.5F});
            if (share > 0) Blend(x, y, colour, share);
        }
    }
}

void CPixelCanvas::FillRoundedBox(CanvasBox box, float radius, Colour top, Colour bottom) {
    Fill([=](CanvasPoint p) { return DistanceToRoundedBox(p, box, radius); }, top, bottom);
}

void CPixelCanvas::StrokeRoundedBox(CanvasBox box, float radius, float lineWidth, Colour colour) {
    const auto distance = [=](CanvasPoint p) {
        return std::abs(DistanceToRoundedBox(p, box, radius) + lineWidth / 2) - lineWidth / 2;
    };
    Fill(distance, colour, colour);
}

void CPixelCanvas::DrawLine(CanvasPoint from, CanvasPoint to, float lineWidth, Colour colour) {
    Fill([=](CanvasPoint p) { return DistanceToSegment(p, from, to) - lineWidth / 2; }, colour, colour);
}

void CPixelCanvas::DrawLines(std::span<const CanvasPoint> points, float lineWidth, Colour colour) {
    const auto distance = [=](CanvasPoint p) {
        float nearest = INFINITY;
        for (std::size_t i = 1; i < points.size(); ++i)
            nearest = std::min(nearest, DistanceToSegment(p, points[i - 1], points[i]));
        return nearest - lineWidth / 2;
    };
    Fill(distance, colour, colour);
}

void CPixelCanvas::FillPolygon(std::span<const CanvasPoint> points, Colour colour) {
    if (points.size() < 3) return;
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            std::int32_t hits = 0;
            for (std::int32_t sample = 0; sample < kSamples * kSamples; ++sample) {
                const float right = (static_cast<float>(sample % kSamples) + 0.5F) / kSamples;
                const float down = (static_cast<float>(sample / kSamples) + 0.5F) / kSamples;
                hits +=
                    IsInside({static_cast<float>(x) + right, static_cast<float>(y) + down}, points) ? 1 : 0;
            }
            if (hits > 0) Blend(x, y, colour, static_cast<float>(hits) / (kSamples * kSamples));
        }
    }
}

void CPixelCanvas::FillDisc(CanvasPoint centre, float radius, Colour colour) {
    Fill([=](CanvasPoint p) { return std::hypot(p.x - centre.x, p.y - centre.y) - radius; }, colour, colour);
}

void CPixelCanvas::DrawCircle(CanvasPoint centre, float radius, float lineWidth, Colour colour) {
    const auto distance = [=](CanvasPoint p) {
        return std::abs(std::hypot(p.x - centre.x, p.y - centre.y) - radius) - lineWidth / 2;
    };
    Fill(distance, colour, colour);
}

void CPixelCanvas::DrawArc(CanvasPoint centre, float radius, float from, float sweep, float lineWidth,
                           Colour colour) {
    constexpr std::size_t kPoints = 24; // a chord is then far below a pixel from its arc
    std::array<CanvasPoint, kPoints> points;
    for (std::size_t i = 0; i < kPoints; ++i) {
        const float degrees = from + sweep * static_cast<float>(i) / static_cast<float>(kPoints - 1);
        const float angle = degrees * std::numbers::pi_v<float> / 180;
        points[i] = {centre.x + radius * std::cos(angle), centre.y - radius * std::sin(angle)};
    }
    DrawLines(points, lineWidth, colour);
}

} // namespace sonorelle
