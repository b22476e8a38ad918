// The order of locks: watched in debug builds, free of cost and consequence in others.

#include "platform/critical_section.h"

#include <gtest/gtest.h>

#include <thread>

namespace sonorelle {
namespace {

TEST(LockRank, LocksMayBeEnteredFromTheOutermostInwards) {
    CCriticalSection interfaceLock(LockRank::kInterface);
    CCriticalSection fileLock(LockRank::kFile);
    CCriticalSection audioLock(LockRank::kAudio);
    CCriticalSection anyLock;
    const SpinGuard first(interfaceLock);
    const SpinGuard second(fileLock);
    const SpinGuard third(audioLock);
    const SpinGuard fourth(anyLock);
    SUCCEED();
}

TEST(LockRank, ALockThatIsHeldAlreadyMayBeEnteredAgainFromWithinAnyOther) {
    CCriticalSection interfaceLock(LockRank::kInterface);
    CCriticalSection audioLock(LockRank::kAudio);
    const SpinGuard outer(interfaceLock);
    const SpinGuard inner(audioLock);
    const SpinGuard again(interfaceLock);
    interfaceLock.EnterCriticalSection();
    interfaceLock.LeaveCriticalSection();
    SUCCEED();
}

TEST(LockRank, TryingDoesNotWaitAndIsAlwaysAllowed) {
    CCriticalSection interfaceLock(LockRank::kInterface);
    CCriticalSection fileLock(LockRank::kFile);
    const SpinGuard outer(fileLock);
    ASSERT_TRUE(interfaceLock.TryEnterCriticalSection());
    interfaceLock.LeaveCriticalSection();
}

TEST(LockRank, IsForgottenWhenTheLockIsLeftAndIsEachThreadsOwn) {
    CCriticalSection interfaceLock(LockRank::kInterface);
    CCriticalSection fileLock(LockRank::kFile);
    { const SpinGuard guard(fileLock); }
    { const SpinGuard guard(interfaceLock); }
    const SpinGuard guard(fileLock);
    std::thread([&] { const SpinGuard other(interfaceLock); }).join();
}

#ifndef NDEBUG
TEST(LockRankDeathTest, WaitingForAnOuterLockEndsADebugBuild) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    CCriticalSection interfaceLock(LockRank::kInterface);
    CCriticalSection fileLock(LockRank::kFile);
    CCriticalSection audioLock(LockRank::kAudio);
    const auto waitsFor = [](CCriticalSection& held, CCriticalSection& wanted) {
        const SpinGuard inner(held);
        const SpinGuard outer(wanted);
    };
    EXPECT_DEATH(waitsFor(fileLock, interfaceLock), "lock order");
    EXPECT_DEATH(waitsFor(audioLock, interfaceLock), "lock order");
    EXPECT_DEATH(waitsFor(audioLock, fileLock), "lock order");
}
#endif

} // namespace
} // namespace sonorelle
