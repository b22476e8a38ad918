// The harmonised melody: for every note up to four voices, their gains and a chord, and the settings that
// they were made from.
//
// The driver takes the note list from the analysis, lets the choir engine make the voices (Run), answers the
// synthesis note by note (GetVoice), takes keys from a MIDI input in their place (live mode), and splits and
// merges notes.
//
//     CMelodyAnalyzer analyzer; ...             // analysed or loaded
//     CSnapshotStore store;
//     CChoirDriver driver(analyzer, store);
//     driver.SetVoiceRange(1);
//     driver.SetSpread(0.6F);
//     driver.Run();                             // key from the analysis, chords, voices
//     driver.SetAutoKey(false);                 // later runs keep the key
//     for (std::int32_t note = 0; note < driver.GetNoteCount(); ++note)
//         for (std::int32_t voice = 0; voice < driver.VoiceCount(); ++voice)
//             pitch = driver.GetVoice(note, voice, deviation, gain, true);
//
// Memory. Settings, notes, voices, gains and chords are registered with the snapshot store, which keeps
// addresses: both analyzer and store outlive the driver, and the store forgets the driver's memory (ClearAll)
// before it is used again without it. Whoever lets the store write that memory (undo, a recalled snapshot)
// calls RefreshFromStore afterwards. A document may bring anything: settings that the engine refuses are put
// back at the next Run to what it holds, and numbers of all sizes are held to their ranges where they are
// used.
//
// Threads. No lock of its own. Run and whatever changes something is called under the application's AudioLock
// once audio runs. Fit for the audio thread, that is without allocation, lock or wait: GetVoice, NoteInput,
// UpdateLive, ResetLive, FinishRun, the look-ups by position and the queries of a note. Only Run, BeginRun,
// SplitNote, MergeNotes and GrowNotes allocate. Nothing throws.
//
// Note indices run from 0 to GetNoteCount() - 1, voices from 0 (the melody) to 3, positions in sample frames.
// Pitches are MIDI note numbers, -1 for a silent voice.

#pragma once

#include "analysis/records.h"
#include "harmony/choir_notes.h"
#include "harmony/choir_run.h"
#include "harmony/choir_settings.h"
#include "harmony/consortier.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <span>

namespace sonorelle {

class CMelodyAnalyzer;
class CSnapshotStore;

class CChoirDriver {
public:
    using ChordRecord = ConsortierClassic::ChordRecord;

    static constexpr std::int32_t kVoiceSlots = ConsortierClassic::kVoiceSlots;
    static constexpr std::int32_t kHeldKeys = 8; // places of NoteInput

    // Registers the settings with the store; the notes follow in the first Run.
    CChoirDriver(CMelodyAnalyzer& melody, CSnapshotStore& snapshotStore);
    ~CChoirDriver() = default;
    CChoirDriver(const CChoirDriver&) = delete;
    CChoirDriver& operator=(const CChoirDriver&) = delete;

    CMelodyAnalyzer& GetAnalysis() const { return analysis; }

    // --- Settings; the next Run goes by them ---
    // 0, or kBadArgument with nothing changed.

    std::int32_t SetRoot(std::int32_t pitchClass);    // 0 (C) to 11
    std::int32_t SetMelodyScale(std::int32_t index);  // a named row of ScaleTable; the engine knows at once
    std::int32_t SetHarmonyScale(std::int32_t index); // any row; the engine knows at once
    std::int32_t SetVoiceRange(std::int32_t voicesAbove);  // harmony voices above the melody, 0 to 3; more
                                                           // than the arrangement has leaves the engine's own
    std::int32_t SetSpread(float share);                   // 0 (close) to 1 (wide)
    std::int32_t SetStyle(std::int32_t newStyle);          // see styles.h
    std::int32_t SetArrangement(std::int32_t arrangement); // one that some style has
    std::int32_t SetManualInterval(std::int32_t voice, std::int32_t interval); // scale steps, -7 to 7
    void SetSnapToScale(bool on); // melody notes are moved into the melody scale
    void SetMapScale(bool on);    // and carried over to the harmony scale
    void SetAutoKey(bool on);     // root and melody scale come from the analysis
    void SetFollowScale(bool on); // the harmony scale is the melody scale
    void SetChordsDirty(bool on); // the next Run in the intelligent style finds all chords anew
    void SetManualOnly(bool on);  // the style is "Parallel manual" whatever is set

    std::int32_t GetRoot() const { return settings.root; }
    std::int32_t GetMelodyScale() const { return settings.melodyScale; }
    std::int32_t GetHarmonyScale() const { return settings.harmonyScale; }
    std::int32_t GetVoiceRange() const { return settings.voiceRange; }
    float GetSpread() const { return settings.spread; }
    std::int32_t GetStyle() const { return settings.style; }
    std::int32_t GetArrangement() const { return settings.arrangement; }
    std::int32_t GetManualInterval(std::int32_t voice) const; // 0 for a bad voice
    bool GetSnapToScale() const { return settings.snapToScale != 0; }
    bool GetMapScale() const { return settings.mapScale != 0; }
    bool GetAutoKey() const { return settings.autoKey != 0; }
    bool GetFollowScale() const { return settings.followScale != 0; }
    bool GetChordsDirty() const { return settings.chordsDirty != 0; }
    bool GetManualOnly() const { return settings.manualOnly != 0; }

    // Of the harmony scale as the engine has it.
    bool IsInScale(std::int32_t pitch) const { return engine.IsInScale(pitch); }
    const ConsortierClassic::CConsortier& GetEngine() const { return engine; }

    // --- Making the voices ---

    // Makes the voices of all notes; all changes of settings end here. The first Run takes the notes from the
    // analysis; without any it does nothing at all. A voicing goes by the one before it, so that notes are
    // made in order and the same settings always give the same voices (but for the randomised arrangements,
    // whose sequence goes on). 0, or kOutOfMemory from the first Run with nothing taken; a chord path that
    // finds no memory leaves the chords as they were, and the voices follow those.
    std::int32_t Run() noexcept;

    // The same in three steps, of which the long one, CChoirRun::Make, needs no lock. BeginRun gives false
    // when there is no memory; FinishRun when RefreshFromStore came in between: what the store brought stands
    // then, and the run is dropped. Between the two, nothing but settings may be changed otherwise.
    bool BeginRun(CChoirRun& run) noexcept;
    bool FinishRun(const CChoirRun& run) noexcept;

    // The start of playback: what was recorded live becomes the voices of the melody, and the engine takes
    // over the settings. Makes no voices.
    void Rewind();

    // To be called after the store has written into the driver's memory: what follows from the notes and is
    // not stored itself is computed again.
    void RefreshFromStore();

    // --- Notes ---
    // A bad index is answered as told.

    std::int32_t GetNoteCount() const { return notes.Count(); }
    std::int32_t GetAnalysedNoteCount() const { return analysedNoteCount; } // of the first copy
    std::int32_t GetNoteCapacity() const { return notes.GetCapacity(); }    // notes there is room for
    std::int32_t VoiceCount() const; // sounding voices of style and arrangement, 2 to 4

    std::int32_t GetNotePitch(std::int32_t note) const;  // sung pitch, rounded by the singer's tuning; -1
    std::int32_t GetNoteLength(std::int32_t note) const; // frames; -1
    std::int32_t GetNoteStart(std::int32_t note) const;  // position; -1
    float GetNoteLevel(std::int32_t note) const;         // 0 to 1; 0
    // Start and end (the last position of the note). False, and the outputs untouched, for a bad index.
    bool GetNoteRange(std::int32_t note, std::int32_t& start, std::int32_t& end) const;
    // Semitones from GetNotePitch, at the singer's tuning, to the mean pitch that was sung; -1.
    float GetDeviation(std::int32_t note) const;
    // The whole record as it is stored; all zero.
    NoteRecord GetNote(std::int32_t note) const;

    // The pitch of a voice in a note; -1 for a silent voice and for a bad index, which leaves the outputs
    // alone.
    // `deviation`: semitones by which the melody voice lies above the rounded sung pitch; 0 for other voices.
    // `gain`: 0 to 1. `live`: the note is sounding now, so that a held chord takes effect with it; without,
    // this only looks ahead.
    std::int32_t GetVoice(std::int32_t note, std::int32_t voice, float& deviation, float& gain, bool live);

    // --- Chords ---

    ChordRecord GetChord(std::int32_t note) const; // all zero for a bad index
    void SetChord(std::int32_t note, const ChordRecord& chord);
    // The first n of the seven diatonic chords that hold the melody voice of the note: triads, then four-note
    // chords. None for a bad index. Good until the next call.
    std::span<const ChordRecord> ChordsForNote(std::int32_t note, std::int32_t n);
    // All chords of the harmony scale: a triad and a four-note chord on each tone. Good until the next call.
    std::span<const ChordRecord> AllChords();
    static void ChordToPitches(const ChordRecord& chord, std::int32_t (&out)[4]);

    // --- The note at a position: three questions ---

    // The note that holds the position, its last one included; -1 for none and from the end of the file on.
    // Where one note ends on the position that the next begins on, it is the one found last, if it still
    // holds.
    std::int32_t FindNoteAt(std::int32_t position);
    // The same, or else the note before. Before the first note the first; -1 without notes.
    // A quirk that stays: a single note does not count at the very position of its start: -1.
    std::int32_t FindNearestNote(std::int32_t position);
    // The note that a key pressed here is meant for: the next one when the last quarter of a note has begun,
    // or when twice the way to it is less than the way back to the start of this one.
    // -1 where nothing decides: without notes, at the very start of a note, and at two thirds of the way
    // exactly.
    std::int32_t FindNextNote(std::int32_t position);

    // --- Editing ---

    // Ignore a bad index. Gains are held to 0 to 1; one that is not a number is ignored.
    void SetVoicePitch(std::int32_t note, std::int32_t voice, std::int32_t pitch);
    void SetVoiceGain(std::int32_t note, std::int32_t voice, float gain);

    // Ends the note at `position` and begins a new one, with the same chord, voices and gains, behind it;
    // both are measured anew, and their melody voices set to what was sung. 1, or 0 when no note holds the
    // position, or there is no memory.
    // A split at a note's last position leaves a new note without a single position, which no look-up finds.
    std::int32_t SplitNote(std::int32_t position) noexcept;
    // Joins two neighbours (last = first + 1) into the first, whose chord, voices and gains stay. 1, or 0
    // with nothing changed.
    std::int32_t MergeNotes(std::int32_t first, std::int32_t last) noexcept;
    // Makes room for a stored state of up to `capacity` notes. 0; kBadArgument beyond
    // CChoirNotes::kMostNotes, kOutOfMemory; nothing has then changed.
    std::int32_t GrowNotes(std::int32_t capacity) noexcept;

    // --- Live input ---

    // Enters or leaves live mode. With `harmonies` the held keys are a chord that the melody is voiced in,
    // otherwise each is the pitch of a voice. Entering it takes the intelligent style and forgets what was
    // played before.
    void StartLive(bool on, bool harmonies);
    bool IsLive() const { return liveMode; }
    // The last note that was voiced in a held chord since playback began or jumped; -1 for none.
    std::int32_t GetLiveStartNote() const { return liveStartNote; }
    // Keeps what is played. Switched off, what was kept becomes the voices: a note that nothing was played at
    // is muted.
    void SetRecordLive(bool flag);
    bool GetRecordLive() const { return recordLive; }
    void DropRecording() { recordLive = false; } // what was kept is forgotten; the voices stay
    void SetLiveBypass(bool flag);               // the stored voices sound, whatever is held
    void ResetLive();                            // playback has jumped

    // The held keys have changed: kHeldKeys places, -1 for an empty one. Gives the index of the note before
    // the one that they are meant for. `count` says how many are held; the places alone decide.
    std::int32_t NoteInput(const std::int32_t (&keys)[kHeldKeys], double position, std::int32_t count);
    // Keys are held (or not) at a position. Gives the index of the note before the one that it is meant for.
    std::int32_t UpdateLive(bool down, double position);

private:
    void TakeNotes();
    void TakeTuning();
    void UpdateNotePitches();
    std::int32_t RoundedPitch(std::int32_t note, float tuning) const;
    void ApplySettings();
    void TakeKey();
    void PassMelodyKey();
    void PassHarmonyScale();
    void GenerateAll();
    bool FindsChords() const;
    bool NeedsTuning() const;

    std::int32_t MoveCursor(std::int32_t note);

    std::int32_t CurrentVoice(std::int32_t note, std::int32_t voice, bool live);
    void VoiceLiveChord(std::int32_t note);
    std::int32_t KeyForVoice(std::int32_t note, std::int32_t voice) const;
    void KeepRecording();

    void Measure(NoteRecord& note) const;
    void SetMelodyAsSung(std::int32_t note);

    CMelodyAnalyzer& analysis;
    ConsortierClassic::CConsortier engine;

    ChoirSettings settings;
    CChoirNotes notes;
    std::uint32_t version = 0; // counts what the store has brought
    std::int32_t analysedNoteCount = 0;
    std::int32_t audioLength = 0;        // frames
    float tuningOffset = 0;              // semitones, of the last time that the pitches were rounded
    std::atomic<std::int32_t> cursor{0}; // note of the last look-up, a place to begin the next one

    std::array<ChordRecord, 12> pitchChords{}; // the answer of ChordsForNote
    std::array<ChordRecord, 64> allChords{};   // the answer of AllChords

    // Live input.
    bool liveMode = false;
    bool liveHarmonies = false;
    bool liveBypass = false;
    bool recordLive = false;
    bool liveKeysDown = false;
    std::int32_t liveNote = -1;      // the input counts from this note on
    std::int32_t liveChordNote = -1; // the last note that was voiced in a held chord
    std::int32_t liveStartNote = -1;
    std::array<std::int32_t, kVoiceSlots> liveKeys{-1, -1, -1, -1}; // held keys in the order of the voices
    ChordRecord liveChord;                                          // of the held keys
};

} // namespace sonorelle
