#include "cli/svg_canvas.h"

#include "cli/unicode_text.h"
#include "platform/numbers.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr int kCoordinateDecimals = 2;
// Beyond the size of any picture; keeps the text of a number short whatever the data held.
constexpr double kCoordinateLimit = 1e6;
constexpr const char* kFontFamily = "DejaVu Sans, Verdana, Helvetica, Arial, sans-serif";
constexpr double kHaloWidth = 3;
// Mean advance of a character in ems. Verdana and DejaVu Sans are the widest of the family list.
constexpr double kEmsPerCharacter = 0.62;
constexpr double kEmsPerBoldCharacter = 0.7;

const char* AnchorName(TextAnchor anchor) {
    switch (anchor) {
    case TextAnchor::kStart:
        return "start";
    case TextAnchor::kMiddle:
        return "middle";
    case TextAnchor::kEnd:
        return "end";
    }
    return "start";
}

} // namespace

double EstimateTextWidth(std::string_view text, double size, bool bold) {
    const double ems = bold ? kEmsPerBoldCharacter : kEmsPerCharacter;
    return static_cast<double>(CountCharacters(text)) * ems * size;
}

std::string EscapeXml(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        const Utf8Character character = ReadUtf8(text, i);
        i += character.length;
        switch (character.codePoint) {
        case U'&':
            result += "&amp;";
            break;
        case U'<':
            result += "&lt;";
            break;
        case U'>':
            result += "&gt;";
            break;
        case U'"':
            result += "&quot;";
            break;
        case U'\'':
            result += "&#39;";
            break;
        case U'\t':
        case U'\n':
        case U'\r':
            result += ' ';
            break;
        case 0xFFFE:
        case 0xFFFF:
            break;
        default:
            if (!IsControl(character.codePoint)) AppendUtf8(result, character.codePoint);
        }
    }
    return result;
}

SvgCanvas::SvgCanvas(double width, double height, std::string_view title) {
    text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
            "version=\"1.1\"";
    Attribute("width", width);
    Attribute("height", height);
    text_ += " viewBox=\"0 0 ";
    Number(width);
    text_ += ' ';
    Number(height);
    text_ += '"';
    Attribute("font-family", kFontFamily);
    text_ += ">\n<title>" + EscapeXml(title) + "</title>\n";
}

void SvgCanvas::Rectangle(const Box& box, const Paint& paint, std::string_view tip) {
    text_ += "<rect";
    Attribute("x", box.x);
    Attribute("y", box.y);
    Attribute("width", std::max(box.width, 0.0));
    Attribute("height", std::max(box.height, 0.0));
    if (paint.cornerRadius > 0) Attribute("rx", paint.cornerRadius);
    ColourAttributes(paint);
    text_ += tip.empty() ? "/>\n" : "><title>" + EscapeXml(tip) + "</title></rect>\n";
}

void SvgCanvas::Line(Point from, Point to, const Stroke& stroke) {
    text_ += "<line";
    Attribute("x1", from.x);
    Attribute("y1", from.y);
    Attribute("x2", to.x);
    Attribute("y2", to.y);
    StrokeAttributes(stroke);
    text_ += "/>\n";
}

void SvgCanvas::Polyline(std::span<const Point> points, const Stroke& stroke) {
    if (points.empty()) return;
    text_ += "<polyline fill=\"none\" stroke-linejoin=\"round\" stroke-linecap=\"round\"";
    StrokeAttributes(stroke);
    const Point twice[] = {points[0], points[0]}; // two equal points with round ends show as a dot
    Points(points.size() == 1 ? std::span<const Point>(twice) : points);
    text_ += "/>\n";
}

void SvgCanvas::Polygon(std::span<const Point> points, Colour fill) {
    if (points.empty()) return;
    text_ += "<polygon";
    Attribute("fill", HexText(fill));
    Points(points);
    text_ += "/>\n";
}

void SvgCanvas::Text(Point at, std::string_view text, const TextStyle& style) {
    text_ += "<text";
    Attribute("x", at.x);
    Attribute("y", at.y);
    Attribute("font-size", style.size);
    Attribute("fill", HexText(style.colour));
    if (style.anchor != TextAnchor::kStart) Attribute("text-anchor", AnchorName(style.anchor));
    if (style.bold) Attribute("font-weight", "bold");
    if (style.halo) {
        StrokeAttributes({*style.halo, kHaloWidth});
        Attribute("stroke-linejoin", "round");
        Attribute("paint-order", "stroke");
    }
    text_ += '>';
    text_ += EscapeXml(text);
    text_ += "</text>\n";
}

void SvgCanvas::BeginClip(const Box& box) {
    const std::string name = "clip" + std::to_string(++clips_);
    text_ += "<clipPath";
    Attribute("id", name);
    text_ += ">\n";
    Rectangle(box, {});
    text_ += "</clipPath>\n<g";
    Attribute("clip-path", "url(#" + name + ")");
    text_ += ">\n";
}

void SvgCanvas::EndClip() { text_ += "</g>\n"; }

std::string SvgCanvas::Finish() && {
    text_ += "</svg>\n";
    return std::move(text_);
}

void SvgCanvas::Attribute(std::string_view name, double value) {
    text_ += ' ';
    text_ += name;
    text_ += "=\"";
    Number(value);
    text_ += '"';
}

void SvgCanvas::Attribute(std::string_view name, std::string_view value) {
    text_ += ' ';
    text_ += name;
    text_ += "=\"";
    text_ += value;
    text_ += '"';
}

void SvgCanvas::ColourAttributes(const Paint& paint) {
    Attribute("fill", paint.fill ? HexText(*paint.fill) : "none");
    if (paint.opacity < 1) Attribute("fill-opacity", paint.opacity);
    if (paint.outline) StrokeAttributes({*paint.outline, paint.outlineWidth});
}

void SvgCanvas::StrokeAttributes(const Stroke& stroke) {
    Attribute("stroke", HexText(stroke.colour));
    Attribute("stroke-width", stroke.width);
}

void SvgCanvas::Points(std::span<const Point> points) {
    text_ += " points=\"";
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i > 0) text_ += ' ';
        Number(points[i].x);
        text_ += ',';
        Number(points[i].y);
    }
    text_ += '"';
}

void SvgCanvas::Number(double value) {
    const double held = std::isnan(value) ? 0 : std::clamp(value, -kCoordinateLimit, kCoordinateLimit);
    std::string number = FormatFixed(held, kCoordinateDecimals);
    number.erase(number.find_last_not_of('0') + 1);
    if (number.back() == '.') number.pop_back();
    text_ += number == "-0" ? "0" : number;
}

} // namespace sonorelle
