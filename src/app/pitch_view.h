// The pitch view: the recording as a piano roll, in which notes are dragged, cut, joined and switched off.
//
//     CkvoPitchView view;
//     view.SetCallback([&](CkvoPitchView& sender) {
//         PitchViewEventData data;
//         if (sender.GetEvent(data) == kEventNoteMoved) Write(data[0], data[1], sender.GetNotePitch(...));
//     });
//     view.Resize(4, noteCount);
//     view.SetNote(0, 0, 1000, 60, 0, 1, 20000, 1, 0);
//     view.SetTotal(0, 441000);
//     view.ResetView();
//     view.Press({100, 150});     // a face hands in what the pointer does
//     view.Drag({100, 120});
//     view.Release({100, 120});
//
// The view keeps its own copy of the notes, changes it during a gesture, and reports each change as an event
// through the callback, one at a time; the callback may call any operation of the view. It knows no toolkit
// and no harmoniser. Sources: pitch_view.cpp (notes and values), pitch_view_zoom.cpp, pitch_view_gestures.cpp
// (which gesture begins where), pitch_view_notes.cpp (drag, cut, join), pitch_view_header.cpp (strip,
// markers, beats), pitch_view_menus.cpp, pitch_view_drawing.cpp.
//
// Threads. What is marked so may be called by the audio thread too; all else belongs to the interface.
// SetNote never allocates; Resize, SetCurve, gestures and drawings do.
//
// Hostile values: notes and voices that do not exist are ignored; numbers that are not finite count as 0, or
// leave things as they were.

#pragma once

#include "app/beat_grid.h"
#include "app/chord_window.h"
#include "app/pitch_object.h"
#include "app/pitch_view_drawing.h"
#include "app/pitch_view_geometry.h"
#include "app/popup_menu.h"
#include "harmony/chord_record.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace sonorelle {

// What the view reports; the arguments stand in PitchViewEventData.
enum PitchViewEvent : std::int32_t {
    kNoViewEvent = -1,
    kEventChordClicked = 0,    // note
    kEventDragEnded = 2,       // note, voice
    kEventNoteMoved = 3,       // note, voice
    kEventNotePressed = 4,     // note, voice
    kEventNoteReleased = 5,    // note, voice
    kEventTempoDragged = 8,    // -: GetTempoGrid
    kEventPlayRegionMoved = 9, // start, end
    kEventGainChanged = 10,    // note, voice, gain (0 or 1)
    kEventCut = 11,            // position
    kEventJoin = 12,           // first, last note
};
using PitchViewEventData = std::array<std::int32_t, 4>;

// A note that is dragged together with others.
struct PitchViewSelection {
    std::int32_t note = 0;
    std::int32_t voice = 0;

    bool operator==(const PitchViewSelection&) const = default;
};

class CkvoPitchView {
public:
    static constexpr std::int32_t kVoices = 4;
    static constexpr std::int32_t kMostNotes = 1 << 20; // Resize goes no further
    static constexpr std::size_t kMostScaleTones = 7;

    // What the entries of the menus give to ChooseMenuEntry.
    enum MenuId : std::int32_t {
        kGainOff = 0, // of the chord row
        kGainOn = 1,
        kToggleNote = 2, // of a note
        kMarkerToClosestPitch = 3,
        kMarkerReset = 4,
        kMarkerResetBoth = 5,
    };

    CkvoPitchView();
    CkvoPitchView(const CkvoPitchView&) = delete;
    CkvoPitchView& operator=(const CkvoPitchView&) = delete;

    // --- Events ---

    void SetCallback(std::function<void(CkvoPitchView&)> viewCallback) { callback = std::move(viewCallback); }
    // The code of the event just reported, or kNoViewEvent, and its arguments (unused ones are 0).
    std::int32_t GetEvent(PitchViewEventData& data) const;

    // --- Notes ---

    // `voices` (1 to 4) rows of `noteCount` silent notes; what was there is gone, gestures and selection too.
    void Resize(std::int32_t voices, std::int32_t noteCount);
    std::int32_t GetVoiceCount() const { return voiceCount; }
    std::int32_t GetNoteCount() const;
    // start and length in samples, pitch as MIDI pitch (below 0: silent) without the transposition, offset
    // and height in semitones; a gain other than 1 shows the note as off.
    void SetNote(std::int32_t note, std::int32_t voice, float start, float midiPitch, float offset,
                 float gain, float length, float height, std::int32_t id);
    // Root as pitch class or pitch, type as in ChordType; of all voices of the note.
    void SetChord(std::int32_t note, std::int32_t root, std::int32_t type);
    // The chord that the voices now form.
    void SetDetectedChord(std::int32_t note, std::int32_t root, std::int32_t type);
    // Null for one that does not exist. Stays until the next Resize.
    const PitchViewNote* GetNote(std::int32_t note, std::int32_t voice) const;
    // As SetNote took it: MIDI pitch without the transposition. 0 for a note that does not exist.
    float GetNotePitch(std::int32_t note, std::int32_t voice) const;
    // The note that holds a sample, or -1.
    std::int32_t FindNoteAt(double sample) const;
    const std::vector<PitchViewSelection>& GetSelection() const { return selection; }

    // The analysis, frame by frame in rising order; also gives the envelope of the loudness strip.
    void SetCurve(std::span<const PitchCurvePoint> points);
    std::int32_t GetEnvelopeCount() const { return static_cast<std::int32_t>(envelope.size()); }
    // At most 7 tones are taken.
    void SetScale(std::span<const std::int32_t> pitchClasses, std::int32_t root);
    void SetTuningOffset(float semitones); // by which the recording's tones lie beside those of 440 Hz
    float GetTuningOffset() const { return tuningOffset; }
    void SetUseFlats(bool on) { useFlats = on; } // names of tones and chords

    // --- Values ---

    void SetSampleRate(float hertz); // any thread; what is not above 0 is ignored
    float GetSampleRate() const { return sampleRate.load(std::memory_order_relaxed); }
    // First and last sample of the recording; shows all of it.
    void SetTotal(std::int32_t start, std::int32_t end);
    // Divisor of the drag scale, above 0: 1 lets a drag land on the semitone under the pointer.
    void SetPitchGrid(float divisor);
    float GetPitchGrid() const { return pitchGrid; }
    // Horizontally: 1 shows the whole recording, 2 half of it, from the same start; at least 1.
    void SetZoom(float factor);

    // In samples; no event. A start behind the end counts as the end. Any thread.
    void SetPlayRegion(std::int32_t start, std::int32_t end);
    void GetPlayRegion(std::int32_t& start, std::int32_t& end) const; // any thread
    std::int32_t GetMarkerStart() const { return markers.load(std::memory_order_relaxed).start; }
    std::int32_t GetMarkerEnd() const { return markers.load(std::memory_order_relaxed).end; }

    // The beats: quarter notes a minute of the melody as it plays (the host's own while it does not follow
    // the host) and of the host; `anchor`: the host's sample at which the recording begins, so that the
    // host's first bar begins at recording sample -anchor x hostTempo / melodyTempo. Tempi that are not above
    // 0 leave the grid as it was (the melody's) or count as the melody's (the host's). Any thread; while the
    // user drags the beats, the tempo stays in the user's hand.
    void SetTempoGrid(float melodyTempo, float hostTempo, double anchor, std::int32_t numerator,
                      std::int32_t denominator);
    float GetTempoGrid() const;   // any thread
    BeatGrid GetBeatGrid() const; // any thread

    // A voice that is not enabled is neither drawn nor heard. Any thread; a bad voice is off.
    void SetVoiceEnabled(std::int32_t voice, bool on);
    bool IsVoiceEnabled(std::int32_t voice) const;
    // Semitones, added to pitches and chords that are set afterwards. Any thread.
    void SetTransposeShift(float semitones);
    float GetTransposeShift() const { return transposeShift.load(std::memory_order_relaxed); }

    // What gestures may do. Any thread.
    void SetCutMode(bool on) { cutMode.store(on, std::memory_order_relaxed); }
    bool GetCutMode() const { return cutMode.load(std::memory_order_relaxed); }
    void SetNoteEdit(bool on) { noteEdit.store(on, std::memory_order_relaxed); }
    bool GetNoteEdit() const { return noteEdit.load(std::memory_order_relaxed); }
    void SetChordEdit(bool on) { chordEdit.store(on, std::memory_order_relaxed); }
    bool GetChordEdit() const { return chordEdit.load(std::memory_order_relaxed); }
    void SetChordTips(bool on) { chordTips.store(on, std::memory_order_relaxed); }
    bool GetChordTips() const { return chordTips.load(std::memory_order_relaxed); }
    void SetBackground(PitchViewBackground state) { background.store(state, std::memory_order_relaxed); }
    PitchViewBackground GetBackground() const { return background.load(std::memory_order_relaxed); }
    // The application is about to replace the notes: the face had better wait with its drawing. Any thread.
    void SetRebuild(bool on) { rebuild.store(on, std::memory_order_relaxed); }
    bool NeedsRebuild() const { return rebuild.load(std::memory_order_relaxed); }

    // Sample of the recording that is heard now; not finite: ignored. Any thread.
    void SetPlayPosition(double sample, bool playing = false);
    double GetPlayPosition() const { return playPosition.load(std::memory_order_relaxed); }
    bool IsPlaying() const { return isPlaying.load(std::memory_order_relaxed); }
    // Scrolls, by a page, when the position is out of sight.
    void FollowPosition();

    // What has changed since the last call, as bits. Any thread.
    enum Damage : std::uint32_t {
        kDamageHeader = 0x01, // markers, beats, chord names
        kDamageNotes = 0x02,
        kDamageOverview = 0x04,
        kDamagePosition = 0x08,
        kDamagePart = 0x10, // set with each of these
        kDamageAll = 0x40,
    };
    std::uint32_t TakeDamage() { return damage.exchange(0, std::memory_order_relaxed); }

    // --- Looks and zoom ---

    void SetSize(std::int32_t widthPixels, std::int32_t heightPixels); // held to 1 to 32767
    const PitchViewAxes& GetAxes() const { return axes; }
    void ResetView();       // the whole recording, and all its pitches
    void FitPitch();        // the notes in view, a semitone above and below them
    void FitPlayRegion();   // horizontally, from marker to marker
    void FitVertically();   // as FitPitch
    void FitHorizontally(); // the whole recording
    bool GetShowKeyRow() const { return showKeyRow; }
    bool GetShowFreqRow() const { return showFreqRow; }
    bool GetShowBeatRow() const { return showBeatRow; }
    void SetShowKeyRow(bool on) { showKeyRow = on; }   // tints the rows of the scale
    void SetShowFreqRow(bool on) { showFreqRow = on; } // the sung melody as a line
    void SetShowBeatRow(bool on) { showBeatRow = on; } // beats in place of seconds, and their lines

    // --- Gestures: what the face hands in ---

    void Press(const PointerEvent& event);
    void Drag(const PointerEvent& event);
    void Release(const PointerEvent& event);
    void Wheel(const PointerEvent& event);
    void Move(const PointerEvent& event); // no button is down
    void Leave();                         // the pointer has left the view
    // The menu at a point, empty where there is none; ends any drag.
    PopupMenu RightClick(const PointerEvent& event);
    // The choice in the menu that RightClick gave last; another id does nothing.
    void ChooseMenuEntry(std::int32_t id);
    // A drag is under way: the face keeps the pointer.
    bool IsDragging() const { return gesture != Gesture::kNone; }
    PitchViewCursor CursorAt(const PointerEvent& event) const;
    std::int32_t GetHotNote() const { return hotNote; } // under the pointer, or -1
    std::int32_t GetHotVoice() const { return hotVoice; }
    std::int32_t GetCutPosition() const { return cutPosition; }

    // --- The chord window ---

    // A chord that is played now, shown while nothing is dragged; type 13 for none.
    void SetChordDisplay(std::int32_t root, std::int32_t type);
    std::string GetChordDisplay() const; // its name, transposed; empty for none
    // While a drag runs that it belongs to: notes with chord tips set, or a marker.
    const std::optional<CkvoChordDisplayWin>& GetChordWindow() const { return chordWindow; }

    // --- What a face draws ---

    std::vector<NoteDrawing> DrawNotes() const; // in view, of visible voices, the lead first
    std::vector<RecordedPitchLine> DrawRecordedPitch() const;
    std::vector<PixelPolyline> DrawCurve() const; // empty unless showFreqRow
    OverviewDrawing DrawOverview() const;
    std::array<MarkerDrawing, 2> DrawMarkers() const; // start, end
    std::array<ToggleDrawing, 3> DrawToggles() const;
    std::vector<PitchRowDrawing> DrawPitchRows() const;
    std::vector<BeatLineDrawing> DrawBeats() const;   // empty unless showBeatRow
    std::vector<TimeLineDrawing> DrawSeconds() const; // empty if showBeatRow
    std::vector<ChordDrawing> DrawChords() const;
    PositionDrawing DrawPosition() const;
    std::optional<PitchLabel> DrawPitchLabel() const; // while a note is dragged
    std::string TempoText() const;                    // "120.0"

private:
    enum class Gesture {
        kNone,
        kPan,
        kZoom,
        kNote,
        kOverviewLeft,
        kOverviewRight,
        kOverviewBody,
        kMarkerStart,
        kMarkerEnd,
        kTempo,
    };
    enum class MenuKind { kNone, kNote, kChordRow, kMarkerStart, kMarkerEnd };
    struct MarkerPair { // the play range; one value, so that no thread sees halves of two
        std::int32_t start = 0;
        std::int32_t end = 0;
    };
    struct NoteHit {
        std::int32_t note = -1;
        std::int32_t voice = -1;
        bool Found() const { return note >= 0; }
    };

    // Notes.
    PitchViewNote* FindNote(std::int32_t note, std::int32_t voice);
    void Report(std::int32_t code, PitchViewEventData data);
    void Redraw(std::uint32_t bits) { damage.fetch_or(bits, std::memory_order_relaxed); }
    void MarkDoubled(std::int32_t note);
    bool IsInView(const PitchViewNote& note) const;
    bool IsDrawn(std::int32_t voice, const PitchViewNote& note) const;
    bool IsSelected(std::int32_t note, std::int32_t voice) const;
    float LeastVisibleSamples() const;
    std::string NameOfChord(std::int32_t root, std::int32_t type) const;
    std::string NameOfPitch(std::int32_t pitch) const;

    // Where the pointer is.
    NoteHit HitNote(std::int32_t x, std::int32_t y) const;
    std::int32_t HitChord(std::int32_t x, std::int32_t y) const;
    Gesture HitOverview(std::int32_t x, std::int32_t y) const;
    Gesture HitMarker(std::int32_t x, std::int32_t y) const;
    std::int32_t HitToggle(std::int32_t x, std::int32_t y) const;
    bool IsInBeatRow(std::int32_t x, std::int32_t y) const;
    PitchViewCursor HeaderCursorAt(const PointerEvent& event) const;

    // Gestures.
    void BeginGesture(Gesture kind, const PointerEvent& event);
    void PressHeader(const PointerEvent& event);
    void PressNote(const PointerEvent& event, const NoteHit& hit);
    void PressEmpty(const PointerEvent& event);
    void PressCut(const PointerEvent& event, const NoteHit& hit);
    void JoinWith(const NoteHit& hit);
    void DragPan(const PointerEvent& event);
    void DragZoom(const PointerEvent& event);
    void DragNote(const PointerEvent& event);
    void MoveNote(std::int32_t note, std::int32_t voice, float semitones);
    void DragOverview(const PointerEvent& event);
    void DragMarker(const PointerEvent& event);
    void DragTempo(const PointerEvent& event);
    void ReleaseNote();
    void ReleaseTempo();
    void EndGesture();
    void ShowChordTip(std::int32_t note);
    void ShowMarkerTime(std::int32_t sample);

    // Menus and markers.
    void ToggleNote(const NoteHit& hit);
    void SetHarmonyGains(std::int32_t note, bool on);
    void SetNoteGain(std::int32_t note, std::int32_t voice, bool on);
    void ChooseForMarker(std::int32_t id, bool isStart);
    void MoveMarker(bool isStart, std::int32_t sample);
    std::optional<std::int32_t> ClosestNoteStart(std::int32_t sample) const;
    void ReportMarkers(MarkerPair changed);
    void ToggleRow(std::int32_t row);

    // The notes, [voice][note].
    std::vector<std::vector<PitchViewNote>> noteRows;
    std::int32_t voiceCount = kVoices;
    std::vector<PitchViewSelection> selection;
    std::vector<PitchCurvePoint> curve;
    std::vector<PitchCurvePoint> envelope; // the strip's points: the loudest of each stretch
    std::array<std::int32_t, kMostScaleTones> scaleTones{};
    std::size_t scaleToneCount = 0;
    std::int32_t scaleRoot = 0;
    float tuningOffset = 0;

    // Events.
    std::function<void(CkvoPitchView&)> callback;
    std::int32_t lastEvent = kNoViewEvent;
    PitchViewEventData eventData{};

    // The gesture under way.
    Gesture gesture = Gesture::kNone;
    PointerEvent pressEvent;
    PitchViewAxes pressAxes; // as they were at the press
    std::int32_t lastY = 0;
    std::int32_t lastX = 0;
    std::int32_t pressMarker = 0;
    std::int32_t dragNote = -1;
    std::int32_t dragVoice = -1;
    std::int32_t cutPosition = 0;
    std::int32_t hotNote = -1;
    std::int32_t hotVoice = -1;
    MenuKind menuKind = MenuKind::kNone;
    NoteHit menuNote;
    bool noteMoved = false; // by this drag
    std::optional<CkvoChordDisplayWin> chordWindow;
    std::int32_t displayRoot = 0;
    std::int32_t displayType = ConsortierClassic::kNoTetrad;

    // Looks.
    PitchViewAxes axes;
    std::int32_t firstSample = 0; // of the recording, exactly
    std::int32_t lastSample = 0;
    float maxTopPitch = 72; // what ResetView shows
    float minBottomPitch = 52;
    float pitchGrid = 0.1F;
    bool useFlats = false;
    bool showKeyRow = false;
    bool showFreqRow = true;
    bool showBeatRow = false;

    // Shared with the audio thread.
    std::atomic<float> sampleRate{BeatGrid::kDefaultRate};
    std::atomic<MarkerPair> markers{MarkerPair{}};
    std::atomic<float> tempoGrid{BeatGrid::kDefaultTempo};
    float tempoGridBase = BeatGrid::kDefaultTempo; // at the start of a drag
    std::atomic<float> draggedTempo{0};            // in the user's hand; 0: none
    std::atomic<double> gridAnchor{0};             // sample of the recording
    std::atomic<std::int32_t> gridNumerator{4};
    std::atomic<std::int32_t> gridDenominator{4};
    std::array<std::atomic<bool>, kVoices> voiceVisible;
    std::atomic<float> transposeShift{0};
    std::atomic<bool> cutMode{false};
    std::atomic<bool> noteEdit{false};
    std::atomic<bool> chordEdit{true};
    std::atomic<bool> chordTips{false};
    std::atomic<PitchViewBackground> background{PitchViewBackground::kNormal};
    std::atomic<bool> rebuild{false};
    std::atomic<std::uint32_t> damage{kDamageAll};
    std::atomic<double> playPosition{0};
    std::atomic<bool> isPlaying{false};
    static_assert(std::atomic<double>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);
};

} // namespace sonorelle
