// From the text to values. Nothing that the text tells about itself is believed: counts and sizes are held
// against its length and against what is really there.

#include "app/snapshots.h"
#include "app/state_document.h"

#include "app/state_keys.h"
#include "formats/xml.h"
#include "platform/numbers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <span>

namespace sonorelle {

namespace {

constexpr std::int32_t kLargestI32 = std::numeric_limits<std::int32_t>::max();

// An f32 of a range's end, written with eight decimals, may lie a little outside of it.
constexpr double kRounding = 1e-6;

// What the shortest text of each takes, in characters.
constexpr std::int64_t kShortestByte = 2;                  // two digits
constexpr std::int64_t kShortestSnapshot = 13;             // <Snapshot_0/>
constexpr std::int64_t kShortestNote = 24 * kShortestByte; // its voices and its chord, in the oldest form

class StateReader {
public:
    explicit StateReader(std::string_view document)
        : xml_(document.empty() ? nullptr : document.data(), static_cast<std::int64_t>(document.size()),
               kXmlRootName),
          characters_(static_cast<std::int64_t>(document.size())) {}

    std::optional<std::string> Text(const std::string& path) {
        std::string_view value;
        std::int32_t length = 0;
        if (!xml_.Find(path + '/', value, length)) return std::nullopt;
        return std::string(value);
    }
    std::optional<double> Number(const std::string& path, double lowest, double highest) {
        const std::optional<std::string> text = Text(path);
        const std::optional<double> value = text ? ReadLeadingNumber(*text) : std::nullopt;
        return value && *value >= lowest && *value <= highest ? value : std::nullopt;
    }
    std::optional<float> Float(const std::string& path, double lowest, double highest) {
        const std::optional<double> value = Number(path, lowest, highest);
        return value ? std::optional(static_cast<float>(*value)) : std::nullopt;
    }
    std::optional<std::int32_t> Whole(const std::string& path, std::int32_t lowest,
                                      std::int64_t highest = kLargestI32) {
        const std::optional<std::string> text = Text(path);
        const std::optional<std::int32_t> value = text ? ReadLeadingInteger(*text) : std::nullopt;
        return value && *value >= lowest && *value <= highest ? value : std::nullopt;
    }
    std::optional<bool> Switch(const std::string& path) {
        const std::optional<std::int32_t> value = Whole(path, 0, 1);
        return value ? std::optional(*value == 1) : std::nullopt;
    }
    // A number of things of which each takes so many characters at the least.
    std::optional<std::int32_t> Count(const std::string& path, std::int64_t charactersOfEach) {
        return Whole(path, 0, characters_ / charactersOfEach);
    }
    // The bytes of which the length is told truly; fewer may be told than there are. Valid until the next
    // lookup.
    std::optional<std::span<const std::byte>> Binary(const std::string& path) {
        std::string_view value;
        std::int32_t length = 0;
        if (!xml_.Find(path + '/', value, length)) return std::nullopt;
        if (length < 0 || static_cast<std::size_t>(length) > value.size()) return std::nullopt;
        return std::as_bytes(std::span(value.substr(0, static_cast<std::size_t>(length))));
    }
    std::optional<std::string> FlatText(std::string_view path) {
        std::string_view value;
        std::int32_t length = 0;
        if (!xml_.FindFlat(path, value, length)) return std::nullopt;
        return std::string(value);
    }

    // Of all names and values of one tag.
    void SetLongestTag(std::int32_t bytes) { xml_.SetScratchSize(bytes); }

private:
    CkvoXML xml_;
    std::int64_t characters_;
};

std::string Path(std::string_view section, std::string_view key) {
    return std::string(section).append("/").append(key);
}

std::optional<std::string> ReadPath(StateReader& reader) {
    std::optional<std::string> path = reader.Text(Path(kFileSettingsSection, "AudioFileName"));
    return path && !path->empty() ? path : std::nullopt;
}

SavedFileSettings ReadFileSettings(StateReader& reader, std::string path) {
    constexpr double kFarthestStart = 1.0001e24; // 1e24 as an f32 is a little more
    constexpr double kLowestTempo = 0.01;        // a melody may have taken a host's, which knows no lowest
    constexpr double kHighestTempo = 999;
    constexpr double kLargestFactor = std::numeric_limits<float>::max();
    const auto key = [](std::string_view name) { return Path(kFileSettingsSection, name); };
    SavedFileSettings settings;
    settings.audioFileName = std::move(path);
    settings.masterPlaybackStart = reader.Number(key("MasterPlaybackStart"), -kFarthestStart, kFarthestStart);
    settings.doSnapshotTrigger = reader.Switch(key("DoSnapshotTrigger"));
    settings.singleVoiceOutput = reader.Switch(key("EnableSingleVoiceOutput"));
    settings.currentTempo = reader.Number(key("CurrentTempo"), kLowestTempo, kHighestTempo);
    settings.tempoRescaleSyncFactor = reader.Float(key("TempoRescaleSyncFactor"), 1e-6, kLargestFactor);
    settings.timeSigNumerator = reader.Whole(key("TimeSigNum"), 1);
    settings.timeSigDenominator = reader.Whole(key("TimeSigDen"), 1);
    settings.tuningFreq = reader.Number(key("TuningFreq"), 350, 500);
    settings.syncTempoToHost = reader.Switch(key("EnableSyncTempoToHost"));
    return settings;
}

// Room for a tag with so many bytes of data, two digits each, and its names.
std::int32_t LongestTagFor(std::int32_t dataSize) {
    const std::int64_t wanted = 2 * static_cast<std::int64_t>(dataSize) + 512;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(wanted, FxmlParser::kScratchSize, kLargestI32));
}

bool ReadBytes(StateReader& reader, const std::string& path, std::vector<std::byte>& bytes) {
    const auto value = reader.Binary(path);
    if (value) bytes.assign(value->begin(), value->end());
    return value.has_value();
}

bool ReadSizes(StateReader& reader, const std::string& section, std::int32_t count,
               std::vector<std::int32_t>& sizes) {
    const auto value = reader.Binary(Path(section, "SizeElemData"));
    if (!value || value->size() != static_cast<std::size_t>(count) * sizeof(std::int32_t)) return false;
    sizes.resize(static_cast<std::size_t>(count));
    if (!sizes.empty()) std::memcpy(sizes.data(), value->data(), value->size());
    return true;
}

// The block, and the sizes of its elements where the document has them. False when it ends the list.
//
// The sizes stand behind the data, which must have room before they can be found. A document older than size
// lists is read with as much room as its data size asks for, too: its snapshots would else be lost as soon as
// a recording had some two hundred notes.
bool ReadBlock(StateReader& reader, const std::string& section, SavedSnapshot& snapshot) {
    const std::optional<std::int32_t> dataSize = reader.Count(Path(section, "DataSize"), kShortestByte);
    reader.SetLongestTag(LongestTagFor(dataSize.value_or(-1)));
    if (!ReadBytes(reader, Path(section, "Data"), snapshot.data)) return false;
    const std::optional<std::int32_t> sizeCount = reader.Whole(Path(section, "NumOfSizeElements"), 0);
    if (!sizeCount) return true;
    snapshot.sizes.emplace();
    if (!ReadSizes(reader, section, *sizeCount, *snapshot.sizes)) return false;
    return dataSize && snapshot.data.size() == static_cast<std::size_t>(*dataSize);
}

bool ReadSnapshot(StateReader& reader, std::int32_t index, SavedSnapshot& snapshot) {
    const std::string section = Path(kSnapshotsSection, SnapshotSection(index));
    snapshot.name = reader.Text(Path(section, "Name")).value_or("");
    const bool isWhole = ReadBlock(reader, section, snapshot);
    reader.SetLongestTag(FxmlParser::kScratchSize);
    if (!isWhole) return false;
    snapshot.midiTrigger = reader.Whole(Path(section, "MidiTrigger"), CkvovirelaineSnapshots::kNoKey,
                                        CkvovirelaineSnapshots::kHighestKey);
    if (!snapshot.midiTrigger) return true;
    snapshot.startTime = reader.Whole(Path(section, "StartTime"), 0);
    snapshot.endTime = reader.Whole(Path(section, "EndTime"), 0);
    return true;
}

// More snapshots than a session has are left out from the middle: the last is the present state of the save.
void ReadRecords(StateReader& reader, std::int32_t count, SavedSnapshots& snapshots) {
    const std::int32_t read = std::min(count, SavedSnapshots::kMostRecords);
    for (std::int32_t i = 0; i < read; ++i) {
        SavedSnapshot snapshot;
        if (!ReadSnapshot(reader, i + 1 < read ? i : count - 1, snapshot)) return;
        snapshots.records.push_back(std::move(snapshot));
    }
    snapshots.endsWithPresentState = read > 0;
}

// In f32, where 1.201 x 1000 is 1201; in f64 the error of the f32 number would show, and 1200.99 pass
// for 1.2.
float WholeThousandths(float version) {
    constexpr float kThousandths = 1000.0F;
    return std::floor(version * kThousandths);
}

SavedState::Stop ReadSnapshots(StateReader& reader, float storeVersion, std::int32_t presentNoteCount,
                               std::optional<SavedSnapshots>& result) {
    const auto key = [](std::string_view name) { return Path(kSnapshotsSection, name); };
    const std::optional<std::int32_t> count = reader.Count(key("NumOfSnapshots"), kShortestSnapshot);
    if (!count) return SavedState::Stop::kNone;

    constexpr double kHighestVersion = 1e6; // far from what whole thousandths can hold
    SavedSnapshots snapshots;
    snapshots.version = reader
                            .Float(key("SnapshotVersion"),
                                   static_cast<double>(SavedSnapshots::kOldestVersion), kHighestVersion)
                            .value_or(SavedSnapshots::kOldestVersion);
    if (WholeThousandths(storeVersion) < WholeThousandths(snapshots.version))
        return SavedState::Stop::kNewerVersion;
    snapshots.analysedNoteCount = reader.Whole(key("InitNumElem"), 0);
    if (snapshots.analysedNoteCount.value_or(presentNoteCount) != presentNoteCount)
        return SavedState::Stop::kOtherAnalysis;
    snapshots.noteCapacity = reader.Count(key("MaxNumElem"), kShortestNote);
    snapshots.selectedSnapshot = reader.Whole(key("SelectedSnapshot"), -1);
    ReadRecords(reader, *count, snapshots);
    result = std::move(snapshots);
    return SavedState::Stop::kNone;
}

SavedVoices ReadVoices(StateReader& reader, std::string_view parent) {
    SavedVoices voices;
    std::int32_t index = 0;
    for (SavedVoice& voice : voices) {
        const std::string section = Path(parent, VoiceElement(index++));
        for (const VoiceNumberKey& key : kVoiceNumberKeys)
            voice.*key.field =
                reader.Float(Path(section, key.name), key.lowest - kRounding, key.highest + kRounding);
        for (const VoiceSwitchKey& key : kVoiceSwitchKeys)
            voice.*key.field = reader.Switch(Path(section, key.name));
    }
    return voices;
}

SavedPreset ReadPreset(StateReader& reader, const std::string& section) {
    SavedPreset preset;
    preset.name = reader.Text(Path(section, "Name"));
    preset.voices = ReadVoices(reader, section);
    return preset;
}

std::vector<SavedPreset> ReadPresets(StateReader& reader) {
    const std::int32_t count = reader.Whole(Path(kPresetsSection, "NumOfPresets"), 0).value_or(0);
    std::vector<SavedPreset> presets;
    for (std::int32_t i = 0; i < std::min(count, kPresetCount); ++i)
        presets.push_back(ReadPreset(reader, Path(kPresetsSection, PresetSection(i))));
    return presets;
}

} // namespace

std::optional<std::string> ReadAudioFileName(std::string_view document) {
    StateReader reader(document);
    return ReadPath(reader);
}

SavedState ReadState(std::string_view document, float storeVersion, std::int32_t presentNoteCount) {
    SavedState state;
    StateReader reader(document);
    std::optional<std::string> path = ReadPath(reader);
    if (!path) return state;
    state.fileSettings = ReadFileSettings(reader, *std::move(path));
    state.stop = ReadSnapshots(reader, storeVersion, presentNoteCount, state.snapshots);
    if (state.stop != SavedState::Stop::kNone) return state;
    state.mixer = ReadVoices(reader, kMixerSection);
    state.presets = ReadPresets(reader);
    return state;
}

SavedPreset ReadProgram(std::string_view document) {
    StateReader reader(document);
    return ReadPreset(reader, std::string(kProgramSection));
}

std::optional<std::string> ReadDroppedFileName(std::string_view text) {
    return StateReader(text).FlatText("filename/");
}

} // namespace sonorelle
