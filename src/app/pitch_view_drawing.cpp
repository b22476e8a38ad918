// What a face draws of the pitch view, computed from its values.

#include "app/pitch_view_drawing.h"

#include "app/pitch_view.h"
#include "app/time_display.h"
#include "dsp/finite.h"
#include "harmony/pitch_class.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {
namespace {

constexpr double kRowMiddle = 0.5;      // a pitch's row reaches from it to the next
constexpr float kShownOffset = 0.5F;    // semitones: nearer than that the note itself shows where it was sung
constexpr double kLeastBeatPixels = 6;  // between lines
constexpr double kLeastTimePixels = 70; // between texts

// Seconds between the texts of the ruler: 1, 2 or 5 of a decimal place below a minute, then minutes.
double NiceSeconds(double least) {
    for (const double step : {0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 20.0, 30.0}) {
        if (step >= least) return step;
    }
    double step = 60;
    while (step < least && step < 1e9) step *= 2;
    return step;
}

// The envelope between two samples as a polygon on the strip's lower edge; at its ends the envelope is cut
// where a straight line between its points passes.
class EnvelopePolygon {
public:
    EnvelopePolygon(const PitchViewAxes& viewAxes, const std::vector<PitchCurvePoint>& envelopePoints)
        : axes(viewAxes), points(envelopePoints) {}

    PixelPolyline Between(double from, double to) const {
        if (points.empty() || !(from < to)) return {};
        PixelPolyline polygon;
        polygon.push_back({axes.OverviewXFromSample(from), Floor()});
        polygon.push_back({axes.OverviewXFromSample(from), HeightAt(from)});
        for (const PitchCurvePoint& point : points) {
            if (!(point.position > from && point.position < to)) continue;
            polygon.push_back({axes.OverviewXFromSample(point.position), YOf(double{point.level})});
        }
        polygon.push_back({axes.OverviewXFromSample(to), HeightAt(to)});
        polygon.push_back({axes.OverviewXFromSample(to), Floor()});
        return polygon;
    }

private:
    std::int32_t Floor() const { return axes.layout.overviewHeight - 1; }
    std::int32_t YOf(double level) const { return Floor() - TruncateToI32(level * Floor()); }

    std::int32_t HeightAt(double sample) const {
        const auto behind =
            std::upper_bound(points.begin(), points.end(), sample,
                             [](double at, const PitchCurvePoint& point) { return at < point.position; });
        if (behind == points.begin()) return YOf(double{points.front().level});
        const PitchCurvePoint& before = *(behind - 1);
        if (behind == points.end()) return YOf(double{before.level});
        const double length = std::max(1.0, double{1} * behind->position - before.position);
        const double share = std::clamp((sample - before.position) / length, 0.0, 1.0);
        return YOf(double{before.level} * (1 - share) + double{behind->level} * share);
    }

    const PitchViewAxes& axes;
    const std::vector<PitchCurvePoint>& points;
};

} // namespace

// --- Notes ---

std::vector<NoteDrawing> CkvoPitchView::DrawNotes() const {
    std::vector<NoteDrawing> drawings;
    for (std::int32_t voice = 0; voice < voiceCount; ++voice) {
        for (const PitchViewNote& note : noteRows[static_cast<std::size_t>(voice)]) {
            if (!IsDrawn(voice, note)) continue;
            const CkvoPitchObject& object = note.object;
            NoteDrawing drawing;
            drawing.note = object.note;
            drawing.voice = voice;
            drawing.rect = axes.NoteRect(note.start, note.length, note.pitch, note.height);
            drawing.selected = note.selected != 0 || IsSelected(object.note, voice);
            drawing.hot = object.note == hotNote && voice == hotVoice;
            drawing.colour = drawing.selected ? object.selectColour : object.colour;
            drawing.style = object.BoxStyle();
            drawings.push_back(drawing);
        }
    }
    return drawings;
}

std::vector<RecordedPitchLine> CkvoPitchView::DrawRecordedPitch() const {
    std::vector<RecordedPitchLine> lines;
    for (const PitchViewNote& note : noteRows[0]) {
        if (!IsDrawn(0, note) || std::abs(note.offset) <= kShownOffset) continue;
        const double recorded = double{note.pitch} - double{note.offset} + kRowMiddle;
        const std::int32_t y = axes.YFromPitch(recorded);
        lines.push_back({note.object.note,
                         {axes.XFromSample(double{note.start}), y},
                         {axes.XFromSample(double{note.End()}), y},
                         note.object.colour});
    }
    return lines;
}

std::vector<PixelPolyline> CkvoPitchView::DrawCurve() const {
    std::vector<PixelPolyline> lines;
    if (!showFreqRow || !IsVoiceEnabled(0)) return lines;
    const double shift = double{GetTransposeShift()} - double{tuningOffset} + kRowMiddle;
    bool open = false;
    for (const PitchCurvePoint& point : curve) {
        const auto at = static_cast<float>(point.position);
        if (!point.voiced || at < axes.viewStart || at > axes.viewEnd) {
            open = false;
            continue;
        }
        if (!open) lines.emplace_back();
        open = true;
        const PixelPoint pixel{axes.XFromSample(point.position),
                               axes.YFromPitch(double{point.pitch} + shift)};
        PixelPolyline& line = lines.back();
        if (line.empty() || !(line.back() == pixel)) line.push_back(pixel);
    }
    return lines;
}

// --- Grid ---

std::vector<PitchRowDrawing> CkvoPitchView::DrawPitchRows() const {
    std::vector<PitchRowDrawing> rows;
    const PixelRect area = axes.layout.NoteArea();
    const std::int32_t shift = TruncateToI32(std::round(double{GetTransposeShift()}));
    const auto begin = scaleTones.begin();
    const auto end = begin + static_cast<std::ptrdiff_t>(scaleToneCount);
    const std::int32_t first = TruncateToI32(std::floor(double{axes.bottomPitch}));
    for (std::int32_t pitch = first; static_cast<float>(pitch) < axes.topPitch; ++pitch) {
        const std::int32_t tone = ConsortierClassic::PitchClass(std::int64_t{pitch} - shift);
        const std::int32_t top = axes.RowTopFromPitch(pitch);
        PitchRowDrawing row;
        row.rect = {area.x, top, area.width, std::max(1, axes.RowTopFromPitch(pitch - 1) - top)};
        row.pitch = pitch;
        row.name = NameOfPitch(pitch);
        row.blackKey = ConsortierClassic::IsBlackKey(pitch);
        row.inScale = std::find(begin, end, tone) != end;
        row.isRoot = scaleToneCount > 0 && tone == scaleRoot;
        rows.push_back(row);
    }
    return rows;
}

// When beats lie too close, only every second, fourth and so on of the bars is left.
std::vector<BeatLineDrawing> CkvoPitchView::DrawBeats() const {
    std::vector<BeatLineDrawing> lines;
    if (!showBeatRow || axes.viewEnd <= axes.viewStart) return lines;
    const BeatGrid grid = GetBeatGrid();
    const double pixels = grid.SamplesPerBeat() * double{axes.PixelsPerSample()};
    double step = pixels < kLeastBeatPixels ? grid.numerator : 1;
    while (step * pixels < kLeastBeatPixels) step *= 2;
    const double last = grid.BeatFromSample(double{axes.viewEnd});
    const double first = std::ceil(grid.BeatFromSample(double{axes.viewStart}) / step) * step;
    const auto count = TruncateToI32((last - first) / step);
    for (std::int32_t i = 0; i <= count && last >= first; ++i) {
        const double beat = first + i * step;
        const double bar = std::floor(beat / grid.numerator);
        BeatLineDrawing line;
        line.x = axes.XFromSample(grid.SampleFromBeat(beat));
        line.bar = TruncateToI32(bar + 1);
        line.beat = TruncateToI32(beat - bar * grid.numerator) + 1;
        line.strong = line.beat == 1;
        lines.push_back(line);
    }
    return lines;
}

std::vector<TimeLineDrawing> CkvoPitchView::DrawSeconds() const {
    std::vector<TimeLineDrawing> lines;
    if (showBeatRow || axes.viewEnd <= axes.viewStart) return lines;
    const double rate = double{GetSampleRate()};
    const double step = NiceSeconds(kLeastTimePixels / (double{axes.PixelsPerSample()} * rate)) * rate;
    const double first = std::ceil(double{axes.viewStart} / step);
    const double last = std::floor(double{axes.viewEnd} / step);
    const std::int32_t count = std::min(TruncateToI32(last - first), axes.layout.width);
    for (std::int32_t i = 0; i <= count; ++i) {
        const double sample = std::round((first + i) * step);
        lines.push_back({axes.XFromSample(sample), FormatTime(sample, GetSampleRate())});
    }
    return lines;
}

// --- Header ---

OverviewDrawing CkvoPitchView::DrawOverview() const {
    const OverviewHandles handles = PlaceOverviewHandles(axes);
    const EnvelopePolygon polygon(axes, envelope);
    OverviewDrawing drawing;
    drawing.strip = axes.layout.Overview();
    drawing.visibleRange = handles.body;
    drawing.leftHandle = handles.left;
    drawing.rightHandle = handles.right;
    drawing.before = polygon.Between(double{axes.totalStart}, double{axes.viewStart});
    drawing.visible = polygon.Between(double{axes.viewStart}, double{axes.viewEnd});
    drawing.behind = polygon.Between(double{axes.viewEnd}, double{axes.totalEnd});
    return drawing;
}

// Each handle lies on the inner side of its line, where the play range is, as far as the ruler has room
// there.
std::array<MarkerDrawing, 2> CkvoPitchView::DrawMarkers() const {
    constexpr std::int32_t kWidth = PitchViewLayout::kHandleWidth;
    constexpr std::int32_t kHeight = PitchViewLayout::kHandleHeight;
    const MarkerPair pair = markers.load(std::memory_order_relaxed);
    const PixelRect ruler = axes.layout.Ruler();
    const auto place = [&](std::int32_t sample, std::int32_t left) {
        const std::int32_t x = axes.XFromSample(sample);
        const std::int32_t right = ruler.x + ruler.width;
        const bool inSight = x >= ruler.x && x <= right;
        const std::int32_t handle =
            inSight ? std::max(ruler.x, std::min(x + left, right - kWidth)) : x + left;
        return MarkerDrawing{{handle, ruler.y, kWidth, kHeight}, x, inSight};
    };
    return {place(pair.start, 0), place(pair.end, -kWidth)};
}

std::array<ToggleDrawing, 3> CkvoPitchView::DrawToggles() const {
    const auto toggle = [this](std::int32_t row, const char* label, bool on) {
        return ToggleDrawing{axes.layout.Toggle(row), label, on, on ? kOrange : kPanelColour,
                             on ? kWhite : kLabelColour};
    };
    return {toggle(0, "Key", showKeyRow), toggle(1, "Freq", showFreqRow), toggle(2, "Beat", showBeatRow)};
}

// Each name has the room up to the next note.
std::vector<ChordDrawing> CkvoPitchView::DrawChords() const {
    std::vector<ChordDrawing> chords;
    const PixelRect area = axes.layout.ChordRow();
    const std::vector<PitchViewNote>& row = noteRows[0];
    for (std::size_t i = 0; i < row.size(); ++i) {
        const PitchViewNote& note = row[i];
        if (!IsInView(note) || note.length <= 0) continue;
        ChordDrawing chord;
        chord.note = note.object.note;
        chord.name = NameOfChord(note.chordRoot, note.chordType);
        chord.detectedName = NameOfChord(note.detectedRoot, note.detectedType);
        if (chord.name.empty() && chord.detectedName.empty()) continue;
        const bool hasNext = i + 1 < row.size() && row[i + 1].start > note.start;
        const float end = hasNext ? row[i + 1].start : note.End();
        const std::int32_t x = std::max(area.x, axes.XFromSample(double{note.start}));
        const std::int32_t right = std::min(area.x + area.width, axes.XFromSample(double{end}));
        chord.rect = {x, area.y, std::max(1, right - x), area.height};
        const std::int32_t colour = ConsortierClassic::PitchClass(note.chordRoot);
        chord.colour = kChordColours[static_cast<std::size_t>(colour)];
        chords.push_back(chord);
    }
    return chords;
}

PositionDrawing CkvoPitchView::DrawPosition() const {
    const PixelRect area = axes.layout.NoteArea();
    const std::int32_t x = axes.XFromSample(GetPlayPosition());
    return {x, x >= area.x && x < area.x + area.width, IsPlaying()};
}

} // namespace sonorelle
