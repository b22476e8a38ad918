#include "platform/thread.h"

#include <exception>
#include <utility>

namespace sonorelle {

bool CThread::Start(std::function<void()> work) {
    if (!work || thread_.joinable()) return false;
    try {
        thread_ = std::thread(std::move(work));
    } catch (const std::exception&) { // no thread, or no memory for one
        return false;
    }
    return true;
}

void CThread::Join() {
    if (thread_.joinable()) thread_.join();
}

} // namespace sonorelle
