#include "cli/playing_options.h"

#include "cli/arrange_command.h"
#include "cli/named_numbers.h"
#include "cli/playing_settings.h"
#include "cli/result_file.h"
#include "cli/session_player.h"
#include "cli/wrong_option.h"
#include "platform/result_codes.h"

namespace sonorelle {

namespace {

const std::vector<NamedNumber>& LiveInputs() {
    static const std::vector<NamedNumber> list = {
        {static_cast<std::int32_t>(LiveInput::kHarmonies), "harmonies"},
        {static_cast<std::int32_t>(LiveInput::kPitches), "pitches"},
        {static_cast<std::int32_t>(LiveInput::kTrigger), "trigger"}};
    return list;
}

std::string ReadBlocks(const ArrangeOptions& options, PlayingSettings& playing) {
    if (!options.blocks) return "";
    const std::optional<std::int32_t> frames = ReadInteger(*options.blocks);
    if (!frames || *frames < 1 || *frames > SessionPlayer::kMostFrames)
        return WrongOption("--blocks", *options.blocks,
                           "1 to " + std::to_string(SessionPlayer::kMostFrames) + " frames");
    playing.blocks = *frames;
    return "";
}

std::string ReadLive(const ArrangeOptions& options, PlayingSettings& playing) {
    if (!options.midiIn) {
        if (options.live) return "--live: needs --midi-in with the keys";
        return options.record ? "--record: needs --midi-in with the keys" : "";
    }
    playing.live = LiveInput::kHarmonies;
    if (options.live) {
        const std::optional<std::int32_t> input = FindIn(LiveInputs(), *options.live);
        if (!input) return WrongOption("--live", *options.live, "harmonies, pitches, trigger");
        playing.live = static_cast<LiveInput>(*input);
    }
    if (options.record && playing.live == LiveInput::kTrigger)
        return "--record: keys that trigger leave nothing to record";
    playing.record = options.record;
    if (!playing.blocks) playing.blocks = SessionPlayer::kUsualFrames;
    MidiFileContents contents;
    const std::int32_t result = ReadMidiFile(*options.midiIn, contents);
    if (result != kOk) return *options.midiIn + ": Could not read this MIDI file!";
    playing.keys = std::move(contents.messages);
    return "";
}

} // namespace

std::string ReadPlaying(const ArrangeOptions& options, PlayingSettings& playing) {
    if (std::string wrong = ReadBlocks(options, playing); !wrong.empty()) return wrong;
    if (std::string wrong = ReadLive(options, playing); !wrong.empty()) return wrong;
    if (options.stems && playing.blocks)
        return "--stems: not with --blocks and --midi-in, which play the mix alone";
    return "";
}

std::string FindWrongSessionUse(const ArrangeOptions& options) {
    const bool single = options.state || options.saveState || options.saveProgram || options.midiIn;
    if (single && options.files.size() > 1)
        return "--state, --save-state, --save-program and --midi-in: one recording only";
    for (const std::optional<std::string>* path : {&options.saveState, &options.saveProgram}) {
        if (!*path) continue;
        if ((*path)->empty()) return "--save-state and --save-program: the file has no name";
        for (const std::string& recording : options.files)
            if (AreTheSameFile(**path, recording)) return **path + ": would replace the recording";
        if (options.midiIn && AreTheSameFile(**path, *options.midiIn))
            return **path + ": would replace the keys";
    }
    if (options.saveState && options.saveProgram && AreTheSameFile(*options.saveState, *options.saveProgram))
        return "--save-state and --save-program: the same file";
    return "";
}

} // namespace sonorelle
