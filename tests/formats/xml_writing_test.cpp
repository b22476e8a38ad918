#include "formats/xml.h"
#include "formats/xml_binary.h"
#include "formats/xml_text.h"

#include "platform/numbers.h"
#include "support/german_locale.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <sys/mman.h>

namespace sonorelle {
namespace {

std::vector<std::byte> Bytes(std::initializer_list<int> values) {
    std::vector<std::byte> bytes;
    for (const int value : values) bytes.push_back(static_cast<std::byte>(value));
    return bytes;
}

// What was written, without the end of the document.
std::string Taken(CkvoXML& writer) {
    std::string document;
    EXPECT_TRUE(writer.EndDocument(document));
    constexpr std::string_view kEnd = "</quillon-xml>";
    EXPECT_TRUE(document.ends_with(kEnd));
    return document.substr(0, document.size() - kEnd.size());
}

struct Writer : testing::Test {
    CkvoXML writer{nullptr, 0, kXmlRootName};
};
using XmlWriting = Writer;

TEST_F(XmlWriting, AStringIsAnElementWithOneAttribute) {
    EXPECT_TRUE(writer.WriteString("a", "x"));
    EXPECT_EQ(Taken(writer), "<a str=\"x\"/>\n");
}

TEST_F(XmlWriting, BinaryDataIsWrittenAsHexadecimalWords) {
    EXPECT_TRUE(writer.WriteBinary("a", Bytes({1, 2, 3, 4})));
    EXPECT_EQ(Taken(writer), "<a len=\"4\" bin=\"04030201\"/>\n");
    EXPECT_TRUE(writer.WriteBinary("b", Bytes({0xFF, 0, 0x80, 0x0A, 5, 6, 7, 8})));
    EXPECT_EQ(Taken(writer), "<b len=\"8\" bin=\"0a8000ff08070605\"/>\n");
    EXPECT_TRUE(writer.WriteBinary("c", {}));
    EXPECT_EQ(Taken(writer), "<c len=\"0\" bin=\"\"/>\n");
}

TEST_F(XmlWriting, BytesThatFillNoWordAreRefused) {
    for (const std::size_t count : {1U, 2U, 3U, 5U})
        EXPECT_FALSE(writer.WriteBinary("a", std::vector<std::byte>(count)));
    EXPECT_EQ(writer.GetLength(), 0);
}

TEST_F(XmlWriting, ADocumentHasAHeadAndAnEndWithoutALineEnd) {
    EXPECT_TRUE(writer.BeginDocument(1.0F));
    EXPECT_TRUE(writer.OpenTag("Section"));
    EXPECT_TRUE(writer.CloseTag("Section"));
    std::string document;
    EXPECT_TRUE(writer.EndDocument(document));
    EXPECT_EQ(document, "<?xml version=\"1.0\"?>\n<quillon-xml version=\"1.0\">\n"
                        "<!-- This file was generated automatically. Do not edit!-->\n"
                        "<Section>\n</Section>\n</quillon-xml>");
}

TEST_F(XmlWriting, TheVersionHasOneDecimal) {
    EXPECT_TRUE(writer.BeginDocument(12.26F));
    EXPECT_NE(Taken(writer).find("<quillon-xml version=\"12.3\">"), std::string::npos);
}

TEST_F(XmlWriting, NothingIsEscaped) {
    EXPECT_TRUE(writer.WriteString("a", "\"<&>"));
    EXPECT_EQ(Taken(writer), "<a str=\"\"<&>\"/>\n");
}

TEST_F(XmlWriting, TheLengthStaysAfterTheEndUntilTheNextDocument) {
    EXPECT_EQ(writer.GetLength(), 0);
    EXPECT_TRUE(writer.OpenTag("a"));
    EXPECT_EQ(writer.GetLength(), 4);
    std::string document;
    EXPECT_TRUE(writer.EndDocument(document));
    EXPECT_EQ(writer.GetLength(), static_cast<std::int32_t>(document.size()));
    EXPECT_TRUE(writer.OpenTag("b"));
    EXPECT_EQ(writer.GetLength(), 4);
    EXPECT_EQ(document, "<a>\n</quillon-xml>");
}

TEST_F(XmlWriting, ALookupDropsWhatWasWritten) {
    EXPECT_TRUE(writer.OpenTag("a"));
    std::string_view value;
    std::int32_t length = 0;
    EXPECT_FALSE(writer.Find("a/", value, length));
    EXPECT_EQ(writer.GetLength(), 0);
    EXPECT_EQ(Taken(writer), "");
}

TEST_F(XmlWriting, RefusesWhatNoLengthCanTell) {
    // Addresses without memory behind them: whoever looked at the bytes before their number would crash.
    constexpr std::size_t kBytes = std::size_t{1} << 31;
    void* const reserved =
        ::mmap(nullptr, kBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(reserved, MAP_FAILED);
    EXPECT_TRUE(writer.OpenTag("a"));
    EXPECT_FALSE(writer.WriteString("b", {static_cast<const char*>(reserved), kBytes}));
    EXPECT_FALSE(writer.WriteString("b", {static_cast<const char*>(reserved), kBytes - 13}));
    EXPECT_FALSE(writer.WriteBinary("b", {static_cast<const std::byte*>(reserved), kBytes / 2}));
    EXPECT_FALSE(writer.WriteBinary("b", {static_cast<const std::byte*>(reserved), kBytes / 2 - 4}));
    EXPECT_EQ(Taken(writer), "<a>\n");
    ::munmap(reserved, kBytes);
}

TEST(HexWords, AWordInMemoryReadsAsANumber) {
    const std::uint32_t word = 0x0123abcd;
    std::array<std::byte, 4> bytes{};
    for (std::size_t i = 0; i < 4; ++i) bytes[i] = static_cast<std::byte>(word >> (8 * i));
    std::string text = ">";
    AppendHexWords(text, bytes);
    EXPECT_EQ(text, ">0123abcd");
}

TEST(HexWords, AnyBytesComeBack) {
    constexpr std::uint32_t kSeed = 20240611;
    std::mt19937 random(kSeed);
    for (std::size_t size = 0; size < 400; size += 4) {
        std::vector<std::byte> bytes(size);
        for (std::byte& byte : bytes) byte = static_cast<std::byte>(random());
        std::string text;
        AppendHexWords(text, bytes);
        EXPECT_EQ(DecodeHexWords(text), bytes);
    }
}

TEST(HexWords, UpperCaseDigitsAndPrefixesAreRead) {
    EXPECT_EQ(DecodeHexWords("0A0b0C0d"), Bytes({0x0D, 0x0C, 0x0B, 0x0A}));
    EXPECT_EQ(DecodeHexWords("0x0XffFF"), Bytes({0xFF, 0xFF, 0, 0}));
}

TEST(HexWords, APairCountsUpToItsFirstOtherCharacter) {
    EXPECT_EQ(DecodeHexWords("1gg11 -1"), Bytes({0, 1, 0, 1}));
    EXPECT_EQ(DecodeHexWords("@@``\xFF\xFF::"), Bytes({0, 0, 0, 0}));
}

TEST(HexWords, ABrokenLastWordStaysWithinItsBytes) {
    EXPECT_TRUE(DecodeHexWords("").empty());
    EXPECT_TRUE(DecodeHexWords("f").empty());
    EXPECT_EQ(DecodeHexWords("01"), Bytes({0}));
    EXPECT_EQ(DecodeHexWords("010203"), Bytes({0, 3, 2}));
    EXPECT_EQ(DecodeHexWords("0102030405"), Bytes({4, 3, 2, 1, 0}));
}

TEST(CharacterReferences, StandForWhatWouldBreakTheDocument) {
    EXPECT_EQ(WithCharacterReferences("a\"b<c>d&e'f"), "a&#34;b&#60;c&#62;d&#38;e'f");
    EXPECT_EQ(WithCharacterReferences("\t\n\x1F\x7F"), "&#9;&#10;&#31;&#127;");
    EXPECT_EQ(WithCharacterReferences("/home/J\xC3\xBCrgen/a b.wav"), "/home/J\xC3\xBCrgen/a b.wav");
    EXPECT_EQ(WithCharacterReferences(""), "");
}

TEST(CharacterReferences, BringBackEveryByteButZero) {
    std::string name;
    for (int byte = 1; byte < 256; ++byte) name += static_cast<char>(byte);
    name += "</quillon-xml>&#65;]]>--><!--";
    CkvoXML writer(nullptr, 0, kXmlRootName);
    writer.BeginDocument(1.0F);
    writer.OpenTag("S");
    writer.WriteString("Name", WithCharacterReferences(name));
    writer.CloseTag("S");
    writer.WriteString("Behind", "there");
    std::string document;
    writer.EndDocument(document);
    CkvoXML reader(document.data(), static_cast<std::int64_t>(document.size()), kXmlRootName);
    std::string_view value;
    std::int32_t length = 0;
    ASSERT_TRUE(reader.Find("S/Name/", value, length));
    EXPECT_EQ(value, name);
    ASSERT_TRUE(reader.Find("Behind/", value, length));
    EXPECT_EQ(value, "there");
}

// A host that speaks German, for the C functions and for streams.
class GermanHost {
public:
    GermanHost() : before_(std::locale::global(std::locale(std::locale::classic(), new Comma))) {}
    ~GermanHost() { std::locale::global(before_); }
    GermanHost(const GermanHost&) = delete;
    GermanHost& operator=(const GermanHost&) = delete;

private:
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    test::GermanLocale language_;
    std::locale before_;
};

TEST_F(XmlWriting, NumbersAreTheSameInAGermanHost) {
    const GermanHost host;
    EXPECT_TRUE(writer.BeginDocument(1234.5F));
    EXPECT_TRUE(writer.WriteString("TuningFreq", FormatFixed(440.25, 8)));
    EXPECT_TRUE(writer.WriteBinary("Data", std::vector<std::byte>(1200)));
    std::string document;
    EXPECT_TRUE(writer.EndDocument(document));
    EXPECT_NE(document.find("<quillon-xml version=\"1234.5\">"), std::string::npos);
    EXPECT_NE(document.find("<TuningFreq str=\"440.25000000\"/>"), std::string::npos);
    EXPECT_NE(document.find("<Data len=\"1200\""), std::string::npos);

    CkvoXML reader(document.data(), static_cast<std::int64_t>(document.size()), kXmlRootName);
    std::string_view value;
    std::int32_t length = 0;
    ASSERT_TRUE(reader.Find("TuningFreq/", value, length));
    EXPECT_EQ(ReadLeadingNumber(value), 440.25);
    ASSERT_TRUE(reader.Find("Data/", value, length));
    EXPECT_EQ(length, 1200);
    EXPECT_EQ(value.size(), 1200U);
}

} // namespace
} // namespace sonorelle
