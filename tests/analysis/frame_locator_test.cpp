#include "analysis/frame_locator.h"

#include "support/hostile_numbers.h"
#include "support/literal_note_model.h"
#include "support/synthetic_singer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle {
namespace {

// One frame every 100 samples; 'v' is voiced.
std::vector<AnalysisFrame> FramesLike(const std::string& voicing) {
    std::vector<AnalysisFrame> frames(voicing.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
        frames[i].position = static_cast<std::int32_t>(i) * 100;
        frames[i].voiced = voicing[i] == 'v' ? 1 : 0;
    }
    return frames;
}

FrameWindow Located(const std::string& voicing, std::int64_t start, std::int64_t end, std::int64_t minLength,
                    std::int64_t nextLength) {
    FrameWindow window{0, 0, start, end};
    FrameLocator(FramesLike(voicing)).Locate(window, minLength, nextLength);
    return window;
}

void ExpectFrames(const FrameWindow& window, std::int32_t first, std::int32_t last) {
    EXPECT_EQ(window.first, first);
    EXPECT_EQ(window.last, last);
    EXPECT_EQ(window.start, first * 100);
    EXPECT_EQ(window.end, last * 100);
}

TEST(FrameLocator, BeginsWithTheLastFrameAtOrBeforeTheStart) {
    ExpectFrames(Located("vvvvvvvvvv", 300, 500, 100, 100), 3, 5);
    ExpectFrames(Located("vvvvvvvvvv", 399, 599, 100, 100), 3, 5);
}

TEST(FrameLocator, KeepsItsLengthWhenItMovesToTheNextVoicedFrame) {
    ExpectFrames(Located("vv..vvvvvv", 200, 500, 100, 100), 4, 7);
}

TEST(FrameLocator, KeepsTheFirstFrameWhenTheWholeWindowLiesBeforeIt) {
    // Nothing is left of the window at the first voiced frame, so that the run behind it is taken.
    ExpectFrames(Located("......vvvv", 0, 300, 100, 200), 7, 9);
}

TEST(FrameLocator, EndsWithTheRun) { ExpectFrames(Located("vvvv.vvvvv", 100, 900, 100, 100), 1, 3); }

TEST(FrameLocator, TakesTheNextRunWhenOneIsTooShort) {
    // The search goes on behind the short run's last frame; the window then ends on the frame at or behind
    // its length.
    ExpectFrames(Located("vv..vvvvvv", 0, 500, 200, 250), 4, 7);
}

TEST(FrameLocator, NextRunMayEndOnAnUnvoicedFrame) {
    ExpectFrames(Located("v..vv..vvv", 0, 500, 200, 500), 3, 5);
}

TEST(FrameLocator, EndsOnTheLastFrameWhenNothingIsVoiced) {
    ExpectFrames(Located("..........", 0, 500, 100, 100), 9, 9);
}

TEST(FrameLocator, StartBeforeTheFirstFrameBeginsThere) {
    std::vector<AnalysisFrame> frames = FramesLike("vvvvv");
    for (AnalysisFrame& frame : frames) frame.position += 1000;
    FrameWindow window{0, 0, 0, 1100};
    FrameLocator(frames).Locate(window, 100, 100);
    EXPECT_EQ(window.first, 0);
    EXPECT_EQ(window.last, 4);
}

TEST(FrameLocator, StartAtTheLastFrameBeginsOneFrameBeforeIt) {
    ExpectFrames(Located("vvvvv", 400, 600, 100, 100), 3, 4);
}

TEST(FrameLocator, OneFrameIsAlwaysTheWindow) {
    for (const char* voicing : {"v", "."}) ExpectFrames(Located(voicing, 0, 500, 100, 100), 0, 0);
}

TEST(FrameLocator, FirstVoicedStopsAtTheLastFrame) {
    const FrameLocator locator(FramesLike(std::string(100, '.') + "v" + std::string(99, '.')));
    EXPECT_EQ(locator.FirstVoiced(0), 100);
    EXPECT_EQ(locator.FirstVoiced(100), 100);
    EXPECT_EQ(locator.FirstVoiced(101), 199);
    EXPECT_EQ(locator.FirstVoiced(199), 199);
}

// Sets of up to several thousand frames, thin ones and dense ones, beside a walk.
TEST(FrameSet, FirstFromAgreesWithAWalk) {
    for (const std::size_t count : {0U, 1U, 63U, 64U, 65U, 4095U, 4096U, 4097U, 20000U}) {
        for (const int sparsity : {1, 3, 500, 9000}) {
            test::RandomNumbers random(count + static_cast<std::size_t>(sparsity));
            FrameSet set(count);
            std::vector<bool> expected(count, false);
            for (std::size_t i = 0; i < count; ++i) {
                if (random.Below(sparsity) == 0) set.Insert(static_cast<std::int32_t>(i));
            }
            for (std::size_t i = 0; i < count; ++i) {
                if (random.Below(3) == 0) set.Remove(static_cast<std::int32_t>(i));
                expected[i] = set.Contains(static_cast<std::int32_t>(i));
            }
            auto next = static_cast<std::int32_t>(count);
            ASSERT_EQ(set.FirstFrom(next), next);
            for (std::int32_t i = next - 1; i >= 0; --i) {
                if (expected[static_cast<std::size_t>(i)]) next = i;
                ASSERT_EQ(set.FirstFrom(i), next) << "from " << i << " of " << count;
            }
        }
    }
}

TEST(FrameLocator, FirstNotBeforeStopsAtTheLastFrame) {
    const FrameLocator locator(FramesLike("vvvvv"));
    EXPECT_EQ(locator.FirstNotBefore(-1), 0);
    EXPECT_EQ(locator.FirstNotBefore(200), 2);
    EXPECT_EQ(locator.FirstNotBefore(201), 3);
    EXPECT_EQ(locator.FirstNotBefore(401), 4);
}

TEST(FrameLocator, FrameSetUnvoicedEndsTheRun) {
    FrameLocator locator(FramesLike(std::string(200, 'v')));
    locator.SetUnvoiced(130);
    EXPECT_FALSE(locator.IsVoiced(130));
    EXPECT_TRUE(locator.IsVoiced(129));
    FrameWindow window{0, 0, 0, 20000};
    locator.Locate(window, 100, 100);
    EXPECT_EQ(window.last, 129);
}

TEST(FrameLocator, PositionsNearTheirLimitDoNotOverflow) {
    std::vector<AnalysisFrame> frames = FramesLike("vvvvv");
    for (AnalysisFrame& frame : frames) frame.position += kLargestI32 - 400;
    FrameWindow window{0, 0, kLargestI32 - 400, static_cast<std::int64_t>(kLargestI32) + 100000};
    FrameLocator(frames).Locate(window, 100, 100000);
    EXPECT_EQ(window.first, 0);
    EXPECT_EQ(window.last, 4);
    EXPECT_EQ(window.end, kLargestI32);
}

// Beside a search that walks the list frame by frame: random runs, random distances, windows that begin
// before, within and behind the list and are empty, short and long.
TEST(FrameLocator, AgreesWithAWalkOverTheFrames) {
    for (std::uint64_t seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE("generator " + std::to_string(seed));
        test::RandomNumbers random(seed);
        static constexpr int kCounts[] = {1, 2, 3, 31, 32, 33, 34, 63, 64, 65, 127, 128, 129, 300};
        std::vector<AnalysisFrame> frames(static_cast<std::size_t>(kCounts[random.Below(14)]));
        const int meanRun = 1 + random.Below(80);
        std::int32_t position = random.Below(2) * random.Below(500);
        std::int32_t voiced = random.Below(2);
        for (AnalysisFrame& frame : frames) {
            if (random.Below(meanRun) == 0) voiced = 1 - voiced;
            frame.voiced = voiced;
            frame.position = position;
            position += 1 + random.Below(200);
        }
        FrameLocator locator(frames);
        for (int round = 0; round < 100; ++round) {
            const std::int64_t start = random.Below(position + 400) - 200;
            const std::int64_t end = start + random.Below(4000) - 200;
            const std::int64_t minLength = random.Below(800);
            const std::int64_t nextLength = random.Below(4000);
            // Where the window lay before makes no difference.
            FrameWindow window{random.Below(400) - 50, random.Below(400) - 50, start, end};
            test::LiteralWindow expected{0, 0, start, end};
            locator.Locate(window, minLength, nextLength);
            test::LiteralLocate(frames, expected, minLength, nextLength);
            ASSERT_EQ(window.first, expected.first) << "from " << start << " to " << end;
            ASSERT_EQ(window.last, expected.last) << "from " << start << " to " << end;
            ASSERT_EQ(window.start, expected.start);
            ASSERT_EQ(window.end, expected.end);
            if (round % 20 != 19) continue;
            const int cut = random.Below(static_cast<int>(frames.size()));
            frames[static_cast<std::size_t>(cut)].voiced = 0;
            locator.SetUnvoiced(cut);
        }
    }
}

} // namespace
} // namespace sonorelle
