// A small picture with smooth edges, drawn from shapes: icons, rounded boxes, knobs. The toolkit's own lines
// are not smoothed.
//
//     CPixelCanvas canvas(35, 15, kPanelColour);
//     canvas.FillRoundedBox({0, 0, 35, 15}, 4, kWhite, kPanelColour);
//     canvas.DrawLine({4, 7.5F}, {20, 7.5F}, 1.5F, kBlack);
//     fl_draw_image(canvas.Data(), x, y, canvas.Width(), canvas.Height());
//
// Places are in pixels from the left upper corner; the centre of the first pixel is (0.5, 0.5). What lies
// outside is cut off. Pure computation, for any thread.

#pragma once

#include "app/voice_colours.h"

#include <cstdint>
#include <span>
#include <vector>

namespace sonorelle {

struct CanvasPoint {
    float x = 0;
    float y = 0;
};

struct CanvasBox {
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
};

class CPixelCanvas {
public:
    CPixelCanvas(std::int32_t canvasWidth, std::int32_t canvasHeight, Colour background);

    // From `top` to `bottom` as the colour runs down.
    void FillRoundedBox(CanvasBox box, float radius, Colour top, Colour bottom);
    void StrokeRoundedBox(CanvasBox box, float radius, float lineWidth,
                          Colour colour);                                            // the line lies inside
    void DrawLine(CanvasPoint from, CanvasPoint to, float lineWidth, Colour colour); // with round ends
    void DrawLines(std::span<const CanvasPoint> points, float lineWidth, Colour colour);
    void FillPolygon(std::span<const CanvasPoint> points, Colour colour);
    void FillDisc(CanvasPoint centre, float radius, Colour colour);
    void DrawCircle(CanvasPoint centre, float radius, float lineWidth, Colour colour);
    // Degrees count from the right, upwards; from `from` on through `sweep`.
    void DrawArc(CanvasPoint centre, float radius, float from, float sweep, float lineWidth, Colour colour);

    std::int32_t Width() const { return width; }
    std::int32_t Height() const { return height; }
    const std::uint8_t* Data() const { return pixels.data(); } // three bytes a pixel, row after row
    Colour At(std::int32_t x, std::int32_t y) const;           // black outside

private:
    template<class Distance>
    void Fill(const Distance& distance, Colour top, Colour bottom);
    void Blend(std::int32_t x, std::int32_t y, Colour colour, float share);

    std::int32_t width;
    std::int32_t height;
    std::vector<std::uint8_t> pixels;
};

} // namespace sonorelle
