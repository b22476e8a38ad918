#include "cli/melody_picture.h"

#include "cli/melody_report.h"
#include "cli/note_names.h"
#include "cli/unicode_text.h"
#include "platform/file_system.h"
#include "platform/numbers.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

// Share of voiced frames at either end that do not widen the lanes: single frames an octave off would flatten
// the rest.
constexpr double kOutlierShare = 0.02;

std::vector<float> PitchesToShow(const MelodyReport& report) {
    std::vector<float> pitches = CurvePitchesToShow(report);
    for (const NoteRecord& note : report.notes) pitches.push_back(note.pitch);
    return pitches;
}

std::string Subtitle(const MelodyReport& report) {
    const std::size_t notes = report.notes.size();
    const std::string key = report.key < 0 ? "no key" : KeyName(report.key);
    return "Key: " + key + "   \u00b7   A4 = " + FormatFixed(static_cast<double>(report.tuningHz), 1) +
           " Hz   \u00b7   " + std::to_string(notes) + (notes == 1 ? " note" : " notes") + "   \u00b7   " +
           FormatFixed(SecondsOf(report, report.frames), 1) + " s";
}

} // namespace

std::vector<float> CurvePitchesToShow(const MelodyReport& report) {
    std::vector<float> voiced;
    for (const CurvePoint& point : report.curve) {
        if (point.voiced && point.midiPitch > 0 && std::isfinite(point.midiPitch))
            voiced.push_back(point.midiPitch);
    }
    std::sort(voiced.begin(), voiced.end());
    std::vector<float> pitches;
    if (!voiced.empty()) {
        const auto cut = static_cast<std::size_t>(static_cast<double>(voiced.size()) * kOutlierShare);
        pitches = {voiced[cut], voiced[voiced.size() - 1 - cut]};
    }
    return pitches;
}

std::vector<RollPoint> RollCurve(const MelodyReport& report, float transpose) {
    std::vector<RollPoint> curve;
    for (const CurvePoint& point : report.curve) {
        // 0 stands for no pitch, and stays.
        const float pitch = point.midiPitch > 0 ? point.midiPitch + transpose : point.midiPitch;
        curve.push_back({SecondsOf(report, point.position), pitch, point.voiced, std::sqrt(point.level)});
    }
    return curve;
}

std::string DrawMelody(const MelodyReport& report) {
    PianoRoll roll;
    roll.title = PrintableText(FileNamePart(report.file));
    roll.subtitle = Subtitle(report);
    roll.seconds = SecondsOf(report, report.frames);
    roll.span = SpanOf(PitchesToShow(report));
    RollVoice lead;
    for (const NoteRecord& note : report.notes) {
        lead.notes.push_back({SecondsOf(report, note.start), SecondsOf(report, note.end), note.pitch});
    }
    roll.voices.push_back(std::move(lead));
    roll.curve = RollCurve(report, 0);
    return DrawPianoRoll(roll);
}

} // namespace sonorelle
