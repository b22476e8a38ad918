#include "formats/xml.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace sonorelle {
namespace {

struct Reader {
    explicit Reader(std::string document, std::string_view root = kXmlRootName)
        : text(std::move(document)), xml(text.data(), static_cast<std::int64_t>(text.size()), root) {}

    // The value, or "(none)" when it was not found, or "(null)" when there is nothing in what was found.
    std::string operator()(std::string_view path) { return Look(path, false); }
    std::string Flat(std::string_view path) { return Look(path, true); }

    std::string Look(std::string_view path, bool flat) {
        std::string_view value = "left over";
        length = -77;
        const bool isThere = flat ? xml.FindFlat(path, value, length) : xml.Find(path, value, length);
        if (!isThere) {
            EXPECT_EQ(value.data(), nullptr);
            EXPECT_EQ(value.size(), 0U);
            EXPECT_EQ(length, 0);
            return "(none)";
        }
        return value.data() == nullptr ? "(null)" : std::string(value);
    }

    std::string text;
    CkvoXML xml;
    std::int32_t length = 0;
};

std::string Document(const std::string& content) {
    return "<?xml version=\"1.0\"?>\n<quillon-xml version=\"1.0\">\n<!-- made -->\n" + content +
           "</quillon-xml>";
}

TEST(XmlLookup, FindsEveryKeyOfADocument) {
    Reader reader(
        Document("<A>\n<X str=\"1\"/>\n<Y str=\"2\"/>\n</A>\n<B>\n<X str=\"3\"/>\n</B>\n<C str=\"4\"/>\n"));
    EXPECT_EQ(reader("B/X/"), "3");
    EXPECT_EQ(reader("A/Y/"), "2");
    EXPECT_EQ(reader("C/"), "4");
    EXPECT_EQ(reader("A/X/"), "1");
    EXPECT_EQ(reader.length, 0);
}

TEST(XmlLookup, SkipsElementsWithChildrenEmptyOnesAndComments) {
    Reader reader(
        Document("<Skip><X str=\"wrong\"/><Deep><X str=\"wrong\"/></Deep></Skip>\n<X2 str=\"wrong\"/>\n"
                 "<!-- <X str=\"wrong\"/> -->\n<?X str=\"wrong\"?>\n<X str=\"right\"/>"));
    EXPECT_EQ(reader("X/"), "right");
}

TEST(XmlLookup, AMissingKeyLeavesNothingAndTheNextLookupWorks) {
    Reader reader(Document("<A><X str=\"1\"/></A><B str=\"2\"/>"));
    EXPECT_EQ(reader("A/Z/"), "(none)");
    EXPECT_EQ(reader("Z/"), "(none)");
    EXPECT_EQ(reader("Z/X/"), "(none)");
    EXPECT_EQ(reader("A/X/"), "1");
    EXPECT_EQ(reader("B/"), "2");
}

TEST(XmlLookup, ATextIsTheValueOfAnElementWithoutAttributes) {
    Reader reader(Document("<A> \n leading &#38; trailing </A><B><X>inner</X></B>"));
    EXPECT_EQ(reader("A/"), " \n leading & trailing ");
    EXPECT_EQ(reader.length, 0);
    EXPECT_EQ(reader("B/X/"), "inner");
}

TEST(XmlLookup, SingleQuotesAreLegal) {
    Reader reader(Document("<A str='it is \"so\"'/>"));
    EXPECT_EQ(reader("A/"), "it is \"so\"");
}

TEST(XmlLookup, AnAmpersandStaysWithTheByteBehindIt) {
    Reader reader(Document("<A str=\"Tom & Jerry &amp; Co\"/>"));
    EXPECT_EQ(reader("A/"), "Tom & Jerry &amp; Co");
}

TEST(XmlLookup, ADocumentWithoutItsEndStillHasItsKeys) {
    Reader reader("<?xml version=\"1.0\"?>\n<quillon-xml version=\"1.0\">\n<A>\n<X str=\"1\"/>");
    EXPECT_EQ(reader("A/X/"), "1");
    EXPECT_EQ(reader("A/Y/"), "(none)");
}

TEST(XmlLookup, BinaryDataComesBackWithItsLength) {
    Reader reader(Document("<D len=\"8\" bin=\"04030201080706FF\"/>"));
    EXPECT_EQ(reader("D/"), std::string("\1\2\3\4\xFF\6\7\x08"));
    EXPECT_EQ(reader.length, 8);
}

TEST(XmlLookup, TheLengthIsWhatTheDocumentSaysNotWhatIsThere) {
    Reader reader(Document(
        "<A len=\"1000000\" bin=\"0102\"/><B len=\"-5\" bin=\"\"/><C len=\" 12x\" str=\"y\"/>"
        "<D len=\"99999999999\" str=\"y\"/><E len=\"2147483647\" str=\"y\"/><F len=\"\" str=\"\"/>"));
    EXPECT_EQ(reader("A/").size(), 2U);
    EXPECT_EQ(reader.length, 1'000'000);
    EXPECT_EQ(reader("B/"), "(null)");
    EXPECT_EQ(reader.length, -5);
    EXPECT_EQ(reader("C/"), "y");
    EXPECT_EQ(reader.length, 12);
    EXPECT_EQ(reader("D/"), "y");
    EXPECT_EQ(reader.length, 0);
    EXPECT_EQ(reader("E/"), "y");
    EXPECT_EQ(reader.length, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(reader("F/"), "");
    EXPECT_EQ(reader.length, 0);
}

TEST(XmlLookup, OfAttributesThatTellTheSameTheFirstHolds) {
    Reader reader(Document("<A str=\"text\" bin=\"31\"/><B bin=\"61626364\" str=\"text\"/>"
                           "<C str=\"one\" str=\"two\" len=\"1\" len=\"2\"/>"));
    EXPECT_EQ(reader("A/"), "text");
    EXPECT_EQ(reader("B/"), "dcba");
    EXPECT_EQ(reader("C/"), "one");
    EXPECT_EQ(reader.length, 1);
}

TEST(XmlLookup, AnElementWithNothingToTellIsStillFound) {
    Reader reader(Document("<A other=\"1\"/><B></B>"));
    EXPECT_EQ(reader("A/"), "(null)");
    EXPECT_EQ(reader("B/"), "(null)");
    Reader empty(Document("<A/> behind it"));
    EXPECT_EQ(empty("A/"), " behind it");
    Reader children(Document("<A><X str=\"1\"/></A>"));
    EXPECT_EQ(children("A/"), "(null)");
}

TEST(XmlLookup, CommentsMayStandBeforeATextValue) {
    Reader reader(Document("<A><!-- one --> two</A>"));
    EXPECT_EQ(reader("A/"), " two");
}

TEST(XmlLookup, OnlyTheFirstOfEqualSectionsIsEntered) {
    Reader reader(Document("<A><X str=\"1\"/></A><A><Y str=\"2\"/></A>"));
    EXPECT_EQ(reader("A/X/"), "1");
    EXPECT_EQ(reader("A/Y/"), "(none)");
}

TEST(XmlLookup, OfEqualKeysTheFirstHolds) {
    Reader reader(Document("<X str=\"1\"/><X str=\"2\"/><Y>one<!-- -->two</Y>"));
    EXPECT_EQ(reader("X/"), "1");
    EXPECT_EQ(reader("Y/"), "one");
}

TEST(XmlLookup, AKeyThatItsSectionLacksIsTakenFromTheFirstLevelBehind) {
    Reader reader(Document("<A><X str=\"1\"/></A><B><Y str=\"2\"/></B><Y str=\"3\"/>"));
    EXPECT_EQ(reader("A/Y/"), "3");
    Reader before(Document("<Y str=\"3\"/><A><X str=\"1\"/></A>"));
    EXPECT_EQ(before("A/Y/"), "(none)");
}

TEST(XmlLookup, AnEmptySectionIsReadOnAsIfItWereOpen) {
    Reader reader(Document("<A/><X str=\"1\"/>"));
    EXPECT_EQ(reader("A/X/"), "1");
}

TEST(XmlLookup, ASkippedElementEndsAtTheFirstEndTagOfItsName) {
    Reader reader(Document("<S><S><X str=\"in\"/></S><Y str=\"between\"/></S><Z str=\"behind\"/>"));
    EXPECT_EQ(reader("Y/"), "between");
    EXPECT_EQ(reader("Z/"), "(none)"); // the second </S> stands in the way
}

TEST(XmlLookup, AnEndTagOfALongerNameIsNotTheOne) {
    Reader reader(Document(
        "<S><S2></S2><X str=\"in\"/></S><X str=\"out\"/><T></T.x><X2 str=\"in\"/></T><X2 str=\"o\"/>"));
    EXPECT_EQ(reader("X/"), "out");
    EXPECT_EQ(reader("X2/"), "o");
}

TEST(XmlLookup, TheByteBehindTheNameOfASkippedEndTagIsPassed) {
    Reader reader(Document("<S></S ><X str=\"1\"/>"));
    EXPECT_EQ(reader("X/"), "1");
    Reader unclosed(Document("<S></S<X str=\"1\"/><X str=\"2\"/>")); // the byte passed is another's bracket
    EXPECT_EQ(unclosed("X/"), "2");
}

TEST(XmlLookup, ASectionThatIsNeverClosedHidesWhatFollows) {
    Reader reader(Document("<S><X str=\"1\"/></T><Y str=\"2\"/>"));
    EXPECT_EQ(reader("Y/"), "(none)");
    EXPECT_EQ(reader("S/X/"), "1");
}

TEST(XmlLookup, ARootWithinTheRootIsEnteredAndLeft) {
    Reader reader(Document("<quillon-xml><X str=\"in\"/></quillon-xml><quillon-xml/><Y str=\"behind\"/>"));
    EXPECT_EQ(reader("X/"), "in");
    EXPECT_EQ(reader("Y/"), "behind");
}

TEST(XmlLookup, AnotherRootIsSkipped) {
    Reader reader("<other><X str=\"1\"/></other>");
    EXPECT_EQ(reader("X/"), "(none)");
    Reader own("<other><X str=\"1\"/></other>", "other");
    EXPECT_EQ(own("X/"), "1");
}

TEST(XmlLookup, ADocumentWithoutARootIsReadAsItsContent) {
    Reader reader("<X str=\"1\"/><A><Y str=\"2\"/></A>");
    EXPECT_EQ(reader("X/"), "1");
    EXPECT_EQ(reader("A/Y/"), "2");
}

TEST(XmlLookup, AFailureHidesWhatStandsBehindItAlone) {
    Reader reader(Document("<A><X str=\"1\"/><X2 =/><Y str=\"2\"/></A><Z str=\"3\"/>"));
    EXPECT_EQ(reader("A/X/"), "1");
    EXPECT_EQ(reader("A/Y/"), "(none)");
    EXPECT_STREQ(reader.xml.GetErrorText(), "Name is not legal");
    EXPECT_EQ(reader("Z/"), "3"); // A is skipped unread
}

TEST(XmlLookup, ALongValueHidesWhatStandsBehindItUntilTheLimitIsRaised) {
    const std::string digits(2 * 20'000, '0');
    Reader reader(Document("<A><Data len=\"20000\" bin=\"" + digits + "\"/><N str=\"1\"/></A>"));
    EXPECT_EQ(reader("A/Data/"), "(none)");
    EXPECT_EQ(reader("A/N/"), "(none)");
    reader.xml.SetScratchSize(2 * 20'000 + 512);
    EXPECT_EQ(reader("A/Data/").size(), 20'000U);
    EXPECT_EQ(reader.length, 20'000);
    EXPECT_EQ(reader("A/N/"), "1");
    reader.xml.SetScratchSize(FxmlParser::kScratchSize);
    EXPECT_EQ(reader("A/N/"), "(none)");
}

TEST(XmlLookup, FlatFindsTheFirstElementOfADocument) {
    Reader reader(Document("<filename str=\"/tmp/a.wav\"/>\n<other str=\"1\"/>"));
    EXPECT_EQ(reader.Flat("filename/"), "/tmp/a.wav");
    EXPECT_EQ(reader.Flat("missing/"), "(none)");
}

TEST(XmlLookup, FlatEntersWhatItMeetsAndStopsAtItsEnd) {
    Reader inside(Document("<a><b><filename str=\"1\"/></b></a>"));
    EXPECT_EQ(inside.Flat("filename/"), "1");
    EXPECT_EQ(inside("filename/"), "(none)");
    Reader behind(Document("<a></a><filename str=\"1\"/>"));
    EXPECT_EQ(behind.Flat("filename/"), "(none)");
    EXPECT_EQ(behind("filename/"), "1");
    Reader passed(Document("<a/><b/><filename str=\"1\"/>"));
    EXPECT_EQ(passed.Flat("filename/"), "1");
}

TEST(XmlLookup, FlatFollowsAPathToo) {
    Reader reader(Document("<x/><A><y/><X str=\"1\"/></A>"));
    EXPECT_EQ(reader.Flat("A/X/"), "1");
    EXPECT_EQ(reader.Flat("A/Z/"), "(none)");
    EXPECT_EQ(reader.xml.GetErrorText(), nullptr); // it ended with the section, not by a failure
}

TEST(XmlLookup, WhatIsNoPathFindsNothing) {
    const std::string name(255, 'n');
    Reader reader(Document("<A><X str=\"1\"/></A><" + name + " str=\"2\"/><" + name + "n str=\"3\"/>"));
    for (const char* path : {"", "/", "/A/X/", "A", "A/X", "//"}) EXPECT_EQ(reader(path), "(none)") << path;
    EXPECT_EQ(reader(name + "/"), "2");
    EXPECT_EQ(reader(name + "n/"), "(none)");
    EXPECT_EQ(reader("A/" + name + "n/"), "(none)");
}

TEST(XmlLookup, TheValueStaysWhileTheWalkEnds) {
    Reader reader(Document("<quillon-xml><A>text</A></quillon-xml><B str=\"an other one\"/>"));
    EXPECT_EQ(reader("A/"), "text");
    Reader binary(Document(
        "<quillon-xml><A len=\"4\" bin=\"64636261\"/></quillon-xml><B len=\"4\" bin=\"00000000\"/>"));
    EXPECT_EQ(binary("A/"), "abcd");
}

// Lookups that remember what they passed answer as one that passes it for the first time.
TEST(XmlLookup, RemembersWhatItPassedWithoutAnotherAnswer) {
    constexpr std::uint32_t kSeed = 20240612;
    std::mt19937 random(kSeed);
    const std::vector<std::string> names = {"A", "B", "C", "quillon-xml"};
    const auto name = [&] { return names[random() % names.size()]; };
    for (int round = 0; round < 60; ++round) {
        std::string content;
        for (int i = 0; i < 60; ++i) {
            switch (random() % 5) {
            case 0:
                content += "<" + name() + ">";
                break;
            case 1:
                content += "</" + name() + ">";
                break;
            case 2:
                content += std::string(random() % 900, ' ');
                break;
            default:
                content += "<" + name() + " str=\"" + std::to_string(i) + "\"/>";
                break;
            }
        }
        Reader old(Document(content));
        for (int i = 0; i < 40; ++i) {
            std::string path = name() + "/";
            while (random() % 2 == 0) path += name() + "/";
            const bool flat = random() % 4 == 0;
            Reader fresh(old.text);
            ASSERT_EQ(old.Look(path, flat), fresh.Look(path, flat)) << path << "\n" << content;
        }
    }
}

// A load looks up key after key, the last ones behind all others.
TEST(XmlLookup, ThousandsOfKeysBehindManyMegabytesTakeNoTime) {
    const std::string digits(2 * 200'000, '5');
    std::string content = "<Snapshots>";
    for (int i = 0; i < 32; ++i) {
        const std::string section = "Snapshot_" + std::to_string(i);
        content += "<" + section + "><Name str=\"n\"/><Data len=\"200000\" bin=\"" + digits + "\"/></" +
                   section + ">";
    }
    Reader reader(Document(content + "</Snapshots><Last str=\"1\"/>"));
    const std::clock_t start = std::clock(); // the processor's time: others may be busy
    for (int i = 0; i < 32; ++i)
        for (int key = 0; key < 10; ++key)
            ASSERT_EQ(reader("Snapshots/Snapshot_" + std::to_string(i) + "/Name/"), "n");
    for (int i = 0; i < 3000; ++i) ASSERT_EQ(reader("Last/"), "1");
    // Some 50 ms; passing all again each time would be 40 GB of text, and take seconds.
    EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC);
}

} // namespace
} // namespace sonorelle
