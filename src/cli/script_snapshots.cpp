// Commands for snapshots, which are numbered from 0.

#include "app/application.h"
#include "cli/named_numbers.h"
#include "cli/script_commands.h"

#include <array>

namespace sonorelle {

namespace {

using Panel = CkvovirelaineSnapshots;

// The list, where it answers.
ScriptResult WithPanel(ScriptSession& script,
                       const std::function<ScriptResult(CkvovirelaineApp&, Panel&)>& work) {
    return script.With([&](CkvovirelaineApp& app) {
        if (!app.SnapshotPanel().IsEnabled()) return ScriptResult::Failed("not while keys are played live");
        return work(app, app.SnapshotPanel());
    });
}

ScriptResult WithSnapshot(ScriptSession& script, ScriptWords words,
                          const std::function<ScriptResult(Panel&, std::int32_t)>& work) {
    return WithPanel(script, [&](CkvovirelaineApp&, Panel& panel) {
        const std::optional<std::int32_t> index = ReadInteger(words[0]);
        if (!index || *index < 0 || *index >= panel.GetCount())
            return WrongWord(words[0], "a snapshot from 0 to " + std::to_string(panel.GetCount() - 1));
        return work(panel, *index);
    });
}

ScriptResult Add(ScriptSession& script, ScriptWords words) {
    return WithPanel(script, [&](CkvovirelaineApp& app, Panel& panel) {
        std::optional<std::int32_t> key = panel.GetTriggerNote();
        if (words.size() > 1 && (!(key = ReadInteger(words[1])) || *key < 0 || *key > Panel::kHighestKey))
            return WrongWord(words[1], "a key from 0 to " + std::to_string(Panel::kHighestKey));
        const bool added = panel.Add(words[0], *key, app.GetPlayStart(), app.GetPlayEnd());
        return added ? ScriptResult::Done() : ScriptResult::Failed("the list of snapshots is full");
    });
}

ScriptResult Recall(ScriptSession& script, ScriptWords words) {
    return WithSnapshot(script, words, [](Panel& panel, std::int32_t index) {
        panel.Choose(index);
        return ScriptResult::Done();
    });
}

ScriptResult Rename(ScriptSession& script, ScriptWords words) {
    return WithSnapshot(script, words, [&](Panel& panel, std::int32_t index) {
        panel.Rename(index, words[1]);
        return ScriptResult::Done();
    });
}

ScriptResult Remove(ScriptSession& script, ScriptWords words) {
    return WithSnapshot(script, words, [](Panel& panel, std::int32_t index) {
        panel.Remove(index);
        return ScriptResult::Done();
    });
}

ScriptResult Replace(ScriptSession& script, ScriptWords words) {
    return WithSnapshot(script, words, [](Panel& panel, std::int32_t index) {
        return panel.Replace(index) ? ScriptResult::Done() : ScriptResult::Failed("could not be replaced");
    });
}

// clang-format off
constexpr std::array<ScriptCommand, 5> kSnapshotCommands = {{
    {"snapshot add", "NAME [KEY]", "Keep the arrangement, with the region and a key", 1, 2, Add},
    {"snapshot recall", "N", "Go to a snapshot, counted from 0", 1, 1, Recall},
    {"snapshot rename", "N NAME", "Name a snapshot", 2, 2, Rename},
    {"snapshot remove", "N", "Drop a snapshot", 1, 1, Remove},
    {"snapshot replace", "N", "Put the arrangement in its place", 1, 1, Replace},
}};
// clang-format on

} // namespace

std::span<const ScriptCommand> SnapshotCommands() { return kSnapshotCommands; }

} // namespace sonorelle
