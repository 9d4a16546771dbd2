// What a driver needs of the facility around a server's logs: the set-up before a registration, the list of
// logs, and facts about a single log.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/base/concatenate.h"
#include "ala/base/date_number.h"
#include "ala/base/registry_keys.h"
#include "ala/registration/environment.h"
#include "platform/os.h"

namespace qvledger {

// Receives what the list of logs does not show.
class ListingWatch {
public:
    // A log of the server that has been renamed to be deleted; its name without the directory.
    virtual void aside(const char *name) = 0;
    // The directory could not be read to its end, for the system's reason (errno): logs may be missing.
    virtual void cut(int error) = 0;

protected:
    ~ListingWatch() = default;
};

// ALA_ListExistingLogsByDate with a watch.
ALA_retCode_t listLogsByDate(ALA_handle_t handle, ListingWatch &watch, dateNode **dateList,
                             ALA_name **nameList);

// The name of an open log's file, without its directory.
const char *logFileName(ALA_acctLogHandle_t log);

// True if the log's first record was asked for and there is none: the file ends after its header.
bool hasNoRecord(ALA_acctLogHandle_t log);

// Is that file, open under the descriptor, one of the logs that a server has in a directory, under any name,
// or one that is being deleted, or another server's log there?  If not all names could be compared, any file
// that begins as a log counts as one.
bool isLog(const char *serverName, const char *acctLogPath, const OS_fileIdentity &file, std::int32_t fd);

} // namespace qvledger
