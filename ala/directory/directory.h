// The log directory: which logs a server has, of which dates, and their removal.
//
// A file belongs to a server when its name starts with the server's name and a dot.  What follows is its
// tail: "current" for the day in progress, dated by its last change; otherwise eight digits of a date.  A
// date number is year * 10000 + month * 100 + day.
#pragma once

#include <cstdint>
#include <string_view>

#include "ala/ala.h"
#include "ala/base/owners.h"

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

// 1 if the date is today's, else 0.  ALA_A_FAIL_TO_GET_TIME when there is no current time; nothing is logged.
ALA_retCode_t ALA__IsTodaysDate(const ALA_time *inp_date, std::int32_t *outp_result);

// The local date of a file's last change, untouched unless it is known: a time can be so far off that it has
// no date number.
enum class FileDate { Known, NoFile, OffTheCalendar };
FileDate ALA__DateFile(const char *inp_fileName, std::int32_t *outp_dateInNum);

// The same; ALA_A_FAIL_TO_GET_TIME unless it is known.
ALA_retCode_t ALA__GetDateFromStat(const char *inp_fileName, std::int32_t *outp_dateInNum);

// Paths of logs as new texts; null when memory runs out.
Malloced<char> ALA__PathInDirectory(const char *inp_directory, const char *inp_name);
Malloced<char> ALA__CurrentLogPath(const char *inp_directory, const char *inp_server);
Malloced<char> ALA__DatedLogPath(const char *inp_directory, const char *inp_server, const ALA_time *inp_date);

// The name that a log has for the moment before it is removed: its own one with this behind it.  The listing
// takes it for no log, for its tail is too long.
constexpr std::string_view kAside = ".being-deleted";
Malloced<char> ALA__AsidePath(const char *inp_path);

// The path as the system's calls take it; false when FA_ConvertFilePath fails.
bool ALA__ConvertPath(const char *inp_path, Malloced<char> &outp_converted);
