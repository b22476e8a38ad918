#include "platform/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace sonorelle {
namespace {

TEST(CThread, RunsTheWorkOnAnotherThreadAndJoinMakesItsResultsVisible) {
    std::thread::id ranOn;
    CThread thread;
    ASSERT_TRUE(thread.Start([&] { ranOn = std::this_thread::get_id(); }));
    thread.Join();
    EXPECT_NE(ranOn, std::thread::id());
    EXPECT_NE(ranOn, std::this_thread::get_id());
}

TEST(CThread, DestructorWaitsForTheWork) {
    std::atomic<bool> mayEnd = false;
    bool ended = false;
    std::thread releaser;
    {
        CThread thread;
        ASSERT_TRUE(thread.Start([&] {
            while (!mayEnd) std::this_thread::yield();
            ended = true;
        }));
        releaser = std::thread([&] { mayEnd = true; });
    }
    EXPECT_TRUE(ended);
    releaser.join();
}

TEST(CThread, RefusesSecondWorkUntilTheFirstIsJoined) {
    int runs = 0;
    CThread thread;
    ASSERT_TRUE(thread.Start([&] { ++runs; }));
    EXPECT_FALSE(thread.Start([&] { runs += 100; }));
    thread.Join();
    EXPECT_TRUE(thread.Start([&] { ++runs; }));
    thread.Join();
    EXPECT_EQ(runs, 2);
}

TEST(CThread, RefusesEmptyWorkAndJoinsNothingAtOnce) {
    CThread thread;
    EXPECT_FALSE(thread.Start(nullptr));
    thread.Join();
    thread.Join();
}

} // namespace
} // namespace sonorelle
