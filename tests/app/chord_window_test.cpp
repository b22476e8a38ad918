#include "app/chord_window.h"

#include "harmony/chord_record.h"

#include <gtest/gtest.h>

#include <array>

namespace sonorelle {
namespace {

TEST(ChordWindow, ATimeMayHaveItsBarBelow) {
    CkvoChordDisplayWin window;
    window.ShowTimeAndBeat(44100, 44100, {3, 2, 17});
    EXPECT_EQ(window.text, "0:01.000\n3.2.17");
    window.ShowTime(44100, 44100);
    EXPECT_EQ(window.text, "0:01.000");
}

TEST(ChordWindow, AChordStandsUnderItsHeading) {
    CkvoChordDisplayWin window;
    window.ShowChord("Eb M7");
    EXPECT_EQ(window.text, "@s-8@y+6 chord:@s0\n@y+3 Eb M7");
    window.ShowChord("");
    EXPECT_EQ(window.text, "@s-8@y+6 chord:@s0\n@y+3 --");
}

TEST(ChordWindow, EachTypeHasItsName) {
    const std::array<const char*, 14> names = {"A",    "a",   "a dim",  "A aug",  "--",    "--", "A M7",
                                               "a m7", "A 7", "a m7b5", "a dim7", "a mM7", "--", ""};
    for (std::size_t type = 0; type < names.size(); ++type) {
        EXPECT_EQ(ChordDisplayName(9, static_cast<std::int32_t>(type), false), names[type]) << type;
    }
    EXPECT_EQ(ChordDisplayName(10, ConsortierClassic::kMinorTriad, true), "bb");
    EXPECT_EQ(ChordDisplayName(10, ConsortierClassic::kMinorTriad, false), "a#");
    for (const std::int32_t type : {-1, 14, 1 << 30}) EXPECT_EQ(ChordDisplayName(0, type, false), "") << type;
}

} // namespace
} // namespace sonorelle
