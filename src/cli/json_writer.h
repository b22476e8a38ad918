// Writes JSON text (RFC 8259) without blanks or line ends, value by value in the order of the calls.
//
//     JsonWriter json;
//     json.BeginObject();
//     json.Key("pitch").Float(60.5F);
//     json.EndObject();
//     json.Text(); // {"pitch":60.5}
//
// Written here rather than taken from a library for two promises that the common ones do not make: f32 values
// keep f32's shortest text, and no byte of a hostile name (DEL, C1 control characters) reaches a terminal as
// it is.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace sonorelle {

class JsonWriter {
public:
    void BeginObject() { Begin('{'); }
    void EndObject() { End('}'); }
    void BeginArray() { Begin('['); }
    void EndArray() { End(']'); }
    JsonWriter& Key(std::string_view name);

    void Integer(std::int64_t value);
    void Float(float value); // null when it is not finite
    void Boolean(bool value);
    // Any bytes: what is not UTF-8 becomes U+FFFD.
    void String(std::string_view text);

    const std::string& Text() const { return text_; }

private:
    void Begin(char bracket);
    void End(char bracket);
    void Separate();
    void AppendQuoted(std::string_view text);

    std::string text_;
    bool needsComma_ = false;
};

} // namespace sonorelle
