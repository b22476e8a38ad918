#include "app/voice_settings.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>
#include <vector>

namespace sonorelle {
namespace {

using Audible = std::array<bool, 4>;

TEST(VoiceSettingsSolo, AllVoicesSoundAtFirst) {
    const CkvovirelaineVoiceSettings mixer;
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{true, true, true, true}));
}

TEST(VoiceSettingsSolo, MuteSilencesItsVoice) {
    CkvovirelaineVoiceSettings mixer;
    EXPECT_TRUE(mixer.ToggleMute(1));
    EXPECT_TRUE(mixer.IsMuted(1));
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{true, false, true, true}));
    mixer.ToggleMute(1);
    EXPECT_FALSE(mixer.IsMuted(1));
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{true, true, true, true}));
}

TEST(VoiceSettingsSolo, SoloOnVoiceTwoTurnsTheSoloOfVoiceOneOff) {
    CkvovirelaineVoiceSettings mixer;
    mixer.ToggleSolo(1);
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{false, true, false, false}));
    mixer.ToggleSolo(2);
    EXPECT_FALSE(mixer.IsSoloed(1));
    EXPECT_TRUE(mixer.IsSoloed(2));
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{false, false, true, false}));
}

TEST(VoiceSettingsSolo, RemovingTheLastSoloRestoresEachVoicesMute) {
    CkvovirelaineVoiceSettings mixer;
    mixer.ToggleMute(0);
    mixer.ToggleMute(3);
    mixer.ToggleSolo(3);
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{false, false, false, true})); // though it is muted
    mixer.ToggleSolo(3);
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{false, true, true, false}));
}

TEST(VoiceSettingsSolo, EverySwitchIsToldThePressedOneFirst) {
    CkvovirelaineVoiceSettings mixer;
    mixer.SetSolo(0, true);
    mixer.SetSolo(3, true); // two at once, as a document may have it
    std::vector<std::int32_t> strips;
    std::vector<Audible> heard;
    mixer.SetCallback([&](CkvovirelaineVoiceSettings& panel) {
        strips.push_back(panel.GetLastStrip());
        heard.push_back(panel.GetAudibleVoices());
        EXPECT_EQ(panel.GetChangedControl(panel.GetLastStrip()), VoiceControl::kSwitch);
    });
    mixer.ToggleSolo(2);
    EXPECT_EQ(strips, (std::vector<std::int32_t>{2, 0, 3}));
    for (const Audible& voices : heard) EXPECT_EQ(voices, (Audible{false, false, true, false}));
}

TEST(VoiceSettingsSolo, MuteOnASoloedVoiceClearsTheOtherSolosToo) {
    CkvovirelaineVoiceSettings mixer;
    mixer.SetSolo(0, true);
    mixer.SetSolo(1, true);
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{true, true, false, false}));
    mixer.ToggleMute(1);
    EXPECT_FALSE(mixer.IsSoloed(0));
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{false, true, false, false}));
}

TEST(VoiceSettingsSolo, MuteOnAnyOtherVoiceLeavesTheSolos) {
    CkvovirelaineVoiceSettings mixer;
    mixer.SetSolo(0, true);
    mixer.SetSolo(1, true);
    mixer.ToggleMute(2);
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{true, true, false, false}));
}

TEST(VoiceSettingsSolo, TurningASoloOffTellsThatStripAlone) {
    CkvovirelaineVoiceSettings mixer;
    mixer.ToggleSolo(1);
    std::vector<std::int32_t> strips;
    mixer.SetCallback([&](CkvovirelaineVoiceSettings& panel) { strips.push_back(panel.GetLastStrip()); });
    mixer.ToggleSolo(1);
    EXPECT_EQ(strips, (std::vector<std::int32_t>{1}));
}

TEST(VoiceSettingsSolo, VoicesThatTheStyleDoesNotHaveAreSilent) {
    CkvovirelaineVoiceSettings mixer;
    mixer.SetVisibleVoices(2);
    EXPECT_EQ(mixer.GetVisibleVoices(), 2);
    EXPECT_TRUE(mixer.IsStripActive(1));
    EXPECT_FALSE(mixer.IsStripActive(2));
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{true, true, false, false}));
}

TEST(VoiceSettingsSolo, TheSoloOfAStripOutOfReachSilencesNobody) {
    CkvovirelaineVoiceSettings mixer;
    mixer.ToggleSolo(3);
    mixer.SetVisibleVoices(3);
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{true, true, true, false}));
    mixer.SetVisibleVoices(4);
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{false, false, false, true}));
}

TEST(VoiceSettingsSolo, AStripThatIsNotActiveTakesNoHand) {
    CkvovirelaineVoiceSettings mixer;
    mixer.SetVisibleVoices(2);
    mixer.SetCallback([](CkvovirelaineVoiceSettings&) { FAIL() << "nobody has changed anything"; });
    EXPECT_FALSE(mixer.ToggleMute(2));
    EXPECT_FALSE(mixer.ToggleSolo(3));
    EXPECT_FALSE(mixer.PressReset(2));
    EXPECT_FALSE(mixer.DragDial(3, 0, 0, {50, 40}));
    EXPECT_FALSE(mixer.MoveControl(2, VoiceControl::kVolume, 0));
    EXPECT_EQ(mixer.GetSettings(2), VoiceSettings());
    EXPECT_EQ(mixer.GetSettings(3), VoiceSettings());
    mixer.SetVol(3, 0.5F); // the host may: the strip keeps it for later
    EXPECT_EQ(mixer.GetVol(3), 0.5F);
}

TEST(VoiceSettingsSolo, TheCountOfVoicesIsHeld) {
    CkvovirelaineVoiceSettings mixer;
    mixer.SetVisibleVoices(-3);
    EXPECT_EQ(mixer.GetVisibleVoices(), 0);
    EXPECT_EQ(mixer.GetAudibleVoices(), (Audible{false, false, false, false}));
    mixer.SetVisibleVoices(99);
    EXPECT_EQ(mixer.GetVisibleVoices(), 4);
}

} // namespace
} // namespace sonorelle
