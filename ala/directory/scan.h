// One pass over a log directory.
#pragma once

#include <cstdint>

#include "ala/ala.h"

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
    virtual ALA_retCode_t visit(const FoundLog &in_log) = 0;

protected:
    ~LogVisitor() = default;
};

// Visits the server's logs in the directory's order until a visit gives a code other than ALA_N_NORMAL, which
// is then the result.
ALA_retCode_t scanLogs(const char *inp_svrName, const char *inp_acctLogPath, const ScanRules &in_rules,
                       LogVisitor &inoutp_visitor);
