// The walk: levels, tags, comments. What stands in them is read in fxml_text.cpp.

#include "formats/fxml_parser.h"

#include <algorithm>
#include <cstring>

namespace sonorelle {

namespace {

std::string_view WholeText(const char* text, std::int64_t length) {
    if (text == nullptr || length < 0) return "";
    return {text, length == 0 ? std::strlen(text) : static_cast<std::size_t>(length)};
}

} // namespace

FxmlParser::FxmlParser(const char* documentText, std::int64_t length)
    : text(WholeText(documentText, length)), textEnd(text.data() + text.size()) {
    Rewind();
}

void FxmlParser::MoveTo(const char* place) {
    cursor = place;
    current = cursor < textEnd ? static_cast<signed char>(*cursor) : 0;
}

std::int32_t FxmlParser::NextChar() {
    if (cursor < textEnd) MoveTo(cursor + 1);
    return current;
}

bool FxmlParser::Parse(std::string_view endTag) {
    levels.assign(1, endTag);
    outermostStopped = false;
    for (;;) {
        const Step step = ReadNext();
        if (step == Step::kGoOn) continue;
        if (step == Step::kFailed) return false;
        if (step == Step::kEndOfText) return levels.back().empty(); // the outermost alone may have no end tag
        levels.pop_back();
        if (levels.empty()) return step == Step::kClosed && !outermostStopped;
    }
}

FxmlParser::Step FxmlParser::ReadNext() {
    const char* const before = cursor;
    SkipWhiteSpace();
    if (current == 0) return Step::kEndOfText;
    if (current == '<') return ReadMarkup();
    MoveTo(before); // a text keeps its leading white space
    ClearScratch();
    if (!ReadCharData()) return Step::kEndOfText;
    return OnCharData(scratch.c_str()) ? Step::kGoOn : Step::kStopped;
}

FxmlParser::Step FxmlParser::ReadMarkup() {
    ClearScratch();
    switch (NextChar()) {
    case '!':
        return ReadComment();
    case '?':
        return ReadProcessingInstruction();
    case '/':
        return ReadEndTag();
    default:
        return ReadStartTag();
    }
}

FxmlParser::Step FxmlParser::ReadComment() {
    constexpr std::string_view kOpening = "!--";
    if (!StartsWith(kOpening)) {
        Fail("Non supported '<!' tag");
        return Step::kFailed;
    }
    MoveTo(cursor + kOpening.size());
    std::string_view comment;
    if (!ReadUpTo("-->", "Too long comment", "Non closed comment", comment)) return Step::kFailed;
    OnComment(comment);
    return Step::kGoOn;
}

FxmlParser::Step FxmlParser::ReadProcessingInstruction() {
    NextChar();
    std::string_view instruction;
    if (!ReadUpTo("?>", "Too long processing instruction", "Non closed processing instruction ( '<? ... ?>')",
                  instruction))
        return Step::kFailed;
    OnProcessingInstruction(instruction);
    return Step::kGoOn;
}

FxmlParser::Step FxmlParser::ReadEndTag() {
    NextChar();
    std::string_view name;
    if (!ReadName(name)) return Step::kFailed;
    if (levels.back().empty() || name != levels.back()) {
        Fail("Non expected end tag");
        return Step::kFailed;
    }
    SkipWhiteSpace();
    if (current != '>') {
        Fail("syntax error at end tag");
        return Step::kFailed;
    }
    NextChar();
    return Step::kClosed;
}

FxmlParser::Step FxmlParser::ReadStartTag() {
    std::string_view name;
    if (!ReadName(name) || !ReadAttributes()) return Step::kFailed;
    const bool isEmpty = current == '/';
    if (isEmpty) NextChar();
    NextChar();
    descent = {};
    const bool goesOn = OnStartElement(name, isEmpty, tagAttributes);
    if (!descent.empty()) return Enter(goesOn);
    return goesOn ? Step::kGoOn : Step::kStopped;
}

// A level that ends with the one below it need not be kept: rows of such levels, as long as the text may make
// them, take no memory.
FxmlParser::Step FxmlParser::Enter(bool goesOnBehind) {
    if (goesOnBehind) {
        levels.push_back(descent);
        return Step::kGoOn;
    }
    outermostStopped = outermostStopped || levels.size() == 1;
    levels.back() = descent;
    return Step::kGoOn;
}

// Stops at the ">" or "/>" behind the last one.
bool FxmlParser::ReadAttributes() {
    tagAttributes.clear();
    valueStarts.clear();
    for (SkipWhiteSpace(); current != '>' && !StartsWith("/>"); SkipWhiteSpace())
        if (!ReadAttribute()) return false;
    // Only now does the scratch stay where it is. A value ends at its first zero byte.
    for (std::size_t i = 0; i < tagAttributes.size(); ++i) {
        const std::size_t end = i + 1 < valueStarts.size() ? valueStarts[i + 1] : scratch.size();
        const auto value = std::string_view(scratch).substr(valueStarts[i], end - valueStarts[i]);
        tagAttributes[i].value = value.substr(0, value.find('\0'));
    }
    return true;
}

bool FxmlParser::ReadAttribute() {
    if (tagAttributes.size() == kMaxAttributes) return Fail("Too many attribute/value pairs");
    XmlAttribute attribute;
    if (!ReadName(attribute.name)) return false;
    SkipWhiteSpace();
    if (current != '=') return Fail("Attribute field not valid");
    NextChar();
    SkipWhiteSpace();
    valueStarts.push_back(scratch.size());
    tagAttributes.push_back(attribute);
    return ReadAttributeValue();
}

void FxmlParser::SkipWhiteSpace() {
    while (current == ' ' || current == '\t' || current == '\n' || current == '\r') NextChar();
}

bool FxmlParser::StartsWith(std::string_view bytes) const {
    return std::string_view(cursor, static_cast<std::size_t>(textEnd - cursor)).starts_with(bytes);
}

bool FxmlParser::Fail(const char* message) {
    errorText = message;
    return false;
}

} // namespace sonorelle
