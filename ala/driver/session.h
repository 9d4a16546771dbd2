// Functions for drivers: preparations for a registration, the list of logs, and queries about a single log.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ala/ala.h"
#include "ala/base/concatenate.h"
#include "ala/base/date_number.h"
#include "ala/base/registry_keys.h"
#include "ala/registration/environment.h"
#include "platform/os.h"

namespace qvledger {

// Called while the list of logs is made, for logs that the list does not contain.
class ListingWatch {
public:
    // Reports a log that a process has renamed to delete it.  name: the file name without the directory.
    virtual void aside(const char *name) = 0;
    // Reports that reading the directory failed, so logs may be missing from the list.  error: errno.
    virtual void cut(int error) = 0;

protected:
    ~ListingWatch() = default;
};

// Like ALA_ListExistingLogsByDate, and also calls the watch.
ALA_retCode_t listLogsByDate(ALA_handle_t handle, ListingWatch &watch, dateNode **dateList,
                             ALA_name **nameList);

// Returns the file name of an open log without the directory.  The log owns the text.
const char *logFileName(ALA_acctLogHandle_t log);

// True if the last attempt to read a record was ALA_GetFirstJobRecord, and the file ended after the header.
bool hasNoRecord(ALA_acctLogHandle_t log);

// Is an open file a log in this directory?  Also true for a log of another server, for a log that is being
// deleted, and for a file to which a link with a log's name leads.  False if the directory cannot be opened.
// If some entries of the directory could not be compared, returns whether the file begins like a log.  file:
// the identity of the file that is open as fd.
bool isLog(const char *serverName, const char *acctLogPath, const OS_fileIdentity &file, std::int32_t fd);

// Is this the part of a log's name after the server's name and the dot: "current" or eight digits?
bool isLogTail(std::string_view tail);

// Finds the names in a log directory that look like logs of the server although the listing skips them:
// compressed or renamed logs, for example, and the server's name in another case.  Skips logs that are being
// deleted, and logs of another server, such as "alpha.x.20261103" for the server alpha.  Adds the names in
// alphabetical order.  Returns 0, or the errno of a failed read, after which names can be missing.  Finds
// nothing if the directory cannot be opened.
int findNamesLikeLogs(const char *serverName, const char *acctLogPath, std::vector<std::string> &names);

} // namespace qvledger
