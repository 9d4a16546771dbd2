// The session of a server: the steps before its first log and after its last.
#pragma once

#include "ala/ala.h"
#include "platform/malloced.h"
#include "tool/options.h"

namespace qvledger {

// A registration and the lists of its logs.  endSession() releases them with results; the destructor,
// without.
struct ServerSession {
    ALA_handle_t mainh = nullptr;
    dateNode *dateList = nullptr;
    ALA_name *nameList = nullptr; // one per date
    bool isListCut = false;       // logs may be missing

    ServerSession() = default;
    ~ServerSession();
    ServerSession(const ServerSession &) = delete;
    ServerSession &operator=(const ServerSession &) = delete;
};

// Sets the environment from the registry's settings for a server.  False if there are none, or they cannot be
// read or set.
bool loadServiceEnvironment(const char *serverName);

// The directory of the logs: the option's, or QV_ROOT followed by "/var/acct"; `made` owns the latter.  Null
// without QV_ROOT, and if memory runs out.
const char *findLogPath(const Options &options, Malloced<char> &made);

// Reports why findLogPath() returned null.  The exit status for it.
int reportNoLogPath();

// Registers the server of the options.  0, or the code of a failure, which is reported.
ALA_retCode_t registerServer(const Options &options, const char *logPath, ServerSession &session);

// Lists the server's logs.  Reports logs that are being deleted, an incomplete list, and logs with the same
// date.  0, or the code of a failure, which is reported.
ALA_retCode_t listLogs(const Options &options, ServerSession &session);

// The number of listed logs in the range.
std::int32_t countLogs(const ServerSession &session, const DateRange &range);

// Releases the lists and the registration.  0, or the code of the first step that failed, which is logged;
// later steps are left to the destructor.
ALA_retCode_t endSession(ServerSession &session);

} // namespace qvledger
