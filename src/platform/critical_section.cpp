#include "platform/critical_section.h"

#include <thread>

namespace sonorelle {

void SpinEnter(CCriticalSection& lock) noexcept {
    while (!lock.TryEnterCriticalSection()) std::this_thread::yield();
}

} // namespace sonorelle
