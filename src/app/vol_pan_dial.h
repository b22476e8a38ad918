// Volume and panning of a voice as one point under two meters: the fan on top of each channel strip.
//
//     CkvoVolPanDial dial;
//     dial.Set(0.5F, -0.9F);
//     const DialPoint middle = DialPointAt(dial.GetVol(), dial.GetPan(), {50, 44}); // of the 10 by 10 knob
//     const DialPlace place = DialPlaceAt(25, 0, {50, 44});                         // where a drag leads to
//
// Threads: volume and pan on any thread, without a lock. Peaks and wedges belong to the thread that draws.
// Nothing allocates.

#pragma once

#include "app/strip_gain.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace sonorelle {

struct DialSize { // pixels
    std::int32_t width = 0;
    std::int32_t height = 0;
};

struct DialPoint { // pixels from the top left corner of the dial
    float x = 0;
    float y = 0;
};

struct DialPlace {
    float vol = 1; // 0 to kLargestStripVol
    float pan = 0; // -1 to 1
};

inline constexpr float kDialUnityShare = 0.24981245F; // of the height: where the gain is 1
inline constexpr float kDialVolShare = 0.75018755F; // 1 / 1.333: a gain of 1 lies so far above the lower edge
inline constexpr std::int32_t kDialKnobSize = 10;   // pixels, both ways
inline constexpr std::int32_t kDialFanDegrees = 30; // the fan's two edges, below the horizontal
inline constexpr std::int32_t kDialArcFrom = 210;   // degrees, anticlockwise from three o'clock
inline constexpr std::int32_t kDialArcTo = 330;
inline constexpr std::int32_t kDialArcInset = 3; // pixels by which an arc is shorter than its share of height

// Where the middle of the knob stands. Numbers that are not finite are drawn as silence in the centre.
DialPoint DialPointAt(float vol, float pan, DialSize size);

// What a pointer at pixel (x, y) asks for, held to the ranges. A dial of less than two pixels either way
// counts as two there.
DialPlace DialPlaceAt(std::int32_t x, std::int32_t y, DialSize size);

// Radius of the outer arc, and of the one where the gain is 1, around the middle of the upper edge. The
// horizontal line lies as high as the latter reaches.
float DialOuterRadius(std::int32_t height);
float DialUnityRadius(std::int32_t height);

// The meter of one side: the part of the fan's half between `radius` and the outer arc.
struct PeakWedge {
    bool visible = false;
    float radius = 1; // share of the outer arc's, 0 to 1: the louder, the smaller
    float clip = 0;   // 0 (the usual colour) to 1 (the clip colour)
};

class CkvoVolPanDial {
public:
    static constexpr std::int32_t kSides = 2;
    static constexpr float kWedgeHidden = 0.95F; // from this radius on: 1/50000 of full scale in power
    static constexpr float kClipPower = 1.41421356F;
    static constexpr std::int32_t kClipRedraws = 16;

    float GetVol() const { return vol.load(std::memory_order_relaxed); }
    float GetPan() const { return pan.load(std::memory_order_relaxed); }
    // Held to the ranges; what is not a finite number leaves the value as it is.
    void SetVol(float value);
    void SetPan(float value);
    void Set(float volValue, float panValue);

    // Peaks in power (squared); below 0 and not a number count as 0.
    void SetPeak(float left, float right);
    float GetPeak(std::int32_t side) const; // 0 for another side than 0 and 1

    // What to draw now, and one step of the fading clip colour: once a redraw.
    std::array<PeakWedge, kSides> NextWedges();
    // Whether the next redraw looks different though no peak changes.
    bool IsFading() const;

private:
    std::atomic<float> vol{1};
    std::atomic<float> pan{0};
    static_assert(std::atomic<float>::is_always_lock_free);
    std::array<float, kSides> peaks{};
    std::array<std::int32_t, kSides> clipCounters{}; // redraws that the clip colour lasts
};

} // namespace sonorelle
