#include "ui/theme.h"

#include "ui/pixel_canvas.h"

#include <FL/Fl.H>
#include <FL/Fl_Tooltip.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <array>
#include <fontconfig/fontconfig.h>

namespace sonorelle {

namespace {

constexpr float kRadius = 4;      // pixels
constexpr int kCorner = 5;        // pixels, in which a rounded corner lies with its line
constexpr int kSmoothHeight = 48; // pixels; lower boxes run from light to dark as a whole
constexpr float kPale = 0.55F;    // how far an inactive box goes back into its panel

// Faces of the toolkit's name table: the letter in front is the style.
struct Family {
    const char* name;
    std::array<const char*, 4> faces; // plain, bold, italic, both
};
// The first that is installed; the last is the system's own choice, which always is.
constexpr std::array<Family, 4> kFamilies = {{
    {"Courier New", {" Courier New", "BCourier New", "ICourier New", "PCourier New"}},
    {"Liberation Mono", {" Liberation Mono", "BLiberation Mono", "ILiberation Mono", "PLiberation Mono"}},
    {"DejaVu Sans Mono",
     {" DejaVu Sans Mono", "BDejaVu Sans Mono", "IDejaVu Sans Mono", "PDejaVu Sans Mono"}},
    {"monospace", {" monospace", "Bmonospace", "Imonospace", "Pmonospace"}},
}};

bool IsInstalled(const char* family) {
    FcPattern* pattern = FcPatternBuild(nullptr, FC_FAMILY, FcTypeString, family, nullptr);
    FcObjectSet* wanted = FcObjectSetBuild(FC_FAMILY, nullptr);
    FcFontSet* found = FcFontList(nullptr, pattern, wanted);
    const bool any = found != nullptr && found->nfont > 0;
    if (found != nullptr) FcFontSetDestroy(found);
    if (wanted != nullptr) FcObjectSetDestroy(wanted);
    if (pattern != nullptr) FcPatternDestroy(pattern);
    return any;
}

void LoadFonts() {
    const auto* family = std::find_if(kFamilies.begin(), kFamilies.end() - 1,
                                      [](const Family& each) { return IsInstalled(each.name); });
    for (std::size_t style = 0; style < family->faces.size(); ++style) {
        Fl::set_font(static_cast<Fl_Font>(FL_HELVETICA + style), family->faces[style]);
        Fl::set_font(static_cast<Fl_Font>(FL_COURIER + style), family->faces[style]);
    }
    FL_NORMAL_SIZE = kLabelSize;
}

struct PlasticTones {
    Colour top;
    Colour bottom;
    Colour line;
};

PlasticTones TonesOf(Fl_Color colour, bool raised) {
    const Colour base = ColourOfToolkit(colour);
    PlasticTones tones =
        raised ? PlasticTones{LerpColour(base, kWhite, 0.75F), LerpColour(base, kBlack, 0.06F), kFrameColour}
               : PlasticTones{LerpColour(base, kBlack, 0.14F), LerpColour(base, kWhite, 0.25F), kFrameColour};
    if (Fl::draw_box_active()) return tones;
    for (Colour* tone : {&tones.top, &tones.bottom, &tones.line})
        *tone = LerpColour(*tone, kPanelColour, kPale);
    return tones;
}

// A low box is one small picture. A high one gets its corners from a small picture each, the rest as lines.
void DrawLowBox(int x, int y, int w, int h, const PlasticTones& tones) {
    CPixelCanvas canvas(w, h, kPanelColour);
    const CanvasBox box{0, 0, static_cast<float>(w), static_cast<float>(h)};
    canvas.FillRoundedBox(box, kRadius, tones.top, tones.bottom);
    canvas.StrokeRoundedBox(box, kRadius, 1, tones.line);
    fl_draw_image(canvas.Data(), x, y, w, h);
}

void DrawCorners(int x, int y, int w, int h, const PlasticTones& tones) {
    constexpr int kSide = 2 * kCorner;
    CPixelCanvas canvas(kSide, kSide, kPanelColour);
    const CanvasBox box{0, 0, kSide, kSide};
    canvas.FillRoundedBox(box, kRadius, tones.top, tones.top);
    canvas.StrokeRoundedBox(box, kRadius, 1, tones.line);
    constexpr int kRow = kSide * 3;
    for (const int right : {0, 1})
        for (const int low : {0, 1})
            fl_draw_image(canvas.Data() + low * kCorner * kRow + right * kCorner * 3,
                          right != 0 ? x + w - kCorner : x, low != 0 ? y + h - kCorner : y, kCorner, kCorner,
                          3, kRow);
}

void DrawHighBox(int x, int y, int w, int h, const PlasticTones& tones) {
    fl_color(ToolkitColour(tones.top));
    fl_rectf(x + kCorner, y, w - 2 * kCorner, h);
    fl_rectf(x, y + kCorner, w, h - 2 * kCorner);
    fl_color(ToolkitColour(tones.line));
    fl_xyline(x + kCorner, y, x + w - kCorner - 1);
    fl_xyline(x + kCorner, y + h - 1, x + w - kCorner - 1);
    fl_yxline(x, y + kCorner, y + h - kCorner - 1);
    fl_yxline(x + w - 1, y + kCorner, y + h - kCorner - 1);
    DrawCorners(x, y, w, h, tones);
}

void DrawPlastic(int x, int y, int w, int h, Fl_Color colour, bool raised) {
    if (w <= 2 * kCorner || h <= 2 * kCorner || h <= kSmoothHeight) {
        if (w > 0 && h > 0) DrawLowBox(x, y, w, h, TonesOf(colour, raised));
    } else {
        PlasticTones tones = TonesOf(colour, raised);
        tones.top = ColourOfToolkit(colour);
        DrawHighBox(x, y, w, h, tones);
    }
}

void DrawRaised(int x, int y, int w, int h, Fl_Color colour) { DrawPlastic(x, y, w, h, colour, true); }
void DrawSunken(int x, int y, int w, int h, Fl_Color colour) { DrawPlastic(x, y, w, h, colour, false); }

void DrawKnob(int x, int y, int w, int h, Fl_Color colour) {
    if (w <= 0 || h <= 0) return;
    const PlasticTones tones = TonesOf(colour, true);
    CPixelCanvas canvas(w, h, kPanelColour);
    const auto width = static_cast<float>(w);
    const auto height = static_cast<float>(h);
    canvas.FillRoundedBox({0, 0, width, height}, kRadius, tones.top, tones.bottom);
    canvas.StrokeRoundedBox({0, 0, width, height}, kRadius, 1, tones.line);
    // A knob is longer across the way that it moves on.
    if (w < h) {
        canvas.DrawLine({2.5F, height / 2}, {width - 2.5F, height / 2}, 1, tones.line);
    } else {
        canvas.DrawLine({width / 2, 2.5F}, {width / 2, height - 2.5F}, 1, tones.line);
    }
    fl_draw_image(canvas.Data(), x, y, w, h);
}

void DrawField(int x, int y, int w, int h, Fl_Color colour) {
    const PlasticTones tones = TonesOf(colour, false);
    if (h <= 2 * kCorner || w <= 2 * kCorner) {
        DrawPlastic(x, y, w, h, colour, false);
    } else {
        DrawHighBox(x, y, w, h, {ColourOfToolkit(colour), ColourOfToolkit(colour), tones.line});
    }
}

// The toolkit's own boxes look the same way, for the dialogs that it brings along.
void LoadBoxes() {
    for (const Fl_Boxtype raised : {kvoRPlasticBox(), FL_UP_BOX, FL_THIN_UP_BOX})
        Fl::set_boxtype(raised, DrawRaised, 2, 2, 4, 4);
    Fl::set_boxtype(kvosRPlasticBox(), DrawSunken, 2, 2, 4, 4);
    for (const Fl_Boxtype field : {FL_DOWN_BOX, FL_THIN_DOWN_BOX})
        Fl::set_boxtype(field, DrawField, 2, 2, 4, 4);
    Fl::set_boxtype(CkvoSliderGlyph(), DrawKnob, 2, 2, 4, 4);
}

void LoadColours() {
    Fl::background(kPanelColour.red, kPanelColour.green, kPanelColour.blue);
    Fl::background2(kWhite.red, kWhite.green, kWhite.blue);
    Fl::foreground(kBlack.red, kBlack.green, kBlack.blue);
    Fl::set_color(FL_SELECTION_COLOR, kVoiceColours[2].red, kVoiceColours[2].green, kVoiceColours[2].blue);
}

} // namespace

Colour ColourOfToolkit(Fl_Color colour) {
    Colour result;
    Fl::get_color(colour, result.red, result.green, result.blue);
    return result;
}

void DrawFrame(int x, int y, int width, int height, Colour fill, Colour line) {
    if (width > 2 * kCorner && height > 2 * kCorner) DrawHighBox(x, y, width, height, {fill, fill, line});
}

// Keys go to controls that take them and nowhere else: a button must not answer the host's space bar. The
// system's file dialogs would bring a second toolkit into the process.
void LoadTheme() {
    LoadFonts();
    LoadColours();
    LoadBoxes();
    Fl::option(Fl::OPTION_FNFC_USES_GTK, false);
    Fl::visible_focus(0);
    Fl_Tooltip::font(FL_HELVETICA);
    Fl_Tooltip::size(kTextSize);
    Fl_Tooltip::color(ToolkitColour(kTipColour));
    Fl_Tooltip::delay(0.6F);
}

} // namespace sonorelle
