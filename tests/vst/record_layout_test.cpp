// The plug-in's own declarations beside those of the test host, and beside a third one where the package
// dpf-source is installed.

#include "vst/vst_interface.h"

#include "host/vst_effect_record.h"
#include "host/vst_records.h"

#include <gtest/gtest.h>

#ifdef SONORELLE_OTHER_VST_HEADER
#define __cdecl
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#include SONORELLE_OTHER_VST_HEADER
#pragma GCC diagnostic pop
#endif

namespace sonorelle::test {
namespace {

#define EXPECT_SAME_PLACE(A, fieldOfA, B, fieldOfB)                                                          \
    EXPECT_EQ(offsetof(A, fieldOfA), offsetof(B, fieldOfB));                                                 \
    EXPECT_EQ(sizeof(A::fieldOfA), sizeof(B::fieldOfB)) << #fieldOfA

#define EXPECT_SAME_FIELD(A, B, field) EXPECT_SAME_PLACE(A, field, B, field)

TEST(VstRecordLayout, TheEffectIsAsTheHostSeesIt) {
    EXPECT_EQ(sizeof(AEffect), sizeof(HostedEffect));
    EXPECT_EQ(alignof(AEffect), alignof(HostedEffect));
    EXPECT_SAME_FIELD(AEffect, HostedEffect, magic);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, dispatcher);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, process);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, setParameter);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, getParameter);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, numPrograms);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, numParams);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, numInputs);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, numOutputs);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, flags);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, resvd1);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, resvd2);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, initialDelay);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, realQualities);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, offQualities);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, ioRatio);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, object);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, user);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, uniqueID);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, version);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, processReplacing);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, processDoubleReplacing);
    EXPECT_SAME_FIELD(AEffect, HostedEffect, future);
}

TEST(VstRecordLayout, TheSmallRecordsAreAsTheHostSeesThem) {
    EXPECT_EQ(sizeof(VstTimeInfo), sizeof(HostTime));
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, samplePos);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, sampleRate);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, nanoSeconds);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, ppqPos);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, tempo);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, barStartPos);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, cycleStartPos);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, cycleEndPos);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, timeSigNumerator);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, timeSigDenominator);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, smpteOffset);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, smpteFrameRate);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, samplesToNextClock);
    EXPECT_SAME_FIELD(VstTimeInfo, HostTime, flags);
    EXPECT_EQ(sizeof(VstMidiEvent), sizeof(HostMidiEvent));
    EXPECT_SAME_FIELD(VstMidiEvent, HostMidiEvent, type);
    EXPECT_SAME_FIELD(VstMidiEvent, HostMidiEvent, byteSize);
    EXPECT_SAME_FIELD(VstMidiEvent, HostMidiEvent, deltaFrames);
    EXPECT_SAME_FIELD(VstMidiEvent, HostMidiEvent, flags);
    EXPECT_SAME_FIELD(VstMidiEvent, HostMidiEvent, noteLength);
    EXPECT_SAME_FIELD(VstMidiEvent, HostMidiEvent, noteOffset);
    EXPECT_SAME_FIELD(VstMidiEvent, HostMidiEvent, midiData);
    EXPECT_SAME_FIELD(VstMidiEvent, HostMidiEvent, detune);
    EXPECT_SAME_FIELD(VstMidiEvent, HostMidiEvent, noteOffVelocity);
    EXPECT_SAME_FIELD(VstMidiEvent, HostMidiEvent, reserved1);
    EXPECT_SAME_FIELD(VstMidiEvent, HostMidiEvent, reserved2);
    EXPECT_SAME_FIELD(VstEvents, HostEventList, numEvents);
    EXPECT_SAME_FIELD(VstEvents, HostEventList, reserved);
    EXPECT_SAME_FIELD(VstEvents, HostEventList, events);
    EXPECT_EQ(sizeof(VstPinProperties), sizeof(HostPin));
    EXPECT_SAME_FIELD(VstPinProperties, HostPin, label);
    EXPECT_SAME_FIELD(VstPinProperties, HostPin, flags);
    EXPECT_SAME_FIELD(VstPinProperties, HostPin, arrangementType);
    EXPECT_SAME_FIELD(VstPinProperties, HostPin, shortLabel);
    EXPECT_SAME_FIELD(VstPinProperties, HostPin, future);
    EXPECT_EQ(sizeof(ERect), sizeof(HostRectangle));
    EXPECT_SAME_FIELD(ERect, HostRectangle, top);
    EXPECT_SAME_FIELD(ERect, HostRectangle, left);
    EXPECT_SAME_FIELD(ERect, HostRectangle, bottom);
    EXPECT_SAME_FIELD(ERect, HostRectangle, right);
}

TEST(VstRecordLayout, AnIndependentDeclarationOfTheEffectAgrees) {
#ifdef SONORELLE_OTHER_VST_HEADER
    EXPECT_EQ(sizeof(AEffect), sizeof(vst_effect));
    EXPECT_SAME_PLACE(AEffect, magic, vst_effect, magic_number);
    EXPECT_SAME_PLACE(AEffect, dispatcher, vst_effect, control);
    EXPECT_SAME_PLACE(AEffect, process, vst_effect, process);
    EXPECT_SAME_PLACE(AEffect, setParameter, vst_effect, set_parameter);
    EXPECT_SAME_PLACE(AEffect, getParameter, vst_effect, get_parameter);
    EXPECT_SAME_PLACE(AEffect, numPrograms, vst_effect, num_programs);
    EXPECT_SAME_PLACE(AEffect, numParams, vst_effect, num_params);
    EXPECT_SAME_PLACE(AEffect, numInputs, vst_effect, num_inputs);
    EXPECT_SAME_PLACE(AEffect, numOutputs, vst_effect, num_outputs);
    EXPECT_SAME_PLACE(AEffect, flags, vst_effect, flags);
    EXPECT_EQ(offsetof(AEffect, resvd1), offsetof(vst_effect, _unknown_ptr_00));
    EXPECT_SAME_PLACE(AEffect, initialDelay, vst_effect, delay);
    EXPECT_EQ(offsetof(AEffect, realQualities), offsetof(vst_effect, _unknown_int32_00));
    EXPECT_SAME_PLACE(AEffect, ioRatio, vst_effect, _unknown_float_00);
    EXPECT_SAME_PLACE(AEffect, object, vst_effect, effect_internal);
    EXPECT_SAME_PLACE(AEffect, user, vst_effect, host_internal);
    EXPECT_SAME_PLACE(AEffect, uniqueID, vst_effect, unique_id);
    EXPECT_SAME_PLACE(AEffect, version, vst_effect, version);
    EXPECT_SAME_PLACE(AEffect, processReplacing, vst_effect, process_float);
    EXPECT_SAME_PLACE(AEffect, processDoubleReplacing, vst_effect, process_double);
    EXPECT_SAME_PLACE(AEffect, future, vst_effect, _unknown);
    EXPECT_SAME_PLACE(ERect, top, vst_rect, top);
    EXPECT_SAME_PLACE(ERect, left, vst_rect, left);
    EXPECT_SAME_PLACE(ERect, bottom, vst_rect, bottom);
    EXPECT_SAME_PLACE(ERect, right, vst_rect, right);
#else
    GTEST_SKIP() << "the package dpf-source is not installed";
#endif
}

} // namespace
} // namespace sonorelle::test
