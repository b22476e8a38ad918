// A JSON text as the tests read it. The parser behind it takes seconds to compile: it is read in one file
// only.
//
//     const auto json = JsonValue::Parse(R"({"notes":[{"start":3}]})");
//     EXPECT_EQ(json["notes"][0]["start"], 3);
#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace sonorelle::test {

// A value within a text; copies are cheap and keep the whole text alive. What is not there, or is of another
// kind than asked for, throws.
class JsonValue {
public:
    static JsonValue Parse(const std::string& text);

    JsonValue operator[](const char* name) const;
    JsonValue operator[](std::size_t index) const;
    JsonValue operator[](int index) const { return (*this)[static_cast<std::size_t>(index)]; }
    std::size_t size() const;
    bool empty() const { return size() == 0; }

    bool is_null() const;
    bool is_array() const;
    bool is_number() const;
    // For bool, int, std::size_t, float, double, std::string, and vectors of int, float and std::string.
    template<class Type>
    Type get() const;

    friend bool operator==(const JsonValue& a, const JsonValue& b);
    friend bool operator==(const JsonValue& a, double b);
    friend bool operator==(const JsonValue& a, int b);
    friend bool operator==(const JsonValue& a, std::string_view b);
    // Nothing else may turn into a truth value here.
    friend bool operator==(const JsonValue& a, std::same_as<bool> auto b) { return a.IsTruth(b); }
    friend std::ostream& operator<<(std::ostream& out, const JsonValue& value);

    // The elements of an array, one after the other.
    class Iterator {
    public:
        Iterator(const JsonValue& owner, std::size_t first) : array(&owner), index(first) {}
        JsonValue operator*() const { return (*array)[index]; }
        Iterator& operator++() {
            ++index;
            return *this;
        }
        bool operator==(const Iterator&) const = default;

    private:
        const JsonValue* array;
        std::size_t index;
    };
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, size()}; }

private:
    explicit JsonValue(std::shared_ptr<const void> value) : value_(std::move(value)) {}
    bool IsTruth(bool truth) const;

    std::shared_ptr<const void> value_; // the parser's value, owned together with all of the text
};

} // namespace sonorelle::test
