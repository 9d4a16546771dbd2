// Locks files against other runs.
#pragma once

#include "ala/driver/deletion.h"

namespace qvledger {

// Does the standard error stream write to the file of this descriptor?
bool isMessagesFile(int fd);

// Locks the file of a descriptor.  Waits while another run has locked the file, but gives up when a signal
// asks the program to end.  After a second, prints one message about the wait, unless messages go to this
// file.  name: the file's name in the message.
LockResult lockFile(int fd, const char *name);

} // namespace qvledger
