#include "cli/arrangement_picture.h"

#include "cli/arrangement_names.h"
#include "cli/arrangement_report.h"
#include "cli/melody_picture.h"
#include "cli/piano_roll.h"
#include "cli/unicode_text.h"
#include "harmony/pitch_class.h"
#include "harmony/styles.h"
#include "platform/file_system.h"
#include "platform/numbers.h"

#include <algorithm>
#include <array>

namespace sonorelle {

namespace {

constexpr std::array<const char*, kMostVoices> kVoiceNames = {"melody", "red voice", "blue voice",
                                                              "green voice"};

std::string Subtitle(const ArrangementReport& report) {
    constexpr const char* kDot = "   \u00b7   ";
    const UsedSettings& settings = report.settings;
    const std::int32_t root = settings.root + settings.transpose;
    std::string text = StyleName(settings.style, settings.arrangement);
    const std::string arrangement = ArrangementName(settings.style, settings.arrangement);
    if (!arrangement.empty()) text += ", " + arrangement;
    text += kDot + KeyAndScaleName(root, settings.scale);
    if (settings.harmonyScale != settings.scale) text += ", harmony in " + ScaleName(settings.harmonyScale);
    if (settings.style == ConsortierClassic::kStyleIntelligent)
        text += kDot + std::string("range ") + std::to_string(settings.voiceRange) + ", spread " +
                FormatFloat(settings.spread);
    if (settings.style == ConsortierClassic::kStyleParallel) text += kDot + IntervalsText(report);
    if (settings.transpose != 0) text += std::string(kDot) + "transposed " + SignedText(settings.transpose);
    return text;
}

float DrawnPitch(const ArrangementReport& report, std::int32_t pitch) {
    return static_cast<float>(pitch + report.settings.transpose);
}

// Lanes for every voice, and for the curve.
PitchSpan SpanOfArrangement(const ArrangementReport& report) {
    std::vector<float> pitches = CurvePitchesToShow(report.melody);
    for (float& pitch : pitches) pitch += static_cast<float>(report.settings.transpose);
    for (const ArrangedNote& note : report.notes) {
        for (const std::int32_t pitch : note.voices)
            if (pitch != ConsortierClassic::kNoPitch) pitches.push_back(DrawnPitch(report, pitch));
    }
    return SpanOf(pitches);
}

// The note of a voice; where others have the same pitch, each takes a strip of the bar, the melody on top.
RollNote NoteOfVoice(const ArrangementReport& report, const ArrangedNote& note, std::size_t voice) {
    const std::int32_t pitch = note.voices[voice];
    const auto isSame = [pitch](std::int32_t other) { return other == pitch; };
    const auto here = note.voices.begin() + static_cast<std::ptrdiff_t>(voice);
    return {SecondsOf(report.melody, note.melody.start), SecondsOf(report.melody, note.melody.end),
            DrawnPitch(report, pitch), static_cast<int>(std::count_if(note.voices.begin(), here, isSame)),
            static_cast<int>(std::count_if(note.voices.begin(), note.voices.end(), isSame))};
}

std::vector<RollVoice> Voices(const ArrangementReport& report) {
    std::vector<RollVoice> voices;
    for (std::size_t voice = 0; voice < static_cast<std::size_t>(report.voiceCount); ++voice) {
        RollVoice roll{voice, {}, kVoiceNames[voice]};
        for (const ArrangedNote& note : report.notes)
            if (note.voices[voice] != ConsortierClassic::kNoPitch)
                roll.notes.push_back(NoteOfVoice(report, note, voice));
        voices.push_back(std::move(roll));
    }
    return voices;
}

std::vector<RollChord> Chords(const ArrangementReport& report) {
    std::vector<RollChord> chords;
    for (std::size_t i = 0; i < report.notes.size(); ++i) {
        const ArrangedNote& note = report.notes[i];
        if (i > 0 && IsSameHarmony(note.chord, report.notes[i - 1].chord)) continue;
        chords.push_back({SecondsOf(report.melody, note.melody.start), ChordText(report, note.chord)});
    }
    return chords;
}

} // namespace

std::string DrawArrangement(const ArrangementReport& report, bool isSmall) {
    PianoRoll roll;
    roll.title = PrintableText(FileNamePart(report.melody.file));
    roll.subtitle = Subtitle(report);
    roll.seconds = SecondsOf(report.melody, report.melody.frames);
    roll.span = SpanOfArrangement(report);
    roll.voices = Voices(report);
    roll.curve = RollCurve(report.melody, static_cast<float>(report.settings.transpose));
    if (report.hasChords) roll.chords = Chords(report);
    if (HasRegion(report))
        roll.region = RollRegion{SecondsOf(report.melody, report.settings.regionStart),
                                 SecondsOf(report.melody, report.settings.regionEnd)};
    roll.format.hasLoudness = !isSmall;
    roll.format.isSmall = isSmall;
    roll.format.namesInBars = true;
    return DrawPianoRoll(roll);
}

} // namespace sonorelle
