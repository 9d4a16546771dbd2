// Logs that are read in order to be deleted.
//
// Several drivers may work on one log directory, beside the server that writes to it.  So such a log is
// locked before its first record is read, is kept open until it is gone, and is removed only if its file is
// the one that was read and nobody has written to it since.  docs/architecture.md has the order of the steps.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "platform/descriptor.h"
#include "platform/malloced.h"
#include "platform/os.h"

namespace qvledger {

enum class LockResult : std::uint8_t {
    Locked,
    NotGranted, // the system grants no locks on the file
    GivenUp     // another run has it locked, and the caller will not wait any longer
};

// Locks the file of a descriptor (OS_LockFile).  Waits for a run that has it locked as long as the driver
// likes.
using FileLocker = LockResult (*)(int fd, const char *path);

// ALA_Open, with the log locked before its first record is read, but not before its access list has admitted
// the caller; a header that was changed during the wait is checked again.  Where the system grants no locks
// the log is opened without one.  A log that lost its name during the wait is looked for again.
// ALA_N_NORMAL with a null log when the lock was given up.
ALA_retCode_t openForDeletion(ALA_handle_t handle, const ALA_time *date, FileLocker lock,
                              ALA_acctLogHandle_t *logHandle);

// A log that was read to its end.  It keeps the file open, and locked, when the log is closed.
struct ReadLog {
    Descriptor file;
    Malloced<char> path;      // under which it was opened
    OS_fileIdentity identity; // as it was before anything of it was read
    std::int64_t end;         // bytes that were read
};

// Makes one of an open log.  Null, or why it cannot be deleted.
const char *keepReadLog(ALA_acctLogHandle_t log, ReadLog &read);

// Asked and informed while a log is deleted.
class DeletionWatch {
public:
    // Directly before the log is removed: are its lines still safe elsewhere?  Null, or why it has to stay.
    virtual const char *objection() = 0;
    // A log that is not deleted stays under this path.
    virtual void leftAside(const char *path, const char *why) = 0;

protected:
    ~DeletionWatch() = default;
};

// ALA_Delete for a log that was read.  ALA_N_NORMAL with *kept true, and a log entry that says why, when it
// stays.
ALA_retCode_t deleteReadLog(ALA_handle_t handle, const ALA_time *date, const ReadLog &read,
                            DeletionWatch &watch, bool *kept);

// Gives their names back to logs that a run which ended early was about to delete, with a log entry for each.
// One whose name cannot be given back stays as it is.
void restoreLogs(ALA_handle_t handle, DeletionWatch &watch);

} // namespace qvledger
