#include "cli/arrangement_report.h"

#include "cli/arrangement_names.h"
#include "harmony/chord_names.h"
#include "harmony/pitch_class.h"
#include "harmony/scales.h"

#include <algorithm>
#include <span>

namespace sonorelle {

std::string IntervalsText(const ArrangementReport& report) {
    const auto count = static_cast<std::size_t>(std::clamp(report.voiceCount, 0, kMostVoices));
    return IntervalNames(std::span(report.settings.intervals).first(count));
}

std::string ChordText(const ArrangementReport& report, const ConsortierClassic::ChordRecord& chord) {
    const UsedSettings& settings = report.settings;
    // Twelve tones have no signature: the melody's scale has.
    const std::int32_t scale =
        settings.harmonyScale == ConsortierClassic::kChromaticScale ? settings.scale : settings.harmonyScale;
    ConsortierClassic::ChordRecord shifted = chord;
    shifted.root = ConsortierClassic::PitchClass(chord.root + settings.transpose);
    return ConsortierClassic::ChordName(shifted,
                                        IsWrittenWithFlats(settings.root + settings.transpose, scale));
}

bool IsSameHarmony(const ConsortierClassic::ChordRecord& a, const ConsortierClassic::ChordRecord& b) {
    return a.root == b.root && a.triadType == b.triadType && a.tetradType == b.tetradType;
}

bool HasRegion(const ArrangementReport& report) {
    return report.settings.regionStart > 0 || report.settings.regionEnd < report.melody.frames;
}

} // namespace sonorelle
