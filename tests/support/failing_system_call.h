// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>
#include <vector>

namespace keeper {

/// The calls by which data and names reach a disk.
inline bool reachesTheDisk(unsigned long long call) {
    switch (call) {
        case SYS_write:
        case SYS_pwrite64:
        case SYS_fsync:
        case SYS_fdatasync:
        case SYS_ftruncate:
        case SYS_rename:
        case SYS_renameat2:
        case SYS_sync_file_range:
            return true;
        default:
            return false;
    }
}

/// Runs `work` in a child process whose call number `call` (from 1) of those that reach the disk
/// fails with `error` and does nothing; the calls of `prepare`, which runs first, do not count.
/// `work` returns what the operation answered. The result is -1 when the child made fewer calls,
/// else 1 for an answer of true and 0 for false.
inline int answerWhenCallFails(
    int call, int error, const std::function<bool()>& work,
    const std::function<void()>& prepare = [] {}) {
    const pid_t child = ::fork();
    if (child == 0) {
        prepare();
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        ::_exit(work() ? 1 : 0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSTOPPED(status)) << "tracing a child is not allowed here";
    ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    int calls = 0;
    bool atEntry = false;
    bool failing = false;
    for (;;) {
        ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        if (::waitpid(child, &status, 0) != child || WIFEXITED(status) || WIFSIGNALED(status)) {
            EXPECT_TRUE(WIFEXITED(status)) << "the failing call brought the program down";
            return calls < call ? -1 : WEXITSTATUS(status);
        }
        if (WSTOPSIG(status) != (SIGTRAP | 0x80)) {
            continue;
        }
        atEntry = !atEntry;
        user_regs_struct registers{};
        ::ptrace(PTRACE_GETREGS, child, nullptr, &registers);
        if (atEntry && reachesTheDisk(registers.orig_rax) && ++calls == call) {
            registers.orig_rax = ~0ULL;
            ::ptrace(PTRACE_SETREGS, child, nullptr, &registers);
            failing = true;
        } else if (!atEntry && failing) {
            registers.rax = static_cast<unsigned long long>(-error);
            ::ptrace(PTRACE_SETREGS, child, nullptr, &registers);
            failing = false;
        }
    }
}

/// One call after another, in steps, fails with each of the errors, until `work` makes no more.
struct FailingDisk {
    std::vector<int> errors;
    int step = 1;
    /// In this process, before each child.
    std::function<void()> before;
    std::function<void()> prepare = [] {};
    std::function<bool()> work;
    /// Looks at what the child left; `at` names the error and the call.
    std::function<void(const std::string& at, int answer)> check;
};

inline void failEachCall(const FailingDisk& disk) {
    for (const int error : disk.errors) {
        int refused = 0;
        for (int call = 1; !testing::Test::HasFailure(); call += disk.step) {
            disk.before();
            const int answer = answerWhenCallFails(call, error, disk.work, disk.prepare);
            if (answer == -1) {
                break;
            }
            refused += answer == 0 ? 1 : 0;
            disk.check("error " + std::to_string(error) + " at call " + std::to_string(call),
                       answer);
        }
        EXPECT_GT(refused, 0) << "error " << error;
    }
}

}  // namespace keeper
