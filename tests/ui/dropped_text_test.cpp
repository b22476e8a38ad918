#include "ui/dropped_text.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace sonorelle {
namespace {

TEST(DroppedText, AddressOfAFileGivesItsPath) {
    EXPECT_EQ(TextOfDrop("file:///home/ann/song.wav\r\n"), "/home/ann/song.wav");
}

TEST(DroppedText, PercentCodesAreDecoded) {
    EXPECT_EQ(TextOfDrop("file:///home/ann/My%20Song%20%C3%A4%2b%2B.wav"),
              "/home/ann/My Song \xC3\xA4++.wav");
}

TEST(DroppedText, PercentSignWithoutACodeStandsForItself) {
    EXPECT_EQ(TextOfDrop("file:///a/100%"), "/a/100%");
    EXPECT_EQ(TextOfDrop("file:///a/100%4"), "/a/100%4");
    EXPECT_EQ(TextOfDrop("file:///a/100%zz"), "/a/100%zz");
    EXPECT_EQ(TextOfDrop("file:///a/%41"), "/a/A");
}

TEST(DroppedText, NameOfAMachineIsPassedOver) {
    EXPECT_EQ(TextOfDrop("file://localhost/home/ann/song.wav"), "/home/ann/song.wav");
    EXPECT_EQ(TextOfDrop("file:/home/ann/song.wav"), "/home/ann/song.wav");
}

TEST(DroppedText, FirstFileOfAListCounts) {
    EXPECT_EQ(TextOfDrop("# files\r\nfile:///a.wav\r\nfile:///b.wav\r\n"), "/a.wav");
}

TEST(DroppedText, PlainPathLosesItsLineEnd) {
    EXPECT_EQ(TextOfDrop("/home/ann/My Song.wav\n"), "/home/ann/My Song.wav");
}

TEST(DroppedText, PathIsNotDecodedWithoutItsScheme) { EXPECT_EQ(TextOfDrop("/a%20b.wav"), "/a%20b.wav"); }

TEST(DroppedText, DocumentStandsAsItIs) {
    const std::string document = "  <?xml version=\"1.0\"?>\r\n<quillon-xml>\r\n</quillon-xml>\r\n";
    EXPECT_EQ(TextOfDrop(document), document);
}

TEST(DroppedText, NothingUsefulGivesNothing) {
    EXPECT_EQ(TextOfDrop(""), "");
    EXPECT_EQ(TextOfDrop("\r\n\r\n"), "");
    EXPECT_EQ(TextOfDrop("file://host"), "");
    EXPECT_EQ(TextOfDrop("file:relative.wav"), "");
}

TEST(DroppedText, PathWithAZeroInItIsNone) { EXPECT_EQ(TextOfDrop("file:///a%00b.wav"), ""); }

TEST(DroppedText, AddressesComeBackAsTheSamePath) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        std::string path = "/";
        for (int i = 0; i < 20; ++i) path += static_cast<char>(1 + random() % 255);
        const std::string address = AddressOfFile(path);
        EXPECT_EQ(address.find_first_of(" \r\n#"), std::string::npos) << "round " << round;
        EXPECT_EQ(TextOfDrop(address + "\r\n"), path) << "round " << round;
    }
}

} // namespace
} // namespace sonorelle
