// The mixer: a channel strip for each of the four voices.
//
//     CkvovirelaineVoiceSettings mixer;
//     mixer.SetCallback([&](CkvovirelaineVoiceSettings& panel) {
//         const std::int32_t voice = panel.GetLastStrip();
//         if (panel.GetChangedControl(voice) == VoiceControl::kDelay)
//             bank.SetDelay(voice, panel.GetDelay(voice));
//     });
//     mixer.MoveControl(1, VoiceControl::kDelay, 35);   // the user: 35 ms, tells the callback
//     mixer.SetDelay(1, 0.02F);                         // the host or a document: seconds, tells nobody
//     const StripGain gain = mixer.GetStripGain(1);     // the mix
//
// There are no master strips; the master gains stand at 1.
//
// Threads: getters and setters of values, switches and gains, and the visible voices, on any thread and
// without a lock: host automation writes them while the audio thread reads. What a user does (MoveControl and
// so on), the callback, sections, peaks and the changed control belong to the interface thread. The callback
// may allocate; nothing else does. A voice other than 0 to 3 reads as a strip that nobody has touched, and
// is not written.

#pragma once

#include "app/voice_channel_strip.h"
#include "app/voice_preset.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <utility>

namespace sonorelle {

class CkvovirelaineVoiceSettings {
public:
    static constexpr std::int32_t kVoices = kPresetVoices;
    static constexpr std::int32_t kNoStrip = -1;

    using Callback = std::function<void(CkvovirelaineVoiceSettings&)>;

    // Called once for each control that a user has moved. It finds the strip in GetLastStrip and the control
    // in GetChangedControl.
    void SetCallback(Callback callback) { onChanged = std::move(callback); }

    // --- Values of a voice, as the voice bank takes them and documents store them ---

    float GetVol(std::int32_t voice) const;          // 0 to 1.333
    float GetPan(std::int32_t voice) const;          // -1 to 1
    float GetDelay(std::int32_t voice) const;        // seconds, 0 to 0.1
    float GetTiming(std::int32_t voice) const;       // seconds, 0 to 0.2
    float GetQuantize(std::int32_t voice) const;     // 0 to 1
    float GetDrift(std::int32_t voice) const;        // -1 to 1
    float GetGlide(std::int32_t voice) const;        // 0 to 1
    float GetFormantShift(std::int32_t voice) const; // ratio, 2^(-8/12) to 2^(8/12)
    bool IsMuted(std::int32_t voice) const;
    bool IsSoloed(std::int32_t voice) const;
    VoiceSettings GetSettings(std::int32_t voice) const;

    // Values beyond a control's range are held to it; what is not finite leaves the value as it is. None of
    // them calls the callback, and SetSolo leaves the other voices' solos alone.
    void SetVol(std::int32_t voice, float vol);
    void SetPan(std::int32_t voice, float pan);
    void SetDelay(std::int32_t voice, float seconds);
    void SetTiming(std::int32_t voice, float seconds);
    void SetQuantize(std::int32_t voice, float amount);
    void SetDrift(std::int32_t voice, float amount);
    void SetGlide(std::int32_t voice, float amount);
    void SetFormantShift(std::int32_t voice, float ratio);
    void SetMute(std::int32_t voice, bool on);
    void SetSolo(std::int32_t voice, bool on);
    void SetSettings(std::int32_t voice, const VoiceSettings& settings);

    // As the control shows it: gain, ms, semitones, per cents.
    float GetPanelValue(std::int32_t voice, VoiceControl control) const;

    // --- What the mix takes; `channel` 0 or 1, any other has gain 0 ---

    float GetGain(std::int32_t voice, std::int32_t channel) const;
    StripGain GetStripGain(std::int32_t voice) const;
    float GetMasterGain(std::int32_t channel) const;

    // Puts the gains of all strips into force, those of untouched ones too, which stand lower until then.
    void Refresh();

    // --- Voices ---

    void SetVisibleVoices(std::int32_t count); // the strips below it are active; held to 0 to 4
    std::int32_t GetVisibleVoices() const { return visibleVoices.load(std::memory_order_relaxed); }
    bool IsStripActive(std::int32_t voice) const;

    // Which voices sound: of the active ones those on solo if there are any, else those that are not muted.
    // It changes with the switches and with the visible voices.
    std::array<bool, kVoices> GetAudibleVoices() const;

    // --- What a user does; false where the strip is not active or nothing has changed ---

    // `panelValue` as the control shows it, held to its range.
    bool MoveControl(std::int32_t voice, VoiceControl control, float panelValue);
    // To pixel (x, y) of a dial of this size. Volume and pan are told one after the other, each if it
    // changed.
    bool DragDial(std::int32_t voice, std::int32_t x, std::int32_t y, DialSize size);
    // Where the strip is on solo afterwards, the solos of all others go out, and each of those is told too.
    bool ToggleMute(std::int32_t voice);
    bool ToggleSolo(std::int32_t voice);
    // Pan to the centre, volume to 1; both are told.
    bool PressReset(std::int32_t voice);

    std::int32_t GetLastStrip() const { return lastStrip; }   // that the callback was called for, or kNoStrip
    VoiceControl GetChangedControl(std::int32_t voice) const; // kNone before the first change

    // --- Folding sections and meters ---

    bool IsSectionOpen(std::int32_t voice, VoiceSection section) const;
    void OpenSection(std::int32_t voice, VoiceSection section, bool open);
    void CloseSections(); // of all voices

    void SetPeak(std::int32_t voice, float left, float right); // squared
    CkvoVoiceChannelStrip& GetStrip(std::int32_t voice);       // `voice` 0 to 3, else voice 0's: for faces
    const CkvoVoiceChannelStrip& GetStrip(std::int32_t voice) const;

private:
    float Get(std::int32_t voice, VoiceControl control) const;
    void Set(std::int32_t voice, VoiceControl control, float stored);
    void Report(std::int32_t voice, VoiceControl control);
    void ReportSwitch(std::int32_t voice);

    std::array<CkvoVoiceChannelStrip, kVoices> strips;
    std::atomic<std::int32_t> visibleVoices{kVoices};
    static_assert(std::atomic<std::int32_t>::is_always_lock_free);
    std::int32_t lastStrip = kNoStrip;
    Callback onChanged;
};

} // namespace sonorelle
