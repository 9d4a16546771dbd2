#include "ala/base/handle.h"

#include <atomic>

#include <pthread.h>
#include <unistd.h>

#include "ala/base/trace.h"

void *const ALA_nullHandle = nullptr;
void *const ALA_nullAcctLogHandle = nullptr;
void *const ALA_nullRecord = nullptr;

// Every operation asks, and a system call would cost more than most of them do.  Only a fork changes the id.
static std::atomic<std::int32_t> knownPid; // 0: not known

static std::int32_t findPid() {
    static const bool forkIsSeen = pthread_atfork(nullptr, nullptr, [] { knownPid = 0; }) == 0;
    const auto pid = static_cast<std::int32_t>(getpid());
    if (forkIsSeen)
        knownPid = pid;
    return pid;
}

std::int32_t ALA__CurrentPid() {
    const std::int32_t pid = knownPid.load(std::memory_order_relaxed);
    return pid != 0 ? pid : findPid();
}

static bool isValid(ALA_handle_t handle) {
    return handle != nullptr && handle->svrName != nullptr && handle->acctLogPath != nullptr &&
           handle->pid == ALA__CurrentPid();
}

// Each form of the line has the operation's name as its one argument.
static ALA_retCode_t check(ALA_handle_t handle, const char *operation, const char *line) {
    return isValid(handle) ? ALA_N_NORMAL : ALA_FAIL(ALA_A_NOT_REGISTER, line, operation);
}

ALA_retCode_t ALA__CheckHandle(ALA_handle_t in_handle, const char *in_operation) {
    return check(in_handle, in_operation,
                 "handle, handle->svrName, handle->acctLogPath is NULL or handle->pid!=getpid in %s; "
                 "ALA_A_NOT_REGISTER");
}

ALA_retCode_t ALA__CheckHandleOfLog(ALA_handle_t in_handle, const char *in_operation) {
    return check(in_handle, in_operation,
                 "handle, handle->svrName or handle->acctLogPath is NULL or handle->pid != getpid in %s; "
                 "ALA_A_NOT_REGISTER");
}
