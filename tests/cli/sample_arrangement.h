// An arrangement made by hand: the three notes of the sample report, in A major, for four voices.
#pragma once

#include "cli/arrangement_report.h"
#include "cli/sample_report.h"

namespace sonorelle::test {

inline ArrangementReport SampleArrangement() {
    using namespace ConsortierClassic;
    ArrangementReport report;
    report.melody = SampleReport();
    report.settings.root = 9;
    report.settings.spread = 0.6F;
    report.settings.voiceRange = 1;
    report.settings.intervals = {0, -2, 2, 5};
    report.settings.regionEnd = report.melody.frames;
    report.settings.preset = kDefaultPreset;
    report.settings.voices = StripsOfPreset(kDefaultPreset);
    report.settings.heard = {true, true, true, true};
    report.settings.tuning = report.melody.tuningHz;
    report.voiceCount = 4;
    report.hasChords = true;
    report.notes = {
        {report.melody.notes[0], {9, 3, kMajorTriad, kNoTetrad}, {57, 45, 52, 61}, {1, 1, 1, 1}},
        {report.melody.notes[1], {9, 3, kMajorTriad, kNoTetrad}, {61, 45, 52, 61}, {1, 1, 1, 1}},
        {report.melody.notes[2], {6, 4, kNoTriad, kMinorSeventh}, {100, 54, -1, 64}, {1, 1, 0, 0.5F}}};
    report.files = {"out/Out_song.wav", "out/Out_song.mid", "out/Out_song_chords.mid", "out/Out_song.svg"};
    return report;
}

} // namespace sonorelle::test
