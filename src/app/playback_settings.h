// What playback follows: the host's time, with an offset, or a MIDI note; which region of the melody it
// plays; and whether the tempo is the host's.
//
//     CkvovirelainePlaybackSettings panel;
//     panel.SetOnChanged([&] { application.OnPlaybackChanged(); });
//     panel.SetMelodyLength(10 * 44100);
//     panel.SetRegion(0, 10 * 44100);
//     panel.SetHostPosition(44100, 44100); // the host has moved
//     panel.PressSetStart();               // the region now begins after one second; the callback is told
//
// What the application sets (Set...) fires no callback; what the user does (Press..., Choose..., Enter on one
// of the displays) does.
//
// Threads. All Get..., Set... and Is... of values are atomics for any thread; nothing of them allocates. What
// the user does belongs to whoever holds the interface lock. Region and key are single values each: a reader
// in the middle of a change may see the new start with the old end.
//
// The region lies within 0 and the length of the melody, its start not behind its end.

#pragma once

#include "app/time_display.h"

#include <atomic>
#include <cstdint>
#include <functional>

namespace sonorelle {

class CkvovirelainePlaybackSettings {
public:
    using Callback = std::function<void()>;

    enum Mode : std::int32_t { kTime = 0, kMidi = 1 };
    enum ChangeCode : std::int32_t { kNoCode = 0, kOffsetCode = 1 };

    static constexpr std::int32_t kNoKey = -1;
    static constexpr std::int32_t kDefaultKey = 60;
    static constexpr std::int32_t kLowestOctave = -2;
    static constexpr std::int32_t kHighestOctave = 8;
    static constexpr std::int32_t kHighestKey = 131; // the last of octave 8; MIDI's own end is 127

    static constexpr const char* kTimeLabel = "Time";
    static constexpr const char* kTimeTip = "switch to time sync mode";
    static constexpr const char* kMidiLabel = "MIDI";
    static constexpr const char* kMidiTip = "switch to midi trigger mode";
    static constexpr const char* kNoteLabel = "MIDI Note ";
    static constexpr const char* kOctaveLabel = "Octave ";
    static constexpr const char* kOffsetLabel = "Host @y+1@s5@<@>@n Plug Offset";
    static constexpr const char* kStartLabel = "Start Marker: ";
    static constexpr const char* kEndLabel = "End Marker: ";
    static constexpr const char* kSetLabel = "Set";
    static constexpr const char* kSetOffsetTip = "set offset to current host position\n"
                                                 "in some hosts you'll have to hit START/STOP first";
    static constexpr const char* kSetStartTip = "set start marker to current host position\n"
                                                "in some hosts you'll have to hit START/STOP first";
    static constexpr const char* kSetEndTip = "set end marker to current host position\n"
                                              "in some hosts you'll have to hit START/STOP first";
    static constexpr const char* kSyncLabel = " Sync To Host Tempo ";
    static constexpr const char* kSyncTip = "enable tempo synchronisation";

    CkvovirelainePlaybackSettings();
    ~CkvovirelainePlaybackSettings() = default;
    CkvovirelainePlaybackSettings(const CkvovirelainePlaybackSettings&) = delete;
    CkvovirelainePlaybackSettings& operator=(const CkvovirelainePlaybackSettings&) = delete;

    void SetOnChanged(Callback callback) { onChanged = std::move(callback); }

    // --- Values, any thread ---

    std::int32_t GetMode() const { return mode.load(std::memory_order_relaxed); } // see Mode
    void SetMode(std::int32_t newMode);                                           // others are ignored

    // Where the melody's time 0 lies, in samples of the host; within +-1e24, and not changed by what is not a
    // number. Setting it raises the flag that the anchor was set.
    double GetOffset() const { return offsetDisplay.GetValue(); }
    void SetOffset(double samples);
    bool IsOffsetSet() const { return GetChangeCode() == kOffsetCode; }
    void ClearOffsetSet() { changeCode.store(kNoCode, std::memory_order_relaxed); }
    std::int32_t GetChangeCode() const { return changeCode.load(std::memory_order_relaxed); }

    // The play region, in samples of the melody.
    void GetRegion(std::int32_t& start, std::int32_t& end) const;
    void SetRegion(std::int32_t start, std::int32_t end);
    std::int32_t GetStartMarker() const;
    std::int32_t GetEndMarker() const;
    void SetStartMarker(std::int32_t samples) { SetRegion(samples, GetEndMarker()); }
    void SetEndMarker(std::int32_t samples) { SetRegion(GetStartMarker(), samples); }
    // No limit until it is set. The region shrinks to it.
    std::int32_t GetMelodyLength() const { return melodyLength.load(std::memory_order_relaxed); }
    void SetMelodyLength(std::int32_t samples);

    // The key that plays the region, 0 to 131; -1 for none, and note and octave then show the last one.
    std::int32_t GetTriggerNote() const { return triggerKey.load(std::memory_order_relaxed); }
    std::int32_t GetTriggerKey() const { return GetTriggerNote(); } // octave x 12 + note + 24
    void SetTriggerNote(std::int32_t key);                          // beyond these ignored
    std::int32_t GetNote() const;                                   // row of the "MIDI Note " choice
    std::int32_t GetOctave() const;

    bool GetSyncTempo() const { return syncTempo.load(std::memory_order_relaxed); }
    void SetSyncTempo(bool on) { syncTempo.store(on, std::memory_order_relaxed); }

    // For the texts; the samples stay. Ignored unless finite and above 0.
    float GetSampleRate() const { return offsetDisplay.GetSampleRate(); }
    void SetSampleRate(float hertz);

    // Where melody and host stand, in samples each: what the three Set buttons go by.
    void SetHostPosition(double melody, double host);
    double GetShownMelodyPosition() const { return melodyPosition.load(std::memory_order_relaxed); }
    double GetShownHostPosition() const { return hostPosition.load(std::memory_order_relaxed); }

    // --- What the face shows ---

    bool IsOffsetRowVisible() const { return GetMode() == kTime; }
    bool IsTriggerRowVisible() const { return GetMode() == kMidi; }
    bool AreMarkerButtonsActive() const { return GetMode() == kTime; }

    // --- The user ---

    // The displays take entry, drag and wheel; this panel holds the markers to each other and tells its
    // callback.
    CkvoTimeDisplay& OffsetDisplay() { return offsetDisplay; }
    CkvoTimeDisplay& StartDisplay() { return startDisplay; }
    CkvoTimeDisplay& EndDisplay() { return endDisplay; }

    void PressTime(); // each stays down when it is pressed again
    void PressMidi();
    void ChooseNote(std::int32_t row);      // 0 (C) to 11
    void ChangeOctave(std::int32_t octave); // held to -2 to 8
    void PressSetOffset();                  // in "Time" mode, as the two others
    void PressSetStart();
    void PressSetEnd();
    void ToggleSync();

private:
    void PressMode(Mode newMode);
    void OnOffsetEdited();
    void OnMarkerEdited();
    void ChooseKey(std::int32_t key);
    void SetMarkers(std::int64_t start, std::int64_t end);
    double PositionInMelody() const; // what the marker buttons set
    void Changed();

    Callback onChanged;
    std::atomic<std::int32_t> mode{kTime};
    std::atomic<std::int32_t> changeCode{kNoCode};
    std::atomic<std::int32_t> triggerKey{kDefaultKey};
    std::atomic<std::int32_t> shownKey{kDefaultKey}; // the last that was one
    std::atomic<std::int32_t> melodyLength;
    std::atomic<bool> syncTempo{false};
    std::atomic<double> melodyPosition{0};
    std::atomic<double> hostPosition{0};

    CkvoTimeDisplay offsetDisplay;
    CkvoTimeDisplay startDisplay;
    CkvoTimeDisplay endDisplay;
};

} // namespace sonorelle
