// Where the log's entries go: a file, the standard error stream, or the system's log.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/os.h"

namespace qvledger {

struct LogPlace {
    std::int32_t level;
    const char *file; // stays valid until the program ends
    std::int32_t line;
};

// An entry that is not taken at once is dropped and counted.  One thread at a time uses a sink.
class LogSink {
public:
    // Opens the sink that QV_LOG names; null or empty is the system's log.  So is a file that cannot be
    // opened, and the first entry there gives the reason.
    void open(const char *name);
    void close();
    bool isOpen() const { return isOpen_; }

    // Writes an entry that stands for a number of calls, which are lost if it is not taken.
    void write(const LogPlace &place, std::string_view text, std::uint64_t calls = 1);
    // Writes how many calls are lost, if any; false if that was not taken.
    bool writeLost();
    void forgetLost() { lost_ = 0; }

    // How many bytes were written to a file; 0 if it is not the sink's.
    std::int64_t bytesIn(const OS_fileIdentity &file) const {
        return fd_ >= 0 && OS_IsSameFile(file, opened_) ? written_ : 0;
    }

    const char *systemLogPath = "/dev/log";

private:
    // The system's part, in log_system.cpp.
    static int openFile(const char *name);                          // never under a standard stream's number
    static std::size_t writeAtOnce(int fd, std::string_view bytes); // returns how many bytes were written
    static bool sendToSystemLog(const char *path, std::int32_t level, std::string_view entry);

    bool put(const LogPlace &place, std::string_view text);
    bool isStillOpen() const;

    bool isOpen_ = false;
    int fd_ = -1; // -1: the system's log
    OS_fileIdentity opened_ = {};
    bool isCut_ = false;       // the last line lacks its end
    std::int64_t written_ = 0; // bytes
    std::uint64_t lost_ = 0;
};

} // namespace qvledger
