// Paths of logs, all of them new texts; null when memory runs out.
#pragma once

#include <string_view>

#include "ala/ala.h"
#include "ala/base/owners.h"

namespace qvledger {

// Stands behind the name of a log that is about to be removed.  The listing takes such a file for no log, for
// its tail is too long.
constexpr std::string_view kAside = ".being-deleted";

Malloced<char> pathInDirectory(const char *directory, const char *name);
Malloced<char> currentLogPath(const char *directory, const char *server);
Malloced<char> datedLogPath(const char *directory, const char *server, const ALA_time *date);

// The name that a log has for the moment before it is removed: its own one with kAside behind it.
Malloced<char> asidePath(const char *path);

// The path as the system's calls take it; false when FA_ConvertFilePath fails.
bool convertPath(const char *path, Malloced<char> &converted);

} // namespace qvledger
