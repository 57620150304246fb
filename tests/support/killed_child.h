// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <ctime>
#include <functional>

namespace keeper {

/// A number that a child writes and its parent still reads when the child was killed.
class SharedCount {
  public:
    SharedCount()
        : m_value(static_cast<int*>(::mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE,
                                           MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
    ~SharedCount() { ::munmap(m_value, sizeof(int)); }
    SharedCount(const SharedCount&) = delete;
    SharedCount& operator=(const SharedCount&) = delete;

    [[nodiscard]] int get() const { return *m_value; }
    void set(int value) const { *m_value = value; }

  private:
    int* m_value;
};

/// Kills `child` after it has run for a while: the moment itself is what such a test varies. True
/// when it was still running.
inline bool killedAfter(pid_t child, std::chrono::microseconds moment) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(moment);
    const timespec time{seconds.count(), std::chrono::nanoseconds(moment - seconds).count()};
    ::nanosleep(&time, nullptr);
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

/// Runs `work` in a child process that is killed at its system call number `call` (from 1), before
/// that call takes effect; the calls of `prepare`, which runs first, do not count. True when the
/// child was killed, false when it had ended by itself: then all calls have had their turn.
inline bool killedAtSystemCall(
    int call, const std::function<void()>& work, const std::function<void()>& prepare = [] {}) {
    const pid_t child = ::fork();
    if (child == 0) {
        prepare();
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        work();
        ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSTOPPED(status)) << "tracing a child is not allowed here";
    ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    int stops = 0;
    for (;;) {
        ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        if (::waitpid(child, &status, 0) != child || WIFEXITED(status) || WIFSIGNALED(status)) {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
            return false;
        }
        // Each call stops twice: at its entry and at its return.
        const bool isCall = WSTOPSIG(status) == (SIGTRAP | 0x80);
        if (isCall && ++stops == 2 * call - 1) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return true;
        }
    }
}

}  // namespace keeper
