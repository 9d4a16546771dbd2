// Where the log's entries go: a file, the standard error stream, or the system's log.
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "service/log/log_descriptor.h"
#include "service/log/log_patience.h"
#include "service/log/log_repeats.h"
#include "service/log/system_log.h"

namespace qvledger {

// Nothing that reads slowly or not at all holds the program up: what is not taken is counted, and told with
// the next entry that is.  Only a file on a disk, a terminal, and the standard error stream while all is to
// be complete are waited for.
//
// Threads share an open sink.  It needs no destructor, so that entries may come to the program's very end.
class LogSink {
public:
    constexpr explicit LogSink(const char *systemLogPath) : systemLog(systemLogPath) {}

    // By name as QV_LOG has it; null or empty is the system's log.  So is a file that cannot be opened, which
    // is the first thing told there.
    // REQUIRES: no other thread uses the sink; it was not opened, or closed since.
    void open(const char *name, bool isComplete);
    void close();

    bool isOpen() const { return kind != Kind::nowhere; }
    bool isSystemLog() const { return kind == Kind::systemLog; }

    // Worth a try?  It is not for up to a second after entries were refused.
    bool isReady() const { return kind == Kind::systemLog ? systemLog.isReady() : !patience.isOver(); }
    // Forgets that entries were refused, and may wait for so many microseconds from now on.
    void tryAgain(std::int64_t longestWait = LogPatience::kLongestWait);

    // Writes an entry, behind the number of the lost ones if there are any.  False when it was not taken; the
    // calls it stands for are lost then.
    bool write(const LogPlace &place, std::string_view text, std::uint64_t calls = 1);
    // Calls whose entry is not even tried are lost too.
    void lose(std::uint64_t calls) { lost.fetch_add(calls, std::memory_order_relaxed); }
    // Tells how many are lost, if any are; false when that was not taken.
    bool tellLost();
    // In the process that a fork made: what was lost is told by the other one.
    void forgetLost() { lost.store(0, std::memory_order_relaxed); }

private:
    enum class Kind { nowhere, descriptor, systemLog };

    void openFile(const char *name);
    bool put(const LogPlace &place, std::string_view text);
    bool putLine(std::string_view line);
    std::size_t pass(std::string_view bytes);

    Kind kind = Kind::nowhere;
    LogDescriptor descriptor;
    SystemLog systemLog;
    LogPatience patience;            // with the descriptor's reader
    std::atomic<bool> isCut = false; // the last line that was written did not come to its end
    std::atomic<std::uint64_t> lost = 0;
};

} // namespace qvledger
