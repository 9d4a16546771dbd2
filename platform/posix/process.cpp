#include "platform/os.h"

#include <atomic>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <initializer_list>

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

// Every operation of the facility asks, and a system call would cost more than most of them do.  Only a fork
// changes the number.
static std::atomic<int> knownPid; // 0: not known

static int findPid() {
    static const bool forkIsSeen = OS_WatchForks([] { knownPid = 0; }) == 0;
    const int pid = getpid();
    if (forkIsSeen)
        knownPid = pid;
    return pid;
}

int _getpid() {
    const int pid = knownPid.load(std::memory_order_relaxed);
    return pid != 0 ? pid : findPid();
}

void OS_ChooseLocale(int in_category) {
    static_cast<void>(std::setlocale(in_category, "")); // one that is not installed leaves "C"
}

int OS_WatchForks(void (*in_function)()) {
    return pthread_atfork(nullptr, nullptr, in_function);
}

const char *OS_ProgramName() {
    return program_invocation_short_name;
}

void OS_PrepareProcess() {
    for (const int ignored : {SIGPIPE, SIGIO, SIGXFSZ})
        std::signal(ignored, SIG_IGN);
    // What stands in for a closed stream refuses its use, as a closed one does.
    while (true) {
        const int fd = open("/dev/null", O_RDONLY);
        if (fd == -1 || fd > STDERR_FILENO) {
            if (fd != -1)
                static_cast<void>(close(fd));
            return;
        }
    }
}
