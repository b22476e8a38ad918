// The channel strip of one voice: its values in the units that the voice bank takes, its switches, its dial,
// and what of it is folded open.
//
//     CkvoVoiceChannelStrip strip;
//     strip.Set(VoiceControl::kShape, 1.189F);                  // a ratio
//     const float semitones = strip.GetPanelValue(VoiceControl::kShape); // 3.0
//     const StripGain gain = strip.GetGain();                   // as the mix takes it
//
// Threads: values, switches and gains on any thread, without a lock. Sections, peaks and the changed control
// belong to the interface thread. Nothing allocates.

#pragma once

#include "app/strip_gain.h"
#include "app/voice_controls.h"
#include "app/voice_preset.h"
#include "app/vol_pan_dial.h"

#include <array>
#include <atomic>

namespace sonorelle {

class CkvoVoiceChannelStrip {
public:
    CkvoVoiceChannelStrip();

    // --- Values, stored units; what is no slider has 0 ---

    float Get(VoiceControl control) const;
    float GetPanelValue(VoiceControl control) const; // as the control shows it
    // Held to the control's range; what is not finite, or no slider, changes nothing. Volume and pan put the
    // gains into force.
    void Set(VoiceControl control, float stored);

    bool IsMuted() const { return mute.load(std::memory_order_relaxed); }
    bool IsSoloed() const { return solo.load(std::memory_order_relaxed); }
    void SetMute(bool on) { mute.store(on, std::memory_order_relaxed); }
    void SetSolo(bool on) { solo.store(on, std::memory_order_relaxed); }

    VoiceSettings GetSettings() const;
    void SetSettings(const VoiceSettings& settings); // each value as with Set

    // --- Gains ---

    // Worked out from volume and pan when they are asked for: two threads that move both at once cannot leave
    // an old gain behind. Two square roots.
    StripGain GetGain() const;
    void RefreshGain() { gainsInForce.store(true, std::memory_order_relaxed); }

    CkvoVolPanDial& Dial() { return dial; }
    const CkvoVolPanDial& Dial() const { return dial; }

    // --- The interface thread's own ---

    VoiceControl GetChangedControl() const { return changedControl; }
    void SetChangedControl(VoiceControl control) { changedControl = control; }

    bool IsSectionOpen(VoiceSection section) const;
    void OpenSection(VoiceSection section, bool open);
    // What the section's bar says: nothing while it is open.
    const char* GetSectionLabel(VoiceSection section) const;

private:
    static constexpr std::size_t kSlots =
        9; // one for each change code; those of vol, pan and switch are idle

    std::array<std::atomic<float>, kSlots> values{};
    CkvoVolPanDial dial; // holds volume and pan
    std::atomic<bool> mute{false};
    std::atomic<bool> solo{false};
    std::atomic<bool> gainsInForce{false};
    static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<float>::is_always_lock_free);
    VoiceControl changedControl = VoiceControl::kNone;
    std::array<bool, kVoiceSections> openSections{};
};

} // namespace sonorelle
