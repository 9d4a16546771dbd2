// The table of a server's set-up, with one line of tab-separated fields per part.
#pragma once

#include <string>

#include "tool/options.h"

namespace qvledger {

// Writes the table, sets the environment from the server's settings, and prints a message for each fault.
// Returns 0 and sets logPath to the directory of the logs, or returns the exit status if the server's logs
// cannot be checked.
int checkSetUp(const Options &options, std::string &logPath);

} // namespace qvledger
