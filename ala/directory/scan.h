// Scans a log directory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ala/ala.h"

namespace qvledger {

// A directory entry whose name begins with the wanted prefix.  The strings are valid until the visitor
// returns.
struct FoundEntry {
    const char *directory;
    const char *name;
    const char *tail; // part of the name after the prefix
};

class EntryVisitor {
public:
    virtual ALA_retCode_t visit(const FoundEntry &entry) = 0;
    // Called if the directory could not be read to its end.  The argument is the errno.
    virtual void cut(int) {}

protected:
    ~EntryVisitor() = default;
};

// Visits the entries of a directory whose names begin with the prefix, until a visit returns a code other
// than ALA_N_NORMAL.  Visits nothing if the directory cannot be opened; the listing of the logs reports that
// failure.
void visitDirectory(const char *path, const char *prefix, EntryVisitor &visitor);

// The longest tail of a log's name, in bytes.
constexpr std::size_t kLongestTail = 8;

// Is this the tail of a log that was renamed because it is being deleted?
bool isAside(std::string_view tail);

struct FoundLog {
    const char *name; // without directory; valid until the visitor returns
    std::int32_t date;
};

// The differences between the scans: the log lines, the code for a directory that cannot be opened, and the
// handling of a current day's log that has no date because it has vanished.  Such a log ends the scan or is
// skipped.
struct ScanRules {
    const char *invalidArgument;
    const char *noMemory;
    const char *pathNotConverted;
    const char *directoryNotOpened;
    ALA_retCode_t codeOfDirectory;
    const char *notDated; // log line for a log without a date; null: the log is skipped
};

class LogVisitor {
public:
    virtual ALA_retCode_t visit(const FoundLog &log) = 0;
    // Called for a log that was renamed because it is being deleted.  The argument is the log's name without
    // directory.
    virtual void aside(const char *) {}
    // Called if the directory could not be read to its end.  The argument is the errno.
    virtual void cut(int) {}

protected:
    ~LogVisitor() = default;
};

// Visits the server's logs in the directory's order until a visit returns a code other than ALA_N_NORMAL, and
// returns that code.  Skips a log whose date is kOffTheCalendar, and logs this.
// ALA_A_INVALID_ARG: a null argument; ALA_A_UNKNOWN_ERR: the path cannot be converted; ALA_A_OUT_OF_MEMORY;
// rules.codeOfDirectory: the directory cannot be opened; ALA_A_FAIL_TO_GET_TIME: the current day's log has
// vanished, and rules.notDated is not null.
ALA_retCode_t scanLogs(const char *svrName, const char *acctLogPath, const ScanRules &rules,
                       LogVisitor &visitor);

} // namespace qvledger
