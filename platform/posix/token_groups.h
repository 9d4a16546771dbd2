// The layout of a token's groups.
#pragma once

#include <vector>

#include <sys/types.h>

#include "platform/os.h"

namespace qvledger {

// Writes the groups as a TOKEN_GROUPS followed by their security identifiers.  Sets *needed to their size in
// bytes.  Returns false and writes no groups if they do not fit.
bool writeTokenGroups(const std::vector<gid_t> &groups, void *info, DWORD length, DWORD *needed);

} // namespace qvledger
