// The side of CkvoXML that writes.

#include "formats/xml.h"

#include "formats/xml_binary.h"
#include "platform/numbers.h"

#include <limits>
#include <utility>

namespace sonorelle {

CkvoXML::CkvoXML(const char* buffer, std::int64_t size, std::string_view root)
    : FxmlParser(buffer, size), rootName(root) {}

bool CkvoXML::BeginDocument(float version) {
    return Append({"<?xml version=\"1.0\"?>\n<", kXmlRootName, " version=\"",
                   FormatFixed(static_cast<double>(version), 1),
                   "\">\n<!-- This file was generated automatically. Do not edit!-->\n"});
}

bool CkvoXML::OpenTag(std::string_view name) { return Append({"<", name, ">\n"}); }

bool CkvoXML::CloseTag(std::string_view name) { return Append({"</", name, ">\n"}); }

bool CkvoXML::WriteString(std::string_view name, std::string_view value) {
    return Append({"<", name, " str=\"", value, "\"/>\n"});
}

bool CkvoXML::WriteBinary(std::string_view name, std::span<const std::byte> bytes) {
    constexpr std::string_view kClosing = "\"/>\n";
    const std::string length = std::to_string(bytes.size());
    const std::string opening = std::string("<").append(name) + " len=\"" + length + "\" bin=\"";
    if (bytes.size() % kBytesOfWord != 0) return false;
    if (bytes.size() > std::numeric_limits<std::int32_t>::max() / 2U) return false;
    if (!HasRoomFor(opening.size() + 2 * bytes.size() + kClosing.size())) return false;
    output += opening;
    AppendHexWords(output, bytes);
    return Append({kClosing});
}

bool CkvoXML::EndDocument(std::string& document) {
    if (!Append({"</", kXmlRootName, ">"})) return false;
    ForgetValue();
    document = std::exchange(output, {});
    return true;
}

bool CkvoXML::Append(std::initializer_list<std::string_view> pieces) {
    std::size_t bytes = 0;
    for (const std::string_view piece : pieces) {
        if (!HasRoomFor(piece.size())) return false; // the sum then cannot overflow
        bytes += piece.size();
    }
    if (!HasRoomFor(bytes)) return false;
    for (const std::string_view piece : pieces) output += piece;
    outputLength = static_cast<std::int32_t>(output.size());
    return true;
}

bool CkvoXML::HasRoomFor(std::size_t bytes) const {
    return bytes <= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) - output.size();
}

} // namespace sonorelle
