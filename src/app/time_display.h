// A time in samples that is shown, typed and dragged as minutes, seconds and milliseconds.
//
//     CkvoTimeDisplay display;
//     display.SetSampleRate(44100);
//     display.Enter("1:02.500"); // GetValue() is 2756250
//     display.GetText();         // "1:02.500"
//
// Threads. Value, range, rate and the way of showing are atomics for any thread. The user's operations and
// texts belong to whoever holds the interface lock.

#pragma once

#include "app/tip_win.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace sonorelle {

// "1:02.500"; minutes without leading zero, a minus in front of times before zero. Rounded to the nearest
// millisecond, so that what was entered in milliseconds is shown as it was entered. `sampleRate` in Hz, above
// 0; a value that is not finite shows as 0.
std::string FormatTime(double samples, float sampleRate);

// What FormatTime shows, and shorter: with a colon minutes and seconds ("1:02.5"), with a point seconds
// ("2.5"), else milliseconds ("500"). Minutes count up to 999, seconds to 59, milliseconds to 999; more is
// taken for these. A minus in front holds for the whole. In whole samples. Nothing for a text that does not
// begin so; what follows the number does not matter.
std::optional<double> ParseTime(std::string_view text, float sampleRate);

class CkvoTimeDisplay {
public:
    using Callback = std::function<void()>;

    static constexpr float kDefaultSampleRate = 44100;
    static constexpr double kStep = 1; // sample
    static constexpr double kFurthest = 1e24;
    static constexpr const char* kTip = "drag up/down or use\nmousewheel to change value\n\n"
                                        "to enter value, double click";

    CkvoTimeDisplay() = default;
    ~CkvoTimeDisplay() = default;
    CkvoTimeDisplay(const CkvoTimeDisplay&) = delete;
    CkvoTimeDisplay& operator=(const CkvoTimeDisplay&) = delete;

    // Called when the user has changed the value: behind each entry and turn of the wheel, and once for a
    // drag, at its end.
    void SetOnChanged(Callback callback) { onChanged = std::move(callback); }

    // --- Any thread ---

    double GetValue() const { return value.load(std::memory_order_relaxed); } // samples
    // Held to the range; true if it is a different one now. One that is not a number is ignored.
    bool SetValue(double samples);
    double GetMinimum() const { return minimum.load(std::memory_order_relaxed); }
    double GetMaximum() const { return maximum.load(std::memory_order_relaxed); }
    void SetRange(double lowest, double highest); // the value stays as it is
    float GetSampleRate() const { return sampleRate.load(std::memory_order_relaxed); }
    void SetSampleRate(float hertz); // ignored unless finite and above 0; the value in samples stays
    void SetShowSamples(bool on) { showSamples.store(on, std::memory_order_relaxed); }
    bool GetShowSamples() const { return showSamples.load(std::memory_order_relaxed); }

    // --- The user ---

    std::string GetText() const; // a time, or a whole number of samples
    // The text field that a double click opens was confirmed. False, and nothing changed, for a text that is
    // no time (no number of samples, while those are shown).
    bool Enter(std::string_view text);
    void TurnWheel(std::int32_t steps); // upwards above 0
    // A drag, in pixels above the place where it began; one step each. A tip shows the text meanwhile.
    void BeginDrag();
    void DragTo(std::int32_t pixelsUp);
    void EndDrag();
    const CTimeTipWin& GetTip() const { return tip; } // shown since a step of wheel or drag
    void HideTip() { tip.Hide(); }                    // the pointer has left

private:
    void Fire();

    std::atomic<double> value{0};
    std::atomic<double> minimum{-kFurthest};
    std::atomic<double> maximum{kFurthest};
    std::atomic<float> sampleRate{kDefaultSampleRate};
    std::atomic<bool> showSamples{false};
    Callback onChanged;
    CTimeTipWin tip;
    double dragStart = 0;
    bool dragging = false;
};

} // namespace sonorelle
