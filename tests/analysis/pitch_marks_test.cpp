#include "analysis/pitch_marks.h"

#include "platform/result_codes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

constexpr std::int32_t kIntMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kIntMin = std::numeric_limits<std::int32_t>::min();

CPitchMarks MarksAt(const std::vector<std::int32_t>& positions) {
    CPitchMarks marks;
    for (const std::int32_t position : positions) marks.Add(position, 0, 0, 0, 0);
    return marks;
}

std::vector<std::int32_t> PositionsOf(const CPitchMarks& marks) {
    std::vector<std::int32_t> positions;
    for (std::int32_t i = 0; i < marks.GetCount(); ++i) positions.push_back(marks.GetPosition(i));
    return positions;
}

TEST(CPitchMarks, StartsEmptyAndEveryGetterSaysSo) {
    const CPitchMarks marks;
    const PitchMarkRecord* data = nullptr;
    EXPECT_EQ(marks.GetData(data), 0);
    EXPECT_EQ(marks.GetCount(), 0);
    EXPECT_EQ(marks.GetCapacity(), 0);
    EXPECT_EQ(marks.GetLastPosition(), -1);
    EXPECT_EQ(marks.GetPosition(0), -1);
    EXPECT_EQ(marks.FindNearest(0, 0), -1);
    std::int32_t index = 0;
    EXPECT_EQ(marks.FindSpan(index, 10), -1);
    EXPECT_EQ(index, 0);
}

TEST(CPitchMarks, KeepsAllSixWordsOfAMark) {
    CPitchMarks marks;
    marks.AddWithPeriod(123, 4.5F, 0.25F, 0.75F, -0.125F, 98.9F);
    marks.Add(456, 6.5F, 0.5F, 0.25F, 0.375F);
    EXPECT_EQ(marks.GetPosition(0), 123);
    EXPECT_EQ(marks.GetVoicing(0), 4.5F);
    EXPECT_EQ(marks.GetEnergy(0), 0.25F);
    EXPECT_EQ(marks.GetTransient(0), 0.75F);
    EXPECT_EQ(marks.GetPitchChange(0), -0.125F);
    EXPECT_EQ(marks.GetPeriod(0), 98) << "truncated";
    EXPECT_EQ(marks.GetPosition(1), 456);
    EXPECT_EQ(marks.GetVoicing(1), 6.5F);
    EXPECT_EQ(marks.GetEnergy(1), 0.5F);
    EXPECT_EQ(marks.GetTransient(1), 0.25F);
    EXPECT_EQ(marks.GetPitchChange(1), 0.375F);
    EXPECT_EQ(marks.GetPeriod(1), 0);
    EXPECT_EQ(marks.GetLastPosition(), 456);
    const PitchMarkRecord* data = nullptr;
    ASSERT_EQ(marks.GetData(data), 2);
    EXPECT_EQ(data[0].period, 98.9F) << "stored whole";
    EXPECT_EQ(data[1].position, 456);
}

TEST(CPitchMarks, GettersOutsideTheListGiveMinusOne) {
    const CPitchMarks marks = MarksAt({0, 100, 250});
    for (const std::int32_t index : {kIntMin, -1, 3, 4, 1000, kIntMax}) {
        EXPECT_EQ(marks.GetPosition(index), -1);
        EXPECT_EQ(marks.GetDistance(index), -1);
        EXPECT_EQ(marks.GetPeriod(index), -1);
        EXPECT_EQ(marks.GetTransient(index), -1.0F);
        EXPECT_EQ(marks.GetEnergy(index), -1.0F);
        EXPECT_EQ(marks.GetVoicing(index), -1.0F);
        EXPECT_EQ(marks.GetPitchChange(index), -1.0F);
    }
}

TEST(CPitchMarks, GettersDoNotSeeWhatWasRemoved) {
    CPitchMarks marks = MarksAt({0, 100, 250});
    marks.RemoveLast();
    EXPECT_EQ(marks.GetPosition(2), -1);
    EXPECT_EQ(marks.GetDistance(1), -1);
    EXPECT_EQ(marks.GetLastPosition(), 100);
}

TEST(CPitchMarks, DistanceOfTheLastMarkIsMinusOne) {
    const CPitchMarks marks = MarksAt({0, 100, 250});
    EXPECT_EQ(marks.GetDistance(0), 100);
    EXPECT_EQ(marks.GetDistance(1), 150);
    EXPECT_EQ(marks.GetDistance(2), -1);
}

TEST(CPitchMarks, APeriodThatNoIntegerHoldsIsHeldToTheRange) {
    CPitchMarks marks;
    for (const float period : {3e9F, -3e9F, std::numeric_limits<float>::quiet_NaN(), -7.9F}) {
        marks.AddWithPeriod(0, 0, 0, 0, 0, period);
    }
    EXPECT_EQ(marks.GetPeriod(0), kIntMax);
    EXPECT_EQ(marks.GetPeriod(1), kIntMin);
    EXPECT_EQ(marks.GetPeriod(2), 0);
    EXPECT_EQ(marks.GetPeriod(3), -7);
}

TEST(CPitchMarks, RemoveLastStopsAtTheEmptyList) {
    CPitchMarks marks = MarksAt({0, 5});
    for (int i = 0; i < 4; ++i) marks.RemoveLast();
    EXPECT_EQ(marks.GetCount(), 0);
    marks.Add(7, 0, 0, 0, 0);
    EXPECT_EQ(marks.GetPosition(0), 7);
}

TEST(CPitchMarks, ClearEmptiesTheListAndZeroesItsRecords) {
    CPitchMarks marks;
    ASSERT_EQ(marks.Allocate(3), kOk);
    marks.AddWithPeriod(5, 1, 2, 3, 4, 6);
    marks.Clear();
    EXPECT_EQ(marks.GetCount(), 0);
    EXPECT_EQ(marks.GetCapacity(), 3);
    const PitchMarkRecord* data = nullptr;
    EXPECT_EQ(marks.GetData(data), 0);
    EXPECT_EQ(data[0].position, 0);
    EXPECT_EQ(data[0].period, 0.0F);
}

TEST(CPitchMarks, KeepLastMovesTheNewestToTheFront) {
    CPitchMarks marks = MarksAt({0, 10, 20, 30, 40});
    marks.KeepLast(2);
    EXPECT_EQ(PositionsOf(marks), (std::vector<std::int32_t>{30, 40}));
    marks.KeepLast(2);
    EXPECT_EQ(PositionsOf(marks), (std::vector<std::int32_t>{30, 40}));
    marks.KeepLast(kIntMax);
    EXPECT_EQ(PositionsOf(marks), (std::vector<std::int32_t>{30, 40})) << "no more than there are";
    marks.KeepLast(0);
    EXPECT_EQ(marks.GetCount(), 0);
    marks.Add(1, 0, 0, 0, 0);
    marks.KeepLast(-3);
    EXPECT_EQ(marks.GetCount(), 0);
    marks.KeepLast(5);
    EXPECT_EQ(marks.GetCount(), 0);
}

TEST(CPitchMarks, AllocateWorksOnce) {
    CPitchMarks marks;
    EXPECT_EQ(marks.Allocate(0), kBadArgument);
    EXPECT_EQ(marks.Allocate(-1), kBadArgument);
    EXPECT_EQ(marks.Allocate(8192), kOk);
    EXPECT_EQ(marks.GetCapacity(), 8192);
    EXPECT_EQ(marks.GetCount(), 0);
    marks.Add(9, 0, 0, 0, 0);
    EXPECT_EQ(marks.Allocate(16), kNothingThere);
    EXPECT_EQ(marks.GetCapacity(), 8192);
    EXPECT_EQ(marks.GetPosition(0), 9);
}

TEST(CPitchMarks, AFullListGrowsByOneRecordAtATime) {
    CPitchMarks marks;
    ASSERT_EQ(marks.Allocate(2), kOk);
    for (std::int32_t i = 0; i < 10000; ++i) {
        marks.Add(i, 0, 0, 0, 0);
        ASSERT_EQ(marks.GetCapacity(), std::max(2, i + 1));
        ASSERT_EQ(marks.GetCount(), i + 1);
    }
    for (std::int32_t i = 0; i < 10000; ++i) ASSERT_EQ(marks.GetPosition(i), i);
    marks.RemoveLast();
    EXPECT_EQ(marks.GetCapacity(), 10000) << "it does not shrink";
    marks.Add(1, 0, 0, 0, 0);
    EXPECT_EQ(marks.GetCapacity(), 10000);
}

TEST(CPitchMarks, SetDataCopiesAndMaySoBeRepeated) {
    std::vector<PitchMarkRecord> records = {{0, 1, 2, 3, 4, 5}, {10, 6, 7, 8, 9, 10}};
    CPitchMarks marks;
    ASSERT_EQ(marks.SetData(records.data(), 2), kOk);
    records[1].position = 99;
    EXPECT_EQ(marks.GetPosition(1), 10) << "a copy";
    EXPECT_EQ(marks.GetCapacity(), 2);
    EXPECT_EQ(marks.GetVoicing(1), 8.0F);
    // What SetData allocated, SetData frees: any length goes.
    records.push_back({200, 0, 0, 0, 0, 0});
    ASSERT_EQ(marks.SetData(records.data(), 3), kOk);
    EXPECT_EQ(PositionsOf(marks), (std::vector<std::int32_t>{0, 99, 200}));
    EXPECT_EQ(marks.GetCapacity(), 3);
    ASSERT_EQ(marks.SetData(records.data(), 1), kOk);
    EXPECT_EQ(PositionsOf(marks), (std::vector<std::int32_t>{0}));
    EXPECT_EQ(marks.Allocate(4), kNothingThere);
    ASSERT_EQ(marks.SetData(nullptr, 0), kOk);
    EXPECT_EQ(marks.GetCount(), 0);
}

TEST(CPitchMarks, SetDataReplacesAnAllocatedListOfAnyCapacity) {
    const PitchMarkRecord record{42, 0, 0, 0, 0, 0};
    CPitchMarks marks;
    ASSERT_EQ(marks.Allocate(8192), kOk);
    ASSERT_EQ(marks.SetData(&record, 1), kOk);
    EXPECT_EQ(marks.GetCapacity(), 1);
    EXPECT_EQ(PositionsOf(marks), std::vector<std::int32_t>{42});
}

TEST(CPitchMarks, SetDataRefusesAnotherLengthThanAListThatGrewByItself) {
    const std::vector<PitchMarkRecord> records = {{1, 0, 0, 0, 0, 0}, {2, 0, 0, 0, 0, 0}, {3, 0, 0, 0, 0, 0}};
    CPitchMarks marks = MarksAt({10, 20});
    EXPECT_EQ(marks.SetData(records.data(), 3), kBadArgument);
    EXPECT_EQ(marks.SetData(records.data(), 1), kBadArgument);
    EXPECT_EQ(PositionsOf(marks), (std::vector<std::int32_t>{10, 20})) << "left as it was";
    EXPECT_EQ(marks.SetData(records.data(), 2), kOk);
    EXPECT_EQ(PositionsOf(marks), (std::vector<std::int32_t>{1, 2}));
    EXPECT_EQ(marks.SetData(records.data(), 3), kOk) << "from now on it is an allocated one";
}

TEST(CPitchMarks, SetDataRefusesWhatIsNotThere) {
    const PitchMarkRecord record{};
    CPitchMarks marks = MarksAt({10});
    EXPECT_EQ(marks.SetData(nullptr, 1), kBadArgument);
    EXPECT_EQ(marks.SetData(&record, -1), kBadArgument);
    EXPECT_EQ(marks.SetData(&record, kIntMin), kBadArgument);
    EXPECT_EQ(PositionsOf(marks), std::vector<std::int32_t>{10});
}

TEST(CPitchMarks, SetDataOfItsOwnRecordsIsSafe) {
    CPitchMarks marks = MarksAt({10, 20, 30});
    const PitchMarkRecord* data = nullptr;
    const std::int32_t count = marks.GetData(data);
    ASSERT_EQ(marks.SetData(data, count), kOk);
    EXPECT_EQ(PositionsOf(marks), (std::vector<std::int32_t>{10, 20, 30}));
}

TEST(CPitchMarks, FindNearestFollowsTheFallingDistanceUpward) {
    const CPitchMarks marks = MarksAt({0, 100, 200, 300});
    EXPECT_EQ(marks.FindNearest(0, -50), 0);
    EXPECT_EQ(marks.FindNearest(0, 0), 0);
    EXPECT_EQ(marks.FindNearest(0, 49), 0);
    EXPECT_EQ(marks.FindNearest(0, 50), 0) << "of two equally near, the earlier";
    EXPECT_EQ(marks.FindNearest(0, 51), 1);
    EXPECT_EQ(marks.FindNearest(0, 251), 3);
    EXPECT_EQ(marks.FindNearest(0, 9999), 3) << "the walk reaches the end";
    EXPECT_EQ(marks.FindNearest(1, 210), 2);
    EXPECT_EQ(marks.FindNearest(2, 10), 2) << "never below where it starts";
    EXPECT_EQ(marks.FindNearest(-5, 110), 1);
    EXPECT_EQ(marks.FindNearest(kIntMin, 110), 1);
}

TEST(CPitchMarks, FindNearestFromTheSecondToLastMarkOnFindsNothing) {
    const CPitchMarks marks = MarksAt({0, 100, 200, 300});
    EXPECT_EQ(marks.FindNearest(2, 290), 3) << "the last start that works";
    for (const std::int32_t from : {3, 4, 100, kIntMax}) EXPECT_EQ(marks.FindNearest(from, 290), -1) << from;
    EXPECT_EQ(MarksAt({5}).FindNearest(0, 5), -1) << "fewer than two";
    EXPECT_EQ(MarksAt({5}).FindNearest(-1, 5), -1);
    EXPECT_EQ(CPitchMarks().FindNearest(-1, 5), -1);
}

TEST(CPitchMarks, FindNearestStopsAtTheFirstDistanceThatDoesNotFall) {
    const CPitchMarks marks = MarksAt({0, 100, 100, 200}); // two marks at one place
    EXPECT_EQ(marks.FindNearest(0, 200), 1);
    EXPECT_EQ(marks.FindNearest(2, 200), 3);
}

TEST(CPitchMarks, FindNearestIsTheNearestOfAllInARisingList) {
    std::mt19937 random(3);
    std::vector<std::int32_t> positions = {0};
    for (int i = 0; i < 300; ++i)
        positions.push_back(positions.back() + 1 + static_cast<std::int32_t>(random() % 90));
    const CPitchMarks marks = MarksAt(positions);
    for (int i = 0; i < 2000; ++i) {
        const auto position = static_cast<std::int32_t>(random() % 16000) - 500;
        const auto from = static_cast<std::size_t>(random() % (positions.size() - 1));
        std::size_t nearest = from;
        for (std::size_t k = from; k < positions.size(); ++k) {
            if (std::abs(positions[k] - position) < std::abs(positions[nearest] - position)) nearest = k;
        }
        ASSERT_EQ(marks.FindNearest(static_cast<std::int32_t>(from), position),
                  static_cast<std::int32_t>(nearest));
    }
}

TEST(CPitchMarks, DistancesBeyondTheRangeAreHeldToIt) {
    const CPitchMarks marks = MarksAt({kIntMin, kIntMax, kIntMin});
    EXPECT_EQ(marks.GetDistance(0), kIntMax);
    EXPECT_EQ(marks.GetDistance(1), kIntMin);
}

TEST(CPitchMarks, FindNearestWalksAListThatDoesNotRiseMarkByMark) {
    // Of a list that falls once, a search by halves would find the last mark.
    EXPECT_EQ(MarksAt({0, 100, 50, 400, 500, 600}).FindNearest(0, 600), 1);
    CPitchMarks mended = MarksAt({0, 100, 50});
    mended.Clear();
    for (const std::int32_t position : {0, 100, 200, 300}) mended.Add(position, 1, 1, 0, 0);
    EXPECT_EQ(mended.FindNearest(0, 260), 3);
}

TEST(CPitchMarks, FindNearestSurvivesPositionsAtTheEndsOfTheRange) {
    const CPitchMarks marks = MarksAt({kIntMin, 0, kIntMax});
    EXPECT_EQ(marks.FindNearest(0, kIntMax), 2);
    EXPECT_EQ(marks.FindNearest(0, kIntMin), 0);
    EXPECT_EQ(marks.FindNearest(1, kIntMin), 1);
}

TEST(CPitchMarks, FindSpanGoesToTheFirstMarkBeyondTheDistance) {
    const CPitchMarks marks = MarksAt({0, 100, 250, 300});
    const auto span = [&](std::int32_t from, std::int32_t distance) {
        std::int32_t index = from;
        const std::int32_t found = marks.FindSpan(index, distance);
        return std::pair{found, index};
    };
    EXPECT_EQ(span(0, 0), (std::pair{100, 1}));
    EXPECT_EQ(span(0, 99), (std::pair{100, 1}));
    EXPECT_EQ(span(0, 100), (std::pair{250, 2})) << "above, not at";
    EXPECT_EQ(span(1, 120), (std::pair{150, 2}));
    EXPECT_EQ(span(1, 180), (std::pair{200, 3}));
    EXPECT_EQ(span(0, 300), (std::pair{-1, 0})) << "none: the index stays";
    EXPECT_EQ(span(3, 0), (std::pair{-1, 3}));
    EXPECT_EQ(span(2, kIntMax), (std::pair{-1, 2}));
    EXPECT_EQ(span(4, 0), (std::pair{-1, 4}));
    EXPECT_EQ(span(-1, 0), (std::pair{-1, -1}));
}

TEST(CPitchMarks, FindSpanWithANegativeDistanceFindsItsOwnMark) {
    const CPitchMarks marks = MarksAt({0, 100, 250});
    std::int32_t index = 1;
    EXPECT_EQ(marks.FindSpan(index, -1), 0);
    EXPECT_EQ(index, 1);
}

} // namespace
} // namespace sonorelle
