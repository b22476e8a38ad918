// A drawing surface that writes SVG 1.1: a handful of shapes, each with its own colours, no style sheet, so
// that every viewer and converter shows the same picture.
//
//     SvgCanvas canvas(200, 100, "A square");
//     canvas.Rectangle({10, 10, 80, 80}, {.fill = kWhite});
//     std::string text = std::move(canvas).Finish();
//
// Coordinates are in pixels from the top left corner and are written with two decimals; those that are not
// finite, or larger than any picture, are drawn at the nearest end of the range. Text may hold any bytes:
// what XML cannot carry is left out or replaced.

#pragma once

#include "cli/colour.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace sonorelle {

struct Point {
    double x = 0;
    double y = 0;
};

struct Box {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    double Right() const { return x + width; }
    double Bottom() const { return y + height; }
};

struct Paint {
    std::optional<Colour> fill = std::nullopt;
    std::optional<Colour> outline = std::nullopt;
    double outlineWidth = 1;
    double cornerRadius = 0; // of rectangles
    double opacity = 1;      // of the filling
};

struct Stroke {
    Colour colour = kBlack;
    double width = 1;
};

enum class TextAnchor { kStart, kMiddle, kEnd };

struct TextStyle {
    double size = 12; // pixels
    Colour colour = kBlack;
    TextAnchor anchor = TextAnchor::kStart;
    bool bold = false;
    std::optional<Colour> halo = std::nullopt; // a rim around the letters that keeps them legible on lines
};

// A careful guess of a text's width in pixels: at least as wide as the common sans-serif fonts show it.
double EstimateTextWidth(std::string_view text, double size, bool bold = false);

class SvgCanvas {
public:
    SvgCanvas(double width, double height, std::string_view title);

    // `tip` appears when the pointer rests on the shape.
    void Rectangle(const Box& box, const Paint& paint, std::string_view tip = {});
    void Line(Point from, Point to, const Stroke& stroke);
    // Points in a row with round joins; a single one is a dot, none draws nothing.
    void Polyline(std::span<const Point> points, const Stroke& stroke);
    void Polygon(std::span<const Point> points, Colour fill);
    // `at`: the anchor on the base line.
    void Text(Point at, std::string_view text, const TextStyle& style);

    // Everything drawn between the two is cut at the box. Clips do not nest.
    void BeginClip(const Box& box);
    void EndClip();

    std::string Finish() &&;

private:
    void Attribute(std::string_view name, double value);
    void Attribute(std::string_view name, std::string_view value);
    void ColourAttributes(const Paint& paint);
    void StrokeAttributes(const Stroke& stroke);
    void Points(std::span<const Point> points);
    void Number(double value);

    std::string text_;
    int clips_ = 0;
};

// Text between XML tags or in quotes: the five special characters as entities, bytes that are not UTF-8 as
// U+FFFD, line ends and tabs as blanks, other characters that XML 1.0 forbids, and control characters, left
// out.
std::string EscapeXml(std::string_view text);

} // namespace sonorelle
