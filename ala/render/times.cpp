#include "ala/render/times.h"

#include <cstdio>
#include <cstdlib>

#include "ala/base/lock.h"
#include "ala/base/owners.h"
#include "service/calendar.h"
#include "service/system.h"

using namespace qvledger;

constexpr std::size_t kTimeSize = 100;  // bytes of a time's text
constexpr std::int32_t kTmEpoch = 1900; // the year in which tm_year is 0

static std::int32_t yearForTm(const GEN_generalizedTime &time) {
    return time.utc == 1 ? time.year : time.year - kTmEpoch;
}

static std::int64_t instantOfUtc(const GEN_generalizedTime &time) {
    std::tm utc = {};
    utc.tm_year = yearForTm(time);
    utc.tm_mon = time.month - 1;
    utc.tm_mday = time.day;
    utc.tm_hour = time.hour;
    utc.tm_min = time.utc == 1 ? time.minute : time.minute + time.mindiff;
    utc.tm_sec = time.second;
    return secondsOf(utc);
}

// Converts a local time to seconds since 1970.  local: the local time in seconds since 1970, as if it were
// Coordinated Universal Time.  Returns -1 if the conversion fails.
static std::int64_t instantOf(std::int64_t local) {
    if (!OS_HasZoneRules(local))
        return local + _timezone;
    std::tm time = calendarOf(local);
    time.tm_isdst = -1;
    const std::time_t instant = std::mktime(&time);
    if (instant == -1)
        return -1;
    // For a local time that the clocks skip, mktime uses the offset before or after the gap, depending on its
    // previous conversion.  Always use the offset before the gap: with that offset, mktime's local time is
    // later than the local time passed in.
    const std::int64_t shown = secondsOf(time);
    return shown < local ? instant + (local - shown) : instant;
}

std::int32_t ALA__ConvertUTCToUnix(const GEN_generalizedTime *inp_UTC, std::int64_t *outp_unixTime) {
    if (inp_UTC == nullptr)
        return 1;
    *outp_unixTime = 0;
    // mktime expects local time, so shift the time by the zone's standard offset; mktime decides whether
    // summer time applies.  The sum is normalised first: for fields out of range, that decision would depend
    // on mktime's previous conversion.
    const std::int64_t local = instantOfUtc(*inp_UTC) - _timezone;
    Lock lock(timeLock);
    if (!lock.isLocked())
        return 1;
    *outp_unixTime = instantOf(local);
    if (!lock.release())
        return 1;
    return *outp_unixTime == -1 ? 1 : 0;
}

bool qvledger::localOnPlainDay(PlainDays &plainDays, const GEN_generalizedTime &time,
                               GEN_generalizedTime *localTime) {
    const std::int64_t local = instantOfUtc(time) - _timezone;
    if (!plainDays.contains(local))
        return false;
    const std::tm fields = calendarOf(local);
    return ALA__MakeGeneralizedTime(localTime, &fields, 0) == 0;
}

std::int32_t ALA__GeneralizedToLocalTime(const GEN_generalizedTime *inp_GMTTime,
                                         GEN_generalizedTime *outp_localTime) {
    if (inp_GMTTime == nullptr)
        return 1;
    *outp_localTime = {};
    std::int64_t time1 = 0;
    if (ALA__ConvertUTCToUnix(inp_GMTTime, &time1) != 0)
        return 1;
    std::tm local = {};
    static_cast<void>(SYSU_Localtime_r(&time1, &local)); // cannot fail for the years of a record
    return ALA__MakeGeneralizedTime(outp_localTime, &local, 0);
}

std::int32_t ALA__MakeGeneralizedTime(GEN_generalizedTime *outp_target, const std::tm *inp_time,
                                      std::int32_t in_useUTC) {
    if (inp_time == nullptr)
        return 1;
    const auto narrow = [](long number) { return static_cast<std::int16_t>(number); };
    const bool countsFromEpoch = in_useUTC == 1;
    outp_target->year = narrow(countsFromEpoch ? inp_time->tm_year : inp_time->tm_year + kTmEpoch);
    outp_target->month = narrow(inp_time->tm_mon + 1);
    outp_target->day = narrow(inp_time->tm_mday);
    outp_target->hour = narrow(inp_time->tm_hour);
    outp_target->minute = narrow(inp_time->tm_min);
    outp_target->second = narrow(inp_time->tm_sec);
    outp_target->millisec = 0;
    outp_target->mindiff = narrow(_timezone / 60);
    outp_target->utc = countsFromEpoch ? 1 : 0;
    return 0;
}

// Writes the number with `digits` digits, including leading zeros.  Returns the address after the digits.
static char *putDigits(char *text, std::int32_t number, std::int32_t digits) {
    for (std::int32_t i = digits; i-- > 0; number /= 10)
        text[i] = static_cast<char>('0' + number % 10);
    return text + digits;
}

static char *putSign(char *text, char sign) {
    *text = sign;
    return text + 1;
}

std::string_view qvledger::clockTime(const GEN_generalizedTime &time, char (&text)[kClockTimeSize]) {
    const std::int32_t fullYear = yearForTm(time) + kTmEpoch;
    const auto isPair = [](std::int32_t number) { return number >= 0 && number <= 99; };
    if (fullYear < 0 || fullYear > 9999 || !isPair(time.month) || !isPair(time.day) || !isPair(time.hour) ||
        !isPair(time.minute) || !isPair(time.second))
        return {};
    char *at = putDigits(text, time.month, 2);
    *at++ = '/';
    at = putDigits(at, time.day, 2);
    *at++ = '/';
    at = putDigits(at, fullYear, 4);
    *at++ = ' ';
    at = putDigits(at, time.hour, 2);
    *at++ = ':';
    at = putDigits(at, time.minute, 2);
    *at++ = ':';
    at = putDigits(at, time.second, 2);
    return {text, at};
}

// The text consists of digits, which no locale changes.  So the locale argument is ignored.  Setting the
// locale would affect other threads, too.
std::int32_t ALA__GeneralizedTimeToAscii(const GEN_generalizedTime *inp_gt, const char *,
                                         char **outp_asciiTime) {
    if (inp_gt == nullptr)
        return 1;
    std::tm time = {};
    time.tm_year = yearForTm(*inp_gt);
    time.tm_mon = inp_gt->month - 1;
    time.tm_mday = inp_gt->day;
    time.tm_hour = inp_gt->hour;
    time.tm_min = inp_gt->minute;
    time.tm_sec = inp_gt->second;
    time.tm_isdst = -1;
    Malloced<char> text(static_cast<char *>(std::malloc(kTimeSize)));
    if (text == nullptr)
        return 1;

    Lock lock(localeLock);
    if (!lock.isLocked())
        return 1;
    char clock[kClockTimeSize];
    if (const std::string_view shown = clockTime(*inp_gt, clock); !shown.empty()) {
        text.get()[shown.copy(text.get(), kTimeSize - 1)] = '\0';
    } else {
        time.tm_wday = ALA__GetDayOfWk(inp_gt->year, inp_gt->month, inp_gt->day);
        if (std::strftime(text.get(), kTimeSize, "%m/%d/%Y %H:%M:%S", &time) == 0)
            return 1;
    }
    if (!lock.release())
        return 1;
    *outp_asciiTime = text.release();
    return 0;
}

std::string_view qvledger::isoTime(const GEN_generalizedTime &utc, char (&text)[kIsoTimeSize]) {
    const std::int64_t instant = instantOfUtc(utc);
    std::tm local = {};
    if (SYSU_Localtime_r(&instant, &local) == nullptr)
        return {};
    // Offsets of old times can have seconds, which this form cannot express.  Drop the seconds of the offset,
    // and show the clock time for the remaining offset.
    const std::int64_t exact = secondsOf(local) - instant;
    const auto offset = static_cast<int>(exact / 60);
    if (exact % 60 != 0)
        local = calendarOf(instant + std::int64_t{60} * offset);
    const int year = local.tm_year + kTmEpoch;
    const bool isUsual = year >= 0 && year <= 9999;
    char *at = text;
    if (!isUsual)
        *at++ = year < 0 ? '-' : '+';
    at = putDigits(at, std::abs(year), isUsual ? 4 : 6);
    at = putDigits(putSign(at, '-'), local.tm_mon + 1, 2);
    at = putDigits(putSign(at, '-'), local.tm_mday, 2);
    at = putDigits(putSign(at, 'T'), local.tm_hour, 2);
    at = putDigits(putSign(at, ':'), local.tm_min, 2);
    at = putDigits(putSign(at, ':'), local.tm_sec, 2);
    at = putDigits(putSign(at, offset < 0 ? '-' : '+'), std::abs(offset) / 60, 2);
    at = putDigits(putSign(at, ':'), std::abs(offset) % 60, 2);
    return {text, at};
}

std::int32_t ALA__GetDayOfWk(std::int32_t in_year, std::int32_t in_month, std::int32_t in_day) {
    static constexpr std::int32_t kOffset[] = {0, 3, 3, 6, 1, 4, 6, 2, 5, 0, 3, 5};
    static constexpr std::int32_t kLeapOffset[] = {0, 3, 4, 0, 2, 5, 0, 3, 6, 1, 4, 6};
    static constexpr std::int32_t kCenturyOffset[] = {0, 6, 4, 2};
    if (in_year < 0 || in_month < 1 || in_month > 12)
        return 0; // not a calendar date
    const std::int32_t month = in_month - 1;
    const std::int32_t century = in_year / 100 % 4;
    std::int32_t sum = kCenturyOffset[century] + 6;
    if (century != 0 && in_year % 100 == 0) { // a century year, not a leap year
        sum += kOffset[month];
    } else {
        sum += 5 * (in_year % 100 / 4);
        const std::int32_t rest = in_year % 4;
        sum += rest == 0 ? kLeapOffset[month] : kOffset[month] + rest + 1;
        if (century != 0)
            sum -= 1;
    }
    return (sum + in_day - 1) % 7;
}
