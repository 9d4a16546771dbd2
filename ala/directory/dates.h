// The dates of logs.
#pragma once

#include <cstdint>

#include "ala/ala.h"

namespace qvledger {

constexpr std::int32_t kOffTheCalendar = -1; // date number for a year outside 1 to 9999

constexpr char kCurrentTail[] = "current"; // tail of the name of the current day's log

// Finds the date number of a log: year * 10000 + month * 100 + day.  For the current day's log, this is the
// date of the file's last change; the codes are those of ALA__GetDateFromStat.  For any other log, it is the
// number at the beginning of the tail, or 0 if there is no number.
ALA_retCode_t dateOfLog(const char *tail, const char *path, std::int32_t *date);

} // namespace qvledger

// Sets the result to 1 if the date is today's, else to 0.  Returns ALA_N_NORMAL, or ALA_A_FAIL_TO_GET_TIME if
// the current time cannot be determined; the result is then 0.  Logs nothing.
ALA_retCode_t ALA__IsTodaysDate(const ALA_time *inp_date, std::int32_t *outp_result);

// Finds the local date of a file's last change.  ALA_A_FAIL_TO_GET_TIME: either the file does not exist or
// cannot be examined, and the output is unchanged; or the year is not within 1 to 9999, and the output is
// kOffTheCalendar.
ALA_retCode_t ALA__GetDateFromStat(const char *inp_fileName, std::int32_t *outp_dateInNum);
