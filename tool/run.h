// A run for one server, or for several in turn, from its options to its exit status.
#pragma once

#include "ala/ala.h"
#include "tool/exit_status.h"
#include "tool/log_output.h"
#include "tool/options.h"

namespace qvledger {

// The version, for -V, the patch with two digits: "1.2-06".
static_assert(ALA_VERSION_MAJOR < 10 && ALA_VERSION_MINOR < 10 && ALA_VERSION_PATCH < 100);
constexpr char compiledVersionString[] = {
    '0' + ALA_VERSION_MAJOR,      '.', '0' + ALA_VERSION_MINOR, '-', '0' + ALA_VERSION_PATCH / 10,
    '0' + ALA_VERSION_PATCH % 10, '\0'};

// The run of qvledger, for its first operand.
int run(const Options &options);

// The same with another writer in the place of the report's, for the given number of servers, into one
// report.  A server that fails does not keep the others from their turn; the status is that of the first one
// that failed, and kStatusNoLogs only if none did.  statusIfLost: the status when the report could not be
// written; kStatusAsUsual leaves it to what else happened.
constexpr int kStatusAsUsual = -1;
int runWith(const Options &options, std::int32_t numServers, LogOutput &writer,
            int statusIfLost = kStatusAsUsual);

} // namespace qvledger
