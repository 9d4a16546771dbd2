#include "platform/os.h"

#include <atomic>
#include <csignal>

static std::atomic<int> notedSignal = 0;
constexpr DWORD kTimeToEnd = 4500;        // milliseconds; the system waits for five seconds
constexpr UINT kInterrupted = 0xC000013A; // the status of a program that Ctrl+C ends

// On a thread of the system's.  A later one has its usual effect, which is the program's end.
static BOOL WINAPI note(DWORD kind) {
    int none = 0;
    const bool isFirst = notedSignal.compare_exchange_strong(none, kind == CTRL_C_EVENT ? SIGINT : SIGTERM);
    // The system ends the program when this returns, so the run has the time that the system gives.
    if (isFirst && kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT)
        Sleep(kTimeToEnd);
    return isFirst ? 1 : 0;
}

void OS_NoteEndSignals() {
    static_cast<void>(SetConsoleCtrlHandler(note, 1)); // without a console there is nothing to note
}

int OS_NotedSignal() {
    return notedSignal;
}

void OS_EndBySignal() {
    if (notedSignal != 0)
        ExitProcess(kInterrupted);
}

void OS_Sleep(int milliseconds) {
    Sleep(static_cast<DWORD>(milliseconds));
}
