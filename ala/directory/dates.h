// Dates of logs.  A date number is year * 10000 + month * 100 + day.
#pragma once

#include <cstdint>

#include "ala/ala.h"

namespace qvledger {

constexpr std::int32_t kOffTheCalendar = -1; // in place of a date number

} // namespace qvledger

// 1 if the date is today's, else 0.  ALA_A_FAIL_TO_GET_TIME when there is no current time; nothing is logged.
ALA_retCode_t ALA__IsTodaysDate(const ALA_time *inp_date, std::int32_t *outp_result);

// The local date of a file's last change.  ALA_A_FAIL_TO_GET_TIME: there is no such file, and the number
// stays as it was; or the time is so far off that it has no date number, which is kOffTheCalendar then.
ALA_retCode_t ALA__GetDateFromStat(const char *inp_fileName, std::int32_t *outp_dateInNum);
