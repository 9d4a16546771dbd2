// Days on which local time runs straight through.
//
// On such a day the C library's conversion of local time to an instant and back gives the local time that it
// was given, whatever the time of day.  Knowing the day saves both conversions, which cost more than all else
// about a time.
#pragma once

#include <cstdint>

#include "platform/malloced.h"

namespace qvledger {

// What is known of days, for one time zone.
class PlainDays {
public:
    // Forgets everything if the process has another time zone now.
    void checkZone();

    // day: of days since 1 January 1970.  False on a day with a change of the clocks, and on one that the C
    // library cannot convert throughout.  Remembers what it found.
    bool contains(std::int32_t day);

private:
    struct Day {
        std::int32_t number;
        bool isKnown;
        bool isPlain;
    };

    Malloced<Day> days_;   // null until one is asked for
    char zone_[64] = "";   // TZ
    long offset_ = 0;      // _timezone
    bool isUsable_ = true; // false: TZ is too long to be remembered
};

} // namespace qvledger
