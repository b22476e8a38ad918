// Commands for how the melody is harmonised and how its voices sound: what a user sets on the panels.

#include "app/application.h"
#include "app/host_parameters.h"
#include "cli/arrangement_names.h"
#include "cli/arrangement_setup.h"
#include "cli/named_numbers.h"
#include "cli/script_commands.h"
#include "harmony/styles.h"
#include "platform/numbers.h"

#include <array>

namespace sonorelle {

namespace {

using namespace ConsortierClassic;

// The choir's panel, on the page that has style, key and details.
ScriptResult
WithChoir(ScriptSession& script,
          const std::function<ScriptResult(CkvovirelaineApp&, CkvovirelaineChoirSettings&)>& work) {
    return script.With([&](CkvovirelaineApp& app) {
        if (app.ChoirPanel().GetPage() != ChoirPage::kAutomatic)
            return ScriptResult::Failed("only with 'mode automatic'");
        return work(app, app.ChoirPanel());
    });
}

ScriptResult SetStyle(ScriptSession& script, ScriptWords words) {
    return WithChoir(script, [&](CkvovirelaineApp&, CkvovirelaineChoirSettings& choir) {
        const std::optional<std::int32_t> row = FindStyle(words[0]);
        if (!row) return WrongWord(words[0], StyleChoices());
        choir.ChooseStyle(*row);
        return ScriptResult::Done();
    });
}

ScriptResult SetArrangement(ScriptSession& script, ScriptWords words) {
    return WithChoir(script, [&](CkvovirelaineApp&, CkvovirelaineChoirSettings& choir) {
        const std::int32_t style = choir.GetDriverStyle().style;
        if (ArrangementList(style).empty()) return ScriptResult::Failed("this style has none to choose from");
        const std::optional<std::int32_t> found = FindArrangement(style, words[0]);
        if (!found) return WrongWord(words[0], ArrangementChoices(style));
        choir.ChooseDetail(StyleRowOfDriver(style, *found).detail);
        return ScriptResult::Done();
    });
}

// The melody's own key.
ScriptResult WithMelody(ScriptSession& script,
                        const std::function<ScriptResult(CkvovirelaineMelodyProperties&)>& work) {
    return script.With([&](CkvovirelaineApp& app) {
        if (!app.MelodyPanel().IsActive()) return ScriptResult::Failed("only with 'mode automatic'");
        return work(app.MelodyPanel());
    });
}

ScriptResult SetRoot(ScriptSession& script, ScriptWords words) {
    return WithMelody(script, [&](CkvovirelaineMelodyProperties& melody) {
        const std::optional<std::int32_t> root = FindRoot(words[0]);
        if (!root) return WrongWord(words[0], "a note such as C, C# or Db, or 0 (C) to 11 (B)");
        melody.ChooseRoot(*root);
        return ScriptResult::Done();
    });
}

ScriptResult SetScale(ScriptSession& script, ScriptWords words) {
    return WithMelody(script, [&](CkvovirelaineMelodyProperties& melody) {
        const std::optional<std::int32_t> scale = FindScale(words[0]);
        if (!scale) return WrongWord(words[0], ScaleChoices());
        melody.ChooseScale(*scale);
        return ScriptResult::Done();
    });
}

ScriptResult SetHarmonyRoot(ScriptSession& script, ScriptWords words) {
    return WithChoir(script, [&](CkvovirelaineApp&, CkvovirelaineChoirSettings& choir) {
        const std::optional<std::int32_t> root = FindRoot(words[0]);
        if (!root) return WrongWord(words[0], "a note such as C, C# or Db, or 0 (C) to 11 (B)");
        choir.ChooseRoot(*root);
        return ScriptResult::Done();
    });
}

ScriptResult SetHarmonyScale(ScriptSession& script, ScriptWords words) {
    return WithChoir(script, [&](CkvovirelaineApp&, CkvovirelaineChoirSettings& choir) {
        const std::optional<std::int32_t> scale = FindScale(words[0]);
        if (!scale) return WrongWord(words[0], ScaleChoices());
        choir.ChooseScale(*scale);
        return ScriptResult::Done();
    });
}

ScriptResult SetSnap(ScriptSession& script, ScriptWords words) {
    return WithChoir(script, [&](CkvovirelaineApp&, CkvovirelaineChoirSettings& choir) {
        const std::optional<bool> on = ReadSwitch(words[0]);
        if (!on) return WrongWord(words[0], "on, off");
        if (*on != choir.GetSnapToScale()) choir.ToggleSnap();
        return ScriptResult::Done();
    });
}

ScriptResult SetRange(ScriptSession& script, ScriptWords words) {
    return WithChoir(script, [&](CkvovirelaineApp&, CkvovirelaineChoirSettings& choir) {
        const std::optional<std::int32_t> above = ReadInteger(words[0]);
        if (!above || *above < 0 || *above > choir.GetMostVoicesAbove())
            return WrongWord(words[0], "0 to " + std::to_string(choir.GetMostVoicesAbove()) +
                                           " harmony voices above the melody");
        choir.MoveArrangement(*above);
        return ScriptResult::Done();
    });
}

ScriptResult SetSpread(ScriptSession& script, ScriptWords words) {
    return WithChoir(script, [&](CkvovirelaineApp& app, CkvovirelaineChoirSettings& choir) {
        const std::optional<double> spread = ReadNumber(words[0]);
        if (!spread || *spread < 0 || *spread > 1) return WrongWord(words[0], "0 (close) to 1 (wide)");
        choir.SetVoiceRange(static_cast<float>(*spread)); // finer than the slider's tenths
        app.OnChoirSettingsChanged();
        return ScriptResult::Done();
    });
}

ScriptResult SetInterval(ScriptSession& script, ScriptWords words) {
    return WithChoir(script, [&](CkvovirelaineApp&, CkvovirelaineChoirSettings& choir) {
        const std::optional<std::int32_t> voice =
            FindVoice(words[0], CkvovirelaineChoirSettings::kIntervalRows);
        if (!voice) return WrongWord(words[0], VoiceChoices(CkvovirelaineChoirSettings::kIntervalRows));
        const std::optional<std::int32_t> interval = FindInterval(words[1]);
        if (!interval) return WrongWord(words[1], IntervalChoices());
        choir.ChooseInterval(*voice, kLargestManualInterval - *interval); // the list reads downwards
        return ScriptResult::Done();
    });
}

ScriptResult SetTranspose(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        constexpr std::int32_t kMost = ArrangementSettings::kLargestTranspose;
        const std::optional<std::int32_t> semitones = ReadInteger(words[0]);
        if (!semitones || *semitones < -kMost || *semitones > kMost)
            return WrongWord(words[0], SignedText(-kMost) + " to " + SignedText(kMost) + " semitones");
        app.SetTranspose(static_cast<float>(*semitones));
        return ScriptResult::Done();
    });
}

ScriptResult SetTuning(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<double> hertz = ReadNumber(words[0]);
        if (!hertz || !CkvovirelaineTuningFreq::IsFrequency(static_cast<float>(*hertz)))
            return WrongWord(words[0], "350 to 500 Hz");
        app.TuningPanel().EnterFrequency(static_cast<float>(*hertz));
        return ScriptResult::Done();
    });
}

ScriptResult SetMode(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        CkvovirelaineChoirSettings& choir = app.ChoirPanel();
        const bool isLive = words[0] == "harmonies" || words[0] == "pitches";
        if (isLive && !choir.GetAllowLive()) return ScriptResult::Failed("only with 'drive time'");
        if (words[0] == "automatic") {
            choir.PressAutomatic();
        } else if (words[0] == "edit") {
            choir.PressEdit(true);
        } else if (isLive) {
            choir.SetInterpretation(words[0] == "pitches" ? 1 : 0);
            choir.PressLive(true);
        } else {
            return WrongWord(words[0], "automatic, edit, harmonies, pitches");
        }
        return ScriptResult::Done();
    });
}

ScriptResult SetRecord(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<bool> on = ReadSwitch(words[0]);
        if (!on) return WrongWord(words[0], "on, off");
        if (app.ChoirPanel().GetPage() != ChoirPage::kLive)
            return ScriptResult::Failed("only with 'mode harmonies' and 'mode pitches'");
        if (*on != app.ChoirPanel().IsRecording()) app.ChoirPanel().ToggleRecord();
        return ScriptResult::Done();
    });
}

// "vol=0.5", "mute", and what takes it back.
std::string ChangeStrip(VoiceStrips& strips, std::size_t voice, const std::string& word) {
    VoiceStrip& strip = strips[voice];
    if (word == "unmute") {
        strip.mute = false;
    } else if (word == "unsolo") {
        strip.solo = false;
    } else if (const std::string allowed = SetStripControl(strip, word); !allowed.empty()) {
        return allowed + ", unmute, unsolo";
    }
    if (word == "solo")
        for (VoiceStrip& other : strips) other.solo = &other == &strip; // exclusive
    return "";
}

ScriptResult SetVoice(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<std::int32_t> voice = FindVoice(words[0], app.Driver().VoiceCount());
        if (!voice) return WrongWord(words[0], VoiceChoices(app.Driver().VoiceCount()));
        const VoiceStrips present = PresentStrips(app);
        VoiceStrips wanted = present;
        for (const std::string& word : words.subspan(1)) {
            const std::string allowed = ChangeStrip(wanted, static_cast<std::size_t>(*voice), word);
            if (!allowed.empty()) return WrongWord(word, allowed);
        }
        ChangeStrips(app, present, wanted);
        return ScriptResult::Done();
    });
}

ScriptResult SetParameter(ScriptSession& script, ScriptWords words) {
    const std::optional<std::int32_t> index = ReadInteger(words[0]);
    if (!index || *index < 0 || *index >= kHostParameterCount)
        return WrongWord(words[0], "0 to " + std::to_string(kHostParameterCount - 1));
    const std::optional<double> value = ReadNumber(words[1]);
    if (!value || *value < 0 || *value > 1) return WrongWord(words[1], "0 to 1");
    if (!script.Session().IsLoaded()) return ScriptResult::Failed("nothing is loaded");
    script.Session().PlugIn().SetParameter(*index, static_cast<float>(*value));
    return ScriptResult::Done();
}

constexpr std::size_t kManyWords = 64;

// clang-format off
constexpr std::array<ScriptCommand, 16> kSettingsCommands = {{
    {"set style", "NAME", "Name or list position", 1, 1, SetStyle},
    {"set arrangement", "NAME", "Name or number, of the styles that have some", 1, 1, SetArrangement},
    {"set root", "NOTE", "Root of the melody's key", 1, 1, SetRoot},
    {"set scale", "NAME", "Scale of the melody", 1, 1, SetScale},
    {"set harmony-root", "NOTE", "Root that everything is moved to, by six semitones at most", 1, 1, SetHarmonyRoot},
    {"set harmony-scale", "NAME", "Scale of the harmony", 1, 1, SetHarmonyScale},
    {"set snap", "on|off", "Move the melody into its scale, and on to the harmony's", 1, 1, SetSnap},
    {"set range", "N", "Harmony voices above the melody, intelligent styles", 1, 1, SetRange},
    {"set spread", "X", "Width of the voicings from 0 to 1, intelligent styles", 1, 1, SetSpread},
    {"set interval", "VOICE INTERVAL", "Name or scale steps, parallel styles", 2, 2, SetInterval},
    {"set transpose", "N", "Semitones from -24 to 24", 1, 1, SetTranspose},
    {"set tuning", "HZ", "A4 of what is sung, 350 to 500", 1, 1, SetTuning},
    {"mode", "automatic|edit|harmonies|pitches", "The styles, notes by hand, or keys played live", 1, 1, SetMode},
    {"record", "on|off", "Keep what keys make of the voices", 1, 1, SetRecord},
    {"voice", "VOICE KEY=X|mute|unmute|solo|unsolo ...", "Strip of a voice, with the keys of --voice", 2, kManyWords, SetVoice},
    {"parameter", "INDEX VALUE", "A host's parameter 0 to 31, from 0 to 1", 2, 2, SetParameter},
}};
// clang-format on

} // namespace

std::span<const ScriptCommand> SettingCommands() { return kSettingsCommands; }

} // namespace sonorelle
