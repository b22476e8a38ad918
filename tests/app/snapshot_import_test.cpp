#include "app/snapshot_store.h"

#include "app/snapshot_memory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace sonorelle {
namespace {

using testing::ElementsAre;

constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();

bool Import(CSnapshotStore& store, const std::string& data, float fileVersion) {
    return store.ImportSnapshot("read", data.data(), static_cast<std::int32_t>(data.size()), fileVersion,
                                nullptr, 0);
}

bool Import(CSnapshotStore& store, const std::string& data, float fileVersion,
            const std::vector<std::int32_t>& sizes) {
    static constexpr std::int32_t kNone = 0;
    return store.ImportSnapshot("read", data.data(), static_cast<std::int32_t>(data.size()), fileVersion,
                                sizes.empty() ? &kNone : sizes.data(),
                                static_cast<std::int32_t>(sizes.size()));
}

// What a conversion was called with; it writes every byte twice, as capitals.
struct Doubling {
    int calls = 0;
    std::string oldData;
    std::int32_t newSize = 0;
    float oldVersion = 0.0F;
    float newVersion = 0.0F;
    std::int32_t answer = -2; // -2: the bytes written

    static std::int32_t Convert(const void* oldData, std::int32_t oldSize, float oldVersion, void* newData,
                                std::int32_t newSize, float newVersion, void* context) {
        auto& self = *static_cast<Doubling*>(context);
        ++self.calls;
        self.oldData.assign(static_cast<const char*>(oldData), static_cast<std::size_t>(oldSize));
        self.newSize = newSize;
        self.oldVersion = oldVersion;
        self.newVersion = newVersion;
        const std::int32_t pairs = std::min(oldSize, newSize / 2);
        for (std::int32_t i = 0; i < 2 * pairs; ++i)
            static_cast<char*>(newData)[i] =
                static_cast<char>(self.oldData[static_cast<std::size_t>(i / 2)] - 32);
        return self.answer == -2 ? 2 * pairs : self.answer;
    }
};

// Elements of all three versions, a placeholder and a chord array that is converted from it, and a row that a
// split has added: "aa" and "bb" are of 1.0, the placeholder of 2 bytes behind them, "cccc" are the chords
// (1.1), "dd" is of 1.2, "ee" of the second sequence.
class CSnapshotImport : public testing::Test {
protected:
    CSnapshotImport() {
        a.Put("aa");
        b.Put("bb");
        chords.Put("cccc");
        d.Put("dd");
        e.Put("ee");
        store.AddElement(a.Data(), 2, 1.0F);
        store.AddElement(d.Data(), 2, 1.2F);
        store.AddElement(b.Data(), 2, 1.0F);
        const std::int32_t from = store.AddElement(nullptr, 2, 1.0F, false);
        const std::int32_t to = store.AddElement(chords.Data(), 4, 1.1F);
        store.SetConversion(from, to, Doubling::Convert, &doubling);
        store.AddElement(e.Data(), 2, 10001.1F);
    }
    bool GuardsHold() const {
        return a.GuardsHold() && b.GuardsHold() && chords.GuardsHold() && d.GuardsHold() && e.GuardsHold();
    }

    CGuardedPiece a{2}, b{2}, chords{4}, d{2}, e{2};
    Doubling doubling;
    CSnapshotStore store;
};

TEST_F(CSnapshotImport, WhatWasSavedIsReadBackToTheByte) {
    store.AddSnapshot("saved");
    EXPECT_EQ(Bytes(store, 0), "aabbccccddee");
    ASSERT_TRUE(Import(store, Bytes(store, 0), 1.2F, Sizes(store, 0)));
    EXPECT_EQ(store.GetSnapshotName(1), "read");
    EXPECT_EQ(Bytes(store, 1), Bytes(store, 0));
    EXPECT_EQ(Sizes(store, 1), Sizes(store, 0));
    for (CGuardedPiece* piece : {&a, &b, &chords, &d, &e})
        piece->Put(std::string(piece->Content().size(), '-'));
    ASSERT_TRUE(store.RecallSnapshot(1));
    EXPECT_EQ(a.Content() + b.Content() + chords.Content() + d.Content() + e.Content(), "aabbccccddee");
    EXPECT_EQ(doubling.calls, 0);
}

TEST_F(CSnapshotImport, DocumentOfVersion1FillsChordsByConversionAndKeepsNewerElements) {
    ASSERT_TRUE(Import(store, "AABBxy", 1.0F));
    EXPECT_EQ(Bytes(store, 0), "AABBXXYYddee");
    EXPECT_THAT(Sizes(store, 0), ElementsAre(2, 2, 2, 4, 2, 2));
    EXPECT_EQ(doubling.calls, 1);
    EXPECT_EQ(doubling.oldData, "xy");
    EXPECT_EQ(doubling.newSize, 4);
    EXPECT_EQ(doubling.oldVersion, 1.0F);
    EXPECT_EQ(doubling.newVersion, 1.1F);
    EXPECT_EQ(chords.Content(), "cccc") << "an import touches no owner's memory";
    ASSERT_TRUE(store.RecallSnapshot(0));
    EXPECT_EQ(a.Content() + b.Content() + chords.Content() + d.Content() + e.Content(), "AABBXXYYddee");
    EXPECT_TRUE(GuardsHold());
}

TEST_F(CSnapshotImport, DocumentOfVersion1WithASizeListIsConvertedAlike) {
    ASSERT_TRUE(Import(store, "AABBxy", 1.0F, {2, 2, 2}));
    EXPECT_EQ(Bytes(store, 0), "AABBXXYYddee");
}

TEST_F(CSnapshotImport, DocumentOfVersion1Point1NeedsNoConversion) {
    ASSERT_TRUE(Import(store, "AABBCCCCEE", 1.1F));
    EXPECT_EQ(Bytes(store, 0), "AABBCCCCddEE");
    EXPECT_EQ(doubling.calls, 0);
}

TEST_F(CSnapshotImport, SizeListIsWalkedWithTheElementsThatTheDocumentKnew) {
    // The document's last row stands one place earlier in its list than the row of today: 1.2 has come in
    // between.
    ASSERT_TRUE(Import(store, "AABBCCCCEE", 1.1F, {2, 2, 2, 4, 2}));
    EXPECT_EQ(Bytes(store, 0), "AABBCCCCddEE");
}

TEST_F(CSnapshotImport, SmallerElementsOfADocumentFillTheStartAndZerosTheRest) {
    ASSERT_TRUE(Import(store, "AABBCCCdddEE", 1.2F, {2, 2, 2, 3, 2, 2}));
    EXPECT_EQ(Bytes(store, 0), std::string("AABBCCC\0ddd", 11) + "E");
    EXPECT_THAT(Sizes(store, 0), ElementsAre(2, 2, 2, 4, 2, 2)) << "sizes are those of today";
}

TEST_F(CSnapshotImport, ElementsBeyondTheSizeListAreZeros) {
    ASSERT_TRUE(Import(store, "AABB", 1.2F, {2, 2}));
    EXPECT_EQ(Bytes(store, 0), "AABB" + std::string(8, '\0'));
    ASSERT_TRUE(Import(store, "", 1.2F, {}));
    EXPECT_EQ(Bytes(store, 1), std::string(12, '\0'));
}

TEST_F(CSnapshotImport, WhatLiesBehindTheLastElementIsPassedOver) {
    ASSERT_TRUE(Import(store, "AABBCCCCDDEEmore", 1.2F, {2, 2, 2, 4, 2, 2, 4, -1, kHighest}));
    EXPECT_EQ(Bytes(store, 0), "AABBCCCCDDEE");
    EXPECT_EQ(store.GetSizeCount(0), 6);
    ASSERT_TRUE(Import(store, "AABBCCCCDDEEmore", 1.2F));
    EXPECT_EQ(Bytes(store, 1), "AABBCCCCDDEE");
}

TEST_F(CSnapshotImport, GrownArraysTakeADocumentOfTheSmallerOnes) {
    CGuardedPiece larger(8);
    larger.Put("12345678");
    store.ReplaceElement(chords.Data(), 4, larger.Data(), 8);
    ASSERT_TRUE(Import(store, "AABBCCCCDDEE", 1.2F, {2, 2, 2, 4, 2, 2}));
    EXPECT_EQ(Bytes(store, 0), "AABBCCCC" + std::string(4, '\0') + "DDEE");
    EXPECT_EQ(store.GetSnapshotSize(0), store.GetTotalSize());
}

TEST_F(CSnapshotImport, ConversionThatFillsLessLeavesTheRestOfTheMemory) {
    CGuardedPiece larger(8);
    larger.Put("12345678");
    store.ReplaceElement(chords.Data(), 4, larger.Data(), 8);
    ASSERT_TRUE(Import(store, "AABBxy", 1.0F));
    EXPECT_EQ(doubling.newSize, 8);
    EXPECT_EQ(Bytes(store, 0), "AABBXXYYddee");
    EXPECT_THAT(Sizes(store, 0), ElementsAre(2, 2, 2, 4, 2, 2)) << "the size of the converted data";
    ASSERT_TRUE(store.RecallSnapshot(0));
    EXPECT_EQ(larger.Content(), "XXYY5678");
    EXPECT_EQ(d.Content() + e.Content(), "ddee");
    EXPECT_EQ(store.GetElement(3)->size, 8) << "the owner's memory is as large as before";
}

TEST_F(CSnapshotImport, ConversionWithAnImpossibleAnswerIsRefused) {
    for (const std::int32_t answer : {5, kHighest, -1, kLowest}) {
        doubling.answer = answer;
        EXPECT_FALSE(Import(store, "AABBxy", 1.0F)) << answer;
    }
    EXPECT_EQ(store.GetSnapshotCount(), 0);
}

TEST_F(CSnapshotImport, ConversionNeedsExactlyTheOldVersion) {
    ASSERT_TRUE(Import(store, "", 0.5F)) << "a document that knew no element";
    EXPECT_EQ(Bytes(store, 0), "aabbccccddee");
    ASSERT_TRUE(Import(store, "AABB", 1.05F)) << "the placeholder has no bytes in it";
    EXPECT_EQ(Bytes(store, 1), "AABBccccddee");
    EXPECT_EQ(doubling.calls, 0);
}

TEST(CSnapshotStore, StoreOfTheOldVersionDoesNotConvert) {
    std::array<char, 2> now = {'n', 'n'};
    Doubling doubling;
    CSnapshotStore store(1.0F);
    const std::int32_t from = store.AddElement(nullptr, 1, 1.0F, false);
    const std::int32_t to = store.AddElement(now.data(), 2, 1.1F);
    store.SetConversion(from, to, Doubling::Convert, &doubling);
    ASSERT_TRUE(Import(store, "x", 1.0F));
    EXPECT_EQ(doubling.calls, 0);
    EXPECT_EQ(Bytes(store, 0), "nn");
}

TEST(CSnapshotStore, ConversionSurvivesElementsThatComeInBetween) {
    std::array<char, 2> now = {'n', 'n'};
    std::array<char, 3> early = {'1', '2', '3'};
    Doubling doubling;
    CSnapshotStore store;
    const std::int32_t from = store.AddElement(nullptr, 1, 1.0F, false);
    const std::int32_t to = store.AddElement(now.data(), 2, 1.1F);
    store.SetConversion(from, to, Doubling::Convert, &doubling);
    for (char& letter : early) store.AddElement(&letter, 1, 0.9F);
    ASSERT_TRUE(Import(store, "456x", 1.0F));
    EXPECT_EQ(Bytes(store, 0), "456XX");
}

TEST(CSnapshotStore, ConvertedElementIsNotReadASecondTime) {
    std::array<char, 2> now = {'n', 'n'};
    char behind = 'b';
    Doubling doubling;
    CSnapshotStore store;
    const std::int32_t from = store.AddElement(nullptr, 1, 1.0F, false);
    const std::int32_t to = store.AddElement(now.data(), 2, 1.0F); // of a version that the document knew
    store.AddElement(&behind, 1, 1.0F);
    store.SetConversion(from, to, Doubling::Convert, &doubling);
    ASSERT_TRUE(Import(store, "xB", 1.0F));
    EXPECT_EQ(Bytes(store, 0), "XXB");
}

TEST(CSnapshotStore, ConversionsOfBadIndexesAreIgnored) {
    char letter = 'a';
    Doubling doubling;
    CSnapshotStore store;
    store.AddElement(nullptr, 1, 1.0F, false);
    store.AddElement(&letter, 1, 1.1F);
    for (const std::int32_t bad : {kLowest, -1, 2, kHighest}) {
        store.SetConversion(bad, 1, Doubling::Convert, &doubling);
        store.SetConversion(0, bad, Doubling::Convert, &doubling);
    }
    store.SetConversion(0, 1, nullptr, &doubling);
    ASSERT_TRUE(Import(store, "x", 1.0F));
    EXPECT_EQ(doubling.calls, 0);
    EXPECT_EQ(Bytes(store, 0), "a");
}

TEST_F(CSnapshotImport, DocumentOfVersion1Point3IsRefused) {
    EXPECT_FALSE(store.CanImport(1.3F));
    EXPECT_FALSE(Import(store, "AABBCCCCDDEE", 1.3F, {2, 2, 2, 4, 2, 2}));
    EXPECT_EQ(store.GetSnapshotCount(), 0);
}

TEST_F(CSnapshotImport, VersionsAreComparedInWholeThousandths) {
    for (const float readable : {-1.0F, 0.0F, 1.0F, 1.1F, 1.199F, 1.2F, 1.2004F})
        EXPECT_TRUE(store.CanImport(readable));
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float newer :
         {1.201F, 1.3F, 2.0F, 10001.0F, infinity, std::numeric_limits<float>::quiet_NaN()})
        EXPECT_FALSE(store.CanImport(newer)) << newer;
}

TEST_F(CSnapshotImport, ImportAtTheLimitDoesNothing) {
    for (int i = 0; i < 32; ++i) store.AddSnapshot(std::to_string(i));
    EXPECT_FALSE(Import(store, "AABBCCCCDDEE", 1.2F));
    EXPECT_EQ(store.GetSnapshotCount(), 32);
    EXPECT_EQ(store.GetSnapshotName(31), "31");
}

TEST_F(CSnapshotImport, SizesThatDoNotFitAreRefused) {
    const std::string data = "AABBCCCCDDEE";
    EXPECT_FALSE(Import(store, data, 1.2F, {3, 2, 2, 4, 2, 2})) << "more than the element has";
    EXPECT_FALSE(Import(store, data, 1.2F, {kHighest, 2, 2, 4, 2, 2}));
    EXPECT_FALSE(Import(store, data, 1.2F, {-1, 2, 2, 4, 2, 2}));
    EXPECT_FALSE(Import(store, data, 1.2F, {2, kLowest, 2, 4, 2, 2}));
    EXPECT_FALSE(Import(store, data, 1.2F, {2, 2, -1, 4, 2, 2})) << "a placeholder's size is looked at too";
    EXPECT_FALSE(Import(store, data.substr(0, 11), 1.2F, {2, 2, 2, 4, 2, 2})) << "a byte is missing";
    EXPECT_FALSE(Import(store, data.substr(0, 11), 1.2F)) << "the same without a list";
    EXPECT_FALSE(Import(store, "", 1.2F));
    EXPECT_FALSE(Import(store, "AABBx", 1.0F)) << "half of what is to be converted";
    EXPECT_EQ(doubling.calls, 0);
    EXPECT_EQ(store.GetSnapshotCount(), 0);
}

TEST_F(CSnapshotImport, CountsThatCannotBeAreRefused) {
    const std::string data = "AABBCCCCDDEE";
    const std::array<std::int32_t, 6> sizes = {2, 2, 2, 4, 2, 2};
    EXPECT_FALSE(store.ImportSnapshot("", data.data(), -1, 1.2F, sizes.data(), 6));
    EXPECT_FALSE(store.ImportSnapshot("", data.data(), kLowest, 1.2F, nullptr, 0));
    EXPECT_FALSE(store.ImportSnapshot("", nullptr, 12, 1.2F, sizes.data(), 6));
    EXPECT_FALSE(store.ImportSnapshot("", data.data(), 12, 1.2F, sizes.data(), -1));
    EXPECT_FALSE(store.ImportSnapshot("", nullptr, 0, 1.2F, sizes.data(), 6));
    EXPECT_EQ(store.GetSnapshotCount(), 0);
    EXPECT_TRUE(store.ImportSnapshot("", data.data(), 12, 1.2F, nullptr, -5))
        << "without a list its count is nothing";
}

// Whatever a document says, it is refused, or its snapshot is as long as its sizes tell and stays inside the
// elements.
TEST(CSnapshotStore, RandomDocumentsNeverLeaveTheElements) {
    constexpr std::uint32_t kSeed = 51966;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    CSnapshotStore store;
    CSnapshotArrangement arrangement(store, 3);
    arrangement.Grow();
    store.AddSnapshot("good");
    const std::string good = Bytes(store, 0);
    const std::vector<std::int32_t> goodSizes = Sizes(store, 0);
    const std::array<float, 7> versions = {
        0.0F, 1.0F, 1.1F, 1.15F, 1.2F, 1.3F, std::numeric_limits<float>::quiet_NaN()};
    int taken = 0;

    for (int round = 0; round < 20000; ++round) {
        std::vector<std::int32_t> sizes = goodSizes;
        for (std::uint32_t i = random() % 3; i > 0; --i) {
            std::int32_t& size = sizes[random() % sizes.size()];
            size = random() % 2 == 0 ? static_cast<std::int32_t>(random())
                                     : size + static_cast<std::int32_t>(random() % 9) - 4;
        }
        sizes.resize(random() % 4 == 0 ? random() % (sizes.size() + 5) : sizes.size());
        const std::string data = good.substr(0, random() % 4 == 0 ? random() % good.size() : good.size());
        const float version = versions[random() % versions.size()];
        const bool imported =
            random() % 4 == 0 ? Import(store, data, version) : Import(store, data, version, sizes);
        ASSERT_EQ(store.GetSnapshotCount(), imported ? 2 : 1);
        if (!imported) continue;
        ++taken;
        ASSERT_EQ(store.GetSnapshotSize(1), store.GetTotalSize());
        ASSERT_EQ(store.GetSizeCount(1), store.GetElementCount());
        ASSERT_TRUE(store.RecallSnapshot(1));
        ASSERT_TRUE(arrangement.GuardsHold());
        store.DeleteSnapshot(1);
    }
    EXPECT_GT(taken, 1000) << "the documents were not all beyond repair";
    EXPECT_LT(taken, 19000) << "nor all good";
}

} // namespace
} // namespace sonorelle
