#include "service/calendar.h"

#include <chrono>

using namespace std::chrono;

constexpr std::int32_t kTmEpoch = 1900; // the year in which tm_year is 0

// The calendar repeats after 400 years.  std::chrono::year has only 16 bits, so it counts within a cycle.
using Cycles = duration<std::int64_t, std::ratio_multiply<std::ratio<400>, years::period>>;

std::int64_t qvledger::secondsOf(const std::tm &utc) {
    const months sinceYear0 = years(utc.tm_year) + years(kTmEpoch) + months(utc.tm_mon);
    const auto cycles = floor<Cycles>(sinceYear0);
    const sys_days monthStart = (year(0) / January + (sinceYear0 - cycles)) / 1;
    const seconds sum = monthStart.time_since_epoch() + cycles + days(utc.tm_mday - 1) + hours(utc.tm_hour) +
                        minutes(utc.tm_min) + seconds(utc.tm_sec);
    return sum.count();
}

std::tm qvledger::calendarOf(std::int64_t instant) {
    const auto cycles = floor<Cycles>(seconds(instant));
    const sys_seconds time(seconds(instant) - cycles);
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    std::tm utc = {};
    utc.tm_year = static_cast<int>(static_cast<int>(date.year()) - kTmEpoch + 400 * cycles.count());
    utc.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    utc.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    utc.tm_hour = static_cast<int>(clock.hours().count());
    utc.tm_min = static_cast<int>(clock.minutes().count());
    utc.tm_sec = static_cast<int>(clock.seconds().count());
    return utc;
}
