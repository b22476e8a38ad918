// What a host reads and asks: the effect record, names, outputs, abilities, and every call that is none of
// this plug-in's.

#include "vst/vst_stage.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>

namespace sonorelle::test {
namespace {

class VstRecord : public VstStage {};
class VstAnswers : public VstStage {};

TEST_F(VstRecord, TellsWhatTheEffectIs) {
    const HostedEffect& effect = *plugIn.Effect();
    EXPECT_EQ(effect.magic, 0x56737450);
    EXPECT_NE(effect.dispatcher, nullptr);
    EXPECT_NE(effect.process, nullptr);
    EXPECT_NE(effect.setParameter, nullptr);
    EXPECT_NE(effect.getParameter, nullptr);
    EXPECT_EQ(effect.numPrograms, 2);
    EXPECT_EQ(effect.numParams, 32);
    EXPECT_EQ(effect.numInputs, 0);
    EXPECT_EQ(effect.numOutputs, 10);
    EXPECT_EQ(effect.flags, 1 + 16 + 32 + 256); // editor, replacing, chunks, synth
    EXPECT_EQ(effect.resvd1, 0);
    EXPECT_EQ(effect.resvd2, 0);
    EXPECT_EQ(effect.initialDelay, 0);
    EXPECT_EQ(effect.realQualities, 0);
    EXPECT_EQ(effect.offQualities, 0);
    EXPECT_EQ(effect.ioRatio, 1.0F);
    EXPECT_NE(effect.object, nullptr);
    EXPECT_EQ(effect.user, &host); // the host's own, and left to it
    EXPECT_EQ(effect.uniqueID, 'v' << 24 | 'l' << 16 | 'q' << 8 | 'n');
    EXPECT_EQ(effect.version, 1);
    EXPECT_NE(effect.processReplacing, nullptr);
    EXPECT_NE(effect.processReplacing, effect.process); // some hosts take it only then
    EXPECT_EQ(effect.processDoubleReplacing, nullptr);
    EXPECT_TRUE(std::all_of(std::begin(effect.future), std::end(effect.future),
                            [](unsigned char byte) { return byte == 0; }));
}

TEST_F(VstAnswers, TellNameMakerAndVersion) {
    constexpr std::size_t kNameRoom = 32;
    constexpr std::size_t kMakerRoom = 64;
    EXPECT_EQ(plugIn.Text(Call::kGetEffectName, kNameRoom), "sonorelle");
    EXPECT_EQ(plugIn.Text(Call::kGetProductString, kMakerRoom), "sonorelle");
    EXPECT_EQ(plugIn.Text(Call::kGetVendorString, kMakerRoom), "quillon.development");
    std::array<char, 64> text{};
    for (const Call call : {Call::kGetEffectName, Call::kGetProductString, Call::kGetVendorString})
        EXPECT_EQ(plugIn.Do(call, 0, 0, text.data()), 1);
    EXPECT_EQ(plugIn.Do(Call::kGetVendorVersion), 1112);
    EXPECT_EQ(plugIn.Do(Call::kGetVstVersion), 2300);
    EXPECT_EQ(plugIn.Do(Call::kGetPlugCategory), 2);
    EXPECT_EQ(plugIn.Do(Call::kIdentify), 'N' << 24 | 'v' << 16 | 'E' << 8 | 'f');
}

TEST_F(VstAnswers, NameTheOutputsInPairs) {
    const std::array<const char*, 5> labels = {"Mix", "orange voice", "red voice", "blue voice",
                                               "green voice"};
    for (std::int32_t output = 0; output < 10; ++output) {
        HostPin pin{};
        EXPECT_EQ(plugIn.Do(Call::kGetOutputProperties, output, 0, &pin), 1) << output;
        EXPECT_STREQ(pin.label, labels[static_cast<std::size_t>(output / 2)]) << output;
        EXPECT_EQ(pin.flags, 3) << output; // active, and one of a pair
    }
}

TEST_F(VstAnswers, KnowNoOutputBeyondTheTenthAndNoInput) {
    HostPin untouched;
    std::memset(&untouched, 0x5A, sizeof untouched);
    HostPin pin = untouched;
    for (const std::int32_t output :
         {10, 11, -1, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()})
        EXPECT_EQ(plugIn.Do(Call::kGetOutputProperties, output, 0, &pin), 0) << output;
    for (const std::int32_t input : {0, 1, -1})
        EXPECT_EQ(plugIn.Do(Call::kGetInputProperties, input, 0, &pin), 0) << input;
    EXPECT_EQ(std::memcmp(&pin, &untouched, sizeof pin), 0);
}

TEST_F(VstAnswers, TellTheFiveAbilitiesAndNoOther) {
    const auto can = [&](std::string text) { return plugIn.Do(Call::kCanDo, 0, 0, text.data()); };
    for (const char* const ability : {"receiveVstEvents", "receiveVstMidiEvent", "receiveVstTimeInfo",
                                      "sendVstMidiEvent", "sendVstEvents"})
        EXPECT_EQ(can(ability), 1) << ability;
    for (const char* const other :
         {"", "receiveVstEvent", "receiveVstEventsX", "RECEIVEVSTEVENTS", " sendVstEvents", "offline",
          "bypass", "midiProgramNames", "plugAsChannelInsert", "conformsToWindowRules", "hasCockosExtensions",
          "\xFF\xFE"})
        EXPECT_EQ(can(other), 0) << other;
    EXPECT_EQ(can(std::string(100000, 's')), 0);
}

TEST_F(VstAnswers, SayThatEveryParameterCanBeAutomated) {
    for (std::int32_t index = 0; index < 32; ++index)
        EXPECT_EQ(plugIn.Do(Call::kCanBeAutomated, index), 1) << index;
    for (const std::int32_t other :
         {-1, 32, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()})
        EXPECT_EQ(plugIn.Do(Call::kCanBeAutomated, other), 1) << other;
}

TEST_F(VstAnswers, AreZeroForWhatThePlugInDoesNotHave) {
    std::array<char, 512> room{};
    for (const Call call : {Call::kString2Parameter,
                            Call::kSetSpeakerArrangement,
                            Call::kSetBypass,
                            Call::kGetTailSize,
                            Call::kIdle,
                            Call::kGetParameterProperties,
                            Call::kKeysRequired,
                            Call::kEditKeyDown,
                            Call::kEditKeyUp,
                            Call::kSetEditKnobMode,
                            Call::kBeginSetProgram,
                            Call::kEndSetProgram,
                            Call::kGetSpeakerArrangement,
                            Call::kStartProcess,
                            Call::kStopProcess,
                            Call::kSetProcessPrecision,
                            Call::kGetNumMidiInputChannels,
                            Call::kGetNumMidiOutputChannels,
                            Call::kEditTop,
                            Call::kOpen}) {
        EXPECT_EQ(plugIn.Do(call, 0, 0, room.data(), 0), 0) << static_cast<std::int32_t>(call);
        EXPECT_EQ(plugIn.Do(call, 1, 1, room.data(), 1), 0) << static_cast<std::int32_t>(call);
    }
    EXPECT_TRUE(std::all_of(room.begin(), room.end(), [](char byte) { return byte == 0; }));
}

// The numbers between those of Call were taken out of the interface, or belong to others.
TEST_F(VstAnswers, AreZeroForUnknownCalls) {
    std::array<char, 512> room{};
    std::vector<std::int32_t> numbers = {9,
                                         16,
                                         17,
                                         18,
                                         21,
                                         28,
                                         30,
                                         31,
                                         32,
                                         36,
                                         37,
                                         38,
                                         39,
                                         40,
                                         41,
                                         46,
                                         50,
                                         53,
                                         54,
                                         55,
                                         62,
                                         63,
                                         64,
                                         65,
                                         66,
                                         70,
                                         73,
                                         74,
                                         75,
                                         76,
                                         -1,
                                         std::numeric_limits<std::int32_t>::min(),
                                         std::numeric_limits<std::int32_t>::max()};
    for (std::int32_t number = 80; number < 300; ++number) numbers.push_back(number);
    for (const std::int32_t number : numbers) {
        EXPECT_EQ(plugIn.Raw(static_cast<Call>(number), 1, 1, room.data(), 1), 0) << number;
        EXPECT_EQ(plugIn.Raw(static_cast<Call>(number), -1, -1, nullptr, 0), 0) << number;
    }
    EXPECT_TRUE(std::all_of(room.begin(), room.end(), [](char byte) { return byte == 0; }));
}

// Everything but the closing call, loaded and not, with odd numbers.
void AskWithoutMemory(HostedPlugIn& plugIn) {
    for (std::int32_t number = 0; number < 100; ++number) {
        if (static_cast<Call>(number) == Call::kClose) continue;
        for (const std::int32_t index : {0, 1, -1, 31, 32, std::numeric_limits<std::int32_t>::max()})
            for (const std::intptr_t value : {std::intptr_t{0}, std::intptr_t{1}, std::intptr_t{-1},
                                              std::numeric_limits<std::intptr_t>::max()})
                plugIn.Raw(static_cast<Call>(number), index, value, nullptr, 0);
    }
}

TEST_F(VstAnswers, BearNullPointersEverywhere) {
    AskWithoutMemory(plugIn);
    LoadSong();
    AskWithoutMemory(plugIn);
    EXPECT_EQ(plugIn.Do(Call::kSetChunk, 0, 1000, nullptr), 0);
    EXPECT_EQ(plugIn.Do(Call::kGetChunk, 0, 0, nullptr), 0);
    EXPECT_EQ(plugIn.Do(Call::kGetOutputProperties, 0, 0, nullptr), 0);
    EXPECT_EQ(plugIn.Do(Call::kEditGetRect, 0, 0, nullptr), 0);
    EXPECT_EQ(plugIn.Do(Call::kEditOpen, 0, 0, nullptr), 0);
    EXPECT_EQ(plugIn.Do(Call::kCanDo, 0, 0, nullptr), 0);
    EXPECT_EQ(plugIn.Do(Call::kProcessEvents, 0, 0, nullptr), 1);
    HostedEffect* const effect = plugIn.Effect();
    effect->processReplacing(effect, nullptr, nullptr, 64);
    effect->process(effect, nullptr, nullptr, 64);
    std::array<float*, kHostOutputs> none{};
    effect->processReplacing(effect, nullptr, none.data(), 64);
    plugIn.Do(Call::kSetSampleRate, 0, 0, nullptr, 44100);
    EXPECT_FALSE(plugIn.Chunk().empty()); // the song is still there
}

TEST_F(VstAnswers, BearARecordThatIsNotOurs) {
    HostedEffect empty{};
    const HostedEffect& effect = *plugIn.Effect();
    std::array<float*, kHostOutputs> none{};
    for (HostedEffect* const foreign : {static_cast<HostedEffect*>(nullptr), &empty}) {
        for (std::int32_t number = -1; number < 100; ++number)
            EXPECT_EQ(effect.dispatcher(foreign, number, 0, 0, nullptr, 0), 0) << number;
        effect.process(foreign, nullptr, none.data(), 16);
        effect.processReplacing(foreign, nullptr, none.data(), 16);
        effect.setParameter(foreign, 0, 1);
        EXPECT_EQ(effect.getParameter(foreign, 0), 0.0F);
    }
}

TEST_F(VstAnswers, SwitchingOnAsksTheHostForMidiEachTime) {
    const std::int32_t before = host.CountOf(Request::kWantMidi);
    EXPECT_EQ(before, 1); // of the stage's own switching on
    EXPECT_EQ(host.LastWantMidi(), 1);
    plugIn.Do(Call::kMainsChanged, 0, 0);
    EXPECT_EQ(host.CountOf(Request::kWantMidi), before);
    plugIn.Do(Call::kMainsChanged, 0, 1);
    plugIn.Do(Call::kMainsChanged, 0, 1);
    EXPECT_EQ(host.CountOf(Request::kWantMidi), before + 2);
}

} // namespace
} // namespace sonorelle::test
