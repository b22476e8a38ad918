#include "ui/label_drawing.h"

#include "ui/label_text.h"
#include "ui/theme.h"

#include <FL/fl_draw.H>

#include <algorithm>
#include <cmath>
#include <vector>

namespace sonorelle {

namespace {

struct LineSize {
    int width = 0;
    int height = 0;
    int descent = 0;
};

void UseFont(const LabelRun& run) { fl_font(run.bold ? FL_HELVETICA_BOLD : FL_HELVETICA, run.size); }

// Of the fonts that a label's text has: a size chosen for arrows is smaller than one for letters.
int WidthOf(const LabelRun& run) {
    if (run.shape != LabelShape::kText) return run.size + 2;
    UseFont(run);
    return static_cast<int>(std::ceil(fl_width(run.text.data(), static_cast<int>(run.text.size()))));
}

std::vector<LineSize> SizesOf(const std::vector<LabelRun>& runs, int size) {
    std::vector<LineSize> lines(1);
    for (const LabelRun& run : runs) {
        if (static_cast<std::size_t>(run.line) >= lines.size())
            lines.resize(static_cast<std::size_t>(run.line) + 1);
        LineSize& line = lines[static_cast<std::size_t>(run.line)];
        line.width += WidthOf(run);
        UseFont(run);
        line.height = std::max(line.height, fl_height());
        line.descent = std::max(line.descent, fl_descent());
    }
    fl_font(FL_HELVETICA, std::clamp(size, 1, kLargestLabel));
    for (LineSize& line : lines)
        if (line.height == 0) line = {line.width, fl_height(), fl_descent()};
    return lines;
}

LabelSize SumOf(const std::vector<LineSize>& lines) {
    LabelSize sum;
    for (const LineSize& line : lines) {
        sum.width = std::max(sum.width, line.width);
        sum.height += line.height;
    }
    return sum;
}

void DrawArrow(const LabelRun& run, int x, int baseline) {
    const int half = std::max(run.size / 2, 2);
    const int middle = baseline - half - 1;
    const int tip = run.shape == LabelShape::kArrowLeft ? x : x + run.size;
    const int foot = run.shape == LabelShape::kArrowLeft ? x + run.size : x;
    fl_polygon(tip, middle, foot, middle - half, foot, middle + half);
}

} // namespace

LabelSize MeasureLabel(std::string_view label, int size) {
    return SumOf(SizesOf(ParseLabel(label, size), size));
}

void DrawLabel(std::string_view label, int size, Placement box, LabelAlign align, Colour colour) {
    const std::vector<LabelRun> runs = ParseLabel(label, size);
    const std::vector<LineSize> lines = SizesOf(runs, size);
    const auto startOf = [&](int line) {
        const int spare = box.width - lines[static_cast<std::size_t>(line)].width;
        return box.x + (align == LabelAlign::kCentre ? spare / 2 : 0);
    };
    int line = 0;
    int x = startOf(0);
    int bottom = box.y + (box.height - SumOf(lines).height) / 2 + lines.front().height;
    fl_color(ToolkitColour(colour));
    for (const LabelRun& run : runs) {
        while (line < run.line) {
            ++line;
            x = startOf(line);
            bottom += lines[static_cast<std::size_t>(line)].height;
        }
        const int baseline = bottom - lines[static_cast<std::size_t>(line)].descent + run.lower;
        if (run.shape == LabelShape::kText) {
            UseFont(run);
            fl_draw(run.text.data(), static_cast<int>(run.text.size()), x, baseline);
        } else {
            DrawArrow(run, x, baseline);
        }
        x += WidthOf(run);
    }
}

} // namespace sonorelle
