// Calendar time in Coordinated Universal Time, by the C++ library's calendar.  The C library's conversions
// have other limits on each system.
#pragma once

#include <cstdint>
#include <ctime>

namespace qvledger {

// Seconds since 1970 of a calendar time.  Fields can be out of range; only year to second are used.
std::int64_t secondsOf(const std::tm &utc);

// The calendar time of an instant, given in seconds since 1970.  Sets only year to second; the other fields
// are 0.  REQUIRES: the year fits tm_year.
std::tm calendarOf(std::int64_t seconds);

} // namespace qvledger
