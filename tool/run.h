// A run for one or more servers, from the options to the exit status.
#pragma once

#include "ala/ala.h"
#include "tool/exit_status.h"
#include "tool/log_output.h"
#include "tool/options.h"

namespace qvledger {

// The version that -V prints, with a patch number of two digits: "1.2-06".
static_assert(ALA_VERSION_MAJOR < 10 && ALA_VERSION_MINOR < 10 && ALA_VERSION_PATCH < 100);
constexpr char compiledVersionString[] = {
    '0' + ALA_VERSION_MAJOR,      '.', '0' + ALA_VERSION_MINOR, '-', '0' + ALA_VERSION_PATCH / 10,
    '0' + ALA_VERSION_PATCH % 10, '\0'};

// Runs qvledger for the server of the first operand; other operands are ignored.  Returns the exit status.
int run(const Options &options);

// Reports the servers of the first numServers operands into one report, through the writer.  If a server
// fails, the others are still reported, unless the failure concerns all servers: the registry file, the dates
// or the report.  Also handles -h, -V and invalid options.  Returns the status of the first failure;
// kStatusNoLogs only if no server failed.  statusIfLost is the status if the report could not be written;
// kStatusAsUsual means no special status.
constexpr int kStatusAsUsual = -1;
int runWith(const Options &options, std::int32_t numServers, LogOutput &writer,
            int statusIfLost = kStatusAsUsual);

} // namespace qvledger
