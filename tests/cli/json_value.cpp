#include "cli/json_value.h"

#include <nlohmann/json.hpp>

#include <vector>

namespace sonorelle::test {
namespace {

using nlohmann::json;

const json& Of(const std::shared_ptr<const void>& value) { return *static_cast<const json*>(value.get()); }

} // namespace

JsonValue JsonValue::Parse(const std::string& text) {
    return JsonValue(std::make_shared<const json>(json::parse(text)));
}

JsonValue JsonValue::operator[](const char* name) const { return JsonValue({value_, &Of(value_).at(name)}); }

JsonValue JsonValue::operator[](std::size_t index) const {
    return JsonValue({value_, &Of(value_).at(index)});
}

std::size_t JsonValue::size() const { return Of(value_).size(); }
bool JsonValue::is_null() const { return Of(value_).is_null(); }
bool JsonValue::is_array() const { return Of(value_).is_array(); }
bool JsonValue::is_number() const { return Of(value_).is_number(); }
bool JsonValue::IsTruth(bool truth) const { return Of(value_) == json(truth); }

template<class Type>
Type JsonValue::get() const {
    return Of(value_).get<Type>();
}
template bool JsonValue::get() const;
template int JsonValue::get() const;
template std::size_t JsonValue::get() const;
template float JsonValue::get() const;
template double JsonValue::get() const;
template std::string JsonValue::get() const;
template std::vector<int> JsonValue::get() const;
template std::vector<float> JsonValue::get() const;
template std::vector<std::string> JsonValue::get() const;

bool operator==(const JsonValue& a, const JsonValue& b) { return Of(a.value_) == Of(b.value_); }
bool operator==(const JsonValue& a, double b) { return Of(a.value_) == json(b); }
bool operator==(const JsonValue& a, int b) { return Of(a.value_) == json(b); }
bool operator==(const JsonValue& a, std::string_view b) { return Of(a.value_) == json(b); }

std::ostream& operator<<(std::ostream& out, const JsonValue& value) { return out << Of(value.value_).dump(); }

} // namespace sonorelle::test
