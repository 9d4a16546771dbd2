// The system's log is the event log.
#include <cstdlib>

#include "service/log/log.h"
#include "service/log/log_sink.h"
#include "service/log/log_text.h"

using namespace qvledger;

int LogSink::openFile(const char *name) {
    char *made = nullptr;
    const int fd = OS_OpenToAppend(name, &made);
    std::free(made);
    return fd;
}

// Windows does not report whether a pipe has room, so a write waits for the reader.
std::size_t LogSink::writeAtOnce(int fd, std::string_view bytes) {
    const int written = _write(fd, bytes.data(), static_cast<unsigned>(bytes.size()));
    return written > 0 ? static_cast<std::size_t>(written) : 0;
}

// Message 1 is the text alone if the administrator has registered the source (docs/windows.md).
bool LogSink::sendToSystemLog(const char *, std::int32_t level, std::string_view entry) {
    const HANDLE source = RegisterEventSourceA(nullptr, "qvledger");
    if (source == nullptr)
        return false;
    LogText text;
    text.append(entry);
    text.end('\0');
    const char *only = text.view().data();
    constexpr DWORD kTextAlone = 1;
    const WORD type = level == LOG_ERROR ? EVENTLOG_ERROR_TYPE : EVENTLOG_INFORMATION_TYPE;
    const bool isTaken = ReportEventA(source, type, 0, kTextAlone, nullptr, 1, 0, &only, nullptr) != 0;
    DeregisterEventSource(source);
    return isTaken;
}
