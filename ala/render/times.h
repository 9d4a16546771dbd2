// Converts the times of a log, which are in Coordinated Universal Time, to local time and to text.
//
// The ALA__ functions return 0 for success and 1 for failure, except ALA__GetDayOfWk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

#include "ala/base/plain_days.h"
#include "service/packed/values.h"

// Converts a time record to seconds since 1970.  The output is valid only on success.
std::int32_t ALA__ConvertUTCToUnix(const GEN_generalizedTime *inp_UTC, std::int64_t *outp_unixTime);

// Converts a time record to local time.  The output is valid only on success.
std::int32_t ALA__GeneralizedToLocalTime(const GEN_generalizedTime *inp_GMTTime,
                                         GEN_generalizedTime *outp_localTime);

// Makes a time record from a broken-down time.  If in_useUTC is 1, the record's year counts from 1900.
std::int32_t ALA__MakeGeneralizedTime(GEN_generalizedTime *outp_target, const std::tm *inp_time,
                                      std::int32_t in_useUTC);

// Formats a time as "MM/DD/YYYY HH:MM:SS" in a new string, a block of 100 bytes to be released with free.
std::int32_t ALA__GeneralizedTimeToAscii(const GEN_generalizedTime *inp_gt, const char *inp_locale,
                                         char **outp_asciiTime);

namespace qvledger {

// Does the work of ALA__GeneralizedToLocalTime for a plain day.  Needs a lock and the C library's
// conversions only if the day is not cached yet.  If the day is not plain or cannot be determined, returns
// false and leaves localTime unchanged.
bool localOnPlainDay(PlainDays &days, const GEN_generalizedTime &time, GEN_generalizedTime *localTime);

// Sizes in bytes of the buffers for a time's text.  The text has no NUL at its end.
constexpr std::size_t kClockTimeSize = 19;
constexpr std::size_t kIsoTimeSize = 32;

// Writes the text of ALA__GeneralizedTimeToAscii to the buffer.  Needs no lock and no C library, because the
// text consists of digits, which no locale changes.  Empty if a field needs more digits or is negative.
std::string_view clockTime(const GEN_generalizedTime &time, char (&text)[kClockTimeSize]);

// Writes a time, given in Coordinated Universal Time, as text in the process's time zone:
// "YYYY-MM-DDTHH:MM:SS+HH:MM", with the zone's offset at that time.  A year outside 0 to 9999 has a sign and
// six digits.  Empty if the time cannot be converted.
std::string_view isoTime(const GEN_generalizedTime &utc, char (&text)[kIsoTimeSize]);

} // namespace qvledger

// The day of the week in the Gregorian calendar; 0 is Sunday.  Also 0 for a negative year or a month outside
// 1 to 12.
std::int32_t ALA__GetDayOfWk(std::int32_t in_year, std::int32_t in_month, std::int32_t in_day);
