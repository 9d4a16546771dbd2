// Locks files against other runs.
#pragma once

#include "ala/driver/deletion.h"

namespace qvledger {

// Is the standard error stream the file of the descriptor?
bool isMessagesFile(int fd);

// Locks the file of a descriptor.  Waits while another run has it locked; after a second, a message reports
// the wait, once.  Gives up when the program receives a signal to end.  name: the file's name in the message.
LockResult lockFile(int fd, const char *name);

} // namespace qvledger
