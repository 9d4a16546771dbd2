// Reads the header of a log and evaluates its access list.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/log/log_file.h"

// Reads the header at the descriptor's position.  Sets *accessOK to 1 if the access list admits the user,
// else to 0.  Sets *verNumber to the format version, or to 0 if the version could not be read.  On
// ALA_N_NORMAL the descriptor is at the first record.
// ALA_A_FAIL_READ_LOG_FILE: the header is incomplete, contains an invalid length or cannot be read;
// ALA_A_BAD_NUMATTR_VALUE: the header's attribute count is 0; ALA_A_ODPUNPACK_ERROR: an access list entry is
// invalid or cannot be unpacked; ALA_A_SYSTEM_ERR, ALA_A_UNKNOWN_ERR: the user's identity cannot be
// determined; ALA_A_OUT_OF_MEMORY.
ALA_retCode_t ALA__LookupPermission(std::int32_t in_fd, std::int32_t *accessOK, std::uint32_t *verNumber);

namespace qvledger {

// Like ALA__LookupPermission, but reads the header from the file's current item on.  On ALA_N_NORMAL the next
// item is the first record.  On failure errno is the read error, or 0 if no read failed.
ALA_retCode_t lookUpPermission(LogFile &file, std::int32_t *accessOK, std::uint32_t *verNumber);

// Does the file begin as a log, up to the tag of an access list?  Moves the file's position.
bool beginsAsLog(int fd);

} // namespace qvledger
