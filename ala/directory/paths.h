// Paths of logs, all of them new texts; null when memory runs out.
#pragma once

#include <string_view>

#include "ala/ala.h"
#include "ala/base/owners.h"

namespace qvledger {

// Stands behind the name of a log that is about to be removed.  The listing takes such a file for no log, for
// its tail is too long.
constexpr std::string_view kAside = ".being-deleted";

} // namespace qvledger

qvledger::Malloced<char> ALA__PathInDirectory(const char *inp_directory, const char *inp_name);
qvledger::Malloced<char> ALA__CurrentLogPath(const char *inp_directory, const char *inp_server);
qvledger::Malloced<char> ALA__DatedLogPath(const char *inp_directory, const char *inp_server,
                                           const ALA_time *inp_date);

// The name that a log has for the moment before it is removed: its own one with kAside behind it.
qvledger::Malloced<char> ALA__AsidePath(const char *inp_path);

// The path as the system's calls take it; false when FA_ConvertFilePath fails.
bool ALA__ConvertPath(const char *inp_path, qvledger::Malloced<char> &outp_converted);
