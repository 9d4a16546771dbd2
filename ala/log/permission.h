// May the caller read a log?  Its header says whom it admits.
#pragma once

#include <cstdint>

#include "ala/ala.h"

// Reads the header of the log and finds out whether its access list admits the caller: accessOK is 1 then,
// else 0.  With ALA_N_NORMAL the descriptor stands on the first record.
ALA_retCode_t ALA__LookupPermission(std::int32_t in_fd, std::int32_t *accessOK, std::uint32_t *verNumber);

namespace qvledger {

// Does the file begin as a log does, up to its access list?
bool beginsAsLog(int fd);

} // namespace qvledger
