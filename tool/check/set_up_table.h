// The table of a server's set-up, with one line of tab-separated fields per part.
#pragma once

#include <string>

#include "tool/options.h"

namespace qvledger {

// Writes the table, and sets the environment from the server's settings.  A message reports each fault.
// 0 and the directory of the logs, or the exit status if the server's logs cannot be checked.
int checkSetUp(const Options &options, std::string &logPath);

} // namespace qvledger
