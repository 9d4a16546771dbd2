// Dates of logs.  A date number is year * 10000 + month * 100 + day.
#pragma once

#include <cstdint>

#include "ala/ala.h"

// 1 if the date is today's, else 0.  ALA_A_FAIL_TO_GET_TIME when there is no current time; nothing is logged.
ALA_retCode_t ALA__IsTodaysDate(const ALA_time *inp_date, std::int32_t *outp_result);

// The local date of a file's last change, untouched unless it is known: a time can be so far off that it has
// no date number.
enum class FileDate { Known, NoFile, OffTheCalendar };
FileDate ALA__DateFile(const char *inp_fileName, std::int32_t *outp_dateInNum);

// The same; ALA_A_FAIL_TO_GET_TIME unless it is known.
ALA_retCode_t ALA__GetDateFromStat(const char *inp_fileName, std::int32_t *outp_dateInNum);
