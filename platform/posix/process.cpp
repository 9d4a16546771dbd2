#include "platform/os.h"

#include <atomic>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <initializer_list>
#include <new>

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

// Makes memory for the cached process id; null on failure, for example if the system cannot clear the memory
// in children.  The id is cached because every operation of ala/ needs it, and a system call would cost more
// than most operations.  The kernel clears the memory in every child; a handler of pthread_atfork would not
// run after a raw clone().
static std::atomic<int> *makeKnownPid() {
    const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void *page = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED)
        return nullptr;
    if (madvise(page, size, MADV_WIPEONFORK) == 0)
        return new (page) std::atomic<int>(0);
    static_cast<void>(munmap(page, size));
    return nullptr;
}

static std::atomic<int> *const knownPid = makeKnownPid();

int _getpid() {
    if (knownPid == nullptr)
        return getpid();
    int pid = knownPid->load(std::memory_order_relaxed);
    if (pid == 0) {
        pid = getpid();
        knownPid->store(pid, std::memory_order_relaxed);
    }
    return pid;
}

void OS_ChooseLocale(int category) {
    static_cast<void>(std::setlocale(category, "")); // stays "C" if the user's locale is not installed
}

int OS_WatchForks(void (*function)()) {
    return pthread_atfork(nullptr, nullptr, function);
}

const char *OS_ProgramName() {
    return program_invocation_short_name;
}

void OS_PrepareProcess() {
    for (const int ignored : {SIGPIPE, SIGIO, SIGXFSZ})
        std::signal(ignored, SIG_IGN);
    // Gives the numbers of closed standard streams to descriptors that fail every read and write, as closed
    // descriptors do.  Opening /dev/stdout to write fails too, because it then refers to a folder.
    while (true) {
        const int fd = open("/", O_PATH);
        if (fd == -1 || fd > STDERR_FILENO) {
            if (fd != -1)
                static_cast<void>(close(fd));
            return;
        }
    }
}
