// The run of qvledger-check: checks the set-up and the logs of each server, and saves intact records.
#pragma once

#include "tool/options.h"

namespace qvledger {

// Checks the named servers, one after another.  If a server cannot be checked, the others are still checked.
// Returns the exit status.
int runCheck(const Options &options);

} // namespace qvledger
