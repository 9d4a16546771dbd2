// Locks files against other runs.
#pragma once

#include "ala/driver/deletion.h"

namespace qvledger {

// Does the standard error stream write to the file of this descriptor?
bool isMessagesFile(int fd);

// Locks the file of a descriptor.  If another run has locked the file, waits; after a second, prints one
// message about the wait.  Gives up when a signal asks the program to end.  name: the file's name in the
// message.
LockResult lockFile(int fd, const char *name);

} // namespace qvledger
