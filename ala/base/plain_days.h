// A cache of plain days: days without a change of the clocks.
//
// On a plain day every local time survives the C library's conversion to an instant and back, so both
// conversions can be skipped.  They cost more than the rest of rendering a time.
#pragma once

#include <cstdint>

#include "platform/malloced.h"

namespace qvledger {

// The plain days of one time zone.
class PlainDays {
public:
    // Empties the cache if the time zone of the process has changed.
    void checkZone();

    // day: in days since 1 January 1970.  False if the day is not plain or that cannot be determined.
    bool contains(std::int32_t day);

private:
    struct Day {
        std::int32_t number;
        bool isKnown;
        bool isPlain;
    };

    Malloced<Day> days_;   // null: empty cache
    char zone_[64] = "";   // TZ
    long offset_ = 0;      // _timezone
    bool isUsable_ = true; // false: TZ does not fit zone_
};

} // namespace qvledger
