#include "platform/critical_section.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace sonorelle {
namespace {

bool AnotherThreadCanEnter(CCriticalSection& lock) {
    bool entered = false;
    std::thread([&] {
        entered = lock.TryEnterCriticalSection();
        if (entered) lock.LeaveCriticalSection();
    }).join();
    return entered;
}

TEST(CCriticalSection, KeepsOtherThreadsOutUntilItIsLeft) {
    CCriticalSection lock;
    EXPECT_TRUE(AnotherThreadCanEnter(lock));
    lock.EnterCriticalSection();
    EXPECT_FALSE(AnotherThreadCanEnter(lock));
    lock.LeaveCriticalSection();
    EXPECT_TRUE(AnotherThreadCanEnter(lock));
}

TEST(CCriticalSection, IsFreeOnlyAfterAsManyLeavesAsEnters) {
    CCriticalSection lock;
    lock.EnterCriticalSection();
    EXPECT_TRUE(lock.TryEnterCriticalSection());
    SpinEnter(lock);
    for (int held = 3; held > 0; --held) {
        EXPECT_FALSE(AnotherThreadCanEnter(lock)) << held;
        lock.LeaveCriticalSection();
    }
    EXPECT_TRUE(AnotherThreadCanEnter(lock));
}

TEST(SpinGuard, HoldsTheLockForItsLifeAndNests) {
    CCriticalSection lock;
    {
        const SpinGuard outer(lock);
        {
            const SpinGuard inner(lock);
            EXPECT_FALSE(AnotherThreadCanEnter(lock));
        }
        EXPECT_FALSE(AnotherThreadCanEnter(lock));
    }
    EXPECT_TRUE(AnotherThreadCanEnter(lock));
}

TEST(SpinEnter, WaitsForTheThreadThatHoldsTheLock) {
    CCriticalSection lock;
    std::atomic<bool> trying = false;
    int value = 0; // plain on purpose: the lock alone orders the accesses
    int seen = -1;
    lock.EnterCriticalSection();
    std::thread waiter([&] {
        trying = true;
        SpinEnter(lock);
        seen = value;
        lock.LeaveCriticalSection();
    });
    while (!trying) std::this_thread::yield();
    value = 7;
    lock.LeaveCriticalSection();
    waiter.join();
    EXPECT_EQ(seen, 7);
}

TEST(SpinEnter, LosesNoUpdateUnderContention) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 5000;
    CCriticalSection lock;
    int counter = 0; // plain on purpose
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < kRounds; ++i) {
                const SpinGuard guard(lock);
                const SpinGuard again(lock);
                ++counter;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(counter, kThreads * kRounds);
}

} // namespace
} // namespace sonorelle
