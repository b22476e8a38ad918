// The side of CkvoXML that reads: a walk along a path, from the start of the text each time.
//
// The root's element is one level, on which the walk goes on behind an element that it has left. An element
// on the path stands in the place of the level around it, which is over as soon as that element is.

#include "formats/xml.h"

#include "formats/xml_binary.h"
#include "platform/numbers.h"

#include <cstddef>

namespace sonorelle {

namespace {

// Passing an element again is worth a place in the table from this many bytes on. Most of a document's length
// are the sections and snapshots before the one sought; without the table a load would take the square of
// their number.
constexpr std::ptrdiff_t kLongSkipBytes = 512;
constexpr std::size_t kMaxSkips = 4096;

// Names that each end in a slash and are not too long. The first is not empty.
bool IsPath(std::string_view path) {
    if (path.empty() || path.front() == '/' || path.back() != '/') return false;
    std::size_t start = 0;
    for (std::size_t slash = path.find('/'); slash != std::string_view::npos; slash = path.find('/', start)) {
        if (slash - start >= CkvoXML::kSegmentBytes) return false;
        start = slash + 1;
    }
    return true;
}

} // namespace

bool CkvoXML::Find(std::string_view path, std::string_view& value, std::int32_t& length) {
    flatSearch = false;
    return Lookup(path, value, length);
}

bool CkvoXML::FindFlat(std::string_view path, std::string_view& value, std::int32_t& length) {
    flatSearch = true;
    return Lookup(path, value, length);
}

bool CkvoXML::Lookup(std::string_view path, std::string_view& value, std::int32_t& length) {
    ForgetValue();
    output.clear();
    outputLength = 0;
    Rewind();
    searchPath = path;
    pathOffset = 0;
    parentName = rootName;
    if (IsPath(path) && NextSegment()) Parse(parentName);
    value = found ? valueText : std::string_view();
    length = found ? valueLength : 0;
    return found;
}

void CkvoXML::ForgetValue() {
    found = false;
    awaitText = false;
    valueText = {};
    valueLength = 0;
    textValue.clear();
    binaryValue = {};
}

// Goes on to the next name of the path; false when none is left.
bool CkvoXML::NextSegment() {
    const std::size_t slash = searchPath.find('/', pathOffset);
    if (slash == std::string_view::npos || slash == pathOffset) return false;
    segment = searchPath.substr(pathOffset, slash - pathOffset);
    pathOffset = slash + 1;
    return true;
}

bool CkvoXML::OnCharData(std::string_view charData) {
    if (!awaitText) return true;
    awaitText = false;
    textValue = charData;
    valueText = textValue;
    return false;
}

bool CkvoXML::OnStartElement(std::string_view name, bool isEmpty, std::span<const XmlAttribute> attributes) {
    if (found) return false;
    if (name != segment) return PassOther(name, isEmpty);
    if (!NextSegment()) return TakeValue(attributes);
    parentName = name;
    Descend(name);
    return false;
}

bool CkvoXML::PassOther(std::string_view name, bool isEmpty) {
    if (flatSearch) {
        Descend(parentName);
        return false;
    }
    if (isEmpty) return true;
    if (name != rootName) return SkipElement(name);
    Descend(rootName);
    return true;
}

// Of attributes that tell the same, the first of the element holds. Answers whether its text is still to
// come.
bool CkvoXML::TakeValue(std::span<const XmlAttribute> attributes) {
    found = true;
    awaitText = attributes.empty();
    for (std::size_t i = attributes.size(); i-- > 0;) {
        const XmlAttribute& attribute = attributes[i];
        if (attribute.name == "len") valueLength = ReadLeadingInteger(attribute.value).value_or(0);
        if (attribute.name == "bin") {
            binaryValue = DecodeHexWords(attribute.value);
            valueText = {reinterpret_cast<const char*>(binaryValue.data()), binaryValue.size()};
        }
        if (attribute.name == "str") {
            textValue = attribute.value;
            valueText = textValue;
        }
    }
    return awaitText;
}

// Passes an element without looking at what is in it. False at the end of the text.
bool CkvoXML::SkipElement(std::string_view name) {
    const char* const content = cursor;
    const auto known = skips.find(content);
    if (known != skips.end() && known->second.name == name) {
        MoveTo(known->second.end);
    } else {
        MoveTo(FindBehindEndTag(name));
        if (cursor - content >= kLongSkipBytes && skips.size() < kMaxSkips) skips[content] = {name, cursor};
    }
    return cursor < textEnd;
}

// The byte behind the name is passed with it, whatever it is.
const char* CkvoXML::FindBehindEndTag(std::string_view name) const {
    constexpr std::string_view kOpening = "</";
    auto at = static_cast<std::size_t>(cursor - text.data());
    while ((at = text.find(kOpening, at)) != std::string_view::npos) {
        at += kOpening.size();
        const std::string_view rest = text.substr(at);
        if (!rest.starts_with(name)) continue;
        if (rest.size() == name.size()) break;
        if (!IsNameByte(rest[name.size()])) return rest.data() + name.size() + 1;
    }
    return textEnd;
}

} // namespace sonorelle
