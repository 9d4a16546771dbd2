// The operating-system calls that the program uses, under their Windows names.
//
// Except in a few files of service/, the program calls only the C and C++ libraries and these operations.
// docs/architecture.md lists these files, and shows how Linux implements each call of the headers below.  On
// Windows the real headers are included (platform/os/types.h).  Elsewhere each header below declares the
// calls in use, with the same names, argument orders and results.  The OS_... operations are our own and are
// declared on both systems.
//
// platform/posix/ implements the operations of each header in the file of the same name.  They have C
// linkage, so that a test can replace a single operation.
#pragma once

#include "platform/os/types.h"

// The machine and the calling user
#include "platform/os/accounts.h"
#include "platform/os/computer_name.h"
#include "platform/os/last_error.h"
#include "platform/os/lent_rights.h"
#include "platform/os/network_library.h"
#include "platform/os/registry.h"
#include "platform/os/tokens.h"
#include "platform/os/version.h"

// The process
#include "platform/os/heap.h"
#include "platform/os/process.h"
#include "platform/os/process_environment.h"
#include "platform/os/signals.h"
#include "platform/os/strings.h"
#include "platform/os/time_zone.h"

// Files
#include "platform/os/file_copying.h"
#include "platform/os/file_identity.h"
#include "platform/os/file_lock.h"
#include "platform/os/files.h"
#include "platform/os/output.h"
