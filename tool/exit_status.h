// The exit statuses of all programs, besides 0 and the return codes of the facility.
#pragma once

namespace qvledger {

constexpr int kStatusUsage = 1;     // option error, or no server name
constexpr int kStatusNoMemory = 3;  // for the default log path
constexpr int kStatusNoLogs = 29;   // none in the date range
constexpr int kStatusBadStart = 30; // environment, dates or report file
constexpr int kStatusDamaged = 50;  // qvledger-check: a log is cut or damaged
constexpr int kStatusLostOutput =
    74;                            // qvledger-check, qvledger-json: the output or a copy could not be written
constexpr int kStatusNoRoot = 100; // QV_ROOT is not set

} // namespace qvledger
