// From values to the text. The formats are as old as the documents: hosts' projects hold them, and what is
// restored and saved again gives the same bytes.

#include "app/state_document.h"

#include "app/state_keys.h"
#include "formats/xml.h"
#include "formats/xml_text.h"
#include "platform/numbers.h"

#include <algorithm>
#include <span>

namespace sonorelle {

namespace {

constexpr float kDocumentVersion = 1.0F;

// What is written between the tags of a section; an absent value leaves no trace. The first operation that
// fails makes the document worthless.
class StateWriter {
public:
    StateWriter() : xml_(nullptr, 0, kXmlRootName) { Note(xml_.BeginDocument(kDocumentVersion)); }

    void Open(std::string_view section) { Note(xml_.OpenTag(section)); }
    void Close(std::string_view section) { Note(xml_.CloseTag(section)); }

    void Text(std::string_view key, const std::optional<std::string>& text) {
        if (text) Note(xml_.WriteString(key, WithCharacterReferences(*text)));
    }
    template<typename Float>
    void Number(std::string_view key, std::optional<Float> value, int decimals) {
        if (value) Note(xml_.WriteString(key, FormatFixed(static_cast<double>(*value), decimals)));
    }
    void Whole(std::string_view key, std::optional<std::int32_t> value) {
        if (value) Note(xml_.WriteString(key, std::to_string(*value)));
    }
    void Switch(std::string_view key, std::optional<bool> value) {
        if (value) Note(xml_.WriteString(key, *value ? "1" : "0"));
    }
    void Count(std::string_view key, std::size_t count) { Whole(key, static_cast<std::int32_t>(count)); }
    void Binary(std::string_view key, std::span<const std::byte> bytes) {
        Note(xml_.WriteBinary(key, bytes));
    }

    std::string Finish() {
        std::string document;
        Note(xml_.EndDocument(document));
        return isWhole_ ? document : std::string();
    }

private:
    void Note(bool worked) { isWhole_ = isWhole_ && worked; }

    CkvoXML xml_;
    bool isWhole_ = true;
};

std::optional<float> Narrowed(std::optional<double> value) {
    return value ? std::optional(static_cast<float>(*value)) : std::nullopt;
}

void WriteFileSettings(StateWriter& writer, const SavedFileSettings& settings) {
    writer.Open(kFileSettingsSection);
    writer.Text("AudioFileName", settings.audioFileName);
    writer.Number("MasterPlaybackStart", Narrowed(settings.masterPlaybackStart), 0);
    writer.Switch("DoSnapshotTrigger", settings.doSnapshotTrigger);
    writer.Switch("EnableSingleVoiceOutput", settings.singleVoiceOutput);
    writer.Switch("EnableSyncTempoToHost", settings.syncTempoToHost);
    writer.Number("CurrentTempo", settings.currentTempo, 2);
    writer.Number("TempoRescaleSyncFactor", settings.tempoRescaleSyncFactor, 6);
    writer.Whole("TimeSigNum", settings.timeSigNumerator);
    writer.Whole("TimeSigDen", settings.timeSigDenominator);
    writer.Number("TuningFreq", settings.tuningFreq, 8);
    writer.Close(kFileSettingsSection);
}

// The size list stands behind the data that it belongs to: a reader has to pass the data to find it.
void WriteSnapshot(StateWriter& writer, const SavedSnapshot& snapshot, std::int32_t index) {
    const std::string section = SnapshotSection(index);
    writer.Open(section);
    writer.Text("Name", snapshot.name);
    writer.Whole("MidiTrigger", snapshot.midiTrigger);
    writer.Whole("StartTime", snapshot.startTime);
    writer.Whole("EndTime", snapshot.endTime);
    writer.Count("DataSize", snapshot.data.size());
    writer.Binary("Data", snapshot.data);
    if (snapshot.sizes) {
        writer.Count("NumOfSizeElements", snapshot.sizes->size());
        writer.Binary("SizeElemData", std::as_bytes(std::span(*snapshot.sizes)));
    }
    writer.Close(section);
}

void WriteSnapshots(StateWriter& writer, const SavedSnapshots& snapshots) {
    writer.Open(kSnapshotsSection);
    writer.Number("SnapshotVersion", std::optional(snapshots.version), 3);
    writer.Count("NumOfSnapshots", snapshots.records.size());
    writer.Whole("InitNumElem", snapshots.analysedNoteCount);
    writer.Whole("MaxNumElem", snapshots.noteCapacity);
    writer.Whole("SelectedSnapshot", snapshots.selectedSnapshot);
    std::int32_t index = 0;
    for (const SavedSnapshot& snapshot : snapshots.records) WriteSnapshot(writer, snapshot, index++);
    writer.Close(kSnapshotsSection);
}

enum class Drift { kWritten, kLeftOut };

void WriteVoices(StateWriter& writer, const SavedVoices& voices, Drift drift) {
    std::int32_t index = 0;
    for (const SavedVoice& voice : voices) {
        const std::string section = VoiceElement(index++);
        writer.Open(section);
        for (const VoiceNumberKey& key : kVoiceNumberKeys)
            if (drift == Drift::kWritten || key.field != &SavedVoice::drift)
                writer.Number(key.name, voice.*key.field, 8);
        for (const VoiceSwitchKey& key : kVoiceSwitchKeys) writer.Switch(key.name, voice.*key.field);
        writer.Close(section);
    }
}

void WritePreset(StateWriter& writer, const SavedPreset& preset, std::string_view section) {
    writer.Open(section);
    writer.Text("Name", preset.name);
    WriteVoices(writer, preset.voices, Drift::kWritten);
    writer.Close(section);
}

// A quirk: the end tag is that of another name. The section is the last, so that no reader has to pass it;
// all documents in projects have it, and a document saved again stays the same to the byte.
void WritePresets(StateWriter& writer, std::span<const SavedPreset> presets) {
    constexpr std::string_view kClosing = "Preset";
    writer.Open(kPresetsSection);
    writer.Count("NumOfPresets", presets.size());
    std::int32_t index = 0;
    for (const SavedPreset& preset : presets) WritePreset(writer, preset, PresetSection(index++));
    writer.Close(kClosing);
}

} // namespace

// A quirk: the mixer's drift is left out, though it is read where a document has it.
std::string WriteState(const SavedState& state) {
    StateWriter writer;
    WriteFileSettings(writer, state.fileSettings);
    if (state.snapshots) WriteSnapshots(writer, *state.snapshots);
    writer.Open(kMixerSection);
    WriteVoices(writer, state.mixer, Drift::kLeftOut);
    writer.Close(kMixerSection);
    WritePresets(writer, state.presets);
    return writer.Finish();
}

std::string WriteProgram(const SavedPreset& preset) {
    StateWriter writer;
    WritePreset(writer, preset, kProgramSection);
    return writer.Finish();
}

} // namespace sonorelle
