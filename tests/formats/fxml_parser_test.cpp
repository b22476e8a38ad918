#include "formats/fxml_parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sonorelle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Document {
    std::string document;
};

// Enters every element, and notes down what it meets: "a(b=c)" and "a/" are start tags, "'text'" is a text.
class Listener : Document, public FxmlParser {
public:
    explicit Listener(std::string_view written)
        : Document{std::string(written)},
          FxmlParser(document.data(), static_cast<std::int64_t>(document.size())) {}

    std::vector<std::string> met;
    std::string stopAt = "(nothing)"; // the element or text whose level is left

    std::string Error() const { return GetErrorText() == nullptr ? "" : GetErrorText(); }

private:
    bool OnCharData(std::string_view charData) override {
        met.push_back("'" + std::string(charData) + "'");
        return charData != stopAt;
    }
    void OnProcessingInstruction(std::string_view instruction) override {
        met.push_back("?" + std::string(instruction));
    }
    void OnComment(std::string_view comment) override { met.push_back("!" + std::string(comment)); }
    bool OnStartElement(std::string_view name, bool isEmpty,
                        std::span<const XmlAttribute> attributes) override {
        std::string note(name);
        for (const XmlAttribute& attribute : attributes)
            note.append("(").append(attribute.name).append("=").append(attribute.value).append(")");
        met.push_back(isEmpty ? note + "/" : note);
        if (name == stopAt) return false;
        if (!isEmpty) Descend(name);
        return true;
    }
};

std::string ErrorOf(std::string_view document) {
    Listener listener(document);
    EXPECT_FALSE(listener.Parse()) << document.substr(0, 100);
    return listener.Error();
}

// The one attribute's value in a document <a v="...">.
std::string ValueOf(const std::string& written) {
    Listener listener("<a v=\"" + written + "\"/>");
    listener.Parse();
    if (listener.met.empty()) return listener.Error();
    return listener.met[0].substr(4, listener.met[0].size() - 6);
}

TEST(FxmlParser, TellsWhatItMeetsInOrder) {
    Listener listener(
        "<?xml version=\"1.0\"?>\n<root a=\"1\" b = 'two'>\n<!-- note -->\n  hello <leaf/>world</root >\n");
    EXPECT_TRUE(listener.Parse());
    EXPECT_THAT(listener.met, ElementsAre("?xml version=\"1.0\"", "root(a=1)(b=two)", "! note ",
                                          "'\n  hello '", "leaf/", "'world'"));
    EXPECT_EQ(listener.GetErrorText(), nullptr);
}

TEST(FxmlParser, ReadsATextOfUnknownLengthToItsZeroByte) {
    FxmlParser whole("<a/>", 0);
    EXPECT_TRUE(whole.Parse());
    FxmlParser broken("<a", 0);
    EXPECT_FALSE(broken.Parse());
    FxmlParser nothing(nullptr, 12);
    EXPECT_TRUE(nothing.Parse());
    FxmlParser negative("<a", -1);
    EXPECT_TRUE(negative.Parse());
}

TEST(FxmlParser, EndsAtTheEndTagThatItWasGiven) {
    FxmlParser parser("<b/></a><", 0);
    EXPECT_TRUE(parser.Parse("a"));
    FxmlParser open("<b/>", 0);
    EXPECT_FALSE(open.Parse("a"));
    EXPECT_EQ(open.GetErrorText(), nullptr);
}

TEST(FxmlParser, IsFalseWhenTheTextEndsInsideAnElement) {
    EXPECT_EQ(ErrorOf("<a>"), "");
    EXPECT_EQ(ErrorOf("<a><b></b>"), "");
    EXPECT_EQ(ErrorOf("<a>text"), "");
}

TEST(FxmlParser, AHandlerEndsItsOwnLevelAlone) {
    Listener inner("<a><b/><stop/><c/></a><d/>");
    inner.stopAt = "stop";
    // Behind the stop the level around goes on where the walk stands, and so meets an end tag that is not its
    // own.
    EXPECT_FALSE(inner.Parse());
    EXPECT_THAT(inner.met, ElementsAre("a", "b/", "stop/", "c/"));
    EXPECT_EQ(inner.Error(), "Non expected end tag");

    Listener text("<a>stop</a>");
    text.stopAt = "stop";
    EXPECT_FALSE(text.Parse());

    Listener outer("<a/><stop/><");
    outer.stopAt = "stop";
    EXPECT_FALSE(outer.Parse());
    EXPECT_EQ(outer.Error(), "");
}

TEST(FxmlParser, AHandlerMayEndItsLevelTogetherWithTheElementItEnters) {
    struct Last : FxmlParser {
        using FxmlParser::FxmlParser;
        bool OnStartElement(std::string_view name, bool, std::span<const XmlAttribute>) override {
            ++met;
            Descend(name);
            return false;
        }
        int met = 0;
    };
    Last parser("<b></b><c></c></a>", 0);
    EXPECT_FALSE(parser.Parse("a"));
    EXPECT_EQ(parser.met, 1);
    EXPECT_EQ(parser.GetErrorText(), nullptr);
    EXPECT_FALSE(parser.Parse()); // on behind the element
    EXPECT_EQ(parser.met, 2);
    Last open("<b>", 0);
    EXPECT_FALSE(open.Parse());
}

TEST(FxmlParser, NamesItsFailures) {
    EXPECT_EQ(ErrorOf("<!DOCTYPE a>"), "Non supported '<!' tag");
    EXPECT_EQ(ErrorOf("<!-a-->"), "Non supported '<!' tag");
    EXPECT_EQ(ErrorOf("<![CDATA[x]]>"), "Non supported '<!' tag");
    EXPECT_EQ(ErrorOf("<!-- a --"), "Non closed comment");
    EXPECT_EQ(ErrorOf("<?a ?"), "Non closed processing instruction ( '<? ... ?>')");
    EXPECT_EQ(ErrorOf("</a>"), "Non expected end tag");
    EXPECT_EQ(ErrorOf("<a></b>"), "Non expected end tag");
    EXPECT_EQ(ErrorOf("<a></a x>"), "syntax error at end tag");
    EXPECT_EQ(ErrorOf("<.a/>"), "Name is not legal");
    EXPECT_EQ(ErrorOf("<a .b=\"1\"/>"), "Name is not legal");
    EXPECT_EQ(ErrorOf("<"), "Name is not legal");
    EXPECT_EQ(ErrorOf("<a"), "Name is not legal");
    EXPECT_EQ(ErrorOf("<a / >"), "Name is not legal");
    EXPECT_EQ(ErrorOf("<a b>"), "Attribute field not valid");
    EXPECT_EQ(ErrorOf("<a b=1>"), "Attribute value invalid");
    EXPECT_EQ(ErrorOf("<a b=\"&#65\"/>"), "Bad token encountered");
    EXPECT_EQ(ErrorOf("<a b=\"&#x6g;\"/>"), "Bad token encountered");
    EXPECT_EQ(ErrorOf("<a b=\"&#-1;\"/>"), "Bad token encountered");
}

TEST(FxmlParser, AFailureEndsAllLevels) {
    Listener listener("<a><b></x></b></a><c/>");
    EXPECT_FALSE(listener.Parse());
    EXPECT_THAT(listener.met, ElementsAre("a", "b"));
}

TEST(FxmlParser, ATextThatCannotBeReadEndsTheParseLikeTheEndOfTheText) {
    Listener outside("<a/>&#6<b/>");
    EXPECT_TRUE(outside.Parse());
    EXPECT_EQ(outside.Error(), "Bad token encountered");
    EXPECT_THAT(outside.met, ElementsAre("a/"));
    EXPECT_EQ(ErrorOf("<a>&#6</a>"), "Bad token encountered");
}

TEST(FxmlParser, NamesAreMadeOfAsciiLettersDigitsAndHighBytes) {
    Listener listener("<_:a.-9\xC3\xA4/><9/>");
    EXPECT_TRUE(listener.Parse());
    EXPECT_THAT(listener.met, ElementsAre("_:a.-9\xC3\xA4/", "9/"));
    for (const char* illegal : {"<-/>", "<./>", "<@/>", "<[/>", "<`/>", "<{/>", "</>"})
        EXPECT_EQ(ErrorOf(illegal), "Name is not legal") << illegal;
}

TEST(FxmlParser, TakesSixtyFourAttributesAndNoMore) {
    std::string tag = "<a";
    for (int i = 0; i < 64; ++i) tag += " b=\"\"";
    Listener enough(tag + "/>");
    EXPECT_TRUE(enough.Parse());
    EXPECT_EQ(enough.met.size(), 1U);
    EXPECT_EQ(ErrorOf(tag + " b=\"\"/>"), "Too many attribute/value pairs");
}

TEST(FxmlParser, AttributesNeedNoSpaceBetweenThem) {
    Listener listener("<a b=\"1\"c='2'\t\r\nd\n=\n'3'/>");
    EXPECT_TRUE(listener.Parse());
    EXPECT_THAT(listener.met, ElementsAre("a(b=1)(c=2)(d=3)/"));
}

TEST(FxmlParser, AValueMayHoldTheOtherQuotationMark) {
    Listener listener("<a b='\"' c=\"'\"/>");
    EXPECT_TRUE(listener.Parse());
    EXPECT_THAT(listener.met, ElementsAre("a(b=\")(c=')/"));
}

TEST(FxmlParser, AValueEndsAtAnAngleBracket) { EXPECT_EQ(ErrorOf("<a b=\"x<y\"/>"), "Name is not legal"); }

TEST(FxmlParser, ACharacterReferenceGivesOneByte) {
    EXPECT_EQ(ValueOf("&#65;&#34;&#60;&#38;"), "A\"<&");
    EXPECT_EQ(ValueOf("&#x41;&#x39;"), "A9");
    EXPECT_EQ(ValueOf("&#228;"), "\xE4");
    EXPECT_EQ(ValueOf("&#321;"), "A");        // 256 and 65
    EXPECT_EQ(ValueOf("&#4294967361;"), "A"); // 2^32 and 65
    EXPECT_EQ(ValueOf("&#99999999999999999999999;").size(), 1U);
    EXPECT_EQ(ValueOf("a&#0;b"), "a");
    EXPECT_EQ(ValueOf("a&#;b"), "a");
}

TEST(FxmlParser, HexadecimalLettersCountLessThanTheyShould) {
    EXPECT_EQ(ValueOf("&#x5a;"), "F"); // 5 x 16 - 10
    EXPECT_EQ(ValueOf("&#x5A;"), "F");
    EXPECT_EQ(ValueOf("&#x5f;"), "K");    // 5 x 16 - 5
    EXPECT_EQ(ValueOf("&#xa;"), "\xF6");  // -10
    EXPECT_EQ(ValueOf("&#xff;"), "\xAB"); // -5 x 16 - 5
}

TEST(FxmlParser, AnyOtherAmpersandStaysWithTheByteBehindIt) {
    EXPECT_EQ(ValueOf("a&amp;b"), "a&amp;b");
    EXPECT_EQ(ValueOf("&&#65;"), "&&#65;");
    EXPECT_EQ(ValueOf("&<x"), "&<x");
    Listener mark("<a b=\"AT&\"T\"/>"); // so the mark does not close the value
    EXPECT_TRUE(mark.Parse());
    EXPECT_THAT(mark.met, ElementsAre("a(b=AT&\"T)/"));
    EXPECT_EQ(ErrorOf("<a b=\"&"), "Name is not legal");
    EXPECT_EQ(ErrorOf("<a b=\"&#"), "Bad token encountered");
}

TEST(FxmlParser, TextsHaveReferencesToo) {
    Listener listener("<a>\t&#65;&b ]] ]> &#x42;</a>");
    EXPECT_TRUE(listener.Parse());
    EXPECT_THAT(listener.met, ElementsAre("a", "'\tA&b ]] ]> B'"));
}

TEST(FxmlParser, PassesTheEndOfASectionThatNothingOpened) {
    Listener listener("<a>one]]> two]]>]]></a>");
    EXPECT_TRUE(listener.Parse());
    EXPECT_THAT(listener.met, ElementsAre("a", "'one'", "' two'", "''"));
}

TEST(FxmlParser, AZeroByteEndsTheText) {
    using namespace std::string_literals;
    Listener listener("<a/>\0<b/>"s);
    EXPECT_TRUE(listener.Parse());
    EXPECT_THAT(listener.met, ElementsAre("a/"));
    EXPECT_EQ(ErrorOf("<a\0/>"s), "Name is not legal");
    EXPECT_EQ(ErrorOf("<a b=\"x\0y\"/>"s), "Name is not legal");
    EXPECT_EQ(ErrorOf("<!-- \0 -->"s), "Non closed comment");
    EXPECT_EQ(ErrorOf("<? \0 ?>"s), "Non closed processing instruction ( '<? ... ?>')");
}

TEST(FxmlParser, CommentsAndInstructionsFitWithTheirEnd) {
    const std::string longest(FxmlParser::kScratchSize - 1, '-');
    Listener listener("<!--" + longest.substr(3) + "abc--><?" + longest + "?>");
    EXPECT_TRUE(listener.Parse());
    EXPECT_EQ(listener.met.size(), 2U);
    const std::string tooLong(FxmlParser::kScratchSize, 'x');
    EXPECT_EQ(ErrorOf("<!--" + tooLong + "-->"), "Too long comment");
    EXPECT_EQ(ErrorOf("<?" + tooLong + "?>"), "Too long processing instruction");
    EXPECT_EQ(ErrorOf("<!--" + tooLong.substr(1)), "Non closed comment");
}

TEST(FxmlParser, NamesFitWithTheirEnd) {
    const std::string longest(FxmlParser::kScratchSize - 1, 'n');
    Listener listener("<" + longest + "></" + longest + ">");
    EXPECT_TRUE(listener.Parse());
    EXPECT_EQ(ErrorOf("<" + longest + "n/>"), "Name too long");
    // A full buffer has no room for a value, and none for another name.
    EXPECT_EQ(ErrorOf("<a " + longest.substr(2) + "=\"\"/>"), "Attribute value too long");
    EXPECT_EQ(ErrorOf("<" + longest + " b=\"\"/>"), "Name too long");
}

TEST(FxmlParser, AValueTooLongIsCutAndTheRestReadAsAName) {
    // The names a and b take two bytes each, three stay free at the end.
    const std::string longest(FxmlParser::kScratchSize - 4 - 3, 'v');
    Listener listener("<a b=\"" + longest + "\"/>");
    EXPECT_TRUE(listener.Parse());
    EXPECT_EQ(listener.met[0].size(), longest.size() + std::string("a(b=)/").size());
    EXPECT_EQ(ErrorOf("<a b=\"" + longest + "v\"/>"), "Attribute field not valid");
    EXPECT_EQ(ErrorOf("<a b=\"" + longest + "vv\"/>"), "Name too long");
    EXPECT_EQ(ErrorOf("<a b=\"" + longest + "/\"/>"), "Name is not legal");
}

TEST(FxmlParser, ALongValueIsReadWithARaisedLimit) {
    const std::string value(100'000, 'v');
    Listener listener("<a b=\"" + value + "\"/>");
    listener.SetScratchSize(100'007);
    EXPECT_TRUE(listener.Parse());
    EXPECT_EQ(listener.met.size(), 1U);
    Listener narrow("<a b=\"" + value + "\"/>");
    narrow.SetScratchSize(100'006);
    EXPECT_FALSE(narrow.Parse());
}

TEST(FxmlParser, ATextTooLongIsAFailure) {
    const std::string longest(FxmlParser::kScratchSize - 3, 't');
    Listener listener("<a>" + longest + "</a>");
    EXPECT_TRUE(listener.Parse());
    EXPECT_EQ(ErrorOf("<a>" + longest + "t</a>"), "Char Data too long");
}

TEST(FxmlParser, NoRoomAtAllIsAFailureEverywhere) {
    for (const std::int32_t size : {0, -1, std::numeric_limits<std::int32_t>::min()})
        for (const char* document : {"<a></a>", "<a b=\"c\"/>", "<!--a-->", "<?a?>"}) {
            Listener listener(document);
            listener.SetScratchSize(size);
            EXPECT_FALSE(listener.Parse()) << document;
            EXPECT_THAT(listener.met, IsEmpty());
        }
}

TEST(FxmlParser, EntersAMillionElementsWithoutACallEach) {
    constexpr int kDepth = 1'000'000;
    std::string document;
    for (int i = 0; i < kDepth; ++i) document += "<a>";
    for (int i = 0; i < kDepth; ++i) document += "</a>";
    Listener listener(document);
    EXPECT_TRUE(listener.Parse());
    EXPECT_EQ(listener.met.size(), static_cast<std::size_t>(kDepth));
}

} // namespace
} // namespace sonorelle
