// One thread of its own that is always waited for: it is never detached and never killed, so nothing of it
// outlives the object. Cancelling is the work's own business (a flag that it looks at).

#pragma once

#include <functional>
#include <thread>

namespace sonorelle {

// Used by one thread, the one that starts and joins.
class CThread {
public:
    CThread() = default;
    ~CThread() { Join(); }
    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;

    // Runs `work` on a new thread. False, and nothing runs, when `work` is empty, when the last work was not
    // joined yet, or when the system has no thread to give. No exception may leave `work`.
    bool Start(std::function<void()> work);

    // Waits until the work has ended; returns at once when none was started. Not from within the work itself.
    void Join();

private:
    std::thread thread_;
};

} // namespace sonorelle
