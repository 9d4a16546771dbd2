// The state file of qvledger-json's option -c.
#pragma once

#include <string>

#include "tool/json/written_logs.h"
#include "tool/report/report_file.h"

namespace qvledger {

// A run locks the file's path and ".lock" for as long as the object exists, so that another run with the same
// state file waits.
class StateFile {
public:
    // REQUIRES: the name outlives this object.
    explicit StateFile(const char *name) : name_(name) {}

    // Locks and reads the file, and creates it if it does not exist.  report: the report's name; null:
    // standard output.  False if the file cannot be used, after a message, or if a signal ended the wait.
    bool open(const char *report);

    const char *name() const { return name_; }
    WrittenLogs &logs() { return logs_; }

    // Replaces the file atomically, and syncs it.  False on failure, after a message.
    bool save() const;

private:
    bool create() const;
    bool read();
    bool isReport(const char *report) const;

    const char *name_;
    std::string path_; // the name without symbolic links
    std::string lockPath_;
    ReportFile lock_; // opened and locked like a report
    WrittenLogs logs_;
};

} // namespace qvledger
