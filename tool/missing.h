// Days without a log, and whatever else is missing from sums: logs and folders that were not read completely,
// servers without a log, and values that could not be counted.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/options.h"

namespace qvledger {

struct Missing {
    std::string server;
    std::string log;          // file name; empty if the reason does not concern a single log
    std::int32_t first, last; // dates that the reason concerns, YYYYMMDD; 0: no date
    std::string reason;
};

// Finds the days of a range that have no log and are between two logs of a server.
class DayGaps {
public:
    explicit DayGaps(const DateRange &range) : range_(range) {}

    // Adds the days between the server's previous log and the log of this date (YYYYMMDD) to `missing`.  The
    // logs may be outside the range.  Ignores an impossible date.  REQUIRES: the logs of a server are in the
    // order of their dates.
    void date(const std::string &server, std::int32_t date, std::vector<Missing> &missing);

private:
    DateRange range_;
    std::string server_;
    std::int32_t last_ = 0; // date of the server's previous log; 0: none
};

// The date as a text, such as "2026-11-19"; empty for 0 and impossible dates.
std::string dateText(std::int32_t date);

} // namespace qvledger
