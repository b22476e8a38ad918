// The picture is drawn from the back to the front:
//   1. ground and titles
//   2. lanes: light for white keys, darker for black ones, and a line below each C
//   3. time lines, through lanes and loudness strip
//   4. loudness strip
//   5. note bars, voice by voice
//   6. the pitch curve over the bars
//   7. names of notes above their bars, kept legible by a halo
//   8. keyboard, axis labels and frames
#include "cli/piano_roll.h"

#include "cli/colour.h"
#include "cli/curve_thinning.h"
#include "cli/note_names.h"
#include "cli/unicode_text.h"
#include "platform/numbers.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sonorelle {

namespace {

constexpr Colour kGround = PanelColour();
constexpr Colour kInk = FromRgb(0x22272e);      // titles and names
constexpr Colour kFaintInk = FromRgb(0x4f5863); // axis labels, 5 to 1 on the ground
constexpr Colour kWhiteLane = Lerp(kWhite, kGround, 0.15F);
constexpr Colour kBlackLane = Lerp(kWhite, kGround, 0.55F);
constexpr Colour kLaneLine = Lerp(kWhite, kGround, 0.8F);
constexpr Colour kKeyLine = Lerp(kBlack, kGround, 0.85F);
constexpr Colour kTimeLine = Lerp(kBlack, kGround, 0.93F);
constexpr Colour kOctaveLine = Lerp(kBlack, kGround, 0.7F);
constexpr Colour kFrame = Lerp(kBlack, kGround, 0.55F);
constexpr Colour kLoudness = Lerp(kBlack, kGround, 0.72F);
constexpr Colour kBlackKey = FromRgb(0x2b3038);
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
constexpr double kCurveWidth = 1.5;
// Long recordings are drawn small: a finer line keeps vibrato from filling its bar.
constexpr double kFineCurveWidth = 0.8;
constexpr double kFineCurveScale = 30; // pixels a second, from here down

class Drawing {
public:
    explicit Drawing(const PianoRoll& roll)
        : roll_(roll), layout_(LayOutRoll(roll.seconds, roll.span)),
          ticks_(ChooseTicks(layout_.seconds, layout_.pixelsPerSecond)),
          canvas_(layout_.width, layout_.height, roll.title) {}

    std::string Draw() && {
        DrawGround();
        DrawLanes();
        DrawLoudnessGround();
        DrawTimeLines();
        DrawLoudness();
        canvas_.BeginClip(layout_.lanes);
        for (const RollVoice& voice : roll_.voices) DrawBars(voice);
        DrawCurve();
        for (const RollVoice& voice : roll_.voices) DrawNames(voice);
        canvas_.EndClip();
        DrawKeys();
        DrawTimeAxis();
        DrawFrames();
        return std::move(canvas_).Finish();
    }

private:
    void DrawGround();
    void DrawLanes();
    void DrawLoudnessGround() { canvas_.Rectangle(layout_.loudness, {.fill = kWhiteLane}); }
    void DrawTimeLines();
    void DrawLoudness();
    void DrawBars(const RollVoice& voice);
    void DrawCurve();
    void DrawNames(const RollVoice& voice);
    void DrawKeys();
    void DrawTimeAxis();
    void DrawFrames();

    // Calls onTick(seconds, index) for every multiple of `step` on the time axis.
    template<class OnTick>
    void ForEachTick(double step, OnTick onTick) const;
    bool IsVisible(const RollNote& note) const;
    Box BarOf(const RollNote& note) const;

    const PianoRoll& roll_;
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
    const double height = layout_.laneHeight * kBarShare;
    const double left = layout_.XOf(note.startSeconds);
    return {left, layout_.YOf(static_cast<double>(note.midiPitch)) - height / 2,
            std::max(layout_.XOf(note.endSeconds) - left, kSmallestBar), height};
}

void Drawing::DrawGround() {
    canvas_.Rectangle({0, 0, layout_.width, layout_.height}, {.fill = kGround});
    const double room = layout_.lanes.Right() - layout_.keys.x;
    const auto limit = static_cast<std::size_t>(room / EstimateTextWidth("m", kTitleSize, true));
    canvas_.Text({layout_.keys.x, kTitleBase}, ShortenMiddle(roll_.title, limit),
                 {.size = kTitleSize, .colour = kInk, .bold = true});
    canvas_.Text({layout_.keys.x, kSubtitleBase}, roll_.subtitle,
                 {.size = kSubtitleSize, .colour = kFaintInk});
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
        canvas_.Line({x, layout_.loudness.y}, {x, layout_.loudness.Bottom()}, {kTimeLine, 1});
    });
}

void Drawing::DrawLoudness() {
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

void Drawing::DrawBars(const RollVoice& voice) {
    const Colour colour = kVoiceColours[voice.colour % kVoiceColours.size()];
    const Paint paint{
        .fill = WidgetColour(colour), .outline = colour, .outlineWidth = 1.4, .cornerRadius = kBarRadius};
    for (const RollNote& note : voice.notes) {
        if (!IsVisible(note)) continue;
        canvas_.Rectangle(BarOf(note), paint,
                          PitchText(note.midiPitch) + ", " + FormatFixed(note.startSeconds, 3) + " to " +
                              FormatFixed(note.endSeconds, 3) + " s");
    }
}

void Drawing::DrawCurve() {
    const Stroke stroke{Lerp(kBlack, kVoiceColours[0], kCurveShade),
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
        std::string name = PitchText(note.midiPitch);
        if (EstimateTextWidth(name, kNameSize) > bar.width) name = NoteName(named->midiNote);
        if (EstimateTextWidth(name, kNameSize) > bar.width) continue;
        canvas_.Text({bar.x, bar.y - kNameGap}, name,
                     {.size = kNameSize, .colour = kInk, .halo = kWhiteLane});
    }
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
    const TextStyle style{.size = kLabelSize, .colour = kFaintInk};
    canvas_.Text({layout_.keys.x, layout_.loudness.y + kLabelSize}, "loudness", style);
}

void Drawing::DrawFrames() {
    canvas_.Rectangle(
        {layout_.keys.x, layout_.keys.y, layout_.keys.width + layout_.lanes.width, layout_.keys.height},
        {.outline = kFrame});
    canvas_.Line({layout_.lanes.x, layout_.lanes.y}, {layout_.lanes.x, layout_.lanes.Bottom()}, {kFrame, 1});
    canvas_.Rectangle(layout_.loudness, {.outline = kFrame});
}

} // namespace

std::string DrawPianoRoll(const PianoRoll& roll) { return Drawing(roll).Draw(); }

} // namespace sonorelle
