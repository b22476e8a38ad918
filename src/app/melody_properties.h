// What the analysis has found out about the melody, and the user may correct: root, scale and tempo.
//
//     CkvovirelaineMelodyProperties melody;
//     melody.SetCallback([&](CkvovirelaineMelodyProperties& panel) { Harmonise(panel.GetRoot(),
//     panel.GetScale()); }); melody.SetTempo(120);        // the application: tells nobody
//     melody.PressRatio(kTempoDouble); // the user: 240, tells the callback
//
// Threads: getters and setters on any thread, without a lock. What a user does (Choose, Enter, Step, Press)
// and the callback belong to the interface thread. GetTempoText allocates, and so may the callback.

#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

namespace sonorelle {

struct TempoRatio {
    const char* label;
    float numerator;
    float denominator;
};

inline constexpr std::array<TempoRatio, 4> kTempoRatios = {{
    {"2/1", 2, 1},
    {"1/2", 1, 2},
    {"4/3", 4, 3},
    {"3/4", 3, 4},
}};
inline constexpr std::int32_t kTempoDouble = 0; // indices of kTempoRatios
inline constexpr std::int32_t kTempoHalf = 1;
inline constexpr std::int32_t kTempoFourThirds = 2;
inline constexpr std::int32_t kTempoThreeQuarters = 3;

class CkvovirelaineMelodyProperties {
public:
    static constexpr float kLowestTempo = 20; // beats a minute, of what the user enters
    static constexpr float kHighestTempo = 999;
    static constexpr float kTempoStep = 0.1F;
    static constexpr float kUsualTempo = 120; // before anything is known

    static constexpr const char* kRootLabel = "Root ";
    static constexpr const char* kScaleLabel = "Scale ";
    static constexpr const char* kTempoLabel = "Tempo ";
    static constexpr const char* kTempoToolTip =
        "adjust melody's original tempo,use SHIFT key to\nchange value by integer steps";

    using Callback = std::function<void(CkvovirelaineMelodyProperties&)>;

    void SetCallback(Callback callback) { onChanged = std::move(callback); }

    // --- For the application; none of the setters calls the callback ---

    std::int32_t GetRoot() const { return root.load(std::memory_order_relaxed); }   // 0 (C) to 11
    std::int32_t GetScale() const { return scale.load(std::memory_order_relaxed); } // row of kScaleNames
    float GetTempo() const { return tempo.load(std::memory_order_relaxed); }        // beats a minute
    std::string GetTempoText() const;                                               // "120.0"
    void SetRoot(std::int32_t pitchClass);  // one other than 0 to 11 changes nothing
    void SetScale(std::int32_t scaleIndex); // one that no menu lists changes nothing
    void SetTempo(float beatsPerMinute);    // any above 0; it may lie beyond what the user can enter

    // While the panel is not active, a user cannot change anything.
    bool IsActive() const { return active.load(std::memory_order_relaxed); }
    void SetActive(bool on) { active.store(on, std::memory_order_relaxed); }

    // --- What a user does; false where nothing has changed, and then nobody is told ---

    bool ChooseRoot(std::int32_t pitchClass);
    bool ChooseScale(std::int32_t scaleIndex);
    bool EnterTempo(float beatsPerMinute); // held to the range
    // By 0.1 a step, to a multiple of that; with the SHIFT key by 1.
    bool StepTempo(std::int32_t steps, bool wholeSteps);
    bool PressRatio(std::int32_t button); // of kTempoRatios; held to the range

private:
    bool Report();

    std::atomic<std::int32_t> root{0};
    std::atomic<std::int32_t> scale{0};
    std::atomic<float> tempo{kUsualTempo};
    std::atomic<bool> active{true};
    Callback onChanged;
};

} // namespace sonorelle
