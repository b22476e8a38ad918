#include "cli/unicode_text.h"

#include <gtest/gtest.h>

namespace sonorelle {
namespace {

TEST(PrintableText, LeavesOrdinaryNamesAlone) {
    for (const char* name :
         {"song.wav", "two words.wav", "Für Elise – é.wav", "日本語.wav", "🎵.wav", "a\\b\"c'", ""}) {
        EXPECT_EQ(PrintableText(name), name);
    }
}

TEST(PrintableText, EscapesWhatSteersATerminal) {
    EXPECT_EQ(PrintableText("a\x1b[31mred.wav"), "a\\x1b[31mred.wav");
    EXPECT_EQ(PrintableText("line\nend\r\t\a"), "line\\nend\\r\\t\\x07");
    EXPECT_EQ(PrintableText("\x7f"), "\\x7f");
    EXPECT_EQ(PrintableText("\xc2\x9b"), "\\u009b");     // the control sequence introducer of C1
    EXPECT_EQ(PrintableText("\xe2\x80\xae"), "\\u202e"); // writes the rest of the line from right to left
    EXPECT_EQ(PrintableText("\xe2\x80\xa8"), "\\u2028"); // line separator
    EXPECT_EQ(PrintableText(std::string("a\0b", 3)), "a\\x00b");
}

TEST(PrintableText, EscapesBytesThatAreNotUtf8) {
    EXPECT_EQ(PrintableText("caf\xe9.wav"), "caf\\xe9.wav");
    EXPECT_EQ(PrintableText("\x80\xff"), "\\x80\\xff");
    EXPECT_EQ(PrintableText("\xe2\x82"), "\\xe2\\x82"); // cut off
}

// Each row of the well-formedness table of the Unicode standard, at its ends and just beyond.
TEST(Utf8, AcceptsExactlyTheWellFormedSequences) {
    const auto valid = [](std::string_view text) {
        return ReadUtf8(text, 0).isValid && ReadUtf8(text, 0).length == text.size();
    };
    for (const char* good : {"\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xee\x80\x80",
                             "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"}) {
        EXPECT_TRUE(valid(good)) << PrintableText(good);
    }
    for (const char* bad : {"\x80", "\xbf", "\xc0\x80", "\xc1\xbf", "\xc2", "\xc2\x41", "\xe0\x9f\xbf",
                            "\xed\xa0\x80", "\xed\xbf\xbf", "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80",
                            "\xf5\x80\x80\x80", "\xff", "\xe2\x82\x41"}) {
        EXPECT_FALSE(valid(bad)) << PrintableText(bad);
        EXPECT_EQ(ReadUtf8(bad, 0).length, 1U);
    }
}

TEST(Utf8, EveryCodePointIsReadAsItIsWritten) {
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        std::string text;
        AppendUtf8(text, c);
        const Utf8Character read = ReadUtf8(text, 0);
        ASSERT_TRUE(read.isValid && read.codePoint == c && read.length == text.size())
            << std::hex << static_cast<unsigned>(c);
    }
}

TEST(ValidUtf8, ReplacesEachWrongByteAndNothingElse) {
    EXPECT_EQ(ValidUtf8("caf\xe9.wav"), "caf\xef\xbf\xbd.wav");
    EXPECT_EQ(ValidUtf8("Für\n"), "Für\n");
}

TEST(ShortenMiddle, KeepsBothEnds) {
    EXPECT_EQ(ShortenMiddle("abcdefghij", 10), "abcdefghij");
    EXPECT_EQ(ShortenMiddle("abcdefghijk", 10), "abcde…hijk");
    EXPECT_EQ(ShortenMiddle("äöüßéèàçñõ", 5), "äö…ñõ");
    EXPECT_EQ(CountCharacters(ShortenMiddle(std::string(1000, 'x'), 77)), 77U);
    EXPECT_EQ(ShortenMiddle("abcdef", 0), "a…f");
}

} // namespace
} // namespace sonorelle
