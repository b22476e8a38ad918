// What stands in and between the tags: names, values, texts, references; and how much of it has room.

#include "formats/fxml_parser.h"

#include <algorithm>

namespace sonorelle {

namespace {

// A value is cut, and a text is too long, where this many bytes are left: a kept ampersand takes two at once,
// the end takes one.
constexpr std::int64_t kTextMargin = 3;

// Only these, whatever the locale: a document reads the same in every host.
bool IsAsciiLetter(std::int32_t byte) { return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z'); }

bool IsDigit(std::int32_t byte) { return byte >= '0' && byte <= '9'; }

bool IsNameStart(std::int32_t byte) {
    const bool isAbove127 = byte < 0 || byte > 127; // sign extended or not
    return IsAsciiLetter(byte) || IsDigit(byte) || isAbove127 || byte == '_' || byte == ':';
}

bool IsHexLetter(std::int32_t byte) { return (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F'); }

// A quirk: "a" counts -10 and not 10, and so on to "f" with -5. Documents that hold such references would
// read differently if it were mended.
std::int32_t HexDigitValue(std::int32_t byte) {
    if (IsDigit(byte)) return byte - '0';
    const std::int32_t lowerCase = byte | 0x20;
    return lowerCase - 107;
}

} // namespace

bool FxmlParser::IsNameByte(std::int32_t byte) { return IsNameStart(byte) || byte == '.' || byte == '-'; }

bool FxmlParser::ReadName(std::string_view& name) {
    if (!IsNameStart(current)) return Fail("Name is not legal");
    const char* const start = cursor;
    for (; IsNameByte(current); NextChar())
        if (scratchUsed + (cursor - start) + 1 >= scratchSize) return Fail("Name too long");
    name = {start, static_cast<std::size_t>(cursor - start)};
    scratchUsed += cursor - start + 1;
    return true;
}

// A quirk: what has no room is cut off without a message. The rest is then read as the next attribute's name,
// which fails, so that everything behind a value too long is out of reach.
bool FxmlParser::ReadAttributeValue() {
    if (scratchUsed >= scratchSize) return Fail("Attribute value too long");
    const std::int32_t mark = current;
    if (mark != '"' && mark != '\'') return Fail("Attribute value invalid");
    NextChar();
    if (TakeText(static_cast<char>(mark)) == TextEnd::kBadToken) return false;
    if (current == mark) NextChar();
    ++scratchUsed;
    return true;
}

bool FxmlParser::ReadCharData() {
    switch (TakeText(0)) {
    case TextEnd::kBadToken:
        return false;
    case TextEnd::kFull:
        return Fail("Char Data too long");
    case TextEnd::kReached:
        break;
    }
    // The end of a section that no text opened is passed, else the walk would stand before it for ever.
    if (current == ']') MoveTo(cursor + 3);
    return true;
}

// Reads up to `closing`, gives what stands before it, and passes it.
bool FxmlParser::ReadUpTo(std::string_view closing, const char* tooLong, const char* notClosed,
                          std::string_view& passed) {
    // As many bytes as have room together with their end; no more is looked at, lest rows of long comments
    // take the square of their length.
    const std::int64_t room = std::max<std::int64_t>(scratchSize - 1, 0);
    const std::int64_t left = textEnd - cursor;
    const auto within = std::min<std::int64_t>(left, room + static_cast<std::int64_t>(closing.size()));
    const std::string_view rest(cursor, static_cast<std::size_t>(within));
    const std::size_t length = rest.find(closing);
    const bool endsBefore = rest.substr(0, length).find('\0') != std::string_view::npos;
    if (endsBefore || (length == std::string_view::npos && left <= room)) return Fail(notClosed);
    if (length == std::string_view::npos) return Fail(tooLong);
    passed = rest.substr(0, length);
    MoveTo(cursor + length + closing.size());
    return true;
}

// Takes what stands before the closing `mark`, or before the end of a text when that is 0, into the scratch.
FxmlParser::TextEnd FxmlParser::TakeText(char mark) {
    const char mayEnd = mark != 0 ? mark : ']';
    while (!AtTextEnd(mark)) {
        const std::int64_t room = Room();
        if (room <= 0) return TextEnd::kFull;
        if (current == '&') {
            if (!TakeReference()) return TextEnd::kBadToken;
            continue;
        }
        const char* const limit = cursor + std::min<std::int64_t>(room, textEnd - cursor);
        Take(std::find_if(cursor + 1, limit, [mayEnd](char byte) {
            return byte == mayEnd || byte == '<' || byte == '&' || byte == 0;
        }));
    }
    return TextEnd::kReached;
}

bool FxmlParser::AtTextEnd(char mark) const {
    if (current == 0 || current == '<') return true;
    return mark != 0 ? current == mark : current == ']' && StartsWith("]]>");
}

// At an ampersand. A character reference gives one byte, of which too large a number leaves the lowest bits.
// Any other ampersand stays, with the byte behind it, even if that is the closing mark.
bool FxmlParser::TakeReference() {
    if (NextChar() != '#') {
        Put('&');
        if (current != 0) Take(cursor + 1);
        return true;
    }
    const bool isHex = NextChar() == 'x';
    if (isHex) NextChar();
    std::uint32_t value = 0;
    for (; IsDigit(current) || (isHex && IsHexLetter(current)); NextChar())
        value = value * (isHex ? 16U : 10U) + static_cast<std::uint32_t>(HexDigitValue(current));
    if (current != ';') return Fail("Bad token encountered");
    NextChar();
    Put(static_cast<char>(value & 0xFFU));
    return true;
}

void FxmlParser::Take(const char* end) {
    scratch.append(cursor, end);
    scratchUsed += end - cursor;
    MoveTo(end);
}

void FxmlParser::Put(char byte) {
    scratch += byte;
    ++scratchUsed;
}

void FxmlParser::ClearScratch() {
    scratch.clear();
    scratchUsed = 0;
}

std::int64_t FxmlParser::Room() const { return scratchSize - kTextMargin - scratchUsed; }

} // namespace sonorelle
