// The XML text that a host keeps as the state of an instance: written by appending, read by looking up paths.
//
//     CkvoXML writer(nullptr, 0, kXmlRootName);
//     writer.BeginDocument(1.0F);
//     writer.OpenTag("FileSettings");
//     writer.WriteString("AudioFileName", WithCharacterReferences(path));
//     writer.CloseTag("FileSettings");
//     std::string document;
//     writer.EndDocument(document);
//
//     CkvoXML reader(document.data(), document.size(), kXmlRootName);
//     std::string_view value;
//     std::int32_t length = 0;
//     if (reader.Find("FileSettings/AudioFileName/", value, length)) ...
//
// One thread at a time; allocates, and throws std::bad_alloc alone.

#pragma once

#include "formats/fxml_parser.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace sonorelle {

inline constexpr std::string_view kXmlRootName = "quillon-xml"; // of every document that is written

class CkvoXML final : public FxmlParser {
public:
    static constexpr std::size_t kSegmentBytes = 256; // a segment of a path is shorter

    // Who only writes passes null and 0. The text is not copied (see FxmlParser); the root's name is.
    CkvoXML(const char* buffer, std::int64_t size, std::string_view root);

    // Writing, in document order. Nothing is escaped: names and values are chosen so, or go through
    // WithCharacterReferences, that they hold no quotation mark, angle bracket or ampersand.
    //
    // Each gives true. It gives false, and appends nothing, when the document would grow beyond 2^31 - 1
    // bytes, and when the bytes of WriteBinary are no multiple of 4.
    bool BeginDocument(float version); // 1.0 is written as "1.0"
    bool OpenTag(std::string_view name);
    bool CloseTag(std::string_view name);
    bool WriteString(std::string_view name, std::string_view value);
    bool WriteBinary(std::string_view name, std::span<const std::byte> bytes); // see xml_binary.h
    bool EndDocument(std::string& document); // hands over the whole; the next operation begins another

    // Bytes written so far. Stays after EndDocument until something is written or looked up.
    std::int32_t GetLength() const { return outputLength; }

    // Looks up the element at the end of `path`: names, each shorter than 256 bytes and followed by a slash,
    // the root's not among them, such as "FileSettings/AudioFileName/". The walk begins at the start of the
    // text and costs time in proportion to what it passes; long elements that it has once passed are passed
    // in no time. What was written and not handed over is dropped.
    //
    // True if it is there. `value` is then the text of its `str` attribute, the bytes of its `bin` attribute,
    // or its text when it has no attributes; null without any of them, and for no bytes. It is valid until
    // the next lookup or EndDocument; bytes are aligned for any number. `length` is the number in its `len`
    // attribute, 0 without one: it may be anything, and only `value.size()` tells what is really there.
    // Otherwise, and for a path that is none, both are null and 0.
    //
    // Quirks, which decide what old or damaged documents mean:
    // - Of elements of the same name only the first is entered; it is not left for a later one.
    // - A key that the entered section lacks is then looked for behind the section, on the first level.
    // - An element that is not on the path is left at the first end tag of its name, even if that belongs to
    //   an element inside it.
    // - An element <a></a> without text counts as found.
    bool Find(std::string_view path, std::string_view& value, std::int32_t& length);

    // The same without skipping: each element that is not the one sought is entered, so that the sought one
    // must come before any end tag but the root's. For a document whose first element is the one sought.
    bool FindFlat(std::string_view path, std::string_view& value, std::int32_t& length);

private:
    struct Skip {
        std::string_view name;
        const char* end;
    };

    bool OnCharData(std::string_view charData) override;
    bool OnStartElement(std::string_view name, bool isEmpty,
                        std::span<const XmlAttribute> attributes) override;

    bool Append(std::initializer_list<std::string_view> pieces);
    bool HasRoomFor(std::size_t bytes) const;

    bool Lookup(std::string_view path, std::string_view& value, std::int32_t& length);
    void ForgetValue();
    bool NextSegment();
    bool PassOther(std::string_view name, bool isEmpty);
    bool TakeValue(std::span<const XmlAttribute> attributes);
    bool SkipElement(std::string_view name);
    const char* FindBehindEndTag(std::string_view name) const;

    std::string rootName;
    std::string output;
    std::int32_t outputLength = 0;

    // The lookup that is being made.
    std::string_view searchPath;
    std::size_t pathOffset = 0; // how far the path has been read
    std::string_view segment;
    std::string_view parentName; // the element whose children are read
    bool flatSearch = false;
    bool found = false;
    bool awaitText = false; // found, without attributes: the next text is the value

    // What it found.
    std::string_view valueText;
    std::int32_t valueLength = 0;
    std::string textValue;
    std::vector<std::byte> binaryValue;

    std::unordered_map<const char*, Skip> skips; // by where the content of a long element begins
};

} // namespace sonorelle
