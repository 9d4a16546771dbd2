// Lists the logs of a server and their dates.
//
// A file belongs to a server if its name is the server's name, a dot and a tail of at most 8 bytes.  The tail
// of the current day's log is "current"; the date of this log is the date of the file's last change.  The
// date of any other log is the number at the beginning of its tail, which usually has eight digits.
#pragma once

#include <cstdint>

#include "ala/ala.h"

// A list of logs.
struct nameNode {
    char *logName; // file name without directory; owned
    std::int32_t date;
    nameNode *next;
};

// Finds the oldest log.  Outputs the log's name, to be released with free, and the log's date number.  If
// several logs have the oldest date, outputs the first of them in the directory's order.  The outputs are
// written on success only.
// ALA_A_FAIL_GET_LOG_NAME_FROM_DIR: there is no log; ALA_A_FAIL_OPEN_DIR: the directory cannot be opened;
// ALA_A_FAIL_TO_GET_TIME: the current day's log has vanished; ALA_A_INVALID_ARG, ALA_A_OUT_OF_MEMORY,
// ALA_A_UNKNOWN_ERR as for scanLogs.
ALA_retCode_t ALA__GetOldestLogName(const char *inp_svrName, const char *inp_acctLogPath,
                                    char **outpp_logName, std::int32_t *outp_dateInNum);

// Lists all logs, newest first.  The list is null if there are no logs.  The output is written on success
// only; release the list with ALA__FreeNameNodeList.
// ALA_A_INVALID_LOG_PATH_NAME: the directory cannot be opened; ALA_A_INVALID_ARG, ALA_A_OUT_OF_MEMORY,
// ALA_A_UNKNOWN_ERR as for scanLogs.
ALA_retCode_t ALA__GetSortedLogList(const char *inp_svrName, const char *inp_acctLogPath,
                                    nameNode **outp_nameList);

// Sorts the list by descending date, in place.  Most logs of one date end up in reverse order; listing.cpp
// explains the exact order.
void ALA__SortList(nameNode **inoutp_head);
void ALA__FreeNameNodeList(nameNode **inoutp_list);
