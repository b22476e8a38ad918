#include "cli/commands.h"

#include "cli/analyse_command.h"
#include "cli/arrange_command.h"
#include "cli/console.h"
#include "cli/help_texts.h"
#include "cli/playing_options.h"
#include "cli/playing_settings.h"
#include "cli/session_command.h"
#include "cli/version.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <optional>
#include <utility>

namespace sonorelle {

namespace {

constexpr const char* kProgram = "sonorelle";

// File names that the parser would take for something else are spelled out as paths: those behind "--" that
// begin with a dash, and those in brackets, which it would take for lists.
std::vector<std::string> SpellOutNames(const std::vector<std::string>& arguments) {
    std::vector<std::string> result;
    bool onlyNames = false;
    for (const std::string& argument : arguments) {
        if (!onlyNames && argument == "--") {
            onlyNames = true;
            continue;
        }
        const bool isBracketed = argument.size() > 1 && argument.front() == '[' && argument.back() == ']';
        const bool looksLikeOption = onlyNames && argument.starts_with('-');
        result.push_back((isBracketed || looksLikeOption ? "./" : "") + argument);
    }
    return result;
}

CLI::App* AddAnalyse(CLI::App& program, AnalyseOptions& options) {
    CLI::App* command = program.add_subcommand("analyse", kAnalyseDescription);
    command->footer(kAnalyseFooter);
    command
        ->add_option("FILE", options.files,
                     "Recordings: WAV, AIFF and others, mono or stereo, from 11025 Hz on")
        ->required()
        ->type_name("");
    command->add_flag_callback(
        "--no-cache", [&options] { options.useCache = false; },
        "Neither use nor keep results beside the recording");
    command->add_flag("--json", options.json, "Print JSON in place of the table");
    command->add_flag("--csv", options.csv, "Print the pitch curve as CSV in place of the table");
    command->add_option("--json-file", options.jsonFile, "Also write the JSON to this file")
        ->type_name("FILE.json");
    command->add_option("--csv-file", options.csvFile, "Also write the CSV to this file")
        ->type_name("FILE.csv");
    command
        ->add_option("--picture", options.pictureFile, "Draw the melody as a piano roll (one recording only)")
        ->type_name("FILE.svg");
    command->add_flag("--quiet", options.quiet, "Show no progress bar");
    return command;
}

void AddTextOption(CLI::App& command, const char* name, std::optional<std::string>& value, const char* type,
                   const char* description) {
    command
        .add_option_function<std::string>(
            name, [&value](const std::string& text) { value = text; }, description)
        ->type_name(type);
}

void AddSoundOptions(CLI::App& command, ArrangeOptions& options) {
    AddTextOption(command, "--preset", options.preset, "NAME",
                  "default or flat: where the voices' strips begin (default: default)");
    command.add_option("--voice", options.voices, "Strip of one voice, as below; may be given several times")
        ->type_name("N:KEY=X,...")
        ->allow_extra_args(false);
    AddTextOption(command, "--tuning", options.tuning, "HZ",
                  "A4 of what is sung, 350 to 500 (default: the singer's)");
    AddTextOption(command, "--speed", options.speed, "X",
                  "Times as fast as the recording, 0.01 to 100 (default: 1)");
    command.add_flag("--stems", options.stems, "Also write a WAV file of each voice");
}

void AddSessionOptions(CLI::App& command, ArrangeOptions& options) {
    AddTextOption(command, "--state", options.state, "FILE",
                  "Begin with this session; its recording need not be named");
    AddTextOption(command, "--save-state", options.saveState, "FILE", "Leave the session in this file");
    AddTextOption(command, "--program", options.program, "FILE", "Begin with the strips of this program");
    AddTextOption(command, "--save-program", options.saveProgram, "FILE",
                  "Leave the strips as a program in this file");
    AddTextOption(command, "--blocks", options.blocks, "N",
                  "Play the mix in blocks of N frames, with its fades, in place of exporting it");
    AddTextOption(command, "--midi-in", options.midiIn, "FILE.mid",
                  "Play these keys into it (in blocks of 512 unless told)");
    AddTextOption(command, "--live", options.live, "INPUT",
                  "What the keys are: harmonies, pitches or trigger (default: harmonies)");
    command.add_flag("--record", options.record, "Keep what the keys make of the voices");
}

CLI::App* AddArrange(CLI::App& program, ArrangeOptions& options) {
    CLI::App* command = program.add_subcommand("arrange", kArrangeDescription);
    command->footer(kArrangeFooter);
    command
        ->add_option("FILE", options.files,
                     "Recordings: WAV, AIFF and others, mono or stereo, from 11025 Hz on")
        ->type_name("");
    command
        ->add_option("-o,--output", options.folder,
                     "Folder of the results, made if missing (default: this one)")
        ->type_name("DIR");
    AddTextOption(*command, "--style", options.style, "NAME",
                  "Name or list position (default: Intelligent 4 Voices)");
    AddTextOption(*command, "--arrangement", options.arrangement, "NAME",
                  "Name or number, of the styles that have some");
    AddTextOption(*command, "--root", options.root, "NOTE", "Key root, such as C# or Db (default: as found)");
    AddTextOption(*command, "--scale", options.scale, "NAME", "Name or number (default: as found)");
    AddTextOption(*command, "--harmony-scale", options.harmonyScale, "NAME",
                  "Name or number (default: the melody's)");
    AddTextOption(*command, "--snap", options.snap, "on|off",
                  "Move the melody into its scale, and on to the harmony's (default: on)");
    AddTextOption(*command, "--range", options.range, "N",
                  "Harmony voices above the melody, intelligent styles (default: 1)");
    AddTextOption(*command, "--spread", options.spread, "X",
                  "Width of the voicings from 0 to 1, intelligent styles (default: 0.6)");
    AddTextOption(*command, "--intervals", options.intervals, "A,B,C,D",
                  "Names or scale steps by voice, parallel styles (default: 0,-2,2,5)");
    AddTextOption(*command, "--transpose", options.transpose, "N",
                  "Semitones from -24 to 24, sound and MIDI (default: 0)");
    AddTextOption(*command, "--tempo", options.tempo, "BPM", "Of the MIDI files (default: 120)");
    AddTextOption(*command, "--region", options.region, "START:END",
                  "Seconds of the recording that go into sound and MIDI files (default: all)");
    AddSoundOptions(*command, options);
    AddSessionOptions(*command, options);
    command->add_flag("--json", options.json, "Print JSON in place of the summary");
    command->add_flag("--list", options.list, "Print styles, arrangements, scales and intervals, and end");
    command->add_flag("--small-picture", options.smallPicture,
                      "Draw the picture for the column of a text, without loudness");
    command->add_flag_callback(
        "--no-cache", [&options] { options.useCache = false; },
        "Neither use nor keep results of the analysis beside the recording");
    command->add_flag("--quiet", options.quiet, "Show no progress bar");
    return command;
}

CLI::App* AddSession(CLI::App& program, SessionOptions& options) {
    CLI::App* command = program.add_subcommand("session", kSessionDescription);
    command->footer(kSessionFooter);
    command->add_option("--script", options.script, "The commands, one a line")->type_name("FILE");
    AddTextOption(*command, "--blocks", options.blocks, "N",
                  "Frames in a block of what is played, 1 to 8192 (default: 512)");
    command->add_flag("--list", options.list, "Print the commands, and end");
    command->add_flag_callback(
        "--no-cache", [&options] { options.useCache = false; },
        "Neither use nor keep results of the analysis beside the recording");
    command->add_flag("--quiet", options.quiet, "Show no progress bar");
    return command;
}

int WrongUse(const Console& console, const CLI::App* command, const std::string& text) {
    console.Complain("", text);
    const std::string name = std::string(kProgram) + (command != nullptr ? " " + command->get_name() : "");
    std::fprintf(console.err, "Try '%s --help'.\n", name.c_str());
    return kExitWrongUse;
}

int CheckAndAnalyse(const AnalyseOptions& options, const CLI::App* command, const Console& console) {
    const std::string wrong = FindWrongUse(options);
    return wrong.empty() ? RunAnalyse(options, console) : WrongUse(console, command, wrong);
}

int CheckAndArrange(const ArrangeOptions& options, const CLI::App* command, const Console& console) {
    ArrangementSettings settings;
    PlayingSettings playing;
    std::string wrong = options.state ? "" : ReadSettings(options, settings);
    if (wrong.empty()) wrong = FindWrongUse(options, settings);
    if (wrong.empty()) wrong = ReadPlaying(options, playing);
    return wrong.empty() ? RunArrange(options, settings, playing, console)
                         : WrongUse(console, command, wrong);
}

int CheckAndRunSession(const SessionOptions& options, const CLI::App* command, const Console& console) {
    const std::string wrong = FindWrongUse(options);
    return wrong.empty() ? RunSession(options, console) : WrongUse(console, command, wrong);
}

int ParseAndRun(const std::vector<std::string>& arguments, const Console& console) {
    CLI::App program(kDescription, kProgram);
    program.footer(kFooter);
    program.require_subcommand(1);
    program.set_version_flag("--version", std::string(kProgram) + " " + kVersion);
    AnalyseOptions analyseOptions;
    CLI::App* analyse = AddAnalyse(program, analyseOptions);
    ArrangeOptions arrangeOptions;
    CLI::App* arrange = AddArrange(program, arrangeOptions);
    SessionOptions sessionOptions;
    CLI::App* session = AddSession(program, sessionOptions);
    const auto chosen = [&]() -> const CLI::App* {
        for (const CLI::App* command : {analyse, arrange, session})
            if (command->parsed()) return command;
        return nullptr;
    };
    const auto isFirst = [&](const CLI::App* command) { return command->check_name(arguments[0]); };
    if (!arguments.empty() && !arguments[0].starts_with('-') && program.get_subcommands(isFirst).empty()) {
        return WrongUse(console, nullptr, "There is no command '" + arguments[0] + "'");
    }
    try {
        std::vector<std::string> reversed = SpellOutNames(arguments); // the parser takes them from the back
        std::reverse(reversed.begin(), reversed.end());
        program.parse(std::move(reversed));
    } catch (const CLI::CallForHelp&) {
        return console.ExitCodeOf(console.Write(program.help()));
    } catch (const CLI::CallForVersion& version) {
        return console.ExitCodeOf(console.Write(version.what() + std::string("\n")));
    } catch (const CLI::ParseError& error) {
        return WrongUse(console, chosen(), error.what());
    }
    if (session->parsed()) return CheckAndRunSession(sessionOptions, session, console);
    return arrange->parsed() ? CheckAndArrange(arrangeOptions, arrange, console)
                             : CheckAndAnalyse(analyseOptions, analyse, console);
}

} // namespace

int RunCommandLine(const std::vector<std::string>& arguments, const Console& console) {
    try {
        return ParseAndRun(arguments, console);
    } catch (const std::bad_alloc&) {
        console.Complain("", kNoMemory);
    } catch (const std::exception& error) {
        console.Complain("", error.what());
    }
    return kExitFailed;
}

} // namespace sonorelle
