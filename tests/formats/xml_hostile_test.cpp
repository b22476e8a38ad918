// Documents as they come from a damaged or foreign project: an answer each time, soon, and within bounds.

#include "formats/xml.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <pthread.h>

namespace sonorelle {
namespace {

constexpr const char* kPaths[] = {"FileSettings/AudioFileName/",
                                  "Snapshots/NumOfSnapshots/",
                                  "Snapshots/Snapshot_1/Data/",
                                  "Snapshots/Snapshot_1/Name/",
                                  "MixerSettings/Voice_3/Vol/",
                                  "Presets/Preset_1/Name/",
                                  "filename/"};

std::string WholeDocument() {
    std::vector<std::byte> data(64, std::byte{0x5A});
    CkvoXML writer(nullptr, 0, kXmlRootName);
    writer.BeginDocument(1.0F);
    writer.OpenTag("FileSettings");
    writer.WriteString("AudioFileName", "/home/me/a&#38;b.wav");
    writer.CloseTag("FileSettings");
    writer.OpenTag("Snapshots");
    writer.WriteString("NumOfSnapshots", "2");
    for (const char* section : {"Snapshot_0", "Snapshot_1"}) {
        writer.OpenTag(section);
        writer.WriteString("Name", "first &#x5a;");
        writer.WriteBinary("Data", data);
        writer.CloseTag(section);
    }
    writer.CloseTag("Snapshots");
    writer.OpenTag("MixerSettings");
    writer.OpenTag("Voice_3");
    writer.WriteString("Vol", "0.50000000");
    writer.CloseTag("Voice_3");
    writer.CloseTag("MixerSettings");
    std::string document;
    writer.EndDocument(document);
    return document;
}

// In memory that ends where the text ends.
int FoundIn(std::string_view document, std::span<const char* const> paths = kPaths) {
    const auto exact = std::make_unique<char[]>(document.size());
    std::copy(document.begin(), document.end(), exact.get());
    // A length of 0 would mean a text that ends with a zero byte.
    CkvoXML reader(document.empty() ? nullptr : exact.get(), static_cast<std::int64_t>(document.size()),
                   kXmlRootName);
    int found = 0;
    for (const char* path : paths)
        for (const bool flat : {false, true}) {
            std::string_view value;
            std::int32_t length = 0;
            const bool isThere =
                flat ? reader.FindFlat(path, value, length) : reader.Find(path, value, length);
            found += isThere ? 1 : 0;
            EXPECT_LE(value.size(), document.size());
            EXPECT_EQ(std::string(value).size(), value.size()); // every byte can be read
        }
    return found;
}

// Two lookups in a thread with little room for calls. A second for each megabyte and lookup is far more than
// the 50 ms or so that they take, and far less than what grows with the square of the length.
void ExpectQuick(const std::string& document) {
    std::string_view text = document;
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    constexpr std::size_t kStackBytes = 256 * 1024;
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStackBytes), 0);
    const auto look = [](void* argument) -> void* {
        constexpr const char* kOnePath[] = {"Snapshots/Snapshot_1/Data/"};
        FoundIn(*static_cast<std::string_view*>(argument), kOnePath);
        return nullptr;
    };
    const std::clock_t start = std::clock(); // the processor's time: others may be busy
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, look, &text), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    EXPECT_LT(seconds, 2 * std::max(1.0, static_cast<double>(document.size()) / 1e6));
}

std::string Repeated(std::string_view piece, int times) {
    std::string text;
    text.reserve(piece.size() * static_cast<std::size_t>(times));
    for (int i = 0; i < times; ++i) text += piece;
    return text;
}

TEST(XmlHostile, ADocumentMayBeCutOffAnywhere) {
    const std::string whole = WholeDocument();
    ASSERT_GE(FoundIn(whole), 5);
    int before = 0;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const int found = FoundIn(std::string_view(whole).substr(0, length));
        EXPECT_GE(found, before) << length; // what was whole stays there
        before = found;
    }
}

TEST(XmlHostile, AnyByteMayBeAnother) {
    const std::string whole = WholeDocument();
    for (std::size_t at = 0; at < whole.size(); ++at)
        for (const char other : {'\0', '<', '>', '"', '&', '/', '\xFF', ' ', ']'}) {
            std::string changed = whole;
            changed[at] = other;
            FoundIn(changed);
        }
}

TEST(XmlHostile, MarkupInAnyOrder) {
    constexpr std::uint32_t kSeed = 20240613;
    std::mt19937 random(kSeed);
    const std::string_view pieces[] = {"<",
                                       ">",
                                       "</",
                                       "/>",
                                       "<!--",
                                       "-->",
                                       "<?",
                                       "?>",
                                       "\"",
                                       "'",
                                       "=",
                                       "&",
                                       "&#",
                                       ";",
                                       "]]>",
                                       "x",
                                       " ",
                                       "str",
                                       "bin",
                                       "len",
                                       "9f",
                                       "\n",
                                       "<quillon-xml>",
                                       "</quillon-xml>",
                                       "filename",
                                       "Snapshots",
                                       std::string_view("\0", 1)};
    for (int round = 0; round < 4000; ++round) {
        std::string text;
        for (std::uint32_t count = random() % 60; count > 0; --count)
            text += pieces[random() % std::size(pieces)];
        FoundIn(text);
    }
}

TEST(XmlHostile, RandomBytesAndForeignEncodings) {
    constexpr std::uint32_t kSeed = 20240614;
    std::mt19937 random(kSeed);
    std::string noise(200'000, 0);
    for (char& byte : noise) byte = static_cast<char>(random());
    EXPECT_EQ(FoundIn(noise), 0);
    const std::string whole = WholeDocument();
    std::string wide = "\xFF\xFE";
    for (const char byte : whole) (wide += byte) += '\0';
    EXPECT_EQ(FoundIn(wide), 0);
    EXPECT_EQ(FoundIn("\xEF\xBB\xBF" + whole), FoundIn(whole)); // a byte order mark counts as a text
}

TEST(XmlHostile, AMillionElementsWithinEachOther) {
    ExpectQuick(Repeated("<quillon-xml>", 1'000'000));
    ExpectQuick(Repeated("<a>", 1'000'000));
    ExpectQuick("<quillon-xml>" + Repeated("<filename>", 300'000));
    ExpectQuick(Repeated("<a><quillon-xml>", 300'000));
}

TEST(XmlHostile, AMillionElementsBesideEachOther) {
    ExpectQuick("<quillon-xml>" + Repeated("<a/>", 1'000'000));
    ExpectQuick("<quillon-xml>" + Repeated("<a></a>", 300'000));
    ExpectQuick("<quillon-xml>" + Repeated("<quillon-xml></quillon-xml>", 300'000));
}

TEST(XmlHostile, EndTagsThatAreNearlyTheRightOne) {
    const std::string name(32'000, 'n');
    ExpectQuick("<quillon-xml><" + name + ">" + Repeated("</" + name.substr(1) + ">", 60));
    ExpectQuick("<quillon-xml><nn>" + Repeated("</n", 1'000'000));
    ExpectQuick("<quillon-xml><n>" + Repeated("</", 1'000'000));
}

TEST(XmlHostile, EndlessTextsValuesAndReferences) {
    const std::string huge(2'000'000, 'x');
    for (const char* opening : {"", "<", "<a ", "<a b=\"", "<!--", "<?", "</", "<a>", "<quillon-xml str=\""})
        ExpectQuick(opening + huge);
    ExpectQuick("<a b=\"" + Repeated("&#65;", 300'000));
    ExpectQuick("<a b=\"&#" + Repeated("9", 1'000'000) + ";\"/>");
    ExpectQuick("<a b=\"&#x" + Repeated("f", 1'000'000) + ";\"/>");
    ExpectQuick(Repeated("]]>", 300'000));
    ExpectQuick(Repeated(" ", 1'000'000));
    ExpectQuick(Repeated("<!---->", 500'000));
    ExpectQuick(Repeated("<!---->", 500'000) + "<!--");
    ExpectQuick(Repeated(" <", 300'000));
}

TEST(XmlHostile, AHugeLimitTakesNoMemoryByItself) {
    const std::string whole = WholeDocument();
    CkvoXML reader(whole.data(), static_cast<std::int64_t>(whole.size()), kXmlRootName);
    reader.SetScratchSize(std::numeric_limits<std::int32_t>::max());
    std::string_view value;
    std::int32_t length = 0;
    ASSERT_TRUE(reader.Find("Snapshots/Snapshot_1/Data/", value, length));
    EXPECT_EQ(value, std::string(64, 'Z'));
    EXPECT_EQ(length, 64);
}

TEST(XmlHostile, SixtyFourMegabytesAreRefusedInTime) {
    std::string document = "<quillon-xml><FileSettings><AudioFileName str=\"";
    document.resize(61'000'000, 'a');
    ExpectQuick(document);
    std::fill(document.begin() + 100, document.end(), '<');
    ExpectQuick(document);
}

} // namespace
} // namespace sonorelle
