// The sink of the log's entries: a file, the standard error stream, or the system's log.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "platform/os.h"
#include "service/log/log.h"

namespace qvledger {

struct LogPlace {
    std::int32_t level; // LOG_EXPECTED to LOG_TRACE
    const char *file;   // stays valid until the program ends
    std::int32_t line;
};

// The level that an entry shows.
inline std::int32_t shownLevel(std::int32_t level) {
    return std::max(level, LOG_ERROR);
}

// Writes entries.  An entry that the sink does not accept at once is dropped and counted as lost.  REQUIRES:
// only one thread at a time uses a sink.
class LogSink {
public:
    // Opens the sink.  name: the value of QV_LOG; null or empty means the system's log.  If a file cannot be
    // opened, the system's log is used and its first entry gives the reason.
    void open(const char *name);
    void close();
    bool isOpen() const { return isOpen_; }

    // Writes an entry that represents `calls` log calls.  If the entry is not accepted, `calls` entries are
    // counted as lost.
    void write(const LogPlace &place, std::string_view text, std::uint64_t calls = 1);
    // If entries were lost, writes an entry with their number.  Returns false if that entry is not accepted,
    // otherwise true.
    bool writeLost();
    void forgetLost() { lost_ = 0; }

    // Number of bytes written to a file; 0 if the sink does not write to this file.
    std::int64_t bytesIn(const OS_fileIdentity &file) const {
        return fd_ >= 0 && OS_IsSameFile(file, opened_) ? written_ : 0;
    }

    const char *systemLogPath = "/dev/log";

private:
    // Each system has its own implementation: log_system.cpp, windows/log_system.cpp.
    static int openFile(const char *name);                          // returns a descriptor, or -1 with errno
    static std::size_t writeAtOnce(int fd, std::string_view bytes); // returns the number of bytes written
    static bool sendToSystemLog(const char *path, std::int32_t level, std::string_view entry);

    bool put(const LogPlace &place, std::string_view text);
    bool isStillOpen() const;

    bool isOpen_ = false;
    int fd_ = -1; // -1 for the system's log
    OS_fileIdentity opened_ = {};
    bool isCut_ = false;       // only part of the last line was written
    std::int64_t written_ = 0; // number of bytes
    std::uint64_t lost_ = 0;
};

} // namespace qvledger
