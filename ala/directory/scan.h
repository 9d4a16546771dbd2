// One pass over a log directory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ala/ala.h"

namespace qvledger {

// One entry of a directory whose name begins with the wanted prefix.  The texts are good until the visitor
// returns.
struct FoundEntry {
    const char *directory;
    const char *name;
    const char *tail; // of the name, after the prefix
};

class EntryVisitor {
public:
    virtual ALA_retCode_t visit(const FoundEntry &entry) = 0;
    // The directory could not be read to its end, for the system's reason (errno).
    virtual void cut(int) {}

protected:
    ~EntryVisitor() = default;
};

// Visits the entries of a directory until a visit gives a code other than ALA_N_NORMAL.  A directory that
// cannot be opened, which the listing reports, has none.
void visitDirectory(const char *path, const char *prefix, EntryVisitor &visitor);

// The longest tail of a log's name.
constexpr std::size_t kLongestTail = 8;

// Is this the tail of a log that has been renamed to be deleted?
bool isAside(std::string_view tail);

struct FoundLog {
    const char *name; // file name without directory, good until the visitor returns
    std::int32_t date;
};

// What differs between the scans: the level 5 lines, the code for a directory that does not open, and whether
// a log of the day in progress that cannot be dated ends the scan or is passed over as vanished.
struct ScanRules {
    const char *invalidArgument;
    const char *noMemory;
    const char *pathNotConverted;
    const char *directoryNotOpened;
    ALA_retCode_t codeOfDirectory;
    const char *notDated; // null: passed over
};

class LogVisitor {
public:
    virtual ALA_retCode_t visit(const FoundLog &log) = 0;
    // A log that has been renamed to be deleted.
    virtual void aside(const char *) {}
    virtual void cut(int) {}

protected:
    ~LogVisitor() = default;
};

// Visits the server's logs in the directory's order until a visit gives a code other than ALA_N_NORMAL, which
// is then the result.
ALA_retCode_t scanLogs(const char *svrName, const char *acctLogPath, const ScanRules &rules,
                       LogVisitor &visitor);

} // namespace qvledger
