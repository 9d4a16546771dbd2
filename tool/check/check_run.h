// The run of qvledger-check: set-up and logs of each server, and what can be saved of damaged ones.
#pragma once

#include "tool/options.h"

namespace qvledger {

// Exit statuses besides 0, 1, and the codes of the facility.
constexpr int kStatusDamaged = 50; // some log is cut or damaged
constexpr int kStatusLostOutput =
    74; // the results or a copy could not be written; as for an input/output error in other programs

// Checks the servers that are named, in turn.  What cannot be checked of one does not keep the others from
// it.
int runCheck(const Options &options);

} // namespace qvledger
