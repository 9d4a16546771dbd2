// Lists the logs of a server and their dates.
//
// A file belongs to a server if its name is the server's name, a dot and a tail.  The tail is "current" for
// the current day's log, whose date is that of its last change, and otherwise the eight digits of the date.
#pragma once

#include <cstdint>

#include "ala/ala.h"

// A list of logs.
struct nameNode {
    char *logName; // file name without directory; owned
    std::int32_t date;
    nameNode *next;
};

// The oldest log's name, to be released with free, and its date number.  If two logs have that date, the
// first one in the directory's order.  The outputs are written on success only.
// ALA_A_FAIL_GET_LOG_NAME_FROM_DIR: there is no log; ALA_A_FAIL_OPEN_DIR: the directory cannot be opened;
// ALA_A_FAIL_TO_GET_TIME: the current day's log has vanished; ALA_A_INVALID_ARG, ALA_A_OUT_OF_MEMORY,
// ALA_A_UNKNOWN_ERR as for scanLogs.
ALA_retCode_t ALA__GetOldestLogName(const char *inp_svrName, const char *inp_acctLogPath,
                                    char **outpp_logName, std::int32_t *outp_dateInNum);

// All logs, newest first; null if there are none.  Written on success only; release the list with
// ALA__FreeNameNodeList.
// ALA_A_INVALID_LOG_PATH_NAME: the directory cannot be opened; ALA_A_INVALID_ARG, ALA_A_OUT_OF_MEMORY,
// ALA_A_UNKNOWN_ERR as for scanLogs.
ALA_retCode_t ALA__GetSortedLogList(const char *inp_svrName, const char *inp_acctLogPath,
                                    nameNode **outp_nameList);

// Sorts the list by descending date, in place.  Logs of one date are mostly reversed; listing.cpp has the
// rule.
void ALA__SortList(nameNode **inoutp_head);
void ALA__FreeNameNodeList(nameNode **inoutp_list);
