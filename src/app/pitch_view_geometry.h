// Where things of the pitch view lie: pixels, samples and semitones, converted into one another.
//
//     PitchViewAxes axes;                     // 694 x 261 pixels, 20 semitones
//     axes.viewEnd = 44100;
//     const std::int32_t x = axes.XFromSample(22050);   // 364
//     const double sample = axes.SampleFromX(x);        // 22029
//
// A semitone's row reaches from its pitch up to the next: the row of pitch p lies between p and p + 1.
//
// Pure functions for any thread; nothing allocates. Numbers that are not finite, and sizes of 0, give
// positions that are merely useless.

#pragma once

#include <cstdint>

namespace sonorelle {

// Whole pixels from the view's left upper corner; holds its left and upper edge, but not the other two.
struct PixelRect {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    bool Contains(std::int32_t pointX, std::int32_t pointY) const;
    bool operator==(const PixelRect&) const = default;
};

struct PixelPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;

    bool operator==(const PixelPoint&) const = default;
};

// What the pointer does; a face fills it from the toolkit's events.
enum class PointerButton : std::int32_t { kNone, kLeft, kMiddle, kRight };

struct PointerEvent {
    static constexpr std::uint32_t kShift = 1U << 0;
    static constexpr std::uint32_t kCtrl = 1U << 1;
    static constexpr std::uint32_t kAlt = 1U << 2;

    std::int32_t x = 0; // pixels from the view's left upper corner
    std::int32_t y = 0;
    PointerButton button = PointerButton::kLeft;
    std::uint32_t modifiers = 0; // of kShift, kCtrl and kAlt
    std::int32_t wheel = 0;      // steps; negative is upward, away from the user

    bool Has(std::uint32_t modifier) const { return (modifiers & modifier) != 0; }
};

// The rows of the header, downward: loudness strip, gap, chord names, ruler.
struct PitchViewLayout {
    static constexpr std::int32_t kDefaultWidth = 694;
    static constexpr std::int32_t kDefaultHeight = 261;
    static constexpr std::int32_t kHandleWidth = 11;
    static constexpr std::int32_t kHandleHeight = 10;
    static constexpr std::int32_t kToggleWidth = 31;

    std::int32_t width = kDefaultWidth;
    std::int32_t height = kDefaultHeight;
    std::int32_t leftMargin = 35; // the pitch axis
    std::int32_t topMargin = 60;  // the header
    std::int32_t overviewHeight = 36;
    std::int32_t overviewGap = 0;
    std::int32_t keyRowHeight = 13; // chord names
    std::int32_t rulerHeight = 11;  // markers, beats
    std::int32_t scrollBarHeight = 40;

    std::int32_t NoteAreaWidth() const;  // at least 1
    std::int32_t NoteAreaHeight() const; // at least 1
    PixelRect NoteArea() const;
    PixelRect Overview() const;
    PixelRect ChordRow() const;
    PixelRect Ruler() const;
    PixelRect PitchAxis() const;              // left of the notes, under the header
    PixelRect Toggle(std::int32_t row) const; // 0 "Key", 1 "Freq", 2 "Beat"
};

// The visible part, and how it lies on the pixels.
struct PitchViewAxes {
    static constexpr float kHighestPitch = 127;
    static constexpr float kLowestPitch = 0;
    static constexpr float kLeastSemitones = 4;  // visible at least
    static constexpr float kMostSemitones = 48;  // by dragging
    static constexpr float kLeastSeconds = 0.2F; // visible at least

    PitchViewLayout layout;
    float topPitch = 72;
    float bottomPitch = 52;
    float viewStart = 0; // samples
    float viewEnd = 0;
    float totalStart = 0;
    float totalEnd = 0;

    float PixelsPerSample() const;   // above 0, also of an empty range
    float PixelsPerSemitone() const; // above 0

    std::int32_t XFromSample(double sample) const;
    double SampleFromX(std::int32_t x) const;
    // Of the upper edge of the row of `midiPitch`.
    std::int32_t RowTopFromPitch(double midiPitch) const;
    // Of the pitch itself: its row's lower edge.
    std::int32_t YFromPitch(double midiPitch) const;
    double PitchFromY(std::int32_t y) const;
    PixelRect NoteRect(float start, float length, float midiPitch, float heightSemitones) const;

    // The strip shows the whole recording.
    double OverviewPixelsPerSample() const; // above 0
    std::int32_t OverviewXFromSample(double sample) const;

    // --- Limits and moves. `leastSamples` is the shortest visible range ---

    float TotalLength() const { return totalEnd - totalStart; }
    // Shows `start` to `end`, held to what exists and to the shortest range, about the same middle.
    void ShowSamples(double start, double end, float leastSamples);
    // Shows `bottom` to `top`, whole semitones that are held to what exists and to the smallest range.
    void ShowPitches(double bottom, double top);
    void ScrollToSample(double start);  // keeps the length of the visible range
    void ScrollToPitch(double midiTop); // keeps the number of semitones
    void WheelPitch(std::int32_t y, std::int32_t wheel);
    void WheelTime(std::int32_t x, std::int32_t wheel, float leastSamples);
};

// Where the loudness strip answers.
struct OverviewHandles {
    PixelRect left;  // moves the visible range's start
    PixelRect right; // moves its end
    PixelRect body;  // moves both: the visible range
};
// The handles lie inside the visible range, at its ends; of a range too short for both, beside one another
// about its middle.
OverviewHandles PlaceOverviewHandles(const PitchViewAxes& axes);

} // namespace sonorelle
