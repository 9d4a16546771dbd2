// The session of a server: the steps before the first log and after the last log.
#pragma once

#include "ala/ala.h"
#include "platform/malloced.h"
#include "tool/options.h"

namespace qvledger {

// The registration of a server and the lists of its logs.  endSession() releases both and logs a failure; the
// destructor releases what endSession() has not released, and ignores failures.
struct ServerSession {
    ALA_handle_t mainh = nullptr;
    dateNode *dateList = nullptr;
    ALA_name *nameList = nullptr; // file names of the logs, in the order of dateList
    bool isListCut = false;       // the lists may lack logs

    ServerSession() = default;
    ~ServerSession();
    ServerSession(const ServerSession &) = delete;
    ServerSession &operator=(const ServerSession &) = delete;
};

// Sets the environment from the registry's settings for a server.  False if there are no settings, or if they
// cannot be read or set.
bool loadServiceEnvironment(const char *serverName);

// The directory of the logs: the path of -p or, without -p, QV_ROOT followed by "/var/acct".  `made` owns a
// path made from QV_ROOT.  Without -p, null if QV_ROOT is not set or memory runs out.
const char *findLogPath(const Options &options, Malloced<char> &made);

// Reports why findLogPath() returned null.  Returns the exit status for this failure.
int reportNoLogPath();

// Registers the server of the options.  Returns 0, or the code of a failure, which is reported.
ALA_retCode_t registerServer(const Options &options, const char *logPath, ServerSession &session);

// Lists the server's logs.  Reports logs that are being deleted, and an incomplete list.  Returns 0, or the
// code of a failure, which is reported and ends the registration.
ALA_retCode_t listLogs(const Options &options, ServerSession &session);

// Prints a message if the current day's log and another log in the date range have the same date: a program
// that opens logs by date may open one of the two twice.
void reportEqualDates(const ServerSession &session, const DateRange &range);

// The number of listed logs in the date range.
std::int32_t countLogs(const ServerSession &session, const DateRange &range);

// Releases the lists and the registration.  Returns 0, or logs and returns the code of the first step that
// failed.  The destructor does the remaining steps.
ALA_retCode_t endSession(ServerSession &session);

} // namespace qvledger
