// For drivers: the set-up before a registration, the list of logs, and queries about a single log.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/base/concatenate.h"
#include "ala/base/date_number.h"
#include "ala/base/registry_keys.h"
#include "ala/registration/environment.h"
#include "platform/os.h"

namespace qvledger {

// Called for logs that the list of logs lacks.
class ListingWatch {
public:
    // Reports a log that a run has renamed to delete it.  name: its file name without the directory.
    virtual void aside(const char *name) = 0;
    // Reports that reading the directory failed (errno), so logs may be missing.
    virtual void cut(int error) = 0;

protected:
    ~ListingWatch() = default;
};

// ALA_ListExistingLogsByDate with a watch.
ALA_retCode_t listLogsByDate(ALA_handle_t handle, ListingWatch &watch, dateNode **dateList,
                             ALA_name **nameList);

// The file name of an open log without its directory; owned by the log.
const char *logFileName(ALA_acctLogHandle_t log);

// True if ALA_GetFirstJobRecord has found no record because the file ends after its header.
bool hasNoRecord(ALA_acctLogHandle_t log);

// Is the file, open as fd, a log in this directory?  A log of another server, a log that is being deleted,
// and a file that a link with a log's name leads to are logs, too.  If not every entry could be compared:
// does the file begin like a log?
bool isLog(const char *serverName, const char *acctLogPath, const OS_fileIdentity &file, std::int32_t fd);

} // namespace qvledger
