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

#pragma once

#include <mutex>

namespace sonorelle {

class CCriticalSection {
public:
    // Waits until the calling thread holds the lock. Each entering needs its own leaving.
    void EnterCriticalSection() { mutex_.lock(); }

    // True when the calling thread holds the lock now (once more, if it held it before); never waits.
    bool TryEnterCriticalSection() noexcept { return mutex_.try_lock(); }

    // Only by the thread that holds the lock.
    void LeaveCriticalSection() noexcept { mutex_.unlock(); }

private:
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
