// A strict little reader of XML 1.0, as far as the pictures need it: tells why a text is not well-formed.
#pragma once

#include "cli/unicode_text.h"

#include <cctype>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace sonorelle::test {

class XmlCheck {
public:
    explicit XmlCheck(std::string_view text) : text_(text) {}

    // Empty when the text is a well-formed document.
    std::string FindFault() {
        if (const std::string fault = FindForbiddenCharacter(); !fault.empty()) return fault;
        if (text_.starts_with("<?xml ")) place_ = text_.find("?>") + 2;
        bool hadRoot = false;
        while (place_ < text_.size()) {
            if (text_[place_] == '<') {
                if (open_.empty() && hadRoot) return Fault("a second root");
                hadRoot = true;
                if (const std::string fault = ReadTag(); !fault.empty()) return fault;
            } else if (const std::string fault = ReadCharacters('<'); !fault.empty()) {
                return fault;
            }
        }
        if (!open_.empty()) return Fault("not closed: " + open_.back());
        return hadRoot ? "" : Fault("no root");
    }

private:
    std::string Fault(const std::string& what) const { return what + " at byte " + std::to_string(place_); }
    static bool IsNameByte(char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == ':' || c == '_';
    }

    std::string FindForbiddenCharacter() {
        for (std::size_t i = 0; i < text_.size();) {
            const Utf8Character c = ReadUtf8(text_, i);
            const bool isAllowed =
                c.codePoint == 9 || c.codePoint == 10 || c.codePoint == 13 || c.codePoint >= 32;
            if (!c.isValid || !isAllowed || c.codePoint == 0xFFFE || c.codePoint == 0xFFFF) {
                place_ = i;
                return Fault("a forbidden character");
            }
            i += c.length;
        }
        return "";
    }

    std::string ReadName() {
        std::string name;
        while (place_ < text_.size() && IsNameByte(text_[place_])) name += text_[place_++];
        return name;
    }

    void SkipBlanks() {
        while (place_ < text_.size() && (text_[place_] == ' ' || text_[place_] == '\n')) ++place_;
    }

    // Text or an attribute's value up to `end`.
    std::string ReadCharacters(char end) {
        while (place_ < text_.size() && text_[place_] != end) {
            if (text_[place_] == '<') return Fault("'<' in a value");
            if (open_.empty() && end == '<' && text_[place_] != '\n')
                return Fault("text outside of the root");
            if (text_[place_] == '&') {
                const std::string_view entity = text_.substr(place_, text_.find(';', place_) - place_);
                if (entity != "&amp" && entity != "&lt" && entity != "&gt" && entity != "&quot" &&
                    entity != "&#39") {
                    return Fault("an unknown entity");
                }
            }
            ++place_;
        }
        return "";
    }

    std::string ReadTag() {
        ++place_;
        if (text_.substr(place_, 1) == "/") {
            ++place_;
            const std::string name = ReadName();
            if (open_.empty() || open_.back() != name) return Fault("closes " + name);
            open_.pop_back();
            return text_.substr(place_++, 1) == ">" ? "" : Fault("no '>'");
        }
        const std::string name = ReadName();
        if (name.empty()) return Fault("no name");
        std::set<std::string> attributes;
        for (;;) {
            SkipBlanks();
            if (text_.substr(place_, 2) == "/>") {
                place_ += 2;
                return "";
            }
            if (text_.substr(place_, 1) == ">") {
                ++place_;
                open_.push_back(name);
                return "";
            }
            const std::string attribute = ReadName();
            if (attribute.empty() || !attributes.insert(attribute).second)
                return Fault("attribute " + attribute);
            if (text_.substr(place_, 2) != "=\"") return Fault("no value");
            place_ += 2;
            if (const std::string fault = ReadCharacters('"'); !fault.empty()) return fault;
            if (place_ >= text_.size()) return Fault("a value without end");
            ++place_;
        }
    }

    std::string_view text_;
    std::size_t place_ = 0;
    std::vector<std::string> open_;
};

inline std::string XmlFault(std::string_view text) { return XmlCheck(text).FindFault(); }

// How often `part` occurs.
inline std::size_t CountOf(std::string_view text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t i = text.find(part); i != std::string_view::npos; i = text.find(part, i + part.size()))
        ++count;
    return count;
}

} // namespace sonorelle::test
