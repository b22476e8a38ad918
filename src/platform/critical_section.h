// A recursive lock, the way every lock of the system is entered, and a guard that leaves it again.
//
//     CCriticalSection lock;
//     {
//         const SpinGuard guard(lock);
//         ...
//     }
//
// Recursive, because a thread that holds a lock while it loads may be called back by its own timers and enter
// it again.
//
// Locks that one thread holds together have ranks. A debug build ends the program, with a message, where a
// thread begins to wait for a lock of a lower rank than one that it holds: two threads that did so crosswise
// would stand still for ever. Elsewhere ranks cost nothing.

#pragma once

#include <mutex>
#ifndef NDEBUG
#include <atomic>
#include <cstdint>
#include <thread>
#endif

namespace sonorelle {

// From the outermost lock to the innermost. Those without a rank are not watched.
enum class LockRank { kNone, kInterface, kFile, kAudio };

class CCriticalSection {
public:
    explicit CCriticalSection([[maybe_unused]] LockRank lockRank = LockRank::kNone)
#ifndef NDEBUG
        : rank_(lockRank)
#endif
    {
    }

    // Waits until the calling thread holds the lock. Each entering needs its own leaving.
    void EnterCriticalSection() {
        CheckOrder();
        mutex_.lock();
        CountEntered();
    }

    // True when the calling thread holds the lock now (once more, if it held it before); never waits.
    bool TryEnterCriticalSection() noexcept {
        const bool entered = mutex_.try_lock();
        if (entered) CountEntered();
        return entered;
    }

    // Only by the thread that holds the lock.
    void LeaveCriticalSection() noexcept {
        CountLeft();
        mutex_.unlock();
    }

#ifdef NDEBUG
    void CheckOrder() const noexcept {} // the calling thread is about to wait for the lock
#else
    void CheckOrder() const noexcept;
#endif

private:
#ifdef NDEBUG
    void CountEntered() noexcept {}
    void CountLeft() noexcept {}
#else
    void CountEntered() noexcept;
    void CountLeft() noexcept;

    const LockRank rank_;
    std::int32_t depth_ = 0; // of the thread that holds it
    std::atomic<std::thread::id> holder_{};
#endif
    std::recursive_mutex mutex_;
};

// Enters by trying, yielding the rest of the time slice, and trying again: the thread never sleeps on the
// lock, so that the audio thread goes on within one time slice after the lock is free. Whatever is done under
// a lock must be short. Leave with LeaveCriticalSection. Allocates nothing, throws nothing.
void SpinEnter(CCriticalSection& lock) noexcept;

// Holds a lock, entered with SpinEnter, for the life of the guard.
class SpinGuard {
public:
    explicit SpinGuard(CCriticalSection& lock) noexcept : lock_(lock) { SpinEnter(lock_); }
    ~SpinGuard() { lock_.LeaveCriticalSection(); }
    SpinGuard(const SpinGuard&) = delete;
    SpinGuard& operator=(const SpinGuard&) = delete;

private:
    CCriticalSection& lock_;
};

} // namespace sonorelle
