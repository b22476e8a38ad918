#include "ui/pitch_view_face.h"

#include "app/pitch_view.h"
#include "ui/label_drawing.h"
#include "ui/theme.h"

#include <FL/fl_draw.H>

#include <cstddef>
#include <string>
#include <vector>

namespace sonorelle {

namespace {

constexpr int kSmallText = 9; // pixels
constexpr Colour kRowColour = kWhite;
constexpr Colour kBlackKeyRow = ColourFromRgb(0xeef0f3);
constexpr Colour kBlackKey = ColourFromRgb(0x5b6470);
constexpr Colour kScaleRow = ColourFromRgb(0xe6f0e6);
constexpr Colour kRootRow = ColourFromRgb(0xd2e6d2);
constexpr Colour kGridLine = ColourFromRgb(0xdfe3e8);
constexpr Colour kStrongLine = ColourFromRgb(0xb4bcc6);
constexpr Colour kCurveColour = ColourFromRgb(0x6a7480);
constexpr Colour kMarkerColour = ColourFromRgb(0x404a56);
constexpr Colour kPositionColour = kVoiceColours[1];

// Draws in the view's own coordinates.
class Painter {
public:
    Painter(const CkvoPitchView& pitchView, Placement viewPlace)
        : view(pitchView), place(viewPlace), layout(pitchView.GetAxes().layout) {}

    void Draw() const {
        fl_push_clip(place.x, place.y, place.width, place.height);
        Fill({0, 0, place.width, place.height}, kPanelColour);
        DrawOverview();
        DrawAxis();
        const PixelRect area = layout.NoteArea();
        fl_push_clip(place.x + area.x, place.y + area.y, area.width, area.height);
        DrawGrid();
        DrawNotes();
        fl_pop_clip();
        DrawRuler();
        DrawChords();
        DrawToggles();
        DrawMarkers();
        DrawPosition();
        fl_pop_clip();
    }

private:
    static void Use(Colour colour) { fl_color(ToolkitColour(colour)); }

    void Fill(PixelRect rect, Colour colour) const {
        Use(colour);
        fl_rectf(place.x + rect.x, place.y + rect.y, rect.width, rect.height);
    }
    void Outline(PixelRect rect, Colour colour) const {
        Use(colour);
        fl_rect(place.x + rect.x, place.y + rect.y, rect.width, rect.height);
    }
    void Line(PixelPoint from, PixelPoint to) const {
        fl_line(place.x + from.x, place.y + from.y, place.x + to.x, place.y + to.y);
    }
    void Down(std::int32_t x, std::int32_t top, std::int32_t bottom) const {
        fl_yxline(place.x + x, place.y + top, place.y + bottom);
    }
    void Text(const std::string& text, PixelRect rect, LabelAlign align, Colour colour) const {
        DrawLabel(text, kSmallText, {place.x + rect.x, place.y + rect.y, rect.width, rect.height}, align,
                  colour);
    }
    void Polygon(const PixelPolyline& points, Colour colour) const {
        if (points.size() < 3) return;
        Use(colour);
        fl_begin_complex_polygon();
        for (const PixelPoint& point : points) fl_vertex(place.x + point.x, place.y + point.y);
        fl_end_complex_polygon();
    }

    void DrawOverview() const {
        const OverviewDrawing overview = view.DrawOverview();
        Fill(overview.strip, kWhite);
        Fill(overview.visibleRange, LerpColour(kPanelColour, kWhite, 0.3F));
        Polygon(overview.before, kOverviewOutside);
        Polygon(overview.visible, LerpColour(kVoiceColours[0], kWhite, 0.25F));
        Polygon(overview.behind, kOverviewOutside);
        for (const PixelRect& handle : {overview.leftHandle, overview.rightHandle}) {
            Fill(handle, LerpColour(kPanelColour, kWhite, 0.5F));
            Outline(handle, kFrameColour);
        }
        Outline(overview.strip, kFrameColour);
    }

    // Names stand on their keys where there is room, else only at each C.
    void DrawAxis() const {
        const PixelRect axis = layout.PitchAxis();
        const std::vector<PitchRowDrawing> rows = view.DrawPitchRows();
        fl_push_clip(place.x + axis.x, place.y + axis.y, axis.width, axis.height);
        Fill(axis, kWhite);
        for (const PitchRowDrawing& row : rows) {
            const std::int32_t width = row.blackKey ? axis.width * 3 / 5 : axis.width - 1;
            Fill({axis.x, row.rect.y, width, row.rect.height}, row.blackKey ? kBlackKey : kWhite);
            Use(kGridLine);
            Line({axis.x, row.rect.y}, {axis.x + axis.width, row.rect.y});
        }
        for (const PitchRowDrawing& row : rows) {
            const bool roomy = row.rect.height >= kSmallText + 1;
            if (row.blackKey || (!roomy && row.pitch % 12 != 0)) continue;
            const std::int32_t middle = row.rect.y + row.rect.height / 2;
            Text(row.name, {axis.x + axis.width - 16, middle - 6, 14, 12}, LabelAlign::kCentre, kLabelColour);
        }
        fl_pop_clip();
    }

    Colour RowColour(const PitchRowDrawing& row) const {
        if (view.GetShowKeyRow() && row.isRoot) return kRootRow;
        if (view.GetShowKeyRow() && row.inScale) return kScaleRow;
        return row.blackKey ? kBlackKeyRow : kRowColour;
    }

    void DrawGrid() const {
        const PixelRect area = layout.NoteArea();
        Fill(area, kRowColour);
        for (const PitchRowDrawing& row : view.DrawPitchRows()) {
            Fill(row.rect, RowColour(row));
            Use(kGridLine);
            Line({area.x, row.rect.y}, {area.x + area.width, row.rect.y});
        }
        for (const BeatLineDrawing& beat : view.DrawBeats()) {
            Use(beat.strong ? kStrongLine : kGridLine);
            Down(beat.x, area.y, area.y + area.height);
        }
        Use(kGridLine);
        for (const TimeLineDrawing& time : view.DrawSeconds()) Down(time.x, area.y, area.y + area.height);
    }

    void DrawNotes() const {
        for (const NoteDrawing& note : view.DrawNotes()) {
            const bool off = note.style == PitchBoxStyle::kOff;
            const Colour fill = off ? LerpColour(note.colour, kWhite, 0.75F) : note.colour;
            Fill(note.rect, note.hot ? LerpColour(fill, kWhite, 0.3F) : fill);
            const bool visible = note.rect.width > 2 && note.rect.height > 2;
            if (visible) Outline(note.rect, LerpColour(note.colour, kBlack, note.selected ? 0.7F : 0.35F));
        }
        fl_line_style(FL_SOLID, RecordedPitchLine::kWidth);
        for (const RecordedPitchLine& line : view.DrawRecordedPitch()) {
            Use(line.colour);
            Line(line.from, line.to);
        }
        fl_line_style(FL_SOLID, 0);
        Use(kCurveColour);
        for (const PixelPolyline& piece : view.DrawCurve())
            for (std::size_t i = 1; i < piece.size(); ++i) Line(piece[i - 1], piece[i]);
    }

    // A handle of a marker lies over the ruler's left part; a time stands beside it.
    std::int32_t BesideHandles(std::int32_t x) const {
        for (const MarkerDrawing& marker : view.DrawMarkers()) {
            const std::int32_t right = marker.handle.x + marker.handle.width;
            if (marker.inSight && x >= marker.handle.x && x < right) return right;
        }
        return x;
    }

    void DrawRuler() const {
        const PixelRect ruler = layout.Ruler();
        fl_push_clip(place.x + ruler.x, place.y + ruler.y, ruler.width, ruler.height);
        Fill(ruler, LerpColour(kPanelColour, kWhite, 0.4F));
        for (const TimeLineDrawing& time : view.DrawSeconds()) {
            const std::int32_t left = BesideHandles(time.x) + 2;
            const PixelRect rest{left, ruler.y, ruler.x + ruler.width - left, ruler.height};
            if (MeasureLabel(time.text, kSmallText).width <= rest.width)
                Text(time.text, rest, LabelAlign::kLeft, kLabelColour);
        }
        for (const BeatLineDrawing& beat : view.DrawBeats()) {
            Use(kStrongLine);
            Down(beat.x, ruler.y + (beat.strong ? 0 : ruler.height / 2), ruler.y + ruler.height);
        }
        fl_pop_clip();
    }

    // A name only where there is room for all of it.
    void DrawChords() const {
        const PixelRect row = layout.ChordRow();
        fl_push_clip(place.x + row.x, place.y + row.y, row.width, row.height);
        for (const ChordDrawing& chord : view.DrawChords()) {
            Fill(chord.rect, LerpColour(chord.colour, kWhite, 0.45F));
            if (chord.rect.width > 2) Outline(chord.rect, LerpColour(chord.colour, kBlack, 0.3F));
            if (MeasureLabel(chord.name, kSmallText).width + 2 <= chord.rect.width)
                Text(chord.name, chord.rect, LabelAlign::kCentre, kLabelColour);
        }
        fl_pop_clip();
    }

    void DrawToggles() const {
        for (const ToggleDrawing& toggle : view.DrawToggles()) {
            Fill(toggle.rect, toggle.background);
            Outline(toggle.rect, kFrameColour);
            Text(toggle.label, toggle.rect, LabelAlign::kCentre, toggle.labelColour);
        }
    }

    void DrawMarkers() const {
        const PixelRect area = layout.NoteArea();
        for (const MarkerDrawing& marker : view.DrawMarkers()) {
            if (!marker.inSight) continue;
            Fill(marker.handle, kMarkerColour);
            Down(marker.lineX, area.y, area.y + area.height);
        }
    }

    void DrawPosition() const {
        const PositionDrawing position = view.DrawPosition();
        if (!position.inSight) return;
        const PixelRect area = layout.NoteArea();
        Use(position.playing ? kPositionColour : LerpColour(kPositionColour, kWhite, 0.4F));
        Down(position.x, area.y, area.y + area.height);
    }

    const CkvoPitchView& view;
    const Placement place;
    const PitchViewLayout& layout;
};

} // namespace

void DrawPitchView(const CkvoPitchView& view, Placement place) { Painter(view, place).Draw(); }

} // namespace sonorelle
