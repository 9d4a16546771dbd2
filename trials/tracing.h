// A traced process and its system calls.
#pragma once

#include <csignal>

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

constexpr long kEnded = -1;

// Lets a process that stands at its start go on to its in_number-th system call and gives that call's number;
// the process stands in front of it.  kEnded when it ended before.
inline long runToCall(pid_t in_pid, unsigned in_number) {
    int status = 0;
    unsigned calls = 0;
    waitpid(in_pid, &status, 0);
    ptrace(PTRACE_SETOPTIONS, in_pid, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    while (!WIFEXITED(status) && !WIFSIGNALED(status)) {
        __ptrace_syscall_info info = {};
        if (WSTOPSIG(status) == (SIGTRAP | 0x80) &&
            ptrace(PTRACE_GET_SYSCALL_INFO, in_pid, sizeof info, &info) > 0 &&
            info.op == PTRACE_SYSCALL_INFO_ENTRY && ++calls == in_number)
            return static_cast<long>(info.entry.nr);
        ptrace(PTRACE_SYSCALL, in_pid, nullptr, nullptr);
        waitpid(in_pid, &status, 0);
    }
    return kEnded;
}

// May this process trace its children?
inline bool canTrace() {
    const pid_t child = fork();
    if (child == 0)
        _exit(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 ? 0 : 1);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
