#include "app/state_document.h"

#include "app/saved_state_samples.h"
#include "support/german_locale.h"

#include <gtest/gtest.h>

#include <locale>
#include <string>

namespace sonorelle {
namespace {

const std::string kBeginning = "<?xml version=\"1.0\"?>\n<quillon-xml version=\"1.0\">\n"
                               "<!-- This file was generated automatically. Do not edit!-->\n";

std::string Settings(const SavedFileSettings& settings) {
    SavedState state;
    state.fileSettings = settings;
    const std::string document = WriteState(state);
    const std::size_t start = document.find("<FileSettings>\n") + 15;
    return document.substr(start, document.find("</FileSettings>") - start);
}

TEST(StateDocumentWriting, TheWholeDocumentOfASmallSessionIsKnownToTheByte) {
    SavedState state;
    state.fileSettings.audioFileName = "/home/lea/song.wav";
    state.fileSettings.masterPlaybackStart = 44100;
    state.fileSettings.doSnapshotTrigger = true;
    state.fileSettings.singleVoiceOutput = false;
    state.fileSettings.syncTempoToHost = true;
    state.fileSettings.currentTempo = 97.5;
    state.fileSettings.tempoRescaleSyncFactor = 1.25F;
    state.fileSettings.timeSigNumerator = 6;
    state.fileSettings.timeSigDenominator = 8;
    state.fileSettings.tuningFreq = 441.5;
    state.snapshots.emplace();
    state.snapshots->version = 1.2F;
    state.snapshots->analysedNoteCount = 2;
    state.snapshots->noteCapacity = 3;
    state.snapshots->selectedSnapshot = -1;
    state.snapshots->records = {test::SnapshotSample("Last State", 62, 1)};
    state.mixer[1] = SavedVoiceFrom(VoiceSettings{});
    state.presets.resize(1);
    state.presets[0].name = "flat";
    state.presets[0].voices[3] = SavedVoiceFrom(VoiceSettings{});

    EXPECT_EQ(WriteState(state), kBeginning + R"(<FileSettings>
<AudioFileName str="/home/lea/song.wav"/>
<MasterPlaybackStart str="44100"/>
<DoSnapshotTrigger str="1"/>
<EnableSingleVoiceOutput str="0"/>
<EnableSyncTempoToHost str="1"/>
<CurrentTempo str="97.50"/>
<TempoRescaleSyncFactor str="1.250000"/>
<TimeSigNum str="6"/>
<TimeSigDen str="8"/>
<TuningFreq str="441.50000000"/>
</FileSettings>
<Snapshots>
<SnapshotVersion str="1.200"/>
<NumOfSnapshots str="1"/>
<InitNumElem str="2"/>
<MaxNumElem str="3"/>
<SelectedSnapshot str="-1"/>
<Snapshot_0>
<Name str="Last State"/>
<MidiTrigger str="62"/>
<StartTime str="1000"/>
<EndTime str="88200"/>
<DataSize str="8"/>
<Data len="8" bin="0403020108070605"/>
<NumOfSizeElements str="3"/>
<SizeElemData len="12" bin="000000040000000000000004"/>
</Snapshot_0>
</Snapshots>
<MixerSettings>
<Voice_0>
</Voice_0>
<Voice_1>
<Vol str="1.00000000"/>
<Pan str="0.00000000"/>
<Delay str="0.00000000"/>
<Timing str="0.00000000"/>
<Quantize str="0.00000000"/>
<Glide str="0.50000000"/>
<FormantShift str="1.00000000"/>
<Mute str="0"/>
<Solo str="0"/>
</Voice_1>
<Voice_2>
</Voice_2>
<Voice_3>
</Voice_3>
</MixerSettings>
<Presets>
<NumOfPresets str="1"/>
<Preset_0>
<Name str="flat"/>
<Voice_0>
</Voice_0>
<Voice_1>
</Voice_1>
<Voice_2>
</Voice_2>
<Voice_3>
<Vol str="1.00000000"/>
<Pan str="0.00000000"/>
<Delay str="0.00000000"/>
<Timing str="0.00000000"/>
<Quantize str="0.00000000"/>
<Glide str="0.50000000"/>
<Drift str="0.00000000"/>
<FormantShift str="1.00000000"/>
<Mute str="0"/>
<Solo str="0"/>
</Voice_3>
</Preset_0>
</Preset>
</quillon-xml>)");
}

TEST(StateDocumentWriting, AProgramHasItsNameAndTenValuesAVoice) {
    SavedPreset preset;
    preset.name = "default";
    VoiceSettings settings;
    settings.pan = -0.1F;
    settings.timing = 0.036F;
    settings.solo = true;
    preset.voices[0] = SavedVoiceFrom(settings);
    EXPECT_EQ(WriteProgram(preset), kBeginning + R"(<Preset>
<Name str="default"/>
<Voice_0>
<Vol str="1.00000000"/>
<Pan str="-0.10000000"/>
<Delay str="0.00000000"/>
<Timing str="0.03600000"/>
<Quantize str="0.00000000"/>
<Glide str="0.50000000"/>
<Drift str="0.00000000"/>
<FormantShift str="1.00000000"/>
<Mute str="0"/>
<Solo str="1"/>
</Voice_0>
<Voice_1>
</Voice_1>
<Voice_2>
</Voice_2>
<Voice_3>
</Voice_3>
</Preset>
</quillon-xml>)");
}

TEST(StateDocumentWriting, AbsentValuesLeaveNoTrace) {
    EXPECT_EQ(WriteState({}), kBeginning + R"(<FileSettings>
</FileSettings>
<MixerSettings>
<Voice_0>
</Voice_0>
<Voice_1>
</Voice_1>
<Voice_2>
</Voice_2>
<Voice_3>
</Voice_3>
</MixerSettings>
<Presets>
<NumOfPresets str="0"/>
</Preset>
</quillon-xml>)");
}

TEST(StateDocumentWriting, TheMixersDriftIsNotWritten) {
    SavedState state;
    state.mixer[0].drift = 0.5F;
    EXPECT_EQ(WriteState(state), WriteState({}));
}

TEST(StateDocumentWriting, ThePlaybackStartGoesThroughAFloatAndHasNoDecimals) {
    SavedFileSettings settings;
    settings.masterPlaybackStart = 16777217; // lies between two floats
    EXPECT_EQ(Settings(settings), "<MasterPlaybackStart str=\"16777216\"/>\n");
    settings.masterPlaybackStart = -0.75;
    EXPECT_EQ(Settings(settings), "<MasterPlaybackStart str=\"-1\"/>\n");
    settings.masterPlaybackStart = 1e24;
    EXPECT_EQ(Settings(settings), "<MasterPlaybackStart str=\"1000000013848427855085568\"/>\n");
}

TEST(StateDocumentWriting, NumbersAreRoundedToTheirDecimals) {
    SavedFileSettings settings;
    settings.currentTempo = 119.996;
    settings.tempoRescaleSyncFactor = 1.0F / 3.0F;
    settings.tuningFreq = static_cast<double>(440.1F);
    EXPECT_EQ(Settings(settings), "<CurrentTempo str=\"120.00\"/>\n"
                                  "<TempoRescaleSyncFactor str=\"0.333333\"/>\n"
                                  "<TuningFreq str=\"440.10000610\"/>\n");
}

TEST(StateDocumentWriting, TextsHaveReferencesForWhatTheSyntaxKeepsForItself) {
    SavedFileSettings settings;
    settings.audioFileName = "/a \"b\" <c> & d\n/\xC3\xA4.wav";
    EXPECT_EQ(Settings(settings),
              "<AudioFileName str=\"/a &#34;b&#34; &#60;c&#62; &#38; d&#10;/\xC3\xA4.wav\"/>\n");
}

// A host that writes 0,5, by its streams and by its C library.
class DecimalCommaHost {
public:
    DecimalCommaHost()
        : streamsBefore_(std::locale::global(std::locale(std::locale::classic(), new DecimalComma))) {}
    ~DecimalCommaHost() { std::locale::global(streamsBefore_); }
    DecimalCommaHost(const DecimalCommaHost&) = delete;
    DecimalCommaHost& operator=(const DecimalCommaHost&) = delete;

private:
    struct DecimalComma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    test::GermanLocale language_;
    std::locale streamsBefore_;
};

TEST(StateDocumentWriting, TheDecimalPointIsAPointInAGermanHost) {
    const std::string plain = WriteState(test::SavedStateSample());
    const DecimalCommaHost host;
    EXPECT_EQ(WriteState(test::SavedStateSample()), plain);
    EXPECT_EQ(test::ReadSaved(plain), test::SavedStateSample());
}

TEST(StateDocumentWriting, ASnapshotWithoutASizeListHasNone) {
    SavedState state;
    state.snapshots.emplace();
    state.snapshots->records = {test::SnapshotSample("old", 60, 1)};
    state.snapshots->records[0].sizes.reset();
    const std::string document = WriteState(state);
    EXPECT_NE(document.find("<Data len=\"8\""), std::string::npos);
    EXPECT_EQ(document.find("NumOfSizeElements"), std::string::npos);
    EXPECT_EQ(document.find("SizeElemData"), std::string::npos);
}

TEST(StateDocumentWriting, DataThatIsNoWholeNumberOfWordsGivesNoDocument) {
    SavedState state;
    state.snapshots.emplace();
    state.snapshots->records = {test::SnapshotSample("odd", 60, 1)};
    state.snapshots->records[0].data.pop_back();
    EXPECT_EQ(WriteState(state), "");
}

} // namespace
} // namespace sonorelle
