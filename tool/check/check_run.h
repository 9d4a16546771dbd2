// The run of qvledger-check: set-up and logs of each server, and what can be saved of damaged ones.
#pragma once

#include "tool/options.h"

namespace qvledger {

// Checks the servers that are named, in turn.  What cannot be checked of one does not keep the others from
// it.
int runCheck(const Options &options);

} // namespace qvledger
