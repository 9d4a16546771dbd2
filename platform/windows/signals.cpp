#include "platform/os.h"

#include <atomic>
#include <csignal>

static std::atomic<int> notedSignal = 0;
constexpr DWORD kTimeToEnd = 4500;        // milliseconds; the system ends the program after five seconds
constexpr UINT kInterrupted = 0xC000013A; // exit status of a program that Ctrl+C ends

// Notes the first signal.  The system calls this handler on a separate thread.  A later signal is not
// handled, so it ends the program.
static BOOL WINAPI note(DWORD kind) {
    // Only a service receives this event, for the logoff of any user, and continues.
    if (kind == CTRL_LOGOFF_EVENT)
        return 1;
    int none = 0;
    const bool isFirst = notedSignal.compare_exchange_strong(none, kind == CTRL_C_EVENT ? SIGINT : SIGTERM);
    // After the other events the system ends the program when the handler returns, so the handler waits to
    // give the program time to finish.
    if (isFirst && kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT)
        Sleep(kTimeToEnd);
    return isFirst ? 1 : 0;
}

void OS_NoteEndSignals() {
    static_cast<void>(SetConsoleCtrlHandler(note, 1)); // on failure, the first signal ends the program
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
