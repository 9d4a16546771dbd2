#include "platform/os.h"

#include <csignal>
#include <ctime>
#include <initializer_list>

// Nanoseconds after the first signal in which more signals are ignored.
constexpr long kAtOnce = 50'000'000;

static volatile std::sig_atomic_t notedSignal = 0;
static std::timespec notedAt; // only the signal handler uses this variable

static void endBy(int signal) {
    std::signal(signal, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    std::raise(signal);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
}

static void note(int signal) {
    std::timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (notedSignal == 0) {
        notedSignal = signal;
        notedAt = now;
    } else if ((now.tv_sec - notedAt.tv_sec) * 1'000'000'000 + now.tv_nsec - notedAt.tv_nsec > kAtOnce) {
        endBy(signal);
    }
}

void OS_NoteEndSignals() {
    for (const int asking : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        struct sigaction noting = {};
        noting.sa_handler = note; // without SA_RESTART, so a signal interrupts a blocking call
        for (const int other : {SIGINT, SIGTERM, SIGHUP})
            sigaddset(&noting.sa_mask, other);
        if (sigaction(asking, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            static_cast<void>(sigaction(asking, &noting, nullptr)); // cannot fail: the arguments are valid
    }
}

int OS_NotedSignal() {
    return notedSignal;
}

void OS_EndBySignal() {
    if (notedSignal != 0)
        endBy(notedSignal);
}

void OS_Sleep(int milliseconds) {
    const std::timespec length = {milliseconds / 1000, milliseconds % 1000 * 1'000'000L};
    static_cast<void>(nanosleep(&length, nullptr)); // a signal may end the sleep early
}
