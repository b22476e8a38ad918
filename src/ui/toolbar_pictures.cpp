#include "ui/toolbar_pictures.h"

#include "ui/theme.h"

#include <array>

namespace sonorelle {

namespace {

constexpr float kPen = 1.4F; // pixels
constexpr Colour kInk = ColourFromRgb(0x2b333d);
constexpr Colour kGlow = ColourFromRgb(0xffd9a0); // of a toggle that is on

// Draws in the ink that the button's state asks for.
struct Pen {
    CPixelCanvas& canvas;
    float dx; // of the picture's corner
    float dy;
    bool pale;

    Colour Tone(Colour colour) const { return pale ? LerpColour(colour, kPanelColour, 0.62F) : colour; }
    CanvasPoint At(float x, float y) const { return {x + dx, y + dy}; }
    void Line(float x0, float y0, float x1, float y1, Colour colour = kInk, float width = kPen) const {
        canvas.DrawLine(At(x0, y0), At(x1, y1), width, Tone(colour));
    }
    void Triangle(CanvasPoint a, CanvasPoint b, CanvasPoint c, Colour colour = kInk) const {
        const std::array<CanvasPoint, 3> points = {At(a.x, a.y), At(b.x, b.y), At(c.x, c.y)};
        canvas.FillPolygon(points, Tone(colour));
    }
    void Bar(float x, float y, float width, float height, Colour colour = kInk) const {
        canvas.FillRoundedBox({x + dx, y + dy, width, height}, 0, Tone(colour), Tone(colour));
    }
    void Ring(float x, float y, float radius) const {
        canvas.DrawCircle(At(x, y), radius, kPen - 0.2F, Tone(kInk));
    }
    void Arc(float x, float y, float radius, float from, float sweep, float width = kPen) const {
        canvas.DrawArc(At(x, y), radius, from, sweep, width, Tone(kInk));
    }
};

// The pictures are 15 by 11 pixels.

// A way that turns back upon itself.
void DrawTurn(const Pen& pen, bool forward) {
    const auto x = [forward](float left) { return forward ? 15 - left : left; };
    pen.Line(x(4), 3.5F, x(9.5F), 3.5F);
    pen.Arc(x(9.5F), 6.5F, 3, forward ? 90 : -90, 180);
    pen.Line(x(9.5F), 9.5F, x(5), 9.5F);
    pen.Triangle({x(1), 3.5F}, {x(5.5F), 0}, {x(5.5F), 7});
}

void DrawScissors(const Pen& pen) {
    pen.Ring(3, 2.5F, 1.8F);
    pen.Ring(3, 8.5F, 1.8F);
    pen.Line(4.6F, 3.5F, 13.5F, 9);
    pen.Line(4.6F, 7.5F, 13.5F, 2);
}

// Notes within the corners of a screen.
void DrawWhole(const Pen& pen) {
    for (const float x : {0.5F, 14.5F})
        for (const float y : {0.5F, 10.5F}) {
            pen.Line(x, y, x < 7 ? x + 3 : x - 3, y, kInk, 1);
            pen.Line(x, y, x, y < 5 ? y + 2.5F : y - 2.5F, kInk, 1);
        }
    pen.Bar(3, 6, 3, 2, kVoiceColours[0]);
    pen.Bar(6, 3, 3, 2, kVoiceColours[0]);
    pen.Bar(9, 5, 3, 2, kVoiceColours[0]);
}

// A stretch of the recording between its two markers.
void DrawRegion(const Pen& pen) {
    pen.Bar(4, 3, 7, 5, LerpColour(kWhite, kVoiceColours[0], 0.6F));
    for (const float x : {2.5F, 12.5F}) pen.Line(x, 0.5F, x, 10.5F);
    pen.Triangle({2.5F, 0}, {6, 0}, {2.5F, 3.5F});
    pen.Triangle({12.5F, 0}, {9, 0}, {12.5F, 3.5F});
}

void DrawUpAndDown(const Pen& pen) {
    pen.Line(2.5F, 0.5F, 12.5F, 0.5F, kInk, 1);
    pen.Line(2.5F, 10.5F, 12.5F, 10.5F, kInk, 1);
    pen.Line(7.5F, 3, 7.5F, 8);
    pen.Triangle({7.5F, 1.2F}, {4.7F, 4.6F}, {10.3F, 4.6F});
    pen.Triangle({7.5F, 9.8F}, {4.7F, 6.4F}, {10.3F, 6.4F});
}

void DrawLeftAndRight(const Pen& pen) {
    pen.Line(0.5F, 1, 0.5F, 10, kInk, 1);
    pen.Line(14.5F, 1, 14.5F, 10, kInk, 1);
    pen.Line(4, 5.5F, 11, 5.5F);
    pen.Triangle({1.4F, 5.5F}, {5.2F, 2.5F}, {5.2F, 8.5F});
    pen.Triangle({13.6F, 5.5F}, {9.8F, 2.5F}, {9.8F, 8.5F});
}

// The play position, on its way.
void DrawCursor(const Pen& pen) {
    pen.Line(4.5F, 0.5F, 4.5F, 10.5F, kVoiceColours[1]);
    pen.Line(7, 5.5F, 10.5F, 5.5F);
    pen.Triangle({14.5F, 5.5F}, {10, 2.2F}, {10, 8.8F});
}

// A way out for each voice.
void DrawVoices(const Pen& pen) {
    for (std::size_t voice = 0; voice < kVoiceColours.size(); ++voice) {
        const float y = 0.5F + 3 * static_cast<float>(voice); // the middle of a row of pixels
        pen.Bar(0, y - 0.5F, 10, 1, kVoiceColours[voice]);
        pen.Triangle({14, y}, {9.5F, y - 1.5F}, {9.5F, y + 1.5F}, kVoiceColours[voice]);
    }
}

// Four voices, each on its own pitch.
void DrawLogoSign(const Pen& pen) {
    constexpr std::array<float, 4> kHeights = {3, 9, 6, 12};
    for (std::size_t voice = 0; voice < kVoiceColours.size(); ++voice) {
        const float x = 2 + 3.4F * static_cast<float>(voice);
        pen.Line(x, kHeights[voice], x + 5, kHeights[voice], kVoiceColours[voice], 2);
    }
}

void DrawPicture(const Pen& pen, ToolbarButton button) {
    switch (button) {
    case ToolbarButton::kLoad:
    case ToolbarButton::kSave:
        break;
    case ToolbarButton::kUndo:
        DrawTurn(pen, false);
        break;
    case ToolbarButton::kRedo:
        DrawTurn(pen, true);
        break;
    case ToolbarButton::kCutMode:
        DrawScissors(pen);
        break;
    case ToolbarButton::kViewAll:
        DrawWhole(pen);
        break;
    case ToolbarButton::kFitPlayRegion:
        DrawRegion(pen);
        break;
    case ToolbarButton::kFitVertically:
        DrawUpAndDown(pen);
        break;
    case ToolbarButton::kFitHorizontally:
        DrawLeftAndRight(pen);
        break;
    case ToolbarButton::kFollowCursor:
        DrawCursor(pen);
        break;
    case ToolbarButton::kSingleVoice:
        DrawVoices(pen);
        break;
    case ToolbarButton::kLogo:
        DrawLogoSign(pen);
        break;
    }
}

struct BoxTones {
    Colour top;
    Colour bottom;
    Colour line;
};

BoxTones TonesOf(ButtonLook look, bool on) {
    const Colour base = on ? kGlow : kPanelColour;
    BoxTones tones{LerpColour(base, kWhite, 0.8F), LerpColour(base, kBlack, 0.07F), kFrameColour};
    switch (look) {
    case ButtonLook::kNormal:
        break;
    case ButtonLook::kHovered:
        tones = {kWhite, LerpColour(base, kWhite, 0.5F), kVoiceColours[0]};
        break;
    case ButtonLook::kPressed:
        tones.top = LerpColour(base, kBlack, 0.2F);
        tones.bottom = base;
        break;
    case ButtonLook::kDisabled:
        tones = {LerpColour(base, kPanelColour, 0.6F), LerpColour(base, kPanelColour, 0.6F),
                 LerpColour(kFrameColour, kPanelColour, 0.6F)};
        break;
    }
    if (on && look == ButtonLook::kNormal)
        tones = {LerpColour(kGlow, kBlack, 0.1F), LerpColour(kGlow, kWhite, 0.3F),
                 LerpColour(kVoiceColours[0], kBlack, 0.25F)};
    return tones;
}

} // namespace

CPixelCanvas DrawToolbarPicture(const ToolbarEntry& entry, ButtonLook look, bool on) {
    CPixelCanvas canvas(entry.place.width, entry.place.height, kPanelColour);
    const bool logo = entry.button == ToolbarButton::kLogo;
    const auto width = static_cast<float>(entry.place.width);
    const auto height = static_cast<float>(entry.place.height);
    if (!logo) {
        const BoxTones tones = TonesOf(look, on);
        canvas.FillRoundedBox({0, 0, width, height}, 4, tones.top, tones.bottom);
        canvas.StrokeRoundedBox({0, 0, width, height}, 4, 1, tones.line);
    }
    const float down = look == ButtonLook::kPressed ? 1.0F : 0.0F;
    const bool pale = look == ButtonLook::kDisabled;
    DrawPicture(logo ? Pen{canvas, 0, 0.5F + down, pale} : Pen{canvas, 10, 2 + down, pale}, entry.button);
    return canvas;
}

} // namespace sonorelle
