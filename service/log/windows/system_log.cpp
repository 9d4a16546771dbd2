// The system's log is the event log.
#include "service/log/system_log.h"

#include <cerrno>
#include <string>

#include "platform/os.h"
#include "service/log/log_text.h"

using namespace qvledger;

void SystemLog::open() {
    patience.renew();
}

void SystemLog::close() {}

// An event's one text.  The source has no file of messages, so that the event log shows the text as it is.
static bool report(bool isFailure, const char *text) {
    const HANDLE source = RegisterEventSourceA(nullptr, "qvledger");
    if (source == nullptr)
        return false;
    const WORD type = isFailure ? EVENTLOG_ERROR_TYPE : EVENTLOG_INFORMATION_TYPE;
    const bool isTaken = ReportEventA(source, type, 0, 1, nullptr, 1, 0, &text, nullptr) != 0;
    DeregisterEventSource(source);
    return isTaken;
}

bool SystemLog::send(bool isFailure, std::string_view text) {
    LogText entry;
    entry.append(text);
    entry.end('\0');
    return patience.attempt([&] {
        const bool isTaken = report(isFailure, entry.view().data());
        errno = isTaken ? 0 : EIO; // a wait would not help
        return isTaken;
    });
}
