#include "platform/critical_section.h"

#include <thread>
#ifndef NDEBUG
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#endif

namespace sonorelle {

#ifndef NDEBUG
namespace {

constexpr std::size_t kRanks = 4;
thread_local std::int32_t heldOfRank[kRanks]; // locks that this thread holds

} // namespace

void CCriticalSection::CheckOrder() const noexcept {
    if (rank_ == LockRank::kNone || holder_.load(std::memory_order_relaxed) == std::this_thread::get_id())
        return;
    for (std::size_t inner = static_cast<std::size_t>(rank_) + 1; inner < kRanks; ++inner) {
        if (heldOfRank[inner] == 0) continue;
        std::fprintf(stderr, "lock order: waiting for a lock of rank %d with one of rank %d in hand\n",
                     static_cast<int>(rank_), static_cast<int>(inner));
        std::abort();
    }
}

void CCriticalSection::CountEntered() noexcept {
    if (rank_ == LockRank::kNone) return;
    if (depth_++ > 0) return;
    holder_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    ++heldOfRank[static_cast<std::size_t>(rank_)];
}

void CCriticalSection::CountLeft() noexcept {
    if (rank_ == LockRank::kNone) return;
    if (--depth_ > 0) return;
    holder_.store({}, std::memory_order_relaxed);
    --heldOfRank[static_cast<std::size_t>(rank_)];
}
#endif

void SpinEnter(CCriticalSection& lock) noexcept {
    lock.CheckOrder();
    while (!lock.TryEnterCriticalSection()) std::this_thread::yield();
}

} // namespace sonorelle
