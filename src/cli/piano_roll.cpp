// The picture is drawn from the back to the front:
//   1. ground and titles
//   2. lanes: light for white keys, darker for black ones, and a line below each C
//   3. time lines, through lanes and loudness strip
//   4. loudness strip
//   5. note bars, from the last voice to the lead
//   6. the pitch curve over the bars
//   7. names of notes above their bars, kept legible by a halo, or in them
//   8. a veil over what lies outside of the region
//   9. chord names, keyboard, axis labels and frames
#include "cli/piano_roll.h"

#include "cli/colour.h"
#include "cli/curve_thinning.h"
#include "cli/note_names.h"
#include "cli/unicode_text.h"
#include "platform/numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace sonorelle {

namespace {

constexpr Colour kGround = kPanelColour;
constexpr Colour kInk = ColourFromRgb(0x22272e);      // titles and names
constexpr Colour kFaintInk = ColourFromRgb(0x4f5863); // axis labels, 5 to 1 on the ground
constexpr Colour kWhiteLane = LerpColour(kWhite, kGround, 0.15F);
constexpr Colour kBlackLane = LerpColour(kWhite, kGround, 0.55F);
constexpr Colour kLaneLine = LerpColour(kWhite, kGround, 0.8F);
constexpr Colour kKeyLine = LerpColour(kBlack, kGround, 0.85F);
constexpr Colour kTimeLine = LerpColour(kBlack, kGround, 0.93F);
constexpr Colour kOctaveLine = LerpColour(kBlack, kGround, 0.7F);
constexpr Colour kFrame = LerpColour(kBlack, kGround, 0.55F);
constexpr Colour kLoudness = LerpColour(kBlack, kGround, 0.72F);
constexpr Colour kBlackKey = ColourFromRgb(0x2b3038);
constexpr float kCurveShade =
    0.4F; // of the lead's colour over black: the same hue, dark enough to show on its bars

constexpr double kTitleSize = 18;
constexpr double kTitleBase = 42;
constexpr double kSubtitleSize = 12.5;
constexpr double kSubtitleBase = 64;
constexpr double kLabelSize = 11;
constexpr double kNameSize = 10.5;
constexpr double kNameGap = 3;       // between a bar and its name
constexpr double kBarShare = 0.84;   // of a lane's height
constexpr double kSmallestBar = 1.5; // pixels: shorter notes still show
constexpr double kBarRadius = 3;
constexpr double kBlackKeyShare = 0.6; // of a white key's length
constexpr double kKeyLabelInset = 5;
constexpr double kTickLength = 6;
constexpr double kMinorTickLength = 3;
constexpr double kTickLabelBase = 18;     // below the loudness strip
constexpr double kTickLabelOverhang = 16; // of the last label into the margin
constexpr double kSwatchWidth = 18;
constexpr double kSwatchHeight = 10;
constexpr double kSwatchGap = 5;
constexpr double kLegendGap = 16;
constexpr double kBarNameSize = 9.5;
constexpr double kBarNameInset = 3;
constexpr double kChordSize = 12;
constexpr double kChordInset = 3; // between a chord's mark and its name
constexpr std::size_t kMostChordLines = 3;
constexpr double kChordMarkGap = 3; // above the mark
constexpr double kChordBase = 6;    // of the lower line above the row's end
constexpr double kVeilOpacity = 0.7;
constexpr double kCurveWidth = 1.5;
// Long recordings are drawn small: a finer line keeps vibrato from filling its bar.
constexpr double kFineCurveWidth = 0.8;
constexpr double kFineCurveScale = 30; // pixels a second, from here down

Paint BarPaint(const RollVoice& voice) {
    const Colour colour = kVoiceColours[voice.colour % kVoiceColours.size()];
    return {.fill = WidgetColour(colour), .outline = colour, .outlineWidth = 1.4, .cornerRadius = kBarRadius};
}

struct PlacedChord {
    double x = 0;    // of its mark, where the chord begins
    double left = 0; // of its name
    int line = 0;    // from the lowest
    std::string name;
};

// Each name begins at its chord's start, on the lowest line where no name before it is in the way. What finds
// no place on the highest line either keeps its mark, without a name.
std::vector<PlacedChord> PlaceChords(const PianoRoll& roll) {
    const RollLayout layout = LayOutRoll(roll.seconds, roll.span, roll.format);
    const Box& row = layout.chords;
    std::array<double, kMostChordLines> free; // from where on each line is free
    free.fill(row.x);
    std::vector<PlacedChord> placed;
    for (const RollChord& chord : roll.chords) {
        const double x = std::clamp(layout.XOf(chord.startSeconds), row.x, row.Right());
        const double width = EstimateTextWidth(chord.name, kChordSize, true);
        const double left = std::min(x + kChordInset, row.Right() - width);
        const auto line =
            std::find_if(free.begin(), free.end(), [left](double from) { return left >= from; });
        if (line == free.end()) {
            placed.push_back({x, left, 0, ""});
            continue;
        }
        *line = left + width + kChordInset;
        placed.push_back({x, left, static_cast<int>(line - free.begin()), chord.name});
    }
    return placed;
}

int CountLines(const std::vector<PlacedChord>& chords) {
    int lines = 0;
    for (const PlacedChord& chord : chords) lines = std::max(lines, chord.line + 1);
    return lines;
}

RollFormat FormatWith(RollFormat format, const std::vector<PlacedChord>& chords) {
    format.chordLines = CountLines(chords);
    return format;
}

class Drawing {
public:
    explicit Drawing(const PianoRoll& roll)
        : roll_(roll), chords_(PlaceChords(roll)),
          layout_(LayOutRoll(roll.seconds, roll.span, FormatWith(roll.format, chords_))),
          ticks_(ChooseTicks(layout_.seconds, layout_.pixelsPerSecond)),
          canvas_(layout_.width, layout_.height, roll.title) {}

    std::string Draw() && {
        DrawGround();
        DrawLegend();
        DrawLanes();
        DrawLoudnessGround();
        DrawTimeLines();
        DrawLoudness();
        canvas_.BeginClip(layout_.lanes);
        for (auto voice = roll_.voices.rbegin(); voice != roll_.voices.rend(); ++voice) DrawBars(*voice);
        DrawCurve();
        for (const RollVoice& voice : roll_.voices) DrawNames(voice);
        DrawVeil();
        canvas_.EndClip();
        DrawChords();
        DrawKeys();
        DrawTimeAxis();
        DrawFrames();
        return std::move(canvas_).Finish();
    }

private:
    void DrawGround();
    void DrawLanes();
    double LegendWidth() const; // with a gap in front; 0 where there is none
    void DrawLegend();
    void DrawLoudnessGround() {
        if (roll_.format.hasLoudness) canvas_.Rectangle(layout_.loudness, {.fill = kWhiteLane});
    }
    void DrawTimeLines();
    void DrawLoudness();
    void DrawBars(const RollVoice& voice);
    void DrawCurve();
    void DrawNames(const RollVoice& voice);
    void DrawNameInBar(const RollNote& note, const std::string& name);
    void DrawVeil();
    void DrawChords();
    void DrawKeys();
    void DrawTimeAxis();
    void DrawFrames();

    // Calls onTick(seconds, index) for every multiple of `step` on the time axis.
    template<class OnTick>
    void ForEachTick(double step, OnTick onTick) const;
    bool IsVisible(const RollNote& note) const;
    Box BarOf(const RollNote& note) const;

    const PianoRoll& roll_;
    const std::vector<PlacedChord> chords_;
    const RollLayout layout_;
    const TimeTicks ticks_;
    SvgCanvas canvas_;
};

template<class OnTick>
void Drawing::ForEachTick(double step, OnTick onTick) const {
    const auto last = static_cast<int>(std::floor(layout_.seconds / step + 1e-9));
    for (int i = 0; i <= last; ++i) onTick(i * step, i);
}

bool Drawing::IsVisible(const RollNote& note) const {
    return note.midiPitch >= static_cast<float>(layout_.span.lowest) - 0.5F &&
           note.midiPitch <= static_cast<float>(layout_.span.highest) + 0.5F;
}

Box Drawing::BarOf(const RollNote& note) const {
    const double whole = layout_.laneHeight * kBarShare;
    const double height = whole / std::max(note.strips, 1);
    const double left = layout_.XOf(note.startSeconds);
    const double top = layout_.YOf(static_cast<double>(note.midiPitch)) - whole / 2 + note.strip * height;
    return {left, top, std::max(layout_.XOf(note.endSeconds) - left, kSmallestBar), height};
}

void Drawing::DrawGround() {
    canvas_.Rectangle({0, 0, layout_.width, layout_.height}, {.fill = kGround});
    const double room = layout_.lanes.Right() - layout_.keys.x - LegendWidth();
    const auto limit = static_cast<std::size_t>(room / EstimateTextWidth("m", kTitleSize, true));
    canvas_.Text({layout_.keys.x, kTitleBase}, ShortenMiddle(roll_.title, limit),
                 {.size = kTitleSize, .colour = kInk, .bold = true});
    canvas_.Text({layout_.keys.x, kSubtitleBase}, roll_.subtitle,
                 {.size = kSubtitleSize, .colour = kFaintInk});
}

double Drawing::LegendWidth() const {
    double width = 0;
    for (const RollVoice& voice : roll_.voices)
        if (!voice.name.empty())
            width += kSwatchWidth + kSwatchGap + EstimateTextWidth(voice.name, kLabelSize) + kLegendGap;
    return width;
}

// At the right end of the title's line.
void Drawing::DrawLegend() {
    double x = layout_.lanes.Right() - LegendWidth() + kLegendGap;
    for (const RollVoice& voice : roll_.voices) {
        if (voice.name.empty()) continue;
        canvas_.Rectangle({x, kTitleBase - kSwatchHeight + 1, kSwatchWidth, kSwatchHeight}, BarPaint(voice));
        x += kSwatchWidth + kSwatchGap;
        canvas_.Text({x, kTitleBase}, voice.name, {.size = kLabelSize, .colour = kInk});
        x += EstimateTextWidth(voice.name, kLabelSize) + kLegendGap;
    }
}

void Drawing::DrawLanes() {
    canvas_.Rectangle(layout_.lanes, {.fill = kWhiteLane});
    for (std::int32_t note = layout_.span.lowest; note <= layout_.span.highest; ++note) {
        const double top = layout_.LaneTop(note);
        const Box lane{layout_.lanes.x, top, layout_.lanes.width, layout_.laneHeight};
        if (IsBlackKey(note)) canvas_.Rectangle(lane, {.fill = kBlackLane});
    }
    for (std::int32_t note = layout_.span.lowest + 1; note <= layout_.span.highest; ++note) {
        const double bottom = layout_.LaneTop(note - 1);
        const bool isOctave = note % 12 == 0;
        const bool isBetweenWhite = !IsBlackKey(note) && !IsBlackKey(note - 1);
        if (!isOctave && !isBetweenWhite) continue;
        canvas_.Line({layout_.lanes.x, bottom}, {layout_.lanes.Right(), bottom},
                     isOctave ? Stroke{kOctaveLine, 1} : Stroke{kLaneLine, 1});
    }
}

void Drawing::DrawTimeLines() {
    ForEachTick(ticks_.step, [this](double seconds, int index) {
        if (index == 0) return;
        const double x = layout_.XOf(seconds);
        canvas_.Line({x, layout_.lanes.y}, {x, layout_.lanes.Bottom()}, {kTimeLine, 1});
        if (roll_.format.hasLoudness)
            canvas_.Line({x, layout_.loudness.y}, {x, layout_.loudness.Bottom()}, {kTimeLine, 1});
    });
}

void Drawing::DrawLoudness() {
    if (!roll_.format.hasLoudness) return;
    const Box& strip = layout_.loudness;
    std::vector<Point> points;
    for (const RollPoint& point : roll_.curve) {
        const double loudness = point.loudness > 0 ? std::min(static_cast<double>(point.loudness), 1.0) : 0.0;
        points.push_back({layout_.XOf(point.seconds), strip.Bottom() - loudness * strip.height});
    }
    if (points.empty()) return;
    std::vector<Point> outline = UpperEnvelope(points);
    outline.insert(outline.begin(), {outline.front().x, strip.Bottom()});
    outline.push_back({outline.back().x, strip.Bottom()});
    canvas_.BeginClip(strip);
    canvas_.Polygon(outline, kLoudness);
    canvas_.EndClip();
}

// Pictures in a text are shown without tips.
void Drawing::DrawBars(const RollVoice& voice) {
    const Paint paint = BarPaint(voice);
    for (const RollNote& note : voice.notes) {
        if (!IsVisible(note)) continue;
        canvas_.Rectangle(BarOf(note), paint,
                          roll_.format.isSmall
                              ? ""
                              : PitchText(note.midiPitch) + ", " + FormatFixed(note.startSeconds, 3) +
                                    " to " + FormatFixed(note.endSeconds, 3) + " s");
    }
}

void Drawing::DrawCurve() {
    const Stroke stroke{LerpColour(kBlack, kVoiceColours[0], kCurveShade),
                        layout_.pixelsPerSecond > kFineCurveScale ? kCurveWidth : kFineCurveWidth};
    std::vector<Point> run;
    const auto drawRun = [&] {
        canvas_.Polyline(ThinLine(run), stroke);
        run.clear();
    };
    for (const RollPoint& point : roll_.curve) {
        if (point.voiced && point.midiPitch > 0 && std::isfinite(point.midiPitch)) {
            run.push_back({layout_.XOf(point.seconds), layout_.YOf(static_cast<double>(point.midiPitch))});
        } else {
            drawRun();
        }
    }
    drawRun();
}

// The longest of name with cents, name alone and nothing that is no wider than the bar: names of neighbours
// then never meet.
void Drawing::DrawNames(const RollVoice& voice) {
    for (const RollNote& note : voice.notes) {
        const std::optional<NamedPitch> named = NearestNote(note.midiPitch);
        if (!IsVisible(note) || !named) continue;
        const Box bar = BarOf(note);
        if (roll_.format.namesInBars && &voice != &roll_.voices.front()) {
            DrawNameInBar(note, NoteName(named->midiNote));
            continue;
        }
        std::string name = roll_.format.namesInBars ? NoteName(named->midiNote) : PitchText(note.midiPitch);
        if (EstimateTextWidth(name, kNameSize) > bar.width) name = NoteName(named->midiNote);
        if (EstimateTextWidth(name, kNameSize) > bar.width) continue;
        canvas_.Text({bar.x, bar.y - kNameGap}, name,
                     {.size = kNameSize, .colour = kInk, .halo = kWhiteLane});
    }
}

// Where voices share the bar, the one on top names it for all. The lead has its names above its bars, since
// the curve runs through them.
void Drawing::DrawNameInBar(const RollNote& note, const std::string& name) {
    const double height = layout_.laneHeight * kBarShare;
    const Box bar = BarOf(note);
    const bool fits =
        EstimateTextWidth(name, kBarNameSize) + 2 * kBarNameInset <= bar.width && height >= kBarNameSize;
    if (!fits || note.strip > 0) return;
    canvas_.Text({bar.x + kBarNameInset, bar.y + height / 2 + kBarNameSize * 0.36}, name,
                 {.size = kBarNameSize, .colour = kBlack});
}

void Drawing::DrawVeil() {
    if (!roll_.region) return;
    const Box& lanes = layout_.lanes;
    const double start = std::clamp(layout_.XOf(roll_.region->startSeconds), lanes.x, lanes.Right());
    const double end = std::clamp(layout_.XOf(roll_.region->endSeconds), start, lanes.Right());
    const Paint veil{.fill = kWhiteLane, .opacity = kVeilOpacity};
    canvas_.Rectangle({lanes.x, lanes.y, start - lanes.x, lanes.height}, veil);
    canvas_.Rectangle({end, lanes.y, lanes.Right() - end, lanes.height}, veil);
}

void Drawing::DrawChords() {
    const Box& row = layout_.chords;
    if (chords_.empty()) return;
    canvas_.Rectangle(row, {.fill = kWhite});
    const double lineHeight = row.height / CountLines(chords_);
    for (const PlacedChord& chord : chords_) {
        const double bottom = row.Bottom() - chord.line * lineHeight;
        canvas_.Line({chord.x, bottom - lineHeight + kChordMarkGap}, {chord.x, row.Bottom()}, {kFrame, 1});
        canvas_.Text({chord.left, bottom - kChordBase}, chord.name,
                     {.size = kChordSize, .colour = kInk, .bold = true, .halo = kWhite});
    }
    canvas_.Text({layout_.keys.x, row.Bottom() - kChordBase}, "chords",
                 {.size = kLabelSize, .colour = kFaintInk});
    canvas_.Rectangle(row, {.outline = kFrame});
}

void Drawing::DrawKeys() {
    const Box& keys = layout_.keys;
    canvas_.Rectangle(keys, {.fill = kWhite});
    for (std::int32_t note = layout_.span.lowest; note <= layout_.span.highest; ++note) {
        const double top = layout_.LaneTop(note);
        const double middle = top + layout_.laneHeight / 2;
        if (IsBlackKey(note)) { // the white keys beside it meet behind its middle
            canvas_.Line({keys.x, middle}, {keys.Right(), middle}, {kKeyLine, 1});
            canvas_.Rectangle({keys.x, top + 0.5, keys.width * kBlackKeyShare, layout_.laneHeight - 1},
                              {.fill = kBlackKey, .cornerRadius = 1});
        } else if (note > layout_.span.lowest && !IsBlackKey(note - 1)) {
            const double bottom = layout_.LaneTop(note - 1);
            canvas_.Line({keys.x, bottom}, {keys.Right(), bottom}, {kKeyLine, 1});
        }
        if (note % 12 == 0) {
            canvas_.Text({keys.Right() - kKeyLabelInset, middle + kLabelSize * 0.36}, NoteName(note),
                         {.size = kLabelSize, .colour = kInk, .anchor = TextAnchor::kEnd, .bold = true});
        }
    }
}

void Drawing::DrawTimeAxis() {
    const double top = layout_.loudness.Bottom();
    ForEachTick(ticks_.minorStep, [&](double seconds, int) {
        const double x = layout_.XOf(seconds);
        canvas_.Line({x, top}, {x, top + kMinorTickLength}, {kFrame, 1});
    });
    ForEachTick(ticks_.step, [&](double seconds, int) {
        const double x = layout_.XOf(seconds);
        canvas_.Line({x, top}, {x, top + kTickLength}, {kFrame, 1});
        const std::string label = FormatFixed(seconds, ticks_.decimals) + " s";
        const bool fits = x + EstimateTextWidth(label, kLabelSize) / 2 < layout_.width;
        canvas_.Text({fits ? x : layout_.lanes.Right() + kTickLabelOverhang, top + kTickLabelBase}, label,
                     {.size = kLabelSize,
                      .colour = kFaintInk,
                      .anchor = fits ? TextAnchor::kMiddle : TextAnchor::kEnd});
    });
    if (!roll_.format.hasLoudness) return;
    const TextStyle style{.size = kLabelSize, .colour = kFaintInk};
    canvas_.Text({layout_.keys.x, layout_.loudness.y + kLabelSize}, "loudness", style);
}

void Drawing::DrawFrames() {
    canvas_.Rectangle(
        {layout_.keys.x, layout_.keys.y, layout_.keys.width + layout_.lanes.width, layout_.keys.height},
        {.outline = kFrame});
    canvas_.Line({layout_.lanes.x, layout_.lanes.y}, {layout_.lanes.x, layout_.lanes.Bottom()}, {kFrame, 1});
    if (roll_.format.hasLoudness) canvas_.Rectangle(layout_.loudness, {.outline = kFrame});
}

} // namespace

std::string DrawPianoRoll(const PianoRoll& roll) { return Drawing(roll).Draw(); }

} // namespace sonorelle
