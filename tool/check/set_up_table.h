// The set-up of a server, part by part, in a table with tabs between its fields.
#pragma once

#include <string>

#include "tool/options.h"

namespace qvledger {

// Writes the table, and takes up the server's settings.  Faults are told to the user, too.  0 and the
// directory of the logs, or the status that ends the server's turn.
int checkSetUp(const Options &options, std::string &logPath);

} // namespace qvledger
