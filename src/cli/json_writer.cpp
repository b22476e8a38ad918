#include "cli/json_writer.h"

#include "cli/unicode_text.h"
#include "platform/numbers.h"

#include <cmath>

namespace sonorelle {

JsonWriter& JsonWriter::Key(std::string_view name) {
    Separate();
    AppendQuoted(name);
    text_ += ':';
    needsComma_ = false;
    return *this;
}

void JsonWriter::Integer(std::int64_t value) {
    Separate();
    text_ += std::to_string(value);
}

void JsonWriter::Float(float value) {
    Separate();
    text_ += std::isfinite(value) ? FormatFloat(value) : "null";
}

void JsonWriter::Boolean(bool value) {
    Separate();
    text_ += value ? "true" : "false";
}

void JsonWriter::String(std::string_view text) {
    Separate();
    AppendQuoted(text);
}

void JsonWriter::Begin(char bracket) {
    Separate();
    text_ += bracket;
    needsComma_ = false;
}

void JsonWriter::End(char bracket) {
    text_ += bracket;
    needsComma_ = true;
}

void JsonWriter::Separate() {
    if (needsComma_) text_ += ',';
    needsComma_ = true;
}

void JsonWriter::AppendQuoted(std::string_view text) {
    constexpr char kDigits[] = "0123456789abcdef";
    text_ += '"';
    for (std::size_t i = 0; i < text.size();) {
        const Utf8Character character = ReadUtf8(text, i);
        const char32_t codePoint = character.codePoint;
        if (IsControl(codePoint)) { // all of them lie below U+10000: one escape of four digits each
            text_ += "\\u";
            for (int shift = 12; shift >= 0; shift -= 4) text_ += kDigits[(codePoint >> shift) & 15];
        } else {
            if (codePoint == U'"' || codePoint == U'\\') text_ += '\\';
            AppendUtf8(text_, codePoint);
        }
        i += character.length;
    }
    text_ += '"';
}

} // namespace sonorelle
