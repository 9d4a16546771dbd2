// Paths of logs, as new strings; null on failure.
#pragma once

#include <string_view>

#include "ala/ala.h"
#include "ala/base/owners.h"

namespace qvledger {

// Suffix of a log's name while the log is being removed.  The listing skips such a log, because the tail of
// its name is too long.
constexpr std::string_view kAside = ".being-deleted";

Malloced<char> pathInDirectory(const char *directory, const char *name);
Malloced<char> currentLogPath(const char *directory, const char *server);
Malloced<char> datedLogPath(const char *directory, const char *server, const ALA_time *date);

// The path with kAside appended.
Malloced<char> asidePath(const char *path);

// Converts the path to the form that system calls need.  False if FA_ConvertFilePath fails.
bool convertPath(const char *path, Malloced<char> &converted);

} // namespace qvledger
