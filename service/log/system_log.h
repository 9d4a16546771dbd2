// The system's log: entries to the daemon that syslog(3) speaks to, in the same form, without ever being held
// up by it.
#pragma once

#include <cstdint>
#include <string_view>

#include "service/log/log_patience.h"

namespace qvledger {

constexpr char kSystemLogPath[] = "/dev/log";

// Each entry finds the daemon anew by its socket's name, so a daemon that was restarted has the next one.  A
// daemon that is not there or takes nothing is tried once a second.
//
// Threads may use it together once it is open.
class SystemLog {
public:
    // REQUIRES: the path stays, and is short enough for a socket's name.
    constexpr explicit SystemLog(const char *givenPath) : path(givenPath) {}

    void open();
    void close();

    // Worth a try?
    bool isReady() const { return !patience.isOver(); }
    // Forgets that entries were refused: the next one is tried.
    void tryAgain(std::int64_t longestWait) { patience.renew(longestWait); }

    // False when the daemon did not take all of the entry.  What is no failure is a detail.
    bool send(bool isFailure, std::string_view text);

private:
    bool trySend(std::string_view bytes) const;
    bool sendOverStream(std::string_view bytes) const;

    const char *path;
    int fd = -1; // a socket for datagrams that is connected to nobody
    LogPatience patience;
};

// The descriptor's file under a number behind the standard streams', whose place an open file must not take;
// -1 when there is none, the file is closed then.
int movedBehindStandardStreams(int fd);

} // namespace qvledger
