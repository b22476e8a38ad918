// Catches a thread that asks the system for anything while it should only compute: files, memory, sleep.
//
//     std::thread([&] {
//         ForbidSystemCalls();     // from here to the end of the thread
//         ... play blocks ...
//     }).join();
//     EXPECT_EQ(ForbiddenSystemCalls(), 0);
//
// Yielding and reading the clock are allowed, and what the end of a thread needs. Sleeping on a lock (futex),
// which the program's own locks never do, ends the whole test program: the C library does not survive a
// refusal. Linux on x86-64 alone, and of no use under a sanitizer (test::UnderSanitizer()), which asks the
// system for its own purposes.
#pragma once

#if defined(__linux__) && defined(__x86_64__)
#define SONORELLE_HAVE_SYSTEM_CALL_TRAP 1

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <vector>

namespace sonorelle::test {

inline std::atomic<int>& CaughtSystemCalls() {
    static std::atomic<int> count{0};
    return count;
}
inline std::atomic<int>& LastCaughtSystemCall() {
    static std::atomic<int> number{-1};
    return number;
}

// Only of the calling thread, and not to be undone; a forbidden call fails with ENOSYS and is counted.
inline void ForbidSystemCalls() {
    struct sigaction action = {};
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    action.sa_sigaction = [](int, siginfo_t* info, void* context) {
        CaughtSystemCalls().fetch_add(1, std::memory_order_relaxed);
        LastCaughtSystemCall().store(info->si_syscall, std::memory_order_relaxed);
        static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RAX] = -38; // ENOSYS
    };
    sigaction(SIGSYS, &action, nullptr);

    std::vector<sock_filter> program;
    program.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
    for (const int allowed : {SYS_sched_yield, SYS_clock_gettime, SYS_rt_sigreturn, SYS_exit, SYS_madvise,
                              SYS_munmap, SYS_set_robust_list, SYS_rt_sigprocmask, SYS_exit_group}) {
        program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(allowed), 0, 1));
        program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    }
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP));
    const sock_fprog filter = {static_cast<unsigned short>(program.size()), program.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
        throw std::runtime_error("the system has no filter of system calls");
}

} // namespace sonorelle::test
#endif
