// A session with a recording of which everything is known, and a toolkit that answers as the test says.
//
//     LoadedSession session;                     // 1 s of six notes, four voices, the analysis in its cache
//     session.toolkit.menuChoice = 3;
//     OpenExportMenu(*session.app, session.toolkit);
//     const StereoBlocks heard = session.Play(4096, 64);
#pragma once

#include "app/application.h"
#include "app/snapshot_store.h"
#include "app/toolkit.h"
#include "formats/audio_file.h"
#include "support/song_files.h"
#include "support/temporary_folder.h"
#include "support/voiced_melody_fixture.h"

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace sonorelle::test {

// As the Save button does it.
inline void OpenExportMenu(CkvovirelaineApp& app, CkvoToolkit& toolkit) {
    if (const auto wish = AskForExport(toolkit, app.MakeExportQuestion()))
        TellOfExport(toolkit, app.Export(*wish));
}

// Remembers what it is asked, and answers with what stands in it.
class AnsweringToolkit : public CkvoToolkit {
public:
    void ShowMessage(const std::string& title, const std::string& text) override {
        messages.push_back({title, text});
    }
    std::string ChooseFileToOpen(const std::string& title, const std::string& filter) override {
        openTitles.push_back(title);
        filters.push_back(filter);
        return openPath;
    }
    std::string ChooseFileToSave(const std::string& title, const std::string& filter,
                                 const std::string& presetName) override {
        saveTitles.push_back(title);
        filters.push_back(filter);
        presetNames.push_back(presetName);
        return savePath;
    }
    std::int32_t ChooseFromMenu(const PopupMenu& menu) override {
        menus.push_back(menu);
        return menuChoice;
    }
    std::optional<std::string> AskForName(const std::string&, const std::string& presetText) override {
        presetNames.push_back(presetText);
        return name;
    }
    void SetSelection(const std::string& path) override { selection = path; }
    void ClearSelection() override { selection.clear(); }
    void OpenProgress() override { ++progressOpened; }
    bool IsProgressCancelled() override { return cancel; }
    void CloseProgress() override { ++progressClosed; }
    bool RunEvents() override {
        ++passes;
        return true;
    }

    std::vector<std::pair<std::string, std::string>> messages;
    std::vector<std::string> openTitles;
    std::vector<std::string> saveTitles;
    std::vector<std::string> filters;
    std::vector<std::string> presetNames;
    std::vector<PopupMenu> menus;
    std::string openPath;
    std::string savePath;
    std::int32_t menuChoice = PopupItem::kNothing;
    std::optional<std::string> name;
    std::string selection = "what was dragged before";
    std::int32_t progressOpened = 0;
    std::int32_t progressClosed = 0;
    std::int32_t passes = 0;
    bool cancel = false;
};

// Six notes of 0.15 to 0.3 s, with rests, in two channels or one.
inline VoicedSong SessionSong(std::int32_t channels = 1) {
    VoicedSongSettings settings;
    settings.channels = channels;
    return MakeVoicedSong(
        {{200, 8000}, {178, 8000, 0}, {160, 12000}, {150, 7000}, {178, 8000, 0}, {200, 12000}}, settings);
}

using Outputs = std::vector<std::vector<float>>; // [output][sample]

class LoadedSession {
public:
    explicit LoadedSession(const VoicedSong& voicedSong = SessionSong(), bool run = true)
        : song(voicedSong), path(WriteSongFiles(folder, "song.wav", song)) {
        audio.OpenRead(path, kAudioCacheFrames, -1, -1);
        app = std::make_unique<CkvovirelaineApp>(Wiring());
        app->SetPresets(&presets);
        if (run) result = app->Run();
    }
    ~LoadedSession() {
        app.reset();
        store.ClearAll();
    }

    ApplicationWiring Wiring() { return {toolkit, audioLock, &audio, store}; }
    std::int32_t End() const { return app->GetMelodyEnd(); }

    // Plays `frames` in blocks of the host of `block`, into so many outputs.
    Outputs Process(std::int32_t frames, std::int32_t block, std::int32_t outputCount = 2) {
        Outputs out(static_cast<std::size_t>(outputCount),
                    std::vector<float>(static_cast<std::size_t>(frames)));
        for (std::int32_t done = 0; done < frames; done += block) {
            std::array<float*, 11> pointers{};
            for (std::size_t o = 0; o < out.size(); ++o) pointers[o] = out[o].data() + done;
            app->ProcessAudio(pointers.data(), std::min(block, frames - done));
        }
        return out;
    }
    // The same from the region's beginning on, as if the host had just started.
    Outputs Play(std::int32_t frames, std::int32_t block, std::int32_t outputCount = 2) {
        app->Rewind();
        app->Start();
        return Process(frames, block, outputCount);
    }

    TemporaryFolder folder;
    VoicedSong song;
    std::string path;
    AnsweringToolkit toolkit;
    CCriticalSection audioLock;
    CSnapshotStore store;
    CVoicePresetBank presets;
    CkvoAudioFile audio;
    std::unique_ptr<CkvovirelaineApp> app;
    std::int32_t result = -2;
};

} // namespace sonorelle::test
