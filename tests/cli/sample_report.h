// A report made by hand: three notes on 44.1 kHz.
#pragma once

#include "cli/melody_report.h"

namespace sonorelle::test {

inline MelodyReport SampleReport() {
    MelodyReport report;
    report.file = "song.wav";
    report.sampleRate = 44100;
    report.channels = 1;
    report.frames = 1323000; // 30 s
    report.cache = CacheUse::kWritten;
    report.elapsedSeconds = 0.1234;
    report.markCount = 5;
    report.tuningOffset = 0.05F;
    report.tuningHz = 441.27258F;
    report.key = 9;
    report.notes = {{58.12F, 0.4125F, 44100, 4410, 48510, 1, 2},
                    {60.0F, 0.5F, 22050, 441000, 463050, 2, 3},
                    {100.97F, 0.03F, 11025, 1102500, 1113525, 3, 4}};
    report.curve = {{0, 0, false, 0, 0, 0},
                    {4410, 58.1F, true, 0.25F, 196, 12.5F},
                    {48510, 58.2F, true, 0.5F, 195, 11.0F},
                    {463050, 60.0F, true, 1.0F, 169, 10.0F},
                    {1113525, 100.9F, true, 0.0625F, 16, 6.0F}};
    return report;
}

} // namespace sonorelle::test
