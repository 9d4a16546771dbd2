// Days without a log, and whatever else is missing from sums: logs and folders that were not read completely,
// servers without a log, and values that could not be counted.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qvledger {

struct Missing {
    std::string server;
    std::string log;          // file name; empty if the reason does not concern a single log
    std::int32_t first, last; // dates that the reason concerns, YYYYMMDD; 0: no date
    std::string reason;
};

// Finds the days without a log between the logs of a server.
class DayGaps {
public:
    // Adds the days between the server's previous log and the log of this date (YYYYMMDD) to `missing`.
    // Ignores an impossible date.  REQUIRES: the logs of a server are in the order of their dates.
    void date(const std::string &server, std::int32_t date, std::vector<Missing> &missing);

private:
    std::string server_;
    std::int32_t last_ = 0; // date of the server's previous log; 0: none
};

// The date as a text, such as "2026-11-19"; empty for 0.
std::string dateText(std::int32_t date);

} // namespace qvledger
