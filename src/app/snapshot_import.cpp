// Two passes. The first walks the elements and the document side by side and decides where the bytes of each
// element come from, checking every size before it is used. The second fills the block in the order of the
// elements. Between them a converted element, which the document holds at another place than the block, needs
// no care of its own.

#include "app/snapshot_import.h"

#include <algorithm>
#include <cstring>

namespace sonorelle {

namespace {

// Where an element's bytes come from. `offset` and `size` are bytes of the document.
struct Source {
    enum class Kind { kPresent, kMissing, kDocument, kConversion };
    Kind kind = Kind::kPresent;
    std::size_t offset = 0;
    std::int32_t size = 0;
    const SnapshotConversion* conversion = nullptr;
};

using Sources = std::vector<Source>;

bool IsKnown(const SnapshotElement& element, float fileVersion) {
    return element.version <= fileVersion ||
           (element.version > kSecondSequence && element.version <= fileVersion + kSecondSequence);
}

// Reads through a document from the front. A size list tells of elements that the document knew, so that it
// is walked together with them and not with the elements of today.
class DocumentReader {
public:
    explicit DocumentReader(const SnapshotDocument& document) : document_(document) {}

    // Size in the document of its next element; false when the list holds no more.
    bool NextSize(const SnapshotElement& element, std::int32_t& size) {
        size = element.size;
        if (!document_.hasSizes) return true;
        if (next_ == document_.sizes.size()) return false;
        size = document_.sizes[next_++];
        return true;
    }

    // Takes the next `size` bytes; false when they are not there.
    bool Take(std::int32_t size, Source& source) {
        if (static_cast<std::size_t>(size) > document_.bytes.size() - offset_) return false;
        source.offset = offset_;
        source.size = size;
        offset_ += static_cast<std::size_t>(size);
        return true;
    }

private:
    const SnapshotDocument& document_;
    std::size_t next_ = 0;
    std::size_t offset_ = 0;
};

// A placeholder's bytes are in documents of its own version alone, where it was an element like any other.
const SnapshotConversion* ConversionFor(const SnapshotElement& element, float fileVersion,
                                        float storeVersion) {
    const bool converts =
        element.conversion && fileVersion != storeVersion && fileVersion == element.conversion->from->version;
    return converts ? &*element.conversion : nullptr;
}

Source* SourceOf(const SnapshotElement* element, const SnapshotElements& elements, Sources& sources) {
    const auto found = std::find_if(elements.begin(), elements.end(),
                                    [element](const auto& candidate) { return candidate.get() == element; });
    return found == elements.end() ? nullptr : &sources[static_cast<std::size_t>(found - elements.begin())];
}

bool FindSources(const SnapshotDocument& document, const SnapshotElements& elements, float storeVersion,
                 Sources& sources) {
    DocumentReader reader(document);
    sources.resize(elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const SnapshotElement& element = *elements[i];
        if (sources[i].kind == Source::Kind::kConversion || !IsKnown(element, document.version)) continue;

        std::int32_t size = 0;
        if (!reader.NextSize(element, size)) {
            sources[i].kind = Source::Kind::kMissing;
            continue;
        }
        if (size < 0 || size > element.size) return false;
        if (element.active) {
            sources[i].kind = Source::Kind::kDocument;
            if (!reader.Take(size, sources[i])) return false;
        } else if (const auto* conversion = ConversionFor(element, document.version, storeVersion)) {
            Source source = {Source::Kind::kConversion, 0, 0, conversion};
            if (!reader.Take(size, source)) return false;
            if (Source* target = SourceOf(conversion->to, elements, sources)) *target = source;
        }
    }
    return true;
}

// Writes an element's bytes to `to`, which are zeros, and gives its size in the block; -1 when its conversion
// failed.
std::int32_t FillElement(const Source& source, const SnapshotDocument& document,
                         const SnapshotElement& element, std::byte* to) {
    const std::byte* const from = document.bytes.data() + source.offset;
    switch (source.kind) {
    case Source::Kind::kMissing:
        return element.size;
    case Source::Kind::kPresent:
        if (element.size > 0) std::memcpy(to, element.data, static_cast<std::size_t>(element.size));
        return element.size;
    case Source::Kind::kDocument:
        if (source.size > 0) std::memcpy(to, from, static_cast<std::size_t>(source.size));
        return element.size;
    case Source::Kind::kConversion:
        break;
    }
    const SnapshotConversion& conversion = *source.conversion;
    const std::int32_t written = conversion.convert(from, source.size, conversion.from->version, to,
                                                    element.size, element.version, conversion.context);
    return written <= element.size ? written : -1;
}

} // namespace

bool LayOutDocument(const SnapshotDocument& document, const SnapshotElements& elements, float storeVersion,
                    std::int32_t totalSize, SnapshotBlock& block) {
    Sources sources;
    if (!FindSources(document, elements, storeVersion, sources)) return false;

    block.bytes.assign(static_cast<std::size_t>(totalSize), std::byte{0});
    block.sizes.reserve(elements.size());
    std::size_t position = 0;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        std::int32_t size = elements[i]->size;
        if (elements[i]->active) {
            size = FillElement(sources[i], document, *elements[i], block.bytes.data() + position);
            if (size < 0) return false;
            position += static_cast<std::size_t>(size);
        }
        block.sizes.push_back(size);
    }
    block.bytes.resize(position);
    return true;
}

} // namespace sonorelle
