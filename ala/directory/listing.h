// Which logs a server has, and of which dates.
//
// A file belongs to a server when its name starts with the server's name and a dot.  What follows is its
// tail: "current" for the day in progress, dated by its last change; otherwise eight digits of a date.
#pragma once

#include <cstdint>

#include "ala/ala.h"

// A log by name and date, in a list.
struct nameNode {
    char *logName; // file name without directory; owned
    std::int32_t date;
    nameNode *next;
};

// The oldest log: its name, released with free, and its date number.  Of two logs of one date the one that
// the directory gives first.
ALA_retCode_t ALA__GetOldestLogName(const char *inp_svrName, const char *inp_acctLogPath,
                                    char **outpp_logName, std::int32_t *outp_dateInNum);

// All logs, newest first; null when there is none.  Written on success only.
ALA_retCode_t ALA__GetSortedLogList(const char *inp_svrName, const char *inp_acctLogPath,
                                    nameNode **outp_nameList);

// Into descending order of dates, in place.
void ALA__SortList(nameNode **inoutp_head);
void ALA__FreeNameNodeList(nameNode **inoutp_list);
