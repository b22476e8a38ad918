// How well an analysis agrees with what was really sung: notes, pitch curve, marks, tuning and key.
//
// Pitch is a MIDI note number with a fraction, 69 being 440 Hz, whatever the singer's tuning is.
#pragma once

#include "analysis/records.h"
#include "support/synthetic_singer.h"

#include <cstdint>
#include <span>
#include <vector>

namespace sonorelle::test {

// Notes
// ------------------------------------------------------------------------------------------------------

struct TimedNote {
    double onsetSeconds = 0.0;
    double offsetSeconds = 0.0;
    double midiPitch = 0.0;
};

std::vector<TimedNote> SungNotes(const Recording& recording);
std::vector<TimedNote> FoundNotes(std::span<const NoteRecord> notes, double sampleRate);

struct NoteTolerance {
    double onsetSeconds = 0.05;
    double semitones = 0.5;
};

struct NotePair {
    std::size_t known;
    std::size_t found;
};

// Counts add up over several recordings.
struct NoteScore {
    std::size_t known = 0;
    std::size_t found = 0;
    std::size_t matched = 0;

    double Recall() const;    // matched / known; 1 when there is nothing to find
    double Precision() const; // matched / found; 1 when nothing was found
    double FMeasure() const;  // 2 matched / (known + found); 1 when both are empty
    NoteScore& operator+=(const NoteScore& other);
};

// The largest set of pairs that agree in onset and pitch (both limits included), each note in one pair at
// most; in rising order of the known notes.
std::vector<NotePair> MatchNotes(std::span<const TimedNote> known, std::span<const TimedNote> found,
                                 const NoteTolerance& tolerance = {});
NoteScore ScoreNotes(std::span<const TimedNote> known, std::span<const TimedNote> found,
                     const NoteTolerance& tolerance = {});

// Pitch curve
// ------------------------------------------------------------------------------------------------

// All counts are of frames, and add up over several recordings.
struct CurveScore {
    std::size_t voiced = 0;      // voiced in truth and found voiced
    std::size_t within = 0;      // of these: within the tolerance
    std::size_t octaves = 0;     // of these: off by an octave or more (within 100 cents of a multiple)
    std::size_t missed = 0;      // voiced in truth, found unvoiced
    std::size_t invented = 0;    // found voiced, silent or noise in truth
    double worstSemitones = 0.0; // largest deviation of all voiced ones

    double Accuracy() const; // within / voiced; 1 when nothing is voiced
    CurveScore& operator+=(const CurveScore& other);
};

// Compares each frame with the sung curve. A frame stands for one period, so that its pitch may be any that
// the curve passes through within one period of its position, give or take the tolerance.
CurveScore ScoreCurve(const Recording& recording, std::span<const AnalysisFrame> frames,
                      double toleranceSemitones = 0.5);

// Marks
// ------------------------------------------------------------------------------------------------------

// The inner part of each note: `marginSeconds` behind its onset to as much before its offset; notes too short
// for 0.1 s between are left out.
std::vector<VoicedSpan> SteadyVowels(const Recording& recording, double marginSeconds = 0.1);

struct MarkScore {
    std::size_t periods = 0; // true periods in the spans
    std::size_t single = 0;  // of these: with exactly one mark

    double Share() const; // single / periods; 1 when there are none
    MarkScore& operator+=(const MarkScore& other);
};

// Counts the marks in each true period of the spans. Where in the period the marks lie is free, but must be
// the same within a span: periods are counted from halfway between marks of the mean phase.
MarkScore ScoreMarks(const Recording& recording, std::span<const PitchMarkRecord> marks,
                     std::span<const VoicedSpan> spans);

// Tuning and key
// ---------------------------------------------------------------------------------------------

// How far a found tuning offset (semitones) lies from the sung tuning, in cents, -50 to 50: whole semitones
// between them are not heard as a tuning.
double TuningErrorCents(double foundOffsetSemitones, double sungHertz);

// Keys: 0 to 11 major from C, 12 to 23 natural minor, -1 none.
enum class KeyAgreement { kSame, kRelative, kOther };
// kRelative: one is the major, the other the minor key of the same seven notes.
KeyAgreement CompareKeys(int found, int sung);

} // namespace sonorelle::test
