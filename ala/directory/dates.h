// The dates of logs.
#pragma once

#include <cstdint>

#include "ala/ala.h"

namespace qvledger {

constexpr std::int32_t kOffTheCalendar = -1; // instead of a date number: the time is out of range

constexpr char kCurrentTail[] = "current"; // tail of the name of the current day's log

// The date number of a log: the digits that its name's tail begins with, or for the current day's log the
// date of its last change, with the failures of ALA__GetDateFromStat.
ALA_retCode_t dateOfLog(const char *tail, const char *path, std::int32_t *date);

} // namespace qvledger

// Sets the result to 1 if the date is today's, else to 0.  ALA_A_FAIL_TO_GET_TIME: the current time is not
// available.  Logs nothing.
ALA_retCode_t ALA__IsTodaysDate(const ALA_time *inp_date, std::int32_t *outp_result);

// The local date of a file's last change.  ALA_A_FAIL_TO_GET_TIME: the file does not exist, and the output is
// unchanged; or the year is not within 1 to 9999, and the output is kOffTheCalendar.
ALA_retCode_t ALA__GetDateFromStat(const char *inp_fileName, std::int32_t *outp_dateInNum);
