// A run for one server, or for several in turn, from its options to its exit status.
#pragma once

#include "tool/log_output.h"
#include "tool/options.h"

// The version, for -V, the patch with two digits: "1.2-06".
static_assert(ALA_VERSION_MAJOR < 10 && ALA_VERSION_MINOR < 10 && ALA_VERSION_PATCH < 100);
namespace qvledger {

constexpr char compiledVersionString[] = {
    '0' + ALA_VERSION_MAJOR,      '.', '0' + ALA_VERSION_MINOR, '-', '0' + ALA_VERSION_PATCH / 10,
    '0' + ALA_VERSION_PATCH % 10, '\0'};

// Exit statuses besides 0 and the return codes of the facility.
constexpr int kStatusUsage = 1;     // option error, or no server name
constexpr int kStatusNoMemory = 3;  // for the default log path
constexpr int kStatusNoLogs = 29;   // none in the date range
constexpr int kStatusBadStart = 30; // environment, dates or report file
constexpr int kStatusNoRoot = 100;  // QV_ROOT is not set

// The run of qvledger, for its first operand.
int run(const Options &in_options);

// The same with another writer in the place of the report's, for the given number of servers, into one
// report.  A server that fails does not keep the others from their turn; the status is that of the first one
// that failed, and kStatusNoLogs only if none did.  statusIfLost: the status when the report could not be
// written; kStatusAsUsual leaves it to what else happened.
constexpr int kStatusAsUsual = -1;
int runWith(const Options &options, std::int32_t numServers, LogOutput &writer,
            int statusIfLost = kStatusAsUsual);

} // namespace qvledger
