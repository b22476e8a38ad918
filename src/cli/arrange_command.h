// `sonorelle arrange`: recordings in; their arrangements out, sung by the voices of the recordings, as MIDI
// files and as a picture.

#pragma once

#include "cli/arrangement_settings.h"

#include <optional>
#include <string>
#include <vector>

namespace sonorelle {

struct Console;
struct PlayingSettings;

// The options as the user wrote them; nothing where an option was left out.
struct ArrangeOptions {
    std::vector<std::string> files;
    std::string folder = "."; // of the results
    std::optional<std::string> style;
    std::optional<std::string> arrangement;
    std::optional<std::string> root;
    std::optional<std::string> scale;
    std::optional<std::string> harmonyScale;
    std::optional<std::string> snap;
    std::optional<std::string> range;
    std::optional<std::string> spread;
    std::optional<std::string> intervals;
    std::optional<std::string> transpose;
    std::optional<std::string> tempo;
    std::optional<std::string> region;
    std::optional<std::string> preset;
    std::vector<std::string> voices; // in the order given
    std::optional<std::string> tuning;
    std::optional<std::string> speed;
    std::optional<std::string> state;       // session to begin with
    std::optional<std::string> saveState;   // where to leave it
    std::optional<std::string> program;     // strips to begin with
    std::optional<std::string> saveProgram; // where to leave them
    std::optional<std::string> blocks;      // frames: play in place of an export
    std::optional<std::string> midiIn;      // keys to play
    std::optional<std::string> live;        // what they do
    bool record = false;                    // what they did stays
    bool stems = false;                     // a sound file of each voice too
    bool json = false;                      // JSON on standard output in place of the summary
    bool list = false;                      // print what can be chosen, and do nothing else
    bool smallPicture = false;
    bool useCache = true;
    bool quiet = false;
};

// Reads the options into settings. Empty when all is well; else a text that says what is wrong and what is
// allowed, and the settings are then unfinished.
std::string ReadSettings(const ArrangeOptions& options, ArrangementSettings& settings);

// What else is wrong with the options: no recording, two results for one place, a result that would replace a
// recording. `settings` are from ReadSettings. Empty when all is well, else a text for the user.
std::string FindWrongUse(const ArrangeOptions& options, const ArrangementSettings& settings);
// The results of these recordings alone.
std::string FindWrongPlaces(const ArrangeOptions& options, const std::vector<std::string>& recordings,
                            const ArrangementSettings& settings);

// Arranges the files in their order and gives an ExitCode. Messages go to the console; a file that fails does
// not stop the ones behind it. Each result appears whole or not at all. `options` passed FindWrongUse,
// `settings` are from ReadSettings.
//
// With a session to begin with, `settings` count for nothing: the options are read once it stands, since they
// depart from it.
int RunArrange(const ArrangeOptions& options, const ArrangementSettings& settings,
               const PlayingSettings& playing, const Console& console);

} // namespace sonorelle
