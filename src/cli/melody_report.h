// All that the program tells of one analysed recording, as plain values: what the table, JSON, CSV and the
// picture are made from.

#pragma once

#include "analysis/records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle {

enum class CacheUse {
    kLoaded,  // the results come from the cache
    kWritten, // fresh results, now in the cache
    kNone     // fresh results; no cache was wanted, or it could not be written
};

// "loaded", "written" or "none".
const char* CacheUseName(CacheUse use);

// One frame of the pitch curve, which is one pitch mark.
struct CurvePoint {
    std::int32_t position = 0; // sample frame
    float midiPitch = 0;       // 0 where the mark has no period
    bool voiced = false;
    float level = 0;         // energy relative to the loudest frame, 0 to 1
    std::int32_t period = 0; // sample frames; 0: none
    float salience = 0;      // dB; 0 where the pitch tracker heard no voice
};

struct MelodyReport {
    std::string file; // as the user named it: any bytes
    float sampleRate = 0;
    std::int32_t channels = 0;
    std::int32_t frames = 0; // length of the recording
    CacheUse cache = CacheUse::kNone;
    double elapsedSeconds = 0; // from opening the file to the last result
    std::int32_t markCount = 0;
    float tuningOffset = 0; // semitones
    float tuningHz = 440;   // of the singer's A4
    std::int32_t key = -1;  // 0 to 11 major from C, 12 to 23 minor from C, -1 none
    std::vector<NoteRecord> notes;
    std::vector<CurvePoint> curve;
};

// A sample position in seconds; 0 at a rate of 0.
double SecondsOf(const MelodyReport& report, std::int32_t position);

} // namespace sonorelle
