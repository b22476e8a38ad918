#include "app/application_export_rig.h"
#include "app/application_gestures.h"

#include "platform/result_codes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <vector>

namespace sonorelle::test {
namespace {

using testing::ElementsAre;

float Loudest(const std::vector<float>& samples) {
    float loudest = 0;
    for (const float sample : samples) loudest = std::max(loudest, std::fabs(sample));
    return loudest;
}

std::vector<std::string> Texts(const std::vector<PopupItem>& items) {
    std::vector<std::string> texts;
    for (const PopupItem& item : items) texts.push_back(item.text);
    return texts;
}

constexpr std::int32_t kFirstMidiChoice = 16;

TEST(ApplicationExport, TheMenuHasTheVoicesOfTheStyleAndChordsOfTheIntelligentOne) {
    struct Case {
        std::int32_t row;
        std::int32_t detail;
        std::size_t voices;
    };
    for (const Case& c : {Case{0, 0, 4},
                          {1, 0, 3},
                          {2, 0, 2},
                          {3, 8, 4},
                          {4, 1, 3},
                          {5, 5, 2},
                          {5, 6, 3},
                          {6, 0, 4},
                          {7, 0, 2}}) {
        SCOPED_TRACE(c.row);
        ExportSession session;
        session.app->ChoirPanel().ChooseStyle(c.row);
        session.app->ChoirPanel().ChooseDetail(c.detail);
        const PopupMenu menu = session.app->ExportMenu();
        std::vector<std::string> expected = {"all voices", "orange voice", "red voice", "blue voice",
                                             "green voice"};
        expected.resize(1 + c.voices);
        ASSERT_EQ(Texts(menu.items), (std::vector<std::string>{"Audio", "MIDI"}));
        EXPECT_EQ(Texts(menu.items[0].children), expected);
        if (c.row <= 2) expected.push_back("chords");
        EXPECT_EQ(Texts(menu.items[1].children), expected);
    }
}

TEST(ApplicationExport, InALiveModeNothingIsOffered) {
    ExportSession session;
    session.app->ChoirPanel().PressLive(true);
    session.Save(0, "Out_song.wav");
    EXPECT_TRUE(session.toolkit.menus.empty());
    EXPECT_TRUE(session.toolkit.saveTitles.empty());
}

TEST(ApplicationExport, NoChoiceClosesTheMenu) {
    ExportSession session;
    session.Save(PopupItem::kNothing, "Out_song.wav");
    EXPECT_EQ(session.toolkit.menus.size(), 1U);
    EXPECT_TRUE(session.toolkit.saveTitles.empty());
}

class WindowWatchingToolkit : public AnsweringToolkit {
public:
    void ActivateMainWindow(bool on) override { active = on; }
    std::string ChooseFileToSave(const std::string& title, const std::string& filter,
                                 const std::string& presetName) override {
        activeInDialog = active;
        return AnsweringToolkit::ChooseFileToSave(title, filter, presetName);
    }
    bool active = true;
    bool activeInDialog = true;
};

TEST(ApplicationExport, OffersTheRecordingsNameBehindOut) {
    for (const auto& [file, stem] : {std::pair{"take1.wav", "take1"}, {"my.take.1.wav", "my.take.1"}}) {
        TemporaryFolder folder;
        const std::string path = WriteSongFiles(folder, file, SessionSong());
        WindowWatchingToolkit toolkit;
        CCriticalSection lock;
        CSnapshotStore store;
        CkvoAudioFile audio;
        ASSERT_EQ(audio.OpenRead(path, kAudioCacheFrames, -1, -1), kOk);
        CkvovirelaineApp app({toolkit, lock, &audio, store});
        ASSERT_EQ(app.Run(), kOk);
        toolkit.menuChoice = 0;
        OpenExportMenu(app, toolkit);
        EXPECT_FALSE(toolkit.activeInDialog);
        EXPECT_TRUE(toolkit.active);
        toolkit.menuChoice = kFirstMidiChoice;
        OpenExportMenu(app, toolkit);
        EXPECT_THAT(toolkit.presetNames,
                    ElementsAre(std::string("Out_") + stem + ".wav", std::string("Out_") + stem + ".mid"));
        EXPECT_THAT(toolkit.saveTitles, ElementsAre("Save as Audio File", "Save as MIDI File"));
        EXPECT_THAT(toolkit.filters, ElementsAre("WAV File\t*.wav", "MIDI File\t*.mid"));
        EXPECT_TRUE(toolkit.messages.empty());
    }
}

TEST(ApplicationExport, ANameWithoutExtensionGetsOne) {
    ExportSession session;
    session.Save(0, "typed");
    EXPECT_TRUE(std::filesystem::exists(session.File("typed.wav")));
    session.Save(kFirstMidiChoice, "typed");
    EXPECT_TRUE(std::filesystem::exists(session.File("typed.mid")));
    session.Save(1, "whole.wav");
    EXPECT_TRUE(std::filesystem::exists(session.File("whole.wav")));
    std::filesystem::create_directory(session.File("my.wav files"));
    session.Save(0, "my.wav files/typed");
    EXPECT_TRUE(std::filesystem::exists(session.File("my.wav files/typed.wav")));
    EXPECT_TRUE(session.toolkit.messages.empty());
    EXPECT_EQ(session.toolkit.progressOpened, 3);
    EXPECT_EQ(session.toolkit.progressClosed, 3);
}

TEST(ApplicationExport, EachEntryOfTheMenuGivesItsOwn) {
    ExportSession session;
    session.Save(0, "all.wav");
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        session.Save(1 + voice, "one.wav");
        session.Exported(voice);
        EXPECT_TRUE(ExportedBytes(session.File("one.wav")) == ExportedBytes(session.File("exported.wav")));
        session.Save(kFirstMidiChoice + 1 + voice, "one.mid");
        for (const ExportedKey& key : ExportedKeys(session.File("one.mid")))
            EXPECT_EQ(key.status & 15, voice);
    }
    session.Save(kFirstMidiChoice + 5, "chords.mid");
    session.Save(kFirstMidiChoice, "all.mid");
    EXPECT_EQ(ExportedKeys(session.File("all.mid")).size(), 6U * 4 * 2);
    EXPECT_TRUE(ExportedBytes(session.File("chords.mid")) != ExportedBytes(session.File("all.mid")));
}

TEST(ApplicationExport, AFailureIsToldAndLeavesNothing) {
    ExportSession session;
    session.Save(0, "no such folder/out.wav");
    session.Save(kFirstMidiChoice, "no such folder/out.mid");
    session.Save(7, "voice.wav"); // entries that the menu does not have
    session.Save(99, "voice.mid");
    const std::pair<std::string, std::string> message = {"Error!", "Could not write file!"};
    EXPECT_THAT(session.toolkit.messages, ElementsAre(message, message, message, message));
    EXPECT_TRUE(session.toolkit.selection.empty());
    EXPECT_EQ(session.FilesInFolder(), 2U); // recording and cache
}

TEST(ApplicationExport, WhatIsCancelledOrFailsLeavesTheOldFile) {
    ExportSession session;
    const std::string path = session.File("out.wav");
    std::ofstream(path) << "old";
    EXPECT_EQ(session.app->ExportAudio(path, -1, [](double share) { return share < 0.5; }),
              CAudioExport::kCancelled);
    EXPECT_EQ(ExportedBytes(path), "old");
    session.toolkit.cancel = true;
    session.Save(0, "out.wav");
    EXPECT_EQ(ExportedBytes(path), "old");
    EXPECT_TRUE(session.toolkit.messages.empty());
    EXPECT_THROW(session.app->ExportAudio(path, -1,
                                          [](double share) -> bool {
                                              if (share > 0.5) throw std::runtime_error("the face is gone");
                                              return true;
                                          }),
                 std::runtime_error);
    EXPECT_EQ(ExportedBytes(path), "old");
    EXPECT_EQ(session.FilesInFolder(), 3U);
    EXPECT_GT(Loudest(session.Play(20000, 512)[0]), 0.05F); // playback is not left silent
}

TEST(ApplicationExport, HostileVoicesAreRefused) {
    ExportSession session;
    for (const std::int32_t voice :
         {-2, 5, 1000, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(session.app->ExportAudio(session.File("out.wav"), voice), kBadArgument) << voice;
        EXPECT_EQ(session.app->ExportMidi(session.File("out.mid"), voice), kBadArgument) << voice;
    }
    EXPECT_EQ(session.app->ExportAudio("", -1), kCannotWrite);
    EXPECT_EQ(session.app->ExportMidi("", -1), kCannotWrite);
    EXPECT_EQ(session.app->ExportTriggerMidi(""), kCannotWrite);
    EXPECT_EQ(session.app->ExportAudio(session.folder.Path().string(), -1), kCannotWrite);
    EXPECT_EQ(session.app->ExportAudioFiles({}, nullptr), kOk);
    EXPECT_EQ(session.FilesInFolder(), 2U);
    EXPECT_GT(Loudest(session.Play(20000, 512)[0]), 0.05F);
}

TEST(ApplicationExport, AMonoRecordingGivesTwoChannelsOfTheRegion) {
    ExportSession session;
    session.SetRegion(6400, 30000);
    const Outputs sound = session.Exported(-1);
    ASSERT_EQ(sound.size(), 2U);
    EXPECT_NEAR(static_cast<double>(sound[0].size()), 30000 - 6400, 512);
    EXPECT_GT(Loudest(sound[0]), 0.05F);
    EXPECT_GT(Loudest(sound[1]), 0.05F);
}

TEST(ApplicationExport, AStereoRecordingGivesTwoDifferentChannels) {
    ExportSession session(SessionSong(2));
    const Outputs sound = session.Exported(-1);
    ASSERT_EQ(sound.size(), 2U);
    EXPECT_TRUE(sound[0] != sound[1]);
}

TEST(ApplicationExport, TheVoicesAddUpToAllVoices) {
    ExportSession session;
    for (std::int32_t voice = 0; voice < 4; ++voice) session.app->SetParameter(6 * voice, 0.2F);
    const Outputs all = session.Exported(-1);
    std::vector<float> sum(all[0].size());
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        const Outputs one = session.Exported(voice);
        ASSERT_EQ(one[0].size(), sum.size());
        EXPECT_GT(Loudest(one[0]), 0.01F) << voice;
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += one[0][i];
    }
    // Five numbers, each rounded to 1/32768.
    for (std::size_t i = 0; i < sum.size(); ++i) ASSERT_NEAR(sum[i], all[0][i], 4.0F / 32768) << i;
}

TEST(ApplicationExport, AVoiceTakesItsPanAndGainAndAMutedOneIsSilent) {
    ExportSession session;
    session.app->SetParameter(0, 0.4F);
    session.app->SetParameter(1, 0.5F);
    const Outputs middle = session.Exported(0);
    session.app->SetParameter(1, 0.0F); // to the left
    const Outputs left = session.Exported(0);
    EXPECT_EQ(Loudest(left[1]), 0);
    EXPECT_GE(Loudest(left[0]), Loudest(middle[0]));
    session.app->SetParameter(0, 0.2F);
    EXPECT_LT(Loudest(session.Exported(0)[0]), Loudest(left[0]) * 0.75F);
    session.app->VoicePanel().ToggleMute(0);
    const Outputs muted = session.Exported(0);
    EXPECT_EQ(muted[0].size(), middle[0].size());
    EXPECT_EQ(Loudest(muted[0]), 0);
    EXPECT_GT(Loudest(session.Exported(-1)[1]), 0.01F); // the others
}

TEST(ApplicationExport, PlaybackIsSilentMeanwhileAndGoesOnWhereItWas) {
    ExportSession session;
    session.app->Start();
    session.Process(10240, 512);
    float loudest = 1;
    std::int32_t position = -1;
    EXPECT_EQ(session.app->ExportAudio(session.File("out.wav"), -1,
                                       [&](double) {
                                           loudest = Loudest(session.Process(512, 512)[0]);
                                           position = session.app->GetPosition();
                                           return true;
                                       }),
              kOk);
    EXPECT_EQ(loudest, 0);
    EXPECT_EQ(position, 10240);
    EXPECT_TRUE(session.app->IsPlaying());
    EXPECT_EQ(session.app->GetPosition(), 10240);
    EXPECT_GT(Loudest(session.Process(8192, 512)[0]), 0.05F);
    EXPECT_EQ(session.app->GetPosition(), 10240 + 8192);
}

TEST(ApplicationExport, WhatHappensMeanwhileDoesNotChangeTheFile) {
    ExportSession session;
    const std::string expected = (session.Exported(-1), ExportedBytes(session.File("exported.wav")));
    session.app->PlaybackPanel().SetMode(CkvovirelainePlaybackSettings::kMidi);
    session.app->OnPlaybackChanged();
    std::int32_t nested = kOk;
    EXPECT_EQ(session.app->ExportAudio(session.File("out.wav"), -1,
                                       [&](double share) {
                                           if (share < 0.3 || share > 0.6) return true;
                                           session.app->NoteOn(60, 0, 0);
                                           session.app->NoteOff(60, 0, 0);
                                           session.app->SynchronizeToHost(3000, true, true, 64);
                                           session.Process(512, 64);
                                           session.app->SetPosition(100);
                                           session.app->Rewind();
                                           session.app->NextNote();
                                           session.app->PreviousNote();
                                           session.app->Poll();
                                           nested = session.app->ExportAudio(session.File("in.wav"), -1);
                                           return true;
                                       }),
              kOk);
    EXPECT_TRUE(ExportedBytes(session.File("out.wav")) == expected);
    EXPECT_EQ(nested, kCannotWrite);
    EXPECT_FALSE(std::filesystem::exists(session.File("in.wav")));
}

TEST(ApplicationExport, AnExportDuringAnAuditionPutsTheAuditionBack) {
    ExportSession session;
    CkvovirelaineApp& app = *session.app;
    SpreadVoicesForEditing(app);
    ViewHand hand(app);
    app.SetPosition(7000);
    app.View().Press(hand.On(3, 0));
    session.Process(1024, 64);
    const std::int32_t position = app.GetPosition();
    EXPECT_EQ(app.ExportAudio(session.File("out.wav"), -1), kOk);
    EXPECT_EQ(app.GetPosition(), position);
    app.View().Release(hand.On(3, 0));
    EXPECT_EQ(app.GetPosition(), 7000);
}

TEST(ApplicationExport, TheSameFileComesOutOfEveryState) {
    ExportSession session;
    const std::string expected = (session.Exported(-1), ExportedBytes(session.File("exported.wav")));
    session.Play(12345, 100);
    session.app->NextNote();
    session.Exported(-1);
    EXPECT_TRUE(ExportedBytes(session.File("exported.wav")) == expected);
    session.app->Stop();
    session.app->SetPosition(-5000);
    session.Exported(-1);
    EXPECT_TRUE(ExportedBytes(session.File("exported.wav")) == expected);
    EXPECT_EQ(session.app->GetPosition(), -5000);
}

TEST(ApplicationExport, ASyncedExportHasTheHostsLength) {
    ExportSession session;
    const std::size_t length = session.Exported(-1)[0].size();
    session.app->MelodyPanel().EnterTempo(120);
    session.app->PlaybackPanel().ToggleSync();
    session.app->SetHostTempo(60, 4, 4);
    EXPECT_NEAR(static_cast<double>(session.Exported(-1)[0].size()), 2.0 * static_cast<double>(length), 256);
    session.app->SetHostTempo(240, 4, 4);
    EXPECT_NEAR(static_cast<double>(session.Exported(-1)[0].size()), 0.5 * static_cast<double>(length), 256);
}

TEST(ApplicationExport, AnEmptyRegionGivesAnEmptyFile) {
    ExportSession session;
    session.SetRegion(8000, 8000);
    EXPECT_EQ(session.Exported(-1)[0].size(), 0U);
    EXPECT_EQ(session.app->ExportMidi(session.File("out.mid"), -1), kOk);
    EXPECT_TRUE(ExportedKeys(session.File("out.mid")).empty());
}

} // namespace
} // namespace sonorelle::test
