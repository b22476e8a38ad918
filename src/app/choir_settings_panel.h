// How the melody is harmonised, as the user picks it: three pages ("Automatic", "Edit", "Live"), and on the
// first of them key, style, details and width of the choir. Values and rules alone; see ui/ for its face.
//
//     CkvovirelaineChoirSettings panel(audioLock);
//     panel.RegisterWith(store);
//     panel.SetOnChanged([&] { application.OnChoirSettingsChanged(); });
//     panel.ChooseStyle(3);     // "Block Chord 4 Voices": GetMode() is now 4, the application is told
//     panel.PressEdit(true);    // GetMode() is 2
//     store.Undo();             // under AudioLock
//     panel.ReadModeFromStore();
//
// What the application sets (Set...) fires no callback; what the user does (Choose..., Move..., Press...,
// Toggle...) does, when it has changed something, and presses of the three page buttons always.
//
// Threads. The interface lock guards everything. The store's copy of `mode` is memory of its own, which the
// audio thread may overwrite by a recall: it is touched under AudioLock alone, and counts from
// ReadModeFromStore on. Nothing allocates but what the callback does.
//
// Bad rows, and numbers that are not finite, change nothing; others are held to their ranges.

#pragma once

#include "app/choir_style_rows.h"
#include "app/voice_rows.h"
#include "platform/critical_section.h"

#include <array>
#include <cstdint>
#include <functional>
#include <utility>

namespace sonorelle {

class CSnapshotStore;

class CkvovirelaineChoirSettings {
public:
    using Callback = std::function<void()>;

    static constexpr std::int32_t kDetailLists = 3;
    static constexpr std::int32_t kIntervalRows = 4;
    static constexpr float kRangeStep = 0.1F;
    static constexpr float kDefaultRange = 0.6F;

    static constexpr const char* kRootLabel = "Root ";
    static constexpr const char* kScaleLabel = "Scale ";
    static constexpr const char* kStyleLabel = "Style ";
    static constexpr const char* kAutomaticLabel = "Automatic";
    static constexpr const char* kEditLabel = "Edit";
    static constexpr const char* kLiveLabel = "Live";
    static constexpr const char* kSnapTip = "quantize/snap to scale";
    static constexpr const char* kArrangementLabel = "Voice Arrangement";
    static constexpr const char* kArrangementTip = "change the arrangement of the choir voices";
    static constexpr const char* kRangeLabel = "Voice Range";
    static constexpr const char* kRangeTip = "change the pitch range of\nthe vocal arrangement";
    static constexpr const char* kRangeUnit = "range";
    static constexpr const char* kEditText =
        "The edit mode offers\nthe modification of\nindividual notes and\n"
        "thus has no \"general\"\nharmonization options.";
    static constexpr const char* kInterpretLabel = "Interpret MIDI input as";
    static constexpr std::array<const char*, 2> kInterpretations = {"Harmonies", "Pitches"};
    static constexpr const char* kRecordLabel = "Record";
    static constexpr const char* kRecordTip = "record MIDI input";

    // `lock`: the application's AudioLock.
    explicit CkvovirelaineChoirSettings(CCriticalSection& lock) : audioLock(lock) {}
    ~CkvovirelaineChoirSettings() = default;
    CkvovirelaineChoirSettings(const CkvovirelaineChoirSettings&) = delete;
    CkvovirelaineChoirSettings& operator=(const CkvovirelaineChoirSettings&) = delete;

    void SetOnChanged(Callback callback) { onChanged = std::move(callback); }

    // --- The mode word ---

    // Registers the mode word with the store (4 bytes, version 1.0), which keeps its address: the store
    // forgets it (ClearAll) before it is used again without this panel. Takes AudioLock.
    void RegisterWith(CSnapshotStore& store);
    std::int32_t GetMode() const { return mode; } // see ChoirMode; whatever SetMode or the store brought
    // Shows the page of the mode, and on page "Automatic" a style of the mode if the present one is none. A
    // live mode while live is not allowed becomes Edit, so that the recalled voices stay. Takes AudioLock.
    void SetMode(std::int32_t newMode);
    // After the store has written the mode word: SetMode with what it holds.
    void ReadModeFromStore();

    ChoirPage GetPage() const { return PageOfMode(mode); }

    // Whether live modes are allowed (not while MIDI notes trigger snapshots). Forbidding it on page "Live"
    // goes to "Edit"; true is returned then: the mode has changed, and no callback has told it.
    bool SetAllowLive(bool on);
    bool GetAllowLive() const { return allowLive; } // else the button "Live" is inactive
    // "Interpret" and "Record" of the live page answer.
    void SetLiveControlsActive(bool on) { liveControlsActive = on; }
    bool AreLiveControlsActive() const { return liveControlsActive; }

    // --- Values; the setters fire no callback ---

    std::int32_t GetRoot() const { return root; } // pitch class
    void SetRoot(std::int32_t pitchClass);
    std::int32_t GetScale() const { return scale; } // row of ScaleTable
    void SetScale(std::int32_t row);
    // Row of the "Style " choice. Setting it on page "Automatic" sets the mode too.
    std::int32_t GetStyle() const { return style; }
    void SetStyle(std::int32_t row);
    // Row of the present style's detail list; 0 where it has none.
    std::int32_t GetDetailRow() const;
    void SetDetailRow(std::int32_t row);
    // Voices above the melody, 0 to GetMostVoicesAbove(): a style of fewer voices limits what is given, and
    // one of more brings the older value back.
    std::int32_t GetVoiceArrangement() const;
    void SetVoiceArrangement(std::int32_t voicesAbove);
    std::int32_t GetMostVoicesAbove() const { return GetVoiceCount() - 1; }
    float GetVoiceRange() const { return voiceRangeValue; } // 0 to 1
    void SetVoiceRange(float range);
    bool GetSnapToScale() const { return snapToScale; }
    void SetSnapToScale(bool on) { snapToScale = on; }
    // Position in ManualIntervalList(), of voice `row` (0 to 3); the interval is this - 7. Prime for a bad
    // row.
    std::int32_t GetInterval(std::int32_t row) const;
    void SetInterval(std::int32_t row, std::int32_t position);
    std::int32_t GetInterpretation() const { return interpretation; } // 0 "Harmonies", 1 "Pitches"
    void SetInterpretation(std::int32_t row);
    bool IsRecording() const { return recording; }
    void SetRecording(bool on) { recording = on; }

    // Style and details in the driver's terms; setting is SetStyle and SetDetailRow.
    DriverStyle GetDriverStyle() const { return DriverStyleOfRow({style, GetDetailRow()}); }
    void SetDriverStyle(std::int32_t driverStyle, std::int32_t arrangement);

    // Whether scale or snap have been changed by the user since this was last asked; true at first. The
    // chords must then be found anew.
    bool GetChordsChanged();
    bool WasChoiceChanged() const { return choiceChanged; } // the user has touched root or scale

    // --- What the face shows ---

    std::int32_t GetVoiceCount() const { return VoicesOfRow({style, GetDetailRow()}); } // 2 to 4
    StyleDetail GetStyleDetail() const { return DetailOfRow(style); }
    VoiceRows GetVoiceRows(std::int32_t panelHeight) const;
    VoiceOrder GetVoiceOrder() const; // from top to bottom
    bool IsIntervalRowVisible(std::int32_t row) const;
    // The choice's own row: its list reads downwards, from "Up Octave" at 0 to "Down Octave" at 14.
    std::int32_t GetIntervalChoiceRow(std::int32_t row) const;
    static const char* IntervalChoiceText(std::int32_t choiceRow); // "" for a bad row

    // --- The user ---

    void PressAutomatic();
    // `down`: the button is down now; up goes back to "Automatic" and the mode of its style.
    void PressEdit(bool down);
    void PressLive(bool down); // nothing happens while live is not allowed
    void ChooseRoot(std::int32_t pitchClass);
    void ChooseScale(std::int32_t row); // a named one
    void ChooseStyle(std::int32_t row);
    void ChooseDetail(std::int32_t row);
    void ChooseInterval(std::int32_t row, std::int32_t choiceRow); // stored as 14 - choiceRow
    void MoveArrangement(double value);                            // truncated
    void MoveRange(double value);                                  // to the nearest tenth
    void ToggleSnap();
    void ChooseInterpretation(std::int32_t row);
    void ToggleRecord();

private:
    void Changed();
    void StoreMode(std::int32_t newMode);
    std::int32_t LiveMode() const;
    std::int32_t DetailList() const; // index into detailRows, -1 for a style without

    CCriticalSection& audioLock;
    Callback onChanged;

    std::int32_t modeWord = kModeIntelligent; // the store's; AudioLock
    std::int32_t mode = kModeIntelligent;     // the panel's

    std::int32_t root = 0;
    std::int32_t scale = 0;
    std::int32_t style = 0;
    std::array<std::int32_t, kDetailLists> detailRows{};
    std::array<std::int32_t, kIntervalRows> intervals = {7, 5, 9,
                                                         12}; // prime, third down, third and
                                                              // sixth up: what the driver begins with
    std::int32_t voiceArrangement = 1;
    float voiceRangeValue = kDefaultRange;
    std::int32_t interpretation = 0;
    bool snapToScale = true;
    bool recording = false;
    bool allowLive = true;
    bool liveControlsActive = false;
    bool choiceChanged = false;
    bool chordsChanged = true;
};

} // namespace sonorelle
