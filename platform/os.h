// The operating-system calls that the program uses, under their Windows names.
//
// The program calls only the C and C++ libraries and these operations.  A few files of service/ call their
// system directly; docs/architecture.md lists them and shows the Linux counterpart of each call.  On Windows
// the real headers are included (platform/os/types.h).  Elsewhere each section below declares the calls in
// use, with the same names, argument orders, results and record layouts.  The OS_... operations are our own
// and are declared on both systems.
//
// platform/posix/ implements each section in the file of the same name.  All operations have C linkage, so
// that a test can replace a single operation.
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
