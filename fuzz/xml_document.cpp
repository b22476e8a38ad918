// Feeds any bytes to CkvoXML as a document of state, and any text through a document and back.

#include "formats/xml.h"
#include "formats/xml_text.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <span>
#include <string>
#include <string_view>

namespace {

using sonorelle::CkvoXML;
using sonorelle::FxmlParser;

void Check(bool holds) {
    if (!holds) std::abort();
}

constexpr std::string_view kPaths[] = {"filename/",
                                       "FileSettings/AudioFileName/",
                                       "Snapshots/NumOfSnapshots/",
                                       "Snapshots/Snapshot_0/Data/",
                                       "a/",
                                       "Snapshots/Snapshot_1/Name/",
                                       "MixerSettings/Voice_0/Vol/",
                                       "Presets/Preset_0/Name/",
                                       "a/b/",
                                       "quillon-xml/a/"};

struct Answer {
    bool found = false;
    std::string value;
    std::int32_t length = 0;
    bool operator==(const Answer&) const = default;
};

Answer Look(CkvoXML& reader, std::string_view path, bool flat, std::size_t documentBytes) {
    Answer answer;
    std::string_view value;
    answer.found =
        flat ? reader.FindFlat(path, value, answer.length) : reader.Find(path, value, answer.length);
    Check(value.size() <= documentBytes);
    Check(answer.found || (value.data() == nullptr && value.empty() && answer.length == 0));
    answer.value = value;
    return answer;
}

// A reader that remembers what it passed answers as one that sees the document for the first time.
void LookUpAll(const char* text, std::size_t size, std::int32_t scratchSize) {
    const auto length = static_cast<std::int64_t>(size);
    CkvoXML old(text, length, sonorelle::kXmlRootName);
    old.SetScratchSize(scratchSize);
    for (const bool flat : {false, true})
        for (const std::string_view path : kPaths) {
            CkvoXML fresh(text, length, sonorelle::kXmlRootName);
            fresh.SetScratchSize(scratchSize);
            Check(Look(old, path, flat, size) == Look(fresh, path, flat, size));
        }
}

// The bytes as a name between other keys, and as data.
void WriteAndRead(std::string_view text) {
    constexpr std::size_t kLongest = 10'000; // fits the reader's limit in both forms
    text = text.substr(0, kLongest);
    const std::string padded = std::string(text) + std::string((4 - text.size() % 4) % 4, '\0');
    CkvoXML writer(nullptr, 0, sonorelle::kXmlRootName);
    Check(writer.BeginDocument(1.0F) && writer.OpenTag("S"));
    Check(writer.WriteString("Name", sonorelle::WithCharacterReferences(text)));
    Check(writer.WriteBinary("Data", std::as_bytes(std::span(padded))));
    Check(writer.CloseTag("S") && writer.WriteString("Last", "1"));
    std::string document;
    Check(writer.EndDocument(document));

    CkvoXML reader(document.data(), static_cast<std::int64_t>(document.size()), sonorelle::kXmlRootName);
    const std::string_view untilZero = text.substr(0, text.find('\0'));
    Check(Look(reader, "S/Name/", false, document.size()) == Answer{true, std::string(untilZero), 0});
    Check(Look(reader, "S/Data/", false, document.size()) ==
          Answer{true, padded, static_cast<std::int32_t>(padded.size())});
    Check(Look(reader, "Last/", false, document.size()) == Answer{true, "1", 0});
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* const text = size == 0 ? nullptr : reinterpret_cast<const char*>(data);
    for (const std::int32_t scratchSize :
         {FxmlParser::kScratchSize, std::numeric_limits<std::int32_t>::max(), 16, 0})
        LookUpAll(text, size, scratchSize);
    WriteAndRead({text, size});
    return 0;
}
