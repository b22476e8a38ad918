#include "cli/report_json.h"

#include "cli/json_value.h"
#include "cli/json_writer.h"
#include "cli/note_names.h"
#include "cli/sample_report.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <random>

namespace sonorelle {
namespace {

using test::JsonValue;
using test::SampleReport;

// Finds the text of a number behind `"name":` and reads it as f32.
float FloatBehind(const std::string& json, const std::string& name) {
    const std::size_t place = json.find("\"" + name + "\":");
    if (place == std::string::npos) return std::nanf("");
    float value = std::nanf("");
    std::from_chars(json.data() + place + name.size() + 3, json.data() + json.size(), value);
    return value;
}

TEST(FormatJson, HasExactlyTheseFieldsInThisOrder) {
    MelodyReport report = SampleReport();
    report.notes.resize(1);
    EXPECT_EQ(
        FormatJson(report),
        "{\"file\":\"song.wav\",\"sampleRate\":44100,\"channels\":1,\"frames\":1323000,\"cache\":\"written\","
        "\"markCount\":5,\"tuningOffset\":0.05,\"tuningHz\":441.27258,\"key\":9,\"keyName\":\"A major\","
        "\"notes\":[{\"pitch\":58.12,\"level\":0.4125,\"length\":44100,\"start\":4410,\"end\":48510,"
        "\"firstFrame\":1,\"lastFrame\":2}]}\n");
}

TEST(FormatJson, IsOneLineThatAParserReads) {
    const std::string text = FormatJson(SampleReport());
    EXPECT_EQ(text.find('\n'), text.size() - 1);
    const JsonValue json = JsonValue::Parse(text);
    EXPECT_EQ(json.size(), 11U);
    EXPECT_EQ(json["notes"].size(), 3U);
    EXPECT_EQ(json["notes"][2]["start"], 1102500);
    EXPECT_EQ(json["notes"][2].size(), 7U);
}

TEST(FormatJson, WithoutNotesOrKey) {
    MelodyReport report = SampleReport();
    report.notes.clear();
    report.key = -1;
    report.cache = CacheUse::kNone;
    const JsonValue json = JsonValue::Parse(FormatJson(report));
    EXPECT_TRUE(json["notes"].is_array());
    EXPECT_TRUE(json["notes"].empty());
    EXPECT_EQ(json["key"], -1);
    EXPECT_EQ(json["keyName"], "none");
    EXPECT_EQ(json["cache"], "none");
}

TEST(FormatJson, FloatsReadBackToTheSameBits) {
    MelodyReport report = SampleReport();
    report.notes.resize(1);
    std::mt19937 random(20240717); // fixed: a failure can be replayed
    for (int i = 0; i < 20000; ++i) {
        const float value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (!std::isfinite(value)) continue;
        report.notes[0].pitch = value;
        report.tuningOffset = value;
        const std::string text = FormatJson(report);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(FloatBehind(text, "pitch")),
                  std::bit_cast<std::uint32_t>(value));
        EXPECT_EQ(std::bit_cast<std::uint32_t>(FloatBehind(text, "tuningOffset")),
                  std::bit_cast<std::uint32_t>(value));
        if (i % 100 == 0) { // a parser of doubles, cut to f32, agrees
            const auto parsed = JsonValue::Parse(text)["notes"][0]["pitch"].get<float>();
            EXPECT_EQ(std::bit_cast<std::uint32_t>(parsed), std::bit_cast<std::uint32_t>(value));
        }
    }
}

TEST(FormatJson, WhatIsNotFiniteIsNull) {
    MelodyReport report = SampleReport();
    report.tuningOffset = std::nanf("");
    report.notes[0].level = std::numeric_limits<float>::infinity();
    const JsonValue json = JsonValue::Parse(FormatJson(report));
    EXPECT_TRUE(json["tuningOffset"].is_null());
    EXPECT_TRUE(json["notes"][0]["level"].is_null());
}

TEST(FormatJson, NamesOfAnyBytesStayOneStringOnOneLine) {
    MelodyReport report = SampleReport();
    for (const std::string& name :
         {std::string("two words.wav"), std::string("Für Elise 日本語 🎵.wav"), std::string("q\"uo\\te.wav"),
          std::string("line\nend\r\t\x1b[31m\x7f.wav"), std::string("\xc2\x9b\xe2\x80\xa8.wav"),
          std::string("a\0b", 3)}) {
        report.file = name;
        const std::string text = FormatJson(report);
        EXPECT_EQ(JsonValue::Parse(text)["file"].get<std::string>(), name);
        for (const char c : text.substr(0, text.size() - 1)) {
            EXPECT_GE(static_cast<unsigned char>(c), 0x20);
            EXPECT_NE(c, '\x7f');
        }
    }
    report.file = "caf\xe9.wav";
    EXPECT_EQ(JsonValue::Parse(FormatJson(report))["file"].get<std::string>(), "caf\xef\xbf\xbd.wav");
}

TEST(JsonWriter, PutsCommasBetweenValuesOnly) {
    JsonWriter json;
    json.BeginArray();
    json.BeginObject();
    json.EndObject();
    json.BeginArray();
    json.EndArray();
    json.Integer(-3);
    json.Float(0.5F);
    json.String("x");
    json.BeginObject();
    json.Key("a").Integer(1);
    json.Key("b").BeginArray();
    json.EndArray();
    json.EndObject();
    json.EndArray();
    EXPECT_EQ(json.Text(), R"([{},[],-3,0.5,"x",{"a":1,"b":[]}])");
}

} // namespace
} // namespace sonorelle
