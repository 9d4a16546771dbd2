// Dates of logs.
#pragma once

#include <cstdint>

#include "ala/ala.h"

namespace qvledger {

constexpr std::int32_t kOffTheCalendar = -1; // in place of a date number

constexpr char kCurrentTail[] = "current"; // of the name of the log of the day in progress

// The date of a log: the number that the tail of its name begins with; of the log of the day in progress the
// date of its last change, with the failures of ALA__GetDateFromStat.
ALA_retCode_t dateOfLog(const char *tail, const char *path, std::int32_t *date);

} // namespace qvledger

// 1 if the date is today's, else 0.  ALA_A_FAIL_TO_GET_TIME when there is no current time; nothing is logged.
ALA_retCode_t ALA__IsTodaysDate(const ALA_time *inp_date, std::int32_t *outp_result);

// The local date of a file's last change.  ALA_A_FAIL_TO_GET_TIME: there is no such file, and the number
// stays as it was; or the time is so far off that it has no date number, which is kOffTheCalendar then.
ALA_retCode_t ALA__GetDateFromStat(const char *inp_fileName, std::int32_t *outp_dateInNum);
