// The layout of a token's groups.
#pragma once

#include <vector>

#include <sys/types.h>

#include "platform/os.h"

namespace qvledger {

// The groups as a TOKEN_GROUPS with the security identifiers behind it.  False, with only the size needed
// written, when they do not fit.
bool writeTokenGroups(const std::vector<gid_t> &groups, void *info, DWORD length, DWORD *needed);

} // namespace qvledger
