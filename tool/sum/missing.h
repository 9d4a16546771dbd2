// What the sums lack: logs that were not read completely, days without a log, values that are not numbers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qvledger {

struct Missing {
    std::string server;
    std::string log;          // a file name; empty if it is not about one log
    std::int32_t first, last; // dates as numbers YYYYMMDD; 0: none
    std::string reason;
};

// Finds the days between the logs of a server, which come in the order of their dates.
class DayGaps {
public:
    // Adds what is missing between the date and the one before it; a date that the calendar lacks is skipped.
    void date(const std::string &server, std::int32_t date, std::vector<Missing> &missing);

private:
    std::string server_;
    std::int32_t last_ = 0; // date; 0: none
};

// "2026-11-19"; empty for 0.
std::string dateText(std::int32_t date);

} // namespace qvledger
