// Reads a log and then deletes it.
//
// Other drivers and the server may use the log directory at the same time.  So the log is locked before its
// first record is read, and kept open until it is deleted.  The log is deleted only if the file with its name
// is still the file that was read, and that file has not been written to since.  docs/architecture.md lists
// the steps.
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
    GivenUp     // another process has locked the file, and the driver stopped waiting for the lock
};

// The driver's function that locks an open file with OS_LockFile.  If another process has locked the file,
// the function waits for as long as the driver chooses.
using FileLocker = LockResult (*)(int fd, const char *path);

// Opens a log like ALA_Open, and locks it when its access list has admitted the user.  If the header may have
// changed by the time the log is locked, the access list is checked again.  If the log was renamed or removed
// meanwhile, the date is looked up again.  If the system cannot lock the log (NotGranted), the log is opened
// without a lock.  Returns the codes of ALA_Open; ALA_N_NORMAL and a null log if the driver stopped waiting
// (GivenUp).
ALA_retCode_t openForDeletion(ALA_handle_t handle, const ALA_time *date, FileLocker lock,
                              ALA_acctLogHandle_t *logHandle);

// A log that was read to its end.  Keeps the log's file open and locked after ALA_Close.
struct ReadLog {
    Descriptor file;
    Malloced<char> path;      // path under which the file was opened
    OS_fileIdentity identity; // identity before the first record was read
    std::int64_t end;         // offset at which reading found the end of the file
};

// Fills a ReadLog from an open log.  Returns null, or the reason why the log cannot be deleted.
const char *keepReadLog(ALA_acctLogHandle_t log, ReadLog &read);

// Called while a log is deleted.
class DeletionWatch {
public:
    // Called directly before a log is removed.  Return null if the report still contains all lines of the
    // log, otherwise the reason why the log must stay.
    virtual const char *objection() = 0;
    // Reports a log that was not deleted and cannot be renamed back.  path: the log's current path.
    virtual void leftAside(const char *path, const char *why) = 0;

protected:
    ~DeletionWatch() = default;
};

// Deletes a log that was read.  Returns the codes of ALA_Delete.  If the log must stay, sets *kept to true,
// writes the reason to the program's log, and returns ALA_N_NORMAL.
ALA_retCode_t deleteReadLog(ALA_handle_t handle, const ALA_time *date, const ReadLog &read,
                            DeletionWatch &watch, bool *kept);

// Renames back the logs that an interrupted process had renamed to delete them, and writes the path of each
// log to the program's log.  Calls watch.leftAside for each log that cannot be renamed back.
void restoreLogs(ALA_handle_t handle, DeletionWatch &watch);

} // namespace qvledger
