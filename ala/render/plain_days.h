// Days on which local time runs straight through.
//
// On such a day the C library's conversion of local time to an instant and back gives the local time that it
// was given, whatever the time of day.  Knowing the day saves both conversions, which cost more than all else
// about a time.
#pragma once

#include <cstdint>

// in_day: days since 1 January 1970.  False on a day with a change of the clocks, and on one that the C
// library cannot convert throughout.  Remembers what it found, for all threads, until the time zone changes.
bool ALA__IsPlainDay(std::int32_t in_day);
