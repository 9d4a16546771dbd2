#include "tool/file_lock.h"

#include <algorithm>
#include <chrono>

#include "tool/messages.h"

using namespace qvledger;

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience(1); // time before the wait is reported
constexpr int kShortestPause = 10;           // milliseconds
constexpr int kLongestPause = 100;

bool qvledger::isMessagesFile(int fd) {
    OS_fileIdentity file = {};
    OS_fileIdentity messages = {};
    return OS_IdentifyDescriptor(fd, &file) == 0 && OS_IdentifyDescriptor(_fileno(stderr), &messages) == 0 &&
           OS_IsSameFile(file, messages);
}

// Polls, because a blocking lock could start just after the signal that should interrupt it.
LockResult qvledger::lockFile(int fd, const char *name) {
    const Clock::time_point start = Clock::now();
    // If messages go to this file, reporting the wait would change the other run's report, and that run would
    // then not delete its logs.
    bool isReported = isMessagesFile(fd);
    for (int pause = kShortestPause;; pause = std::min(2 * pause, kLongestPause)) {
        switch (OS_LockFile(fd)) {
        case OS_DONE:
            return LockResult::Locked;
        case OS_REFUSED:
            return LockResult::NotGranted;
        default:
            break;
        }
        if (OS_NotedSignal() != 0)
            return LockResult::GivenUp;
        if (!isReported && Clock::now() - start >= kPatience) {
            DisplayMsg(kMsgWaiting, name);
            isReported = true;
        }
        OS_Sleep(pause);
    }
}
