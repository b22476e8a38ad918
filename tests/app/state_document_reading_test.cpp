#include "app/state_document.h"

#include "app/saved_state_samples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <string>

namespace sonorelle {
namespace {

using test::DocumentSample;
using test::ReadSaved;
using test::ReadWith;
using test::SavedStateSample;
using test::WithoutKey;
using test::WithReplaced;
using test::WithValue;

TEST(StateDocumentReading, EverythingComesBack) {
    EXPECT_EQ(ReadSaved(DocumentSample()), SavedStateSample());
}

TEST(StateDocumentReading, ReadAndWrittenAgainADocumentIsTheSameToTheByte) {
    EXPECT_EQ(WriteState(ReadSaved(DocumentSample())), DocumentSample());
}

TEST(StateDocumentReading, RandomSettingsWrittenAgainAreTheSameToTheByte) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> share(0, 1);
    for (int round = 0; round < 50; ++round) {
        SavedState state = SavedStateSample();
        VoiceSettings voice;
        voice.vol = 1.333F * share(random);
        voice.pan = 2 * share(random) - 1;
        voice.quantize = share(random);
        voice.delay = 0.1F * share(random);
        voice.formantShift = std::exp2((16 * share(random) - 8) / 12);
        voice.drift = 2 * share(random) - 1;
        voice.glide = share(random);
        voice.timing = 0.2F * share(random);
        state.mixer[0] = SavedVoiceFrom(voice);
        state.presets[1].voices[2] = SavedVoiceFrom(voice);
        state.fileSettings.masterPlaybackStart = 1e9 * static_cast<double>(share(random)) - 5e8;
        state.fileSettings.currentTempo = 20 + 979 * static_cast<double>(share(random));
        state.fileSettings.tuningFreq = 350 + 150 * static_cast<double>(share(random));
        const std::string document = WriteState(state);
        const SavedState read = ReadSaved(document);
        ASSERT_EQ(WriteState(read), document) << "seed 5, round " << round;
        ASSERT_TRUE(read.presets[1].voices[2].formantShift.has_value());
        ASSERT_TRUE(read.fileSettings.masterPlaybackStart.has_value());
    }
}

TEST(StateDocumentReading, TheEndsOfTheStripsRangesComeBack) {
    for (const float end : {-1.0F, 1.0F}) {
        VoiceSettings voice;
        voice.vol = end < 0 ? 0 : 1.333F;
        voice.pan = voice.drift = end;
        voice.delay = end < 0 ? 0 : 0.1F;
        voice.timing = end < 0 ? 0 : 0.2F;
        voice.quantize = voice.glide = end < 0 ? 0 : 1.0F;
        voice.formantShift = std::exp2(end * 8 / 12);
        SavedState state = SavedStateSample();
        state.presets[0].voices[0] = SavedVoiceFrom(voice);
        EXPECT_EQ(ReadSaved(WriteState(state)), state);
    }
}

TEST(StateDocumentReading, PathsAndNamesOfAnyBytesComeBack) {
    std::string every;
    for (int byte = 1; byte < 256; ++byte) every += static_cast<char>(byte);
    for (const std::string& text : {every, std::string("</Snapshots>"), std::string("\"/><Data bin=\"00\"/>"),
                                    std::string("&#65;&amp;"), std::string("]]>"),
                                    std::string("<!-- --> <? ?>"), std::string(" leading")}) {
        SavedState state = SavedStateSample();
        state.fileSettings.audioFileName = text;
        state.snapshots->records[0].name = text;
        state.presets[1].name = text;
        EXPECT_EQ(ReadSaved(WriteState(state)), state) << text;
        EXPECT_EQ(ReadAudioFileName(WriteState(state)), text);
    }
}

TEST(StateDocumentReading, OldTextsWithBareSignsReadAsTheyAlwaysDid) {
    const std::string document = WithValue(DocumentSample(), "AudioFileName", "/a & b's > c.wav");
    EXPECT_EQ(ReadAudioFileName(document), "/a & b's > c.wav");
}

TEST(StateDocumentReading, WithoutAPathThereIsNothing) {
    for (const std::string& document :
         {WithoutKey(DocumentSample(), "AudioFileName"), WithValue(DocumentSample(), "AudioFileName", ""),
          std::string(), std::string("song.wav"), std::string("<quillon-xml>"),
          WriteProgram(SavedStateSample().presets[0])}) {
        EXPECT_EQ(ReadAudioFileName(document), std::nullopt);
        EXPECT_EQ(ReadSaved(document), SavedState());
    }
}

TEST(StateDocumentReading, AMissingKeyOfTheFileSettingsIsAbsentAndTheOthersAreThere) {
    const auto expectAbsent = [](const char* key, auto SavedFileSettings::*field) {
        SavedState expected = SavedStateSample();
        (expected.fileSettings.*field).reset();
        EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), key)), expected) << key;
        EXPECT_EQ(ReadWith(key, ""), expected) << key;
        EXPECT_EQ(ReadWith(key, "none"), expected) << key;
        EXPECT_EQ(ReadWith(key, "nan"), expected) << key;
        EXPECT_EQ(ReadSaved(WithReplaced(DocumentSample(), std::string("<") + key + " str",
                                         std::string("<") + key + " st")),
                  expected)
            << key;
    };
    expectAbsent("MasterPlaybackStart", &SavedFileSettings::masterPlaybackStart);
    expectAbsent("DoSnapshotTrigger", &SavedFileSettings::doSnapshotTrigger);
    expectAbsent("EnableSingleVoiceOutput", &SavedFileSettings::singleVoiceOutput);
    expectAbsent("EnableSyncTempoToHost", &SavedFileSettings::syncTempoToHost);
    expectAbsent("CurrentTempo", &SavedFileSettings::currentTempo);
    expectAbsent("TempoRescaleSyncFactor", &SavedFileSettings::tempoRescaleSyncFactor);
    expectAbsent("TimeSigNum", &SavedFileSettings::timeSigNumerator);
    expectAbsent("TimeSigDen", &SavedFileSettings::timeSigDenominator);
    expectAbsent("TuningFreq", &SavedFileSettings::tuningFreq);
}

TEST(StateDocumentReading, FileSettingsOutsideTheirRangesAreAbsent) {
    const auto file = [](const char* key, const char* value) { return ReadWith(key, value).fileSettings; };
    for (const char* const value : {"1.1e24", "-1e30", "inf", "-inf", "1e400"})
        EXPECT_FALSE(file("MasterPlaybackStart", value).masterPlaybackStart) << value;
    for (const char* const value : {"2", "-1", "99999999999"}) {
        EXPECT_FALSE(file("DoSnapshotTrigger", value).doSnapshotTrigger) << value;
        EXPECT_FALSE(file("EnableSingleVoiceOutput", value).singleVoiceOutput) << value;
        EXPECT_FALSE(file("EnableSyncTempoToHost", value).syncTempoToHost) << value;
    }
    for (const char* const value : {"-1.00", "0", "0.00", "999.01", "inf"})
        EXPECT_FALSE(file("CurrentTempo", value).currentTempo) << value;
    for (const char* const value : {"0.000000", "-1", "1e39", "inf"})
        EXPECT_FALSE(file("TempoRescaleSyncFactor", value).tempoRescaleSyncFactor) << value;
    for (const char* const value : {"0", "-4", "2147483648"}) {
        EXPECT_FALSE(file("TimeSigNum", value).timeSigNumerator) << value;
        EXPECT_FALSE(file("TimeSigDen", value).timeSigDenominator) << value;
    }
    for (const char* const value : {"349.99", "500.01", "0", "-440"})
        EXPECT_FALSE(file("TuningFreq", value).tuningFreq) << value;
}

TEST(StateDocumentReading, FileSettingsAtTheEndsOfTheirRangesAreThere) {
    const auto file = [](const char* key, const char* value) { return ReadWith(key, value).fileSettings; };
    EXPECT_EQ(file("CurrentTempo", "0.01").currentTempo, 0.01);
    EXPECT_EQ(file("CurrentTempo", "999.00").currentTempo, 999);
    EXPECT_EQ(file("TuningFreq", "350.00000000").tuningFreq, 350);
    EXPECT_EQ(file("TuningFreq", "500.00000000").tuningFreq, 500);
    EXPECT_EQ(file("TempoRescaleSyncFactor", "0.000001").tempoRescaleSyncFactor, 1e-6F);
    EXPECT_EQ(file("TimeSigNum", "1").timeSigNumerator, 1);
    EXPECT_EQ(file("MasterPlaybackStart", "-1000000013848427855085568").masterPlaybackStart,
              -static_cast<double>(1e24F));
}

TEST(StateDocumentReading, StripValuesOutsideTheirRangesAreAbsent) {
    const auto expectAbsent = [](const char* key, const char* value, auto SavedVoice::*field) {
        const SavedState read = ReadWith(key, value);
        EXPECT_FALSE(read.mixer[0].*field) << key << " " << value;
        SavedState expected = SavedStateSample();
        (expected.mixer[0].*field).reset();
        EXPECT_EQ(read, expected) << key << " " << value;
    };
    for (const char* const value : {"-0.01", "1.34", "nan", "inf", "loud", ""})
        expectAbsent("Vol", value, &SavedVoice::vol);
    for (const char* const value : {"-1.01", "1.01", "nan"}) expectAbsent("Pan", value, &SavedVoice::pan);
    for (const char* const value : {"-0.01", "0.11"}) expectAbsent("Delay", value, &SavedVoice::delay);
    for (const char* const value : {"-0.01", "0.21"}) expectAbsent("Timing", value, &SavedVoice::timing);
    for (const char* const value : {"-0.01", "1.01"}) expectAbsent("Quantize", value, &SavedVoice::quantize);
    for (const char* const value : {"-0.01", "1.01"}) expectAbsent("Glide", value, &SavedVoice::glide);
    for (const char* const value : {"0.62", "1.6", "0", "-1"})
        expectAbsent("FormantShift", value, &SavedVoice::formantShift);
    for (const char* const value : {"2", "-1", "on"}) expectAbsent("Mute", value, &SavedVoice::mute);
    for (const char* const value : {"2", "-1", "on"}) expectAbsent("Solo", value, &SavedVoice::solo);
}

TEST(StateDocumentReading, TheMixersDriftIsReadWhereADocumentHasIt) {
    const std::string document = WithReplaced(DocumentSample(), "<MixerSettings>\n<Voice_0>\n",
                                              "<MixerSettings>\n<Voice_0>\n<Drift str=\"-0.5\"/>\n");
    SavedState expected = SavedStateSample();
    expected.mixer[0].drift = -0.5F;
    EXPECT_EQ(ReadSaved(document), expected);
}

TEST(StateDocumentReading, ADocumentOfOnePresetHasOne) {
    SavedState state = SavedStateSample();
    state.presets.pop_back();
    EXPECT_EQ(ReadSaved(WriteState(state)), state);
}

TEST(StateDocumentReading, OfManyPresetsAsManyAreReadAsASessionHas) {
    SavedState state = SavedStateSample();
    state.presets.resize(5, state.presets[0]);
    EXPECT_EQ(ReadSaved(WriteState(state)), SavedStateSample());
}

TEST(StateDocumentReading, WithoutACountThereAreNoPresets) {
    SavedState expected = SavedStateSample();
    expected.presets.clear();
    EXPECT_EQ(ReadSaved(WithoutKey(DocumentSample(), "NumOfPresets")), expected);
    EXPECT_EQ(ReadWith("NumOfPresets", "-1"), expected);
    EXPECT_EQ(ReadWith("NumOfPresets", "two"), expected);
}

TEST(StateDocumentReading, AHugeCountOfPresetsReadsThoseThatAreThere) {
    EXPECT_EQ(ReadWith("NumOfPresets", "2147483647"), SavedStateSample());
}

TEST(StateDocumentReading, APresetThatIsNotThereHasNoValues) {
    SavedState state = SavedStateSample();
    state.presets.pop_back();
    const SavedState read = ReadSaved(WithValue(WriteState(state), "NumOfPresets", "2"));
    ASSERT_EQ(read.presets.size(), 2U);
    EXPECT_EQ(read.presets[0], state.presets[0]);
    EXPECT_EQ(read.presets[1], SavedPreset());
}

TEST(StateDocumentReading, RestoringAVoiceChangesWhatIsPresentAlone) {
    VoiceSettings before;
    before.vol = 0.25F;
    before.pan = 0.5F;
    before.mute = true;
    VoiceSettings settings = before;
    Restore(SavedVoice(), settings);
    EXPECT_EQ(settings, before);

    VoiceSettings other;
    other.vol = 0.75F;
    other.pan = -0.5F;
    other.quantize = 0.1F;
    other.delay = 0.02F;
    other.formantShift = 1.1F;
    other.drift = 0.3F;
    other.glide = 0.4F;
    other.timing = 0.05F;
    other.mute = false;
    other.solo = true;
    Restore(SavedVoiceFrom(other), settings);
    EXPECT_EQ(settings, other);

    SavedVoice unmuted;
    unmuted.mute = false;
    settings = before;
    Restore(unmuted, settings);
    before.mute = false;
    EXPECT_EQ(settings, before);
}

TEST(StateDocumentReading, AProgramComesBack) {
    SavedPreset preset = SavedStateSample().presets[1];
    preset.name = "Mine & \"yours\"";
    EXPECT_EQ(ReadProgram(WriteProgram(preset)), preset);
    EXPECT_EQ(WriteProgram(ReadProgram(WriteProgram(preset))), WriteProgram(preset));
}

TEST(StateDocumentReading, AProgramInPlaceOfASessionAndTheOtherWayRoundHasNothing) {
    EXPECT_EQ(ReadProgram(DocumentSample()), SavedPreset());
    EXPECT_EQ(ReadSaved(WriteProgram(SavedStateSample().presets[0])), SavedState());
}

TEST(StateDocumentReading, AChunkThatIsNoMemoryIsAnEmptyText) {
    const std::string document = DocumentSample();
    EXPECT_EQ(DocumentText(document.data(), static_cast<std::int64_t>(document.size())), document);
    EXPECT_EQ(DocumentText(nullptr, 100), "");
    EXPECT_EQ(DocumentText(document.data(), 0), "");
    EXPECT_EQ(DocumentText(document.data(), -1), "");
    EXPECT_EQ(DocumentText(document.data(), std::numeric_limits<std::int64_t>::min()), "");
}

// A length of 0 would mean "up to the zero byte" to the parser.
TEST(StateDocumentReading, AnEmptyTextIsNotReadUpToAZeroByteBehindIt) {
    const std::string document = DocumentSample();
    EXPECT_EQ(ReadAudioFileName(std::string_view(document).substr(0, 0)), std::nullopt);
    EXPECT_EQ(ReadSaved(std::string_view(document).substr(0, 0)), SavedState());
    EXPECT_EQ(ReadProgram(std::string_view(WriteProgram(SavedPreset{"a", {}})).substr(0, 0)), SavedPreset());
}

TEST(StateDocumentReading, ADroppedDocumentTellsItsFile) {
    EXPECT_EQ(ReadDroppedFileName("<?xml version=\"1.0\"?>\n<quillon-xml version=\"1.0\">\n"
                                  "<filename str=\"/home/lea/a&#38;b.wav\"/>\n</quillon-xml>"),
              "/home/lea/a&b.wav");
    EXPECT_EQ(ReadDroppedFileName("<quillon-xml><filename>/a.wav</filename></quillon-xml>"), "/a.wav");
    EXPECT_EQ(ReadDroppedFileName("<quillon-xml><filename str=\"\"/></quillon-xml>"), "");
    EXPECT_EQ(ReadDroppedFileName("<quillon-xml><filename other=\"\"/></quillon-xml>"), "");
}

TEST(StateDocumentReading, OtherDroppedTextsTellNone) {
    EXPECT_EQ(ReadDroppedFileName(""), std::nullopt);
    EXPECT_EQ(ReadDroppedFileName("/home/lea/song.wav"), std::nullopt);
    EXPECT_EQ(ReadDroppedFileName("file:///home/lea/song.wav\r\n"), std::nullopt);
    EXPECT_EQ(ReadDroppedFileName("<html><body>filename/</body></html>"), std::nullopt);
    EXPECT_EQ(ReadDroppedFileName(DocumentSample()), std::nullopt);
}

} // namespace
} // namespace sonorelle
