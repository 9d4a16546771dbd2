// A cache of plain days: days on which the clocks are not changed.
//
// If the C library converts a local time of a plain day to an instant and back, the result is the same local
// time.  So the facility skips both conversions, which cost more than the rest of rendering a time.
#pragma once

#include <cstdint>

#include "platform/malloced.h"

namespace qvledger {

// The plain days of one time zone.
class PlainDays {
public:
    // Empties the cache if TZ or the zone's standard offset has changed.
    void checkZone();

    // Is the day of a local time plain?  local: in seconds since 1970, as if it were Coordinated Universal
    // Time; within 5 million years.  False if this cannot be determined.
    bool contains(std::int64_t local);

private:
    struct Day {
        std::int32_t number;
        bool isKnown;
        bool isPlain;
    };

    Malloced<Day> days_;   // null: the cache is empty
    char zone_[64] = "";   // value of TZ for which days_ is valid
    long offset_ = 0;      // value of _timezone for which days_ is valid
    bool isUsable_ = true; // false: TZ is too long for zone_, so nothing is cached
};

} // namespace qvledger
