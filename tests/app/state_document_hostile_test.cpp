#include "app/state_document.h"

#include "app/saved_state_samples.h"
#include "support/sanitizer_share.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <random>
#include <string>
#include <string_view>

namespace sonorelle {
namespace {

using test::InSanitizerShare;
using test::SanitizerShare;
using test::SavedStateSample;
using test::UnderSanitizer;

// What must hold for whatever was read: nothing that a restore could not take as it is.
void ExpectSane(const SavedState& state, std::size_t documentBytes) {
    if (state.stop != SavedState::Stop::kNone) {
        EXPECT_FALSE(state.snapshots.has_value());
        EXPECT_EQ(state.mixer, SavedVoices());
        EXPECT_TRUE(state.presets.empty());
    }
    EXPECT_LE(state.presets.size(), static_cast<std::size_t>(kPresetCount));
    for (const SavedVoice& voice : state.mixer) {
        EXPECT_TRUE(voice.vol.value_or(0) >= 0 && voice.vol.value_or(0) <= 1.334F);
        EXPECT_TRUE(voice.formantShift.value_or(1) > 0.6F && voice.formantShift.value_or(1) < 1.6F);
    }
    if (!state.snapshots) return;
    EXPECT_LE(state.snapshots->records.size(), static_cast<std::size_t>(SavedSnapshots::kMostRecords));
    EXPECT_LE(static_cast<std::size_t>(state.snapshots->noteCapacity.value_or(0)), documentBytes);
    std::size_t bytes = 0;
    for (const SavedSnapshot& record : state.snapshots->records)
        bytes += record.data.size() + 4 * (record.sizes ? record.sizes->size() : 0);
    EXPECT_LE(bytes, documentBytes);
}

// All readers, on a copy without a byte behind its end.
SavedState ReadAll(std::string_view document) {
    const auto copy = std::make_unique<char[]>(document.size());
    if (!document.empty()) std::memcpy(copy.get(), document.data(), document.size());
    const std::string_view text(copy.get(), document.size());
    SavedState state = test::ReadSaved(text);
    ExpectSane(state, text.size());
    EXPECT_EQ(ReadAudioFileName(text), state.fileSettings.audioFileName);
    ReadProgram(text);
    ReadDroppedFileName(text);
    return state;
}

double SecondsToRead(const std::string& document) {
    const auto start = std::chrono::steady_clock::now();
    ReadAll(document);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Every key once, but for what a loop over bytes would repeat.
std::string SmallDocument() {
    SavedState state = SavedStateSample();
    state.snapshots->records.erase(state.snapshots->records.begin());
    state.presets.pop_back();
    return WriteState(state);
}

// A value is taken when its element is met: what is cut off behind it does not matter.
// Every byte of a document is cut, changed and left out in its turn.
const std::size_t kBytesToTheNext = UnderSanitizer() ? 11 : 1;

TEST(StateDocumentHostile, CutOffAtEveryLengthItKeepsWhatIsWhole) {
    const std::string document = SmallDocument();
    const SavedState whole = test::ReadSaved(document);
    const std::size_t settingsEnd = document.find("</FileSettings>");
    const std::size_t recordEnd = document.find("</Snapshot_0>");
    for (std::size_t length = 0; length <= document.size(); length += kBytesToTheNext) {
        const SavedState read = ReadAll(std::string_view(document).substr(0, length));
        if (length >= settingsEnd) {
            ASSERT_EQ(read.fileSettings, whole.fileSettings) << length;
        }
        if (length >= recordEnd) {
            ASSERT_EQ(read.snapshots, whole.snapshots) << length;
        }
        if (HasFailure()) FAIL() << "cut off at " << length;
    }
    EXPECT_EQ(ReadAll(document), whole);
}

TEST(StateDocumentHostile, EachByteChangedIsReadWithoutHarm) {
    const std::string document = SmallDocument();
    for (std::size_t at = 0; at < document.size(); at += kBytesToTheNext)
        for (const char byte : {'\0', '<', '9'}) {
            std::string changed = document;
            changed[at] = byte;
            ReadAll(changed);
            if (HasFailure()) FAIL() << "byte " << at << " is " << static_cast<int>(byte);
        }
}

TEST(StateDocumentHostile, EachByteLeftOutOrDoubledIsReadWithoutHarm) {
    const std::string document = SmallDocument();
    for (std::size_t at = 0; at < document.size(); at += kBytesToTheNext) {
        ReadAll(std::string(document).erase(at, 1));
        ReadAll(std::string(document).insert(at, 1, document[at]));
        if (HasFailure()) FAIL() << "byte " << at;
    }
}

TEST(StateDocumentHostile, RandomBytesAreNoDocument) {
    std::mt19937 random(11);
    for (int round = 0; round < 200; ++round) {
        std::string text(random() % 3000, '\0');
        for (char& byte : text) byte = static_cast<char>(random());
        EXPECT_EQ(ReadAll(text), SavedState()) << "seed 11, round " << round;
    }
}

TEST(StateDocumentHostile, RandomPiecesOfADocumentAreReadWithoutHarm) {
    const std::string document = SmallDocument();
    std::mt19937 random(12);
    const auto below = [&](std::size_t count) { return random() % count; };
    for (int round = 0; round < SanitizerShare(300); ++round) {
        std::string text = document;
        for (std::size_t move = below(6) + 1; move > 0; --move) {
            const std::size_t from = below(document.size());
            text.insert(below(text.size()), document, from, below(200));
            text.erase(below(text.size()), below(50));
        }
        ReadAll(text);
        if (HasFailure()) FAIL() << "seed 12, round " << round;
    }
}

TEST(StateDocumentHostile, RandomNumbersInEveryKeyAreReadWithoutHarm) {
    constexpr std::string_view kNumbers[] = {
        "-1",     "0",   "2147483647", "-2147483648",          "2147483648", "1e308",
        "-1e308", "nan", "inf",        "99999999999999999999", "",           "0x10"};
    const std::string document = SmallDocument();
    int turn = 0;
    for (std::size_t at = document.find("str=\""); at != std::string::npos;
         at = document.find("str=\"", at + 1))
        for (const std::string_view number : kNumbers) {
            if (!InSanitizerShare(turn++, 5)) continue; // which is no divisor of the number of numbers
            const std::size_t start = at + 5;
            ReadAll(std::string(document).replace(start, document.find('"', start) - start, number));
            if (HasFailure()) FAIL() << "at " << at << ": " << number;
        }
}

std::string Repeated(std::string_view piece, std::size_t times) {
    std::string text;
    text.reserve(piece.size() * times);
    for (std::size_t i = 0; i < times; ++i) text += piece;
    return text;
}

constexpr std::string_view kPath =
    "<quillon-xml><FileSettings><AudioFileName str=\"/a.wav\"/></FileSettings>";

// What each costs is a walk for each of some four hundred keys, whatever they hold; a second a megabyte for
// each of them would be the most that is bearable, and this is less by three orders. A build with sanitizers
// takes several times as long.
constexpr double kMostSeconds = 20;

TEST(StateDocumentHostile, NestedAMillionDeepItEnds) {
    const auto depth = SanitizerShare<std::size_t>(1'000'000, 10);
    const std::string deep = Repeated("<a>", depth);
    EXPECT_EQ(ReadAll("<quillon-xml>" + deep), SavedState());
    EXPECT_EQ(ReadAll(Repeated("<quillon-xml>", depth)), SavedState());
    EXPECT_EQ(ReadAll(Repeated("<FileSettings>", depth / 2)), SavedState());
    EXPECT_LT(SecondsToRead(std::string(kPath) + deep), kMostSeconds);
}

TEST(StateDocumentHostile, ManySmallSnapshotsTakeNoTimeThatGrowsWithTheirSquare) {
    const int count = SanitizerShare(50'000);
    std::string document(kPath);
    document += "<Snapshots><NumOfSnapshots str=\"" + std::to_string(count) + "\"/>";
    for (int i = 0; i < count; ++i) {
        const std::string name = "Snapshot_" + std::to_string(i);
        document += "<" + name + "><Data len=\"0\" bin=\"\"/></" + name + ">";
    }
    EXPECT_LT(SecondsToRead(document), kMostSeconds);
}

TEST(StateDocumentHostile, EntitiesWithoutEndEnd) {
    for (const std::string_view entity : {"&", "&#", "&#x", "&#1", "&#xf"}) {
        const std::string text = Repeated(entity, 300'000);
        EXPECT_EQ(ReadAll("<quillon-xml><FileSettings><AudioFileName str=\"" + text), SavedState());
        EXPECT_EQ(ReadAll("<quillon-xml>" + text), SavedState());
    }
}

TEST(StateDocumentHostile, AMegabyteOfAnythingIsReadInTime) {
    for (const std::string_view piece :
         {"<", "</", "<!", "<!--", "<?", "a ", "<a/>", "<a b=\"c\"/>", "</a>", "\"", "]]>", "<a></a>"}) {
        const std::string text =
            std::string(kPath) + Repeated(piece, SanitizerShare<std::size_t>(1'000'000, 10) / piece.size());
        EXPECT_LT(SecondsToRead(text), kMostSeconds) << piece;
    }
}

TEST(StateDocumentHostile, ALongDocumentWithoutAPathIsGivenUpAtOnce) {
    std::string text(64 << 20, ' ');
    EXPECT_EQ(test::ReadSaved(text), SavedState());
    std::memcpy(text.data(), "<quillon-xml>", 13);
    EXPECT_EQ(test::ReadSaved(text), SavedState());
    EXPECT_EQ(ReadProgram("<quillon-xml>"), SavedPreset());
}

} // namespace
} // namespace sonorelle
