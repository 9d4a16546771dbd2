// Exit statuses of all programs, besides 0 and the ALA return codes.
#pragma once

namespace qvledger {

constexpr int kStatusUsage = 1;       // invalid options or server names
constexpr int kStatusNoMemory = 3;    // out of memory
constexpr int kStatusNoLogs = 29;     // a server has no log in the date range
constexpr int kStatusBadStart = 30;   // invalid environment, dates or report file
constexpr int kStatusDamaged = 50;    // qvledger-check: a log is cut or damaged
constexpr int kStatusIncomplete = 51; // a day has no log, a file is not a log, a value is unusable
constexpr int kStatusLostOutput = 74; // the output or a copy was not written
constexpr int kStatusNoRoot = 100;    // QV_ROOT is not set

} // namespace qvledger
