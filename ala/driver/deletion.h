// Logs that are read and then deleted.
//
// Other drivers and the server may use the log directory at the same time.  So such a log is locked before
// its first record is read, kept open until it is deleted, and deleted only if it is the file that was read
// and it has not been written to since.  docs/architecture.md lists the steps.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "platform/descriptor.h"
#include "platform/malloced.h"
#include "platform/os.h"

namespace qvledger {

enum class LockResult : std::uint8_t {
    Locked,
    NotGranted, // the file cannot be locked on this system
    GivenUp     // another run has locked the file, and the driver stopped waiting
};

// The driver's function that locks an open file (OS_LockFile).  If another run has locked it, waits for as
// long as the driver chooses.
using FileLocker = LockResult (*)(int fd, const char *path);

// ALA_Open that also locks the log, after its access list has admitted the caller and before the first record
// is read.  If the header changed during the wait for the lock, the access list is checked again; if the log
// was renamed or removed, it is looked up again.  If it cannot be locked (NotGranted), it is opened unlocked.
// ALA_N_NORMAL and a null log if the driver stopped waiting.
ALA_retCode_t openForDeletion(ALA_handle_t handle, const ALA_time *date, FileLocker lock,
                              ALA_acctLogHandle_t *logHandle);

// A log that was read to its end.  Keeps the file open and locked after ALA_Close.
struct ReadLog {
    Descriptor file;
    Malloced<char> path;      // at opening
    OS_fileIdentity identity; // before the first record was read
    std::int64_t end;         // number of bytes read
};

// Fills a ReadLog from an open log.  Null, or why the log cannot be deleted.
const char *keepReadLog(ALA_acctLogHandle_t log, ReadLog &read);

// Called while a log is deleted.
class DeletionWatch {
public:
    // Called directly before the log is removed.  Null if its lines are still safe in the report, or why the
    // log must stay.
    virtual const char *objection() = 0;
    // Reports a log that was not deleted and cannot be renamed back.  path: its current name.
    virtual void leftAside(const char *path, const char *why) = 0;

protected:
    ~DeletionWatch() = default;
};

// ALA_Delete for a log that was read.  If the log must stay: ALA_N_NORMAL, *kept is true, and a log entry
// gives the reason.
ALA_retCode_t deleteReadLog(ALA_handle_t handle, const ALA_time *date, const ReadLog &read,
                            DeletionWatch &watch, bool *kept);

// Renames logs back that an interrupted run had renamed to delete them, and makes a log entry for each.
// Reports those that cannot be renamed back to the watch.
void restoreLogs(ALA_handle_t handle, DeletionWatch &watch);

} // namespace qvledger
