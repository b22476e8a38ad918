// The tuning reference: what the note A is tuned to.
//
//     CkvovirelaineTuningFreq tuning;
//     tuning.SetCallback([&](CkvovirelaineTuningFreq& panel) { bank.SetOutputTuning(panel.GetFrequency());
//     }); tuning.SetFrequency(442.1F); // the application: tells nobody tuning.EnterFrequency(440);  // the
//     user: tells the callback
//
// Threads: GetFrequency and SetFrequency on any thread, without a lock; the rest on the interface thread. The
// callback may allocate, nothing else does but GetText.

#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

namespace sonorelle {

class CkvovirelaineTuningFreq {
public:
    static constexpr float kLowest = 350; // Hz
    static constexpr float kHighest = 500;
    static constexpr float kStep = 0.1F;
    static constexpr float kConcertPitch = 440;

    static constexpr const char* kUnit = "Hz";
    static constexpr const char* kToolTip =
        "adjust tuning frequency, use SHIFT key to\nchange value by integer steps";

    using Callback = std::function<void(CkvovirelaineTuningFreq&)>;

    void SetCallback(Callback callback) { onChanged = std::move(callback); }

    float GetFrequency() const { return frequency.load(std::memory_order_relaxed); } // Hz
    std::string GetText() const;                                                     // "440.0 Hz"
    // Held to the range; what is not finite changes nothing.
    void SetFrequency(float hertz);
    // Whether a value from outside is one that the panel can have.
    static bool IsFrequency(float hertz) { return hertz >= kLowest && hertz <= kHighest; }

    // What a user does; false where nothing has changed, and then nobody is told.
    bool EnterFrequency(float hertz); // held to the range
    // By 0.1 Hz a step, to a multiple of that; with the SHIFT key by 1 Hz.
    bool StepFrequency(std::int32_t steps, bool wholeSteps);

private:
    std::atomic<float> frequency{kConcertPitch};
    Callback onChanged;
};

} // namespace sonorelle
