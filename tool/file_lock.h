// Holding files against other runs.
#pragma once

#include "ala/driver/deletion.h"

namespace qvledger {

// Do messages go to the file behind the descriptor?
bool isMessagesFile(int fd);

// Waits for the run that has the file behind the descriptor, and says so once after a second.  Gives up when
// the program is asked to end.  name: what the message calls the file.
LockResult lockFile(int fd, const char *name);

} // namespace qvledger
