// Times of the log, in Coordinated Universal Time, as local time and as text.
//
// Results: 0 success, 1 failure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

#include "ala/base/plain_days.h"
#include "service/packed/values.h"

// Calendar seconds of the record; -1 when there are none.
std::int32_t ALA__ConvertUTCToUnix(const GEN_generalizedTime *inp_UTC, std::int64_t *outp_unixTime);

// The same instant as a local record; zeroed on failure.
std::int32_t ALA__GeneralizedToLocalTime(const GEN_generalizedTime *inp_GMTTime,
                                         GEN_generalizedTime *outp_localTime);

// A record from broken-down time; in_useUTC 1 keeps the year as it counts there, from 1900.
std::int32_t ALA__MakeGeneralizedTime(GEN_generalizedTime *outp_target, const std::tm *inp_time,
                                      std::int32_t in_useUTC);

// "MM/DD/YYYY HH:MM:SS" as a new text of 100 bytes.
std::int32_t ALA__GeneralizedTimeToAscii(const GEN_generalizedTime *inp_gt, const char *inp_locale,
                                         char **outp_asciiTime);

namespace qvledger {

// The same on a plain day, without a lock and without a conversion.  False on any other day.
bool localOnPlainDay(PlainDays &days, const GEN_generalizedTime &time, GEN_generalizedTime *localTime);

// Bytes of the buffers for a time's text.
constexpr std::size_t kClockTimeSize = 19;
constexpr std::size_t kIsoTimeSize = 32;

// The same text of a time that a clock can show, in the caller's buffer, without a lock and without the C
// library: it is made of digits, which no locale changes.  Empty for any other time.
std::string_view clockTime(const GEN_generalizedTime &time, char (&text)[kClockTimeSize]);

// The same instant by the process's time zone, "YYYY-MM-DDTHH:MM:SS+HH:MM" with the zone's offset then.  A
// year outside 0 to 9999 has a sign and six digits.  Empty when the zone has no such time.
std::string_view isoTime(const GEN_generalizedTime &utc, char (&text)[kIsoTimeSize]);

} // namespace qvledger

// Day of the week in the Gregorian calendar, 0 for Sunday.
std::int32_t ALA__GetDayOfWk(std::int32_t in_year, std::int32_t in_month, std::int32_t in_day);
