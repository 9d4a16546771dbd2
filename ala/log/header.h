// The header of a log, and its access list: whom does it admit?
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/log/log_file.h"

// Reads the header of the log and finds out whether its access list admits the caller: accessOK is 1 then,
// else 0.  With ALA_N_NORMAL the descriptor stands on the first record.
ALA_retCode_t ALA__LookupPermission(std::int32_t in_fd, std::int32_t *accessOK, std::uint32_t *verNumber);

namespace qvledger {

// The same for a log that is being read; its next item is the first record then.  On failure errno has the
// system's reason if the file could not be read, else 0.
ALA_retCode_t lookUpPermission(LogFile &file, std::int32_t *accessOK, std::uint32_t *verNumber);

// Does the file begin as a log does, up to its access list?
bool beginsAsLog(int fd);

} // namespace qvledger
