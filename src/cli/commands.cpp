#include "cli/commands.h"

#include "cli/analyse_command.h"
#include "cli/console.h"
#include "cli/version.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <utility>

namespace sonorelle {

namespace {

constexpr const char* kProgram = "sonorelle";
constexpr const char* kDescription = "Sonorelle hears the melody in a recording of one voice.";
constexpr const char* kFooter = "Example:\n"
                                "  sonorelle analyse song.wav --picture song.svg\n"
                                "\n"
                                "'sonorelle analyse --help' tells more.";
constexpr const char* kAnalyseDescription =
    "Finds the notes, the key and the tuning of each recording and prints them as a table.";
constexpr const char* kAnalyseFooter =
    "Pitches are names against A4 = 440 Hz with the rest in cents; middle C is C4.\n"
    "\n"
    "The results are kept beside each recording, in FILE.kva, and are used again as\n"
    "long as that file is newer than the recording.\n"
    "\n"
    "JSON is one object a recording, each on a line of its own. CSV has a line of\n"
    "headings; with several recordings a first column names the file.\n"
    "\n"
    "Exit codes: 0 done; 1 a recording failed (the others were done); 2 wrong use;\n"
    "130 cancelled by Ctrl-C, and the recording in work leaves nothing behind.\n"
    "\n"
    "Examples:\n"
    "  sonorelle analyse song.wav\n"
    "  sonorelle analyse --json *.wav > songs.jsonl\n"
    "  sonorelle analyse song.wav --picture song.svg --csv-file song.csv";

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

int WrongUse(const Console& console, const CLI::App* command, const std::string& text) {
    console.Complain("", text);
    const std::string name = std::string(kProgram) + (command != nullptr ? " " + command->get_name() : "");
    std::fprintf(console.err, "Try '%s --help'.\n", name.c_str());
    return kExitWrongUse;
}

int ParseAndRun(const std::vector<std::string>& arguments, const Console& console) {
    CLI::App program(kDescription, kProgram);
    program.footer(kFooter);
    program.require_subcommand(1);
    program.set_version_flag("--version", std::string(kProgram) + " " + kVersion);
    AnalyseOptions analyseOptions;
    CLI::App* analyse = AddAnalyse(program, analyseOptions);
    const auto chosen = [&]() -> const CLI::App* { return analyse->parsed() ? analyse : nullptr; };
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
    const std::string wrong = FindWrongUse(analyseOptions);
    if (!wrong.empty()) return WrongUse(console, analyse, wrong);
    return RunAnalyse(analyseOptions, console);
}

} // namespace

int RunCommandLine(const std::vector<std::string>& arguments, const Console& console) {
    try {
        return ParseAndRun(arguments, console);
    } catch (const std::bad_alloc&) {
        console.Complain("", "Not enough memory!");
    } catch (const std::exception& error) {
        console.Complain("", error.what());
    }
    return kExitFailed;
}

} // namespace sonorelle
