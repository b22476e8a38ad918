// Names, programs, parameters: what hosts ask for first.

#include "host/plugin_stage.h"

#include <gtest/gtest.h>

#include <limits>

namespace sonorelle::test {
namespace {

std::string NameOfProgram(CvirelainePlugIn& plugIn) {
    std::string text;
    plugIn.GetProgramName(text);
    return text;
}

TEST(PlugInIdentity, TellsWhatItIs) {
    PlugInStage stage;
    std::string text;
    stage.plugIn->GetEffectName(text);
    EXPECT_EQ(text, "sonorelle");
    stage.plugIn->GetProductString(text);
    EXPECT_EQ(text, "sonorelle");
    stage.plugIn->GetVendorString(text);
    EXPECT_EQ(text, "quillon.development");
    EXPECT_EQ(stage.plugIn->GetVendorVersion(), 1112);
    EXPECT_EQ(stage.plugIn->GetPlugCategory(), 2);
    EXPECT_EQ(CvirelainePlugIn::AboutText(), "V1.5.5 build 112");
    EXPECT_EQ(CvirelainePlugIn::UpdatePage(), "index.php?page=update-check&Version=112");
}

TEST(PlugInPrograms, BeginWithDefaultAndFlat) {
    PlugInStage stage;
    EXPECT_EQ(stage.plugIn->GetProgram(), 0);
    EXPECT_EQ(NameOfProgram(*stage.plugIn), "default");
    stage.plugIn->SetProgram(1);
    EXPECT_EQ(stage.plugIn->GetProgram(), 1);
    EXPECT_EQ(NameOfProgram(*stage.plugIn), "flat");
}

TEST(PlugInPrograms, AreNamedByIndexAndOtherwiseByTheCurrentOne) {
    PlugInStage stage;
    std::string text;
    EXPECT_TRUE(stage.plugIn->GetProgramNameIndexed(-1, 1, text));
    EXPECT_EQ(text, "flat");
    EXPECT_TRUE(stage.plugIn->GetProgramNameIndexed(0, 2, text));
    EXPECT_EQ(text, "default");
    stage.plugIn->SetProgram(1);
    EXPECT_TRUE(stage.plugIn->GetProgramNameIndexed(0, 1000, text));
    EXPECT_EQ(text, "flat");
    EXPECT_TRUE(stage.plugIn->GetProgramNameIndexed(0, -1, text));
    EXPECT_EQ(text, "flat");
}

TEST(PlugInPrograms, TheCurrentOneIsRenamed) {
    PlugInStage stage;
    stage.plugIn->SetProgram(1);
    stage.plugIn->SetProgramName("M\xC3\xA4nner <&\">");
    EXPECT_EQ(NameOfProgram(*stage.plugIn), "M\xC3\xA4nner <&\">");
    stage.plugIn->SetProgram(0);
    EXPECT_EQ(NameOfProgram(*stage.plugIn), "default");
}

TEST(PlugInPrograms, OnesThatDoNotExistChangeNothing) {
    PlugInStage stage;
    stage.LoadSong();
    stage.plugIn->SetProgram(1);
    const float volume = stage.plugIn->GetParameter(6);
    for (const std::int32_t odd : {-1, 2, std::numeric_limits<std::int32_t>::max()}) {
        stage.plugIn->SetProgram(odd);
        EXPECT_EQ(stage.plugIn->GetProgram(), 1);
        EXPECT_EQ(stage.plugIn->GetParameter(6), volume);
    }
}

TEST(PlugInPrograms, ChoosingOneSetsTheStrips) {
    PlugInStage stage;
    stage.LoadSong();
    EXPECT_NEAR(stage.plugIn->GetParameter(6), 0.5F / 1.333F, 1e-6F);
    stage.plugIn->SetProgram(1);
    EXPECT_NEAR(stage.plugIn->GetParameter(6), 1 / 1.333F, 1e-6F);
    stage.plugIn->SetProgram(0);
    EXPECT_NEAR(stage.plugIn->GetParameter(6), 0.5F / 1.333F, 1e-6F);
}

TEST(PlugInParameters, AreZeroAndDeafWithoutARecording) {
    PlugInStage stage;
    stage.plugIn->SetParameter(0, 0.5F);
    for (std::int32_t index = 0; index < 32; ++index) EXPECT_EQ(stage.plugIn->GetParameter(index), 0);
}

TEST(PlugInParameters, AreSetAndRead) {
    PlugInStage stage;
    stage.LoadSong();
    stage.plugIn->SetParameter(0, 0.75F);
    EXPECT_NEAR(stage.App().VoicePanel().GetSettings(0).vol, 0.99975F, 1e-6F);
    EXPECT_NEAR(stage.plugIn->GetParameter(0), 0.75F, 1e-6F);
    stage.host.automated.clear();
    stage.plugIn->SetParameter(1, 1);
    EXPECT_TRUE(stage.host.automated.empty()); // the host knows what it has set itself
}

TEST(PlugInParameters, BadIndexesAndValuesAreHarmless) {
    PlugInStage stage;
    stage.LoadSong();
    const std::string before = stage.Chunk();
    const float odd[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity()};
    for (const std::int32_t index : {-1, 32, std::numeric_limits<std::int32_t>::min()}) {
        stage.plugIn->SetParameter(index, 0.5F);
        EXPECT_EQ(stage.plugIn->GetParameter(index), 0);
        std::string text = "x";
        stage.plugIn->GetParameterName(index, text);
        EXPECT_EQ(text, "");
        stage.plugIn->GetParameterDisplay(index, text);
        EXPECT_EQ(text, "");
    }
    for (std::int32_t index = 0; index < 32; ++index)
        for (const float value : odd) stage.plugIn->SetParameter(index, value);
    EXPECT_EQ(stage.Chunk(), before);
    for (std::int32_t index = 0; index < 32; ++index) {
        for (const float value : {-5.0F, 7.0F}) {
            stage.plugIn->SetParameter(index, value);
            EXPECT_GE(stage.plugIn->GetParameter(index), 0) << index;
            EXPECT_LE(stage.plugIn->GetParameter(index), 1) << index;
        }
    }
}

TEST(PlugInParameters, TheirTextsAreThoseOfTheStrips) {
    PlugInStage stage;
    stage.LoadSong();
    std::string text;
    stage.plugIn->GetParameterName(1, text);
    EXPECT_EQ(text, "orange voice pan");
    stage.plugIn->GetParameterName(31, text);
    EXPECT_EQ(text, "green voice timing");
    stage.plugIn->GetParameterName(24, text);
    EXPECT_EQ(text, "orange voice glide");
    stage.plugIn->GetParameterLabel(0, text);
    EXPECT_EQ(text, " dB ");
    stage.plugIn->SetParameter(0, 0);
    stage.plugIn->GetParameterDisplay(0, text);
    EXPECT_EQ(text, "-oo");
    stage.plugIn->GetParameterDisplayForValue(2, text, 0.5F);
    EXPECT_EQ(text, "50.0 ms ");
    float least = -1;
    float most = -1;
    bool logarithmic = false;
    stage.plugIn->GetParameterRange(0, least, most, logarithmic);
    EXPECT_EQ(least, 0);
    EXPECT_EQ(most, 1.333F);
    EXPECT_TRUE(logarithmic);
}

TEST(PlugInParameters, ASampleRateFromOutsideReachesTheApplication) {
    ScriptedToolkit toolkit;
    CvirelainePlugIn plugIn(nullptr, toolkit);
    plugIn.SetBlockSizeAndSampleRate(512, 48000);
    plugIn.SetBlockSizeAndSampleRate(512, std::numeric_limits<float>::quiet_NaN());
    plugIn.SetBlockSize(64);
    ASSERT_EQ(plugIn.LoadAudioFile(SungSong()), kOk);
    EXPECT_EQ(toolkit.messages.size(), 1U); // another rate than the song's
    plugIn.WithApplication([](CkvovirelaineApp& app) {
        app.PlaybackPanel().SetOffset(48000);
        app.OnPlaybackChanged();
    });
    plugIn.SetBlockSizeAndSampleRate(512, 96000);
    EXPECT_NEAR(plugIn.Application()->PlaybackPanel().GetOffset(), 96000, 1);
}

} // namespace
} // namespace sonorelle::test
