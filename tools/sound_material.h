// What the engine is to sing: songs of the synthetic singer, of which everything is known, and recordings, of
// which as much is known as Praat hears.
#pragma once

#include "praat_judge.h"

#include "support/sound_measures.h"
#include "support/synthetic_singer.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace sonorelle::tools {

struct Song {
    std::string name;
    std::vector<test::MelodyNote> melody;
    test::SingerSettings settings;

    // An ideal voice: the same singer, vowels and random numbers, but so many semitones higher.
    test::Recording Sung(int semitones) const;
};

// Vowels at two pitches, and words, in four registers, and vowels without any irregularity; 44.1 kHz.
std::vector<Song> Songs();

// Where to listen in a sound; frames of its source.
struct Places {
    PitchRange pitch;                     // of the source
    double formantCeilingHertz = 5000.0;  // of five formants
    std::vector<test::FrameRange> vowels; // voiced, away from their edges
    std::vector<test::FrameRange> hisses; // unvoiced and not silent, away from their edges
    std::vector<test::FrameRange> onsets; // from silence or an unvoiced sound into a voiced one
};

Places PlacesOf(const test::Recording& recording, test::VoiceRegister voice);

// From what Praat heard with the widest range of pitches.
Places PlacesOf(const HeardSound& heard, test::Samples sound, double sampleRate);

// Pitch of the singer as it is seen through a window of three periods of `floorHertz`: the mean of the
// periods between the known pulses, weighted as an autocorrelation at the lag `lagSeconds` weights them. NaN
// where no pulse lies in the window.
double SungHertz(const test::Recording& recording, double seconds, double floorHertz, double lagSeconds);

// All WAV files of the folder in the order of their names.
std::vector<std::filesystem::path> RecordingsIn(const std::filesystem::path& folder);

} // namespace sonorelle::tools
