// Converts the times of a log, which are in Coordinated Universal Time, to local time and to text.
//
// Results: 0 success, 1 failure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

#include "ala/base/plain_days.h"
#include "service/packed/values.h"

// The record's time in seconds since 1970.  A time that cannot be converted fails with -1 in the output.
std::int32_t ALA__ConvertUTCToUnix(const GEN_generalizedTime *inp_UTC, std::int64_t *outp_unixTime);

// The same instant in local time; zeroed on failure.
std::int32_t ALA__GeneralizedToLocalTime(const GEN_generalizedTime *inp_GMTTime,
                                         GEN_generalizedTime *outp_localTime);

// Makes a record from a broken-down time.  With in_useUTC 1 the year remains counted from 1900.
std::int32_t ALA__MakeGeneralizedTime(GEN_generalizedTime *outp_target, const std::tm *inp_time,
                                      std::int32_t in_useUTC);

// "MM/DD/YYYY HH:MM:SS" as a new string in a block of 100 bytes, to be released with free.
std::int32_t ALA__GeneralizedTimeToAscii(const GEN_generalizedTime *inp_gt, const char *inp_locale,
                                         char **outp_asciiTime);

namespace qvledger {

// ALA__GeneralizedToLocalTime for a plain day, without a lock and without the C library's conversions.
// False, with localTime unchanged, on any other day.
bool localOnPlainDay(PlainDays &days, const GEN_generalizedTime &time, GEN_generalizedTime *localTime);

// Bytes of the buffers for a time's text, which has no NUL here.
constexpr std::size_t kClockTimeSize = 19;
constexpr std::size_t kIsoTimeSize = 32;

// The text of ALA__GeneralizedTimeToAscii in the caller's buffer, without a lock and without the C library:
// it consists of digits, which no locale changes.  Empty if a field needs more digits or is negative.
std::string_view clockTime(const GEN_generalizedTime &time, char (&text)[kClockTimeSize]);

// The same instant in the process's time zone, as "YYYY-MM-DDTHH:MM:SS+HH:MM" with the zone's offset at that
// instant.  A year outside 0 to 9999 has a sign and six digits.  Empty if the time cannot be converted.
std::string_view isoTime(const GEN_generalizedTime &utc, char (&text)[kIsoTimeSize]);

} // namespace qvledger

// The day of the week in the Gregorian calendar; 0 is Sunday.
std::int32_t ALA__GetDayOfWk(std::int32_t in_year, std::int32_t in_month, std::int32_t in_day);
