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
    const char *tail; // the name after the prefix
};

class EntryVisitor {
public:
    virtual ALA_retCode_t visit(const FoundEntry &entry) = 0;
    // The directory could not be read to its end; the argument is the errno.
    virtual void cut(int) {}

protected:
    ~EntryVisitor() = default;
};

// Visits the entries of a directory until a visit returns a code other than ALA_N_NORMAL.  Visits nothing if
// the directory cannot be opened; the listing reports that.
void visitDirectory(const char *path, const char *prefix, EntryVisitor &visitor);

// The longest tail of a log's name, in bytes.
constexpr std::size_t kLongestTail = 8;

// Is this the tail of a log that was renamed to be deleted?
bool isAside(std::string_view tail);

struct FoundLog {
    const char *name; // without directory; valid until the visitor returns
    std::int32_t date;
};

// How the scans differ: in their log lines, in the code for a directory that cannot be opened, and in whether
// a current day's log that cannot be dated ends the scan or is skipped because it has vanished.
struct ScanRules {
    const char *invalidArgument;
    const char *noMemory;
    const char *pathNotConverted;
    const char *directoryNotOpened;
    ALA_retCode_t codeOfDirectory;
    const char *notDated; // null: the log is skipped
};

class LogVisitor {
public:
    virtual ALA_retCode_t visit(const FoundLog &log) = 0;
    // A log that was renamed to be deleted; its name without directory.
    virtual void aside(const char *) {}
    virtual void cut(int) {}

protected:
    ~LogVisitor() = default;
};

// Visits the server's logs in the directory's order until a visit returns a code other than ALA_N_NORMAL, and
// returns that code.  A log whose date is off the calendar is logged and skipped.
// ALA_A_INVALID_ARG: a null argument; ALA_A_UNKNOWN_ERR: the path cannot be converted; ALA_A_OUT_OF_MEMORY;
// rules.codeOfDirectory; ALA_A_FAIL_TO_GET_TIME if rules.notDated is set.
ALA_retCode_t scanLogs(const char *svrName, const char *acctLogPath, const ScanRules &rules,
                       LogVisitor &visitor);

} // namespace qvledger
