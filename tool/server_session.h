// What a driver does with the facility before a server's first log and behind its last one.
#pragma once

#include "ala/ala.h"
#include "platform/malloced.h"
#include "tool/options.h"

namespace qvledger {

// A registration and the lists of its logs.  Released step by step at the normal end, as each step can fail.
struct ServerSession {
    ALA_handle_t mainh = nullptr;
    dateNode *dateList = nullptr;
    ALA_name *nameList = nullptr; // one a date
    bool isListCut = false;       // logs may be missing

    ServerSession() = default;
    ~ServerSession();
    ServerSession(const ServerSession &) = delete;
    ServerSession &operator=(const ServerSession &) = delete;
};

// Sets the environment that the registry has for a server.  False: the registry has none, or it could not be
// read or set.
bool loadServiceEnvironment(const char *serverName);

// The directory of the logs: the option's, or QV_ROOT directly followed by "/var/acct", which made then owns.
// Null without QV_ROOT, and when memory runs out.
const char *findLogPath(const Options &options, Malloced<char> &made);

// Tells why there is no such directory: the status that ends the server's turn.
int reportNoLogPath();

// Registers the options' server.  0, or the code that ends the server's turn, which is told.
ALA_retCode_t registerServer(const Options &options, const char *logPath, ServerSession &session);

// Lists the server's logs, and reports what the list does not show.  0, or the code that ends the server's
// turn, which is reported.
ALA_retCode_t listLogs(const Options &options, ServerSession &session);

// How many of the listed logs are in the range.
std::int32_t countLogs(const ServerSession &session, const DateRange &range);

// Gives back what the turn holds.  0, or the code of the step that failed, which is logged and the last one.
ALA_retCode_t endSession(ServerSession &session);

} // namespace qvledger
